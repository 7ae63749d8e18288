#ifndef VORMA_TEXT_H
#define VORMA_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Descriptor.h"

namespace Vorma {

/** Everything from here to the end of a file; std::system_error, EFBIG when there is more than so many bytes. */
std::string readAll(const Tul::Descriptor& file, std::size_t most, const std::string& path);

/** Every byte of the text; std::system_error. */
void writeAll(const Tul::Descriptor& file, const std::string& text, const std::string& path);

/** The parts between separators, of which several in a row count as one; none is empty. */
std::vector<std::string_view> partsOf(std::string_view text, char separator);

}  // namespace Vorma

#endif
