#include <gtest/gtest.h>

#include <memory>

#include "NameValuePair.h"

namespace {

const std::string longText(100, 'x');  // too long to be kept inside a string object

/** Shows what is protected, and can borrow. */
class Pair : public Tul::NameValuePair {
public:
    using NameValuePair::NameValuePair;

    static Pair borrowing(const char* pairName, const char* borrowed) {
        Pair pair(pairName, "own value");
        pair._ownsValue = false;
        pair.value = borrowed;
        return pair;
    }

    bool ownsValue() const { return _ownsValue; }
    bool pointsAtOwnName() const { return name == _name.c_str(); }
    bool pointsAtOwnValue() const { return value == _value.c_str(); }
};

void expectOwner(const Pair& pair, const std::string& name, const std::string& value) {
    EXPECT_TRUE(pair.ownsValue());
    EXPECT_TRUE(pair.pointsAtOwnName());
    EXPECT_TRUE(pair.pointsAtOwnValue());
    EXPECT_EQ(name, pair.name);
    EXPECT_EQ(value, pair.value);
}

void expectBorrower(const Pair& pair, const std::string& name, const char* borrowed) {
    EXPECT_FALSE(pair.ownsValue());
    EXPECT_TRUE(pair.pointsAtOwnName());
    EXPECT_EQ(name, pair.name);
    EXPECT_EQ(borrowed, pair.value);  // the same pointer
}

TEST(NameValuePair, OwnsCopiesOfItsTexts) {
    std::string name = "name";
    std::string value = longText;
    const Pair pair(name.c_str(), value);
    name.assign("gone");
    value.assign("gone");
    expectOwner(pair, "name", longText);
}

TEST(NameValuePair, PointsNowhereWhenItIsDefaultConstructed) {
    const Pair pair;
    EXPECT_EQ(nullptr, pair.name);
    EXPECT_EQ(nullptr, pair.value);
    EXPECT_TRUE(pair.ownsValue());
}

TEST(NameValuePair, CopiesAnOwnerAsAnOwner) {
    auto source = std::make_unique<Pair>("name", longText);
    const Pair copy(*source);
    source.reset();
    expectOwner(copy, "name", longText);
}

TEST(NameValuePair, CopiesABorrowerWithThePointerOfTheSource) {
    const char borrowed[] = "borrowed";
    auto source = std::make_unique<Pair>(Pair::borrowing("name", borrowed));
    const Pair copy(*source);
    source.reset();
    expectBorrower(copy, "name", borrowed);
}

TEST(NameValuePair, CopiesABorrowedNull) {
    expectBorrower(Pair(Pair::borrowing("name", nullptr)), "name", nullptr);
}

TEST(NameValuePair, PointsAtOwnEmptyTextsAsTheCopyOfAnEmptyPair) {
    const Pair empty;
    expectOwner(Pair(empty), "", "");
}

TEST(NameValuePair, IsAssignedAnOwner) {
    Pair pair;
    {
        const Pair source(longText.c_str(), "value");
        pair = source;
    }
    expectOwner(pair, longText, "value");
}

TEST(NameValuePair, IsAssignedABorrower) {
    const char borrowed[] = "borrowed";
    Pair pair("old name", "old value");
    {
        const Pair source = Pair::borrowing("name", borrowed);
        pair = source;
    }
    expectBorrower(pair, "name", borrowed);
}

TEST(NameValuePair, BecomesAnOwnerAgainWhenABorrowerIsAssignedOne) {
    Pair pair = Pair::borrowing("name", "borrowed");
    pair = Pair("new", longText);
    expectOwner(pair, "new", longText);
}

TEST(NameValuePair, SurvivesTheAssignmentToItself) {
    const char borrowed[] = "borrowed";
    Pair owner("name", longText);
    Pair borrower = Pair::borrowing("name", borrowed);
    const Pair& sameOwner = owner;
    const Pair& sameBorrower = borrower;

    owner = sameOwner;
    borrower = sameBorrower;
    expectOwner(owner, "name", longText);
    expectBorrower(borrower, "name", borrowed);
}

TEST(NameValuePair, IsAFrameworkPairOfTwoPointers) {
    const Pair pair("name", "value");
    const BryNameValuePair& record = pair;
    EXPECT_STREQ("name", record.name);
    EXPECT_STREQ("value", record.value);
}

}  // namespace
