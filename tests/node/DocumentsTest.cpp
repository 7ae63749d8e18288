#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "Defaults.h"
#include "ModelCommands.h"
#include "NodeCommands.h"
#include "Options.h"
#include "Schema.h"
#include "Shell.h"
#include "Text.h"

namespace TulNode {
namespace {

using testing::HasSubstr;

std::string document(const std::string& name) {
    return readFile(std::string(TUL_DOCUMENTS) + "/" + name);
}

/** Every "--name" of the text. */
std::set<std::string> optionsIn(const std::string& text) {
    constexpr const char* letters = "abcdefghijklmnopqrstuvwxyz-";
    std::set<std::string> found;
    for (std::size_t at = text.find("--"); at != std::string::npos; at = text.find("--", at + 2)) {
        const std::string name = text.substr(at, text.find_first_not_of(letters, at) - at);
        if (name.find_first_not_of('-') == 2) {
            found.insert(name);
        }
    }
    return found;
}

TEST(DocumentOfTheNode, NamesExactlyTheOptionsOfTheProgram) {
    EXPECT_EQ(optionsIn(document("node.md")), optionsIn(Options().help()));
}

TEST(DocumentOfTheNode, HasEveryCommandWithItsArguments) {
    const std::string text = document("node.md");
    Output output(nullptr);
    std::vector<std::string> lines;
    output.divert([&lines](const std::string& line) {
        lines.push_back(line);
        return true;
    });
    Node node({});
    NodeCommands nodeCommands(node, output, [] { return false; });
    ModelCommands modelCommands(node.services.transactions, output);
    for (const std::vector<Command>& commands : {nodeCommands.commands(), modelCommands.commands()}) {
        Shell(commands, output).execute("help");
    }
    ASSERT_GT(lines.size(), 50U);
    for (const std::string& line : lines) {
        if (!line.starts_with(' ')) {
            EXPECT_THAT(text, HasSubstr("\n| `" + join(split(line, '|'), "\\|") + "` |"));
        }
    }
}

std::string rowOf(const ClassDefinition& definition) {
    std::vector<std::string> names;
    for (const AttributeDefinition& attribute : definition.attributes) {
        names.push_back("`" + attribute.name + "`");
    }
    return "\n| `" + definition.name + "` | " +
           (definition.parent.empty() ? "(root)" : "`" + definition.parent + "`") + " | `" + definition.keyAttribute +
           "` | " + join(names, ", ") + (names.empty() ? "|\n" : " |\n");
}

TEST(DocumentOfTheModel, HasEveryClassAndAttribute) {
    const std::string text = document("model.md");
    for (const ClassDefinition& definition : model()) {
        EXPECT_THAT(text, HasSubstr(rowOf(definition)));
        for (const AttributeDefinition& attribute : definition.attributes) {
            EXPECT_THAT(text, HasSubstr("\n| `" + attribute.name + "` | " + typeName(attribute.type) + " | " +
                                        attribute.allowed() + " |\n"));
        }
    }
}

TEST(DocumentOfTheModel, ShowsTheBuiltInModel) {
    EXPECT_THAT(document("model.md"), HasSubstr(defaultModel));
}

TEST(DocumentOfTheConfiguration, ShowsTheBuiltInConfiguration) {
    EXPECT_THAT(document("configuration.md"), HasSubstr(defaultConfiguration));
}

// The built-in values are read from the text in the simplest way; this is what proves that it is enough.
TEST(BuiltInConfiguration, IsTheInstalledFile) {
    EXPECT_EQ(ComponentConfiguration().xml(), readFile(TUL_DEFAULTS "/configuration.xml"));
}

TEST(BuiltInModel, IsTheInstalledFile) {
    EXPECT_EQ(defaultModel, readFile(TUL_DEFAULTS "/model.txt"));
}

}  // namespace
}  // namespace TulNode
