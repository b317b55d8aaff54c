#include "toolsapi/Forms.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

namespace ToolsAPI {

TApplicationServices* Application = nullptr;
TScreenServices* Screen = nullptr;

HWND AllocateHWnd(TWndMethod method) {
    return Application ? Application->AllocateHWnd(std::move(method)) : nullptr;
}

void DeallocateHWnd(HWND wnd) {
    if (Application && wnd) Application->DeallocateHWnd(wnd);
}

bool PostMessage(HWND wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    return Application && Application->PostMessage(wnd, msg, wParam, lParam);
}

intptr_t SendMessage(HWND wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
    return Application ? Application->SendMessage(wnd, msg, wParam, lParam) : 0;
}

QWidget* GetCapture() {
    return Application ? Application->GetCapture() : nullptr;
}

namespace {

// The flags a window had before SetParent made it a child, for the way back.
constexpr const char* OwnFlagsProperty = "zelvaneOwnWindowFlags";

QWidget* WidgetOf(HWND wnd) {
    return IsWindow(wnd) ? static_cast<QWidget*>(wnd) : nullptr;
}

} // namespace

bool IsWindow(HWND wnd) {
    if (!wnd || !qApp) return false;
    // Compared as addresses only: a stale handle is never touched.
    const QWidgetList all = QApplication::allWidgets();
    return std::find(all.begin(), all.end(), static_cast<QWidget*>(wnd)) != all.end();
}

bool ShowWindow(HWND wnd, int cmdShow) {
    QWidget* w = WidgetOf(wnd);
    if (!w) return false;
    bool was = !w->isHidden();
    w->setVisible(cmdShow != SW_HIDE);
    return was;
}

HWND SetParent(HWND child, HWND newParent) {
    QWidget* w = WidgetOf(child);
    if (!w) return nullptr;
    QWidget* parent = newParent ? WidgetOf(newParent) : nullptr;
    QWidget* old = w->parentWidget();
    bool shown = !w->isHidden();
    if (parent) {
        if (w->isWindow()) w->setProperty(OwnFlagsProperty, int(w->windowFlags()));
        w->setParent(parent, w->windowFlags() & ~Qt::WindowType_Mask);
    } else {
        QVariant own = w->property(OwnFlagsProperty);
        w->setParent(nullptr, own.isValid() ? Qt::WindowFlags(own.toInt()) : Qt::WindowFlags(Qt::Window));
    }
    // Qt hides a widget it reparents; the platform keeps it as it was.
    if (shown) w->show();
    return old;
}

bool SetWindowPos(HWND wnd, HWND, int x, int y, int cx, int cy, uint32_t flags) {
    QWidget* w = WidgetOf(wnd);
    if (!w) return false;
    if (!(flags & SWP_NOMOVE)) w->move(x, y);
    if (!(flags & SWP_NOSIZE)) w->resize(cx, cy);
    if (!(flags & SWP_NOZORDER)) w->raise();
    return true;
}

bool IsWindowVisible(HWND wnd) {
    QWidget* w = WidgetOf(wnd);
    return w && w->isVisible();
}

} // namespace ToolsAPI
