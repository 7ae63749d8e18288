#ifndef VORMA_CHECK_SUM_H
#define VORMA_CHECK_SUM_H

#include <optional>
#include <string>
#include <string_view>

namespace Vorma {

/** The text with a last line that vouches for it: the mark, a blank, and the CRC-32 of all before that line. */
std::string withCheckSum(const std::string& text, std::string_view mark);

/** The text before the last line, when that vouches for it; nothing when a single bit differs, or the end is cut. */
std::optional<std::string_view> vouchedFor(std::string_view text, std::string_view mark);

}  // namespace Vorma

#endif
