/*
 * Runs a target over files, without a fuzzer:
 *
 *     TARGET [--neighbours] [--locales] [--must-fail] FILE-OR-FOLDER...
 *
 *     --neighbours   also over each file cut at every byte, and with every single bit flipped
 *     --locales      once more under every locale
 *     --must-fail    0 when an input breaks a rule; otherwise 0 when none does
 *
 * Each file is named before it is run. No file at all is a failure in any case.
 */

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "InstalledLocales.h"
#include "Locales.h"
#include "Target.h"
#include "Violation.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using std::filesystem::path;

struct Tally {
    std::size_t inputs = 0;
    std::size_t broken = 0;
};

std::vector<path> filesOf(const std::vector<std::string>& places) {
    std::vector<path> files;
    for (const path place : places) {
        if (!is_directory(place)) {
            files.push_back(place);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(place)) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

Bytes bytesOf(const path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + file.string());
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void run(const Bytes& bytes, const std::string& what, Tally& tally) {
    const Bytes exactly(bytes.begin(), bytes.end());  // so that a sanitizer sees each byte that is read beyond it
    ++tally.inputs;
    try {
        LLVMFuzzerTestOneInput(exactly.data(), exactly.size());
    } catch (const TulFuzz::Violation& violation) {
        ++tally.broken;
        std::cout << "  " << what << " breaks the rule: " << violation.what() << std::endl;
    }
}

void runNeighbours(const Bytes& bytes, Tally& tally) {
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        run(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)),
            "cut to " + std::to_string(length) + " bytes, it", tally);
    }
    Bytes flipped = bytes;
    for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
        const auto mask = static_cast<std::uint8_t>(1U << bit % 8);
        flipped[bit / 8] ^= mask;
        run(flipped, "with bit " + std::to_string(bit) + " flipped, it", tally);
        flipped[bit / 8] ^= mask;
    }
}

void runAll(const std::vector<path>& files, bool neighbours, Tally& tally) {
    for (const path& file : files) {
        std::cout << file.string() << std::endl;
        const Bytes bytes = bytesOf(file);
        run(bytes, "it", tally);
        if (neighbours) {
            runNeighbours(bytes, tally);
        }
    }
}

void runUnderEveryLocale(const std::vector<path>& files, bool neighbours, Tally& tally) {
    for (const std::locale& locale : TulFuzz::everyLocale()) {
        std::cout << "locale " << locale.name() << std::endl;
        const TulTest::LocaleInForce inForce(locale);
        runAll(files, neighbours, tally);
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> places(argv + 1, argv + argc);
    const bool neighbours = std::erase(places, "--neighbours") != 0;
    const bool locales = std::erase(places, "--locales") != 0;
    const bool mustFail = std::erase(places, "--must-fail") != 0;
    const std::vector<path> files = filesOf(places);
    Tally tally;
    runAll(files, neighbours, tally);
    if (locales) {
        runUnderEveryLocale(files, neighbours, tally);
    }
    std::cout << tally.inputs << " inputs, " << tally.broken << " of them break a rule\n";
    return tally.inputs != 0 && (tally.broken != 0) == mustFail ? 0 : 1;
}
