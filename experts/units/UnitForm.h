// Unit UnitForm: the unit list window. A small stay-on-top tool window with one line per tab of
// the IDE's edit window, in tab order, from which the user activates, closes, filters, sorts and
// reorders the open units.
//
// The window keeps no model of its own: the list is a copy of the tab row, and a reorder is
// written back over the row's tabs, objects and all. While it is open it disables every other
// form of the IDE by hand, as a modal window would, but without a modal loop, so that it goes on
// working while the IDE shows its "Confirm" prompt and switches pages for it.
#pragma once

#include "host/ExpShrForm.h"
#include "toolsapi/ToolsAPI.h"

#include <QListWidget>
#include <QPointer>

#include <string>
#include <vector>

class QComboBox;
class QMenu;
class QTimer;
class QToolBar;

namespace ToolsAPI {
class ITabControl;
}

namespace zelvane {

class TUnitManager;

// The list of units. While dragging is allowed, a press on the selection and a move drag the
// selected block; the item under the pointer is the drop mark.
class TUnitListBox : public QListWidget {
    Q_OBJECT
public:
    explicit TUnitListBox(QWidget* parent);

    bool DragAllowed = false;

signals:
    void DragStarted();
    // Asks whether a drop over the index is accepted; past the last item the index is the count.
    void DragOver(int index, bool& accept);
    void DragDropped();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    // The item under the point, or the count past the last one.
    int ItemAtPos(QPoint pos) const;

    QPoint pressPos_;
    bool pressed_ = false;
    bool pressedOnSelection_ = false;
    bool dragging_ = false;
    bool accepted_ = false;
};

class TUnitForm : public TSharedForm {
    Q_OBJECT
public:
    TUnitForm(QWidget* owner, TUnitManager* manager);
    ~TUnitForm() override;

    void FormCreate() override;
    void ReadFormData() override;
    void WriteFormData() override;

    // The controls and actions, by their names on the form.
    TUnitListBox* UnitList() const { return unitList_; }
    QComboBox* FilterCombo() const { return filterCombo_; }
    QWidget* FilterPanel() const { return filterPanel_; }
    QMenu* SettingsMenu() const { return pmSettings_; }
    QAction* acShow() const { return acShow_; }
    QAction* acClose() const { return acClose_; }
    QAction* acMoveUp() const { return acMoveUp_; }
    QAction* acMoveDown() const { return acMoveDown_; }
    QAction* acSort() const { return acSort_; }
    QAction* acFilter() const { return acFilter_; }
    QAction* acRefresh() const { return acRefresh_; }
    bool Filtered() const { return filtered_; }
    // True while units wait to be closed page by page.
    bool Closing() const;

    // Refills the list from the tab row, or empties it when there is none.
    void FillUnitList();
    // Applies the filter combo's text to the whole row.
    void FilterUnits();
    void SortUnits();
    // Moves the selection by delta places, all of it or nothing.
    void MoveItems(int delta);
    void OpenUnit();
    void CloseUnits();

protected:
    void SetProperties() override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct TFormState {
        QPointer<QWidget> Form;
        bool Enabled = false;
    };

    ToolsAPI::ITabControl* Tabs() const;
    bool FindEditWindowControls();
    void DoFillUnitList();
    void PopulateUnitList();
    void UpdateUnitList(const std::string& text);
    void SaveHistory(const std::string& text);
    // Gives the filter history to the expert.
    void StoreHistory();
    void UpdateFilterControl(bool visible);
    // Writes the list's order over the tab row.
    void AssignItems();
    void OpenSelectedUnit(int index, bool byEditor);
    void CloseOpenedUnit();
    void TimerTimer();
    bool ConfirmWindowOpen() const;
    bool HasDublicate(const std::string& name) const;
    bool HasDublicate() const;
    bool HasProjectModule() const;
    int FindSourceEditor(const std::string& name) const;
    int GetSelectedUnit() const;
    std::vector<int> GetSelectedUnits() const;
    int GetFirstSelected() const;
    int GetLastSelected() const;
    void SelectOnly(int index);
    void DisableAppForms();
    void EnableAppForms();
    void FillSettingMenu();
    void SettingItemClick(int tag);
    void pmSettingsPopup();
    void scExitExecute();
    void acShowExecute();
    void acCloseExecute();
    void acFilterExecute();
    void UnitListDragOver(int index, bool& accept);
    void UnitListDragDrop();
    // Enables the commands for the list's state, as the actions' update would.
    void UpdateActions();
    void FocusList();

    TUnitManager* manager_;
    QToolBar* toolBar_;
    QWidget* filterPanel_;
    QComboBox* filterCombo_;
    TUnitListBox* unitList_;
    QTimer* timer_;
    QMenu* pmSettings_;
    QAction* acShow_;
    QAction* acClose_;
    QAction* acMoveUp_;
    QAction* acMoveDown_;
    QAction* acSort_;
    QAction* acFilter_;
    QAction* acRefresh_;

    QPointer<QWidget> tabControl_;
    QPointer<QWidget> editorControl_;
    // Not counted: the modules keep them alive while they are open.
    std::vector<ToolsAPI::IOTASourceEditor*> sourceEditors_;
    std::vector<int> selected_;
    bool filtered_ = false;
    bool sortDescending_ = false;
    int dragStart_ = -1;
    // The drop mark of a drag: the item under the pointer, or the count past the last one.
    int dropIndex_ = -1;
    bool exitByMouse_ = false;
    QPointer<QWidget> prevActiveForm_;
    std::vector<TFormState> formStates_;
};

} // namespace zelvane
