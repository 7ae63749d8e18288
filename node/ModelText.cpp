#include "ModelText.h"

#include <algorithm>
#include <stdexcept>

#include "Refusal.h"
#include "Services.h"
#include "Text.h"

namespace TulNode {

namespace {

constexpr unsigned int modelTimeout = 3600;

Scalar parseNumber(const AttributeDefinition& definition, const std::string& text) {
    const auto literal = std::find(definition.literals.begin(), definition.literals.end(), text);
    if (literal != definition.literals.end()) {
        return std::int64_t{literal - definition.literals.begin()};
    }
    const auto number = toNumber(text);
    if (!number) {
        throw Refusal(BRY_WRONG_TYPE,
                      definition.name + " is \"" + escape(text) + "\"; allowed: " + definition.allowed());
    }
    return std::int64_t{*number};
}

AttributeValue parseValue(const AttributeDefinition& definition, const std::string& text) {
    AttributeValue value{definition.type, {}};
    if (text.empty()) {
        return value;
    }
    const std::vector<std::string> parts = definition.isSequence() ? split(text, ',') : std::vector{text};
    for (const std::string& part : parts) {
        value.values.push_back(isText(definition.type) ? Scalar{part} : parseNumber(definition, part));
    }
    return value;
}

std::string formatScalar(const AttributeDefinition& definition, const Scalar& scalar) {
    if (const auto* text = std::get_if<std::string>(&scalar)) {
        return *text;
    }
    const auto number = static_cast<std::size_t>(std::get<std::int64_t>(scalar));
    return number < definition.literals.size() ? definition.literals[number]
                                               : std::to_string(std::get<std::int64_t>(scalar));
}

const char* typeWord(CmEventType type) {
    return type == CREATED ? "CREATED" : type == DELETED ? "DELETED" : "ATTRIBUTES_CHANGED";
}

void createFromLine(TransactionMaster& transactions, TransactionMaster::Handle handle, const std::string& line) {
    const std::vector<std::string> words = splitWords(line);
    if (words.empty() || words[0].starts_with('#')) {
        return;
    }
    if (words[0] != "create" || words.size() < 2) {
        throw Refusal(BRY_INVALID_ARGUMENT, "\"" + escape(line) + "\" is not \"create DN [attribute=value ...]\"");
    }
    const ClassDefinition& definition = classDefinition(Dn(words[1]).last().className);
    transactions.create(handle, words[1], parseAttributes(definition, std::span(words).subspan(2)));
}

}  // namespace

std::vector<std::string> splitWords(const std::string& line) {
    std::vector<std::string> words;
    bool inWord = false;
    bool inQuotes = false;
    for (const char c : line) {
        const bool isBlank = c == ' ' || c == '\t' || c == '\r';
        if (isBlank && !inQuotes) {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (c == '"') {
            inQuotes = !inQuotes;
        } else {
            words.back() += c;
        }
    }
    if (inQuotes) {
        throw Refusal(BRY_INVALID_ARGUMENT, "a double quote is not closed");
    }
    return words;
}

Attributes parseAttributes(const ClassDefinition& definition, std::span<const std::string> words) {
    Attributes attributes;
    for (const std::string& word : words) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos) {
            throw Refusal(BRY_INVALID_ARGUMENT, "\"" + escape(word) + "\" is not attribute=value");
        }
        const AttributeDefinition& attribute = definition.attribute(word.substr(0, equals));
        if (!attributes.emplace(attribute.name, parseValue(attribute, word.substr(equals + 1))).second) {
            throw Refusal(BRY_INVALID_ARGUMENT, attribute.name + " is given twice");
        }
    }
    return attributes;
}

std::string formatAttribute(const AttributeDefinition& definition, const AttributeValue& value) {
    std::vector<std::string> texts;
    for (const Scalar& scalar : value.values) {
        texts.push_back(formatScalar(definition, scalar));
    }
    const std::string text = definition.name + "=" + join(texts, ",");
    return text.find(' ') == std::string::npos ? text : "\"" + text + "\"";
}

std::string formatChange(const MoChange& change) {
    std::string text = std::string(typeWord(change.type)) + " " + change.dn;
    const ClassDefinition& definition = classDefinition(Dn(change.dn).last().className);
    for (const auto& [name, value] : change.attributes) {
        text += " " + formatAttribute(definition.attribute(name), value);
    }
    return text;
}

void applyModel(TransactionMaster& transactions, const std::string& text, const std::string& source) {
    const TransactionMaster::Handle handle =
        transactions.open(TUL_LOCK_POLICY_EXCLUSIVE, modelTimeout, ownerOperator);
    std::size_t number = 0;
    try {
        for (const std::string& line : split(text, '\n')) {
            ++number;
            createFromLine(transactions, handle, line);
        }
        transactions.commit(handle);
    } catch (const std::runtime_error& e) {
        transactions.abort(handle);
        throw std::runtime_error(source + ":" + std::to_string(number) + ": " + e.what());
    }
}

}  // namespace TulNode
