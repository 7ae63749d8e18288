#ifndef TUL_TEST_SEQUENCES_SURROUNDINGS_H
#define TUL_TEST_SEQUENCES_SURROUNDINGS_H

#include <map>
#include <optional>
#include <string>

#include "Commands.h"

namespace Sequences {

/**
 * What surrounds a component: the MOs of the node, the answers of the framework and of the adapter script. The model
 * and the recording framework each have one of their own, changed by the same commands; they give the same answers
 * as long as they are asked the same in the same order.
 */
class Surroundings {
public:
    Surroundings();

    void change(const MoAppears& mo) { mos[mo.dn].clear(); }
    void change(const MoVanishes& mo) { mos.erase(mo.dn); }
    void change(const AttributeIs& attribute) { mos[attribute.dn][attribute.name] = attribute.values; }
    void change(const AttributeVanishes& attribute);
    void change(const SpiFails& fault) { _faults[fault.operation] = fault; }
    void change(const AdapterDoes& answer) { _adapter[answer.word] = answer; }
    void change(const LogLevelIs& log) { logLevel = log.level; }

    /** The code of a failed operation, nothing when it succeeds. Asking counts as the call. */
    std::optional<BryReturnT> failureOf(const std::string& operation);

    /** What a run with this first word does. */
    const AdapterDoes& adapter(const std::string& word) const { return _adapter.at(word); }

    std::map<std::string, std::map<std::string, TulTest::AttributeValues>> mos; /**< by DN */
    int logLevel = 6;

private:
    std::map<std::string, SpiFails> _faults;
    std::map<std::string, AdapterDoes> _adapter;
};

}  // namespace Sequences

#endif
