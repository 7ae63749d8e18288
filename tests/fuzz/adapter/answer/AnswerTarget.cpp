/* Any bytes as what `sshd -T` prints of a door's file, against what was asked for in each of some cases. */

#include <sys/socket.h>

#include <algorithm>

#include "Allowed.h"
#include "AnswerSubject.h"
#include "Refusal.h"
#include "Request.h"
#include "Target.h"
#include "Violation.h"

namespace {

using namespace TulFuzz;
using Words = std::vector<std::string>;

/** What was asked for, and of each keyword what sshd may print then. */
struct Case {
    std::size_t door;
    int port;
    std::string address;
    Words options;
    std::vector<std::pair<std::string, Words>> allowed;
};

const std::string longMac = "hmac-sha2-512-etm@openssh.com";

const Case cases[] = {
    {0,
     47110,
     "127.0.0.1",
     {"ssh", "--ciphers", "aes256-ctr,aes128-ctr", "--kexAlgorithms", "curve25519-sha256", "--macs", longMac,
      "--ipQos", "46", "--renegotiationTime", "3600"},
     {{"port", {"47110"}},
      {"listenaddress", {"127.0.0.1:47110"}},
      {"pidfile", {"/s/clissh.pid"}},
      {"ciphers", {"aes256-ctr,aes128-ctr"}},
      {"kexalgorithms", {"curve25519-sha256"}},
      {"macs", {longMac}},
      {"ipqos", {"ef ef", "0xb8 0xb8"}},
      {"rekeylimit", {"0 3600"}}}},
    {1,
     830,
     "",
     {"ssh", "--ipQos", "5", "--renegotiationTime", "none"},
     {{"port", {"830"}},
      {"listenaddress", {"[::]:830 0.0.0.0:830", "0.0.0.0:830 [::]:830", "0.0.0.0:830", "[::]:830"}},
      {"pidfile", {"/s/netconfssh.pid"}},
      {"ipqos", {"0x14 0x14"}},
      {"rekeylimit", {"0 0"}}}},
    {0,
     22,
     "2001:DB8:0::0:1",
     {"settle"},
     {{"port", {"22"}}, {"listenaddress", {"[2001:db8::1]:22"}}, {"pidfile", {"/s/clissh.pid"}}}},
};

/** All values of a keyword, with blanks between. */
std::string valueOf(const std::string& keyword, const std::string& printed) {
    std::string joined;
    for (const std::string& line : split(printed, '\n')) {
        if (line.starts_with(keyword + " ")) {
            joined += (joined.empty() ? "" : " ") + line.substr(keyword.size() + 1);
        }
    }
    return joined;
}

bool isAsAsked(const Case& asked, const std::string& printed) {
    return std::all_of(asked.allowed.begin(), asked.allowed.end(), [&printed](const auto& each) {
        return std::find(each.second.begin(), each.second.end(), valueOf(each.first, printed)) != each.second.end();
    });
}

bool isTaken(const Case& asked, const Vorma::Effective& effective) {
    Vorma::Configuration configuration;
    configuration.stateDirectory = "/s";
    configuration.listenAddress = asked.address;
    try {
        const Vorma::State state = Vorma::Request::parse(asked.options).applyTo({});
        Vorma::check(effective, asked.door, asked.port, state, configuration);
        return true;
    } catch (const Vorma::Refusal& refusal) {
        require(refusal.code() == Vorma::Exit::Refused, "an answer is refused with the code for it");
        return false;
    }
}

bool isEndpointOfFour(const std::string& word) {
    const std::size_t colon = word.rfind(':');
    return colon != std::string::npos && isAddressOfFour(word.substr(0, colon)) && isPort(word.substr(colon + 1));
}

/** Of the one family, which every machine has, all of them; of the other no more than there are. */
void checkEndpoints(const std::vector<Vorma::Endpoint>& endpoints, const std::string& printed) {
    const Words words = split(valueOf("listenaddress", printed), ' ');
    for (const Vorma::Endpoint& endpoint : endpoints) {
        require(std::find(words.begin(), words.end(), endpoint.text()) != words.end(),
                "an endpoint stands in the answer");
        require(endpoint.port > 0, "no endpoint has port 0");
    }
    require(std::count_if(endpoints.begin(), endpoints.end(),
                          [](const Vorma::Endpoint& endpoint) { return endpoint.family == AF_INET; }) ==
                std::count_if(words.begin(), words.end(), isEndpointOfFour),
            "no endpoint of the answer is left out");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string printed(reinterpret_cast<const char*>(data), size);
    const Vorma::Effective effective = readAnswer(printed);
    for (const Case& asked : cases) {
        require(isTaken(asked, effective) == isAsAsked(asked, printed), "taken exactly when all is as asked");
    }
    checkEndpoints(effective.endpoints(), printed);
    return 0;
}
