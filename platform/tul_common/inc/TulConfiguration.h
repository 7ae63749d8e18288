#ifndef TUL_CONFIGURATION_H
#define TUL_CONFIGURATION_H

#include <Poco/AutoPtr.h>
#include <Poco/DOM/Document.h>

#include <string>

#include "TulExport.h"

namespace Poco::XML {
class Element;
class NodeList;
}  // namespace Poco::XML

namespace Tul {

/**
 * Loads a component's XML configuration from text.
 *
 * The text is untrusted. Refused are: the letters of a document type declaration, also in a comment or in CDATA
 * (and with it every entity but the five of XML and character references), a NUL byte (so UTF-8 and other encodings
 * that contain ASCII are taken, UTF-16 is not), more than 64 levels of elements, more than 10,000 elements and
 * attributes, and more than 1 MiB of text.
 *
 * One thread at a time.
 */
class TUL_EXPORT TulConfiguration {
public:
    TulConfiguration();
    virtual ~TulConfiguration();

    /** Parses the text in place of what was loaded before. Throws TulException; then nothing is loaded. */
    void load(const std::string& configuration);

    /** Releases the document. Nothing happens when none is loaded. */
    void unload();

    /**
     * All elements of the document with that name, wherever they stand, in document order; null when no
     * document is loaded. The caller releases the list, before unload().
     */
    Poco::XML::NodeList* getElementsByTagName(std::string name);

    /** All text below an element, CDATA included, nothing trimmed. Empty for null. */
    std::string get_text(Poco::XML::Element* element);

    TulConfiguration(const TulConfiguration&) = delete;
    TulConfiguration& operator=(const TulConfiguration&) = delete;

private:
    Poco::AutoPtr<Poco::XML::Document> _document;
};

}  // namespace Tul

#endif
