#ifndef VORMA_CONFIGURATION_H
#define VORMA_CONFIGURATION_H

#include <array>
#include <string>

#include "Doors.h"
#include "SshSetting.h"

namespace Vorma {

/** What vorma.conf says. The file is read, never run. */
struct Configuration {
    std::string file; /**< its own path */
    std::string stateDirectory;
    std::string baseConfig;
    std::array<std::string, doorCount> doorConfigs; /**< what one door alone serves; empty: nothing more */
    std::string listenAddress;                      /**< empty: all addresses */
    std::string sshd = "/usr/sbin/sshd";
    std::string revision = "1.8.0";

    Revision parsedRevision() const;

    /**
     * Reads vorma.conf from where the program is, by the path under which it was called. Refusal with
     * Exit::Settings when it is missing or wrong, may be written by others, or when there is no path.
     */
    static Configuration besideProgram(const std::string& calledAs);

    /** As above, of text that was read from the file. */
    static Configuration parse(const std::string& text, const std::string& file);

    /** Refusal with Exit::Settings when a file that is named cannot be used: sshd would not say so. */
    void checkFiles() const;
};

}  // namespace Vorma

#endif
