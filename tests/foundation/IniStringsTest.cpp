// TIniStrings: the text syntax, writing back, lookups, sorting modes and the file.
#include "foundation/Classes.h"
#include "tests/foundation/TestText.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace zelvane;
using namespace foundationtest;

namespace {

// A document of the lines.
std::unique_ptr<TIniStrings> Ini(const std::vector<std::string>& lines, bool skipBare = false) {
    auto ini = std::make_unique<TIniStrings>();
    ini->SkipBareLines = skipBare;
    rtl::TStringList l;
    for (const auto& s : lines)
        l.Add(s);
    ini->SetStrings(&l);
    return ini;
}

// The document's text, its lines joined by "|".
std::string Text(TIniStrings& ini) {
    rtl::TStringList l;
    ini.GetStrings(&l);
    return Joined(&l);
}

} // namespace

// --- syntax ----------------------------------------------------------------------------------

TEST(IniStrings, TextIsReadAndWrittenBackByItsSyntax) {
    // Comments, empty lines and lines before the first section go; a line without closing
    // bracket is a line of its section; section names keep their blanks and may repeat.
    struct Case {
        std::vector<std::string> In;
        std::string Out;
        bool SkipBareLines = false;
    };
    const Case cases[] = {
        {{"[S]", "=x", "bare line", "[abc"}, "[S]|=x|bare line|[abc|"},
        {{"[S]", "=x", "bare", "k=v", "empty="}, "[S]|k=v|", true},
        {{"orphan=1", "; comment", "", "[A]", "; inner comment", "k=v", "", "x"}, "[A]|k=v|x|"},
        {{"a=1", "b=2"}, ""},
        {{"[ Two words ]", "k=1", "[Dup]", "a=1", "[dup]", "a=2", "b=3"},
         "[ Two words ]|k=1||[Dup]|a=1||[dup]|a=2|b=3|"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Text(*Ini(c.In, c.SkipBareLines)), c.Out) << c.In[0];
    // GetStrings adds without clearing.
    rtl::TStringList l;
    l.Add("before");
    Ini({"[S]", "k=v"})->GetStrings(&l);
    EXPECT_EQ(Joined(&l), "before|[S]|k=v|");
}

TEST(IniStrings, LookupsFindTheFirstSectionAndKeyWithoutRegardToCase) {
    auto ini = Ini({"[Form]", "Width=100%=x", " a = 1", "Caption=", "=x", "bare line", "[abc",
                    "k=1", "K=2", "[ Two words ]", "[Dup]", "a=1", "[dup]", "a=2", "b=3"});
    // The key is before the first equals, blanks included; a bare line is a key with an empty
    // value; "?" is the default.
    struct Case {
        const char *Section, *Key, *Value;
    };
    const Case cases[] = {
        {"Form", "Width", "100%=x"}, {"Form", " a ", " 1"}, {"Form", "a", "?"},
        {"Form", "Caption", ""},     {"Form", "=x", ""},    {"Form", "bare line", ""},
        {"Form", "[abc", ""},        {"form", "K", "1"},    {"DUP", "a", "1"},
        {"Dup", "b", "?"},           {"Missing", "k", "?"}, {"Form", "missing", "?"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ini->ReadString(c.Section, c.Key, "?"), c.Value) << c.Section << "/" << c.Key;
        EXPECT_EQ(ini->HasKey(c.Section, c.Key), c.Value != std::string("?")) << c.Key;
    }
    EXPECT_EQ(ini->GetSection("Form")->Count(), 8);
    EXPECT_EQ(ini->Sections()->Count(), 4);
    EXPECT_TRUE(ini->HasSection(" Two words "));
    EXPECT_FALSE(ini->HasSection("Two words"));
    EXPECT_EQ(ini->GetSection("Missing"), nullptr);
}

// --- reading and writing ---------------------------------------------------------------------

TEST(IniStrings, AddStringOnlyToAnExistingSectionEvenForAKnownKeyAndReplaceStringKeepsTheValue) {
    auto ini = Ini({"[S]", "k=1"});
    for (const char* line : {"k=2", "bare"})
        ini->AddString("S", line);
    ini->AddString("Missing", "x=1");
    EXPECT_EQ(Text(*ini), "[S]|k=1|k=2|bare|");
    // ReplaceString renames a key and keeps its value.
    ini = Ini({"[S]", "b=2", "a=1"});
    ini->SetKeySorted(true);
    ini->ReplaceString("S", "a", "z");
    // The list was sorted and is sorted again.
    EXPECT_TRUE(ini->GetSection("S")->Sorted());
    ini->ReplaceString("S", "missing", "q");
    ini->ReplaceString("Missing", "b", "q");
    EXPECT_EQ(Text(*ini), "[S]|b=2|z=1|");
}

TEST(IniStrings, DeleteKeyEraseSectionAndClear) {
    auto ini = Ini({"[A]", "a=1", "b=2", "[B]", "c=3"});
    for (auto [section, key] : {std::pair{"A", "A"}, {"A", "missing"}, {"Missing", "a"}})
        ini->DeleteKey(section, key);
    ini->EraseSection("b");
    ini->EraseSection("Missing");
    EXPECT_EQ(Text(*ini), "[A]|b=2|");
    ini->Clear();
    EXPECT_EQ(Text(*ini), "");
    EXPECT_EQ(ini->ReadString("A", "b", "d"), "d");
}

TEST(IniStrings, ReadSectionSharesTheCellsAndReadSectionsAndSectionValues) {
    auto ini = Ini({"[S]", "a=1", "b"});
    rtl::TStringList keys;
    keys.Add("stale");
    ini->ReadSection("S", &keys);
    EXPECT_EQ(Joined(&keys), "a|b");
    auto* cell = static_cast<TIniStrings::TValueCell*>(keys.Objects(0));
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(cell->Value, "1");
    ini->WriteString("S", "a", "changed");
    EXPECT_EQ(cell->Value, "changed");
    ini->ReadSection("Missing", &keys);
    EXPECT_EQ(keys.Count(), 0);
    ini = Ini({"[B]", "x=1", "y", "[A]"});
    rtl::TStringList l;
    ini->ReadSections(&l);
    EXPECT_EQ(Joined(&l), "B|A");
    l.Add("stale");
    ini->ReadSectionValues("B", &l);
    EXPECT_EQ(Joined(&l), "x=1|y");
    ini->ReadSectionValues("Missing", &l);
    EXPECT_EQ(l.Count(), 0);
}

// --- sorting modes ---------------------------------------------------------------------------

TEST(IniStrings, KeySortedReachesNewSectionsOnlyThroughWriteString) {
    auto ini = Ini({"[S]", "b=1", "a=2"});
    ini->SetKeySorted(true);
    EXPECT_TRUE(ini->GetSection("S")->Sorted());
    ini->GetSection("S")->SetSorted(false);
    ini->SetKeySorted(true); // the same value: nothing happens
    EXPECT_FALSE(ini->GetSection("S")->Sorted());
    EXPECT_FALSE(ini->AddSection("Added")->Sorted());
    ini->WriteString("Written", "k", "v");
    EXPECT_TRUE(ini->GetSection("Written")->Sorted());
    // A sorted list drops a repeated key without leaking it.
    ini->AddString("Written", "K=2");
    EXPECT_EQ(Joined(ini->GetSection("Written")), "k");
    EXPECT_EQ(ini->ReadString("Written", "k", ""), "v");
}

// --- the file --------------------------------------------------------------------------------

TEST(IniStrings, LoadsUpdatesAndReloadsTheFileAndReportsFailures) {
    const std::string name = TempName("load.ini");
    WriteFile(name, "; settings\r\n[Editor]\r\nWidth=640\r\nFont=Courier New\r\n");
    TIniStrings ini(name), other(name);
    EXPECT_EQ(ini.FileName(), name);
    EXPECT_EQ(ini.ReadInteger("Editor", "Width", 0), 640);
    ini.WriteString("Editor", "Width", "800");
    other.LoadValues();
    EXPECT_EQ(other.ReadString("Editor", "Width", ""), "640"); // writing doesn't touch the file
    ini.UpdateFile();
    other.LoadValues();
    EXPECT_EQ(Text(other), "[Editor]|Width=800|Font=Courier New|");
    std::filesystem::remove(name);
    other.LoadValues(); // the file is gone: the document is cleared
    EXPECT_EQ(other.Sections()->Count(), 0);
    TIniStrings memory;
    memory.WriteString("S", "k", "v");
    memory.LoadValues(); // no file name: cleared
    EXPECT_FALSE(memory.HasSection("S"));
    // UpdateFile writes CR LF lines and reports failures.
    TIniStrings written(name);
    written.WriteString("A", "k", "v");
    written.WriteString("A", "bare", "");
    written.UpdateFile();
    EXPECT_EQ(ReadFile(name), "[A]\r\nk=v\r\nbare\r\n\r\n");
    std::filesystem::remove(name);
    TIniStrings nowhere(::testing::TempDir() + "no_such_dir/x.ini");
    nowhere.WriteString("A", "k", "v");
    EXPECT_THROW(nowhere.UpdateFile(), rtl::EIniFileException);
}
