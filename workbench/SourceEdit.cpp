#include "workbench/SourceEdit.h"

#include "toolsapi/QtBridge.h"
#include "workbench/Application.h"

#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <cctype>

namespace workbench {

namespace {

const QColor kBackground(255, 255, 255);
const QColor kGutter(240, 240, 240);
const QColor kGutterText(128, 128, 128);
const QColor kSelection(0, 0, 128);
const QColor kSelectionText(255, 255, 255);
const QColor kReadOnlyBackground(248, 248, 240);


} // namespace

TSourceEdit::TSourceEdit(QWidget* parent) : QAbstractScrollArea(parent) {
    setObjectName(QStringLiteral("Editor"));
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::TypeWriter);
    font.setPointSize(10);
    setFont(font);
    viewport()->setFont(font);
    QFontMetrics fm(font);
    lineHeight_ = std::max(1, fm.height());
    charWidth_ = std::max(1, fm.horizontalAdvance(QLatin1Char('M')));
    ascent_ = fm.ascent();
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    viewport()->setCursor(Qt::IBeamCursor);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
}

QColor TSourceEdit::TokenColor(TTokenKind kind) {
    switch (kind) {
    case TTokenKind::Keyword:
        return QColor(0, 0, 0);
    case TTokenKind::Comment:
        return QColor(0, 0, 128);
    case TTokenKind::String:
        return QColor(0, 0, 255);
    case TTokenKind::Number:
        return QColor(0, 0, 255);
    case TTokenKind::Directive:
        return QColor(0, 128, 0);
    default:
        return QColor(0, 0, 0);
    }
}

void TSourceEdit::SetView(TEditView* view) {
    if (view_.get() == view) {
        Refresh();
        return;
    }
    view_ = view;
    language_ = view && view->Attached() ? LanguageOfFile(view->Buffer().GetFileName())
                                         : TSourceLanguage::Plain;
    if (view && view->Attached()) view->SetViewHeight(VisibleRows());
    Refresh();
}

TEditView* TSourceEdit::View() const {
    return view_ && view_->Attached() ? view_.get() : nullptr;
}

TSourceEditor* TSourceEdit::Buffer() const {
    TEditView* v = View();
    return v ? &v->Buffer() : nullptr;
}

int TSourceEdit::GutterWidth() const {
    int lines = Buffer() ? Buffer()->GetLinesInBuffer() : 1;
    int digits = std::max(3, static_cast<int>(std::to_string(lines).size()));
    return (digits + 2) * charWidth_;
}

int TSourceEdit::VisibleRows() const {
    return std::max(1, viewport()->height() / lineHeight_);
}

TTextPos TSourceEdit::PosAt(QPoint point) const {
    TEditView* v = View();
    if (!v) return {};
    int row = v->GetTopRow() + std::max(0, point.y()) / lineHeight_;
    row = std::clamp(row, 1, v->Buffer().GetLinesInBuffer());
    int x = point.x() - GutterWidth() + charWidth_ / 2;
    int col = v->GetLeftColumn() + std::max(0, x) / charWidth_;
    return {row, std::max(1, col)};
}

QPoint TSourceEdit::PointOf(TTextPos pos) const {
    TEditView* v = View();
    if (!v) return {};
    return QPoint(GutterWidth() + (pos.Col - v->GetLeftColumn()) * charWidth_,
                  (pos.Row - v->GetTopRow()) * lineHeight_);
}

void TSourceEdit::UpdateScrollBars() {
    TEditView* v = View();
    syncing_ = true;
    if (!v) {
        verticalScrollBar()->setRange(0, 0);
        horizontalScrollBar()->setRange(0, 0);
    } else {
        int lines = v->Buffer().GetLinesInBuffer();
        verticalScrollBar()->setRange(0, std::max(0, lines - 1));
        verticalScrollBar()->setPageStep(VisibleRows());
        verticalScrollBar()->setValue(v->GetTopRow() - 1);
        horizontalScrollBar()->setRange(0, 1024);
        horizontalScrollBar()->setPageStep(
            std::max(1, (viewport()->width() - GutterWidth()) / charWidth_));
        horizontalScrollBar()->setValue(v->GetLeftColumn() - 1);
    }
    syncing_ = false;
}

void TSourceEdit::Refresh() {
    UpdateScrollBars();
    viewport()->update();
    emit StateChanged();
}

void TSourceEdit::scrollContentsBy(int, int) {
    if (syncing_) return;
    if (TEditView* v = View())
        v->SetTopLeft(verticalScrollBar()->value() + 1, horizontalScrollBar()->value() + 1);
    viewport()->update();
}

void TSourceEdit::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    if (TEditView* v = View()) v->SetViewHeight(VisibleRows());
    UpdateScrollBars();
}

void TSourceEdit::EnsureCursorVisible() {
    TEditView* v = View();
    if (!v) return;
    v->SetViewHeight(VisibleRows());
    TTextPos c = v->Cursor();
    int top = v->GetTopRow(), left = v->GetLeftColumn();
    int rows = VisibleRows();
    int cols = std::max(1, (viewport()->width() - GutterWidth()) / charWidth_);
    if (c.Row < top) top = c.Row;
    if (c.Row >= top + rows) top = c.Row - rows + 1;
    if (c.Col < left) left = c.Col;
    if (c.Col >= left + cols) left = c.Col - cols + 1;
    if (top != v->GetTopRow() || left != v->GetLeftColumn()) v->SetTopLeft(top, left);
}

// ---------------------------------------------------------------------------------------------
// Painting

bool TSourceEdit::IsSelected(int row, int col, TTextPos s, TTextPos e, TOTABlockType style) const {
    switch (style) {
    case btLine:
        return row >= s.Row && row <= e.Row;
    case btColumn:
        return row >= s.Row && row <= e.Row && col >= s.Col && col < e.Col;
    case btInclusive:
        return TTextPos{row, col} >= s && TTextPos{row, col} <= e;
    default:
        return TTextPos{row, col} >= s && TTextPos{row, col} < e;
    }
}

void TSourceEdit::paintEvent(QPaintEvent*) {
    QPainter p(viewport());
    TEditView* v = View();
    TSourceEditor* buffer = Buffer();
    const int gutter = GutterWidth();
    const int width = viewport()->width(), height = viewport()->height();
    p.fillRect(QRect(0, 0, width, height),
               buffer && buffer->IsReadOnly() ? kReadOnlyBackground : kBackground);
    p.fillRect(QRect(0, 0, gutter - charWidth_ / 2, height), kGutter);
    if (!v || !buffer) return;

    const TTextBuffer& text = buffer->Buffer();
    const int top = v->GetTopRow(), left = v->GetLeftColumn();
    const int last = std::min(text.LineCount(), top + height / lineHeight_ + 1);

    // The highlighting state at the first shown line, carried from the top of the buffer.
    TLineState state = TLineState::Normal;
    for (int row = 1; row < top && row <= text.LineCount(); ++row)
        HighlightLine(language_, text.Line(row), state);

    const bool block = buffer->BlockValid();
    const TOTABlockType style = buffer->Block().Style;
    const TTextPos bs = buffer->BlockStart(), be = buffer->BlockEnd();
    QFont plain = font(), bold = font(), italic = font();
    bold.setBold(true);
    italic.setItalic(true);

    for (int row = top; row <= last; ++row) {
        const int y = (row - top) * lineHeight_;
        const std::string& line = text.Line(row);
        // Line number.
        p.setFont(plain);
        p.setPen(kGutterText);
        p.drawText(QRect(0, y, gutter - charWidth_, lineHeight_), Qt::AlignRight | Qt::AlignVCenter,
                   QString::number(row));
        p.setClipRect(QRect(gutter - 2, 0, width - gutter + 2, height));
        // The block's background, including virtual space for column and line blocks.
        if (block && row >= bs.Row && row <= be.Row) {
            int from = 1, to = 1;
            if (style == btColumn) {
                from = bs.Col;
                to = be.Col;
            } else if (style == btLine) {
                from = 1;
                to = std::max(static_cast<int>(line.size()) + 2, left + width / charWidth_ + 1);
            } else {
                from = row == bs.Row ? bs.Col : 1;
                to = row == be.Row ? be.Col + (style == btInclusive ? 1 : 0)
                                   : static_cast<int>(line.size()) + 2;
            }
            if (to > from)
                p.fillRect(QRect(gutter + (from - left) * charWidth_, y, (to - from) * charWidth_,
                                 lineHeight_),
                           kSelection);
        }
        // The text, run by run.
        for (const TTokenRun& run : HighlightLine(language_, line, state)) {
            QFont f = run.Kind == TTokenKind::Keyword   ? bold
                      : run.Kind == TTokenKind::Comment ? italic
                                                        : plain;
            p.setFont(f);
            for (int i = 0; i < run.Length; ++i) {
                int col = run.Start + i + 1;
                if (col < left) continue;
                int x = gutter + (col - left) * charWidth_;
                if (x > width) break;
                char c = line[static_cast<size_t>(run.Start + i)];
                if (c == ' ' || c == '\t') continue;
                bool selected = block && IsSelected(row, col, bs, be, style);
                p.setPen(selected ? kSelectionText : TokenColor(run.Kind));
                p.drawText(QPoint(x, y + ascent_), ToolsAPI::FromBytes(std::string_view(&c, 1)));
            }
        }
        p.setClipping(false);
    }

    // The cursor.
    if (hasFocus() || !block) {
        QPoint c = PointOf(v->Cursor());
        if (c.x() >= gutter - 1) {
            const bool insert = buffer->GetBufferOptions()->GetInsertMode();
            p.fillRect(QRect(c.x(), c.y(), insert ? 2 : charWidth_, lineHeight_), QColor(0, 0, 0));
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Editing

void TSourceEdit::MoveTo(TTextPos pos, bool extend, TOTABlockType style) {
    TEditView* v = View();
    if (!v) return;
    TSourceEditor& buffer = v->Buffer();
    pos.Row = std::clamp(pos.Row, 1, buffer.GetLinesInBuffer());
    pos.Col = std::max(1, pos.Col);
    if (extend) {
        if (!buffer.Block().Visible) {
            // A new block starts at the cursor.
            v->SetCursor(v->Cursor());
        }
        buffer.Block().Style = style;
        v->GetBlock()->Extend(pos.Row, pos.Col);
    } else {
        if (buffer.Block().Visible) {
            buffer.Block().Visible = false;
            buffer.Changed();
        }
        v->SetCursor(pos);
    }
    EnsureCursorVisible();
    Refresh();
}

void TSourceEdit::TypeText(const std::string& text) {
    TEditView* v = View();
    if (!v) return;
    try {
        v->GetPosition()->InsertText(text);
    } catch (const EReadOnlyBuffer&) {
        QApplication::beep();
        return;
    }
    EnsureCursorVisible();
    Refresh();
}

void TSourceEdit::CopyBlock() {
    TSourceEditor* buffer = Buffer();
    if (!buffer || !buffer->BlockValid()) return;
    QApplication::clipboard()->setText(ToolsAPI::FromBytes(buffer->BlockText()));
}

void TSourceEdit::Paste() {
    QString text = QApplication::clipboard()->text();
    if (!text.isEmpty()) TypeText(ToolsAPI::ToBytes(text));
}

void TSourceEdit::SelectAll() {
    TEditView* v = View();
    if (!v) return;
    const TTextBuffer& text = v->Buffer().Buffer();
    v->SetCursor({1, 1});
    v->Buffer().Block().Visible = false;
    MoveTo({text.LineCount(), text.LineLength(text.LineCount()) + 1}, true, btNonInclusive);
}

void TSourceEdit::SelectWord(TTextPos pos) {
    TEditView* v = View();
    if (!v) return;
    const std::string& line = v->Buffer().Buffer().Line(pos.Row);
    auto word = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    int i = std::min(pos.Col - 1, static_cast<int>(line.size()));
    int s = i, e = i;
    while (s > 0 && word(line[static_cast<size_t>(s - 1)]))
        --s;
    while (e < static_cast<int>(line.size()) && word(line[static_cast<size_t>(e)]))
        ++e;
    if (e == s) return;
    v->Buffer().Block().Visible = false;
    v->SetCursor({pos.Row, s + 1});
    MoveTo({pos.Row, e + 1}, true, btNonInclusive);
}

bool TSourceEdit::focusNextPrevChild(bool) {
    return false; // Tab is a key of the editor
}

TShortCut TSourceEdit::ShortCutOf(const QKeyEvent* event) {
    return ToolsAPI::KeySequenceToShortCut(QKeySequence(event->keyCombination()));
}

bool TSourceEdit::event(QEvent* event) {
    // A bound key is claimed before the shortcuts are matched, so that its press comes here.
    if (event->type() == QEvent::ShortcutOverride && keyBindings_ &&
        keyBindings_->IsBoundKey(ShortCutOf(static_cast<QKeyEvent*>(event)))) {
        event->accept();
        return true;
    }
    return QAbstractScrollArea::event(event);
}

void TSourceEdit::keyPressEvent(QKeyEvent* event) {
    if (keyBindings_ && keyBindings_->IsBoundKey(ShortCutOf(event))) {
        TKeyBindingResult result = krUnhandled;
        Guarded(nullptr, [&] { result = keyBindings_->DispatchKey(ShortCutOf(event)); });
        if (result != krUnhandled) return;
    }
    TEditView* v = View();
    if (!v) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    TSourceEditor& buffer = v->Buffer();
    const Qt::KeyboardModifiers mods = event->modifiers();
    const bool shift = mods & Qt::ShiftModifier;
    const bool ctrl = mods & Qt::ControlModifier;
    const bool alt = mods & Qt::AltModifier;
    // Shift marks a stream block; Alt with Shift marks a column block.
    const TOTABlockType style = alt ? btColumn : btNonInclusive;
    const TTextPos c = v->Cursor();
    const TTextBuffer& text = buffer.Buffer();
    const int rows = VisibleRows();

    Guarded(nullptr, [&] {
        switch (event->key()) {
        case Qt::Key_Left:
            if (ctrl) {
                // The start of the word before the cursor.
                const std::string& line = text.Line(c.Row);
                int i = std::min(c.Col - 1, static_cast<int>(line.size()));
                while (i > 0 && line[static_cast<size_t>(i - 1)] == ' ')
                    --i;
                while (i > 0 && line[static_cast<size_t>(i - 1)] != ' ')
                    --i;
                MoveTo({c.Row, i + 1}, shift, style);
            } else {
                MoveTo({c.Row, c.Col - 1}, shift, style);
            }
            return;
        case Qt::Key_Right:
            if (ctrl) {
                const std::string& line = text.Line(c.Row);
                int i = c.Col - 1, n = static_cast<int>(line.size());
                while (i < n && line[static_cast<size_t>(i)] != ' ')
                    ++i;
                while (i < n && line[static_cast<size_t>(i)] == ' ')
                    ++i;
                MoveTo({c.Row, i + 1}, shift, style);
            } else {
                MoveTo({c.Row, c.Col + 1}, shift, style);
            }
            return;
        case Qt::Key_Up:
            MoveTo({c.Row - 1, c.Col}, shift, style);
            return;
        case Qt::Key_Down:
            MoveTo({c.Row + 1, c.Col}, shift, style);
            return;
        case Qt::Key_PageUp:
            MoveTo({c.Row - rows, c.Col}, shift, style);
            return;
        case Qt::Key_PageDown:
            MoveTo({c.Row + rows, c.Col}, shift, style);
            return;
        case Qt::Key_Home:
            MoveTo(ctrl ? TTextPos{1, 1} : TTextPos{c.Row, 1}, shift, style);
            return;
        case Qt::Key_End:
            if (ctrl)
                MoveTo({text.LineCount(), text.LineLength(text.LineCount()) + 1}, shift, style);
            else
                MoveTo({c.Row, text.LineLength(c.Row) + 1}, shift, style);
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            TypeText("\r\n");
            return;
        case Qt::Key_Tab:
            TypeText("  ");
            return;
        case Qt::Key_Backspace:
        case Qt::Key_Delete:
            try {
                if (buffer.BlockValid())
                    v->GetBlock()->Delete();
                else if (event->key() == Qt::Key_Backspace)
                    v->GetPosition()->BackspaceDelete(1);
                else
                    v->GetPosition()->Delete(1);
            } catch (const EReadOnlyBuffer&) {
                QApplication::beep();
            }
            EnsureCursorVisible();
            Refresh();
            return;
        case Qt::Key_Insert:
            buffer.GetBufferOptions()->SetInsertMode(!buffer.GetBufferOptions()->GetInsertMode());
            Refresh();
            return;
        default:
            break;
        }
        if (ctrl && !alt) {
            switch (event->key()) {
            case Qt::Key_Z:
                try {
                    if (shift)
                        buffer.Redo();
                    else
                        buffer.Undo();
                } catch (const EReadOnlyBuffer&) {
                    QApplication::beep();
                }
                EnsureCursorVisible();
                Refresh();
                return;
            case Qt::Key_A:
                SelectAll();
                return;
            case Qt::Key_C:
                CopyBlock();
                return;
            case Qt::Key_X:
                CopyBlock();
                if (buffer.BlockValid()) {
                    try {
                        v->GetBlock()->Delete();
                    } catch (const EReadOnlyBuffer&) {
                        QApplication::beep();
                    }
                }
                Refresh();
                return;
            case Qt::Key_V:
                Paste();
                return;
            default:
                event->ignore();
                return;
            }
        }
        QString typed = event->text();
        if (!typed.isEmpty() && typed.at(0).isPrint() && !ctrl) {
            std::string bytes = ToolsAPI::ToBytes(typed);
            if (!buffer.GetBufferOptions()->GetInsertMode() && !buffer.BlockValid() &&
                c.Col <= text.LineLength(c.Row)) {
                try {
                    v->GetPosition()->Delete(static_cast<int>(bytes.size()));
                } catch (const EReadOnlyBuffer&) {
                }
            }
            TypeText(bytes);
            return;
        }
        event->ignore();
    });
}

void TSourceEdit::inputMethodEvent(QInputMethodEvent* event) {
    if (!event->commitString().isEmpty())
        TypeText(ToolsAPI::ToBytes(event->commitString()));
    event->accept();
}

void TSourceEdit::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !View()) return;
    TTextPos pos = PosAt(event->position().toPoint());
    const bool alt = event->modifiers() & Qt::AltModifier;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    if (!alt) {
        // Stream marking stays within the text of the line.
        pos.Col = std::min(pos.Col, View()->Buffer().Buffer().LineLength(pos.Row) + 1);
    }
    dragging_ = true;
    columnDrag_ = alt;
    MoveTo(pos, shift, alt ? btColumn : btNonInclusive);
}

void TSourceEdit::mouseMoveEvent(QMouseEvent* event) {
    if (!dragging_ || !View()) return;
    TTextPos pos = PosAt(event->position().toPoint());
    if (!columnDrag_)
        pos.Col = std::min(pos.Col, View()->Buffer().Buffer().LineLength(pos.Row) + 1);
    if (pos == View()->Cursor()) return;
    MoveTo(pos, true, columnDrag_ ? btColumn : btNonInclusive);
}

void TSourceEdit::mouseReleaseEvent(QMouseEvent*) {
    dragging_ = false;
}

void TSourceEdit::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && View()) SelectWord(PosAt(event->position().toPoint()));
}

} // namespace workbench
