/* Naive: the lock is taken and given back by hand, and one way out is forgotten. */

#include "AdapterSubject.h"

namespace {

class Adapter : public TulSshdManagement::SshdVormaWrapper {
public:
    explicit Adapter(Poco::Mutex& lock) : _lock(lock) {}

    /** Too late: nobody could use the component until here. */
    ~Adapter() override {
        for (; _held > 0; --_held) {
            _lock.unlock();
        }
    }

    bool setDscp(const std::string& dscp) override {
        _lock.lock();
        ++_held;
        if (!SshdVormaWrapper::setDscp(dscp)) {
            return false;
        }
        --_held;
        _lock.unlock();
        return true;
    }

private:
    Poco::Mutex& _lock;
    int _held = 0;
};

}  // namespace

std::unique_ptr<TulSshdManagement::SshdVormaWrapper> TulFuzz::adapterFor(Poco::Mutex& lock) {
    return std::make_unique<Adapter>(lock);
}
