// The rows of the shown node: how each property gets its label and control, how the control
// parameters shape them, and the way of a value into the control and back into the object.
#include "editor/SpcEditor.h"

#include "editor/SpcForm.h"
#include "editor/SpcLabel.h"
#include "persistence/DataHndl.h"
#include "specification/SpcConst.h"
#include "toolsapi/QtBridge.h"

#include <QApplication>
#include <QHeaderView>
#include <QScrollArea>
#include <QScrollBar>
#include <QTreeWidget>

namespace zelvane {

using namespace rtl;

namespace {

// The hourglass for the making of many rows.
class TWaitCursor {
public:
    explicit TWaitCursor(bool on) : on_(on) {
        if (on_) QApplication::setOverrideCursor(Qt::WaitCursor);
    }
    ~TWaitCursor() {
        if (on_) QApplication::restoreOverrideCursor();
    }

private:
    bool on_;
};

// Each "##" becomes a line break, scanning on behind it.
std::string ExpandPseudoNewLines(std::string text) {
    for (size_t pos = text.find(PseudoNewLine); pos != std::string::npos;
         pos = text.find(PseudoNewLine, pos + 2))
        text.replace(pos, 2, "\r\n");
    return text;
}

// A control without a name of its own is named after its property, so that it can be found as
// the IDE's components are.
void NameControl(QWidget* control, PPropInfo propInfo) {
    if (control->objectName().isEmpty()) control->setObjectName(QString::fromStdString(propInfo->Name));
}

} // namespace

TChangeAction TSpcEditor::ChangeAction() {
    return [this](QObject* sender) { ControlChange(sender); };
}

QWidget* TSpcEditor::ControlPanel(int areaIndex) const {
    return frames_.at(static_cast<size_t>(areaIndex)).ControlPanel;
}

// ---------------------------------------------------------------------------------------------
// Making the rows

void TSpcEditor::CreateNodeControls(TInstDscr* dscr) {
    if (!form_) return;
    BeginUpdate(akAll, -1);
    if (!dscr) {
        ClearPaintAreas();
        form_->ResetScroll();
        HideAreas();
        lastClass_ = nullptr;
        EndUpdate(akAll, -1);
        return;
    }
    TClass cls = ops_.ClassType(dscr->Instance);
    sameClass_ = cls == lastClass_;
    lastClass_ = cls;
    if (sameClass_ && !ops_.IsWrapperItem(dscr->Instance)) {
        // The same controls show the new object.
        state_.Include(esDataSetting);
        SetControlsData(dscr, true);
        state_.Exclude(esDataSetting);
        EndUpdate(akAll, -1);
        return;
    }
    ClearPaintAreas();
    form_->ResetScroll();
    instanceIdent_ = GetInstanceID(dscr->Instance);
    if (dscr->Props.empty() || instanceIdent_ == ciCollection) {
        HideAreas();
        EndUpdate(akAll, -1);
        return;
    }
    areasVisible_ = true;
    int count = static_cast<int>(dscr->Props.size());
    TWaitCursor wait(count > 10);
    int top = 0, labelWidth = 0, totalHeight = 0;
    int headerWidth = SectionTextWidth(frames_[0].LabelSection) + 12;
    int maxLabel = headerWidth;
    int column = 0, row = 1, left = count, columns = colCount_;
    int perColumn = (left + columns - 1) / columns;
    controlList_.Reserve(count);
    for (const TPropPair& pair : dscr->Props) {
        CreatePropControl(pair.Instance, pair.PropInfo, column, top, labelWidth);
        --left;
        if (left > 0 && row < perColumn) {
            ++row;
            continue;
        }
        totalHeight = std::max(totalHeight, top);
        maxLabel = std::max(maxLabel, labelWidth);
        if (labelAreaInfo_.AutoWidth) {
            const TAreaFrame& frame = frames_[static_cast<size_t>(column)];
            int width = std::max(maxLabel + labelAreaInfo_.LeftMargin +
                                     labelAreaInfo_.RightMargin + 2 * AreaInset,
                                 SectionTextWidth(frame.LabelSection) + 12);
            form_->HeaderControl()->resizeSection(frame.LabelSection, width);
        }
        top = 0, labelWidth = 0, maxLabel = headerWidth, row = 1;
        ++column;
        if (--columns > 0) perColumn = (left + columns - 1) / columns;
    }
    controlList_.Sort();
    if (!SimpleMode) CheckDisabledState();
    state_.Include(esDataSetting);
    SetControlsData(dscr, false);
    state_.Exclude(esDataSetting);
    areaHeight_ = totalHeight + 5;
    for (TAreaFrame& frame : frames_) frame.EdgeX = -1;
    UpdatePaintAreas(akAll, -1);
    EndUpdate(akAll, -1);
}

void TSpcEditor::CreatePropControl(TPersistent* instance, PPropInfo propInfo, int areaIndex,
                                   int& top, int& labelWidth) {
    if (!propInfo) return;
    bool centredLabel = true;
    top += TopInc;
    auto info = std::make_unique<TControlInfo>();
    info->Instance = instance;
    info->PropInfo = propInfo;
    info->AreaIndex = areaIndex;
    TNewControlData data;
    bool handled = false;
    QWidget* parent = ControlPanel(areaIndex);
    if (BeforeCreateControl)
        BeforeCreateControl(instance, propInfo, parent, ChangeAction(), data, handled);
    if (!handled) DoBeforeCreateControl(instance, propInfo, parent, data, handled);
    if (handled) {
        if (!data.Control) return;
        info->ControlKind = data.ControlKind;
        info->ETag = data.ETag;
        info->Control = data.Control;
        NameControl(data.Control, propInfo);
        info->ModifyObject = data.ModifyObject ? data.ModifyObject : data.Control;
        SetControlParams(data.ControlIdent, info.get(), centredLabel);
        TControlInfo* row = info.get();
        controlList_.Add(std::move(info));
        DoAfterCreateControl(row);
        MakeLabel(row, data.Caption, top, labelWidth, centredLabel);
        return;
    }
    TControlKind kind = ControlKindOf(propInfo, GetInstanceID(instance) == ciComponent);
    if (kind == ckNone || kind == ckComponent) return;

    QStringList items;
    if (kind == ckEnum || kind == ckSet) {
        PTypeInfo type = propInfo->PropType;
        PTypeInfo names = kind == ckSet ? GetTypeData(type)->CompType : type;
        std::string section = type->Name;
        if (kind == ckSet && !translatingIni_->HasSection(section)) section = names->Name;
        TStringList list;
        FillEnumNames(names, &list);
        if (!SimpleMode) TranslateEnumNames(&list, section);
        items = ToQStrings(list);
    }
    QWidget* control = nullptr;
    switch (kind) {
    case ckInteger:
    case ckFloat:
        control = MakeEditControl(parent, ChangeAction());
        info->PropFlag = kind == ckInteger ? pfInteger : pfFloat;
        SetInputFilter(control, info->PropFlag);
        info->Filtered = true;
        break;
    case ckChar:
        control = MakeEditControl(parent, ChangeAction());
        SetMaxLength(control, 1);
        break;
    case ckString:
        control = MakeEditControl(parent, ChangeAction());
        break;
    case ckEnum:
        control = MakeComboControl(parent, items, ChangeAction());
        break;
    case ckBoolean:
        control = MakeCheckControl(parent, ChangeAction());
        break;
    default:
        control = MakeCheckListControl(parent, items, ChangeAction());
        break;
    }
    if (kind != ckSet) control->resize(control->width(), control->sizeHint().height());
    NameControl(control, propInfo);
    info->Control = control;
    info->ControlKind = kind;
    info->ETag = 0;
    info->ModifyObject = control;
    SetControlParams(std::string(ControlKindNames[kind]) + ControlIdentPostfix, info.get(),
                     centredLabel);
    TControlInfo* row = info.get();
    controlList_.Add(std::move(info));
    DoAfterCreateControl(row);
    MakeLabel(row, {}, top, labelWidth, centredLabel);
}

std::string TSpcEditor::LabelCaption(TControlInfo* info) {
    std::string text = SimpleMode ? info->PropInfo->Name
                                  : Translate(GetClassName(info->Instance), info->PropInfo->Name);
    if (FormOptions.Contains(foMultiLineCaptions)) text = ExpandPseudoNewLines(text);
    return Format(ResStr(_SLabCaption), {text});
}

void TSpcEditor::MakeLabel(TControlInfo* info, const std::string& caption, int& top,
                           int& labelWidth, bool centredLabel) {
    const TAreaFrame& frame = frames_.at(static_cast<size_t>(info->AreaIndex));
    auto* label = new TSpcLabel(frame.LabelPanel, FormOptions.Contains(foEllipsisLabels));
    label->setText(ToolsAPI::FromBytes(caption.empty() ? LabelCaption(info) : caption));
    QObject::connect(label, &TSpcLabel::Clicked, label, [this] { form_->FocusScrollBox(); });
    DoCreateLabel(label, info);
    label->setAlignment(ToQtAlignment(labelAreaInfo_.Alignment) | Qt::AlignVCenter);
    label->setProperty("AreaIndex", info->AreaIndex);
    label->resize(label->sizeHint());
    label->move(labelAreaInfo_.LeftMargin, label->y());
    if (labelAreaInfo_.AutoWidth) labelWidth = std::max(labelWidth, label->sizeHint().width());

    QWidget* control = info->Control;
    int labelHeight = label->height(), controlHeight = control->height();
    int height = std::max(labelHeight, controlHeight);
    if (!centredLabel) {
        control->move(control->x(), top);
        label->move(label->x(), top + 1);
    } else if (controlHeight >= labelHeight) {
        control->move(control->x(), top);
        label->move(label->x(), top + (controlHeight - labelHeight) / 2);
    } else {
        label->move(label->x(), top);
        control->move(control->x(), top + (labelHeight - controlHeight) / 2);
    }
    control->show();
    label->show();
    top += height;
    labelList_.push_back(label);
}

void TSpcEditor::DoBeforeCreateControl(TPersistent*, PPropInfo, QWidget*, TNewControlData&,
                                       bool&) {}

void TSpcEditor::DoAfterCreateControl(TControlInfo* info) {
    if (AfterCreateControl) AfterCreateControl(info);
}

void TSpcEditor::DoCreateLabel(QLabel* label, TControlInfo* info) {
    if (OnCreateLabel) OnCreateLabel(label, info);
}

// ---------------------------------------------------------------------------------------------
// Control parameters

void TSpcEditor::SetControlParams(const std::string& controlIdent, TControlInfo* info,
                                  bool& centredLabel) {
    ApplyParamsSection(*controlParamsIni_, controlIdent, info, centredLabel);
    if (!SimpleMode)
        ApplyParamsSection(*redefiedParamsIni_, GetFullPropName(info->Instance, info->PropInfo),
                           info, centredLabel);
}

void TSpcEditor::ApplyParamsSection(TIniStrings& ini, const std::string& section,
                                    TControlInfo* info, bool& centredLabel) {
    if (!ini.HasSection(section)) return;
    TStringList lines;
    ini.ReadSectionValues(section, &lines);
    for (int i = 0; i < lines.Count(); ++i) {
        std::string name = lines.Names(i);
        std::string value = lines.ValueFromIndex(i);
        if (name.empty() || name.starts_with("--")) continue; // a banner between templates
        if (SameText(name, "Width")) {
            size_t percent = value.find('%');
            info->IsPercent = percent != std::string::npos;
            info->Width = StrToInt(info->IsPercent ? value.substr(0, percent) : value);
            if (info->IsPercent && (info->Width < 0 || info->Width > 100))
                CreateException<ESpcEditorError>(SBadPercent);
        } else if (SameText(name, "CentredLabel")) {
            centredLabel = SameText(value, "True");
        } else if (info->Control) {
            SetControlProperty(info->Control, name, value);
        }
    }
}

void TSpcEditor::CheckDisabledState() {
    TStrings* disabled = strings_[skDisabledProps].get();
    for (const auto& info : controlList_)
        if (info->Control && info->PropInfo)
            info->Control->setEnabled(
                disabled->IndexOf(GetFullPropName(info->Instance, info->PropInfo)) < 0);
}

// ---------------------------------------------------------------------------------------------
// Values into the controls

void TSpcEditor::SetControlsData(TInstDscr* dscr, bool updateInstance) {
    for (const auto& info : controlList_) {
        if (updateInstance) info->Instance = dscr->Instance;
        bool handled = false;
        if (BeforeSetControlData) BeforeSetControlData(info.get(), handled);
        if (!handled) SetControlData(info.get());
        if (AfterSetControlData) AfterSetControlData(info.get());
    }
}

void TSpcEditor::SetControlData(TControlInfo* info) {
    if (!info->IsNativeControl(0) || !info->Control) return;
    QWidget* control = info->Control;
    void* slot = nullptr;
    switch (info->ControlKind) {
    case ckInteger:
        ops_.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        SetEditText(control, IntToStr(static_cast<int32_t>(reinterpret_cast<intptr_t>(slot))));
        break;
    case ckChar:
        ops_.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        SetEditText(control, std::string(1, static_cast<char>(reinterpret_cast<intptr_t>(slot))));
        break;
    case ckFloat: {
        long double value = 0;
        slot = &value;
        ops_.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        SetEditText(control, FloatToStr(value));
        break;
    }
    case ckString: {
        std::string value;
        slot = &value;
        ops_.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        SetEditText(control, value);
        break;
    }
    case ckEnum:
        ops_.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        SetComboIndex(control, static_cast<int>(reinterpret_cast<intptr_t>(slot)));
        break;
    case ckBoolean:
        ops_.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        SetChecked(control, reinterpret_cast<intptr_t>(slot) != 0);
        break;
    case ckSet:
        ops_.GetPropAsPtr(info->Instance, info->PropInfo, slot);
        SetCheckedBits(control, static_cast<uint32_t>(reinterpret_cast<uintptr_t>(slot)));
        break;
    default:
        break;
    }
}

// ---------------------------------------------------------------------------------------------
// Changes and values back into the objects

void TSpcEditor::ControlChange(QObject* sender) {
    if (state_.Contains(esDataSetting)) return;
    int index;
    if (controlList_.FindByModifyObject(sender, index)) {
        controlList_.Get(index)->Modified = true;
        DoControlChange(controlList_.Get(index));
    }
    modified_ = true;
    if (!isSpcRoot_ && Options.Contains(eoSaveSpcOnChange)) GetControlsDataEx();
    if (form_) form_->UpdateActions();
}

void TSpcEditor::DoControlChange(TControlInfo* info) {
    if (OnControlChange) OnControlChange(info);
}

void TSpcEditor::GetControlsData() {
    for (const auto& info : controlList_) {
        if (!info->Modified) continue;
        activeControl_ = info->Control;
        bool handled = false, aborted = false;
        if (BeforeGetControlData) BeforeGetControlData(info.get(), handled, aborted);
        if (aborted) throw EAbort("Operation aborted");
        if (!handled) GetControlData(info.get(), aborted);
        if (aborted) throw EAbort("Operation aborted");
        if (AfterGetControlData) AfterGetControlData(info.get(), aborted);
        if (aborted) throw EAbort("Operation aborted");
        info->Modified = false;
    }
    if (!isSpcRoot_) {
        modified_ = false;
        saved_ = true;
    }
}

void TSpcEditor::GetControlsDataEx() {
    try {
        GetControlsData();
    } catch (...) {
        FocusActiveControl();
        throw;
    }
}

void TSpcEditor::GetControlData(TControlInfo* info, bool& /*aborted*/) {
    if (!info->IsNativeControl(0) || !info->Control) return;
    const QWidget* control = info->Control;
    auto put = [&](intptr_t value) {
        ops_.SetPropByPtr(info->Instance, info->PropInfo, reinterpret_cast<void*>(value));
    };
    switch (info->ControlKind) {
    case ckInteger: {
        std::string text = EditText(control);
        put(StrToInt(text.empty() ? "0" : text));
        break;
    }
    case ckChar: {
        std::string text = EditText(control);
        put(text.empty() ? 0 : static_cast<unsigned char>(text[0]));
        break;
    }
    case ckFloat: {
        std::string text = EditText(control);
        long double value = text.empty() ? 0 : StrToFloat(text);
        ops_.SetPropByPtr(info->Instance, info->PropInfo, &value);
        break;
    }
    case ckString: {
        std::string text = EditText(control);
        ops_.SetPropByPtr(info->Instance, info->PropInfo, &text);
        break;
    }
    case ckEnum:
        put(ComboIndex(control));
        break;
    case ckBoolean:
        put(Checked(control) ? 1 : 0);
        break;
    case ckSet:
        put(static_cast<intptr_t>(CheckedBits(control)));
        break;
    default:
        break;
    }
}

// ---------------------------------------------------------------------------------------------
// Freeing the rows

void TSpcEditor::ClearPaintAreas() {
    for (const auto& info : controlList_) FreeControl(info.get());
    controlList_.Clear();
    for (QPointer<QLabel>& label : labelList_) delete label.data();
    labelList_.clear();
}

void TSpcEditor::FreeControl(TControlInfo* info) {
    if (!info->Control) return;
    bool handled = false;
    if (OnDropControl) OnDropControl(info, handled);
    if (!handled) DropControl(info);
}

void TSpcEditor::DropControl(TControlInfo* info) {
    delete info->Control.data();
}

void TSpcEditor::RebuildControls() {
    if (!form_ || state_.Contains(esFormDestroying)) return;
    QTreeWidgetItem* node = TreeView()->currentItem();
    if (!node || !SpcTreeChanging(node)) return;
    lastClass_ = nullptr;
    SpcTreeChange(node);
}

} // namespace zelvane
