// The plain load and save operations: arrays of objects to and from streams, files and strings
// in the four storage forms, with the platform's writer and reader.
#include "persistence/DataHndl.h"

#include "TestModel.h"
#include "rtl/FileStreams.h"
#include "rtl/ObjectText.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace zelvane;
using namespace model;

namespace {

TSample& Filled(TSample& s) {
    s.Count = 42;
    s.Letter = 'q';
    s.Shape = shTriangle;
    s.Shapes = {shRectangle, shTriangle};
    s.Ratio = 2.5;
    s.Stamp = TDateTime(45000.25);
    s.Text = "text";
    s.Wide = u"\u0416wide";
    s.Big = int64_t(1) << 40;
    s.Data = Variant(int32_t(77));
    s.Color = clBlack;
    s.Flag = true;
    s.GetLook()->Size = 12;
    s.GetLook()->Name = "Courier";
    return s;
}

void ExpectSameSample(const TSample& a, const TSample& b) {
    EXPECT_EQ(a.Count, b.Count);
    EXPECT_EQ(a.Letter, b.Letter);
    EXPECT_EQ(a.Shape, b.Shape);
    EXPECT_EQ(a.Shapes, b.Shapes);
    EXPECT_EQ(a.Ratio, b.Ratio);
    EXPECT_EQ(a.Stamp.Value, b.Stamp.Value);
    EXPECT_EQ(a.Text, b.Text);
    EXPECT_EQ(a.Wide, b.Wide);
    EXPECT_EQ(a.Big, b.Big);
    EXPECT_EQ(a.Data.AsInteger(), b.Data.AsInteger());
    EXPECT_EQ(a.Color, b.Color);
    EXPECT_EQ(a.Flag, b.Flag);
    EXPECT_EQ(a.GetLook()->Size, b.GetLook()->Size);
    EXPECT_EQ(a.GetLook()->Name, b.GetLook()->Name);
}

// Registers a class for the life of the object.
struct Registered {
    explicit Registered(TClass c) : cls(c) { RegisterClass(c); }
    ~Registered() { UnRegisterClass(cls); }
    TClass cls;
};

} // namespace

// ---------------------------------------------------------------------------------------------
// The bytes

TEST(SaveBytes, AnObjectThatIsNoComponentTravelsInAWrapper) {
    TFoo foo;
    foo.Width = 5;
    foo.Caption = "ab";
    TObject* objs[] = {&foo};
    std::string text;
    GetProps(objs, text, osfBin);
    EXPECT_EQ(HexBytes(text),
              HexBytes("TPF0" + Short("TWrapper") + Short("") + Short("I.Width") + Bytes({2, 5}) +
                       Short("I.Caption") + Bytes({6, 2, 'a', 'b'}) + Bytes({0, 0})));
}

TEST(SaveBytes, ThePlatformWriterLeavesOutDefaults) {
    TFoo foo; // Width is at its default, 100, and Caption empty
    TObject* objs[] = {&foo};
    std::string text;
    GetProps(objs, text, osfBin);
    EXPECT_EQ(text, "TPF0" + Short("TWrapper") + Bytes({0, 0, 0}));
}

TEST(SaveBytes, AComponentIsWrittenUnderItsOwnClassAndName) {
    // The platform writes a collection whatever it holds, as it has no default.
    TWidget w;
    w.SetName("Main");
    w.Width = 300;
    TObject* objs[] = {&w};
    std::string text;
    GetProps(objs, text, osfBin);
    EXPECT_EQ(text, "TPF0" + Short("TWidget") + Short("Main") + Short("Width") +
                        Bytes({3, 0x2C, 0x01}) + Short("Items") + Bytes({14, 0}) + Bytes({0, 0}));
}

TEST(SaveBytes, EmptyArraysDoNothing) {
    TStringStream s;
    SaveObjectBinary({}, &s, false);
    SaveObjectBinary({}, &s, true);
    SaveObjectBinaryEx({}, &s);
    SaveObjectText({}, &s);
    EXPECT_EQ(s.GetSize(), 0);
    std::string text = "old";
    GetProps({}, text, osfText);
    EXPECT_EQ(text, "");
    TStringStream in("garbage");
    LoadObjectBinary({}, &in, false);
    LoadObjectText({}, &in);
    LoadObjectBinaryEx({}, &in);
    LoadObjects({}, &in);
    EXPECT_EQ(in.GetPosition(), 0);
}

TEST(SaveBytes, NilAndNonPersistentObjectsAreRefused) {
    TObject plain;
    TFoo foo;
    TObject* withNil[] = {&foo, nullptr};
    TObject* withPlain[] = {&plain};
    TStringStream s;
    EXPECT_THROW(SaveObjectBinary(withNil, &s, false), EDataHandlingError);
    EXPECT_THROW(SaveObjectText(withPlain, &s), EDataHandlingError);
    EXPECT_THROW(SaveObjectBinaryEx(withPlain, &s), EDataHandlingError);
}

// ---------------------------------------------------------------------------------------------
// Round trips in each form

TEST(RoundTrip, BinaryAndTextOfPlainObjects) {
    for (TObjectStorageFormat format : {osfBin, osfText}) {
        SCOPED_TRACE(int(format));
        TSample a, a2;
        TFoo b, b2;
        Filled(a);
        b.Caption = "it's";
        TObject* src[] = {&a, &b};
        TObject* dst[] = {&a2, &b2};
        std::string text;
        GetProps(src, text, format);
        SetProps(dst, text, format);
        ExpectSameSample(a, a2);
        EXPECT_EQ(b2.Caption, "it's");
    }
}

TEST(RoundTrip, TextOfPlainObjectsCarriesDescriptionLines) {
    TFoo a, b;
    a.Width = 1;
    b.Width = 2;
    TObject* objs[] = {&a, &b};
    std::string descriptions[] = {"first object"};
    TStringStream s;
    SaveObjectText(objs, &s, descriptions);
    EXPECT_EQ(s.DataString(), "first object\r\n"
                              "object TWrapper\r\n  I.Width = 1\r\nend\r\n"
                              "stored Instance --> TFoo\r\n"
                              "object TWrapper\r\n  I.Width = 2\r\nend\r\n");
    // The detection doesn't know description lines; the text loader reads them.
    s.SetPosition(0);
    TFoo a2, b2;
    TObject* dst[] = {&a2, &b2};
    EXPECT_EQ(DataError([&] { LoadObjects(dst, &s); }), "Thread does not contain object.");
    LoadObjectText(dst, &s);
    EXPECT_EQ(a2.Width, 1);
    EXPECT_EQ(b2.Width, 2);
}

TEST(RoundTrip, ComponentsWithNestedObjectsListsAndCollections) {
    TWidget w;
    w.SetName("Main");
    w.Caption = "c";
    w.GetLook()->Color = clRed;
    w.GetLines()->Add("one");
    w.GetLines()->Add("two");
    auto* item = static_cast<TItem*>(w.GetItems()->Add());
    item->Caption = "first";
    item->Width = 7;
    w.GetItems()->Add();
    for (TObjectStorageFormat format : {osfBin, osfText}) {
        SCOPED_TRACE(int(format));
        TObject* src[] = {&w};
        std::string text;
        GetProps(src, text, format);
        if (format == osfText) {
            EXPECT_EQ(text.rfind("object Main: TWidget\r\n", 0), 0u);
        }
        TWidget copy;
        TObject* dst[] = {&copy};
        SetProps(dst, text, format);
        EXPECT_EQ(copy.Name(), "Main");
        EXPECT_EQ(copy.Caption, "c");
        EXPECT_EQ(copy.GetLook()->Color, clRed);
        EXPECT_EQ(copy.GetLines()->Text(), "one\r\ntwo\r\n");
        ASSERT_EQ(copy.GetItems()->Count(), 2);
        EXPECT_EQ(static_cast<TItem*>(copy.GetItems()->GetItem(0))->Caption, "first");
        EXPECT_EQ(static_cast<TItem*>(copy.GetItems()->GetItem(0))->Width, 7);
        EXPECT_EQ(static_cast<TItem*>(copy.GetItems()->GetItem(1))->Width, 50);
    }
}

TEST(RoundTrip, ResourceFormWrapsEachObject) {
    TFoo a, b;
    a.Width = 1;
    b.Width = 2;
    TObject* objs[] = {&a, &b};
    TStringStream s;
    SaveObjectBinary(objs, &s, true);
    const std::string& data = s.DataString();
    std::string header = Bytes({0xFF, 0x0A, 0x00}) + "TWRAPPER" + Bytes({0, 0x30, 0x10});
    ASSERT_EQ(data.substr(0, header.size()), header);
    uint32_t size = 0;
    std::memcpy(&size, data.data() + header.size(), 4);
    std::string second = data.substr(header.size() + 4 + size);
    EXPECT_EQ(second.substr(0, header.size()), header);

    s.SetPosition(0);
    TFoo a2, b2;
    TObject* dst[] = {&a2, &b2};
    LoadObjects(dst, &s);
    EXPECT_EQ(a2.Width, 1);
    EXPECT_EQ(b2.Width, 2);
    EXPECT_EQ(s.GetPosition(), s.GetSize());
}

TEST(RoundTrip, ExtendedBinaryHasOneSignatureAndBarePropertyLists) {
    TFoo a, b;
    a.Width = 1;
    b.Caption = "x";
    TObject* objs[] = {&a, &b};
    TStringStream s;
    SaveObjectBinaryEx(objs, &s);
    EXPECT_EQ(s.DataString(), "TPF0" + Short("Width") + Bytes({2, 1, 0}) + Short("Caption") +
                                  Bytes({6, 1, 'x', 0}));
    s.SetPosition(0);
    TFoo a2, b2;
    TObject* dst[] = {&a2, &b2};
    LoadObjectBinaryEx(dst, &s);
    EXPECT_EQ(a2.Width, 1);
    EXPECT_EQ(b2.Caption, "x");
    // A nil entry passes over its list.
    s.SetPosition(0);
    TFoo b3;
    TObject* skipFirst[] = {nullptr, &b3};
    LoadObjectBinaryEx(skipFirst, &s);
    EXPECT_EQ(b3.Caption, "x");
}

TEST(RoundTrip, OtherFormsThanBinaryAndTextGiveNoString) {
    TFoo foo;
    foo.Width = 3;
    TObject* objs[] = {&foo};
    for (TObjectStorageFormat format : {osfResBin, osfExtBin}) {
        std::string text = "old";
        GetProps(objs, text, format);
        EXPECT_EQ(text, "");
        SetProps(objs, "garbage", format);
    }
    EXPECT_EQ(foo.Width, 3);
}

TEST(RoundTrip, SetPropsExReadsBinaryAsBinaryAndEveryOtherFormAsText) {
    TFoo source;
    source.Width = 42;
    source.Caption = "from the source";
    TObject* from[] = {&source};
    std::string binary, text;
    GetProps(from, binary, osfBin);
    GetProps(from, text, osfText);
    const std::pair<TObjectStorageFormat, const std::string*> cases[] = {
        {osfBin, &binary}, {osfText, &text}, {osfResBin, &text}, {osfExtBin, &text}};
    for (const auto& [format, data] : cases) {
        SCOPED_TRACE(int(format));
        TFoo target;
        TObject* to[] = {&target};
        SetPropsEx(to, *data, format);
        EXPECT_EQ(target.Width, 42);
        EXPECT_EQ(target.Caption, "from the source");
    }
}

// ---------------------------------------------------------------------------------------------
// Loading into arrays

TEST(LoadArrays, NilEntriesPassOverTheirObjects) {
    TFoo a, b, c;
    a.Width = 1;
    b.Width = 2;
    c.Width = 3;
    TObject* src[] = {&a, &b, &c};
    for (TObjectStorageFormat format : {osfBin, osfText}) {
        SCOPED_TRACE(int(format));
        std::string text;
        GetProps(src, text, format);
        TFoo a2, c2;
        a2.Width = c2.Width = 0;
        TObject* dst[] = {&a2, nullptr, &c2};
        SetProps(dst, text, format);
        EXPECT_EQ(a2.Width, 1);
        EXPECT_EQ(c2.Width, 3);
    }
}

TEST(LoadArrays, NilComponentEntriesAreCreatedFromTheStream) {
    Registered reg(TWidget::StaticClass());
    TWidget a, b;
    a.SetName("A");
    a.Width = 1;
    b.SetName("B");
    b.Width = 2;
    TObject* src[] = {&a, &b};
    for (TObjectStorageFormat format : {osfBin, osfText}) {
        SCOPED_TRACE(int(format));
        std::string text;
        GetProps(src, text, format);
        TWidget existing;
        TComponent* comps[] = {&existing, nullptr};
        TStringStream s(text);
        if (format == osfBin)
            LoadComponentBinary(comps, &s, false);
        else
            LoadComponentText(comps, &s);
        EXPECT_EQ(comps[0], &existing);
        EXPECT_EQ(existing.Width, 1);
        ASSERT_NE(comps[1], nullptr);
        std::unique_ptr<TComponent> created(comps[1]);
        EXPECT_EQ(created->ClassType(), TWidget::StaticClass());
        EXPECT_EQ(created->Name(), "B");
        EXPECT_EQ(static_cast<TWidget*>(created.get())->Width, 2);
    }
}

TEST(LoadArrays, AnUnknownPropertyAsksWhetherToGoOn) {
    TSample src;
    src.Count = 3;
    src.Text = "t";
    TObject* from[] = {&src};
    std::string text;
    GetProps(from, text, osfBin);

    DialogRecorder dialogs;
    TFoo target;
    target.Caption = "kept";
    TObject* to[] = {&target};
    SetProps(to, text, osfBin);
    // Count, Letter (a character has no default) and Text: one question each.
    ASSERT_EQ(dialogs.texts.size(), 3u);
    EXPECT_NE(dialogs.texts[0].find("I.Count"), std::string::npos);
    EXPECT_NE(dialogs.texts[1].find("I.Letter"), std::string::npos);
    EXPECT_NE(dialogs.texts[2].find("I.Text"), std::string::npos);
    const std::string& q = dialogs.texts[0];
    EXPECT_EQ(q.rfind("Load error.\r\n", 0), 0u);
    EXPECT_EQ(q.substr(q.size() - 20), ".\r\nContinue loading?");
    EXPECT_EQ(dialogs.styles[0], MB_YESNO | MB_ICONEXCLAMATION);
    EXPECT_EQ(target.Caption, "kept");

    // No stops the load with the reader's error.
    dialogs.answer = IDNO;
    dialogs.texts.clear();
    EXPECT_THROW(SetProps(to, text, osfBin), EReadError);
    EXPECT_EQ(dialogs.texts.size(), 1u);
}

// ---------------------------------------------------------------------------------------------
// SafeLoadObjects

class SafeLoad : public ::testing::Test {
protected:
    SafeLoad() {
        owner.SetName("Owner");
        first = new TWidget(&owner);
        first->SetName("First");
        second = new TWidget(&owner);
        second->SetName("Second");
    }
    // A stream in which the two widgets swap names, which clashes while they sit in the owner.
    std::string SwappedNames(TObjectStorageFormat format) {
        TWidget x, y;
        x.SetName("Second");
        x.Width = 10;
        y.SetName("First");
        y.Width = 20;
        TObject* objs[] = {&x, &y};
        std::string text;
        GetProps(objs, text, format);
        return text;
    }
    TWidget owner;
    TWidget* first;
    TWidget* second;
};

TEST_F(SafeLoad, PlainLoadClashesWithSiblings) {
    TObject* objs[] = {first, second};
    EXPECT_THROW(SetProps(objs, SwappedNames(osfBin), osfBin), EComponentError);
}

TEST_F(SafeLoad, ComponentsLeaveTheirOwnersForTheLoadAndComeBack) {
    TObject* objs[] = {first, second};
    TStringStream s(SwappedNames(osfBin));
    SafeLoadObjects(objs, &s, osfBin, false);
    EXPECT_EQ(first->Name(), "Second");
    EXPECT_EQ(second->Name(), "First");
    EXPECT_EQ(first->Width, 10);
    ASSERT_EQ(owner.ComponentCount(), 2);
    EXPECT_EQ(owner.Components(0), first);
    EXPECT_EQ(owner.Components(1), second);
    EXPECT_EQ(first->Owner(), &owner);
}

TEST_F(SafeLoad, AnyFormButBinaryIsReadAsText) {
    TObject* objs[] = {first, second};
    TStringStream s(SwappedNames(osfText));
    SafeLoadObjects(objs, &s, osfResBin, false);
    EXPECT_EQ(first->Width, 10);
    EXPECT_EQ(second->Width, 20);
}

TEST_F(SafeLoad, ComponentsGoBackWhenTheLoadFails) {
    TObject* objs[] = {first, second};
    std::string damaged = SwappedNames(osfBin);
    damaged.resize(damaged.size() - 3);
    TStringStream s(damaged);
    EXPECT_THROW(SafeLoadObjects(objs, &s, osfBin, false), EReadError);
    EXPECT_EQ(owner.ComponentCount(), 2);
    EXPECT_EQ(first->Owner(), &owner);
    EXPECT_EQ(second->Owner(), &owner);
    EXPECT_EQ(owner.FindComponent(second->Name()), second);
}

TEST_F(SafeLoad, MissingAndDamagedFiles) {
    TempDir dir;
    TObject* objs[] = {first, second};
    EXPECT_THROW(SafeLoadObjects(objs, dir.File("missing.sbn"), osfBin, false), EFOpenError);
    EXPECT_EQ(owner.ComponentCount(), 2);

    WriteAll(dir.File("damaged.sbn"), "TPF0\x07TWidget\x05"
                                      "First\x05Wi");
    EXPECT_THROW(SafeLoadObjects(objs, dir.File("damaged.sbn"), osfBin, false), EReadError);
    EXPECT_EQ(owner.ComponentCount(), 2);
    EXPECT_EQ(first->Owner(), &owner);

    WriteAll(dir.File("good.sbn"), SwappedNames(osfBin));
    SafeLoadObjects(objs, dir.File("good.sbn"), osfBin, false);
    EXPECT_EQ(second->Width, 20);
}

// ---------------------------------------------------------------------------------------------
// Data files

TEST(ObjectData, HeaderCallbackThenObjects) {
    TFoo foo;
    foo.Width = 9;
    TObject* objs[] = {&foo};
    for (bool res : {false, true}) {
        SCOPED_TRACE(res);
        TStringStream s;
        SaveObjectDataBinary(objs, &s, "1.01 99.99", res);
        s.SetPosition(0);
        TFoo target;
        TObject* dst[] = {&target};
        int calls = 0;
        int tag = 5;
        TObjDataDscr got = LoadObjectData(
            dst, &s,
            [&](TObjDataDscr d, const std::string& description, bool& skip, void* data) {
                ++calls;
                EXPECT_EQ(d.StorageFormat, osfBin);
                EXPECT_EQ(d.ResFormat, res);
                EXPECT_EQ(description, "1.01 99.99");
                EXPECT_FALSE(skip);
                EXPECT_EQ(data, &tag);
            },
            &tag);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(got.ResFormat, res);
        EXPECT_EQ(target.Width, 9);
    }
}

TEST(ObjectData, SkipLeavesTheObjectsAndTheStreamBehindTheHeader) {
    TFoo foo;
    foo.Width = 9;
    TObject* objs[] = {&foo};
    TStringStream s;
    SaveObjectDataBinary(objs, &s, "desc", false);
    s.SetPosition(0);
    TFoo target;
    TObject* dst[] = {&target};
    LoadObjectData(dst, &s,
                   [](TObjDataDscr, const std::string&, bool& skip, void*) { skip = true; });
    EXPECT_EQ(target.Width, 100);
    EXPECT_EQ(s.GetPosition(), 7 + 2 + 4);
}

TEST(ObjectData, TextDataWithDescriptionsAndWithoutCallback) {
    TFoo a, b;
    a.Width = 1;
    b.Width = 2;
    TObject* objs[] = {&a, &b};
    std::string descriptions[] = {"A", "B"};
    TStringStream s;
    SaveObjectDataText(objs, &s, descriptions, "e_ver: 1.01");
    std::string start =
        "sys_txt e_ver: 1.01\r\n" + std::string(19, '-') + "\r\nA\r\nobject TWrapper\r\n";
    EXPECT_EQ(s.DataString().substr(0, start.size()), start);
    s.SetPosition(0);
    TFoo a2, b2;
    TObject* dst[] = {&a2, &b2};
    TObjDataDscr got = LoadObjectData(dst, &s);
    EXPECT_EQ(got.StorageFormat, osfText);
    EXPECT_FALSE(got.ResFormat);
    EXPECT_EQ(a2.Width, 1);
    EXPECT_EQ(b2.Width, 2);
}

// ---------------------------------------------------------------------------------------------
// Copying properties

TEST(ImportProps, TargetsGetWhatDiffersFromTheDefaults) {
    TFoo source, target;
    source.Caption = "copied";
    target.Width = 50; // the source's Width is its default and isn't carried
    TObject* from[] = {&source};
    TObject* to[] = {&target};
    ImportProps(to, from);
    EXPECT_EQ(target.Caption, "copied");
    EXPECT_EQ(target.Width, 50);
}

TEST(ImportProps, UnknownPropertiesStillAskTheUser) {
    TSample source;
    source.Count = 3;
    TFoo target;
    TObject* from[] = {&source};
    TObject* to[] = {&target};
    DialogRecorder dialogs;
    std::vector<bool> suppressedDuringDialog;
    TWindowSystem ws = WindowSystem();
    auto inner = ws.MessageBox;
    ws.MessageBox = [&](HWND o, const std::string& t, const std::string& c, uint32_t s) {
        suppressedDuringDialog.push_back(SuppressErrorInfo);
        return inner(o, t, c, s);
    };
    TWindowSystem recorder = SetWindowSystem(ws);
    ImportProps(to, from);
    SetWindowSystem(recorder);
    ASSERT_EQ(dialogs.texts.size(), 2u);
    EXPECT_NE(dialogs.texts[0].find("Count"), std::string::npos);
    EXPECT_NE(dialogs.texts[1].find("Letter"), std::string::npos);
    EXPECT_EQ(suppressedDuringDialog, (std::vector<bool>{true, true}));
    EXPECT_FALSE(SuppressErrorInfo) << "restored afterwards";
}

TEST(Props2, EveryStoredPropertyAndNoWrapper) {
    TFoo foo; // all defaults
    TObject* objs[] = {&foo};
    std::string text;
    GetProps2(objs, text, osfBin);
    EXPECT_EQ(text, "TPF0" + Short("TFoo") + Short("") + Short("Width") + Bytes({2, 100}) +
                        Short("Caption") + Bytes({6, 0, 0, 0}));
    GetProps2(objs, text, osfText);
    EXPECT_EQ(text, "object TFoo\r\n  Width = 100\r\n  Caption = ''\r\nend\r\n");
    TFoo copy;
    copy.Width = 1;
    copy.Caption = "x";
    TObject* dst[] = {&copy};
    SetProps2(dst, text, osfText);
    EXPECT_EQ(copy.Width, 100);
    EXPECT_EQ(copy.Caption, "");
    // The two pairs don't read each other's strings.
    std::string plain;
    GetProps(objs, plain, osfBin);
    EXPECT_NE(plain, text);
}

// ---------------------------------------------------------------------------------------------
// Files

TEST(Files, EveryFormThroughAFile) {
    TempDir dir;
    TFoo a;
    a.Width = 4;
    a.Caption = "file";
    TObject* objs[] = {&a};
    SaveObjectBinary(objs, dir.File("a.sbn"), false);
    SaveObjectBinary(objs, dir.File("a.sbr"), true);
    SaveObjectBinaryEx(objs, dir.File("a.sbe"));
    SaveObjectText(objs, dir.File("a.stx"));
    SaveObjectDataBinary(objs, dir.File("d.sbn"), "d", false);
    SaveObjectDataText(objs, dir.File("d.stx"), {}, "d");
    auto load = [&](auto&& f) {
        TFoo b;
        TObject* dst[] = {&b};
        f(dst);
        EXPECT_EQ(b.Width, 4);
        EXPECT_EQ(b.Caption, "file");
    };
    load([&](TObjectArray d) { LoadObjects(d, dir.File("a.sbn")); });
    load([&](TObjectArray d) { LoadObjects(d, dir.File("a.sbr")); });
    load([&](TObjectArray d) { LoadObjectBinaryEx(d, dir.File("a.sbe")); });
    load([&](TObjectArray d) { LoadObjectText(d, dir.File("a.stx")); });
    load([&](TObjectArray d) { LoadObjectBinary(d, dir.File("a.sbr"), true); });
    load([&](TObjectArray d) { LoadObjectData(d, dir.File("d.sbn")); });
    load([&](TObjectArray d) { LoadObjectData(d, dir.File("d.stx")); });
    EXPECT_EQ(SkipDataHeader(dir.File("d.stx")), osfText);
    EXPECT_EQ(dir.Entries(),
              (std::vector<std::string>{"a.sbe", "a.sbn", "a.sbr", "a.stx", "d.sbn", "d.stx"}));
}

TEST(Files, AFailedSaveLeavesTheOldFileWhole) {
    TempDir dir;
    std::string file = dir.File("objects.sbn");
    WriteAll(file, "the old contents");
    TFoo a;
    a.Width = 1;
    TObject* objs[] = {&a, nullptr}; // the second one can't be saved
    EXPECT_THROW(SaveObjectBinary(objs, file, false), EDataHandlingError);
    EXPECT_THROW(SaveObjectText(objs, file), EDataHandlingError);
    EXPECT_THROW(SaveObjectDataBinary(objs, file, "x", true), EDataHandlingError);
    EXPECT_EQ(ReadAll(file), "the old contents");
    EXPECT_EQ(dir.Entries(), std::vector<std::string>{"objects.sbn"}) << "no temporary file left";
    // A save into a directory that doesn't exist fails before anything is written.
    EXPECT_THROW(SaveObjectBinary(objs, dir.File("none/objects.sbn"), false), EFCreateError);
}

TEST(Files, ASuccessfulSaveReplacesTheFile) {
    TempDir dir;
    std::string file = dir.File("objects.sbn");
    WriteAll(file, std::string(1000, 'x'));
    TFoo a;
    a.Width = 1;
    TObject* objs[] = {&a};
    SaveObjectBinary(objs, file, false);
    std::string expected;
    GetProps(objs, expected, osfBin);
    EXPECT_EQ(ReadAll(file), expected);
}

// ---------------------------------------------------------------------------------------------
// Damaged input

TEST(DamagedInput, EveryCorruptionGivesAnExceptionNotACrash) {
    DialogRecorder dialogs; // answers Yes: loading goes on as far as it can
    TSample sample;
    Filled(sample);
    TWidget widget;
    widget.GetLines()->Add("l");
    widget.GetItems()->Add();
    TObject* objs[] = {&sample, &widget};
    for (TObjectStorageFormat format : {osfBin, osfText}) {
        std::string good;
        GetProps(objs, good, format);
        for (size_t i = 0; i < good.size(); ++i)
            for (int delta : {1, 0x7F, 0xFF}) {
                std::string bad = good;
                bad[i] = static_cast<char>(bad[i] + delta);
                TSample s2;
                TWidget w2;
                TObject* dst[] = {&s2, &w2};
                TStringStream in(bad);
                try {
                    LoadObjects(dst, &in);
                } catch (const Exception&) {
                }
            }
        // The line end after the last "end" of a text is not needed.
        size_t needed = format == osfText ? good.size() - 2 : good.size();
        for (size_t cut = 0; cut < needed; ++cut) {
            TSample s2;
            TWidget w2;
            TObject* dst[] = {&s2, &w2};
            TStringStream in(good.substr(0, cut));
            EXPECT_THROW(LoadObjects(dst, &in), Exception) << cut;
        }
    }
}
