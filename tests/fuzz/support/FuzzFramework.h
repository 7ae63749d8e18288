#ifndef TUL_FUZZ_FUZZ_FRAMEWORK_H
#define TUL_FUZZ_FUZZ_FRAMEWORK_H

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "BryMgmtSpiPortalAccessor.h"
#include "TulOamSpiEventRouter_1.h"
#include "TulOamSpiManagedObject_3.h"

namespace TulFuzz {

/**
 * The least framework that a component can live in: it keeps no records, starts no process and writes no file, so
 * that it can be made anew for each input. It attaches libtul_common while it lives; one at a time.
 *
 * Set the public members first.
 */
class FuzzFramework {
public:
    FuzzFramework();
    ~FuzzFramework();

    const BryMgmtSpiPortalAccessor* accessor() const;

    /** Delivers a notification to the consumer that registered as the index-th, as the router would. */
    BryReturnT notify(std::size_t index, void* notification);

    std::size_t consumerCount() const { return _consumers.size(); }

    int logLevel = 8; /**< 8: every text of every trace is made */

    /** What becomes of a read; may throw. Without one, no attribute has a value. */
    std::function<BryReturnT(const std::string& dn, const std::string& attributeName,
                             TulMoAttributeValueResult_3& result)>
        onGetAttribute;

    /** What becomes of a search; may throw. Without one, nothing is found. */
    std::function<BryReturnT(const std::string& classPath, TulOamSpiMoVisitor_3 visitor, void* context)>
        onFindInstances;

    FuzzFramework(const FuzzFramework&) = delete;
    FuzzFramework& operator=(const FuzzFramework&) = delete;

private:
    friend struct LightTables;

    struct Consumer {
        BryOamSpiEventConsumerRecord* record;
        std::string eventType;
        BryNameValuePairT** filter;
    };

    std::vector<Consumer> _consumers; /**< a handle is a place in it, from 1 */
};

}  // namespace TulFuzz

#endif
