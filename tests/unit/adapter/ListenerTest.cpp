#include <gtest/gtest.h>

#include <bit>

#include "Listener.h"

namespace TulTest {
namespace {

using namespace std::string_literals;
using Vorma::namesFile;
using Vorma::parseRow;

constexpr const char* file = "/a/clissh.conf";

TEST(CommandLineOfAListener, NamesTheFileAsAWordOrInTheTitleThatSshdGivesItself) {
    EXPECT_TRUE(namesFile("/usr/sbin/sshd\0-D\0-f\0/a/clissh.conf\0"s, file));
    EXPECT_TRUE(namesFile("/usr/sbin/sshd\0-f\0/a/clissh.conf\0-D\0"s, file));
    EXPECT_TRUE(namesFile("sshd: /usr/sbin/sshd -D -f /a/clissh.conf [listener] 0 of 10-100 startups\0\0\0"s, file));
    EXPECT_TRUE(namesFile("/bin/sh\0/opt/sshd\0-D\0-f\0/a/clissh.conf\0"s, file));
}

// Each of these would be signalled in its place.
TEST(CommandLineOfAListener, IsNotThatOfAnother) {
    for (const std::string& words :
         {""s, "/usr/sbin/sshd\0-D\0"s, "/usr/sbin/sshd\0-D\0-f\0/a/clissh.conf.old\0"s,
          "/usr/sbin/sshd\0-D\0-f\0/b/a/clissh.conf\0"s, "/usr/sbin/sshd\0-D\0-f\0/a/netconfssh.conf\0"s,
          "vi\0/a/clissh.conf\0"s, "tail\0-F\0/a/clissh.conf\0"s, "sshd: root@pts/0\0"s,
          "/usr/sbin/sshd\0-D\0-f\0/a/new/clissh.conf\0"s}) {
        EXPECT_FALSE(namesFile(words, file)) << words;
    }
}

TEST(CommandLineOfAListener, IsNotThatOfASession) {
    EXPECT_FALSE(namesFile("/usr/sbin/sshd\0-D\0-f\0/a/clissh.conf\0-R\0"s, file));
    EXPECT_FALSE(namesFile("sshd: /usr/sbin/sshd -D -f /a/clissh.conf -R [accepted]\0"s, file));
}

// Status and a change that is under way ask sshd about the very file.
TEST(CommandLineOfAListener, IsNotThatOfAQuestion) {
    EXPECT_FALSE(namesFile("/usr/sbin/sshd\0-T\0-C\0user=nobody,lport=22\0-f\0/a/clissh.conf\0"s, file));
}

std::string told(const std::string& row) {
    const auto socket = parseRow(row);
    return socket ? socket->endpoint.text() + " of " + std::to_string(socket->user) + ", " +
                        std::to_string(socket->number)
                  : "none";
}

// As the kernel of a machine prints them that has the lowest byte of a number first.
TEST(RowOfTheKernelsTable, TellsAddressPortUserAndNumberOfWhatListens) {
    if constexpr (std::endian::native != std::endian::little) {
        GTEST_SKIP() << "the rows are of a machine with another order of bytes";
    }
    EXPECT_EQ("127.0.0.1:47110 of 0, 18446744073709551615",
              told("   0: 0100007F:B806 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0        0 "
                   "18446744073709551615 1 0000000000000000 100 0 0 10 0"));
    EXPECT_EQ("0.0.0.0:22 of 4294967295, 7",
              told("4711: 00000000:0016 00000000:0000 0A 00000000:00000005 00:00000000 00000000 4294967295        0 "
                   "7 1 0000000000000000 100 0 0 10 0"));
    EXPECT_EQ("[2001:db8::1]:830 of 1000, 31337",
              told("   2: B80D0120000000000000000001000000:033E 00000000000000000000000000000000:0000 0A "
                   "00000000:00000000 00:00000000 00000000  1000        0 31337 1 0000000000000000 100 0 0 10 0"));
}

TEST(RowOfTheKernelsTable, OfWhatDoesNotListenIsNone) {
    const std::string end =
        " 00000000:00000000 00:00000000 00000000     0        0 4242 1 0000000000000000 100 0 0 10 0";
    EXPECT_EQ("none",
              told("  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout"));
    EXPECT_EQ("none", told("   1: 0100007F:B806 0100007F:C350 01" + end));
    EXPECT_EQ("none", told("   1: 0100007F:B806 0100007F:C350 06" + end));
    EXPECT_EQ("none", told("   1: 0100007F00:B806 00000000:0000 0A" + end));
    EXPECT_EQ("none", told("   1: 0100007F:B806 00000000:0000 0A 00000000:00000000 00:00000000"));
    EXPECT_EQ("none", told(""));
}

}  // namespace
}  // namespace TulTest
