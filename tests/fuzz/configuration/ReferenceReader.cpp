#include <Poco/Exception.h>
#include <Poco/SAX/Attributes.h>
#include <Poco/SAX/DefaultHandler.h>
#include <Poco/SAX/SAXParser.h>

#include <algorithm>
#include <map>

#include "Reading.h"
#include "ReferenceNumber.h"

namespace TulFuzz {

namespace {

using Poco::XML::XMLReader;
using Poco::XML::XMLString;

const Reading refused{-1};

/** Gathers the texts of all elements that stand inside the section, by name. */
class Section : public Poco::XML::DefaultHandler {
public:
    void startElement(const XMLString&, const XMLString&, const XMLString& name,
                      const Poco::XML::Attributes& attributes) override {
        names += 1 + static_cast<std::size_t>(attributes.getLength());
        const bool inside = std::find(_open.begin(), _open.end(), "TulSshdManager") != _open.end();
        if (inside) {
            texts[name].emplace_back();
        }
        sections += name == "TulSshdManager" ? 1 : 0;
        _open.push_back(name);
        deepest = std::max(deepest, _open.size());
    }

    void endElement(const XMLString&, const XMLString&, const XMLString&) override { _open.pop_back(); }

    /** A text belongs to every element that is open around it; of each name the newest one counts. */
    void characters(const char letters[], int start, int length) override {
        auto element = std::find(_open.begin(), _open.end(), "TulSshdManager");
        for (element += element == _open.end() ? 0 : 1; element != _open.end(); ++element) {
            texts[*element].back().append(letters + start, static_cast<std::size_t>(length));
        }
    }

    std::map<std::string, std::vector<std::string>> texts;
    std::size_t sections = 0;
    std::size_t deepest = 0;
    std::size_t names = 0;

private:
    std::vector<std::string> _open;
};

/** Throws when the text is no XML. */
Section sectionOf(const std::string& text) {
    Section section;
    Poco::XML::SAXParser parser;
    parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
    parser.setContentHandler(&section);
    parser.parseMemoryNP(text.data(), text.size());
    return section;
}

std::string trimmedLowerCase(const std::string& text) {
    std::string result;
    const char* const space = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(space);
    if (first == std::string::npos) {
        return result;
    }
    for (const char letter : text.substr(first, text.find_last_not_of(space) - first + 1)) {
        result += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    }
    return result;
}

/** A number that stands there exactly once and is one. */
bool readNumber(Section& section, const char* tag, unsigned int& number) {
    const std::vector<std::string>& found = section.texts[tag];
    if (found.size() != 1) {
        return false;
    }
    const ExpectedNumber expected = expectedNumber(found.front());
    number = expected.value.value_or(number);
    return expected.verdict == ExpectedNumber::Verdict::accepted;
}

Reading expectedReading(Section& section) {
    const std::vector<std::string>& managements = section.texts["sshdManagement"];
    if (managements.size() > 1) {
        return refused;
    }
    const std::string management = managements.empty() ? "" : managements.front();
    const std::string word = management.empty() ? "false" : trimmedLowerCase(management);
    if (word != "true" && word != "false") {
        return refused;
    }
    Reading reading{0, word == "true"};
    if (!reading.managed) {
        return reading;
    }
    if (!readNumber(section, "cliPort", reading.cliPort) ||
        !readNumber(section, "netconfPort", reading.netconfPort)) {
        reading.result = -1;
    } else if (!readNumber(section, "renegotiationTime", reading.renegotiationTime)) {
        reading.renegotiationTime = 0;
    }
    return reading;
}

}  // namespace

Reading expectedReading(const std::string& text) {
    if (text.size() > 1024 * 1024 || text.find("<!DOCTYPE") != std::string::npos) {
        return refused;
    }
    try {
        Section section = sectionOf(text);
        const bool bounded = section.deepest <= 64 && section.names <= 10000;
        return bounded && section.sections == 1 ? expectedReading(section) : refused;
    } catch (const Poco::Exception&) {
        return refused;
    }
}

}  // namespace TulFuzz
