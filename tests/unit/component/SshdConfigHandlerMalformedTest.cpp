#include <Poco/AutoPtr.h>
#include <Poco/DOM/DOMParser.h>
#include <Poco/DOM/Document.h>
#include <Poco/Exception.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "RecordingFramework.h"
#include "SshdConfigHandler.h"

namespace {

using namespace TulTest;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using TulSshdManagement::SshdConfigHandler;

const char* const refusal = "3 readComponentConfiguration: Failed to load configuration: ";

const std::string valid =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<TulConfiguration>\n"
    "  <!-- ports of the node -->\n"
    "  <TulSshdManager version='1'>\n"
    "    <sshdManagement> TRUE </sshdManagement>\n"
    "    <ports><cliPort>20<![CDATA[22]]></cliPort></ports>\n"
    "    <netconfPort>&#50;830</netconfPort>\n"
    "    <renegotiationTime>3600</renegotiationTime>\n"
    "  </TulSshdManager>\n"
    "</TulConfiguration>";

/** What the getters say after a read. */
struct Reading {
    int result;
    bool managed;
    unsigned int cliPort;
    unsigned int netconfPort;
    unsigned int renegotiationTime;

    bool operator==(const Reading&) const = default;

    friend std::ostream& operator<<(std::ostream& stream, const Reading& reading) {
        return stream << reading.result << (reading.managed ? " managed " : " not managed ") << reading.cliPort << ' '
                      << reading.netconfPort << ' ' << reading.renegotiationTime;
    }
};

class SshdConfigHandlerGiven : public testing::Test {
protected:
    int read(const std::string& text) {
        framework.records.clear();
        return SshdConfigHandler().readComponentConfiguration(text.c_str());
    }

    RecordingFramework framework;
};

TEST_F(SshdConfigHandlerGiven, AValidDocumentReadsIt) {
    SshdConfigHandler handler;
    EXPECT_EQ(0, handler.readComponentConfiguration(valid.c_str()));
    EXPECT_EQ(2022u, handler.getCliport());
    EXPECT_EQ(2830u, handler.getNetconfport());
    EXPECT_THAT(framework.logs(), IsEmpty());
}

TEST_F(SshdConfigHandlerGiven, ADocumentThatIsCutAnywhereFails) {
    for (std::size_t length = 0; length < valid.size(); ++length) {
        ASSERT_EQ(-1, read(valid.substr(0, length))) << length << " bytes";
        ASSERT_THAT(framework.logs(), ElementsAre(StartsWith(refusal))) << length << " bytes";
    }
}

TEST_F(SshdConfigHandlerGiven, ADocumentWithAnyBitFlippedReadsItOrFails) {
    for (std::size_t bit = 0; bit < valid.size() * 8; ++bit) {
        std::string flipped = valid;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
        ASSERT_THAT(read(flipped), AnyOf(0, -1)) << "bit " << bit;
    }
}

TEST_F(SshdConfigHandlerGiven, ADocumentWithAnyByteMissingOrDoubledReadsItOrFails) {
    for (std::size_t place = 0; place < valid.size(); ++place) {
        std::string without = valid;
        ASSERT_THAT(read(without.erase(place, 1)), AnyOf(0, -1)) << "byte " << place;
        std::string with = valid;
        ASSERT_THAT(read(with.insert(place, 1, valid[place])), AnyOf(0, -1)) << "byte " << place;
    }
}

/** What must become of the valid document when one of its elements is missing, and when it is there twice. */
struct Element {
    const char* name;
    std::string text;
    Reading missing;
    Reading doubled;
};

void PrintTo(const Element& element, std::ostream* stream) {
    *stream << element.name;
}

class SshdConfigHandlerElement : public SshdConfigHandlerGiven, public testing::WithParamInterface<Element> {
protected:
    Reading readingOf(const std::string& text) {
        SshdConfigHandler handler;
        const int result = handler.readComponentConfiguration(text.c_str());
        return {result, handler.getSshdManagement(), handler.getCliport(), handler.getNetconfport(),
                handler.getRenegotiationtime()};
    }

    std::string withElement(const std::string& replacement) {
        std::string text = valid;
        return text.replace(text.find(GetParam().text), GetParam().text.size(), replacement);
    }
};

TEST_P(SshdConfigHandlerElement, ThatIsMissingHasItsVerdict) {
    EXPECT_EQ(GetParam().missing, readingOf(withElement("")));
}

TEST_P(SshdConfigHandlerElement, ThatIsDoubledHasItsVerdict) {
    EXPECT_EQ(GetParam().doubled, readingOf(withElement(GetParam().text + GetParam().text)));
    EXPECT_EQ(GetParam().doubled, readingOf(withElement("<copy>" + GetParam().text + "</copy>" + GetParam().text)));
}

const std::string wholeSection =
    valid.substr(valid.find("<TulSshdManager"), valid.find("</TulConf") - valid.find("<TulSshdManager"));

const Reading nothingRead{-1, false, 0, 0, 0};

INSTANTIATE_TEST_SUITE_P(
    OfTheDocument, SshdConfigHandlerElement,
    testing::Values(
        Element{"Management", "<sshdManagement> TRUE </sshdManagement>", {0, false, 0, 0, 0}, nothingRead},
        Element{"CliPort", "<cliPort>20<![CDATA[22]]></cliPort>", {-1, true, 0, 0, 0}, {-1, true, 0, 0, 0}},
        Element{"FolderOfTheCliPort",
                "<ports><cliPort>20<![CDATA[22]]></cliPort></ports>",
                {-1, true, 0, 0, 0},
                {-1, true, 0, 0, 0}},
        Element{"NetconfPort", "<netconfPort>&#50;830</netconfPort>", {-1, true, 2022, 0, 0}, {-1, true, 2022, 0, 0}},
        Element{"RenegotiationTime",
                "<renegotiationTime>3600</renegotiationTime>",
                {0, true, 2022, 2830, 0},
                {0, true, 2022, 2830, 0}},
        Element{"Comment", "<!-- ports of the node -->", {0, true, 2022, 2830, 3600}, {0, true, 2022, 2830, 3600}},
        Element{"Section", wholeSection, nothingRead, nothingRead}),
    [](const auto& test) { return std::string(test.param.name); });

struct Text {
    const char* name;
    std::string text;
};

void PrintTo(const Text& text, std::ostream* stream) {
    *stream << text.name;
}

class SshdConfigHandlerRefuses : public SshdConfigHandlerGiven, public testing::WithParamInterface<Text> {};

TEST_P(SshdConfigHandlerRefuses, AText) {
    EXPECT_EQ(-1, read(GetParam().text));
    EXPECT_THAT(framework.logs(), ElementsAre(StartsWith(refusal)));
}

const std::string body = "<TulSshdManager><sshdManagement>false</sshdManagement></TulSshdManager>";

INSTANTIATE_TEST_SUITE_P(
    Malformed, SshdConfigHandlerRefuses,
    testing::Values(Text{"Empty", ""}, Text{"Blanks", " \n\t "}, Text{"NoMarkup", "sshdManagement=true"},
                    Text{"TwoRoots", "<a/>" + body}, Text{"TextAfterTheRoot", body + "x"},
                    Text{"Overlapping", "<a><b></a></b>"}, Text{"UnclosedComment", body + "<!-- "},
                    Text{"DoubledAttribute", "<TulSshdManager a='1' a='2'/>"}, Text{"UnknownEntity", "<a>&what;</a>"},
                    Text{"ReferenceToNul", "<a>&#0;</a>"}, Text{"ControlCharacter", "<a>\x01</a>"},
                    Text{"DeclarationAfterABlank", " <?xml version='1.0'?>" + body},
                    Text{"UnknownEncoding", "<?xml version='1.0' encoding='none-of-these'?>" + body},
                    Text{"OverlongUtf8", "<TulSshdManager>\xC0\xB2</TulSshdManager>"},
                    Text{"BrokenUtf8", "<TulSshdManager>\xC3(</TulSshdManager>"},
                    Text{"Surrogates", "<TulSshdManager>\xED\xA0\x80</TulSshdManager>"},
                    Text{"Utf16LittleEndian", std::string("\xFF\xFE<\0a\0/\0>\0", 10)},
                    Text{"Utf16BigEndian", std::string("\xFE\xFF\0<\0a\0/\0>", 10)}),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    DocumentTypes, SshdConfigHandlerRefuses,
    testing::Values(Text{"Bare", "<!DOCTYPE TulSshdManager>" + body},
                    Text{"InternalEntity",
                         "<!DOCTYPE a [<!ENTITY b 'true'>]><TulSshdManager><sshdManagement>&b;</sshdManagement>"
                         "</TulSshdManager>"},
                    Text{"ExternalEntity", "<!DOCTYPE a [<!ENTITY b SYSTEM 'file:///etc/hostname'>]><a>&b;</a>"},
                    Text{"ExternalSubset", "<!DOCTYPE a SYSTEM 'file:///etc/hostname'>" + body},
                    Text{"PublicSubset", "<!DOCTYPE a PUBLIC '-//a//b' 'http://127.0.0.1:1/'>" + body},
                    Text{"ParameterEntity", "<!DOCTYPE a [<!ENTITY % b SYSTEM 'file:///etc/hostname'> %b;]>" + body},
                    Text{"BillionLaughs",
                         "<!DOCTYPE a [<!ENTITY b 'ha'><!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'>"
                         "<!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;'><!ENTITY e '&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;'>]>"
                         "<a>&e;</a>"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(SshdConfigHandlerGiven, AnEndlessDepthFails) {
    std::string begin;
    std::string end;
    for (int i = 0; i < 100000; ++i) {
        begin += "<a>";
        end += "</a>";
    }
    EXPECT_EQ(-1, read(begin + body + end));
    EXPECT_THAT(framework.logs(), ElementsAre(StartsWith(refusal)));
}

TEST_F(SshdConfigHandlerGiven, AnEndlessTextFails) {
    EXPECT_EQ(-1, read("<a>" + std::string(100 << 20, 'x') + body + "</a>"));
    EXPECT_THAT(framework.logs(), ElementsAre(StartsWith(refusal)));
}

/** A file that notices when somebody opens it. */
class WatchedFile {
public:
    WatchedFile() : _watch(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        std::ofstream(path()) << "<sshdManagement>false</sshdManagement>";
        if (inotify_add_watch(_watch, path().c_str(), IN_OPEN) < 0) {
            throw std::runtime_error("cannot watch " + path());
        }
    }
    ~WatchedFile() { close(_watch); }

    std::string path() const { return _directory.path() / "secret"; }

    bool wasOpened() const {
        char events[4096];
        return ::read(_watch, events, sizeof(events)) > 0;
    }

    WatchedFile(const WatchedFile&) = delete;
    WatchedFile& operator=(const WatchedFile&) = delete;

private:
    TemporaryDirectory _directory;
    int _watch;
};

/** As a parser does it that nobody has told what to refuse. What comes of it does not matter. */
void plainlyParse(const std::string& text) {
    Poco::XML::DOMParser parser;
    parser.setFeature(Poco::XML::XMLReader::FEATURE_EXTERNAL_GENERAL_ENTITIES, true);
    parser.setFeature(Poco::XML::XMLReader::FEATURE_EXTERNAL_PARAMETER_ENTITIES, true);
    try {
        const Poco::AutoPtr<Poco::XML::Document> document(parser.parseString(text));
    } catch (const Poco::Exception&) {
        SUCCEED();
    }
}

class SshdConfigHandlerOpens : public SshdConfigHandlerGiven, public testing::WithParamInterface<Text> {
protected:
    /** The row's text, with the file in place of "FILE". */
    std::string document() const {
        std::string text = GetParam().text;
        return text.replace(text.find("FILE"), 4, file.path());
    }

    WatchedFile file;
};

TEST_P(SshdConfigHandlerOpens, NoFileForADocumentType) {
    EXPECT_EQ(-1, read(document()));
    EXPECT_THAT(framework.logs(), ElementsAre(StartsWith(refusal)));
    EXPECT_FALSE(file.wasOpened());
}

TEST_P(SshdConfigHandlerOpens, AFileForADocumentTypeWhenItIsAPlainParser) {
    plainlyParse(document());
    EXPECT_TRUE(file.wasOpened()) << "the test above proves nothing";
}

INSTANTIATE_TEST_SUITE_P(
    External, SshdConfigHandlerOpens,
    testing::Values(Text{"Entity", "<!DOCTYPE a [<!ENTITY b SYSTEM 'file://FILE'>]><a>&b;" + body + "</a>"},
                    Text{"ParameterEntity",
                         "<!DOCTYPE a [<!ENTITY % b SYSTEM 'file://FILE'> %b;]><a>" + body + "</a>"},
                    Text{"Subset", "<!DOCTYPE a SYSTEM 'file://FILE'><a>" + body + "</a>"}),
    [](const auto& test) { return std::string(test.param.name); });

std::string withAttributes(int count) {
    std::string text = "<TulSshdManager";
    for (int i = 0; i < count; ++i) {
        text += " a" + std::to_string(i) + "=''";
    }
    return text + "/>";
}

TEST_F(SshdConfigHandlerGiven, ManyAttributesReadsTheRest) {
    EXPECT_EQ(0, read(withAttributes(9000)));
}

TEST_F(SshdConfigHandlerGiven, EndlessAttributesFails) {
    EXPECT_EQ(-1, read(withAttributes(100000)));
    EXPECT_THAT(framework.logs(), ElementsAre(StartsWith(refusal)));
}

TEST_F(SshdConfigHandlerGiven, AByteOrderMarkReadsTheRest) {
    EXPECT_EQ(0, read("\xEF\xBB\xBF" + valid));
}

TEST_F(SshdConfigHandlerGiven, ADeclaredSingleByteEncodingReadsIt) {
    EXPECT_EQ(0, read("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4" + body + "</a>"));
}

}  // namespace
