// The workbench on the example project: its main menu, action list and tool bars, the edit
// window's tab row and pages, editing in the source editor (typing, stream and column blocks,
// undo, read-only), and closing a modified unit through the "Confirm" question.
#include "host/CrtlUtils.h"
#include "host/OTAUtils.h"
#include "tests/workbench_gui/Fixture.h"
#include "workbench/designer/FormDesigners.h"

#include <QAbstractButton>
#include <QAction>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QToolBar>
#include <QTreeWidget>

using namespace wbtest;

namespace {

using Strings = std::vector<std::string>;

QStringList ScreenFormNames() {
    QStringList r;
    for (int i = 0; i < Screen->GetFormCount(); ++i)
        r << Screen->GetForm(i)->objectName();
    return r;
}

QAction* ViewButton(const char* caption) {
    for (QAction* a : IDEService<INTAServices>()->GetToolBar("ViewToolBar")->actions())
        if (a->text() == QLatin1String(caption)) return a;
    return nullptr;
}

// Clicks a View tool button, picks choice in the module list it shows, and gives what it listed.
QStringList PickFromViewList(const char* button, const char* choice) {
    QAction* action = ViewButton(button);
    EXPECT_NE(action, nullptr) << button;
    QStringList listed;
    WhenModal([&](QWidget* dialog) {
        EXPECT_EQ(dialog->windowTitle(), QLatin1String(button));
        auto* list = dialog->findChild<QListWidget*>(QStringLiteral("ModuleList"));
        ASSERT_NE(list, nullptr);
        for (int i = 0; i < list->count(); ++i)
            listed << list->item(i)->text();
        list->clearSelection();
        list->findItems(QLatin1String(choice), Qt::MatchExactly).first()->setSelected(true);
        static_cast<QDialog*>(dialog)->accept();
    });
    Application->UpdateActions();
    if (action) action->trigger();
    return listed;
}

// Answers the next input dialog with a text or a number.
void AnswerInput(const QVariant& value) {
    WhenModal([value](QWidget* dialog) {
        auto* input = qobject_cast<QInputDialog*>(dialog);
        ASSERT_NE(input, nullptr);
        if (value.typeId() == QMetaType::Int)
            input->setIntValue(value.toInt());
        else
            input->setTextValue(value.toString());
        input->accept();
    });
}

class WorkbenchTest : public WorkbenchFixture {
protected:
    // Drags the mouse over the editor from one text position to another.
    void Drag(TTextPos from, TTextPos to, Qt::KeyboardModifiers mods) {
        QWidget* port = Editor()->viewport();
        QPoint a = Editor()->PointOf(from) + QPoint(1, 2), b = Editor()->PointOf(to) + QPoint(1, 2);
        QTest::mousePress(port, Qt::LeftButton, mods, a);
        QMouseEvent move(QEvent::MouseMove, b, port->mapToGlobal(b), Qt::NoButton, Qt::LeftButton,
                         mods);
        QApplication::sendEvent(port, &move);
        QTest::mouseRelease(port, Qt::LeftButton, mods, b);
    }
    std::string Block() const {
        TSourceEditor& b = View()->Buffer();
        if (!b.BlockValid()) return "none";
        auto at = [](TTextPos p) { return std::to_string(p.Row) + "," + std::to_string(p.Col); };
        return std::string(b.Block().Style == btColumn ? "column " : "stream ") +
               at(b.BlockStart()) + "-" + at(b.BlockEnd());
    }
};

// ---------------------------------------------------------------------------------------------
// Main form

TEST_F(WorkbenchTest, TheMainFormGivesTheIDEsMenuActionsToolBarAndImages) {
    _di_INTAServices services = IDEService<INTAServices>();
    ASSERT_TRUE(services);
    ASSERT_EQ(services->GetMainMenu(), main->menuBar());
    EXPECT_EQ(ActionTexts(main->menuBar()->actions()),
              QStringList({"File", "Edit", "Search", "View", "Project", "Run", "Component", "Tools",
                           "Help"}));
    QStringList names;
    for (QAction* a : services->GetActionList()->actions())
        names << a->objectName();
    for (const char* n :
         {"FileCloseAllCommand", "FileSaveCommand", "FileOpenCommand", "EditUndoCommand",
          "SearchFindCommand", "ViewUnitsCommand", "ViewFormsCommand"})
        EXPECT_TRUE(names.contains(QString::fromLatin1(n))) << n;
    QToolBar* bar = services->GetToolBar("ViewToolBar");
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->objectName(), QStringLiteral("ViewToolBar"));
    EXPECT_TRUE(ActionTexts(bar->actions()).contains(QStringLiteral("View Unit")));
    EXPECT_TRUE(ActionTexts(bar->actions()).contains(QStringLiteral("View Form")));
    EXPECT_EQ(services->GetToolBar("NoSuchBar"), nullptr);
    // The main menu's image list, by index: settings and information are the add-in's pictures.
    ASSERT_GE(services->GetImageCount(), 64);
    EXPECT_FALSE(services->GetImage(36).isNull());
    EXPECT_TRUE(services->GetImage(-1).isNull());
    EXPECT_TRUE(services->GetImage(services->GetImageCount()).isNull());
    EXPECT_EQ(main->Action("HelpAboutCommand")->icon().cacheKey(),
              services->GetImage(50).cacheKey());
}

TEST_F(WorkbenchTest, TheMainFormIsTheApplicationsAndTheEditorHasTheFocus) {
    EXPECT_EQ(Application->GetMainForm(), main);
    EXPECT_EQ(Application->GetHandle(), static_cast<HWND>(static_cast<QWidget*>(main)));
    ASSERT_TRUE(WaitFor([&] { return Screen->GetActiveForm() == EditWindow(); }));
    EXPECT_EQ(Screen->GetActiveControl(), Editor());
    EXPECT_TRUE(ScreenFormNames().contains(EditWindow()->objectName()));
}

TEST_F(WorkbenchTest, APackagesActionTakesAShortcutFromTheIDEsOwnWhileItIsInTheList) {
    const QKeySequence ctrlA(QStringLiteral("Ctrl+A"));
    QAction* selectAll = main->Action("EditSelectAllCommand");
    ASSERT_EQ(selectAll->shortcut(), ctrlA);
    TEditView* v = Open("Utils.pas");
    int runs = 0;
    auto* expert = new QAction(QStringLiteral("Expert"), main);
    QObject::connect(expert, &QAction::triggered, [&] { ++runs; });
    // Its shortcut comes after it joined the list, as a package sets up its actions.
    IDEService<INTAServices>()->GetActionList()->addAction(expert);
    expert->setShortcut(ctrlA);
    EXPECT_TRUE(selectAll->shortcut().isEmpty());
    Editor()->setFocus();
    QTest::keyClick(Editor(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(v->Buffer().BlockValid()) << "the IDE's Select All must not run as well";
    // Another key for the expert, or a disabled expert, and the IDE's command has its own again.
    expert->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+Q")));
    EXPECT_EQ(selectAll->shortcut(), ctrlA);
    expert->setShortcut(ctrlA);
    EXPECT_TRUE(selectAll->shortcut().isEmpty());
    expert->setEnabled(false);
    EXPECT_EQ(selectAll->shortcut(), ctrlA);
    expert->setEnabled(true);
    EXPECT_TRUE(selectAll->shortcut().isEmpty());
    // Gone from the list, the expert leaves the key to the IDE.
    delete expert;
    EXPECT_EQ(selectAll->shortcut(), ctrlA);
    QTest::keyClick(Editor(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(runs, 1);
}

TEST_F(WorkbenchTest, AToolWindowsOwnActionWinsItsKeyOverTheIDEsWhileItHasTheFocus) {
    QWidget tool(nullptr, Qt::Window);
    auto* own = new QAction(&tool);
    own->setShortcut(QKeySequence(QStringLiteral("Ctrl+S")));
    tool.addAction(own);
    auto* edit = new QLineEdit(&tool);
    int ownRuns = 0, ideRuns = 0;
    QObject::connect(own, &QAction::triggered, [&] { ++ownRuns; });
    QObject::connect(main->Action("FileSaveCommand"), &QAction::triggered, [&] { ++ideRuns; });
    tool.show();
    QApplication::setActiveWindow(&tool);
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(std::make_pair(ownRuns, ideRuns), std::make_pair(1, 0));
    EXPECT_EQ(edit->text(), QString());
    // Back in the editor the key is the IDE's again.
    QApplication::setActiveWindow(EditWindow());
    Editor()->setFocus();
    QTest::keyClicks(Editor(), "x");
    Application->UpdateActions();
    QTest::keyClick(Editor(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(std::make_pair(ownRuns, ideRuns), std::make_pair(1, 1));
}

TEST_F(WorkbenchTest, CloseAllIsEnabledByTheUpdateWhileModulesAreOpen) {
    QAction* closeAll = main->Action("FileCloseAllCommand");
    Application->UpdateActions();
    EXPECT_TRUE(closeAll->isEnabled());
    closeAll->trigger();
    EXPECT_EQ(model->GetModuleCount(), 0);
    EXPECT_EQ(Tabs()->count(), 0);
    EXPECT_EQ(View(), nullptr);
    // The idle update takes the command away once nothing is open.
    ASSERT_TRUE(WaitFor([&] { return !closeAll->isEnabled(); }));
}

TEST_F(WorkbenchTest, ViewUnitListsTheProjectsUnitsAndOpensTheChosenOne) {
    EXPECT_EQ(PickFromViewList("View Unit", "Utils"),
              QStringList({"Main", "Settings", "DataMod", "Frame1", "Utils", "Example"}));
    EXPECT_EQ(ShownFile(), "Utils.pas");
    EXPECT_EQ(Tabs()->GetTabText(Tabs()->GetTabIndex()), "Utils");
    // Cancelled, the list opens nothing.
    WhenModal([](QWidget* dialog) { static_cast<QDialog*>(dialog)->reject(); });
    main->ViewUnits();
    EXPECT_EQ(TabTexts(), Strings({"Main", "Utils"}));
}

TEST_F(WorkbenchTest, ViewFormListsFormsAndShowsTheChosenFormInItsDesigner) {
    EXPECT_EQ(PickFromViewList("View Form", "SettingsForm"),
              QStringList({"MainForm", "SettingsForm", "DataModuleMain", "InfoFrame"}));
    designer::TDesignerWindow* shown = nullptr;
    for (designer::TDesignerWindow* w : main->Designers()->Windows())
        if (w->isVisible() && w->Root()->Name == "SettingsForm") shown = w;
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(main->Inspector()->FormEditor(), shown->Editor());
}

TEST_F(WorkbenchTest, ProjectManagerShowsTheProjectAndOpensAUnitOnActivation) {
    QTreeWidget* tree = main->ProjectTree();
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    QTreeWidgetItem* project = tree->topLevelItem(0);
    EXPECT_EQ(project->text(0), QStringLiteral("Example.dpr"));
    ASSERT_EQ(project->childCount(), 6);
    EXPECT_EQ(project->child(0)->text(0), QStringLiteral("Main {MainForm}"));
    EXPECT_EQ(project->child(3)->text(0), QStringLiteral("Frame1 {InfoFrame}"));
    tree->setCurrentItem(project->child(4));
    emit tree->itemActivated(project->child(4), 0);
    EXPECT_EQ(Tabs()->GetTabText(Tabs()->GetTabIndex()), "Utils");
    // Opening a file leaves the tree as it was, the user's choice in it too.
    ASSERT_NE(tree->currentItem(), nullptr);
    EXPECT_EQ(tree->currentItem()->text(0), QStringLiteral("Utils"));
}

// ---------------------------------------------------------------------------------------------
// The edit window and its tab row

TEST_F(WorkbenchTest, EachOpenFileHasATabWhoseObjectIsItsViewAndPickingATabShowsIt) {
    EXPECT_EQ(TabTexts(), Strings({"Main"}));
    TEditView* utils = Open("Utils.pas");
    TEditView* settings = Open("Settings.pas");
    EXPECT_EQ(TabTexts(), Strings({"Main", "Utils", "Settings"}));
    EXPECT_EQ(Tabs()->GetTabObject(1), utils);
    EXPECT_EQ(Tabs()->GetTabObject(2), settings);
    EXPECT_EQ(Tabs()->GetTabIndex(), 2) << "the opened file is the current page";
    EXPECT_EQ(View(), settings);
    EXPECT_THROW(Tabs()->GetTabText(5), rtl::EListError);
    EXPECT_THROW(Tabs()->GetTabObject(-1), rtl::EListError);
    // A click on a tab shows its page and brings its view to the top.
    QTest::mouseClick(Tabs(), Qt::LeftButton, {}, Tabs()->tabRect(0).center());
    EXPECT_EQ(Tabs()->GetTabIndex(), 0);
    ASSERT_NE(View(), nullptr);
    EXPECT_EQ(ShownFile(), "Main.pas");
    _di_IOTAEditView top = IDEService<IOTAEditorServices>()->GetTopView();
    EXPECT_EQ(Identity(top.get()), Identity(static_cast<IOTAEditView*>(View())));
    EXPECT_EQ(rtl::ExtractFileName(model->CurrentModule()->GetFileName()), "Main.pas");
}

TEST_F(WorkbenchTest, SettingTheTabIndexFiresNoChangeUntilChangeIsCalled) {
    Open("Utils.pas");
    int changes = 0;
    TTabChangeEvent old = Tabs()->GetOnChange();
    Tabs()->SetOnChange([&](QObject* sender) {
        ++changes;
        EXPECT_EQ(sender, Tabs());
        old(sender);
    });
    Tabs()->SetTabIndex(0);
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(ShownFile(), "Utils.pas") << "the page stays until OnChange runs";
    Tabs()->Change();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(ShownFile(), "Main.pas");
    Tabs()->SetTabIndex(7);
    EXPECT_EQ(Tabs()->GetTabIndex(), 0) << "an index out of range changes nothing";
}

TEST_F(WorkbenchTest, AReorderedRowIsKeptWhenFilesOpenAndClose) {
    Open("Utils.pas");
    Open("Settings.pas");
    // Reverse the row as the unit list does: texts and objects together, then the index.
    std::vector<TTabEntry> tabs = Tabs()->GetTabs();
    std::reverse(tabs.begin(), tabs.end());
    Tabs()->SetTabs(tabs);
    Tabs()->SetTabIndex(0);
    Tabs()->Change();
    EXPECT_EQ(TabTexts(), Strings({"Settings", "Utils", "Main"}));
    EXPECT_EQ(ShownFile(), "Settings.pas");
    Open("DataMod.pas");
    EXPECT_EQ(TabTexts(), Strings({"Settings", "Utils", "Main", "DataMod"}));
    model->CloseModule(model->FindOpenModule(File("Utils.pas")), false);
    EXPECT_EQ(TabTexts(), Strings({"Settings", "Main", "DataMod"}));
}

// ---------------------------------------------------------------------------------------------
// Editing

TEST_F(WorkbenchTest, KeysTypeDeleteUndoAndOverwriteAtTheCursor) {
    // Keys pressed one after another on the first line of Utils.pas, what the line then is (a
    // prefix and the loaded line from a column on), and whether typing inserts. The buffer is
    // modified while the line differs from the loaded one.
    struct Step {
        const char* keys;
        std::string prefix;
        size_t from;
        bool inserting;
    } steps[] = {
        {"Backspace", "x", 0, true}, {"Ctrl+Z", "xy", 0, true}, {"Ctrl+Z", "x", 0, true},
        {"Ctrl+Z", "", 0, true},     {"Ins", "", 0, false},     {"U", "U", 1, false},
        {"Ins", "U", 1, true},       {"x", "Ux", 1, true},
    };
    Open("Utils.pas");
    const std::string loaded = Line(1);
    Editor()->setFocus();
    QTest::keyClicks(Editor(), "xy");
    EXPECT_EQ(Line(1), "xy" + loaded);
    EXPECT_EQ(View()->Cursor(), (TTextPos{1, 3}));
    for (const Step& s : steps) {
        SCOPED_TRACE(s.keys);
        if (std::string(s.keys).size() == 1)
            QTest::keyClicks(Editor(), s.keys);
        else
            QTest::keySequence(Editor(), QKeySequence(QString::fromLatin1(s.keys)));
        EXPECT_EQ(Line(1), s.prefix + loaded.substr(s.from));
        EXPECT_EQ(View()->Buffer().GetModified(), !s.prefix.empty());
        EXPECT_EQ(View()->Buffer().GetBufferOptions()->GetInsertMode(), s.inserting);
    }
}

TEST_F(WorkbenchTest, EnterKeepsTheIndentationOfTheLine) {
    TEditView* v = Open("Utils.pas");
    v->GetPosition()->InsertText("    a;");
    QTest::keyClick(Editor(), Qt::Key_Return);
    QTest::keyClicks(Editor(), "b");
    EXPECT_EQ(Line(2).substr(0, 5), "    b");
}

TEST_F(WorkbenchTest, ShiftArrowsMarkAStreamBlockThatTypingReplaces) {
    TEditView* v = Open("Utils.pas");
    std::string line = Line(1);
    QTest::keyClick(Editor(), Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(Editor(), Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(Block(), "stream 1,1-1,3");
    EXPECT_EQ(v->Buffer().BlockText(), line.substr(0, 2));
    QTest::keyClicks(Editor(), "Q");
    EXPECT_EQ(Line(1), "Q" + line.substr(2));
    EXPECT_EQ(Block(), "none");
    // A plain move unmarks.
    QTest::keyClick(Editor(), Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(Editor(), Qt::Key_Right);
    EXPECT_EQ(Block(), "none");
}

TEST_F(WorkbenchTest, AltShiftMarksAColumnBlockAndUndoRestoresWhatDeleteTookOut) {
    TEditView* v = Open("Utils.pas");
    std::string l1 = Line(1), l2 = Line(2), l3 = Line(3);
    ASSERT_GE(std::min(l1.size(), l3.size()), 4u);
    const auto colMark = Qt::ShiftModifier | Qt::AltModifier;
    QTest::keyClick(Editor(), Qt::Key_Right);
    for (Qt::Key key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Down, Qt::Key_Down})
        QTest::keyClick(Editor(), key, colMark);
    EXPECT_EQ(Block(), "column 1,2-3,4");
    EXPECT_EQ(v->GetBlock()->GetText(), l1.substr(1, 2) + "\r\n" +
                                            (l2.size() > 1 ? l2.substr(1, 2) : "") + "\r\n" +
                                            l3.substr(1, 2));
    // Delete takes the columns out of every marked line.
    QTest::keyClick(Editor(), Qt::Key_Delete);
    EXPECT_EQ(Line(1), l1.substr(0, 1) + l1.substr(3));
    EXPECT_EQ(Line(3), l3.substr(0, 1) + l3.substr(3));
    // Undo through the IDE's command brings the lines back.
    Command("EditUndoCommand");
    EXPECT_EQ((Strings{Line(1), Line(2), Line(3)}), (Strings{l1, l2, l3}));
}

TEST_F(WorkbenchTest, MouseDragMarksAStreamAltDragAColumnAndDoubleClickAWord) {
    Open("Utils.pas"); // "unit Utils;"
    Drag({2, 1}, {3, 4}, Qt::NoModifier);
    EXPECT_EQ(Block(), "stream 2,1-3,4");
    Drag({2, 1}, {3, 4}, Qt::AltModifier);
    EXPECT_EQ(Block(), "column 2,1-3,4");
    QTest::mouseDClick(Editor()->viewport(), Qt::LeftButton, {},
                       Editor()->PointOf({1, 7}) + QPoint(2, 2));
    ASSERT_TRUE(View()->Buffer().BlockValid());
    EXPECT_EQ(View()->Buffer().BlockText(), "Utils");
}

TEST_F(WorkbenchTest, TheMarkedBlockIsPaintedInTheSelectionColour) {
    TEditView* v = Open("Utils.pas");
    v->GetBlock()->SetStyle(btColumn);
    v->GetPosition()->Move(1, 2);
    v->GetBlock()->Extend(2, 5);
    Editor()->Refresh();
    QImage image = Editor()->viewport()->grab().toImage();
    EXPECT_EQ(image.pixelColor(Editor()->PointOf({2, 3}) + QPoint(1, 1)), QColor(0, 0, 128));
    EXPECT_NE(image.pixelColor(Editor()->PointOf({2, 6}) + QPoint(1, 1)), QColor(0, 0, 128));
}

TEST_F(WorkbenchTest, AReadOnlyBufferRefusesTypingAndSaysSo) {
    TEditView* v = Open("Utils.pas");
    std::string l1 = Line(1);
    Command("EditReadOnlyCommand");
    ASSERT_TRUE(v->Buffer().IsReadOnly());
    QTest::keyClicks(Editor(), "zz");
    QTest::keyClick(Editor(), Qt::Key_Delete);
    EXPECT_EQ(Line(1), l1);
    EXPECT_FALSE(v->Buffer().GetModified());
    QStringList labels;
    for (QLabel* l : EditWindow()->findChildren<QLabel*>())
        labels << l->text();
    EXPECT_TRUE(labels.contains(QStringLiteral("Read only")));
    EXPECT_TRUE(errors.empty()) << "a refused key is a beep, not an error";
}

TEST_F(WorkbenchTest, FindMarksTheNextMatchIgnoringCaseSearchAgainGoesOnAndGoToFindsTheLine) {
    TEditView* v = Open("Main.pas");
    AnswerInput(QStringLiteral("tmainform"));
    Command("SearchFindCommand");
    ASSERT_TRUE(v->Buffer().BlockValid());
    EXPECT_EQ(v->Buffer().BlockText(), "TMainForm");
    int first = v->Cursor().Row;
    Command("SearchAgainCommand");
    EXPECT_GT(v->Cursor().Row, first);
    EXPECT_EQ(v->Buffer().BlockText(), "TMainForm");
    // Go to line moves the cursor and scrolls it into view.
    int last = v->Buffer().GetLinesInBuffer();
    AnswerInput(last);
    Command("SearchGoToCommand");
    EXPECT_EQ(v->Cursor(), (TTextPos{last, 1}));
    EXPECT_LE(v->GetTopRow(), last);
    EXPECT_GE(v->GetBottomRow(), last);
}

// ---------------------------------------------------------------------------------------------
// Closing through "Confirm"

TEST_F(WorkbenchTest, ClosingAModifiedUnitAsksConfirmCancelKeepsItYesSavesNoDropsTheChanges) {
    Open("Utils.pas");
    QTest::keyClicks(Editor(), "kept");
    AnswerConfirm(QMessageBox::Cancel);
    View()->ClosePage();
    ASSERT_NE(model->FindOpenModule(File("Utils.pas")), nullptr);
    EXPECT_EQ(TabTexts(), Strings({"Main", "Utils"}));
    // Exit asks as well, and Cancel keeps the IDE open.
    AnswerConfirm(QMessageBox::Cancel);
    Command("FileExitCommand");
    EXPECT_TRUE(main->isVisible());
    EXPECT_TRUE(EditWindow()->isVisible());
    ASSERT_NE(model->FindOpenModule(File("Utils.pas")), nullptr);
    AnswerConfirm(QMessageBox::Yes);
    Command("FileCloseCommand");
    EXPECT_EQ(model->FindOpenModule(File("Utils.pas")), nullptr);
    const std::string onDisk = testfiles::ReadFile(File("Utils.pas"));
    EXPECT_EQ(onDisk.substr(0, 4), "kept");
    // No drops the changes; the unit list waits for the box by its caption.
    Open("Utils.pas");
    QTest::keyClicks(Editor(), "changed");
    bool seenByCrtlUtils = false;
    WhenModal([&](QWidget* box) {
        seenByCrtlUtils = zelvane::GetActiveForm("confirm") == box;
        EXPECT_EQ(box->windowTitle(), QStringLiteral("Confirm"));
        qobject_cast<QMessageBox*>(box)->button(QMessageBox::No)->click();
    });
    Command("FileCloseCommand");
    EXPECT_TRUE(seenByCrtlUtils);
    EXPECT_EQ(model->FindOpenModule(File("Utils.pas")), nullptr);
    EXPECT_EQ(TabTexts(), Strings({"Main"}));
    EXPECT_EQ(testfiles::ReadFile(File("Utils.pas")), onDisk);
}

TEST_F(WorkbenchTest, TheEditWindowGoesWithItsLastPageAndComesBackWithTheNext) {
    Command("FileCloseCommand");
    EXPECT_TRUE(TabTexts().empty());
    EXPECT_FALSE(EditWindow()->isVisible());
    Open("Utils.pas");
    EXPECT_TRUE(EditWindow()->isVisible());
    // The project's source closes its page only.
    Open("Example.dpr");
    EXPECT_EQ(TabTexts(), Strings({"Utils", "Example"}));
    View()->ClosePage();
    EXPECT_EQ(TabTexts(), Strings({"Utils"}));
    EXPECT_NE(model->FindOpenModule(File("Example.dpr")), nullptr);
}

} // namespace
