#include "Scenario.h"

namespace TulTest {

bool Scenario::names(std::size_t door) const {
    return walked.starts_with("ssh ") || walked == "settle" || walked.starts_with(doorNames[door]);
}

const std::vector<Scenario>& scenarios() {
    const std::string openCli = "clissh unlock port A";
    const std::string moveCli = "clissh unlock port B";
    const std::string lockCli = "clissh lock";
    const std::string openNetconf = "netconfssh unlock port N";
    const std::string lockNetconf = "netconfssh lock";
    const std::vector<std::string> two{"ssh OLD", openNetconf, openCli};
    const std::string refused = "ssh --macs hmac-sha2-512 --ciphers aes128-ctr,no-such-cipher";
    const auto none = Theft::None;
    static const std::vector<Scenario> all{
        {"first-unlock", {}, openCli, {lockCli}, lockNetconf},
        {"unlock", {"ssh OLD", openNetconf, lockCli}, openCli, {lockCli}, openNetconf},
        {"move", two, moveCli, {openCli}, openNetconf},
        {"lock", two, lockCli, {openCli}, openNetconf},
        {"settings-two", two, "ssh NEW", {"ssh OLD"}, openNetconf},
        {"settings-one", {"ssh OLD", openCli, lockNetconf}, "ssh NEW", {"ssh OLD"}, lockNetconf},
        {"settings-none", {"ssh OLD", lockCli}, "ssh NEW", {"ssh OLD"}, lockNetconf},
        {"nothing", two, openCli, {}, openNetconf},
        {"settle", two, "settle", {}, openNetconf},
        {"recovery-settle", two, "settle", {}, openNetconf, 0, none, 'B', PidFile::Kept, "ssh NEW"},
        {"recovery-move", two, openNetconf, {openCli}, openNetconf, 0, none, 'B', PidFile::Kept, moveCli},
        {"recovery-settings", two, openCli, {"ssh OLD"}, openNetconf, 0, none, 'B', PidFile::Kept, "ssh NEW"},
        {"roll-back-unlock",
         {"ssh OLD", openNetconf, lockCli},
         openCli,
         {lockCli},
         openNetconf,
         7,
         Theft::AtRename,
         'A'},
        {"roll-back-move", two, moveCli, {openCli}, openNetconf, 7, Theft::AtRename, 'B'},
        {"roll-back-settings", two, "ssh NEW", {"ssh OLD"}, openNetconf, 8, Theft::AtReload, 'N'},
        {"refused-cipher", two, refused, {}, openNetconf, 6},
        {"refused-port", two, moveCli, {openCli}, openNetconf, 7, Theft::Before, 'B'},
        {"pid-removed", two, lockCli, {openCli}, openNetconf, 0, none, 'B', PidFile::Removed},
        {"pid-of-process", two, lockCli, {openCli}, openNetconf, 0, none, 'B', PidFile::NamesProcess},
        {"pid-of-sshd", two, lockCli, {openCli}, openNetconf, 0, none, 'B', PidFile::NamesSshd}};
    return all;
}

}  // namespace TulTest
