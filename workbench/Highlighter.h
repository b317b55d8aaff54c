// Syntax highlighting of Pascal and C++ source lines for the source editor: each line is split
// into runs of one token kind. Comments and strings that run over line ends are carried from
// line to line by a state.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

enum class TTokenKind { Text, Keyword, Comment, String, Number, Directive, Symbol };

struct TTokenRun {
    int Start = 0; // 0-based byte offset in the line
    int Length = 0;
    TTokenKind Kind = TTokenKind::Text;
};

enum class TSourceLanguage { Plain, Pascal, Cpp };

// The language of a file by its extension: .pas .dpr .dpk .inc are Pascal; .cpp .c .h .hpp
// .bpr .cxx .cc are C++; anything else plain text.
TSourceLanguage LanguageOfFile(std::string_view fileName);

// The state at a line end: inside no comment, or inside a comment that goes on.
enum class TLineState : int {
    Normal = 0,
    BraceComment, // Pascal { ... }
    ParenComment, // Pascal (* ... *)
    BlockComment, // C++ /* ... */
};

// Splits one line into runs that cover it from start to end; state is the state at the line's
// start on entry and at its end on return.
std::vector<TTokenRun> HighlightLine(TSourceLanguage language, std::string_view line,
                                     TLineState& state);

bool IsPascalKeyword(std::string_view word);
bool IsCppKeyword(std::string_view word);

} // namespace workbench
