#ifndef TUL_FUZZ_ADAPTER_SUBJECT_H
#define TUL_FUZZ_ADAPTER_SUBJECT_H

#include <Poco/Mutex.h>

#include <memory>

#include "SshdVormaWrapper.h"

namespace TulFuzz {

/** The adapter that the component is given: null for its own, or a naive one. lock is the component's. */
std::unique_ptr<TulSshdManagement::SshdVormaWrapper> adapterFor(Poco::Mutex& lock);

}  // namespace TulFuzz

#endif
