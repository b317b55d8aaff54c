#include "toolsapi/Forms.h"

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

} // namespace ToolsAPI
