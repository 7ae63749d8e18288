#include "Trace.h"

namespace Tul::Trace {

constinit const Handle TulSshd{"TulSshd"};
constinit const Handle Common{"Common"};

}  // namespace Tul::Trace
