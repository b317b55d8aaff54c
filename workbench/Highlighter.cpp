#include "workbench/Highlighter.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace workbench {

namespace {

bool IsIdentStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}
bool IsIdentChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string Lower(std::string_view s) {
    std::string r(s);
    std::transform(r.begin(), r.end(), r.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return r;
}

// Reserved words and the directives that the platform's editor shows as reserved words.
const std::set<std::string_view>& PascalWords() {
    static const std::set<std::string_view> words = {"absolute",     "abstract",
                                                     "and",          "array",
                                                     "as",           "asm",
                                                     "assembler",    "automated",
                                                     "begin",        "case",
                                                     "cdecl",        "class",
                                                     "const",        "constructor",
                                                     "default",      "destructor",
                                                     "dispid",       "dispinterface",
                                                     "div",          "do",
                                                     "downto",       "dynamic",
                                                     "else",         "end",
                                                     "except",       "export",
                                                     "exports",      "external",
                                                     "far",          "file",
                                                     "finalization", "finally",
                                                     "for",          "forward",
                                                     "function",     "goto",
                                                     "if",           "implementation",
                                                     "in",           "index",
                                                     "inherited",    "initialization",
                                                     "inline",       "interface",
                                                     "is",           "label",
                                                     "library",      "message",
                                                     "mod",          "nil",
                                                     "not",          "object",
                                                     "of",           "on",
                                                     "or",           "out",
                                                     "overload",     "override",
                                                     "packed",       "pascal",
                                                     "private",      "procedure",
                                                     "program",      "property",
                                                     "protected",    "public",
                                                     "published",    "raise",
                                                     "read",         "record",
                                                     "register",     "reintroduce",
                                                     "repeat",       "resourcestring",
                                                     "safecall",     "set",
                                                     "shl",          "shr",
                                                     "stdcall",      "string",
                                                     "then",         "threadvar",
                                                     "to",           "try",
                                                     "type",         "unit",
                                                     "until",        "uses",
                                                     "var",          "virtual",
                                                     "while",        "with",
                                                     "write",        "xor",
                                                     "stored"};
    return words;
}

const std::set<std::string_view>& CppWords() {
    static const std::set<std::string_view> words = {
        "__classid",   "__closure",  "__fastcall", "__property", "__published",
        "alignas",     "alignof",    "asm",        "auto",       "bool",
        "break",       "case",       "catch",      "char",       "class",
        "const",       "const_cast", "constexpr",  "continue",   "decltype",
        "default",     "delete",     "do",         "double",     "dynamic_cast",
        "else",        "enum",       "explicit",   "export",     "extern",
        "false",       "float",      "for",        "friend",     "goto",
        "if",          "inline",     "int",        "long",       "mutable",
        "namespace",   "new",        "noexcept",   "nullptr",    "operator",
        "private",     "protected",  "public",     "register",   "reinterpret_cast",
        "return",      "short",      "signed",     "sizeof",     "static",
        "static_cast", "struct",     "switch",     "template",   "this",
        "throw",       "true",       "try",        "typedef",    "typeid",
        "typename",    "union",      "unsigned",   "using",      "virtual",
        "void",        "volatile",   "wchar_t",    "while"};
    return words;
}

struct TRunBuilder {
    std::vector<TTokenRun> Runs;
    void Add(int start, int end, TTokenKind kind) {
        if (end <= start) return;
        if (!Runs.empty() && Runs.back().Kind == kind &&
            Runs.back().Start + Runs.back().Length == start)
            Runs.back().Length += end - start;
        else
            Runs.push_back({start, end - start, kind});
    }
};

// Finds the end of a comment that started before pos: the index after its closing mark, or -1.
int FindCommentEnd(std::string_view line, int pos, TLineState state) {
    std::string_view close = state == TLineState::BraceComment   ? "}"
                             : state == TLineState::ParenComment ? "*)"
                                                                 : "*/";
    size_t at = line.find(close, static_cast<size_t>(pos));
    if (at == std::string_view::npos) return -1;
    return static_cast<int>(at + close.size());
}

int ScanNumber(std::string_view line, int i, bool pascal) {
    int n = static_cast<int>(line.size());
    if (pascal && line[i] == '$') {
        ++i;
        while (i < n && std::isxdigit(static_cast<unsigned char>(line[i])))
            ++i;
        return i;
    }
    if (!pascal && line[i] == '0' && i + 1 < n && (line[i + 1] == 'x' || line[i + 1] == 'X')) {
        i += 2;
        while (i < n && std::isxdigit(static_cast<unsigned char>(line[i])))
            ++i;
    } else {
        while (i < n && (IsDigit(line[i]) || line[i] == '.' || line[i] == 'e' || line[i] == 'E'))
            ++i;
    }
    while (!pascal && i < n && std::isalpha(static_cast<unsigned char>(line[i])))
        ++i; // suffixes: 10u, 1.5f, 3L
    return i;
}

// Scans a line from i into b, with what both languages share: a comment carried over from the
// line before runs to its close, then the tokens follow one another. The tokens particular to a
// language are left to own(i), which adds the run of the token at i and returns the index after
// it (the line's length when the token runs to the end), or returns i where it has none; the
// rest (numbers, identifiers and keywords, blanks, symbols) are taken here.
template <class Own>
void ScanLine(TRunBuilder& b, std::string_view line, int i, TLineState& state, bool pascal,
              Own own) {
    int n = static_cast<int>(line.size());
    while (i < n) {
        // A C++ line does not close a Pascal comment.
        if (state != TLineState::Normal && (pascal || state == TLineState::BlockComment)) {
            int end = FindCommentEnd(line, i, state);
            if (end < 0) {
                b.Add(i, n, TTokenKind::Comment);
                return;
            }
            b.Add(i, end, TTokenKind::Comment);
            state = TLineState::Normal;
            i = end;
            continue;
        }
        if (int next = own(i); next != i) {
            i = next;
            continue;
        }
        char c = line[i];
        if (IsDigit(c) || (pascal && c == '$' && i + 1 < n &&
                           std::isxdigit(static_cast<unsigned char>(line[i + 1])))) {
            int j = ScanNumber(line, i, pascal);
            b.Add(i, j, TTokenKind::Number);
            i = j;
        } else if (IsIdentStart(c)) {
            int j = i;
            while (j < n && IsIdentChar(line[j]))
                ++j;
            std::string_view word = line.substr(i, j - i);
            bool keyword = pascal ? IsPascalKeyword(word) : IsCppKeyword(word);
            b.Add(i, j, keyword ? TTokenKind::Keyword : TTokenKind::Text);
            i = j;
        } else if (std::isspace(static_cast<unsigned char>(c))) {
            b.Add(i, i + 1, TTokenKind::Text);
            ++i;
        } else {
            b.Add(i, i + 1, TTokenKind::Symbol);
            ++i;
        }
    }
}

std::vector<TTokenRun> HighlightPascal(std::string_view line, TLineState& state) {
    TRunBuilder b;
    int n = static_cast<int>(line.size());
    ScanLine(b, line, 0, state, true, [&](int i) {
        char c = line[i];
        if (c == '{') {
            bool directive = i + 1 < n && line[i + 1] == '$';
            int end = FindCommentEnd(line, i + 1, TLineState::BraceComment);
            TTokenKind kind = directive ? TTokenKind::Directive : TTokenKind::Comment;
            if (end < 0) {
                b.Add(i, n, kind);
                if (!directive) state = TLineState::BraceComment;
                return n;
            }
            b.Add(i, end, kind);
            return end;
        }
        if (c == '(' && i + 1 < n && line[i + 1] == '*') {
            int end = FindCommentEnd(line, i + 2, TLineState::ParenComment);
            if (end < 0) {
                b.Add(i, n, TTokenKind::Comment);
                state = TLineState::ParenComment;
                return n;
            }
            b.Add(i, end, TTokenKind::Comment);
            return end;
        }
        if (c == '/' && i + 1 < n && line[i + 1] == '/') {
            b.Add(i, n, TTokenKind::Comment);
            return n;
        }
        if (c == '\'' || c == '#') {
            // A string: quoted parts and #nn characters, run together.
            int j = i;
            while (j < n && (line[j] == '\'' || line[j] == '#')) {
                if (line[j] == '\'') {
                    ++j;
                    while (j < n && line[j] != '\'')
                        ++j;
                    if (j < n) ++j;
                } else {
                    ++j;
                    if (j < n && line[j] == '$') ++j;
                    while (j < n && std::isxdigit(static_cast<unsigned char>(line[j])))
                        ++j;
                }
            }
            b.Add(i, j, TTokenKind::String);
            return j;
        }
        return i;
    });
    return b.Runs;
}

std::vector<TTokenRun> HighlightCpp(std::string_view line, TLineState& state) {
    TRunBuilder b;
    int n = static_cast<int>(line.size());
    int start = 0;
    if (state == TLineState::Normal) {
        size_t first = line.find_first_not_of(" \t");
        if (first != std::string_view::npos && line[first] == '#') {
            // A preprocessor line; a comment at its end is still a comment.
            size_t slash = line.find("//", first);
            size_t block = line.find("/*", first);
            size_t end = std::min(slash, block);
            int stop = end == std::string_view::npos ? n : static_cast<int>(end);
            b.Add(0, stop, TTokenKind::Directive);
            start = stop;
        }
    }
    ScanLine(b, line, start, state, false, [&](int i) {
        char c = line[i];
        if (c == '/' && i + 1 < n && line[i + 1] == '/') {
            b.Add(i, n, TTokenKind::Comment);
            return n;
        }
        if (c == '/' && i + 1 < n && line[i + 1] == '*') {
            b.Add(i, i + 2, TTokenKind::Comment);
            state = TLineState::BlockComment;
            return i + 2;
        }
        if (c == '"' || c == '\'') {
            int j = i + 1;
            while (j < n && line[j] != c) {
                if (line[j] == '\\') ++j;
                ++j;
            }
            j = std::min(n, j + 1);
            b.Add(i, j, TTokenKind::String);
            return j;
        }
        return i;
    });
    return b.Runs;
}

} // namespace

TSourceLanguage LanguageOfFile(std::string_view fileName) {
    size_t dot = fileName.rfind('.');
    size_t slash = fileName.find_last_of("/\\");
    if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash))
        return TSourceLanguage::Plain;
    std::string ext = Lower(fileName.substr(dot));
    if (ext == ".pas" || ext == ".dpr" || ext == ".dpk" || ext == ".inc" || ext == ".pp")
        return TSourceLanguage::Pascal;
    if (ext == ".cpp" || ext == ".c" || ext == ".h" || ext == ".hpp" || ext == ".cxx" ||
        ext == ".cc" || ext == ".bpr")
        return TSourceLanguage::Cpp;
    return TSourceLanguage::Plain;
}

bool IsPascalKeyword(std::string_view word) {
    std::string w = Lower(word);
    return PascalWords().count(w) > 0;
}

bool IsCppKeyword(std::string_view word) {
    return CppWords().count(word) > 0;
}

std::vector<TTokenRun> HighlightLine(TSourceLanguage language, std::string_view line,
                                     TLineState& state) {
    switch (language) {
    case TSourceLanguage::Pascal:
        return HighlightPascal(line, state);
    case TSourceLanguage::Cpp:
        return HighlightCpp(line, state);
    default:
        break;
    }
    state = TLineState::Normal;
    if (line.empty()) return {};
    return {TTokenRun{0, static_cast<int>(line.size()), TTokenKind::Text}};
}

} // namespace workbench
