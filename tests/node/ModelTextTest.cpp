#include "ModelFixture.h"

namespace TulNode {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(WordsOfALine, AreSeparatedByBlanksAndHeldTogetherByQuotes) {
    EXPECT_THAT(splitWords(" a  b\tc\r"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(splitWords("x=\"a b\" \"\""), ElementsAre("x=a b", ""));
    EXPECT_THAT(splitWords(" "), IsEmpty());
    EXPECT_EQ(codeOf([] { splitWords("a \"b"); }), BRY_INVALID_ARGUMENT);
}

TEST(AttributeText, IsReadAndWrittenTheSameWay) {
    for (const std::string word : {"administrativeState=UNLOCKED", "administrativeState="}) {
        const ClassDefinition& definition = classDefinition("CliSsh");
        const Attributes read = parseAttributes(definition, std::vector{word});
        EXPECT_EQ(formatAttribute(definition.attributes[0], read.begin()->second), word);
    }
    const ClassDefinition& sshDefinition = classDefinition("Ssh");
    const Attributes read = parseAttributes(sshDefinition, splitWords("selectedCiphers=a,b \"selectedMacs=c d\""));
    EXPECT_EQ(read, (Attributes{{"selectedCiphers", texts({"a", "b"})}, {"selectedMacs", texts({"c d"})}}));
    EXPECT_EQ(formatAttribute(sshDefinition.attributes[2], read.at("selectedMacs")), "\"selectedMacs=c d\"");
}

TEST(AttributeText, TakesNumbersOfLiteralsAndRefusesTheRest) {
    const ClassDefinition& definition = classDefinition("CliSsh");
    EXPECT_EQ(parseAttributes(definition, splitWords("administrativeState=1")).begin()->second, enumeration(1));
    EXPECT_EQ(codeOf([&] { parseAttributes(definition, splitWords("administrativeState=unlocked")); }),
              BRY_WRONG_TYPE);
    EXPECT_EQ(codeOf([&] { parseAttributes(definition, splitWords("administrativeState")); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { parseAttributes(definition, splitWords("cliSshId=1")); }), BRY_INVALID_ARGUMENT);
    EXPECT_EQ(codeOf([&] { parseAttributes(definition, splitWords("colour=red")); }), BRY_UNKNOWN_CLASS);
    const auto twice = [&] {
        parseAttributes(definition, splitWords("administrativeState=1 administrativeState=1"));
    };
    EXPECT_EQ(codeOf(twice), BRY_INVALID_ARGUMENT);
    const auto huge = [] {
        parseAttributes(classDefinition("DiffServCategory"), splitWords("dscp=99999999999999999999"));
    };
    EXPECT_EQ(codeOf(huge), BRY_WRONG_TYPE);
}

class ModelFile : public testing::Test {
protected:
    std::string whyNotApplied(const std::string& text) {
        try {
            applyModel(master, text, "file");
            return "applied";
        } catch (const std::runtime_error& e) {
            EXPECT_THAT(master.all(0), IsEmpty());
            EXPECT_THAT(master.unfinished("operator"), IsEmpty());
            return e.what();
        }
    }

    MoStore store{""};
    TransactionMaster master{store, [](const Commit&) {}};
};

TEST_F(ModelFile, MayHaveCommentsAndAttributes) {
    EXPECT_EQ(whyNotApplied("# a node\n\ncreate ManagedElement=1\r\ncreate ManagedElement=1,Transport=1\n"
                            "create ManagedElement=1,Transport=1,DiffServCategory=OamCM dscp=46"),
              "applied");
    EXPECT_EQ(master.getAttribute(0, category, "dscp"), uint8(46));
}

TEST_F(ModelFile, IsAppliedWholeOrNotAtAll) {
    EXPECT_THAT(whyNotApplied("create ManagedElement=1\nset ManagedElement=1\n"), HasSubstr("file:2: \"set "));
    EXPECT_THAT(whyNotApplied("create ManagedElement=1\ncreate\n"), HasSubstr("file:2: "));
    EXPECT_THAT(whyNotApplied("create ManagedElement=1\n\ncreate ManagedElement=1,Ssh=1\n"),
                HasSubstr("file:3: Ssh cannot stand below ManagedElement"));
    EXPECT_THAT(whyNotApplied("create ManagedElement=1 x=\"\n"), HasSubstr("file:1: a double quote"));
}

}  // namespace
}  // namespace TulNode
