// The designer in the workbench: a designer window for each form the user opens, the object
// inspector that follows the form in front, selection and renames as the add-in sees them
// through the seam, inspector edits saved with the IDE's commands, forms of other code pages,
// windows lent to another widget, the form/unit toggle, and the CPU window over the example's
// machine snapshot.
#include "host/OTAUtils.h"
#include "tests/workbench_gui/Fixture.h"
#include "workbench/cpu/CPUView.h"
#include "workbench/designer/FormDesigners.h"
#include "workbench/model/FormFile.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>

#include <filesystem>

using namespace wbtest;
using designer::TDesignerWindow;

namespace {

class DesignTest : public WorkbenchFixture {
protected:
    // The designer window of a form, by the form's name; nullptr when it has none.
    TDesignerWindow* Designer(const std::string& formName) const {
        for (TDesignerWindow* w : main->Designers()->Windows())
            if (w->Root() && w->Root()->Name == formName) return w;
        return nullptr;
    }
    // Shows the forms of the units named, as the View Form list does when they are chosen.
    void ViewForms(const QStringList& forms) {
        WhenModal([forms](QWidget* dialog) {
            auto* list = dialog->findChild<QListWidget*>(QStringLiteral("ModuleList"));
            list->clearSelection();
            for (const QString& f : forms)
                for (QListWidgetItem* item : list->findItems(f, Qt::MatchExactly))
                    item->setSelected(true);
            static_cast<QDialog*>(dialog)->accept();
        });
        Command("ViewFormsCommand");
        QApplication::processEvents();
    }
    // Shows a form as the View Form list does, and gives its designer window.
    TDesignerWindow* ShowForm(const char* formName) {
        ViewForms({QString::fromLatin1(formName)});
        return Designer(formName);
    }
    // The top-level window of the screen's list with that name.
    static QWidget* ScreenForm(const QString& name) {
        for (int i = 0; i < Screen->GetFormCount(); ++i)
            if (Screen->GetForm(i)->objectName() == name) return Screen->GetForm(i);
        return nullptr;
    }
    template <class W> static W* Find(QWidget* in, const char* name) {
        return in->findChild<W*>(QString::fromLatin1(name));
    }
    // The selection of the active form editor, as the add-in reads it through the seam.
    static std::vector<std::string> SelectedNames() {
        std::vector<std::string> names;
        _di_IOTAFormEditor editor = zelvane::GetActiveFormEditor();
        if (!editor) return names;
        for (int i = 0; i < editor->GetSelCount(); ++i) {
            std::string name;
            editor->GetSelComponent(i)->GetPropValueByName("Name", name);
            names.push_back(name);
        }
        return names;
    }
    designer::TObjectInspector* Inspector() const { return main->Inspector(); }
};

// ---------------------------------------------------------------------------------------------
// Designer windows and the inspector

TEST_F(DesignTest, TheInspectorIsAFormOfTheScreenThatFollowsTheFormShown) {
    QWidget* inspector = ScreenForm(QStringLiteral("PropertyInspector"));
    ASSERT_EQ(inspector, Inspector());
    EXPECT_TRUE(inspector->isVisible());
    ASSERT_NE(Inspector()->PopupMenu(), nullptr);
    // The example opens on its main form, which the inspector shows.
    ASSERT_NE(Inspector()->FormEditor(), nullptr);
    EXPECT_EQ(Inspector()->Component()->Name, "MainForm");

    ViewForms({"SettingsForm"});
    EXPECT_EQ(Inspector()->Component()->Name, "SettingsForm");
    EXPECT_EQ(Inspector()->ValueText(QStringLiteral("BorderStyle")), "bsDialog");

    // Hidden, F11 brings it back.
    Inspector()->hide();
    Command("ViewObjInspCommand");
    EXPECT_TRUE(Inspector()->isVisible());
}

TEST_F(DesignTest, AClickInADesignerSelectsTheComponentForTheSeamAndTheInspector) {
    TDesignerWindow* w = ShowForm("MainForm");
    ASSERT_NE(w, nullptr);
    QTest::mouseClick(Find<QLineEdit>(w, "NameEdit"), Qt::LeftButton, {}, QPoint(3, 3));
    // The window came to the front: its module is the active one, as the add-in asks for it.
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"NameEdit"});
    _di_IOTAFormEditor editor = zelvane::GetActiveFormEditor();
    ASSERT_TRUE(editor);
    EXPECT_EQ(editor->GetSelComponent(0)->GetComponentType(), "TEdit");
    EXPECT_EQ(Inspector()->Component()->Name, "NameEdit");
    EXPECT_EQ(Inspector()->ComponentList()->currentText(), "NameEdit: TEdit");

    // Choosing in the inspector's list selects in the designer.
    int ok = Inspector()->ComponentList()->findText(QStringLiteral("OkButton: TButton"));
    ASSERT_GE(ok, 0);
    Inspector()->ComponentList()->setCurrentIndex(ok);
    emit Inspector()->ComponentList()->activated(ok);
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"OkButton"});
    ASSERT_EQ(w->SelectionRects().size(), 1);
    EXPECT_EQ(w->SelectionRects()[0].size(), Find<QPushButton>(w, "OkButton")->size());
}

TEST_F(DesignTest, AnInspectorEditSavedWithSaveAllIsInTheBinaryFormFile) {
    TDesignerWindow* w = ShowForm("SettingsForm");
    ASSERT_NE(w, nullptr);
    ASSERT_TRUE(zelvane::GetActiveFormEditor()->FindComponent("CancelButton")->Select(false));
    ASSERT_TRUE(Inspector()->EditValue(QStringLiteral("Left"), QStringLiteral("140")))
        << Inspector()->ErrorText().toStdString();
    EXPECT_EQ(Find<QPushButton>(w, "CancelButton")->x(), 140);
    Command("FileSaveAllCommand");
    EXPECT_TRUE(errors.empty()) << errors.front();
    EXPECT_FALSE(zelvane::GetActiveFormEditor()->GetModified());

    // Binary it was, binary it stays, with the value (the bytes are the inspector's tests').
    EXPECT_EQ(testfiles::ReadFile(File("Settings.dfm")).substr(0, 4), "TPF0");
    EXPECT_EQ(
        LoadFormFile(File("Settings.dfm")).Root->FindComponent("CancelButton")->IntProp("Left"),
        140);
}

// How a lent window comes back is the designer's tests' matter; here, that it leaves the
// screen's forms while it is lent and a click in it still selects.
TEST_F(DesignTest, ADesignerWindowLentToAnotherWidgetLeavesTheScreensFormsTillItComesBack) {
    TDesignerWindow* w = ShowForm("SettingsForm");
    ASSERT_NE(w, nullptr);
    QWidget viewer;
    viewer.show();
    w->Borrow(&viewer);
    EXPECT_EQ(ScreenForm(QStringLiteral("SettingsForm")), nullptr);
    QTest::mouseClick(Find<QPushButton>(w, "OkButton"), Qt::LeftButton, {}, QPoint(3, 3));
    EXPECT_EQ(w->Editor()->Selection().front()->Name, "OkButton");
    w->GiveBack();
    EXPECT_EQ(ScreenForm(QStringLiteral("SettingsForm")), w);
}

TEST_F(DesignTest, ToggleFormUnitGoesFromTheFormToItsUnitAndBack) {
    TDesignerWindow* w = ShowForm("SettingsForm");
    ASSERT_NE(w, nullptr);
    w->activateWindow();
    ASSERT_TRUE(WaitFor([&] { return w->isActiveWindow(); }));
    Command("ViewSwapSourceFormCommand");
    ASSERT_TRUE(WaitFor([&] { return EditWindow()->isActiveWindow(); }));
    EXPECT_EQ(ShownFile(), "Settings.pas");
    Command("ViewSwapSourceFormCommand");
    ASSERT_TRUE(WaitFor([&] { return w->isActiveWindow(); }));
    // F12 pressed in the designer window does the same: the IDE's keys work in its forms.
    Application->UpdateActions();
    QTest::keyClick(w->Surface(), Qt::Key_F12);
    EXPECT_TRUE(WaitFor([&] { return EditWindow()->isActiveWindow(); }));
}

TEST_F(DesignTest, ClosingAFormsUnitClosesItsDesignerAndTheInspectorLetsGo) {
    QPointer<TDesignerWindow> w = ShowForm("SettingsForm");
    ASSERT_TRUE(w);
    ASSERT_EQ(Inspector()->Component()->Name, "SettingsForm");
    _di_IOTAModule module = zelvane::GetActiveModule();
    ASSERT_TRUE(module);
    ASSERT_TRUE(module->CloseModule(true));
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(w.isNull());
    EXPECT_EQ(Designer("SettingsForm"), nullptr);
    EXPECT_EQ(Inspector()->Grid()->topLevelItemCount(), 0);
    EXPECT_NE(Designer("MainForm"), nullptr); // the other forms stay
}

TEST_F(DesignTest, AFrameThatPlacesItselfInlineShowsToAFiniteDepth) {
    testfiles::WriteFile(File("Loop.pas"),
                         "unit Loop;\r\n\r\ninterface\r\n\r\nuses Forms;\r\n\r\ntype\r\n"
                         "  TLoopFrame = class(TFrame)\r\n    LoopFrame1: TLoopFrame;\r\n  end;\r\n"
                         "\r\nimplementation\r\n\r\n{$R *.dfm}\r\n\r\nend.\r\n");
    testfiles::WriteFile(File("Loop.dfm"), "object LoopFrame: TLoopFrame\r\n"
                                           "  Width = 200\r\n"
                                           "  Height = 100\r\n"
                                           "  inline LoopFrame1: TLoopFrame\r\n"
                                           "    Left = 8\r\n"
                                           "  end\r\n"
                                           "end\r\n");
    Open("Loop.pas");
    Command("ViewSwapSourceFormCommand");
    EXPECT_TRUE(errors.empty()) << errors.front();
    TDesignerWindow* w = Designer("LoopFrame");
    ASSERT_NE(w, nullptr);
    EXPECT_TRUE(w->isVisible());
    // Each level shows the frame once more, and the levels end.
    int frames = 0;
    for (QWidget* child : w->findChildren<QWidget*>())
        if (child->objectName() == QStringLiteral("LoopFrame1")) ++frames;
    EXPECT_GT(frames, 1);
    EXPECT_LE(frames, 64);
}

TEST_F(DesignTest, ClosingADesignerWindowClosesItsModuleAfterConfirm) {
    QPointer<TDesignerWindow> w = ShowForm("SettingsForm");
    ASSERT_TRUE(w);
    ASSERT_TRUE(zelvane::GetActiveFormEditor()->FindComponent("OkButton")->Select(false));
    ASSERT_TRUE(Inspector()->EditValue(QStringLiteral("Top"), QStringLiteral("200")));
    std::string onDisk = testfiles::ReadFile(File("Settings.dfm"));
    // Cancel: the module and its window stay.
    AnswerConfirm(QMessageBox::Cancel);
    EXPECT_FALSE(w->close());
    EXPECT_TRUE(w->isVisible());
    ASSERT_NE(model->FindOpenModule(File("Settings.pas")), nullptr);
    // No: the module closes with its unit, and the form file is as it was.
    AnswerConfirm(QMessageBox::No);
    EXPECT_TRUE(w->close());
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(w.isNull());
    EXPECT_EQ(model->FindOpenModule(File("Settings.pas")), nullptr);
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Main"}));
    EXPECT_EQ(testfiles::ReadFile(File("Settings.dfm")), onDisk);
}

// A notifier of the IDE that refuses to let a file close by raising.
struct TRaisingOnClose : TNotifierObject, virtual IOTAIDENotifier {
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAIDENotifier>(this, iid, obj);
    }
    void FileNotification(TOTAFileNotification code, const std::string&, bool&) override {
        if (code == ofnFileClosing) throw rtl::Exception("Closing is refused here");
    }
    void BeforeCompile(const _di_IOTAProject&, bool&) override {}
    void AfterCompile(bool) override {}
};

TEST_F(DesignTest, AModuleThatFailsToCloseKeepsItsDesignerWindowAndTheErrorIsShown) {
    TDesignerWindow* w = ShowForm("SettingsForm");
    ASSERT_NE(w, nullptr);
    _di_IOTAServices services = IDEService<IOTAServices>();
    int index = services->AddNotifier(_di_IOTAIDENotifier(MakeInterfaced<TRaisingOnClose>().get()));
    EXPECT_FALSE(w->close());
    services->RemoveNotifier(index);
    EXPECT_TRUE(w->isVisible());
    EXPECT_EQ(Designer("SettingsForm"), w);
    EXPECT_NE(model->FindOpenModule(File("Settings.pas")), nullptr);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0], "Closing is refused here.");
}

// ---------------------------------------------------------------------------------------------
// The CPU window

using CPUWindowTest = DesignTest;

// What the panes show of the snapshot is the CPU window's own tests' matter; here, that the
// command opens the window over the snapshot beside the project, once.
TEST_F(CPUWindowTest, TheCPUCommandOpensTheSnapshotBesideTheProject) {
    EXPECT_EQ(main->CPUWindow(), nullptr);
    EXPECT_EQ(ScreenForm(QStringLiteral("DisassemblyView")), nullptr);
    Command("ViewCPUCommand");
    QWidget* cpu = ScreenForm(QStringLiteral("DisassemblyView"));
    ASSERT_NE(cpu, nullptr);
    EXPECT_EQ(cpu, main->CPUWindow());
    EXPECT_TRUE(cpu->isVisible());
    // The snapshot stops at EIP, inside Sum.
    QObject* code = cpu->findChild<QObject*>(QStringLiteral("DisassemblerView1"));
    ASSERT_NE(code, nullptr);
    EXPECT_EQ(code->property("SelectedAddress").toLongLong(), 0x408A72);
    // Again: the same window to the front.
    Command("ViewCPUCommand");
    EXPECT_EQ(main->CPUWindow(), cpu);
}

TEST_F(CPUWindowTest, ASnapshotThatCannotBeReadIsReportedAndOpensNothing) {
    testfiles::WriteFile(File("Broken.snapshot"), "[code]\n00408A70  03D0\n[registers]\nEAX = x\n");
    main->SetSnapshotFile(File("Broken.snapshot"));
    Command("ViewCPUCommand");
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_NE(errors[0].find("Broken.snapshot"), std::string::npos) << errors[0];
    EXPECT_EQ(main->CPUWindow(), nullptr);
    EXPECT_EQ(ScreenForm(QStringLiteral("DisassemblyView")), nullptr);
}

TEST_F(CPUWindowTest, WithoutASnapshotTheCommandAsksForOneAndCancelOpensNothing) {
    std::filesystem::remove(File("Hello.snapshot"));
    bool asked = false;
    WhenModal([&](QWidget* dialog) {
        asked = qobject_cast<QFileDialog*>(dialog) != nullptr;
        static_cast<QDialog*>(dialog)->reject();
    });
    Command("ViewCPUCommand");
    EXPECT_TRUE(asked);
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(main->CPUWindow(), nullptr);
}

} // namespace
