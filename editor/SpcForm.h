// Unit SpcForm: the window of the settings editor. A tool bar, the tree on the left, and on the
// right the header of the label and control columns over a scroll box that holds them; an
// optional status bar below. The form holds no editing logic: its actions call the editor,
// and it decides which of them are enabled. It keeps its placement, the tree's width, the
// columns' widths and the file dialogs' directories in a section of settings, which a host may
// keep elsewhere through the editor's hooks.
#pragma once

#include "editor/SpcShrTypes.h"
#include "foundation/AppUtils.h"
#include "rtl/Lists.h"

#include <QDialog>

#include <memory>
#include <optional>
#include <vector>
#include <string>

class QAction;
class QHeaderView;
class QKeyEvent;
class QLabel;
class QScrollArea;
class QSplitter;
class QStatusBar;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;

namespace zelvane {

class TSpcEditor;

// The message the editor posts to its form when the tree is built: select the first node once
// the form has shown.
inline constexpr int WM_SPC_SHOWTOPITEM = 49128;

class TSpcForm : public QDialog {
    Q_OBJECT
public:
    explicit TSpcForm(TSpcEditor* editor);
    ~TSpcForm() override;

    TSpcEditor* Editor() const { return editor_; }
    QToolBar* ToolBar() const { return toolBar_; }
    QTreeWidget* TreeView() const { return treeView_; }
    QSplitter* Splitter() const { return splitter_; }
    QWidget* PaintPanel() const { return paintPanel_; }
    QHeaderView* HeaderControl() const { return headerControl_; }
    QScrollArea* ScrollBox() const { return scrollBox_; }
    // The widget inside the scroll box that holds the columns' panels.
    QWidget* ScrollContent() const { return scrollContent_; }
    QStatusBar* StatusBar() const { return statusBar_; }
    QLabel* StatusPanel(int index) const { return statusPanels_[index]; }
    QAction* Action(const char* name) const;

    // Visible buttons, and the separators between wholly hidden groups removed.
    void ApplyVisibleButtons(TSpcEdVisibleButtons buttons);
    // Enables the actions by the selected node and the editor's state.
    void UpdateActions();
    void UpdateSBState(bool show);
    void ResetScroll();
    void FocusScrollBox();
    // The line that follows a header drag when the columns don't.
    void ShowTrackLine(int x);
    void HideTrackLine();

    // Settings of the form.
    void GetIniParams(std::string& iniFile, std::string& section) const;
    void LoadSetting();
    void SaveSetting(bool full);
    void RestoreWinPlacement(int stage);

    // The file dialogs' state.
    std::string LoadDir, SaveDir;
    int LoadFilterIndex = 1, SaveFilterIndex = 1;

    // Asks for a file name with the form's filter; filterIndex in and out, 1-based.
    bool ExecuteFileDialog(bool save, std::string& fileName, std::string& dir, int& filterIndex,
                           const std::string& title);

    void setVisible(bool visible) override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override;

private:
    QAction* AddAction(const char* name, int image, const QString& caption, const QString& hint,
                       const QKeySequence& key);
    void MakeActions();
    void MakeLayout();
    void ExpandOrCollapse(bool expand);
    bool DispatchKey(QKeyEvent* event);
    void ReadSettingList(rtl::TStringList& list);

    TSpcEditor* editor_;
    QToolBar* toolBar_ = nullptr;
    QTreeWidget* treeView_ = nullptr;
    QSplitter* splitter_ = nullptr;
    QWidget* paintPanel_ = nullptr;
    QWidget* headerPanel_ = nullptr;
    QHeaderView* headerControl_ = nullptr;
    QScrollArea* scrollBox_ = nullptr;
    QWidget* scrollContent_ = nullptr;
    QStatusBar* statusBar_ = nullptr;
    QLabel* statusPanels_[2] = {};
    QWidget* trackLine_ = nullptr;
    std::vector<QAction*> actions_;
    bool reverting_ = false;
    bool headerDragging_ = false;
    int trackedSection_ = -1;
    std::optional<TWindowPlacement> placement_;
    bool placementRead_ = false;
    std::string storedSetting_;
    bool closing_ = false;
};

// Asks for the name of a specification file with the editor's filter; the filter index (from 1)
// and the directory go in and come back.
bool ExecuteSpcFileDialog(QWidget* parent, bool save, std::string& fileName, std::string& dir,
                          int& filterIndex, const std::string& title);

} // namespace zelvane
