// TList and TStringList: bounds and their errors, sorted lists with each duplicates mode,
// Find on duplicates, names and values, the text and delimited forms, events, owned objects.
#include "rtl/SysUtils.h"

#include "TestSupport.h"

using namespace rtl;
using namespace rtltest;

namespace {

// A string list of the given lines, sorted or not, with the given duplicates mode.
struct TFilled : TStringList {
    explicit TFilled(const V& lines, bool sorted = false, TDuplicates dup = dupIgnore) {
        Duplicates = dup;
        SetSorted(sorted);
        for (const auto& l : lines)
            Add(l);
    }
};

// The objects of a list, line by line.
std::vector<TObject*> Objects(const TStrings& s) {
    std::vector<TObject*> r;
    for (int i = 0; i < s.Count(); ++i)
        r.push_back(s.Objects(i));
    return r;
}

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

} // namespace

RTL_IMPLEMENT_CLASS(TListener)

// ---------------------------------------------------------------------------------------------
// TList

TEST(List, AddInsertDeleteKeepOrder) {
    int a, b, c, d;
    TList l;
    auto items = [&l] {
        std::vector<void*> r;
        for (int i = 0; i < l.Count(); ++i)
            r.push_back(l[i]);
        return r;
    };
    EXPECT_EQ(l.Add(&a), 0);
    EXPECT_EQ(l.Add(&c), 1);
    l.Insert(1, &b);
    l.Insert(3, &d);
    EXPECT_EQ(items(), std::vector<void*>({&a, &b, &c, &d}));
    EXPECT_EQ(std::vector<void*>({l.Items(1), l.First(), l.Last()}),
              std::vector<void*>({&b, &a, &d}));
    EXPECT_EQ(std::vector<int>({l.IndexOf(&c), l.IndexOf(nullptr), l.Remove(&b), l.Remove(&b)}),
              std::vector<int>({2, -1, 1, -1}));
    l.Exchange(0, 2);
    EXPECT_EQ(items(), std::vector<void*>({&d, &c, &a}));
    l.Move(0, 2);
    EXPECT_EQ(items(), std::vector<void*>({&c, &a, &d}));
    EXPECT_EQ(l.Extract(&c), &c);
    EXPECT_EQ(l.Extract(&c), nullptr);
    l.Delete(0);
    EXPECT_EQ(items(), std::vector<void*>({&d}));
    l.SetItems(0, &b);
    EXPECT_EQ(l[0], &b);
}

TEST(List, BadIndexesRaiseWithTheIndex) {
    int a;
    TList l;
    EXPECT_EQ(MessageOf<EListError>([&] { l.First(); }), "List index out of bounds (0)");
    l.Add(&a);
    EXPECT_EQ(
        V({MessageOf<EListError>([&] { l.Get(1); }), MessageOf<EListError>([&] { l.Delete(-1); }),
           MessageOf<EListError>([&] { l.Insert(2, &a); })}),
        V({"List index out of bounds (1)", "List index out of bounds (-1)",
           "List index out of bounds (2)"}));
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
    // Equal items keep their order.
    int v[5] = {3, 1, 4, 1, 5};
    TList l;
    for (int& x : v)
        l.Add(&x);
    l.Add(nullptr);
    l.Pack();
    EXPECT_EQ(l.Count(), 5);
    l.Sort([](void* a, void* b) { return *static_cast<int*>(a) - *static_cast<int*>(b); });
    std::vector<int*> got;
    for (int i = 0; i < l.Count(); ++i)
        got.push_back(static_cast<int*>(l[i]));
    EXPECT_EQ(got, std::vector<int*>({&v[1], &v[3], &v[0], &v[2], &v[4]}));
    // A compare that is no order at all leaves the items a permutation of themselves.
    l.Sort([](void*, void*) { return std::rand() % 3 - 1; });
    EXPECT_EQ(l.Count(), 5);
    for (int& x : v)
        EXPECT_GE(l.IndexOf(&x), 0);
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
    EXPECT_EQ(Objects(l), std::vector<TObject*>({&o2, nullptr, &o1, nullptr}));
    EXPECT_EQ(l.IndexOfObject(&o1), 2);
    EXPECT_EQ(l.IndexOfObject(nullptr), 1);
    l.SetStrings(1, "uno");
    l.SetObjects(1, &o1);
    EXPECT_EQ(l.Strings(1), "uno");
    EXPECT_EQ(l.Objects(1), &o1);
    EXPECT_EQ(l.IndexOf("TWO"), 2); // case-insensitive by default
}

TEST(StringList, BadIndexesRaiseStringListError) {
    TFilled l({"a"});
    EXPECT_EQ(V({MessageOf<EStringListError>([&] { l.Strings(1); }),
                 MessageOf<EStringListError>([&] { l.Delete(-2); }),
                 MessageOf<EStringListError>([&] { l.Insert(5, "x"); })}),
              V({"List index out of bounds (1)", "List index out of bounds (-2)",
                 "List index out of bounds (5)"}));
    EXPECT_THROW(l.Objects(3), EStringListError);
    EXPECT_THROW(l.SetObjects(1, nullptr), EStringListError);
    EXPECT_THROW(l.Exchange(0, 1), EStringListError);
    EXPECT_THROW(l.Move(0, 1), EStringListError);
    EXPECT_THROW(l.SetCapacity(0), EStringListError);
    EXPECT_EQ(Lines(l), (V{"a"}));
}

// ---------------------------------------------------------------------------------------------
// Sorted lists

TEST(StringListSorted, DuplicatesAreIgnoredByDefaultOrRefused) {
    TFilled l({"pear", "apple", "Banana"}, true);
    EXPECT_EQ(l.Duplicates, dupIgnore);
    EXPECT_EQ(l.Add("APPLE"), 0); // an equal string: the existing one's index
    TObject o;
    EXPECT_EQ(l.AddObject("banana", &o), 1);
    EXPECT_EQ(l.Objects(1), nullptr); // the existing line keeps its object
    EXPECT_EQ(Lines(l), (V{"apple", "Banana", "pear"}));
    // Asked to, it refuses them instead.
    TFilled strict({"x", "y"}, true, dupError);
    EXPECT_EQ(MessageOf<EStringListError>([&] { strict.Add("X"); }),
              "String list does not allow duplicates");
    EXPECT_EQ(Lines(strict), (V{"x", "y"}));
    // An unsorted list accepts duplicates whatever the mode.
    TFilled u({"x", "x"}, false, dupError);
    EXPECT_EQ(u.Count(), 2);
}

TEST(StringListSorted, DupAcceptKeepsAllAndFindAnswersTheFirst) {
    TFilled l({"b", "a", "B", "c", "b", "A"}, true, dupAccept);
    EXPECT_EQ(l.Count(), 6);
    // A new duplicate goes before the equal strings already there.
    TObject marker;
    EXPECT_EQ(l.AddObject("B", &marker), 2);
    EXPECT_EQ(l.Objects(2), &marker);
    l.Delete(2);
    // Each search as found or not, and the index it answers.
    V found;
    for (const char* s : {"b", "A", "bb", "0", "z"}) {
        int index = -1;
        const bool isThere = l.Find(s, index);
        found.push_back((isThere ? "+" : "-") + std::to_string(index));
    }
    EXPECT_EQ(found, V({"+2", "+0", "-5", "-0", "-6"}));
    // A long run of equal strings still gives the first.
    TFilled many({"a"}, true, dupAccept);
    for (int i = 0; i < 100; ++i)
        many.Add("m");
    many.Add("z");
    int index = -1;
    EXPECT_TRUE(many.Find("M", index));
    EXPECT_EQ(index, 1);
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
    TFilled l({W("жук"), W("ёж"), W("ель"), "zebra", W("Яблоко"), W("арбуз")}, true);
    EXPECT_EQ(Lines(l), (V{"zebra", W("арбуз"), W("ель"), W("ёж"), W("жук"), W("Яблоко")}));
    EXPECT_EQ(l.IndexOf(W("ЁЖ")), 3);
}

TEST(StringList, ExchangeAndMoveCarryObjects) {
    TObject o1, o2;
    TStringList l;
    l.AddObject("a", &o1);
    l.AddObject("b", &o2);
    l.Add("c");
    l.Exchange(0, 1);
    EXPECT_EQ(Lines(l), (V{"b", "a", "c"}));
    EXPECT_EQ(Objects(l), std::vector<TObject*>({&o2, &o1, nullptr}));
    l.Move(0, 2);
    EXPECT_EQ(Lines(l), (V{"a", "c", "b"}));
    EXPECT_EQ(l.Objects(2), &o2);
    l.Move(2, 0);
    EXPECT_EQ(Lines(l), (V{"b", "a", "c"}));
}

// ---------------------------------------------------------------------------------------------
// Names and values

TEST(StringList, NamesAndValues) {
    // Values of a name are the first line's of that name, case-insensitive.
    TStringList l;
    l.SetText("Width=100\r\nCaption=Hello=World\r\nplain\r\nwidth=7\r\n=empty name");
    EXPECT_EQ(V({l.Names(0), l.Names(2), l.Values("WIDTH"), l.Values("Caption"),
                 l.Values("missing"), l.ValueFromIndex(1), l.ValueFromIndex(2)}),
              V({"Width", "", "100", "Hello=World", "", "Hello=World", ""}));
    EXPECT_EQ(
        std::vector<int>({l.IndexOfName("caption"), l.IndexOfName("plain"), l.IndexOfName("")}),
        std::vector<int>({1, -1, 4}));
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
    EXPECT_EQ(TFilled({"a", "", "b"}).Text(), "a\r\n\r\nb\r\n");
    TStringList l;
    std::vector<V> read;
    for (const char* text : {"one\ntwo\rthree\r\nfour", "x\r\n", "x\r\n\r\n", "\n", ""}) {
        l.SetText(text);
        read.push_back(Lines(l));
    }
    EXPECT_EQ(read, std::vector<V>({{"one", "two", "three", "four"}, {"x"}, {"x", ""}, {""}, {}}));
    EXPECT_EQ(l.GetText(), "");
}

TEST(StringListText, CommaText) {
    EXPECT_EQ(TFilled({"a", "b c", "d\"e", "", "f,g"}).GetCommaText(),
              "a,\"b c\",\"d\"\"e\",,\"f,g\"");
    EXPECT_EQ(TFilled({""}).GetCommaText(), "\"\"");
    // Blanks outside quotes separate items, as on the platform; a NUL ends the text.
    std::vector<V> read;
    TStringList l;
    for (const std::string& text :
         {std::string("\"\""), std::string("  a b,c  , \"x, y\" ,z"), std::string("a,"),
          std::string("a,,b"), std::string("\"open"), std::string(), std::string("a,b\0,c", 7)}) {
        l.SetCommaText(text);
        read.push_back(Lines(l));
    }
    EXPECT_EQ(read, std::vector<V>({{""},
                                    {"a", "b", "c", "x, y", "z"},
                                    {"a", ""},
                                    {"a", "", "b"},
                                    {"open"},
                                    {},
                                    {"a", "b"}}));
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
    TFilled c({"X", "Y"});
    EXPECT_FALSE(a.Equals(&c)); // case-sensitive
    TPersistent other;
    EXPECT_THROW(b.Assign(&other), EConvertError);
}

TEST(StringList, ChangeEventsFireAroundChangesAndUpdateBlocks) {
    TListener listener;
    TStringList l;
    l.OnChanging = TNotifyEvent::Of<&TListener::Changing>(&listener);
    l.OnChange = TNotifyEvent::Of<&TListener::Changed>(&listener);
    auto counts = [&listener] { return std::pair(listener.changing, listener.changed); };
    l.Add("a");
    EXPECT_EQ(counts(), std::pair(1, 1));
    EXPECT_EQ(listener.lastSender, &l);
    l.BeginUpdate();
    l.Add("b");
    l.Add("c");
    l.BeginUpdate();
    l.Delete(0);
    l.EndUpdate();
    EXPECT_EQ(listener.changed, 1);
    l.EndUpdate();
    EXPECT_EQ(counts(), std::pair(2, 2));
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
        for (const char* s : {"a", "b", "c"})
            l.AddObject(s, new TCounted);
        EXPECT_EQ(g_alive, 3);
        l.Delete(1);
        EXPECT_EQ(g_alive, 2);
        l.Clear();
        EXPECT_EQ(g_alive, 0);
        l.AddObject("d", new TCounted);
    }
    EXPECT_EQ(g_alive, 0);
}

class StringListFiles : public TempDirTest {};

TEST_F(StringListFiles, StreamsAndFiles) {
    TFilled l({"alpha", W("бета")});
    TStringStream out;
    l.SaveToStream(&out);
    EXPECT_EQ(out.DataString(), "alpha\r\n" + W("бета") + "\r\n");
    // Loading reads from the stream's position to its end.
    TStringStream in("skip|one\ntwo");
    in.SetPosition(5);
    TStringList r;
    r.LoadFromStream(&in);
    EXPECT_EQ(Lines(r), (V{"one", "two"}));
    l.SaveToFile(Path("l.txt"));
    TStringList f;
    f.LoadFromFile(Path("l.txt"));
    EXPECT_TRUE(f.Equals(&l));
    EXPECT_THROW(f.LoadFromFile(Path("missing.txt")), EFOpenError);
    EXPECT_THROW(l.SaveToFile(Path("no/dir.txt")), EFCreateError);
}
