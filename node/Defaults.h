#ifndef TUL_NODE_DEFAULTS_H
#define TUL_NODE_DEFAULTS_H

namespace TulNode {

/** The model of a node that is given none: everything that the component expects to find, and none of its own MOs. */
inline constexpr const char* defaultModel = R"(
create ManagedElement=1
create ManagedElement=1,SystemFunctions=1
create ManagedElement=1,SystemFunctions=1,SysM=1
create ManagedElement=1,SystemFunctions=1,SecM=1
create ManagedElement=1,SystemFunctions=1,SecM=1,Ssh=1
create ManagedElement=1,Transport=1
)";

}  // namespace TulNode

#endif
