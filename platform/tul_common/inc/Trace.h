#ifndef TUL_TRACE_H
#define TUL_TRACE_H

#include "TulExport.h"

namespace Tul::Trace {

/** Names a trace subsystem; the framework switches and shows its records by this name. */
struct Handle {
    const char* subsystem;
};

TUL_EXPORT extern const Handle TulSshd; /**< "TulSshd": the SSH daemon manager's own code */
TUL_EXPORT extern const Handle Common;  /**< "Common": the header templates that all components share */

}  // namespace Tul::Trace

#endif
