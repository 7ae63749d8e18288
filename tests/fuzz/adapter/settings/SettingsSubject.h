#ifndef TUL_FUZZ_SETTINGS_SUBJECT_H
#define TUL_FUZZ_SETTINGS_SUBJECT_H

#include <string>

#include "Configuration.h"

namespace TulFuzz {

/** The reading of vorma.conf that is put to the test: the product's, or a naive one. */
Vorma::Configuration readSettings(const std::string& text, const std::string& file);

}  // namespace TulFuzz

#endif
