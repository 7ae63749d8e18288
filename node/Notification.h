#ifndef TUL_NODE_NOTIFICATION_H
#define TUL_NODE_NOTIFICATION_H

#include <regex.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "BryOamSpiCmEvent_Notification_1.h"
#include "MoStore.h"
#include "TulOamSpiEventRouter_1.h"

namespace TulNode {

/** A POSIX extended regular expression, compiled once. Any thread may search with it. */
class Pattern {
public:
    /** Refusal with BRY_INVALID_ARGUMENT and the reason. */
    explicit Pattern(const std::string& text);
    ~Pattern();

    bool isFoundIn(const std::string& text) const;

    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

private:
    regex_t _compiled;
};

/** The router's own copy of a subscription's filter. */
class Filter {
public:
    /** Copies a null-terminated array. Refusal with BRY_INVALID_ARGUMENT. */
    explicit Filter(BryNameValuePairT** pairs);

    /** Without patterns every DN matches. */
    bool matches(const std::string& dn) const;

    /** The copy as a null-terminated array; lives as long as the filter. */
    BryNameValuePairT** pairs() { return _array.data(); }

    Filter(const Filter&) = delete;
    Filter& operator=(const Filter&) = delete;

private:
    struct Pair {
        std::string name;
        std::string value;
        BryNameValuePairT record;
    };

    std::deque<Pair> _pairs;  // a deque: the records point into their neighbours
    std::deque<Pattern> _patterns;
    std::vector<BryNameValuePairT*> _array;
};

/** The record of one notification: those changes of a commit that a filter lets through. Valid as long as both. */
class Notification {
public:
    Notification(const std::vector<MoChange>& changes, const Filter& filter);

    bool isEmpty() const { return _eventRecords.empty(); }
    BryOamSpiCmEvent_Notification_1T* record() { return &_record; }

    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

private:
    void add(const MoChange& change);

    std::deque<ValueRecord> _values;
    std::deque<BryOamSpiCmEvent_Attribute_1> _attributeRecords;
    std::deque<std::vector<BryOamSpiCmEvent_Attribute_1*>> _attributeArrays;
    std::deque<BryOamSpiCmEvent_Event_1> _eventRecords;
    std::vector<BryOamSpiCmEvent_Event_1*> _eventArray;
    BryOamSpiCmEvent_Notification_1T _record;
};

}  // namespace TulNode

#endif
