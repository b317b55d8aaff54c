// The source editor control of the edit window ("Editor"): the view of one edit view of the
// model. It paints the buffer's lines with line numbers and highlighting, the marked block
// (stream, column or line) and the cursor, and turns keys and mouse into edits and moves through
// the model's positions and blocks. The model stays the truth: every edit goes through the
// buffer, and the control repaints from it.
#pragma once

#include "workbench/Highlighter.h"
#include "workbench/model/Model.h"

#include <QAbstractScrollArea>

namespace workbench {

class TSourceEdit : public QAbstractScrollArea {
    Q_OBJECT
public:
    explicit TSourceEdit(QWidget* parent = nullptr);

    // The model whose key bindings the editor's keys go to first, before the shortcuts of the
    // IDE's actions and before the editor's own keys, as in the IDE's editor.
    void SetKeyBindings(TIDEModel* model) { keyBindings_ = model; }

    // The view shown; nullptr shows an empty page.
    void SetView(TEditView* view);
    TEditView* View() const;
    // Scrolls to the view's top row and repaints: after the buffer or the view changed.
    void Refresh();

    // Geometry, for the edit window and tests.
    int LineHeight() const { return lineHeight_; }
    int CharWidth() const { return charWidth_; }
    int GutterWidth() const;
    int VisibleRows() const;
    // The buffer position under a point of the viewport (past the line end where it stands).
    TTextPos PosAt(QPoint point) const;
    // The viewport point of a buffer position's top left corner.
    QPoint PointOf(TTextPos pos) const;

    // The colour of a token kind and whether it is bold or italic.
    static QColor TokenColor(TTokenKind kind);

signals:
    // The cursor, the block or the read-only state changed: the status line follows.
    void StateChanged();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool focusNextPrevChild(bool next) override;
    void inputMethodEvent(QInputMethodEvent* event) override;

private:
    TSourceEditor* Buffer() const;
    // Moves the cursor; with extend the block runs from its anchor to the new place, in the
    // given style; otherwise the block is unmarked.
    void MoveTo(TTextPos pos, bool extend, TOTABlockType style);
    void TypeText(const std::string& text);
    void EnsureCursorVisible();
    void UpdateScrollBars();
    bool IsSelected(int row, int col, TTextPos s, TTextPos e, TOTABlockType style) const;
    void CopyBlock();
    void Paste();
    void SelectAll();
    void SelectWord(TTextPos pos);

    // The shortcut of a key event, 0 for a key that has none.
    static TShortCut ShortCutOf(const QKeyEvent* event);

    TIDEModel* keyBindings_ = nullptr;
    DelphiInterface<TEditView> view_;
    TSourceLanguage language_ = TSourceLanguage::Plain;
    int lineHeight_ = 16;
    int charWidth_ = 8;
    int ascent_ = 12;
    bool dragging_ = false;
    bool columnDrag_ = false;
    bool syncing_ = false;
};

} // namespace workbench
