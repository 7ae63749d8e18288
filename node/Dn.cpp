#include "Dn.h"

#include <algorithm>

#include "Refusal.h"
#include "Text.h"

namespace TulNode {

namespace {

constexpr std::size_t longestKey = 64;

bool isAlnum(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isKeyCharacter(char c) {
    return isAlnum(c) || std::string_view("._:/@-").find(c) != std::string_view::npos;
}

bool isClassName(std::string_view text) {
    return !text.empty() && !(text[0] >= '0' && text[0] <= '9') && std::all_of(text.begin(), text.end(), isAlnum);
}

bool isKey(std::string_view text) {
    return !text.empty() && text.size() <= longestKey && std::all_of(text.begin(), text.end(), isKeyCharacter);
}

}  // namespace

Dn::Dn(std::string_view text) : _text(text) {
    for (const std::string& part : split(text, ',')) {
        const std::size_t equals = part.find('=');
        const std::string className = part.substr(0, equals);
        const std::string key = equals == std::string::npos ? "" : part.substr(equals + 1);
        if (!isClassName(className) || !isKey(key)) {
            throw Refusal(BRY_BAD_DN, "\"" + escape(text) +
                                          "\" is not a DN: it is made of Class=key parts with commas, each key 1 "
                                          "to 64 letters, digits or . _ : / @ -");
        }
        _parts.push_back({className, key});
    }
}

std::string Dn::parent() const {
    const std::size_t comma = _text.rfind(',');
    return comma == std::string::npos ? "" : _text.substr(0, comma);
}

std::string Dn::classPath() const {
    std::vector<std::string> names;
    for (const Part& part : _parts) {
        names.push_back(part.className);
    }
    return join(names, ",");
}

}  // namespace TulNode
