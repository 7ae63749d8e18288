#ifndef TUL_NAME_VALUE_PAIR_H
#define TUL_NAME_VALUE_PAIR_H

#include <string>

#include "TulOamSpiEventRouter_1.h"

namespace Tul {

/** A framework name/value pair that owns its texts. A pair that borrows its value copies as a borrower. */
class NameValuePair : public BryNameValuePair {
public:
    /** An empty pair, both pointers null, to be assigned to. */
    NameValuePair() : BryNameValuePair{nullptr, nullptr} {}

    NameValuePair(const char* pairName, const std::string& pairValue)
        : BryNameValuePair{nullptr, nullptr}, _name(pairName), _value(pairValue) {
        name = _name.c_str();
        value = _value.c_str();
    }

    NameValuePair(const NameValuePair& other)
        : BryNameValuePair{nullptr, nullptr}, _name(other._name), _value(other._value), _ownsValue(other._ownsValue) {
        pointAtTexts(other);
    }

    NameValuePair& operator=(const NameValuePair& other) {
        if (this != &other) {
            // Copied aside first: the pointers must never outlive the texts that they point at.
            std::string newName(other._name);
            std::string newValue(other._value);
            _name.swap(newName);
            _value.swap(newValue);
            _ownsValue = other._ownsValue;
            pointAtTexts(other);
        }
        return *this;
    }

    ~NameValuePair() = default;

protected:
    void pointAtTexts(const NameValuePair& other) {
        name = _name.c_str();
        value = _ownsValue ? _value.c_str() : other.value;
    }

    std::string _name;
    std::string _value;
    bool _ownsValue = true; /**< false: `value` points elsewhere, at what somebody else owns */
};

}  // namespace Tul

#endif
