#ifndef TUL_TEST_GATE_H
#define TUL_TEST_GATE_H

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "TemporaryDirectory.h"

namespace TulTest {

/**
 * A folder with an adapter script that stands still once, at a command line of the test's choice, between two named
 * pipes: it says that it is there, and waits until it may go on.
 */
class Gate {
public:
    /** The command line as a pattern of the shell's case. */
    explicit Gate(const std::string& commandLine) {
        makePipe(_arrived);
        makePipe(_mayGo);
        _directory.writeScript("vorma", "cd '" + folder() + "'\n[ \"$1\" != spi-revision ] || echo 1.8.0\n" +
                                            "case \"$*\" in " + commandLine +
                                            ") if rmdir once; then echo >arrived; read -r line <mayGo; fi ;; esac");
        mkdir((folder() + "/once").c_str(), 0700);
    }

    std::string folder() const { return _directory.path(); }

    /** Returns when the script stands still. */
    void waitUntilHeld() const { exchange(_arrived, O_RDONLY); }

    /** Lets it go on. */
    void open() const { exchange(_mayGo, O_WRONLY); }

    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

private:
    void makePipe(const char* name) const {
        if (mkfifo((folder() + "/" + name).c_str(), 0600) != 0) {
            throw std::runtime_error("no pipe");
        }
    }

    /** One line, in the one or the other direction; opening waits for the other side. */
    void exchange(const char* name, int mode) const {
        const int pipe = ::open((folder() + "/" + name).c_str(), mode | O_CLOEXEC);
        char line = '\n';
        [[maybe_unused]] const ssize_t count = mode == O_RDONLY ? read(pipe, &line, 1) : write(pipe, &line, 1);
        close(pipe);
    }

    static constexpr const char* _arrived = "arrived";
    static constexpr const char* _mayGo = "mayGo";
    TemporaryDirectory _directory;
};

}  // namespace TulTest

#endif
