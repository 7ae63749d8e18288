#include "TransactionMaster.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Refusal.h"
#include "Schema.h"
#include "Text.h"

namespace TulNode {

namespace {

std::string nameOf(TransactionMaster::Handle handle) {
    return "transaction " + std::to_string(handle);
}

}  // namespace

TransactionMaster::TransactionMaster(MoStore& store, Publish publish, Clock clock)
    : _store(store),
      _publish(std::move(publish)),
      _clock(std::move(clock)),
      _inForce(store, TUL_LOCK_POLICY_SHARED) {}

TransactionMaster::Handle TransactionMaster::open(TulLockPolicyT lockPolicy, unsigned int timeout,
                                                  const std::string& owner) {
    if (lockPolicy != TUL_LOCK_POLICY_SHARED && lockPolicy != TUL_LOCK_POLICY_EXCLUSIVE) {
        throw Refusal(BRY_INVALID_ARGUMENT, "lock policy " + std::to_string(lockPolicy) + " is not 1 or 2");
    }
    if (timeout == 0) {
        throw Refusal(BRY_INVALID_ARGUMENT, "a transaction needs a time-out of 1 second or more, not 0");
    }
    const std::lock_guard lock(_mutex);
    dropTimedOut();
    const auto isAlive = [](const auto& one) { return one.second.transaction != nullptr; };
    if (std::count_if(_open.begin(), _open.end(), isAlive) >= std::ptrdiff_t{mostTransactions} ||
        _lastHandle == std::numeric_limits<Handle>::max()) {
        throw Refusal(BRY_NO_RESOURCES, std::to_string(mostTransactions) + " transactions are open already");
    }
    auto transaction = std::make_unique<Transaction>(_store, lockPolicy);
    _open.emplace(++_lastHandle, Open{std::move(transaction), _clock() + std::chrono::seconds(timeout), owner});
    return _lastHandle;
}

void TransactionMaster::dropTimedOut() {
    const auto now = _clock();
    std::size_t untold = 0;
    for (auto& [handle, open] : _open) {
        if (open.deadline <= now) {
            open.transaction.reset();
            ++untold;
        }
    }
    // Those whose owner never asks again must not pile up; the oldest handles come first.
    for (auto it = _open.begin(); untold > mostTransactions; it = _open.erase(it)) {
        it = std::find_if(it, _open.end(), [](const auto& one) { return one.second.transaction == nullptr; });
        --untold;
    }
}

Transaction& TransactionMaster::writable(Handle handle) {
    const auto found = _open.find(handle);
    if (found == _open.end()) {
        throw Refusal(BRY_INVALID_HANDLE, nameOf(handle) + " is not open");
    }
    if (found->second.deadline <= _clock()) {
        _open.erase(found);
        throw Refusal(BRY_TIMED_OUT, nameOf(handle) + " has timed out, its changes are dropped");
    }
    return *found->second.transaction;
}

const Transaction& TransactionMaster::readable(Handle handle) {
    return handle == 0 ? _inForce : writable(handle);
}

void TransactionMaster::commit(Handle handle) {
    const std::lock_guard lock(_mutex);
    auto changes = std::make_shared<std::vector<MoChange>>(writable(handle).netChanges());
    try {
        _store.apply(*changes);
    } catch (const SQLite::Exception& e) {
        throw Refusal(BRY_NO_RESOURCES, std::string("the change cannot be written: ") + e.what());
    }
    _open.erase(handle);
    if (!changes->empty()) {
        // Within the lock, so that the order of the commits is the order of their publication.
        _publish(std::move(changes));
    }
}

void TransactionMaster::abort(Handle handle) {
    const std::lock_guard lock(_mutex);
    if (_open.erase(handle) == 0) {
        throw Refusal(BRY_INVALID_HANDLE, nameOf(handle) + " is not open");
    }
}

Attributes TransactionMaster::get(Handle handle, const std::string& dn) {
    const std::lock_guard lock(_mutex);
    const Transaction& view = readable(handle);
    std::optional<Attributes> attributes = view.find(Dn(dn).text());
    if (!attributes) {
        throw Refusal(BRY_NOT_FOUND, "there is no MO " + dn);
    }
    return std::move(*attributes);
}

AttributeValue TransactionMaster::getAttribute(Handle handle, const std::string& dn, const std::string& name) {
    const Attributes attributes = get(handle, dn);
    const Dn parsed(dn);
    const ClassDefinition& definition = classDefinition(parsed.last().className);
    if (name == definition.keyAttribute) {
        return {TUL_MO_TYPE_STRING_3, {parsed.last().key}};
    }
    const AttributeDefinition& attribute = definition.attribute(name);
    const auto found = attributes.find(name);
    return found == attributes.end() ? AttributeValue{attribute.type, {}} : found->second;
}

std::vector<std::string> TransactionMaster::instances(Handle handle, const std::string& classPath) {
    checkClassPath(classPath);
    const std::lock_guard lock(_mutex);
    return readable(handle).instances(classPath);
}

std::vector<std::string> TransactionMaster::all(Handle handle) {
    const std::lock_guard lock(_mutex);
    return readable(handle).all();
}

void TransactionMaster::create(Handle handle, const std::string& dn, const Attributes& attributes) {
    const std::lock_guard lock(_mutex);
    writable(handle).create(Dn(dn), attributes);
}

void TransactionMaster::createBelow(Handle handle, const std::string& parentDn, const std::string& className,
                                    const std::string& keyAttribute, const std::string& key,
                                    const Attributes& attributes) {
    const std::string part = className + "=" + key;
    const Dn dn(parentDn.empty() ? part : parentDn + "," + part);
    if (dn.last().className != className || dn.last().key != key) {
        throw Refusal(BRY_BAD_DN, "\"" + escape(part) + "\" is not one class name with one key");
    }
    const std::string& expected = classDefinition(className).keyAttribute;
    if (keyAttribute != expected) {
        throw Refusal(BRY_UNKNOWN_CLASS, "the key attribute of " + className + " is " + expected + ", not \"" +
                                             escape(keyAttribute) + "\"");
    }
    create(handle, dn.text(), attributes);
}

void TransactionMaster::set(Handle handle, const std::string& dn, const Attributes& attributes) {
    const std::lock_guard lock(_mutex);
    writable(handle).set(Dn(dn), attributes);
}

void TransactionMaster::remove(Handle handle, const std::string& dn) {
    const std::lock_guard lock(_mutex);
    writable(handle).remove(Dn(dn));
}

std::vector<TransactionMaster::Handle> TransactionMaster::unfinished(const std::string& owner) {
    const std::lock_guard lock(_mutex);
    dropTimedOut();
    std::vector<Handle> handles;
    for (const auto& [handle, open] : _open) {
        if (open.transaction && open.owner == owner) {
            handles.push_back(handle);
        }
    }
    return handles;
}

}  // namespace TulNode
