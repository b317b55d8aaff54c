// TList and TStringList: bounds and their errors, sorted lists with each duplicates mode,
// Find on duplicates, names and values, the text and delimited forms, events, owned objects.
#include "rtl/Lists.h"
#include "rtl/CodePage.h"
#include "rtl/Streams.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <unistd.h>

using namespace rtl;
using rtltest::MessageOf;

namespace {

std::string W(const char* utf8) {
    return Utf8ToCp1251(utf8);
}

std::vector<std::string> Lines(const TStrings& s) {
    std::vector<std::string> r;
    for (int i = 0; i < s.Count(); ++i)
        r.push_back(s[i]);
    return r;
}

using V = std::vector<std::string>;

int g_alive = 0;
class TCounted : public TObject {
public:
    TCounted() { ++g_alive; }
    ~TCounted() override { --g_alive; }
};

class TListener : public TObject {
    RTL_CLASS(TListener, TObject)
public:
    void Changing(TObject* sender) {
        ++changing;
        lastSender = sender;
    }
    void Changed(TObject* sender) { ++changed; }
    int changing = 0, changed = 0;
    TObject* lastSender = nullptr;
};

// A list that frees its items as they leave it, as the platform's object lists do.
class TOwningList : public TList {
public:
    ~TOwningList() override { Clear(); }

protected:
    void Notify(void* ptr, TListNotification action) override {
        if (action == lnDeleted) delete static_cast<TCounted*>(ptr);
    }
};

} // namespace

RTL_IMPLEMENT_CLASS(TListener)

// ---------------------------------------------------------------------------------------------
// TList

TEST(List, AddInsertDeleteKeepOrder) {
    int a, b, c, d;
    TList l;
    EXPECT_EQ(l.Add(&a), 0);
    EXPECT_EQ(l.Add(&c), 1);
    l.Insert(1, &b);
    l.Insert(3, &d);
    ASSERT_EQ(l.Count(), 4);
    EXPECT_EQ(l[0], &a);
    EXPECT_EQ(l.Items(1), &b);
    EXPECT_EQ(l.First(), &a);
    EXPECT_EQ(l.Last(), &d);
    EXPECT_EQ(l.IndexOf(&c), 2);
    EXPECT_EQ(l.IndexOf(nullptr), -1);
    EXPECT_EQ(l.Remove(&b), 1);
    EXPECT_EQ(l.Remove(&b), -1);
    l.Exchange(0, 2);
    EXPECT_EQ(l[0], &d);
    EXPECT_EQ(l[2], &a);
    l.Move(0, 2);
    EXPECT_EQ(l[0], &c);
    EXPECT_EQ(l[2], &d);
    EXPECT_EQ(l.Extract(&c), &c);
    EXPECT_EQ(l.Extract(&c), nullptr);
    l.Delete(0);
    ASSERT_EQ(l.Count(), 1);
    EXPECT_EQ(l[0], &d);
    l.SetItems(0, &b);
    EXPECT_EQ(l[0], &b);
}

TEST(List, BadIndexesRaiseWithTheIndex) {
    int a;
    TList l;
    EXPECT_EQ(MessageOf<EListError>([&] { l.First(); }), "List index out of bounds (0)");
    l.Add(&a);
    EXPECT_EQ(MessageOf<EListError>([&] { l.Get(1); }), "List index out of bounds (1)");
    EXPECT_EQ(MessageOf<EListError>([&] { l.Delete(-1); }), "List index out of bounds (-1)");
    EXPECT_EQ(MessageOf<EListError>([&] { l.Insert(2, &a); }), "List index out of bounds (2)");
    EXPECT_THROW(l.Exchange(0, 5), EListError);
    EXPECT_THROW(l.Move(0, 1), EListError);
    EXPECT_THROW(l.Put(3, nullptr), EListError);
    EXPECT_EQ(l.Count(), 1);
}

TEST(List, CapacityAndCount) {
    TList l;
    EXPECT_EQ(l.Capacity(), 0);
    l.Add(nullptr);
    EXPECT_GE(l.Capacity(), 1);
    for (int i = 0; i < 100; ++i)
        l.Add(nullptr);
    EXPECT_GE(l.Capacity(), l.Count());
    EXPECT_EQ(MessageOf<EListError>([&] { l.SetCapacity(5); }), "List capacity out of bounds (5)");
    EXPECT_THROW(l.SetCapacity(MaxListSize + 1), EListError);
    EXPECT_EQ(MessageOf<EListError>([&] { l.SetCount(-1); }), "List count out of bounds (-1)");
    l.SetCount(3);
    EXPECT_EQ(l.Count(), 3);
    l.SetCount(6);
    EXPECT_EQ(l[5], nullptr);
    l.SetCapacity(6);
    EXPECT_EQ(l.Capacity(), 6);
    l.Expand();
    EXPECT_GT(l.Capacity(), 6);
    l.Clear();
    EXPECT_EQ(l.Count(), 0);
    EXPECT_EQ(l.Capacity(), 0);
}

TEST(List, SortAndPack) {
    int v[5] = {3, 1, 4, 1, 5};
    TList l;
    for (int& x : v)
        l.Add(&x);
    l.Add(nullptr);
    l.Pack();
    EXPECT_EQ(l.Count(), 5);
    l.Sort([](void* a, void* b) { return *static_cast<int*>(a) - *static_cast<int*>(b); });
    std::vector<int> got;
    for (int i = 0; i < l.Count(); ++i)
        got.push_back(*static_cast<int*>(l[i]));
    EXPECT_EQ(got, (std::vector<int>{1, 1, 3, 4, 5}));
    // Equal items keep their order.
    EXPECT_EQ(l[0], &v[1]);
    EXPECT_EQ(l[1], &v[3]);
    // A compare that is no order at all leaves the items a permutation of themselves.
    l.Sort([](void*, void*) { return std::rand() % 3 - 1; });
    EXPECT_EQ(l.Count(), 5);
    for (int& x : v)
        EXPECT_GE(l.IndexOf(&x), 0);
}

TEST(List, NotifyLetsDescendantsOwnItems) {
    {
        TOwningList l;
        l.Add(new TCounted);
        l.Add(new TCounted);
        auto* kept = new TCounted;
        l.Add(kept);
        EXPECT_EQ(g_alive, 3);
        l.Delete(0);
        EXPECT_EQ(g_alive, 2);
        EXPECT_EQ(l.Extract(kept), kept); // extracted, not freed
        EXPECT_EQ(g_alive, 2);
        delete kept;
    }
    EXPECT_EQ(g_alive, 0);
}

// ---------------------------------------------------------------------------------------------
// TStringList: storage and bounds

TEST(StringList, AddInsertDeleteWithObjects) {
    TObject o1, o2;
    TStringList l;
    l.Add("one");
    l.AddObject("two", &o1);
    l.InsertObject(0, "zero", &o2);
    l.Insert(3, "three");
    EXPECT_EQ(Lines(l), (V{"zero", "one", "two", "three"}));
    EXPECT_EQ(l.Objects(0), &o2);
    EXPECT_EQ(l.Objects(2), &o1);
    EXPECT_EQ(l.IndexOfObject(&o1), 2);
    EXPECT_EQ(l.IndexOfObject(nullptr), 1);
    l.SetStrings(1, "uno");
    EXPECT_EQ(l.Strings(1), "uno");
    l.SetObjects(1, &o1);
    EXPECT_EQ(l.Objects(1), &o1);
    l.Delete(0);
    EXPECT_EQ(Lines(l), (V{"uno", "two", "three"}));
    EXPECT_EQ(l.IndexOf("TWO"), 1); // case-insensitive by default
    EXPECT_EQ(l.IndexOf("four"), -1);
}

TEST(StringList, BadIndexesRaiseStringListError) {
    TStringList l;
    l.Add("a");
    EXPECT_EQ(MessageOf<EStringListError>([&] { l.Strings(1); }), "List index out of bounds (1)");
    EXPECT_EQ(MessageOf<EStringListError>([&] { l.Delete(-2); }), "List index out of bounds (-2)");
    EXPECT_EQ(MessageOf<EStringListError>([&] { l.Insert(5, "x"); }),
              "List index out of bounds (5)");
    EXPECT_THROW(l.Objects(3), EStringListError);
    EXPECT_THROW(l.SetObjects(1, nullptr), EStringListError);
    EXPECT_THROW(l.Exchange(0, 1), EStringListError);
    EXPECT_THROW(l.Move(0, 1), EStringListError);
    EXPECT_THROW(l.SetCapacity(0), EStringListError);
    EXPECT_EQ(Lines(l), (V{"a"}));
}

// ---------------------------------------------------------------------------------------------
// Sorted lists

TEST(StringListSorted, AddKeepsOrderAndIgnoresDuplicatesByDefault) {
    TStringList l;
    l.SetSorted(true);
    EXPECT_EQ(l.Duplicates, dupIgnore);
    l.Add("pear");
    l.Add("apple");
    l.Add("Banana");
    EXPECT_EQ(l.Add("APPLE"), 0); // an equal string: the existing one's index
    TObject o;
    EXPECT_EQ(l.AddObject("banana", &o), 1);
    EXPECT_EQ(l.Objects(1), nullptr); // the existing line keeps its object
    EXPECT_EQ(Lines(l), (V{"apple", "Banana", "pear"}));
}

TEST(StringListSorted, DupAcceptKeepsAllAndFindAnswersTheFirst) {
    TStringList l;
    l.Duplicates = dupAccept;
    l.SetSorted(true);
    for (const char* s : {"b", "a", "B", "c", "b", "A"})
        l.Add(s);
    EXPECT_EQ(l.Count(), 6);
    // A new duplicate goes before the equal strings already there.
    TObject marker;
    EXPECT_EQ(l.AddObject("B", &marker), 2);
    EXPECT_EQ(l.Objects(2), &marker);
    l.Delete(2);
    int index = -1;
    EXPECT_TRUE(l.Find("b", index));
    EXPECT_EQ(index, 2);
    for (int i = 2; i < 5; ++i)
        EXPECT_TRUE(SameText(l[i], "b"));
    EXPECT_TRUE(l.Find("A", index));
    EXPECT_EQ(index, 0);
    EXPECT_EQ(l.IndexOf("c"), 5);
    EXPECT_FALSE(l.Find("bb", index));
    EXPECT_EQ(index, 5);
    EXPECT_FALSE(l.Find("0", index));
    EXPECT_EQ(index, 0);
    EXPECT_FALSE(l.Find("z", index));
    EXPECT_EQ(index, 6);
    // A long run of equal strings still gives the first.
    TStringList many;
    many.Duplicates = dupAccept;
    many.SetSorted(true);
    many.Add("a");
    for (int i = 0; i < 100; ++i)
        many.Add("m");
    many.Add("z");
    EXPECT_TRUE(many.Find("M", index));
    EXPECT_EQ(index, 1);
}

TEST(StringListSorted, DupErrorRaisesAndLeavesTheList) {
    TStringList l;
    l.Duplicates = dupError;
    l.SetSorted(true);
    l.Add("x");
    l.Add("y");
    EXPECT_EQ(MessageOf<EStringListError>([&] { l.Add("X"); }),
              "String list does not allow duplicates");
    EXPECT_EQ(Lines(l), (V{"x", "y"}));
    // An unsorted list accepts duplicates whatever the mode.
    TStringList u;
    u.Duplicates = dupError;
    u.Add("x");
    u.Add("x");
    EXPECT_EQ(u.Count(), 2);
}

TEST(StringListSorted, CaseSensitiveOrdersLowerBeforeUpper) {
    TStringList l;
    l.SetCaseSensitive(true);
    l.SetSorted(true);
    for (const char* s : {"b", "A", "a", "B"})
        l.Add(s);
    EXPECT_EQ(Lines(l), (V{"a", "A", "b", "B"}));
    EXPECT_EQ(l.IndexOf("A"), 1);
    EXPECT_EQ(l.IndexOf("c"), -1);
    // Turning case sensitivity off re-sorts and then folds.
    l.SetCaseSensitive(false);
    int index;
    EXPECT_TRUE(l.Find("B", index));
    EXPECT_TRUE(SameText(l[index], "b"));
}

TEST(StringListSorted, CyrillicSortsAfterLatinInAlphabeticalOrder) {
    TStringList l;
    l.SetSorted(true);
    for (const char* s : {"жук", "ёж", "ель", "zebra", "Яблоко", "арбуз"})
        l.Add(W(s));
    EXPECT_EQ(Lines(l), (V{"zebra", W("арбуз"), W("ель"), W("ёж"), W("жук"), W("Яблоко")}));
    EXPECT_EQ(l.IndexOf(W("ЁЖ")), 3);
}

TEST(StringListSorted, RejectsPositionalEdits) {
    TStringList l;
    l.Add("b");
    l.Add("a");
    l.SetSorted(true);
    EXPECT_EQ(Lines(l), (V{"a", "b"}));
    EXPECT_EQ(MessageOf<EStringListError>([&] { l.Insert(0, "c"); }),
              "Operation not allowed on sorted string list");
    EXPECT_THROW(l.SetStrings(0, "z"), EStringListError);
    EXPECT_THROW(l.Move(0, 1), EStringListError);
    EXPECT_EQ(Lines(l), (V{"a", "b"}));
    l.SetSorted(false);
    l.Insert(0, "c");
    EXPECT_EQ(Lines(l), (V{"c", "a", "b"}));
}

TEST(StringList, SortAndCustomSort) {
    TStringList l;
    for (const char* s : {"ccc", "a", "BB", "dddd", "b"})
        l.Add(s);
    l.Sort();
    EXPECT_EQ(Lines(l), (V{"a", "b", "BB", "ccc", "dddd"}));
    EXPECT_FALSE(l.Sorted());
    l.CustomSort([](TStringList* list, int i1, int i2) {
        return static_cast<int>(list->Strings(i2).size()) -
               static_cast<int>(list->Strings(i1).size());
    });
    EXPECT_EQ(Lines(l), (V{"dddd", "ccc", "BB", "a", "b"}));
}

// ---------------------------------------------------------------------------------------------
// Positional operations

TEST(StringList, ExchangeAndMoveCarryObjects) {
    TObject o1, o2;
    TStringList l;
    l.AddObject("a", &o1);
    l.AddObject("b", &o2);
    l.Add("c");
    l.Exchange(0, 1);
    EXPECT_EQ(Lines(l), (V{"b", "a", "c"}));
    EXPECT_EQ(l.Objects(0), &o2);
    EXPECT_EQ(l.Objects(1), &o1);
    l.Move(0, 2);
    EXPECT_EQ(Lines(l), (V{"a", "c", "b"}));
    EXPECT_EQ(l.Objects(2), &o2);
    l.Move(2, 0);
    EXPECT_EQ(Lines(l), (V{"b", "a", "c"}));
}

// ---------------------------------------------------------------------------------------------
// Names and values

TEST(StringList, NamesAndValues) {
    TStringList l;
    l.SetText("Width=100\r\nCaption=Hello=World\r\nplain\r\nwidth=7\r\n=empty name");
    EXPECT_EQ(l.Names(0), "Width");
    EXPECT_EQ(l.Names(2), "");
    EXPECT_EQ(l.Values("WIDTH"), "100"); // the first line of that name, case-insensitive
    EXPECT_EQ(l.Values("Caption"), "Hello=World");
    EXPECT_EQ(l.Values("missing"), "");
    EXPECT_EQ(l.ValueFromIndex(1), "Hello=World");
    EXPECT_EQ(l.ValueFromIndex(2), "");
    EXPECT_EQ(l.IndexOfName("caption"), 1);
    EXPECT_EQ(l.IndexOfName("plain"), -1);
    EXPECT_EQ(l.IndexOfName(""), 4);

    l.SetValue("Caption", "Bye");
    EXPECT_EQ(l[1], "Caption=Bye");
    l.SetValue("Height", "20");
    EXPECT_EQ(l[l.Count() - 1], "Height=20");
    l.SetValue("Width", "");
    EXPECT_EQ(l.IndexOfName("Width"), 2); // the first Width went; the second "width" moves up
    EXPECT_EQ(l.Values("Width"), "7");
    l.SetValue("nothing", "");
    EXPECT_EQ(l.Count(), 5);
    l.SetValueFromIndex(0, "Hi");
    EXPECT_EQ(l[0], "Caption=Hi");
    l.SetValueFromIndex(0, "");
    EXPECT_EQ(l.IndexOfName("Caption"), -1);

    l.NameValueSeparator = ':';
    l.Clear();
    l.Add("key:value");
    EXPECT_EQ(l.Values("key"), "value");
}

// ---------------------------------------------------------------------------------------------
// Text forms

TEST(StringListText, WritesCrLfAndReadsEveryBreak) {
    TStringList l;
    l.Add("a");
    l.Add("");
    l.Add("b");
    EXPECT_EQ(l.Text(), "a\r\n\r\nb\r\n");
    l.SetText("one\ntwo\rthree\r\nfour");
    EXPECT_EQ(Lines(l), (V{"one", "two", "three", "four"}));
    l.SetText("x\r\n");
    EXPECT_EQ(Lines(l), (V{"x"}));
    l.SetText("x\r\n\r\n");
    EXPECT_EQ(Lines(l), (V{"x", ""}));
    l.SetText("\n");
    EXPECT_EQ(Lines(l), (V{""}));
    l.SetText("");
    EXPECT_EQ(l.Count(), 0);
    EXPECT_EQ(l.GetText(), "");
}

TEST(StringListText, RoundTrips) {
    TStringList a, b;
    for (const char* s : {"first", "", "  indented", "tab\tinside", "", "last"})
        a.Add(s);
    b.SetText(a.GetText());
    EXPECT_TRUE(a.Equals(&b));
    b.SetCommaText(a.GetCommaText());
    EXPECT_TRUE(a.Equals(&b));
    a.Delimiter = ';';
    a.QuoteChar = '\'';
    b.Delimiter = ';';
    b.QuoteChar = '\'';
    b.SetDelimitedText(a.GetDelimitedText());
    EXPECT_TRUE(a.Equals(&b));
}

TEST(StringListText, CommaText) {
    TStringList l;
    for (const char* s : {"a", "b c", "d\"e", "", "f,g"})
        l.Add(s);
    EXPECT_EQ(l.GetCommaText(), "a,\"b c\",\"d\"\"e\",,\"f,g\"");
    l.Clear();
    l.Add("");
    EXPECT_EQ(l.GetCommaText(), "\"\"");
    l.SetCommaText("\"\"");
    EXPECT_EQ(Lines(l), (V{""}));
    // Blanks outside quotes separate items, as on the platform.
    l.SetCommaText("  a b,c  , \"x, y\" ,z");
    EXPECT_EQ(Lines(l), (V{"a", "b", "c", "x, y", "z"}));
    l.SetCommaText("a,");
    EXPECT_EQ(Lines(l), (V{"a", ""}));
    l.SetCommaText("a,,b");
    EXPECT_EQ(Lines(l), (V{"a", "", "b"}));
    l.SetCommaText("\"open");
    EXPECT_EQ(Lines(l), (V{"open"}));
    l.SetCommaText("");
    EXPECT_EQ(l.Count(), 0);
    l.SetCommaText(std::string("a,b\0,c", 7));
    EXPECT_EQ(Lines(l), (V{"a", "b"}));
}

TEST(StringListText, DelimitedTextUsesDelimiterAndQuoteChar) {
    TStringList l;
    l.Delimiter = '|';
    l.QuoteChar = '\'';
    l.SetDelimitedText("a|'b|c'|'it''s'");
    EXPECT_EQ(Lines(l), (V{"a", "b|c", "it's"}));
    EXPECT_EQ(l.GetDelimitedText(), "a|'b|c'|'it''s'");
    // The comma form ignores both.
    EXPECT_EQ(l.GetCommaText(), "a,b|c,it's");
}

// ---------------------------------------------------------------------------------------------
// Assign, events, ownership, streams

TEST(StringList, AssignAddStringsEquals) {
    TObject o;
    TStringList a, b;
    a.AddObject("x", &o);
    a.Add("y");
    a.Delimiter = ';';
    b.Add("old");
    b.Assign(&a);
    EXPECT_EQ(Lines(b), (V{"x", "y"}));
    EXPECT_EQ(b.Objects(0), &o);
    EXPECT_EQ(b.Delimiter, ';');
    EXPECT_TRUE(a.Equals(&b));
    b.AddStrings(&a);
    EXPECT_EQ(Lines(b), (V{"x", "y", "x", "y"}));
    EXPECT_FALSE(a.Equals(&b));
    TStringList c;
    c.Add("X");
    c.Add("Y");
    EXPECT_FALSE(a.Equals(&c)); // case-sensitive
    TPersistent other;
    EXPECT_THROW(b.Assign(&other), EConvertError);
}

TEST(StringList, ChangeEventsFireAroundChangesAndUpdateBlocks) {
    TListener listener;
    TStringList l;
    l.OnChanging = TNotifyEvent::Of<&TListener::Changing>(&listener);
    l.OnChange = TNotifyEvent::Of<&TListener::Changed>(&listener);
    l.Add("a");
    EXPECT_EQ(listener.changing, 1);
    EXPECT_EQ(listener.changed, 1);
    EXPECT_EQ(listener.lastSender, &l);
    l.BeginUpdate();
    l.Add("b");
    l.Add("c");
    l.BeginUpdate();
    l.Delete(0);
    l.EndUpdate();
    EXPECT_EQ(listener.changed, 1);
    l.EndUpdate();
    EXPECT_EQ(listener.changing, 2);
    EXPECT_EQ(listener.changed, 2);
    l.SetText("x\r\ny\r\nz");
    EXPECT_EQ(listener.changed, 3); // one notification for the whole text
    l.EndUpdate();                  // unbalanced: no effect
    EXPECT_EQ(listener.changed, 3);
    // Failed operations change nothing and notify nothing.
    EXPECT_THROW(l.Delete(9), EStringListError);
    EXPECT_EQ(listener.changed, 3);
}

TEST(StringList, OwnsObjectsFreesWhatItDeletes) {
    {
        TStringList l(true);
        l.AddObject("a", new TCounted);
        l.AddObject("b", new TCounted);
        l.AddObject("c", new TCounted);
        EXPECT_EQ(g_alive, 3);
        l.Delete(1);
        EXPECT_EQ(g_alive, 2);
        l.Clear();
        EXPECT_EQ(g_alive, 0);
        l.AddObject("d", new TCounted);
    }
    EXPECT_EQ(g_alive, 0);
    TStringList notOwning;
    TCounted kept;
    notOwning.AddObject("k", &kept);
    notOwning.Clear();
    EXPECT_EQ(g_alive, 1);
}

TEST(StringList, StreamsAndFiles) {
    TStringList l;
    l.Add("alpha");
    l.Add(W("бета"));
    TStringStream out;
    l.SaveToStream(&out);
    EXPECT_EQ(out.DataString(), "alpha\r\n" + W("бета") + "\r\n");

    // Loading reads from the stream's position to its end.
    TStringStream in("skip|one\ntwo");
    in.SetPosition(5);
    TStringList r;
    r.LoadFromStream(&in);
    EXPECT_EQ(Lines(r), (V{"one", "two"}));

    char tmpl[] = "/tmp/rtl_lists_XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    std::string file = std::string(tmpl) + "/l.txt";
    l.SaveToFile(file);
    TStringList f;
    f.LoadFromFile(file);
    EXPECT_TRUE(f.Equals(&l));
    EXPECT_THROW(f.LoadFromFile(std::string(tmpl) + "/missing.txt"), EFOpenError);
    EXPECT_THROW(l.SaveToFile(std::string(tmpl) + "/no/dir.txt"), EFCreateError);
    std::remove(file.c_str());
    rmdir(tmpl);
}
