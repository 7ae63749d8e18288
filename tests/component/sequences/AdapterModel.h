#ifndef TUL_TEST_SEQUENCES_ADAPTER_MODEL_H
#define TUL_TEST_SEQUENCES_ADAPTER_MODEL_H

#include <map>
#include <string>
#include <vector>

#include "RevisionSpellings.h"
#include "Stage.h"

namespace Sequences {

/** How the adapter script is run, and which options its revision allows. */
class AdapterModel {
public:
    explicit AdapterModel(Stage& stage) : _stage(stage) {}

    void enablePorts(const std::string& subsystem, unsigned port);
    void disablePorts(const std::string& subsystem);

    // Queued until the next batch.
    void setDscp(const std::string& dscp);
    void setRenegotiationTime(unsigned value);
    void setCiphers(const std::map<std::string, std::string>& selected);

    /** False only for a run that failed. */
    bool runBatch();

private:
    void runPort(const std::string& function, const std::vector<std::string>& words);
    Revision revision();
    Revision parsed(const std::string& text);

    Stage& _stage;
    std::vector<std::string> _queue;
    Revision _revision = unasked;

    static constexpr Revision unasked{-1, -1, -1};
    static constexpr Revision none{0, 0, 0};
};

}  // namespace Sequences

#endif
