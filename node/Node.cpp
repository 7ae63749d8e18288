#include "Node.h"

#include <stdexcept>

#include "ModelText.h"
#include "Refusal.h"
#include "TulCommon_1.h"

namespace TulNode {

CommonAttachment::CommonAttachment(const std::string& scriptDirectory) {
    TulCommonSettings_1 settings{};
    settings.portalAccessor = Spi::accessor();
    settings.scriptDirectory = scriptDirectory.empty() ? nullptr : scriptDirectory.c_str();
    settings.scriptRan = Spi::scriptRan;
    const BryReturnT result = tulCommonAttach(&settings);
    if (result != BRY_OK) {
        throw std::runtime_error("libtul_common cannot be set up: " + codeText(result));
    }
}

CommonAttachment::~CommonAttachment() {
    tulCommonDetach();
}

void Node::applyInitialModel(const std::string& text, const std::string& source) {
    if (services.transactions.all(0).empty()) {
        applyModel(services.transactions, text, source);
    }
}

}  // namespace TulNode
