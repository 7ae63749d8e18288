/* Any bytes as a state that was kept: as they are, and with the sum that vouches for them. */

#include <cstring>

#include "Allowed.h"
#include "Refusal.h"
#include "SshSetting.h"
#include "StateSubject.h"
#include "Target.h"
#include "Violation.h"

namespace {

using namespace TulFuzz;
using Vorma::State;

constexpr const char* aFile = "/store/state";
constexpr std::string_view firstFormat = "vorma-state 1\n";

struct Reading {
    enum class Verdict { believed, damaged, later };

    Verdict verdict;
    State state;
};

using Verdict = Reading::Verdict;

Reading reading(const std::string& text) {
    try {
        const std::optional<State> state = readState(text, aFile);
        return {state ? Verdict::believed : Verdict::damaged, state.value_or(State())};
    } catch (const Vorma::Refusal& refusal) {
        require(refusal.code() == Vorma::Exit::Store, "a state is refused with the code of the store");
        require(std::strstr(refusal.what(), aFile) != nullptr, "a refusal names the file");
        return {Verdict::later, {}};
    }
}

bool hasItsSum(const std::string& text) {
    const std::size_t last = std::string("sum 01234567\n").size();
    return text.size() >= last && text.substr(text.size() - last) == sumOf(text.substr(0, text.size() - last), "sum");
}

/** The first release knew no sums: what it wrote is known by how it looks. */
std::string asFirstReleaseWrote(const State& state) {
    std::string text(firstFormat);
    for (std::size_t door = 0; door < 2; ++door) {
        text += door == 0 ? "clissh " : "netconfssh ";
        text += (state.ports[door] ? std::to_string(*state.ports[door]) : "") + "\n";
    }
    std::size_t setting = 0;
    for (const char* name : {"ciphers ", "kexalgorithms ", "macs ", "dscp ", "rekey "}) {
        text += name + state.settings[setting++].value_or("") + "\n";
    }
    return text + "end\n";
}

void checkValues(const State& state) {
    for (std::size_t door = 0; door < Vorma::doorCount; ++door) {
        require(!state.ports[door] || isPort(std::to_string(*state.ports[door])), "a port is from 1 to 65535");
        require(state.since[door] >= 0, "no door is as it is since before the epoch");
    }
    for (std::size_t i = 0; i < state.settings.size(); ++i) {
        require(!state.settings[i] || isSetting(Vorma::sshSettings()[i].name, *state.settings[i]),
                "a setting has a value that is allowed");
    }
}

void checkBelieved(const State& state, const std::string& text) {
    checkValues(state);
    const bool first = text.starts_with(firstFormat);
    require(text == (first ? asFirstReleaseWrote(state) : state.text()),
            "only what reads as it was written is believed");
    const Reading again = reading(state.text());
    require(again.verdict == Verdict::believed && again.state == state, "what was read is written and read again");
}

void check(const std::string& text) {
    const Reading read = reading(text);
    const bool vouchedFor = hasItsSum(text) && text.starts_with("vorma-state ");
    if (text.starts_with(firstFormat)) {
        require(read.verdict != Verdict::later, "the first format has nothing of a later release");
    } else {
        require(read.verdict == Verdict::damaged || vouchedFor, "damaged when the sum does not hold");
        require(read.verdict == Verdict::later || !vouchedFor || text.starts_with("vorma-state 2"),
                "another format is that of a later release");
    }
    if (read.verdict == Verdict::believed) {
        checkBelieved(read.state, text);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    check(text);
    check(text + sumOf(text, "sum"));
    return 0;
}
