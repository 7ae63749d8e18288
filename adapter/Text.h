#ifndef VORMA_TEXT_H
#define VORMA_TEXT_H

#include <cstddef>
#include <string>

#include "Descriptor.h"

namespace Vorma {

/** Everything from here to the end of a file; std::system_error, EFBIG when there is more than so many bytes. */
std::string readAll(const Tul::Descriptor& file, std::size_t most, const std::string& path);

/** Every byte of the text; std::system_error. */
void writeAll(const Tul::Descriptor& file, const std::string& text, const std::string& path);

}  // namespace Vorma

#endif
