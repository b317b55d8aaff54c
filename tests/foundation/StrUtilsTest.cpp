// String scanning: the family of search and copy routines, their bounds, the reverse and
// case-insensitive variants, replacement and the word scanner.
#include "foundation/StrUtils.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>

using namespace zelvane;

// --- cases of the searches that answer through an out-position --------------------------------

// A search over s for a needle from start: whether it found, and the 1-based position it leaves
// (0 when not found).
template <class Needle> struct FindCase {
    const char* name;
    bool (*find)(std::string_view, Needle, int&, int);
    std::string_view s;
    Needle needle;
    int start;
    bool found;
    int pos;
};

// A copy up to a needle: when found, result is the text it names; otherwise the result is left
// as it was ("untouched").
template <class Needle> struct CopyCase {
    const char* name;
    bool (*copy)(std::string_view, Needle, std::string&, bool, int&, int);
    std::string_view s;
    Needle needle;
    bool ignoreCase;
    int start;
    bool found;
    const char* result;
    int pos;
};

template <class Case> std::string Describe(const Case& c) {
    std::ostringstream out;
    out << c.name << "(\"" << c.s << "\", \"" << c.needle << "\", start " << c.start << ")";
    return out.str();
}

template <class Needle, std::size_t N> void ExpectFinds(const FindCase<Needle> (&cases)[N]) {
    for (const auto& c : cases) {
        int pos = -5; // every call must set it
        EXPECT_EQ(c.find(c.s, c.needle, pos, c.start), c.found) << Describe(c);
        EXPECT_EQ(pos, c.pos) << Describe(c);
    }
}

template <class Needle, std::size_t N> void ExpectCopies(const CopyCase<Needle> (&cases)[N]) {
    for (const auto& c : cases) {
        std::string r = "untouched";
        int pos = -5;
        EXPECT_EQ(c.copy(c.s, c.needle, r, c.ignoreCase, pos, c.start), c.found) << Describe(c);
        EXPECT_EQ(r, c.result) << Describe(c);
        EXPECT_EQ(pos, c.pos) << Describe(c);
    }
}

// --- the case table --------------------------------------------------------------------------

TEST(CaseTable, Windows1251Letters) {
    EXPECT_EQ(CaseTable['a'], 'A');
    EXPECT_EQ(CaseTable['z'], 'Z');
    EXPECT_EQ(CaseTable['A'], 'a');
    EXPECT_EQ(CaseTable['Z'], 'z');
    EXPECT_EQ(CaseTable[184], 168); // yo
    EXPECT_EQ(CaseTable[168], 184);
    EXPECT_EQ(CaseTable[224], 192); // a
    EXPECT_EQ(CaseTable[255], 223); // ya
    EXPECT_EQ(CaseTable[192], 224);
    EXPECT_EQ(CaseTable[223], 255);
    for (int c : {0, 9, 32, 48, 57, 64, 91, 96, 123, 127, 128, 167, 169, 183, 185, 191})
        EXPECT_EQ(CaseTable[c], c) << c;
    for (int c = 0; c < 256; ++c)
        EXPECT_EQ(CaseTable[CaseTable[c]], c) << c;
}

// --- bytes -----------------------------------------------------------------------------------

TEST(CharPos, ForwardFromStart) {
    EXPECT_EQ(CharPos("abcabc", 'b'), 2);
    EXPECT_EQ(CharPos("abcabc", 'b', 3), 5);
    EXPECT_EQ(CharPos("abcabc", 'x'), 0);
    EXPECT_EQ(CharPos("abcabc", 'c', 6), 6);
}

TEST(CharPos, StartOutOfBoundsGivesZero) {
    EXPECT_EQ(CharPos("abc", 'a', 0), 0);
    EXPECT_EQ(CharPos("abc", 'a', -1), 0);
    EXPECT_EQ(CharPos("abc", 'c', 4), 0);
    EXPECT_EQ(CharPos("", 'a', 1), 0);
    EXPECT_EQ(CharPosI("abc", 'A', 0), 0);
}

TEST(CharPos, CaseInsensitiveFoldsLatinAndCyrillic) {
    EXPECT_EQ(CharPosI("xyzB", 'b'), 4);
    EXPECT_EQ(CharPosI("xyzb", 'B'), 4);
    EXPECT_EQ(CharPosI("\xB8", '\xA8'), 1); // yo and YO
    EXPECT_EQ(CharPosI("\xA8", '\xB8'), 1);
    EXPECT_EQ(CharPosI("..\xE0", '\xC0'), 3);
    EXPECT_EQ(CharPosI("1", '!'), 0); // other bytes don't fold
    EXPECT_EQ(CharPosI("[", '{'), 0);
    EXPECT_EQ(CharPos("B", 'b'), 0);
}

TEST(CharPos, ReverseFromStartTowardsOne) {
    EXPECT_EQ(CharPosR("abcabc", 'b'), 5);
    EXPECT_EQ(CharPosR("abcabc", 'b', -1), 5);
    EXPECT_EQ(CharPosR("abcabc", 'b', 4), 2);
    EXPECT_EQ(CharPosR("abcabc", 'b', 1), 0);
    EXPECT_EQ(CharPosR("abcabc", 'a', 1), 1);
    EXPECT_EQ(CharPosR("abc", 'a', 0), 0);
    EXPECT_EQ(CharPosR("abc", 'a', 4), 0);
    EXPECT_EQ(CharPosR("abc", 'a', -2), 0);
    EXPECT_EQ(CharPosR("", 'a'), 0);
    EXPECT_EQ(CharPosRI("aBcAbC", 'b'), 5);
    EXPECT_EQ(CharPosRI("aBcAbC", 'B', 4), 2);
}

TEST(FindCharPos, ReturnsWhetherFoundAndThePosition) {
    const FindCase<char> cases[] = {
        {"FindCharPos", FindCharPos, "a=b", '=', 1, true, 2},
        {"FindCharPos", FindCharPos, "ab", '=', 1, false, 0},
        {"FindCharPosI", FindCharPosI, "aXb", 'x', 1, true, 2},
        {"FindCharPosR", FindCharPosR, "a=b=c", '=', -1, true, 4},
        {"FindCharPosRI", FindCharPosRI, "aXbx", 'X', 3, true, 2},
    };
    ExpectFinds(cases);
}

TEST(CopyToChar, TextFromStartUpToTheByte) {
    const CopyCase<char> cases[] = {
        {"CopyToChar", CopyToChar, "key=value", '=', false, 1, true, "key", 4},
        {"CopyToChar", CopyToChar, "a,b,c", ',', false, 3, true, "b", 4},
        {"CopyToChar", CopyToChar, "abXcd", 'x', true, 1, true, "ab", 3},
        {"CopyToChar", CopyToChar, "abXcd", 'x', false, 1, false, "untouched", 0},
    };
    ExpectCopies(cases);
}

TEST(CopyToChar, ReverseGivesTextAfterTheByteUpToStart) {
    const CopyCase<char> cases[] = {
        {"CopyToCharR", CopyToCharR, "C:\\dir\\file.pas", '\\', false, -1, true, "file.pas", 7},
        {"CopyToCharR", CopyToCharR, "a.b.c", '.', false, 3, true, "b", 2},
        {"CopyToCharR", CopyToCharR, "abc", '.', false, -1, false, "untouched", 0},
        {"CopyToCharR", CopyToCharR, "aXb", 'x', true, -1, true, "b", 2},
    };
    ExpectCopies(cases);
}

// --- sets ------------------------------------------------------------------------------------

TEST(CharsPos, AnyByteOfTheSet) {
    TCharScores delims = CharScores(";,");
    EXPECT_EQ(CharsPos("ab,c;d", delims), 3);
    EXPECT_EQ(CharsPos("ab,c;d", delims, 4), 5);
    EXPECT_EQ(CharsPos("abcd", delims), 0);
    EXPECT_EQ(CharsPos("a,", delims, 3), 0);
    EXPECT_EQ(CharsPosR("ab,c;d", delims), 5);
    EXPECT_EQ(CharsPosR("ab,c;d", delims, 4), 3);
    EXPECT_EQ(CharsPosR("ab,c;d", delims, 7), 0);
    TCharScores high;
    high.set(0xFF);
    EXPECT_EQ(CharsPos("ab\xFF", high), 3);
}

TEST(CharsPos, FindAndCopy) {
    TCharScores delims = CharScores(" \t");
    int pos = 0;
    std::string r;
    EXPECT_TRUE(FindCharsPos("a\tb c", delims, pos));
    EXPECT_EQ(pos, 2);
    EXPECT_TRUE(FindCharsPosR("a\tb c", delims, pos));
    EXPECT_EQ(pos, 4);
    EXPECT_TRUE(CopyToChars("word\trest", delims, r, pos));
    EXPECT_EQ(r, "word");
    EXPECT_TRUE(CopyToCharsR("first last", delims, r, pos));
    EXPECT_EQ(r, "last");
    r = "kept";
    EXPECT_FALSE(CopyToChars("none", delims, r, pos));
    EXPECT_FALSE(CopyToCharsR("none", delims, r, pos));
    EXPECT_EQ(r, "kept");
}

// --- comparison ------------------------------------------------------------------------------

TEST(CompStr, BuffersOverALength) {
    EXPECT_TRUE(CompStr("abc", "abd", 2));
    EXPECT_FALSE(CompStr("abc", "abd", 3));
    EXPECT_TRUE(CompStr("x", "y", 0));
    EXPECT_TRUE(CompStrI("aBc", "AbC", 3));
    EXPECT_TRUE(CompStrI("\xE0\xB8", "\xC0\xA8", 2));
    EXPECT_FALSE(CompStrI("a1", "A!", 2));
}

TEST(CompString, LengthsFirst) {
    EXPECT_TRUE(CompString("abc", "abc"));
    EXPECT_FALSE(CompString("abc", "ab"));
    EXPECT_FALSE(CompString("ab", "abc"));
    EXPECT_FALSE(CompString("abc", "ABC"));
    EXPECT_TRUE(CompString("", ""));
    EXPECT_TRUE(CompText("Procedure", "PROCEDURE"));
    EXPECT_FALSE(CompText("Procedure", "PROCEDURES"));
    EXPECT_TRUE(CompText("", ""));
}

// --- substrings ------------------------------------------------------------------------------

TEST(StringPos, ForwardAndBounds) {
    EXPECT_EQ(StringPos("one two one", "one"), 1);
    EXPECT_EQ(StringPos("one two one", "one", 2), 9);
    EXPECT_EQ(StringPos("one two one", "one", 10), 0); // fewer characters left than Sub has
    EXPECT_EQ(StringPos("one two one", "one", 9), 9);
    EXPECT_EQ(StringPos("abc", "abcd"), 0);
    EXPECT_EQ(StringPos("abc", "b", 0), 0);
    EXPECT_EQ(StringPos("abc", "b", 4), 0);
    EXPECT_EQ(StringPos("abc", ""), 1); // an empty Sub matches at once
    EXPECT_EQ(StringPos("abc", "", 3), 3);
    EXPECT_EQ(StringPos("", ""), 0);
    EXPECT_EQ(StringPosI("One TWO", "two"), 5);
    EXPECT_EQ(StringPos("One TWO", "two"), 0);
}

TEST(StringPos, ReverseClampsTheStart) {
    EXPECT_EQ(StringPosR("one two one", "one"), 9);
    EXPECT_EQ(StringPosR("one two one", "one", -1), 9);
    EXPECT_EQ(StringPosR("one two one", "one", 10), 9); // clamped to 9
    EXPECT_EQ(StringPosR("one two one", "one", 8), 1);
    EXPECT_EQ(StringPosR("one two one", "one", 11), 9);
    EXPECT_EQ(StringPosR("one two one", "one", 12), 0); // beyond the length
    EXPECT_EQ(StringPosR("ab", "abc"), 0);              // clamped below 1
    EXPECT_EQ(StringPosR("abc", "a", 0), 0);
    // The start bounds where a match begins; the match itself may reach beyond it.
    EXPECT_EQ(StringPosR("aaa", "aa", 1), 1);
    EXPECT_EQ(StringPosR("xab", "ab", 2), 2);
    EXPECT_EQ(StringPosRI("x ONE one", "One"), 7);
    EXPECT_EQ(StringPosRI("x ONE one", "One", 6), 3);
}

TEST(FindStrPos, AllFour) {
    const FindCase<std::string_view> cases[] = {
        {"FindStrPos", FindStrPos, "begin end", "end", 1, true, 7},
        {"FindStrPos", FindStrPos, "begin end", "END", 1, false, 0},
        {"FindStrPosI", FindStrPosI, "begin end", "END", 1, true, 7},
        {"FindStrPosR", FindStrPosR, "(* a *) (* b *)", "(*", -1, true, 9},
        {"FindStrPosRI", FindStrPosRI, "AbAB", "ab", 2, true, 1},
    };
    ExpectFinds(cases);
}

TEST(CopyToStr, ForwardAndReverse) {
    const CopyCase<std::string_view> cases[] = {
        {"CopyToStr", CopyToStr, "a := b", ":=", false, 1, true, "a ", 3},
        {"CopyToStr", CopyToStr, "x AND y", "and", true, 1, true, "x ", 3},
        {"CopyToStrR", CopyToStrR, "one<>two<>three", "<>", false, -1, true, "three", 9},
        {"CopyToStrR", CopyToStrR, "one<>two<>three", "<>", false, 8, true, "two", 4},
        {"CopyToStrR", CopyToStrR, "abc", "xy", false, -1, false, "untouched", 0},
        {"CopyToStr", CopyToStr, "abc", "xy", false, 1, false, "untouched", 0},
    };
    ExpectCopies(cases);
}

TEST(FindStrPosEx, PlainPosOverTheWholeString) {
    int pos = 0;
    std::string r = "kept";
    EXPECT_TRUE(FindStrPosEx("name=value", "=", pos));
    EXPECT_EQ(pos, 5);
    EXPECT_FALSE(FindStrPosEx("name", "=", pos));
    EXPECT_FALSE(FindStrPosEx("name", "", pos));
    EXPECT_TRUE(CopyToStrEx("name=value", "=v", r, pos));
    EXPECT_EQ(r, "name");
    r = "kept";
    EXPECT_FALSE(CopyToStrEx("name", "x", r, pos));
    EXPECT_EQ(r, "kept");
}

// --- replacement -----------------------------------------------------------------------------

TEST(StrReplace, FirstOrAll) {
    EXPECT_EQ(StrReplace("a-b-c", "-", "+", {}), "a+b-c");
    EXPECT_EQ(StrReplace("a-b-c", "-", "+", {rpReplaceAll}), "a+b+c");
    EXPECT_EQ(StrReplace("a-B-b", "b", "x", {rpReplaceAll}), "a-B-x");
    EXPECT_EQ(StrReplace("a-B-b", "b", "x", {rpReplaceAll, rpIgnoreCase}), "a-x-x");
    EXPECT_EQ(StrReplace("abc", "z", "y", {rpReplaceAll}), "abc");
    EXPECT_EQ(StrReplace("", "z", "y", {rpReplaceAll}), "");
    EXPECT_EQ(StrReplace("aaa", "a", "", {rpReplaceAll}), "");
    EXPECT_EQ(StrReplace("abc", "", "x", {rpReplaceAll}), "abc");
}

TEST(StrReplace, AnEmptyOldMatchesAtOnceButIsNeverReplacedAllOver) {
    EXPECT_EQ(StrReplace("abc", "", "X", {}), "Xabc");
    EXPECT_EQ(StrReplaceR("abc", "", "X", {}), "abXc");
    EXPECT_EQ(StrReplaceR("abc", "", "X", {rpReplaceAll}), "abc");
}

TEST(StrReplace, GoesOnAfterTheInsertedTextSoItCannotLoop) {
    EXPECT_EQ(StrReplace("aa", "a", "aa", {rpReplaceAll}), "aaaa");
    EXPECT_EQ(StrReplace("x", "x", "xx", {rpReplaceAll, rpIgnoreCase}), "xx");
    EXPECT_EQ(StrReplace("aaa", "aa", "b", {rpReplaceAll}), "ba");
}

TEST(StrReplace, ReverseChangesTheLastOccurrence) {
    EXPECT_EQ(StrReplaceR("a-b-c", "-", "+", {}), "a-b+c");
    EXPECT_EQ(StrReplaceR("a-b-c", "-", "+", {rpReplaceAll}), "a+b+c");
    EXPECT_EQ(StrReplaceR("-x-", "-", "", {rpReplaceAll}), "x");
    EXPECT_EQ(StrReplaceR("Ab-aB", "ab", "c", {rpIgnoreCase}), "Ab-c");
    EXPECT_EQ(StrReplaceR("abc", "z", "y", {rpReplaceAll}), "abc");
    EXPECT_EQ(StrReplaceR("", "z", "y", {}), "");
    EXPECT_EQ(StrReplaceR("aa", "a", "aa", {rpReplaceAll}), "aaaa");
}

// --- cutting and words -----------------------------------------------------------------------

TEST(Cut, RemovesAndReturns) {
    std::string s = "  procedure Foo;";
    EXPECT_EQ(Cut(s, 1, 12), "  procedure ");
    EXPECT_EQ(s, "Foo;");
    EXPECT_EQ(Cut(s, 4, 10), ";");
    EXPECT_EQ(s, "Foo");
    EXPECT_EQ(Cut(s, 1, 0), "");
    EXPECT_EQ(s, "Foo");
    EXPECT_EQ(Cut(s, 9, 1), "");
    EXPECT_EQ(s, "Foo");
}

TEST(SkipBlanks, EveryByteUpTo32IsBlank) {
    int pos = 0;
    EXPECT_TRUE(SkipBlanks(" \t\r\n\x01x", pos));
    EXPECT_EQ(pos, 6);
    EXPECT_TRUE(SkipBlanks("\xC0", pos)); // above 127 is text
    EXPECT_EQ(pos, 1);
    EXPECT_TRUE(SkipBlanks("ab c", pos, 3));
    EXPECT_EQ(pos, 4);
    EXPECT_FALSE(SkipBlanks("ab  ", pos, 3));
    EXPECT_EQ(pos, 5);
    EXPECT_FALSE(SkipBlanks("ab", pos, 7));
    EXPECT_EQ(pos, 7);
    EXPECT_FALSE(SkipBlanks("", pos));
    EXPECT_EQ(pos, 1);
}

TEST(ReadWord, TheFirstWordOfTheLine) {
    int next = -1;
    EXPECT_EQ(ReadWord("procedure Foo;", next), "procedure");
    EXPECT_EQ(next, 10);
    EXPECT_EQ(ReadWord("  function Bar: Integer;", next), "function");
    EXPECT_EQ(next, 11);
    // The scan begins at the first non-blank whatever the start says.
    EXPECT_EQ(ReadWord("one two", next, 5), "one");
    EXPECT_EQ(next, 4);
}

TEST(ReadWord, OnlyASpaceEndsAWord) {
    int next = 0;
    EXPECT_EQ(ReadWord("procedure\tFoo", next), "procedure\tFoo");
    EXPECT_EQ(next, 14);
}

TEST(ReadWord, LastWordRunsFromStart) {
    int next = 0;
    EXPECT_EQ(ReadWord("   alone", next, 1), "   alone"); // the blanks stay in the word
    EXPECT_EQ(next, 9);
    EXPECT_EQ(ReadWord("   alone", next, 4), "alone");
    EXPECT_EQ(ReadWord("alone", next, 3), "one");
}

TEST(ReadWord, BlankLineLeavesNextAlone) {
    int next = 42;
    EXPECT_EQ(ReadWord("   \t ", next), "");
    EXPECT_EQ(next, 42);
    EXPECT_EQ(ReadWord("", next), "");
    EXPECT_EQ(next, 42);
}

TEST(GetWord, TrueForAWord) {
    std::string w;
    int next = 0;
    EXPECT_TRUE(GetWord("property X", w, next));
    EXPECT_EQ(w, "property");
    EXPECT_FALSE(GetWord("    ", w, next));
    EXPECT_EQ(w, "");
    EXPECT_EQ(NextWord("constructor Create;"), "constructor");
    EXPECT_EQ(NextWord(""), "");
}

TEST(FindWordInLine, LooksOnlyAtTheFirstWord) {
    int pos = 0;
    EXPECT_TRUE(FindWordInLine("  BEGIN x", "begin", pos));
    EXPECT_EQ(pos, 8);
    EXPECT_FALSE(FindWordInLine("   ", "begin", pos));
    EXPECT_FALSE(FindWordInLine("x begin", "begin", pos));
}
