// Compiled with the component's flags. The component has no call that can be checked, so that its library does not
// show whether calls would be.

#include <features.h>

static_assert(__USE_FORTIFY_LEVEL >= 3, "library calls are not checked");
