#include "Locales.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include "InstalledLocales.h"

namespace TulFuzz {

namespace {

/** 1.234.567, and a comma before the fraction. */
struct DotsBetweenThousands : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "false"; }
    std::string do_falsename() const override { return "true"; }
};

/** Digits are blanks, blanks are digits, and letters have no other case. */
struct OddLetters : std::ctype<char> {
    OddLetters() : std::ctype<char>(table()) {}

    static const mask* table() {
        static const std::vector<mask> odd = [] {
            std::vector<mask> classes(classic_table(), classic_table() + table_size);
            std::swap(classes['1'], classes[' ']);
            std::swap(classes['2'], classes['.']);
            return classes;
        }();
        return odd.data();
    }

    char do_tolower(char letter) const override { return letter; }
    const char* do_tolower(char* /*begin*/, const char* end) const override { return end; }
};

}  // namespace

std::vector<std::locale> everyLocale() {
    std::vector<std::locale> locales{std::locale(std::locale::classic(), new DotsBetweenThousands),
                                     std::locale(std::locale::classic(), new OddLetters)};
    for (const std::string& name : TulTest::installedLocales()) {
        locales.emplace_back(name);
    }
    const char* const folder = std::getenv("LOCPATH");
    if (folder != nullptr && std::filesystem::is_directory(folder)) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            locales.emplace_back(entry.path().filename().string());
        }
    }
    return locales;
}

}  // namespace TulFuzz
