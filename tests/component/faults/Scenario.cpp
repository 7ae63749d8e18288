#include "Scenario.h"

#include <algorithm>

#include "RecordingFramework.h"

namespace TulTest {

namespace {

const char* const state = "administrativeState";

void lockCli(CmNotification& notification) {
    notification.changed(cliSshDn).enumeration(state, 0);
}
void unlockCli(CmNotification& notification) {
    notification.changed(cliSshDn).enumeration(state, 1);
}
void lockNetconf(CmNotification& notification) {
    notification.changed(netconfSshDn).enumeration(state, 0);
}
void unlockNetconf(CmNotification& notification) {
    notification.changed(netconfSshDn).enumeration(state, 1);
}
void createCategory(CmNotification& notification) {
    notification.created(oamCmDn);
}
void changeCategory(CmNotification& notification) {
    notification.changed(oamCmDn);
}
void deleteCategory(CmNotification& notification) {
    notification.deleted(oamCmDn);
}
void changeSsh(CmNotification& notification) {
    notification.changed(sshDn);
}

const char* const dscp = "--ipQos 46";
const char* const algorithms =
    "--ciphers aes128-ctr,aes256-ctr --kexAlgorithms curve25519-sha256 --macs hmac-sha2-256";

}  // namespace

const std::vector<Scenario>& scenarios() {
    static const char* const category = serviceCategoryPattern;
    static const std::vector<Scenario> all{
        {"Init", Call::INIT, true, true},
        {"StartOnAnEmptyNode", Call::START, true, false},
        {"StartOnAFullNode", Call::START, true, true},
        {"StartWithManagementOff", Call::START, false, true},
        {"CliSshChanged", Call::NOTIFY, true, true, cliSshPattern, lockCli, unlockCli, "clissh unlock port 2022"},
        {"NetconfSshChanged", Call::NOTIFY, true, true, netconfSshPattern, lockNetconf, unlockNetconf,
         "netconfssh unlock port 2830"},
        {"CategoryCreated", Call::NOTIFY, true, true, category, createCategory, changeCategory, dscp},
        {"CategoryChanged", Call::NOTIFY, true, true, category, changeCategory, changeCategory, dscp},
        {"CategoryDeleted", Call::NOTIFY, true, true, category, deleteCategory, createCategory, dscp},
        {"SshChanged", Call::NOTIFY, true, true, sshPattern, changeSsh, changeSsh, algorithms},
        {"Stop", Call::STOP, true, true},
        {"Terminate", Call::TERMINATE, true, true}};
    return all;
}

const Scenario& scenario(const std::string& name) {
    return *std::find_if(scenarios().begin(), scenarios().end(),
                         [&name](const Scenario& one) { return one.name == name; });
}

}  // namespace TulTest
