#ifndef TUL_TEST_RECORDER_H
#define TUL_TEST_RECORDER_H

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace TulTest {

using Lines = std::vector<std::string>;

/**
 * Keeps every call of the logging interface while it lives, each as one line:
 *
 *     log_printf FUNCTION SEVERITY CATEGORY "FORMAT" ARGUMENTS...
 *     trace_printf FILE FUNCTION KIND "FORMAT" ARGUMENTS...
 *     trace_v2_printf HANDLE LEVEL FILE FUNCTION "FORMAT" ARGUMENTS...
 *
 * Arguments are shown by their conversion: %s quoted, a null pointer as (null), %d, %u and %lu as numbers. Source
 * lines are left out; one that is not above 0 shows as "line?".
 *
 * This program's members of Tul::LoggingWrapper stand before those of libtul_common in the order of the linker, also
 * for the libraries that it loads. One recorder at a time; one thread.
 */
class Recorder {
public:
    Recorder();
    ~Recorder();

    int level = 0;                  /**< what the component is told when it asks */
    Lines calls;                    /**< so far */
    std::function<void()> onCall;   /**< after each */
    std::filesystem::path copiedTo; /**< also written there, call by call: it outlives a process that ends itself */

    void keep(const std::string& call);

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
};

/** In double quotes, with everything that is not a printable ASCII character escaped as in C. */
std::string quoted(std::string_view text);

}  // namespace TulTest

#endif
