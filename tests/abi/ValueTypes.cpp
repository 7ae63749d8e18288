// What the component makes of the framework's numbers, proven while compiling: it must hold every number that may
// come.

#include <cstdint>
#include <type_traits>

#include "MoAccessor.h"
#include "SshComponent.h"

using TulSshdManagement::BasicAdmState;

static_assert(std::is_same_v<std::underlying_type_t<BasicAdmState>, std::int32_t>);
static_assert(static_cast<int>(BasicAdmState::LOCKED) == 0);
static_assert(static_cast<int>(BasicAdmState::UNLOCKED) == 1);
static_assert(std::is_same_v<Tul::MoAccessor::Enum, std::int16_t>);
