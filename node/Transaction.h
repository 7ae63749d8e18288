#ifndef TUL_NODE_TRANSACTION_H
#define TUL_NODE_TRANSACTION_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Dn.h"
#include "MoStore.h"
#include "TulOamSpiTransactionMaster_1.h"

namespace TulNode {

/**
 * Changes that wait beside the store until they are committed, and the model as it looks with them.
 *
 * What it has not touched is read through from the store as it is now; what it has touched is merged with the
 * store attribute by attribute. One thread at a time, together with its store. Refusals carry the codes that
 * TulOamSpiManagedObject_3.h lists.
 */
class Transaction {
public:
    Transaction(MoStore& store, TulLockPolicyT lockPolicy) : _store(store), _lockPolicy(lockPolicy) {}

    /** All attributes of an MO that have a value; nothing when there is no such MO. */
    std::optional<Attributes> find(const std::string& dn) const;
    std::vector<std::string> instances(const std::string& classPath) const;
    std::vector<std::string> all() const;

    void create(const Dn& dn, Attributes attributes);
    void set(const Dn& dn, const Attributes& attributes);
    void remove(const Dn& dn);

    /**
     * What would change if it were committed now, in the order of the changes; what ends as it began is left out.
     * Checks everything again, because others may have committed meanwhile: BRY_CONFLICT for an exclusive one.
     */
    std::vector<MoChange> netChanges() const;

private:
    /** The state of a touched MO. */
    struct Touched {
        std::optional<std::int64_t> base; /**< its version in the store when it was touched first; none: absent */
        std::uint64_t order;              /**< of its creation or deletion, else of its first change */
        bool existed = false;             /**< the changes are those of an MO that is in the store */
        bool exists = false;
        bool complete = false;   /**< the attributes are all of them: it was created here */
        Attributes attributes{}; /**< without `complete`: those that were set, also those without a value now */

        /** Whether the store's own state of the MO is out of sight. Not for one that was created and deleted here. */
        bool hidesStored() const { return complete || (existed && !exists); }
    };

    Touched& touch(const std::string& dn);
    bool exists(const std::string& dn) const;
    bool hasChildren(const std::string& dn) const;
    std::vector<std::string> withTouched(std::vector<std::string> stored, const std::string& classPath) const;
    void check(const std::string& dn, const Touched& touched) const;
    std::optional<MoChange> netChange(const std::string& dn, const Touched& touched) const;

    MoStore& _store;
    TulLockPolicyT _lockPolicy;
    std::map<std::string, Touched> _touched;
    std::uint64_t _changes = 0;
};

}  // namespace TulNode

#endif
