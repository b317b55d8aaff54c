// Unit ViewForm: the module viewer's window. On the left the list of the project's forms or
// units; in the preview state, on the right, the chosen module itself. The preview makes no copy:
// it has the IDE open the module as usual and borrows the IDE's own windows. A form's designer
// window is hung into FormPanel by plain window operations, and the edit window's "Editor" is
// moved into UnitBox. Each goes back where it was when the selection moves on or the viewer
// closes, and a module that only the preview opened is closed again.
#pragma once

#include "experts/viewer/FormView.h"
#include "host/ExpShrForm.h"
#include "toolsapi/Forms.h"

#include <QFrame>
#include <QPointer>

#include <string>
#include <vector>

class QComboBox;
class QListWidget;
class QMenu;
class QPushButton;
class QScrollArea;
class QSplitter;
class QToolButton;

namespace zelvane {

// Messages the window posts to itself.
constexpr uint32_t WM_VIEW_RETURNFOCUS = 0xC01F; // WParam: the control to focus
constexpr uint32_t WM_VIEW_PROCESSMODULE = 0xC020;

class TViewStatusBar;

// The preview's form panel: it takes no input, and it paints the warning text that stands in
// for a form that can't be shown.
class TFormPanel : public QWidget {
    Q_OBJECT
public:
    explicit TFormPanel(QWidget* parent);
    QString Warning;
    QFont WarningFont;

protected:
    void paintEvent(QPaintEvent* event) override;
};

// A lowered panel whose children fill it, as the IDE's editor control fills its window.
class TUnitBox : public QFrame {
    Q_OBJECT
public:
    explicit TUnitBox(QWidget* parent);

protected:
    bool event(QEvent* event) override;

private:
    void FillChildren();
};

class TViewForm : public TSharedForm {
    Q_OBJECT
public:
    TViewForm(QWidget* owner, TViewFormMng* manager, TViewModuleMode mode);
    ~TViewForm() override;

    void FormCreate() override;
    void ReadFormData() override;
    void WriteFormData() override;

    TViewModuleMode ViewMode() const { return viewMode_; }
    bool Enhanced() const { return enhanced_; }
    void SetViewMode(TViewModuleMode mode);
    void SetEnhancedState(bool value);
    // The module of a list item.
    ToolsAPI::_di_IOTAModuleInfo ModuleAt(int index) const;
    // The first unit without a form, in a grouped unit list.
    int SeparatorIndex() const { return separatorIndex_; }

    QListWidget* ModuleList() const { return moduleList_; }
    QComboBox* ModuleChoice() const { return moduleChoice_; }
    QWidget* FormPanel() const { return formPanel_; }
    QWidget* UnitBox() const { return unitBox_; }
    QScrollArea* FormBox() const { return formBox_; }
    QString StatusText(int panel) const;
    QString Warning() const;

protected:
    void SetProperties() override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct TOpenedEditor {
        ToolsAPI::_di_IOTASourceEditor Editor;
        bool Keep = false;
        bool ReadOnly = false;
    };

    void WndProc(ToolsAPI::TMessage& message);
    void FillActionList();
    void FillModuleChoice();
    void FillModuleList();
    void ProcessViewMode();
    void BuildControls();
    // Runs the preview of the current item after the event that asked for it; asks coalesce.
    void PostProcessModule();
    void ProcessModule();
    void CheckDisplayScrollbars();
    void CheckState(QAction* action);
    void PopupMenuPopup();
    void ToggleSetting(QAction* item, int tag);
    void FormCloseQuery();

    // The preview.
    void DoProcessModule();
    void ShowForm(const ToolsAPI::_di_IOTAModuleInfo& info, bool wasOpen, std::string file);
    void ShowUnit(const ToolsAPI::_di_IOTAEditor& editor, bool wasOpen);
    void ShowStorageFormat(const std::string& file);
    void ReleaseShownForm();
    void ReleaseEditors();
    void FormWarning(const QString& text);
    void GetEditorInfo();
    void EmbedEditorControl();
    TOpenedEditor* AddOpenedEditor(const ToolsAPI::_di_IOTASourceEditor& editor, bool wasOpen);
    void MakeEditorReadOnly(TOpenedEditor* element);

    TViewFormMng* manager_;
    TViewModuleMode viewMode_;
    bool enhanced_ = false;
    ToolsAPI::HWND handle_ = nullptr;
    bool processPending_ = false;
    bool released_ = false;
    std::vector<ToolsAPI::_di_IOTAModuleInfo> modules_;
    ToolsAPI::_di_IOTAModuleInfo syncModule_;
    int separatorIndex_ = 0;

    QSplitter* splitter_;
    QWidget* modulePanel_;
    QWidget* controlPanel_;
    QComboBox* moduleChoice_;
    QListWidget* moduleList_;
    QScrollArea* formBox_;
    QWidget* formHolder_;
    TFormPanel* formPanel_;
    TUnitBox* unitBox_;
    QPushButton* btnOk_;
    QPushButton* btnCancel_;
    QToolButton* btnMore_;
    TViewStatusBar* statusBar_;
    QMenu* popupMenu_;
    QAction* n1_;
    QAction* n3_;

    // The form shown.
    ToolsAPI::_di_IOTAEditor formEditor_;
    QPointer<QWidget> shownControl_;
    std::string shownFile_;
    int shownLeft_ = 0;
    int shownTop_ = 0;
    bool wasVisible_ = false;
    bool wasOpen_ = false;

    // The units shown, and the IDE's edit control while it is borrowed.
    ToolsAPI::_di_IOTASourceEditor activeEditor_;
    QPointer<QWidget> editWindow_;
    QPointer<QWidget> editorControl_;
    QPointer<QWidget> editorParent_;
    std::vector<TOpenedEditor> openedEditors_;
};

} // namespace zelvane
