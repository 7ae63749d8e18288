#include "Commands.h"

#include <iomanip>
#include <sstream>

namespace Sequences {

namespace {

std::string elements(const std::string& tag, const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += "<" + tag + ">" + text + "</" + tag + ">";
    }
    return all;
}

std::string element(const std::string& tag, const std::string& content) {
    return elements(tag, {content});
}

std::string inQuotes(const std::optional<std::string>& text) {
    if (!text) {
        return "(null)";
    }
    std::ostringstream stream;
    stream << std::quoted(*text);
    return stream.str();
}

std::string textOf(const TulTest::AttributeValues& values) {
    std::string text = "type " + std::to_string(values.type) + " {";
    for (const std::int64_t number : values.numbers) {
        text += " " + std::to_string(number);
    }
    for (const std::string& value : values.texts) {
        text += " " + inQuotes(value);
    }
    return text + " }";
}

class Printer {
public:
    explicit Printer(std::ostream& stream) : _stream(stream) {}

    void operator()(const Start&) { _stream << "start"; }
    void operator()(const Stop&) { _stream << "stop"; }
    void operator()(const Terminate&) { _stream << "terminate"; }
    void operator()(const MoAppears& mo) { _stream << "MO appears: " << mo.dn; }
    void operator()(const MoVanishes& mo) { _stream << "MO vanishes: " << mo.dn; }
    void operator()(const LogLevelIs& log) { _stream << "log level is " << log.level; }

    void operator()(const Init& init) {
        const bool isNull = init.document.form == Form::NULL_POINTER;
        _stream << "init" << (init.hasPortal3 ? "" : " without portal 3") << ": "
                << inQuotes(isNull ? std::nullopt : std::optional(Sequences::textOf(init.document)));
    }

    void operator()(const Notify& notification) {
        _stream << "notify consumer " << notification.consumer + 1 << (notification.hasEvents ? "" : ", null events");
        for (const Event& event : notification.events) {
            print(event);
        }
    }

    void operator()(const AttributeIs& attribute) {
        _stream << "attribute " << attribute.dn << "::" << attribute.name << " is " << textOf(attribute.values);
    }

    void operator()(const AttributeVanishes& attribute) {
        _stream << "attribute vanishes: " << attribute.dn << "::" << attribute.name;
    }

    void operator()(const SpiFails& fault) {
        _stream << "SPI: " << fault.operation << " answers " << fault.code << ", after " << fault.after << " calls, "
                << fault.times << " times";
    }

    void operator()(const AdapterDoes& adapter) {
        static const char* const endings[] = {"prints", "throws TulException", "throws std::runtime_error",
                                              "throws 7 in place of"};
        _stream << "adapter: " << adapter.word << " " << endings[static_cast<int>(adapter.ending)] << " "
                << inQuotes(adapter.text);
    }

private:
    void print(const Event& event) {
        _stream << "\n        event type " << event.type << " dn " << inQuotes(event.dn)
                << (event.hasAttributes ? "" : ", null attributes");
        for (const EventAttribute& attribute : event.attributes) {
            _stream << "\n            attribute " << inQuotes(attribute.name) << " type " << attribute.type
                    << " count " << attribute.count << " value " << attribute.value
                    << (attribute.hasValues ? "" : ", null values");
        }
    }

    std::ostream& _stream;
};

}  // namespace

std::string textOf(const Document& document) {
    std::string content = elements("sshdManagement", document.managed) + elements("cliPort", document.cliPort) +
                          elements("netconfPort", document.netconfPort) +
                          elements("renegotiationTime", document.renegotiationTime);
    if (document.form == Form::NESTED) {
        content = element("Deeper", content);
    }
    std::string section = element(document.form == Form::NO_SECTION ? "tulSshdManager" : "TulSshdManager", content);
    if (document.form == Form::TWO_SECTIONS) {
        section += "<TulSshdManager/>";
    }
    // What stands outside the section does not count.
    return element("TulConfiguration", "<cliPort>1</cliPort>" + section + "<sshdManagement>no</sshdManagement>") +
           (document.form == Form::BROKEN ? "<" : "");
}

std::ostream& operator<<(std::ostream& stream, const Command& command) {
    std::visit(Printer(stream), command.what);
    return stream;
}

std::ostream& operator<<(std::ostream& stream, const Sequence& sequence) {
    for (std::size_t i = 0; i < sequence.commands.size(); ++i) {
        stream << "\n" << std::setw(4) << i + 1 << "  " << sequence.commands[i];
    }
    return stream;
}

}  // namespace Sequences
