#ifndef VORMA_CARELESS_H
#define VORMA_CARELESS_H

// Variants that leave out one care each, made by the tests to show that they would notice. What ships is Nowhere.
#ifndef VORMA_CARELESS
#define VORMA_CARELESS Nowhere
#endif

namespace Vorma {

enum class Careless { Nowhere, WritesInPlace, SyncsNoDirectory, StopsBeforeCheck, BelievesPidFile, RollsNothingBack };

inline constexpr Careless careless = Careless::VORMA_CARELESS;

}  // namespace Vorma

#endif
