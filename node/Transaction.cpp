#include "Transaction.h"

#include <algorithm>
#include <utility>

#include "Refusal.h"
#include "Schema.h"

namespace TulNode {

namespace {

void merge(Attributes& into, const Attributes& changes) {
    for (const auto& [name, value] : changes) {
        if (value.values.empty()) {
            into.erase(name);
        } else {
            into.insert_or_assign(name, value);
        }
    }
}

/** The attributes that have another value in `after`; one that lost its value is there without values. */
Attributes difference(const Attributes& before, const Attributes& after) {
    Attributes changed;
    for (const auto& [name, value] : after) {
        const auto old = before.find(name);
        if (old == before.end() || old->second != value) {
            changed.emplace(name, value);
        }
    }
    for (const auto& [name, value] : before) {
        if (!after.contains(name)) {
            changed.emplace(name, AttributeValue{value.type, {}});
        }
    }
    return changed;
}

struct OrderedChange {
    std::uint64_t order;
    Dn dn;
    MoChange change;

    /** Puts those that liftOver() made equal in the only order in which they can be carried out. */
    auto key() const {
        const auto depth = static_cast<std::ptrdiff_t>(dn.depth());
        return std::pair(order, change.type == DELETED ? -depth : depth);
    }
};

/** Moves a change that needs another one to be made first, the parent's or the child's, behind it. */
void liftOver(OrderedChange& later, CmEventType type, const std::string& first,
              const std::map<std::string, std::uint64_t>& orders) {
    const auto found = orders.find(first);
    if (later.change.type == type && found != orders.end()) {
        later.order = std::max(later.order, found->second);
    }
}

/**
 * Sorts changes that come in tree order. The order in which they were made would do if nobody else committed
 * meanwhile: a parent that others deleted is created again behind its new child, for one.
 */
std::vector<MoChange> inOrder(std::vector<OrderedChange> changes) {
    std::map<std::string, std::uint64_t> created;
    for (OrderedChange& change : changes) {
        liftOver(change, CREATED, change.dn.parent(), created);
        if (change.change.type == CREATED) {
            created[change.dn.text()] = change.order;
        }
    }
    std::map<std::string, std::uint64_t> deletedBelow;
    std::for_each(changes.rbegin(), changes.rend(), [&deletedBelow](OrderedChange& change) {
        liftOver(change, DELETED, change.dn.text(), deletedBelow);
        if (change.change.type == DELETED) {
            std::uint64_t& last = deletedBelow[change.dn.parent()];
            last = std::max(last, change.order);
        }
    });
    std::sort(changes.begin(), changes.end(), [](const auto& a, const auto& b) { return a.key() < b.key(); });
    std::vector<MoChange> result;
    result.reserve(changes.size());
    for (OrderedChange& change : changes) {
        result.push_back(std::move(change.change));
    }
    return result;
}

[[noreturn]] void refuseMissing(const std::string& dn) {
    throw Refusal(BRY_NOT_FOUND, "there is no MO " + dn);
}

}  // namespace

std::optional<Attributes> Transaction::find(const std::string& dn) const {
    const auto own = _touched.find(dn);
    if (own != _touched.end() && own->second.hidesStored()) {
        return own->second.exists ? std::optional(own->second.attributes) : std::nullopt;
    }
    std::optional<StoredMo> stored = _store.find(dn);
    if (!stored) {
        return std::nullopt;
    }
    if (own != _touched.end()) {
        merge(stored->attributes, own->second.attributes);
    }
    return std::move(stored->attributes);
}

std::vector<std::string> Transaction::instances(const std::string& classPath) const {
    return withTouched(_store.instances(classPath), classPath);
}

std::vector<std::string> Transaction::all() const {
    return withTouched(_store.all(), "");
}

std::vector<std::string> Transaction::withTouched(std::vector<std::string> stored,
                                                  const std::string& classPath) const {
    std::erase_if(stored, [this](const std::string& dn) { return _touched.contains(dn) && !exists(dn); });
    for (const auto& [dn, touched] : _touched) {
        if (touched.exists && touched.complete && (classPath.empty() || Dn(dn).classPath() == classPath)) {
            stored.push_back(dn);
        }
    }
    std::sort(stored.begin(), stored.end());
    stored.erase(std::unique(stored.begin(), stored.end()), stored.end());
    return stored;
}

bool Transaction::exists(const std::string& dn) const {
    const auto own = _touched.find(dn);
    if (own != _touched.end() && own->second.hidesStored()) {
        return own->second.exists;
    }
    return _store.contains(dn);
}

bool Transaction::hasChildren(const std::string& dn) const {
    const std::vector<std::string> stored = _store.children(dn);
    const auto isThere = [this](const std::string& child) { return exists(child); };
    const auto isCreatedBelow = [&dn](const auto& own) {
        return own.second.exists && own.second.complete && Dn(own.first).parent() == dn;
    };
    return std::any_of(stored.begin(), stored.end(), isThere) ||
           std::any_of(_touched.begin(), _touched.end(), isCreatedBelow);
}

Transaction::Touched& Transaction::touch(const std::string& dn) {
    const auto found = _touched.find(dn);
    if (found != _touched.end()) {
        return found->second;
    }
    return _touched.emplace(dn, Touched{_store.version(dn), ++_changes}).first->second;
}

void Transaction::create(const Dn& dn, Attributes attributes) {
    checkPlace(dn);
    const ClassDefinition& definition = classDefinition(dn.last().className);
    checkAttributes(definition, attributes);
    if (dn.depth() > 1 && !exists(dn.parent())) {
        throw Refusal(BRY_NO_PARENT_MO, "there is no MO " + dn.parent() + " to create " + dn.last().className + "=" +
                                            dn.last().key + " below");
    }
    if (exists(dn.text())) {
        throw Refusal(BRY_ALREADY_EXISTS, "there is an MO " + dn.text() + " already");
    }
    addDefaults(definition, attributes);
    std::erase_if(attributes, [](const auto& attribute) { return attribute.second.values.empty(); });
    Touched& touched = touch(dn.text());
    const bool replaces = touched.existed && !touched.exists;
    touched = {touched.base, ++_changes, replaces, true, true, std::move(attributes)};
}

void Transaction::set(const Dn& dn, const Attributes& attributes) {
    if (!exists(dn.text())) {
        refuseMissing(dn.text());
    }
    checkAttributes(classDefinition(dn.last().className), attributes);
    Touched& touched = touch(dn.text());
    if (touched.complete) {
        merge(touched.attributes, attributes);
        return;
    }
    touched.existed = touched.exists = true;
    for (const auto& [name, value] : attributes) {
        touched.attributes.insert_or_assign(name, value);
    }
}

void Transaction::remove(const Dn& dn) {
    if (!exists(dn.text())) {
        refuseMissing(dn.text());
    }
    if (hasChildren(dn.text())) {
        throw Refusal(BRY_HAS_CHILDREN, dn.text() + " has MOs below it, which must be deleted first");
    }
    Touched& touched = touch(dn.text());
    const bool isStored = !touched.complete || touched.existed;
    touched = {touched.base, ++_changes, isStored};
}

void Transaction::check(const std::string& dn, const Touched& touched) const {
    const std::optional<std::int64_t> now = _store.version(dn);
    if (_lockPolicy == TUL_LOCK_POLICY_EXCLUSIVE && now != touched.base) {
        throw Refusal(BRY_CONFLICT, dn + " was changed by another transaction meanwhile");
    }
    if (touched.existed && !now) {
        refuseMissing(dn);
    }
    if (touched.exists && !touched.existed) {
        if (now) {
            throw Refusal(BRY_ALREADY_EXISTS, dn + " was created by another transaction meanwhile");
        }
        const std::string parent = Dn(dn).parent();
        if (!parent.empty() && !exists(parent)) {
            throw Refusal(BRY_NO_PARENT_MO, parent + " was deleted by another transaction meanwhile");
        }
    }
    if (!touched.exists && touched.existed && hasChildren(dn)) {
        throw Refusal(BRY_HAS_CHILDREN, "another transaction created MOs below " + dn + " meanwhile");
    }
}

std::optional<MoChange> Transaction::netChange(const std::string& dn, const Touched& touched) const {
    if (!touched.existed) {
        return touched.exists ? std::optional(MoChange{CREATED, dn, touched.attributes}) : std::nullopt;
    }
    if (!touched.exists) {
        return MoChange{DELETED, dn, {}};
    }
    // Deleted and created again is the same MO with other attributes to everybody else.
    Attributes changed = difference(_store.find(dn).value().attributes, find(dn).value());
    return changed.empty() ? std::nullopt : std::optional(MoChange{ATTRIBUTES_CHANGED, dn, std::move(changed)});
}

std::vector<MoChange> Transaction::netChanges() const {
    std::vector<OrderedChange> changes;
    for (const auto& [dn, touched] : _touched) {
        check(dn, touched);
        if (std::optional<MoChange> change = netChange(dn, touched)) {
            changes.push_back({touched.order, Dn(dn), std::move(*change)});
        }
    }
    return inOrder(std::move(changes));
}

}  // namespace TulNode
