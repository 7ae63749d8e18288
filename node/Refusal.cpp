#include "Refusal.h"

#include <map>

namespace TulNode {

std::string codeText(BryReturnT code) {
    static const std::map<BryReturnT, const char*> names = {
        {BRY_OK, "OK"},
        {BRY_FAILED, "FAILED"},
        {BRY_NO_PARENT_MO, "NO_PARENT_MO"},
        {BRY_INVALID_ARGUMENT, "INVALID_ARGUMENT"},
        {BRY_NOT_FOUND, "NOT_FOUND"},
        {BRY_ALREADY_EXISTS, "ALREADY_EXISTS"},
        {BRY_INVALID_HANDLE, "INVALID_HANDLE"},
        {BRY_CONFLICT, "CONFLICT"},
        {BRY_NO_CONFIGURATION, "NO_CONFIGURATION"},
        {BRY_TIMED_OUT, "TIMED_OUT"},
        {BRY_UNKNOWN_CLASS, "UNKNOWN_CLASS"},
        {BRY_WRONG_PARENT, "WRONG_PARENT"},
        {BRY_BAD_DN, "BAD_DN"},
        {BRY_WRONG_TYPE, "WRONG_TYPE"},
        {BRY_OUT_OF_RANGE, "OUT_OF_RANGE"},
        {BRY_HAS_CHILDREN, "HAS_CHILDREN"},
        {BRY_NO_RESOURCES, "NO_RESOURCES"},
    };
    const auto found = names.find(code);
    const std::string number = std::to_string(code);
    return found == names.end() ? number : number + " (" + found->second + ")";
}

}  // namespace TulNode
