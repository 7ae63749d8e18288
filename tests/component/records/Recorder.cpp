#include "Recorder.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "LoggingWrapper.h"

namespace TulTest {

namespace {

Recorder* current = nullptr;

std::string escaped(char character) {
    switch (character) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '"':
        case '\\':
            return {'\\', character};
        default:
            break;
    }
    if (character >= ' ' && character <= '~') {
        return {character};
    }
    std::array<char, 5> code{};
    std::snprintf(code.data(), code.size(), "\\x%02x", static_cast<unsigned char>(character));
    return code.data();
}

/** The arguments that follow a format. A class, because a va_list cannot be handed on by reference everywhere. */
class Arguments {
public:
    explicit Arguments(va_list list) { va_copy(_list, list); }
    ~Arguments() { va_end(_list); }

    std::string shownAs(std::string_view conversion) {
        if (conversion == "s") {
            const char* const text = va_arg(_list, const char*);
            return text == nullptr ? "(null)" : quoted(text);
        }
        if (conversion == "d") {
            return std::to_string(va_arg(_list, int));
        }
        if (conversion == "u") {
            return std::to_string(va_arg(_list, unsigned int));
        }
        return conversion == "lu" ? std::to_string(va_arg(_list, unsigned long)) : "conversion?";
    }

    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

private:
    va_list _list;
};

/** The format and behind it each argument, in the order of the conversions. */
std::string message(std::string_view format, va_list list) {
    Arguments arguments(list);
    std::string text = quoted(format);
    for (std::size_t i = format.find('%'); i != std::string_view::npos; i = format.find('%', i)) {
        const std::size_t end = format.find_first_not_of("l", i + 1);
        const std::string_view conversion = format.substr(i + 1, end - i);
        if (conversion != "%") {
            text += " " + arguments.shownAs(conversion);
        }
        i += 1 + conversion.size();
    }
    return text;
}

std::string nameOf(const Tul::Trace::Handle& handle) {
    if (&handle == &Tul::Trace::TulSshd) {
        return "TulSshd";
    }
    return &handle == &Tul::Trace::Common ? "Common" : "handle?";
}

void keep(const std::string& place, int line, const char* format, va_list list) {
    if (current != nullptr) {
        current->keep(place + (line > 0 ? " " : " line? ") + message(format, list));
    }
}

}  // namespace

Recorder::Recorder() {
    if (current != nullptr) {
        throw std::logic_error("one recorder at a time");
    }
    current = this;
}

Recorder::~Recorder() {
    current = nullptr;
}

void Recorder::keep(const std::string& call) {
    calls.push_back(call);
    if (!copiedTo.empty()) {
        std::ofstream(copiedTo, std::ios::app) << call << '\n';
    }
    if (onCall) {
        onCall();
    }
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char character : text) {
        result += escaped(character);
    }
    return result + '"';
}

}  // namespace TulTest

namespace Tul {

LoggingWrapper& LoggingWrapper::instance() {
    static LoggingWrapper wrapper;
    return wrapper;
}

int LoggingWrapper::get_level() const noexcept {
    return TulTest::current == nullptr ? 0 : TulTest::current->level;
}

void LoggingWrapper::log_printf(const char* function, int severity, int category, const char* format, ...) noexcept {
    va_list list;
    va_start(list, format);
    const std::string numbers = std::to_string(severity) + " " + std::to_string(category);
    TulTest::keep(std::string("log_printf ") + function + " " + numbers, 1, format, list);
    va_end(list);
}

void LoggingWrapper::trace_printf(const char* sourceFile, const char* function, int line, int kind,
                                  const char* format, ...) noexcept {
    va_list list;
    va_start(list, format);
    const std::string place = std::string(sourceFile) + " " + function + " " + std::to_string(kind);
    TulTest::keep("trace_printf " + place, line, format, list);
    va_end(list);
}

void LoggingWrapper::trace_v2_printf(const Trace::Handle& handle, int level, const char* sourceFile,
                                     const char* function, int line, const char* format, ...) noexcept {
    va_list list;
    va_start(list, format);
    const std::string place = TulTest::nameOf(handle) + " " + std::to_string(level) + " " + sourceFile;
    TulTest::keep("trace_v2_printf " + place + " " + function, line, format, list);
    va_end(list);
}

}  // namespace Tul
