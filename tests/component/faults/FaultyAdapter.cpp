#include "FaultyAdapter.h"

#include <gtest/gtest.h>

#include <map>

#include "AllocationFaults.h"

namespace TulTest {

namespace {

std::string joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    return line;
}

}  // namespace

void FaultyAdapter::fail(unsigned int first, Persistence persistence, std::function<std::string()> end) {
    _first = first;
    _persistence = persistence;
    _end = std::move(end);
}

void FaultyAdapter::heal() {
    _first = 0;
}

std::string FaultyAdapter::answer(const AdapterRun& run) {
    const AllocationFaults::Pause pause;
    if (run.words.front() == "ssh") {
        EXPECT_EQ("", flawIn(run.words));
    }
    _onRun(joined(run.words));
    if (isHit(++_runs, _first, _persistence)) {
        return _end();
    }
    return run.words.front() == "spi-revision" ? "1.8.0\n" : "";
}

std::string flawIn(const std::vector<std::string>& words) {
    static const std::map<std::string, std::string> values{{"--ipQos", "46"},
                                                           {"--renegotiationTime", "3600"},
                                                           {"--ciphers", "aes128-ctr,aes256-ctr"},
                                                           {"--kexAlgorithms", "curve25519-sha256"},
                                                           {"--macs", "hmac-sha2-256"}};
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] == "--removeIpQoS") {
            continue;
        }
        const auto option = values.find(words[i]);
        if (option == values.end()) {
            return "not an option: " + words[i];
        }
        if (++i == words.size() || words[i] != option->second) {
            return "not the value of " + option->first;
        }
    }
    return words.size() < 2 ? "an empty batch" : "";
}

}  // namespace TulTest
