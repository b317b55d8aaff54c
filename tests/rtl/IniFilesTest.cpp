// Ini files: typed reads and writes, case-insensitive names, sections, what a rewrite keeps,
// and atomic replacement of the file (a failed write leaves the old file whole).
#include "rtl/IniFiles.h"
#include "rtl/Lists.h"

#include "rtl/SysUtils.h"

#include "TestSupport.h"

#include <algorithm>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace rtl;
using namespace rtltest;

namespace {

// A scratch directory with the ini file's name in it.
class IniTest : public TempDirTest {
protected:
    void SetUp() override {
        TempDirTest::SetUp();
        file = Path("settings.ini");
    }
    void Put(const std::string& text) { WriteFile(file, text); }
    std::string Get() const { return ReadFile(file); }
    V DirEntries() const {
        V r;
        for (const auto& e : std::filesystem::directory_iterator(dir))
            r.push_back(e.path().filename());
        std::sort(r.begin(), r.end());
        return r;
    }
    std::string file;
};

const char* kSample = "; settings of the tool\r\n"
                      "[Main]\r\n"
                      "Name = Zelvane \r\n"
                      "Count=0x1F\r\n"
                      "; keep me\r\n"
                      "Flag=1\r\n"
                      "not a key line\r\n"
                      "\r\n"
                      "[Other]\r\n"
                      "Ratio=2.5\r\n"
                      "Hex=$10\r\n";

} // namespace

// ---------------------------------------------------------------------------------------------
// Reading

TEST_F(IniTest, ReadsValuesWithCaseInsensitiveNamesTypedOrNot) {
    Put(kSample);
    TIniFile ini(file);
    EXPECT_EQ(V({ini.ReadString("Main", "Name", "?"), ini.ReadString("MAIN", "name", "?"),
                 ini.ReadString("Main", "Missing", "def"), ini.ReadString("Nowhere", "Name", "def"),
                 ini.ReadString("Main", "not a key line", "def"),
                 ini.ReadString("Main", "; keep me", "def")}),
              V({"Zelvane", "Zelvane", "def", "def", "def", "def"}));
    // Typed: a value that is not an integer reads as the default.
    EXPECT_EQ(std::vector<int>(
                  {ini.ReadInteger("Main", "Count", -1), ini.ReadInteger("Other", "Hex", -1),
                   ini.ReadInteger("Main", "Name", -1), ini.ReadInteger("Main", "Missing", 7)}),
              std::vector<int>({31, 16, -1, 7}));
    EXPECT_EQ(std::vector<bool>(
                  {ini.ReadBool("Main", "Flag", false), ini.ReadBool("Main", "Count", false),
                   ini.ReadBool("Main", "Missing", false), ini.ReadBool("Main", "Name", true)}),
              std::vector<bool>({true, true, false, true}));
    EXPECT_DOUBLE_EQ(ini.ReadFloat("Other", "Ratio", 0), 2.5);
    EXPECT_DOUBLE_EQ(ini.ReadFloat("Main", "Name", 1.25), 1.25);
}

TEST_F(IniTest, SectionsAndKeys) {
    Put(kSample);
    TIniFile ini(file);
    TStringList l;
    ini.ReadSections(&l);
    EXPECT_EQ(Lines(l), (V{"Main", "Other"}));
    ini.ReadSection("main", &l);
    EXPECT_EQ(Lines(l), (V{"Name", "Count", "Flag"}));
    ini.ReadSectionValues("Other", &l);
    EXPECT_EQ(Lines(l), (V{"Ratio=2.5", "Hex=$10"}));
    ini.ReadSection("none", &l);
    EXPECT_EQ(l.Count(), 0);
    EXPECT_EQ(
        std::vector<bool>({ini.SectionExists("OTHER"), ini.SectionExists("none"),
                           ini.ValueExists("Main", "FLAG"), ini.ValueExists("Main", "Ratio")}),
        std::vector<bool>({true, false, true, false}));
}

TEST_F(IniTest, MissingFileReadsEmptyAndIsNotCreatedByReadingAnUnreadableOneRaises) {
    TIniFile ini(file), directory(dir);
    EXPECT_THROW(directory.ReadString("a", "b", ""), EFOpenError);
    EXPECT_THROW(TMemIniFile{dir}, EFOpenError);
    EXPECT_EQ(ini.ReadString("a", "b", "d"), "d");
    TStringList l;
    ini.ReadSections(&l);
    EXPECT_EQ(l.Count(), 0);
    ini.EraseSection("a");
    ini.DeleteKey("a", "b");
    EXPECT_FALSE(FileExists(file));
}

// ---------------------------------------------------------------------------------------------
// Writing

TEST_F(IniTest, WritesCreateTheFile) {
    mode_t old = umask(022);
    {
        TIniFile ini(file);
        ini.WriteString("Main", "Name", "Zelvane");
        ini.WriteInteger("Main", "Count", -5);
        ini.WriteBool("Main", "Flag", true);
        ini.WriteString("Second", "Key", "");
    }
    umask(old);
    EXPECT_EQ(Get(), "[Main]\r\nName=Zelvane\r\nCount=-5\r\nFlag=1\r\n\r\n[Second]\r\nKey=\r\n");
    struct stat st {};
    ASSERT_EQ(stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0644u);
}

TEST_F(IniTest, RewritingKeepsCommentsAndOtherLines) {
    Put(kSample);
    TIniFile ini(file);
    ini.WriteString("main", "NAME", "Other");
    ini.WriteString("Main", "Added", "yes");
    ini.WriteString("New", "K", "v");
    EXPECT_EQ(Get(), "; settings of the tool\r\n"
                     "[Main]\r\n"
                     "NAME=Other\r\n"
                     "Count=0x1F\r\n"
                     "; keep me\r\n"
                     "Flag=1\r\n"
                     "not a key line\r\n"
                     "Added=yes\r\n"
                     "\r\n"
                     "[Other]\r\n"
                     "Ratio=2.5\r\n"
                     "Hex=$10\r\n"
                     "\r\n"
                     "[New]\r\n"
                     "K=v\r\n");
    ini.DeleteKey("MAIN", "count");
    ini.EraseSection("other");
    EXPECT_EQ(Get(), "; settings of the tool\r\n"
                     "[Main]\r\n"
                     "NAME=Other\r\n"
                     "; keep me\r\n"
                     "Flag=1\r\n"
                     "not a key line\r\n"
                     "Added=yes\r\n"
                     "\r\n"
                     "[New]\r\n"
                     "K=v\r\n");
}

TEST_F(IniTest, TypedWritesReadBack) {
    TIniFile ini(file);
    ini.WriteFloat("N", "F", 0.1);
    EXPECT_EQ(ini.ReadString("N", "F", ""), "0.1");
    EXPECT_DOUBLE_EQ(ini.ReadFloat("N", "F", 0), 0.1);
    TDateTime dt = EncodeDate(2024, 3, 5).Value + EncodeTime(14, 7, 9, 0).Value;
    ini.WriteDateTime("D", "When", dt);
    ini.WriteDate("D", "Day", dt);
    ini.WriteTime("D", "At", dt);
    const std::pair<double, double> dates[] = {
        {ini.ReadDateTime("D", "When", 0).Value, dt.Value},
        {ini.ReadDate("D", "Day", 0).Value, EncodeDate(2024, 3, 5).Value},
        {ini.ReadTime("D", "At", 0).Value, EncodeTime(14, 7, 9, 0).Value},
        {ini.ReadDate("D", "At", 3).Value, 3}};
    for (auto [got, want] : dates)
        EXPECT_DOUBLE_EQ(got, want);
    // Floats follow the decimal separator.
    char saved = DecimalSeparator;
    DecimalSeparator = ',';
    ini.WriteFloat("N", "F", 1.5);
    EXPECT_EQ(ini.ReadString("N", "F", ""), "1,5");
    EXPECT_DOUBLE_EQ(ini.ReadFloat("N", "F", 0), 1.5);
    DecimalSeparator = saved;
    EXPECT_DOUBLE_EQ(ini.ReadFloat("N", "F", 9), 9); // "1,5" is no number with '.'
}

TEST_F(IniTest, WritesThatCannotBeLinesRaise) {
    Put(kSample);
    TIniFile ini(file);
    for (auto [section, key, value] : {std::tuple{"Main", "a=b", "x"},
                                       {"Main", "", "x"},
                                       {"Main", "[x", "x"},
                                       {"Main", "k", "two\nlines"},
                                       {"Ma]in", "k", "x"},
                                       {"Main\r\n[Evil]", "k", "x"}})
        EXPECT_THROW(ini.WriteString(section, key, value), EIniFileException) << section << key;
    EXPECT_EQ(Get(), kSample);
}

// ---------------------------------------------------------------------------------------------
// Atomic replacement

TEST_F(IniTest, FailedWriteLeavesTheOldFileAndNoTemporary) {
    Put(kSample);
    TIniFile ini(file);
    // Limit the size of files this process may write: the new contents can't be written.
    rlimit saved{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = saved;
    small.rlim_cur = 16;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    std::string message;
    try {
        ini.WriteString("Main", "Name", std::string(200, 'x'));
    } catch (const EIniFileException& e) {
        message = e.Message();
    }
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(message, "Unable to write to " + file);
    EXPECT_EQ(Get(), kSample);
    EXPECT_EQ(DirEntries(), (V{"settings.ini"}));
    ini.WriteString("Main", "Name", "ok");
    EXPECT_EQ(ini.ReadString("Main", "Name", ""), "ok");
}

TEST_F(IniTest, ReplaceFileAtomically) {
    Put("old");
    ReplaceFileAtomically(file, "new contents");
    EXPECT_EQ(Get(), "new contents");
    ReplaceFileAtomically(file, "");
    EXPECT_EQ(Get(), "");
    EXPECT_EQ(DirEntries(), (V{"settings.ini"}));
    EXPECT_THROW(ReplaceFileAtomically(dir, "x"), EIniFileException); // a directory
    EXPECT_THROW(ReplaceFileAtomically("", "x"), EIniFileException);
}

TEST_F(IniTest, AMissingOrReadOnlyDirectoryMakesTheWriteFail) {
    TIniFile missing(Path("no/such/dir/x.ini"));
    EXPECT_THROW(missing.WriteString("S", "K", "V"), EIniFileException);
    TMemIniFile mem("");
    mem.WriteString("S", "K", "V");
    EXPECT_THROW(mem.UpdateFile(), EIniFileException);
    if (geteuid() == 0) GTEST_SKIP() << "root writes into read-only directories";
    Put(kSample);
    ASSERT_EQ(chmod(dir.c_str(), 0500), 0);
    TIniFile ini(file);
    EXPECT_THROW(ini.WriteString("Main", "Name", "new"), EIniFileException);
    chmod(dir.c_str(), 0700);
    EXPECT_EQ(Get(), kSample);
    EXPECT_EQ(DirEntries(), (V{"settings.ini"}));
}

TEST_F(IniTest, ReplacingKeepsPermissionsAndSymbolicLinks) {
    Put(kSample);
    ASSERT_EQ(chmod(file.c_str(), 0600), 0);
    std::string link = Path("link.ini");
    ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
    TIniFile ini(link);
    ini.WriteString("Main", "Name", "viaLink");
    struct stat st {};
    ASSERT_EQ(lstat(link.c_str(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode));
    ASSERT_EQ(stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    TIniFile direct(file);
    EXPECT_EQ(direct.ReadString("Main", "Name", ""), "viaLink");
}

// ---------------------------------------------------------------------------------------------
// TMemIniFile

TEST_F(IniTest, MemIniFileStrings) {
    TMemIniFile ini(file);
    TStringList src;
    src.SetText("[A]\nx=1\n[B]\ny=2\n");
    ini.SetStrings(&src);
    EXPECT_EQ(ini.ReadString("b", "Y", ""), "2");
    ini.DeleteKey("A", "x");
    ini.WriteString("A", "z", "3");
    TStringList out;
    ini.GetStrings(&out);
    EXPECT_EQ(Lines(out), (V{"[A]", "z=3", "[B]", "y=2"}));
    ini.Clear();
    ini.ReadSections(&out);
    EXPECT_EQ(out.Count(), 0);

    Put(kSample);
    ini.Rename(file, true);
    EXPECT_EQ(ini.FileName(), file);
    EXPECT_EQ(ini.ReadString("Main", "Name", ""), "Zelvane");
    // Nothing is written before UpdateFile.
    ini.Rename(Path("copy.ini"), false);
    ini.EraseSection("Main");
    EXPECT_FALSE(FileExists(Path("copy.ini")));
    ini.UpdateFile();
    TIniFile copy(Path("copy.ini"));
    EXPECT_EQ(copy.ReadString("Other", "Ratio", ""), "2.5");
    EXPECT_FALSE(copy.SectionExists("Main"));
}
