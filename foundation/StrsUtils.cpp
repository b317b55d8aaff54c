#include "foundation/StrsUtils.h"

#include "foundation/StrUtils.h"
#include "rtl/SysUtils.h"

#include <memory>
#include <vector>

namespace zelvane {

bool IsInitialWord(const std::string& word) {
    return rtl::GetEnumValue(rtl::TypeInfo<TInitialWords>(), "iw" + word) >= 0;
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

// The layout of a sorted item: "1," and then end positions, each followed by a comma. The
// numbers, taken in pairs, are the start and end (exclusive) of the item's segments in its
// joined text.
class TLayout : public rtl::TObject {
public:
    // Appends text to line, recording the segment it fills.
    void Append(std::string& line, const std::string& text) {
        if (text_.empty()) text_ = "1," + rtl::IntToStr(Len(line) + 1) + ",";
        text_ += rtl::IntToStr(Len(line) + 1) + ",";
        line += text;
        text_ += rtl::IntToStr(Len(line) + 1) + ",";
    }

    // The next segment of the line; false when the layout has no more.
    bool ReadSegment(const std::string& line, std::string& segment) {
        int a = 0, b = 0;
        if (!ReadNumber(a) || !ReadNumber(b)) return false;
        segment = rtl::Copy(line, a, b - a);
        return true;
    }

private:
    static int Len(const std::string& s) { return static_cast<int>(s.size()); }

    bool ReadNumber(int& n) {
        size_t comma = text_.find(',', read_);
        if (comma == std::string::npos) return false;
        n = rtl::StrToInt(std::string_view(text_).substr(read_, comma - read_));
        read_ = comma + 1;
        return true;
    }

    std::string text_;
    size_t read_ = 0;
};

// Finds the last line of the declaration that starts at index; false when it has no end.
bool FindDeclarationEnd(rtl::TStrings* l, int index, int p, int& endIndex) {
    const std::string first = l->Strings(index);
    const std::string head = rtl::Copy(first, p, 2);
    int pos = p;
    endIndex = index;
    if (head == "//") return true;
    if (!head.empty() && head[0] == '{') return FindLine(l, '}', endIndex, pos);
    if (head == "(*") return FindLineEx(l, "*)", endIndex, pos);
    if (CharPos(first, '(') != 0) {
        // A parameter list may run over several lines; the line that closes it must also end
        // the declaration.
        return FindLine(l, ')', endIndex, pos) && CharPos(l->Strings(endIndex), ';') != 0;
    }
    return FindLine(l, ';', endIndex, pos);
}

} // namespace

bool SortDeclarations(rtl::TStrings* lines, int& errorLine) {
    // The work goes on a copy: the lines change only on success.
    rtl::TStringList l;
    for (int i = 0; i < lines->Count(); ++i)
        l.Add(lines->Strings(i));
    std::vector<std::unique_ptr<TLayout>> layouts;

    // From lines to items: each declaration becomes one line that begins with the declared
    // name, with its further lines and then its indentation and keyword appended.
    int i = 0;
    while (i < l.Count()) {
        if (!DeleteBlankLines(&l, i)) break;
        std::string line = l.Strings(i);
        int p = 1, next = 0;
        std::string word;
        if (GetWord(line, word, next, 1) && IsInitialWord(word)) p = next;
        SkipBlanks(line, p, p);
        std::string prefix = Cut(line, 1, p - 1);
        int endIndex = i;
        if (!FindDeclarationEnd(&l, i, p, endIndex)) {
            errorLine = i;
            return false;
        }
        auto layout = std::make_unique<TLayout>();
        for (int k = i + 1; k <= endIndex; ++k)
            layout->Append(line, l.Strings(k));
        for (int k = endIndex; k > i; --k)
            l.Delete(k);
        layout->Append(line, prefix);
        l.SetStrings(i, line);
        l.SetObjects(i, layout.get());
        layouts.push_back(std::move(layout));
        ++i;
    }

    // The platform's sort, by AnsiCompareText over the whole joined text.
    l.SetSorted(true);
    l.SetSorted(false);

    // From items back to lines.
    i = 0;
    while (i < l.Count()) {
        auto* layout = static_cast<TLayout*>(l.Objects(i));
        if (!layout) {
            ++i;
            continue;
        }
        l.SetObjects(i, nullptr);
        const std::string line = l.Strings(i);
        std::string head, seg;
        if (!layout->ReadSegment(line, head)) {
            errorLine = i;
            return false;
        }
        int count = 1;
        while (layout->ReadSegment(line, seg)) {
            if (seg.empty()) continue;
            std::string trimmed = rtl::Trim(seg);
            if (!trimmed.empty() && !IsInitialWord(trimmed)) {
                l.Insert(i + count, seg); // a continuation line
                ++count;
            } else {
                head = seg + head; // the indentation and keyword
            }
        }
        l.SetStrings(i, head);
        i += count;
    }

    lines->Assign(&l);
    errorLine = i;
    return true;
}

} // namespace zelvane
