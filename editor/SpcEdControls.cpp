#include "editor/SpcEdControls.h"

#include "foundation/AppUtils.h"
#include "rtl/Streams.h"
#include "rtl/SysUtils.h"
#include "toolsapi/QtBridge.h"

#include <QApplication>
#include <QBuffer>
#include <QColorDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFileDialog>
#include <QFontDatabase>
#include <QFontDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>
#include <utility>

namespace zelvane {

using namespace rtl;

namespace {

constexpr std::array<std::pair<const char*, uint32_t>, 45> kColors{{
    {"Black", 0x000000},       {"Maroon", 0x000080},      {"Green", 0x008000},
    {"Olive", 0x008080},       {"Navy", 0x800000},        {"Purple", 0x800080},
    {"Teal", 0x808000},        {"Gray", 0x808080},        {"Silver", 0xC0C0C0},
    {"Red", 0x0000FF},         {"Lime", 0x00FF00},        {"Yellow", 0x00FFFF},
    {"Blue", 0xFF0000},        {"Fuchsia", 0xFF00FF},     {"Aqua", 0xFFFF00},
    {"White", 0xFFFFFF},       {"ScrollBar", 0x80000000}, {"Background", 0x80000001},
    {"ActiveCaption", 0x80000002}, {"InactiveCaption", 0x80000003}, {"Menu", 0x80000004},
    {"Window", 0x80000005},    {"WindowFrame", 0x80000006}, {"MenuText", 0x80000007},
    {"WindowText", 0x80000008}, {"CaptionText", 0x80000009}, {"ActiveBorder", 0x8000000A},
    {"InactiveBorder", 0x8000000B}, {"AppWorkSpace", 0x8000000C}, {"Highlight", 0x8000000D},
    {"HighlightText", 0x8000000E}, {"BtnFace", 0x8000000F}, {"BtnShadow", 0x80000010},
    {"GrayText", 0x80000011},  {"BtnText", 0x80000012},   {"InactiveCaptionText", 0x80000013},
    {"BtnHighlight", 0x80000014}, {"3DDkShadow", 0x80000015}, {"3DLight", 0x80000016},
    {"InfoText", 0x80000017},  {"InfoBk", 0x80000018},    {"None", 0x1FFFFFFF},
    {"Cream", 0xA6CAF0},       {"MoneyGreen", 0xC0DCC0},  {"SkyBlue", 0xFFFBF0},
}};

QIcon Swatch(TColor color) {
    QPixmap pixmap(22, 14);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(Qt::black);
    painter.setBrush(uint32_t(color) == 0x1FFFFFFF ? QColor(Qt::white) : ToolsAPI::ToQColor(color));
    painter.drawRect(1, 1, 19, 11);
    return QIcon(pixmap);
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Combo edits with a dialog

TOwnerComboEdit::TOwnerComboEdit(QWidget* parent) : QComboBox(parent) {
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    lineEdit()->installEventFilter(this);
    installEventFilter(this);
}

bool TOwnerComboEdit::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonDblClick) {
        CustomQuery();
        return true;
    }
    return QComboBox::eventFilter(watched, event);
}

// ---------------------------------------------------------------------------------------------
// Colours

TColorEdit::TColorEdit(QWidget* parent) : TOwnerComboEdit(parent) {
    for (const auto& [name, color] : kColors)
        addItem(Swatch(TColor(color)), name, QVariant::fromValue(color));
    connect(this, &QComboBox::activated, this, [this](int index) {
        SetColorValue(TColor(itemData(index).toUInt()));
    });
    connect(lineEdit(), &QLineEdit::editingFinished, this, &TColorEdit::TextEdited);
    setCurrentIndex(0);
}

std::string TColorEdit::ColorToString(TColor color) const {
    for (const auto& [name, c] : kColors)
        if (c == uint32_t(color)) return name;
    return Format("$%.8x", {int32_t(color)});
}

TColor TColorEdit::StringToColor(const std::string& text, TColor def) const {
    for (const auto& [name, c] : kColors)
        if (SameText(name, text)) return TColor(c);
    int32_t value;
    return TryStrToInt(text, value) ? TColor(value) : def;
}

void TColorEdit::SetColorValue(TColor value) {
    if (currentIndex() >= 0 && value == value_ && !setting_) return;
    value_ = value;
    setting_ = true;
    int index = findData(QVariant::fromValue(uint32_t(value)));
    setCurrentIndex(index);
    if (index < 0) setEditText(ToolsAPI::FromBytes(ColorToString(value)));
    setting_ = false;
    emit Changed();
}

void TColorEdit::TextEdited() {
    TColor value = StringToColor(ToolsAPI::ToBytes(currentText()), value_);
    if (value != value_) SetColorValue(value);
    else if (currentIndex() < 0) setEditText(ToolsAPI::FromBytes(ColorToString(value_)));
}

void TColorEdit::CustomQuery() {
    QColor chosen = QColorDialog::getColor(ToolsAPI::ToQColor(value_), this);
    if (!chosen.isValid()) return;
    SetColorValue(TColor(chosen.red() | chosen.green() << 8 | chosen.blue() << 16));
}

// ---------------------------------------------------------------------------------------------
// Fonts

TFontEdit::TFontEdit(QWidget* parent) : TOwnerComboEdit(parent) {
    QStringList families = QFontDatabase::families();
    families.sort(Qt::CaseInsensitive);
    addItems(families);
    connect(this, &QComboBox::currentTextChanged, this, [this](const QString& name) {
        if (setting_ || name.isEmpty()) return;
        selFont_.Name = ToolsAPI::ToBytes(name);
        emit Changed();
    });
    UpdateCombo();
}

void TFontEdit::SetSelFont(const TFont& font) {
    selFont_.Assign(const_cast<TFont*>(&font));
    UpdateCombo();
}

void TFontEdit::UpdateCombo() {
    setting_ = true;
    QString name = ToolsAPI::FromBytes(selFont_.Name);
    int index = findText(name, Qt::MatchFixedString);
    setCurrentIndex(index);
    if (index < 0) setEditText(name);
    setting_ = false;
}

void TFontEdit::CustomQuery() {
    bool ok = false;
    QFont chosen = QFontDialog::getFont(&ok, ToolsAPI::ToQFont(selFont_), this);
    if (!ok) return;
    selFont_.Name = ToolsAPI::ToBytes(chosen.family());
    selFont_.SetSize(chosen.pointSize());
    TFontStyles style;
    if (chosen.bold()) style.Include(fsBold);
    if (chosen.italic()) style.Include(fsItalic);
    if (chosen.underline()) style.Include(fsUnderline);
    if (chosen.strikeOut()) style.Include(fsStrikeOut);
    selFont_.Style = style;
    UpdateCombo();
    emit Changed();
}


// ---------------------------------------------------------------------------------------------
// Pictures

TSpcImage::TSpcImage(QWidget* parent)
    : QLabel(parent), picture_(std::make_unique<TPicture>()) {
    setScaledContents(true);
}

TSpcImage::~TSpcImage() = default;

bool TSpcImage::HasGraphic() const {
    return picture_->Graphic() && !picture_->Graphic()->Empty();
}

void TSpcImage::PictureChanged() {
    QPixmap pixmap;
    if (HasGraphic()) {
        const std::string& bytes = picture_->Graphic()->Bytes();
        pixmap.loadFromData(reinterpret_cast<const uchar*>(bytes.data()), uint(bytes.size()));
    }
    setPixmap(pixmap);
    update();
    emit Changed();
}

void TSpcImage::LoadPic() {
    QString file = QFileDialog::getOpenFileName(this, {}, {},
                                                "Images (*.bmp *.jpg *.jpeg *.ico *.wmf *.emf)");
    if (file.isEmpty()) return;
    picture_->LoadFromFile(ToolsAPI::ToBytes(file));
    PictureChanged();
}

void TSpcImage::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    if (HasGraphic()) return;
    QPainter painter(this);
    painter.setPen(QPen(palette().color(QPalette::WindowText), 1, Qt::DotLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void TSpcImage::mouseDoubleClickEvent(QMouseEvent*) {
    LoadPic();
}

// ---------------------------------------------------------------------------------------------
// Hot keys

THotKeyEx::THotKeyEx(QWidget* parent) : QKeySequenceEdit(parent) {
    connect(this, &QKeySequenceEdit::keySequenceChanged, this, [this](const QKeySequence& keys) {
        // One key with its modifiers: a second chord replaces the first.
        if (keys.count() > 1) {
            setKeySequence(QKeySequence(keys[keys.count() - 1]));
            return;
        }
        emit Changed();
    });
}

TShortCut THotKeyEx::HotKey() const {
    return ToolsAPI::KeySequenceToShortCut(keySequence());
}

void THotKeyEx::SetHotKey(TShortCut shortCut) {
    setKeySequence(ToolsAPI::ShortCutToKeySequence(shortCut));
}

// ---------------------------------------------------------------------------------------------
// The line editor

TStrEditDlg::TStrEditDlg(QWidget* parent) : QDialog(parent) {
    setObjectName("StrEditDlg");
    setWindowTitle("Line editor");
    setMinimumSize(180, 150);
    resize(420, 300);
    auto* layout = new QVBoxLayout(this);
    lineCount_ = new QLabel(this);
    lineCount_->setObjectName("LineCount");
    memo_ = new QPlainTextEdit(this);
    memo_->setObjectName("Memo");
    memo_->setLineWrapMode(QPlainTextEdit::NoWrap);
    memo_->setFont(QFont("Courier New"));
    connect(memo_, &QPlainTextEdit::textChanged, this, &TStrEditDlg::UpdateCount);
    auto* buttons = new QDialogButtonBox(this);
    QPushButton* font = buttons->addButton("Font...", QDialogButtonBox::ActionRole);
    QPushButton* load = buttons->addButton("Load from ...", QDialogButtonBox::ActionRole);
    QPushButton* save = buttons->addButton("Save to ...", QDialogButtonBox::ActionRole);
    QPushButton* ok = buttons->addButton("Save", QDialogButtonBox::AcceptRole);
    ok->setObjectName("OKButton");
    buttons->addButton("Cancel", QDialogButtonBox::RejectRole)->setObjectName("CancelButton");
    const QString filter = "Text files (*.TXT);;Config files (*.SYS *.INI);;Batch files (*.BAT);;"
                           "All files (*.*)";
    connect(font, &QPushButton::clicked, this, [this] {
        bool chosen = false;
        QFont f = QFontDialog::getFont(&chosen, memo_->font(), this);
        if (chosen) memo_->setFont(f);
    });
    connect(load, &QPushButton::clicked, this, [this, filter] {
        QString file = QFileDialog::getOpenFileName(this, {}, lastFile_, filter);
        if (file.isEmpty()) return;
        lastFile_ = file;
        std::string text;
        ReadFileEx(ToolsAPI::ToBytes(file), text);
        memo_->setPlainText(ToolsAPI::FromBytes(text));
    });
    connect(save, &QPushButton::clicked, this, [this, filter] {
        QString file = QFileDialog::getSaveFileName(this, {}, lastFile_, filter);
        if (!file.isEmpty())
            WriteFileEx(ToolsAPI::ToBytes(memo_->toPlainText()), ToolsAPI::ToBytes(file));
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(lineCount_);
    layout->addWidget(memo_, 1);
    layout->addWidget(buttons);
    UpdateCount();
}

void TStrEditDlg::UpdateCount() {
    int count = memo_->toPlainText().isEmpty() ? 0 : memo_->blockCount();
    lineCount_->setText(QString("Lines count: %1").arg(count));
}

// ---------------------------------------------------------------------------------------------
// Input queries

namespace {

bool InputQuery(const std::string& caption, const std::string& prompt, std::string& value,
                bool single) {
    QDialog dialog(QApplication::activeWindow());
    dialog.setObjectName("InputQuery");
    dialog.setWindowTitle(ToolsAPI::FromBytes(caption));
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLabel(ToolsAPI::FromBytes(prompt), &dialog));
    QLineEdit* line = nullptr;
    QPlainTextEdit* memo = nullptr;
    if (single) {
        line = new QLineEdit(ToolsAPI::FromBytes(value), &dialog);
        line->setMaxLength(255);
        line->selectAll();
        layout->addWidget(line);
    } else {
        memo = new QPlainTextEdit(ToolsAPI::FromBytes(value), &dialog);
        memo->setLineWrapMode(QPlainTextEdit::NoWrap);
        layout->addWidget(memo);
    }
    auto* buttons = new QDialogButtonBox(&dialog);
    buttons->addButton("OK", QDialogButtonBox::AcceptRole);
    buttons->addButton("Отменить", QDialogButtonBox::RejectRole);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted) return false;
    value = ToolsAPI::ToBytes(single ? line->text() : memo->toPlainText());
    return true;
}

} // namespace

bool InputSingleStrQuery(const std::string& caption, const std::string& prompt,
                         std::string& value) {
    return InputQuery(caption, prompt, value, true);
}

bool InputMultiStrQuery(const std::string& caption, const std::string& prompt,
                        std::string& value) {
    return InputQuery(caption, prompt, value, false);
}

} // namespace zelvane
