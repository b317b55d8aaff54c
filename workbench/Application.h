// The workbench's application object: a QApplication that is also the application and screen
// services of the seam. It routes every exception that leaves an event handler to the exception
// hook, runs the actions' update handlers before a menu shows and when the event loop falls
// idle, keeps the hidden message windows, and installs the foundation's window system (message
// boxes, window placement, hidden windows, key state, beep). Where a key fires both an action of
// the active window itself and an application-wide one of the IDE, the window's own action runs.
#pragma once

#include "toolsapi/Forms.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <map>
#include <set>
#include <vector>
#include <string>

class QTimer;

namespace workbench {

// The sender of the screen's events.
class TScreenObject : public rtl::TObject {
    RTL_CLASS(TScreenObject, rtl::TObject)
};

class THiddenWindow;

class TWorkbenchApplication : public QApplication,
                              public ToolsAPI::TApplicationServices,
                              public ToolsAPI::TScreenServices {
    Q_OBJECT
public:
    TWorkbenchApplication(int& argc, char** argv);
    ~TWorkbenchApplication() override;

    static TWorkbenchApplication* Instance();

    // Delivers the event; an exception that leaves the receiver goes to HandleException.
    bool notify(QObject* receiver, QEvent* event) override;

    // TApplicationServices
    std::string GetTitle() override;
    void SetTitle(const std::string& title) override;
    QWidget* GetMainForm() override { return mainForm_; }
    ToolsAPI::HWND GetHandle() override { return mainForm_.data(); }
    ToolsAPI::TExceptionEvent GetOnException() override { return onException_; }
    void SetOnException(ToolsAPI::TExceptionEvent handler) override { onException_ = handler; }
    void HandleException(rtl::TObject* sender) override;
    void ShowException(rtl::Exception* e) override;
    void ProcessMessages() override;
    void SetActionUpdate(QAction* action, ToolsAPI::TActionUpdateProc proc) override;
    ToolsAPI::TNotifyEvent GetActionExecute(QAction* action) override;
    void SetActionExecute(QAction* action, ToolsAPI::TNotifyEvent handler) override;
    ToolsAPI::TNotifyEvent GetOnMainFormShow() override { return onMainFormShow_; }
    void SetOnMainFormShow(ToolsAPI::TNotifyEvent handler) override { onMainFormShow_ = handler; }
    void UpdateActions() override;
    ToolsAPI::HWND AllocateHWnd(ToolsAPI::TWndMethod method) override;
    void DeallocateHWnd(ToolsAPI::HWND wnd) override;
    bool PostMessage(ToolsAPI::HWND wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam) override;
    intptr_t SendMessage(ToolsAPI::HWND wnd, uint32_t msg, uintptr_t wParam,
                         intptr_t lParam) override;
    QWidget* GetCapture() override;

    // TScreenServices
    int GetFormCount() override;
    QWidget* GetForm(int index) override;
    bool HasDesigner(QWidget* form) override;
    QWidget* GetActiveForm() override;
    QWidget* GetActiveControl() override;
    ToolsAPI::TNotifyEvent GetOnActiveFormChange() override { return onActiveFormChange_; }
    void SetOnActiveFormChange(ToolsAPI::TNotifyEvent handler) override {
        onActiveFormChange_ = handler;
    }
    ToolsAPI::TCursor GetCursor() override { return cursor_; }
    void SetCursor(ToolsAPI::TCursor cursor) override;
    int GetWidth() override;
    int GetHeight() override;

    // The workbench's side.
    void SetMainForm(QWidget* form) { mainForm_ = form; }
    // The main form calls this when it has been shown; it runs OnShow.
    void MainFormShown();
    // How an error is shown to the user: by default a critical message box owned by the main
    // form. Tests put a recorder here.
    using TErrorBoxProc = std::function<void(const std::string& caption, const std::string& text)>;
    void SetErrorBox(TErrorBoxProc proc) { errorBox_ = std::move(proc); }
    // The number of times the idle update ran, for tests.
    int IdleUpdateCount() const { return idleUpdates_; }
    bool IsHiddenWindow(ToolsAPI::HWND wnd) const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Idle();
    // The forms in creation order, top-level widgets not seen yet last.
    std::vector<QWidget*> Forms();
    void ForgetGoneWindows();
    void NoteWindow(QWidget* w);
    void CheckActiveForm();
    void UpdateMenuActions(QWidget* menu);
    void RunUpdate(QAction* action);

    QPointer<QWidget> mainForm_;
    ToolsAPI::TExceptionEvent onException_;
    ToolsAPI::TNotifyEvent onActiveFormChange_;
    TScreenObject screenObject_;
    QPointer<QWidget> lastActiveForm_;
    ToolsAPI::TCursor cursor_ = ToolsAPI::crDefault;
    TErrorBoxProc errorBox_;
    std::map<QAction*, ToolsAPI::TActionUpdateProc> updates_;
    std::map<QAction*, ToolsAPI::TNotifyEvent> executes_;
    // Top-level widgets in the order they were made (each posts itself a polish request as it
    // is made, and those arrive in order).
    std::vector<std::pair<const QWidget*, QPointer<QWidget>>> windows_;
    std::set<const QWidget*> knownWindows_;
    ToolsAPI::TNotifyEvent onMainFormShow_;
    std::set<THiddenWindow*> hiddenWindows_;
    QElapsedTimer sinceIdle_;
    QTimer* idleTimer_ = nullptr;
    int idleUpdates_ = 0;
    bool inUpdate_ = false;
    // The window's own action whose key was claimed, until the key's press runs it.
    QPointer<QAction> ownShortcut_;
    QKeyCombination ownShortcutKey_;
};

// Runs f; an exception from it goes to the application's exception hook with sender.
template <class F> void Guarded(rtl::TObject* sender, F&& f) {
    try {
        f();
    } catch (...) {
        if (ToolsAPI::Application) ToolsAPI::Application->HandleException(sender);
    }
}

} // namespace workbench
