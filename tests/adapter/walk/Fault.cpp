#include "Fault.h"

#include <cstring>
#include <stdexcept>

namespace TulTest {

std::string Fault::text() const {
    return address.text() + (error == 0 ? "" : std::string("=") + strerrorname_np(error));
}

Fault readFault(const std::string& text) {
    const std::size_t sign = text.find('=');
    const auto address = CallAddress::read(text.substr(0, sign));
    int error = 0;
    while (sign != std::string::npos && error < 200 &&
           (strerrorname_np(error) == nullptr || text.substr(sign + 1) != strerrorname_np(error))) {
        ++error;
    }
    if (!address || error == 200) {
        throw std::invalid_argument("'" + text + "' is no point: it looks like adapter.openat#12=EMFILE");
    }
    return {Mode::Fail, *address, error};
}

}  // namespace TulTest
