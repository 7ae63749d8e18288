#ifndef TUL_NODE_MODEL_COMMANDS_H
#define TUL_NODE_MODEL_COMMANDS_H

#include <functional>
#include <string>
#include <vector>

#include "Command.h"
#include "Output.h"
#include "TransactionMaster.h"

namespace TulNode {

/** The commands that show and change the model. One thread. */
class ModelCommands {
public:
    ModelCommands(TransactionMaster& transactions, Output& output) : _transactions(transactions), _output(output) {}

    /** They refer to this object. */
    std::vector<Command> commands();

    static constexpr unsigned int commandTimeout = 60;    /**< seconds, of one command's own transaction */
    static constexpr unsigned int operatorTimeout = 3600; /**< seconds, of one that `begin` opens */

private:
    std::vector<Command> table();
    void show(const Words& arguments);
    void showTree();
    void set(const Words& arguments);
    void create(const Words& arguments);
    void remove(const Words& arguments);
    void setState(const std::string& what, const std::string& state);
    void begin(const Words& arguments);
    void commit();
    void abort();

    void change(const std::function<void(TransactionMaster::Handle)>& change);
    std::string resolve(const std::string& dnOrClass);
    Words names();
    Words namesToCreate();
    Words attributesOf(const std::string& dnOrClass);

    TransactionMaster& _transactions;
    Output& _output;
    TransactionMaster::Handle _open = 0; /**< the operator's own; 0: each command is a transaction */
};

}  // namespace TulNode

#endif
