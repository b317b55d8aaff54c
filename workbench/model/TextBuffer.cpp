#include "workbench/model/TextBuffer.h"

#include <algorithm>

#include "rtl/TypInfo.h"

namespace workbench {

RTL_IMPLEMENT_CLASS(EEditBufferError)

namespace {

std::vector<std::string> SplitLines(std::string_view text, std::string* lineBreak = nullptr) {
    std::vector<std::string> lines;
    std::string current;
    bool breakSeen = false;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\r' || c == '\n') {
            std::string brk(1, c);
            if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
                brk = "\r\n";
                ++i;
            }
            if (lineBreak && !breakSeen) *lineBreak = brk;
            breakSeen = true;
            lines.push_back(std::move(current));
            current.clear();
        } else {
            current += c;
        }
    }
    lines.push_back(std::move(current));
    return lines;
}

std::string Tail(const std::string& line, int col) {
    size_t from = static_cast<size_t>(col - 1);
    return from >= line.size() ? std::string() : line.substr(from);
}

std::string Head(const std::string& line, int col) {
    return line.substr(0, std::min(line.size(), static_cast<size_t>(col - 1)));
}

} // namespace

void TTextBuffer::SetText(std::string_view text) {
    lineBreak_ = "\r\n";
    lines_ = SplitLines(text, &lineBreak_);
    undo_.clear();
    undoCount_ = 0;
    savedAt_ = 0;
    modifiedByHand_ = false;
}

std::string TTextBuffer::Text() const {
    std::string result;
    for (size_t i = 0; i < lines_.size(); ++i) {
        if (i) result += lineBreak_;
        result += lines_[i];
    }
    return result;
}

const std::string& TTextBuffer::Line(int row) const {
    if (row < 1 || row > LineCount())
        throw EEditBufferError("Line " + std::to_string(row) + " is outside the buffer of " +
                               std::to_string(LineCount()) + " lines");
    return lines_[static_cast<size_t>(row - 1)];
}

TTextPos TTextBuffer::Clamp(TTextPos pos) const {
    pos.Row = std::clamp(pos.Row, 1, LineCount());
    pos.Col = std::max(pos.Col, 1);
    return pos;
}

std::string TTextBuffer::GetRange(TTextPos from, TTextPos to) const {
    from = Clamp(from);
    to = Clamp(to);
    if (to < from) std::swap(from, to);
    const std::string& first = Line(from.Row);
    if (from.Row == to.Row) {
        if (from.Col > static_cast<int>(first.size())) return {};
        return Head(first, to.Col).substr(static_cast<size_t>(from.Col - 1));
    }
    std::string result = Tail(first, from.Col);
    for (int row = from.Row + 1; row < to.Row; ++row)
        result += "\r\n" + Line(row);
    result += "\r\n" + Head(Line(to.Row), to.Col);
    return result;
}

TTextPos TTextBuffer::Replace(TTextPos from, TTextPos to, std::string_view text) {
    from = Clamp(from);
    to = Clamp(to);
    if (to < from) std::swap(from, to);
    std::vector<std::string> segments = SplitLines(text);
    std::string prefix = Head(Line(from.Row), from.Col);
    if (!segments.front().empty() && static_cast<int>(prefix.size()) < from.Col - 1)
        prefix.append(static_cast<size_t>(from.Col - 1) - prefix.size(), ' ');
    std::string suffix = Tail(Line(to.Row), to.Col);

    TTextPos end;
    end.Row = from.Row + static_cast<int>(segments.size()) - 1;
    segments.front().insert(0, prefix);
    end.Col = static_cast<int>(segments.back().size()) + 1;
    segments.back() += suffix;
    ReplaceLines(from.Row - 1, to.Row - from.Row + 1, std::move(segments));
    return end;
}

void TTextBuffer::DeleteLines(int first, int last) {
    first = std::max(first, 1);
    last = std::min(last, LineCount());
    if (first > last) return;
    if (last - first + 1 == LineCount()) {
        ReplaceLines(0, LineCount(), {std::string()});
        return;
    }
    ReplaceLines(first - 1, last - first + 1, {});
}

void TTextBuffer::ReplaceLines(int first, int count, std::vector<std::string> newLines) {
    TLineEdit edit{first, std::move(newLines), count};
    Apply(edit);
    if (groupDepth_ == 0) {
        BeginGroup(0);
        CurrentGroup().Edits.push_back(std::move(edit));
        EndGroup();
    } else {
        CurrentGroup().Edits.push_back(std::move(edit));
    }
}

void TTextBuffer::Apply(TLineEdit& edit) {
    auto begin = lines_.begin() + edit.First;
    std::vector<std::string> removed(std::make_move_iterator(begin),
                                     std::make_move_iterator(begin + edit.Count));
    lines_.erase(begin, begin + edit.Count);
    lines_.insert(lines_.begin() + edit.First, std::make_move_iterator(edit.Lines.begin()),
                  std::make_move_iterator(edit.Lines.end()));
    edit.Count = static_cast<int>(edit.Lines.size());
    edit.Lines = std::move(removed);
}

void TTextBuffer::BeginGroup(int tag) {
    if (groupDepth_++ > 0) return;
    if (CanRedo()) {
        undo_.erase(undo_.begin() + undoCount_, undo_.end());
        if (savedAt_ > undoCount_) savedAt_ = -1; // the saved text can't be reached again
    }
    undo_.push_back(TGroup{tag, {}});
    ++undoCount_;
    groupOpen_ = true;
}

void TTextBuffer::EndGroup() {
    if (groupDepth_ == 0) return;
    if (--groupDepth_ > 0) return;
    groupOpen_ = false;
    if (undo_.back().Edits.empty()) { // nothing changed: no undo step
        undo_.pop_back();
        --undoCount_;
    }
}

TTextBuffer::TGroup& TTextBuffer::CurrentGroup() {
    return undo_.back();
}

int TTextBuffer::Undo() {
    if (groupOpen_ || !CanUndo()) return -1;
    TGroup& group = undo_[static_cast<size_t>(--undoCount_)];
    for (auto it = group.Edits.rbegin(); it != group.Edits.rend(); ++it)
        Apply(*it);
    return group.Tag;
}

int TTextBuffer::Redo() {
    if (groupOpen_ || !CanRedo()) return -1;
    TGroup& group = undo_[static_cast<size_t>(undoCount_++)];
    for (auto& e : group.Edits)
        Apply(e);
    return group.Tag;
}

} // namespace workbench
