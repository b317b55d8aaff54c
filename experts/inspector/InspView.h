// Unit InspView: a bar at the top of the IDE's object inspector with a sorted list of the open
// design forms; choosing one brings it up in the designer. Six commands go to the head of the
// inspector's pop-up menu. The expert has no window and no menu command of its own: it lives in
// hooks on the inspector, on the IDE's "close all" command, on the screen's active form change
// and in notifiers on the IDE and on each listed form. Nearly all its work is posted to its
// hidden window, since the IDE tells of a change while its own state is still changing; one
// message of each kind is in flight at a time, so a burst of notifications costs one refill.
#pragma once

#include "host/ExpMng.h"
#include "toolsapi/Forms.h"
#include "toolsapi/ToolsAPI.h"

#include <QMetaObject>
#include <QPointer>

#include <vector>

class QAction;
class QComboBox;
class QMenu;

namespace zelvane {

// The hidden window's messages.
constexpr uint32_t WM_INSP_CREATECONTROLS = 0xC006;
constexpr uint32_t WM_INSP_SHOWPANEL = 0xC007;    // WParam: visible
constexpr uint32_t WM_INSP_UPDATECOMBO = 0xC008;
constexpr uint32_t WM_INSP_RENAMED = 0xC009;
constexpr uint32_t WM_INSP_ACTIVEFORM = 0xC00A;   // WParam: the design root, or 0

class TInspectorViewMng : public TCustomExpert {
    RTL_CLASS(TInspectorViewMng, TCustomExpert)
public:
    TInspectorViewMng();
    ~TInspectorViewMng() override;

    bool GetDisplayPanel() const { return displayPanel_; }
    void SetDisplayPanel(bool value);
    bool GetProjectFormsOnly() const { return projectFormsOnly_; }
    void SetProjectFormsOnly(bool value);
    bool GetReturnFocus() const { return returnFocus_; }
    void SetReturnFocus(bool value);
    bool AutoShowForm = false;

    void Load(bool Loaded) override;

    // What the notifiers ask for.
    bool Updated() const { return updated_; }
    void DoUpdateFormCombo();
    void DoSetActiveForm(ToolsAPI::TDesignComponent* component);
    void FormRenamed();

private:
    struct TEditorNotifier {
        ToolsAPI::_di_IOTAFormEditor Editor;
        int Index = -1;
    };

    void SetUpdated(bool value);
    void WndProc(ToolsAPI::TMessage& message);
    void CreateInspectorControls();
    void DestroyInspectorControls();
    void AddLocalMenuItems();
    void DeleteLocalMenuItems();
    void InspectorMenuPopup();
    void InspectorMenuItemClick(QAction* item);
    void HookInspectorEvents();
    void RestoreInspectorEvents();
    void CloseAllActionExecute(rtl::TObject* Sender);
    void HookActiveFormChange();
    void RestoreActiveFormChange();
    void FormChange(rtl::TObject* Sender);
    void AddIDENotifier();
    void RemoveIDENotifier();
    void RemoveEditorNotifiers();
    void UpdateFormCombo();
    void FillFormCombo();
    ToolsAPI::_di_IOTAFormEditor GetEditorFromCombo(int index) const;
    void SetActiveForm();
    void FormComboChange();
    void ShowForm();
    void SelectComponent(bool selectForm);
    void InspectorFormDestroy();
    void Release();

    bool displayPanel_ = true;
    bool projectFormsOnly_ = false;
    bool returnFocus_ = false;

    QPointer<QWidget> inspector_;
    // The inspector as found, kept while it is being destroyed (its QPointer is empty by then),
    // so that the hooks on it are undone.
    QWidget* inspectorForm_ = nullptr;
    QPointer<QWidget> formPanel_;
    QPointer<QComboBox> formCombo_;
    ToolsAPI::HWND messageWindow_ = nullptr;
    std::vector<QPointer<QAction>> localItems_;
    std::vector<ToolsAPI::_di_IOTAFormEditor> editors_;
    std::vector<TEditorNotifier> editorNotifiers_;
    int ideNotifierIndex_ = -1;
    QPointer<QAction> closeAllAction_;
    rtl::TNotifyEvent oldCloseAll_;
    rtl::TNotifyEvent oldActiveFormChange_;
    bool activeFormChangeHooked_ = false;
    QMetaObject::Connection inspectorDestroyed_;
    QMetaObject::Connection menuPopup_;
    QPointer<QMenu> popupMenu_;
    bool updated_ = false;
    bool inspectorGone_ = false;
    bool released_ = false;
    ToolsAPI::TDesignComponent* activeComponent_ = nullptr;
    bool comboUpdateReady_ = true;
    bool activeFormReady_ = true;
    bool followActiveForm_ = true;
    ToolsAPI::_di_IOTAFormEditor lastEditor_;
};

} // namespace zelvane
