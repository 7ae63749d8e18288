#include "SequenceCheck.h"

#include <algorithm>
#include <csignal>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "ComponentDriver.h"
#include "ComponentModel.h"

namespace Sequences {

namespace {

std::string lineOf(const std::vector<std::string>& lines, std::size_t index) {
    std::string line;
    for (const char c : index < lines.size() ? lines[index] : "") {
        line += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    return line;
}

std::string sideBySide(Outcome expected, Outcome happened) {
    expected.journal.push_back("-> " + expected.result);
    happened.journal.push_back("-> " + happened.result);
    std::size_t width = 10;
    for (const std::string& line : expected.journal) {
        width = std::max(width, line.size() + 2);
    }
    std::ostringstream text;
    text << std::left << "    " << std::setw(static_cast<int>(width)) << "expected"
         << "happened\n";
    for (std::size_t i = 0; i < std::max(expected.journal.size(), happened.journal.size()); ++i) {
        const std::string left = lineOf(expected.journal, i);
        const std::string right = lineOf(happened.journal, i);
        text << (left == right ? "    " : "  ! ") << std::setw(static_cast<int>(width)) << left << right << "\n";
    }
    return text.str();
}

/** A component that takes the process with it leaves at least the sequence that did it. */
class LastWords {
public:
    explicit LastWords(const Sequence& sequence) {
        current = &sequence;
        _abort = std::signal(SIGABRT, say);
        _segmentationFault = std::signal(SIGSEGV, say);
    }
    ~LastWords() {
        std::signal(SIGABRT, _abort);
        std::signal(SIGSEGV, _segmentationFault);
    }
    LastWords(const LastWords&) = delete;
    LastWords& operator=(const LastWords&) = delete;

private:
    static void say(int signal) {
        std::signal(signal, SIG_DFL);
        std::cerr << "The process ends here, which nobody expected, with signal " << signal << " in" << *current
                  << std::endl;
        std::raise(signal);
    }

    static inline const Sequence* current = nullptr;
    void (*_abort)(int);
    void (*_segmentationFault)(int);
};

}  // namespace

std::string differenceIn(const Sequence& sequence, Bend bend) {
    const LastWords lastWords(sequence);
    ComponentModel model(bend);
    ComponentDriver driver;
    for (std::size_t i = 0; i < sequence.commands.size(); ++i) {
        const Command& command = sequence.commands[i];
        const Outcome expected = model.perform(command);
        const bool isTheEnd = expected.result == "abort";
        const Outcome happened = isTheEnd ? driver.performInChild(command) : driver.perform(command);
        if (expected != happened) {
            return "command " + std::to_string(i + 1) + ":\n" + sideBySide(expected, happened);
        }
        if (isTheEnd) {
            break;
        }
    }
    return "";
}

}  // namespace Sequences
