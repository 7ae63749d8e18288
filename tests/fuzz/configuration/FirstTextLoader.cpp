/* Naive: of a text in several pieces just the first one counts, in place of the platform's way of reading it. */

#include <Poco/DOM/Element.h>

#include "TulConfiguration.h"

std::string Tul::TulConfiguration::get_text(Poco::XML::Element* element) {
    const Poco::XML::Node* const first = element == nullptr ? nullptr : element->firstChild();
    return first == nullptr ? std::string() : first->getNodeValue();
}
