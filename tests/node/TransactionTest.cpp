#include <atomic>
#include <future>
#include <memory>

#include "ModelFixture.h"

namespace TulNode {
namespace {

class Model : public ModelFixture {};

struct RefusedChange {
    const char* name;
    std::function<void(TransactionMaster&, TransactionMaster::Handle)> change;
    BryReturnT code;
};

class RefusedChanges : public ModelFixture, public testing::WithParamInterface<RefusedChange> {};

TEST_P(RefusedChanges, HaveTheirCodeAndLeaveNothing) {
    const Handle handle = shared();
    EXPECT_EQ(codeOf([&] { GetParam().change(master, handle); }), GetParam().code);
    master.commit(handle);
    expectPublished({});
}

using Master = TransactionMaster;
using Handle = TransactionMaster::Handle;

const RefusedChange refusedChanges[] = {
    {"UnknownClass", [](Master& m, Handle h) { m.create(h, sysM + ",Telnet=1", {}); }, BRY_UNKNOWN_CLASS},
    {"WrongParent", [](Master& m, Handle h) { m.create(h, "ManagedElement=1,Transport=1,CliSsh=1", {}); },
     BRY_WRONG_PARENT},
    {"WrongRoot", [](Master& m, Handle h) { m.create(h, "Transport=1", {}); }, BRY_WRONG_PARENT},
    {"MissingParent",
     [](Master& m, Handle h) { m.create(h, "ManagedElement=1,SystemFunctions=1,SysM=2,CliSsh=1", {}); },
     BRY_NO_PARENT_MO},
    {"DuplicateKey", [](Master& m, Handle h) { m.create(h, transport, {}); }, BRY_ALREADY_EXISTS},
    {"EmptyDn", [](Master& m, Handle h) { m.create(h, "", {}); }, BRY_BAD_DN},
    {"DnWithoutKey", [](Master& m, Handle h) { m.create(h, sysM + ",CliSsh", {}); }, BRY_BAD_DN},
    {"DnWithEmptyKey", [](Master& m, Handle h) { m.create(h, sysM + ",CliSsh=", {}); }, BRY_BAD_DN},
    {"DnWithTwoEquals", [](Master& m, Handle h) { m.create(h, sysM + ",CliSsh=1=2", {}); }, BRY_BAD_DN},
    {"DnWithEmptyPart", [](Master& m, Handle h) { m.create(h, sysM + ",,CliSsh=1", {}); }, BRY_BAD_DN},
    {"DnWithControlCharacter", [](Master& m, Handle h) { m.create(h, sysM + ",CliSsh=\n", {}); }, BRY_BAD_DN},
    {"DnWithLongKey", [](Master& m, Handle h) { m.create(h, sysM + ",CliSsh=" + std::string(65, '1'), {}); },
     BRY_BAD_DN},
    {"KeyThatHidesAnotherPart",
     [](Master& m, Handle h) { m.createBelow(h, sysM, "CliSsh", "cliSshId", "1,CliSsh=2", {}); }, BRY_BAD_DN},
    {"WrongKeyAttribute", [](Master& m, Handle h) { m.createBelow(h, sysM, "CliSsh", "sshId", "1", {}); },
     BRY_UNKNOWN_CLASS},
    {"UnknownAttribute",
     [](Master& m, Handle h) {
         m.set(h, ssh, {{"colour", texts({"red"})}});
     },
     BRY_UNKNOWN_CLASS},
    {"KeyAttribute",
     [](Master& m, Handle h) {
         m.set(h, ssh, {{"sshId", texts({"2"})}});
     },
     BRY_INVALID_ARGUMENT},
    {"WrongType",
     [](Master& m, Handle h) {
         m.create(h, category, {{"dscp", texts({"46"})}});
     },
     BRY_WRONG_TYPE},
    {"SeveralForASingle",
     [](Master& m, Handle h) {
         m.create(h, category, {{"dscp", {TUL_MO_TYPE_UINT8_3, {std::int64_t{1}, std::int64_t{2}}}}});
     },
     BRY_WRONG_TYPE},
    {"TooLarge",
     [](Master& m, Handle h) {
         m.create(h, category, {{"dscp", uint8(64)}});
     },
     BRY_OUT_OF_RANGE},
    {"TooSmall",
     [](Master& m, Handle h) {
         m.create(h, category, {{"dscp", uint8(-1)}});
     },
     BRY_OUT_OF_RANGE},
    {"UnknownLiteral",
     [](Master& m, Handle h) {
         m.create(h, cliSsh, {{"administrativeState", enumeration(2)}});
     },
     BRY_OUT_OF_RANGE},
    {"EmptyText",
     [](Master& m, Handle h) {
         m.set(h, ssh, {{"selectedMacs", texts({"a", ""})}});
     },
     BRY_OUT_OF_RANGE},
    {"LongText",
     [](Master& m, Handle h) {
         m.set(h, ssh, {{"selectedMacs", texts({std::string(256, 'a')})}});
     },
     BRY_OUT_OF_RANGE},
    {"TextWithComma",
     [](Master& m, Handle h) {
         m.set(h, ssh, {{"selectedMacs", texts({"a,b"})}});
     },
     BRY_OUT_OF_RANGE},
    {"TextThatIsNotUtf8",
     [](Master& m, Handle h) {
         m.set(h, ssh, {{"selectedMacs", texts({"\xC0\x80"})}});
     },
     BRY_OUT_OF_RANGE},
    {"LongSequence",
     [](Master& m, Handle h) {
         m.set(h, ssh, {{"selectedMacs", texts(std::vector<std::string>(65, "a"))}});
     },
     BRY_WRONG_TYPE},
    {"SetOfMissing", [](Master& m, Handle h) { m.set(h, cliSsh, {}); }, BRY_NOT_FOUND},
    {"DeleteOfMissing", [](Master& m, Handle h) { m.remove(h, cliSsh); }, BRY_NOT_FOUND},
    {"DeleteWithChildren", [](Master& m, Handle h) { m.remove(h, "ManagedElement=1"); }, BRY_HAS_CHILDREN},
    {"DeadHandle", [](Master& m, Handle h) { m.remove(h + 1, transport); }, BRY_INVALID_HANDLE},
    {"HandleZero", [](Master& m, Handle) { m.remove(0, transport); }, BRY_INVALID_HANDLE},
};

INSTANTIATE_TEST_SUITE_P(Each, RefusedChanges, testing::ValuesIn(refusedChanges),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(Model, RefusesATransactionWithoutPolicyOrTimeOut) {
    EXPECT_EQ(codeOf([&] { master.open(0, 60, "test"); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { master.open(3, 60, "test"); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { master.open(1, 0, "test"); }), BRY_INVALID_ARGUMENT);
}

TEST_F(Model, ARefusedSetChangesNoneOfItsAttributes) {
    const Handle handle = shared();
    EXPECT_EQ(codeOf([&] {
                  master.set(handle, ssh, {{"selectedCiphers", texts({"a"})}, {"selectedMacs", texts({""})}});
              }),
              BRY_OUT_OF_RANGE);
    EXPECT_TRUE(master.get(handle, ssh).empty());
    master.commit(handle);
    expectPublished({});
}

TEST_F(Model, AnExistingMoReadsItsKeyItsValuesAndWhatHasNone) {
    commit([&](Handle h) { master.create(h, category, {}); });
    EXPECT_EQ(master.getAttribute(0, category, "diffServCategoryId"), texts({"OamCM"}));
    EXPECT_EQ(master.getAttribute(0, category, "dscp"), (AttributeValue{TUL_MO_TYPE_UINT8_3, {}}));
    EXPECT_EQ(codeOf([&] { master.getAttribute(0, category, "colour"); }), BRY_UNKNOWN_CLASS);
    EXPECT_EQ(codeOf([&] { master.getAttribute(0, cliSsh, "administrativeState"); }), BRY_NOT_FOUND);
    EXPECT_EQ(codeOf([&] { master.getAttribute(0, "CliSsh", "administrativeState"); }), BRY_BAD_DN);
}

TEST_F(Model, ANewMoHasTheDefaultsOfWhatItIsNotGiven) {
    commit([&](Handle h) { master.create(h, cliSsh, {}); });
    expectPublished({"CREATED " + cliSsh + " administrativeState=LOCKED"});
}

TEST_F(Model, ChangesAreSeenByTheirOwnTransactionAloneUntilTheyAreCommitted) {
    const Handle writer = shared();
    const Handle reader = shared();
    master.create(writer, category, {{"dscp", uint8(46)}});
    EXPECT_EQ(master.instances(writer, "ManagedElement,Transport,DiffServCategory"),
              std::vector<std::string>{category});
    EXPECT_TRUE(master.instances(reader, "ManagedElement,Transport,DiffServCategory").empty());
    EXPECT_TRUE(master.instances(0, "ManagedElement,Transport,DiffServCategory").empty());
    master.commit(writer);
    EXPECT_EQ(master.getAttribute(reader, category, "dscp"), uint8(46));
}

TEST_F(Model, InstancesComeInTheOrderOfTheirDnsWithWhatWaitsAmongThem) {
    const auto dnOf = [](const std::string& key) { return transport + ",DiffServCategory=" + key; };
    commit([&](Handle h) {
        master.create(h, dnOf("b"), {});
        master.create(h, dnOf("d"), {});
    });
    const Handle handle = shared();
    master.create(handle, dnOf("c"), {});
    master.create(handle, dnOf("a"), {});
    master.remove(handle, dnOf("d"));
    EXPECT_EQ(master.instances(handle, "ManagedElement,Transport,DiffServCategory"),
              (std::vector{dnOf("a"), dnOf("b"), dnOf("c")}));
    EXPECT_EQ(codeOf([&] { master.instances(handle, "Transport"); }), BRY_UNKNOWN_CLASS);
}

TEST_F(Model, PublishesTheNetChangesInTheOrderInWhichTheyWereMade) {
    commit([&](Handle h) {
        master.create(h, netconfSsh, {{"administrativeState", enumeration(0)}});
        master.set(h, ssh, {{"selectedCiphers", texts({"a", "b"})}});
        master.create(h, cliSsh, {});
        master.set(h, netconfSsh, {{"administrativeState", enumeration(1)}});
    });
    expectPublished({"CREATED " + netconfSsh + " administrativeState=UNLOCKED",
                     "ATTRIBUTES_CHANGED " + ssh + " selectedCiphers=a,b",
                     "CREATED " + cliSsh + " administrativeState=LOCKED"});
}

TEST_F(Model, PublishesNothingForWhatEndsAsItBegan) {
    commit([&](Handle h) { master.create(h, cliSsh, {}); });
    published.clear();
    commit([&](Handle h) {
        master.set(h, cliSsh, {{"administrativeState", enumeration(1)}});
        master.set(h, cliSsh, {{"administrativeState", enumeration(0)}});
        master.create(h, category, {});
        master.remove(h, category);
        master.set(h, ssh, {{"selectedMacs", texts({})}});
        master.remove(h, cliSsh);
        master.create(h, cliSsh, {});
    });
    expectPublished({});
}

TEST_F(Model, AValueThatIsTakenAwayIsPublishedWithoutValues) {
    commit([&](Handle h) { master.set(h, ssh, {{"selectedMacs", texts({"a"})}}); });
    published.clear();
    commit([&](Handle h) { master.set(h, ssh, {{"selectedMacs", texts({})}}); });
    expectPublished({"ATTRIBUTES_CHANGED " + ssh + " selectedMacs="});
}

TEST_F(Model, AParentIsPublishedBeforeItsChildAndADeletedChildBeforeItsParent) {
    const std::string other = "ManagedElement=1,Transport=2";
    commit([&](Handle h) {
        master.create(h, other, {});
        master.create(h, other + ",DiffServCategory=1", {{"dscp", uint8(1)}});
    });
    expectPublished({"CREATED " + other, "CREATED " + other + ",DiffServCategory=1 dscp=1"});
    commit([&](Handle h) {
        master.set(h, other + ",DiffServCategory=1", {{"dscp", uint8(2)}});
        master.remove(h, other + ",DiffServCategory=1");
        master.remove(h, other);
    });
    expectPublished({"DELETED " + other + ",DiffServCategory=1", "DELETED " + other});
}

TEST_F(Model, TheOrderCanBeFollowedAlsoWhenOthersCommittedBetweenTheChanges) {
    const std::string other = "ManagedElement=1,Transport=2";
    const std::string child = other + ",DiffServCategory=1";
    commit([&](Handle h) { master.create(h, other, {}); });
    const Handle creator = shared();
    master.create(creator, child, {});
    commit([&](Handle h) { master.remove(h, other); });
    master.create(creator, other, {});
    published.clear();
    master.commit(creator);
    expectPublished({"CREATED " + other, "CREATED " + child});
    commit([&](Handle h) { master.remove(h, child); });
    const Handle deleter = shared();
    master.remove(deleter, other);
    commit([&](Handle h) { master.create(h, child, {}); });
    master.remove(deleter, child);
    published.clear();
    master.commit(deleter);
    expectPublished({"DELETED " + child, "DELETED " + other});
}

TEST_F(Model, AnAbortedTransactionLeavesAndPublishesNothing) {
    const Handle handle = shared();
    master.create(handle, cliSsh, {});
    master.abort(handle);
    expectPublished({});
    EXPECT_FALSE(store.contains(cliSsh));
    EXPECT_EQ(codeOf([&] { master.commit(handle); }), BRY_INVALID_HANDLE);
    EXPECT_EQ(codeOf([&] { master.abort(handle); }), BRY_INVALID_HANDLE);
}

TEST_F(Model, SharedTransactionsAreMergedAttributeByAttribute) {
    const Handle first = shared();
    const Handle second = shared();
    master.set(first, ssh, {{"selectedCiphers", texts({"a"})}});
    master.set(second, ssh, {{"selectedMacs", texts({"b"})}});
    master.commit(first);
    EXPECT_EQ(master.get(second, ssh).size(), 2U);
    master.commit(second);
    expectPublished(
        {"ATTRIBUTES_CHANGED " + ssh + " selectedCiphers=a", "ATTRIBUTES_CHANGED " + ssh + " selectedMacs=b"});
}

TEST_F(Model, TheLastOfTwoSharedTransactionsWins) {
    const Handle first = shared();
    const Handle second = shared();
    master.set(first, ssh, {{"selectedMacs", texts({"a"})}});
    master.set(second, ssh, {{"selectedMacs", texts({"b"})}});
    master.commit(second);
    master.commit(first);
    EXPECT_EQ(master.getAttribute(0, ssh, "selectedMacs"), texts({"a"}));
}

TEST_F(Model, ASharedCommitIsRefusedWithWhatItsChangeWouldBeRefusedWithNow) {
    const Handle creator = shared();
    const Handle changer = shared();
    const Handle deleter = shared();
    const Handle child = shared();
    commit([&](Handle h) { master.create(h, cliSsh, {}); });
    master.create(creator, category, {});
    master.set(changer, cliSsh, {{"administrativeState", enumeration(1)}});
    master.remove(deleter, "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1");
    commit([&](Handle h) {
        master.create(h, category, {});
        master.remove(h, cliSsh);
        master.remove(h, ssh);
    });
    const std::string secM = "ManagedElement=1,SystemFunctions=1,SecM=1";
    master.create(child, ssh, {});
    commit([&](Handle h) { master.remove(h, secM); });
    published.clear();
    EXPECT_EQ(codeOf([&] { master.commit(creator); }), BRY_ALREADY_EXISTS);
    EXPECT_EQ(codeOf([&] { master.commit(changer); }), BRY_NOT_FOUND);
    EXPECT_EQ(codeOf([&] { master.commit(deleter); }), BRY_NOT_FOUND);
    EXPECT_EQ(codeOf([&] { master.commit(child); }), BRY_NO_PARENT_MO);
    expectPublished({});
}

TEST_F(Model, ADeleteIsRefusedWhenAChildWasCreatedMeanwhile) {
    const Handle deleter = shared();
    master.remove(deleter, transport);
    commit([&](Handle h) { master.create(h, category, {}); });
    EXPECT_EQ(codeOf([&] { master.commit(deleter); }), BRY_HAS_CHILDREN);
}

TEST_F(Model, WhatWasCreatedAndDeletedInATransactionHidesNothingOfOthers) {
    const Handle handle = shared();
    master.create(handle, category, {});
    master.remove(handle, category);
    commit([&](Handle h) { master.create(h, category, {{"dscp", uint8(1)}}); });
    EXPECT_EQ(master.getAttribute(handle, category, "dscp"), uint8(1));
    EXPECT_EQ(codeOf([&] { master.remove(handle, transport); }), BRY_HAS_CHILDREN);
    master.set(handle, category, {{"dscp", uint8(2)}});
    published.clear();
    master.commit(handle);
    expectPublished({"ATTRIBUTES_CHANGED " + category + " dscp=2"});
}

TEST_F(Model, WhatOthersDeletedCanBeCreatedAgainByWhoHadChangedIt) {
    commit([&](Handle h) { master.create(h, category, {}); });
    const Handle handle = shared();
    master.set(handle, category, {{"dscp", uint8(1)}});
    commit([&](Handle h) { master.remove(h, category); });
    EXPECT_EQ(codeOf([&] { master.set(handle, category, {}); }), BRY_NOT_FOUND);
    master.create(handle, category, {{"dscp", uint8(2)}});
    published.clear();
    master.commit(handle);
    expectPublished({"CREATED " + category + " dscp=2"});
}

TEST_F(Model, AnExclusiveCommitConflictsWithAnyChangeOfWhatItTouched) {
    const Handle handle = exclusive();
    master.set(handle, ssh, {{"selectedCiphers", texts({"a"})}});
    commit([&](Handle h) { master.set(h, ssh, {{"selectedMacs", texts({"b"})}}); });
    published.clear();
    EXPECT_EQ(codeOf([&] { master.commit(handle); }), BRY_CONFLICT);
    expectPublished({});
    EXPECT_EQ(master.get(0, ssh).count("selectedCiphers"), 0U);
    master.abort(handle);
}

TEST_F(Model, AnExclusiveCommitConflictsWhenItsMoWasDeletedAndCreatedAgain) {
    commit([&](Handle h) { master.create(h, category, {}); });
    const Handle handle = exclusive();
    master.set(handle, category, {{"dscp", uint8(1)}});
    commit([&](Handle h) { master.remove(h, category); });
    commit([&](Handle h) { master.create(h, category, {}); });
    EXPECT_EQ(codeOf([&] { master.commit(handle); }), BRY_CONFLICT);
}

TEST_F(Model, AnExclusiveCommitMindsNoChangeOfOtherMosNorOneThatChangedNothing) {
    const Handle handle = exclusive();
    master.set(handle, ssh, {{"selectedCiphers", texts({"a"})}});
    commit([&](Handle h) {
        master.create(h, category, {});
        master.set(h, ssh, {{"selectedMacs", texts({})}});
    });
    EXPECT_EQ(codeOf([&] { master.commit(handle); }), BRY_OK);
}

TEST_F(Model, AFailedCommitStaysOpenAndLeavesNothingInForce) {
    const Handle handle = exclusive();
    master.create(handle, cliSsh, {});
    master.set(handle, ssh, {{"selectedMacs", texts({"a"})}});
    commit([&](Handle h) { master.set(h, ssh, {{"selectedMacs", texts({"b"})}}); });
    EXPECT_EQ(codeOf([&] { master.commit(handle); }), BRY_CONFLICT);
    EXPECT_EQ(codeOf([&] { master.commit(handle); }), BRY_CONFLICT);
    EXPECT_FALSE(store.contains(cliSsh));
    EXPECT_EQ(master.unfinished("test"), std::vector{handle});
    EXPECT_EQ(codeOf([&] { master.abort(handle); }), BRY_OK);
}

TEST_F(Model, ATransactionThatTimedOutSaysSoOnceAndIsGone) {
    const Handle handle = shared(10);
    master.create(handle, cliSsh, {});
    now += std::chrono::milliseconds(9999);
    EXPECT_EQ(codeOf([&] { master.get(handle, cliSsh); }), BRY_OK);
    now += std::chrono::milliseconds(1);
    EXPECT_TRUE(master.unfinished("test").empty());
    EXPECT_EQ(codeOf([&] { master.commit(handle); }), BRY_TIMED_OUT);
    EXPECT_EQ(codeOf([&] { master.commit(handle); }), BRY_INVALID_HANDLE);
    expectPublished({});
    EXPECT_FALSE(store.contains(cliSsh));
}

TEST_F(Model, ALeftoverTransactionBlocksNobodyAndHandlesAreNeverGivenTwice) {
    const Handle leftover = exclusive();
    master.create(leftover, cliSsh, {});
    Handle last = leftover;
    for (int i = 0; i < 100; ++i) {
        const Handle handle = shared();
        EXPECT_GT(handle, last);
        last = handle;
        master.abort(handle);
    }
    commit([&](Handle h) { master.create(h, cliSsh, {}); });
    EXPECT_EQ(codeOf([&] { master.commit(leftover); }), BRY_CONFLICT);
}

TEST_F(Model, ReadersSeeACommitWholeOrNotAtAll) {
    std::atomic<bool> over{false};
    const auto read = [&] {
        std::size_t differing = 0;
        while (!over) {
            const Attributes seen = master.get(0, ssh);
            differing += seen.contains("selectedMacs") && seen.at("selectedMacs") != seen.at("selectedCiphers");
        }
        return differing;
    };
    auto first = std::async(std::launch::async, read);
    auto second = std::async(std::launch::async, read);
    for (int i = 0; i < 300; ++i) {
        const AttributeValue value = texts({std::to_string(i)});
        commit([&](Handle h) {
            master.set(h, ssh, {{"selectedCiphers", value}});
            master.set(h, ssh, {{"selectedMacs", value}});
        });
    }
    over = true;
    EXPECT_EQ(first.get(), 0U);
    EXPECT_EQ(second.get(), 0U);
    EXPECT_EQ(published.size(), 300U);
}

TEST_F(Model, TransactionsThatAreNeverEndedAreLimitedUntilTheyTimeOut) {
    for (std::size_t i = 0; i < TransactionMaster::mostTransactions; ++i) {
        shared(10);
    }
    EXPECT_EQ(codeOf([&] { shared(); }), BRY_NO_RESOURCES);
    now += std::chrono::seconds(10);
    for (std::size_t i = 0; i < TransactionMaster::mostTransactions; ++i) {
        shared(10);
    }
    now += std::chrono::seconds(10);
    EXPECT_EQ(codeOf([&] { master.commit(shared()); }), BRY_OK);
}

}  // namespace
}  // namespace TulNode
