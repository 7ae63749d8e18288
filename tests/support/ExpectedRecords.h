#ifndef TUL_TEST_EXPECTED_RECORDS_H
#define TUL_TEST_EXPECTED_RECORDS_H

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "RecordingFramework.h"

namespace TulTest {

using Records = std::vector<Record>;

/**
 * Makes the records that one source file is expected to write: two for each message, in their order.
 *
 * A text is needed only where it differs from the format.
 */
class RecordSource {
public:
    using Text = std::optional<std::string>;

    RecordSource(std::string subsystem, std::string sourceFile);

    Records error(const std::string& function, const std::string& format, const Text& text = {}) const;
    Records warning(const std::string& function, const std::string& format, const Text& text = {}) const;
    Records information(const std::string& function, const std::string& format, const Text& text = {}) const;
    Records entry(const std::string& function, const std::string& format = " >> ", const Text& text = {}) const;
    Records exit(const std::string& function, const std::string& format = " << ", const Text& text = {}) const;
    Records trace(const std::string& function, const std::string& format, const Text& text = {}) const;

private:
    Records logged(int severity, const std::string& function, const std::string& format, const Text& text) const;
    Records traced(int kind, const std::string& function, const std::string& format, const Text& text) const;

    std::string _subsystem;
    std::string _sourceFile;
};

Records operator+(Records first, const Records& second);

std::ostream& operator<<(std::ostream& stream, const Record& record);

}  // namespace TulTest

#endif
