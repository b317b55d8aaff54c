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

TEST(IniStrings, KeyIsBeforeTheFirstEquals) {
    TIniStrings ini;
    SetText(ini, {"[Form]", "Width=100%=x", " a = 1", "Caption="});
    EXPECT_EQ(ini.ReadString("Form", "Width", "?"), "100%=x");
    EXPECT_EQ(ini.ReadString("Form", " a ", "?"), " 1"); // blanks included
    EXPECT_EQ(ini.ReadString("Form", "a", "?"), "?");
    EXPECT_EQ(ini.ReadString("Form", "Caption", "?"), "");
}

TEST(IniStrings, BareLinesAreKeysWithEmptyValues) {
    TIniStrings ini;
    SetText(ini, {"[S]", "=x", "bare line", "[abc"});
    EXPECT_TRUE(ini.HasKey("S", "=x"));
    EXPECT_TRUE(ini.HasKey("S", "bare line"));
    EXPECT_TRUE(ini.HasKey("S", "[abc")); // no closing bracket: a line of the section
    EXPECT_EQ(ini.ReadString("S", "bare line", "default"), ""); // not the default
    EXPECT_EQ(GetText(ini), (std::vector<std::string>{"[S]", "=x", "bare line", "[abc", ""}));
}

TEST(IniStrings, SkipBareLinesDropsThem) {
    TIniStrings ini;
    ini.SkipBareLines = true;
    SetText(ini, {"[S]", "=x", "bare", "k=v", "empty="});
    EXPECT_EQ(GetText(ini), (std::vector<std::string>{"[S]", "k=v", ""}));
    // WriteString of an empty value adds "key=", a line without a value: it isn't kept.
    ini.WriteString("S", "e", "");
    EXPECT_FALSE(ini.HasKey("S", "e"));
}

TEST(IniStrings, CommentsEmptyLinesAndLinesBeforeTheFirstSectionAreIgnored) {
    TIniStrings ini;
    SetText(ini, {"orphan=1", "; comment", "", "[A]", "; inner comment", "k=v", "", "x"});
    EXPECT_FALSE(ini.HasKey("A", "orphan"));
    EXPECT_EQ(GetText(ini), (std::vector<std::string>{"[A]", "k=v", "x", ""}));
}

TEST(IniStrings, TextWithoutSectionIsEmpty) {
    TIniStrings ini;
    SetText(ini, {"a=1", "b=2"});
    EXPECT_EQ(ini.Sections()->Count(), 0);
    EXPECT_TRUE(GetText(ini).empty());
}

TEST(IniStrings, SectionNamesKeepTheirBlanksAndMayRepeat) {
    TIniStrings ini;
    SetText(ini, {"[ Two words ]", "k=1", "[Dup]", "a=1", "[dup]", "a=2", "b=3"});
    EXPECT_TRUE(ini.HasSection(" Two words "));
    EXPECT_FALSE(ini.HasSection("Two words"));
    EXPECT_EQ(ini.Sections()->Count(), 3);
    EXPECT_EQ(ini.ReadString("DUP", "a", ""), "1"); // the first section
    EXPECT_EQ(ini.ReadString("Dup", "b", "none"), "none");
    EXPECT_EQ(GetText(ini), (std::vector<std::string>{"[ Two words ]", "k=1", "", "[Dup]", "a=1",
                                                      "", "[dup]", "a=2", "b=3", ""}));
}

TEST(IniStrings, RepeatedKeysFindTheFirst) {
    TIniStrings ini;
    SetText(ini, {"[S]", "k=1", "K=2"});
    EXPECT_EQ(ini.ReadString("S", "k", ""), "1");
    EXPECT_EQ(ini.GetSection("S")->Count(), 2);
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

TEST(IniStrings, ReadStringDefaults) {
    TIniStrings ini;
    SetText(ini, {"[S]", "k=v"});
    EXPECT_EQ(ini.ReadString("Missing", "k", "d"), "d");
    EXPECT_EQ(ini.ReadString("S", "missing", "d"), "d");
    EXPECT_EQ(ini.ReadString("s", "K", "d"), "v");
    EXPECT_FALSE(ini.HasKey("Missing", "k"));
    EXPECT_FALSE(ini.HasSection("Missing"));
    EXPECT_EQ(ini.GetSection("Missing"), nullptr);
}

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
