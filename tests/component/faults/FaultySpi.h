#ifndef TUL_TEST_FAULTY_SPI_H
#define TUL_TEST_FAULTY_SPI_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Persistence.h"
#include "RecordingFramework.h"

namespace TulTest {

/** One operation of the SPI that does not do what it should. */
struct SpiFault {
    std::string operation;  /**< as in FaultySpi::uses */
    unsigned int first = 0; /**< the number of the use that fails first, from 1; 0: none */
    Persistence persistence = Persistence::ONCE;
    BryReturnT code = BRY_FAILED; /**< 0, of a look-up: success, but a null pointer is found */
};

/**
 * A layer of SPI tables between a RecordingFramework and both the component and libtul_common: counts the uses of
 * each operation, and lets one of them fail.
 *
 * It makes the framework as strict as a real one where that decides what becomes of a fault: what is committed is
 * in the model, an MO is not created twice, and a consumer does not register twice. Allocation faults are suspended
 * in it. One at a time; one thread at a time.
 */
class FaultySpi {
public:
    explicit FaultySpi(RecordingFramework& framework);
    ~FaultySpi();

    const BryMgmtSpiPortalAccessor* accessor() const;

    void fail(const SpiFault& fault) { _fault = fault; }
    void heal() { _fault = {}; }

    /**
     * How often each operation was used: its name, and for look-ups and portals which one ("getInterface
     * TulOamSpiManagedObject", "getPortal 3"). Log and trace records are not counted.
     */
    std::map<std::string, unsigned int> uses;

    FaultySpi(const FaultySpi&) = delete;
    FaultySpi& operator=(const FaultySpi&) = delete;

    // For the tables.
    bool isFaulty(const std::string& operation);
    const SpiFault& fault() const { return _fault; }
    RecordingFramework& framework() { return _framework; }
    void atCommit(std::function<void()> change) { _uncommitted.push_back(std::move(change)); }
    void dropUncommitted() { _uncommitted.clear(); }
    void commit();

private:
    RecordingFramework& _framework;
    SpiFault _fault;
    std::vector<std::function<void()>> _uncommitted;
};

}  // namespace TulTest

#endif
