// Message boxes with the owner window and caption that every unit shares. They go through the
// MessageBox of the installed window system (foundation/AppUtils.h); without one they show
// nothing and give 0, as a box that could not be made.
#pragma once

#include "foundation/AppUtils.h"

#include <string>
#include <string_view>

namespace zelvane {

// The owner of every box and its caption. At start the application's handle (none, below the
// GUI layer) and its title (GetTitle).
extern HWND OwnerWnd;
extern std::string DialogCaption;

// Box styles and results of the platform's MessageBox.
constexpr uint32_t MB_OK = 0x00;
constexpr uint32_t MB_YESNOCANCEL = 0x03;
constexpr uint32_t MB_YESNO = 0x04;
constexpr uint32_t MB_ICONSTOP = 0x10;
constexpr uint32_t MB_ICONQUESTION = 0x20;
constexpr uint32_t MB_ICONEXCLAMATION = 0x30;
constexpr uint32_t MB_ICONINFORMATION = 0x40;
constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDYES = 6;
constexpr int IDNO = 7;

void ShowError(const std::string& text);
void ShowError(std::string_view fmt, TVarRecs args);
void ShowInfo(const std::string& text);
void ShowInfo(std::string_view fmt, TVarRecs args);
void ShowWarning(const std::string& text);
void ShowWarning(std::string_view fmt, TVarRecs args);
// Yes and No; true for Yes.
bool QueryDialog(const std::string& text);
bool QueryDialog(std::string_view fmt, TVarRecs args);
// Yes, No and Cancel; the button's code (IDYES, IDNO, IDCANCEL).
int QueryDialogEx(const std::string& text);
int QueryDialogEx(std::string_view fmt, TVarRecs args);
// Yes and No with the exclamation icon; true for Yes.
bool WarningDialog(const std::string& text);
bool WarningDialog(std::string_view fmt, TVarRecs args);
// The same box as QueryDialogEx.
int WarningDialogEx(const std::string& text);
int WarningDialogEx(std::string_view fmt, TVarRecs args);

} // namespace zelvane
