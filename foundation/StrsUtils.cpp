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

// A layout string attached to a line of the work list.
class TLayout : public rtl::TObject {
public:
    std::string Text;
    size_t ReadPos = 0;
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
            AppendWithLayout(line, layout->Text, l.Strings(k));
        for (int k = endIndex; k > i; --k)
            l.Delete(k);
        AppendWithLayout(line, layout->Text, prefix);
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
        if (!ReadLayoutSegment(line, layout->Text, layout->ReadPos, head)) {
            errorLine = i;
            return false;
        }
        int count = 1;
        while (ReadLayoutSegment(line, layout->Text, layout->ReadPos, seg)) {
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
