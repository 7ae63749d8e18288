#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <random>

#include "ModelFixture.h"

namespace TulNode {
namespace {

/** The model as a plain map, and what may be done with it: everything that the store does, with nothing clever. */
struct Reference {
    std::map<std::string, Attributes> mos;

    bool hasChildren(const std::string& dn) const {
        return std::any_of(mos.begin(), mos.end(), [&](const auto& mo) { return Dn(mo.first).parent() == dn; });
    }

    bool create(const std::string& dn, const Attributes& attributes) {
        const std::string parent = Dn(dn).parent();
        return (parent.empty() || mos.contains(parent)) && mos.emplace(dn, attributes).second;
    }

    bool set(const std::string& dn, const std::string& name, const AttributeValue& value) {
        const auto mo = mos.find(dn);
        if (mo == mos.end()) {
            return false;
        }
        mo->second.insert_or_assign(name, value);
        std::erase_if(mo->second, [](const auto& attribute) { return attribute.second.values.empty(); });
        return true;
    }

    bool remove(const std::string& dn) { return !hasChildren(dn) && mos.erase(dn) == 1; }

    /** Carries out what was published; every step must be possible and must change something. */
    void follow(const MoChange& change) {
        if (change.type == CREATED) {
            EXPECT_TRUE(create(change.dn, change.attributes)) << change.dn;
        } else if (change.type == DELETED) {
            EXPECT_TRUE(remove(change.dn)) << change.dn;
        }
        for (const auto& [name, value] : change.attributes) {
            EXPECT_TRUE(change.type == CREATED || !mos[change.dn].contains(name) || mos[change.dn][name] != value);
            EXPECT_TRUE(set(change.dn, name, value)) << change.dn;
        }
    }
};

std::size_t changedMos(const Reference& before, const Reference& after) {
    std::map<std::string, int> differing;
    for (const auto& [dn, attributes] : before.mos) {
        differing[dn] = !after.mos.contains(dn) || after.mos.at(dn) != attributes;
    }
    for (const auto& [dn, attributes] : after.mos) {
        differing[dn] = !before.mos.contains(dn) || before.mos.at(dn) != attributes;
    }
    return static_cast<std::size_t>(
        std::count_if(differing.begin(), differing.end(), [](const auto& one) { return one.second != 0; }));
}

/** Random transactions against the reference. TUL_TEST_SEED repeats a run. */
class NetChanges : public testing::Test {
protected:
    NetChanges() {
        const char* given = std::getenv("TUL_TEST_SEED");
        const unsigned long seed = given != nullptr ? std::strtoul(given, nullptr, 10) : std::random_device{}();
        std::cout << "TUL_TEST_SEED=" << seed << std::endl;
        _random.seed(seed);
        applyModel(master, "create ManagedElement=1\ncreate ManagedElement=1,Transport=1\n", "test");
    }

    std::size_t pick(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(_random); }

    std::string anyDn() {
        const std::string above = "ManagedElement=1,Transport=" + std::to_string(1 + pick(3));
        return pick(4) == 0 ? above : above + ",DiffServCategory=" + std::to_string(1 + pick(3));
    }

    AttributeValue anyDscp() { return pick(4) == 0 ? AttributeValue{TUL_MO_TYPE_UINT8_3, {}} : uint8(int(pick(3))); }

    /** One random change in both; both must agree on whether it is possible. */
    void changeBoth(TransactionMaster::Handle handle, Reference& reference) {
        const std::string dn = anyDn();
        const bool isCategory = Dn(dn).depth() == 3;
        const std::size_t kind = pick(isCategory ? 4 : 2);
        if (kind == 0) {
            const bool done = codeOf([&] { master.create(handle, dn, {}); }) == BRY_OK;
            EXPECT_EQ(done, reference.create(dn, {})) << "create " << dn;
        } else if (kind == 1) {
            const bool done = codeOf([&] { master.remove(handle, dn); }) == BRY_OK;
            EXPECT_EQ(done, reference.remove(dn)) << "delete " << dn;
        } else {
            const AttributeValue value = anyDscp();
            const bool done = codeOf([&] { master.set(handle, dn, {{"dscp", value}}); }) == BRY_OK;
            EXPECT_EQ(done, reference.set(dn, "dscp", value)) << "set " << dn;
        }
    }

    Reference inForce() {
        Reference result;
        for (const std::string& dn : master.all(0)) {
            result.mos[dn] = master.get(0, dn);
        }
        return result;
    }

    MoStore store{""};
    Reference mirror; /**< built from nothing but what is published */
    std::size_t published = 0;
    TransactionMaster master{store, [this](const Commit& commit) {
                                 for (const MoChange& change : *commit) {
                                     mirror.follow(change);
                                     ++published;
                                 }
                             }};

private:
    std::mt19937_64 _random;
};

TEST_F(NetChanges, OfRandomTransactionsAreThoseOfTheReference) {
    Reference reference = inForce();
    for (int i = 0; i < 2000 && !HasFailure(); ++i) {
        Reference changed = reference;
        const TransactionMaster::Handle handle = master.open(TUL_LOCK_POLICY_SHARED, 60, "test");
        for (std::size_t change = 0; change < 1 + pick(8); ++change) {
            changeBoth(handle, changed);
        }
        published = 0;
        if (pick(5) == 0) {
            master.abort(handle);
        } else {
            master.commit(handle);
            EXPECT_EQ(published, changedMos(reference, changed));
            reference = changed;
        }
        EXPECT_EQ(inForce().mos, reference.mos);
        EXPECT_EQ(mirror.mos, reference.mos);
    }
}

TEST_F(NetChanges, OfInterleavedTransactionsRebuildTheModel) {
    std::vector<TransactionMaster::Handle> open;
    for (int i = 0; i < 3000 && !HasFailure(); ++i) {
        if (open.size() < 3) {
            open.push_back(
                master.open(pick(2) == 0 ? TUL_LOCK_POLICY_SHARED : TUL_LOCK_POLICY_EXCLUSIVE, 60, "test"));
        }
        const std::size_t chosen = pick(open.size());
        Reference ignored;
        if (pick(4) != 0) {
            const std::string dn = anyDn();
            codeOf([&] { pick(2) == 0 ? master.create(open[chosen], dn, {}) : master.remove(open[chosen], dn); });
            codeOf([&] { master.set(open[chosen], dn, {{"dscp", anyDscp()}}); });
            continue;
        }
        const auto before = inForce();
        if (codeOf([&] { master.commit(open[chosen]); }) != BRY_OK) {
            EXPECT_EQ(inForce().mos, before.mos);
            master.abort(open[chosen]);
        }
        open.erase(open.begin() + static_cast<std::ptrdiff_t>(chosen));
        EXPECT_EQ(mirror.mos, inForce().mos);
        for (const auto& [dn, attributes] : mirror.mos) {
            EXPECT_TRUE(Dn(dn).depth() == 1 || mirror.mos.contains(Dn(dn).parent())) << dn << " has no parent";
        }
    }
}

}  // namespace
}  // namespace TulNode
