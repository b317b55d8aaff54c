// The plain load and save operations: arrays of objects to and from streams, files and strings
// in the four storage forms, with the platform's writer and reader.
#include "persistence/DataHndl.h"

#include "TestModel.h"
#include "rtl/FileStreams.h"
#include "rtl/ObjectText.h"

#include <gtest/gtest.h>

using namespace zelvane;
using namespace model;

// ---------------------------------------------------------------------------------------------
// The bytes

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

TEST(RoundTrip, ExtendedBinaryHasOneSignatureAndBarePropertyLists) {
    Foos src{1, 100}, dst{0, 0};
    src.foo[1]->Caption = "x";
    TStringStream s;
    SaveObjectBinaryEx(src.objs, &s);
    EXPECT_EQ(s.DataString(), "TPF0" + Short("Width") + Bytes({2, 1, 0}) + Short("Caption") +
                                  Bytes({6, 1, 'x', 0}));
    // A nil entry passes over its list.
    for (TObject* first : {dst.objs[0], static_cast<TObject*>(nullptr)}) {
        s.SetPosition(0);
        dst.objs[0] = first;
        LoadObjectBinaryEx(dst.objs, &s);
        EXPECT_EQ(dst.Captions(), (std::vector<std::string>{"", "x"}));
    }
    EXPECT_EQ(dst.Widths(), (std::vector<int32_t>{1, 0}));
}

TEST(RoundTrip, OtherFormsThanBinaryAndTextGiveNoString) {
    Foos foo{3};
    for (TObjectStorageFormat format : {osfResBin, osfExtBin}) {
        EXPECT_EQ(PropsOf(foo.objs, format), "");
        SetProps(foo.objs, "garbage", format);
    }
    EXPECT_EQ(foo.Widths(), std::vector<int32_t>{3});
}

// ---------------------------------------------------------------------------------------------
// Loading into arrays

TEST(LoadArrays, NilEntriesPassOverTheirObjects) {
    Foos src{1, 2, 3};
    for (TObjectStorageFormat format : {osfBin, osfText}) {
        SCOPED_TRACE(int(format));
        Foos dst{0, 0, 0};
        dst.objs[1] = nullptr;
        SetProps(dst.objs, PropsOf(src.objs, format), format);
        EXPECT_EQ(dst.Widths(), (std::vector<int32_t>{1, 0, 3}));
    }
}

TEST(LoadArrays, NilComponentEntriesAreCreatedFromTheStream) {
    RegisterClass(TWidget::StaticClass());
    TWidget a, b;
    a.SetName("A");
    a.Width = 1;
    b.SetName("B");
    b.Width = 2;
    TObject* src[] = {&a, &b};
    for (TObjectStorageFormat format : {osfBin, osfText}) {
        SCOPED_TRACE(int(format));
        TWidget existing;
        TComponent* comps[] = {&existing, nullptr};
        TStringStream s(PropsOf(src, format));
        if (format == osfBin)
            LoadComponentBinary(comps, &s, false);
        else
            LoadComponentText(comps, &s);
        EXPECT_EQ(comps[0], &existing);
        EXPECT_EQ(existing.Width, 1);
        ASSERT_NE(comps[1], nullptr);
        std::unique_ptr<TComponent> created(comps[1]);
        EXPECT_EQ(PropsOf(created.get(), osfText), PropsOf(&b, osfText));
    }
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
        objs[0] = first;
        objs[1] = second;
    }
    // A stream in which the two widgets swap names, which clashes while they sit in the owner.
    std::string SwappedNames(TObjectStorageFormat format) {
        TWidget x, y;
        x.SetName("Second");
        x.Width = 10;
        y.SetName("First");
        y.Width = 20;
        TObject* objs[] = {&x, &y};
        return PropsOf(objs, format);
    }
    // Both widgets sit in the owner in their places, found by their names.
    void ExpectHome() {
        ASSERT_EQ(owner.ComponentCount(), 2);
        EXPECT_EQ(owner.Components(0), first);
        EXPECT_EQ(owner.Components(1), second);
    }
    TWidget owner;
    TWidget* first;
    TWidget* second;
    TObject* objs[2];
    TempDir dir;
};

TEST_F(SafeLoad, ComponentsLeaveTheirOwnersForTheLoadAndComeBack) {
    // Any form but binary is read as text.
    WriteAll(dir.File("good.sbn"), SwappedNames(osfBin));
    for (auto format : {osfBin, osfText}) {
        SCOPED_TRACE(int(format));
        first->SetName("Temporary");
        second->SetName("Second");
        first->SetName("First");
        TStringStream s(SwappedNames(format));
        if (format == osfBin)
            SafeLoadObjects(objs, dir.File("good.sbn"), osfBin, false);
        else
            SafeLoadObjects(objs, &s, osfResBin, false);
        EXPECT_EQ(first->Name(), "Second");
        EXPECT_EQ(second->Name(), "First");
        EXPECT_EQ(first->Width, 10);
        EXPECT_EQ(second->Width, 20);
        ExpectHome();
        EXPECT_EQ(owner.FindComponent("First"), second);
    }
}

TEST_F(SafeLoad, ComponentsGoBackWhenTheLoadFails) {
    std::string damaged = SwappedNames(osfBin);
    damaged.resize(damaged.size() - 3);
    TStringStream s(damaged);
    EXPECT_THROW(SafeLoadObjects(objs, &s, osfBin, false), EReadError);
    ExpectHome();
    EXPECT_EQ(owner.FindComponent(second->Name()), second);
    EXPECT_THROW(SafeLoadObjects(objs, dir.File("missing.sbn"), osfBin, false), EFOpenError);
    ExpectHome();
}

// ---------------------------------------------------------------------------------------------
// Data files

TEST(ObjectData, SkipLeavesTheObjectsAndTheStreamBehindTheHeader) {
    Foos foo{9}, target{100};
    TStringStream s;
    SaveObjectDataBinary(foo.objs, &s, "desc", false);
    s.SetPosition(0);
    LoadObjectData(target.objs, &s,
                   [](TObjDataDscr, const std::string&, bool& skip, void*) { skip = true; });
    EXPECT_EQ(target.Widths(), std::vector<int32_t>{100});
    EXPECT_EQ(s.GetPosition(), 7 + 2 + 4);
}

TEST(ObjectData, TextDataWithDescriptionsAndWithoutCallback) {
    Foos src{1, 2}, dst{0, 0};
    std::string descriptions[] = {"A", "B"};
    TStringStream s;
    SaveObjectDataText(src.objs, &s, descriptions, "e_ver: 1.01");
    std::string start =
        "sys_txt e_ver: 1.01\r\n" + std::string(19, '-') + "\r\nA\r\nobject TWrapper\r\n";
    EXPECT_EQ(s.DataString().substr(0, start.size()), start);
    s.SetPosition(0);
    TObjDataDscr got = LoadObjectData(dst.objs, &s);
    EXPECT_EQ(got.StorageFormat, osfText);
    EXPECT_FALSE(got.ResFormat);
    EXPECT_EQ(dst.Widths(), (std::vector<int32_t>{1, 2}));
}

// ---------------------------------------------------------------------------------------------
// Copying properties

TEST(ImportProps, TargetsGetWhatDiffersFromTheDefaults) {
    Foos source{100}, target{50}; // the source's Width is its default and isn't carried
    source.foo[0]->Caption = "copied";
    ImportProps(target.objs, source.objs);
    EXPECT_EQ(target.Captions(), std::vector<std::string>{"copied"});
    EXPECT_EQ(target.Widths(), std::vector<int32_t>{50});
}

TEST(Props2, EveryStoredPropertyAndNoWrapper) {
    Foos foo{100}, copy{1}; // all defaults
    copy.foo[0]->Caption = "x";
    std::string text;
    GetProps2(foo.objs, text, osfBin);
    EXPECT_EQ(text, "TPF0" + Short("TFoo") + Short("") + Short("Width") + Bytes({2, 100}) +
                        Short("Caption") + Bytes({6, 0, 0, 0}));
    GetProps2(foo.objs, text, osfText);
    EXPECT_EQ(text, "object TFoo\r\n  Width = 100\r\n  Caption = ''\r\nend\r\n");
    SetProps2(copy.objs, text, osfText);
    EXPECT_EQ(PropsOf(copy.objs, osfText), PropsOf(foo.objs, osfText));
    // The two pairs don't read each other's strings.
    EXPECT_NE(PropsOf(foo.objs, osfBin), text);
}

// ---------------------------------------------------------------------------------------------
// Files

TEST(Files, EveryFormThroughAFile) {
    TempDir dir;
    Foos a{4};
    a.foo[0]->Caption = "file";
    SaveObjectBinary(a.objs, dir.File("a.sbn"), false);
    SaveObjectBinary(a.objs, dir.File("a.sbr"), true);
    SaveObjectBinaryEx(a.objs, dir.File("a.sbe"));
    SaveObjectText(a.objs, dir.File("a.stx"));
    SaveObjectDataBinary(a.objs, dir.File("d.sbn"), "d", false);
    SaveObjectDataText(a.objs, dir.File("d.stx"), {}, "d");
    auto load = [&](auto&& f) {
        Foos b{100};
        f(b.objs);
        EXPECT_EQ(PropsOf(b.objs, osfText), PropsOf(a.objs, osfText));
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

TEST(Files, AFailedSaveLeavesTheOldFileWholeASuccessfulOneReplacesIt) {
    TempDir dir;
    std::string file = dir.File("objects.sbn");
    WriteAll(file, "the old contents");
    Foos a{1};
    TObject* objs[] = {a.objs[0], nullptr}; // the second one can't be saved
    EXPECT_THROW(SaveObjectBinary(objs, file, false), EDataHandlingError);
    EXPECT_THROW(SaveObjectText(objs, file), EDataHandlingError);
    EXPECT_THROW(SaveObjectDataBinary(objs, file, "x", true), EDataHandlingError);
    EXPECT_EQ(ReadAll(file), "the old contents");
    EXPECT_EQ(dir.Entries(), std::vector<std::string>{"objects.sbn"}) << "no temporary file left";
    // A save into a directory that doesn't exist fails before anything is written.
    EXPECT_THROW(SaveObjectBinary(objs, dir.File("none/objects.sbn"), false), EFCreateError);
    SaveObjectBinary(a.objs, file, false);
    EXPECT_EQ(ReadAll(file), PropsOf(a.objs, osfBin));
}

// ---------------------------------------------------------------------------------------------
// Damaged input

TEST(DamagedInput, EveryCorruptionGivesAnExceptionNotACrash) {
    DialogRecorder dialogs; // answers Yes: loading goes on as far as it can
    Objects o;
    TObject* objs[] = {&o.sample, &o.widget};
    for (TObjectStorageFormat format : {osfBin, osfText}) {
        std::string good = PropsOf(objs, format);
        auto load = [&](const std::string& data) {
            TSample s2;
            TWidget w2;
            TObject* dst[] = {&s2, &w2};
            TStringStream in(data);
            LoadObjects(dst, &in);
        };
        for (size_t i = 0; i < good.size(); ++i)
            for (int delta : {1, 0x7F, 0xFF}) {
                std::string bad = good;
                bad[i] = static_cast<char>(bad[i] + delta);
                try {
                    load(bad);
                } catch (const Exception&) {
                }
            }
        // The line end after the last "end" of a text is not needed.
        size_t needed = format == osfText ? good.size() - 2 : good.size();
        for (size_t cut = 0; cut < needed; ++cut)
            EXPECT_THROW(load(good.substr(0, cut)), Exception) << cut;
    }
}
