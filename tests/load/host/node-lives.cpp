// The development node, driven by an operator's commands: brings a component library up, changes the model, takes
// the library down, again and again, and ends with 0 only if each life was as it should be and left nothing behind.
//
//     node-lives LIBRARY SCRIPT-FOLDER [LIVES]
//
// A line for each hundred lives; at the first fault a line that names it, and the end with 1.

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "Defaults.h"
#include "ModelCommands.h"
#include "Node.h"
#include "NodeCommands.h"
#include "Sanitizers.h"
#include "Shell.h"
#include "process.h"

namespace {

using namespace TulNode;
using TulTest::hasSanitizer;

/** A life, and what makes the next one begin where this one did. */
constexpr const char* commands[] = {"load",
                                    "start",
                                    "lock CliSsh",
                                    "wait",
                                    "lock NetconfSsh",
                                    "wait",
                                    "create ManagedElement=1,Transport=1,DiffServCategory=OamCM dscp=46",
                                    "wait",
                                    "set Ssh selectedCiphers=aes256-ctr",
                                    "wait",
                                    "stop",
                                    "unload",
                                    "delete CliSsh",
                                    "delete NetconfSsh",
                                    "delete DiffServCategory",
                                    "set Ssh selectedCiphers="};

/** All that the node prints in a life, without the times. The revision is asked in each: it begins afresh. */
constexpr const char* expectedTranscript =
    "component: loaded TulSshdManagementComponent\n"
    "log: warning getDnValue: Could not find first instance of classpath : "
    "ManagedElement,SystemFunctions,SysM,CliSsh\n"
    "run: vorma clissh unlock port 2022 -> ok\n"
    "log: warning getDnValue: Could not find first instance of classpath : "
    "ManagedElement,SystemFunctions,SysM,NetconfSsh\n"
    "run: vorma netconfssh unlock port 2830 -> ok\n"
    "run: vorma spi-revision -> ok\n"
    "run: vorma ssh --removeIpQoS --renegotiationTime 3600 -> ok\n"
    "component: started\n"
    "run: vorma clissh lock -> ok\n"
    "run: vorma netconfssh lock -> ok\n"
    "log: info onServiceCategoryMoChangeNotification: dscp value for SSHD set to : 46.\n"
    "run: vorma ssh --ipQos 46 -> ok\n"
    "run: vorma ssh --ciphers aes256-ctr -> ok\n"
    "run: vorma clissh lock -> ok\n"
    "run: vorma netconfssh lock -> ok\n"
    "component: stopped\n"
    "component: unloaded\n";

constexpr std::size_t heapSlack = 32768;  // records of one length take the place of others
constexpr long residentSlackKib = 1024;

std::string withoutTime(const std::string& line) {
    return line.starts_with("run: ") ? line.substr(0, line.rfind(" (")) : line;
}

class Lives {
public:
    explicit Lives(const Node::Settings& settings) : _node(settings) {
        _node.applyInitialModel(defaultModel, "default");
        _output.divert([this](const std::string& line) {
            _transcript += withoutTime(line) + "\n";
            return true;
        });
        fillJournals();
    }

    ~Lives() { _output.divert(nullptr); }

    void live(int lives) {
        for (int i = 0; i < lives; ++i) {
            ++_life;
            liveOnce();
            if (_life % 100 == 0) {
                const Process now = processNow();
                std::cout << _life << " lives, " << now.residentKib << " KiB resident, " << now.heapBytes
                          << " bytes of heap" << std::endl;
            }
        }
    }

    /** _exit: a component that is at fault need not survive an orderly end. */
    void require(bool condition, const std::string& fault) const {
        if (!condition) {
            std::cout << "node-lives: life " << _life << ": " << fault << std::endl;
            _exit(1);
        }
    }

    Lives(const Lives&) = delete;
    Lives& operator=(const Lives&) = delete;

private:
    /** The node keeps the last thousand of each, which would look like growth. These are about as long as theirs. */
    void fillJournals() {
        const std::string text(40, 'x');
        const char* const arguments[] = {text.c_str(), nullptr};
        for (std::size_t i = 0; i < Journal::mostRecords + RunLog::mostRuns; ++i) {
            _node.services.journal.log(Information, text, text);
            _node.services.runs.add({"vorma", arguments, nullptr, 0});
        }
    }

    void liveOnce() {
        _transcript.clear();
        for (const char* command : commands) {
            _shell.execute(command);
        }
        require(_transcript == expectedTranscript, "the node printed\n" + _transcript);
        require(!processMaps(_node.componentFile.c_str()), "the library is still mapped");
        require(_node.services.journal.accusations() == 0, "the component misbehaved");
    }

    static std::vector<Command> together(std::vector<Command> some, const std::vector<Command>& more) {
        some.insert(some.end(), more.begin(), more.end());
        return some;
    }

    Node _node;
    std::string _transcript;
    Output _output{stdout};
    NodeCommands _nodeCommands{_node, _output, [] { return false; }};
    ModelCommands _modelCommands{_node.services.transactions, _output};
    Shell _shell{together(_nodeCommands.commands(), _modelCommands.commands()), _output};
    int _life = 0;
};

void checkGrowth(const Lives& lives, const Process& before, const Process& after) {
    std::cout << "descriptors " << before.descriptors << " -> " << after.descriptors << ", threads " << before.threads
              << " -> " << after.threads << ", resident " << before.residentKib << " -> " << after.residentKib
              << " KiB, heap " << before.heapBytes << " -> " << after.heapBytes << " bytes" << std::endl;
    lives.require(after.descriptors == before.descriptors, "the number of descriptors has changed");
    lives.require(after.threads == before.threads, "the number of threads has changed");
    if (!hasSanitizer) {  // its own check for leaks takes our place
        lives.require(after.heapBytes <= before.heapBytes + heapSlack, "the heap has grown");
        lives.require(after.residentKib <= before.residentKib + residentSlackKib, "the resident memory has grown");
    }
}

}  // namespace

int main(int argc, char** argv) {
    const int lives = argc > 3 ? std::atoi(argv[3]) : 1000;
    if (argc < 3 || lives < 10) {
        std::cerr << "usage: node-lives LIBRARY SCRIPT-FOLDER [LIVES], 10 or more lives\n";
        return 2;
    }
    Lives all({"", argv[1], argv[2]});
    const int warmUp = lives * 2 / 5;  // all caches fill, and the journals with what belongs there
    all.live(warmUp);
    const Process before = processNow();
    all.live(lives - warmUp);
    checkGrowth(all, before, processAtRest(before.threads));
    return 0;
}
