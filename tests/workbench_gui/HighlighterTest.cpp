// Highlighting of Pascal and C++ lines: which runs the editor paints in which kind, and the
// comment state carried from line to line.
#include "workbench/Highlighter.h"

#include <gtest/gtest.h>

using namespace workbench;

namespace {

using L = TSourceLanguage;
using S = TLineState;

// The kinds of a line's runs, a letter a byte: t text, k keyword, c comment, s string, n number,
// d directive, y symbol; a byte no run covers, or covered twice, fails the test.
std::string Kinds(L lang, std::string_view text, S& state) {
    std::string kinds(text.size(), '?');
    for (const TTokenRun& r : HighlightLine(lang, text, state))
        for (int i = r.Start; i < r.Start + r.Length; ++i) {
            EXPECT_EQ(kinds.at(i), '?') << "byte " << i << " is in two runs";
            kinds.at(i) = "tkcsndy"[int(r.Kind)];
        }
    EXPECT_EQ(kinds.find('?'), std::string::npos) << "a byte is in no run";
    return kinds;
}

TEST(Highlighter, LanguageFollowsTheExtension) {
    struct {
        const char* file;
        L lang;
    } cases[] = {{"/p/Main.pas", L::Pascal}, {"Example.DPR", L::Pascal},
                 {"unit1.cpp", L::Cpp},      {"unit1.h", L::Cpp},
                 {"Main.dfm", L::Plain},     {"dir.pas/README", L::Plain}};
    for (const auto& c : cases)
        EXPECT_EQ(LanguageOfFile(c.file), c.lang) << c.file;
}

// Pascal keywords ignore case but identifiers that start like one are none; a doubled quote
// and #13 stay in the string; comments carry over line ends, (* *) closed only by *), and a
// line comment ends with its line. C++ keywords mind case, an escaped quote stays in the
// string, and inside a comment '#' is no directive. Plain text is one run and resets the state.
TEST(Highlighter, EachByteHasTheKindOfItsRunAndCommentsCarryTheirState) {
    struct Case {
        L lang;
        const char* text;
        S from;
        const char* kinds;
        S to;
    } cases[] = {
        {L::Pascal, "  if A[1] > 'x' then Exit; // done", S::Normal,
         "ttkkttynytytssstkkkktttttytccccccc", S::Normal},
        {L::Pascal, "BEGIN Beginning end", S::Normal, "kkkkktttttttttttkkk", S::Normal},
        {L::Pascal, "S := 'it''s'#13#10; N := $FF + 12; {$R *.res}", S::Normal,
         "ttyytsssssssssssssytttyytnnntytnnytdddddddddd", S::Normal},
        {L::Pascal, "x := 1; { a comment", S::Normal, "ttyytnytccccccccccc", S::BraceComment},
        {L::Pascal, "still } begin", S::BraceComment, "ccccccctkkkkk", S::Normal},
        {L::Pascal, "(* one }", S::Normal, "cccccccc", S::ParenComment},
        {L::Pascal, "two *) end", S::ParenComment, "cccccctkkk", S::Normal},
        {L::Pascal, "// { not open", S::Normal, "ccccccccccccc", S::Normal},
        {L::Cpp, "return Return \"a\\\"b\" 0x1F;", S::Normal, "kkkkkkttttttttsssssstnnnny",
         S::Normal},
        {L::Cpp, "#include <vcl.h> // header", S::Normal, "dddddddddddddddddccccccccc", S::Normal},
        {L::Cpp, "int a; /* open", S::Normal, "kkkttytccccccc", S::BlockComment},
        {L::Cpp, "#define X */ int", S::BlockComment, "cccccccccccctkkk", S::Normal},
        {L::Plain, "object Form1: TForm1", S::BraceComment, "tttttttttttttttttttt", S::Normal},
        {L::Pascal, "", S::Normal, "", S::Normal}};
    for (const Case& c : cases) {
        S state = c.from;
        EXPECT_EQ(Kinds(c.lang, c.text, state), c.kinds) << c.text;
        EXPECT_EQ(state, c.to) << c.text;
    }
    S state = S::Normal;
    EXPECT_EQ(HighlightLine(L::Plain, "object Form1: TForm1", state).size(), 1u);
    EXPECT_TRUE(IsPascalKeyword("Implementation"));
    EXPECT_FALSE(IsPascalKeyword("Caption"));
}

} // namespace
