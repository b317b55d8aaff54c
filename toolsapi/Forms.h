// The application-level services the add-in sees besides the plug-in interface: the
// application (exception hook, title, main form, message processing, action update), the screen
// (forms, active form and control, cursor, size), hidden message windows with posted messages,
// the mouse capture, and the tab row of the IDE's edit window.
//
// The IDE's object inspector is the form named "PropertyInspector". Its pop-up menu is its child
// QMenu "PopupMenu", whose aboutToShow() is the platform's OnPopup; the form's destroyed() is its
// OnDestroy. That signal comes after Qt has deleted the form's children, so whatever a package
// put into the inspector it holds through QPointer and finds gone by then.
//
// It also has the platform's plain window operations on the IDE's widgets (show, hide,
// reparent, move), with which a package borrows one of the IDE's windows and gives it back.
//
// These are abstract classes; the host implements them and sets Application and Screen before
// it loads the add-in. Widgets are Qt types, named here only by declaration. A host without
// windows leaves both pointers empty, and the free routines below then do nothing.
#pragma once

#include "rtl/Lists.h"
#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class QAction;
class QObject;
class QWidget;

namespace ToolsAPI {

using rtl::TNotifyEvent;

// Application.OnException: the object that was handling the event, and the exception.
RTL_EVENT(TExceptionEvent, void(rtl::TObject* Sender, rtl::Exception* E),
          "Sender: TObject; E: Exception")

// A handle of a window, as the platform's HWND: a widget, or a hidden message window.
using HWND = void*;

// The platform's cursor numbers.
enum TCursor : int16_t {
    crDefault = 0,
    crNone = -1,
    crArrow = -2,
    crCross = -3,
    crIBeam = -4,
    crSizeNESW = -6,
    crSizeNS = -7,
    crSizeNWSE = -8,
    crSizeWE = -9,
    crUpArrow = -10,
    crHourGlass = -11,
    crDrag = -12,
    crNoDrop = -13,
    crHSplit = -14,
    crVSplit = -15,
    crMultiDrag = -16,
    crSQLWait = -17,
    crNo = -18,
    crAppStart = -19,
    crHelp = -20,
    crHandPoint = -21,
    crSizeAll = -22
};

// Window messages keep the platform's numbers.
constexpr uint32_t WM_NULL = 0x0000;
constexpr uint32_t WM_SETFOCUS = 0x0007;
constexpr uint32_t WM_SETREDRAW = 0x000B;
constexpr uint32_t WM_CANCELMODE = 0x001F;
constexpr uint32_t WM_USER = 0x0400;
// Messages of the range that RegisterWindowMessage hands out; the add-in uses fixed numbers of
// it as private messages of its hidden windows.
constexpr uint32_t WM_APP_PRIVATE_FIRST = 0xC000;

// A message as a window procedure receives it; the procedure sets Result.
struct TMessage {
    uint32_t Msg = 0;
    uintptr_t WParam = 0;
    intptr_t LParam = 0;
    intptr_t Result = 0;
};
// The procedure of a hidden window (the platform's TWndMethod).
using TWndMethod = std::function<void(TMessage& message)>;

// An action's update handler: the host calls it before a menu that shows the action opens and
// when the application is idle, so that it can set the action's enabled and checked state.
using TActionUpdateProc = std::function<void(QAction* action)>;

// ---------------------------------------------------------------------------------------------

class TApplicationServices {
public:
    virtual ~TApplicationServices() = default;

    virtual std::string GetTitle() = 0;
    virtual void SetTitle(const std::string& title) = 0;
    // The main form; nullptr before it exists.
    virtual QWidget* GetMainForm() = 0;
    // The owner window of the application's dialogs (the platform's Application.Handle).
    virtual HWND GetHandle() = 0;

    // The exception hook. HandleException is called from a catch block: it reports the
    // exception being handled through OnException, or ShowException when no hook is set. An
    // EAbort is silent. Outside a handler it does nothing. Objects thrown that are not
    // Exceptions are reported as an Exception with a text of their own.
    virtual TExceptionEvent GetOnException() = 0;
    virtual void SetOnException(TExceptionEvent handler) = 0;
    virtual void HandleException(rtl::TObject* sender) = 0;
    // Shows the exception's message in the error box.
    virtual void ShowException(rtl::Exception* e) = 0;

    // Runs the pending events and posted messages, then returns.
    virtual void ProcessMessages() = 0;

    // Sets or, with an empty proc, removes the update handler of an action.
    virtual void SetActionUpdate(QAction* action, TActionUpdateProc proc) = 0;
    // The execute handler of one of the IDE's actions or tool buttons (the platform's OnExecute
    // and OnClick): what the IDE runs when the action triggers, with nullptr as Sender. A package
    // reads it, puts its own in its place and puts the old one back when it goes. An action
    // whose work the IDE does not run through such a handler gives an empty one; setting one
    // on it makes the IDE run that handler too.
    virtual TNotifyEvent GetActionExecute(QAction* action) = 0;
    virtual void SetActionExecute(QAction* action, TNotifyEvent handler) = 0;
    // The main form's OnShow: run each time the main form is shown, with nullptr as Sender. The
    // IDE loads its packages before it shows the main form, so a package sees the first show.
    virtual TNotifyEvent GetOnMainFormShow() = 0;
    virtual void SetOnMainFormShow(TNotifyEvent handler) = 0;
    // Runs the update handlers of all actions now, as the idle update does.
    virtual void UpdateActions() = 0;

    // Hidden message windows. AllocateHWnd gives a window whose procedure receives the messages
    // posted and sent to it; DeallocateHWnd destroys it, and messages still queued for it are
    // dropped. PostMessage queues a message and gives false for a handle that is not a live
    // window; SendMessage delivers it at once and gives the procedure's result (0 for no
    // window).
    virtual HWND AllocateHWnd(TWndMethod method) = 0;
    virtual void DeallocateHWnd(HWND wnd) = 0;
    virtual bool PostMessage(HWND wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam) = 0;
    virtual intptr_t SendMessage(HWND wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam) = 0;

    // The widget that has the mouse capture (a pressed button being dragged), or nullptr.
    virtual QWidget* GetCapture() = 0;
};

class TScreenServices {
public:
    virtual ~TScreenServices() = default;

    // The application's forms: its top-level windows, hidden ones included, in creation order.
    virtual int GetFormCount() = 0;
    virtual QWidget* GetForm(int index) = 0;
    // Whether the form is a form under design (the platform's Designer is set): a designer
    // window of the IDE.
    virtual bool HasDesigner(QWidget* form) = 0;
    // The form that has the focus and the control in it that has the focus; nullptr when the
    // application is not in the foreground.
    virtual QWidget* GetActiveForm() = 0;
    virtual QWidget* GetActiveControl() = 0;
    // Fires after the active form changed; Sender is the screen object's TObject, or nullptr.
    virtual TNotifyEvent GetOnActiveFormChange() = 0;
    virtual void SetOnActiveFormChange(TNotifyEvent handler) = 0;
    // The application-wide cursor; crDefault lets each control show its own.
    virtual TCursor GetCursor() = 0;
    virtual void SetCursor(TCursor cursor) = 0;
    // The size of the primary screen in pixels.
    virtual int GetWidth() = 0;
    virtual int GetHeight() = 0;
};

// The host's objects; empty in a host without windows.
extern TApplicationServices* Application;
extern TScreenServices* Screen;

// The routines of the platform on the objects above. Without an application they do nothing
// and give empty results.
HWND AllocateHWnd(TWndMethod method);
void DeallocateHWnd(HWND wnd);
bool PostMessage(HWND wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam);
intptr_t SendMessage(HWND wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam);
QWidget* GetCapture();

// The platform's window operations on a widget of the application, whose handle is the widget.
// They work below the IDE's own bookkeeping, as on the platform: SetParent hangs a window into
// another (or, with no new parent, makes it a window of its own again) and keeps its visibility
// and its flags for the way back; SetWindowPos moves or sizes it as the flags allow.
constexpr int SW_HIDE = 0;
constexpr int SW_SHOW = 5;
constexpr uint32_t SWP_NOSIZE = 0x0001;
constexpr uint32_t SWP_NOMOVE = 0x0002;
constexpr uint32_t SWP_NOZORDER = 0x0004;
constexpr uint32_t SWP_NOACTIVATE = 0x0010;
// Whether the window was visible before.
bool ShowWindow(HWND wnd, int cmdShow);
// The old parent; nullptr for a window that was a window of its own, or for no window.
HWND SetParent(HWND child, HWND newParent);
bool SetWindowPos(HWND wnd, HWND insertAfter, int x, int y, int cx, int cy, uint32_t flags);
bool IsWindowVisible(HWND wnd);
// Whether the handle is a live widget; a handle of a destroyed one gives false.
bool IsWindow(HWND wnd);

// ---------------------------------------------------------------------------------------------
// The tab row of the edit window ("TabControl"): one tab per page, each with an object that
// belongs to the IDE. The widget named "TabControl" implements this class besides its widget
// class; the add-in reaches it with dynamic_cast from the QObject it found by name.

struct TTabEntry {
    std::string Text;
    void* Object = nullptr;
};

// OnChange of the tab row; the sender is the tab row's widget.
using TTabChangeEvent = std::function<void(QObject* sender)>;

class ITabControl {
public:
    virtual int GetTabCount() = 0;
    virtual std::string GetTabText(int index) = 0;
    virtual void* GetTabObject(int index) = 0;
    // The whole row: the platform's Tabs property, read and assigned as a whole.
    virtual std::vector<TTabEntry> GetTabs() = 0;
    virtual void SetTabs(const std::vector<TTabEntry>& tabs) = 0;
    // The current tab, -1 for none. Setting it does not fire OnChange, as on the platform; an
    // index out of range leaves the current tab as it is.
    virtual int GetTabIndex() = 0;
    virtual void SetTabIndex(int index) = 0;
    // Fired when the user picks a tab; the edit window's handler shows the page of the current
    // tab. Whoever sets TabIndex calls it to get the same.
    virtual TTabChangeEvent GetOnChange() = 0;
    virtual void SetOnChange(TTabChangeEvent handler) = 0;
    // Calls OnChange with the tab row as sender, if it is set.
    virtual void Change() = 0;

protected:
    ~ITabControl() = default;
};

} // namespace ToolsAPI
