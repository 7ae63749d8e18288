#include "Sshd.h"

#include <algorithm>

#include "Limits.h"
#include "Refusal.h"
#include "SshSetting.h"
#include "Store.h"
#include "Text.h"

namespace Vorma {

namespace {

constexpr Tul::CapturedRun::Limits kept{std::size_t{1024} * 1024, 4096};

std::vector<std::string> wordsOf(const std::string& sshd, const std::string& file, int port) {
    return {sshd, "-T",
            "-C", "user=nobody,host=localhost,addr=127.0.0.1,laddr=127.0.0.1,lport=" + std::to_string(port),
            "-f", file};
}

Tul::CapturedRun start(std::vector<std::string> words) {
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    // In a group of its own: a script in place of sshd is given up together with what it waits for.
    return Tul::CapturedRun(argv.data(), kept);
}

std::string lastLine(const std::string& text) {
    const std::string whole = text.substr(0, text.find_last_not_of("\r\n") + 1);
    return whole.substr(whole.rfind('\n') + 1);
}

[[noreturn]] void refuse(const std::string& why) {
    throw Refusal(Exit::Refused, why);
}

void mustBe(const Effective& effective, std::size_t door, const std::string& keyword,
            const std::vector<std::string>& allowed) {
    const std::string value = effective.of(keyword);
    if (std::find(allowed.begin(), allowed.end(), value) == allowed.end()) {
        refuse(std::string(doorRows[door].name) + ": sshd would use " + keyword + " '" + value + "' instead of '" +
               allowed.front() + "'; BASE_CONFIG or the door's own file interferes");
    }
}

std::vector<std::string> allowedAddresses(const std::string& address, int port) {
    const std::string end = ":" + std::to_string(port);
    if (address.empty()) {
        const std::string four = "0.0.0.0" + end;
        const std::string six = "[::]" + end;
        // As the resolver sorts them, or one alone when AddressFamily says so.
        return {six + " " + four, four + " " + six, four, six};
    }
    return {Endpoint::parse(address, port)->text()};
}

}  // namespace

Effective Effective::parse(const std::string& printed) {
    Effective effective;
    for (const std::string_view line : partsOf(printed, '\n')) {
        const std::size_t blank = line.find(' ');
        if (blank != std::string_view::npos) {
            effective._values[std::string(line.substr(0, blank))].emplace_back(line.substr(blank + 1));
        }
    }
    return effective;
}

std::string Effective::of(const std::string& keyword) const {
    const auto found = _values.find(keyword);
    std::string joined;
    if (found != _values.end()) {
        for (const std::string& value : found->second) {
            joined += (joined.empty() ? "" : " ") + value;
        }
    }
    return joined;
}

std::vector<Endpoint> Effective::endpoints() const {
    std::vector<Endpoint> endpoints;
    const std::string addresses = of("listenaddress");
    for (const std::string_view word : partsOf(addresses, ' ')) {
        const auto endpoint = Endpoint::parse(word);
        if (endpoint && hasFamily(*endpoint)) {
            endpoints.push_back(*endpoint);
        }
    }
    return endpoints;
}

Question::Question(const std::string& sshd, const std::string& file, int port)
    : _run(start(wordsOf(sshd, file, port))) {}

Effective Question::answer(const Tul::Deadline& deadline) {
    const auto end = _run.await(deadline.within(Limits::question));
    if (!end) {
        _run.kill();
        refuse("sshd -T does not end in time");
    }
    _run.drain(deadline.within(Limits::drain));
    if (end->kind != Tul::ProcessEnd::Exited || end->number != 0) {
        refuse("sshd refuses: " + lastLine(_run.errorTail()));
    }
    return Effective::parse(_run.output());
}

void check(const Effective& effective, std::size_t door, int port, const State& state,
           const Configuration& configuration) {
    mustBe(effective, door, "port", {std::to_string(port)});
    mustBe(effective, door, "listenaddress", allowedAddresses(configuration.listenAddress, port));
    mustBe(effective, door, "pidfile", {configuration.stateDirectory + "/" + Store::pidFileOf(door)});
    for (std::size_t i = 0; i < sshSettings().size(); ++i) {
        if (state.settings[i]) {
            std::string keyword = sshSettings()[i].keyword;
            std::transform(keyword.begin(), keyword.end(), keyword.begin(),
                           [](unsigned char c) { return tolower(c); });
            mustBe(effective, door, keyword, sshSettings()[i].effective(*state.settings[i]));
        }
    }
}

}  // namespace Vorma
