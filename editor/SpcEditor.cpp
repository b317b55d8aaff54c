// The editor's life: construction, the texts and their parsed forms, the editing transaction on
// the clone, files, and the translation of names.
#include "editor/SpcEditor.h"

#include "editor/SpcForm.h"
#include "foundation/Dialogs.h"
#include "specification/SpcConst.h"
#include "toolsapi/QtBridge.h"

#include <QApplication>
#include <QCoreApplication>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QStatusBar>
#include <QTreeWidget>

namespace zelvane {

using namespace rtl;

bool SpcEditorInLibrary = false;

namespace {

// The parameters of the base control kinds; "%0:s" stands for "Control", "%1:s" for a line
// break.
constexpr const char* BaseControlParams =
    "-- SpcEditor --%1:s%1:s"
    "[String%0:s]%1:sWidth=100%%%1:s%1:s"
    "[Integer%0:s]%1:sWidth=50%%%1:s%1:s"
    "[Float%0:s]%1:sWidth=50%%%1:s%1:s"
    "[Char%0:s]%1:sWidth=20%1:s%1:s"
    "[Boolean%0:s]%1:sWidth=13%1:s%1:s"
    "[Enum%0:s]%1:sWidth=80%%%1:s%1:s"
    "[Set%0:s]%1:sWidth=100%%%1:sCentredLabel=False%1:s%1:s"
    "[Component%0:s]%1:sWidth=100%%%1:s";

void SetEditorFont(TFont& font) {
    font.Name = "MS Sans Serif";
    font.SetSize(9);
    font.Color = clBlack;
    font.Style = TFontStyles{fsBold};
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Column looks

RTL_BEGIN_CLASS(TPaintAreaInfo)
    Property("Alignment", &TPaintAreaInfo::Alignment);
    Property("DefAreaWidth", &TPaintAreaInfo::DefAreaWidth);
    Property("LeftMargin", &TPaintAreaInfo::LeftMargin);
    Property("RightMargin", &TPaintAreaInfo::RightMargin);
RTL_END_CLASS

RTL_BEGIN_CLASS(TLabelAreaInfo)
    Property("AutoWidth", &TLabelAreaInfo::AutoWidth);
RTL_END_CLASS

RTL_BEGIN_CLASS(TControlAreaInfo)
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(ESpcEditorError)

RTL_BEGIN_CLASS(TSpcEditor)
RTL_END_CLASS

TPaintAreaInfo::TPaintAreaInfo() {
    Font.SetSize(9);
}

void TPaintAreaInfo::Assign(TPersistent* source) {
    auto* other = dynamic_cast<TPaintAreaInfo*>(source);
    if (!other) return TPersistent::Assign(source);
    Font.Assign(&other->Font);
    LeftMargin = other->LeftMargin;
    RightMargin = other->RightMargin;
    DefAreaWidth = other->DefAreaWidth;
}

TLabelAreaInfo::TLabelAreaInfo() {
    LeftMargin = 3;
    RightMargin = 2;
    DefAreaWidth = 100;
    Font.Color = TColor(0x800000);
}

TControlAreaInfo::TControlAreaInfo() {
    LeftMargin = 2;
    RightMargin = 3;
    DefAreaWidth = 150;
    Font.Color = clBlack;
}

// ---------------------------------------------------------------------------------------------
// Construction

TSpcEditor::TSpcEditor(TComponent* owner) : TComponent(owner) {
    SetEditorFont(HeaderFont);
    SetEditorFont(TreeFont);
    for (auto& list : strings_) {
        list = std::make_unique<TStringList>();
        list->OnChange = TNotifyEvent::Of<&TSpcEditor::StringsChanged>(this);
    }
    strings_[skDisabledProps]->SetSorted(true);
    strings_[skInvisibleProps]->SetSorted(true);
    controlParamsIni_ = std::make_unique<TIniStrings>();
    redefiedParamsIni_ = std::make_unique<TIniStrings>();
    translatingIni_ = std::make_unique<TIniStrings>();
    UpdateControlParams(BaseControlParams);
    FormOptions = {foModalShowing, foTreeExpandOnEnter, foEllipsisLabels};
    VisibleButtons = TSpcEdVisibleButtons::FromBits(0x3FF);
}

TSpcEditor::~TSpcEditor() {
    if (form_) {
        state_.Include(esFormDestroying);
        controlList_.Clear();
        labelList_.clear();
        delete form_.data();
    }
    delete closedForm_.data();
    DropSpcClone();
}

void TSpcEditor::Init(TInitData* initData, void* /*appHandle*/) {
    initRecord_ = initData;
    ops_ = TSpcObjectOps(initData);
}

void TSpcEditor::CheckInit() {
    bool given = isSpcRoot_ ? spcRoot_ && *spcRoot_ : instance_ != nullptr;
    if (!given) CreateException<ESpcEditorError>(SNoSpcObject);
    if (initRecord_) return;
    if (SpcEditorInLibrary) CreateException<ESpcEditorError>(SNeedInitData);
    FillInitData();
    Init(&GlobalInitData(), nullptr);
}

// ---------------------------------------------------------------------------------------------
// Texts

TStrings* TSpcEditor::GetStrings(TSpcEdStringsKind kind) const {
    return strings_[kind].get();
}

void TSpcEditor::SetStrings(TSpcEdStringsKind kind, const std::string& text) {
    strings_[kind]->SetText(text);
}

void TSpcEditor::UpdateControlParams(const std::string& templ) {
    std::string text = Format(templ, {ControlIdentPostfix, "\r\n"});
    TStrings* params = strings_[skControlParams].get();
    params->SetText(params->GetText() + text);
}

void TSpcEditor::PrepareParams(TIniStrings& ini, TStrings* strings) {
    ini.UnSort();
    ini.SetStrings(strings);
    ini.Sort();
}

void TSpcEditor::Prepare() {
    PrepareParams(*controlParamsIni_, strings_[skControlParams].get());
    PrepareParams(*redefiedParamsIni_, strings_[skRedefiedParams].get());
    PrepareParams(*translatingIni_, strings_[skTranslatingTable].get());
}

void TSpcEditor::UnPrepare() {
    controlParamsIni_->Clear();
    redefiedParamsIni_->Clear();
    translatingIni_->Clear();
}

// Each list's change notice keeps its parsed form, or the disabled state, in step with it.
void TSpcEditor::StringsChanged(TObject* sender) {
    if (sender == strings_[skDisabledProps].get()) {
        if (form_) CheckDisabledState();
    } else if (sender == strings_[skControlParams].get()) {
        PrepareParams(*controlParamsIni_, strings_[skControlParams].get());
    } else if (sender == strings_[skRedefiedParams].get()) {
        PrepareParams(*redefiedParamsIni_, strings_[skRedefiedParams].get());
    } else if (sender == strings_[skTranslatingTable].get()) {
        PrepareParams(*translatingIni_, strings_[skTranslatingTable].get());
    }
}

std::string TSpcEditor::Translate(const std::string& section, const std::string& ident) {
    return translatingIni_->ReadString(section, ident, ident);
}

std::string TSpcEditor::TranslateEx(const std::string& section, const std::string& ident,
                                    const std::string& def) {
    return translatingIni_->ReadString(section, ident, def);
}

void TSpcEditor::TranslateEnumNames(TStrings* names, const std::string& section) {
    for (int i = 0; i < names->Count(); ++i)
        names->SetStrings(i, Translate(section, names->Strings(i)));
}

std::string TSpcEditor::GetFullPropName(TObject* obj, PPropInfo propInfo) const {
    return GetClassName(obj) + "." + propInfo->Name;
}

std::string TSpcEditor::GetClassName(TObject* obj) const {
    return ops_.ClassName(obj);
}

TBaseClassIdent TSpcEditor::GetInstanceID(TObject* obj) const {
    return ops_.BaseClass(obj);
}

bool TSpcEditor::FindInstanceID(TObject* obj, TBaseClassIdent& ident) const {
    ident = GetInstanceID(obj);
    return ident != ciUnknown;
}

// ---------------------------------------------------------------------------------------------
// Showing

void TSpcEditor::SetSpcRoot(TPersistent** spc) {
    spcRoot_ = spc;
    isSpcRoot_ = true;
}

void TSpcEditor::ShowTree() {
    if (isSpcRoot_) DoShowTree();
}

void TSpcEditor::ShowTree(TPersistent** spc) {
    SetSpcRoot(spc);
    ShowTree();
}

void TSpcEditor::ShowTreeEx(TPersistent* object) {
    isSpcRoot_ = false;
    instance_ = object;
    DoShowTree();
}

void TSpcEditor::DoShowTree() {
    CheckInit();
    if (!form_) MakeForm();
    saved_ = false;
    BuildTree();
    if (FormOptions.Contains(foModalShowing)) {
        if (!form_->isVisible()) form_->exec();
    } else {
        if (form_->isVisible()) form_->showNormal();
        form_->show();
        form_->raise();
        form_->activateWindow();
    }
}

void TSpcEditor::SetShowStatusBar(bool value) {
    showStatusBar_ = value;
    if (form_) form_->UpdateSBState(value);
}

TSpcForm* TSpcEditor::Form() const {
    return form_;
}

QTreeWidget* TSpcEditor::TreeView() const {
    return form_ ? form_->TreeView() : nullptr;
}

void TSpcEditor::MakeForm() {
    form_ = new TSpcForm(this);
    areasVisible_ = false;
    edgesEnabled_ = true;
    form_->HeaderControl()->setFont(ToolsAPI::ToQFont(HeaderFont));
    form_->StatusPanel(0)->setText(ToolsAPI::FromBytes(" " + Format(SPropertiesCount, {0})));
    form_->UpdateSBState(showStatusBar_);
    form_->LoadSetting();
    if (!isSpcRoot_) {
        VisibleButtons.Exclude(vbLoadSpc);
        VisibleButtons.Exclude(vbSaveSpcAs);
    }
    form_->ApplyVisibleButtons(VisibleButtons);
    if (FormOptions.Contains(foStayOnTop))
        form_->setWindowFlag(Qt::WindowStaysOnTopHint, true);
    fullDragging_ = FormOptions.Contains(foAreasDynamicResize);
    frames_.assign(static_cast<size_t>(colCount_), TAreaFrame{});
    MakeAreas();
    OwnerWnd = form_.data();
    DialogCaption = GetTitle();
}

// ---------------------------------------------------------------------------------------------
// The editing transaction

void TSpcEditor::MakeSpcClone() {
    if (!spcClone_)
        spcClone_ = ops_.CreateSpc(ops_.ClassType(*spcRoot_));
    else
        ops_.RecreateSpc(spcClone_);
    DoCreateSpc(spcClone_);
    ops_.CopyProps(*spcRoot_, spcClone_);
}

void TSpcEditor::DropSpcClone() {
    if (spcClone_) ops_.FreeSpc(spcClone_);
    spcClone_ = nullptr;
}

void TSpcEditor::UpdateSpc() {
    if (spcClone_) ops_.CopyProps(spcClone_, *spcRoot_);
}

TPersistent* TSpcEditor::GetUpdatingSpc() const {
    if (!isSpcRoot_) return instance_;
    if (spcClone_) return spcClone_;
    return spcRoot_ ? *spcRoot_ : nullptr;
}

void TSpcEditor::DoCreateSpc(TPersistent* spc) {
    if (OnCreateSpc) OnCreateSpc(spc);
}

bool TSpcEditor::SaveChanges() {
    if (!modified_) return true;
    bool result = true;
    if (Options.Contains(eoSaveSpcOnExit)) {
        result = DoSaveChanges();
    } else {
        switch (QueryDialogEx(SSaveChanges)) {
        case IDCANCEL:
            result = false;
            break;
        case IDYES:
            result = DoSaveChanges();
            break;
        default:
            UndoChanges();
            break;
        }
    }
    if (form_) form_->update();
    return result;
}

bool TSpcEditor::DoSaveChanges() {
    if (!isSpcRoot_) {
        GetControlsDataEx();
        return true;
    }
    return spcFileName_.empty() ? SaveAs() : DoSave();
}

bool TSpcEditor::DoSave() {
    GetControlsDataEx();
    return SaveToFile(spcFileName_, SpcFormat);
}

bool TSpcEditor::SaveToFile(const std::string& fileName, TObjectStorageFormat format) {
    if (!isSpcRoot_) return false;
    CheckInit();
    bool allowSave = true;
    if (BeforeSaveSpc) BeforeSaveSpc(GetUpdatingSpc(), fileName, allowSave);
    if (!allowSave) return false;
    try {
        UpdateSpc();
        ops_.SaveSpc(*spcRoot_, fileName, format);
    } catch (const std::exception& e) {
        ReportError(SSpcSaveError, fileName, e);
        return false;
    }
    SpcFormat = format;
    SetSpcFileName(fileName);
    modified_ = false;
    saved_ = true;
    SetCaption();
    if (AfterSaveSpc) AfterSaveSpc(GetUpdatingSpc(), fileName);
    return true;
}

void TSpcEditor::ReportError(int textId, const std::string& fileName, const std::exception& e) {
    ShowError(Format(ResStr(textId), {fileName, "\r\n", std::string(e.what())}));
}

bool TSpcEditor::Save() {
    if (!isSpcRoot_) return false;
    if (!spcFileName_.empty()) return SaveToFile(spcFileName_, SpcFormat);
    std::string fileName;
    TObjectStorageFormat format = SpcFormat;
    if (!InternalSaveAs(fileName, format, true)) return false;
    return SaveToFile(fileName, format);
}

// The name and form of a file to save to; the dialog's filter index follows the form of the
// last load or save (a text file's 4 falls past the three entries and stands as it is).
bool TSpcEditor::InternalSaveAs(std::string& fileName, TObjectStorageFormat& format,
                                bool temporary) {
    std::string tempDir;
    int tempIndex = 1;
    std::string& dir = temporary || !form_ ? tempDir : form_->SaveDir;
    int& filterIndex = temporary || !form_ ? tempIndex : form_->SaveFilterIndex;
    if (dir.empty() && !spcFileName_.empty()) dir = ExtractFilePath(spcFileName_);
    filterIndex = static_cast<int>(SpcFormat) + 1;
    fileName = spcFileName_;
    if (!ExecuteSpcFileDialog(form_, true, fileName, dir, filterIndex, SSaveSpcTitle))
        return false;
    format = filterIndex == 2 ? osfText : osfBin;
    if (ExtractFileExt(fileName).empty())
        fileName += SpcFileExt(format);
    if (FileExists(fileName)) return WarningDialog(ResStr(SFileExistsReplace), {fileName});
    return true;
}

bool TSpcEditor::SaveAs() {
    std::string fileName;
    TObjectStorageFormat format = SpcFormat;
    if (!InternalSaveAs(fileName, format, false)) return false;
    if (form_) form_->LoadFilterIndex = form_->SaveFilterIndex;
    GetControlsDataEx();
    if (!SaveToFile(fileName, format)) return false;
    SetCaption();
    return true;
}

void TSpcEditor::Load() {
    if (!form_) return;
    std::string& dir = form_->LoadDir;
    if (dir.empty() && !spcFileName_.empty()) dir = ExtractFilePath(spcFileName_);
    form_->LoadFilterIndex = static_cast<int>(SpcFormat) + 1;
    std::string fileName = spcFileName_;
    if (!ExecuteSpcFileDialog(form_, false, fileName, dir, form_->LoadFilterIndex,
                              SLoadSpcTitle))
        return;
    form_->update();
    form_->SaveFilterIndex = form_->LoadFilterIndex;
    if (!SaveChanges()) return;
    if (!LoadFromFile(fileName, true)) return;
    DoRelease();
    BuildTree();
    saved_ = true;
}

bool TSpcEditor::LoadFromFile(const std::string& fileName, bool showErrors) {
    if (!isSpcRoot_) return false;
    CheckInit();
    TPersistent* loaded = ops_.CreateSpc(ops_.ClassType(*spcRoot_));
    try {
        DoCreateSpc(loaded);
        SpcFormat = ops_.LoadSpc(loaded, fileName, showErrors);
    } catch (const std::exception& e) {
        if (loaded) ops_.FreeSpc(loaded);
        ReportError(SSpcLoadError, fileName, e);
        return false;
    }
    ops_.FreeSpc(*spcRoot_);
    *spcRoot_ = loaded;
    SetSpcFileName(fileName);
    modified_ = false;
    if (OnLoadSpc) OnLoadSpc(*spcRoot_, fileName);
    return true;
}

bool TSpcEditor::LoadFromFile(TPersistent** spc, const std::string& fileName, bool showErrors) {
    SetSpcRoot(spc);
    return LoadFromFile(fileName, showErrors);
}

void TSpcEditor::SetSpcFileName(const std::string& name) {
    spcFileName_ = name;
    SetCaption();
}

bool TSpcEditor::Release() {
    if (!SaveChanges()) return false;
    DoRelease();
    frames_.clear();
    if (form_) form_->ResetScroll();
    return true;
}

void TSpcEditor::DoRelease() {
    BeginUpdate(akAll, -1);
    ClearPaintAreas();
    DropSpcClone();
}

// ---------------------------------------------------------------------------------------------
// Caption

void TSpcEditor::SetCaption() {
    if (!form_) return;
    std::string caption = FormCaption;
    if (caption.empty()) {
        if (isSpcRoot_) {
            caption = Format(SSpcFormCaption, {spcFileName_});
        } else {
            std::string name;
            switch (instanceIdent_) {
            case ciCollection:
                caption = "Collection ";
                name = ops_.CollectionPropName(static_cast<TCollection*>(instance_));
                break;
            case ciComponent:
                caption = "Component ";
                name = ops_.ComponentName(static_cast<TComponent*>(instance_));
                break;
            default:
                caption = "Object ";
                break;
            }
            if (!name.empty()) caption += name + ": ";
            caption += GetClassName(instance_);
        }
    }
    form_->setWindowTitle(ToolsAPI::FromBytes(caption));
}

void TSpcEditor::SetInstanceIdent() {
    instanceIdent_ = GetInstanceID(isSpcRoot_ ? *spcRoot_ : instance_);
}

} // namespace zelvane
