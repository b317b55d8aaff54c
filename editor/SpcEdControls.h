// Unit SpcEdControls: the widgets of the extended editor that Qt lacks as they are needed: a
// colour edit and a font edit (a combo box whose double click asks the platform's dialog), a
// picture box that shows an empty picture as a dotted frame, the hot-key edit, the line editor
// dialog and the two input queries.
#pragma once

#include "rtl/Graphics.h"
#include "rtl/Menus.h"

#include <QComboBox>
#include <QDialog>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QPlainTextEdit>

#include <memory>
#include <string>


namespace zelvane {

// An editable combo box whose double click asks for the value in a dialog of the platform
// (CustomQuery); Changed reports a new value, typed, chosen from the list or from the dialog.
class TOwnerComboEdit : public QComboBox {
    Q_OBJECT
public:
    explicit TOwnerComboEdit(QWidget* parent = nullptr);
    virtual void CustomQuery() {}

signals:
    void Changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    // True while the value is being shown, so that the list's own notices report nothing.
    bool setting_ = false;
};

// A colour chosen from the 45 standard and system colours, typed as a name or number, or
// picked in the colour dialog.
class TColorEdit : public TOwnerComboEdit {
    Q_OBJECT
public:
    explicit TColorEdit(QWidget* parent = nullptr);

    rtl::TColor ColorValue() const { return value_; }
    void SetColorValue(rtl::TColor value);
    // The name of a colour of the list, or the prefixed hexadecimal number.
    std::string ColorToString(rtl::TColor color) const;
    // A name of the list (any case), else a number, else the default.
    rtl::TColor StringToColor(const std::string& text, rtl::TColor def) const;
    // Opens the colour dialog at the value.
    void CustomQuery() override;

private:
    void TextEdited();
    rtl::TColor value_ = rtl::TColor(0);
};

// A font chosen from the installed families by name, or in the font dialog; SelFont holds the
// whole font, of which the list shows the name.
class TFontEdit : public TOwnerComboEdit {
    Q_OBJECT
public:
    explicit TFontEdit(QWidget* parent = nullptr);

    const rtl::TFont& SelFont() const { return selFont_; }
    void SetSelFont(const rtl::TFont& font);
    void CustomQuery() override;

private:
    void UpdateCombo();
    rtl::TFont selFont_;
};

// A picture of its own, shown stretched; an empty one is a dotted frame that can still be seen
// and clicked. A double click loads a file.
class TSpcImage : public QLabel {
    Q_OBJECT
public:
    explicit TSpcImage(QWidget* parent = nullptr);
    ~TSpcImage() override;

    rtl::TPicture& Picture() { return *picture_; }
    // Shows the picture anew and reports the change.
    void PictureChanged();
    bool HasGraphic() const;
    void LoadPic();

signals:
    void Changed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    std::unique_ptr<rtl::TPicture> picture_;
};

// A hot-key edit of one key with its modifiers.
class THotKeyEx : public QKeySequenceEdit {
    Q_OBJECT
public:
    explicit THotKeyEx(QWidget* parent = nullptr);
    rtl::TShortCut HotKey() const;
    void SetHotKey(rtl::TShortCut shortCut);

signals:
    void Changed();
};

// The memo of a string list: no word wrap, a vertical scroll bar, and a double click that asks
// for the line editor.
class TSpcMemo : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit TSpcMemo(QWidget* parent = nullptr) : QPlainTextEdit(parent) {
        setLineWrapMode(QPlainTextEdit::NoWrap);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    }

signals:
    void DoubleClicked();

protected:
    void mouseDoubleClickEvent(QMouseEvent*) override { emit DoubleClicked(); }
};

// The line editor: a memo of the lines, their count, a font button, load and save.
class TStrEditDlg : public QDialog {
    Q_OBJECT
public:
    explicit TStrEditDlg(QWidget* parent = nullptr);
    QPlainTextEdit* Memo() const { return memo_; }

private:
    void UpdateCount();
    QPlainTextEdit* memo_;
    QLabel* lineCount_;
    QString lastFile_;
};

// Asks for one line, or for a text of several; true and the value on OK, false and the value
// untouched on Cancel.
bool InputSingleStrQuery(const std::string& caption, const std::string& prompt, std::string& value);
bool InputMultiStrQuery(const std::string& caption, const std::string& prompt, std::string& value);

} // namespace zelvane
