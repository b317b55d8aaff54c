// Search and copy routines on single-byte strings. Positions are 1-based and 0 means not found.
//
// One routine exists for every mix of what is sought, the direction and the case: the ending I
// ignores case, R searches from the right, RI does both. A reverse routine takes its start
// position last; -1 means the end of the string, and it goes towards position 1. A forward
// routine goes from Start to the end. Case folding uses the Windows-1251 table below, so that
// Cyrillic letters fold too; a case-insensitive test looks up only the sought byte.
#pragma once

#include <bitset>
#include <string>
#include <string_view>

namespace zelvane {

// Each byte's opposite case: a-z and A-Z, the Cyrillic letters 224-255 and 192-223, and
// yo (184) and YO (168). Every other byte maps to itself.
extern const unsigned char CaseTable[256];

enum TReplaceParam { rpReplaceAll, rpIgnoreCase };
struct TReplaceParams {
    bool ReplaceAll = false;
    bool IgnoreCase = false;
    TReplaceParams() = default;
    TReplaceParams(std::initializer_list<TReplaceParam> params) {
        for (TReplaceParam p : params)
            (p == rpReplaceAll ? ReplaceAll : IgnoreCase) = true;
    }
};

// A set of bytes.
using TCharScores = std::bitset<256>;
TCharScores CharScores(std::string_view chars);

int CharPos(std::string_view s, char c, int start = 1);
int CharPosI(std::string_view s, char c, int start = 1);
int CharPosR(std::string_view s, char c, int start = -1);
int CharPosRI(std::string_view s, char c, int start = -1);

bool FindCharPos(std::string_view s, char c, int& pos, int start = 1);
bool FindCharPosI(std::string_view s, char c, int& pos, int start = 1);
bool FindCharPosR(std::string_view s, char c, int& pos, int start = -1);
bool FindCharPosRI(std::string_view s, char c, int& pos, int start = -1);

// When found, result is the text from start up to the byte; otherwise it is left alone.
bool CopyToChar(std::string_view s, char c, std::string& result, bool ignoreCase, int& pos,
                int start = 1);
// When found, result is the text after the byte up to start.
bool CopyToCharR(std::string_view s, char c, std::string& result, bool ignoreCase, int& pos,
                 int start = -1);

int CharsPos(std::string_view s, const TCharScores& chars, int start = 1);
int CharsPosR(std::string_view s, const TCharScores& chars, int start = -1);
bool FindCharsPos(std::string_view s, const TCharScores& chars, int& pos, int start = 1);
bool FindCharsPosR(std::string_view s, const TCharScores& chars, int& pos, int start = -1);
bool CopyToChars(std::string_view s, const TCharScores& chars, std::string& result, int& pos,
                 int start = 1);
bool CopyToCharsR(std::string_view s, const TCharScores& chars, std::string& result, int& pos,
                  int start = -1);

// Whether the buffers match over length bytes; true for length 0.
bool CompStr(const char* p1, const char* p2, int length);
bool CompStrI(const char* p1, const char* p2, int length);
bool CompString(std::string_view s1, std::string_view s2);
bool CompText(std::string_view s1, std::string_view s2);

int StringPos(std::string_view s, std::string_view sub, int start = 1);
int StringPosI(std::string_view s, std::string_view sub, int start = 1);
int StringPosR(std::string_view s, std::string_view sub, int start = -1);
int StringPosRI(std::string_view s, std::string_view sub, int start = -1);

bool FindStrPos(std::string_view s, std::string_view sub, int& pos, int start = 1);
bool FindStrPosI(std::string_view s, std::string_view sub, int& pos, int start = 1);
bool FindStrPosR(std::string_view s, std::string_view sub, int& pos, int start = -1);
bool FindStrPosRI(std::string_view s, std::string_view sub, int& pos, int start = -1);

bool CopyToStr(std::string_view s, std::string_view sub, std::string& result, bool ignoreCase,
               int& pos, int start = 1);
// When found, result is the text after the whole match up to start.
bool CopyToStrR(std::string_view s, std::string_view sub, std::string& result, bool ignoreCase,
                int& pos, int start = -1);

// The runtime's plain Pos over the whole string.
bool FindStrPosEx(std::string_view s, std::string_view sub, int& pos);
// As FindStrPosEx; when found, result is the text before the match.
bool CopyToStrEx(std::string_view s, std::string_view sub, std::string& result, int& pos);

// Replaces the first occurrence of oldText, or each with rpReplaceAll, going on after the
// inserted text. An empty oldText replaces nothing.
std::string StrReplace(std::string_view s, std::string_view oldText, std::string_view newText,
                       TReplaceParams params);
// The same from the right: without rpReplaceAll the last occurrence changes.
std::string StrReplaceR(std::string_view s, std::string_view oldText, std::string_view newText,
                        TReplaceParams params);

// Returns Copy(s, index, count) and removes those characters from s.
std::string Cut(std::string& s, int index, int count);

// The first position from start with a byte above 32; true when there is one. Otherwise pos is
// Length(s) + 1, or start when start lies beyond the end.
bool SkipBlanks(std::string_view s, int& pos, int start = 1);

// The first word of the line: the scan always begins at the line's first non-blank, and only a
// space ends a word. When no space follows, the word is taken from start to the end of the
// line. A blank line gives an empty word and leaves next alone.
std::string ReadWord(std::string_view s, int& next, int start = 1);
// ReadWord; true when the word isn't empty.
bool GetWord(std::string_view s, std::string& word, int& next, int start = 1);
// The word of ReadWord.
std::string NextWord(std::string_view s, int start = 1);
// Whether the line's first word is the word, without regard to case; pos is the position
// behind it. Only the first word is ever looked at.
bool FindWordInLine(std::string_view s, std::string_view word, int& pos);

} // namespace zelvane
