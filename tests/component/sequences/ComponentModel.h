#ifndef TUL_TEST_SEQUENCES_COMPONENT_MODEL_H
#define TUL_TEST_SEQUENCES_COMPONENT_MODEL_H

#include <functional>
#include <string>

#include "AdapterModel.h"
#include "ConfigurationModel.h"
#include "ConsumerModel.h"
#include "NodeModel.h"
#include "Outcome.h"
#include "Stage.h"

namespace Sequences {

/**
 * The component by its rules, in the plainest words there are: what it must ask, run, log and answer. It shares
 * nothing with the component but the platform.
 */
class ComponentModel {
public:
    explicit ComponentModel(Bend bend = Bend::NONE) : _stage(bend) {}

    /** What the command must lead to. After a result "abort" the model is of no use. */
    Outcome perform(const Command& command);

private:
    /** An MO and the sshd port that follows it. */
    struct Port {
        std::string className;
        std::string keyName;
        std::string subsystem;
        const unsigned& number;
        int state = 0; /**< 0 locked, 1 unlocked, or what else an event brought */
    };

    std::string carryOut(const Init& init);
    std::string carryOut(const Start&);
    std::string carryOut(const Stop&);
    std::string carryOut(const Terminate&);
    std::string carryOut(const Notify& notification);
    template <class ChangeT>
    std::string carryOut(const ChangeT& change);

    BryReturnT init(const Init& init);
    BryReturnT initialize(const Document& document);
    BryReturnT start();
    BryReturnT startManaged();
    BryReturnT startUnmanaged();
    BryReturnT adopt(Port& port);
    void closePorts();
    BryReturnT stop();

    void handle(const Notify& notification);
    void onPort(Port& port, const std::vector<Event>& events);
    void onServiceCategory(const Event& event);
    void onSsh(const std::vector<Event>& events);

    Stage _stage;
    ConfigurationModel _configuration{_stage};
    NodeModel _node{_stage};
    AdapterModel _adapter{_stage};
    ConsumerModel _consumers{_stage};
    Port _cli{"CliSsh", "cliSshId", "clissh", _configuration.cliPort};
    Port _netconf{"NetconfSsh", "netconfSshId", "netconfssh", _configuration.netconfPort};
    bool _hasPortal = false;
    bool _hasRecord = false; /**< the framework got it once, so that it can start and stop the component */
    bool _initialized = false;
    bool _started = false;
};

}  // namespace Sequences

#endif
