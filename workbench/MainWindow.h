// The IDE's main form ("AppBuilder"): the main menu, the action list, the tool bars (among them
// "ViewToolBar" with "View Unit" and "View Form"), and the IDE's other windows: the edit window,
// the project manager, a designer window for each open form, the object inspector
// ("PropertyInspector") and, on demand, the CPU window ("DisassemblyView") over a machine-state
// snapshot. It connects the project model to them: the model's events repaint and re-sync the
// windows, and the model's questions are asked in message boxes.
//
// The action list is this form: its actions() are the IDE's actions, each with an object name
// ("FileCloseAllCommand", ...). An action added to it gets an application-wide shortcut; where
// a package's action takes a shortcut that one of the IDE's own has, the package's wins, and
// the IDE's action gets its shortcut back when the package's lets go of it.
//
// The tool bar buttons "View Unit" and "View Form" run their execute handlers, which the
// application services hand out (GetActionExecute); the workbench's own run ViewUnits and
// ViewForms. A package that takes the buttons over puts the handlers it found back.
//
// The main form runs the application's OnMainFormShow each time it is shown.
#pragma once

#include "workbench/cpu/CPUView.h"
#include "workbench/designer/DesignerWindow.h"
#include "workbench/model/Model.h"

#include <QMainWindow>
#include <QPointer>
#include <QStringList>

#include <initializer_list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

class QAction;
class QMenu;
class QMenuBar;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;
class QListWidget;
class QLabel;

namespace workbench {

class TEditWindowForm;

namespace designer {
class TFormDesigners;
class TObjectInspector;
} // namespace designer

class TMainForm : public QMainWindow {
    Q_OBJECT
public:
    explicit TMainForm(TIDEModel* model);
    ~TMainForm() override;

    TIDEModel* Model() const { return model_.get(); }
    TEditWindowForm* EditWindow() const { return editWindow_; }
    QTreeWidget* ProjectTree() const { return projectTree_; }
    QWidget* ProjectManager() const { return projectManager_; }
    designer::TFormDesigners* Designers() const { return designers_; }
    designer::TObjectInspector* Inspector() const { return inspector_; }
    // The CPU window, once it has been opened; nullptr before.
    cpu::TCPUWindow* CPUWindow() const { return cpuWindow_.data(); }

    // One of the IDE's own actions by its object name (toolsapi/IDENames.h), or nullptr.
    QAction* Action(const std::string& name) const;

    // Places the main form across the top of the screen and the other windows below it.
    void ArrangeWindows();
    void ShowAll();
    // Opens a project, a group or a directory, and shows the first unit's page.
    void OpenProject(const std::string& path);
    // The packages the IDE loaded and what went wrong with others, for Component|Install
    // Packages.
    void SetPackageInfo(QStringList loaded, QStringList reports);
    // The machine-state snapshot that the CPU window shows. Without one, the window looks for a
    // snapshot beside the active project, and asks for a file when there is none.
    void SetSnapshotFile(const std::string& fileName) { snapshotFile_ = fileName; }
    // Opens the CPU window, or brings it to the front; raises rtl exceptions for a snapshot that
    // cannot be read. False when no snapshot was chosen.
    bool ShowCPUWindow();
    void ShowInspector();

public slots:
    // The IDE's own lists of units and forms: a modal list; OK opens the chosen modules.
    void ViewUnits();
    void ViewForms();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool event(QEvent* event) override;

private:
    QAction* AddAction(QMenu* menu, const char* name, const QString& text, const QString& keys,
                       std::function<void()> run, std::function<bool()> enabled = nullptr);
    // Commands of a compiler or debugger, which the workbench hasn't got: shown, never enabled,
    // with the reason as their status tip.
    struct TCommandText {
        const char* Name;
        const char* Text;
        const char* Keys;
    };
    std::vector<QAction*> AddInactiveCommands(QMenu* menu,
                                              std::initializer_list<TCommandText> commands);
    // A menu under the main menu or another menu, with its caption and object name.
    template <class Parent> QMenu* AddMenu(Parent* parent, const QString& title, const char* name);
    void CreateMenus();
    void CreateFileMenu(QMenuBar* bar);
    void CreateEditMenu(QMenuBar* bar);
    void CreateSearchMenu(QMenuBar* bar);
    void CreateViewMenu(QMenuBar* bar);
    void CreateProjectMenu(QMenuBar* bar);
    void CreateRunMenu(QMenuBar* bar);
    void CreateComponentMenu(QMenuBar* bar);
    void CreateToolsMenu(QMenuBar* bar);
    void CreateHelpMenu(QMenuBar* bar);
    // A command the workbench made; a name it never made is a programming error and raises.
    QAction* Command(const char* name) const;
    bool HasView() const;
    bool Writable() const;
    bool HasBlock() const;
    // Takes a key from the IDE's own actions where an enabled package's action in the list has
    // it, and gives back the keys that no package's action holds any more.
    void ResolveShortcuts();
    void CreateImageList();
    void CreateToolBars();
    void HookModel();
    // Brings the edit window's pages in line with the model, and shows or hides it with them.
    void SyncEditWindow();
    void RefreshProjectTree();
    void ProjectItemActivated(QTreeWidgetItem* item);
    TEditView* TopView() const;
    TSourceEditor* TopBuffer() const;
    void FindText(bool again);
    void GoToLine();
    void ShowPackages();
    void EditorOptions();
    // The designer window in front, when the active window is one.
    designer::TDesignerWindow* ActiveDesigner() const;
    void ToggleFormUnit();
    std::string FindSnapshot() const;
    // The modal list of the IDE: the names given, the chosen indexes back (none on Cancel).
    std::vector<int> ChooseModules(const QString& title, const QStringList& names);

    class TCommandHandlers;

    DelphiInterface<TIDEModel> model_;
    std::unique_ptr<TCommandHandlers> commandHandlers_;
    TEditWindowForm* editWindow_ = nullptr;
    QWidget* projectManager_ = nullptr;
    QTreeWidget* projectTree_ = nullptr;
    // What the project tree shows: each project, then its modules.
    struct TProjectTreeRow {
        QString Text, File;
        bool IsProject = false;
        bool operator==(const TProjectTreeRow&) const = default;
    };
    std::vector<TProjectTreeRow> projectRows_;
    // The projects the rows are of, each with its file and module count. A project's modules
    // stay as they are while it is open, so the same projects give the same rows.
    struct TProjectKey {
        const TProjectModule* Project;
        std::string FileName;
        int ModuleCount;
        bool operator==(const TProjectKey&) const = default;
    };
    std::vector<TProjectKey> projectKeys_;
    designer::TFormDesigners* designers_ = nullptr;
    designer::TObjectInspector* inspector_ = nullptr;
    // The designer window the model showed before the main form was up; ShowAll brings it up.
    QPointer<designer::TDesignerWindow> pendingForm_;
    QPointer<cpu::TCPUWindow> cpuWindow_;
    std::string snapshotFile_;
    std::set<QAction*> ownActions_;                // the IDE's own actions
    std::map<QAction*, QKeySequence> yieldedKeys_; // own actions that gave their key to a package's
    std::string lastSearch_;
    QStringList loadedPackages_;
    QStringList packageReports_;
    bool closing_ = false;
};

} // namespace workbench
