#ifndef TUL_NODE_TRANSACTION_MASTER_H
#define TUL_NODE_TRANSACTION_MASTER_H

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "MoStore.h"
#include "Transaction.h"
#include "TulOamSpiTransactionMaster_1.h"

namespace TulNode {

/** The net changes of one commit, in the order in which they were made; never empty. */
using Commit = std::shared_ptr<const std::vector<MoChange>>;

/**
 * The model and its transactions.
 *
 * Every operation refuses with the codes of TulOamSpiTransactionMaster_1.h and TulOamSpiManagedObject_3.h. A
 * transaction whose time-out has passed says BRY_TIMED_OUT once and is then a dead handle; handles are never given
 * twice. Any thread; a reader sees a commit whole or not at all.
 */
class TransactionMaster {
public:
    using Handle = TulOamSpiTransactionHandleT;
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /** Gets each commit, in the order of the commits, from within commit(). It must not call back. */
    using Publish = std::function<void(Commit)>;

    static constexpr std::size_t mostTransactions = 1000; /**< open at the same time; more: BRY_NO_RESOURCES */

    /** The store must outlive it, and nobody else may use the store meanwhile. */
    TransactionMaster(MoStore& store, Publish publish, Clock clock = std::chrono::steady_clock::now);

    /** The time-out is in seconds, 1 or more; the owner is a name for unfinished(). */
    Handle open(TulLockPolicyT lockPolicy, unsigned int timeout, const std::string& owner);
    void commit(Handle handle);
    void abort(Handle handle);

    /** Reads with handle 0 see what is in force. The key attribute is read like any other. */
    AttributeValue getAttribute(Handle handle, const std::string& dn, const std::string& name);

    /** The attributes that have a value, without the key. */
    Attributes get(Handle handle, const std::string& dn);
    std::vector<std::string> instances(Handle handle, const std::string& classPath);

    /** The DNs of all MOs, in tree order. */
    std::vector<std::string> all(Handle handle);

    void create(Handle handle, const std::string& dn, const Attributes& attributes);

    /** As the SPI names the new MO; an empty parent makes a root. */
    void createBelow(Handle handle, const std::string& parentDn, const std::string& className,
                     const std::string& keyAttribute, const std::string& key, const Attributes& attributes);
    void set(Handle handle, const std::string& dn, const Attributes& attributes);
    void remove(Handle handle, const std::string& dn);

    /** The handles that an owner left open and that have not timed out. */
    std::vector<Handle> unfinished(const std::string& owner);

private:
    struct Open {
        std::unique_ptr<Transaction> transaction; /**< null: timed out, and nobody has been told yet */
        std::chrono::steady_clock::time_point deadline;
        std::string owner;
    };

    Transaction& writable(Handle handle);
    const Transaction& readable(Handle handle);
    void dropTimedOut();

    MoStore& _store;
    Publish _publish;
    Clock _clock;
    std::mutex _mutex;
    const Transaction _inForce;
    std::map<Handle, Open> _open;
    Handle _lastHandle = 0;
};

}  // namespace TulNode

#endif
