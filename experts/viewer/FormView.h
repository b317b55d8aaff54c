// Unit FormView: the expert behind "View Forms..." and "View Units...". It replaces the IDE's own
// lists of forms and units with the module viewer (experts/viewer/ViewForm.h): its two menu
// commands, and the IDE's "View Unit" and "View Form" tool bar buttons, whose handlers it takes
// over after the main form's first show and gives back when it goes. The chosen modules are
// opened once the viewer has gone, so that what it borrowed from the IDE is home first.
#pragma once

#include "host/ExpShrForm.h"
#include "rtl/Graphics.h"
#include "toolsapi/Forms.h"

#include <QPointer>

#include <memory>

class QAction;

namespace zelvane {

class TViewForm;

RTL_ENUM(TViewModuleMode, svmForm, svmUnit)

// The hidden window's message: hook the tool bar buttons, once the IDE's tool bars are up.
constexpr uint32_t WM_VIEW_HOOKTOOLBAR = 0xC01E;

class TViewFormMng : public TSharedManager {
    RTL_CLASS(TViewFormMng, TSharedManager)
public:
    TViewFormMng();
    ~TViewFormMng() override;

    // Kept with their defaults: they are not stored.
    bool DisplacingView = true;
    bool SetFocusToModules = true;
    bool SelectFocusedItem = false;

    bool DisplayFormScrollbars = false;
    bool DisplayUnitScrollbars = true;
    bool EditorAutoSave = false;
    bool EditorReadOnly = true;
    bool EllipsisFilePath = true;
    bool FormEnhancedState = false;
    bool SynchronizeModules = false;
    bool GroupedUnits = false;
    bool SeparatorAllowed = false;
    rtl::TColor SeparatorColor = rtl::clWindowText;
    rtl::TPenStyle SeparatorStyle = rtl::psDot;
    bool ExtendedDrawing = false;
    bool GetToolBarUpdated() const { return toolBarUpdated_; }
    void SetToolBarUpdated(bool value);
    rtl::TFont* GetFormFont() const { return formFont_.get(); }
    void SetFormFont(rtl::TFont* value) { formFont_->Assign(value); }
    rtl::TFont* GetFormUnitFont() const { return formUnitFont_.get(); }
    void SetFormUnitFont(rtl::TFont* value) { formUnitFont_->Assign(value); }
    rtl::TFont* GetUnitFont() const { return unitFont_.get(); }
    void SetUnitFont(rtl::TFont* value) { unitFont_->Assign(value); }

    void Init(TAddItemFunc AddItem) override;
    void Load(bool Loaded) override;

    // The menu commands: the viewer, when the IDE's own command would be available.
    void ShowForms(rtl::TObject* Sender);
    void ShowUnits(rtl::TObject* Sender);
    void UpdateFormViewState(rtl::TObject* Sender);
    void UpdateUnitViewState(rtl::TObject* Sender);
    // With a hooked button, whether it is enabled; without one, true.
    bool CheckFormViewState() const;
    bool CheckUnitViewState() const;
    // The viewer, without a check.
    void ViewForm(rtl::TObject* Sender);
    void ViewUnit(rtl::TObject* Sender);
    // The handlers put on the tool bar buttons: the viewer under the menu commands' guard.
    void InternalViewForm(rtl::TObject* Sender);
    void InternalViewUnit(rtl::TObject* Sender);

    // Runs the viewer modally, then opens what was chosen in it.
    void ShowModules(TViewModuleMode mode);

    void HookToolBarButtons();
    void RestoreToolBarButtons();
    // The buttons held, or nullptr.
    QAction* ViewUnitButton() const { return unitButton_.data(); }
    QAction* ViewFormButton() const { return formButton_.data(); }

private:
    void HookAppFormShow();
    void RestoreAppFormShow();
    void FormShow(rtl::TObject* Sender);
    void WndProc(ToolsAPI::TMessage& message);

    QWidget* mainForm_ = nullptr;
    ToolsAPI::HWND messageWindow_ = nullptr;
    bool firstShow_ = true;
    bool toolBarUpdated_ = false;
    rtl::TNotifyEvent oldFormShow_;
    rtl::TNotifyEvent oldUnitClick_;
    rtl::TNotifyEvent oldFormClick_;
    QPointer<QAction> unitButton_;
    QPointer<QAction> formButton_;
    std::unique_ptr<rtl::TFont> formFont_;
    std::unique_ptr<rtl::TFont> formUnitFont_;
    std::unique_ptr<rtl::TFont> unitFont_;
    // The viewer while it is up; it goes with the expert, whose code it runs.
    QPointer<TViewForm> form_;
};

} // namespace zelvane
