#include "Refused.h"
#include "Request.h"

namespace TulTest {
namespace {

using Vorma::Request;

// The suites of the whole program tell most of what is refused. These are the edges, and what came later.

void expectRefused(const std::vector<std::string>& words, const std::string& why) {
    expectRefusal(Vorma::Exit::Usage, testing::HasSubstr(why), [&] { Request::parse(words); });
}

TEST(CommandLine, TakesNothingMoreAfterACommandOfOneWord) {
    expectRefused({"settle", "now"}, "settle takes nothing more;");
    expectRefused({"--help", "ssh"}, "--help takes nothing more;");
    expectRefused({"status", "--json", "--json"}, "status takes nothing more than --json;");
}

TEST(CommandLine, TakesNamesAndListsOfTheirFullLength) {
    std::string list(64, 'a');
    for (int i = 10; list.size() + 65 < 2048; ++i) {
        list += "," + std::string(62, 'b') + std::to_string(i);
    }
    list += "," + std::string(2047 - list.size(), '0');
    EXPECT_EQ(list, Request::parse({"ssh", "--ciphers", list}).assignments.at(0).value);
    expectRefused({"ssh", "--ciphers", list + "0"}, "must be names");
    expectRefused({"ssh", "--ciphers", std::string(65, 'a')}, "must be names");
}

}  // namespace
}  // namespace TulTest
