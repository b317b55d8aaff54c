// The inspector's form bar as a user meets it: the list of open design forms at the top of the
// workbench's object inspector, kept in step with the forms the workbench opens, closes, renames
// and activates; its commands at the head of the inspector's pop-up menu; and the inspector as it
// was once the add-in has gone.
#include "tests/addin_gui/AddinFixture.h"
#include "workbench/designer/FormDesigners.h"
#include "workbench/designer/ObjectInspector.h"

using namespace addintest;

namespace {

class InspectorTest : public AddinFixture {
protected:
    void SetUp() override {
        AddinFixture::SetUp();
        closeAll_ = Application->GetActionExecute(main->Action("FileCloseAllCommand"));
        ownItems_ = MenuCaptions(main->Inspector()->PopupMenu()->actions());
        StartAddin();
        ASSERT_TRUE(WaitFor([this] { return Combo() && Combo()->count() > 0; }));
    }

    QComboBox* Combo() const {
        return main->Inspector()->findChild<QComboBox*>("InspectorFormCombo");
    }
    bool ListedIs(const QStringList& names) {
        return WaitFor([&] { return Texts(Combo()) == names; });
    }
    void Choose(const QString& name) {
        Combo()->setCurrentIndex(Combo()->findText(name));
        emit Combo()->activated(Combo()->currentIndex());
    }
    TFormEditor* FormOf(const char* unit) {
        TModelModule* m = model->FindOpenModule(File(unit));
        return m ? m->FormEditor() : nullptr;
    }
    // Opens a unit with its form up in the designer.
    void OpenForm(const char* unit) {
        auto m = model->OpenModuleFile(File(unit), TOpenMode::Show);
        if (m && m->FormEditor()) m->FormEditor()->Show();
        QApplication::processEvents();
    }
    QAction* Item(int tag) const {
        return main->Inspector()->findChild<QAction*>(QStringLiteral("InspectorItem%1").arg(tag));
    }

    TNotifyEvent closeAll_;
    QStringList ownItems_;
};

TEST_F(InspectorTest, TheBarListsTheFormsOnShowAndChoosingOneBringsItUp) {
    EXPECT_TRUE(main->Inspector()->findChild<QWidget*>("InspectorFormPanel")->isVisible());
    EXPECT_TRUE(ListedIs({"MainForm"}));
    OpenForm("Settings.pas");
    // A form open with neither a page nor a visible window is not listed.
    model->OpenModuleFile(File("DataMod.pas"), TOpenMode::Hidden);
    EXPECT_TRUE(ListedIs({"MainForm", "SettingsForm"}));

    Choose("MainForm");
    designer::TDesignerWindow* window = main->Designers()->Window(FormOf("Main.pas"));
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(main->Inspector()->FormEditor(), FormOf("Main.pas"));
    // Its own activation leaves the choice as it is, once the posted refills have run.
    RunLoop(50);
    EXPECT_TRUE(WaitFor([&] { return Combo()->currentText() == QStringLiteral("MainForm"); }));
}

TEST_F(InspectorTest, TheListFollowsOpensClosesRenamesAndTheActiveForm) {
    OpenForm("Settings.pas");
    OpenForm("Frame1.pas");
    ASSERT_TRUE(ListedIs({"InfoFrame", "MainForm", "SettingsForm"}));
    // The form brought to the front is the one chosen in the bar.
    main->Designers()->Window(FormOf("Settings.pas"))->activateWindow();
    EXPECT_TRUE(
        WaitFor([this] { return Combo()->currentText() == QStringLiteral("SettingsForm"); }));

    FormOf("Settings.pas")->GetRootComponent()->SetPropByName("Name", "OptionsForm");
    EXPECT_TRUE(ListedIs({"InfoFrame", "MainForm", "OptionsForm"}));
    // A form closed while chosen: the stale choice reaches nothing, and the list lets it go.
    const int stale = Combo()->findText(QStringLiteral("InfoFrame"));
    model->FindOpenModule(File("Frame1.pas"))->CloseModule(true);
    Combo()->setCurrentIndex(stale);
    emit Combo()->activated(stale);
    EXPECT_EQ(model->FindOpenModule(File("Frame1.pas")), nullptr);
    EXPECT_TRUE(ListedIs({"MainForm", "OptionsForm"}));
    // Close all empties the list at once, with no notification awaited.
    model->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
    Command("FileCloseAllCommand");
    EXPECT_EQ(Combo()->count(), 0);
}

TEST_F(InspectorTest, ThePopupMenuLeadsWithTheBarsCommands) {
    // clang-format off
    const QStringList head = {"Display panel", "Project forms only", "Return focus", "-",
                              "Select parent", "Select form", "-", "Show form", "-"};
    // clang-format on
    QStringList items = MenuCaptions(main->Inspector()->PopupMenu()->actions());
    EXPECT_EQ(items.mid(0, head.size()), head);
    EXPECT_EQ(items.mid(head.size()), ownItems_);

    // The form commands need a form chosen in the bar.
    Combo()->setCurrentIndex(-1);
    emit main->Inspector()->PopupMenu()->aboutToShow();
    EXPECT_TRUE(Item(1)->isChecked());
    EXPECT_FALSE(Item(4)->isEnabled());

    Item(1)->trigger();
    QWidget* panel = main->Inspector()->findChild<QWidget*>("InspectorFormPanel");
    EXPECT_TRUE(WaitFor([&] { return !panel->isVisible(); }));
    Item(1)->trigger();
    EXPECT_TRUE(WaitFor([&] { return panel->isVisible(); }));

    // Select parent goes from a control to the control that holds it; select form to the root.
    Choose("MainForm");
    emit main->Inspector()->PopupMenu()->aboutToShow();
    TFormEditor* form = FormOf("Main.pas");
    _di_IOTAComponent root = form->GetRootComponent();
    _di_IOTAComponent parent, child;
    for (int i = 0; i < root->GetControlCount() && !child; ++i)
        if (_di_IOTAComponent c = root->GetControl(i); c->GetControlCount() > 0) {
            parent = c;
            child = c->GetControl(0);
        }
    ASSERT_TRUE(child) << "the main form has a control that holds another";
    child->Select(false);
    Item(5)->trigger();
    ASSERT_EQ(form->GetSelCount(), 1);
    EXPECT_EQ(form->GetSelComponent(0)->GetComponentHandle(), parent->GetComponentHandle());
    Item(4)->trigger();
    EXPECT_EQ(form->GetSelComponent(0)->GetComponentHandle(), root->GetComponentHandle());
}

TEST_F(InspectorTest, UnloadedTheAddInLeavesTheInspectorAsItWas) {
    StopAddin();
    EXPECT_EQ(main->Inspector()->findChild<QWidget*>("InspectorFormPanel"), nullptr);
    EXPECT_EQ(MenuCaptions(main->Inspector()->PopupMenu()->actions()), ownItems_);
    EXPECT_EQ(Application->GetActionExecute(main->Action("FileCloseAllCommand")), closeAll_);
    Command("FileCloseAllCommand");
    EXPECT_EQ(model->GetModuleCount(), 0);
}

} // namespace
