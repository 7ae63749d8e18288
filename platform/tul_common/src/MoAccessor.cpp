#include "MoAccessor.h"

#include <exception>

#include "Portal.h"

namespace Tul {

namespace {

constexpr BryMgmtSpiInterface_1 managedObjectInterfaceId = {
    TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME, TUL_OAM_SPI_MANAGED_OBJECT_VERSION_3};

constexpr TulOamSpiTransactionHandleT committedState = 0;

struct FirstInstance {
    std::string dn;
    bool found = false;
    std::exception_ptr failure;
};

/** A visitor. The framework that calls it is C: a failure waits until the search has returned. */
bool keepFirst(void* context, const char* dn) noexcept {
    FirstInstance& first = *static_cast<FirstInstance*>(context);
    if (first.found || dn == nullptr) {
        return !first.found;
    }
    try {
        first.dn = dn;
        first.found = true;
    } catch (const std::exception&) {
        first.failure = std::current_exception();
    }
    return false;
}

}  // namespace

MoAccessor::MoAccessor(bool /*committedOnly*/, TulLockPolicyT /*lockPolicy*/, int /*timeout*/) {
    void* found = nullptr;
    const BryReturnT result = Portal::instance().getInterface(managedObjectInterfaceId, &found);
    if (result != BRY_OK || found == nullptr) {
        throw TulException(result == BRY_OK ? BRY_NOT_FOUND : result, "Interface %s not found",
                           managedObjectInterfaceId.interfaceName);
    }
    _managedObjectIf = static_cast<TulOamSpiManagedObject_3*>(found);
}

MoAccessor::~MoAccessor() = default;

void MoAccessor::getAttrContainer(const std::string& dName, const std::string& attrName,
                                  MoAttributeValueResult& result) {
    // Into the holder at once: a container that comes with a failure is given back, too.
    const BryReturnT code = _managedObjectIf->getAttribute(committedState, dName.c_str(), attrName.c_str(), &result);
    if (code != BRY_OK) {
        throw TulException(code, "Could not read attribute %s::%s, error %d", dName.c_str(), attrName.c_str(), code);
    }
}

void MoAccessor::getFirstMoInstance(const std::string& classPath, std::string& dName) {
    FirstInstance first;
    const BryReturnT code = _managedObjectIf->findInstances(committedState, classPath.c_str(), keepFirst, &first);
    if (first.failure != nullptr) {
        std::rethrow_exception(first.failure);
    }
    if (code != BRY_OK) {
        throw TulException(code, "Could not find instances of %s, error %d", classPath.c_str(), code);
    }
    if (!first.found) {
        throw TulException(BRY_NOT_FOUND, "No instance of %s", classPath.c_str());
    }
    dName = std::move(first.dn);
}

void MoAccessor::validateType(const TulMoAttributeValueContainer_3& container,
                              const TulOamSpiMoAttributeType_3& expected) {
    if (container.type != expected) {
        throw TulException(BRY_WRONG_TYPE, "Attribute has the type %d, expected is %d",
                           static_cast<int>(container.type), static_cast<int>(expected));
    }
}

template <>
TulOamSpiMoAttributeType_3 MoAccessor::getSpiType<MoAccessor::Enum>() {
    return TUL_MO_TYPE_ENUMERATION_3;
}

template <>
TulOamSpiMoAttributeType_3 MoAccessor::getSpiType<unsigned char>() {
    return TUL_MO_TYPE_UINT8_3;
}

template <>
TulOamSpiMoAttributeType_3 MoAccessor::getSpiType<std::string>() {
    return TUL_MO_TYPE_STRING_3;
}

template <>
MoAccessor::Enum MoAccessor::extractAttr<MoAccessor::Enum>(const TulMoAttributeValue_3& value) {
    return static_cast<Enum>(value.asEnum);
}

template <>
unsigned char MoAccessor::extractAttr<unsigned char>(const TulMoAttributeValue_3& value) {
    return value.asUint8;
}

template <>
std::string MoAccessor::extractAttr<std::string>(const TulMoAttributeValue_3& value) {
    return value.asString == nullptr ? std::string() : std::string(value.asString);
}

}  // namespace Tul
