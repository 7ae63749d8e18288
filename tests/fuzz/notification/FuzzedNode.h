#ifndef TUL_FUZZ_FUZZED_NODE_H
#define TUL_FUZZ_FUZZED_NODE_H

#include <memory>
#include <string>

#include "AdapterSubject.h"
#include "Draft.h"
#include "Model.h"
#include "ScriptedRunner.h"
#include "SshComponent.h"
#include "Words.h"

namespace TulFuzz {

/** How the node is when the component starts: the first letters of an input. */
struct Setup {
    static Setup take(Letters& letters);

    int logLevel;
    char cliState;     /**< as Model has it */
    char netconfState; /**< as Model has it */

    /** 'T' none, by a failed run; 'z' none; 'g' garbage; '6' and '7' too old for something; otherwise the newest */
    char revision;
};

/** A component between a light framework, a model and an adapter that all do as the input says. */
class FuzzedNode {
public:
    explicit FuzzedNode(const Setup& setup);

    /** Starts the component, and checks how it closes or opens the ports. */
    void start();

    /** Delivers to one of the four consumers, and checks what the adapter was run for. */
    void deliver(std::size_t consumer, Draft& draft);

    /** Stops the component, and checks that nothing is left held. */
    void stop();

    Answers& modelAnswers() { return _model.answers; }
    Answers& adapterAnswers() { return _adapterAnswers; }

private:
    struct Port {
        std::string subsystem;
        unsigned int number;
        int state; /**< as the component knows it */

        Words run() const { return portRun(subsystem, number, state); }
    };

    std::string run(const TulTest::AdapterRun& run);
    std::vector<Words> takeRuns();
    void checkPortRuns(Port& port, const Draft& draft);
    void checkBatches();

    const Setup _setup;
    FuzzFramework _framework;
    Model _model;
    Port _cli;
    Port _netconf;
    Answers _adapterAnswers;
    std::vector<TulTest::AdapterRun> _runs;
    TulTest::ScriptedRunner _runner;
    TulSshdManagement::TulSshdManagementComponent _component;
    std::unique_ptr<TulSshdManagement::SshdVormaWrapper> _otherAdapter;
};

}  // namespace TulFuzz

#endif
