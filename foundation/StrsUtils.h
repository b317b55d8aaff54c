// Line lists of source text, and the declaration sort: a block of declarations sorted by the
// name each declares rather than by the keyword in front, with declarations over several lines
// and comments moved as units and their layout restored. Line indexes are 0-based.
#pragma once

#include "rtl/Lists.h"
#include "rtl/TypInfo.h"

#include <string>

namespace zelvane {

// The words that may stand before a declared name: a word is one of them when "iw" and the
// word name a value of this enumeration, without regard to case.
RTL_ENUM(TInitialWords, iwConstructor, iwDestructor, iwFunction, iwProcedure, iwProperty)

bool IsInitialWord(const std::string& word);

// Moves index forward to the first line with a byte above 32; true when there is one.
bool SkipBlankLines(rtl::TStrings* lines, int& index);
// Deletes blank lines at index until a non-blank line stands there; true when there is one.
bool DeleteBlankLines(rtl::TStrings* lines, int& index);
// From index on, deleting blank lines as met, the first line that holds c; pos is its last
// occurrence in that line.
bool FindLine(rtl::TStrings* lines, char c, int& index, int& pos);
// The same with a substring.
bool FindLineEx(rtl::TStrings* lines, const std::string& sub, int& index, int& pos);
// From index on, skipping blank lines, the first line whose first word is the word; index
// moves only on a match.
bool FindWordInLines(const std::string& word, rtl::TStrings* lines, int& index);

// The layout of a sorted item: "1," and then end positions, each followed by a comma. Taken in
// pairs, the numbers are the start and the end (exclusive) of the segments of the item's joined
// text: its first line, its further lines, then its indentation and keyword.
//
// Appends text to line, recording the segment it fills in the layout (which is started with
// "1," and the end of the line's text when it is empty).
void AppendWithLayout(std::string& line, std::string& layout, const std::string& text);
// Reads the next segment of the line from the layout, after the comma at readPos, and moves
// readPos on; false when the layout holds no further pair.
bool ReadLayoutSegment(const std::string& line, const std::string& layout, size_t& readPos,
                       std::string& segment);

// Sorts the declarations of the lines by the names they declare. True when sorted; the lines
// change only then. On failure errorLine is the index of the line whose declaration has no end
// (blank lines not counted before it).
//
// A declaration ends at the first line holding ";", or, when its first line holds "(", at the
// line holding ")", which must hold ";" too. A comment starting with "{" or "(*" ends at the
// line that closes it, and one starting with "//" is its line. Blank lines vanish, each
// declaration keeps its indentation, keyword and line breaks, and comments sort as items of
// their own.
bool SortDeclarations(rtl::TStrings* lines, int& errorLine);

} // namespace zelvane
