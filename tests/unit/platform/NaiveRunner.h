#ifndef TUL_TEST_NAIVE_RUNNER_H
#define TUL_TEST_NAIVE_RUNNER_H

#include <string>
#include <vector>

namespace TulTest {

/**
 * The negative control of the script tests: runs a program as one does who thinks of nothing but pipe, fork, exec
 * and kill. What these tests look for must be found here. Returns what it printed before the time limit.
 */
std::string runNaively(const std::string& path, const std::vector<std::string>& args, int timeout);

}  // namespace TulTest

#endif
