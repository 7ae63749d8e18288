#ifndef TUL_TEST_SEQUENCES_STAGE_H
#define TUL_TEST_SEQUENCES_STAGE_H

#include <string>
#include <vector>

#include "Bend.h"
#include "Commands.h"
#include "Surroundings.h"

namespace Sequences {

/** Where the model acts: what it does goes into the journal, what it is answered comes from its surroundings. */
class Stage {
public:
    /** Stands for an exception, of the platform's type unless the ending says otherwise. */
    struct Failure {
        std::string text;
        Ending kind = Ending::TUL_EXCEPTION;
    };
    /** Stands for the end of the process. */
    struct Abort {};

    explicit Stage(Bend bend) : _bend(bend) {}

    bool isBent(Bend rule) const { return rule == _bend; }
    void say(const std::string& line) { journal.push_back(line); }

    /** A call of the SPI, with its arguments; the code that it answers. */
    BryReturnT call(const std::string& operation, const std::string& arguments = "") {
        say(operation + (arguments.empty() ? "" : " " + arguments));
        return surroundings.failureOf(operation).value_or(0);
    }

    /** True when the interface is found, and not as a null pointer. */
    bool findsInterface(const std::string& service, const std::string& name, const std::string& version) {
        say("getInterface " + service + " " + name + " " + version);
        return !surroundings.failureOf("getInterface " + name);
    }
    bool findsManagedObjects() {
        return findsInterface("TulOamSpiExtCmRouterService", "TulOamSpiManagedObject", "3");
    }

    void error(const std::string& function, const std::string& text) { log(3, function, text); }
    void warning(const std::string& function, const std::string& text) { log(4, function, text); }
    void information(const std::string& function, const std::string& text) { log(6, function, text); }

    /** A run of the adapter; what it printed. */
    std::string run(const std::vector<std::string>& words, int limit) {
        std::string line = "run " + std::to_string(limit);
        for (const std::string& word : words) {
            line += " [" + word + "]";
        }
        say(line);
        const AdapterDoes& adapter = surroundings.adapter(words.front());
        if (adapter.ending != Ending::PRINTS) {
            throw Failure{adapter.text, adapter.ending};
        }
        return adapter.text;
    }

    Surroundings surroundings;
    std::vector<std::string> journal;
    unsigned handles = 0; /**< given out so far, of transactions and consumers together */

private:
    void log(int severity, const std::string& function, const std::string& text) {
        if (surroundings.logLevel >= severity) {
            say("log " + std::to_string(severity) + " " + function + ": " + text);
        }
    }

    const Bend _bend;
};

}  // namespace Sequences

#endif
