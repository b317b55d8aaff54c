// The module viewer as a user meets it: opened from the workbench's tool bar and from its hot
// keys in place of the workbench's own lists, its lists in each mode, the preview that borrows
// the designer window and the editor and gives them back, and the modules opened on OK.
#include "tests/addin_gui/AddinFixture.h"
#include "workbench/designer/FormDesigners.h"

using namespace addintest;

namespace {

class ViewerTest : public AddinFixture {
protected:
    void SetUp() override {
        AddinFixture::SetUp();
        for (int i = 0; i < 2; ++i)
            original_[i] =
                Application->GetActionExecute(Button(i == 0 ? "ViewUnitButton" : "ViewFormButton"));
        StartAddin();
        // The tool bar is taken over once the posted hook has run.
        ASSERT_TRUE(WaitFor([this] { return Hooked(); }));
    }

    QAction* Button(const char* name) const { return main->findChild<QAction*>(name); }
    bool Hooked() const {
        return Application->GetActionExecute(Button("ViewUnitButton")) != original_[0] &&
               Application->GetActionExecute(Button("ViewFormButton")) != original_[1];
    }

    static QWidget* Viewer() { return TopWindow("ViewForm"); }
    template <class T> static T* Child(const char* name) { return Viewer()->findChild<T*>(name); }
    static QListWidget* List() { return Child<QListWidget>("ModuleList"); }
    static QString Status(int panel) {
        return Child<QLabel>(qPrintable(QStringLiteral("StatusPanel%1").arg(panel)))->text();
    }
    static TNames Items() { return Texts(List()); }
    static void Choose(int row, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        Click(List(), row, mods);
    }
    static int Row(const char* name) {
        for (int i = 0; i < List()->count(); ++i)
            if (List()->item(i)->text() == QLatin1String(name)) return i;
        ADD_FAILURE() << name << " is not listed";
        return 0;
    }
    // Which of the preview's boxes and panels show.
    static QString Shown() {
        QStringList r;
        for (const char* name : {"ControlPanel", "FormBox", "UnitBox", "StatusPanel1"})
            if (Child<QWidget>(name)->isVisible()) r << name;
        return r.join(' ');
    }
    static void Preview(bool on) {
        auto* more = Child<QToolButton>("btnMore");
        if (more->isChecked() != on) more->click();
    }
    static void SwitchMode(int mode) {
        QComboBox* choice = Child<QComboBox>("ModuleChoice");
        choice->setCurrentIndex(mode);
        emit choice->activated(mode);
    }

    // Opens the viewer with open(), runs body in it, and closes it with the button named, unless
    // body closed it.
    void InViewer(const std::function<void()>& open, const std::function<void()>& body,
                  const char* closeWith = "btnCancel") {
        bool ran = false;
        WhenModal([&](QWidget* w) {
            ran = w->objectName() == QStringLiteral("ViewForm");
            if (ran) body();
            if (Viewer()) Child<QPushButton>(closeWith)->click();
        });
        // The buttons are enabled by the update the workbench runs when idle.
        Application->UpdateActions();
        open();
        EXPECT_TRUE(ran);
        EXPECT_EQ(Viewer(), nullptr);
    }
    void InFormViewer(const std::function<void()>& body, const char* closeWith = "btnCancel") {
        InViewer([this] { Button("ViewFormButton")->trigger(); }, body, closeWith);
    }
    void InUnitViewer(const std::function<void()>& body, const char* closeWith = "btnCancel") {
        InViewer([this] { Button("ViewUnitButton")->trigger(); }, body, closeWith);
    }

    // The designer window of a form that the workbench has open, or nullptr.
    QWidget* DesignerOf(const char* formName) const {
        for (designer::TDesignerWindow* w : main->Designers()->Windows())
            if (w->Root() && w->Root()->Name == formName) return w;
        return nullptr;
    }
    bool IsOpen(const std::string& file) const {
        return model->FindOpenModule(File(file)) != nullptr;
    }

    TNotifyEvent original_[2];
};

TEST_F(ViewerTest, ToolBarButtonsAndHotKeysOpenTheViewerUntilTheAddInGoes) {
    struct TCase {
        const char* Name;
        std::function<void()> Open;
        QString Caption;
    };
    const TCase cases[] = {
        {"View Unit button", [this] { Button("ViewUnitButton")->trigger(); }, "View Unit"},
        {"View Form button", [this] { Button("ViewFormButton")->trigger(); }, "View Form"},
        {"Ctrl+A", [this] { PressInEditor(Qt::Key_A, Qt::ControlModifier); }, "View Unit"},
        {"Ctrl+D", [this] { PressInEditor(Qt::Key_D, Qt::ControlModifier); }, "View Form"},
    };
    for (const TCase& c : cases) {
        SCOPED_TRACE(c.Name);
        EditWindow()->activateWindow();
        ASSERT_TRUE(WaitFor([this] { return EditWindow()->isActiveWindow(); }));
        QString caption;
        InViewer(c.Open, [&] { caption = Viewer()->windowTitle(); });
        EXPECT_EQ(caption, c.Caption);
    }

    // Unloaded, the add-in gives the buttons their own handlers back.
    StopAddin();
    EXPECT_EQ(Application->GetActionExecute(Button("ViewUnitButton")), original_[0]);
    EXPECT_EQ(Application->GetActionExecute(Button("ViewFormButton")), original_[1]);
    QString dialog;
    WhenModal([&](QWidget* w) {
        dialog = w->objectName();
        w->close();
    });
    Button("ViewUnitButton")->trigger();
    EXPECT_EQ(dialog, QStringLiteral("ViewUnitDialog"));
}

TEST_F(ViewerTest, ListsShowFormsOrUnitsSortedAndGroupedAsConfigured) {
    TNames forms, units, switched;
    InFormViewer([&] {
        forms = Items();
        SwitchMode(1);
        units = Items();
    });
    EXPECT_EQ(forms, TNames({"DataModuleMain", "InfoFrame", "MainForm", "SettingsForm"}));
    EXPECT_EQ(units, TNames({"DataMod", "Frame1", "Main", "Settings", "Utils"}));

    // Grouped, units without a form come last; a mode switch that synchronises keeps the module.
    SetStoredValues({{"GroupedUnits", "False", "True"}, {"SynchronizeModules", "False", "True"}});
    ASSERT_TRUE(WaitFor([this] { return Hooked(); }));
    std::string selectedUnit;
    InUnitViewer([&] {
        units = Items();
        Choose(Row("Settings"));
        SwitchMode(0);
        selectedUnit = List()->currentItem()->text().toStdString();
    });
    EXPECT_EQ(units, TNames({"DataMod", "Frame1", "Main", "Settings", "Utils"}));
    EXPECT_EQ(selectedUnit, "SettingsForm");
}

TEST_F(ViewerTest, PreviewBorrowsTheDesignerWindowAndGivesItBack) {
    QWidget* mainDesigner = DesignerOf("MainForm");
    ASSERT_NE(mainDesigner, nullptr) << "the example opens with its main form";
    const QPoint home = mainDesigner->pos();
    const bool wasVisible = mainDesigner->isVisible();
    ASSERT_FALSE(IsOpen("Settings.pas"));

    InFormViewer([&] {
        Preview(true);
        QWidget* panel = Child<QWidget>("FormPanel");
        Choose(Row("SettingsForm"));
        ASSERT_TRUE(WaitFor([&] {
            return DesignerOf("SettingsForm") &&
                   DesignerOf("SettingsForm")->parentWidget() == panel;
        }));
        EXPECT_TRUE(IsOpen("Settings.pas"));
        EXPECT_EQ(panel->size(), DesignerOf("SettingsForm")->size());
        EXPECT_EQ(Status(1), QStringLiteral("TForm"));
        EXPECT_TRUE(Status(2).endsWith(QStringLiteral("Settings.dfm")));
        EXPECT_FALSE(panel->isEnabled());

        // On to a form that was open: the one the preview opened is closed again, unasked.
        Choose(Row("MainForm"));
        ASSERT_TRUE(WaitFor([&] { return mainDesigner->parentWidget() == panel; }));
        EXPECT_FALSE(IsOpen("Settings.pas"));
        // A click on the form shown moves nothing.
        Choose(Row("MainForm"));
        RunLoop(50);
        EXPECT_EQ(mainDesigner->parentWidget(), panel);
    });
    EXPECT_TRUE(mainDesigner->isWindow());
    EXPECT_EQ(mainDesigner->pos(), home);
    EXPECT_EQ(mainDesigner->isVisible(), wasVisible);
    EXPECT_TRUE(IsOpen("Main.pas"));
    EXPECT_TRUE(errors.empty()) << errors.front();
}

TEST_F(ViewerTest, PreviewBorrowsTheEditorReadOnlyAndGivesItBackIntoItsWindow) {
    TEditView* mainView = View();
    ASSERT_NE(mainView, nullptr);
    const QRect editorHome = Editor()->geometry();
    bool readOnlyInPreview = false, editWindowHidden = false;
    InUnitViewer([&] {
        Preview(true);
        QWidget* box = Child<QWidget>("UnitBox");
        Choose(Row("Utils"));
        ASSERT_TRUE(WaitFor([&] {
            return Editor()->parentWidget() == box && View() &&
                   View()->Buffer().GetFileName() == File("Utils.pas");
        }));
        readOnlyInPreview = View()->Buffer().IsReadOnly();
        editWindowHidden = !EditWindow()->isVisible();
        EXPECT_EQ(Editor()->geometry(), box->contentsRect());
        // The main unit was open and writable; shown in the preview it is read-only too.
        Choose(Row("Main"));
        ASSERT_TRUE(WaitFor([&] { return View() == mainView; }));
        EXPECT_TRUE(mainView->Buffer().IsReadOnly());
    });
    EXPECT_TRUE(readOnlyInPreview);
    EXPECT_TRUE(editWindowHidden);
    // Everything home: the editor in its window's layout, the window up, the unit the preview
    // opened closed, the one that was open writable again and on top.
    EXPECT_EQ(Editor()->parentWidget(), EditWindow());
    ASSERT_TRUE(WaitFor([this] { return EditWindow()->isVisible(); }));
    EXPECT_EQ(Editor()->geometry(), editorHome);
    EditWindow()->resize(EditWindow()->size() + QSize(40, 30));
    QApplication::processEvents();
    EXPECT_EQ(Editor()->width(), editorHome.width() + 40);
    EXPECT_FALSE(IsOpen("Utils.pas"));
    EXPECT_FALSE(mainView->Buffer().IsReadOnly());
    EXPECT_EQ(View(), mainView);
}

TEST_F(ViewerTest, ThePreviewWidensTheWindowAndEachModeShowsItsOwnBoxAndPanels) {
    InFormViewer([&] {
        const int narrow = Viewer()->width();
        Preview(true);
        EXPECT_EQ(Viewer()->width(), narrow + 250);
        EXPECT_EQ(Shown(), "ControlPanel FormBox StatusPanel1");
        SwitchMode(1);
        EXPECT_EQ(Viewer()->windowTitle(), QStringLiteral("View Unit"));
        EXPECT_EQ(Shown(), "ControlPanel UnitBox");
        Preview(false);
        EXPECT_EQ(Shown(), "");
        EXPECT_LT(Viewer()->width(), narrow + 250);
    });
}

TEST_F(ViewerTest, ThePopupMenuSwitchesSettingsButTheUnitScrollBarItemKeepsItsCheck) {
    InFormViewer([&] {
        QAction* scrollbars = Child<QAction>("N3");
        scrollbars->trigger();
        EXPECT_TRUE(scrollbars->isChecked());
        EXPECT_EQ(Child<QScrollArea>("FormBox")->verticalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
        SwitchMode(1);
        emit Child<QMenu>("PopupMenu1")->aboutToShow();
        const bool before = scrollbars->isChecked();
        scrollbars->trigger();
        EXPECT_EQ(scrollbars->isChecked(), before);
        Child<QAction>("N1")->trigger();
        EXPECT_TRUE(Child<QAction>("N1")->isChecked());
    });
    // The switches were stored.
    StopAddin();
    EXPECT_NE(SettingsText().find("DisplayFormScrollbars = True"), std::string::npos);
    EXPECT_NE(SettingsText().find("SynchronizeModules = True"), std::string::npos);
}

TEST_F(ViewerTest, TheBlockCommandsWorkOnThePreviewedUnitWhoseEditIsSavedWhenAsked) {
    SetStoredValues({{"EditorReadOnly", "True", "False"}, {"EditorAutoSave", "False", "True"}});
    ASSERT_TRUE(WaitFor([this] { return Hooked(); }));
    const std::string before = testfiles::ReadFile(File("Utils.pas"));
    InUnitViewer([&] {
        Preview(true);
        Choose(Row("Utils"));
        ASSERT_TRUE(
            WaitFor([&] { return View() && View()->Buffer().GetFileName() == File("Utils.pas"); }));
        Mark(View(), {1, 1}, {3, 1});
        Application->UpdateActions();
        QTest::keyClick(List(), Qt::Key_Period, Qt::ControlModifier);
        EXPECT_EQ(View()->Buffer().Buffer().Line(1).substr(0, 1), " ");
    });
    // The unit the preview opened was saved with the change, and closed.
    EXPECT_FALSE(IsOpen("Utils.pas"));
    const std::string after = testfiles::ReadFile(File("Utils.pas"));
    EXPECT_NE(after, before);
    EXPECT_EQ(after.substr(0, 1), " ");
}

TEST_F(ViewerTest, OkOpensEveryChosenModuleAfterTheViewerHasGone) {
    InUnitViewer(
        [&] {
            Choose(Row("Settings"));
            Choose(Row("Utils"), Qt::ControlModifier);
        },
        "btnOk");
    EXPECT_TRUE(IsOpen("Settings.pas"));
    EXPECT_TRUE(IsOpen("Utils.pas"));
    EXPECT_EQ(View()->Buffer().GetFileName(), File("Utils.pas"));

    // With nothing selected, the focused item is opened.
    InFormViewer(
        [&] { List()->setCurrentRow(Row("DataModuleMain"), QItemSelectionModel::NoUpdate); },
        "btnOk");
    EXPECT_TRUE(IsOpen("DataMod.pas"));
}

TEST_F(ViewerTest, FaultsLeaveNothingBorrowedAndNoModuleOpenThatTheUserDidNotOpen) {
    // A form file that can't be read, or is missing: the viewer stays, nothing stays open.
    struct TCase {
        const char* Name;
        const char* Form;
        const char* Text;
    };
    const TCase cases[] = {
        {"damaged", "Settings.dfm", "object SettingsForm: TForm\n  Caption = 'x\n"},
        {"missing", "DataMod.dfm", nullptr}};
    for (const TCase& c : cases) {
        SCOPED_TRACE(c.Name);
        if (c.Text)
            testfiles::WriteFile(File(c.Form), c.Text);
        else
            std::filesystem::remove(File(c.Form));
        std::string unit = std::filesystem::path(c.Form).replace_extension(".pas").string();
        InFormViewer([&] {
            Preview(true);
            Choose(Row(c.Form[0] == 'S' ? "SettingsForm" : "DataModuleMain"));
            RunLoop(100);
            EXPECT_NE(Viewer(), nullptr);
        });
        EXPECT_FALSE(IsOpen(unit));
    }

    // A module closed behind the preview's back, then the viewer closed.
    InUnitViewer([&] {
        Preview(true);
        Choose(Row("Utils"));
        ASSERT_TRUE(WaitFor([&] { return IsOpen("Utils.pas"); }));
        model->FindOpenModule(File("Utils.pas"))->CloseModule(true);
        QApplication::processEvents();
    });
    EXPECT_EQ(Editor()->parentWidget(), EditWindow());
    EXPECT_TRUE(WaitFor([this] { return EditWindow()->isVisible(); }));

    // A project without units: an empty list, and OK opens nothing.
    model->CloseAll();
    testfiles::WriteFile(File("Empty.dpr"), "program Empty;\r\nbegin\r\nend.\r\n");
    main->OpenProject(File("Empty.dpr"));
    const int modules = model->GetModuleCount();
    size_t listed = 1;
    InFormViewer([&] { listed = Items().size(); }, "btnOk");
    EXPECT_EQ(listed, 0u);
    EXPECT_EQ(model->GetModuleCount(), modules);
    model->CloseAll();
    main->OpenProject(File("Example.dpr"));

    // The IDE quitting while a form is lent out: the viewer's loop ends, the form goes home.
    QWidget* mainDesigner = DesignerOf("MainForm");
    InFormViewer([&] {
        Preview(true);
        Choose(Row("MainForm"));
        ASSERT_TRUE(WaitFor([&] { return !mainDesigner->isWindow(); }));
        QCoreApplication::exit(0);
    });
    EXPECT_TRUE(mainDesigner->isWindow());
    // The quit holds for every event loop until the application's own loop has run once more.
    QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(0); });
    QCoreApplication::exec();
}

} // namespace
