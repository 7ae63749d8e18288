#include "ConfigurationModel.h"

#include <algorithm>

#include "TulConfiguration.h"

namespace Sequences {

namespace {

const std::string blanks = " \t\n\v\f\r";

bool beginsBlank(const std::string& text) {
    return blanks.find(text.front()) != std::string::npos;
}

std::string trimmedAndLowered(const std::string& text) {
    std::string word;
    for (const char c : text.substr(std::min(text.find_first_not_of(blanks), text.size()))) {
        word += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return word.substr(0, word.find_last_not_of(blanks) + 1);
}

/** In the words of the platform's parser. */
std::string whyUnparsable(const std::string& text) {
    try {
        Tul::TulConfiguration().load(text);
    } catch (const std::exception& reason) {
        return reason.what();
    }
    return "";
}

}  // namespace

bool ConfigurationModel::read(const Document& document) {
    const std::string function = "readComponentConfiguration";
    const std::string component = "TulSshdManagementComponent";
    if (document.form == Form::BROKEN) {
        _stage.error(function, "Failed to load configuration: " + whyUnparsable(textOf(document)));
    } else if (document.form == Form::NO_SECTION) {
        _stage.error(function, "No " + component + " configuration found");
    } else if (document.form == Form::TWO_SECTIONS) {
        _stage.error(function, "Multiple " + component + " configurations found");
    } else {
        return readValues(document);
    }
    return false;
}

/** What was read before a failure stays, in a component that may be running. */
bool ConfigurationModel::readValues(const Document& document) {
    if (!readManaged(document.managed)) {
        return false;
    }
    if (!managed) {
        return true;
    }
    if (!readPorts(document)) {
        return false;
    }
    if (!readNumber("renegotiationTime", document.renegotiationTime, renegotiationTime)) {
        renegotiationTime = 0;
    }
    return true;
}

bool ConfigurationModel::readPorts(const Document& document) {
    const unsigned oldCliPort = cliPort;
    if (!readNumber("cliPort", document.cliPort, cliPort)) {
        return false;
    }
    const bool isRead = readNumber("netconfPort", document.netconfPort, netconfPort);
    if (!isRead && _stage.isBent(Bend::FAILED_READ_KEEPS_THE_OLD_PORTS)) {
        cliPort = oldCliPort;
    }
    return isRead;
}

bool ConfigurationModel::readManaged(const Texts& texts) {
    if (isDuplicated("sshdManagement", texts)) {
        return false;
    }
    const std::string text = texts.empty() ? "" : texts.front();
    const std::string word = trimmedAndLowered(text);
    const bool isOff = text.empty() || word == "false" || (word.empty() && _stage.isBent(Bend::BLANK_SWITCH_IS_OFF));
    if (word == "true" || isOff) {
        managed = !isOff;
        return true;
    }
    return false;
}

bool ConfigurationModel::isDuplicated(const std::string& tag, const Texts& texts) {
    if (texts.size() > 1) {
        _stage.error("getElementValue", "Configuration File does not have the correct format (" +
                                            std::to_string(texts.size()) + ") , " + tag);
    }
    return texts.size() > 1;
}

bool ConfigurationModel::readNumber(const std::string& tag, const Texts& texts, unsigned& value) {
    const std::string function = "getUintValueFromCfg";
    if (isDuplicated(tag, texts) || texts.empty()) {
        _stage.error(function, "'" + tag + "' tag does not exist");
        return false;
    }
    const std::string reason = convert(texts.front(), value);
    if (!reason.empty()) {
        _stage.error(function, "Problem in conversion '" + tag + "' tag . Reason: '" + reason + "'");
    }
    return reason.empty();
}

/** Why a text is no number, or nothing. A number with something behind it is no number, and stored all the same. */
std::string ConfigurationModel::convert(const std::string& text, unsigned& value) const {
    const std::string invalid = "Invalid string exception";
    if (text.empty() || beginsBlank(text)) {
        return invalid;
    }
    if (text.front() == '-') {
        return "UnsignedInt Expected Exception";
    }
    const std::string unsignedText = text.substr(text.front() == '+' ? 1 : 0);
    constexpr std::uint64_t tooMuch = std::uint64_t{1} << 32;
    std::uint64_t number = 0;
    const std::size_t end = std::min(unsignedText.find_first_not_of("0123456789"), unsignedText.size());
    for (const char digit : unsignedText.substr(0, end)) {
        number = std::min(tooMuch, number * 10 + static_cast<std::uint64_t>(digit - '0'));
    }
    if (number == tooMuch) {
        return "Value range exception";
    }
    const bool isNumber = end > 0 && end == unsignedText.size();
    if (isNumber || !_stage.isBent(Bend::NUMBER_IS_STORED_ONLY_WHEN_GOOD)) {
        value = static_cast<unsigned>(number);
    }
    return isNumber ? "" : invalid;
}

}  // namespace Sequences
