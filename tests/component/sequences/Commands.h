#ifndef TUL_TEST_SEQUENCES_COMMANDS_H
#define TUL_TEST_SEQUENCES_COMMANDS_H

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include "RecordingFramework.h"

namespace Sequences {

/*
 * What may happen to a component, one plain struct for each. Every command is possible in every state, so a sequence
 * stays a sequence when any of them is dropped.
 */

/** How a configuration is handed over. */
enum class Form { PLAIN, NESTED, NULL_POINTER, BROKEN, NO_SECTION, TWO_SECTIONS };

/** A component configuration: of each element the texts of all its copies. */
struct Document {
    Form form = Form::PLAIN;
    std::vector<std::string> managed;
    std::vector<std::string> cliPort;
    std::vector<std::string> netconfPort;
    std::vector<std::string> renegotiationTime;
};

/** What the framework hands to bryLCMinit; not to be used with the form NULL_POINTER. */
std::string textOf(const Document& document);

struct Init {
    bool hasPortal3 = true;
    Document document;
};
struct Start {};
struct Stop {};
struct Terminate {};

/** An attribute in an event: its first value, which `count` - 1 others follow. */
struct EventAttribute {
    std::optional<std::string> name;
    int type = 12;
    unsigned count = 1;
    std::int64_t value = 0;
    bool hasValues = true; /**< false: a null pointer, whatever the count is */
};

struct Event {
    int type = 3;
    std::optional<std::string> dn;
    bool hasAttributes = true;
    std::vector<EventAttribute> attributes;
};

/** A notification to consumer 0 to 3, in the order in which they are started. */
struct Notify {
    std::size_t consumer = 0;
    bool hasEvents = true;
    std::vector<Event> events;
};

/** Puts an MO without attributes in place of whatever was there. */
struct MoAppears {
    std::string dn;
};
struct MoVanishes {
    std::string dn;
};

/** Makes the MO too, where there is none. */
struct AttributeIs {
    std::string dn;
    std::string name;
    TulTest::AttributeValues values;
};
struct AttributeVanishes {
    std::string dn;
    std::string name;
};

/** An operation of the SPI succeeds `after` more times and then fails `times` times. */
struct SpiFails {
    std::string operation; /**< "commit", or "getInterface NAME" */
    unsigned after = 0;
    unsigned times = 1;
    BryReturnT code = -1; /**< 0 for getInterface: a null pointer */
};

enum class Ending { PRINTS, TUL_EXCEPTION, STANDARD_EXCEPTION, INTEGER };

/** What adapter runs with this first word do from now on: print the text or fail with it. */
struct AdapterDoes {
    std::string word;
    Ending ending = Ending::PRINTS;
    std::string text;
};

struct LogLevelIs {
    int level = 6;
};

struct Command {
    std::variant<Start, Init, Stop, Terminate, Notify, MoAppears, MoVanishes, AttributeIs, AttributeVanishes,
                 SpiFails, AdapterDoes, LogLevelIs>
        what;
};

struct Sequence {
    std::vector<Command> commands;
};

std::ostream& operator<<(std::ostream& stream, const Command& command);

/** One command a line, so that it reads like a script. */
std::ostream& operator<<(std::ostream& stream, const Sequence& sequence);

}  // namespace Sequences

#endif
