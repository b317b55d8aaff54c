#include "foundation/Dialogs.h"

namespace zelvane {

HWND OwnerWnd = nullptr;
std::string DialogCaption = GetTitle();

namespace {

constexpr uint32_t kErrorStyle = MB_OK | MB_ICONSTOP;                  // 16
constexpr uint32_t kInfoStyle = MB_OK | MB_ICONINFORMATION;            // 64
constexpr uint32_t kWarningStyle = MB_OK | MB_ICONEXCLAMATION;         // 48
constexpr uint32_t kQueryStyle = MB_YESNO | MB_ICONQUESTION;           // 36
constexpr uint32_t kQueryExStyle = MB_YESNOCANCEL | MB_ICONQUESTION;   // 35
constexpr uint32_t kWarningQueryStyle = MB_YESNO | MB_ICONEXCLAMATION; // 52

int Box(const std::string& text, uint32_t style) {
    const TWindowSystem& ws = WindowSystem();
    if (!ws.MessageBox) return 0;
    return ws.MessageBox(OwnerWnd, text, DialogCaption, style);
}

} // namespace

void ShowError(const std::string& text) {
    Box(text, kErrorStyle);
}
void ShowError(std::string_view fmt, TVarRecs args) {
    ShowError(rtl::Format(fmt, args));
}
void ShowInfo(const std::string& text) {
    Box(text, kInfoStyle);
}
void ShowInfo(std::string_view fmt, TVarRecs args) {
    ShowInfo(rtl::Format(fmt, args));
}
void ShowWarning(const std::string& text) {
    Box(text, kWarningStyle);
}
void ShowWarning(std::string_view fmt, TVarRecs args) {
    ShowWarning(rtl::Format(fmt, args));
}

bool QueryDialog(const std::string& text) {
    return Box(text, kQueryStyle) == IDYES;
}
bool QueryDialog(std::string_view fmt, TVarRecs args) {
    return QueryDialog(rtl::Format(fmt, args));
}
int QueryDialogEx(const std::string& text) {
    return Box(text, kQueryExStyle);
}
int QueryDialogEx(std::string_view fmt, TVarRecs args) {
    return QueryDialogEx(rtl::Format(fmt, args));
}
bool WarningDialog(const std::string& text) {
    return Box(text, kWarningQueryStyle) == IDYES;
}
bool WarningDialog(std::string_view fmt, TVarRecs args) {
    return WarningDialog(rtl::Format(fmt, args));
}
int WarningDialogEx(const std::string& text) {
    return Box(text, kQueryExStyle);
}
int WarningDialogEx(std::string_view fmt, TVarRecs args) {
    return WarningDialogEx(rtl::Format(fmt, args));
}

} // namespace zelvane
