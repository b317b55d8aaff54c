// Line lists and the declaration sort: blank lines, terminators searched from the end of a
// line, and the sort of declaration blocks by declared name with their layout restored.
#include "foundation/StrsUtils.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

using namespace zelvane;

namespace {

std::vector<std::string> ToVector(rtl::TStrings* l) {
    std::vector<std::string> r;
    for (int i = 0; i < l->Count(); ++i)
        r.push_back(l->Strings(i));
    return r;
}

void Fill(rtl::TStrings* l, const std::vector<std::string>& lines) {
    l->Clear();
    for (const auto& s : lines)
        l->Add(s);
}

// Sorts the lines; the result and the lines afterwards.
struct SortResult {
    bool Ok;
    int ErrorLine;
    std::vector<std::string> Lines;
};
SortResult Sort(const std::vector<std::string>& lines) {
    rtl::TStringList l;
    Fill(&l, lines);
    int errorLine = -1;
    bool ok = SortDeclarations(&l, errorLine);
    return {ok, errorLine, ToVector(&l)};
}

std::filesystem::path DataDir() {
    // CTest names the source tree; __FILE__ may be relative to the build directory.
    if (const char* root = std::getenv("ZELVANE_SOURCE_DIR"))
        return std::filesystem::path(root) / "tests" / "foundation" / "data";
    return std::filesystem::path(__FILE__).parent_path() / "data";
}

std::vector<std::string> LoadData(const std::string& name) {
    rtl::TStringList l;
    l.LoadFromFile((DataDir() / name).string());
    return ToVector(&l);
}

} // namespace

// --- line list routines ----------------------------------------------------------------------

TEST(InitialWords, TheFiveKeywordsWithoutRegardToCase) {
    for (const char* w : {"constructor", "destructor", "function", "procedure", "property",
                          "PROCEDURE", "Function"})
        EXPECT_TRUE(IsInitialWord(w)) << w;
    for (const char* w : {"var", "const", "class", "type", "", "proc", " procedure", "iwFunction"})
        EXPECT_FALSE(IsInitialWord(w)) << w;
}

TEST(LineLists, SkipBlankLinesMovesTheIndexOnly) {
    rtl::TStringList l;
    Fill(&l, {"", " \t", "x", ""});
    int index = 0;
    EXPECT_TRUE(SkipBlankLines(&l, index));
    EXPECT_EQ(index, 2);
    EXPECT_EQ(l.Count(), 4);
    index = 3;
    EXPECT_FALSE(SkipBlankLines(&l, index));
    EXPECT_EQ(index, 4);
}

TEST(LineLists, DeleteBlankLinesDeletesThem) {
    rtl::TStringList l;
    Fill(&l, {"a", "", "  ", "b", " "});
    int index = 1;
    EXPECT_TRUE(DeleteBlankLines(&l, index));
    EXPECT_EQ(index, 1);
    EXPECT_EQ(ToVector(&l), (std::vector<std::string>{"a", "b", " "}));
    index = 2;
    EXPECT_FALSE(DeleteBlankLines(&l, index));
    EXPECT_EQ(ToVector(&l), (std::vector<std::string>{"a", "b"}));
}

TEST(LineLists, FindLineSearchesEachLineFromItsEnd) {
    rtl::TStringList l;
    Fill(&l, {"a(b", "", "c);d;", "e;"});
    int index = 0, pos = 0;
    EXPECT_TRUE(FindLine(&l, ';', index, pos));
    EXPECT_EQ(index, 1); // the blank line was deleted on the way
    EXPECT_EQ(pos, 5);   // the last ";" of the line
    EXPECT_EQ(l.Count(), 3);
    index = 0;
    EXPECT_FALSE(FindLine(&l, '#', index, pos));
    EXPECT_EQ(index, 3);
}

TEST(LineLists, FindLineExWithASubstring) {
    rtl::TStringList l;
    Fill(&l, {"(* a", "  b *) c *)", "d"});
    int index = 0, pos = 0;
    EXPECT_TRUE(FindLineEx(&l, "*)", index, pos));
    EXPECT_EQ(index, 1);
    EXPECT_EQ(pos, 10);
    index = 2;
    EXPECT_FALSE(FindLineEx(&l, "*)", index, pos));
}

TEST(LineLists, FindWordInLinesMovesTheIndexOnlyOnAMatch) {
    rtl::TStringList l;
    Fill(&l, {"begin", "", "  END;", "end"});
    int index = 1;
    EXPECT_TRUE(FindWordInLines("end", &l, index));
    EXPECT_EQ(index, 3);
    index = 1;
    EXPECT_FALSE(FindWordInLines("until", &l, index));
    EXPECT_EQ(index, 1);
    index = 0;
    EXPECT_TRUE(FindWordInLines("BEGIN", &l, index));
    EXPECT_EQ(index, 0);
}

// --- layout strings --------------------------------------------------------------------------

TEST(Layout, EachPrefixAppendedIsReadBackAsASegment) {
    // "  procedure Foo;" becomes "Foo;" with the prefix "  procedure " appended; a heading over
    // several lines gathers them in one; an empty prefix gives an empty segment.
    struct Case {
        std::string Line;
        std::vector<std::string> Prefixes;
        std::string Layout;
    };
    const Case cases[] = {
        {"Foo;", {"  procedure "}, "1,5,5,17,"},
        {"Make(A: Integer;",
         {"    B: string;", "    C: Char): Boolean;", "  function "},
         "1,17,17,31,31,53,53,64,"},
        {"// note", {""}, "1,8,8,8,"},
    };
    for (const Case& c : cases) {
        std::string line = c.Line, layout, joined = c.Line, seg;
        std::vector<std::string> segments, expected = {c.Line};
        for (const auto& prefix : c.Prefixes) {
            AppendWithLayout(line, layout, prefix);
            joined += prefix;
            expected.push_back(prefix);
        }
        EXPECT_EQ(line, joined);
        EXPECT_EQ(layout, c.Layout);
        size_t read = 0;
        while (ReadLayoutSegment(line, layout, read, seg))
            segments.push_back(seg);
        EXPECT_EQ(segments, expected);
    }
}

TEST(Layout, ReadingStopsWithoutAFullPair) {
    size_t read = 0;
    std::string seg = "kept";
    EXPECT_FALSE(ReadLayoutSegment("abc", "", read, seg));
    EXPECT_FALSE(ReadLayoutSegment("abc", "1,", read, seg));
    EXPECT_EQ(seg, "kept");
    read = 0;
    EXPECT_THROW(ReadLayoutSegment("abc", "x,2,", read, seg), rtl::EConvertError);
}

// --- the declaration sort --------------------------------------------------------------------

TEST(SortDeclarations, SortsByTheNameWithTheLayoutKept) {
    // Each item's lines and where it stops counts the lines after the sort.
    struct Case {
        const char* Name;
        std::vector<std::string> In, Out;
    };
    const std::vector<Case> cases = {
        {"the name, not the keyword",
         {"  procedure Zed;", "  function Alpha: Integer;"},
         {"  function Alpha: Integer;", "  procedure Zed;"}},
        {"case is ignored: a case-sensitive sort puts alpha last",
         {"procedure ZED;", "procedure Gamma;", "procedure alpha;", "procedure Beta;"},
         {"procedure alpha;", "procedure Beta;", "procedure Gamma;", "procedure ZED;"}},
        {"the same name told apart by the keyword at the end",
         {"  procedure Foo;", "  function Foo;"},
         {"  function Foo;", "  procedure Foo;"}},
        {"a line without parenthesis ends at the first semicolon",
         {"  property Name: string", "    read FName;", "  property Count: Integer;"},
         {"  property Count: Integer;", "  property Name: string", "    read FName;"}},
        {"a heading over several lines moves as one",
         {"  procedure Zed;", "  function Make(A: Integer;", "      B: string;",
          "      C: Char): Boolean;", "  procedure Beta;"},
         {"  procedure Beta;", "  function Make(A: Integer;", "      B: string;",
          "      C: Char): Boolean;", "  procedure Zed;"}},
        {"blank lines vanish",
         {"", "  procedure B;", "   ", "", "  procedure A;", "\t"},
         {"  procedure A;", "  procedure B;"}},
        {"an empty list", {}, {}},
        {"a blank list", {"", "  "}, {}},
        // The empty key sorts the item first, with the following lines up to ";" taken in.
        {"a keyword alone without indentation has an empty key",
         {"procedure Beta;", "procedure", "  Alpha;"},
         {"procedure", "  Alpha;", "procedure Beta;"}},
        // "  procedure" is taken whole with its blanks, so it isn't a keyword.
        {"a keyword alone with indentation is the key",
         {"  procedure", "    Alpha;", "  function Query;"},
         {"  procedure", "    Alpha;", "  function Query;"}},
        {"a keyword alone on a continuation line goes in front",
         {"  function Make(A: Integer;", "    procedure", "    ): Integer;"},
         {"  function     procedureMake(A: Integer;", "    ): Integer;"}},
        {"a block comment takes the rest of its last line",
         {"  procedure Zed;", "  { note", "    more } procedure Alpha;", "  procedure Beta;"},
         {"  { note", "    more } procedure Alpha;", "  procedure Beta;", "  procedure Zed;"}},
        {"a line comment is an item of its own",
         {"  procedure B;", "  // about A", "  procedure A;"},
         {"  // about A", "  procedure A;", "  procedure B;"}},
        // Windows-1251: "\xC1\xE5\xF2\xE0" is Beta in Cyrillic, "\xE0\xEB\xFC\xF4\xE0" alpha.
        {"Cyrillic names fold and follow Latin",
         {"procedure \xC1\xE5\xF2\xE0;", "procedure Zed;", "procedure \xE0\xEB\xFC\xF4\xE0;"},
         {"procedure Zed;", "procedure \xE0\xEB\xFC\xF4\xE0;", "procedure \xC1\xE5\xF2\xE0;"}},
        // Declarations whose joined texts compare equal stay in the order they had, whatever
        // case or letters of the code page tell them apart; the comment sorts by its text too.
        {"equal texts keep their order",
         {"procedure FOO;", "procedure foo;", "procedure Foo;", "procedure Bar;"},
         {"procedure Bar;", "procedure FOO;", "procedure foo;", "procedure Foo;"}},
        {"equal texts keep their order, none other",
         {"procedure foo;", "procedure Foo;", "procedure FOO;"},
         {"procedure foo;", "procedure Foo;", "procedure FOO;"}},
        {"equal texts keep their order, comments and code page letters",
         {"  // b", "procedure \xC0\xE1;", "procedure \xE0\xC1;", "procedure Z;", "  // B"},
         {"  // b", "  // B", "procedure Z;", "procedure \xC0\xE1;", "procedure \xE0\xC1;"}},
        // The indentation and keyword come last in the text: a blank sorts before a letter.
        {"equal names, the indentation last",
         {"function A2: Integer;", "function a1;", "function A1;", "  function a2: Integer;"},
         {"function a1;", "function A1;", "  function a2: Integer;", "function A2: Integer;"}},
    };
    for (const auto& c : cases) {
        auto r = Sort(c.In);
        EXPECT_TRUE(r.Ok) << c.Name;
        EXPECT_EQ(r.Lines, c.Out) << c.Name;
        EXPECT_EQ(r.ErrorLine, static_cast<int>(c.Out.size())) << c.Name;
    }
}

TEST(SortDeclarations, AnUnendedItemFailsWithTheListUnchanged) {
    // Where it stops is counted after the blank lines before it went.
    struct Case {
        const char* Name;
        std::vector<std::string> In;
        int ErrorLine;
    };
    const std::vector<Case> cases = {
        {"a closing parenthesis without semicolon", LoadData("broken_heading.pas"), 1},
        {"no terminator until the end",
         {"  procedure A;", "", "", "  property Y: Integer read FY", "  // trailing"},
         1},
        {"no terminator in a single line", {"procedure X"}, 0},
        {"an unclosed brace comment", {"procedure A;", "{ open", "procedure B;"}, 1},
        {"an unclosed parenthesis comment", {"(* open", "procedure B;"}, 0},
    };
    for (const auto& c : cases) {
        auto r = Sort(c.In);
        EXPECT_FALSE(r.Ok) << c.Name;
        EXPECT_EQ(r.ErrorLine, c.ErrorLine) << c.Name;
        EXPECT_EQ(r.Lines, c.In) << c.Name;
    }
}

TEST(SortDeclarations, SortingTwiceChangesNothing) {
    std::vector<std::string> once = Sort(LoadData("class_section.pas")).Lines;
    EXPECT_EQ(Sort(once).Lines, once);
}

// Real declaration blocks, each with the expected result beside it.
class SortDeclarationFiles : public ::testing::TestWithParam<std::pair<const char*, const char*>> {
};

TEST_P(SortDeclarationFiles, SortsAsExpected) {
    auto [input, expected] = GetParam();
    std::vector<std::string> lines = LoadData(input);
    ASSERT_FALSE(lines.empty());
    auto r = Sort(lines);
    ASSERT_TRUE(r.Ok) << "stopped at line " << r.ErrorLine;
    EXPECT_EQ(r.Lines, LoadData(expected));
    EXPECT_EQ(r.ErrorLine, static_cast<int>(r.Lines.size()));
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, SortDeclarationFiles,
    ::testing::Values(std::make_pair("class_section.pas", "class_section.sorted.pas"),
                      std::make_pair("unit_interface.pas", "unit_interface.sorted.pas"),
                      std::make_pair("form_header.h", "form_header.sorted.h")));
