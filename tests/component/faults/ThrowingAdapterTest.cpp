#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "Life.h"
#include "TulException.h"

namespace {

using namespace TulTest;

/** An adapter of a product's own whose settings throw until they are healed. */
class ThrowingAdapter : public TulSshdManagement::SshdVormaWrapper {
public:
    bool setDscp(const std::string& dscp) override {
        raise();
        return SshdVormaWrapper::setDscp(dscp);
    }
    void setCiphers(const std::map<std::string, std::string>& selected) override {
        raise();
        SshdVormaWrapper::setCiphers(selected);
    }

    std::function<void()> raise = [] {};
};

struct Exception {
    const char* name;
    void (*raise)();
    const char* warning;

    friend std::ostream& operator<<(std::ostream& stream, const Exception& row) { return stream << row.name; }
};

const char* const known = "4 notifyCallback: Exception thrown from event consumer :oh";

const Exception exceptions[] = {
    {"TulException", [] { throw Tul::TulException("oh"); }, known},
    {"StandardException", [] { throw std::runtime_error("oh"); }, known},
    {"Integer", [] { throw 7; }, "4 notifyCallback: Unknown exception thrown from event consumer"}};

class ThrowingSettings : public testing::TestWithParam<std::tuple<const char*, Exception>> {};

TEST_P(ThrowingSettings, BecomeTheConsumersWarningAndTheNextNotificationWorks) {
    const auto& [name, exception] = GetParam();
    ThrowingAdapter adapter;
    Life life(scenario(name));
    // Put in place of the component's own, which start has used already.
    life.component.setVorma(&adapter);
    adapter.raise = exception.raise;
    EXPECT_EQ(Outcome(), life.act());
    EXPECT_EQ(Lines({exception.warning}), life.journal);
    adapter.raise = [] {};
    life.journal.clear();
    EXPECT_EQ(Outcome(), life.act());
    EXPECT_EQ(1u, life.runs().size() - (life.runs().front() == "spi-revision" ? 1 : 0));
    life.expectNextNotification();
    life.expectUsable();
}

INSTANTIATE_TEST_SUITE_P(
    Component, ThrowingSettings,
    testing::Combine(testing::Values("CategoryCreated", "CategoryChanged", "CategoryDeleted", "SshChanged"),
                     testing::ValuesIn(exceptions)),
    [](const auto& row) { return std::string(std::get<0>(row.param)) + std::get<1>(row.param).name; });

}  // namespace
