#include <gtest/gtest.h>

#include <functional>

#include "FakeFramework.h"
#include "MoAccessor.h"

namespace TulTest {
namespace {

using Tul::MoAccessor;
using Tul::TulException;

/** What the fake interface does, and what it saw. */
struct Model {
    BryReturnT result = BRY_OK;
    TulMoAttributeValueResult_3 fetched{nullptr, nullptr};
    std::vector<std::string> instances;
    std::string lastCall;
    int visits = 0;
};

Model* model = nullptr;

BryReturnT getAttribute(TulOamSpiTransactionHandleT transaction, const char* dn, const char* attributeName,
                        TulMoAttributeValueResult_3* result) {
    model->lastCall = std::to_string(transaction) + " " + dn + " " + attributeName;
    *result = model->fetched;
    return model->result;
}

BryReturnT findInstances(TulOamSpiTransactionHandleT transaction, const char* classPath, TulOamSpiMoVisitor_3 visitor,
                         void* context) {
    model->lastCall = std::to_string(transaction) + " " + classPath;
    for (const std::string& dn : model->instances) {
        ++model->visits;
        if (!visitor(context, dn.c_str())) {
            break;
        }
    }
    return model->result;
}

/** The code of the exception that an action throws; 0 when it throws none. */
int codeOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const TulException& failure) {
        EXPECT_STRNE("", failure.what());
        return failure.errorCode();
    }
    return 0;
}

class MoAccessorOnAModel : public testing::Test {
protected:
    MoAccessorOnAModel() {
        model = &_model;
        _interface.header = {TUL_OAM_SPI_EXT_CM_ROUTER_SERVICE, TUL_OAM_SPI_MANAGED_OBJECT_NAME,
                             TUL_OAM_SPI_MANAGED_OBJECT_VERSION_3};
        _interface.getAttribute = getAttribute;
        _interface.findInstances = findInstances;
        _framework.offer(_interface);
        _framework.attach();
    }

    Model _model;
    TulOamSpiManagedObject_3 _interface{};
    FakeFramework _framework;
};

TEST(MoAccessor, CannotBeMadeWithoutItsInterface) {
    FakeFramework framework;
    framework.attach();
    EXPECT_EQ(BRY_NOT_FOUND, codeOf([] { MoAccessor(true, TUL_LOCK_POLICY_SHARED, 60); }));
    EXPECT_EQ("TulOamSpiExtCmRouterService TulOamSpiManagedObject 3", framework.lastLookUp());
}

TEST_F(MoAccessorOnAModel, ReadsWhatIsCommitted) {
    TulMoAttributeValueContainer_3 container{TUL_MO_TYPE_STRING_3, 0, nullptr};
    _model.fetched.container = &container;
    MoAccessor::MoAttributeValueResult result;
    MoAccessor(true, TUL_LOCK_POLICY_SHARED, 60).getAttrContainer("A=1,B=2", "attribute", result);
    EXPECT_EQ("0 A=1,B=2 attribute", _model.lastCall);
    EXPECT_EQ(&container, result.container);
}

TEST_F(MoAccessorOnAModel, ThrowsTheFrameworksCodeAndGivesBackWhatCameWithIt) {
    static int releases;
    releases = 0;
    TulMoAttributeValueContainer_3 container{TUL_MO_TYPE_STRING_3, 0, nullptr};
    _model.result = -77;
    _model.fetched = {[](TulMoAttributeValueContainer_3*) { ++releases; }, &container};
    MoAccessor accessor(true, TUL_LOCK_POLICY_SHARED, 60);
    EXPECT_EQ(-77, codeOf([&] {
        MoAccessor::MoAttributeValueResult result;
        accessor.getAttrContainer("A=1", "attribute", result);
    }));
    EXPECT_EQ(1, releases);
}

TEST_F(MoAccessorOnAModel, FindsTheFirstInstanceAndAsksForNoMore) {
    _model.instances = {"A=1,B=1", "A=1,B=2"};
    std::string dn;
    MoAccessor(true, TUL_LOCK_POLICY_SHARED, 60).getFirstMoInstance("A,B", dn);
    EXPECT_EQ("A=1,B=1", dn);
    EXPECT_EQ("0 A,B", _model.lastCall);
    EXPECT_EQ(1, _model.visits);
}

TEST_F(MoAccessorOnAModel, ThrowsWhenThereIsNoInstance) {
    std::string dn = "before";
    MoAccessor accessor(true, TUL_LOCK_POLICY_SHARED, 60);
    EXPECT_EQ(BRY_NOT_FOUND, codeOf([&] { accessor.getFirstMoInstance("A,B", dn); }));
    _model.result = BRY_UNKNOWN_CLASS;
    EXPECT_EQ(BRY_UNKNOWN_CLASS, codeOf([&] { accessor.getFirstMoInstance("A,B", dn); }));
    EXPECT_EQ("before", dn);
}

TEST_F(MoAccessorOnAModel, ValidatesTypes) {
    MoAccessor accessor(true, TUL_LOCK_POLICY_SHARED, 60);
    const TulMoAttributeValueContainer_3 container{TUL_MO_TYPE_ENUMERATION_3, 0, nullptr};
    EXPECT_EQ(0, codeOf([&] { accessor.validateType(container, TUL_MO_TYPE_ENUMERATION_3); }));
    EXPECT_NE(0, codeOf([&] { accessor.validateType(container, TUL_MO_TYPE_STRING_3); }));
}

TEST_F(MoAccessorOnAModel, KnowsTheTypeCodes) {
    MoAccessor accessor(true, TUL_LOCK_POLICY_SHARED, 60);
    EXPECT_EQ(12, accessor.getSpiType<MoAccessor::Enum>());
    EXPECT_EQ(TUL_MO_TYPE_UINT8_3, accessor.getSpiType<unsigned char>());
    EXPECT_EQ(TUL_MO_TYPE_STRING_3, accessor.getSpiType<std::string>());
}

TEST_F(MoAccessorOnAModel, ExtractsValues) {
    MoAccessor accessor(true, TUL_LOCK_POLICY_SHARED, 60);
    TulMoAttributeValue_3 value{};
    value.asInt64 = -1;
    EXPECT_EQ(-1, accessor.extractAttr<MoAccessor::Enum>(value));
    value.asEnum = 0x10002;
    EXPECT_EQ(2, accessor.extractAttr<MoAccessor::Enum>(value));
    value.asUint64 = 0x1FF;
    EXPECT_EQ(255, accessor.extractAttr<unsigned char>(value));
    value.asString = "aes256-ctr";
    EXPECT_EQ("aes256-ctr", accessor.extractAttr<std::string>(value));
    value.asString = nullptr;
    EXPECT_EQ("", accessor.extractAttr<std::string>(value));
}

}  // namespace
}  // namespace TulTest
