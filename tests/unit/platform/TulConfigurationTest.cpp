#include <Poco/AutoPtr.h>
#include <Poco/DOM/DOMParser.h>
#include <Poco/DOM/Document.h>
#include <Poco/DOM/Element.h>
#include <Poco/DOM/NodeList.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "TulConfiguration.h"
#include "TulException.h"

namespace TulTest {
namespace {

/** The texts of all elements of a name, each in brackets; "none" when nothing is loaded. */
std::string textsOf(Tul::TulConfiguration& configuration, const std::string& name) {
    const Poco::AutoPtr<Poco::XML::NodeList> list(configuration.getElementsByTagName(name));
    if (list.isNull()) {
        return "none";
    }
    std::string texts;
    for (unsigned long i = 0; i < list->length(); ++i) {
        texts += "[" + configuration.get_text(static_cast<Poco::XML::Element*>(list->item(i))) + "]";
    }
    return texts;
}

/** What the element "v" says in a document, or "refused". */
std::string valueIn(const std::string& document) {
    Tul::TulConfiguration configuration;
    try {
        configuration.load(document);
    } catch (const Tul::TulException& failure) {
        EXPECT_STRNE("", failure.what());
        EXPECT_EQ("none", textsOf(configuration, "v"));
        return "refused";
    }
    return textsOf(configuration, "v");
}

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

std::string nested(int depth) {
    return repeated("<a>", depth - 1) + "<v>x</v>" + repeated("</a>", depth - 1);
}

struct Document {
    const char* name;
    std::string text;
    std::string value;
};

class ConfigurationText : public testing::TestWithParam<Document> {};

TEST_P(ConfigurationText, HasTheExpectedVerdict) {
    EXPECT_EQ(GetParam().value, valueIn(GetParam().text));
}

const Document accepted[] = {
    {"Plain", "<c><v>1</v><d><v> 2 </v></d></c>", "[1][ 2 ]"},
    {"Declaration", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<c><v>1</v></c>\n", "[1]"},
    {"Empty", "<c><v/><v></v></c>", "[][]"},
    {"Absent", "<c/>", ""},
    {"OtherCase", "<c><V>1</V></c>", ""},
    {"CData", "<c><v>a<![CDATA[<b>&]]>c</v></c>", "[a<b>&c]"},
    {"CommentInside", "<c><v>tr<!-- no -->ue</v></c>", "[true]"},
    {"ProcessingInstructionInside", "<c><v>tr<?p no?>ue</v></c>", "[true]"},
    {"References", "<c><v>&#50;&#x32;&lt;&gt;&amp;&quot;&apos;</v></c>", "[22<>&\"']"},
    {"Below", "<c><v>a<w>b</w>c</v></c>", "[abc]"},
    {"ByteOrderMark", "\xef\xbb\xbf<c><v>1</v></c>", "[1]"},
    {"Utf8", "<c><v>\xc3\xa4</v></c>", "[\xc3\xa4]"},
    {"LatinOne", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><c><v>\xe4</v></c>", "[\xc3\xa4]"},
    {"CDataWithoutMeaning", "<c><v><![CDATA[&#50;<!-- 1 -->]]></v></c>", "[&#50;<!-- 1 -->]"},
    {"CDataEndInTwoPieces", "<c><v><![CDATA[a]]]]><![CDATA[>b]]></v></c>", "[a]]>b]"},
    {"CDataEmpty", "<c><v>1<![CDATA[]]>2</v></c>", "[12]"},
    {"CDataInAComment", "<c><v>1<!-- <![CDATA[2]]> --></v></c>", "[1]"},
    {"CommentsAllAround", "<!-- a --><c><!-- b --><v><!-- c -->1<!-- d --></v></c><!-- e -->", "[1]"},
    {"ReferencesToBlanks", "<c><v>&#32;1&#9;&#10;&#13;</v></c>", "[ 1\t\n\r]"},
    {"ReferenceBeyondAscii", "<c><v>&#xE4;&#x20AC;</v></c>", "[\xc3\xa4\xe2\x82\xac]"},
    {"ReferenceBeyond16Bits", "<c><v>&#x1F511;</v></c>", "[\xf0\x9f\x94\x91]"},
    {"ByteOrderMarkInside",
     "<c><v>\xef\xbb\xbf"
     "1</v></c>",
     "[\xef\xbb\xbf"
     "1]"},
    {"CarriageReturns", "<c>\r\n<v>1\r\n</v></c>\r\n", "[1\n]"},
    {"DeepestAllowed", nested(64), "[x]"},
};

const Document refused[] = {
    {"Nothing", "", "refused"},
    {"Blanks", " \n", "refused"},
    {"NoXml", "port=22", "refused"},
    {"CutShort", "<c><v>1</v>", "refused"},
    {"WrongEnd", "<c><v>1</c></v>", "refused"},
    {"TwoRoots", "<c/><c/>", "refused"},
    {"TextAfterwards", "<c/>x", "refused"},
    {"UnknownEntity", "<c><v>&nbsp;</v></c>", "refused"},
    {"NulReference", "<c><v>&#0;</v></c>", "refused"},
    {"Nul", std::string("<c><v>1\0</v></c>", 17), "refused"},
    {"NulAtTheEnd", std::string("<c/>\0", 5), "refused"},
    {"Utf16", std::string("\xff\xfe<\0c\0/\0>\0", 10), "refused"},
    {"Utf16Declared", "<?xml version=\"1.0\" encoding=\"UTF-16\"?><c/>", "refused"},
    {"UnknownEncoding", "<?xml version=\"1.0\" encoding=\"EBCDIC-CP-US\"?><c/>", "refused"},
    {"OverlongUtf8", "<c><v>\xc0\xaf</v></c>", "refused"},
    {"BrokenUtf8", "<c><v>\xe4</v></c>", "refused"},
    {"Utf16BigEndian", std::string("\xfe\xff\0<\0c\0/\0>", 10), "refused"},
    {"Utf16WithoutMark", std::string("<\0c\0/\0>\0", 8), "refused"},
    {"Utf32", std::string("\xff\xfe\0\0<\0\0\0c\0\0\0/\0\0\0>\0\0\0", 20), "refused"},
    {"Utf32Declared", "<?xml version=\"1.0\" encoding=\"UTF-32\"?><c/>", "refused"},
    {"Utf7Declared", "<?xml version=\"1.0\" encoding=\"UTF-7\"?>+ADw-c/+AD4-", "refused"},
    {"MarkOfAnotherEncoding", "\xff\xfe<c/>", "refused"},
    {"TwoByteOrderMarks", "\xef\xbb\xbf\xef\xbb\xbf<c/>", "refused"},
    {"OverlongMarkup",
     "\xc0\xbc"
     "c/>",
     "refused"},
    {"OverlongInThreeBytes", "<c><v>\xe0\x80\xb1</v></c>", "refused"},
    {"OverlongInFourBytes", "<c><v>\xf0\x80\x80\xb1</v></c>", "refused"},
    {"Surrogate", "<c><v>\xed\xa0\x80</v></c>", "refused"},
    {"BeyondUnicode", "<c><v>\xf4\x90\x80\x80</v></c>", "refused"},
    {"CutInALetter", "<c><v>\xe2\x82</v></c>", "refused"},
    {"AsciiDeclaredAndBroken", "<?xml version=\"1.0\" encoding=\"US-ASCII\"?><c><v>\xe4</v></c>", "refused"},
    {"ReferenceToASurrogate", "<c><v>&#xD800;</v></c>", "refused"},
    {"ReferenceBeyondUnicode", "<c><v>&#x110000;</v></c>", "refused"},
    {"ReferenceBeyond32Bits", "<c><v>&#4294967345;</v></c>", "refused"},
    {"ReferenceToAControlCharacter", "<c><v>&#1;</v></c>", "refused"},
    {"ReferenceWithoutEnd", "<c><v>&#50</v></c>", "refused"},
    {"CDataUnclosed", "<c><v><![CDATA[1</v></c>", "refused"},
    {"CDataEndInText", "<c><v>1]]></v></c>", "refused"},
    {"CDataOutside", "<![CDATA[1]]><c/>", "refused"},
    {"CommentInAComment", "<c><v>1<!-- <!-- --> --></v></c>", "refused"},
    {"CommentWithTwoHyphens", "<c><v>1<!-- -- --></v></c>", "refused"},
    {"DuplicateAttribute", "<c a='1' a='2'/>", "refused"},
    {"TooDeep", nested(65), "refused"},
};

const std::string bomb = "<!DOCTYPE c [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]>";

const Document documentTypes[] = {
    {"Plain", "<!DOCTYPE c><c><v>1</v></c>", "refused"},
    {"InternalEntity", "<!DOCTYPE c [<!ENTITY e \"1\">]><c><v>&e;</v></c>", "refused"},
    {"Bomb", bomb + "<c><v>&b;&b;&b;</v></c>", "refused"},
    {"ExternalEntity", "<!DOCTYPE c [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><c><v>&e;</v></c>", "refused"},
    {"ExternalSubset", "<!DOCTYPE c SYSTEM \"file:///etc/passwd\"><c/>", "refused"},
    {"ParameterEntity", "<!DOCTYPE c [<!ENTITY % p SYSTEM \"http://127.0.0.1/\"> %p;]><c/>", "refused"},
    {"DefaultAttribute", "<!DOCTYPE c [<!ATTLIST c a CDATA \"1\">]><c/>", "refused"},
    {"EntityOfItself", "<!DOCTYPE c [<!ENTITY e \"&e;\">]><c>&e;</c>", "refused"},
    {"InCData", "<c><![CDATA[<!DOCTYPE c>]]><v>1</v></c>", "refused"},
    {"AfterAByteOrderMark", "\xef\xbb\xbf<!DOCTYPE c><c/>", "refused"},
    {"AfterABlank", "<! DOCTYPE c><c/>", "refused"},
    {"EntityDeclaredInside", "<c><!ENTITY e \"1\"><v>&e;</v></c>", "refused"},
    {"InAComment", "<c><!-- <!DOCTYPE c> --><v>1</v></c>", "refused"},
    {"LowerCase", "<!doctype c><c/>", "refused"},
};

std::string nameOf(const testing::TestParamInfo<Document>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Accepted, ConfigurationText, testing::ValuesIn(accepted), nameOf);
INSTANTIATE_TEST_SUITE_P(Refused, ConfigurationText, testing::ValuesIn(refused), nameOf);
INSTANTIATE_TEST_SUITE_P(DocumentType, ConfigurationText, testing::ValuesIn(documentTypes), nameOf);

/** A document with so many elements and attributes, all with names of their own. */
std::string documentWithNames(int names) {
    std::string document = "<c><v>1</v><d";
    for (int i = 3; i < names; ++i) {
        document += " a" + std::to_string(i) + "=''";
    }
    return document + "/></c>";
}

TEST(TulConfiguration, ReadsTenThousandNamesAndRefusesMore) {
    EXPECT_EQ("[1]", valueIn(documentWithNames(10000)));
    EXPECT_EQ("refused", valueIn(documentWithNames(10001)));
    EXPECT_EQ("refused", valueIn(documentWithNames(90000)));
}

TEST(TulConfiguration, ReadsManyNamespaces) {
    std::string document = "<c><v>1</v><d";
    for (int i = 0; i < 4000; ++i) {
        document += " xmlns:n" + std::to_string(i) + "='u" + std::to_string(i) + "' n" + std::to_string(i) + ":a=''";
    }
    EXPECT_EQ("[1]", valueIn(document + "/></c>"));
}

TEST(TulConfiguration, ReadsTheLargestText) {
    const std::string begin = "<c><v>";
    const std::string end = "</v></c>";
    const std::string value(1024 * 1024 - begin.size() - end.size(), 'x');
    EXPECT_EQ("[" + value + "]", valueIn(begin + value + end));
}

TEST(TulConfiguration, RefusesLongerTexts) {
    for (const std::size_t size : {1024U * 1024U, 100U * 1024U * 1024U}) {
        EXPECT_EQ("refused", valueIn("<c><v>" + std::string(size, 'x') + "</v></c>"));
    }
}

TEST(TulConfiguration, RefusesAnyDepthWithoutStackOverflow) {
    EXPECT_EQ("refused", valueIn(nested(100000)));
    EXPECT_EQ("refused", valueIn(repeated("<a>", 300000)));
}

TEST(TulConfigurationDeathTest, AnyDepthOverflowsTheStackOfAPlainParser) {
    const std::string deep = nested(300000);
    EXPECT_DEATH({ const Poco::AutoPtr<Poco::XML::Document> document(Poco::XML::DOMParser().parseString(deep)); },
                 "");
}

TEST(TulConfiguration, HasNothingBeforeLoadAndAfterUnload) {
    Tul::TulConfiguration configuration;
    EXPECT_EQ("none", textsOf(configuration, "v"));
    configuration.load("<c><v>1</v></c>");
    EXPECT_EQ("[1]", textsOf(configuration, "v"));
    configuration.unload();
    configuration.unload();
    EXPECT_EQ("none", textsOf(configuration, "v"));
}

TEST(TulConfiguration, ReplacesWhatWasLoaded) {
    Tul::TulConfiguration configuration;
    configuration.load("<c><v>1</v></c>");
    configuration.load("<c><v>2</v></c>");
    EXPECT_EQ("[2]", textsOf(configuration, "v"));
    EXPECT_THROW(configuration.load("<c>"), Tul::TulException);
    EXPECT_EQ("none", textsOf(configuration, "v"));
}

TEST(TulConfiguration, SaysWhereATextIsBroken) {
    Tul::TulConfiguration configuration;
    try {
        configuration.load("<c>\n<v>1</w>\n</c>");
        FAIL() << "loaded";
    } catch (const Tul::TulException& failure) {
        EXPECT_NE(std::string::npos, std::string(failure.what()).find("line 2")) << failure.what();
    }
}

TEST(TulConfiguration, HasNoTextForNoElement) {
    EXPECT_EQ("", Tul::TulConfiguration().get_text(nullptr));
}

TEST(TulConfiguration, SurvivesEveryCutOfADocument) {
    const std::string document = "<?xml version=\"1.0\"?><c a='1'><!-- x --><v>&#49;<![CDATA[2]]></v></c>";
    for (std::size_t length = 0; length < document.size(); ++length) {
        EXPECT_EQ("refused", valueIn(document.substr(0, length))) << length;
    }
    EXPECT_EQ("[12]", valueIn(document));
}

}  // namespace
}  // namespace TulTest
