#ifndef TUL_FUZZ_ALLOWED_H
#define TUL_FUZZ_ALLOWED_H

#include <string>
#include <string_view>
#include <vector>

namespace TulFuzz {

// What the adapter may take, told once more: letter by letter, numbers compared as texts.

/** A plain decimal number within bounds that are two of the same kind. */
bool isNumber(std::string_view text, std::string_view least, std::string_view most);

bool isPort(std::string_view text);
bool isPath(std::string_view text);
bool isRevision(std::string_view text);

/** Four numbers with dots between. */
bool isAddressOfFour(std::string_view text);

/** Of either family. */
bool isAddress(std::string_view text);

/** The value of a setting, by its name in the state. */
bool isSetting(std::string_view name, std::string_view value);

std::vector<std::string> split(std::string_view text, char at);

/** A last line that vouches for all before it, by a CRC-32 that is taken bit by bit. */
std::string sumOf(std::string_view text, std::string_view mark);

}  // namespace TulFuzz

#endif
