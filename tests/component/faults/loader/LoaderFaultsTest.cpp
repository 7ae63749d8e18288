#include <Poco/DOM/AutoPtr.h>
#include <Poco/DOM/Document.h>
#include <Poco/DOM/Element.h>
#include <Poco/DOM/NodeList.h>
#include <Poco/DOM/Text.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RecordingFramework.h"
#include "SshdConfigHandler.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;

/** An element that has children for so many looks, and none from then on: found, counted, and gone. */
class FickleElement : public Poco::XML::Element {
public:
    FickleElement(Poco::XML::Document* document, int looks)
        : Element(document, "", "", "TulSshdManager"), _looks(looks) {}

    Poco::XML::Node* firstChild() const override { return _looks-- > 0 ? Element::firstChild() : nullptr; }

protected:
    ~FickleElement() override = default;

private:
    mutable int _looks;
};

/** A list of one. */
class OneElement : public Poco::XML::NodeList {
public:
    explicit OneElement(Poco::XML::Element* element) : _element(element) {}

    Poco::XML::Node* item(unsigned long index) const override { return index == 0 ? _element : nullptr; }
    unsigned long length() const override { return 1; }
    void autoRelease() override {}

protected:
    ~OneElement() override = default;

private:
    Poco::XML::Element* const _element;
};

/** What the loader finds for the section; null: no list at all. */
Poco::XML::Element* found = nullptr;

}  // namespace

/** Stands before the platform's in the order of the linker. */
Poco::XML::NodeList* Tul::TulConfiguration::getElementsByTagName(std::string /*name*/) {
    return found == nullptr ? nullptr : new OneElement(found);
}

namespace {

class LoaderFaults : public testing::Test {
public:
    ~LoaderFaults() override { found = nullptr; }

    /** A section with everything in it, which can be looked at so often. */
    void givenSection(int looks) {
        section = new FickleElement(document, looks);
        add("sshdManagement", "true");
        add("cliPort", "2022");
        add("netconfPort", "2830");
        add("renegotiationTime", "3600");
        found = section;
    }

    void add(const char* name, const char* value) {
        Poco::AutoPtr<Poco::XML::Element> element = document->createElement(name);
        Poco::AutoPtr<Poco::XML::Text> text = document->createTextNode(value);
        element->appendChild(text);
        section->appendChild(element);
    }

    RecordingFramework framework;
    Poco::AutoPtr<Poco::XML::Document> document = new Poco::XML::Document;
    Poco::AutoPtr<FickleElement> section;
    TulSshdManagement::SshdConfigHandler handler;
};

TEST_F(LoaderFaults, ANullListCountsAsNoConfiguration) {
    EXPECT_EQ(-1, handler.readComponentConfiguration("<a/>"));
    EXPECT_THAT(framework.logs(),
                ElementsAre("3 readComponentConfiguration: No TulSshdManagementComponent configuration found"));
}

TEST_F(LoaderFaults, ASectionThatStaysIsRead) {
    givenSection(1000);
    EXPECT_EQ(0, handler.readComponentConfiguration("<a/>"));
    EXPECT_TRUE(handler.getSshdManagement());
    EXPECT_EQ(2022u, handler.getCliport());
    EXPECT_EQ(2830u, handler.getNetconfport());
    EXPECT_EQ(3600u, handler.getRenegotiationtime());
    EXPECT_THAT(framework.logs(), IsEmpty());
}

/** An element that was counted and cannot be had leaves the text as it was, empty, and is no failure by itself. */
struct GoneRow {
    const char* name;
    int looks; /**< two for each element: to count it, and to get it */
    int result;
    bool managed;
    unsigned int netconfPort;
    unsigned int renegotiationTime;
    std::vector<std::string> logs;

    friend std::ostream& operator<<(std::ostream& stream, const GoneRow& row) { return stream << row.name; }
};

class LoaderFaultsGone : public LoaderFaults, public testing::WithParamInterface<GoneRow> {};

TEST_P(LoaderFaultsGone, HasAnEmptyText) {
    const GoneRow& row = GetParam();
    givenSection(row.looks);
    EXPECT_EQ(row.result, handler.readComponentConfiguration("<a/>"));
    EXPECT_EQ(row.managed, handler.getSshdManagement());
    EXPECT_EQ(row.netconfPort, handler.getNetconfport());
    EXPECT_EQ(row.renegotiationTime, handler.getRenegotiationtime());
    EXPECT_EQ(row.logs, framework.logs());
}

std::string noText(const std::string& tag) {
    return "3 getUintValueFromCfg: Problem in conversion '" + tag + "' tag . Reason: 'Invalid string exception'";
}

INSTANTIATE_TEST_SUITE_P(Element, LoaderFaultsGone,
                         testing::Values(GoneRow{"TheSwitch", 1, 0, false, 0, 0, {}},
                                         GoneRow{"TheCliPort", 3, -1, true, 0, 0, {noText("cliPort")}},
                                         GoneRow{"TheNetconfPort", 5, -1, true, 0, 0, {noText("netconfPort")}},
                                         GoneRow{"TheTime", 7, 0, true, 2830, 0, {noText("renegotiationTime")}}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
