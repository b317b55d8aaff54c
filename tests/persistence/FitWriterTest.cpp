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

// The property names of the first root object in the stream, in order.
std::vector<std::string> Names(const std::string& data) {
    return Roots(data).at(0).Props;
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

TEST(FitWriter, AnEmptyPropertyListIsSignatureTwoNamesAndTwoZeros) {
    TFoo foo;
    // With every property refused only the frame remains.
    struct Refuser : TObject {
        void Refuse(TPersistent*, const std::string&, PPropInfo, bool& canWrite) {
            canWrite = false;
        }
    } refuser;
    std::string empty = WriteRoot(&foo, "", [&](TFitWriter& w) {
        w.OnCanWriteProperty = TCanWritePropertyEvent::Of<&Refuser::Refuse>(&refuser);
    });
    EXPECT_EQ(empty, "TPF0" + Short("TFoo") + Bytes({0, 0, 0}));
}

TEST(FitWriter, EveryValueIsWrittenUnlikeThePlatformWriterSortedOnRequest) {
    TSample s; // every property at its default
    EXPECT_EQ(Names(WriteRoot(&s)),
              (std::vector<std::string>{"Count", "Letter", "Shape", "Shapes", "Ratio", "Stamp",
                                        "Day", "Clock", "Text", "Wide", "Big", "Data", "Color",
                                        "Flag", "Look.Size", "Look.Name", "Look.Color", "Child"}));
    TFoo foo;
    EXPECT_EQ(Names(WriteRoot(&foo, "", [](TFitWriter& w) { w.SortProps = true; })),
              (std::vector<std::string>{"Caption", "Width"}));
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

TEST(FitWriter, NilRootsAndObjectsThatHoldEachOtherFailCleanly) {
    TSample a, b;
    a.Child = &b;
    b.Child = &a;
    EXPECT_THROW(WriteRoot(&a), EFitWriterError);
    TStringStream s;
    TFitWriter w(&s);
    EXPECT_THROW(w.WriteAsComponent(nullptr, "x"), EFitWriterError);
}

// ---------------------------------------------------------------------------------------------
// TFilteringWriter

namespace {
void SetList(TStringList* list, std::initializer_list<const char*> entries) {
    list->Clear();
    for (const char* e : entries)
        list->Add(e);
}
} // namespace

TEST(FilteringWriter, StoredPathsPassWithTheirContainersAndSubtreesIgnoredOnesWin) {
    TSample s, child;
    s.Child = &child;
    TPair p;
    TWidget w;
    w.GetLines()->Add("x");
    std::vector<std::string> all = Names(WriteRoot(&s));
    std::vector<std::string> withoutLook = all;
    withoutLook.erase(withoutLook.begin()); // Count
    withoutLook.erase(std::find(withoutLook.begin(), withoutLook.end(), "Look.Size"),
                      std::find(withoutLook.begin(), withoutLook.end(), "Look.Color") + 1);
    const struct {
        TPersistent* obj;
        std::initializer_list<const char*> stored, ignored;
        std::vector<std::string> names;
    } cases[] = {
        {&s, {"Child.Look"}, {}, {"Child.Look.Size", "Child.Look.Name", "Child.Look.Color"}},
        // The current object's path is a plain prefix: "LookMore" passes with "Look".
        {&p, {"Look"}, {}, {"Look.Size", "Look.Name", "Look.Color", "LookMore"}},
        // Ignored paths win, without regard to case; an ignored object takes its subtree.
        {&s, {"Child.Look"}, {"child.look.SIZE"}, {"Child.Look.Name", "Child.Look.Color"}},
        {&s, {}, {"Look", "Count"}, withoutLook},
        {&s, {}, {}, all},
        // A list of stored paths keeps the defined properties out.
        {&w, {"Width"}, {}, {"Width"}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> names =
            Names(WriteRoot<TFilteringWriter>(c.obj, "Root", [&](TFilteringWriter& fw) {
                SetList(fw.StoredProps(), c.stored);
                SetList(fw.IgnoredProps(), c.ignored);
            }));
        EXPECT_EQ(names, c.names);
    }
    // Without lists the defined properties stay in, and the root name is the one given.
    TStringStream stream;
    TFilteringWriter fw(&stream);
    fw.WriteAsComponent(&w, "Main");
    EXPECT_EQ(fw.RootName, "Main");
}

// ---------------------------------------------------------------------------------------------
// TFitReader

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
