#ifndef TUL_TEST_PATH_H
#define TUL_TEST_PATH_H

#include <gtest/gtest.h>

#include <csignal>
#include <ostream>
#include <string>
#include <vector>

#include "MemoryFault.h"
#include "RecordedNode.h"

namespace TulTest {

using Step = std::function<void(RecordedNode&)>;

/** What a process dies of, and what it says on its standard error at least. */
struct End {
    int signal = SIGABRT;
    std::string message;
};

/** One way through an operation: steps that lead there, and the step whose records are compared. */
struct Path {
    std::string name; /**< "operation/path", as its stream */
    Step given;
    Step when;
    End end{}; /**< of a path that ends the process */

    /** Goes to where the path begins; from there on everything is recorded. */
    void lead(RecordedNode& node, int level) const;

    /** Where its stream stands, and the level, for the reader of a failure. */
    std::string place(int level) const;

    friend std::ostream& operator<<(std::ostream& stream, const Path& path) { return stream << path.name; }
};

std::string testNameOf(const testing::TestParamInfo<Path>& path);

using Paths = std::vector<Path>;

Paths entryPaths();         /**< bryLCMinit, bryLCMterminate, initialize, terminate, isStarted */
Paths configurationPaths(); /**< the configuration reader */
Paths startPaths();
Paths stopPaths();
Paths instancePaths(); /**< finding, creating and deleting MOs */
Paths settingPaths();  /**< what is read from MOs */
Paths accessorPaths();
Paths consumerPaths();
Paths adapterPaths();
Paths handlerPaths();
Paths libraryPaths();   /**< a life of the built library, and what reaches its handlers through the router */
Paths returningPaths(); /**< all of these */
Paths endingPaths();    /**< those that end the process */

// Words that paths are told in.

inline void nothing(RecordedNode& /*node*/) {}

/** One step, then another. */
inline Step after(const Step& first, const Step& second) {
    return [=](RecordedNode& node) {
        first(node);
        second(node);
    };
}

/** The step must throw exactly this. */
template <class ExceptionT>
Step throwing(const Step& step) {
    return [=](RecordedNode& node) { EXPECT_THROW(step(node), ExceptionT); };
}

/** The framework answers an operation with a code. */
inline Step answered(const std::string& operation, BryReturnT result) {
    return [=](RecordedNode& node) { node.framework.results[operation] = result; };
}

/** The framework has an interface, but as a null pointer. */
inline Step nullInterface(const std::string& name) {
    return [=](RecordedNode& node) { node.framework.nullInterfaces.insert(name); };
}

/** The framework throws a number out of an operation. */
inline Step thrownBy(const std::string& operation) {
    return [=](RecordedNode& node) { node.framework.during[operation] = [] { throw 7; }; };
}

/** No memory for C arrays during the step. */
inline Step withoutMemory(const Step& step) {
    return [=](RecordedNode& node) {
        const MemoryFault fault;
        step(node);
    };
}

/** An MO with one attribute. */
inline Step mo(const char* dn, const std::string& attribute, const AttributeValues& values) {
    return [=](RecordedNode& node) { node.framework.givenMo(dn, {{attribute, values}}); };
}

/** Every MO, with settings but without states. */
void withSettings(RecordedNode& node);

/** No MO at all, not even SysM. */
void withoutMos(RecordedNode& node);

/** The portal forgets the event router, and the framework has none any more. */
void withoutRouter(RecordedNode& node);

/** The adapter answers with this revision. */
inline Step revision(const std::string& text) {
    return [=](RecordedNode& node) { node.revision = text; };
}

/** Every adapter run, or each that begins with a word, ends with this exception. */
template <class ExceptionT>
Step runThrows(const ExceptionT& exception, const std::string& firstWord = "") {
    return [=](RecordedNode& node) {
        node.duringRun = [=](const AdapterRun& run) {
            if (firstWord.empty() || run.words.front() == firstWord) {
                throw exception;
            }
        };
    };
}

/** The framework's first call, with a configuration. */
inline Step initialized(bool managed = true) {
    return [=](RecordedNode& node) {
        ASSERT_EQ(BRY_OK, node.component.lcmInit(node.framework.accessor(), configuration(managed).c_str()));
    };
}

inline void start(RecordedNode& node) {
    node.component.start(BRY_REASON_OPERATOR);
}

}  // namespace TulTest

#endif
