#ifndef TUL_NODE_TEXT_H
#define TUL_NODE_TEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TulNode {

/**
 * The text as it may be printed: control characters (also those of Unicode's second block, which drive terminals
 * too) and bytes that are not UTF-8 become \xNN.
 */
std::string escape(std::string_view text);

/** Whether escape() would leave the text as it is. */
bool isPrintable(std::string_view text);

std::vector<std::string> split(std::string_view text, char separator);
std::string join(const std::vector<std::string>& parts, std::string_view separator);

/** A whole decimal number, perhaps with a minus; nothing for anything else or when it does not fit. */
std::optional<long long> toNumber(std::string_view text);

/** The content of a file; std::runtime_error that names the file and the cause. */
std::string readFile(const std::string& file);

}  // namespace TulNode

#endif
