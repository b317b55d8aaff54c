#include "workbench/MainWindow.h"

#include "rtl/CodePage.h"
#include "rtl/SysUtils.h"
#include "toolsapi/Forms.h"
#include "toolsapi/IDENames.h"
#include "toolsapi/QtBridge.h"
#include "workbench/Application.h"
#include "workbench/EditWindow.h"
#include "workbench/cpu/CPUView.h"
#include "workbench/designer/FormDesigners.h"

#include <QAction>
#include <QActionEvent>
#include <QCheckBox>
#include <QCloseEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QShowEvent>
#include <QStyle>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace workbench {

using namespace ToolsAPI;

namespace {

// The project whose modules the lists show: the group's active project, or the one open project.
TProjectModule* ActiveProject(TIDEModel* model) {
    for (int i = 0; i < model->GetModuleCount(); ++i)
        if (auto group = Query<IOTAProjectGroup>(model->GetModule(i)))
            return dynamic_cast<TProjectModule*>(group->GetActiveProject().get());
    std::vector<TProjectModule*> projects = model->Projects();
    return projects.size() == 1 ? projects.front() : nullptr;
}

const char* kNoCompiler = "The workbench edits sources; it has no compiler or debugger";

} // namespace

// The execute handlers of the commands that packages take over (the view tool bar's buttons,
// close all), as the IDE's are: methods of an object, which a package can tell from its own.
class TMainForm::TCommandHandlers : public rtl::TObject {
public:
    explicit TCommandHandlers(TMainForm* form) : form_(form) {}
    void ViewUnit(rtl::TObject*) { form_->ViewUnits(); }
    void ViewForm(rtl::TObject*) { form_->ViewForms(); }
    void CloseAll(rtl::TObject*) { form_->model_->CloseAll(); }

private:
    TMainForm* form_;
};

TMainForm::TMainForm(TIDEModel* model)
    : model_(model), commandHandlers_(std::make_unique<TCommandHandlers>(this)) {
    setObjectName(QString::fromLatin1(ide::MainForm));
    setWindowTitle(QStringLiteral("Zelvane Workbench"));
    if (auto* app = TWorkbenchApplication::Instance()) app->SetMainForm(this);

    editWindow_ = new TEditWindowForm(model, model->MainEditWindow(), this);

    projectManager_ = new QWidget(this, Qt::Window);
    projectManager_->setObjectName(QStringLiteral("ProjectManagerForm"));
    projectManager_->setWindowTitle(QStringLiteral("Project Manager"));
    projectTree_ = new QTreeWidget(projectManager_);
    projectTree_->setObjectName(QStringLiteral("ProjectTree"));
    projectTree_->setHeaderLabels({QStringLiteral("Files")});
    auto* pmLayout = new QVBoxLayout(projectManager_);
    pmLayout->setContentsMargins(0, 0, 0, 0);
    pmLayout->addWidget(projectTree_);
    connect(projectTree_, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item, int) {
        Guarded(nullptr, [&] { ProjectItemActivated(item); });
    });

    // The inspector and the designer windows are windows of their own. The inspector belongs
    // to the main form; the designer windows belong to their modules and go when they close.
    inspector_ = new designer::TObjectInspector(nullptr);
    inspector_->setParent(this, Qt::Window);
    designers_ = new designer::TFormDesigners(model, this);
    designers_->SetInspector(inspector_);

    CreateMenus();
    CreateImageList();
    CreateToolBars();
    HookModel();

    model->SetMainMenu(menuBar());
    model->SetActionList(this);
    // The model's questions ("Confirm" when a modified module closes) as message boxes.
    model->SetQuestion([this](const std::string& caption, const std::string& text) {
        QWidget* owner = QApplication::activeWindow();
        QMessageBox box(QMessageBox::Question, FromBytes(caption), FromBytes(text),
                        QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel,
                        owner ? owner : static_cast<QWidget*>(editWindow_));
        box.setObjectName(QStringLiteral("ConfirmBox"));
        switch (box.exec()) {
        case QMessageBox::Yes:
            return static_cast<int>(mrYes);
        case QMessageBox::No:
            return static_cast<int>(mrNo);
        default:
            return static_cast<int>(mrCancel);
        }
    });
    RefreshProjectTree();
}

TMainForm::~TMainForm() {
    // The actions outlive this part of the form; they no longer report to it.
    for (QAction* a : actions())
        disconnect(a, nullptr, this, nullptr);
    model_->Events = {};
    // The designer windows, the inspector and the CPU window hold notifiers on the model's
    // editors; they go while the model stands, with the windows of closed modules that wait
    // for their deletion.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    delete cpuWindow_.data();
    delete designers_;
    delete inspector_;
    model_->SetQuestion(nullptr);
    model_->SetMainMenu(nullptr);
    model_->SetImages({});
    model_->SetActionList(nullptr);
    for (const char* name : {ide::StandardToolBar, ide::ViewToolBar, ide::DebugToolBar})
        model_->SetToolBar(name, nullptr);
    if (auto* app = TWorkbenchApplication::Instance())
        if (app->GetMainForm() == this) app->SetMainForm(nullptr);
}

// ---------------------------------------------------------------------------------------------
// Actions and menus

QAction* TMainForm::AddAction(QMenu* menu, const char* name, const QString& text,
                              const QString& keys, std::function<void()> run,
                              std::function<bool()> enabled) {
    auto* action = new QAction(text, this);
    action->setObjectName(QString::fromLatin1(name));
    if (!keys.isEmpty()) action->setShortcut(QKeySequence(keys));
    ownActions_.insert(action);
    connect(action, &QObject::destroyed, this, [this, action] {
        ownActions_.erase(action);
        yieldedKeys_.erase(action);
    });
    if (run) connect(action, &QAction::triggered, this, [run] { Guarded(nullptr, run); });
    addAction(action);
    if (menu) menu->addAction(action);
    if (enabled) {
        if (Application)
            Application->SetActionUpdate(action,
                                         [enabled](QAction* a) { a->setEnabled(enabled()); });
        action->setEnabled(enabled());
    }
    return action;
}

template <class Parent>
QMenu* TMainForm::AddMenu(Parent* parent, const QString& title, const char* name) {
    QMenu* menu = parent->addMenu(title);
    menu->setObjectName(QString::fromLatin1(name));
    return menu;
}

QAction* TMainForm::Action(const std::string& name) const {
    const QString objectName = QString::fromStdString(name);
    for (QAction* a : ownActions_)
        if (a->objectName() == objectName) return a;
    return nullptr;
}

QAction* TMainForm::Command(const char* name) const {
    if (QAction* a = Action(name)) return a;
    throw std::logic_error(std::string("the workbench has no command ") + name);
}

bool TMainForm::HasView() const {
    return TopView() != nullptr;
}

bool TMainForm::Writable() const {
    return TopBuffer() && !TopBuffer()->IsReadOnly();
}

bool TMainForm::HasBlock() const {
    return TopBuffer() && TopBuffer()->BlockValid();
}

TEditView* TMainForm::TopView() const {
    return editWindow_ ? editWindow_->CurrentView() : nullptr;
}

TSourceEditor* TMainForm::TopBuffer() const {
    TEditView* v = TopView();
    return v ? &v->Buffer() : nullptr;
}

// The main menu, one menu after the other. Menus and commands carry object names, by which
// packages and tests find them.
void TMainForm::CreateMenus() {
    QMenuBar* bar = menuBar();
    bar->setObjectName(QString::fromLatin1(ide::MainMenu));
    CreateFileMenu(bar);
    CreateEditMenu(bar);
    CreateSearchMenu(bar);
    CreateViewMenu(bar);
    CreateProjectMenu(bar);
    CreateRunMenu(bar);
    CreateComponentMenu(bar);
    CreateToolsMenu(bar);
    CreateHelpMenu(bar);
}

void TMainForm::CreateFileMenu(QMenuBar* bar) {
    QMenu* file = AddMenu(bar, QStringLiteral("&File"), ide::FileMenu);
    AddAction(
        file, ide::FileOpenCommand, QStringLiteral("&Open..."), QStringLiteral("Ctrl+O"), [this] {
            QString name = QFileDialog::getOpenFileName(
                this, QStringLiteral("Open"), QString(),
                QStringLiteral(
                    "Sources (*.pas *.dpr *.dpk *.cpp *.h *.bpr *.bpg *.dfm);;All files (*)"));
            if (!name.isEmpty() && !model_->OpenFile(ToBytes(name)))
                throw rtl::EFOpenError("Cannot open file \"" + ToBytes(name) + "\"");
        });
    AddAction(file, ide::FileOpenProjectCommand, QStringLiteral("Open Pro&ject..."),
              QStringLiteral("Ctrl+F11"), [this] {
                  QString name = QFileDialog::getOpenFileName(
                      this, QStringLiteral("Open Project"), QString(),
                      QStringLiteral("Projects (*.dpr *.dpk *.bpr *.bpk *.bpg)"));
                  if (!name.isEmpty()) OpenProject(ToBytes(name));
              });
    file->addSeparator();
    AddAction(
        file, ide::FileSaveCommand, QStringLiteral("&Save"), QStringLiteral("Ctrl+S"),
        [this] {
            if (TSourceEditor* b = TopBuffer())
                if (b->Module()) b->Module()->Save(false, true);
        },
        [this] { return HasView(); });
    AddAction(
        file, ide::FileSaveAllCommand, QStringLiteral("Sav&e All"), QStringLiteral("Shift+Ctrl+S"),
        [this] { model_->SaveAll(); }, [this] { return model_->GetModuleCount() > 0; });
    file->addSeparator();
    AddAction(
        file, ide::FileCloseCommand, QStringLiteral("&Close"), QStringLiteral("Ctrl+F4"),
        [this] {
            if (TEditView* v = TopView()) v->ClosePage();
        },
        [this] { return HasView(); });
    QAction* closeAll =
        AddAction(file, ide::FileCloseAllCommand, QStringLiteral("C&lose All"), QString(), nullptr,
                  [this] { return model_->GetModuleCount() > 0; });
    if (Application)
        Application->SetActionExecute(
            closeAll, TNotifyEvent::Of<&TCommandHandlers::CloseAll>(commandHandlers_.get()));
    file->addSeparator();
    AddAction(file, ide::FileExitCommand, QStringLiteral("E&xit"), QStringLiteral("Alt+F4"),
              [this] { close(); });
}

void TMainForm::CreateEditMenu(QMenuBar* bar) {
    QMenu* edit = AddMenu(bar, QStringLiteral("&Edit"), ide::EditMenu);
    AddAction(
        edit, ide::EditUndoCommand, QStringLiteral("&Undo"), QStringLiteral("Ctrl+Z"),
        [this] {
            if (TSourceEditor* b = TopBuffer()) b->Undo();
            editWindow_->Editor()->Refresh();
        },
        [this] { return Writable() && TopBuffer()->Buffer().CanUndo(); });
    AddAction(
        edit, ide::EditRedoCommand, QStringLiteral("&Redo"), QStringLiteral("Shift+Ctrl+Z"),
        [this] {
            if (TSourceEditor* b = TopBuffer()) b->Redo();
            editWindow_->Editor()->Refresh();
        },
        [this] { return Writable() && TopBuffer()->Buffer().CanRedo(); });
    edit->addSeparator();
    // Cut, copy, paste, delete and select all act on the editor as its keys do.
    auto key = [this](int k, Qt::KeyboardModifiers m) {
        return [this, k, m] {
            QKeyEvent press(QEvent::KeyPress, k, m);
            QApplication::sendEvent(editWindow_->Editor(), &press);
        };
    };
    AddAction(edit, ide::EditCutCommand, QStringLiteral("Cu&t"), QStringLiteral("Ctrl+X"),
              key(Qt::Key_X, Qt::ControlModifier), [this] { return HasBlock() && Writable(); });
    AddAction(edit, ide::EditCopyCommand, QStringLiteral("&Copy"), QStringLiteral("Ctrl+C"),
              key(Qt::Key_C, Qt::ControlModifier), [this] { return HasBlock(); });
    AddAction(edit, ide::EditPasteCommand, QStringLiteral("&Paste"), QStringLiteral("Ctrl+V"),
              key(Qt::Key_V, Qt::ControlModifier), [this] { return Writable(); });
    AddAction(
        edit, ide::EditDeleteCommand, QStringLiteral("&Delete"), QStringLiteral("Ctrl+Del"),
        [this] {
            if (TEditView* v = TopView()) v->GetBlock()->Delete();
            editWindow_->Editor()->Refresh();
        },
        [this] { return HasBlock() && Writable(); });
    AddAction(edit, ide::EditSelectAllCommand, QStringLiteral("Se&lect All"),
              QStringLiteral("Ctrl+A"), key(Qt::Key_A, Qt::ControlModifier),
              [this] { return HasView(); });
    edit->addSeparator();
    QAction* readOnly =
        AddAction(edit, ide::EditReadOnlyCommand, QStringLiteral("Read &Only"), QString(), [this] {
            if (TSourceEditor* b = TopBuffer()) b->SetIsReadOnly(!b->IsReadOnly());
            editWindow_->Editor()->Refresh();
        });
    readOnly->setCheckable(true);
    if (Application)
        Application->SetActionUpdate(readOnly, [this](QAction* a) {
            a->setEnabled(TopBuffer() != nullptr);
            a->setChecked(TopBuffer() && TopBuffer()->IsReadOnly());
        });
}

void TMainForm::CreateSearchMenu(QMenuBar* bar) {
    QMenu* search = AddMenu(bar, QStringLiteral("&Search"), ide::SearchMenu);
    AddAction(
        search, ide::SearchFindCommand, QStringLiteral("&Find..."), QStringLiteral("Ctrl+F"),
        [this] { FindText(false); }, [this] { return HasView(); });
    AddAction(
        search, ide::SearchAgainCommand, QStringLiteral("&Search Again"), QStringLiteral("F3"),
        [this] { FindText(true); }, [this] { return HasView() && !lastSearch_.empty(); });
    search->addSeparator();
    AddAction(
        search, ide::SearchGoToCommand, QStringLiteral("&Go to Line Number..."),
        QStringLiteral("Alt+G"), [this] { GoToLine(); }, [this] { return HasView(); });
}

void TMainForm::CreateViewMenu(QMenuBar* bar) {
    QMenu* view = AddMenu(bar, QStringLiteral("&View"), ide::ViewMenu);
    AddAction(view, ide::ViewPrjMgrCommand, QStringLiteral("&Project Manager"),
              QStringLiteral("Ctrl+Alt+F11"), [this] {
                  projectManager_->show();
                  projectManager_->raise();
              });
    view->addSeparator();
    AddAction(view, ide::ViewObjInspCommand, QStringLiteral("&Object Inspector"),
              QStringLiteral("F11"), [this] { ShowInspector(); });
    QMenu* debugWindows = AddMenu(view, QStringLiteral("&Debug Windows"), ide::ViewDebugMenu);
    AddAction(debugWindows, ide::ViewCPUCommand, QStringLiteral("&CPU"),
              QStringLiteral("Ctrl+Alt+C"), [this] { ShowCPUWindow(); });
    view->addSeparator();
    AddAction(
        view, ide::ViewUnitsCommand, QStringLiteral("U&nits..."), QStringLiteral("Ctrl+F12"),
        [this] { ViewUnits(); }, [this] { return ActiveProject(model_.get()) != nullptr; });
    AddAction(
        view, ide::ViewFormsCommand, QStringLiteral("&Forms..."), QStringLiteral("Shift+F12"),
        [this] { ViewForms(); }, [this] { return ActiveProject(model_.get()) != nullptr; });
    AddAction(
        view, ide::ViewSwapSourceFormCommand, QStringLiteral("Toggle Form/&Unit"),
        QStringLiteral("F12"), [this] { ToggleFormUnit(); },
        [this] {
            return ActiveDesigner() ||
                   (TopBuffer() && TopBuffer()->Module() && TopBuffer()->Module()->FormEditor());
        });
}

std::vector<QAction*> TMainForm::AddInactiveCommands(QMenu* menu,
                                                     std::initializer_list<TCommandText> commands) {
    std::vector<QAction*> added;
    for (const TCommandText& c : commands) {
        added.push_back(AddAction(menu, c.Name, QString::fromLatin1(c.Text),
                                  QString::fromLatin1(c.Keys), nullptr, [] { return false; }));
        added.back()->setStatusTip(QString::fromLatin1(kNoCompiler));
    }
    return added;
}

void TMainForm::CreateProjectMenu(QMenuBar* bar) {
    QMenu* project = AddMenu(bar, QStringLiteral("&Project"), ide::ProjectMenu);
    for (QAction* a : AddInactiveCommands(
             project, {{ide::ProjectCompileCommand, "&Compile", "Ctrl+F9"},
                       {ide::ProjectBuildCommand, "&Build", "Shift+F9"},
                       {ide::ProjectSyntaxCommand, "S&yntax Check", ""},
                       {ide::ProjectOptionsCommand, "&Options...", "Shift+Ctrl+F11"}}))
        a->setToolTip(QString::fromLatin1(kNoCompiler));
}

void TMainForm::CreateRunMenu(QMenuBar* bar) {
    QMenu* run = AddMenu(bar, QStringLiteral("&Run"), ide::RunMenu);
    AddInactiveCommands(run, {{ide::RunRunCommand, "&Run", "F9"},
                              {ide::RunStepOverCommand, "&Step Over", "F8"},
                              {ide::RunTraceIntoCommand, "&Trace Into", "F7"},
                              {ide::RunResetCommand, "Program R&eset", "Ctrl+F2"}});
}

void TMainForm::CreateComponentMenu(QMenuBar* bar) {
    QMenu* component = AddMenu(bar, QStringLiteral("&Component"), ide::ComponentMenu);
    AddAction(component, ide::ComponentInstallPackagesCommand,
              QStringLiteral("Install &Packages..."), QString(), [this] { ShowPackages(); });
}

void TMainForm::CreateToolsMenu(QMenuBar* bar) {
    QMenu* tools = AddMenu(bar, QStringLiteral("&Tools"), ide::ToolsMenu);
    AddAction(
        tools, ide::ToolsEditorOptionsCommand, QStringLiteral("&Editor Options..."), QString(),
        [this] { EditorOptions(); }, [this] { return HasView(); });
}

void TMainForm::CreateHelpMenu(QMenuBar* bar) {
    QMenu* help = AddMenu(bar, QStringLiteral("&Help"), ide::HelpMenu);
    AddAction(help, ide::HelpAboutCommand, QStringLiteral("&About..."), QString(), [this] {
        QMessageBox::about(this, QStringLiteral("About"),
                           QStringLiteral("Zelvane Workbench\n\nThe host IDE of the Zelvane "
                                          "add-in pack: projects, units, forms and packages."));
    });
}

// The main menu's image list, which packages reach through INTAServices: 80 pictures by index.
// Each index has one meaning, and the IDE's own commands of that meaning show its picture; 36
// is the picture of settings and options, 50 that of information and About boxes. Indexes
// without a command of their own carry the style's general pictures.
void TMainForm::CreateImageList() {
    struct TImage {
        int Index;
        QStyle::StandardPixmap Pixmap;
        const char* Command;
    };
    const TImage images[] = {
        {0, QStyle::SP_FileIcon, nullptr},
        {1, QStyle::SP_DialogOpenButton, ide::FileOpenCommand},
        {2, QStyle::SP_DirOpenIcon, ide::FileOpenProjectCommand},
        {3, QStyle::SP_DialogSaveButton, ide::FileSaveCommand},
        {4, QStyle::SP_DriveFDIcon, ide::FileSaveAllCommand},
        {5, QStyle::SP_DialogCloseButton, ide::FileCloseCommand},
        {6, QStyle::SP_TitleBarCloseButton, ide::FileCloseAllCommand},
        {7, QStyle::SP_DialogCancelButton, ide::FileExitCommand},
        {8, QStyle::SP_ArrowBack, ide::EditUndoCommand},
        {9, QStyle::SP_ArrowForward, ide::EditRedoCommand},
        {10, QStyle::SP_FileDialogContentsView, ide::SearchFindCommand},
        {11, QStyle::SP_FileDialogToParent, ide::SearchAgainCommand},
        {12, QStyle::SP_ArrowRight, ide::SearchGoToCommand},
        {13, QStyle::SP_FileDialogListView, ide::ViewPrjMgrCommand},
        {14, QStyle::SP_FileDialogInfoView, ide::ViewObjInspCommand},
        {15, QStyle::SP_ComputerIcon, ide::ViewCPUCommand},
        {16, QStyle::SP_BrowserReload, ide::ViewSwapSourceFormCommand},
        {17, QStyle::SP_MediaPlay, ide::RunRunCommand},
        {18, QStyle::SP_MediaStop, ide::RunResetCommand},
        {19, QStyle::SP_MediaSkipForward, ide::RunTraceIntoCommand},
        {20, QStyle::SP_MediaSeekForward, ide::RunStepOverCommand},
        {36, QStyle::SP_FileDialogDetailedView, ide::ToolsEditorOptionsCommand},
        {50, QStyle::SP_MessageBoxInformation, ide::HelpAboutCommand},
        {67, QStyle::SP_ComputerIcon, nullptr}, // the debugger's data: CPU, registers, memory
    };
    // The rest of the 80: the style's pictures in their own order, so that every index shows
    // one.
    QList<QIcon> list;
    for (int i = 0; i < 80; ++i)
        list << style()->standardIcon(QStyle::StandardPixmap(i % int(QStyle::SP_MediaVolumeMuted)));
    for (const TImage& image : images) {
        list[image.Index] = style()->standardIcon(image.Pixmap);
        if (image.Command) Command(image.Command)->setIcon(list[image.Index]);
    }
    model_->SetImages(list);
}

void TMainForm::CreateToolBars() {
    QStyle* st = style();
    QToolBar* standard = addToolBar(QStringLiteral("Standard"));
    standard->setObjectName(QString::fromLatin1(ide::StandardToolBar));
    for (const char* name : {ide::FileOpenCommand, ide::FileOpenProjectCommand,
                             ide::FileSaveCommand, ide::FileSaveAllCommand, ide::ViewPrjMgrCommand})
        standard->addAction(Command(name));

    QToolBar* viewBar = addToolBar(QStringLiteral("View"));
    viewBar->setObjectName(QString::fromLatin1(ide::ViewToolBar));
    viewBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    auto* viewUnit =
        new QAction(st->standardIcon(QStyle::SP_FileIcon), QStringLiteral("View Unit"), this);
    viewUnit->setObjectName(QString::fromLatin1(ide::ViewUnitButton));
    auto* viewForm = new QAction(st->standardIcon(QStyle::SP_FileDialogDetailedView),
                                 QStringLiteral("View Form"), this);
    viewForm->setObjectName(QString::fromLatin1(ide::ViewFormButton));
    if (Application) {
        Application->SetActionExecute(
            viewUnit, TNotifyEvent::Of<&TCommandHandlers::ViewUnit>(commandHandlers_.get()));
        Application->SetActionExecute(
            viewForm, TNotifyEvent::Of<&TCommandHandlers::ViewForm>(commandHandlers_.get()));
    }
    for (QAction* a : {viewUnit, viewForm}) {
        viewBar->addAction(a);
        if (Application)
            Application->SetActionUpdate(
                a, [this](QAction* x) { x->setEnabled(ActiveProject(model_.get()) != nullptr); });
    }
    viewBar->addAction(Command(ide::ViewSwapSourceFormCommand));

    QToolBar* debug = addToolBar(QStringLiteral("Debug"));
    debug->setObjectName(QString::fromLatin1(ide::DebugToolBar));
    for (const char* n : {ide::RunRunCommand, ide::RunResetCommand, ide::RunTraceIntoCommand,
                          ide::RunStepOverCommand})
        debug->addAction(Command(n));

    model_->SetToolBar(ide::StandardToolBar, standard);
    model_->SetToolBar(ide::ViewToolBar, viewBar);
    model_->SetToolBar(ide::DebugToolBar, debug);
}

bool TMainForm::event(QEvent* e) {
    if (e->type() == QEvent::ActionAdded || e->type() == QEvent::ActionRemoved) {
        QAction* a = static_cast<QActionEvent*>(e)->action();
        // Actions that join the action list are live in every window of the IDE.
        if (a && e->type() == QEvent::ActionAdded) a->setShortcutContext(Qt::ApplicationShortcut);
        if (a && !ownActions_.count(a)) {
            if (e->type() == QEvent::ActionAdded) {
                connect(a, &QAction::changed, this, &TMainForm::ResolveShortcuts,
                        Qt::UniqueConnection);
            } else {
                disconnect(a, &QAction::changed, this, &TMainForm::ResolveShortcuts);
            }
            bool result = QMainWindow::event(e);
            ResolveShortcuts();
            return result;
        }
    }
    return QMainWindow::event(e);
}

void TMainForm::ResolveShortcuts() {
    std::vector<QKeySequence> taken;
    for (QAction* a : actions())
        if (!ownActions_.count(a) && a->isEnabled())
            for (const QKeySequence& k : a->shortcuts())
                if (!k.isEmpty()) taken.push_back(k);
    auto isTaken = [&](const QKeySequence& k) {
        return std::find(taken.begin(), taken.end(), k) != taken.end();
    };
    // Keys given up come back once no package's action holds them; an action that was given
    // another key meanwhile keeps that one.
    for (auto it = yieldedKeys_.begin(); it != yieldedKeys_.end();) {
        auto [action, key] = *it;
        if (!action->shortcut().isEmpty() || !isTaken(key)) {
            it = yieldedKeys_.erase(it);
            if (action->shortcut().isEmpty()) action->setShortcut(key);
        } else {
            ++it;
        }
    }
    for (QAction* action : ownActions_)
        if (!action->shortcut().isEmpty() && isTaken(action->shortcut())) {
            yieldedKeys_[action] = action->shortcut();
            action->setShortcut(QKeySequence());
        }
}

// ---------------------------------------------------------------------------------------------
// The model's events

void TMainForm::HookModel() {
    TModelEvents& ev = model_->Events;
    ev.ModulesChanged = [this] {
        SyncEditWindow();
        RefreshProjectTree();
        // Each open form has its designer window; a closed module's window has closed itself.
        designers_->Sync();
    };
    ev.BufferChanged = [this](TSourceEditor* buffer) {
        if (TEditView* v = editWindow_->Editor()->View())
            if (&v->Buffer() == buffer) editWindow_->Editor()->Refresh();
    };
    ev.PageClosed = [this] { SyncEditWindow(); };
    ev.EditorShown = [this](IOTAEditor* editor) {
        SyncEditWindow();
        if (auto* form = dynamic_cast<TFormEditor*>(editor)) {
            designer::TDesignerWindow* window = designers_->Open(form);
            if (!window) return;
            inspector_->SetFormEditor(form);
            if (isVisible()) {
                window->show();
                window->raise();
                window->activateWindow();
            } else {
                pendingForm_ = window;
            }
        } else if (editWindow_->isVisible()) {
            editWindow_->raise();
        }
    };
    ev.ViewPainted = [this](TEditView* view) {
        if (editWindow_->Editor()->View() == view) editWindow_->Editor()->Refresh();
    };
}

void TMainForm::SyncEditWindow() {
    editWindow_->SyncPages();
    // As in the IDE, the edit window goes with its last page and comes back with the next one;
    // while its editor is lent out, whoever borrowed it shows the window again.
    if (editWindow_->TabControl()->count() == 0)
        editWindow_->hide();
    else if (isVisible() && !editWindow_->isVisible() && !editWindow_->EditorLent())
        editWindow_->show();
}

// The tree is asked to refresh on every module opened or closed, which seldom changes what it
// shows. Its rows are made again only when the open projects changed, since asking thousands of
// modules for their names made each file opened or closed wait; and it is filled again only when
// its rows changed, since a fill loses the user's selection and folding.
void TMainForm::RefreshProjectTree() {
    std::vector<TProjectModule*> projects;
    std::vector<TProjectKey> keys;
    for (int i = 0; i < model_->GetModuleCount(); ++i)
        if (auto* project = dynamic_cast<TProjectModule*>(model_->GetModule(i).get())) {
            projects.push_back(project);
            keys.push_back({project, project->GetFileName(), project->GetModuleCount()});
        }
    if (keys == projectKeys_) return;
    projectKeys_ = std::move(keys);
    std::vector<TProjectTreeRow> rows;
    for (TProjectModule* project : projects) {
        rows.push_back({FromBytes(rtl::ExtractFileName(project->GetFileName())),
                        FromBytes(project->GetFileName()), true});
        for (int m = 0; m < project->GetModuleCount(); ++m) {
            _di_IOTAModuleInfo info = project->GetModule(m);
            std::string form = info->GetFormName();
            QString text = FromBytes(info->GetName());
            if (!form.empty()) text += QStringLiteral(" {") + FromBytes(form) + QLatin1Char('}');
            rows.push_back({text, FromBytes(info->GetFileName()), false});
        }
    }
    if (rows == projectRows_) return;
    projectRows_ = std::move(rows);
    projectTree_->clear();
    const QIcon projectIcon = style()->standardIcon(QStyle::SP_DirIcon);
    const QIcon moduleIcon = style()->standardIcon(QStyle::SP_FileIcon);
    QTreeWidgetItem* top = nullptr;
    for (const TProjectTreeRow& row : projectRows_) {
        auto* item = row.IsProject ? new QTreeWidgetItem(projectTree_) : new QTreeWidgetItem(top);
        item->setText(0, row.Text);
        item->setToolTip(0, row.File);
        item->setIcon(0, row.IsProject ? projectIcon : moduleIcon);
        item->setData(0, Qt::UserRole, row.File);
        if (row.IsProject) top = item;
    }
    projectTree_->expandAll();
}

void TMainForm::ProjectItemActivated(QTreeWidgetItem* item) {
    std::string file = ToBytes(item->data(0, Qt::UserRole).toString());
    if (file.empty()) return;
    if (!item->parent()) return; // the project itself
    model_->OpenModuleFile(file, TOpenMode::Show);
}

// ---------------------------------------------------------------------------------------------
// Commands

std::vector<int> TMainForm::ChooseModules(const QString& title, const QStringList& names) {
    QDialog dialog(this);
    dialog.setObjectName(title == QStringLiteral("View Form") ? QStringLiteral("ViewFormDialog")
                                                              : QStringLiteral("ViewUnitDialog"));
    dialog.setWindowTitle(title);
    auto* list = new QListWidget(&dialog);
    list->setObjectName(QStringLiteral("ModuleList"));
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->addItems(names);
    if (list->count() > 0) list->setCurrentRow(0);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    connect(list, &QListWidget::itemActivated, &dialog, &QDialog::accept);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(list);
    layout->addWidget(buttons);
    dialog.resize(260, 300);
    std::vector<int> chosen;
    if (dialog.exec() != QDialog::Accepted) return chosen;
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->isSelected()) chosen.push_back(i);
    return chosen;
}

void TMainForm::ViewUnits() {
    Guarded(nullptr, [&] {
        TProjectModule* project = ActiveProject(model_.get());
        if (!project) return;
        std::vector<_di_IOTAModuleInfo> infos;
        QStringList names;
        for (int i = 0; i < project->GetModuleCount(); ++i) {
            infos.push_back(project->GetModule(i));
            names << FromBytes(infos.back()->GetName());
        }
        for (int i : ChooseModules(QStringLiteral("View Unit"), names))
            if (_di_IOTAModule m = infos[static_cast<size_t>(i)]->OpenModule())
                if (auto* mm = dynamic_cast<TModelModule*>(m.get()))
                    if (TSourceEditor* s = mm->SourceEditor()) s->Show();
    });
}

void TMainForm::ViewForms() {
    Guarded(nullptr, [&] {
        TProjectModule* project = ActiveProject(model_.get());
        if (!project) return;
        std::vector<_di_IOTAModuleInfo> infos;
        QStringList names;
        for (int i = 0; i < project->GetModuleCount(); ++i) {
            _di_IOTAModuleInfo info = project->GetModule(i);
            if (info->GetFormName().empty()) continue;
            infos.push_back(info);
            names << FromBytes(info->GetFormName());
        }
        for (int i : ChooseModules(QStringLiteral("View Form"), names))
            if (_di_IOTAModule m = infos[static_cast<size_t>(i)]->OpenModule())
                if (auto* mm = dynamic_cast<TModelModule*>(m.get()))
                    if (TFormEditor* f = mm->FormEditor()) f->Show();
    });
}

void TMainForm::FindText(bool again) {
    TEditView* v = TopView();
    if (!v) return;
    if (!again || lastSearch_.empty()) {
        bool ok = false;
        QString text = QInputDialog::getText(this, QStringLiteral("Find Text"),
                                             QStringLiteral("Text to find:"), QLineEdit::Normal,
                                             FromBytes(lastSearch_), &ok);
        if (!ok || text.isEmpty()) return;
        lastSearch_ = ToBytes(text);
    }
    // Forward from the cursor, without regard to case, as the IDE's default search.
    const TTextBuffer& text = v->Buffer().Buffer();
    std::string needle = rtl::LowerCase(lastSearch_);
    TTextPos from = text.Clamp(v->Cursor());
    for (int row = from.Row; row <= text.LineCount(); ++row) {
        std::string line = rtl::LowerCase(text.Line(row));
        size_t start = row == from.Row ? static_cast<size_t>(from.Col - 1) : 0;
        size_t at = start <= line.size() ? line.find(needle, start) : std::string::npos;
        if (at == std::string::npos) continue;
        int col = static_cast<int>(at) + 1;
        v->Buffer().Block().Visible = false;
        v->Buffer().Block().Style = btNonInclusive;
        v->SetCursor({row, col});
        v->GetBlock()->Extend(row, col + static_cast<int>(needle.size()));
        v->MoveViewToCursor();
        editWindow_->Editor()->Refresh();
        return;
    }
    QMessageBox::information(
        this, QStringLiteral("Information"),
        QStringLiteral("Search string '%1' not found").arg(FromBytes(lastSearch_)));
}

void TMainForm::GoToLine() {
    TEditView* v = TopView();
    if (!v) return;
    bool ok = false;
    int line = QInputDialog::getInt(this, QStringLiteral("Go to Line Number"),
                                    QStringLiteral("Enter new line number:"), v->Cursor().Row, 1,
                                    v->Buffer().GetLinesInBuffer(), 1, &ok);
    if (!ok) return;
    v->Buffer().Block().Visible = false;
    v->SetCursor({line, 1});
    v->MoveViewToCursor();
    editWindow_->Editor()->Refresh();
}

void TMainForm::SetPackageInfo(QStringList loaded, QStringList reports) {
    loadedPackages_ = std::move(loaded);
    packageReports_ = std::move(reports);
}

void TMainForm::ShowPackages() {
    QDialog dialog(this);
    dialog.setWindowTitle(QStringLiteral("Packages"));
    auto* list = new QListWidget(&dialog);
    if (loadedPackages_.isEmpty())
        list->addItem(QStringLiteral("(no design-time packages are loaded)"));
    list->addItems(loadedPackages_);
    for (const QString& r : packageReports_)
        list->addItem(QStringLiteral("Not installed: ") + r);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLabel(QStringLiteral("Design packages:"), &dialog));
    layout->addWidget(list);
    layout->addWidget(buttons);
    dialog.resize(420, 240);
    dialog.exec();
}

void TMainForm::EditorOptions() {
    TSourceEditor* b = TopBuffer();
    if (!b) return;
    QDialog dialog(this);
    dialog.setWindowTitle(QStringLiteral("Editor Options"));
    auto* autoIndent = new QCheckBox(QStringLiteral("&Auto indent mode"), &dialog);
    auto* insert = new QCheckBox(QStringLiteral("&Insert mode"), &dialog);
    autoIndent->setChecked(b->GetBufferOptions()->GetAutoIndent());
    insert->setChecked(b->GetBufferOptions()->GetInsertMode());
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(autoIndent);
    layout->addWidget(insert);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted) return;
    b->GetBufferOptions()->SetAutoIndent(autoIndent->isChecked());
    b->GetBufferOptions()->SetInsertMode(insert->isChecked());
    editWindow_->Editor()->Refresh();
}

// ---------------------------------------------------------------------------------------------
// Windows

void TMainForm::OpenProject(const std::string& path) {
    model_->OpenProjectFile(path);
    // The IDE opens the units the project names on its first line of forms: here the first
    // unit with a form, or else the first unit.
    if (TProjectModule* project = ActiveProject(model_.get())) {
        _di_IOTAModuleInfo first;
        for (int i = 0; i < project->GetModuleCount() && !first; ++i)
            if (!project->GetModule(i)->GetFormName().empty()) first = project->GetModule(i);
        if (!first && project->GetModuleCount() > 0) first = project->GetModule(0);
        if (first) {
            DelphiInterface<TModelModule> module =
                model_->OpenModuleFile(first->GetFileName(), TOpenMode::Show);
            // The form comes up in its designer beside the unit, with the unit in front.
            if (TFormEditor* form = module ? module->FormEditor() : nullptr) {
                form->Show();
                if (TSourceEditor* source = module->SourceEditor()) source->Show();
            }
        }
    }
    RefreshProjectTree();
}

void TMainForm::ArrangeWindows() {
    QRect screen(0, 0, 1280, 800);
    if (QScreen* s = QGuiApplication::primaryScreen()) screen = s->availableGeometry();
    int top = screen.top();
    move(screen.left(), top);
    resize(screen.width(), sizeHint().height());
    int below = top + std::max(sizeHint().height(), 60) + 4;
    int left = screen.width() / 5;
    // The inspector stands at the left below the main form, the project manager under it.
    int column = screen.bottom() - below - 2;
    int inspectorHeight = column * 3 / 5;
    inspector_->setGeometry(screen.left() + 2, below, left - 6, inspectorHeight - 4);
    projectManager_->setGeometry(screen.left() + 2, below + inspectorHeight, left - 6,
                                 column - inspectorHeight);
    editWindow_->setGeometry(screen.left() + left, below, screen.width() - left - 2, column);
    // Forms float over the right part of the editor, where source lines are short.
    for (designer::TDesignerWindow* w : designers_->Windows())
        w->move(std::max(screen.left() + left + 40, screen.right() - w->width() - 40), below + 150);
}

void TMainForm::ShowAll() {
    show();
    inspector_->show();
    projectManager_->show();
    // A form shown at start floats above the editor, as the designer does, while the editor
    // keeps the focus.
    if (pendingForm_) pendingForm_->show();
    editWindow_->show();
    editWindow_->activateWindow();
    editWindow_->raise();
    editWindow_->Editor()->setFocus();
    if (pendingForm_) {
        pendingForm_->raise();
        pendingForm_ = nullptr;
    }
}

void TMainForm::ShowInspector() {
    inspector_->show();
    inspector_->raise();
    inspector_->activateWindow();
}

designer::TDesignerWindow* TMainForm::ActiveDesigner() const {
    for (designer::TDesignerWindow* w : designers_->Windows())
        if (w->isVisible() && w->isActiveWindow()) return w;
    return nullptr;
}

// F12: from a form's designer window to its unit, and from a unit to its form.
void TMainForm::ToggleFormUnit() {
    if (designer::TDesignerWindow* w = ActiveDesigner()) {
        TModelModule* module = w->Editor() ? w->Editor()->Module() : nullptr;
        if (TSourceEditor* source = module ? module->SourceEditor() : nullptr) source->Show();
        editWindow_->show();
        editWindow_->activateWindow();
        editWindow_->raise();
        return;
    }
    if (TSourceEditor* b = TopBuffer())
        if (b->Module())
            if (TFormEditor* f = b->Module()->FormEditor()) f->Show();
}

// A snapshot beside the active project: the first *.snapshot file of its directory by name.
std::string TMainForm::FindSnapshot() const {
    TProjectModule* project = ActiveProject(model_.get());
    if (!project) return {};
    QDir dir(QFileInfo(FromBytes(project->GetFileName())).absolutePath());
    QStringList found =
        dir.entryList({QStringLiteral("*.snapshot")}, QDir::Files | QDir::Readable, QDir::Name);
    return found.isEmpty() ? std::string() : ToBytes(dir.filePath(found.first()));
}

bool TMainForm::ShowCPUWindow() {
    if (!cpuWindow_) {
        std::string file = snapshotFile_.empty() ? FindSnapshot() : snapshotFile_;
        if (file.empty()) {
            QString chosen = QFileDialog::getOpenFileName(
                this, QStringLiteral("Open Machine Snapshot"), QString(),
                QStringLiteral("Machine snapshots (*.snapshot);;All files (*)"));
            if (chosen.isEmpty()) return false;
            file = ToBytes(chosen);
        }
        cpuWindow_ = cpu::TCPUWindow::Load(file, nullptr);
        cpuWindow_->setParent(this, Qt::Window);
        cpuWindow_->resize(720, 520);
        QRect area = editWindow_->geometry();
        cpuWindow_->move(area.left() + 20, area.top() + 20);
    }
    cpuWindow_->show();
    cpuWindow_->raise();
    cpuWindow_->activateWindow();
    return true;
}

void TMainForm::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (event->spontaneous()) return;
    if (auto* app = TWorkbenchApplication::Instance()) app->MainFormShown();
}

void TMainForm::closeEvent(QCloseEvent* event) {
    if (closing_) {
        event->accept();
        return;
    }
    bool closed = true;
    Guarded(nullptr, [&] { closed = model_->CloseAll(); });
    if (!closed) {
        event->ignore();
        return;
    }
    closing_ = true;
    editWindow_->close();
    projectManager_->close();
    inspector_->close();
    if (cpuWindow_) cpuWindow_->close();
    event->accept();
}

} // namespace workbench
