#include <gtest/gtest.h>
#include <netinet/in.h>

#include "Endpoint.h"

namespace TulTest {
namespace {

using Vorma::Endpoint;

TEST(EndpointText, ReadsBackAsItself) {
    for (const char* text : {"127.0.0.1:22", "0.0.0.0:65535", "255.255.255.255:1", "[::]:22", "[::1]:830",
                             "[2001:db8::ff:0:1]:47110", "[::ffff:192.0.2.1]:22"}) {
        const auto endpoint = Endpoint::parse(text);
        ASSERT_TRUE(endpoint) << text;
        EXPECT_EQ(text, endpoint->text());
    }
}

TEST(EndpointText, IsNoneWhenItIsNotSpeltAsSshdDoes) {
    using namespace std::string_literals;
    for (const std::string& text : {""s,
                                    ":"s,
                                    ":22"s,
                                    "127.0.0.1"s,
                                    "127.0.0.1:"s,
                                    "127.0.0.1:0"s,
                                    "127.0.0.1:65536"s,
                                    "127.0.0.1:022"s,
                                    "127.0.0.1:-1"s,
                                    "127.0.0.1:ssh"s,
                                    "127.0.0.1\0x:22"s,
                                    "127.1:22"s,
                                    " 127.0.0.1:22"s,
                                    "[127.0.0.1]:22"s,
                                    "*:22"s,
                                    "localhost:22"s,
                                    "[::1]"s,
                                    "[::1]:"s,
                                    "[]:22"s,
                                    "[::1:22"s,
                                    "::1:22"s,
                                    "[0::1]:22"s,
                                    "[2001:DB8::1]:22"s,
                                    "[fe80::1%lo]:22"s}) {
        EXPECT_FALSE(Endpoint::parse(std::string_view(text))) << text;
    }
}

bool overlap(const char* one, const char* other) {
    const auto first = Endpoint::parse(std::string_view(one));
    const auto second = Endpoint::parse(std::string_view(other));
    EXPECT_EQ(first->overlaps(*second), second->overlaps(*first));
    return first->overlaps(*second);
}

TEST(Endpoint, OverlapsWithItselfAndWithAllAddressesOfItsFamily) {
    EXPECT_TRUE(overlap("127.0.0.1:22", "127.0.0.1:22"));
    EXPECT_TRUE(overlap("127.0.0.1:22", "0.0.0.0:22"));
    EXPECT_TRUE(overlap("[::1]:22", "[::]:22"));
    EXPECT_FALSE(overlap("127.0.0.1:22", "127.0.0.2:22"));
    EXPECT_FALSE(overlap("127.0.0.1:22", "0.0.0.0:23"));
    EXPECT_FALSE(overlap("0.0.0.0:22", "[::]:22"));
}

}  // namespace
}  // namespace TulTest
