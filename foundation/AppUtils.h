// Application utilities: raising exceptions in one line with texts by number, the error text of
// the current exception, the log file, window placement as text, small file and path routines,
// name=value parameters, the additive scrambling of resources, hidden message windows.
//
// Operations that need a window system (message boxes, window placement, hidden windows, the
// state of a key) go through TWindowSystem, which the GUI layer installs. Without it each one
// does what a host without that facility can do: see the comments of TWindowSystem.
#pragma once

#include "foundation/ResStrings.h"
#include "rtl/SysUtils.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace rtl {
class TStrings;
}

namespace zelvane {

using rtl::TVarRecs;

// ---------------------------------------------------------------------------------------------
// Exceptions

struct TErrorInfo {
    int Ident = 0;
    std::string Message;
};

// An error whose text is in the string table.
struct TResErrorInfo {
    int Ident = 0;
    int Message = 0; // number of the text
};

// An exception that carries a number of its own.
class EIdentError : public rtl::Exception {
    RTL_CLASS(EIdentError, rtl::Exception)
public:
    EIdentError(std::string message, int ident);
    EIdentError(std::string_view fmt, TVarRecs args, int ident);
    explicit EIdentError(const TErrorInfo& info);
    EIdentError(const TErrorInfo& info, TVarRecs args);
    explicit EIdentError(const TResErrorInfo& info);
    EIdentError(const TResErrorInfo& info, TVarRecs args);

    int Ident = 0;
};

// Raises an exception of class E with the text of a number from the string table.
template <class E> [[noreturn]] void CreateException(int resId) {
    throw E(ResStr(resId));
}
// ... with that text formatted with the arguments.
template <class E> [[noreturn]] void CreateException(int resId, TVarRecs args) {
    throw E(rtl::Format(ResStr(resId), args));
}
// Raises an exception of class E with the text.
template <class E> [[noreturn]] void CreateException(const std::string& text) {
    throw E(text);
}
template <class E> [[noreturn]] void CreateException(const char* text) {
    throw E(std::string(text));
}
// ... with the text formatted with the arguments.
template <class E> [[noreturn]] void CreateException(std::string_view fmt, TVarRecs args) {
    throw E(rtl::Format(fmt, args));
}

// The error text of the exception being handled, as the platform's ExceptionErrorMessage gives
// it: "Exception at <address>: <class>", then, for an Exception, ":", a line feed and the
// message; a final "." is added where the text lacks one. At most 1024 bytes. Empty outside a
// handler.
std::string GetExceptionStr();
// GetExceptionStr with its first line feed made CR LF.
std::string GetFullExceptionStr();
// The system's text for its last error (errno here).
std::string ReadLastError();

// ---------------------------------------------------------------------------------------------
// The window system

using HWND = void*;

// A window procedure: handle, message, wParam, lParam; the result.
using TWndProc = std::function<intptr_t(HWND, uint32_t, uintptr_t, intptr_t)>;

// The platform's WINDOWPLACEMENT.
struct TPoint {
    int32_t X = 0, Y = 0;
    friend bool operator==(const TPoint&, const TPoint&) = default;
};
struct TRect {
    int32_t Left = 0, Top = 0, Right = 0, Bottom = 0;
    friend bool operator==(const TRect&, const TRect&) = default;
};
struct TWindowPlacement {
    uint32_t Length = 0;
    uint32_t Flags = 0;
    uint32_t ShowCmd = 0;
    TPoint MinPosition;
    TPoint MaxPosition;
    TRect NormalPosition;
    friend bool operator==(const TWindowPlacement&, const TWindowPlacement&) = default;
};
constexpr uint32_t kWindowPlacementLength = 44;
constexpr uint32_t SW_SHOWNORMAL = 1;

// The functions behind the operations that need a window system. An empty member means the
// facility is missing:
// - MessageBox: the boxes show nothing and give 0, as a box that could not be made.
// - GetWindowPlacement: fails, and the placement stays zero.
// - SetWindowPlacement: nothing is applied.
// - AllocateWindow, DestroyWindow: no hidden window can be made; AllocHWnd gives false.
// - GetKeyState: no key is down.
// - Beep: silence.
struct TWindowSystem {
    std::function<int(HWND owner, const std::string& text, const std::string& caption,
                      uint32_t style)>
        MessageBox;
    std::function<bool(HWND wnd, TWindowPlacement& placement)> GetWindowPlacement;
    std::function<bool(HWND wnd, const TWindowPlacement& placement)> SetWindowPlacement;
    // Makes a hidden tool window of the class "TPZelvaneUtilWindow" with the procedure (which
    // may be empty: the default procedure); nullptr when it can't.
    std::function<HWND(const std::string& className, TWndProc proc)> AllocateWindow;
    std::function<void(HWND wnd)> DestroyWindow;
    // The platform's GetKeyState: negative while the key is down.
    std::function<int16_t(int virtualKey)> GetKeyState;
    // The platform's warning sound.
    std::function<void()> Beep;
};

// Installs the window system and returns the one it replaces.
TWindowSystem SetWindowSystem(TWindowSystem system);
const TWindowSystem& WindowSystem();

// ---------------------------------------------------------------------------------------------
// Files and paths. Both "\" and "/" are directory delimiters.

// The directory of the host program, with its trailing delimiter.
std::string GetAppDir();
// GetAppDir with its extension changed to ".ini".
std::string GetAppIniFileName();
// The host's file name without path and extension, from the second character on in lower case.
std::string GetTitle();
// The size of an open file (a descriptor here), or of a named file; the system's error is raised
// when it can't be had.
int64_t GetFileSizeEx(int handle);
int64_t GetFileSizeEx(const std::string& fileName);
// The whole file; a missing file gives an empty string.
void ReadFileEx(const std::string& fileName, std::string& data);
// Writes the text, replacing the file; a failure to create it is passed over in silence.
void WriteFileEx(const std::string& text, const std::string& fileName);
// The name without directory and extension.
std::string ExtractFileNameEx(std::string_view path);
// The directory of the path, the new name, and the old extension.
std::string ChangeFileName(std::string_view path, std::string_view newName);
// The parent directory, with its trailing delimiter, or an empty string.
std::string TravelUpDir(std::string_view path);
// Cuts the string at its first zero byte.
void ReleaseString(std::string& s);
// The name of a new unique (and created) file in the temporary directory.
std::string CreateTempFile(const std::string& prefix);
// The temporary directory, with its trailing delimiter.
std::string CreateTempPath();

// Whether the pointer points at an object of the object model, found without risking a fault.
bool LooksLikeObject(const void* p);
// The interface of the object, or a plain Exception "Object[<class>] does not support given
// interface.".
void* ObjGetInterface(rtl::TObject* obj, const rtl::TGUID& iid);

// Makes a hidden window with the procedure; false when it can't.
bool AllocHWnd(HWND& wnd, TWndProc proc);
// The same, raising the system's error when it can't.
HWND SafeAllocHWnd(TWndProc proc);
void DeallocHWnd(HWND wnd);
// The virtual key codes of the mouse buttons and the shift keys, as the platform numbers them.
constexpr int VK_LBUTTON = 0x01, VK_RBUTTON = 0x02, VK_MBUTTON = 0x04, VK_SHIFT = 0x10,
              VK_CONTROL = 0x11, VK_MENU = 0x12;
// Whether the key of the virtual key code is down now.
bool ServiceKeyPressed(int virtualKey);
// Sounds the warning beep; a refused editing command says no with it and nothing else.
void Beep();

// ---------------------------------------------------------------------------------------------
// Text and data

// Appends the text and CR LF to the log file. When maxSize isn't 0 and the file holds at least
// maxSize bytes, the file is started anew first. Input and output errors raise EInOutError.
void AddLogData(const std::string& fileName, const std::string& text, int64_t maxSize);

// "flags,show command,min x,min y,max x,max y,left,top,right,bottom".
std::string WinPlacementToString(const TWindowPlacement& placement);
// Reads the ten numbers into the placement; its length is left alone. A bad number raises
// EConvertError.
void StringToWinPlacement(const std::string& text, TWindowPlacement& placement);
std::string GetWinPlacement(HWND wnd);
void SetWinPlacement(HWND wnd, const std::string& text, bool showNormal);

using TParamPair = std::pair<std::string, std::string>;
using TParamProc =
    std::function<void(const std::string& name, const std::string& value, void* data)>;
// One slot per line; a line with "=" at position 2 or later fills its own slot with the name
// and value by the first "=". Then as many slots as there were lines without such an "=" are
// cut from the end.
void TransformParams(rtl::TStrings* lines, std::vector<TParamPair>& params);
// Calls the procedure for each line with "=" at position 2 or later, in order.
void TransformParamsEx(rtl::TStrings* lines, const TParamProc& proc, void* data);

// Adds the key to each byte, modulo 256, in place.
void EncodeData(void* buffer, size_t size, char key);
// Subtracts the key from each byte, in place.
void DecodeData(void* buffer, size_t size, char key);

} // namespace zelvane
