#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "Defaults.h"
#include "ModelCommands.h"
#include "ModelFixture.h"
#include "NodeCommands.h"
#include "Shell.h"
#include "TemporaryDirectory.h"

namespace TulNode {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

/** A node with the good animal of the zoo, and its prompt without a terminal. */
class Prompted : public testing::Test {
protected:
    Prompted() {
        _directory.writeScript("vorma", "echo \"asked for $*\"");
        output.divert([this](const std::string& line) {
            _lines.push_back(line);
            return true;
        });
        node.applyInitialModel(defaultModel, "default");
    }

    std::vector<std::string> lines(const std::string& command) {
        _lines.clear();
        shell.execute(command);
        return _lines;
    }

    std::string errorOf(const std::string& command) {
        const std::vector<std::string> printed = lines(command);
        EXPECT_EQ(printed.size(), 1U);
        EXPECT_TRUE(printed.at(0).starts_with("error: ")) << printed.at(0);
        return printed.at(0);
    }

    void expectSilence(const std::string& command) { EXPECT_THAT(lines(command), IsEmpty()) << command; }

    std::string temporary(const std::string& name) const { return _directory.path() / name; }

private:
    TulTest::TemporaryDirectory _directory;
    std::vector<std::string> _lines;

protected:
    Output output{nullptr};
    Node node{{"", std::string(TUL_ZOO_DIRECTORY) + "/good.so", _directory.path()}};
    bool interrupted = false;
    NodeCommands nodeCommands{node, output, [this] { return interrupted; }};
    ModelCommands modelCommands{node.services.transactions, output};
    Shell shell{[this] {
                    std::vector<Command> all = nodeCommands.commands();
                    const std::vector<Command> more = modelCommands.commands();
                    all.insert(all.end(), more.begin(), more.end());
                    return all;
                }(),
                output};
};

TEST_F(Prompted, ShowsTheTreeAndOneMo) {
    expectSilence("create " + category + " dscp=46");
    EXPECT_THAT(lines("show"), ElementsAre("ManagedElement=1", "  SystemFunctions=1", "    SecM=1", "      Ssh=1",
                                           "    SysM=1", "  Transport=1", "    DiffServCategory=OamCM dscp=46"));
    EXPECT_THAT(lines("show DiffServCategory"), ElementsAre(category, "  diffServCategoryId=OamCM", "  dscp=46"));
    EXPECT_THAT(lines("show " + ssh), Contains("  selectedMacs="));
}

TEST_F(Prompted, ChangesTheModelAndPrintsTheEventsThatAreFollowed) {
    expectSilence("follow events on");
    EXPECT_THAT(lines("create " + cliSsh), ElementsAre("event: CREATED " + cliSsh + " administrativeState=LOCKED"));
    EXPECT_THAT(lines("unlock CliSsh"),
                ElementsAre("event: ATTRIBUTES_CHANGED " + cliSsh + " administrativeState=UNLOCKED"));
    expectSilence("unlock " + cliSsh);
    EXPECT_THAT(lines("lock CliSsh"),
                ElementsAre("event: ATTRIBUTES_CHANGED " + cliSsh + " administrativeState=LOCKED"));
    EXPECT_THAT(lines("set Ssh selectedMacs=a,b selectedCiphers=c"),
                ElementsAre("event: ATTRIBUTES_CHANGED " + ssh + " selectedCiphers=c selectedMacs=a,b"));
    EXPECT_THAT(lines("delete CliSsh"), ElementsAre("event: DELETED " + cliSsh));
    expectSilence("follow all off");
    expectSilence("set Ssh selectedMacs=");
}

TEST_F(Prompted, SeveralChangesMayBeOneTransaction) {
    expectSilence("follow events on");
    expectSilence("begin exclusive");
    expectSilence("create " + cliSsh);
    expectSilence("set Ssh selectedMacs=a");
    EXPECT_THAT(lines("show"), Contains("      CliSsh=1 administrativeState=LOCKED"));
    EXPECT_THAT(errorOf("begin"), HasSubstr("open already"));
    EXPECT_EQ(lines("commit").size(), 2U);
    EXPECT_THAT(errorOf("commit"), HasSubstr("begin opens one"));
    expectSilence("begin");
    expectSilence("delete CliSsh");
    expectSilence("abort");
    EXPECT_THAT(lines("show"), Contains("      CliSsh=1 administrativeState=LOCKED"));
}

TEST_F(Prompted, SaysWhatIsWrongAndWhatIsAllowed) {
    EXPECT_THAT(errorOf("open"), HasSubstr("there is no command \"open\""));
    EXPECT_THAT(errorOf("set Ssh"), HasSubstr("usage: set DN|CLASS attribute=value ..."));
    EXPECT_THAT(errorOf("show a b"), HasSubstr("usage: show [DN|CLASS]"));
    EXPECT_THAT(errorOf("set Ssh colour=red"), HasSubstr("it has: selectedCiphers, selectedKeyExchanges"));
    EXPECT_THAT(errorOf("lock Ssh"), HasSubstr("no attribute \"administrativeState\""));
    EXPECT_THAT(errorOf("lock CliSsh"), HasSubstr("no MO of the class CliSsh"));
    EXPECT_THAT(errorOf("lock Telnet"), HasSubstr("there are: ManagedElement, SystemFunctions"));
    EXPECT_THAT(errorOf("create " + category + " dscp=64"), HasSubstr("allowed: a number from 0 to 63"));
    EXPECT_THAT(errorOf("create " + cliSsh + " administrativeState=OPEN"), HasSubstr("LOCKED or UNLOCKED"));
    EXPECT_THAT(errorOf("delete ManagedElement"), HasSubstr("has MOs below it"));
    EXPECT_THAT(errorOf("begin gently"), HasSubstr("shared or exclusive"));
    EXPECT_THAT(errorOf("log-level high"), HasSubstr("from 0 to 15"));
    EXPECT_THAT(errorOf("follow moon on"), HasSubstr("log, runs, events or all"));
    EXPECT_THAT(errorOf("wait -1"), HasSubstr("from 1"));
    EXPECT_THAT(errorOf("echo \"x"), HasSubstr("double quote"));
    EXPECT_EQ(node.services.transactions.all(0).size(), 6U);
    expectSilence("create ManagedElement=1,Transport=2");
    EXPECT_THAT(errorOf("delete Transport"), HasSubstr("several MOs"));
    EXPECT_THAT(node.services.transactions.unfinished(ownerOperator), IsEmpty());
}

TEST_F(Prompted, TakesTheComponentUpAndDown) {
    EXPECT_THAT(errorOf("start"), HasSubstr("no component is loaded"));
    EXPECT_THAT(lines("load"), Contains("component: loaded Zoo"));
    EXPECT_THAT(lines("start"), ElementsAre("log: info start: starts", "component: started"));
    EXPECT_THAT(lines("status")[0], "component: started Zoo");
    EXPECT_THAT(lines("reload"), IsSupersetOf({"component: stopped", "component: unloaded", "component: started"}));
    EXPECT_THAT(lines("stop"), ElementsAre("log: info stop: stops", "component: stopped"));
    EXPECT_THAT(errorOf("stop"), HasSubstr("no component is started"));
    EXPECT_THAT(lines("unload"), ElementsAre("log: info terminate: terminates", "component: unloaded"));
    expectSilence("unload");
    EXPECT_THAT(lines("status")[0], "component: unloaded");
}

TEST_F(Prompted, WaitsUntilTheComponentHasHandledEverything) {
    lines("reload");
    EXPECT_THAT(lines("create " + category), Not(Contains(HasSubstr("error"))));
    expectSilence("follow all off");
    expectSilence("wait");
    EXPECT_THAT(lines("log 1"), ElementsAre(HasSubstr("Z info notify: " + category)));
    EXPECT_THAT(lines("runs"), IsEmpty());
}

TEST_F(Prompted, ConfiguresTheNextLoad) {
    expectSilence("configure sshdManagement=false cliPort=4022");
    EXPECT_THAT(lines("configure"),
                IsSupersetOf({"    <sshdManagement>false</sshdManagement>", "    <cliPort>4022</cliPort>"}));
    EXPECT_THAT(errorOf("configure netconfPort=4023 cliPort=70000"), HasSubstr("allowed: a number from 1 to 65535"));
    EXPECT_THAT(lines("configure"), Contains("    <netconfPort>2830</netconfPort>"));
    EXPECT_THAT(errorOf("configure colour=red"), HasSubstr("there are: sshdManagement"));
    EXPECT_THAT(errorOf("configure sshdManagement=yes"), HasSubstr("true or false"));
    EXPECT_THAT(errorOf("configure /no/such/file"), HasSubstr("No such file"));
    EXPECT_THAT(errorOf("configure /tmp"), HasSubstr("cannot read /tmp: it is a folder"));
    EXPECT_THAT(errorOf("configure cliPort"),
                HasSubstr("\"cliPort\" needs a value after a \"=\"; allowed: a number from 1 to"));
    std::ofstream(temporary("own.xml")) << "<own/>";
    expectSilence("configure " + temporary("own.xml"));
    EXPECT_THAT(lines("load"), Contains("log: info init: <own/>"));
    EXPECT_THAT(errorOf("configure cliPort=1"), HasSubstr("comes from "));
    expectSilence("configure default");
    EXPECT_THAT(lines("configure"), Contains("    <cliPort>2022</cliPort>"));
}

TEST(Configuration, GoesBackToTheDefaultsThatTheOptionsMade) {
    ComponentConfiguration configuration;
    configuration.set("cliPort", "4022");
    configuration.keepAsDefaults();
    configuration.set("cliPort", "5022");
    configuration.useDefaults();
    EXPECT_THAT(configuration.xml(), HasSubstr("<cliPort>4022</cliPort>"));
}

TEST_F(Prompted, AsksTheAdapterForThePorts) {
    EXPECT_THAT(lines("ports"), ElementsAre("asked for status"));
    EXPECT_THAT(lines("runs"), IsEmpty());
}

TEST_F(Prompted, SetsTheLevelOfTheLog) {
    EXPECT_THAT(lines("log-level"), ElementsAre("log-level: 6"));
    expectSilence("log-level 3");
    EXPECT_THAT(lines("load"), ElementsAre("component: loaded Zoo"));
}

TEST_F(Prompted, HelpsAndEchoesAndQuits) {
    expectSilence("");
    expectSilence("  # a remark");
    EXPECT_THAT(lines("echo a  b"), ElementsAre("a b"));
    EXPECT_THAT(lines("help lock"), ElementsAre("lock DN|CLASS", "  Sets administrativeState to LOCKED."));
    EXPECT_GT(lines("help").size(), 40U);
    EXPECT_FALSE(shell.isOver());
    expectSilence("quit");
    EXPECT_TRUE(shell.isOver());
}

TEST_F(Prompted, CompletesCommandsDnsAttributesAndValues) {
    EXPECT_THAT(shell.completions("lo"), ElementsAre("load", "lock", "log", "log-level"));
    EXPECT_THAT(shell.completions("show ManagedElement=1,T"), ElementsAre(transport));
    EXPECT_THAT(shell.completions("show Ss"), ElementsAre("Ssh"));
    EXPECT_THAT(shell.completions("create " + sysM + ","), ElementsAre(sysM + ",CliSsh=", sysM + ",NetconfSsh="));
    EXPECT_THAT(shell.completions("set Ssh selectedC"), ElementsAre("selectedCiphers="));
    EXPECT_THAT(shell.completions("set CliSsh "),
                ElementsAre("administrativeState=LOCKED", "administrativeState=UNLOCKED"));
    EXPECT_THAT(shell.completions("follow e"), ElementsAre("events"));
    EXPECT_THAT(shell.completions("follow events o"), ElementsAre("off", "on"));
    EXPECT_THAT(shell.completions("help qu"), ElementsAre("quit"));
    EXPECT_THAT(shell.completions("set Telnet "), IsEmpty());
    EXPECT_THAT(shell.completions("nonsense "), IsEmpty());
}

}  // namespace
}  // namespace TulNode
