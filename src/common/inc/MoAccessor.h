#ifndef TUL_MO_ACCESSOR_H
#define TUL_MO_ACCESSOR_H

#include <cstdint>
#include <string>
#include <vector>

#include "Logging.h"
#include "TulException.h"
#include "TulExport.h"
#include "TulMoAttributeValue_3.h"
#include "TulOamSpiManagedObject_3.h"

namespace Tul {

/**
 * Reads attributes of managed objects. Built for one operation and then dropped; one thread at a time.
 *
 * The typed readers below are compiled into each component, everything else is libtul_common's.
 */
class MoAccessor {
public:
    /** The value type of enumeration attributes. */
    using Enum = std::int16_t;

    /** Holds a fetched container and gives it back to the framework, exactly once, on every way out. */
    class MoAttributeValueResult : public TulMoAttributeValueResult_3 {
    public:
        MoAttributeValueResult() : TulMoAttributeValueResult_3{nullptr, nullptr} {}

        virtual ~MoAttributeValueResult() {
            if (release != nullptr && container != nullptr) {
                release(container);
            }
        }

        MoAttributeValueResult(const MoAttributeValueResult&) = delete;
        MoAttributeValueResult& operator=(const MoAttributeValueResult&) = delete;
    };

    /**
     * Connects to the framework's managed-object interface; TulException when there is none.
     *
     * The arguments choose how a platform guards the reads: whether only committed values are seen, the lock
     * policy, and its time limit in seconds. Pass true, 1 and 60. The development edition always reads what is
     * committed, without waiting, so there is nothing to guard.
     */
    TUL_EXPORT MoAccessor(bool committedOnly, TulLockPolicyT lockPolicy, int timeout);
    TUL_EXPORT ~MoAccessor();

    /** Fetches the container of an attribute. TulException when the MO or the attribute cannot be read. */
    TUL_EXPORT void getAttrContainer(const std::string& dName, const std::string& attrName,
                                     MoAttributeValueResult& result);

    /** Stores the DN of the first instance of a class path. TulException when there is none. */
    TUL_EXPORT void getFirstMoInstance(const std::string& classPath, std::string& dName);

    /** TulException when the container holds another type. */
    TUL_EXPORT void validateType(const TulMoAttributeValueContainer_3& container,
                                 const TulOamSpiMoAttributeType_3& expected);

    /** The type code of T: Enum, unsigned char or std::string. */
    template <class T>
    TulOamSpiMoAttributeType_3 getSpiType();

    /** Converts one value to T: Enum, unsigned char or std::string (a null text is empty). */
    template <class T>
    T extractAttr(const TulMoAttributeValue_3& value);

    /** The one value of an attribute. TulException when it has none, several, or one of another type. */
    template <class T>
    T getAttr(const std::string& dName, const std::string& attrName);

    /**
     * All values of an attribute, in the framework's order. Empty when there is none and, unlike getAttr, also
     * when the attribute cannot be read: an optional list is not an error. TulException for another type.
     */
    template <class T>
    std::vector<T> getSeqAttr(const std::string& dName, const std::string& attrName);

    MoAccessor(const MoAccessor&) = delete;
    MoAccessor& operator=(const MoAccessor&) = delete;

private:
    static bool hasValue(const TulMoAttributeValueContainer_3* container) {
        return container != nullptr && container->nrOfValues != 0 && container->values != nullptr;
    }

    TulOamSpiManagedObject_3* _managedObjectIf = nullptr;
};

template <>
TUL_EXPORT TulOamSpiMoAttributeType_3 MoAccessor::getSpiType<MoAccessor::Enum>();
template <>
TUL_EXPORT TulOamSpiMoAttributeType_3 MoAccessor::getSpiType<unsigned char>();
template <>
TUL_EXPORT TulOamSpiMoAttributeType_3 MoAccessor::getSpiType<std::string>();
template <>
TUL_EXPORT MoAccessor::Enum MoAccessor::extractAttr<MoAccessor::Enum>(const TulMoAttributeValue_3& value);
template <>
TUL_EXPORT unsigned char MoAccessor::extractAttr<unsigned char>(const TulMoAttributeValue_3& value);
template <>
TUL_EXPORT std::string MoAccessor::extractAttr<std::string>(const TulMoAttributeValue_3& value);

template <class T>
T MoAccessor::getAttr(const std::string& dName, const std::string& attrName) {
    TUL_TRACE(Trace::Common, "MoAccessor::getAttr<> dName :%s attrName :%s", dName.c_str(), attrName.c_str());
    MoAttributeValueResult result;
    getAttrContainer(dName, attrName, result);
    if (!hasValue(result.container)) {
        throw TulException("Attribute has no value set: %s::%s", dName.c_str(), attrName.c_str());
    }
    if (result.container->nrOfValues > 1) {
        TUL_ERROR(Trace::Common, "Attribute is a sequence: %s::%s", dName.c_str(), attrName.c_str());
        throw TulException("Attribute is a sequence: %s::%s", dName.c_str(), attrName.c_str());
    }
    validateType(*result.container, getSpiType<T>());
    return extractAttr<T>(result.container->values[0]);
}

template <class T>
std::vector<T> MoAccessor::getSeqAttr(const std::string& dName, const std::string& attrName) {
    // The text names getAttr here too; that is wanted, so that one search finds every read.
    TUL_TRACE(Trace::Common, "MoAccessor::getAttr<> dName :%s attrName :%s", dName.c_str(), attrName.c_str());
    std::vector<T> values;
    MoAttributeValueResult result;
    try {
        getAttrContainer(dName, attrName, result);
    } catch (const TulException&) {
        return values;
    }
    if (!hasValue(result.container)) {
        return values;
    }
    validateType(*result.container, getSpiType<T>());
    values.reserve(result.container->nrOfValues);
    for (std::uint32_t i = 0; i < result.container->nrOfValues; ++i) {
        values.push_back(extractAttr<T>(result.container->values[i]));
    }
    return values;
}

}  // namespace Tul

#endif
