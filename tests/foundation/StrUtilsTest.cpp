// String scanning: the family of search and copy routines, their bounds, the reverse and
// case-insensitive variants, replacement and the word scanner.
#include "foundation/StrUtils.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>

using namespace zelvane;

using Strs = std::vector<std::string>;

// --- cases of the searches that answer through an out-position --------------------------------

// A search over s for a needle from start: whether it found, and the 1-based position it leaves
// (0 when not found).
template <class Needle> struct FindCase {
    bool (*Find)(std::string_view, Needle, int&, int);
    std::string_view S;
    Needle Sub;
    int Start;
    bool Found;
    int Pos;
};

// A copy up to a needle: when found, result is the text it names; otherwise the result is left
// as it was ("untouched").
template <class Needle> struct CopyCase {
    bool (*Copy)(std::string_view, Needle, std::string&, bool, int&, int);
    std::string_view S;
    Needle Sub;
    bool IgnoreCase;
    int Start;
    bool Found;
    const char* Result;
    int Pos;
};

// The call of a case, for a failure's message.
template <class Case> std::string Describe(const Case& c) {
    std::ostringstream out;
    out << "\"" << c.S << "\", \"" << c.Sub << "\", start " << c.Start;
    return out.str();
}

template <class Needle, std::size_t N> void ExpectFinds(const FindCase<Needle> (&cases)[N]) {
    for (const auto& c : cases) {
        int pos = -5; // every call must set it
        EXPECT_EQ(c.Find(c.S, c.Sub, pos, c.Start), c.Found) << Describe(c);
        EXPECT_EQ(pos, c.Pos) << Describe(c);
    }
}

template <class Needle, std::size_t N> void ExpectCopies(const CopyCase<Needle> (&cases)[N]) {
    for (const auto& c : cases) {
        std::string r = "untouched";
        int pos = -5;
        EXPECT_EQ(c.Copy(c.S, c.Sub, r, c.IgnoreCase, pos, c.Start), c.Found) << Describe(c);
        EXPECT_EQ(r + " " + std::to_string(pos), c.Result + (" " + std::to_string(c.Pos)))
            << Describe(c);
    }
}

// --- the case table --------------------------------------------------------------------------

TEST(CaseTable, Windows1251Letters) {
    // Latin and Cyrillic letters, yo included, swap case; every other byte stays.
    for (auto [lower, upper] :
         {std::pair{'a', 'A'}, {'z', 'Z'}, {'\xB8', '\xA8'}, {'\xE0', '\xC0'}, {'\xFF', '\xDF'}}) {
        EXPECT_EQ(CaseTable[uint8_t(lower)], uint8_t(upper)) << lower;
        EXPECT_EQ(CaseTable[uint8_t(upper)], uint8_t(lower)) << upper;
    }
    for (int c : {0, 9, 32, 48, 57, 64, 91, 96, 123, 127, 128, 167, 169, 183, 185, 191})
        EXPECT_EQ(CaseTable[c], c) << c;
    for (int c = 0; c < 256; ++c)
        EXPECT_EQ(CaseTable[CaseTable[c]], c) << c;
}

// --- bytes -----------------------------------------------------------------------------------

// A position search over s for a needle from start and the position it gives.
template <class Needle> struct PosCase {
    int (*Fn)(std::string_view, Needle, int);
    std::string_view S;
    Needle Sub;
    int Start, Pos;
};

template <class Needle, std::size_t N> void ExpectPositions(const PosCase<Needle> (&cases)[N]) {
    for (const auto& c : cases)
        EXPECT_EQ(c.Fn(c.S, c.Sub, c.Start), c.Pos) << Describe(c);
}

TEST(CharPos, ForwardReverseAndCaseInsensitiveWithinBounds) {
    // A start out of bounds gives 0; the case-insensitive ones fold Latin and Cyrillic letters
    // only; the reverse ones search from start towards 1, -1 meaning the end.
    const PosCase<char> cases[] = {
        {CharPos, "abcabc", 'b', 1, 2},     {CharPos, "abcabc", 'b', 3, 5},
        {CharPos, "abcabc", 'x', 1, 0},     {CharPos, "abcabc", 'c', 6, 6},
        {CharPos, "abc", 'a', 0, 0},        {CharPos, "abc", 'a', -1, 0},
        {CharPos, "abc", 'c', 4, 0},        {CharPos, "B", 'b', 1, 0},
        {CharPosI, "xyzB", 'b', 1, 4},      {CharPosI, "\xB8", '\xA8', 1, 1},
        {CharPosI, "..\xE0", '\xC0', 1, 3}, {CharPosI, "[", '{', 1, 0},
        {CharPosR, "abcabc", 'b', -1, 5},   {CharPosR, "abcabc", 'b', 4, 2},
        {CharPosR, "abcabc", 'b', 1, 0},    {CharPosR, "abcabc", 'a', 1, 1},
        {CharPosR, "abc", 'a', 4, 0},       {CharPosR, "abc", 'a', -2, 0},
        {CharPosRI, "aBcAbC", 'b', -1, 5},
    };
    ExpectPositions(cases);
    EXPECT_EQ(CharPos("abcabc", 'b'), 2); // the defaults: forward from 1, reverse from the end
    EXPECT_EQ(CharPosR("abcabc", 'b'), 5);
    // The Find ones return whether found and the position.
    const FindCase<char> finds[] = {
        {FindCharPos, "a=b", '=', 1, true, 2},    {FindCharPos, "ab", '=', 1, false, 0},
        {FindCharPosI, "aXb", 'x', 1, true, 2},   {FindCharPosR, "a=b=c", '=', -1, true, 4},
        {FindCharPosRI, "aXbx", 'X', 3, true, 2},
    };
    ExpectFinds(finds);
}

TEST(CopyToChar, TextFromStartUpToTheByteOrReverseAfterItUpToStart) {
    const CopyCase<char> cases[] = {
        {CopyToChar, "key=value", '=', false, 1, true, "key", 4},
        {CopyToChar, "a,b,c", ',', false, 3, true, "b", 4},
        {CopyToChar, "abXcd", 'x', true, 1, true, "ab", 3},
        {CopyToChar, "abXcd", 'x', false, 1, false, "untouched", 0},
        {CopyToCharR, "C:\\dir\\file.pas", '\\', false, -1, true, "file.pas", 7},
        {CopyToCharR, "a.b.c", '.', false, 3, true, "b", 2},
        {CopyToCharR, "abc", '.', false, -1, false, "untouched", 0},
        {CopyToCharR, "aXb", 'x', true, -1, true, "b", 2},
    };
    ExpectCopies(cases);
}

// --- sets ------------------------------------------------------------------------------------

TEST(CharsPos, FindAndCopy) {
    TCharScores delims = CharScores(" \t");
    int pos = 0;
    std::string r = "kept";
    // Each answer with the position and the text it leaves; a copy that finds nothing leaves the
    // text alone.
    auto after = [&](bool found) {
        return std::to_string(found) + " " + std::to_string(pos) + " " + r;
    };
    EXPECT_EQ((Strs{after(FindCharsPos("a\tb c", delims, pos)),
                    after(FindCharsPosR("a\tb c", delims, pos)),
                    after(CopyToChars("none", delims, r, pos)),
                    after(CopyToCharsR("none", delims, r, pos)),
                    after(CopyToChars("word\trest", delims, r, pos)),
                    after(CopyToCharsR("first last", delims, r, pos))}),
              (Strs{"1 2 kept", "1 4 kept", "0 0 kept", "0 0 kept", "1 5 word", "1 6 last"}));
}

// --- comparison ------------------------------------------------------------------------------

TEST(CompStr, BuffersOverALengthStringsLengthsFirst) {
    EXPECT_EQ((std::vector<bool>{CompStr("abc", "abd", 2), CompStr("abc", "abd", 3),
                                 CompStr("x", "y", 0), CompStrI("aBc", "AbC", 3),
                                 CompStrI("\xE0\xB8", "\xC0\xA8", 2), CompStrI("a1", "A!", 2)}),
              (std::vector<bool>{true, false, true, true, true, false}));
    EXPECT_EQ((std::vector<bool>{CompString("abc", "abc"), CompString("abc", "ab"),
                                 CompString("ab", "abc"), CompString("abc", "ABC"),
                                 CompString("", ""), CompText("Procedure", "PROCEDURE"),
                                 CompText("Procedure", "PROCEDURES"), CompText("", "")}),
              (std::vector<bool>{true, false, false, false, true, true, false, true}));
}

// --- substrings ------------------------------------------------------------------------------

TEST(StringPos, ForwardReverseAndBounds) {
    // Fewer characters left than Sub has give 0; an empty Sub matches at once. The reverse
    // ones clamp the start to the last place Sub fits; it bounds where a match begins, and the
    // match may reach beyond it.
    const PosCase<std::string_view> cases[] = {
        {StringPos, "one two one", "one", 1, 1},
        {StringPos, "one two one", "one", 2, 9},
        {StringPos, "one two one", "one", 10, 0},
        {StringPos, "one two one", "one", 9, 9},
        {StringPos, "abc", "b", 0, 0},
        {StringPos, "abc", "b", 4, 0},
        {StringPos, "abc", "", 1, 1},
        {StringPos, "", "", 1, 0},
        {StringPosI, "One TWO", "two", 1, 5},
        {StringPos, "One TWO", "two", 1, 0},
        {StringPosR, "one two one", "one", -1, 9},
        {StringPosR, "one two one", "one", 10, 9},
        {StringPosR, "one two one", "one", 8, 1},
        {StringPosR, "one two one", "one", 12, 0},
        {StringPosR, "ab", "abc", -1, 0},
        {StringPosR, "abc", "a", 0, 0},
        {StringPosR, "xab", "ab", 2, 2},
        {StringPosRI, "x ONE one", "One", -1, 7},
    };
    ExpectPositions(cases);
    EXPECT_EQ(StringPos("one two one", "one"), 1);
    EXPECT_EQ(StringPosR("one two one", "one"), 9);
    const FindCase<std::string_view> finds[] = {
        {FindStrPos, "begin end", "end", 1, true, 7},
        {FindStrPos, "begin end", "END", 1, false, 0},
        {FindStrPosI, "begin end", "END", 1, true, 7},
        {FindStrPosR, "(* a *) (* b *)", "(*", -1, true, 9},
        {FindStrPosRI, "AbAB", "ab", 2, true, 1},
    };
    ExpectFinds(finds);
}

TEST(FindStrPosEx, PlainPosOverTheWholeString) {
    int pos = 0;
    std::string r = "kept";
    EXPECT_EQ((std::vector<bool>{FindStrPosEx("name=value", "=", pos), pos == 5,
                                 FindStrPosEx("name", "=", pos), FindStrPosEx("name", "", pos),
                                 CopyToStrEx("name", "x", r, pos), r == "kept",
                                 CopyToStrEx("name=value", "=v", r, pos), r == "name"}),
              (std::vector<bool>{true, true, false, false, false, true, true, true}));
}

// --- replacement -----------------------------------------------------------------------------

TEST(StrReplace, FirstLastOrAllGoingOnAfterTheInsertedText) {
    // Each row from the left and from the right. Going on after the inserted text, a
    // replacement cannot loop; an empty old text matches at once but is never replaced all over.
    struct Case {
        const char *S, *Old, *New;
        bool All, IgnoreCase;
        const char *Result, *ResultR;
    };
    const Case cases[] = {
        {"a-b-c", "-", "+", false, false, "a+b-c", "a-b+c"},
        {"a-b-c", "-", "+", true, false, "a+b+c", "a+b+c"},
        {"a-B-b", "b", "x", true, false, "a-B-x", "a-B-x"},
        {"a-B-b", "b", "x", true, true, "a-x-x", "a-x-x"},
        {"abc", "z", "y", true, false, "abc", "abc"},
        {"", "z", "y", false, false, "", ""},
        {"aaa", "a", "", true, false, "", ""},
        {"abc", "", "X", true, false, "abc", "abc"},
        {"abc", "", "X", false, false, "Xabc", "abXc"},
        {"aa", "a", "aa", true, false, "aaaa", "aaaa"},
        {"x", "x", "xx", true, true, "xx", "xx"},
        // From the right a match may reach into the one replaced before it.
        {"aaa", "aa", "b", true, false, "ba", "bb"},
        {"-x-", "-", "", true, false, "x", "x"},
        {"Ab-aB", "ab", "c", false, true, "c-aB", "Ab-c"},
    };
    for (const Case& c : cases) {
        TReplaceParams params;
        params.ReplaceAll = c.All;
        params.IgnoreCase = c.IgnoreCase;
        EXPECT_EQ(StrReplace(c.S, c.Old, c.New, params), c.Result) << c.S << " " << c.Old;
        EXPECT_EQ(StrReplaceR(c.S, c.Old, c.New, params), c.ResultR) << c.S << " " << c.Old;
    }
}

// --- cutting and words -----------------------------------------------------------------------

TEST(Cut, RemovesAndReturns) {
    std::string s = "  procedure Foo;";
    // Each cut, then what is left.
    EXPECT_EQ((Strs{Cut(s, 1, 12), s, Cut(s, 4, 10), s, Cut(s, 1, 0), s, Cut(s, 9, 1), s}),
              (Strs{"  procedure ", "Foo;", ";", "Foo", "", "Foo", "", "Foo"}));
}

TEST(SkipBlanks, EveryByteUpTo32IsBlank) {
    // Above 127 is text; with none, pos is past the end, or start when that lies beyond it.
    struct Case {
        const char* S;
        int Start;
        bool Found;
        int Pos;
    };
    const Case cases[] = {
        {" \t\r\n\x01x", 1, true, 6}, {"\xC0", 1, true, 1}, {"ab c", 3, true, 4},
        {"ab  ", 3, false, 5},        {"ab", 7, false, 7},  {"", 1, false, 1},
    };
    for (const Case& c : cases) {
        int pos = -5;
        EXPECT_EQ(SkipBlanks(c.S, pos, c.Start), c.Found) << c.S;
        EXPECT_EQ(pos, c.Pos) << c.S;
    }
}

TEST(ReadWord, TheFirstWordOfTheLineOnlyASpaceEnds) {
    // The scan begins at the first non-blank whatever the start says; a last word runs from
    // start, blanks included; a blank line leaves next alone.
    struct Case {
        const char* S;
        int Start;
        const char* Word;
        int Next;
    };
    const Case cases[] = {
        {"procedure Foo;", 1, "procedure", 10},
        {"  function Bar: Integer;", 1, "function", 11},
        {"one two", 5, "one", 4},
        {"procedure\tFoo", 1, "procedure\tFoo", 14},
        {"   alone", 1, "   alone", 9},
        {"   alone", 4, "alone", 9},
        {"alone", 3, "one", 6},
        {"   \t ", 1, "", 42},
        {"", 1, "", 42},
    };
    for (const Case& c : cases) {
        int next = 42;
        EXPECT_EQ(ReadWord(c.S, next, c.Start), c.Word) << c.S;
        EXPECT_EQ(next, c.Next) << c.S;
    }
}

TEST(FindWordInLine, LooksOnlyAtTheFirstWord) {
    int pos = 0;
    EXPECT_EQ((std::vector<int>{FindWordInLine("  BEGIN x", "begin", pos), pos,
                                FindWordInLine("   ", "begin", pos),
                                FindWordInLine("x begin", "begin", pos)}),
              (std::vector<int>{true, 8, false, false}));
}
