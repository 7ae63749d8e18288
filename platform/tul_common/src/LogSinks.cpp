#include "LogSinks.h"

#include <atomic>
#include <mutex>

#include "Attachment.h"

namespace Tul::LogSinks {

namespace {

constexpr BryMgmtSpiInterface_1 logInterfaceId = {nullptr, TUL_MW_SPI_LOG_NAME, TUL_MW_SPI_LOG_VERSION_1};
constexpr BryMgmtSpiInterface_1 traceInterfaceId = {nullptr, BRY_MW_SPI_TRACE_NAME, nullptr};

/** Guards the moment at which a look-up's result is kept; never held while the framework is called. */
constinit std::mutex keepMutex;
constinit unsigned attachments = 0;

/** The framework may write records while it looks up an interface; they must not look it up once more. */
constinit thread_local bool lookingUp = false;

template <class InterfaceT>
class Sink {
public:
    constexpr explicit Sink(const BryMgmtSpiInterface_1& id) : _id(id) {}

    const InterfaceT* get() noexcept {
        const InterfaceT* found = _found.load(std::memory_order_acquire);
        return found == &unknown ? lookUp() : found;
    }

    void forget() noexcept { _found.store(&unknown, std::memory_order_release); }

private:
    const InterfaceT* lookUp() noexcept;

    static constexpr InterfaceT unknown{};

    const BryMgmtSpiInterface_1& _id;
    std::atomic<const InterfaceT*> _found = &unknown;
};

unsigned currentAttachment() noexcept {
    const std::lock_guard lock(keepMutex);
    return attachments;
}

template <class InterfaceT>
const InterfaceT* Sink<InterfaceT>::lookUp() noexcept {
    if (lookingUp) {
        return nullptr;
    }
    const unsigned attachment = currentAttachment();
    void* found = nullptr;
    lookingUp = true;
    const BryReturnT result = findInterface(Attachment::currentAccessor(), _id, &found);
    lookingUp = false;
    const auto* sink = result == BRY_OK ? static_cast<const InterfaceT*>(found) : nullptr;

    // Attached or detached meanwhile: what was found may be another framework's and is not kept.
    const std::lock_guard lock(keepMutex);
    if (attachment == attachments) {
        _found.store(sink, std::memory_order_release);
    }
    return sink;
}

constinit Sink<TulMwSpiLog_1> logSink(logInterfaceId);
constinit Sink<BryMwSpiTrace> traceSink(traceInterfaceId);

}  // namespace

const TulMwSpiLog_1* log() noexcept {
    return logSink.get();
}

const BryMwSpiTrace* trace() noexcept {
    return traceSink.get();
}

void forget() noexcept {
    const std::lock_guard lock(keepMutex);
    ++attachments;
    logSink.forget();
    traceSink.forget();
}

}  // namespace Tul::LogSinks
