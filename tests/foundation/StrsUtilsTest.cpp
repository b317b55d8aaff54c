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

TEST(Layout, OneLineWithItsPrefix) {
    // "  procedure Foo;" becomes "Foo;" with the prefix "  procedure " appended.
    std::string line = "Foo;", layout;
    AppendWithLayout(line, layout, "  procedure ");
    EXPECT_EQ(line, "Foo;  procedure ");
    EXPECT_EQ(layout, "1,5,5,17,");
    size_t read = 0;
    std::string seg;
    ASSERT_TRUE(ReadLayoutSegment(line, layout, read, seg));
    EXPECT_EQ(seg, "Foo;");
    ASSERT_TRUE(ReadLayoutSegment(line, layout, read, seg));
    EXPECT_EQ(seg, "  procedure ");
    EXPECT_FALSE(ReadLayoutSegment(line, layout, read, seg));
}

TEST(Layout, MultiLineDeclaration) {
    std::string line = "Make(A: Integer;", layout;
    AppendWithLayout(line, layout, "    B: string;");
    AppendWithLayout(line, layout, "    C: Char): Boolean;");
    AppendWithLayout(line, layout, "  function ");
    EXPECT_EQ(line, "Make(A: Integer;    B: string;    C: Char): Boolean;  function ");
    EXPECT_EQ(layout, "1,17,17,31,31,53,53,64,");
    size_t read = 0;
    std::string seg;
    std::vector<std::string> segs;
    while (ReadLayoutSegment(line, layout, read, seg))
        segs.push_back(seg);
    EXPECT_EQ(segs, (std::vector<std::string>{"Make(A: Integer;", "    B: string;",
                                              "    C: Char): Boolean;", "  function "}));
}

TEST(Layout, EmptyPrefixGivesAnEmptySegment) {
    std::string line = "// note", layout;
    AppendWithLayout(line, layout, "");
    EXPECT_EQ(layout, "1,8,8,8,");
    size_t read = 0;
    std::string seg;
    ASSERT_TRUE(ReadLayoutSegment(line, layout, read, seg));
    ASSERT_TRUE(ReadLayoutSegment(line, layout, read, seg));
    EXPECT_EQ(seg, "");
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

TEST(SortDeclarations, ByTheNameNotTheKeyword) {
    auto r = Sort({"  procedure Zed;", "  function Alpha: Integer;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines,
              (std::vector<std::string>{"  function Alpha: Integer;", "  procedure Zed;"}));
    EXPECT_EQ(r.ErrorLine, 2);
}

TEST(SortDeclarations, CaseIsIgnored) {
    // A case-sensitive sort would put "alpha" last.
    auto r = Sort({"procedure ZED;", "procedure Gamma;", "procedure alpha;", "procedure Beta;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines, (std::vector<std::string>{"procedure alpha;", "procedure Beta;",
                                                 "procedure Gamma;", "procedure ZED;"}));
}

TEST(SortDeclarations, SameNameToldApartByTheKeywordAtTheEnd) {
    auto r = Sort({"  procedure Foo;", "  function Foo;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines, (std::vector<std::string>{"  function Foo;", "  procedure Foo;"}));
}

TEST(SortDeclarations, LinesWithoutParenthesisEndAtTheFirstSemicolon) {
    auto r = Sort({"  property Name: string", "    read FName;", "  property Count: Integer;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines, (std::vector<std::string>{"  property Count: Integer;",
                                                 "  property Name: string", "    read FName;"}));
}

TEST(SortDeclarations, MultiLineHeadingMovesAsOneUnit) {
    auto r = Sort({"  procedure Zed;", "  function Make(A: Integer;", "      B: string;",
                   "      C: Char): Boolean;", "  procedure Beta;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines, (std::vector<std::string>{"  procedure Beta;", "  function Make(A: Integer;",
                                                 "      B: string;", "      C: Char): Boolean;",
                                                 "  procedure Zed;"}));
}

TEST(SortDeclarations, EqualTextsKeepTheirOrder) {
    // Declarations whose joined texts compare equal stay in the order they had, whatever case
    // or letters of the code page tell them apart; the comment sorts by its text too.
    struct Case {
        std::vector<std::string> In, Out;
    };
    const std::vector<Case> cases = {
        {{"procedure FOO;", "procedure foo;", "procedure Foo;", "procedure Bar;"},
         {"procedure Bar;", "procedure FOO;", "procedure foo;", "procedure Foo;"}},
        {{"procedure foo;", "procedure Foo;", "procedure FOO;"},
         {"procedure foo;", "procedure Foo;", "procedure FOO;"}},
        {{"  // b", "procedure \xC0\xE1;", "procedure \xE0\xC1;", "procedure Z;", "  // B"},
         {"  // b", "  // B", "procedure Z;", "procedure \xC0\xE1;", "procedure \xE0\xC1;"}},
        // The indentation and keyword come last in the text: a blank sorts before a letter.
        {{"function A2: Integer;", "function a1;", "function A1;", "  function a2: Integer;"},
         {"function a1;", "function A1;", "  function a2: Integer;", "function A2: Integer;"}},
    };
    for (const auto& c : cases) {
        auto r = Sort(c.In);
        ASSERT_TRUE(r.Ok);
        EXPECT_EQ(r.Lines, c.Out);
    }
}

TEST(SortDeclarations, ClosingParenthesisWithoutSemicolonFails) {
    std::vector<std::string> lines = LoadData("broken_heading.pas");
    auto r = Sort(lines);
    EXPECT_FALSE(r.Ok);
    EXPECT_EQ(r.ErrorLine, 1); // the heading, counted after the blank line went
    EXPECT_EQ(r.Lines, lines); // unchanged, blank line included
}

TEST(SortDeclarations, NoTerminatorUntilTheEndFails) {
    std::vector<std::string> lines = {"  procedure A;", "", "", "  property Y: Integer read FY",
                                      "  // trailing"};
    auto r = Sort(lines);
    EXPECT_FALSE(r.Ok);
    EXPECT_EQ(r.ErrorLine, 1);
    EXPECT_EQ(r.Lines, lines);
    auto single = Sort({"procedure X"});
    EXPECT_FALSE(single.Ok);
    EXPECT_EQ(single.ErrorLine, 0);
}

TEST(SortDeclarations, UnclosedCommentsFail) {
    auto a = Sort({"procedure A;", "{ open", "procedure B;"});
    EXPECT_FALSE(a.Ok);
    EXPECT_EQ(a.ErrorLine, 1);
    auto b = Sort({"(* open", "procedure B;"});
    EXPECT_FALSE(b.Ok);
    EXPECT_EQ(b.ErrorLine, 0);
}

TEST(SortDeclarations, BlankLinesVanish) {
    auto r = Sort({"", "  procedure B;", "   ", "", "  procedure A;", "\t"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines, (std::vector<std::string>{"  procedure A;", "  procedure B;"}));
}

TEST(SortDeclarations, EmptyAndBlankListsSucceed) {
    auto r = Sort({});
    EXPECT_TRUE(r.Ok);
    EXPECT_EQ(r.ErrorLine, 0);
    EXPECT_TRUE(r.Lines.empty());
    auto b = Sort({"", "  "});
    EXPECT_TRUE(b.Ok);
    EXPECT_TRUE(b.Lines.empty());
}

TEST(SortDeclarations, KeywordAloneWithoutIndentationHasAnEmptyKey) {
    // The empty key sorts the item first, with the following lines up to ";" taken in.
    auto r = Sort({"procedure Beta;", "procedure", "  Alpha;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines, (std::vector<std::string>{"procedure", "  Alpha;", "procedure Beta;"}));
}

TEST(SortDeclarations, KeywordAloneWithIndentationIsTheKey) {
    // "  procedure" is taken whole with its blanks, so it isn't a keyword: the item sorts under
    // "procedure".
    auto r = Sort({"  procedure", "    Alpha;", "  function Query;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines,
              (std::vector<std::string>{"  procedure", "    Alpha;", "  function Query;"}));
}

TEST(SortDeclarations, KeywordAloneOnAContinuationLineGoesInFront) {
    auto r = Sort({"  function Make(A: Integer;", "    procedure", "    ): Integer;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines, (std::vector<std::string>{"  function     procedureMake(A: Integer;",
                                                 "    ): Integer;"}));
}

TEST(SortDeclarations, BlockCommentTakesTheRestOfItsLastLine) {
    auto r =
        Sort({"  procedure Zed;", "  { note", "    more } procedure Alpha;", "  procedure Beta;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines, (std::vector<std::string>{"  { note", "    more } procedure Alpha;",
                                                 "  procedure Beta;", "  procedure Zed;"}));
}

TEST(SortDeclarations, LineCommentIsAnItemOfItsOwn) {
    auto r = Sort({"  procedure B;", "  // about A", "  procedure A;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines,
              (std::vector<std::string>{"  // about A", "  procedure A;", "  procedure B;"}));
}

TEST(SortDeclarations, CyrillicNamesFoldAndFollowLatin) {
    // Windows-1251: "\xC1\xE5\xF2\xE0" is Beta in Cyrillic, "\xE0\xEB\xFC\xF4\xE0" alpha.
    auto r =
        Sort({"procedure \xC1\xE5\xF2\xE0;", "procedure Zed;", "procedure \xE0\xEB\xFC\xF4\xE0;"});
    ASSERT_TRUE(r.Ok);
    EXPECT_EQ(r.Lines,
              (std::vector<std::string>{"procedure Zed;", "procedure \xE0\xEB\xFC\xF4\xE0;",
                                        "procedure \xC1\xE5\xF2\xE0;"}));
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
