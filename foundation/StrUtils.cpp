#include "foundation/StrUtils.h"

#include "rtl/SysUtils.h"

#include <array>

namespace zelvane {

namespace {

constexpr std::array<unsigned char, 256> MakeCaseTable() {
    std::array<unsigned char, 256> t{};
    for (int i = 0; i < 256; ++i) {
        int c = i;
        if ((i >= 97 && i <= 122) || i >= 224)
            c = i - 32;
        else if ((i >= 65 && i <= 90) || (i >= 192 && i <= 223))
            c = i + 32;
        else if (i == 184)
            c = 168;
        else if (i == 168)
            c = 184;
        t[static_cast<size_t>(i)] = static_cast<unsigned char>(c);
    }
    return t;
}

constexpr std::array<unsigned char, 256> kCaseTable = MakeCaseTable();

inline unsigned char U(char c) {
    return static_cast<unsigned char>(c);
}
inline int Len(std::string_view s) {
    return static_cast<int>(s.size());
}
// The byte at a 1-based position.
inline unsigned char At(std::string_view s, int pos) {
    return U(s[static_cast<size_t>(pos - 1)]);
}

inline bool SameChar(unsigned char x, unsigned char sought) {
    return x == sought || x == kCaseTable[sought];
}

template <class Match> int ForwardScan(std::string_view s, int start, Match match) {
    if (start < 1 || start > Len(s)) return 0;
    for (int p = start; p <= Len(s); ++p)
        if (match(At(s, p))) return p;
    return 0;
}

template <class Match> int ReverseScan(std::string_view s, int start, Match match) {
    if (start == -1)
        start = Len(s);
    else if (start < 1 || start > Len(s))
        return 0;
    for (int p = start; p >= 1; --p)
        if (match(At(s, p))) return p;
    return 0;
}

int StrPos(std::string_view s, std::string_view sub, int start, bool ignoreCase) {
    if (start < 1 || start > Len(s)) return 0;
    if (Len(s) - start + 1 < Len(sub)) return 0;
    auto comp = ignoreCase ? CompStrI : CompStr;
    for (int p = start; p <= Len(s) - Len(sub) + 1; ++p)
        if (comp(s.data() + p - 1, sub.data(), Len(sub))) return p;
    return 0;
}

int StrPosR(std::string_view s, std::string_view sub, int start, bool ignoreCase) {
    if (start > Len(s)) return 0;
    int last = Len(s) - Len(sub) + 1;
    if (start == -1 || start > last) start = last;
    if (start < 1) return 0;
    auto comp = ignoreCase ? CompStrI : CompStr;
    for (int p = start; p >= 1; --p)
        if (comp(s.data() + p - 1, sub.data(), Len(sub))) return p;
    return 0;
}

} // namespace

const unsigned char CaseTable[256] = {
#define ROW(i)                                                                                     \
    kCaseTable[i], kCaseTable[i + 1], kCaseTable[i + 2], kCaseTable[i + 3], kCaseTable[i + 4],     \
        kCaseTable[i + 5], kCaseTable[i + 6], kCaseTable[i + 7]
    ROW(0),   ROW(8),   ROW(16),  ROW(24),  ROW(32),  ROW(40),  ROW(48),  ROW(56),
    ROW(64),  ROW(72),  ROW(80),  ROW(88),  ROW(96),  ROW(104), ROW(112), ROW(120),
    ROW(128), ROW(136), ROW(144), ROW(152), ROW(160), ROW(168), ROW(176), ROW(184),
    ROW(192), ROW(200), ROW(208), ROW(216), ROW(224), ROW(232), ROW(240), ROW(248),
#undef ROW
};

TCharScores CharScores(std::string_view chars) {
    TCharScores r;
    for (char c : chars)
        r.set(U(c));
    return r;
}

// --- single bytes ----------------------------------------------------------------------------

int CharPos(std::string_view s, char c, int start) {
    return ForwardScan(s, start, [c](unsigned char x) { return x == U(c); });
}
int CharPosI(std::string_view s, char c, int start) {
    return ForwardScan(s, start, [c](unsigned char x) { return SameChar(x, U(c)); });
}
int CharPosR(std::string_view s, char c, int start) {
    return ReverseScan(s, start, [c](unsigned char x) { return x == U(c); });
}
int CharPosRI(std::string_view s, char c, int start) {
    return ReverseScan(s, start, [c](unsigned char x) { return SameChar(x, U(c)); });
}

bool FindCharPos(std::string_view s, char c, int& pos, int start) {
    pos = CharPos(s, c, start);
    return pos != 0;
}
bool FindCharPosI(std::string_view s, char c, int& pos, int start) {
    pos = CharPosI(s, c, start);
    return pos != 0;
}
bool FindCharPosR(std::string_view s, char c, int& pos, int start) {
    pos = CharPosR(s, c, start);
    return pos != 0;
}
bool FindCharPosRI(std::string_view s, char c, int& pos, int start) {
    pos = CharPosRI(s, c, start);
    return pos != 0;
}

bool CopyToChar(std::string_view s, char c, std::string& result, bool ignoreCase, int& pos,
                int start) {
    pos = ignoreCase ? CharPosI(s, c, start) : CharPos(s, c, start);
    if (pos == 0) return false;
    result = rtl::Copy(s, start, pos - start);
    return true;
}

bool CopyToCharR(std::string_view s, char c, std::string& result, bool ignoreCase, int& pos,
                 int start) {
    if (start == -1) start = Len(s);
    pos = ignoreCase ? CharPosRI(s, c, start) : CharPosR(s, c, start);
    if (pos == 0) return false;
    result = rtl::Copy(s, pos + 1, start - pos);
    return true;
}

// --- sets of bytes ---------------------------------------------------------------------------

int CharsPos(std::string_view s, const TCharScores& chars, int start) {
    return ForwardScan(s, start, [&chars](unsigned char x) { return chars.test(x); });
}
int CharsPosR(std::string_view s, const TCharScores& chars, int start) {
    return ReverseScan(s, start, [&chars](unsigned char x) { return chars.test(x); });
}
bool FindCharsPos(std::string_view s, const TCharScores& chars, int& pos, int start) {
    pos = CharsPos(s, chars, start);
    return pos != 0;
}
bool FindCharsPosR(std::string_view s, const TCharScores& chars, int& pos, int start) {
    pos = CharsPosR(s, chars, start);
    return pos != 0;
}
bool CopyToChars(std::string_view s, const TCharScores& chars, std::string& result, int& pos,
                 int start) {
    pos = CharsPos(s, chars, start);
    if (pos == 0) return false;
    result = rtl::Copy(s, start, pos - start);
    return true;
}
bool CopyToCharsR(std::string_view s, const TCharScores& chars, std::string& result, int& pos,
                  int start) {
    if (start == -1) start = Len(s);
    pos = CharsPosR(s, chars, start);
    if (pos == 0) return false;
    result = rtl::Copy(s, pos + 1, start - pos);
    return true;
}

// --- comparison ------------------------------------------------------------------------------

bool CompStr(const char* p1, const char* p2, int length) {
    for (int i = 0; i < length; ++i)
        if (p1[i] != p2[i]) return false;
    return true;
}

bool CompStrI(const char* p1, const char* p2, int length) {
    for (int i = 0; i < length; ++i)
        if (!SameChar(U(p1[i]), U(p2[i]))) return false;
    return true;
}

bool CompString(std::string_view s1, std::string_view s2) {
    return s1.size() == s2.size() && CompStr(s1.data(), s2.data(), Len(s1));
}

bool CompText(std::string_view s1, std::string_view s2) {
    return s1.size() == s2.size() && CompStrI(s1.data(), s2.data(), Len(s1));
}

// --- substrings ------------------------------------------------------------------------------

int StringPos(std::string_view s, std::string_view sub, int start) {
    return StrPos(s, sub, start, false);
}
int StringPosI(std::string_view s, std::string_view sub, int start) {
    return StrPos(s, sub, start, true);
}
int StringPosR(std::string_view s, std::string_view sub, int start) {
    return StrPosR(s, sub, start, false);
}
int StringPosRI(std::string_view s, std::string_view sub, int start) {
    return StrPosR(s, sub, start, true);
}

bool FindStrPos(std::string_view s, std::string_view sub, int& pos, int start) {
    pos = StringPos(s, sub, start);
    return pos != 0;
}
bool FindStrPosI(std::string_view s, std::string_view sub, int& pos, int start) {
    pos = StringPosI(s, sub, start);
    return pos != 0;
}
bool FindStrPosR(std::string_view s, std::string_view sub, int& pos, int start) {
    pos = StringPosR(s, sub, start);
    return pos != 0;
}
bool FindStrPosRI(std::string_view s, std::string_view sub, int& pos, int start) {
    pos = StringPosRI(s, sub, start);
    return pos != 0;
}

bool CopyToStr(std::string_view s, std::string_view sub, std::string& result, bool ignoreCase,
               int& pos, int start) {
    pos = ignoreCase ? StringPosI(s, sub, start) : StringPos(s, sub, start);
    if (pos == 0) return false;
    result = rtl::Copy(s, start, pos - start);
    return true;
}

bool CopyToStrR(std::string_view s, std::string_view sub, std::string& result, bool ignoreCase,
                int& pos, int start) {
    if (start == -1) start = Len(s);
    pos = ignoreCase ? StringPosRI(s, sub, start) : StringPosR(s, sub, start);
    if (pos == 0) return false;
    int after = pos + Len(sub);
    result = rtl::Copy(s, after, start - after + 1);
    return true;
}

bool FindStrPosEx(std::string_view s, std::string_view sub, int& pos) {
    pos = rtl::Pos(sub, s);
    return pos != 0;
}

bool CopyToStrEx(std::string_view s, std::string_view sub, std::string& result, int& pos) {
    if (!FindStrPosEx(s, sub, pos)) return false;
    result = rtl::Copy(s, 1, pos - 1);
    return true;
}

std::string StrReplace(std::string_view s, std::string_view oldText, std::string_view newText,
                       TReplaceParams params) {
    // An empty Old matches at once, and replacing all of it would never move on: that alone is
    // refused. A single replacement puts New in front.
    if (oldText.empty() && params.ReplaceAll) return std::string(s);
    std::string result, piece;
    int start = 1, pos = 0;
    while (CopyToStr(s, oldText, piece, params.IgnoreCase, pos, start)) {
        result += piece;
        result += newText;
        start = pos + Len(oldText);
        if (!params.ReplaceAll) break;
    }
    result += rtl::Copy(s, start, Len(s) - start + 1);
    return result;
}

std::string StrReplaceR(std::string_view s, std::string_view oldText, std::string_view newText,
                        TReplaceParams params) {
    // As StrReplace: an empty Old replaced all over would never end; once, it goes in where the
    // reverse search finds it, before the last character.
    if (oldText.empty() && params.ReplaceAll) return std::string(s);
    std::string result, piece;
    int start = Len(s), pos = 0;
    // A start of 0 after a match at position 1 ends the loop; it must not be taken for -1.
    while (start >= 1 && CopyToStrR(s, oldText, piece, params.IgnoreCase, pos, start)) {
        result = std::string(newText) + piece + result;
        start = pos - 1;
        if (!params.ReplaceAll) break;
    }
    return rtl::Copy(s, 1, start) + result;
}

// --- words -----------------------------------------------------------------------------------

std::string Cut(std::string& s, int index, int count) {
    std::string result = rtl::Copy(s, index, count);
    rtl::Delete(s, index, count);
    return result;
}

bool SkipBlanks(std::string_view s, int& pos, int start) {
    for (int p = start < 1 ? 1 : start; p <= Len(s); ++p)
        if (At(s, p) > 32) {
            pos = p;
            return true;
        }
    pos = start > Len(s) ? start : Len(s) + 1;
    return false;
}

std::string ReadWord(std::string_view s, int& next, int start) {
    std::string word;
    int p = 0;
    if (!SkipBlanks(s, p, 1)) return word;
    int space = 0;
    if (CopyToChar(s, ' ', word, false, space, p)) {
        p = space;
    } else {
        p = Len(s) + 1;
        word = rtl::Copy(s, start, p - start);
    }
    next = p;
    return word;
}

bool GetWord(std::string_view s, std::string& word, int& next, int start) {
    word = ReadWord(s, next, start);
    return !word.empty();
}

std::string NextWord(std::string_view s, int start) {
    int next = 0;
    return ReadWord(s, next, start);
}

bool FindWordInLine(std::string_view s, std::string_view word, int& pos) {
    // The word scanner always yields the line's first word, so a second look could only see the
    // same word again: one look decides.
    std::string found;
    return GetWord(s, found, pos, 1) && CompText(found, word);
}

} // namespace zelvane
