/* Naive: no DSCP is a word like any other, instead of the removal of the marking. */

#include "AdapterSubject.h"

namespace {

class Adapter : public TulSshdManagement::SshdVormaWrapper {
    bool setDscp(const std::string& dscp) override { return SshdVormaWrapper::setDscp(dscp.empty() ? "none" : dscp); }
};

}  // namespace

std::unique_ptr<TulSshdManagement::SshdVormaWrapper> TulFuzz::adapterFor(Poco::Mutex& /*lock*/) {
    return std::make_unique<Adapter>();
}
