#ifndef TUL_NODE_DN_H
#define TUL_NODE_DN_H

#include <string>
#include <string_view>
#include <vector>

namespace TulNode {

/**
 * A distinguished name: "Class=key" parts from the root down, with commas.
 *
 * A class name is letters and digits, beginning with a letter. A key is 1 to 64 letters, digits and . _ : / @ -
 * None of these sorts before the comma, so DNs that are sorted as plain text stand in tree order: an MO, then
 * everything below it, then its next sibling.
 */
class Dn {
public:
    struct Part {
        std::string className;
        std::string key;
    };

    /** Refusal with BRY_BAD_DN when the text is none. */
    explicit Dn(std::string_view text);

    const std::string& text() const { return _text; }
    const Part& last() const { return _parts.back(); }
    std::size_t depth() const { return _parts.size(); }

    /** The DN of the MO above as text; empty for a root. */
    std::string parent() const;

    /** The class names alone, with commas. */
    std::string classPath() const;

private:
    std::string _text;
    std::vector<Part> _parts;
};

}  // namespace TulNode

#endif
