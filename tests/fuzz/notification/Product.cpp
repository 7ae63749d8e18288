#include "AdapterSubject.h"

std::unique_ptr<TulSshdManagement::SshdVormaWrapper> TulFuzz::adapterFor(Poco::Mutex& /*lock*/) {
    return nullptr;
}
