#include "host/ExpEditor.h"

#include "editor/SpcForm.h"
#include "foundation/Dialogs.h"
#include "host/ExpData.h"
#include "host/ExpMng.h"
#include "rtl/Menus.h"
#include "toolsapi/QtBridge.h"

#include <QAction>

namespace zelvane {

using namespace rtl;
using ToolsAPI::Application;

RTL_IMPLEMENT_CLASS(TExpertEditor)

TEditorFormData* TExpertEditor::FormData() const {
    return Manager && Manager->Data() ? Manager->Data()->GetEditorFormData() : nullptr;
}

void TExpertEditor::MakeForm() {
    TSpcEditorPro::MakeForm();
    if (TEditorFormData* data = FormData())
        Form()->Action("ActStore")->setShortcut(
            ToolsAPI::ShortCutToKeySequence(TextToShortCut(data->SaveSettingShortCut)));
}

void TExpertEditor::ReadFormSetting(const std::string&, const std::string&, TStrings* strings) {
    if (TEditorFormData* data = FormData()) strings->SetText(data->GetSetting()->GetText());
}

void TExpertEditor::WriteFormSetting(const std::string&, const std::string&, TStrings* strings) {
    if (TEditorFormData* data = FormData()) data->GetSetting()->SetText(strings->GetText());
}


// ---------------------------------------------------------------------------------------------
// The manager's side

namespace {

// A new settings tree made by the editor takes the live tree's branches first, so that the
// file's values land on items that exist.
void ReCreateSpc(TPersistent* spc) {
    if (auto* data = dynamic_cast<TExpData*>(spc); data && ExpData) data->Assign(ExpData);
}

} // namespace

void TExpManager::PrepareEditor() {
    TExpertEditor& editor = *editor_;
    editor.Manager = this;
    FillInitData();
    editor.Init(&GlobalInitData(), nullptr);
    editor.SetColCount(1);
    editor.TreeFont.Style.Exclude(fsBold);
    editor.OnCreateSpc = ReCreateSpc;
    editor.SetSpcFileName(ExpDataFileName());
    editor.TopInc = 5;
    editor.SpcFormat = osfText;
    editor.LabelAreaInfo().DefAreaWidth = 100;
    editor.ControlAreaInfo().DefAreaWidth = 200;
    editor.FormOptions.Include(foAreasDynamicResize);
    editor.FormOptions.Include(foMultiLineCaptions);
    if (data_->GetEditorFormData()->AutoSaveSetting) editor.FormOptions.Include(foAutoSaveParams);
    editor.VisibleButtons = TSpcEdVisibleButtons::FromBits(783);
    editor.SetStrings(skInvisibleProps, ExpEditorInvisibleProps);
    editor.SetStrings(skDisabledProps, ExpEditorDisabledProps);
}

void TExpManager::LocalizeEditor() {
    if (editor_) editor_->SetStrings(skTranslatingTable, TranslatingTable());
}

void TExpManager::EditSettings2(TObject*) {
    editor_->ShowTree(reinterpret_cast<TPersistent**>(&ExpData));
    if (Application) OwnerWnd = Application->GetHandle();
    if (editor_->Saved()) DoRecreateExperts();
}

} // namespace zelvane
