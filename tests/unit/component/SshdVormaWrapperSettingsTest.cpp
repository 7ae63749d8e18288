#include "SshdVormaWrapperTest.h"

namespace {

using namespace TulTest;
using testing::ElementsAre;
using testing::IsEmpty;

using SshdVormaWrapperCiphers = SshdVormaWrapperTest;
using SshdVormaWrapperDscp = SshdVormaWrapperTest;
using SshdVormaWrapperRenegotiation = SshdVormaWrapperTest;

/** What getVormaSpiRevision writes once the answer is known. */
const Records revisionKnown = vormaSource.entry("getVormaSpiRevision");

TEST_F(SshdVormaWrapperCiphers, AreQueuedInTheOrderOfTheirNames) {
    wrapper.setCiphers(allLists);
    EXPECT_THAT(takePending(), ElementsAre("--ciphers", "c1,c2", "--kexAlgorithms", "k1", "--macs", "m1,m2"));
}

TEST_F(SshdVormaWrapperCiphers, AreQueuedForTheNamesThatAreThereOnly) {
    wrapper.setCiphers({{"selectedMacs", "m1"}});
    EXPECT_THAT(takePending(), ElementsAre("--macs", "m1"));
}

TEST_F(SshdVormaWrapperCiphers, OfUnknownNamesAreSkippedSilently) {
    wrapper.setCiphers({{"", "a"},
                        {"SelectedCiphers", "b"},
                        {"selectedCipher", "c"},
                        {"selectedCiphers ", "d"},
                        {"selectedMacs", "e"},
                        {"selectedmacs", "f"}});
    EXPECT_THAT(framework.records, IsEmpty());
    EXPECT_THAT(takePending(), ElementsAre("--macs", "e"));
}

TEST_F(SshdVormaWrapperCiphers, OfUnknownNamesAloneQueueNothing) {
    wrapper.setCiphers({{"SelectedCiphers", "a"}});
    EXPECT_FALSE(wrapper.invokeVorma(ample));
}

TEST_F(SshdVormaWrapperCiphers, AreNotRunAtOnce) {
    wrapper.setCiphers(allLists);
    EXPECT_THAT(takeWords(), ElementsAre(ElementsAre("spi-revision")));
}

TEST_F(SshdVormaWrapperCiphers, AreTraced) {
    wrapper.getVormaSpiRevision();
    framework.logLevel = 8;
    wrapper.setCiphers(allLists);
    EXPECT_EQ(takeRecords(), vormaSource.entry("setCiphers", " >> Update ciphers") + revisionKnown +
                                 vormaSource.exit("setCiphers", " << Succeeded to set the cipher attributes"));
}

TEST_F(SshdVormaWrapperCiphers, AreReportedWhenThereAreNoneAndTheRevisionIsNotAsked) {
    framework.logLevel = 8;
    wrapper.setCiphers({});
    EXPECT_EQ(takeRecords(), vormaSource.entry("setCiphers", " >> Update ciphers") +
                                 vormaSource.information("setCiphers", "No ciphers to update."));
    EXPECT_THAT(takeWords(), IsEmpty());
}

TEST_F(SshdVormaWrapperCiphers, AreRefusedWithAWarningByAnOlderAdapter) {
    givenRevisionOutput("1.6.9");
    wrapper.getVormaSpiRevision();
    framework.logLevel = 8;
    wrapper.setCiphers(allLists);
    EXPECT_EQ(
        takeRecords(),
        vormaSource.entry("setCiphers", " >> Update ciphers") + revisionKnown +
            vormaSource.warning("setCiphers",
                                "Cipher suite configuration is not applied. vorma spi-revision must be >= 1.7.0."));
    EXPECT_FALSE(wrapper.invokeVorma(ample));
}

const char* const dscpEntry = " >> Set dscp value for the service category OaM CM to %s ";

TEST_F(SshdVormaWrapperDscp, IsQueuedWithItsValue) {
    EXPECT_TRUE(wrapper.setDscp("46"));
    EXPECT_THAT(takeWords(), ElementsAre(ElementsAre("spi-revision")));
    EXPECT_THAT(takePending(), ElementsAre("--ipQos", "46"));
}

TEST_F(SshdVormaWrapperDscp, IsRemovedByOneWordWhenItIsEmpty) {
    givenRevisionOutput("1.7.0");
    EXPECT_TRUE(wrapper.setDscp(""));
    EXPECT_THAT(takePending(), ElementsAre("--removeIpQoS"));
}

TEST_F(SshdVormaWrapperDscp, IsNotValidated) {
    EXPECT_TRUE(wrapper.setDscp("0"));
    EXPECT_TRUE(wrapper.setDscp("64"));
    EXPECT_TRUE(wrapper.setDscp("not a number"));
    EXPECT_THAT(takePending(), ElementsAre("--ipQos", "0", "--ipQos", "64", "--ipQos", "not a number"));
}

TEST_F(SshdVormaWrapperDscp, IsTraced) {
    wrapper.getVormaSpiRevision();
    framework.logLevel = 8;
    wrapper.setDscp("46");
    EXPECT_EQ(takeRecords(),
              vormaSource.entry("setDscp", dscpEntry, " >> Set dscp value for the service category OaM CM to 46 ") +
                  revisionKnown +
                  vormaSource.exit("setDscp", " << Succeeded to set dscp value for the service category OaM CM "));
}

TEST_F(SshdVormaWrapperDscp, IsRefusedWithAWarningByAnOlderAdapter) {
    givenRevisionOutput("1.6.9");
    wrapper.getVormaSpiRevision();
    framework.logLevel = 8;
    EXPECT_FALSE(wrapper.setDscp(""));
    EXPECT_EQ(
        takeRecords(),
        vormaSource.entry("setDscp", dscpEntry, " >> Set dscp value for the service category OaM CM to  ") +
            revisionKnown +
            vormaSource.warning(
                "setDscp", "IPQoS configuration is not applied on TUL SSHD. vorma spi-revision must be >= 1.7.0."));
    EXPECT_FALSE(wrapper.invokeVorma(ample));
}

TEST_F(SshdVormaWrapperRenegotiation, IsQueuedAsUnsignedDecimal) {
    EXPECT_TRUE(wrapper.setRenegotiationtime(3600));
    EXPECT_TRUE(wrapper.setRenegotiationtime(4294967295U));
    EXPECT_TRUE(wrapper.setRenegotiationtime(1));
    EXPECT_THAT(takePending(), ElementsAre("--renegotiationTime", "3600", "--renegotiationTime", "4294967295",
                                           "--renegotiationTime", "1"));
}

TEST_F(SshdVormaWrapperRenegotiation, IsNoneForZero) {
    EXPECT_TRUE(wrapper.setRenegotiationtime(0));
    EXPECT_THAT(takePending(), ElementsAre("--renegotiationTime", "none"));
}

TEST_F(SshdVormaWrapperRenegotiation, IsTraced) {
    wrapper.getVormaSpiRevision();
    framework.logLevel = 8;
    wrapper.setRenegotiationtime(3600);
    EXPECT_EQ(takeRecords(),
              vormaSource.entry("setRenegotiationtime", " >> Update Renegotiation Time: %d",
                                " >> Update Renegotiation Time: 3600") +
                  revisionKnown +
                  vormaSource.exit("setRenegotiationtime", " << Succeeded to set the Renegotiation Time"));
}

TEST_F(SshdVormaWrapperRenegotiation, IsRefusedWithAWarningByAnOlderAdapter) {
    givenRevisionOutput("1.7.0\n");
    wrapper.getVormaSpiRevision();
    framework.logLevel = 8;
    EXPECT_FALSE(wrapper.setRenegotiationtime(0));
    EXPECT_EQ(
        takeRecords(),
        vormaSource.entry("setRenegotiationtime", " >> Update Renegotiation Time: %d",
                          " >> Update Renegotiation Time: 0") +
            revisionKnown +
            vormaSource.warning("setRenegotiationtime",
                                "Renegotiation configuration is not applied. Vorma spi-revision must be >= 1.8.0.") +
            vormaSource.exit("setRenegotiationtime"));
    EXPECT_FALSE(wrapper.invokeVorma(ample));
}

/** The component reaches the wrapper through a pointer: a derived one takes its place. */
class OtherWrapper : public TulSshdManagement::SshdVormaWrapper {
public:
    bool setDscp(const std::string& dscp) override {
        told = dscp;
        return true;
    }
    void setCiphers(const std::map<std::string, std::string>& selected) override { told = selected.begin()->second; }

    std::string told;
};

TEST(SshdVormaWrapperVirtuals, AreReachedThroughThePointerToTheBase) {
    const RecordingFramework framework;
    OtherWrapper other;
    TulSshdManagement::SshdVormaWrapper& base = other;
    base.setDscp("46");
    EXPECT_EQ("46", other.told);
    base.setCiphers({{"selectedMacs", "m"}});
    EXPECT_EQ("m", other.told);
    EXPECT_THAT(framework.runWords(), IsEmpty());
}

}  // namespace
