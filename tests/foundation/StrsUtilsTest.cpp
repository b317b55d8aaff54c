// Line lists and the declaration sort: blank lines, terminators searched from the end of a
// line, and the sort of declaration blocks by declared name with their layout restored.
#include "foundation/StrsUtils.h"
#include "tests/foundation/TestText.h"

#include <gtest/gtest.h>

using namespace zelvane;
using namespace foundationtest;

namespace {

// Sorts the lines given joined by "|": "ok" or "fails", the line where it stopped, and the
// lines afterwards.
std::string Sorted(const std::string& joined) {
    rtl::TStringList l;
    Fill(&l, joined);
    int stop = -1;
    bool ok = SortDeclarations(&l, stop);
    return (ok ? "ok " : "fails ") + std::to_string(stop) + ": " + Joined(&l);
}

} // namespace

// --- line list routines ----------------------------------------------------------------------

TEST(LineLists, BlankLinesAndSearchesFromTheIndex) {
    // Each routine over the lines from an index: its answer, the index it leaves and the lines
    // afterwards. Skipping moves the index only; deleting removes the blank lines at it; FindLine
    // searches each line from its end, deleting blank lines on the way; FindWordInLines moves
    // the index only on a match.
    rtl::TStringList l;
    int pos = 0;
    auto run = [&](const std::string& lines, int index, auto&& call) {
        Fill(&l, lines);
        bool found = call(index);
        return std::to_string(found) + " " + std::to_string(index) + " " + Joined(&l);
    };
    auto skip = [&](int& i) { return SkipBlankLines(&l, i); };
    auto del = [&](int& i) { return DeleteBlankLines(&l, i); };
    auto findWord = [&](const char* word) {
        return [&, word](int& i) { return FindWordInLines(word, &l, i); };
    };
    const std::string tabbed = "| \t|x|", words = "begin||  END;|end";
    EXPECT_EQ(run(tabbed, 0, skip), "1 2 | \t|x|");
    EXPECT_EQ(run(tabbed, 3, skip), "0 4 | \t|x|");
    EXPECT_EQ(run("a||  |b| ", 1, del), "1 1 a|b| ");
    EXPECT_EQ(run("a|b| ", 2, del), "0 2 a|b");
    EXPECT_EQ(run("a(b||c);d;|e;", 0, [&](int& i) { return FindLine(&l, ';', i, pos); }),
              "1 1 a(b|c);d;|e;");
    EXPECT_EQ(pos, 5); // the last ";" of the line
    EXPECT_EQ(run("a(b|c);d;|e;", 0, [&](int& i) { return FindLine(&l, '#', i, pos); }),
              "0 3 a(b|c);d;|e;");
    EXPECT_EQ(run("(* a|  b *) c *)|d", 0, [&](int& i) { return FindLineEx(&l, "*)", i, pos); }),
              "1 1 (* a|  b *) c *)|d");
    EXPECT_EQ(pos, 10);
    EXPECT_TRUE(run("(* a|  b *) c *)|d", 2, [&](int& i) {
                    return FindLineEx(&l, "*)", i, pos);
                }).starts_with("0 "));
    EXPECT_EQ(run(words, 1, findWord("end")), "1 3 " + words);
    EXPECT_EQ(run(words, 1, findWord("until")), "0 1 " + words);
    EXPECT_EQ(run(words, 0, findWord("BEGIN")), "1 0 " + words);
}

// --- layout strings --------------------------------------------------------------------------

TEST(Layout, EachPrefixAppendedIsReadBackAsASegmentUpToTheLastFullPair) {
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
    // Reading stops without a full pair.
    size_t read = 0;
    std::string seg = "kept";
    EXPECT_FALSE(ReadLayoutSegment("abc", "", read, seg));
    EXPECT_FALSE(ReadLayoutSegment("abc", "1,", read, seg));
    EXPECT_EQ(seg, "kept");
    read = 0;
    EXPECT_THROW(ReadLayoutSegment("abc", "x,2,", read, seg), rtl::EConvertError);
}

// --- the declaration sort --------------------------------------------------------------------

TEST(SortDeclarations, SortsByTheNameWithTheLayoutKeptOrFailsWithTheListUnchanged) {
    // Each case's lines joined by "|", and what Sorted makes of them: where it stops counts the
    // lines after the blank ones before it went.
    struct Case {
        const char *Name, *In, *Out;
    };
    const Case cases[] = {
        {"case is ignored: a case-sensitive sort puts alpha last",
         "procedure ZED;|procedure Gamma;|procedure alpha;|procedure Beta;",
         "ok 4: procedure alpha;|procedure Beta;|procedure Gamma;|procedure ZED;"},
        {"the same name told apart by the keyword at the end", "  procedure Foo;|  function Foo;",
         "ok 2:   function Foo;|  procedure Foo;"},
        {"a line without parenthesis ends at the first semicolon",
         "  property Name: string|    read FName;|  property Count: Integer;",
         "ok 3:   property Count: Integer;|  property Name: string|    read FName;"},
        {"blank lines vanish", "|  procedure B;|   ||  procedure A;|\t",
         "ok 2:   procedure A;|  procedure B;"},
        {"an empty list", "", "ok 0: "},
        {"a blank list", "|  ", "ok 0: "},
        // The empty key sorts the item first, with the following lines up to ";" taken in.
        {"a keyword alone without indentation has an empty key",
         "procedure Beta;|procedure|  Alpha;", "ok 3: procedure|  Alpha;|procedure Beta;"},
        // "  procedure" is taken whole with its blanks, so it isn't a keyword.
        {"a keyword alone with indentation is the key", "  procedure|    Alpha;|  function Query;",
         "ok 3:   procedure|    Alpha;|  function Query;"},
        {"a keyword alone on a continuation line goes in front",
         "  function Make(A: Integer;|    procedure|    ): Integer;",
         "ok 2:   function     procedureMake(A: Integer;|    ): Integer;"},
        {"a block comment takes the rest of its last line",
         "  procedure Zed;|  { note|    more } procedure Alpha;|  procedure Beta;",
         "ok 4:   { note|    more } procedure Alpha;|  procedure Beta;|  procedure Zed;"},
        // Windows-1251: "\xC1\xE5\xF2\xE0" is Beta in Cyrillic, "\xE0\xEB\xFC\xF4\xE0" alpha.
        {"Cyrillic names fold and follow Latin",
         "procedure \xC1\xE5\xF2\xE0;|procedure Zed;|procedure \xE0\xEB\xFC\xF4\xE0;",
         "ok 3: procedure Zed;|procedure \xE0\xEB\xFC\xF4\xE0;|procedure \xC1\xE5\xF2\xE0;"},
        // Declarations whose joined texts compare equal stay in the order they had, whatever
        // case or letters of the code page tell them apart; the comment sorts by its text too.
        {"equal texts keep their order, comments and code page letters",
         "  // b|procedure \xC0\xE1;|procedure \xE0\xC1;|procedure Z;|  // B",
         "ok 5:   // b|  // B|procedure Z;|procedure \xC0\xE1;|procedure \xE0\xC1;"},
        // The indentation and keyword come last in the text: a blank sorts before a letter.
        {"equal names, the indentation last",
         "function A2: Integer;|function a1;|function A1;|  function a2: Integer;",
         "ok 4: function a1;|function A1;|  function a2: Integer;|function A2: Integer;"},
        {"no terminator until the end",
         "  procedure A;|||  property Y: Integer read FY|  // trailing",
         "fails 1:   procedure A;|||  property Y: Integer read FY|  // trailing"},
        {"an unclosed brace comment", "procedure A;|{ open|procedure B;",
         "fails 1: procedure A;|{ open|procedure B;"},
        {"an unclosed parenthesis comment", "(* open|procedure B;",
         "fails 0: (* open|procedure B;"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(Sorted(c.In), c.Out) << c.Name;
}
