#include "InstalledLocales.h"

#include <stdio.h>

#include <stdexcept>

namespace TulTest {

std::vector<std::string> installedLocales() {
    FILE* const list = popen("locale -a", "r");
    if (list == nullptr) {
        throw std::runtime_error("cannot list the locales");
    }
    std::string text;
    for (int letter = fgetc(list); letter != EOF; letter = fgetc(list)) {
        text += static_cast<char>(letter);
    }
    pclose(list);
    std::vector<std::string> names{"C"};
    for (std::size_t begin = 0, end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
        names.push_back(text.substr(begin, end - begin));
    }
    return names;
}

}  // namespace TulTest
