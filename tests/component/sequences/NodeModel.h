#ifndef TUL_TEST_SEQUENCES_NODE_MODEL_H
#define TUL_TEST_SEQUENCES_NODE_MODEL_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Stage.h"

namespace Sequences {

/** How managed objects are found, read, created and deleted, and what their values mean. */
class NodeModel {
public:
    explicit NodeModel(Stage& stage) : _stage(stage) {}

    /** Empty when there is no instance. */
    std::string firstDn(const std::string& classPath);

    BryReturnT createMo(const std::string& className, const std::string& keyName);
    BryReturnT deleteMo(const std::string& dn);

    /** 1 unlocked, 0 anything else; nothing when it cannot be read. */
    std::optional<int> administrativeState(const std::string& dn);

    /** Empty when it cannot be read. */
    std::string dscp();

    /** The lists that have an element, by attribute. */
    std::map<std::string, std::string> ciphers(const std::string& dn);

private:
    void openAccessor();
    std::string findFirst(const std::string& classPath);
    std::optional<TulTest::AttributeValues> fetch(const std::string& dn, const std::string& name);
    std::int64_t readOne(const std::string& dn, const std::string& name, int type);
    std::vector<std::string> readList(const std::string& dn, const std::string& name);
    BryReturnT newTransaction(const std::string& function, int lockPolicy);
    BryReturnT commit(const std::string& function);

    Stage& _stage;
};

}  // namespace Sequences

#endif
