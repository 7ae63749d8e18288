#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "BryMgmtSpiPortal_1.h"
#include "BryMgmtSpiPortal_3.h"
#include "BryMwSpiTrace.h"
#include "ModelFixture.h"
#include "Spi.h"
#include "TulMwSpiLog_1.h"
#include "TulOamSpiManagedObject_3.h"

namespace TulNode {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/** Calls the node as a component does: through nothing but the accessor. */
class SpiTables : public testing::Test {
protected:
    SpiTables() { applyModel(services.transactions, defaultModel, "default"); }

    template <class Interface>
    Interface* find(const char* component, const char* name, const char* version) {
        void* found = nullptr;
        EXPECT_EQ(portal->getInterface(component, name, version, &found), BRY_OK);
        return static_cast<Interface*>(found);
    }

    std::vector<std::string> records() {
        std::vector<std::string> lines;
        for (const Record& record : services.journal.last(100)) {
            lines.push_back(record.line());
        }
        return lines;
    }

    std::chrono::steady_clock::time_point now{};
    Services services{"", [this] { return now; }};
    Spi spi{services};
    BryMgmtSpiPortal_1* portal = static_cast<BryMgmtSpiPortal_1*>(Spi::accessor()->getPortal("1"));
    TulOamSpiManagedObject_3* mos = find<TulOamSpiManagedObject_3>(
        TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME, TUL_OAM_SPI_MANAGED_OBJECT_VERSION_3);
    TulOamSpiTransactionMaster_1* transactions =
        find<TulOamSpiTransactionMaster_1>(TUL_OAM_SPI_TRANSACTION_SERVICE, TUL_OAM_SPI_TRANSACTION_MASTER_NAME, "1");
    TulMwSpiLog_1* log = find<TulMwSpiLog_1>(nullptr, TUL_MW_SPI_LOG_NAME, "1");
    BryMwSpiTrace* trace = find<BryMwSpiTrace>(nullptr, BRY_MW_SPI_TRACE_NAME, nullptr);
};

TEST_F(SpiTables, OfferThePortalsOneAndThree) {
    EXPECT_NE(Spi::accessor()->getPortal("1"), nullptr);
    EXPECT_NE(Spi::accessor()->getPortal("3"), nullptr);
    EXPECT_EQ(Spi::accessor()->getPortal("2"), nullptr);
    EXPECT_EQ(Spi::accessor()->getPortal(""), nullptr);
    EXPECT_EQ(Spi::accessor()->getPortal(nullptr), nullptr);
    EXPECT_EQ(find<void>("TulPortalComponent", BRY_MGMT_SPI_PORTAL_NAME, "3"), Spi::accessor()->getPortal("3"));
}

TEST_F(SpiTables, FindAnInterfaceByEachPartOfItsIdentity) {
    void* found = nullptr;
    EXPECT_EQ(portal->getInterface("TulOamSpiEventService", "TulOamSpiEventRouter", "1", &found), BRY_OK);
    EXPECT_EQ(portal->getInterface("TulOamSpiEventService", "TulOamSpiEventRouter", "2", &found), BRY_NOT_FOUND);
    EXPECT_EQ(portal->getInterface("Other", "TulOamSpiEventRouter", "1", &found), BRY_NOT_FOUND);
    EXPECT_EQ(portal->getInterface(nullptr, nullptr, nullptr, &found), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(portal->getInterface(nullptr, "TulMwSpiLog", nullptr, nullptr), BRY_INVALID_ARGUMENT);
}

TEST_F(SpiTables, CreateReadAndDeleteAnMo) {
    TulOamSpiTransactionHandleT handle = 0;
    ASSERT_EQ(transactions->newTransaction(TUL_LOCK_POLICY_SHARED, 3600, &handle), BRY_OK);
    TulMoAttributeValue_3 unlocked{};
    unlocked.asInt64 = 1;
    TulMoNamedAttribute_3 state{"administrativeState", {TUL_MO_TYPE_ENUMERATION_3, 1, &unlocked}};
    std::array<TulMoNamedAttribute_3*, 2> attributes{&state, nullptr};
    EXPECT_EQ(mos->createMo(handle, sysM.c_str(), "CliSsh", "cliSshId", "1", attributes.data()), BRY_OK);
    EXPECT_EQ(transactions->commit(handle), BRY_OK);

    TulMoAttributeValueResult_3 result{};
    ASSERT_EQ(mos->getAttribute(0, cliSsh.c_str(), "administrativeState", &result), BRY_OK);
    EXPECT_EQ(result.container->type, TUL_MO_TYPE_ENUMERATION_3);
    EXPECT_EQ(result.container->nrOfValues, 1U);
    EXPECT_EQ(result.container->values[0].asEnum, 1);
    result.release(result.container);
    EXPECT_EQ(services.values.outstanding(), 0U);

    ASSERT_EQ(transactions->newTransaction(TUL_LOCK_POLICY_EXCLUSIVE, 3600, &handle), BRY_OK);
    EXPECT_EQ(mos->deleteMo(handle, cliSsh.c_str()), BRY_OK);
    EXPECT_EQ(transactions->commit(handle), BRY_OK);
    EXPECT_EQ(mos->getAttribute(0, cliSsh.c_str(), "administrativeState", &result), BRY_NOT_FOUND);
    EXPECT_THAT(records(), IsEmpty());
}

TEST_F(SpiTables, GiveEmptyContainersForWhatHasNoValue) {
    TulMoAttributeValueResult_3 result{};
    ASSERT_EQ(mos->getAttribute(0, ssh.c_str(), "selectedMacs", &result), BRY_OK);
    EXPECT_EQ(result.container->nrOfValues, 0U);
    result.release(result.container);
}

TEST_F(SpiTables, VisitInstancesUntilTheVisitorHasEnough) {
    int visits = 0;
    const auto once = [](void* context, const char* dn) {
        EXPECT_EQ(dn, transport);
        ++*static_cast<int*>(context);
        return false;
    };
    EXPECT_EQ(mos->findInstances(0, "ManagedElement,Transport", once, &visits), BRY_OK);
    EXPECT_EQ(mos->findInstances(0, "ManagedElement,Transport,DiffServCategory", once, &visits), BRY_OK);
    EXPECT_EQ(mos->findInstances(0, "Transport", once, &visits), BRY_UNKNOWN_CLASS);
    EXPECT_EQ(visits, 1);
}

TEST_F(SpiTables, RefuseNullPointersEverywhere) {
    TulMoAttributeValueResult_3 result{};
    TulMoNamedAttribute_3 nameless{nullptr, {TUL_MO_TYPE_STRING_3, 0, nullptr}};
    std::array<TulMoNamedAttribute_3*, 2> attributes{&nameless, nullptr};
    TulOamSpiTransactionHandleT handle = 0;
    EXPECT_EQ(transactions->newTransaction(1, 60, nullptr), BRY_INVALID_ARGUMENT);
    ASSERT_EQ(transactions->newTransaction(1, 60, &handle), BRY_OK);
    EXPECT_EQ(mos->getAttribute(0, nullptr, "x", &result), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(mos->getAttribute(0, "A=1", nullptr, &result), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(mos->getAttribute(0, ssh.c_str(), "sshId", nullptr), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(mos->findInstances(0, nullptr, nullptr, nullptr), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(mos->findInstances(0, "ManagedElement", nullptr, nullptr), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(mos->setAttributes(handle, ssh.c_str(), nullptr), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(mos->setAttributes(handle, ssh.c_str(), attributes.data()), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(mos->createMo(handle, nullptr, "CliSsh", "cliSshId", "1", attributes.data()), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(mos->createMo(handle, sysM.c_str(), "CliSsh", "cliSshId", nullptr, attributes.data()),
              BRY_INVALID_ARGUMENT);
    EXPECT_EQ(mos->deleteMo(handle, nullptr), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(services.journal.accusations(), 0U);
}

TEST_F(SpiTables, RefuseValuesOfATypeThatIsNotListedAndNullTexts) {
    TulOamSpiTransactionHandleT handle = 0;
    ASSERT_EQ(transactions->newTransaction(1, 60, &handle), BRY_OK);
    TulMoAttributeValue_3 value{};
    TulMoNamedAttribute_3 macs{"selectedMacs", {static_cast<TulOamSpiMoAttributeType_3>(99), 1, &value}};
    std::array<TulMoNamedAttribute_3*, 2> attributes{&macs, nullptr};
    EXPECT_EQ(mos->setAttributes(handle, ssh.c_str(), attributes.data()), BRY_WRONG_TYPE);
    macs.value.type = TUL_MO_TYPE_STRING_3;
    EXPECT_EQ(mos->setAttributes(handle, ssh.c_str(), attributes.data()), BRY_INVALID_ARGUMENT);
    macs.value.values = nullptr;
    EXPECT_EQ(mos->setAttributes(handle, ssh.c_str(), attributes.data()), BRY_OK);
}

TEST_F(SpiTables, WriteDownWhyAChangeIsRefused) {
    TulOamSpiTransactionHandleT handle = 0;
    ASSERT_EQ(transactions->newTransaction(1, 60, &handle), BRY_OK);
    std::array<TulMoNamedAttribute_3*, 1> none{nullptr};
    EXPECT_EQ(mos->createMo(handle, transport.c_str(), "CliSsh", "cliSshId", "1", none.data()), BRY_WRONG_PARENT);
    EXPECT_THAT(records(), ElementsAre(HasSubstr("warning createMo: -11 (WRONG_PARENT): CliSsh cannot stand below "
                                                 "Transport; allowed: below SysM")));
}

TEST_F(SpiTables, AccuseWhoeverUsesADeadHandle) {
    EXPECT_EQ(transactions->commit(77), BRY_INVALID_HANDLE);
    EXPECT_EQ(transactions->abort(0), BRY_INVALID_HANDLE);
    EXPECT_EQ(services.journal.accusations(), 2U);
    EXPECT_THAT(records()[0], HasSubstr("component misbehaves: the component calls commit with a dead handle"));
}

TEST_F(SpiTables, DoNotAccuseATransactionThatTimedOut) {
    TulOamSpiTransactionHandleT handle = 0;
    ASSERT_EQ(transactions->newTransaction(1, 1, &handle), BRY_OK);
    now += std::chrono::seconds(1);
    EXPECT_EQ(transactions->commit(handle), BRY_TIMED_OUT);
    EXPECT_EQ(services.journal.accusations(), 0U);
}

TEST_F(SpiTables, KeepLogRecordsEscapedAndTracesOnceAndOnlyWhenWanted) {
    EXPECT_EQ(log->getLevel(), 6);
    log->log("start", 4, 1, "%s", "one\nline \xFF \xC3\xA4 %n");
    trace->traceV2("TulSshd", 4, "file", "start", 7, "%s", "a copy of the record");
    trace->traceV2("TulSshd", BRY_TRACE_LEVEL_TRACE, "file", "start", 7, "%s", "not wanted");
    services.journal.setLevel(8);
    trace->trace("file", "start", 7, BRY_TRACE_KIND_ENTRY, "%s", " >> ");
    trace->traceV2("TulSshd", BRY_TRACE_LEVEL_TRACE, "file", "start", 7, "%s", " >> ");
    log->log(nullptr, 4, 1, nullptr, nullptr);
    EXPECT_THAT(records(), ElementsAre("warning start: one\\x0Aline \\xFF \xC3\xA4 %n",
                                       "trace start: TulSshd file:7:  >> ", "warning : "));
}

TEST_F(SpiTables, CountAdapterRunsButNotTheNodesOwnQuestion) {
    const std::array<const char*, 4> lock{"clissh", "lock", "a b", nullptr};
    const std::array<const char*, 2> status{"status", nullptr};
    const TulCommonScriptRun_1 good{"vorma", lock.data(), nullptr, 12};
    const TulCommonScriptRun_1 question{"vorma", status.data(), nullptr, 1};
    const TulCommonScriptRun_1 bad{"vorma", lock.data(), "exit\t1", 3};
    for (const TulCommonScriptRun_1* run : {&good, &question, &bad}) {
        Spi::scriptRan(run);
    }
    ASSERT_EQ(services.runs.runs().size(), 2U);
    EXPECT_EQ(services.runs.runs()[0].line(), "vorma clissh lock \"a b\" -> ok (12 ms)");
    EXPECT_EQ(services.runs.runs()[1].line(), "vorma clissh lock \"a b\" -> failed: exit\\x091 (3 ms)");
    EXPECT_EQ(services.runs.runs()[1].number, 2U);
}

}  // namespace
}  // namespace TulNode
