// Highlighting of Pascal and C++ lines: which runs the editor paints in which kind, and the
// comment state carried from line to line.
#include "workbench/Highlighter.h"

#include <gtest/gtest.h>

using namespace workbench;

namespace {

// The kind of the run that covers the byte at offset.
TTokenKind KindAt(const std::vector<TTokenRun>& runs, int offset) {
    for (const TTokenRun& r : runs)
        if (offset >= r.Start && offset < r.Start + r.Length) return r.Kind;
    ADD_FAILURE() << "no run covers offset " << offset;
    return TTokenKind::Text;
}

std::vector<TTokenRun> Line(TSourceLanguage lang, std::string_view text,
                            TLineState start = TLineState::Normal, TLineState* end = nullptr) {
    TLineState s = start;
    auto runs = HighlightLine(lang, text, s);
    if (end) *end = s;
    return runs;
}

TEST(Highlighter, LanguageFollowsTheExtension) {
    EXPECT_EQ(LanguageOfFile("/p/Main.pas"), TSourceLanguage::Pascal);
    EXPECT_EQ(LanguageOfFile("Example.DPR"), TSourceLanguage::Pascal);
    EXPECT_EQ(LanguageOfFile("unit1.cpp"), TSourceLanguage::Cpp);
    EXPECT_EQ(LanguageOfFile("unit1.h"), TSourceLanguage::Cpp);
    EXPECT_EQ(LanguageOfFile("Main.dfm"), TSourceLanguage::Plain);
    EXPECT_EQ(LanguageOfFile("dir.pas/README"), TSourceLanguage::Plain);
}

TEST(Highlighter, RunsCoverTheLineWithoutGaps) {
    std::string_view text = "  if A[1] > 'x' then Exit; // done";
    auto runs = Line(TSourceLanguage::Pascal, text);
    int at = 0;
    for (const TTokenRun& r : runs) {
        EXPECT_EQ(r.Start, at);
        EXPECT_GT(r.Length, 0);
        at = r.Start + r.Length;
    }
    EXPECT_EQ(at, static_cast<int>(text.size()));
}

TEST(Highlighter, PascalKeywordsIgnoreCaseButNotIdentifiers) {
    auto runs = Line(TSourceLanguage::Pascal, "BEGIN Beginning end");
    EXPECT_EQ(KindAt(runs, 0), TTokenKind::Keyword);
    EXPECT_EQ(KindAt(runs, 6), TTokenKind::Text); // "Beginning" is an identifier
    EXPECT_EQ(KindAt(runs, 16), TTokenKind::Keyword);
    EXPECT_TRUE(IsPascalKeyword("Implementation"));
    EXPECT_FALSE(IsPascalKeyword("Caption"));
}

TEST(Highlighter, PascalStringsNumbersAndDirectives) {
    std::string_view text = "S := 'it''s'#13#10; N := $FF + 12; {$R *.res}";
    auto runs = Line(TSourceLanguage::Pascal, text);
    EXPECT_EQ(KindAt(runs, 5), TTokenKind::String);
    EXPECT_EQ(KindAt(runs, 9), TTokenKind::String);  // the doubled quote stays inside
    EXPECT_EQ(KindAt(runs, 13), TTokenKind::String); // #13 belongs to the string
    EXPECT_EQ(KindAt(runs, 25), TTokenKind::Number); // $FF
    EXPECT_EQ(KindAt(runs, 31), TTokenKind::Number); // 12
    EXPECT_EQ(KindAt(runs, static_cast<int>(text.find("{$R"))), TTokenKind::Directive);
}

TEST(Highlighter, PascalCommentsCarryOverLineEnds) {
    TLineState state;
    auto first = Line(TSourceLanguage::Pascal, "x := 1; { a comment", TLineState::Normal, &state);
    EXPECT_EQ(state, TLineState::BraceComment);
    EXPECT_EQ(KindAt(first, 10), TTokenKind::Comment);
    auto second = Line(TSourceLanguage::Pascal, "still } begin", state, &state);
    EXPECT_EQ(state, TLineState::Normal);
    EXPECT_EQ(KindAt(second, 0), TTokenKind::Comment);
    EXPECT_EQ(KindAt(second, 8), TTokenKind::Keyword);
    // (* *) is closed only by *), not by }.
    Line(TSourceLanguage::Pascal, "(* one }", TLineState::Normal, &state);
    EXPECT_EQ(state, TLineState::ParenComment);
    Line(TSourceLanguage::Pascal, "two *) end", state, &state);
    EXPECT_EQ(state, TLineState::Normal);
    // A line comment ends with its line.
    Line(TSourceLanguage::Pascal, "// { not open", TLineState::Normal, &state);
    EXPECT_EQ(state, TLineState::Normal);
}

TEST(Highlighter, CppKeywordsCaseSensitiveStringsAndPreprocessor) {
    auto runs = Line(TSourceLanguage::Cpp, "return Return \"a\\\"b\" 0x1F;");
    EXPECT_EQ(KindAt(runs, 0), TTokenKind::Keyword);
    EXPECT_EQ(KindAt(runs, 7), TTokenKind::Text);
    EXPECT_EQ(KindAt(runs, 17), TTokenKind::String); // the escaped quote stays inside
    EXPECT_EQ(KindAt(runs, 21), TTokenKind::Number);
    auto pre = Line(TSourceLanguage::Cpp, "#include <vcl.h> // header");
    EXPECT_EQ(KindAt(pre, 3), TTokenKind::Directive);
    EXPECT_EQ(KindAt(pre, 20), TTokenKind::Comment);
}

TEST(Highlighter, CppBlockCommentsCarryOverLineEnds) {
    TLineState state;
    Line(TSourceLanguage::Cpp, "int a; /* open", TLineState::Normal, &state);
    EXPECT_EQ(state, TLineState::BlockComment);
    auto runs = Line(TSourceLanguage::Cpp, "#define X */ int", state, &state);
    // Inside a comment a '#' is no directive.
    EXPECT_EQ(KindAt(runs, 0), TTokenKind::Comment);
    EXPECT_EQ(KindAt(runs, 13), TTokenKind::Keyword);
    EXPECT_EQ(state, TLineState::Normal);
}

TEST(Highlighter, PlainTextIsOneRun) {
    TLineState state = TLineState::BraceComment;
    auto runs = HighlightLine(TSourceLanguage::Plain, "object Form1: TForm1", state);
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(runs[0].Kind, TTokenKind::Text);
    EXPECT_EQ(state, TLineState::Normal);
    EXPECT_TRUE(HighlightLine(TSourceLanguage::Pascal, "", state).empty());
}

} // namespace
