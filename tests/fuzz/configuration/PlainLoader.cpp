/* Naive: the platform's loader without its refusals, in its place in the order of the linker. */

#include <Poco/DOM/DOMParser.h>

#include "TulConfiguration.h"

void Tul::TulConfiguration::load(const std::string& configuration) {
    unload();
    _document = Poco::XML::DOMParser().parseString(configuration);
}
