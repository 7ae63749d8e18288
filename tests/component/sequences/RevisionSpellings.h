#ifndef TUL_TEST_SEQUENCES_REVISION_SPELLINGS_H
#define TUL_TEST_SEQUENCES_REVISION_SPELLINGS_H

#include <array>

namespace Sequences {

/** Major, minor and patch; arrays compare as revisions do. */
using Revision = std::array<int, 3>;

/** What an adapter may print when it is asked for its revision, and what that means. */
struct RevisionSpelling {
    const char* text;
    bool isRevision;
    Revision meaning;
};

/** By hand, so that no second parser has to be right. */
inline constexpr RevisionSpelling revisionSpellings[] = {
    {"1.8.0\n", true, {1, 8, 0}},
    {"1.7.0\n", true, {1, 7, 0}},
    {"1.6.9\n", true, {1, 6, 9}},
    {"2.0.0-rc1", true, {2, 0, 0}},
    {"1.7.99\n", true, {1, 7, 99}},
    {"10.0.0\n", true, {10, 0, 0}},
    {"0.9.0", true, {0, 9, 0}},
    {"0.0.0\n", true, {0, 0, 0}},
    {" 1 . 7 . 0 is mine", true, {1, 7, 0}},
    {"\n\n01.08.+5", true, {1, 8, 5}},
    {"1.8.-1", true, {1, 8, -1}},
    {"1.10.0.0", true, {1, 10, 0}},
    {"-1.9.0", true, {-1, 9, 0}},
    {"", false, {}},
    {"1.8", false, {}},
    {"1.8.", false, {}},
    {"1,8,0", false, {}},
    {"1.8,0", false, {}},
    {"1.x.0", false, {}},
    {"v1.8.0", false, {}},
    {"\n", false, {}},
    {"99999999999.8.0", false, {}},
    {"100% unreadable %s", false, {}},
};

}  // namespace Sequences

#endif
