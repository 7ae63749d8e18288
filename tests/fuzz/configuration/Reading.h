#ifndef TUL_FUZZ_READING_H
#define TUL_FUZZ_READING_H

#include <string>
#include <vector>

namespace TulFuzz {

/** What became of a configuration. */
struct Reading {
    int result;
    bool managed = false;
    unsigned int cliPort = 0;
    unsigned int netconfPort = 0;
    unsigned int renegotiationTime = 0;

    bool operator==(const Reading&) const = default;
};

/** The reader that is put to the test, the product's or a naive one: one reader reads the same text several times. */
std::vector<Reading> readings(const std::string& text, int times);

/** What must become of a text: the rules once more, on the events of a parser instead of a document. */
Reading expectedReading(const std::string& text);

}  // namespace TulFuzz

#endif
