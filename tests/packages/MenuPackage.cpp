// A design-time package for the tests: its wizard puts a menu "Test Pack" beside the IDE's
// "Tools" menu, with one command in the IDE's action list that types a comment into the top
// edit view. Unloading takes the menu and the action away again.
#include "toolsapi/Forms.h"
#include "toolsapi/IDENames.h"
#include "toolsapi/Package.h"
#include "toolsapi/ToolsAPI.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>

using namespace ToolsAPI;

namespace {

class TTestPackWizard : public TNotifierObject, public virtual IOTAWizard {
    RTL_CLASS(TTestPackWizard, TNotifierObject)
public:
    TTestPackWizard() {
        _di_INTAServices services = IDEService<INTAServices>();
        if (!services || !services->GetMainMenu() || !services->GetActionList()) return;
        QMenuBar* bar = services->GetMainMenu();
        // The new menu stands right after the IDE's Tools menu, found by its name.
        QAction* before = nullptr;
        QList<QAction*> items = bar->actions();
        for (int i = 0; i < items.size(); ++i)
            if (items[i]->menu() && items[i]->menu()->objectName() == QLatin1String(ide::ToolsMenu))
                before = i + 1 < items.size() ? items[i + 1] : nullptr;
        menu_ = new QMenu(QStringLiteral("Test &Pack"), bar);
        menu_->setObjectName(QStringLiteral("TestPackMenu"));
        bar->insertMenu(before, menu_);
        action_ = new QAction(QStringLiteral("Insert Greeting"), menu_);
        action_->setObjectName(QStringLiteral("TestPackGreetCommand"));
        action_->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+G")));
        QObject::connect(action_, &QAction::triggered, [] {
            _di_IOTAEditorServices editors = IDEService<IOTAEditorServices>();
            _di_IOTAEditView view = editors ? editors->GetTopView() : nullptr;
            if (view) view->GetPosition()->InsertText("{ greetings from the test pack }");
        });
        services->GetActionList()->addAction(action_);
        menu_->addAction(action_);
        if (Application)
            Application->SetActionUpdate(action_, [](QAction* a) {
                _di_IOTAEditorServices editors = IDEService<IOTAEditorServices>();
                a->setEnabled(editors && editors->GetTopView());
            });
    }
    ~TTestPackWizard() override {
        if (Application && action_) Application->SetActionUpdate(action_, nullptr);
        TTestPackWizard::Destroyed();
    }
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAWizard>(this, iid, obj);
    }
    std::string GetIDString() override { return "Zelvane.TestPack"; }
    std::string GetName() override { return "Test Pack"; }
    TWizardState GetState() override { return WizardState(wsEnabled); }
    void Execute() override {}
    void Destroyed() override {
        // The IDE lets go of the wizard: the menu goes at once.
        delete action_.data();
        delete menu_.data();
    }

private:
    QPointer<QMenu> menu_;
    QPointer<QAction> action_;
};

RTL_IMPLEMENT_CLASS(TTestPackWizard)

} // namespace

extern "C" void Register() {
    RegisterPackageWizard(_di_IOTAWizard(MakeInterfaced<TTestPackWizard>().get()));
}
