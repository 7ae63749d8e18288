#include <filesystem>
#include <fstream>
#include <iterator>

#include "CheckSum.h"
#include "Refused.h"
#include "SshSetting.h"
#include "State.h"

namespace TulTest {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using Vorma::State;

constexpr const char* aFile = "/store/state";

std::string textOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/** The kept states whose names begin so. */
std::vector<std::filesystem::path> keptStates(const std::string& begin) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(TUL_ADAPTER_STATES)) {
        if (entry.path().extension() == ".state" && entry.path().filename().string().starts_with(begin)) {
            files.push_back(entry.path());
        }
    }
    return files;
}

/** As the files *.values have it: a line for each thing that is set. */
std::string described(const State& state) {
    std::string text;
    for (std::size_t door = 0; door < Vorma::doorCount; ++door) {
        const std::string name = Vorma::doorRows[door].name;
        text += state.ports[door] ? name + ".port " + std::to_string(*state.ports[door]) + "\n" : "";
        text += state.since[door] != 0 ? name + ".since " + std::to_string(state.since[door]) + "\n" : "";
    }
    for (std::size_t i = 0; i < state.settings.size(); ++i) {
        const std::string name = Vorma::sshSettings()[i].name;
        text += state.settings[i] ? name + " " + *state.settings[i] + "\n" : "";
    }
    return text.empty() ? "nothing is set\n" : text;
}

std::string read(const std::string& text) {
    const std::optional<State> state = State::read(text, aFile);
    return state ? described(*state) : "damaged";
}

// What a node has on its disk when it gets a new release. Files are added to the folder, and none is ever changed.
TEST(StateText, OfEveryReleaseIsReadForEver) {
    ASSERT_GE(keptStates("1.0.0-").size(), 5U);
    ASSERT_GE(keptStates("2-").size(), 5U);
    for (const std::filesystem::path& file : keptStates("")) {
        const std::string values = textOf(std::filesystem::path(file).replace_extension(".values"));
        EXPECT_EQ(values, read(textOf(file))) << file;
    }
}

TEST(StateText, IsWrittenAsBefore) {
    for (const std::filesystem::path& file : keptStates("2-")) {
        EXPECT_EQ(textOf(file), State::read(textOf(file), aFile)->text()) << file;
    }
}

// Damaged, and not of a later release: then the copy is read.
TEST(StateText, IsDamagedWhenASingleBitDiffers) {
    for (const std::filesystem::path& file : keptStates("2-")) {
        std::string text = textOf(file);
        for (std::size_t bit = 0; bit < text.size() * 8; ++bit) {
            const auto mask = static_cast<char>(1U << bit % 8);
            text[bit / 8] = static_cast<char>(text[bit / 8] ^ mask);
            ASSERT_EQ("damaged", read(text)) << file << ", bit " << bit;
            text[bit / 8] = static_cast<char>(text[bit / 8] ^ mask);
        }
    }
}

TEST(StateText, OfAnyReleaseIsDamagedWhenItsEndIsCut) {
    for (const std::filesystem::path& file : keptStates("")) {
        const std::string text = textOf(file);
        for (std::size_t length = 0; length < text.size(); ++length) {
            ASSERT_EQ("damaged", read(text.substr(0, length))) << file << ", " << length << " bytes";
        }
    }
}

// To read on would be to lose what that release has set, with the next change.
TEST(StateText, OfALaterReleaseIsRefusedByNameOfWhatIsNotKnown) {
    const std::string head = "vorma-state 2\n";
    const std::pair<std::string, const char*> later[] = {
        {"vorma-state 3\nclissh.port 22\n", "'vorma-state 3', this one reads up to version 2"},
        {"vorma-state 10\n", "'vorma-state 10', this one"},
        {head + "ssh.hostkeyalgorithms ssh-ed25519\n", "'ssh.hostkeyalgorithms'"},
        {head + "clissh.port 22\nrestconf.port 443\n", "'restconf.port'"},
        {head + "clissh.address 127.0.0.1\n", "'clissh.address'"},
        {head + "clissh2.port 22\n", "'clissh2.port'"},
        {head + "ssh.dscp 64\n", "'ssh.dscp 64'"},
        {head + "ssh.renegotiationtime 1h\n", "'ssh.renegotiationtime 1h'"},
        {head + "clissh.port 65536\n", "'clissh.port 65536'"},
        {head + "netconfssh.port\n", "'netconfssh.port'"},
        {head + "clissh.since 1795289038.5\n", "'clissh.since 1795289038.5'"}};
    for (const auto& [body, words] : later) {
        expectRefusal(Vorma::Exit::Store, AllOf(HasSubstr(aFile), HasSubstr("a later vorma"), HasSubstr(words)),
                      [&body = body] { read(Vorma::withCheckSum(body, "sum")); });
    }
}

}  // namespace
}  // namespace TulTest
