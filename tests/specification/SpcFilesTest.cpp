// Specification files: what SaveSpc writes, how LoadSpc reads a realistic settings tree back
// in both forms, how the fixed and free collections keep the program's authority over a file
// from another set of experts, and how damaged and foreign files fail.
#include "SpcModel.h"
#include "tests/rtl/TestSupport.h"

#include "persistence/DataHndl.h"
#include "rtl/ObjectText.h"
#include "specification/SpcConst.h"
#include "specification/SpcMng.h"

#include <gtest/gtest.h>

#include <string>

using namespace spcmodel;

namespace {

class SpcFiles : public ::testing::Test {
protected:
    SpcFiles() { FillNonDefault(filled_); }
    std::string Saved(TProgram& p, TObjectStorageFormat format, const std::string& name = "a") {
        std::string file = dir_.File(name + SpcFileExt(format));
        SaveSpc(&p.settings, file, format);
        return file;
    }
    TObjectStorageFormat Load(TProgram& p, const std::string& file, bool showErrors = true) {
        TPersistent* obj = &p.settings;
        return LoadSpc(obj, file, false, showErrors);
    }
    TempDir dir_;
    TProgram filled_; // every value other than its default
};

// ---------------------------------------------------------------------------------------------
// The file's bytes

TEST_F(SpcFiles, BinaryFileIsOneRootObjectOtherFormsTheSameOrItsText) {
    TProgram& p = filled_;
    std::string bytes = ReadAll(Saved(p, osfBin));
    // The records, in declaration order, nested objects flat, the defined ones last.
    std::vector<Root> roots = Roots(bytes);
    ASSERT_EQ(roots.size(), 1u);
    EXPECT_EQ(roots[0].Flags, 0);
    EXPECT_EQ(roots[0].Class + "|" + roots[0].Name, "TSettings|");
    std::string names;
    for (const std::string& name : roots[0].Props)
        names += name + ",";
    EXPECT_EQ(names, "Title,Version,View.Depth,View.Layout,View.Columns.CheckedInds,"
                     "View.Columns.Strings,View.Sort.ItemIndex,View.Sort.Strings,"
                     "View.Notes.Strings,View.Font.Charset,View.Font.Color,View.Font.Height,"
                     "View.Font.Name,View.Font.Pitch,View.Font.Style,View.Picture.Data,History,"
                     "ActiveExperts_,CustomData_,");
    // The resource and extended forms save as plain binary; text is the binary object as text.
    EXPECT_EQ(ReadAll(Saved(p, osfResBin, "res")), bytes);
    EXPECT_EQ(ReadAll(Saved(p, osfExtBin, "ext")), bytes);
    TStringStream in(bytes), out;
    ObjectBinaryToText(&in, &out);
    EXPECT_EQ(ReadAll(Saved(p, osfText)), out.DataString());
    // A fit writer writes what equals the declared default as well.
    TProgram plain;
    std::string defaults = ReadAll(Saved(plain, osfBin, "defaults"));
    EXPECT_NE(defaults.find("\x0AView.Depth\x02\x03"), std::string::npos);
    EXPECT_NE(defaults.find("\x13View.Sort.ItemIndex\x02\xFF"), std::string::npos);
}

// ---------------------------------------------------------------------------------------------
// Damaged and foreign files

TEST_F(SpcFiles, MissingFileFailsAndLeavesTheObject) {
    TProgram p;
    p.settings.Title = "kept";
    std::string file = dir_.File("none.sbn");
    EXPECT_EQ(rtltest::MessageOf<ESpcMngError>([&] { Load(p, file); }),
              "Specification file: " + file + " not found.");
    EXPECT_EQ(p.settings.Title, "kept");
}

TEST_F(SpcFiles, FileWithADataHeaderIsNotASpecification) {
    TProgram& p = filled_;
    std::string file = dir_.File("header.sbn");
    TObject* objects[] = {&p.settings};
    SaveObjectDataBinary(objects, file, "1.01 99.99", false);
    TProgram loaded;
    EXPECT_THROW(Load(loaded, file), EReadError);
    EXPECT_EQ(loaded.settings.Title, "Settings");
}

TEST_F(SpcFiles, BadValueIsPassedOverWhenErrorsAreIgnored) {
    TProgram& saved = filled_;
    // "View.Layout" holds an identifier the enumeration doesn't have.
    std::string bytes = ReadAll(Saved(saved, osfBin));
    size_t at = bytes.find("\x06loTabs");
    ASSERT_NE(at, std::string::npos);
    bytes.replace(at + 1, 6, "loGrid");
    std::string file = dir_.File("badvalue.sbn");
    WriteAll(file, bytes);

    DialogRecorder dialogs;
    TProgram quiet;
    Load(quiet, file, false);
    EXPECT_TRUE(dialogs.texts.empty());
    EXPECT_EQ(quiet.settings.GetView()->Layout, loTree);
    EXPECT_EQ(quiet.settings.GetView()->GetFont()->Name, "Courier New");
    EXPECT_EQ(quiet.editor.TabWidth, 2);

    dialogs.answer = IDNO;
    TProgram asked;
    EXPECT_THROW(Load(asked, file, true), EReadError);
    ASSERT_EQ(dialogs.texts.size(), 1u);
    EXPECT_NE(dialogs.texts[0].find("loGrid"), std::string::npos);
}

TEST_F(SpcFiles, TruncatedFileLoadsUpToTheCutAndFails) {
    TProgram& saved = filled_;
    std::string bytes = ReadAll(Saved(saved, osfBin));
    size_t at = bytes.find("History");
    ASSERT_NE(at, std::string::npos);
    std::string file = dir_.File("cut.sbn");
    WriteAll(file, bytes.substr(0, at + 20));
    TProgram loaded;
    EXPECT_THROW(Load(loaded, file, false), EReadError);
    EXPECT_EQ(loaded.settings.Title, "My \xC0\xC1 settings");
    EXPECT_EQ(loaded.settings.GetView()->GetFont()->Name, "Courier New");
    EXPECT_EQ(loaded.editor.TabWidth, 8);
}

TEST_F(SpcFiles, GarbageFailsWithAReadError) {
    std::string file = dir_.File("garbage.sbn");
    WriteAll(file, "#!/bin/sh\nexit 0\n");
    TProgram p;
    EXPECT_THROW(Load(p, file, false), EReadError);
    WriteAll(file, "");
    EXPECT_THROW(Load(p, file, false), Exception);
    WriteAll(file, "object TSettings\r\n  Title = 'x\r\n");
    EXPECT_THROW(Load(p, file, false), Exception);
}

// ---------------------------------------------------------------------------------------------
// RecreateSpc

TEST(RecreateSpc, MakesAFreshObjectOfTheSameClass) {
    TPersistent* obj = new TViewSettings();
    static_cast<TViewSettings*>(obj)->Depth = 42;
    TPersistent* made = RecreateSpc(obj);
    EXPECT_EQ(made, obj);
    ASSERT_NE(dynamic_cast<TViewSettings*>(obj), nullptr);
    EXPECT_EQ(static_cast<TViewSettings*>(obj)->Depth, 3);
    delete obj;
    TPersistent* none = nullptr;
    EXPECT_THROW(RecreateSpc(none), ESpcMngError);
}

} // namespace
