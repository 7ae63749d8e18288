#ifndef TUL_NODE_NODE_COMMANDS_H
#define TUL_NODE_NODE_COMMANDS_H

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Command.h"
#include "Node.h"
#include "Output.h"

namespace TulNode {

/** The commands that drive the component and show what happens; prints what is followed. One thread. */
class NodeCommands {
public:
    /** `interrupted` says that the node is asked to end; a wait ends early then. */
    NodeCommands(Node& node, Output& output, std::function<bool()> interrupted);

    /** Follows nothing any more. */
    ~NodeCommands();

    /** They refer to this object. */
    std::vector<Command> commands();

    /** Bring the component up and down, as the commands do; a failure is thrown. */
    void loadAndStart(BryStateChangeReason reason);
    void unload(BryStateChangeReason reason);

    static constexpr long long defaultWait = 120; /**< seconds */
    static constexpr int statusTimeout = 10'000;  /**< milliseconds */
    static constexpr long long highestLevel = 15;

    NodeCommands(const NodeCommands&) = delete;
    NodeCommands& operator=(const NodeCommands&) = delete;

private:
    void load();
    void start(BryStateChangeReason reason);
    void stop(BryStateChangeReason reason);
    void status();
    void ports();
    void configure(const Words& arguments);
    void logLevel(const Words& arguments);
    void log(const Words& arguments);
    void follow(const Words& arguments);
    void runs();
    void wait(const Words& arguments);
    void lineIfFollowed(const std::string& what, const std::string& text);
    void lines(const std::string& text);

    Node& _node;
    Output& _output;
    std::function<bool()> _interrupted;
    std::map<std::string, std::atomic<bool>> _followed; /**< its keys never change */
};

}  // namespace TulNode

#endif
