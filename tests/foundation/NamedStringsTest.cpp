// The search table, named strings in normal and quick-search mode, and name=value parameters.
#include "foundation/AppUtils.h"
#include "foundation/Classes.h"

#include <gtest/gtest.h>

using namespace zelvane;

namespace {
std::vector<std::string> Lines(rtl::TStrings* l) {
    std::vector<std::string> r;
    for (int i = 0; i < l->Count(); ++i)
        r.push_back(l->Strings(i));
    return r;
}
} // namespace

// --- TSearchTable ----------------------------------------------------------------------------

TEST(SearchTable, FindOnAnEmptyTable) {
    for (bool ansi : {true, false}) {
        TSearchTable t;
        t.SetAnsiComparing(ansi);
        t.SetSorted(true);
        int index = 7;
        EXPECT_FALSE(t.Find("x", index));
        EXPECT_EQ(index, 0);
    }
}

TEST(SearchTable, AsciiComparingIgnoresCaseOfLatinLetters) {
    TSearchTable t;
    EXPECT_TRUE(t.AnsiComparing());
    t.SetAnsiComparing(false);
    t.Duplicates = rtl::dupAccept;
    t.SetSorted(true);
    t.Add("Beta");
    t.Add("alpha");
    t.Add("BETA");
    int index = -1;
    EXPECT_TRUE(t.Find("beta", index));
    EXPECT_EQ(index, 1); // with accepted duplicates: the first equal line
    EXPECT_EQ(t.IndexOf("ALPHA"), 0);
}

TEST(SearchTable, AsciiComparingOrdersByCodeNotByLocale) {
    // "_" (95) lies between upper and lower case in ASCII and before all letters in the
    // locale's order; CompareText folds to upper case, so "_" follows the letters there.
    TSearchTable t;
    t.Add("_x");
    t.Add("a");
    t.SetSorted(true);
    EXPECT_EQ(Lines(&t), (std::vector<std::string>{"_x", "a"}));
    t.SetAnsiComparing(false); // sorts again
    EXPECT_EQ(Lines(&t), (std::vector<std::string>{"a", "_x"}));
    int index = -1;
    EXPECT_TRUE(t.Find("_X", index));
    EXPECT_EQ(index, 1);
    EXPECT_FALSE(t.Find("b", index));
    EXPECT_EQ(index, 1);
    t.SetAnsiComparing(true);
    EXPECT_EQ(Lines(&t), (std::vector<std::string>{"_x", "a"}));
}

TEST(SearchTable, AsciiComparingDoesNotFoldCyrillic) {
    TSearchTable t;
    t.SetAnsiComparing(false);
    t.SetSorted(true);
    t.Add("\xE0"); // small a
    int index = 0;
    EXPECT_FALSE(t.Find("\xC0", index)); // capital A
    t.SetAnsiComparing(true);
    EXPECT_TRUE(t.Find("\xC0", index));
}

TEST(SearchTable, UnsortedChangeOfModeDoesNotSort) {
    TSearchTable t;
    t.Add("b");
    t.Add("a");
    t.SetAnsiComparing(false);
    EXPECT_EQ(Lines(&t), (std::vector<std::string>{"b", "a"}));
}

// --- TNamedStrings ---------------------------------------------------------------------------

TEST(NamedStrings, NormalModeUsesThePlatformValues) {
    TNamedStrings n;
    n.Add("Width=100");
    n.Add("Height=20");
    EXPECT_FALSE(n.GetQuickSearch());
    EXPECT_EQ(n.GetNamedValue("height"), "20");
    n.SetNamedValue("Color", "red");
    EXPECT_EQ(n.Strings(2), "Color=red");
    n.SetNamedValue("Width", "");
    EXPECT_EQ(Lines(&n), (std::vector<std::string>{"Height=20", "Color=red"}));
    EXPECT_EQ(n.SearchTable()->Count(), 0);
}

TEST(NamedStrings, QuickSearchFindsByTheTable) {
    TNamedStrings n;
    n.Add("Width=100");
    n.Add("plain line");
    n.Add("=x");
    n.Add("Caption=a=b");
    n.EnterQuickSearchMode();
    EXPECT_TRUE(n.GetQuickSearch());
    EXPECT_EQ(n.SearchTable()->Count(), 2); // lines without a name stay out
    int line = -1;
    EXPECT_TRUE(n.FindByName("caption", line));
    EXPECT_EQ(line, 3);
    EXPECT_EQ(n.GetNamedValue("Caption"), "a=b");
    EXPECT_EQ(n.GetNamedValue("WIDTH"), "100");
    EXPECT_EQ(n.GetNamedValue("Missing"), "");
    EXPECT_EQ(n.GetNamedValue(""), "");
    EXPECT_FALSE(n.FindByName("", line));
    // "=x" has no name: quick search can't find it.
    EXPECT_EQ(n.GetNamedValue("=x"), "");
    EXPECT_FALSE(n.FindByName("=x", line));
    n.LeaveQuickSearchMode();
    EXPECT_FALSE(n.GetQuickSearch());
    EXPECT_EQ(n.SearchTable()->Count(), 0);
}

TEST(NamedStrings, AddAndInsertFollowTheTable) {
    TNamedStrings n;
    n.Add("a=1");
    n.EnterQuickSearchMode();
    n.Add("b=2");
    EXPECT_EQ(n.GetNamedValue("b"), "2");
    n.Insert(0, "c=3");
    int line = -1;
    EXPECT_TRUE(n.FindByName("c", line));
    EXPECT_EQ(line, 0);
    // The numbers of later lines are not shifted: "a" still points at line 0.
    EXPECT_TRUE(n.FindByName("a", line));
    EXPECT_EQ(line, 0);
    // Line 0 is "c=3" now; the value is read behind the length of "a=" in it.
    EXPECT_EQ(n.GetNamedValue("a"), "3");
}

TEST(NamedStrings, AddingAKnownNameFailsAfterTheLineWentIn) {
    TNamedStrings n;
    n.Add("a=1");
    n.EnterQuickSearchMode();
    EXPECT_THROW(n.Add("A=2"), rtl::EStringListError);
    EXPECT_EQ(n.Count(), 2);
    // Outside quick-search mode names may repeat.
    n.LeaveQuickSearchMode();
    EXPECT_NO_THROW(n.Add("a=3"));
}

TEST(NamedStrings, NamesThatOccurTwiceBothEnterThePreparedTable) {
    TNamedStrings n;
    n.Add("a=1");
    n.Add("a=2");
    n.EnterQuickSearchMode();
    EXPECT_EQ(n.SearchTable()->Count(), 2);
    EXPECT_EQ(n.GetSearchText().substr(0, 2), "\r\n");
}

TEST(NamedStrings, NewNameSetInQuickModeIsFoundOnlyAfterRebuilding) {
    TNamedStrings n;
    n.Add("a=1");
    n.EnterQuickSearchMode();
    n.SetNamedValue("b", "2");
    EXPECT_EQ(Lines(&n), (std::vector<std::string>{"a=1", "b=2"}));
    EXPECT_EQ(n.GetNamedValue("b"), "");
    n.LeaveQuickSearchMode();
    n.EnterQuickSearchMode();
    EXPECT_EQ(n.GetNamedValue("b"), "2");
    // A known name changes in place.
    n.SetNamedValue("a", "9");
    EXPECT_EQ(n.Strings(0), "a=9");
    EXPECT_EQ(n.GetNamedValue("a"), "9");
}

TEST(NamedStrings, EmptyValueDeletesTheLineButLeavesAStaleEntry) {
    TNamedStrings n;
    n.Add("a=1");
    n.Add("b=2");
    n.EnterQuickSearchMode();
    n.SetNamedValue("a", "");
    EXPECT_EQ(Lines(&n), (std::vector<std::string>{"b=2"}));
    // Delete searched the table with the whole line "a=1": no hit, so "a" still points at 0.
    int line = -1;
    EXPECT_TRUE(n.FindByName("a", line));
    EXPECT_EQ(line, 0);
    n.SetNamedValue("zzz", ""); // unknown name, empty value: nothing
    EXPECT_EQ(n.Count(), 1);
}

TEST(NamedStrings, DeleteOfALineThatEqualsANameRemovesThatEntry) {
    TNamedStrings n;
    n.Add("key=1");
    n.Add("key");
    n.EnterQuickSearchMode();
    n.Delete(1); // its whole text "key" is a name in the table
    int line = -1;
    EXPECT_FALSE(n.FindByName("key", line));
    EXPECT_EQ(n.Count(), 1);
}

TEST(NamedStrings, ExchangeAndMoveRenumberOnlyWholeLineHits) {
    TNamedStrings n;
    n.Add("a=1");
    n.Add("b");
    n.Add("b=2");
    n.EnterQuickSearchMode();
    n.Exchange(1, 2); // "b" moves to 2, "b=2" to 1
    int line = -1;
    ASSERT_TRUE(n.FindByName("b", line));
    EXPECT_EQ(line, 2); // renumbered by the line "b"
    ASSERT_TRUE(n.FindByName("a", line));
    EXPECT_EQ(line, 0);
    n.Move(2, 0); // "b" to the top
    EXPECT_EQ(Lines(&n), (std::vector<std::string>{"b", "a=1", "b=2"}));
    ASSERT_TRUE(n.FindByName("b", line));
    EXPECT_EQ(line, 0);
    ASSERT_TRUE(n.FindByName("a", line));
    EXPECT_EQ(line, 0); // a named line isn't renumbered: stale
}

TEST(NamedStrings, MoveOfANamedLineInQuickModeDoesNotFail) {
    TNamedStrings n;
    n.Add("a=1");
    n.Add("b=2");
    n.EnterQuickSearchMode();
    EXPECT_NO_THROW(n.Move(0, 1));
    EXPECT_EQ(Lines(&n), (std::vector<std::string>{"b=2", "a=1"}));
    EXPECT_EQ(n.SearchTable()->Count(), 2);
}

TEST(NamedStrings, ClearEmptiesTheTableAndAssignRebuildsIt) {
    TNamedStrings n;
    n.Add("a=1");
    n.EnterQuickSearchMode();
    n.Clear();
    EXPECT_EQ(n.SearchTable()->Count(), 0);
    rtl::TStringList src;
    src.Add("x=1");
    src.Add("y=2");
    n.Assign(&src);
    EXPECT_TRUE(n.GetQuickSearch());
    EXPECT_EQ(n.GetNamedValue("y"), "2");
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
    n.Add("b=1");
    n.Add("a=2");
    EXPECT_EQ(n.GetSearchText(), "\r\na[1]\r\nb[0]");
}

TEST(NamedStrings, NamesAnsiComparingSwitchesTheTable) {
    TNamedStrings n;
    EXPECT_TRUE(n.GetNamesAnsiComparing());
    n.SetNamesAnsiComparing(false);
    EXPECT_FALSE(n.SearchTable()->AnsiComparing());
    n.Add("\xE0=1"); // Cyrillic a
    n.EnterQuickSearchMode();
    EXPECT_EQ(n.GetNamedValue("\xC0"), "");
    n.SetNamesAnsiComparing(true);
    EXPECT_EQ(n.GetNamedValue("\xC0"), "1");
}

// --- TransformParams -------------------------------------------------------------------------

TEST(TransformParams, PureNameValueListsKeepEveryPair) {
    rtl::TStringList l;
    l.Add("a=1");
    l.Add("b=x=y");
    l.Add("c=");
    std::vector<TParamPair> p;
    TransformParams(&l, p);
    EXPECT_EQ(p, (std::vector<TParamPair>{{"a", "1"}, {"b", "x=y"}, {"c", ""}}));
}

TEST(TransformParams, BareLinesCutTheEndOfTheArray) {
    rtl::TStringList l;
    l.Add("a=1");
    l.Add("b");
    std::vector<TParamPair> p;
    TransformParams(&l, p);
    EXPECT_EQ(p, (std::vector<TParamPair>{{"a", "1"}}));
    l.Clear();
    l.Add("b");
    l.Add("a=1");
    TransformParams(&l, p);
    EXPECT_EQ(p, (std::vector<TParamPair>{{"", ""}})); // the named pair at the end is lost
    l.Clear();
    l.Add("=lead");
    TransformParams(&l, p);
    EXPECT_TRUE(p.empty());
}

TEST(TransformParams, ExCallsTheProcedureForNamedLines) {
    rtl::TStringList l;
    l.Add("b");
    l.Add("a=1");
    l.Add("=x");
    l.Add("c=2=3");
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
