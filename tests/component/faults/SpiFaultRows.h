#ifndef TUL_TEST_SPI_FAULT_ROWS_H
#define TUL_TEST_SPI_FAULT_ROWS_H

#include <map>
#include <string>
#include <vector>

#include "Life.h"

namespace TulTest {

using Uses = std::map<std::string, unsigned int>;

/** What an undisturbed call uses, by the name of its scenario. */
const Uses& usesOf(const std::string& scenario);

// Names of operations.
inline const char* const eventRouter = "getInterface TulOamSpiEventRouter";
inline const char* const portal1 = "getPortal 1"; /**< comes with every look-up of the platform */

inline const char* const noRouter = "4 getInterface: Interface TulOamSpiEventRouter not found";

/** Stands for the code that the fault gives; in a journal its word is CODE. */
constexpr BryReturnT itsCode = 12345;

/** What becomes of a call. */
struct Expected {
    BryReturnT result;
    Lines journal;
    std::string thrown{};
    std::size_t leftRegistered = 0; /**< consumers that a stop could not take away */
};

/** One use that fails. Where a fault that lasts leads to more than the one use does, that is told apart. */
struct FaultRow {
    const char* scenario;
    std::string operation;
    unsigned int use;
    Expected once;
    Expected forEver;
};

/** Every use of every operation in every scenario, but for those that end the process. */
const std::vector<FaultRow>& faultRows();

/** A use that ends the process when it fails: a component that is deaf to changes must not look alive. */
struct EndRow {
    std::string operation;
    unsigned int use;
    std::string lastWords;
};

/** Of a start that has built so many accessors before; each consumer takes one use of each operation. */
std::vector<EndRow> endRows(unsigned int accessors);

/** The last line that an undisturbed start has in its journal when its first consumer starts. */
std::string lastWordsBeforeSubscribing(const Scenario& start);

}  // namespace TulTest

#endif
