/* Naive: texts lose the blanks around them, in place of the platform's way of reading them. */

#include <Poco/DOM/Element.h>
#include <Poco/String.h>

#include "TulConfiguration.h"

std::string Tul::TulConfiguration::get_text(Poco::XML::Element* element) {
    return element == nullptr ? std::string() : Poco::trim(element->innerText());
}
