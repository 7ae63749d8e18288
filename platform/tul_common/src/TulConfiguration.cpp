#include "TulConfiguration.h"

#include <Poco/DOM/DOMParser.h>
#include <Poco/DOM/Element.h>
#include <Poco/DOM/NodeList.h>
#include <Poco/Exception.h>
#include <Poco/SAX/Attributes.h>
#include <Poco/SAX/DefaultHandler.h>
#include <Poco/SAX/SAXParser.h>

#include <algorithm>

#include "TulException.h"

namespace Tul {

namespace {

constexpr std::size_t maximumBytes = std::size_t{1024} * 1024;
constexpr unsigned maximumDepth = 64;
constexpr unsigned long maximumNames = 10000;

/**
 * Finds the depth of a document and the number of names in it without building it. It only counts: an exception
 * must not pass through the C code of the parser that calls it.
 */
class Measure : public Poco::XML::DefaultHandler {
public:
    void startElement(const Poco::XML::XMLString&, const Poco::XML::XMLString&, const Poco::XML::XMLString&,
                      const Poco::XML::Attributes& attributes) override {
        deepest = std::max(deepest, ++_depth);
        names += 1 + static_cast<unsigned long>(attributes.getLength());
    }

    void endElement(const Poco::XML::XMLString&, const Poco::XML::XMLString&, const Poco::XML::XMLString&) override {
        --_depth;
    }

    unsigned deepest = 0;
    unsigned long names = 0; /**< of elements and of attributes, each time that they appear */

private:
    unsigned _depth = 0;
};

template <class ParserT>
void refuseExternalEntities(ParserT& parser) {
    parser.setFeature(Poco::XML::XMLReader::FEATURE_EXTERNAL_GENERAL_ENTITIES, false);
    parser.setFeature(Poco::XML::XMLReader::FEATURE_EXTERNAL_PARAMETER_ENTITIES, false);
}

void checkText(const std::string& text) {
    if (text.size() > maximumBytes) {
        throw TulException("The configuration has %zu bytes, allowed are %zu", text.size(), maximumBytes);
    }
    // Besides what is plainly broken this refuses UTF-16 and UTF-32, so that the search below sees every letter.
    if (text.find('\0') != std::string::npos) {
        throw TulException("The configuration contains a NUL byte");
    }
    // Looked for in the raw text, comments and all: what the parser never sees cannot trick it, and no
    // configuration needs these letters.
    if (text.find("<!DOCTYPE") != std::string::npos) {
        throw TulException("The configuration contains a document type declaration");
    }
}

Measure measured(const std::string& text) {
    Measure measure;
    Poco::XML::SAXParser parser;
    refuseExternalEntities(parser);
    parser.setContentHandler(&measure);
    parser.parseMemoryNP(text.data(), text.size());
    return measure;
}

void check(const Measure& measure) {
    // The document is destroyed by recursion, so depth is stack.
    if (measure.deepest > maximumDepth) {
        throw TulException("The configuration has %u levels of elements, allowed are %u", measure.deepest,
                           maximumDepth);
    }
    if (measure.names > maximumNames) {
        throw TulException("The configuration has %lu elements and attributes, allowed are %lu", measure.names,
                           maximumNames);
    }
}

Poco::XML::Document* parse(const std::string& text, const Measure& measure) {
    // A pool that overflows throws, and that through C code: give it room for every name there is.
    Poco::XML::DOMParser parser(2 * measure.names + 1);
    refuseExternalEntities(parser);
    return parser.parseMemory(text.data(), text.size());
}

}  // namespace

TulConfiguration::TulConfiguration() = default;

TulConfiguration::~TulConfiguration() = default;

void TulConfiguration::load(const std::string& configuration) {
    unload();
    checkText(configuration);
    try {
        const Measure measure = measured(configuration);
        check(measure);
        _document = parse(configuration, measure);
    } catch (const Poco::Exception& error) {
        throw TulException("%s", error.displayText().c_str());
    }
}

void TulConfiguration::unload() {
    _document = nullptr;
}

Poco::XML::NodeList* TulConfiguration::getElementsByTagName(std::string name) {
    return _document.isNull() ? nullptr : _document->getElementsByTagName(name);
}

std::string TulConfiguration::get_text(Poco::XML::Element* element) {
    return element == nullptr ? std::string() : element->innerText();
}

}  // namespace Tul
