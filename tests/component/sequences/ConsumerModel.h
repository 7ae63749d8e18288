#ifndef TUL_TEST_SEQUENCES_CONSUMER_MODEL_H
#define TUL_TEST_SEQUENCES_CONSUMER_MODEL_H

#include <array>
#include <cstddef>
#include <string>

#include "Stage.h"

namespace Sequences {

/** The four consumers, 0 to 3, and what the router knows of them. */
class ConsumerModel {
public:
    explicit ConsumerModel(Stage& stage) : _stage(stage) {}

    void start() {
        for (std::size_t consumer = 0; consumer < _isStarted.size(); ++consumer) {
            start(consumer);
        }
    }

    void stop() {
        for (std::size_t consumer = 0; consumer < _isStarted.size(); ++consumer) {
            stop(consumer);
        }
    }

    /** A router that failed to forget a consumer goes on with it. */
    bool isKnown(std::size_t consumer) const { return _registrations.at(consumer) > 0; }

private:
    void start(std::size_t consumer) {
        if (_isStarted[consumer]) {
            throw Stage::Abort();
        }
        if (!_hasRouter) {  // the platform looks it up once
            _hasRouter = _stage.findsInterface("TulOamSpiEventService", "TulOamSpiEventRouter", "1");
        }
        if (_stage.call("registerConsumer") != 0) {
            _stage.error("start", "Could not register consumer");
            throw Stage::Abort();
        }
        ++_stage.handles;
        if (_stage.call("addSubscription", subscription(consumer)) != 0) {
            _stage.error("start", "Could not add subscription");
            throw Stage::Abort();
        }
        ++_registrations[consumer];
        _isStarted[consumer] = true;
    }

    void stop(std::size_t consumer) {
        if (!_isStarted[consumer]) {
            return;
        }
        _isStarted[consumer] = false;
        const bool failed = _stage.call("removeSubscription", subscription(consumer)) != 0;
        if (failed && _stage.isBent(Bend::FAILED_REMOVAL_KEEPS_THE_CONSUMER)) {
            return;
        }
        if (_stage.call("unregisterConsumer", "known") == 0) {
            --_registrations[consumer];
        }
    }

    static std::string subscription(std::size_t consumer) {
        static const std::array<std::string, 4> patterns{
            "SystemFunctions=.*,SysM=.*,CliSsh=.*$", "SystemFunctions=.*,SysM=.*,NetconfSsh=.*$",
            "Transport=.*,DiffServCategory=OamCM$", "SystemFunctions=.*,SecM=.*,Ssh=.*$"};
        return "BryOamSpiCmEvent_Notification_1 BryOamSpiCmEvent_FilterTypeRegExp_1=^ManagedElement=.*," +
               patterns.at(consumer);
    }

    Stage& _stage;
    bool _hasRouter = false;
    std::array<bool, 4> _isStarted{};
    std::array<int, 4> _registrations{};
};

}  // namespace Sequences

#endif
