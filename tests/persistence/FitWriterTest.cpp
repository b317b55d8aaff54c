// The fit writer and reader: any persistent object as a root, every value written, the
// switches, the hook, the filtering writer's path rules, and reading into objects of any class.
#include "persistence/Storage.h"

#include "TestModel.h"
#include "rtl/ObjectText.h"

#include <gtest/gtest.h>

using namespace zelvane;
using namespace model;

namespace {

// Writes one object as a root with a writer set up by setup.
template <class W = TFitWriter, class Setup>
std::string WriteRoot(TPersistent* obj, const std::string& name, Setup&& setup) {
    TStringStream s;
    {
        W writer(&s);
        setup(writer);
        writer.WriteAsComponent(obj, name);
        writer.FlushBuffer();
    }
    return s.DataString();
}
std::string WriteRoot(TPersistent* obj, const std::string& name = "") {
    return WriteRoot(obj, name, [](TFitWriter&) {});
}

// The property names of a root object in the stream, in order.
std::vector<std::string> Names(const std::string& data) {
    TStringStream s(data);
    TReader r(&s);
    r.ReadSignature();
    r.ReadStr();
    r.ReadStr();
    std::vector<std::string> names;
    while (!r.EndOfList()) {
        names.push_back(r.ReadStr());
        r.SkipValue();
    }
    return names;
}

bool Has(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Reads one root object into obj.
std::string ReadRoot(TPersistent* obj, const std::string& data, bool ignoreErrors = false) {
    TStringStream s(data);
    TFitReader r(&s);
    r.IgnoreErrors = ignoreErrors;
    std::string name;
    r.ReadAsComponent(obj, name);
    EXPECT_EQ(r.Position(), s.GetSize()) << "the whole object is read";
    return name;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// The bytes

TEST(FitWriter, ThePlainObjectOfTheFormatExample) {
    TFoo foo;
    foo.Caption = "ab"; // Width stays 100, its default
    EXPECT_EQ(HexBytes(WriteRoot(&foo, "B")),
              "54 50 46 30 04 54 46 6F 6F 01 42 05 57 69 64 74 68 02 64 07 43 61 70 74 69 6F 6E "
              "06 02 61 62 00 00");
}

TEST(FitWriter, AnEmptyPropertyListIsSignatureTwoNamesAndTwoZeros) {
    TFoo foo;
    std::string data = WriteRoot(&foo, "", [](TFitWriter& w) {
        w.OnCanWriteProperty = nullptr;
        w.IgnoreStored = false;
    });
    // Everything is written; with every property refused only the frame remains.
    struct Refuser : TObject {
        void Refuse(TPersistent*, const std::string&, PPropInfo, bool& canWrite) {
            canWrite = false;
        }
    } refuser;
    std::string empty = WriteRoot(&foo, "", [&](TFitWriter& w) {
        w.OnCanWriteProperty = TCanWritePropertyEvent::Of<&Refuser::Refuse>(&refuser);
    });
    EXPECT_EQ(empty, "TPF0" + Short("TFoo") + Bytes({0, 0, 0}));
    EXPECT_EQ(Names(data), (std::vector<std::string>{"Width", "Caption"}));
}

TEST(FitWriter, EveryValueIsWrittenUnlikeThePlatformWriter) {
    TSample s; // every property at its default
    std::vector<std::string> names = Names(WriteRoot(&s));
    EXPECT_EQ(names,
              (std::vector<std::string>{"Count", "Letter", "Shape", "Shapes", "Ratio", "Stamp",
                                        "Day", "Clock", "Text", "Wide", "Big", "Data", "Color",
                                        "Flag", "Look.Size", "Look.Name", "Look.Color", "Child"}));
}

TEST(FitWriter, ValueTagsByKind) {
    TSample s;
    s.Count = 300;
    s.Letter = 'k';
    s.Shapes = {};
    s.Ratio = 0.5;
    s.Big = int64_t(1) << 40;
    s.Color = static_cast<TColor>(0x123456);
    std::string data = WriteRoot(&s);
    auto valueOf = [&](const std::string& name) {
        size_t at = data.find(Short(name));
        EXPECT_NE(at, std::string::npos) << name;
        return data.substr(at + name.size() + 1);
    };
    EXPECT_EQ(valueOf("Count").substr(0, 3), Bytes({3, 0x2C, 0x01}));
    EXPECT_EQ(valueOf("Letter").substr(0, 3), Bytes({6, 1, 'k'}));
    EXPECT_EQ(valueOf("Shape").substr(0, 10), Bytes({7, 8}) + "shCircle");
    EXPECT_EQ(valueOf("Shapes").substr(0, 2), Bytes({11, 0})) << "an empty set";
    EXPECT_EQ(valueOf("Ratio")[0], 5) << "floats are always extended";
    EXPECT_EQ(valueOf("Day")[0], 5);
    EXPECT_EQ(valueOf("Big")[0], 19);
    EXPECT_EQ(valueOf("Wide").substr(0, 5), Bytes({18, 0, 0, 0, 0}));
    EXPECT_EQ(valueOf("Data")[0], 13) << "an empty variant is nil";
    EXPECT_EQ(valueOf("Color").substr(0, 5), Bytes({4, 0x56, 0x34, 0x12, 0}));
    EXPECT_EQ(valueOf("Flag")[0], 8);
    EXPECT_EQ(valueOf("Child")[0], 13) << "a nil object is vaNil";

    s.Color = clRed;
    s.Shapes = {shRectangle, shTriangle};
    data = WriteRoot(&s);
    EXPECT_EQ(valueOf("Color").substr(0, 7), Bytes({7, 5}) + "clRed");
    EXPECT_EQ(valueOf("Shapes").substr(0, 25),
              Bytes({11}) + Short("shRectangle") + Short("shTriangle") + Bytes({0}));
}

TEST(FitWriter, LongStringsUseTheLongTag) {
    TFoo foo;
    foo.Caption = std::string(256, 'x');
    std::string data = WriteRoot(&foo);
    EXPECT_NE(data.find(Short("Caption") + Bytes({12, 0, 1, 0, 0}) + std::string(256, 'x')),
              std::string::npos);
    foo.Caption = std::string(255, 'y');
    data = WriteRoot(&foo);
    EXPECT_NE(data.find(Short("Caption") + Bytes({6, 255}) + std::string(255, 'y')),
              std::string::npos);
}

TEST(FitWriter, PropertiesThatCantBeReadBackNeverReachTheStream) {
    TSample s;
    s.Hidden = "secret";
    std::vector<std::string> names = Names(WriteRoot(&s));
    EXPECT_FALSE(Has(names, "ReadOnly"));
    EXPECT_FALSE(Has(names, "WriteOnly"));
    EXPECT_FALSE(Has(names, "Hidden")) << "stored false";
    names = Names(WriteRoot(&s, "", [](TFitWriter& w) { w.IgnoreStored = true; }));
    EXPECT_TRUE(Has(names, "Hidden"));
    EXPECT_FALSE(Has(names, "ReadOnly"));
    EXPECT_FALSE(Has(names, "WriteOnly"));
}

TEST(FitWriter, MethodsOnlyOnRequestAndOnlyWhenSet) {
    TSample s;
    EXPECT_FALSE(
        Has(Names(WriteRoot(&s, "", [](TFitWriter& w) { w.StoreMethods = true; })), "OnChange"))
        << "a nil handler writes nothing, not even the name";
    s.OnChange = TChangeEvent::Of<&TSample::Changed>(&s);
    EXPECT_FALSE(Has(Names(WriteRoot(&s)), "OnChange"));
    std::string data = WriteRoot(&s, "", [](TFitWriter& w) { w.StoreMethods = true; });
    EXPECT_NE(data.find(Short("OnChange") + Bytes({7}) + Short("Changed")), std::string::npos);

    // Reading binds the handler to the root object by its published name.
    TSample copy;
    ReadRoot(&copy, data);
    EXPECT_EQ(copy.OnChange, TChangeEvent::Of<&TSample::Changed>(&copy));

    // A handler that isn't a published method can't be named.
    struct Other : TObject {
        void Handler(TObject*) {}
    } other;
    s.OnChange = TChangeEvent::Of<&Other::Handler>(&other);
    EXPECT_THROW(WriteRoot(&s, "", [](TFitWriter& w) { w.StoreMethods = true; }), EFitWriterError);
}

TEST(FitWriter, SortedByNameOnRequest) {
    TFoo foo;
    EXPECT_EQ(Names(WriteRoot(&foo, "", [](TFitWriter& w) { w.SortProps = true; })),
              (std::vector<std::string>{"Caption", "Width"}));
}

TEST(FitWriter, NestedComponentsAreFlattenedNotReferenced) {
    TWidget main, buddy;
    main.SetName("Main");
    buddy.SetName("Buddy");
    buddy.Width = 7;
    main.Buddy = &buddy;
    main.GetLines()->Add("l1");
    std::vector<std::string> names = Names(WriteRoot(&main, "Main"));
    EXPECT_TRUE(Has(names, "Buddy.Width"));
    EXPECT_TRUE(Has(names, "Buddy.Look.Size"));
    EXPECT_TRUE(Has(names, "Lines.Strings")) << "a string list's lines as the defined property";
    EXPECT_TRUE(Has(names, "Buddy.Items"));
    EXPECT_FALSE(Has(names, "Buddy")) << "no reference";
}

TEST(FitWriter, CollectionsPropertiesStandAheadOfTheirItems) {
    TWidget w;
    static_cast<TItem*>(w.GetItems()->Add())->Caption = "a";
    w.GetItems()->Add();
    std::string data = WriteRoot(&w);
    std::string items = Short("Items") + Bytes({14}) + Bytes({1}) + Short("Caption") +
                        Bytes({6, 1, 'a'}) + Short("Width") + Bytes({2, 50, 0}) + Bytes({1}) +
                        Short("Caption") + Bytes({6, 0}) + Short("Width") + Bytes({2, 50, 0}) +
                        Bytes({0});
    EXPECT_NE(data.find(items), std::string::npos);

    TWidget copy;
    ReadRoot(&copy, data);
    ASSERT_EQ(copy.GetItems()->Count(), 2);
    EXPECT_EQ(static_cast<TItem*>(copy.GetItems()->GetItem(0))->Caption, "a");
}

TEST(FitWriter, DefinedPropertiesCanBeSwitchedOff) {
    TWidget w;
    w.GetLines()->Add("l1");
    EXPECT_FALSE(Has(Names(WriteRoot(&w, "", [](TFitWriter& w) { w.WriteDefinedProps = false; })),
                     "Lines.Strings"));
}

TEST(FitWriter, TheHookSeesEachPropertyWithItsOwnName) {
    struct Hook : TObject {
        std::vector<std::string> seen;
        void Check(TPersistent*, const std::string& name, PPropInfo p, bool& canWrite) {
            seen.push_back(name);
            EXPECT_EQ(p->Name, name);
            EXPECT_TRUE(canWrite);
            if (name == "Size") canWrite = false;
        }
    } hook;
    TSample s;
    std::vector<std::string> names = Names(WriteRoot(&s, "", [&](TFitWriter& w) {
        w.OnCanWriteProperty = TCanWritePropertyEvent::Of<&Hook::Check>(&hook);
    }));
    EXPECT_TRUE(Has(hook.seen, "Size"));
    EXPECT_FALSE(Has(names, "Look.Size"));
    EXPECT_TRUE(Has(names, "Look.Name"));
}

TEST(FitWriter, ObjectsThatHoldEachOtherFailCleanly) {
    TSample a, b;
    a.Child = &b;
    b.Child = &a;
    EXPECT_THROW(WriteRoot(&a), EFitWriterError);
}

TEST(FitWriter, NilRootsAreRefused) {
    TStringStream s;
    TFitWriter w(&s);
    EXPECT_THROW(w.WriteAsComponent(nullptr, "x"), EFitWriterError);
}

// ---------------------------------------------------------------------------------------------
// TFilteringWriter

namespace {
template <class F> std::vector<std::string> Filtered(TPersistent* obj, F&& setup) {
    return Names(WriteRoot<TFilteringWriter>(obj, "Root", setup));
}
void SetList(TStringList* list, std::initializer_list<const char*> entries) {
    list->Clear();
    for (const char* e : entries)
        list->Add(e);
}
} // namespace

TEST(FilteringWriter, StoredPathsPassWithTheirContainersAndSubtrees) {
    TSample s, child;
    s.Child = &child;
    std::vector<std::string> names =
        Filtered(&s, [](TFilteringWriter& w) { SetList(w.StoredProps(), {"Child.Look"}); });
    EXPECT_EQ(names,
              (std::vector<std::string>{"Child.Look.Size", "Child.Look.Name", "Child.Look.Color"}));
}

TEST(FilteringWriter, ContainersArePreparedFromEveryDot) {
    TStringStream s;
    TFilteringWriter w(&s);
    SetList(w.StoredProps(), {"A.B.C", "A.X", "Top"});
    w.PrepareObjProps();
    EXPECT_EQ(w.ObjProps()->GetCommaText(), "A,A.B,A");
}

TEST(FilteringWriter, TheCurrentObjectPathIsAPlainPrefix) {
    TPair p;
    std::vector<std::string> names =
        Filtered(&p, [](TFilteringWriter& w) { SetList(w.StoredProps(), {"Look"}); });
    // "LookMore" starts with "Look" and passes with it; "Other" doesn't.
    EXPECT_EQ(names,
              (std::vector<std::string>{"Look.Size", "Look.Name", "Look.Color", "LookMore"}));
}

TEST(FilteringWriter, IgnoredPathsWinOverEverything) {
    TSample s, child;
    s.Child = &child;
    std::vector<std::string> names = Filtered(&s, [](TFilteringWriter& w) {
        SetList(w.StoredProps(), {"Child.Look"});
        SetList(w.IgnoredProps(), {"child.look.SIZE"});
    });
    EXPECT_EQ(names, (std::vector<std::string>{"Child.Look.Name", "Child.Look.Color"}));

    names = Filtered(&s, [](TFilteringWriter& w) { SetList(w.IgnoredProps(), {"Look", "Count"}); });
    EXPECT_FALSE(Has(names, "Count"));
    EXPECT_FALSE(Has(names, "Look.Size")) << "an ignored object takes its subtree along";
    EXPECT_TRUE(Has(names, "Text"));
    EXPECT_TRUE(Has(names, "Child.Look.Size"));
}

TEST(FilteringWriter, WithoutListsEverythingPasses) {
    TSample s;
    EXPECT_EQ(Filtered(&s, [](TFilteringWriter&) {}), Names(WriteRoot(&s)));
}

TEST(FilteringWriter, AListOfStoredPathsKeepsDefinedPropertiesOut) {
    TWidget w;
    w.GetLines()->Add("x");
    std::vector<std::string> names;
    std::string rootName;
    bool defined = true;
    names = Names(WriteRoot<TFilteringWriter>(
        &w, "Main", [&](TFilteringWriter& fw) { SetList(fw.StoredProps(), {"Width"}); }));
    EXPECT_EQ(names, std::vector<std::string>{"Width"});
    TStringStream s;
    TFilteringWriter fw(&s);
    fw.WriteAsComponent(&w, "Main");
    rootName = fw.RootName;
    defined = fw.WriteDefinedProps;
    EXPECT_EQ(rootName, "Main");
    EXPECT_TRUE(defined);
}

// ---------------------------------------------------------------------------------------------
// TFitReader

TEST(FitReader, ReadsBackEveryKind) {
    TSample s;
    s.Count = -7;
    s.Letter = 'z';
    s.Shape = shTriangle;
    s.Shapes = {shCircle};
    s.Ratio = 1.0 / 3;
    s.Stamp = TDateTime(45000.5);
    s.Text = "txt";
    s.Wide = u"\u0416";
    s.Big = -(int64_t(1) << 50);
    s.Data = Variant("v");
    s.Color = clBlack;
    s.Flag = true;
    s.GetLook()->Name = "Mono";
    TSample copy;
    TSample other;
    copy.Child = &other;
    EXPECT_EQ(ReadRoot(&copy, WriteRoot(&s, "Sample")), "Sample");
    EXPECT_EQ(copy.Count, -7);
    EXPECT_EQ(copy.Letter, 'z');
    EXPECT_EQ(copy.Shape, shTriangle);
    EXPECT_EQ(copy.Shapes, TShapes({shCircle}));
    EXPECT_EQ(copy.Ratio, 1.0 / 3);
    EXPECT_EQ(copy.Stamp.Value, 45000.5);
    EXPECT_EQ(copy.Text, "txt");
    EXPECT_EQ(copy.Wide, u"\u0416");
    EXPECT_EQ(copy.Big, -(int64_t(1) << 50));
    EXPECT_EQ(copy.Data.AsString(), "v");
    EXPECT_EQ(copy.Color, clBlack);
    EXPECT_TRUE(copy.Flag);
    EXPECT_EQ(copy.GetLook()->Name, "Mono");
    EXPECT_EQ(copy.Child, nullptr) << "a nil object in the stream is applied as nil";
}

TEST(FitReader, TheClassInTheStreamIsNotChecked) {
    TFoo foo;
    foo.Width = 3;
    foo.Caption = "c";
    TWidget w;
    EXPECT_EQ(ReadRoot(&w, WriteRoot(&foo, "F")), "F");
    EXPECT_EQ(w.Width, 3);
    EXPECT_EQ(w.Caption, "c");
    EXPECT_EQ(w.Name(), "") << "the name is returned, not given to the object";
}

TEST(FitReader, UnknownPropertiesAskUnlessErrorsAreIgnored) {
    TSample s;
    s.Text = "t";
    std::string data = WriteRoot(&s);
    DialogRecorder dialogs;
    TFoo foo;
    ReadRoot(&foo, data, true);
    EXPECT_TRUE(dialogs.texts.empty());
    ReadRoot(&foo, data, false);
    EXPECT_EQ(dialogs.texts.size(), Names(data).size()) << "TFoo knows none of them";
    EXPECT_NE(dialogs.texts[0].find("Count"), std::string::npos);
    dialogs.answer = IDNO;
    EXPECT_THROW(ReadRoot(&foo, data, false), EReadError);
}

TEST(FitReader, ReferencesResolveInANamedOwner) {
    TWidget form;
    form.SetName("Form");
    auto* target = new TWidget(&form);
    target->SetName("Target");
    auto* reader = new TWidget(&form);
    reader->SetName("Reader");
    TStringStream text("object Reader: TWidget\r\n  Buddy = Target\r\n  Width = 4\r\nend\r\n");
    TStringStream binary;
    ObjectTextToBinary(&text, &binary);
    ASSERT_EQ(ReadRoot(reader, binary.DataString()), "Reader");
    EXPECT_EQ(reader->Buddy, target);
    EXPECT_EQ(reader->Width, 4);
}

TEST(FitReader, SkipObjectPassesOverOneObject) {
    TFoo a, b;
    a.Caption = "first";
    b.Caption = "second";
    TStringStream s(WriteRoot(&a, "A") + WriteRoot(&b, "B"));
    TFitReader r(&s);
    std::string name;
    r.SkipObject(name);
    EXPECT_EQ(name, "A");
    TFoo c;
    r.ReadAsComponent(&c, name);
    EXPECT_EQ(name, "B");
    EXPECT_EQ(c.Caption, "second");
}

TEST(FitReader, DamagedStreamsRaiseReadErrors) {
    TFoo foo;
    foo.Caption = "abc";
    std::string data = WriteRoot(&foo);
    for (size_t cut = 0; cut < data.size(); ++cut) {
        TFoo target;
        EXPECT_THROW(ReadRoot(&target, data.substr(0, cut), true), EReadError) << cut;
    }
    TFoo target;
    EXPECT_THROW(ReadRoot(&target, "TPF1" + data.substr(4)), EReadError);
    EXPECT_THROW(ReadRoot(nullptr, data), EFitReaderError);
}
