#include "experts/viewer/FormView.h"

#include "experts/viewer/ViewForm.h"
#include "host/ExpMenu.h"
#include "host/OTAUtils.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "toolsapi/IDENames.h"

#include <QAction>
#include <QApplication>
#include <QListWidget>
#include <QToolBar>

namespace zelvane {

using namespace rtl;
using namespace ToolsAPI;

RTL_BEGIN_CLASS(TViewFormMng)
Property("DisplayFormScrollbars", &TViewFormMng::DisplayFormScrollbars).Default(false);
Property("DisplayUnitScrollbars", &TViewFormMng::DisplayUnitScrollbars).Default(true);
Property("EditorAutoSave", &TViewFormMng::EditorAutoSave).Default(false);
Property("EditorReadOnly", &TViewFormMng::EditorReadOnly).Default(true);
Property("EllipsisFilePath", &TViewFormMng::EllipsisFilePath).Default(true);
Property("FormEnhancedState", &TViewFormMng::FormEnhancedState).Default(false);
Property("SynchronizeModules", &TViewFormMng::SynchronizeModules).Default(false);
Property("ToolBarUpdated", &TViewFormMng::GetToolBarUpdated, &TViewFormMng::SetToolBarUpdated)
    .Default(false);
Property("GroupedUnits", &TViewFormMng::GroupedUnits).Default(false);
Property("SeparatorAllowed", &TViewFormMng::SeparatorAllowed).Default(false);
Property("SeparatorColor", &TViewFormMng::SeparatorColor).Default(clWindowText);
Property("SeparatorStyle", &TViewFormMng::SeparatorStyle).Default(psDot);
Property("ExtendedDrawing", &TViewFormMng::ExtendedDrawing).Default(false);
Property("FormFont", &TViewFormMng::GetFormFont, &TViewFormMng::SetFormFont);
Property("FormUnitFont", &TViewFormMng::GetFormUnitFont, &TViewFormMng::SetFormUnitFont);
Property("UnitFont", &TViewFormMng::GetUnitFont, &TViewFormMng::SetUnitFont);
Method<&TViewFormMng::ShowForms>("ShowForms");
Method<&TViewFormMng::ShowUnits>("ShowUnits");
Method<&TViewFormMng::UpdateFormViewState>("UpdateFormViewState");
Method<&TViewFormMng::UpdateUnitViewState>("UpdateUnitViewState");
Method<&TViewFormMng::ViewForm>("ViewForm");
Method<&TViewFormMng::ViewUnit>("ViewUnit");
Method<&TViewFormMng::InternalViewForm>("InternalViewForm");
Method<&TViewFormMng::InternalViewUnit>("InternalViewUnit");
Method<&TViewFormMng::FormShow>("FormShow");
RTL_END_CLASS

namespace {

// The captions by which the IDE's view tool bar buttons are known.
const QString ViewUnitCaption = QStringLiteral("View Unit");
const QString ViewFormCaption = QStringLiteral("View Form");

bool ButtonEnabled(const QPointer<QAction>& button) {
    return !button || button->isEnabled();
}

} // namespace

TViewFormMng::TViewFormMng()
    : formFont_(std::make_unique<TFont>()), formUnitFont_(std::make_unique<TFont>()),
      unitFont_(std::make_unique<TFont>()) {
    std::string labels = LabelTemplate(
        "TViewFormMng", {{"DisplacingView", SLabelDisplacingView},
                         {"DisplayFormScrollbars", SLabelDisplayFormScrollbars},
                         {"DisplayUnitScrollbars", SLabelDisplayUnitScrollbars},
                         {"EditorAutoSave", SLabelEditorAutoSave},
                         {"EditorReadOnly", SLabelEditorReadOnly},
                         {"EllipsisFilePath", SLabelEllipsisFilePath},
                         {"FormEnhancedState", SLabelFormEnhancedState},
                         {"SynchronizeModules", SLabelSynchronizeModules},
                         {"ToolBarUpdated", SLabelToolBarUpdated},
                         {"SetFocusToModules", SLabelSetFocusToModules},
                         {"SelectFocusedItem", SLabelSelectFocusedItem},
                         {"GroupedUnits", SLabelGroupedUnits},
                         {"SeparatorAllowed", SLabelSeparatorAllowed},
                         {"SeparatorColor", SLabelSeparatorColor},
                         {"SeparatorStyle", SLabelSeparatorStyle},
                         {"ExtendedDrawing", SLabelExtendedDrawing},
                         {"FormFont", SLabelFormFont},
                         {"FormUnitFont", SLabelFormUnitFont},
                         {"UnitFont", SLabelUnitFont}});
    labels += "\r\n[TPenStyle]\r\npsSolid=Solid\r\npsDash=Dash\r\npsDot=Dot\r\npsDashDot=DashDot"
              "\r\npsDashDotDot=DashDotDot\r\npsClear=Clear\r\npsInsideFrame=InsideFrame";
    AddStoredData(this, "FormUnitViewData", LocaleStr(SFormUnitView), labels);
    mainForm_ = Application ? Application->GetMainForm() : nullptr;
    messageWindow_ = AllocateHWnd([this](TMessage& m) { WndProc(m); });
    if (mainForm_) HookAppFormShow();
}

TViewFormMng::~TViewFormMng() {
    // An open viewer runs this package's code; it gives back what it borrowed before it goes.
    delete form_.data();
    DeallocateHWnd(messageWindow_);
    messageWindow_ = nullptr;
    RestoreAppFormShow();
    SetToolBarUpdated(false);
}

void TViewFormMng::Init(TAddItemFunc AddItem) {
    TExpMenuItemData* forms = AddItem("ViewFormItem");
    forms->Caption = LocaleStr(SViewFormsItem);
    forms->ShortCutText = "Ctrl+D";
    forms->ImageIndex = 21;
    forms->OnExecute = TNotifyEvent::Of<&TViewFormMng::ShowForms>(this);
    forms->OnUpdate = TNotifyEvent::Of<&TViewFormMng::UpdateFormViewState>(this);
    TExpMenuItemData* units = AddItem("ViewUnitItem");
    units->Caption = LocaleStr(SViewUnitsItem);
    units->ShortCutText = "Ctrl+A";
    units->ImageIndex = 20;
    units->OnExecute = TNotifyEvent::Of<&TViewFormMng::ShowUnits>(this);
    units->OnUpdate = TNotifyEvent::Of<&TViewFormMng::UpdateUnitViewState>(this);
}

void TViewFormMng::Load(bool Loaded) {
    // Loaded settings came through the property's setter.
    if (!Loaded) SetToolBarUpdated(true);
}

// ---------------------------------------------------------------------------------------------
// Commands

void TViewFormMng::ShowForms(TObject*) {
    if (CheckFormViewState()) ShowModules(svmForm);
}

void TViewFormMng::ShowUnits(TObject*) {
    if (CheckUnitViewState()) ShowModules(svmUnit);
}

bool TViewFormMng::CheckFormViewState() const {
    return ButtonEnabled(formButton_);
}

bool TViewFormMng::CheckUnitViewState() const {
    return ButtonEnabled(unitButton_);
}

void TViewFormMng::UpdateFormViewState(TObject* Sender) {
    SetSenderEnabled(Sender, CheckFormViewState());
}

void TViewFormMng::UpdateUnitViewState(TObject* Sender) {
    SetSenderEnabled(Sender, CheckUnitViewState());
}

void TViewFormMng::ViewForm(TObject*) {
    ShowModules(svmForm);
}

void TViewFormMng::ViewUnit(TObject*) {
    ShowModules(svmUnit);
}

void TViewFormMng::InternalViewForm(TObject* Sender) {
    if (pPrivateExecProc) pPrivateExecProc(Sender, TNotifyEvent::Of<&TViewFormMng::ViewForm>(this));
}

void TViewFormMng::InternalViewUnit(TObject* Sender) {
    if (pPrivateExecProc) pPrivateExecProc(Sender, TNotifyEvent::Of<&TViewFormMng::ViewUnit>(this));
}

void TViewFormMng::ShowModules(TViewModuleMode mode) {
    ModuleBrowsing = true;
    std::vector<_di_IOTAModuleInfo> chosen;
    TViewModuleMode chosenMode = mode;
    {
        auto* form = MakeForm<TViewForm>(nullptr, this, mode).release();
        form_ = form;
        int result = form->ShowModal();
        // The package may have gone while the window was up; then so has the window.
        if (!form_) return;
        QListWidget* list = form->ModuleList();
        if (result == mrOk && list->count() > 0) {
            bool any = false;
            for (int i = 0; i < list->count(); ++i)
                if (list->item(i)->isSelected()) {
                    chosen.push_back(form->ModuleAt(i));
                    any = true;
                }
            if (!any) chosen.push_back(form->ModuleAt(std::max(list->currentRow(), 0)));
            chosenMode = form->ViewMode();
        }
        form->hide();
        delete form;
    }
    ModuleBrowsing = false;
    for (const _di_IOTAModuleInfo& info : chosen) {
        if (chosenMode == svmForm)
            ShowModule(info, mnkForm, false, DisplacingView);
        else
            ShowModule(info, mnkUnit, false, false);
        if (Application) Application->ProcessMessages();
    }
}

// ---------------------------------------------------------------------------------------------
// The IDE's tool bar and main form

void TViewFormMng::SetToolBarUpdated(bool value) {
    if (value == toolBarUpdated_ || !mainForm_) return;
    if (!value)
        RestoreToolBarButtons();
    else
        PostMessage(messageWindow_, WM_VIEW_HOOKTOOLBAR, 0, 0);
    toolBarUpdated_ = value;
}

void TViewFormMng::HookToolBarButtons() {
    if (!Application) return;
    auto unitHook = TNotifyEvent::Of<&TViewFormMng::InternalViewUnit>(this);
    auto formHook = TNotifyEvent::Of<&TViewFormMng::InternalViewForm>(this);
    _di_INTAServices services = IDEService<INTAServices>();
    if (QToolBar* bar = services ? services->GetToolBar(ide::ViewToolBar) : nullptr) {
        for (QAction* button : bar->actions()) {
            if (button->text() == ViewUnitCaption) {
                if (button == unitButton_ && Application->GetActionExecute(button) == unitHook)
                    return;
                unitButton_ = button;
            } else if (button->text() == ViewFormCaption) {
                if (button == formButton_ && Application->GetActionExecute(button) == formHook)
                    return;
                formButton_ = button;
            }
        }
    }
    if (unitButton_)
        if (TNotifyEvent old = Application->GetActionExecute(unitButton_)) {
            oldUnitClick_ = old;
            Application->SetActionExecute(unitButton_, unitHook);
        }
    if (formButton_)
        if (TNotifyEvent old = Application->GetActionExecute(formButton_)) {
            oldFormClick_ = old;
            Application->SetActionExecute(formButton_, formHook);
        }
}

void TViewFormMng::RestoreToolBarButtons() {
    if (Application) {
        if (unitButton_ && oldUnitClick_) Application->SetActionExecute(unitButton_, oldUnitClick_);
        if (formButton_ && oldFormClick_) Application->SetActionExecute(formButton_, oldFormClick_);
    }
    unitButton_ = nullptr;
    formButton_ = nullptr;
}

void TViewFormMng::HookAppFormShow() {
    oldFormShow_ = Application->GetOnMainFormShow();
    Application->SetOnMainFormShow(TNotifyEvent::Of<&TViewFormMng::FormShow>(this));
}

void TViewFormMng::RestoreAppFormShow() {
    if (mainForm_ && Application) Application->SetOnMainFormShow(oldFormShow_);
}

void TViewFormMng::FormShow(TObject* Sender) {
    if (oldFormShow_) oldFormShow_(Sender);
    if (!firstShow_) return;
    // The tool bars are complete only once the show has run its course.
    if (toolBarUpdated_) PostMessage(messageWindow_, WM_VIEW_HOOKTOOLBAR, 0, 0);
    firstShow_ = false;
}

void TViewFormMng::WndProc(TMessage& message) {
    if (message.Msg != WM_VIEW_HOOKTOOLBAR) return;
    try {
        HookToolBarButtons();
    } catch (...) {
        CheckAddErrorLog(this);
        if (Application) Application->HandleException(this);
    }
}

} // namespace zelvane
