#ifndef TUL_SCRIPT_RUN_H
#define TUL_SCRIPT_RUN_H

#include <chrono>
#include <string>

namespace Tul {

/**
 * Runs a program as ScriptWrapper::invoke promises it. argv is null-terminated and begins with the program's path;
 * the exceptions' texts name it.
 */
std::string runScript(char* const* argv, std::chrono::milliseconds timeout);

}  // namespace Tul

#endif
