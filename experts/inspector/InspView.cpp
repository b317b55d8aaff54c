#include "experts/inspector/InspView.h"

#include "foundation/AppUtils.h"
#include "host/CrtlUtils.h"
#include "host/ExpData.h"
#include "host/ExpShrForm.h"
#include "host/OTAUtils.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "rtl/SysUtils.h"
#include "toolsapi/IDENames.h"
#include "toolsapi/QtBridge.h"

#include <QAction>
#include <QApplication>
#include <QBoxLayout>
#include <QComboBox>
#include <QHBoxLayout>
#include <QMenu>

#include <algorithm>

namespace zelvane {

using namespace rtl;
using namespace ToolsAPI;

RTL_BEGIN_CLASS(TInspectorViewMng)
Property("DisplayPanel", &TInspectorViewMng::GetDisplayPanel, &TInspectorViewMng::SetDisplayPanel)
    .Default(true);
Property("ProjectFormsOnly", &TInspectorViewMng::GetProjectFormsOnly,
         &TInspectorViewMng::SetProjectFormsOnly)
    .Default(false);
Property("ReturnFocus", &TInspectorViewMng::GetReturnFocus, &TInspectorViewMng::SetReturnFocus)
    .Default(false);
Property("AutoShowForm", &TInspectorViewMng::AutoShowForm).Default(false);
Method<&TInspectorViewMng::CloseAllActionExecute>("CloseAllActionExecute");
Method<&TInspectorViewMng::FormChange>("FormChange");
RTL_END_CLASS

namespace {

// The object of a combo item: the index of its editor in the manager's list.
constexpr int EditorRole = Qt::UserRole;

// The commands put at the head of the inspector's pop-up menu, top to bottom; tag 0 is a line.
struct TLocalItem {
    int Tag;
    int Caption;
};
constexpr TLocalItem LocalItems[] = {{1, SDisplayPanelItem}, {2, SProjectFormsOnlyItem},
                                     {3, SReturnFocusItem},  {0, 0},
                                     {5, SSelectParentItem}, {4, SSelectFormItem},
                                     {0, 0},                 {6, SShowFormItem},
                                     {0, 0}};

class TIDENotifier : public TNotifierObject, public virtual IOTAIDENotifier {
public:
    explicit TIDENotifier(TInspectorViewMng* manager) : manager_(manager) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAIDENotifier>(this, iid, obj);
    }
    void FileNotification(TOTAFileNotification code, const std::string&, bool&) override {
        if ((code == ofnFileOpened || code == ofnFileClosing) && manager_->Updated())
            manager_->DoUpdateFormCombo();
    }
    void BeforeCompile(const _di_IOTAProject&, bool&) override {}
    void AfterCompile(bool) override {}

private:
    TInspectorViewMng* manager_;
};

class TFormNotifier : public TNotifierObject, public virtual IOTAFormNotifier {
public:
    TFormNotifier(TInspectorViewMng* manager, TDesignComponent* root)
        : manager_(manager), root_(root) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAFormNotifier>(this, iid, obj);
    }
    void FormActivated() override { manager_->DoSetActiveForm(root_); }
    void FormSaving() override {}
    // Only the rename of a design root changes the list.
    void ComponentRenamed(TOTAHandle handle, const std::string&, const std::string&) override {
        if (IsFormComponent(static_cast<const TDesignComponent*>(handle))) manager_->FormRenamed();
    }

private:
    TInspectorViewMng* manager_;
    TDesignComponent* root_;
};

// The controls of a component, depth first, until one is the child.
_di_IOTAComponent FindParentComponent(const _di_IOTAComponent& parent, const _di_IOTAComponent& child) {
    for (int i = 0; i < parent->GetControlCount(); ++i) {
        _di_IOTAComponent control = parent->GetControl(i);
        if (!control) continue;
        if (control->GetComponentHandle() == child->GetComponentHandle()) return parent;
        if (_di_IOTAComponent found = FindParentComponent(control, child)) return found;
    }
    return nullptr;
}

// The open form editors, as the list shows them.
std::vector<_di_IOTAFormEditor> OpenedFormEditors(bool projectOnly) {
    std::vector<_di_IOTAEditor> editors;
    GetOpenedEditors(editors, mtForm, projectOnly);
    std::vector<_di_IOTAFormEditor> forms;
    for (const _di_IOTAEditor& e : editors)
        if (_di_IOTAFormEditor f = Query<IOTAFormEditor>(e)) forms.push_back(f);
    return forms;
}

} // namespace

TInspectorViewMng::TInspectorViewMng() {
    AddStoredData(this, "InspectorFormViewData", LocaleStr(SInspectorFormView),
                  LabelTemplate("TInspectorViewMng",
                                {{"DisplayPanel", SLabelDisplayPanel},
                                 {"ProjectFormsOnly", SLabelProjectFormsOnly},
                                 {"ReturnFocus", SLabelReturnFocus},
                                 {"AutoShowForm", SLabelAutoShowForm}}));
    messageWindow_ = AllocateHWnd([this](TMessage& m) { WndProc(m); });
    if (Screen)
        for (int i = 0; i < Screen->GetFormCount() && !inspector_; ++i)
            if (QWidget* form = Screen->GetForm(i); form && form->objectName() == QStringLiteral("PropertyInspector"))
                inspector_ = inspectorForm_ = form;
    SetUpdated(true);
}

TInspectorViewMng::~TInspectorViewMng() {
    if (!inspectorGone_) Release();
}

void TInspectorViewMng::Load(bool Loaded) {
    if (Loaded) return;
    SetProjectFormsOnly(false);
    SetDisplayPanel(true);
}

void TInspectorViewMng::Release() {
    if (released_) return;
    released_ = true;
    DeallocateHWnd(messageWindow_);
    messageWindow_ = nullptr;
    SetUpdated(false);
    localItems_.clear();
    editors_.clear();
}

void TInspectorViewMng::InspectorFormDestroy() {
    Release();
    inspector_ = nullptr;
    inspectorForm_ = nullptr;
    inspectorGone_ = true;
}

// ---------------------------------------------------------------------------------------------
// Settings

void TInspectorViewMng::SetDisplayPanel(bool value) {
    if (!updated_ || value == displayPanel_) {
        if (!updated_) displayPanel_ = value;
        return;
    }
    displayPanel_ = value;
    PostMessage(messageWindow_, WM_INSP_SHOWPANEL, value, 0);
}

void TInspectorViewMng::SetProjectFormsOnly(bool value) {
    if (!updated_ || value == projectFormsOnly_) {
        if (!updated_) projectFormsOnly_ = value;
        return;
    }
    projectFormsOnly_ = value;
    DoUpdateFormCombo();
}

void TInspectorViewMng::SetReturnFocus(bool value) {
    returnFocus_ = value;
}

// ---------------------------------------------------------------------------------------------
// The hooks

void TInspectorViewMng::SetUpdated(bool value) {
    if (value == updated_ || !inspectorForm_) return;
    if (value) {
        AddLocalMenuItems();
        HookInspectorEvents();
        AddIDENotifier();
        PostMessage(messageWindow_, WM_INSP_CREATECONTROLS, 0, 0);
    } else {
        RestoreActiveFormChange();
        RestoreInspectorEvents();
        DeleteLocalMenuItems();
        RemoveIDENotifier();
        RemoveEditorNotifiers();
        DestroyInspectorControls();
    }
    updated_ = value;
}

void TInspectorViewMng::WndProc(TMessage& message) {
    try {
        switch (message.Msg) {
        case WM_INSP_CREATECONTROLS: {
            // Making a control on the inspector may take the focus; it goes back.
            QPointer<QWidget> kept = Screen ? Screen->GetActiveControl() : nullptr;
            CreateInspectorControls();
            DoUpdateFormCombo();
            if (kept && kept->isVisible()) kept->setFocus();
            HookActiveFormChange();
            break;
        }
        case WM_INSP_SHOWPANEL:
            if (formPanel_) formPanel_->setVisible(message.WParam != 0);
            break;
        case WM_INSP_UPDATECOMBO:
            comboUpdateReady_ = true;
            // While the module viewer opens and closes modules one by one, the list keeps still;
            // the next notification refills it.
            if (!ModuleBrowsing) UpdateFormCombo();
            break;
        case WM_INSP_RENAMED:
            UpdateFormCombo();
            break;
        case WM_INSP_ACTIVEFORM:
            activeFormReady_ = true;
            if (followActiveForm_)
                SetActiveForm();
            else
                followActiveForm_ = true;
            lastEditor_ = nullptr;
            break;
        default:
            break;
        }
    } catch (...) {
        CheckAddErrorLog(this);
        if (Application) Application->HandleException(this);
    }
}

void TInspectorViewMng::CreateInspectorControls() {
    if (!inspector_ || formPanel_) return;
    inspector_->ensurePolished();
    auto* panel = new QWidget(inspector_);
    panel->setObjectName(QStringLiteral("InspectorFormPanel"));
    panel->setFixedHeight(25);
    auto* combo = new QComboBox(panel);
    combo->setObjectName(QStringLiteral("InspectorFormCombo"));
    combo->setMaxVisibleItems(10);
    auto* row = new QHBoxLayout(panel);
    row->setContentsMargins(1, 1, 0, 0);
    row->addWidget(combo);
    // At the top of the inspector, above what it holds.
    if (auto* box = qobject_cast<QBoxLayout*>(inspector_->layout()))
        box->insertWidget(0, panel);
    else
        panel->setGeometry(0, 0, inspector_->width(), 25);
    panel->setVisible(displayPanel_);
    QObject::connect(combo, &QComboBox::activated, combo, [this] { FormComboChange(); });
    formPanel_ = panel;
    formCombo_ = combo;
}

void TInspectorViewMng::DestroyInspectorControls() {
    delete formPanel_.data();
    formPanel_ = nullptr;
    formCombo_ = nullptr;
}

void TInspectorViewMng::AddLocalMenuItems() {
    popupMenu_ = inspector_->findChild<QMenu*>(QStringLiteral("PopupMenu"));
    if (!popupMenu_) return;
    QAction* before = popupMenu_->actions().value(0);
    for (const TLocalItem& item : LocalItems) {
        auto* action = new QAction(popupMenu_);
        if (item.Tag == 0) {
            action->setSeparator(true);
        } else {
            action->setText(FromBytes(LocaleStr(item.Caption)));
            action->setData(item.Tag);
            action->setObjectName(QStringLiteral("InspectorItem%1").arg(item.Tag));
            action->setCheckable(item.Tag < 4);
            QObject::connect(action, &QAction::triggered, action,
                             [this, action] { InspectorMenuItemClick(action); });
        }
        popupMenu_->insertAction(before, action);
        localItems_.emplace_back(action);
    }
    menuPopup_ = QObject::connect(popupMenu_, &QMenu::aboutToShow, popupMenu_,
                                  [this] { InspectorMenuPopup(); });
}

void TInspectorViewMng::DeleteLocalMenuItems() {
    for (const QPointer<QAction>& item : localItems_)
        delete item.data();
    localItems_.clear();
    QObject::disconnect(menuPopup_);
}

void TInspectorViewMng::InspectorMenuPopup() {
    bool chosen = formCombo_ && formCombo_->currentIndex() >= 0;
    for (const QPointer<QAction>& item : localItems_) {
        if (!item || item->isSeparator()) continue;
        switch (item->data().toInt()) {
        case 1:
            item->setChecked(displayPanel_);
            break;
        case 2:
            item->setChecked(projectFormsOnly_);
            break;
        case 3:
            item->setChecked(returnFocus_);
            break;
        default:
            item->setEnabled(chosen);
        }
    }
}

void TInspectorViewMng::InspectorMenuItemClick(QAction* item) {
    // A check item has flipped its check already.
    switch (item->data().toInt()) {
    case 1:
        SetDisplayPanel(item->isChecked());
        break;
    case 2:
        SetProjectFormsOnly(item->isChecked());
        break;
    case 3:
        SetReturnFocus(item->isChecked());
        break;
    case 4:
        SelectComponent(true);
        break;
    case 5:
        SelectComponent(false);
        break;
    case 6:
        ShowForm();
        break;
    }
}

void TInspectorViewMng::HookInspectorEvents() {
    inspectorDestroyed_ = QObject::connect(inspector_, &QObject::destroyed, qApp,
                                           [this] { InspectorFormDestroy(); });
    closeAllAction_ = nullptr;
    _di_INTAServices services = IDEService<INTAServices>();
    QWidget* actionList = services ? services->GetActionList() : nullptr;
    if (!actionList || !Application) return;
    for (QAction* action : actionList->actions())
        if (action->objectName() == QLatin1String(ide::FileCloseAllCommand)) {
            closeAllAction_ = action;
            oldCloseAll_ = Application->GetActionExecute(action);
            Application->SetActionExecute(
                action, TNotifyEvent::Of<&TInspectorViewMng::CloseAllActionExecute>(this));
            break;
        }
}

void TInspectorViewMng::RestoreInspectorEvents() {
    QObject::disconnect(inspectorDestroyed_);
    if (closeAllAction_ && Application) Application->SetActionExecute(closeAllAction_, oldCloseAll_);
    closeAllAction_ = nullptr;
}

void TInspectorViewMng::CloseAllActionExecute(TObject* Sender) {
    if (oldCloseAll_) oldCloseAll_(Sender);
    // After a close all no notification is awaited: the list is refilled at once.
    UpdateFormCombo();
}

void TInspectorViewMng::HookActiveFormChange() {
    if (!Screen || activeFormChangeHooked_) return;
    oldActiveFormChange_ = Screen->GetOnActiveFormChange();
    Screen->SetOnActiveFormChange(TNotifyEvent::Of<&TInspectorViewMng::FormChange>(this));
    activeFormChangeHooked_ = true;
}

void TInspectorViewMng::RestoreActiveFormChange() {
    if (!Screen || !activeFormChangeHooked_) return;
    Screen->SetOnActiveFormChange(oldActiveFormChange_);
    activeFormChangeHooked_ = false;
}

void TInspectorViewMng::FormChange(TObject* Sender) {
    if (oldActiveFormChange_) oldActiveFormChange_(Sender);
    QWidget* form = GetActiveForm();
    if (!comboUpdateReady_ || !form || !Screen || !Screen->HasDesigner(form)) return;
    // A design form new to the list is discovered the moment it becomes active.
    _di_IOTAFormEditor editor = GetActiveFormEditor();
    if (formCombo_)
        for (int i = 0; i < formCombo_->count(); ++i)
            if (GetEditorFromCombo(i).get() == editor.get()) return;
    DoUpdateFormCombo();
}

void TInspectorViewMng::AddIDENotifier() {
    if (_di_IOTAServices services = IDEService<IOTAServices>())
        ideNotifierIndex_ = services->AddNotifier(MakeInterfaced<TIDENotifier>(this));
}

void TInspectorViewMng::RemoveIDENotifier() {
    if (ideNotifierIndex_ < 0) return;
    if (_di_IOTAServices services = IDEService<IOTAServices>())
        services->RemoveNotifier(ideNotifierIndex_);
    ideNotifierIndex_ = -1;
}

void TInspectorViewMng::RemoveEditorNotifiers() {
    for (const TEditorNotifier& n : editorNotifiers_)
        n.Editor->RemoveNotifier(n.Index);
    editorNotifiers_.clear();
}

// ---------------------------------------------------------------------------------------------
// The list

void TInspectorViewMng::DoUpdateFormCombo() {
    if (!comboUpdateReady_) return;
    comboUpdateReady_ = false;
    PostMessage(messageWindow_, WM_INSP_UPDATECOMBO, 0, 0);
}

void TInspectorViewMng::FormRenamed() {
    PostMessage(messageWindow_, WM_INSP_RENAMED, 0, 0);
}

void TInspectorViewMng::UpdateFormCombo() {
    if (!updated_) return;
    if (formCombo_) lastEditor_ = GetEditorFromCombo(formCombo_->currentIndex());
    FillFormCombo();
    DoSetActiveForm(nullptr);
}

void TInspectorViewMng::FillFormCombo() {
    editors_ = OpenedFormEditors(projectFormsOnly_);
    std::vector<TEditorNotifier> notifiers;
    notifiers.reserve(editors_.size());
    struct TItem {
        std::string Name;
        int Editor;
    };
    std::vector<TItem> items;
    for (int i = int(editors_.size()) - 1; i >= 0; --i) {
        const _di_IOTAFormEditor& editor = editors_[size_t(i)];
        TDesignComponent* component = GetFormFromEditor(_di_IOTAEditor(editor));
        QWidget* root = GetRootControl(component);
        _di_IOTASourceEditor source = GetSourceEditorFromModule(editor->GetModule());
        // A form of a module that is on show in no way is open, but not listed.
        bool shown = (source && source->GetEditViewCount() > 0) || (root && root->isVisible());
        if (!component || !shown) continue;
        auto old = std::find_if(editorNotifiers_.begin(), editorNotifiers_.end(),
                                [&](const TEditorNotifier& n) { return n.Editor.get() == editor.get(); });
        if (old != editorNotifiers_.end()) {
            notifiers.push_back(*old);
            editorNotifiers_.erase(old);
        } else {
            int index = editor->AddNotifier(MakeInterfaced<TFormNotifier>(this, component));
            notifiers.push_back({editor, index});
        }
        items.push_back({component->Name, i});
    }
    // The notifiers of forms that left the list go, whether their editors are open or not: the
    // package's code must not be called once it has gone.
    RemoveEditorNotifiers();
    editorNotifiers_ = std::move(notifiers);
    if (!formCombo_) return;
    std::stable_sort(items.begin(), items.end(),
                     [](const TItem& a, const TItem& b) { return AnsiCompareText(a.Name, b.Name) < 0; });
    QSignalBlocker block(formCombo_);
    formCombo_->clear();
    for (const TItem& item : items)
        formCombo_->addItem(FromBytes(item.Name), item.Editor);
    formCombo_->setCurrentIndex(-1);
}

_di_IOTAFormEditor TInspectorViewMng::GetEditorFromCombo(int index) const {
    if (!formCombo_ || index < 0 || index >= formCombo_->count()) return nullptr;
    size_t at = size_t(formCombo_->itemData(index, EditorRole).toInt());
    return at < editors_.size() ? editors_[at] : nullptr;
}

void TInspectorViewMng::DoSetActiveForm(TDesignComponent* component) {
    if (!activeFormReady_) return;
    activeFormReady_ = false;
    if (!component) {
        activeComponent_ = nullptr;
        PostMessage(messageWindow_, WM_INSP_ACTIVEFORM, 0, 0);
    } else if (component != activeComponent_) {
        activeComponent_ = component;
        PostMessage(messageWindow_, WM_INSP_ACTIVEFORM, reinterpret_cast<uintptr_t>(component), 0);
    } else {
        activeFormReady_ = true;
    }
}

void TInspectorViewMng::SetActiveForm() {
    if (!updated_ || !formCombo_) return;
    _di_IOTAFormEditor editor = GetActiveFormEditor();
    if (!editor) editor = lastEditor_;
    if (!editor) return;
    for (int i = 0; i < formCombo_->count(); ++i)
        if (GetEditorFromCombo(i).get() == editor.get()) {
            formCombo_->setCurrentIndex(i);
            return;
        }
}

void TInspectorViewMng::FormComboChange() {
    _di_IOTAFormEditor editor = GetEditorFromCombo(formCombo_->currentIndex());
    // A stale item must not reach an editor that has closed meanwhile.
    std::vector<_di_IOTAFormEditor> open = OpenedFormEditors(projectFormsOnly_);
    if (editor && std::any_of(open.begin(), open.end(),
                              [&](const _di_IOTAFormEditor& e) { return e.get() == editor.get(); })) {
        followActiveForm_ = false;
        editor->Show();
    }
    if (displayPanel_ && (returnFocus_ || ServiceKeyPressed(VK_CONTROL)) && formCombo_) {
        formCombo_->window()->activateWindow();
        formCombo_->setFocus();
    }
}

void TInspectorViewMng::ShowForm() {
    if (!formCombo_) return;
    if (_di_IOTAFormEditor editor = GetEditorFromCombo(formCombo_->currentIndex()))
        if (_di_IOTAComponent root = editor->GetRootComponent()) root->Focus(false);
}

void TInspectorViewMng::SelectComponent(bool selectForm) {
    if (!formCombo_) return;
    _di_IOTAFormEditor editor = GetEditorFromCombo(formCombo_->currentIndex());
    if (!editor) return;
    _di_IOTAComponent root = editor->GetRootComponent();
    if (!root) return;
    if (selectForm) {
        root->Select(false);
    } else if (editor->GetSelCount() > 0) {
        if (_di_IOTAComponent selected = editor->GetSelComponent(0))
            if (_di_IOTAComponent parent = FindParentComponent(root, selected)) parent->Select(false);
    }
    if (AutoShowForm) root->Focus(false);
}

} // namespace zelvane
