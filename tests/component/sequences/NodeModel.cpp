#include "NodeModel.h"

namespace Sequences {

namespace {

constexpr int stringType = 10;
constexpr int enumerationType = 12;
constexpr int uint8Type = 5;

std::string classPathOf(const std::string& dn) {
    std::string path;
    bool inKey = false;
    for (const char c : dn) {
        inKey = c == '=' || (inKey && c != ',');
        path += inKey ? "" : std::string(1, c);
    }
    return path;
}

}  // namespace

void NodeModel::openAccessor() {
    if (!_stage.findsManagedObjects()) {
        throw Stage::Failure{"Interface TulOamSpiManagedObject not found"};
    }
}

std::string NodeModel::findFirst(const std::string& classPath) {
    if (_stage.call("findInstances", "0 " + classPath) == 0) {
        for (const auto& [dn, attributes] : _stage.surroundings.mos) {
            if (classPathOf(dn) == classPath) {
                return dn;
            }
        }
    }
    throw Stage::Failure{"no instance"};
}

std::string NodeModel::firstDn(const std::string& classPath) {
    try {
        openAccessor();
        return findFirst(classPath);
    } catch (const Stage::Failure&) {
        _stage.warning("getDnValue", "Could not find first instance of classpath : " + classPath);
        return "";
    }
}

std::optional<TulTest::AttributeValues> NodeModel::fetch(const std::string& dn, const std::string& name) {
    const auto& mos = _stage.surroundings.mos;
    if (_stage.call("getAttribute", "0 " + dn + " " + name) != 0 || !mos.contains(dn)) {
        throw Stage::Failure{"cannot be read"};
    }
    const auto found = mos.at(dn).find(name);
    if (found == mos.at(dn).end() || (found->second.numbers.empty() && found->second.texts.empty())) {
        return std::nullopt;
    }
    return found->second;
}

std::int64_t NodeModel::readOne(const std::string& dn, const std::string& name, int type) {
    const auto values = fetch(dn, name);
    if (!values) {
        throw Stage::Failure{"no value"};
    }
    if (values->numbers.size() + values->texts.size() > 1) {
        _stage.error("getAttr", "Attribute is a sequence: " + dn + "::" + name);
        throw Stage::Failure{"many values"};
    }
    if (values->type != type) {
        throw Stage::Failure{"wrong type"};
    }
    return values->numbers.front();
}

/** What cannot be read has no elements; only a wrong type is a failure. */
std::vector<std::string> NodeModel::readList(const std::string& dn, const std::string& name) {
    std::optional<TulTest::AttributeValues> values;
    try {
        values = fetch(dn, name);
    } catch (const Stage::Failure&) {
        return {};
    }
    if (values && values->type != stringType) {
        throw Stage::Failure{"wrong type"};
    }
    return values ? values->texts : std::vector<std::string>{};
}

BryReturnT NodeModel::newTransaction(const std::string& function, int lockPolicy) {
    ++_stage.handles;
    const BryReturnT refused = _stage.call("newTransaction", std::to_string(lockPolicy) + " 3600");
    if (refused != 0) {
        _stage.error(function, "New Transaction could not be created.");
    }
    return refused;
}

BryReturnT NodeModel::commit(const std::string& function) {
    const BryReturnT refused = _stage.call("commit", std::to_string(_stage.handles));
    if (refused != 0) {
        _stage.error(function, "Transaction commit failed!!.");
    }
    return refused;
}

BryReturnT NodeModel::createMo(const std::string& className, const std::string& keyName) {
    const std::string parent = firstDn("ManagedElement,SystemFunctions,SysM");
    if (parent.empty()) {
        _stage.warning("createMo", "SysM Instance could not be found.");
        return -2;
    }
    if (const BryReturnT refused = newTransaction("createMo", 1)) {
        return refused;
    }
    const std::string transaction = std::to_string(_stage.handles);
    if (const BryReturnT refused = _stage.call("createMo", transaction + " " + parent + " " + className + " " +
                                                               keyName + " 1 administrativeState:12=1;")) {
        _stage.error("createMo", className + " Mo Creation Failed!!.");
        return refused;
    }
    return commit("createMo");
}

BryReturnT NodeModel::deleteMo(const std::string& dn) {
    const int lockPolicy = _stage.isBent(Bend::DELETION_LOCKS_LIKE_CREATION) ? 1 : 2;
    if (const BryReturnT refused = newTransaction("deleteMoInstance", lockPolicy)) {
        return refused;
    }
    const BryReturnT refused = _stage.call("deleteMo", std::to_string(_stage.handles) + " " + dn);
    if (refused != 0 && !_stage.isBent(Bend::REFUSED_DELETION_IS_COMMITTED)) {
        return refused;  // without a word
    }
    return commit("deleteMoInstance");
}

std::optional<int> NodeModel::administrativeState(const std::string& dn) {
    try {
        openAccessor();
        const auto value = static_cast<std::int16_t>(readOne(dn, "administrativeState", enumerationType));
        const bool isUnlocked = _stage.isBent(Bend::STATE_IN_MODEL_IS_NOT_MAPPED) ? value != 0 : value == 1;
        return isUnlocked ? 1 : 0;
    } catch (const Stage::Failure&) {
        _stage.warning("getAdministrativeState", "Unable to get administrativeState for " + dn);
        return _stage.isBent(Bend::UNREADABLE_STATE_LOCKS) ? std::optional(0) : std::nullopt;
    }
}

std::string NodeModel::dscp() {
    try {
        openAccessor();
        const std::string dn = findFirst("ManagedElement,Transport") + ",DiffServCategory=OamCM";
        return std::to_string(readOne(dn, "dscp", uint8Type) & 0xff);
    } catch (const Stage::Failure&) {
        return "";  // without a word
    }
}

std::map<std::string, std::string> NodeModel::ciphers(const std::string& dn) {
    std::map<std::string, std::string> selected;
    openAccessor();  // the one failure that goes to whoever asked
    for (const std::string name : {"selectedCiphers", "selectedKeyExchanges", "selectedMacs"}) {
        try {
            for (const std::string& value : readList(dn, name)) {
                const std::string comma = selected.contains(name) ? "," : "";
                selected[name] += comma + value;
            }
        } catch (const Stage::Failure&) {
            _stage.warning("fetchCipherConfiguration", "Unable to get selected(" + name + ") for DN(" + dn + ")");
        }
    }
    return selected;
}

}  // namespace Sequences
