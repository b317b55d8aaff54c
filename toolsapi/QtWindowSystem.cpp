// The window system of the foundation on Qt: message boxes, window placements, the state of keys
// and mouse buttons, and the beep.
#include "toolsapi/QtWindowSystem.h"

#include "foundation/Dialogs.h"
#include "toolsapi/QtBridge.h"

#include <QApplication>
#include <QMessageBox>
#include <QWidget>

namespace ToolsAPI {

using zelvane::HWND;

namespace {

QWidget* TopLevelWidget(HWND wnd) {
    if (!wnd) return nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w == wnd) return w;
    return nullptr;
}

using zelvane::VK_CONTROL, zelvane::VK_LBUTTON, zelvane::VK_MBUTTON, zelvane::VK_MENU,
    zelvane::VK_RBUTTON, zelvane::VK_SHIFT;

// The foundation's message box: the style's buttons and icon, the platform's answer codes.
int MessageBox(HWND owner, const std::string& text, const std::string& caption,
                        uint32_t style) {
    QMessageBox box(TopLevelWidget(owner));
    box.setWindowTitle(FromBytes(caption));
    box.setText(FromBytes(text));
    switch (style & 0xF0) {
    case zelvane::MB_ICONSTOP:
        box.setIcon(QMessageBox::Critical);
        break;
    case zelvane::MB_ICONQUESTION:
        box.setIcon(QMessageBox::Question);
        break;
    case zelvane::MB_ICONEXCLAMATION:
        box.setIcon(QMessageBox::Warning);
        break;
    case zelvane::MB_ICONINFORMATION:
        box.setIcon(QMessageBox::Information);
        break;
    default:
        break;
    }
    switch (style & 0x0F) {
    case zelvane::MB_YESNO:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        break;
    case zelvane::MB_YESNOCANCEL:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        break;
    default:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    }
    switch (box.exec()) {
    case QMessageBox::Yes:
        return zelvane::IDYES;
    case QMessageBox::No:
        return zelvane::IDNO;
    case QMessageBox::Ok:
        return zelvane::IDOK;
    default:
        return zelvane::IDCANCEL;
    }
}

bool GetPlacement(HWND wnd, zelvane::TWindowPlacement& p) {
    QWidget* w = TopLevelWidget(wnd);
    if (!w) return false;
    p = {};
    p.Length = zelvane::kWindowPlacementLength;
    p.ShowCmd = w->isMinimized() ? 2 : w->isMaximized() ? 3 : zelvane::SW_SHOWNORMAL;
    QRect r = w->isMaximized() || w->isMinimized() ? w->normalGeometry() : w->geometry();
    p.MinPosition = {-1, -1};
    p.MaxPosition = {-1, -1};
    p.NormalPosition = {r.left(), r.top(), r.left() + r.width(), r.top() + r.height()};
    return true;
}

bool SetPlacement(HWND wnd, const zelvane::TWindowPlacement& p) {
    QWidget* w = TopLevelWidget(wnd);
    if (!w) return false;
    const zelvane::TRect& r = p.NormalPosition;
    if (r.Right > r.Left && r.Bottom > r.Top)
        w->setGeometry(r.Left, r.Top, r.Right - r.Left, r.Bottom - r.Top);
    if (p.ShowCmd == 3)
        w->showMaximized();
    else if (p.ShowCmd == 2 || p.ShowCmd == 6)
        w->showMinimized();
    return true;
}

int16_t KeyState(int key) {
    Qt::KeyboardModifiers mods = QGuiApplication::queryKeyboardModifiers();
    Qt::MouseButtons buttons = QGuiApplication::mouseButtons();
    bool down = false;
    switch (key) {
    case VK_SHIFT:
        down = mods & Qt::ShiftModifier;
        break;
    case VK_CONTROL:
        down = mods & Qt::ControlModifier;
        break;
    case VK_MENU:
        down = mods & Qt::AltModifier;
        break;
    case VK_LBUTTON:
        down = buttons & Qt::LeftButton;
        break;
    case VK_RBUTTON:
        down = buttons & Qt::RightButton;
        break;
    case VK_MBUTTON:
        down = buttons & Qt::MiddleButton;
        break;
    default:
        break;
    }
    return down ? static_cast<int16_t>(-32768) : 0;
}

} // namespace

zelvane::TWindowSystem QtWindowSystem() {
    zelvane::TWindowSystem system;
    system.MessageBox = MessageBox;
    system.GetWindowPlacement = GetPlacement;
    system.SetWindowPlacement = SetPlacement;
    system.GetKeyState = KeyState;
    system.Beep = [] { QApplication::beep(); };
    return system;
}

} // namespace ToolsAPI
