#ifndef TUL_TEST_SEQUENCES_CONFIGURATION_MODEL_H
#define TUL_TEST_SEQUENCES_CONFIGURATION_MODEL_H

#include <string>
#include <vector>

#include "Commands.h"
#include "Stage.h"

namespace Sequences {

/** What a component configuration means, and what a failed read leaves behind. */
class ConfigurationModel {
public:
    explicit ConfigurationModel(Stage& stage) : _stage(stage) {}

    /** True when it could be read. Not for the form NULL_POINTER. */
    bool read(const Document& document);

    bool managed = false;
    unsigned cliPort = 0;
    unsigned netconfPort = 0;
    unsigned renegotiationTime = 0;

private:
    using Texts = std::vector<std::string>;

    bool readValues(const Document& document);
    bool readPorts(const Document& document);
    bool readManaged(const Texts& texts);
    bool readNumber(const std::string& tag, const Texts& texts, unsigned& value);
    std::string convert(const std::string& text, unsigned& value) const;
    bool isDuplicated(const std::string& tag, const Texts& texts);

    Stage& _stage;
};

}  // namespace Sequences

#endif
