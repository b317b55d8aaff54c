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

using WorkbenchTest = WorkbenchFixture;

QStringList MenuCaptions(QMenuBar* bar) {
    QStringList r;
    for (QAction* a : bar->actions())
        r << a->text().remove(QLatin1Char('&'));
    return r;
}

// ---------------------------------------------------------------------------------------------
// Main form

TEST_F(WorkbenchTest, MainMenuHasTheIDEsTopItemsInOrder) {
    _di_INTAServices services = IDEService<INTAServices>();
    ASSERT_TRUE(services);
    ASSERT_EQ(services->GetMainMenu(), main->menuBar());
    EXPECT_EQ(MenuCaptions(main->menuBar()),
              QStringList({"File", "Edit", "Search", "View", "Project", "Run", "Component", "Tools",
                           "Help"}));
}

TEST_F(WorkbenchTest, TheMainFormIsTheApplicationsAndTheEditorHasTheFocus) {
    EXPECT_EQ(Application->GetMainForm(), main);
    EXPECT_EQ(Application->GetHandle(), static_cast<HWND>(static_cast<QWidget*>(main)));
    ASSERT_TRUE(WaitFor([&] { return Screen->GetActiveForm() == EditWindow(); }));
    EXPECT_EQ(Screen->GetActiveControl(), Editor());
    bool listed = false;
    for (int i = 0; i < Screen->GetFormCount(); ++i)
        if (Screen->GetForm(i) == EditWindow()) listed = true;
    EXPECT_TRUE(listed);
}

TEST_F(WorkbenchTest, TheActionListHoldsTheNamedCommands) {
    QWidget* list = IDEService<INTAServices>()->GetActionList();
    ASSERT_NE(list, nullptr);
    QStringList names;
    for (QAction* a : list->actions())
        names << a->objectName();
    for (const char* n :
         {"FileCloseAllCommand", "FileSaveCommand", "FileOpenCommand", "EditUndoCommand",
          "SearchFindCommand", "ViewUnitsCommand", "ViewFormsCommand"})
        EXPECT_TRUE(names.contains(QString::fromLatin1(n))) << n;
}

TEST_F(WorkbenchTest, APackagesActionTakesAShortcutFromTheIDEsOwnWhileItIsInTheList) {
    QAction* selectAll = main->Action("EditSelectAllCommand");
    ASSERT_EQ(selectAll->shortcut(), QKeySequence(QStringLiteral("Ctrl+A")));
    TEditView* v = Open("Utils.pas");
    int runs = 0;
    auto* expert = new QAction(QStringLiteral("Expert"), main);
    QObject::connect(expert, &QAction::triggered, [&] { ++runs; });
    // Its shortcut comes after it joined the list, as a package sets up its actions.
    IDEService<INTAServices>()->GetActionList()->addAction(expert);
    expert->setShortcut(QKeySequence(QStringLiteral("Ctrl+A")));
    EXPECT_TRUE(selectAll->shortcut().isEmpty());
    Editor()->setFocus();
    QTest::keyClick(Editor(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(v->Buffer().BlockValid()) << "the IDE's Select All must not run as well";
    // Another key for the expert, and the IDE's command has its own again.
    expert->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+Q")));
    EXPECT_EQ(selectAll->shortcut(), QKeySequence(QStringLiteral("Ctrl+A")));
    expert->setShortcut(QKeySequence(QStringLiteral("Ctrl+A")));
    EXPECT_TRUE(selectAll->shortcut().isEmpty());
    // A disabled expert holds no key.
    expert->setEnabled(false);
    EXPECT_EQ(selectAll->shortcut(), QKeySequence(QStringLiteral("Ctrl+A")));
    expert->setEnabled(true);
    EXPECT_TRUE(selectAll->shortcut().isEmpty());
    // Gone from the list, the expert leaves the key to the IDE.
    delete expert;
    EXPECT_EQ(selectAll->shortcut(), QKeySequence(QStringLiteral("Ctrl+A")));
    QTest::keyClick(Editor(), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(runs, 1);
}

TEST_F(WorkbenchTest, AKeyGivenToAnIDECommandStaysThoughPackagesActionsChange) {
    QAction* selectAll = main->Action("EditSelectAllCommand");
    auto* expert = new QAction(QStringLiteral("Expert"), main);
    expert->setShortcut(QKeySequence(QStringLiteral("Ctrl+D")));
    IDEService<INTAServices>()->GetActionList()->addAction(expert);
    selectAll->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+A")));
    expert->setEnabled(false);
    expert->setText(QStringLiteral("Expert 2"));
    EXPECT_EQ(selectAll->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+A")));
    // The expert takes the new key too, and gives it back as it was.
    expert->setEnabled(true);
    expert->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+A")));
    EXPECT_TRUE(selectAll->shortcut().isEmpty());
    delete expert;
    EXPECT_EQ(selectAll->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+A")));
}

TEST_F(WorkbenchTest, CloseAllIsEnabledByTheUpdateWhileModulesAreOpen) {
    QAction* closeAll = main->Action("FileCloseAllCommand");
    ASSERT_NE(closeAll, nullptr);
    Application->UpdateActions();
    EXPECT_TRUE(closeAll->isEnabled());
    closeAll->trigger();
    EXPECT_EQ(model->GetModuleCount(), 0);
    EXPECT_EQ(Tabs()->count(), 0);
    EXPECT_EQ(View(), nullptr);
    // The idle update takes the command away once nothing is open.
    ASSERT_TRUE(WaitFor([&] { return !closeAll->isEnabled(); }));
}

TEST_F(WorkbenchTest, ViewToolBarHasTheViewUnitAndViewFormButtons) {
    QToolBar* bar = IDEService<INTAServices>()->GetToolBar("ViewToolBar");
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->objectName(), QStringLiteral("ViewToolBar"));
    QStringList captions;
    for (QAction* a : bar->actions())
        captions << a->text();
    EXPECT_TRUE(captions.contains(QStringLiteral("View Unit")));
    EXPECT_TRUE(captions.contains(QStringLiteral("View Form")));
    EXPECT_EQ(IDEService<INTAServices>()->GetToolBar("NoSuchBar"), nullptr);
}

QAction* ToolButton(QToolBar* bar, const QString& caption) {
    for (QAction* a : bar->actions())
        if (a->text() == caption) return a;
    return nullptr;
}

// What a package does to take over a button and to see the IDE come up.
struct TProbe : rtl::TObject {
    int Clicks = 0, Shows = 0;
    void Click(rtl::TObject*) { ++Clicks; }
    void Shown(rtl::TObject*) { ++Shows; }
};

TEST_F(WorkbenchTest, AButtonsHandlerCanBeReplacedAndRestoredAndTheMainFormsShowIsAnnounced) {
    QAction* viewUnit = ToolButton(IDEService<INTAServices>()->GetToolBar("ViewToolBar"),
                                   QStringLiteral("View Unit"));
    TProbe probe;
    TNotifyEvent own = Application->GetActionExecute(viewUnit);
    ASSERT_TRUE(own);
    Application->SetActionExecute(viewUnit, TNotifyEvent::Of<&TProbe::Click>(&probe));
    viewUnit->trigger();
    EXPECT_EQ(probe.Clicks, 1);
    Application->SetActionExecute(viewUnit, own);
    QString dialog;
    WhenModal([&](QWidget* w) {
        dialog = w->objectName();
        w->close();
    });
    viewUnit->trigger();
    EXPECT_EQ(dialog, QStringLiteral("ViewUnitDialog"));
    EXPECT_EQ(probe.Clicks, 1);

    Application->SetOnMainFormShow(TNotifyEvent::Of<&TProbe::Shown>(&probe));
    main->hide();
    main->show();
    Application->SetOnMainFormShow(nullptr);
    EXPECT_EQ(probe.Shows, 1);
}

TEST_F(WorkbenchTest, ScreenListsFormsInCreationOrderAndKnowsTheDesignerWindows) {
    std::vector<std::unique_ptr<QWidget>> made;
    for (int i = 0; i < 12; ++i) {
        made.push_back(std::make_unique<QWidget>());
        made.back()->setObjectName(QStringLiteral("Made%1").arg(i));
    }
    QApplication::processEvents();
    QStringList names;
    for (int i = 0; i < Screen->GetFormCount(); ++i)
        names << Screen->GetForm(i)->objectName();
    QStringList mine = names.filter(QStringLiteral("Made"));
    ASSERT_EQ(mine.size(), 12);
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(mine[i], QStringLiteral("Made%1").arg(i));
    EXPECT_LT(names.indexOf(QStringLiteral("AppBuilder")), names.indexOf(QStringLiteral("Made0")));

    ASSERT_FALSE(main->Designers()->Windows().empty());
    EXPECT_TRUE(Screen->HasDesigner(main->Designers()->Windows().front()));
    EXPECT_FALSE(Screen->HasDesigner(main));
    EXPECT_EQ(IDEService<IOTAServices>()->GetActiveDesignerType(), "dfm");
    model->CloseAll();
    EXPECT_EQ(IDEService<IOTAServices>()->GetActiveDesignerType(), "");
}

TEST_F(WorkbenchTest, DesignerWindowAndEditorLentByWindowOperationsComeBackToTheirPlaces) {
    QWidget host;
    host.resize(600, 400);
    host.show();
    model->OpenModuleFile(File("Settings.pas"), TOpenMode::Show);
    QApplication::processEvents();
    QWidget* designer = main->Designers()->Windows().back();
    designer->show();
    designer->move(120, 80);
    const QPoint home = designer->pos();
    const Qt::WindowFlags flags = designer->windowFlags();
    SetParent(designer, &host);
    EXPECT_FALSE(designer->isWindow());
    EXPECT_TRUE(designer->isVisible());
    SetWindowPos(designer, nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    EXPECT_EQ(designer->pos(), QPoint(0, 0));
    SetParent(designer, nullptr);
    designer->move(home);
    EXPECT_TRUE(designer->isWindow());
    EXPECT_EQ(designer->windowFlags(), flags);
    EXPECT_EQ(designer->pos(), home);
    EXPECT_TRUE(IsWindow(designer));
    auto* gone = new QWidget;
    delete gone;
    EXPECT_FALSE(IsWindow(gone));

    // The editor lent out: the edit window stays hidden while pages come and go, and takes the
    // editor back into its layout.
    const QRect editorHome = Editor()->geometry();
    Editor()->setParent(&host);
    Editor()->show();
    ShowWindow(EditWindow(), SW_HIDE);
    Open("Utils.pas");
    EXPECT_FALSE(EditWindow()->isVisible());
    Editor()->setParent(EditWindow());
    Editor()->show();
    ShowWindow(EditWindow(), SW_SHOW);
    QApplication::processEvents();
    EXPECT_EQ(Editor()->geometry(), editorHome);
    EditWindow()->resize(EditWindow()->size() + QSize(30, 20));
    QApplication::processEvents();
    EXPECT_EQ(Editor()->size(), editorHome.size() + QSize(30, 20));
}

TEST_F(WorkbenchTest, ViewUnitListsTheProjectsUnitsAndOpensTheChosenOne) {
    QAction* viewUnit = ToolButton(IDEService<INTAServices>()->GetToolBar("ViewToolBar"),
                                   QStringLiteral("View Unit"));
    ASSERT_NE(viewUnit, nullptr);
    QStringList listed;
    WhenModal([&](QWidget* dialog) {
        EXPECT_EQ(dialog->windowTitle(), QStringLiteral("View Unit"));
        auto* list = dialog->findChild<QListWidget*>(QStringLiteral("ModuleList"));
        ASSERT_NE(list, nullptr);
        for (int i = 0; i < list->count(); ++i)
            listed << list->item(i)->text();
        list->clearSelection();
        list->findItems(QStringLiteral("Utils"), Qt::MatchExactly).first()->setSelected(true);
        static_cast<QDialog*>(dialog)->accept();
    });
    Application->UpdateActions();
    viewUnit->trigger();
    EXPECT_EQ(listed, QStringList({"Main", "Settings", "DataMod", "Frame1", "Utils", "Example"}));
    ASSERT_NE(View(), nullptr);
    EXPECT_EQ(rtl::ExtractFileName(View()->Buffer().GetFileName()), "Utils.pas");
    EXPECT_EQ(Tabs()->GetTabText(Tabs()->GetTabIndex()), "Utils");
}

TEST_F(WorkbenchTest, ViewFormListsFormsAndShowsTheChosenFormInItsDesigner) {
    QAction* viewForm = ToolButton(IDEService<INTAServices>()->GetToolBar("ViewToolBar"),
                                   QStringLiteral("View Form"));
    QStringList listed;
    WhenModal([&](QWidget* dialog) {
        auto* list = dialog->findChild<QListWidget*>(QStringLiteral("ModuleList"));
        for (int i = 0; i < list->count(); ++i)
            listed << list->item(i)->text();
        list->clearSelection();
        list->findItems(QStringLiteral("SettingsForm"), Qt::MatchExactly)
            .first()
            ->setSelected(true);
        static_cast<QDialog*>(dialog)->accept();
    });
    Application->UpdateActions();
    viewForm->trigger();
    EXPECT_EQ(listed, QStringList({"MainForm", "SettingsForm", "DataModuleMain", "InfoFrame"}));
    designer::TDesignerWindow* shown = nullptr;
    for (designer::TDesignerWindow* w : main->Designers()->Windows())
        if (w->isVisible() && w->Root()->Name == "SettingsForm") shown = w;
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(main->Inspector()->FormEditor(), shown->Editor());
}

TEST_F(WorkbenchTest, CancellingTheUnitListOpensNothing) {
    int tabs = Tabs()->count();
    WhenModal([](QWidget* dialog) { static_cast<QDialog*>(dialog)->reject(); });
    main->ViewUnits();
    EXPECT_EQ(Tabs()->count(), tabs);
}

TEST_F(WorkbenchTest, ProjectManagerShowsTheProjectAndOpensAUnitOnActivation) {
    QTreeWidget* tree = main->ProjectTree();
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    QTreeWidgetItem* project = tree->topLevelItem(0);
    EXPECT_EQ(project->text(0), QStringLiteral("Example.dpr"));
    ASSERT_EQ(project->childCount(), 6);
    EXPECT_EQ(project->child(0)->text(0), QStringLiteral("Main {MainForm}"));
    EXPECT_EQ(project->child(3)->text(0), QStringLiteral("Frame1 {InfoFrame}"));
    emit tree->itemActivated(project->child(4), 0);
    EXPECT_EQ(Tabs()->GetTabText(Tabs()->GetTabIndex()), "Utils");
}

// ---------------------------------------------------------------------------------------------
// The edit window and its tab row

TEST_F(WorkbenchTest, EditWindowIsFoundByNameWithItsTabControlAndEditor) {
    QWidget* form = zelvane::FindEditorForm();
    ASSERT_EQ(form, EditWindow());
    EXPECT_TRUE(form->objectName().contains(QStringLiteral("EditWindow")));
    EXPECT_EQ(zelvane::GetEditorForm(), form);
    QObject* tabControl = zelvane::GetEditorFormComponent("TabControl");
    ASSERT_NE(tabControl, nullptr);
    EXPECT_NE(dynamic_cast<ITabControl*>(tabControl), nullptr);
    QObject* editor = zelvane::GetEditorFormComponent("Editor");
    ASSERT_EQ(editor, Editor());
    EXPECT_EQ(static_cast<QWidget*>(editor)->window(), form) << "the editor is on the same form";
}

TEST_F(WorkbenchTest, EachOpenFileHasATabWhoseObjectIsItsView) {
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Main"}));
    TEditView* utils = Open("Utils.pas");
    TEditView* settings = Open("Settings.pas");
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Main", "Utils", "Settings"}));
    EXPECT_EQ(Tabs()->GetTabObject(1), utils);
    EXPECT_EQ(Tabs()->GetTabObject(2), settings);
    EXPECT_EQ(Tabs()->GetTabIndex(), 2) << "the opened file is the current page";
    EXPECT_EQ(View(), settings);
}

TEST_F(WorkbenchTest, PickingATabShowsItsPageAndBringsItsViewToTheTop) {
    Open("Utils.pas");
    Open("Settings.pas");
    QTest::mouseClick(Tabs(), Qt::LeftButton, {}, Tabs()->tabRect(0).center());
    EXPECT_EQ(Tabs()->GetTabIndex(), 0);
    ASSERT_NE(View(), nullptr);
    EXPECT_EQ(rtl::ExtractFileName(View()->Buffer().GetFileName()), "Main.pas");
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
    EXPECT_EQ(rtl::ExtractFileName(View()->Buffer().GetFileName()), "Utils.pas")
        << "the page stays until OnChange runs";
    Tabs()->Change();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(rtl::ExtractFileName(View()->Buffer().GetFileName()), "Main.pas");
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
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Settings", "Utils", "Main"}));
    EXPECT_EQ(rtl::ExtractFileName(View()->Buffer().GetFileName()), "Settings.pas");
    Open("DataMod.pas");
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Settings", "Utils", "Main", "DataMod"}));
    model->CloseModule(model->FindOpenModule(File("Utils.pas")), false);
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Settings", "Main", "DataMod"}));
}

TEST_F(WorkbenchTest, OutOfRangeTabIndexesRaiseListErrors) {
    EXPECT_THROW(Tabs()->GetTabText(5), rtl::EListError);
    EXPECT_THROW(Tabs()->GetTabObject(-1), rtl::EListError);
}

// ---------------------------------------------------------------------------------------------
// Editing

TEST_F(WorkbenchTest, TypingGoesIntoTheBufferAtTheCursor) {
    TEditView* v = Open("Utils.pas");
    ASSERT_NE(v, nullptr);
    std::string before = Line(1);
    Editor()->setFocus();
    QTest::keyClicks(Editor(), "xy");
    EXPECT_EQ(Line(1), "xy" + before);
    EXPECT_EQ(v->Cursor(), (TTextPos{1, 3}));
    EXPECT_TRUE(v->Buffer().GetModified());
    QTest::keyClick(Editor(), Qt::Key_Backspace);
    EXPECT_EQ(Line(1), "x" + before);
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
    TSourceEditor& b = v->Buffer();
    ASSERT_TRUE(b.BlockValid());
    EXPECT_EQ(b.Block().Style, btNonInclusive);
    EXPECT_EQ(b.BlockText(), line.substr(0, 2));
    QTest::keyClicks(Editor(), "Q");
    EXPECT_EQ(Line(1), "Q" + line.substr(2));
    EXPECT_FALSE(b.BlockValid());
    // A plain move unmarks.
    QTest::keyClick(Editor(), Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(Editor(), Qt::Key_Right);
    EXPECT_FALSE(b.BlockValid());
}

TEST_F(WorkbenchTest, AltShiftMarksAColumnBlockAndUndoRestoresWhatTypingReplaced) {
    TEditView* v = Open("Utils.pas");
    TSourceEditor& b = v->Buffer();
    std::string l1 = Line(1), l2 = Line(2), l3 = Line(3);
    ASSERT_GE(l1.size(), 4u);
    ASSERT_GE(l3.size(), 4u);
    const auto colMark = Qt::ShiftModifier | Qt::AltModifier;
    QTest::keyClick(Editor(), Qt::Key_Right);
    QTest::keyClick(Editor(), Qt::Key_Right, colMark);
    QTest::keyClick(Editor(), Qt::Key_Right, colMark);
    QTest::keyClick(Editor(), Qt::Key_Down, colMark);
    QTest::keyClick(Editor(), Qt::Key_Down, colMark);
    ASSERT_TRUE(b.BlockValid());
    EXPECT_EQ(b.Block().Style, btColumn);
    EXPECT_EQ(b.BlockStart(), (TTextPos{1, 2}));
    EXPECT_EQ(b.BlockEnd(), (TTextPos{3, 4}));
    _di_IOTAEditBlock block = v->GetBlock();
    EXPECT_EQ(block->GetText(), l1.substr(1, 2) + "\r\n" + (l2.size() > 1 ? l2.substr(1, 2) : "") +
                                    "\r\n" + l3.substr(1, 2));
    // Delete takes the columns out of every marked line.
    QTest::keyClick(Editor(), Qt::Key_Delete);
    EXPECT_EQ(Line(1), l1.substr(0, 1) + l1.substr(3));
    EXPECT_EQ(Line(3), l3.substr(0, 1) + l3.substr(3));
    // Undo through the IDE's command brings the lines back.
    Command("EditUndoCommand");
    EXPECT_EQ(Line(1), l1);
    EXPECT_EQ(Line(2), l2);
    EXPECT_EQ(Line(3), l3);
}

TEST_F(WorkbenchTest, CtrlZUndoesTypingOneStepAtATime) {
    TEditView* v = Open("Utils.pas");
    std::string l1 = Line(1);
    QTest::keyClicks(Editor(), "ab");
    EXPECT_EQ(Line(1), "ab" + l1);
    QTest::keyClick(Editor(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(Line(1), "a" + l1);
    QTest::keyClick(Editor(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(Line(1), l1);
    EXPECT_FALSE(v->Buffer().GetModified());
}

TEST_F(WorkbenchTest, MouseDragMarksAStreamAndAltDragAColumn) {
    TEditView* v = Open("Utils.pas");
    TSourceEditor& b = v->Buffer();
    QPoint from = Editor()->PointOf({2, 1}) + QPoint(1, 2);
    QPoint to = Editor()->PointOf({3, 4}) + QPoint(1, 2);
    QTest::mousePress(Editor()->viewport(), Qt::LeftButton, {}, from);
    QMouseEvent move(QEvent::MouseMove, to, Editor()->viewport()->mapToGlobal(to), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(Editor()->viewport(), &move);
    QTest::mouseRelease(Editor()->viewport(), Qt::LeftButton, {}, to);
    ASSERT_TRUE(b.BlockValid());
    EXPECT_EQ(b.Block().Style, btNonInclusive);
    EXPECT_EQ(b.BlockStart(), (TTextPos{2, 1}));
    EXPECT_EQ(b.BlockEnd(), (TTextPos{3, 4}));

    QTest::mousePress(Editor()->viewport(), Qt::LeftButton, Qt::AltModifier, from);
    QMouseEvent altMove(QEvent::MouseMove, to, Editor()->viewport()->mapToGlobal(to), Qt::NoButton,
                        Qt::LeftButton, Qt::AltModifier);
    QApplication::sendEvent(Editor()->viewport(), &altMove);
    QTest::mouseRelease(Editor()->viewport(), Qt::LeftButton, Qt::AltModifier, to);
    EXPECT_EQ(b.Block().Style, btColumn);
    EXPECT_EQ(b.BlockStart(), (TTextPos{2, 1}));
    EXPECT_EQ(b.BlockEnd(), (TTextPos{3, 4}));
}

TEST_F(WorkbenchTest, TheMarkedBlockIsPaintedInTheSelectionColour) {
    TEditView* v = Open("Utils.pas");
    v->GetBlock()->SetStyle(btColumn);
    v->GetPosition()->Move(1, 2);
    v->GetBlock()->Extend(2, 5);
    Editor()->Refresh();
    QImage image = Editor()->viewport()->grab().toImage();
    QPoint inside = Editor()->PointOf({2, 3}) + QPoint(1, 1);
    QPoint outside = Editor()->PointOf({2, 6}) + QPoint(1, 1);
    EXPECT_EQ(image.pixelColor(inside), QColor(0, 0, 128));
    EXPECT_NE(image.pixelColor(outside), QColor(0, 0, 128));
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
    QList<QLabel*> mode = EditWindow()->findChildren<QLabel*>();
    bool saysReadOnly = false;
    for (QLabel* l : mode)
        if (l->text() == QStringLiteral("Read only")) saysReadOnly = true;
    EXPECT_TRUE(saysReadOnly);
    EXPECT_TRUE(errors.empty()) << "a refused key is a beep, not an error";
}

TEST_F(WorkbenchTest, InOverwriteModeTypingReplacesTheCharacterUnderTheCursor) {
    Open("Utils.pas");
    std::string l1 = Line(1);
    QTest::keyClick(Editor(), Qt::Key_Insert);
    EXPECT_FALSE(View()->Buffer().GetBufferOptions()->GetInsertMode());
    QTest::keyClicks(Editor(), "U");
    EXPECT_EQ(Line(1), "U" + l1.substr(1));
    QTest::keyClick(Editor(), Qt::Key_Insert);
    QTest::keyClicks(Editor(), "x");
    EXPECT_EQ(Line(1), "Ux" + l1.substr(1));
}

TEST_F(WorkbenchTest, DoubleClickMarksTheWordUnderThePointer) {
    TEditView* v = Open("Utils.pas"); // "unit Utils;"
    QPoint at = Editor()->PointOf({1, 7}) + QPoint(2, 2);
    QTest::mouseDClick(Editor()->viewport(), Qt::LeftButton, {}, at);
    ASSERT_TRUE(v->Buffer().BlockValid());
    EXPECT_EQ(v->Buffer().BlockText(), "Utils");
}

TEST_F(WorkbenchTest, FindMarksTheNextMatchIgnoringCaseAndSearchAgainGoesOn) {
    TEditView* v = Open("Main.pas");
    WhenModal([](QWidget* dialog) {
        auto* input = qobject_cast<QInputDialog*>(dialog);
        ASSERT_NE(input, nullptr);
        input->setTextValue(QStringLiteral("tmainform"));
        input->accept();
    });
    Command("SearchFindCommand");
    ASSERT_TRUE(v->Buffer().BlockValid());
    EXPECT_EQ(v->Buffer().BlockText(), "TMainForm");
    int first = v->Cursor().Row;
    Command("SearchAgainCommand");
    EXPECT_GT(v->Cursor().Row, first);
    EXPECT_EQ(v->Buffer().BlockText(), "TMainForm");
}

TEST_F(WorkbenchTest, GoToLineMovesTheCursorAndScrollsItIntoView) {
    TEditView* v = Open("Main.pas");
    int last = v->Buffer().GetLinesInBuffer();
    WhenModal([last](QWidget* dialog) {
        auto* input = qobject_cast<QInputDialog*>(dialog);
        ASSERT_NE(input, nullptr);
        input->setIntValue(last);
        input->accept();
    });
    Command("SearchGoToCommand");
    EXPECT_EQ(v->Cursor(), (TTextPos{last, 1}));
    EXPECT_LE(v->GetTopRow(), last);
    EXPECT_GE(v->GetBottomRow(), last);
}

// ---------------------------------------------------------------------------------------------
// Closing through "Confirm"

TEST_F(WorkbenchTest, ClosingAModifiedUnitAsksConfirmAndNoDropsTheChanges) {
    Open("Utils.pas");
    std::string onDisk = testfiles::ReadFile(File("Utils.pas"));
    QTest::keyClicks(Editor(), "changed");
    QString caption;
    bool seenByCrtlUtils = false;
    WhenModal([&](QWidget* box) {
        caption = box->windowTitle();
        seenByCrtlUtils = zelvane::GetActiveForm("confirm") == box;
        auto* mb = qobject_cast<QMessageBox*>(box);
        ASSERT_NE(mb, nullptr);
        mb->button(QMessageBox::No)->click();
    });
    Command("FileCloseCommand");
    EXPECT_EQ(caption, QStringLiteral("Confirm"));
    EXPECT_TRUE(seenByCrtlUtils) << "the unit list waits for this form";
    EXPECT_EQ(model->FindOpenModule(File("Utils.pas")), nullptr);
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Main"}));
    EXPECT_EQ(testfiles::ReadFile(File("Utils.pas")), onDisk);
}

TEST_F(WorkbenchTest, CancelInConfirmKeepsTheUnitOpenAndYesSavesIt) {
    Open("Utils.pas");
    QTest::keyClicks(Editor(), "kept");
    WhenModal([](QWidget* box) {
        qobject_cast<QMessageBox*>(box)->button(QMessageBox::Cancel)->click();
    });
    View()->ClosePage();
    ASSERT_NE(model->FindOpenModule(File("Utils.pas")), nullptr);
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Main", "Utils"}));
    WhenModal(
        [](QWidget* box) { qobject_cast<QMessageBox*>(box)->button(QMessageBox::Yes)->click(); });
    Command("FileCloseCommand");
    EXPECT_EQ(model->FindOpenModule(File("Utils.pas")), nullptr);
    EXPECT_EQ(testfiles::ReadFile(File("Utils.pas")).substr(0, 4), "kept");
}

TEST_F(WorkbenchTest, AnUnmodifiedUnitClosesWithoutAQuestion) {
    Open("Utils.pas");
    bool asked = false;
    QTimer* watch = WhenModal([&](QWidget* box) {
        asked = true;
        static_cast<QDialog*>(box)->reject();
    });
    Command("FileCloseCommand");
    QTest::qWait(50);
    delete watch;
    EXPECT_FALSE(asked);
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Main"}));
}

TEST_F(WorkbenchTest, TheEditWindowGoesWithItsLastPageAndComesBackWithTheNext) {
    Command("FileCloseCommand");
    EXPECT_TRUE(TabTexts().empty());
    EXPECT_FALSE(EditWindow()->isVisible());
    Open("Utils.pas");
    EXPECT_TRUE(EditWindow()->isVisible());
    // The project's source closes its page only.
    Open("Example.dpr");
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Utils", "Example"}));
    View()->ClosePage();
    EXPECT_EQ(TabTexts(), std::vector<std::string>({"Utils"}));
    EXPECT_NE(model->FindOpenModule(File("Example.dpr")), nullptr);
}

TEST_F(WorkbenchTest, ExitAsksForModifiedUnitsAndCancelKeepsTheIDEOpen) {
    Open("Utils.pas");
    QTest::keyClicks(Editor(), "dirty");
    WhenModal([](QWidget* box) {
        qobject_cast<QMessageBox*>(box)->button(QMessageBox::Cancel)->click();
    });
    Command("FileExitCommand");
    EXPECT_TRUE(main->isVisible());
    EXPECT_TRUE(EditWindow()->isVisible());
    EXPECT_NE(model->FindOpenModule(File("Utils.pas")), nullptr);
}

} // namespace

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
    EXPECT_EQ(ownRuns, 1);
    EXPECT_EQ(ideRuns, 0);
    EXPECT_EQ(edit->text(), QString());
    // Back in the editor the key is the IDE's again.
    QApplication::setActiveWindow(EditWindow());
    Editor()->setFocus();
    QTest::keyClicks(Editor(), "x");
    Application->UpdateActions();
    QTest::keyClick(Editor(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(ownRuns, 1);
    EXPECT_EQ(ideRuns, 1);
}

TEST_F(WorkbenchTest, TheMainMenusImageListReachesPackagesByIndex) {
    _di_INTAServices services = IDEService<INTAServices>();
    ASSERT_GE(services->GetImageCount(), 64);
    // The pictures the add-in's items name: settings and information.
    EXPECT_FALSE(services->GetImage(36).isNull());
    EXPECT_FALSE(services->GetImage(50).isNull());
    EXPECT_TRUE(services->GetImage(-1).isNull());
    EXPECT_TRUE(services->GetImage(services->GetImageCount()).isNull());
    // The list is the main menu's: the IDE's own commands show its pictures.
    EXPECT_EQ(main->Action("HelpAboutCommand")->icon().cacheKey(), services->GetImage(50).cacheKey());
}
