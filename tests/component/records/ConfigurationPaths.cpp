#include "Path.h"

namespace TulTest {

namespace {

const std::string on = "<sshdManagement>true</sshdManagement>";
const std::string cli = "<cliPort>22</cliPort>";
const std::string netconf = "<netconfPort>830</netconfPort>";
const std::string time = "<renegotiationTime>5</renegotiationTime>";

Path read(const std::string& name, const char* text) {
    return {"readComponentConfiguration/" + name, nothing,
            [text](RecordedNode& node) { node.reader.readComponentConfiguration(text); }};
}

Path read(const std::string& name, const std::string& text) {
    return {"readComponentConfiguration/" + name, nothing,
            [text](RecordedNode& node) { node.reader.readComponentConfiguration(text.c_str()); }};
}

Path section(const std::string& name, const std::string& inside) {
    return read(name, "<TulSshdManager>" + inside + "</TulSshdManager>");
}

Paths switchPaths() {
    return {
        section("ManagementOn", on + cli + netconf + time),
        section("ManagementOff", "<sshdManagement>false</sshdManagement>"),
        section("ManagementInOddLetters", "<sshdManagement>\n\tFALSE </sshdManagement>"),
        section("ManagementMissing", ""),
        section("ManagementEmpty", "<sshdManagement/>"),
        section("ManagementInvalid", "<sshdManagement>yes</sshdManagement>"),
        section("ManagementTwice", on + on),
    };
}

Paths numberPaths() {
    return {
        section("CliPortMissing", on + netconf + time),
        section("CliPortTwice", on + cli + cli + netconf),
        section("CliPortEmpty", on + "<cliPort/>"),
        section("CliPortNegative", on + "<cliPort>-22</cliPort>"),
        section("CliPortTooLarge", on + "<cliPort>4294967296</cliPort>"),
        section("NetconfPortMissing", on + cli + time),
        section("NetconfPortTwice", on + cli + netconf + netconf),
        section("NetconfPortMalformed", on + cli + "<netconfPort>830x</netconfPort>"),
        section("RenegotiationTimeMissing", on + cli + netconf),
        section("RenegotiationTimeTwice", on + cli + netconf + time + time),
        section("RenegotiationTimeMalformed", on + cli + netconf + "<renegotiationTime>abc</renegotiationTime>"),
    };
}

}  // namespace

Paths configurationPaths() {
    Paths paths{
        read("NoText", nullptr),
        read("Unloadable", "<!DOCTYPE a><a/>"),
        read("NoSection", "<a/>"),
        read("TwoSections", "<a><TulSshdManager></TulSshdManager><TulSshdManager></TulSshdManager></a>"),
    };
    for (const Paths& more : {switchPaths(), numberPaths()}) {
        paths.insert(paths.end(), more.begin(), more.end());
    }
    return paths;
}

}  // namespace TulTest
