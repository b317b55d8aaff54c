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

TEST(ResStrings, TextsByNumberOfTheFoundationAndOfLaterLayers) {
    // A later layer's static block is there; a registered block adds and replaces; a missing
    // number gives empty text.
    const TResStringEntry block[] = {{59995, "added"}, {59996, "old"}};
    RegisterResStrings(block);
    const TResStringEntry again[] = {{59996, "new"}};
    RegisterResStrings(again);
    const std::pair<int, const char*> texts[] = {
        {50550, "New file size should not be less than zero."}, {59990, "First later text"},
        {59991, "Second %s"}, {59995, "added"}, {59996, "new"}, {50549, ""},
    };
    for (const auto& [id, text] : texts)
        EXPECT_EQ(ResStr(id), text) << id;
    EXPECT_EQ(PackageResStr(-5), "");
}

TEST(ResStrings, LookupComesFirstFallsBackWhenEmptyAndIsReturnedWhenReplaced) {
    LookupGuard guard;
    SetResStrLookup([](int id) { return id == 50550 ? std::string("Neuer Text") : std::string(); });
    EXPECT_EQ(ResStr(50550), "Neuer Text");
    EXPECT_EQ(ResStr(50551), "New file size should be higher than zero.");
    EXPECT_EQ(PackageResStr(50550), "New file size should not be less than zero.");
    // The lookup may also know numbers the package doesn't.
    SetResStrLookup([](int id) { return id == 12345 ? std::string("only here") : std::string(); });
    EXPECT_EQ(ResStr(12345), "only here");
    // Setting a lookup returns the previous one.
    SetResStrLookup([](int) { return std::string("A"); });
    TResStrLookup previous = SetResStrLookup([](int) { return std::string("B"); });
    ASSERT_TRUE(previous);
    EXPECT_EQ(previous(1), "A");
    EXPECT_EQ(ResStr(1), "B");
    SetResStrLookup(nullptr);
    EXPECT_EQ(ResStr(1), "");
}
