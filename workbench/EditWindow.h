// The edit window: a form ("EditWindow_0") with the tab row ("TabControl", one tab per page,
// each carrying its edit view as an opaque object), the source editor ("Editor") that shows the
// page of the current tab, and a status line. It is the view of one of the model's edit windows:
// the pages are the model's edit views in that window, and the model says which is on top.
#pragma once

#include "toolsapi/Forms.h"
#include "workbench/SourceEdit.h"
#include "workbench/model/Model.h"

#include <QTabBar>
#include <QWidget>

class QLabel;

namespace workbench {

class TEditTabControl : public QTabBar, public ToolsAPI::ITabControl {
    Q_OBJECT
public:
    explicit TEditTabControl(QWidget* parent = nullptr);

    int GetTabCount() override { return count(); }
    std::string GetTabText(int index) override;
    void* GetTabObject(int index) override;
    std::vector<ToolsAPI::TTabEntry> GetTabs() override;
    void SetTabs(const std::vector<ToolsAPI::TTabEntry>& tabs) override;
    int GetTabIndex() override { return currentIndex(); }
    void SetTabIndex(int index) override;
    ToolsAPI::TTabChangeEvent GetOnChange() override { return onChange_; }
    void SetOnChange(ToolsAPI::TTabChangeEvent handler) override { onChange_ = std::move(handler); }
    void Change() override;

    // The workbench's side: adds or removes one tab without firing OnChange.
    void AddTab(const std::string& text, void* object);
    void RemoveTab(int index);
    int IndexOfObject(const void* object) const;

private:
    ToolsAPI::TTabChangeEvent onChange_;
    bool quiet_ = false;
};

class TEditWindowForm : public QWidget {
    Q_OBJECT
public:
    TEditWindowForm(TIDEModel* model, TEditWindow* window, QWidget* parent = nullptr);
    ~TEditWindowForm() override;

    TEditTabControl* TabControl() const { return tabs_; }
    TSourceEdit* Editor() const { return editor_; }
    TEditWindow* Window() const { return window_.get(); }
    // Whether the editor has been hung into another window; it stands in its place again, and
    // follows the window's size, once it is given back.
    bool EditorLent() const { return editor_->parentWidget() != this; }

    // Brings the tab row in line with the model: pages of closed views go, pages of new views
    // are added at the end (the row's own order is kept), and the model's top view of this
    // window becomes the current page.
    void SyncPages();
    // The page the editor shows.
    TEditView* CurrentView() const;
    // The text of a view's tab: the file name, without the extension for units and projects.
    static std::string TabText(TEditView* view);

signals:
    void PageChanged();

protected:
    bool event(QEvent* event) override;

private:
    void ShowCurrentTab();
    void UpdateStatus();
    std::vector<TEditView*> ViewsOfWindow() const;

    TIDEModel* model_;
    DelphiInterface<TEditWindow> window_;
    TEditTabControl* tabs_;
    TSourceEdit* editor_;
    QLabel* position_;
    QLabel* modified_;
    QLabel* mode_;
    QLabel* fileLabel_;
    // The views that have tabs, held so that a tab's object stays a live object.
    std::vector<DelphiInterface<TEditView>> held_;
};

} // namespace workbench
