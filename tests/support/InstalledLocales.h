#ifndef TUL_TEST_INSTALLED_LOCALES_H
#define TUL_TEST_INSTALLED_LOCALES_H

#include <locale>
#include <string>
#include <vector>

namespace TulTest {

/** The names of the C library's locales on this machine; at least "C". */
std::vector<std::string> installedLocales();

/** Makes a locale the process's while it lives; throws when the machine does not have it. */
class LocaleInForce {
public:
    explicit LocaleInForce(const std::locale& locale) : _before(std::locale::global(locale)) {}
    explicit LocaleInForce(const std::string& name) : LocaleInForce(std::locale(name)) {}
    ~LocaleInForce() { std::locale::global(_before); }

    LocaleInForce(const LocaleInForce&) = delete;
    LocaleInForce& operator=(const LocaleInForce&) = delete;

private:
    std::locale _before;
};

}  // namespace TulTest

#endif
