// The widgets of the base control kinds, the input filter of the numeric edits, and the setting
// of a control's property by the name a control parameter gives it.
#include "editor/SpcControls.h"

#include "foundation/AppUtils.h"
#include "persistence/DataHndl.h"
#include "rtl/Graphics.h"
#include "rtl/SysUtils.h"
#include "toolsapi/QtBridge.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMetaProperty>
#include <QValidator>

#include <algorithm>

namespace zelvane {

using namespace rtl;

const char* const ControlKindNames[9] = {"",     "Integer", "Char", "Float",    "String",
                                         "Enum", "Boolean", "Set",  "Component"};

TControlKind ControlKindOf(PPropInfo propInfo, bool holderIsComponent) {
    PTypeInfo type = propInfo ? propInfo->PropType.get() : nullptr;
    if (!type) return ckNone;
    switch (type->Kind) {
    case tkInteger:
        return ckInteger;
    case tkChar:
        return ckChar;
    case tkFloat:
        return ckFloat;
    case tkString:
    case tkLString:
    case tkWString:
        return ckString;
    case tkEnumeration:
        return type == TypeInfo<bool>() ? ckBoolean : ckEnum;
    case tkSet:
        return ckSet;
    case tkClass:
        return holderIsComponent ? ckComponent : ckNone;
    default:
        return ckNone;
    }
}

// ---------------------------------------------------------------------------------------------
// The list of rows

void TControlList::Sort() {
    std::stable_sort(items_.begin(), items_.end(), [](const auto& a, const auto& b) {
        return std::less<const QObject*>()(a->ModifyObject, b->ModifyObject);
    });
}

bool TControlList::FindByControl(const QObject* control, int& index) const {
    for (size_t i = 0; i < items_.size(); ++i)
        if (items_[i]->Control == control) {
            index = static_cast<int>(i);
            return true;
        }
    return false;
}

bool TControlList::FindByModifyObject(const QObject* modifyObject, int& index) const {
    auto it = std::lower_bound(items_.begin(), items_.end(), modifyObject,
                               [](const auto& info, const QObject* key) {
                                   return std::less<const QObject*>()(info->ModifyObject, key);
                               });
    if (it == items_.end() || (*it)->ModifyObject != modifyObject) return false;
    index = static_cast<int>(it - items_.begin());
    return true;
}

// ---------------------------------------------------------------------------------------------
// Widgets

namespace {

// Takes a text only if every character of it belongs to the set: so a key or a paste with a
// foreign character is refused as a whole, and the edit beeps.
class TCharSetValidator : public QValidator {
public:
    TCharSetValidator(QString chars, QObject* parent) : QValidator(parent), chars_(chars) {}
    State validate(QString& input, int&) const override {
        for (QChar c : input)
            if (!chars_.contains(c)) return Invalid;
        return Acceptable;
    }

private:
    QString chars_;
};

QString FilterChars(TPropFlag flag) {
    QString chars = QStringLiteral("-0123456789");
    if (flag == pfFloat) {
        chars += QStringLiteral("Ee");
        chars += QChar::fromLatin1(DecimalSeparator);
        chars += QChar::fromLatin1(ThousandSeparator);
    }
    return chars;
}

} // namespace

QWidget* MakeEditControl(QWidget* parent, const TChangeAction& onChange) {
    auto* edit = new QLineEdit(parent);
    QObject::connect(edit, &QLineEdit::textChanged, edit, [edit, onChange] { onChange(edit); });
    return edit;
}

void SetInputFilter(QWidget* edit, TPropFlag flag) {
    auto* line = static_cast<QLineEdit*>(edit);
    line->setValidator(new TCharSetValidator(FilterChars(flag), line));
    QObject::connect(line, &QLineEdit::inputRejected, line, [] { Beep(); });
}

void SetMaxLength(QWidget* edit, int length) {
    static_cast<QLineEdit*>(edit)->setMaxLength(length);
}

QWidget* MakeComboControl(QWidget* parent, const QStringList& items,
                          const TChangeAction& onChange) {
    auto* combo = new QComboBox(parent);
    combo->addItems(items);
    QObject::connect(combo, &QComboBox::currentIndexChanged, combo,
                     [combo, onChange] { onChange(combo); });
    return combo;
}

QWidget* MakeCheckControl(QWidget* parent, const TChangeAction& onChange) {
    auto* check = new QCheckBox(parent);
    QObject::connect(check, &QCheckBox::toggled, check, [check, onChange] { onChange(check); });
    return check;
}

QWidget* MakeCheckListControl(QWidget* parent, const QStringList& items,
                              const TChangeAction& onChange) {
    auto* list = new QListWidget(parent);
    for (const QString& text : items) {
        auto* item = new QListWidgetItem(text, list);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Unchecked);
    }
    list->resize(list->width(), 90);
    QObject::connect(list, &QListWidget::itemChanged, list, [list, onChange] { onChange(list); });
    return list;
}

QStringList ToQStrings(const TStrings& list) {
    QStringList result;
    for (int i = 0; i < list.Count(); ++i) result << ToolsAPI::FromBytes(list.Strings(i));
    return result;
}

std::string EditText(const QWidget* edit) {
    return ToolsAPI::ToBytes(static_cast<const QLineEdit*>(edit)->text());
}

void SetEditText(QWidget* edit, const std::string& text) {
    static_cast<QLineEdit*>(edit)->setText(ToolsAPI::FromBytes(text));
}

int ComboIndex(const QWidget* combo) {
    return static_cast<const QComboBox*>(combo)->currentIndex();
}

void SetComboIndex(QWidget* combo, int index) {
    static_cast<QComboBox*>(combo)->setCurrentIndex(index);
}

bool Checked(const QWidget* check) {
    return static_cast<const QCheckBox*>(check)->isChecked();
}

void SetChecked(QWidget* check, bool value) {
    static_cast<QCheckBox*>(check)->setChecked(value);
}

uint32_t CheckedBits(const QWidget* widget) {
    auto* list = static_cast<const QListWidget*>(widget);
    uint32_t bits = 0;
    for (int i = 0; i < std::min(list->count(), 32); ++i)
        if (list->item(i)->checkState() == Qt::Checked) bits |= 1u << i;
    return bits;
}

void SetCheckedBits(QWidget* widget, uint32_t bits) {
    auto* list = static_cast<QListWidget*>(widget);
    for (int i = 0; i < list->count(); ++i)
        list->item(i)->setCheckState(i < 32 && (bits >> i) & 1u ? Qt::Checked : Qt::Unchecked);
}

// ---------------------------------------------------------------------------------------------
// Control parameters

namespace {

bool ToBool(const std::string& value) {
    return SameText(value, "True");
}

void SetBackground(QWidget* control, const std::string& value) {
    QPalette palette = control->palette();
    palette.setColor(QPalette::Base, ToolsAPI::ToQColor(StringToColor(value)));
    palette.setColor(QPalette::Window, ToolsAPI::ToQColor(StringToColor(value)));
    control->setPalette(palette);
    control->setAutoFillBackground(true);
}

// A Qt property whose name equals the given one ignoring case.
int FindQtProperty(const QObject* control, const std::string& name) {
    const QMetaObject* meta = control->metaObject();
    for (int i = 0; i < meta->propertyCount(); ++i)
        if (SameText(meta->property(i).name(), name)) return i;
    return -1;
}

} // namespace

void SetControlProperty(QWidget* control, const std::string& name, const std::string& value) {
    if (SameText(name, "Height")) {
        control->resize(control->width(), StrToInt(value));
    } else if (SameText(name, "Hint")) {
        control->setToolTip(ToolsAPI::FromBytes(value));
    } else if (SameText(name, "Color")) {
        SetBackground(control, value);
    } else if (SameText(name, "Enabled")) {
        control->setEnabled(ToBool(value));
    } else if (SameText(name, "Visible")) {
        control->setVisible(ToBool(value));
    } else if (SameText(name, "TabStop")) {
        control->setFocusPolicy(ToBool(value) ? Qt::StrongFocus : Qt::NoFocus);
    } else if (SameText(name, "Font.Name")) {
        QFont font = control->font();
        font.setFamily(ToolsAPI::FromBytes(value));
        control->setFont(font);
    } else if (SameText(name, "Font.Size")) {
        QFont font = control->font();
        font.setPointSize(StrToInt(value));
        control->setFont(font);
    } else if (SameText(name, "Font.Color")) {
        QPalette palette = control->palette();
        palette.setColor(QPalette::Text, ToolsAPI::ToQColor(StringToColor(value)));
        palette.setColor(QPalette::WindowText, ToolsAPI::ToQColor(StringToColor(value)));
        control->setPalette(palette);
    } else if (int index = FindQtProperty(control, name); index >= 0) {
        QMetaProperty prop = control->metaObject()->property(index);
        QVariant v = ToolsAPI::FromBytes(value);
        if (!v.convert(prop.metaType()) || !prop.write(control, v))
            throw EConvertError(Format("'%s' is not a valid value of %s", {value, name}));
    } else {
        CreateException<EDataHandlingError>(SPropNotExists, {name});
    }
}

} // namespace zelvane
