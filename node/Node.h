#ifndef TUL_NODE_NODE_H
#define TUL_NODE_NODE_H

#include <string>

#include "ComponentConfiguration.h"
#include "ComponentLoader.h"
#include "Services.h"
#include "Spi.h"

namespace TulNode {

/** Sets up libtul_common for the node as long as it lives. */
class CommonAttachment {
public:
    /** An empty folder: the installed one. std::runtime_error when the library refuses. */
    explicit CommonAttachment(const std::string& scriptDirectory);
    ~CommonAttachment();

    CommonAttachment(const CommonAttachment&) = delete;
    CommonAttachment& operator=(const CommonAttachment&) = delete;
};

/** The management framework of one process, with its one component. One at a time; one thread. */
class Node {
public:
    struct Settings {
        std::string stateFile;       /**< empty: in memory */
        std::string componentFile;   /**< the library that load() takes */
        std::string scriptDirectory; /**< empty: the installed one */
    };

    explicit Node(const Settings& settings)
        : services(settings.stateFile),
          componentFile(settings.componentFile),
          _spi(services),
          _attachment(settings.scriptDirectory),
          loader(services, Spi::accessor()) {}

    /** Makes the MOs of a model text unless there are some already. Errors as for applyModel. */
    void applyInitialModel(const std::string& text, const std::string& source);

    /** Loads the component with the configuration that is set. */
    void load() { loader.load(componentFile, configuration.xml().c_str()); }

    Services services;
    std::string componentFile;
    ComponentConfiguration configuration;

private:
    Spi _spi;
    CommonAttachment _attachment;

public:
    ComponentLoader loader;  // the last, so that the component is gone before what it uses
};

}  // namespace TulNode

#endif
