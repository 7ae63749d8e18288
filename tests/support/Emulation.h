#ifndef TUL_TEST_EMULATION_H
#define TUL_TEST_EMULATION_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace TulTest {

/** True when this program runs under qemu's user-mode emulation: its system calls are not all the kernel's. */
bool isEmulated();

/** What a process wrote that a signal ended, without the remark that the emulator adds. */
testing::Matcher<const std::string&> lastWords(const testing::Matcher<const std::string&>& expected);

/** Why a test is skipped that wants to read the cause. */
inline constexpr const char* noSpawnErrors =
    "the emulator starts a process before it finds out that a script cannot be run: 127 and no cause";

}  // namespace TulTest

#endif
