// The extended editor's rows: which properties it claims, their widgets, the way of their values,
// and the pop-up menus of string lists and pictures.
#include "editor/SpcEdPro.h"

#include "editor/SpcEdControls.h"
#include "editor/SpcForm.h"
#include "foundation/Dialogs.h"
#include "persistence/PropTypes.h"
#include "rtl/Menus.h"
#include "toolsapi/QtBridge.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QEvent>
#include <QFileDialog>
#include <QImage>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QSpinBox>

#include <climits>

namespace zelvane {

using namespace rtl;

RTL_IMPLEMENT_CLASS(TSpcEditorPro)

namespace {

// The parameters of the extended kinds, appended after the base ones.
constexpr const char* ProControlParams =
    "%1:s-- SpcEditorPro --%1:s%1:s"
    "[SpinInt%0:s]%1:sWidth=65%%%1:s%1:s"
    "[Date%0:s]%1:sWidth=80%%%1:s%1:s"
    "[Time%0:s]%1:sWidth=80%%%1:s%1:s"
    "[Color%0:s]%1:sWidth=100%%%1:s%1:s"
    "[Font%0:s]%1:sWidth=100%%%1:s%1:s"
    "[Picture%0:s]%1:sWidth=32%1:sCentredLabel=False%1:s%1:s"
    "[CheckStrings%0:s]%1:sWidth=100%%%1:sCentredLabel=False%1:s%1:s"
    "[SelectStrings%0:s]%1:sWidth=100%%%1:s%1:s"
    "[Strings%0:s]%1:sWidth=100%%%1:sCentredLabel=False%1:s%1:s"
    "[ShortCut%0:s]%1:sWidth=50%%%1:s%1:s"
    "[ShortCutString%0:s]%1:sWidth=50%%%1:s";

const char* const ProKindNames[13] = {"",         "SpinInt", "CheckStrings", "SelectStrings",
                                      "Color",    "Date",    "Time",         "Font",
                                      "Picture",  "Picture", "Strings",      "ShortCut",
                                      "ShortCutString"};

constexpr const char* TextFilter = "Text files (*.txt);;All files(*.*)";

// TDateTime counts days from 1899-12-30, the fraction being the time of day.
QDateTime ToQDateTime(double value) {
    static const QDateTime base(QDate(1899, 12, 30), QTime(0, 0));
    return base.addMSecs(static_cast<qint64>(value * 86400000.0 + (value < 0 ? -0.5 : 0.5)));
}

double FromQDateTime(const QDateTime& value) {
    static const QDateTime base(QDate(1899, 12, 30), QTime(0, 0));
    return static_cast<double>(base.msecsTo(value)) / 86400000.0;
}

QString ToMemoText(const std::string& text) {
    QString s = ToolsAPI::FromBytes(text);
    s.replace("\r\n", "\n");
    if (s.endsWith('\n')) s.chop(1);
    return s;
}

TObject* ObjectOf(const TSpcObjectOps& ops, TControlInfo* info) {
    void* value = nullptr;
    ops.GetPropAsPtr(info->Instance, info->PropInfo, value);
    return static_cast<TObject*>(value);
}

void SetLines(TStrings* strings, const QStringList& lines) {
    strings->BeginUpdate();
    strings->Clear();
    for (const QString& line : lines) strings->Add(ToolsAPI::ToBytes(line));
    strings->EndUpdate();
}

QStringList ItemsOf(QWidget* control) {
    QStringList items;
    if (auto* list = qobject_cast<QListWidget*>(control))
        for (int i = 0; i < list->count(); ++i) items << list->item(i)->text();
    else if (auto* combo = qobject_cast<QComboBox*>(control))
        for (int i = 0; i < combo->count(); ++i) items << combo->itemText(i);
    return items;
}

// Replaces the items, keeping the checks (by line number) or the chosen line.
void SetItems(QWidget* control, const QStringList& items) {
    if (auto* list = qobject_cast<QListWidget*>(control)) {
        std::vector<bool> checks;
        for (int i = 0; i < list->count(); ++i)
            checks.push_back(list->item(i)->checkState() == Qt::Checked);
        list->clear();
        for (int i = 0; i < items.size(); ++i) {
            auto* item = new QListWidgetItem(items[i], list);
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            item->setCheckState(size_t(i) < checks.size() && checks[size_t(i)] ? Qt::Checked
                                                                               : Qt::Unchecked);
        }
    } else if (auto* combo = qobject_cast<QComboBox*>(control)) {
        int index = combo->currentIndex();
        combo->clear();
        combo->addItems(items);
        combo->setCurrentIndex(index < combo->count() ? index : -1);
    }
}

int CurrentIndex(QWidget* control) {
    if (auto* list = qobject_cast<QListWidget*>(control)) return list->currentRow();
    if (auto* combo = qobject_cast<QComboBox*>(control)) return combo->currentIndex();
    return -1;
}

} // namespace

TSpcEditorPro::TSpcEditorPro(TComponent* owner)
    : TSpcEditor(owner), descendantID_(NextDescendantID()) {
    UpdateControlParams(ProControlParams);
    stringsMenu_ = CreateStringsEditorMenu();
    picMenu_ = CreatePicEditorMenu();
}

TSpcEditorPro::~TSpcEditorPro() = default;

void TSpcEditorPro::Init(TInitData* initData, void* appHandle) {
    TSpcEditor::Init(initData, appHandle);
    userData_ = initData ? GetUserData(*initData, SpcEditorProName) : nullptr;
}

TProControlKind TSpcEditorPro::ProKindOf(PPropInfo propInfo) const {
    PTypeInfo type = propInfo ? propInfo->PropType.get() : nullptr;
    if (!type) return pkNone;
    switch (type->Kind) {
    case tkInteger:
        if (type == TypeInfo<TSpinInt>()) return pkSpinInt;
        if (type == TypeInfo<TColor>()) return pkColor;
        if (type == TypeInfo<TShortCut>()) return pkShortCut;
        return SpinOveruse ? pkSpinInt : pkNone;
    case tkFloat:
        if (type == TypeInfo<TDateTime>() || type == TypeInfo<TDate>()) return pkDate;
        if (type == TypeInfo<TTime>()) return pkTime;
        return pkNone;
    case tkString:
    case tkLString:
    case tkWString:
        return type == TypeInfo<TShortCutString>() ? pkShortCutString : pkNone;
    case tkClass: {
        TClass cls = GetTypeData(type)->ClassType;
        if (!cls) return pkNone;
        if (cls->InheritsFrom(TCheckStrings::StaticClass())) return pkCheckStrings;
        if (cls->InheritsFrom(TSelectStrings::StaticClass())) return pkSelectStrings;
        if (cls->InheritsFrom(TStrings::StaticClass())) return pkStrings;
        if (cls->InheritsFrom(TFont::StaticClass())) return pkFont;
        if (cls->InheritsFrom(TPicture::StaticClass())) return pkPicture;
        if (cls->InheritsFrom(TGraphic::StaticClass())) return pkGraphic;
        return pkNone;
    }
    default:
        return pkNone;
    }
}

bool TSpcEditorPro::CanProcessProperty(TPersistent* instance, PPropInfo propInfo) {
    return ProKindOf(propInfo) != pkNone || TSpcEditor::CanProcessProperty(instance, propInfo);
}

// ---------------------------------------------------------------------------------------------
// Making the rows

// The control's context menu: the popup handler enables its items, then the menu runs for it.
void TSpcEditorPro::AttachMenu(QWidget* control, QMenu* menu, void (TSpcEditorPro::*popup)()) {
    control->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(control, &QWidget::customContextMenuRequested, control,
                     [this, control, menu, popup](QPoint p) {
                         menuControl_ = control;
                         (this->*popup)();
                         menu->exec(control->mapToGlobal(p));
                     });
}

QWidget* TSpcEditorPro::MakeProControl(TProControlKind kind, QWidget* parent) {
    TChangeAction change = ChangeAction();
    auto notify = [change](QObject* sender) { return [change, sender] { change(sender); }; };
    switch (kind) {
    case pkSpinInt: {
        auto* spin = new QSpinBox(parent);
        spin->setRange(INT_MIN, INT_MAX);
        QObject::connect(spin, &QSpinBox::valueChanged, spin, notify(spin));
        return spin;
    }
    case pkCheckStrings: {
        QWidget* list = MakeCheckListControl(parent, {}, change);
        AttachMenu(list, stringsMenu_.get(), &TSpcEditorPro::StringsMenuPopup);
        return list;
    }
    case pkSelectStrings: {
        QWidget* combo = MakeComboControl(parent, {}, change);
        AttachMenu(combo, stringsMenu_.get(), &TSpcEditorPro::StringsMenuPopup);
        return combo;
    }
    case pkColor: {
        auto* edit = new TColorEdit(parent);
        QObject::connect(edit, &TColorEdit::Changed, edit, notify(edit));
        return edit;
    }
    case pkDate:
    case pkTime: {
        auto* picker = new QDateTimeEdit(parent);
        picker->setDisplayFormat(kind == pkDate ? "yyyy-MM-dd" : "HH:mm:ss");
        if (kind == pkDate) picker->setCalendarPopup(true);
        QObject::connect(picker, &QDateTimeEdit::dateTimeChanged, picker, notify(picker));
        return picker;
    }
    case pkFont: {
        auto* edit = new TFontEdit(parent);
        QObject::connect(edit, &TFontEdit::Changed, edit, notify(edit));
        return edit;
    }
    case pkPicture:
    case pkGraphic: {
        auto* image = new TSpcImage(parent);
        QObject::connect(image, &TSpcImage::Changed, image, notify(image));
        AttachMenu(image, picMenu_.get(), &TSpcEditorPro::PicMenuPopup);
        return image;
    }
    case pkStrings: {
        auto* memo = new TSpcMemo(parent);
        QObject::connect(memo, &QPlainTextEdit::textChanged, memo, notify(memo));
        QObject::connect(memo, &TSpcMemo::DoubleClicked, memo, [this, memo] { MemoDblClick(memo); });
        return memo;
    }
    case pkShortCut:
    case pkShortCutString: {
        auto* hotKey = new THotKeyEx(parent);
        QObject::connect(hotKey, &THotKeyEx::Changed, hotKey, notify(hotKey));
        return hotKey;
    }
    default:
        return nullptr;
    }
}

void TSpcEditorPro::DoBeforeCreateControl(TPersistent* instance, PPropInfo propInfo,
                                          QWidget* parent, TNewControlData& data, bool& handled) {
    TProControlKind kind = handled ? pkNone : ProKindOf(propInfo);
    if (kind == pkNone) return TSpcEditor::DoBeforeCreateControl(instance, propInfo, parent, data,
                                                                 handled);
    handled = true;
    data.ControlKind = kind;
    data.ETag = descendantID_;
    data.Control = MakeProControl(kind, parent);
    data.Control->resize(data.Control->width(),
                         std::max(data.Control->height(), data.Control->sizeHint().height()));
    if (kind == pkCheckStrings) data.Control->resize(data.Control->width(), 100);
    if (kind == pkStrings) data.Control->resize(data.Control->width(), 90);
    if (kind == pkPicture || kind == pkGraphic) data.Control->resize(data.Control->width(), 32);
    data.ControlIdent = std::string(ProKindNames[kind]) + ControlIdentPostfix;
}

// ---------------------------------------------------------------------------------------------
// Values

void TSpcEditorPro::SetControlData(TControlInfo* info) {
    if (!info->IsNativeControl(descendantID_)) return TSpcEditor::SetControlData(info);
    QWidget* control = info->Control;
    if (!control) return;
    const TSpcObjectOps& ops = Ops();
    void* slot = nullptr;
    switch (info->ControlKind) {
    case pkSpinInt:
        ops.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        static_cast<QSpinBox*>(control)->setValue(int(reinterpret_cast<intptr_t>(slot)));
        break;
    case pkCheckStrings: {
        auto* strings = static_cast<TCheckStrings*>(ObjectOf(ops, info));
        auto* list = static_cast<QListWidget*>(control);
        list->clear();
        SetItems(list, ToQStrings(*strings));
        for (int index : CheckedIndexes(strings->CheckedInds))
            if (index < list->count()) list->item(index)->setCheckState(Qt::Checked);
        break;
    }
    case pkSelectStrings: {
        auto* strings = static_cast<TSelectStrings*>(ObjectOf(ops, info));
        auto* combo = static_cast<QComboBox*>(control);
        combo->clear();
        combo->addItems(ToQStrings(*strings));
        combo->setCurrentIndex(strings->ItemIndex >= 0 ? strings->ItemIndex : -1);
        break;
    }
    case pkColor:
        ops.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        static_cast<TColorEdit*>(control)->SetColorValue(
            TColor(int32_t(reinterpret_cast<intptr_t>(slot))));
        break;
    case pkDate:
    case pkTime: {
        long double value = 0;
        slot = &value;
        ops.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        static_cast<QDateTimeEdit*>(control)->setDateTime(ToQDateTime(double(value)));
        break;
    }
    case pkFont:
        static_cast<TFontEdit*>(control)->SetSelFont(*static_cast<TFont*>(ObjectOf(ops, info)));
        break;
    case pkPicture:
    case pkGraphic: {
        auto* image = static_cast<TSpcImage*>(control);
        image->Picture().SetGraphic(nullptr);
        TObject* obj = ObjectOf(ops, info);
        if (auto* picture = dynamic_cast<TPicture*>(obj))
            image->Picture().Assign(picture);
        else if (auto* graphic = dynamic_cast<TGraphic*>(obj); graphic && !graphic->Empty())
            image->Picture().SetGraphic(graphic);
        image->PictureChanged();
        break;
    }
    case pkStrings:
        static_cast<QPlainTextEdit*>(control)->setPlainText(
            ToMemoText(static_cast<TStrings*>(ObjectOf(ops, info))->GetText()));
        break;
    case pkShortCut:
        ops.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        static_cast<THotKeyEx*>(control)->SetHotKey(TShortCut(reinterpret_cast<intptr_t>(slot)));
        break;
    case pkShortCutString: {
        std::string text;
        slot = &text;
        ops.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        static_cast<THotKeyEx*>(control)->SetHotKey(TextToShortCut(text));
        break;
    }
    default:
        break;
    }
}

void TSpcEditorPro::GetControlData(TControlInfo* info, bool& aborted) {
    if (aborted || !info->IsNativeControl(descendantID_))
        return TSpcEditor::GetControlData(info, aborted);
    QWidget* control = info->Control;
    if (!control) return;
    const TSpcObjectOps& ops = Ops();
    auto put = [&](intptr_t value) {
        ops.SetPropByPtr(info->Instance, info->PropInfo, reinterpret_cast<void*>(value));
    };
    switch (info->ControlKind) {
    case pkSpinInt:
        put(static_cast<QSpinBox*>(control)->value());
        break;
    case pkCheckStrings: {
        auto* strings = static_cast<TCheckStrings*>(ObjectOf(ops, info));
        auto* list = static_cast<QListWidget*>(control);
        std::vector<int> checked;
        for (int i = 0; i < list->count(); ++i)
            if (list->item(i)->checkState() == Qt::Checked) checked.push_back(i);
        SetLines(strings, ItemsOf(list));
        strings->CheckedInds = MakeCheckedInds(checked);
        break;
    }
    case pkSelectStrings: {
        auto* strings = static_cast<TSelectStrings*>(ObjectOf(ops, info));
        auto* combo = static_cast<QComboBox*>(control);
        SetLines(strings, ItemsOf(combo));
        strings->ItemIndex = combo->currentIndex();
        break;
    }
    case pkColor:
        put(int32_t(static_cast<TColorEdit*>(control)->ColorValue()));
        break;
    case pkDate:
    case pkTime: {
        long double value = FromQDateTime(static_cast<QDateTimeEdit*>(control)->dateTime());
        ops.SetPropByPtr(info->Instance, info->PropInfo, &value);
        break;
    }
    case pkFont:
        static_cast<TFont*>(ObjectOf(ops, info))
            ->Assign(const_cast<TFont*>(&static_cast<TFontEdit*>(control)->SelFont()));
        break;
    case pkPicture:
    case pkGraphic: {
        TPicture& picture = static_cast<TSpcImage*>(control)->Picture();
        TObject* obj = ObjectOf(ops, info);
        if (auto* target = dynamic_cast<TPicture*>(obj))
            target->Assign(&picture);
        else if (auto* graphic = dynamic_cast<TGraphic*>(obj))
            picture.Graphic() ? graphic->Assign(picture.Graphic()) : graphic->SetBytes({});
        break;
    }
    case pkStrings:
        static_cast<TStrings*>(ObjectOf(ops, info))
            ->SetText(ToolsAPI::ToBytes(static_cast<QPlainTextEdit*>(control)->toPlainText()));
        break;
    case pkShortCut:
        put(static_cast<THotKeyEx*>(control)->HotKey());
        break;
    case pkShortCutString: {
        std::string text = ShortCutToText(static_cast<THotKeyEx*>(control)->HotKey());
        ops.SetPropByPtr(info->Instance, info->PropInfo, &text);
        break;
    }
    default:
        break;
    }
}

// ---------------------------------------------------------------------------------------------
// The menus

// A menu of the items by tag; a tag of 0 is a separator.
static std::unique_ptr<QMenu> MakeTagMenu(const char* name,
                                          std::initializer_list<std::pair<int, const char*>> items,
                                          const std::function<void(int)>& click) {
    auto menu = std::make_unique<QMenu>();
    menu->setObjectName(name);
    for (const auto& [tag, caption] : items) {
        if (tag == 0) {
            menu->addSeparator();
            continue;
        }
        QAction* action = menu->addAction(caption);
        action->setData(tag);
        QObject::connect(action, &QAction::triggered, menu.get(), [click, tag = tag] { click(tag); });
    }
    return menu;
}

std::unique_ptr<QMenu> TSpcEditorPro::CreateStringsEditorMenu() {
    return MakeTagMenu("StringsMenu",
                       {{1, "Add line"}, {2, "Insert line"}, {3, "Delete line"}, {0, "-"},
                        {4, "Clear"}, {0, "-"}, {5, "Edit text"}, {0, "-"},
                        {6, "Load from file"}, {7, "Save to file"}},
                       [this](int tag) { StringsMenuItemClick(tag); });
}

std::unique_ptr<QMenu> TSpcEditorPro::CreatePicEditorMenu() {
    return MakeTagMenu("PictureMenu",
                       {{1, "Load from file"}, {2, "Load form clipboard"}, {0, "-"},
                        {3, "Save into file"}, {4, "Save into clipboard"}, {0, "-"},
                        {5, "Clear"}, {6, "Clear clipboard"}},
                       [this](int tag) { PicMenuItemClick(tag); });
}

TControlInfo* TSpcEditorPro::MenuRow(QMenu*) const {
    int index;
    if (!menuControl_ || !Controls().FindByControl(menuControl_, index)) return nullptr;
    TControlInfo* info = Controls().Get(index);
    return info->IsNativeControl(descendantID_) ? info : nullptr;
}

static QAction* MenuAction(QMenu* menu, int tag) {
    for (QAction* action : menu->actions())
        if (action->data().toInt() == tag) return action;
    return nullptr;
}

void TSpcEditorPro::StringsMenuPopup() {
    QWidget* control = menuControl_;
    int count = ItemsOf(control).size();
    MenuAction(stringsMenu_.get(), 3)->setEnabled(count > 0 && CurrentIndex(control) >= 0);
    MenuAction(stringsMenu_.get(), 4)->setEnabled(count > 0);
}

void TSpcEditorPro::StringsMenuItemClick(int tag) {
    TControlInfo* info = MenuRow(stringsMenu_.get());
    if (!info) return;
    QWidget* control = info->Control;
    QStringList items = ItemsOf(control);
    auto* list = qobject_cast<QListWidget*>(control);
    int index = CurrentIndex(control);
    std::string line;
    switch (tag) {
    case 1:
        if (!InputSingleStrQuery("Add line", "Enter new line:", line)) return;
        items << ToolsAPI::FromBytes(line);
        SetItems(control, items);
        if (list) list->setCurrentRow(list->count() - 1);
        break;
    case 2:
        if (!InputSingleStrQuery("Insert line", "Enter new line:", line)) return;
        items.insert(std::max(0, index), ToolsAPI::FromBytes(line));
        SetItems(control, items);
        break;
    case 3:
        if (index < 0 || index >= items.size()) return;
        if (list) {
            delete list->takeItem(index);
            list->setCurrentRow(list->count() > 0 ? 0 : -1);
        } else {
            items.removeAt(index);
            SetItems(control, items);
        }
        break;
    case 4:
        if (!QueryDialog("Delete all lines?")) return;
        SetItems(control, {});
        break;
    case 5: {
        std::string text = ToolsAPI::ToBytes(items.join("\r\n"));
        if (!InputMultiStrQuery("Edit", "Text for editing:", text)) return;
        SetItems(control, ToolsAPI::FromBytes(text).split(QRegularExpression("\r\n|\n")));
        break;
    }
    case 6: {
        QString file = QFileDialog::getOpenFileName(control, {}, {}, TextFilter);
        if (file.isEmpty()) return;
        TStringList lines;
        lines.LoadFromFile(ToolsAPI::ToBytes(file));
        SetItems(control, ToQStrings(lines));
        break;
    }
    case 7: {
        QString file = QFileDialog::getSaveFileName(control, {}, {}, TextFilter);
        if (file.isEmpty()) return;
        TStringList lines;
        SetLines(&lines, items);
        lines.SaveToFile(ToolsAPI::ToBytes(file));
        return; // saving is no change
    }
    default:
        return;
    }
    ControlChange(info->ModifyObject);
    if (tag <= 4) control->setFocus();
}

void TSpcEditorPro::PicMenuPopup() {
    auto* image = qobject_cast<TSpcImage*>(menuControl_.data());
    bool has = image && image->HasGraphic();
    for (int tag : {3, 4, 5}) MenuAction(picMenu_.get(), tag)->setEnabled(has);
    const QMimeData* clip = QApplication::clipboard()->mimeData();
    bool any = clip && !clip->formats().isEmpty();
    MenuAction(picMenu_.get(), 2)->setEnabled(any && clip->hasImage());
    MenuAction(picMenu_.get(), 6)->setEnabled(any);
}

void TSpcEditorPro::PicMenuItemClick(int tag) {
    TControlInfo* info = MenuRow(picMenu_.get());
    auto* image = info ? qobject_cast<TSpcImage*>(info->Control.data()) : nullptr;
    if (!image) return;
    TPicture& picture = image->Picture();
    switch (tag) {
    case 1:
        image->LoadPic();
        break;
    case 2: {
        QImage clip = QApplication::clipboard()->image();
        if (clip.isNull()) return;
        QByteArray bytes;
        QBuffer buffer(&bytes);
        clip.save(&buffer, "BMP");
        TBitmap bitmap;
        bitmap.SetBytes(bytes.toStdString());
        picture.SetGraphic(&bitmap);
        image->PictureChanged();
        break;
    }
    case 3: {
        QString file = QFileDialog::getSaveFileName(image, {}, {});
        if (!file.isEmpty()) picture.SaveToFile(ToolsAPI::ToBytes(file));
        return;
    }
    case 4: {
        QImage shown;
        const std::string& bytes = picture.Graphic()->Bytes();
        shown.loadFromData(reinterpret_cast<const uchar*>(bytes.data()), int(bytes.size()));
        QApplication::clipboard()->setImage(shown);
        return;
    }
    case 5:
        picture.SetGraphic(nullptr);
        image->PictureChanged();
        break;
    case 6:
        QApplication::clipboard()->clear();
        return;
    default:
        return;
    }
}

void TSpcEditorPro::MemoDblClick(QWidget* widget) {
    auto* memo = qobject_cast<QPlainTextEdit*>(widget);
    if (!memo) return;
    TStrEditDlg dialog(Form());
    dialog.Memo()->setFont(memo->font());
    dialog.Memo()->setPlainText(memo->toPlainText());
    if (dialog.exec() == QDialog::Accepted) memo->setPlainText(dialog.Memo()->toPlainText());
}

} // namespace zelvane
