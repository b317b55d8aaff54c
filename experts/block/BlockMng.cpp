#include "experts/block/BlockMng.h"

#include "foundation/AppUtils.h"
#include "foundation/StrUtils.h"
#include "foundation/StrsUtils.h"
#include "host/ExpMenu.h"
#include "host/ExpShrForm.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "rtl/Lists.h"

#include <QAction>
#include <QWidget>

#include <algorithm>

namespace zelvane {

using namespace rtl;
using namespace ToolsAPI;

RTL_BEGIN_CLASS(TBlockMng)
Property("MoveCursorTopLeft", &TBlockMng::MoveCursorTopLeft).Default(false);
Property("SafeStringMoving", &TBlockMng::SafeStringMoving).Default(true);
Method<&TBlockMng::MoveBlockLeftOne>("MoveBlockLeftOne");
Method<&TBlockMng::MoveBlockLeftTwo>("MoveBlockLeftTwo");
Method<&TBlockMng::MoveBlockRightOne>("MoveBlockRightOne");
Method<&TBlockMng::MoveBlockRightTwo>("MoveBlockRightTwo");
Method<&TBlockMng::SortLines>("SortLines");
Method<&TBlockMng::UpdateBlockState>("UpdateBlockState");
RTL_END_CLASS

namespace {

TBlockSelection GetSelection(const _di_IOTAEditBlock& block) {
    return {block->GetStartingRow(), block->GetStartingColumn(), block->GetEndingRow(),
            block->GetEndingColumn()};
}

// Marks the block anew; the cursor ends at the block's end with toEnd, else at its start.
void SetSelection(const _di_IOTAEditView& view, const TBlockSelection& s, bool toEnd) {
    if (toEnd) {
        view->GetPosition()->Move(s.StartRow, s.StartCol);
        view->GetBlock()->Extend(s.EndRow, s.EndCol);
    } else {
        view->GetPosition()->Move(s.EndRow, s.EndCol);
        view->GetBlock()->Extend(s.StartRow, s.StartCol);
    }
}

bool EndsInLineBreak(const std::string& text) {
    return text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0;
}

// A text that ends a line: at least three characters, the last two CR LF.
bool HasLineEnd(const std::string& text) {
    return text.size() >= 3 && EndsInLineBreak(text);
}

// The list's text, without the line end the list adds when the block had none.
std::string ListText(const TStringList& lines, bool hadLineEnd) {
    std::string text = lines.GetText();
    if (!hadLineEnd && EndsInLineBreak(text)) text.resize(text.size() - 2);
    return text;
}

// Inserting replaces the marked block; the editor must not indent what comes in.
void ReplaceBlock(const std::string& text, const _di_IOTAEditView& view) {
    _di_IOTABufferOptions options = view->GetBuffer()->GetBufferOptions();
    bool autoIndent = options->GetAutoIndent();
    options->SetAutoIndent(false);
    try {
        view->GetPosition()->InsertText(text);
    } catch (...) {
        options->SetAutoIndent(autoIndent);
        throw;
    }
    options->SetAutoIndent(autoIndent);
}

void RefreshEditor() {
    _di_IOTAEditorServices editors = IDEService<IOTAEditorServices>();
    _di_IOTAEditView view = editors ? editors->GetTopView() : nullptr;
    _di_INTAEditWindow window = view ? view->GetEditWindow() : nullptr;
    QWidget* form = window ? window->GetForm() : nullptr;
    if (QWidget* editor = form ? form->findChild<QWidget*>(QStringLiteral("Editor")) : nullptr)
        editor->update();
}

// Takes up to `limit` spaces that stand left of the block's first line into the block.
int TakeSpacesBefore(const _di_IOTAEditView& view, TBlockSelection& s, int limit) {
    _di_IOTAEditPosition position = view->GetPosition();
    position->Move(s.StartRow, s.StartCol - 1);
    int taken = 0;
    while (taken < limit && position->GetCharacter() == ' ') {
        ++taken;
        position->MoveRelative(0, -1);
    }
    if (taken > 0) s.StartCol = std::max(1, s.StartCol - taken);
    return taken;
}

bool IsBlankLine(const std::string& line) {
    int pos = 0;
    return !SkipBlanks(line, pos);
}

// Shifts the lines from the last to the first; blank lines stay as they are. lineShift is the
// shift of the last line changed, the topmost. False when safe mode refuses a left move.
bool ShiftLines(TStringList& lines, int shift, bool safe, int& lineShift) {
    for (int i = lines.Count() - 1; i >= 0; --i) {
        std::string line = lines[i];
        if (IsBlankLine(line)) continue;
        if (shift > 0) {
            line.insert(0, size_t(shift), ' ');
            lineShift = shift;
        } else {
            int count = 0;
            while (count < -shift && count < int(line.size()) && line[size_t(count)] == ' ')
                ++count;
            if (safe && count != -shift) return false;
            line.erase(0, size_t(count));
            lineShift = -count;
        }
        lines.SetStrings(i, line);
    }
    return true;
}

} // namespace

// ---------------------------------------------------------------------------------------------

TBlockMng::TBlockMng() {
    AddStoredData(this, "EditorManagerData", LocaleStr(SUnitEditorExpert),
                  LabelTemplate("TBlockMng", {{"MoveCursorTopLeft", SLabelMoveCursorTopLeft},
                                              {"SafeStringMoving", SLabelSafeStringMoving}}));
    SafeStringMoving = true;
}

void TBlockMng::Init(TAddItemFunc AddItem) {
    struct TItem {
        const char* ItemID;
        const char* Caption;
        const char* ShortCut;
        bool LineBefore;
        TNotifyEvent Execute;
    };
    const TItem items[] = {
        {"MoveBlockLeftOneItem", "Move block left (1 pos)", "Ctrl+,", true,
         TNotifyEvent::Of<&TBlockMng::MoveBlockLeftOne>(this)},
        {"MoveBlockLeftTwoItem", "Move block left (2 pos)", "Ctrl+Shift+,", false,
         TNotifyEvent::Of<&TBlockMng::MoveBlockLeftTwo>(this)},
        {"MoveBlockRightOneItem", "Move block right (1 pos)", "Ctrl+.", false,
         TNotifyEvent::Of<&TBlockMng::MoveBlockRightOne>(this)},
        {"MoveBlockRightTwoItem", "Move block right (2 pos)", "Ctrl+Shift+.", false,
         TNotifyEvent::Of<&TBlockMng::MoveBlockRightTwo>(this)},
        {"SortLinesItem", "Sorting", "Ctrl+;", false,
         TNotifyEvent::Of<&TBlockMng::SortLines>(this)},
    };
    ExpMenuItems.clear();
    for (const TItem& i : items) {
        TExpMenuItemData* data = AddItem(i.ItemID);
        data->Caption = i.Caption;
        data->ShortCutText = i.ShortCut;
        data->HaveLineBefore = i.LineBefore;
        data->OnExecute = i.Execute;
        data->OnUpdate = TNotifyEvent::Of<&TBlockMng::UpdateBlockState>(this);
        ExpMenuItems.push_back(data);
    }
}

bool TBlockMng::CheckState() {
    _di_IOTAEditorServices editors = IDEService<IOTAEditorServices>();
    if (!editors) return false;
    _di_IOTAEditBuffer buffer = editors->GetTopBuffer();
    if (!buffer || buffer->GetEditViewCount() < 1) return false;
    _di_IOTAEditView view = editors->GetTopView();
    return view && view->GetBlock()->GetIsValid();
}

void TBlockMng::UpdateBlockState(TObject* Sender) {
    SetSenderEnabled(Sender, CheckState());
}

void TBlockMng::DoAction(TBlockActionID id) {
    _di_IOTAEditView view;
    if (OpenEditor && OpenEditor->GetEditViewCount() > 0)
        view = OpenEditor->GetEditView(0);
    else if (_di_IOTAEditorServices editors = IDEService<IOTAEditorServices>())
        view = editors->GetTopView();
    if (!view) return;

    switch (id) {
    case aiSort:
        DoSortLines(view);
        break;
    case aiMoveLeftOne:
        DoMoveBlock(view, -1);
        break;
    case aiMoveLeftTwo:
        DoMoveBlock(view, -2);
        break;
    case aiMoveRightOne:
        DoMoveBlock(view, 1);
        break;
    case aiMoveRightTwo:
        DoMoveBlock(view, 2);
        break;
    case aiSetup:
        break;
    }

    // The cursor stays in sight, two rows from either edge.
    int row = view->GetPosition()->GetRow();
    if (row - view->GetTopRow() > 2) {
        if (view->GetBottomRow() - row < 3) view->Scroll(2, 0);
    } else {
        view->Scroll(-2, 0);
    }
    view->GetBuffer()->Show();
    view->Paint();
}

void TBlockMng::DoMoveBlock(const _di_IOTAEditView& view, int shift) {
    _di_IOTAEditBlock block = view->GetBlock();
    if (shift == 0 || block->GetStyle() == btColumn) return;

    TBlockSelection s = GetSelection(block);
    int savedStartCol = s.StartCol;
    bool cursorAtStart = view->GetPosition()->GetRow() <= s.StartRow;

    if (shift < 0 && s.StartCol > 1) {
        TakeSpacesBefore(view, s, -shift);
        SetSelection(view, s, true);
    }
    if (shift > 0) s.StartCol += shift;

    std::string text = view->GetBlock()->GetText();
    bool hadLineEnd = HasLineEnd(text);
    TStringList lines;
    lines.SetText(text);

    int lineShift = 0;
    if (!ShiftLines(lines, shift, SafeStringMoving, lineShift)) {
        s.StartCol = savedStartCol;
        SetSelection(view, s, !cursorAtStart);
        Beep();
        return;
    }

    ReplaceBlock(ListText(lines, hadLineEnd), view);
    if (!cursorAtStart) RefreshEditor();
    if (Screen)
        if (QWidget* control = Screen->GetActiveControl()) control->update();
    if (!hadLineEnd) s.EndCol += lineShift;
    SetSelection(view, s, !MoveCursorTopLeft && !cursorAtStart);
}

void TBlockMng::DoSortLines(const _di_IOTAEditView& view) {
    _di_IOTAEditBlock block = view->GetBlock();
    if (block->GetStyle() == btColumn) return;

    TBlockSelection s = GetSelection(block);
    int savedStartCol = s.StartCol;
    bool cursorAtStart = view->GetPosition()->GetRow() <= s.StartRow;

    // The whole indentation of the first line comes into the block.
    int taken = s.StartCol > 1 ? TakeSpacesBefore(view, s, s.StartCol - 1) : 0;
    SetSelection(view, s, false);

    TStringList lines;
    std::string text = view->GetBlock()->GetText();
    lines.SetText(text);
    bool hadLineEnd = HasLineEnd(text);

    int errorLine = 0;
    if (!SortDeclarations(&lines, errorLine)) {
        s.StartCol = savedStartCol;
        SetSelection(view, s, !cursorAtStart);
        Beep();
        return;
    }
    ReplaceBlock(ListText(lines, hadLineEnd), view);
    RefreshEditor();
    view->GetPosition()->Move(s.StartRow, s.StartCol + taken);
}

} // namespace zelvane
