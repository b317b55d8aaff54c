#include "foundation/StrsUtils.h"

#include "foundation/StrUtils.h"
#include "rtl/SysUtils.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

namespace zelvane {

bool IsInitialWord(const std::string& word) {
    // GetEnumValue(TypeInfo<TInitialWords>(), "iw" + word) >= 0, without making the name each
    // time: the rest of each value name that starts with "iw", compared without regard to case.
    static const std::vector<std::string> words = [] {
        rtl::PTypeInfo type = rtl::TypeInfo<TInitialWords>();
        const auto& names =
            type->Data.BaseType ? type->Data.BaseType->Data.NameList : type->Data.NameList;
        std::vector<std::string> r;
        for (const std::string& name : names)
            if (rtl::SameText(std::string_view(name).substr(0, 2), "iw"))
                r.push_back(name.substr(2));
        return r;
    }();
    for (const std::string& w : words)
        if (rtl::SameText(w, word)) return true;
    return false;
}

namespace {
bool IsBlankLine(const std::string& s) {
    int pos = 0;
    return !SkipBlanks(s, pos, 1);
}
} // namespace

bool SkipBlankLines(rtl::TStrings* lines, int& index) {
    while (index < lines->Count() && IsBlankLine(lines->Strings(index)))
        ++index;
    return index < lines->Count();
}

bool DeleteBlankLines(rtl::TStrings* lines, int& index) {
    while (index < lines->Count() && IsBlankLine(lines->Strings(index)))
        lines->Delete(index);
    return index < lines->Count();
}

bool FindLine(rtl::TStrings* lines, char c, int& index, int& pos) {
    for (; DeleteBlankLines(lines, index); ++index)
        if (FindCharPosR(lines->Strings(index), c, pos)) return true;
    return false;
}

bool FindLineEx(rtl::TStrings* lines, const std::string& sub, int& index, int& pos) {
    for (; DeleteBlankLines(lines, index); ++index)
        if (FindStrPosR(lines->Strings(index), sub, pos)) return true;
    return false;
}

bool FindWordInLines(const std::string& word, rtl::TStrings* lines, int& index) {
    for (int i = index; SkipBlankLines(lines, i); ++i) {
        int pos = 0;
        if (FindWordInLine(lines->Strings(i), word, pos)) {
            index = i;
            return true;
        }
    }
    return false;
}

namespace {
int Len(const std::string& s) {
    return static_cast<int>(s.size());
}

bool ReadLayoutNumber(const std::string& layout, size_t& readPos, int& n) {
    size_t comma = layout.find(',', readPos);
    if (comma == std::string::npos) return false;
    n = rtl::StrToInt(std::string_view(layout).substr(readPos, comma - readPos));
    readPos = comma + 1;
    return true;
}
} // namespace

void AppendWithLayout(std::string& line, std::string& layout, const std::string& text) {
    if (layout.empty()) layout = "1," + rtl::IntToStr(Len(line) + 1) + ",";
    layout += rtl::IntToStr(Len(line) + 1) + ",";
    line += text;
    layout += rtl::IntToStr(Len(line) + 1) + ",";
}

bool ReadLayoutSegment(const std::string& line, const std::string& layout, size_t& readPos,
                       std::string& segment) {
    int a = 0, b = 0;
    if (!ReadLayoutNumber(layout, readPos, a) || !ReadLayoutNumber(layout, readPos, b))
        return false;
    segment = rtl::Copy(line, a, b - a);
    return true;
}

namespace {

// A declaration of the block being sorted. It sorts by its pieces joined: its first line from
// the declared name on, its further lines, then its indentation and keyword. The pieces stand
// back to back in the sort's text from Begin on; pieceEnds holds where each ends.
struct Declaration {
    uint64_t KeyHead; // the first eight bytes of its sort key, big-endian, zeros past its end
    size_t Begin;     // of its text, and of its sort key in the keys
    size_t Length;
    uint32_t FirstPiece; // in pieceEnds
    uint32_t Pieces;
    uint32_t Index; // its place in the block
};

// The lines of the block, copied into one string.
class LineBlock {
public:
    explicit LineBlock(rtl::TStrings* lines) {
        int count = lines->Count();
        starts_.reserve(static_cast<size_t>(count) + 1);
        text_.reserve(static_cast<size_t>(count) * 64); // a guess; the text grows as needed
        for (int i = 0; i < count; ++i) {
            starts_.push_back(text_.size());
            text_ += lines->Strings(i);
        }
        starts_.push_back(text_.size());
    }
    size_t Count() const { return starts_.size() - 1; }
    size_t Size() const { return text_.size(); }
    std::string_view operator[](size_t k) const {
        return std::string_view(text_).substr(starts_[k], starts_[k + 1] - starts_[k]);
    }

private:
    std::string text_;
    std::vector<size_t> starts_;
};

// The sorted lines, handed over by the Assign of the caller's list: a list that only holds
// them, without the events and checks of a string list.
class SortedLines : public rtl::TStrings {
public:
    std::vector<std::string> Lines;

    void Clear() override { Lines.clear(); }
    void Delete(int index) override { Lines.erase(Lines.begin() + index); }
    void Insert(int index, const std::string& s) override {
        Lines.insert(Lines.begin() + index, s);
    }

protected:
    std::string Get(int index) const override { return Lines[static_cast<size_t>(index)]; }
    int GetCount() const override { return static_cast<int>(Lines.size()); }
};

bool IsBlankView(std::string_view s) {
    for (char c : s)
        if (static_cast<unsigned char>(c) > 32) return false;
    return true;
}

// The line, from start on, that ends the declaration: the first non-blank line that holds sub,
// or -1.
int FindEnd(const LineBlock& lines, size_t start, std::string_view sub) {
    for (size_t k = start; k < lines.Count(); ++k) {
        std::string_view line = lines[k];
        if (IsBlankView(line)) continue;
        if (line.find(sub) != std::string_view::npos) return static_cast<int>(k);
    }
    return -1;
}

// The last line of the declaration whose first line is lines[start], the declared name standing
// at the 1-based position p of it; -1 when it has no end.
int FindDeclarationEnd(const LineBlock& lines, size_t start, int p) {
    std::string_view first = lines[start];
    const std::string head = rtl::Copy(first, p, 2);
    if (head == "//") return static_cast<int>(start);
    if (!head.empty() && head[0] == '{') return FindEnd(lines, start, "}");
    if (head == "(*") return FindEnd(lines, start, "*)");
    if (first.find('(') != std::string_view::npos) {
        // A parameter list may run over several lines; the line that closes it must also end
        // the declaration.
        int end = FindEnd(lines, start, ")");
        return end >= 0 && lines[static_cast<size_t>(end)].find(';') != std::string_view::npos ? end
                                                                                               : -1;
    }
    return FindEnd(lines, start, ";");
}

} // namespace

bool SortDeclarations(rtl::TStrings* lines, int& errorLine) {
    // The work goes on a copy: the lines change only on success.
    const LineBlock source(lines);

    // From lines to declarations; blank lines vanish.
    std::string text;
    text.reserve(source.Size());
    std::vector<size_t> pieceEnds;
    pieceEnds.reserve(2 * source.Count() + 2);
    std::vector<Declaration> decls;
    decls.reserve(source.Count());
    size_t k = 0;
    for (;;) {
        while (k < source.Count() && IsBlankView(source[k]))
            ++k;
        if (k == source.Count()) break;
        std::string_view first = source[k];
        int p = 1, next = 0;
        std::string word;
        if (GetWord(first, word, next, 1) && IsInitialWord(word)) p = next;
        SkipBlanks(first, p, p);
        int end = FindDeclarationEnd(source, k, p);
        if (end < 0) {
            errorLine = static_cast<int>(decls.size());
            return false;
        }
        Declaration d{0, text.size(),
                      0, static_cast<uint32_t>(pieceEnds.size()),
                      0, static_cast<uint32_t>(decls.size())};
        auto addPiece = [&](std::string_view piece) {
            text.append(piece);
            pieceEnds.push_back(text.size());
        };
        addPiece(first.substr(static_cast<size_t>(p - 1)));
        for (size_t j = k + 1; j <= static_cast<size_t>(end); ++j)
            if (!IsBlankView(source[j])) addPiece(source[j]);
        addPiece(first.substr(0, static_cast<size_t>(p - 1)));
        d.Pieces = static_cast<uint32_t>(pieceEnds.size()) - d.FirstPiece;
        d.Length = text.size() - d.Begin;
        decls.push_back(d);
        k = static_cast<size_t>(end) + 1;
    }

    // The platform's sort, by AnsiCompareText over the whole joined text, stable: by sort key,
    // then by place.
    std::string keys;
    keys.reserve(text.size());
    rtl::AppendAnsiSortKey(text, keys);
    for (Declaration& d : decls) {
        uint64_t head = 0;
        for (size_t i = 0; i < 8; ++i)
            head = head << 8 | (i < d.Length ? static_cast<unsigned char>(keys[d.Begin + i]) : 0);
        d.KeyHead = head;
    }
    std::sort(decls.begin(), decls.end(), [&keys](const Declaration& a, const Declaration& b) {
        if (a.KeyHead != b.KeyHead) return a.KeyHead < b.KeyHead;
        int c =
            std::memcmp(keys.data() + a.Begin, keys.data() + b.Begin, std::min(a.Length, b.Length));
        if (c != 0) return c < 0;
        if (a.Length != b.Length) return a.Length < b.Length;
        return a.Index < b.Index;
    });

    // From declarations back to lines: the first line gets its indentation and keyword back in
    // front, the further lines follow it. A piece that is blank or a keyword alone counts as
    // part of the indentation and keyword.
    SortedLines l;
    l.Lines.reserve(source.Count());
    std::vector<std::string_view> further, front;
    std::string head;
    for (const Declaration& d : decls) {
        auto piece = [&](uint32_t i) {
            size_t from = i == 0 ? d.Begin : pieceEnds[d.FirstPiece + i - 1];
            return std::string_view(text).substr(from, pieceEnds[d.FirstPiece + i] - from);
        };
        further.clear();
        front.clear();
        size_t headLength = piece(0).size();
        for (uint32_t i = 1; i < d.Pieces; ++i) {
            std::string_view seg = piece(i);
            if (seg.empty()) continue;
            // Trim: the bytes above 32 from the first to the last.
            size_t b = 0, e = seg.size();
            while (b < e && static_cast<unsigned char>(seg[b]) <= 32)
                ++b;
            while (e > b && static_cast<unsigned char>(seg[e - 1]) <= 32)
                --e;
            if (b < e && !IsInitialWord(std::string(seg.substr(b, e - b))))
                further.push_back(seg);
            else {
                front.push_back(seg); // each goes in front of what the line has so far
                headLength += seg.size();
            }
        }
        head.clear();
        head.reserve(headLength);
        for (size_t i = front.size(); i-- > 0;)
            head.append(front[i]);
        head.append(piece(0));
        l.Lines.push_back(head);
        for (std::string_view seg : further)
            l.Lines.emplace_back(seg);
    }

    lines->Assign(&l);
    errorLine = l.Count();
    return true;
}

} // namespace zelvane
