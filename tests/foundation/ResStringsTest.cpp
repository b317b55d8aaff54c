// The string table: package texts by number, blocks added by later layers, and a language
// lookup in front.
#include "foundation/ResStrings.h"

#include <gtest/gtest.h>

using namespace zelvane;

namespace {
const TResStringEntry kLaterLayer[] = {{59990, "First later text"}, {59991, "Second %s"}};
const TResStringBlock kLaterBlock(kLaterLayer);

// Removes the installed lookup when a test ends, whatever happens in it.
struct LookupGuard {
    ~LookupGuard() { SetResStrLookup(nullptr); }
};
} // namespace

TEST(ResStrings, FoundationTextsByNumber) {
    EXPECT_EQ(ResStr(50550), "New file size should not be less than zero.");
    EXPECT_EQ(ResStr(50551), "New file size should be higher than zero.");
    EXPECT_EQ(ResStr(50552), "Can\x92t change size of the file in read only mode.");
    EXPECT_EQ(ResStr(50553), "Projected area size must be above zero");
    EXPECT_EQ(ResStr(50564), "Object should support interface IIdentIntf");
    EXPECT_EQ(ResStr(50565), "Identifier value must be unique [%s]");
    EXPECT_EQ(ResStr(50566), "Unacceptable value for identifier [%s]");
}

TEST(ResStrings, MissingNumberGivesEmptyText) {
    EXPECT_EQ(ResStr(1), "");
    EXPECT_EQ(ResStr(50549), "");
    EXPECT_EQ(PackageResStr(-5), "");
}

TEST(ResStrings, StaticBlockOfALaterLayerIsThere) {
    EXPECT_EQ(ResStr(59990), "First later text");
    EXPECT_EQ(ResStr(59991), "Second %s");
}

TEST(ResStrings, RegisteredBlockAddsAndReplaces) {
    const TResStringEntry block[] = {{59995, "added"}, {59996, "old"}};
    RegisterResStrings(block);
    const TResStringEntry again[] = {{59996, "new"}};
    RegisterResStrings(again);
    EXPECT_EQ(ResStr(59995), "added");
    EXPECT_EQ(ResStr(59996), "new");
}

TEST(ResStrings, LookupComesFirstAndFallsBackWhenEmpty) {
    LookupGuard guard;
    SetResStrLookup([](int id) { return id == 50550 ? std::string("Neuer Text") : std::string(); });
    EXPECT_EQ(ResStr(50550), "Neuer Text");
    EXPECT_EQ(ResStr(50551), "New file size should be higher than zero.");
    EXPECT_EQ(PackageResStr(50550), "New file size should not be less than zero.");
    // The lookup may also know numbers the package doesn't.
    SetResStrLookup([](int id) { return id == 12345 ? std::string("only here") : std::string(); });
    EXPECT_EQ(ResStr(12345), "only here");
}

TEST(ResStrings, SetLookupReturnsThePreviousOne) {
    LookupGuard guard;
    SetResStrLookup([](int) { return std::string("A"); });
    TResStrLookup previous = SetResStrLookup([](int) { return std::string("B"); });
    ASSERT_TRUE(previous);
    EXPECT_EQ(previous(1), "A");
    EXPECT_EQ(ResStr(1), "B");
    SetResStrLookup(nullptr);
    EXPECT_EQ(ResStr(1), "");
}
