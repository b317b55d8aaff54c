// TIniStrings: the text syntax, writing back, lookups, sorting modes and the file.
#include "foundation/Classes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace zelvane;

namespace {

void SetText(TIniStrings& ini, const std::vector<std::string>& lines) {
    rtl::TStringList l;
    for (const auto& s : lines)
        l.Add(s);
    ini.SetStrings(&l);
}

std::vector<std::string> GetText(TIniStrings& ini) {
    rtl::TStringList l;
    ini.GetStrings(&l);
    std::vector<std::string> r;
    for (int i = 0; i < l.Count(); ++i)
        r.push_back(l.Strings(i));
    return r;
}

std::vector<std::string> Lines(rtl::TStrings* l) {
    std::vector<std::string> r;
    for (int i = 0; i < l->Count(); ++i)
        r.push_back(l->Strings(i));
    return r;
}

} // namespace

// --- syntax ----------------------------------------------------------------------------------

TEST(IniStrings, TextIsReadAndWrittenBackByItsSyntax) {
    // Comments, empty lines and lines before the first section go; a line without closing
    // bracket is a line of its section; section names keep their blanks and may repeat.
    struct Case {
        std::vector<std::string> In, Out;
        bool SkipBareLines = false;
    };
    const Case cases[] = {
        {{"[S]", "=x", "bare line", "[abc"}, {"[S]", "=x", "bare line", "[abc", ""}},
        {{"[S]", "=x", "bare", "k=v", "empty="}, {"[S]", "k=v", ""}, true},
        {{"orphan=1", "; comment", "", "[A]", "; inner comment", "k=v", "", "x"},
         {"[A]", "k=v", "x", ""}},
        {{"a=1", "b=2"}, {}},
        {{"[ Two words ]", "k=1", "[Dup]", "a=1", "[dup]", "a=2", "b=3"},
         {"[ Two words ]", "k=1", "", "[Dup]", "a=1", "", "[dup]", "a=2", "b=3", ""}},
    };
    for (const Case& c : cases) {
        TIniStrings ini;
        ini.SkipBareLines = c.SkipBareLines;
        SetText(ini, c.In);
        EXPECT_EQ(GetText(ini), c.Out) << c.In[0];
    }
}

TEST(IniStrings, LookupsFindTheFirstSectionAndKeyWithoutRegardToCase) {
    TIniStrings ini;
    SetText(ini, {"[Form]", "Width=100%=x", " a = 1", "Caption=", "=x", "bare line", "[abc", "k=1",
                  "K=2", "[ Two words ]", "[Dup]", "a=1", "[dup]", "a=2", "b=3"});
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
        EXPECT_EQ(ini.ReadString(c.Section, c.Key, "?"), c.Value) << c.Section << "/" << c.Key;
        EXPECT_EQ(ini.HasKey(c.Section, c.Key), c.Value != std::string("?")) << c.Key;
    }
    EXPECT_EQ(ini.GetSection("Form")->Count(), 8);
    EXPECT_EQ(ini.Sections()->Count(), 4);
    EXPECT_TRUE(ini.HasSection(" Two words "));
    EXPECT_FALSE(ini.HasSection("Two words"));
    EXPECT_EQ(ini.GetSection("Missing"), nullptr);
}

TEST(IniStrings, SkipBareLinesKeepsNoKeyWithoutValue) {
    // WriteString of an empty value adds "key=", a line without a value: it isn't kept.
    TIniStrings ini;
    ini.SkipBareLines = true;
    ini.WriteString("S", "e", "");
    EXPECT_FALSE(ini.HasKey("S", "e"));
}

TEST(IniStrings, GetStringsAddsWithoutClearing) {
    TIniStrings ini;
    SetText(ini, {"[S]", "k=v"});
    rtl::TStringList l;
    l.Add("before");
    ini.GetStrings(&l);
    EXPECT_EQ(Lines(&l), (std::vector<std::string>{"before", "[S]", "k=v", ""}));
}

// --- reading and writing ---------------------------------------------------------------------

TEST(IniStrings, WriteStringMakesSectionAndKey) {
    TIniStrings ini;
    ini.WriteString("New", "Key", "1");
    ini.WriteString("New", "key", "2"); // same key, case-insensitive
    ini.WriteString("New", "Empty", "");
    EXPECT_EQ(ini.ReadString("New", "KEY", ""), "2");
    EXPECT_TRUE(ini.HasKey("New", "Empty"));
    EXPECT_EQ(GetText(ini), (std::vector<std::string>{"[New]", "Key=2", "Empty", ""}));
}

TEST(IniStrings, TypedReadsAndWritesOfTheIniBase) {
    TIniStrings ini;
    ini.WriteInteger("N", "Width", 250);
    ini.WriteBool("N", "Visible", true);
    EXPECT_EQ(ini.ReadInteger("N", "Width", 0), 250);
    EXPECT_TRUE(ini.ReadBool("N", "Visible", false));
    EXPECT_EQ(ini.ReadInteger("N", "Height", 17), 17);
    EXPECT_TRUE(ini.ValueExists("N", "Width"));
    EXPECT_TRUE(ini.SectionExists("N"));
}

TEST(IniStrings, AddStringOnlyToAnExistingSectionEvenForAKnownKey) {
    TIniStrings ini;
    SetText(ini, {"[S]", "k=1"});
    ini.AddString("S", "k=2");
    ini.AddString("S", "bare");
    ini.AddString("Missing", "x=1");
    EXPECT_FALSE(ini.HasSection("Missing"));
    EXPECT_EQ(GetText(ini), (std::vector<std::string>{"[S]", "k=1", "k=2", "bare", ""}));
}

TEST(IniStrings, ReplaceStringKeepsTheValue) {
    TIniStrings ini;
    SetText(ini, {"[S]", "b=2", "a=1"});
    ini.SetKeySorted(true);
    ini.ReplaceString("S", "a", "z");
    EXPECT_EQ(ini.ReadString("S", "z", ""), "1");
    EXPECT_FALSE(ini.HasKey("S", "a"));
    // The list was sorted and is sorted again.
    EXPECT_TRUE(ini.GetSection("S")->Sorted());
    EXPECT_EQ(GetText(ini), (std::vector<std::string>{"[S]", "b=2", "z=1", ""}));
    ini.ReplaceString("S", "missing", "q");
    ini.ReplaceString("Missing", "b", "q");
    EXPECT_EQ(GetText(ini).size(), 4u);
}

TEST(IniStrings, DeleteKeyAndEraseSection) {
    TIniStrings ini;
    SetText(ini, {"[A]", "a=1", "b=2", "[B]", "c=3"});
    ini.DeleteKey("A", "A");
    ini.DeleteKey("A", "missing");
    ini.DeleteKey("Missing", "a");
    EXPECT_EQ(ini.ReadString("A", "a", "gone"), "gone");
    ini.EraseSection("b");
    ini.EraseSection("Missing");
    EXPECT_EQ(GetText(ini), (std::vector<std::string>{"[A]", "b=2", ""}));
}

TEST(IniStrings, ReadSectionSharesTheCells) {
    TIniStrings ini;
    SetText(ini, {"[S]", "a=1", "b"});
    rtl::TStringList keys;
    keys.Add("stale");
    ini.ReadSection("S", &keys);
    EXPECT_EQ(Lines(&keys), (std::vector<std::string>{"a", "b"}));
    ASSERT_NE(keys.Objects(0), nullptr);
    EXPECT_EQ(static_cast<TIniStrings::TValueCell*>(keys.Objects(0))->Value, "1");
    ini.WriteString("S", "a", "changed");
    EXPECT_EQ(static_cast<TIniStrings::TValueCell*>(keys.Objects(0))->Value, "changed");
    ini.ReadSection("Missing", &keys);
    EXPECT_EQ(keys.Count(), 0);
}

TEST(IniStrings, ReadSectionsAndSectionValues) {
    TIniStrings ini;
    SetText(ini, {"[B]", "x=1", "y", "[A]"});
    rtl::TStringList l;
    ini.ReadSections(&l);
    EXPECT_EQ(Lines(&l), (std::vector<std::string>{"B", "A"}));
    l.Add("stale");
    ini.ReadSectionValues("B", &l);
    EXPECT_EQ(Lines(&l), (std::vector<std::string>{"x=1", "y"}));
    ini.ReadSectionValues("Missing", &l);
    EXPECT_EQ(l.Count(), 0);
}

// --- sorting modes ---------------------------------------------------------------------------

TEST(IniStrings, SortedModesSurviveSetStrings) {
    TIniStrings ini;
    ini.Sort();
    EXPECT_TRUE(ini.GetSectionSorted());
    EXPECT_TRUE(ini.KeySorted());
    SetText(ini, {"[Z]", "b=1", "a=2", "[A]", "k=v"});
    EXPECT_TRUE(ini.GetSectionSorted());
    EXPECT_TRUE(ini.GetSection("Z")->Sorted());
    EXPECT_EQ(GetText(ini), (std::vector<std::string>{"[A]", "k=v", "", "[Z]", "a=2", "b=1", ""}));
    ini.UnSort();
    EXPECT_FALSE(ini.GetSectionSorted());
    EXPECT_FALSE(ini.GetSection("Z")->Sorted());
}

TEST(IniStrings, KeySortedReachesNewSectionsOnlyThroughWriteString) {
    TIniStrings ini;
    SetText(ini, {"[S]", "b=1", "a=2"});
    ini.SetKeySorted(true);
    EXPECT_TRUE(ini.GetSection("S")->Sorted());
    ini.GetSection("S")->SetSorted(false);
    ini.SetKeySorted(true); // the same value: nothing happens
    EXPECT_FALSE(ini.GetSection("S")->Sorted());
    EXPECT_FALSE(ini.AddSection("Added")->Sorted());
    ini.WriteString("Written", "k", "v");
    EXPECT_TRUE(ini.GetSection("Written")->Sorted());
}

TEST(IniStrings, SortedListsDropARepeatedKeyWithoutLeaking) {
    TIniStrings ini;
    ini.SetKeySorted(true);
    ini.WriteString("S", "k", "1");
    ini.AddString("S", "K=2"); // a sorted list ignores the duplicate
    EXPECT_EQ(ini.GetSection("S")->Count(), 1);
    EXPECT_EQ(ini.ReadString("S", "k", ""), "1");
}

// --- the file --------------------------------------------------------------------------------

TEST(IniStrings, LoadsUpdatesAndReloadsTheFile) {
    std::string name = ::testing::TempDir() + "zelv_ini_" + std::to_string(getpid()) + ".ini";
    {
        std::ofstream f(name, std::ios::binary);
        f << "; settings\r\n[Editor]\r\nWidth=640\r\nFont=Courier New\r\n";
    }
    TIniStrings ini(name);
    EXPECT_EQ(ini.FileName(), name);
    EXPECT_EQ(ini.ReadInteger("Editor", "Width", 0), 640);
    ini.WriteString("Editor", "Width", "800");
    TIniStrings other(name);
    EXPECT_EQ(other.ReadString("Editor", "Width", ""), "640"); // writing doesn't touch the file
    ini.UpdateFile();
    other.LoadValues();
    EXPECT_EQ(other.ReadString("Editor", "Width", ""), "800");
    EXPECT_EQ(other.ReadString("Editor", "Font", ""), "Courier New");
    std::filesystem::remove(name);
    other.LoadValues(); // the file is gone: the document is cleared
    EXPECT_EQ(other.Sections()->Count(), 0);
    TIniStrings memory;
    memory.WriteString("S", "k", "v");
    memory.LoadValues(); // no file name: cleared
    EXPECT_FALSE(memory.HasSection("S"));
}

TEST(IniStrings, UpdateFileWritesCrLfLinesAndReportsFailures) {
    std::string name = ::testing::TempDir() + "zelv_ini_w_" + std::to_string(getpid()) + ".ini";
    TIniStrings ini(name);
    ini.WriteString("A", "k", "v");
    ini.WriteString("A", "bare", "");
    ini.UpdateFile();
    std::ifstream f(name, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(f)), {});
    EXPECT_EQ(text, "[A]\r\nk=v\r\nbare\r\n\r\n");
    std::filesystem::remove(name);
    TIniStrings nowhere(::testing::TempDir() + "no_such_dir/x.ini");
    nowhere.WriteString("A", "k", "v");
    EXPECT_THROW(nowhere.UpdateFile(), rtl::EIniFileException);
}

TEST(IniStrings, ClearEmptiesTheDocument) {
    TIniStrings ini;
    SetText(ini, {"[S]", "k=v"});
    ini.Clear();
    EXPECT_TRUE(GetText(ini).empty());
    EXPECT_EQ(ini.ReadString("S", "k", "d"), "d");
}
