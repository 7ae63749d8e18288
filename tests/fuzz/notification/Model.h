#ifndef TUL_FUZZ_MODEL_H
#define TUL_FUZZ_MODEL_H

#include <memory>
#include <vector>

#include "Answers.h"
#include "FuzzFramework.h"

namespace TulFuzz {

/** The MOs of the node: as its first letters say until the component has started, then as each answer says. */
class Model {
public:
    /**
     * How the two MOs of the component are found at its start: 'n' not at all, 'e' without a readable state, anything
     * else as a digit.
     */
    Model(FuzzFramework& framework, char cliState, char netconfState);

    ~Model();

    Answers answers;

    /** Containers that the component has not given back. */
    int outstanding() const { return _outstanding; }

    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

private:
    struct Container;

    char stateOf(const std::string& dn) const;
    BryReturnT find(const std::string& classPath, TulOamSpiMoVisitor_3 visitor, void* context);
    BryReturnT read(const std::string& dn, const std::string& attributeName, TulMoAttributeValueResult_3& result);
    std::unique_ptr<Container> containerOf(const std::string& dn, const std::string& attributeName);
    static void spoil(Container& container, char letter);
    static void release(TulMoAttributeValueContainer_3* container);

    char _cliState;
    char _netconfState;
    int _outstanding = 0;
    std::vector<std::unique_ptr<Container>> _kept; /**< those that nobody can give back */
};

}  // namespace TulFuzz

#endif
