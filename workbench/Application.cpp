#include "workbench/Application.h"

#include "foundation/AppUtils.h"
#include "foundation/Dialogs.h"
#include "rtl/CodePage.h"
#include "rtl/TypInfo.h"
#include "toolsapi/QtBridge.h"
#include "toolsapi/QtWindowSystem.h"
#include "workbench/designer/DesignerWindow.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QCursor>
#include <QEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <iostream>
#include <memory>

namespace workbench {

RTL_IMPLEMENT_CLASS(TScreenObject)

using namespace ToolsAPI;

namespace {

// The event that carries a window message to a hidden window.
QEvent::Type MessageEventType() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

class TMessageEvent : public QEvent {
public:
    explicit TMessageEvent(const TMessage& message)
        : QEvent(MessageEventType()), Message(message) {}
    TMessage Message;
};

// The platform's cursors as Qt's shapes.
Qt::CursorShape CursorShape(TCursor cursor) {
    switch (cursor) {
    case crNone:
        return Qt::BlankCursor;
    case crCross:
        return Qt::CrossCursor;
    case crIBeam:
        return Qt::IBeamCursor;
    case crSizeNESW:
        return Qt::SizeBDiagCursor;
    case crSizeNS:
        return Qt::SizeVerCursor;
    case crSizeNWSE:
        return Qt::SizeFDiagCursor;
    case crSizeWE:
        return Qt::SizeHorCursor;
    case crUpArrow:
        return Qt::UpArrowCursor;
    case crHourGlass:
    case crSQLWait:
        return Qt::WaitCursor;
    case crDrag:
    case crMultiDrag:
        return Qt::DragCopyCursor;
    case crNoDrop:
    case crNo:
        return Qt::ForbiddenCursor;
    case crHSplit:
        return Qt::SplitHCursor;
    case crVSplit:
        return Qt::SplitVCursor;
    case crAppStart:
        return Qt::BusyCursor;
    case crHelp:
        return Qt::WhatsThisCursor;
    case crHandPoint:
        return Qt::PointingHandCursor;
    case crSizeAll:
        return Qt::SizeAllCursor;
    default:
        return Qt::ArrowCursor;
    }
}

// A window of the screen's list: a top-level widget that is a form, not a popup or tip.
bool IsForm(QWidget* w) {
    if (!w->isWindow()) return false;
    Qt::WindowType type = w->windowType();
    return type != Qt::Popup && type != Qt::ToolTip && type != Qt::SplashScreen &&
           type != Qt::Desktop && !qobject_cast<QMenu*>(w);
}

QWidget* AnyWidget(HWND wnd) {
    return IsWindow(wnd) ? static_cast<QWidget*>(wnd) : nullptr;
}

} // namespace

// A hidden window: an object that receives the messages posted to it.
class THiddenWindow : public QObject {
public:
    explicit THiddenWindow(TWndMethod method) : method_(std::move(method)) {}
    intptr_t Deliver(TMessage message) {
        if (method_) method_(message);
        return message.Result;
    }

protected:
    bool event(QEvent* e) override {
        if (e->type() != MessageEventType()) return QObject::event(e);
        Deliver(static_cast<TMessageEvent*>(e)->Message);
        return true;
    }

private:
    TWndMethod method_;
};

// ---------------------------------------------------------------------------------------------

TWorkbenchApplication::TWorkbenchApplication(int& argc, char** argv) : QApplication(argc, argv) {
    ToolsAPI::Application = this;
    ToolsAPI::Screen = this;
    installEventFilter(this);
    // The active form changes with the focus window, and with the focus widget inside modal
    // boxes that take the focus before their window is active.
    connect(this, &QGuiApplication::focusWindowChanged, this, [this] { CheckActiveForm(); });
    connect(this, &QApplication::focusChanged, this, [this] { CheckActiveForm(); });

    // The idle update: when the event loop is about to wait, at most every 100 ms; a timer
    // catches the last change of a burst.
    idleTimer_ = new QTimer(this);
    idleTimer_->setSingleShot(true);
    connect(idleTimer_, &QTimer::timeout, this, [this] { Idle(); });
    sinceIdle_.start();
    if (auto* dispatcher = QAbstractEventDispatcher::instance())
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] {
            if (inUpdate_ || idleTimer_->isActive()) return;
            qint64 elapsed = sinceIdle_.elapsed();
            idleTimer_->start(elapsed >= 100 ? 0 : static_cast<int>(100 - elapsed));
        });

    zelvane::TWindowSystem system = ToolsAPI::QtWindowSystem();
    system.AllocateWindow = [this](const std::string&, zelvane::TWndProc proc) -> HWND {
        // The procedure receives the window's own handle, known only once it exists.
        auto holder = std::make_shared<HWND>(nullptr);
        HWND wnd = AllocateHWnd([proc, holder](TMessage& m) {
            if (proc) m.Result = proc(*holder, m.Msg, m.WParam, m.LParam);
        });
        *holder = wnd;
        return wnd;
    };
    system.DestroyWindow = [this](HWND wnd) { DeallocateHWnd(wnd); };
    zelvane::SetWindowSystem(std::move(system));
}

TWorkbenchApplication::~TWorkbenchApplication() {
    zelvane::SetWindowSystem({});
    for (THiddenWindow* w : hiddenWindows_)
        delete w;
    hiddenWindows_.clear();
    if (ToolsAPI::Application == this) ToolsAPI::Application = nullptr;
    if (ToolsAPI::Screen == this) ToolsAPI::Screen = nullptr;
}

TWorkbenchApplication* TWorkbenchApplication::Instance() {
    return dynamic_cast<TWorkbenchApplication*>(QCoreApplication::instance());
}

bool TWorkbenchApplication::notify(QObject* receiver, QEvent* event) {
    if (event->type() == QEvent::PolishRequest && receiver->isWidgetType()) {
        auto* w = static_cast<QWidget*>(receiver);
        if (w->isWindow()) NoteWindow(w);
    }
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        HandleException(nullptr);
        return false;
    }
}

// ---------------------------------------------------------------------------------------------
// Title, exceptions, messages

std::string TWorkbenchApplication::GetTitle() {
    return ToolsAPI::ToBytes(applicationDisplayName());
}

void TWorkbenchApplication::SetTitle(const std::string& title) {
    setApplicationDisplayName(ToolsAPI::FromBytes(title));
}

void TWorkbenchApplication::HandleException(rtl::TObject* sender) {
    std::exception_ptr current = std::current_exception();
    if (!current) return;
    try {
        std::rethrow_exception(current);
    } catch (rtl::EAbort&) {
        // The silent exception.
    } catch (rtl::Exception& e) {
        if (onException_)
            onException_(sender, &e);
        else
            ShowException(&e);
    } catch (std::exception& e) {
        rtl::Exception wrapped(std::string(e.what()));
        if (onException_)
            onException_(sender, &wrapped);
        else
            ShowException(&wrapped);
    } catch (...) {
        rtl::Exception wrapped(std::string("An exception of an unknown type was raised"));
        if (onException_)
            onException_(sender, &wrapped);
        else
            ShowException(&wrapped);
    }
}

void TWorkbenchApplication::ShowException(rtl::Exception* e) {
    if (!e) return;
    std::string text = e->Message();
    if (!text.empty() && text.back() != '.') text += '.';
    std::string caption = GetTitle();
    if (errorBox_) {
        errorBox_(caption, text);
        return;
    }
    std::cerr << "workbench: " << rtl::Cp1251ToUtf8(text) << '\n';
    QMessageBox::critical(mainForm_, ToolsAPI::FromBytes(caption),
                          ToolsAPI::FromBytes(text));
}

void TWorkbenchApplication::ProcessMessages() {
    QApplication::processEvents(QEventLoop::AllEvents);
    QApplication::sendPostedEvents();
}

HWND TWorkbenchApplication::AllocateHWnd(TWndMethod method) {
    auto* window = new THiddenWindow(std::move(method));
    window->setObjectName(QStringLiteral("TPUtilWindow"));
    hiddenWindows_.insert(window);
    return window;
}

void TWorkbenchApplication::DeallocateHWnd(HWND wnd) {
    auto it = hiddenWindows_.find(static_cast<THiddenWindow*>(wnd));
    if (it == hiddenWindows_.end()) return;
    THiddenWindow* window = *it;
    hiddenWindows_.erase(it);
    // Deleting the object drops the events still queued for it.
    delete window;
}

bool TWorkbenchApplication::IsHiddenWindow(HWND wnd) const {
    return hiddenWindows_.count(static_cast<THiddenWindow*>(wnd)) > 0;
}

bool TWorkbenchApplication::PostMessage(HWND wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    if (!IsHiddenWindow(wnd)) {
        QWidget* w = AnyWidget(wnd);
        if (!w) return false;
        // A control told that it has the focus takes it, and its window comes to the front.
        if (msg == WM_SETFOCUS)
            QMetaObject::invokeMethod(
                w,
                [w] {
                    w->window()->activateWindow();
                    w->setFocus(Qt::OtherFocusReason);
                },
                Qt::QueuedConnection);
        return true;
    }
    postEvent(static_cast<THiddenWindow*>(wnd),
              new TMessageEvent(TMessage{msg, wParam, lParam, 0}));
    return true;
}

intptr_t TWorkbenchApplication::SendMessage(HWND wnd, uint32_t msg, uintptr_t wParam,
                                            intptr_t lParam) {
    if (IsHiddenWindow(wnd))
        return static_cast<THiddenWindow*>(wnd)->Deliver(TMessage{msg, wParam, lParam, 0});
    // The two messages the add-in sends to controls.
    if (QWidget* w = AnyWidget(wnd)) {
        if (msg == WM_SETREDRAW) {
            w->setUpdatesEnabled(wParam != 0);
        } else if (msg == WM_CANCELMODE) {
            if (QWidget::mouseGrabber() == w) w->releaseMouse();
        }
    }
    return 0;
}

QWidget* TWorkbenchApplication::GetCapture() {
    return QWidget::mouseGrabber();
}

// ---------------------------------------------------------------------------------------------
// Actions

void TWorkbenchApplication::SetActionUpdate(QAction* action, TActionUpdateProc proc) {
    if (!action) return;
    bool known = updates_.count(action) > 0;
    if (!proc) {
        updates_.erase(action);
        return;
    }
    updates_[action] = std::move(proc);
    if (!known)
        connect(action, &QObject::destroyed, this, [this, action] { updates_.erase(action); });
}

TNotifyEvent TWorkbenchApplication::GetActionExecute(QAction* action) {
    auto it = executes_.find(action);
    return it == executes_.end() ? TNotifyEvent() : it->second;
}

void TWorkbenchApplication::SetActionExecute(QAction* action, TNotifyEvent handler) {
    if (!action) return;
    if (!executes_.count(action)) {
        connect(action, &QAction::triggered, this, [this, action] {
            if (TNotifyEvent run = GetActionExecute(action)) run(nullptr);
        });
        connect(action, &QObject::destroyed, this, [this, action] { executes_.erase(action); });
    }
    executes_[action] = handler;
}

void TWorkbenchApplication::MainFormShown() {
    if (onMainFormShow_) onMainFormShow_(nullptr);
}

void TWorkbenchApplication::RunUpdate(QAction* action) {
    auto it = updates_.find(action);
    if (it == updates_.end()) return;
    TActionUpdateProc proc = it->second; // the handler may remove itself
    Guarded(nullptr, [&] { proc(action); });
}

void TWorkbenchApplication::UpdateActions() {
    if (inUpdate_) return;
    inUpdate_ = true;
    std::vector<QAction*> actions;
    for (auto& [a, p] : updates_)
        actions.push_back(a);
    for (QAction* a : actions)
        RunUpdate(a);
    inUpdate_ = false;
}

void TWorkbenchApplication::UpdateMenuActions(QWidget* menu) {
    for (QAction* a : menu->actions())
        RunUpdate(a);
}

void TWorkbenchApplication::Idle() {
    sinceIdle_.restart();
    ++idleUpdates_;
    UpdateActions();
}

namespace {

bool Fires(QAction* action, const QKeySequence& pressed) {
    if (!action->isEnabled()) return false;
    for (const QKeySequence& s : action->shortcuts())
        if (s.matches(pressed) == QKeySequence::ExactMatch) return true;
    return false;
}

// Whether the action's shortcut is live where the focus is: on its window, or on its widget and
// the widget's children.
bool LiveAt(QAction* action, QWidget* holder, QWidget* focus) {
    switch (action->shortcutContext()) {
    case Qt::WindowShortcut:
        return true;
    case Qt::WidgetWithChildrenShortcut:
        return focus && (focus == holder || holder->isAncestorOf(focus));
    case Qt::WidgetShortcut:
        return focus == holder;
    default:
        return false;
    }
}

// The action of the active window itself that the key fires, where an application-wide action
// of another window would fire too: the window's own action list is asked first, as on the
// platform, instead of the two standing as an ambiguous shortcut.
QAction* OwnActionOverApplicationWide(const QKeySequence& pressed) {
    QWidget* window = QApplication::activeWindow();
    QWidget* focus = QApplication::focusWidget();
    if (!window) return nullptr;
    QAction* own = nullptr;
    QList<QWidget*> holders = window->findChildren<QWidget*>();
    holders.prepend(window);
    for (QWidget* holder : holders)
        for (QAction* a : holder->actions())
            if (!own && Fires(a, pressed) && LiveAt(a, holder, focus)) own = a;
    if (!own) return nullptr;
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (top == window) continue;
        for (QAction* a : top->actions())
            if (a->shortcutContext() == Qt::ApplicationShortcut && Fires(a, pressed)) return own;
    }
    return nullptr;
}

} // namespace

bool TWorkbenchApplication::eventFilter(QObject* watched, QEvent* event) {
    // Before a menu shows, its actions update, as the platform's menus did on opening.
    if (event->type() == QEvent::Show)
        if (auto* menu = qobject_cast<QMenu*>(watched)) UpdateMenuActions(menu);
    // A window's own action takes its key from the IDE's: the key is claimed before the
    // shortcuts are matched, and its press runs the window's action.
    if (event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event);
        ownShortcut_ = OwnActionOverApplicationWide(QKeySequence(key->keyCombination()));
        if (ownShortcut_) {
            ownShortcutKey_ = key->keyCombination();
            event->accept();
            return true;
        }
    }
    if (event->type() == QEvent::KeyPress && ownShortcut_) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->keyCombination() == ownShortcutKey_) {
            QPointer<QAction> action = ownShortcut_;
            ownShortcut_ = nullptr;
            if (action) action->trigger();
            return true;
        }
    }
    return QApplication::eventFilter(watched, event);
}

// ---------------------------------------------------------------------------------------------
// Screen

// Forgets the windows that have gone or are windows no more.
void TWorkbenchApplication::ForgetGoneWindows() {
    std::erase_if(windows_, [this](const auto& entry) {
        if (entry.second && entry.second->isWindow()) return false;
        knownWindows_.erase(entry.first);
        return true;
    });
}

// A window joins the order when it is first polished. A new window may stand where a gone one
// stood, so the gone ones are forgotten first, or the new one would pass for the old.
void TWorkbenchApplication::NoteWindow(QWidget* w) {
    if (knownWindows_.count(w)) ForgetGoneWindows();
    if (knownWindows_.insert(w).second) windows_.emplace_back(w, w);
}

std::vector<QWidget*> TWorkbenchApplication::Forms() {
    ForgetGoneWindows();
    std::vector<QWidget*> forms;
    for (const auto& [address, w] : windows_)
        if (IsForm(w)) forms.push_back(w);
    for (QWidget* w : QApplication::topLevelWidgets())
        if (IsForm(w) && !knownWindows_.count(w)) forms.push_back(w);
    return forms;
}

int TWorkbenchApplication::GetFormCount() {
    return int(Forms().size());
}

QWidget* TWorkbenchApplication::GetForm(int index) {
    std::vector<QWidget*> forms = Forms();
    return index >= 0 && index < int(forms.size()) ? forms[size_t(index)] : nullptr;
}

bool TWorkbenchApplication::HasDesigner(QWidget* form) {
    return qobject_cast<designer::TDesignerWindow*>(form) != nullptr;
}

QWidget* TWorkbenchApplication::GetActiveForm() {
    QWidget* w = QApplication::activeModalWidget();
    if (!w) w = QApplication::activeWindow();
    return w;
}

QWidget* TWorkbenchApplication::GetActiveControl() {
    return QApplication::focusWidget();
}

void TWorkbenchApplication::CheckActiveForm() {
    QWidget* active = GetActiveForm();
    if (active == lastActiveForm_) return;
    lastActiveForm_ = active;
    if (onActiveFormChange_) {
        TNotifyEvent handler = onActiveFormChange_;
        Guarded(&screenObject_, [&] { handler(&screenObject_); });
    }
}

void TWorkbenchApplication::SetCursor(TCursor cursor) {
    if (cursor_ != crDefault) QApplication::restoreOverrideCursor();
    cursor_ = cursor;
    if (cursor_ != crDefault) QApplication::setOverrideCursor(QCursor(CursorShape(cursor_)));
}

int TWorkbenchApplication::GetWidth() {
    QScreen* s = primaryScreen();
    return s ? s->geometry().width() : 0;
}

int TWorkbenchApplication::GetHeight() {
    QScreen* s = primaryScreen();
    return s ? s->geometry().height() : 0;
}

} // namespace workbench
