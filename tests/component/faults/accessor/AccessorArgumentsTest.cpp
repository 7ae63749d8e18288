#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "BryMwSpiTrace.h"
#include "MoAccessor.h"
#include "Portal.h"
#include "RecordingFramework.h"
#include "SshComponent.h"

namespace {

using namespace TulTest;
using Lines = std::vector<std::string>;

/** The operation of the component that was entered last. */
std::string operation;

/** Each accessor that was built: in which operation, and with which arguments. */
Lines built;

}  // namespace

/** Stands before the platform's in the order of the linker. */
Tul::MoAccessor::MoAccessor(bool committedOnly, TulLockPolicyT lockPolicy, int timeout) {
    built.push_back(operation + (committedOnly ? " true " : " false ") + std::to_string(lockPolicy) + " " +
                    std::to_string(timeout));
    const BryMgmtSpiInterface_1 id{TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME,
                                   TUL_OAM_SPI_MANAGED_OBJECT_VERSION_3};
    void* found = nullptr;
    if (Tul::Portal::instance().getInterface(id, &found) != BRY_OK) {
        throw std::logic_error("the framework has no managed objects");
    }
    _managedObjectIf = static_cast<TulOamSpiManagedObject_3*>(found);
}

namespace {

/** What is expected of the operations, in their order: each reads what is committed, under the same guard. */
Lines accessorsOf(const Lines& operations) {
    Lines lines;
    for (const std::string& name : operations) {
        lines.push_back(name + " true 1 60");
    }
    return lines;
}

class AccessorArguments : public testing::Test {
public:
    AccessorArguments() {
        framework.logLevel = 8;
        framework.onRecord = [](const Record& record) {
            if (record.call == "trace" && record.level == BRY_TRACE_KIND_ENTRY) {
                operation = record.function;
            }
        };
        framework.givenEmptyNode();
    }

    void givenFullNode() {
        framework.givenMo(cliSshDn, {{"administrativeState", enumeration(1)}});
        framework.givenMo(netconfSshDn, {{"administrativeState", enumeration(1)}});
        framework.givenMo(oamCmDn, {{"dscp", uint8(46)}});
        framework.givenMo(sshDn, {{"selectedCiphers", strings({"c"})}, {"selectedMacs", strings({"m"})}});
    }

    void start(bool managed) {
        ASSERT_EQ(BRY_OK, component.lcmInit(framework.accessor(), configuration(managed).c_str()));
        built.clear();
        ASSERT_EQ(BRY_OK, component.start(BRY_REASON_NORMAL));
    }

    void notify(const char* pattern, CmNotification& notification) {
        built.clear();
        EXPECT_EQ(BRY_OK, framework.notify(pattern, notification));
    }

    RecordingFramework framework;
    TulSshdManagement::TulSshdManagementComponent component;
};

TEST_F(AccessorArguments, AreTheSameInEveryOperationOfAStartAndEachBuildsOne) {
    givenFullNode();
    start(true);
    EXPECT_EQ(accessorsOf({"getDnValue", "getAdministrativeState", "getDnValue", "getAdministrativeState", "getDscp",
                           "getDnValue", "fetchCipherConfiguration"}),
              built);
    component.stop(BRY_REASON_NORMAL);
}

TEST_F(AccessorArguments, AreTheSameWhereMosAreCreated) {
    start(true);
    EXPECT_EQ(accessorsOf({"getDnValue", "getDnValue", "getDnValue", "getDnValue", "getDscp", "getDnValue"}), built);
    component.stop(BRY_REASON_NORMAL);
}

TEST_F(AccessorArguments, AreTheSameWhereMosAreDeleted) {
    givenFullNode();
    start(false);
    EXPECT_EQ(accessorsOf({"getDnValue", "getDnValue"}), built);
}

TEST_F(AccessorArguments, AreTheSameInTheHandlersOfChanges) {
    givenFullNode();
    start(true);
    notify(serviceCategoryPattern, CmNotification().changed(oamCmDn));
    EXPECT_EQ(accessorsOf({"getDscp"}), built);
    notify(sshPattern, CmNotification().changed(sshDn));
    EXPECT_EQ(accessorsOf({"fetchCipherConfiguration"}), built);
    notify(cliSshPattern, CmNotification().changed(cliSshDn).enumeration("administrativeState", 0));
    EXPECT_EQ(Lines(), built);
    component.stop(BRY_REASON_NORMAL);
}

}  // namespace
