#include "SshdConfigHandler.h"

#include <Poco/AutoPtr.h>
#include <Poco/DOM/Element.h>
#include <Poco/DOM/NodeList.h>
#include <Poco/String.h>

#include <exception>

#include "BryReturn.h"
#include "Logging.h"
#include "StringConversion.h"

namespace TulSshdManagement {

using Poco::XML::Element;
using Poco::XML::NodeList;
using Tul::Trace::TulSshd;

namespace {

const char* const componentName = "TulSshdManagementComponent";
const char* const sectionTag = "TulSshdManager";
const int severalFound = -1;
const int noneFound = -2;

Element* firstElement(const NodeList& list) {
    return static_cast<Element*>(list.item(0));
}

bool isWord(const std::string& value, const char* word) {
    return Poco::toLower(Poco::trim(value)) == word;
}

}  // namespace

SshdConfigHandler::SshdConfigHandler() = default;

SshdConfigHandler::~SshdConfigHandler() = default;

int SshdConfigHandler::readComponentConfiguration(const char* configuration) {
    TUL_TRACE_ENTRY(TulSshd, " >> \n%s", configuration == nullptr ? "(null)" : configuration);
    if (configuration == nullptr) {
        TUL_WARNING(TulSshd, "No configuration provided for %s", componentName);
        return BRY_NO_CONFIGURATION;
    }
    Tul::TulConfiguration loader;
    try {
        loader.load(std::string(configuration));
    } catch (const std::exception& exception) {
        TUL_ERROR(TulSshd, "Failed to load configuration: %s", exception.what());
        TUL_TRACE_EXIT(TulSshd, " << ");
        return BRY_FAILED;
    }
    int result = BRY_FAILED;
    {
        const Poco::AutoPtr<NodeList> sections(loader.getElementsByTagName(sectionTag));
        const unsigned long count = sections.isNull() ? 0 : sections->length();
        if (count == 0) {
            TUL_ERROR(TulSshd, "No %s configuration found", componentName);
        } else if (count > 1) {
            TUL_ERROR(TulSshd, "Multiple %s configurations found", componentName);
        } else {
            result = readSection(firstElement(*sections));
        }
    }
    loader.unload();
    TUL_TRACE_EXIT(TulSshd, " << ");
    return result;
}

int SshdConfigHandler::readSection(Element* section) {
    const int result = getBooleanValueFromCfg("sshdManagement", _sshdManagement, section);
    if (result != 0 || !_sshdManagement) {
        return result;
    }
    if (getUintValueFromCfg("cliPort", _cliPort, section) != 0 ||
        getUintValueFromCfg("netconfPort", _netconfPort, section) != 0) {
        return BRY_FAILED;
    }
    // Wanted as it is: a missing or bad time is logged as an error and then only means "none".
    if (getUintValueFromCfg("renegotiationTime", _renegotiationTime, section) != 0) {
        _renegotiationTime = 0;
    }
    return 0;
}

int SshdConfigHandler::getElementValue(const std::string& tag, std::string& value, Element* parent) {
    const Poco::AutoPtr<NodeList> elements(parent->getElementsByTagName(tag));
    const unsigned long count = elements->length();
    if (count == 0) {
        return noneFound;
    }
    if (count > 1) {
        TUL_ERROR(TulSshd, "Configuration File does not have the correct format (%lu) , %s", count, tag.c_str());
        return severalFound;
    }
    if (Element* const element = firstElement(*elements)) {
        value = get_text(element);
    }
    return 0;
}

int SshdConfigHandler::getBooleanValueFromCfg(const std::string& tag, bool& value, Element* parent) {
    std::string text;
    const int found = getElementValue(tag, text, parent);
    if (found == severalFound) {
        return found;
    }
    if (found == noneFound) {
        TUL_TRACE(TulSshd, "'%s' does not exist in cfg file, setting it to default (false)", tag.c_str());
        value = false;
    } else if (text.empty()) {
        TUL_TRACE(TulSshd, "'%s' value is empty, setting it to default (false).", tag.c_str());
        value = false;
    } else if (isWord(text, "true")) {
        TUL_TRACE(TulSshd, "%s enabled.", tag.c_str());
        value = true;
    } else if (isWord(text, "false")) {
        TUL_TRACE(TulSshd, "%s disabled.", tag.c_str());
        value = false;
    } else {
        TUL_TRACE(TulSshd, "%s value is invalid.", tag.c_str());
        return BRY_FAILED;
    }
    return 0;
}

int SshdConfigHandler::getUintValueFromCfg(const std::string& tag, unsigned int& value, Element* parent) {
    std::string text;
    if (getElementValue(tag, text, parent) != 0) {
        TUL_ERROR(TulSshd, "'%s' tag does not exist", tag.c_str());  // wanted for a doubled element too
        return BRY_FAILED;
    }
    const char* reason = nullptr;  // literals: they outlive their exception
    try {
        Tul::toInt<unsigned int>(text, value);
        return 0;
    } catch (const Tul::InvalidStringException& exception) {
        reason = exception.what();
    } catch (const Tul::UnsignedIntExpectedException& exception) {
        reason = exception.what();
    } catch (const Tul::ValueRangeException& exception) {
        reason = exception.what();
    }
    TUL_ERROR(TulSshd, "Problem in conversion '%s' tag . Reason: '%s'", tag.c_str(), reason);
    return BRY_FAILED;
}

}  // namespace TulSshdManagement
