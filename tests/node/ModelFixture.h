#ifndef TUL_NODE_TEST_MODEL_FIXTURE_H
#define TUL_NODE_TEST_MODEL_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "Defaults.h"
#include "MoStore.h"
#include "ModelText.h"
#include "Refusal.h"
#include "TransactionMaster.h"

namespace TulNode {

inline const std::string sysM = "ManagedElement=1,SystemFunctions=1,SysM=1";
inline const std::string cliSsh = sysM + ",CliSsh=1";
inline const std::string netconfSsh = sysM + ",NetconfSsh=1";
inline const std::string ssh = "ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1";
inline const std::string transport = "ManagedElement=1,Transport=1";
inline const std::string category = transport + ",DiffServCategory=OamCM";

inline AttributeValue enumeration(std::int64_t value) {
    return {TUL_MO_TYPE_ENUMERATION_3, {value}};
}
inline AttributeValue uint8(std::int64_t value) {
    return {TUL_MO_TYPE_UINT8_3, {value}};
}
inline AttributeValue texts(const std::vector<std::string>& values) {
    return {TUL_MO_TYPE_STRING_3, {values.begin(), values.end()}};
}

/** What an operation ends with: 0, or the code that it is refused with. */
inline BryReturnT codeOf(const std::function<void()>& operation) {
    try {
        operation();
        return BRY_OK;
    } catch (const Refusal& refusal) {
        EXPECT_STRNE(refusal.what(), "");
        return refusal.code();
    }
}

/** The default model in a store in memory, with a clock that the test sets. */
class ModelFixture : public testing::Test {
protected:
    using Handle = TransactionMaster::Handle;

    ModelFixture() {
        applyModel(master, defaultModel, "default");
        published.clear();
    }

    Handle shared(unsigned int timeout = 60) { return master.open(TUL_LOCK_POLICY_SHARED, timeout, "test"); }
    Handle exclusive() { return master.open(TUL_LOCK_POLICY_EXCLUSIVE, 60, "test"); }

    /** Makes changes in a transaction of their own. */
    void commit(const std::function<void(Handle)>& changes) {
        const Handle handle = shared();
        changes(handle);
        master.commit(handle);
    }

    void expectPublished(const std::vector<std::string>& lines) {
        EXPECT_EQ(published, lines);
        published.clear();
    }

    MoStore store{""};
    std::vector<std::string> published; /**< a line for each change */
    std::chrono::steady_clock::time_point now{};
    TransactionMaster master{store,
                             [this](const Commit& commit) {
                                 for (const MoChange& change : *commit) {
                                     published.push_back(formatChange(change));
                                 }
                             },
                             [this] { return now; }};
};

}  // namespace TulNode

#endif
