// Unit SpcControls: the rows of the settings editor. A TControlInfo ties one widget to the
// property it edits; TControlList keeps the rows of the shown node sorted by the object whose
// change notice signals them, so that each keystroke finds its row by a binary search.
//
// The base control kinds, by the property's type information:
//
//   1 Integer, 3 Float: a line edit that takes only the characters of a number;
//   2 Char: a line edit of one character; 4 String: a line edit;
//   5 Enum: a drop-down list of the enumeration's names; 6 Boolean: a check box;
//   7 Set: a check list of the base enumeration's names;
//   8 Component: an object property of a component, which only a hook can give a control.
//
// Kind 0 is no control. The widgets are owned by their panel; DropControl frees them.
#pragma once

#include "editor/SpcShrTypes.h"
#include "rtl/Classes.h"
#include "rtl/Lists.h"
#include "rtl/TypInfo.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>


namespace zelvane {

enum TControlKind : uint8_t {
    ckNone = 0,
    ckInteger = 1,
    ckChar = 2,
    ckFloat = 3,
    ckString = 4,
    ckEnum = 5,
    ckBoolean = 6,
    ckSet = 7,
    ckComponent = 8,
};

// "Integer", "Char", ... by kind; the section of a kind in the control parameters is its name
// and ControlIdentPostfix.
extern const char* const ControlKindNames[9];
inline constexpr const char* ControlIdentPostfix = "Control";

// The kind of control for a property of an object; holderIsComponent tells whether the object
// that holds the property is a component.
TControlKind ControlKindOf(rtl::PPropInfo propInfo, bool holderIsComponent);

class TControlInfo {
public:
    virtual ~TControlInfo() = default;

    uint8_t ControlKind = ckNone;
    // 0 for a row the base editor made; a descendant's own number for its rows; -1 for a row an
    // event handler made, which no level transfers.
    int32_t ETag = 0;
    QPointer<QWidget> Control;
    QObject* ModifyObject = nullptr;
    rtl::TPersistent* Instance = nullptr;
    bool IsPercent = false;
    bool Modified = false;
    // The numeric edits filter their input while the row exists.
    bool Filtered = false;
    rtl::PPropInfo PropInfo = nullptr;
    TPropFlag PropFlag = pfInteger;
    int32_t AreaIndex = 0;
    int32_t Width = 0;

    virtual bool IsNativeControl(int32_t descendantID) const { return ETag == descendantID; }
    virtual QWidget* EControl() const { return Control; }
    virtual rtl::TPersistent* EInstance() const { return Instance; }
    virtual QObject* EModifyObject() const { return ModifyObject; }
    virtual rtl::PPropInfo EPropInfo() const { return PropInfo; }
    virtual int32_t GetETag() const { return ETag; }
    virtual void SetETag(int32_t value) { ETag = value; }
};

// The rows of the shown node; it owns them.
class TControlList {
public:
    int Count() const { return static_cast<int>(items_.size()); }
    TControlInfo* Get(int index) const { return items_.at(static_cast<size_t>(index)).get(); }
    void Add(std::unique_ptr<TControlInfo> info) { items_.push_back(std::move(info)); }
    void Reserve(int count) { items_.reserve(static_cast<size_t>(count)); }
    void Clear() { items_.clear(); }
    // Sorts by ModifyObject, as addresses compare.
    void Sort();
    // Linear search by the control.
    bool FindByControl(const QObject* control, int& index) const;
    // Binary search by ModifyObject; the list must be sorted.
    bool FindByModifyObject(const QObject* modifyObject, int& index) const;

    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    std::vector<std::unique_ptr<TControlInfo>> items_;
};

// What a hook fills in when it makes a row's control itself.
struct TNewControlData {
    // The section of the control parameters applied to the control.
    std::string ControlIdent;
    // The object whose change notice signals the row; the control when empty.
    QObject* ModifyObject = nullptr;
    // The control; empty means no row.
    QWidget* Control = nullptr;
    // The label's text; empty means the standard caption.
    std::string Caption;
    uint8_t ControlKind = ckNone;
    int32_t ETag = -1;
};

// ---------------------------------------------------------------------------------------------
// The widgets of the base kinds. onChange is called with the widget on every change the user
// makes; a change set by code goes through it too, and the editor ignores it while it sets data.

using TChangeAction = std::function<void(QObject* sender)>;

// A line edit; with a filter it takes only the characters of an integer (pfInteger) or a float
// (pfFloat), typed or pasted, and beeps at anything else.
QWidget* MakeEditControl(QWidget* parent, const TChangeAction& onChange);
void SetInputFilter(QWidget* edit, TPropFlag flag);
void SetMaxLength(QWidget* edit, int length);
QWidget* MakeComboControl(QWidget* parent, const QStringList& items, const TChangeAction& onChange);
QWidget* MakeCheckControl(QWidget* parent, const TChangeAction& onChange);
QWidget* MakeCheckListControl(QWidget* parent, const QStringList& items,
                              const TChangeAction& onChange);

// The lines of a string list, as Qt text.
QStringList ToQStrings(const rtl::TStrings& list);

std::string EditText(const QWidget* edit);
void SetEditText(QWidget* edit, const std::string& text);
int ComboIndex(const QWidget* combo);
void SetComboIndex(QWidget* combo, int index);
bool Checked(const QWidget* check);
void SetChecked(QWidget* check, bool value);
// The bits of the checked items, for the first 32 items.
uint32_t CheckedBits(const QWidget* list);
void SetCheckedBits(QWidget* list, uint32_t bits);

// Sets a property of a control by its name as a control parameter names it ("Height", "Hint",
// "Color", "MaxLength", "ReadOnly", "Enabled", "Visible", "TabStop", "Font.Name", "Font.Size",
// "Font.Color"), or a Qt property of that name; an unknown name raises the error of a property
// that does not exist.
void SetControlProperty(QWidget* control, const std::string& name, const std::string& value);

} // namespace zelvane
