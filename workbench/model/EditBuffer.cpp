// Source editors: the buffer with its block and undo, views, blocks and cursor positions.
#include "workbench/model/Files.h"
#include "workbench/model/Model.h"

#include <algorithm>

namespace workbench {

// ---------------------------------------------------------------------------------------------
// TSourceEditor

TSourceEditor::TSourceEditor(TIDEModel* model, TModelModule* module, std::string fileName)
    : model_(model), module_(module), fileName_(std::move(fileName)),
      options_(MakeInterfaced<TBufferOptions>()) {}

TSourceEditor::~TSourceEditor() {
    for (auto& v : views_)
        v->Detach();
}

int TSourceEditor::AddNotifier(const _di_IOTANotifier& notifier) {
    if (!notifier) return -1;
    notifiers_[nextNotifier_] = notifier;
    return nextNotifier_++;
}

void TSourceEditor::RemoveNotifier(int index) {
    notifiers_.erase(index);
}

void TSourceEditor::MarkModified() {
    text_.MarkModified();
    Changed();
}

void TSourceEditor::Show() {
    if (model_ && module_) model_->ShowSourceEditor(this);
}

_di_IOTAModule TSourceEditor::GetModule() {
    return _di_IOTAModule(module_);
}

_di_IOTAEditView TSourceEditor::GetEditView(int index) {
    if (index < 0 || index >= GetEditViewCount()) return nullptr;
    return _di_IOTAEditView(views_[static_cast<size_t>(index)].get());
}

_di_IOTABufferOptions TSourceEditor::GetBufferOptions() {
    return _di_IOTABufferOptions(options_.get());
}

_di_IOTAEditView TSourceEditor::GetTopView() {
    // The view of this buffer that stands highest among the model's views.
    if (views_.empty()) return nullptr;
    if (model_) {
        _di_IOTAEditView top = model_->GetTopView();
        for (auto& v : views_)
            if (top && Identity(top.get()) == Identity(static_cast<IOTAEditView*>(v.get())))
                return top;
    }
    return _di_IOTAEditView(views_.front().get());
}

_di_IOTAEditBlock TSourceEditor::GetEditBlock() {
    _di_IOTAEditView v = GetTopView();
    return v ? v->GetBlock() : nullptr;
}

_di_IOTAEditPosition TSourceEditor::GetEditPosition() {
    _di_IOTAEditView v = GetTopView();
    return v ? v->GetPosition() : nullptr;
}

void TSourceEditor::LoadFromFile() {
    text_.SetText(ReadFileBytes(fileName_));
}

void TSourceEditor::SaveToFile() {
    for (auto& [i, n] : notifiers_)
        n->BeforeSave();
    WriteFileBytes(fileName_, text_.Text());
    text_.MarkSaved();
    for (auto& [i, n] : notifiers_)
        n->AfterSave();
    Changed();
}

void TSourceEditor::SetText(std::string_view text) {
    CheckWritable();
    BeginEdit(nullptr);
    TTextPos end{text_.LineCount(), text_.LineLength(text_.LineCount()) + 1};
    text_.Replace({1, 1}, end, text);
    block_.Visible = false;
    EndEdit();
    for (auto& v : views_)
        v->SetCursor(text_.Clamp(v->Cursor()));
}

TEditView* TSourceEditor::AddView(TEditWindow* window) {
    views_.push_back(MakeInterfaced<TEditView>(this, window));
    return views_.back().get();
}

void TSourceEditor::RemoveView(TEditView* view) {
    auto it =
        std::find_if(views_.begin(), views_.end(), [&](const auto& v) { return v.get() == view; });
    if (it == views_.end()) return;
    DelphiInterface<TEditView> keep = *it; // alive until the model has let go of it
    views_.erase(it);
    if (model_) model_->ViewRemoved(view);
    keep->Detach();
}

TEditView* TSourceEditor::View(int index) const {
    return index >= 0 && index < static_cast<int>(views_.size())
               ? views_[static_cast<size_t>(index)].get()
               : nullptr;
}

void TSourceEditor::Detach() {
    while (!views_.empty())
        RemoveView(views_.back().get());
    module_ = nullptr;
    model_ = nullptr;
}

void TSourceEditor::CheckWritable() const {
    if (readOnly_)
        throw EReadOnlyBuffer("The buffer of \"" + ExtractFileName(fileName_) + "\" is read-only");
}

void TSourceEditor::Changed() {
    for (auto& [i, n] : notifiers_)
        n->Modified();
    if (model_ && model_->Events.BufferChanged) model_->Events.BufferChanged(this);
}

void TSourceEditor::BeginEdit(TEditView* view) {
    TUndoState state;
    state.View = view;
    state.Cursor = view ? view->Cursor() : TTextPos{};
    state.Block = block_;
    // The tag of the undo group is the index of the state that undo puts back.
    undoStates_.push_back(state);
    text_.BeginGroup(static_cast<int>(undoStates_.size()) - 1);
}

void TSourceEditor::EndEdit() {
    text_.EndGroup();
    Changed();
}

bool TSourceEditor::Undo() {
    CheckWritable();
    int tag = text_.Undo();
    if (tag < 0) return false;
    const TUndoState& state = undoStates_[static_cast<size_t>(tag)];
    block_ = state.Block;
    for (auto& v : views_) {
        if (v.get() == state.View) v->SetCursor(state.Cursor);
        v->SetCursor(text_.Clamp(v->Cursor()));
    }
    Changed();
    return true;
}

bool TSourceEditor::Redo() {
    CheckWritable();
    if (text_.Redo() < 0) return false;
    block_.Visible = false;
    for (auto& v : views_)
        v->SetCursor(text_.Clamp(v->Cursor()));
    Changed();
    return true;
}

TTextPos TSourceEditor::BlockStart() const {
    TTextPos a = block_.Start, b = block_.End;
    if (block_.Style == btColumn) return {std::min(a.Row, b.Row), std::min(a.Col, b.Col)};
    return std::min(a, b);
}

TTextPos TSourceEditor::BlockEnd() const {
    TTextPos a = block_.Start, b = block_.End;
    if (block_.Style == btColumn) return {std::max(a.Row, b.Row), std::max(a.Col, b.Col)};
    return std::max(a, b);
}

bool TSourceEditor::BlockValid() const {
    if (!block_.Visible) return false;
    TTextPos s = BlockStart(), e = BlockEnd();
    switch (block_.Style) {
    case btLine:
    case btInclusive:
        return true;
    case btColumn:
        return s.Col < e.Col;
    case btNonInclusive:
        return s < e;
    default:
        return false;
    }
}

std::string TSourceEditor::BlockText() const {
    if (!BlockValid()) return {};
    TTextPos s = text_.Clamp(BlockStart()), e = text_.Clamp(BlockEnd());
    switch (block_.Style) {
    case btLine: {
        std::string r;
        for (int row = s.Row; row <= e.Row; ++row)
            r += text_.Line(row) + "\r\n";
        return r;
    }
    case btColumn: {
        std::string r;
        for (int row = s.Row; row <= e.Row; ++row) {
            if (row > s.Row) r += "\r\n";
            r += text_.GetRange({row, s.Col}, {row, e.Col});
        }
        return r;
    }
    case btInclusive:
        return text_.GetRange(s, {e.Row, e.Col + 1});
    default:
        return text_.GetRange(s, e);
    }
}

TTextPos TSourceEditor::DeleteBlockText() {
    TTextPos s = text_.Clamp(BlockStart()), e = text_.Clamp(BlockEnd());
    switch (block_.Style) {
    case btLine:
        // Whole lines go with their line ends; the last line of the buffer keeps its place as
        // an empty line.
        if (e.Row < text_.LineCount())
            text_.Replace({s.Row, 1}, {e.Row + 1, 1}, "");
        else
            text_.Replace({s.Row, 1}, {e.Row, text_.LineLength(e.Row) + 1}, "");
        s = {s.Row, 1};
        break;
    case btColumn:
        for (int row = s.Row; row <= e.Row; ++row)
            text_.Replace({row, s.Col}, {row, e.Col}, "");
        break;
    case btInclusive:
        text_.Replace(s, {e.Row, e.Col + 1}, "");
        break;
    default:
        text_.Replace(s, e, "");
        break;
    }
    block_.Visible = false;
    return s;
}

void TSourceEditor::InsertText(TEditView* view, const std::string& text) {
    CheckWritable();
    BeginEdit(view);
    try {
        TTextPos pos = view->Cursor();
        if (BlockValid()) pos = DeleteBlockText();
        std::string insert = text;
        if (options_->GetAutoIndent()) {
            // Each new line starts where the line before it starts, as typing Enter does.
            std::string result;
            std::string previous =
                text_.Line(text_.Clamp(pos).Row)
                    .substr(0, std::min<size_t>(text_.LineLength(text_.Clamp(pos).Row),
                                                static_cast<size_t>(pos.Col - 1)));
            std::string line;
            for (size_t i = 0; i < text.size(); ++i) {
                char c = text[i];
                if (c == '\r' || c == '\n') {
                    result += c;
                    if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
                        result += text[++i];
                    previous += line;
                    size_t indent = previous.find_first_not_of(" \t");
                    std::string lead =
                        previous.substr(0, indent == std::string::npos ? previous.size() : indent);
                    result += lead;
                    previous = lead;
                    line.clear();
                    continue;
                }
                result += c;
                line += c;
            }
            insert = result;
        }
        TTextPos end = text_.Replace(pos, pos, insert);
        view->SetCursor(end);
    } catch (...) {
        EndEdit();
        throw;
    }
    EndEdit();
}

void TSourceEditor::DeleteBlock(TEditView* view) {
    CheckWritable();
    if (!BlockValid()) return;
    BeginEdit(view);
    TTextPos s = DeleteBlockText();
    if (view) view->SetCursor(s);
    EndEdit();
}

void TSourceEditor::DeleteChars(TEditView* view, int count, bool backwards) {
    CheckWritable();
    if (count <= 0) return;
    TTextPos from = text_.Clamp(view->Cursor());
    TTextPos to = from;
    // A line end counts as one character.
    for (int i = 0; i < count; ++i) {
        if (backwards) {
            if (to.Col > 1)
                --to.Col;
            else if (to.Row > 1)
                to = {to.Row - 1, text_.LineLength(to.Row - 1) + 1};
        } else {
            if (to.Col <= text_.LineLength(to.Row))
                ++to.Col;
            else if (to.Row < text_.LineCount())
                to = {to.Row + 1, 1};
        }
    }
    if (to == from) return;
    BeginEdit(view);
    text_.Replace(from, to, "");
    view->SetCursor(std::min(from, to));
    EndEdit();
}

// ---------------------------------------------------------------------------------------------
// TEditView

TEditView::TEditView(TSourceEditor* buffer, TEditWindow* window)
    : buffer_(buffer), window_(window) {}

TSourceEditor& TEditView::Buffer() const {
    if (!buffer_) throw EModelError("The edit view has been closed");
    return *buffer_;
}

_di_IOTAEditBlock TEditView::GetBlock() {
    return MakeInterfaced<TEditBlock>(this);
}
_di_IOTAEditPosition TEditView::GetPosition() {
    return MakeInterfaced<TEditPosition>(this);
}
_di_IOTAEditBuffer TEditView::GetBuffer() {
    return _di_IOTAEditBuffer(buffer_);
}

void TEditView::SetTopLeft(int topRow, int leftColumn) {
    int last = buffer_ ? buffer_->Buffer().LineCount() : 1;
    top_ = std::clamp(topRow, 1, std::max(1, last));
    left_ = std::max(1, leftColumn);
}

void TEditView::Scroll(int deltaRow, int deltaCol) {
    SetTopLeft(top_ + deltaRow, left_ + deltaCol);
}

void TEditView::MoveViewToCursor() {
    if (cursor_.Row < top_)
        top_ = cursor_.Row;
    else if (cursor_.Row > GetBottomRow())
        top_ = cursor_.Row - height_ + 1;
}

void TEditView::Paint() {
    ++paintCount_;
    if (buffer_ && buffer_->Module() && buffer_->Module()->Model() &&
        buffer_->Module()->Model()->Events.ViewPainted)
        buffer_->Module()->Model()->Events.ViewPainted(this);
}

_di_INTAEditWindow TEditView::GetEditWindow() {
    return _di_INTAEditWindow(window_.get());
}

void TEditView::ClosePage() {
    TSourceEditor& buffer = Buffer();
    TModelModule* module = buffer.Module();
    TIDEModel* model = module ? module->Model() : nullptr;
    // A buffer shown on more pages loses this one; the project's source closes its page only,
    // the project staying open; any other module closes with its last page.
    if (buffer.GetEditViewCount() > 1 || !model || dynamic_cast<TProjectModule*>(module)) {
        buffer.RemoveView(this);
        if (model && model->Events.PageClosed) model->Events.PageClosed();
        return;
    }
    model->CloseModule(module, true);
}

void TEditView::SetCursor(TTextPos pos) {
    cursor_ = pos;
    anchor_ = pos;
}

// ---------------------------------------------------------------------------------------------
// TEditBlock

bool TEditBlock::GetIsValid() {
    return view_->Buffer().BlockValid();
}
TOTABlockType TEditBlock::GetStyle() {
    return view_->Buffer().Block().Style;
}
void TEditBlock::SetStyle(TOTABlockType value) {
    if (value > btNonInclusive) return; // btUnknown is an answer, not a style
    view_->Buffer().Block().Style = value;
}
int TEditBlock::GetStartingRow() {
    return view_->Buffer().BlockStart().Row;
}
int TEditBlock::GetStartingColumn() {
    return view_->Buffer().BlockStart().Col;
}
int TEditBlock::GetEndingRow() {
    return view_->Buffer().BlockEnd().Row;
}
int TEditBlock::GetEndingColumn() {
    return view_->Buffer().BlockEnd().Col;
}
std::string TEditBlock::GetText() {
    return view_->Buffer().BlockText();
}
bool TEditBlock::GetVisible() {
    return view_->Buffer().Block().Visible;
}
void TEditBlock::SetVisible(bool value) {
    view_->Buffer().Block().Visible = value;
}

void TEditBlock::BeginBlock() {
    TBlockState& b = view_->Buffer().Block();
    b.Start = view_->Cursor();
    if (!b.Visible || b.End < b.Start) b.End = b.Start;
    b.Visible = true;
}

void TEditBlock::EndBlock() {
    TBlockState& b = view_->Buffer().Block();
    b.End = view_->Cursor();
    if (!b.Visible) b.Start = b.End;
    b.Visible = true;
}

bool TEditBlock::Extend(int newRow, int newCol) {
    TSourceEditor& buffer = view_->Buffer();
    if (newRow < 1 || newRow > buffer.Buffer().LineCount() || newCol < 1) return false;
    TBlockState& b = buffer.Block();
    b.Start = view_->Anchor();
    b.End = {newRow, newCol};
    b.Visible = true;
    view_->SetCursorKeepAnchor(b.End);
    buffer.Changed();
    return true;
}

bool TEditBlock::ExtendRelative(int deltaRow, int deltaCol) {
    TTextPos c = view_->Cursor();
    return Extend(c.Row + deltaRow, c.Col + deltaCol);
}

void TEditBlock::Reset() {
    view_->Buffer().Block().Visible = false;
}

void TEditBlock::Delete() {
    view_->Buffer().DeleteBlock(view_.get());
}

// ---------------------------------------------------------------------------------------------
// TEditPosition

int TEditPosition::GetRow() {
    return view_->Cursor().Row;
}
int TEditPosition::GetColumn() {
    return view_->Cursor().Col;
}

char TEditPosition::GetCharacter() {
    TTextPos c = view_->Cursor();
    const std::string& line = view_->Buffer().Buffer().Line(c.Row);
    return c.Col <= static_cast<int>(line.size()) ? line[static_cast<size_t>(c.Col - 1)] : '\0';
}

int TEditPosition::GetLastRow() {
    return view_->Buffer().Buffer().LineCount();
}

bool TEditPosition::Move(int row, int col) {
    if (row < 1 || row > view_->Buffer().Buffer().LineCount() || col < 1) return false;
    view_->SetCursor({row, col});
    return true;
}

bool TEditPosition::MoveRelative(int deltaRow, int deltaCol) {
    TTextPos c = view_->Cursor();
    return Move(c.Row + deltaRow, c.Col + deltaCol);
}

void TEditPosition::MoveBOL() {
    view_->SetCursor({view_->Cursor().Row, 1});
}

void TEditPosition::MoveEOL() {
    int row = view_->Cursor().Row;
    view_->SetCursor({row, view_->Buffer().Buffer().LineLength(row) + 1});
}

bool TEditPosition::IsWhiteSpace() {
    char c = GetCharacter();
    return c == ' ' || c == '\t' || c == '\0';
}

void TEditPosition::InsertText(const std::string& text) {
    view_->Buffer().InsertText(view_.get(), text);
}

void TEditPosition::InsertCharacter(char c) {
    InsertText(std::string(1, c));
}

void TEditPosition::Delete(int count) {
    view_->Buffer().DeleteChars(view_.get(), count, false);
}

void TEditPosition::BackspaceDelete(int count) {
    view_->Buffer().DeleteChars(view_.get(), count, true);
}

std::string TEditPosition::Read(int count) {
    const TTextBuffer& text = view_->Buffer().Buffer();
    TTextPos from = text.Clamp(view_->Cursor()), to = from;
    for (int i = 0; i < count; ++i) {
        if (to.Col <= text.LineLength(to.Row))
            ++to.Col;
        else if (to.Row < text.LineCount())
            to = {to.Row + 1, 1};
        else
            break;
    }
    return text.GetRange(from, to);
}

} // namespace workbench
