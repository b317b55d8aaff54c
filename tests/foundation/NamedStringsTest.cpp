// The search table, named strings in normal and quick-search mode, and name=value parameters.
#include "foundation/AppUtils.h"
#include "foundation/Classes.h"
#include "tests/foundation/TestText.h"

#include <gtest/gtest.h>

using namespace zelvane;
using namespace foundationtest;

namespace {

using Ints = std::vector<int>;

// The line FindByName gives for a name, -1 when it finds none.
int LineOf(TNamedStrings& n, const std::string& name) {
    int line = -2;
    return n.FindByName(name, line) ? line : -1;
}

// Named strings of the lines, in quick-search mode.
std::unique_ptr<TNamedStrings> Quick(const std::string& lines) {
    auto n = std::make_unique<TNamedStrings>();
    Fill(n.get(), lines);
    n->EnterQuickSearchMode();
    return n;
}

} // namespace

// --- TSearchTable ----------------------------------------------------------------------------

TEST(SearchTable, AsciiComparingIgnoresCaseOfLatinLettersOnly) {
    TSearchTable t;
    t.SetAnsiComparing(true); // the default already
    EXPECT_TRUE(t.AnsiComparing());
    t.SetAnsiComparing(false);
    t.Duplicates = rtl::dupAccept;
    t.SetSorted(true);
    Fill(&t, "Beta|alpha|BETA|\xE0"); // the last is a small Cyrillic a
    int index = -1;
    EXPECT_TRUE(t.Find("beta", index));
    EXPECT_EQ(index, 1); // with accepted duplicates: the first equal line
    EXPECT_EQ(t.IndexOf("ALPHA"), 0);
    EXPECT_FALSE(t.Find("\xC0", index)); // capital A
    t.SetAnsiComparing(true);
    EXPECT_TRUE(t.Find("\xC0", index));
}

// --- TNamedStrings ---------------------------------------------------------------------------

TEST(NamedStrings, NormalModeUsesThePlatformValues) {
    TNamedStrings n;
    Fill(&n, "Width=100|Height=20");
    EXPECT_FALSE(n.GetQuickSearch());
    EXPECT_EQ(n.GetNamedValue("height"), "20");
    n.SetNamedValue("Color", "red");
    EXPECT_EQ(n.Strings(2), "Color=red");
    n.SetNamedValue("Width", "");
    EXPECT_EQ(Joined(&n), "Height=20|Color=red");
    EXPECT_EQ(n.SearchTable()->Count(), 0);
}

TEST(NamedStrings, KnownNamesFailToAddAndNewOnesAreFoundOnlyAfterRebuilding) {
    auto n = Quick("a=1");
    // Adding a known name fails after the line went in.
    EXPECT_THROW(n->Add("A=2"), rtl::EStringListError);
    EXPECT_EQ(n->Count(), 2);
    n->Delete(1);
    n->SetNamedValue("b", "2");
    EXPECT_EQ(Joined(n.get()), "a=1|b=2");
    EXPECT_EQ(n->GetNamedValue("b"), "");
    n->LeaveQuickSearchMode();
    n->EnterQuickSearchMode();
    EXPECT_EQ(n->GetNamedValue("b"), "2");
    // A known name changes in place.
    n->SetNamedValue("a", "9");
    EXPECT_EQ(n->Strings(0), "a=9");
    EXPECT_EQ(n->GetNamedValue("a"), "9");
    // Outside quick-search mode names may repeat.
    n->LeaveQuickSearchMode();
    EXPECT_NO_THROW(n->Add("a=3"));
}

TEST(NamedStrings, EmptyValueDeletesTheLineButLeavesAStaleEntry) {
    auto n = Quick("a=1|b=2");
    n->SetNamedValue("a", "");
    EXPECT_EQ(Joined(n.get()), "b=2");
    // Delete searched the table with the whole line "a=1": no hit, so "a" still points at 0.
    EXPECT_EQ(LineOf(*n, "a"), 0);
    n->SetNamedValue("zzz", ""); // unknown name, empty value: nothing
    EXPECT_EQ(n->Count(), 1);
    // A line whose whole text is a name in the table takes that entry with it.
    auto k = Quick("key=1|key");
    k->Delete(1);
    EXPECT_EQ(LineOf(*k, "key"), -1);
    EXPECT_EQ(k->Count(), 1);
}

TEST(NamedStrings, ExchangeAndMoveRenumberOnlyWholeLineHits) {
    auto n = Quick("a=1|b|b=2");
    n->Exchange(1, 2);                                                 // "b" moves to 2, "b=2" to 1
    EXPECT_EQ((Ints{LineOf(*n, "b"), LineOf(*n, "a")}), (Ints{2, 0})); // "b" by the line "b"
    n->Move(2, 0);                                                     // "b" to the top
    EXPECT_EQ(Joined(n.get()), "b|a=1|b=2");
    // A named line isn't renumbered: "a" is stale.
    EXPECT_EQ((Ints{LineOf(*n, "b"), LineOf(*n, "a")}), (Ints{0, 0}));
    // Moving a named line doesn't fail.
    auto m = Quick("a=1|b=2");
    EXPECT_NO_THROW(m->Move(0, 1));
    EXPECT_EQ(Joined(m.get()), "b=2|a=1");
    EXPECT_EQ(m->SearchTable()->Count(), 2);
}

TEST(NamedStrings, ClearEmptiesTheTableAndAssignRebuildsIt) {
    auto n = Quick("a=1");
    n->Clear();
    EXPECT_EQ(n->SearchTable()->Count(), 0);
    rtl::TStringList src;
    Fill(&src, "x=1|y=2");
    n->Assign(&src);
    EXPECT_TRUE(n->GetQuickSearch());
    EXPECT_EQ(n->GetNamedValue("y"), "2");
    // Outside quick-search mode Assign leaves the mode off.
    TNamedStrings m;
    m.Assign(&src);
    EXPECT_FALSE(m.GetQuickSearch());
    EXPECT_EQ(m.SearchTable()->Count(), 0);
}

TEST(NamedStrings, SearchTextDump) {
    TNamedStrings n;
    EXPECT_EQ(n.GetSearchText(), "");
    n.EnterQuickSearchMode();
    EXPECT_EQ(n.GetSearchText(), "");
    Fill(&n, "b=1|a=2");
    EXPECT_EQ(n.GetSearchText(), "\r\na[1]\r\nb[0]");
    // Names that occur twice both enter the prepared table.
    auto twice = Quick("a=1|a=2");
    EXPECT_EQ(twice->SearchTable()->Count(), 2);
    EXPECT_EQ(twice->GetSearchText().substr(0, 2), "\r\n");
}

// --- TransformParams -------------------------------------------------------------------------

TEST(TransformParams, NamedPairsUntilBareLinesCutTheArray) {
    struct Case {
        const char* In;
        std::vector<TParamPair> Out;
    };
    const Case cases[] = {
        {"a=1|b=x=y|c=", {{"a", "1"}, {"b", "x=y"}, {"c", ""}}},
        {"a=1|b", {{"a", "1"}}},
        {"b|a=1", {{"", ""}}}, // the named pair at the end is lost
        {"=lead", {}},
    };
    std::vector<TParamPair> p = {{"stale", "pair"}};
    for (const Case& c : cases) {
        rtl::TStringList l;
        Fill(&l, c.In);
        TransformParams(&l, p);
        EXPECT_EQ(p, c.Out) << c.In;
    }
}

TEST(TransformParams, ExCallsTheProcedureForNamedLines) {
    rtl::TStringList l;
    Fill(&l, "b|a=1|=x|c=2=3");
    std::vector<std::string> seen;
    int data = 0;
    TransformParamsEx(
        &l,
        [&](const std::string& name, const std::string& value, void* d) {
            EXPECT_EQ(d, &data);
            seen.push_back(name + "|" + value);
        },
        &data);
    EXPECT_EQ(seen, (std::vector<std::string>{"a|1", "c|2=3"}));
    EXPECT_NO_THROW(TransformParamsEx(&l, nullptr, nullptr));
}
