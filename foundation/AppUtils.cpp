#include "foundation/AppUtils.h"

#include "rtl/Lists.h"
#include "rtl/TypInfo.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <sys/stat.h>
#include <sys/uio.h>
#include <typeinfo>
#include <unistd.h>

namespace zelvane {

RTL_IMPLEMENT_CLASS(EIdentError)

// ---------------------------------------------------------------------------------------------
// Exceptions

EIdentError::EIdentError(std::string message, int ident)
    : rtl::Exception(std::move(message)), Ident(ident) {}

EIdentError::EIdentError(std::string_view fmt, TVarRecs args, int ident)
    : rtl::Exception(rtl::Format(fmt, args)), Ident(ident) {}

EIdentError::EIdentError(const TErrorInfo& info)
    : rtl::Exception(info.Message), Ident(info.Ident) {}

EIdentError::EIdentError(const TErrorInfo& info, TVarRecs args)
    : rtl::Exception(rtl::Format(info.Message, args)), Ident(info.Ident) {}

EIdentError::EIdentError(const TResErrorInfo& info)
    : rtl::Exception(ResStr(info.Message)), Ident(info.Ident) {}

EIdentError::EIdentError(const TResErrorInfo& info, TVarRecs args)
    : rtl::Exception(rtl::Format(ResStr(info.Message), args)), Ident(info.Ident) {}

namespace {

std::string PointerText(const void* p) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%016llX",
                  static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(p)));
    return buf;
}

std::string Demangled(const char* name) {
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> d(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
    return status == 0 && d ? std::string(d.get()) : std::string(name);
}

} // namespace

std::string GetExceptionStr() {
    std::exception_ptr e = std::current_exception();
    if (!e) return {};
    std::string s;
    try {
        std::rethrow_exception(e);
    } catch (const rtl::Exception& x) {
        s = "Exception at " + PointerText(&x) + ": " + x.ClassName() + ":\n" + x.Message();
    } catch (const std::exception& x) {
        s = "Exception at " + PointerText(&x) + ": " + Demangled(typeid(x).name()) + ":\n" +
            x.what();
    } catch (...) {
        s = "Exception at " + PointerText(nullptr) + ": unknown";
    }
    if (s.empty() || s.back() != '.') s += '.';
    // The platform fills a buffer of 1024 bytes.
    if (s.size() > 1024) s.resize(1024);
    return s;
}

std::string GetFullExceptionStr() {
    std::string s = GetExceptionStr();
    size_t p = s.find('\n');
    if (p != std::string::npos) s.insert(p, 1, '\r');
    return s;
}

std::string ReadLastError() {
    return rtl::SysErrorMessage(rtl::GetLastError());
}

// ---------------------------------------------------------------------------------------------
// The window system

namespace {
TWindowSystem& TheWindowSystem() {
    static TWindowSystem system;
    return system;
}
} // namespace

TWindowSystem SetWindowSystem(TWindowSystem system) {
    std::swap(TheWindowSystem(), system);
    return system;
}

const TWindowSystem& WindowSystem() {
    return TheWindowSystem();
}

bool AllocHWnd(HWND& wnd, TWndProc proc) {
    wnd = nullptr;
    const TWindowSystem& ws = WindowSystem();
    if (!ws.AllocateWindow) return false;
    wnd = ws.AllocateWindow("TPZelvaneUtilWindow", std::move(proc));
    return wnd != nullptr;
}

HWND SafeAllocHWnd(TWndProc proc) {
    HWND wnd = nullptr;
    // Without a window system there is no system error to tell: ENOSYS says why.
    if (!AllocHWnd(wnd, std::move(proc))) rtl::RaiseLastOSError(ENOSYS);
    return wnd;
}

void DeallocHWnd(HWND wnd) {
    const TWindowSystem& ws = WindowSystem();
    if (wnd && ws.DestroyWindow) ws.DestroyWindow(wnd);
}

bool ServiceKeyPressed(int virtualKey) {
    const TWindowSystem& ws = WindowSystem();
    return ws.GetKeyState && ws.GetKeyState(virtualKey) < 0;
}

void Beep() {
    if (const TWindowSystem& ws = WindowSystem(); ws.Beep) ws.Beep();
}

// ---------------------------------------------------------------------------------------------
// Files and paths

namespace {

bool IsDelimiter(char c) {
    return c == '\\' || c == '/';
}

std::string ExePath() {
    std::string buf(4096, '\0');
    ssize_t n = readlink("/proc/self/exe", buf.data(), buf.size());
    if (n <= 0) return {};
    buf.resize(static_cast<size_t>(n));
    return buf;
}

// The platform's ChangeFileExt: the extension starts at the last "." after the last delimiter.
std::string ChangeExt(std::string_view path, std::string_view ext) {
    size_t i = path.size();
    while (i > 0 && path[i - 1] != '.' && !IsDelimiter(path[i - 1]) && path[i - 1] != ':')
        --i;
    if (i > 0 && path[i - 1] == '.') return std::string(path.substr(0, i - 1)) + std::string(ext);
    return std::string(path) + std::string(ext);
}

} // namespace

std::string GetAppDir() {
    std::string exe = ExePath();
    size_t p = exe.find_last_of("\\/");
    return p == std::string::npos ? std::string() : exe.substr(0, p + 1);
}

std::string GetAppIniFileName() {
    return ChangeExt(GetAppDir(), ".ini");
}

std::string GetTitle() {
    // The name first: a "." in a directory of the path must not cut it away.
    std::string name = ExtractFileNameEx(rtl::ExtractFileName(ExePath()));
    if (name.size() > 1) name = name.substr(0, 1) + rtl::AnsiLowerCase(name.substr(1));
    return name;
}

int64_t GetFileSizeEx(int handle) {
    struct stat st {};
    if (fstat(handle, &st) != 0) rtl::RaiseLastOSError(errno);
    return static_cast<int64_t>(st.st_size);
}

int64_t GetFileSizeEx(const std::string& fileName) {
    int fd = open(fileName.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) rtl::RaiseLastOSError(errno);
    struct stat st {};
    int rc = fstat(fd, &st);
    int err = errno;
    close(fd);
    if (rc != 0) rtl::RaiseLastOSError(err);
    return static_cast<int64_t>(st.st_size);
}

void ReadFileEx(const std::string& fileName, std::string& data) {
    data.clear();
    std::FILE* f = std::fopen(fileName.c_str(), "rb");
    if (!f) return;
    char buf[65536];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
        data.append(buf, n);
    bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed) throw rtl::EReadError("Stream read error");
}

void WriteFileEx(const std::string& text, const std::string& fileName) {
    std::FILE* f = std::fopen(fileName.c_str(), "wb");
    if (!f) return;
    size_t n = text.empty() ? 0 : std::fwrite(text.data(), 1, text.size(), f);
    bool failed = n != text.size();
    if (std::fclose(f) != 0) failed = true;
    if (failed) throw rtl::EWriteError("Stream write error");
}

std::string ExtractFileNameEx(std::string_view path) {
    size_t start = 0;
    for (size_t i = path.size(); i > 0; --i)
        if (IsDelimiter(path[i - 1]) || path[i - 1] == ':') {
            start = i;
            break;
        }
    // The name ends before the last "." of the path, if there is one. A "." that stands only
    // in the directory part thus leaves no name, as the platform's routine does.
    size_t end = path.rfind('.');
    if (end == std::string_view::npos) end = path.size();
    if (end < start) return {};
    return std::string(path.substr(start, end - start));
}

std::string ChangeFileName(std::string_view path, std::string_view newName) {
    size_t dirEnd = 0; // the directory with its delimiter (or drive colon)
    for (size_t i = path.size(); i > 0; --i)
        if (IsDelimiter(path[i - 1]) || path[i - 1] == ':') {
            dirEnd = i;
            break;
        }
    std::string_view name = path.substr(dirEnd);
    size_t dot = name.rfind('.');
    std::string_view ext = dot == std::string_view::npos ? std::string_view() : name.substr(dot);
    return std::string(path.substr(0, dirEnd)) + std::string(newName) + std::string(ext);
}

std::string TravelUpDir(std::string_view path) {
    size_t end = path.size();
    while (end > 0 && path[end - 1] == ' ')
        --end;
    if (end > 0 && IsDelimiter(path[end - 1])) --end;
    while (end > 0 && !IsDelimiter(path[end - 1]))
        --end;
    return std::string(path.substr(0, end));
}

void ReleaseString(std::string& s) {
    size_t p = s.find('\0');
    if (p != std::string::npos) s.resize(p);
}

std::string CreateTempPath() {
    const char* dir = std::getenv("TMPDIR");
    std::string path = dir && *dir ? dir : "/tmp";
    struct stat st {};
    if (stat(path.c_str(), &st) != 0) rtl::RaiseLastOSError(errno);
    if (!S_ISDIR(st.st_mode)) rtl::RaiseLastOSError(ENOTDIR);
    if (!IsDelimiter(path.back())) path += '/';
    return path;
}

std::string CreateTempFile(const std::string& prefix) {
    // The platform keeps the first three characters of the prefix.
    std::string name = CreateTempPath() + prefix.substr(0, 3) + "XXXXXX";
    int fd = mkstemp(name.data());
    if (fd < 0) rtl::RaiseLastOSError(errno);
    close(fd);
    return name;
}

// ---------------------------------------------------------------------------------------------
// Objects and interfaces

namespace {

// Reads memory of this process without risking a fault: a failed read says false.
bool SafeRead(const void* address, void* out, size_t size) {
    iovec local{out, size};
    iovec remote{const_cast<void*>(address), size};
    return process_vm_readv(getpid(), &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

// The address of the virtual table of a type_info object of the given kind: the word it starts
// with, read as LooksLikeObject reads the words of the objects it is given.
template <class T> const void* TypeInfoVTable() {
    static const void* const vtable = [] {
        const void* vt = nullptr;
        SafeRead(&typeid(T), &vt, sizeof vt);
        return vt;
    }();
    return vtable;
}

struct NoBase {
    virtual ~NoBase() = default;
};
struct OneBase : NoBase {};
struct OtherBase {
    virtual ~OtherBase() = default;
};
struct TwoBases : NoBase, OtherBase {};

} // namespace

bool LooksLikeObject(const void* p) {
    if (!p) return false;
    // An object of a polymorphic class starts with its virtual table pointer; the word before
    // the table points at the class's type_info, and the one before that is the offset of the
    // object in the whole, 0 for a pointer to the whole object. The type_info is trusted only
    // when it is itself one of the runtime's class type_info objects.
    const void* vtable = nullptr;
    if (!SafeRead(p, &vtable, sizeof vtable) || !vtable) return false;
    const void* slots[2] = {};
    if (!SafeRead(static_cast<const char*>(vtable) - sizeof slots, slots, sizeof slots))
        return false;
    if (reinterpret_cast<intptr_t>(slots[0]) != 0 || !slots[1]) return false;
    const void* tiVTable = nullptr;
    if (!SafeRead(slots[1], &tiVTable, sizeof tiVTable)) return false;
    if (tiVTable != TypeInfoVTable<NoBase>() && tiVTable != TypeInfoVTable<OneBase>() &&
        tiVTable != TypeInfoVTable<TwoBases>())
        return false;
    // Now the class is known to be a real class: ask whether TObject is among its bases.
    const auto* ti = static_cast<const std::type_info*>(slots[1]);
    void* obj = const_cast<void*>(p);
    return ti->__do_upcast(static_cast<const abi::__class_type_info*>(&typeid(rtl::TObject)), &obj);
}

void* ObjGetInterface(rtl::TObject* obj, const rtl::TGUID& iid) {
    void* intf = nullptr;
    if (!obj || !obj->GetInterface(iid, &intf))
        throw rtl::Exception(rtl::Format("Object[%s] does not support given interface.",
                                         {obj ? obj->ClassName() : std::string("nil")}));
    return intf;
}

// ---------------------------------------------------------------------------------------------
// Text and data

void AddLogData(const std::string& fileName, const std::string& text, int64_t maxSize) {
    const char* mode = "ab";
    struct stat st {};
    if (stat(fileName.c_str(), &st) != 0)
        mode = "wb";
    else if (maxSize != 0 && static_cast<int64_t>(st.st_size) >= maxSize)
        mode = "wb";
    std::FILE* f = std::fopen(fileName.c_str(), mode);
    if (!f) throw rtl::EInOutError(rtl::SysErrorMessage(errno), errno);
    std::string line = text + "\r\n";
    bool ok = std::fwrite(line.data(), 1, line.size(), f) == line.size();
    int err = errno;
    if (std::fclose(f) != 0 && ok) {
        ok = false;
        err = errno;
    }
    if (!ok) throw rtl::EInOutError(rtl::SysErrorMessage(err), err);
}

std::string WinPlacementToString(const TWindowPlacement& w) {
    return rtl::Format("%d,%d,%d,%d,%d,%d,%d,%d,%d,%d",
                       {static_cast<int32_t>(w.Flags), static_cast<int32_t>(w.ShowCmd),
                        w.MinPosition.X, w.MinPosition.Y, w.MaxPosition.X, w.MaxPosition.Y,
                        w.NormalPosition.Left, w.NormalPosition.Top, w.NormalPosition.Right,
                        w.NormalPosition.Bottom});
}

void StringToWinPlacement(const std::string& text, TWindowPlacement& w) {
    size_t pos = 0;
    auto next = [&]() -> int32_t {
        size_t comma = text.find(',', pos);
        std::string_view field = std::string_view(text).substr(
            std::min(pos, text.size()),
            comma == std::string::npos ? std::string::npos : comma - pos);
        pos = comma == std::string::npos ? text.size() : comma + 1;
        return rtl::StrToInt(field);
    };
    w.Flags = static_cast<uint32_t>(next());
    w.ShowCmd = static_cast<uint32_t>(next());
    w.MinPosition.X = next();
    w.MinPosition.Y = next();
    w.MaxPosition.X = next();
    w.MaxPosition.Y = next();
    w.NormalPosition.Left = next();
    w.NormalPosition.Top = next();
    w.NormalPosition.Right = next();
    w.NormalPosition.Bottom = next();
}

std::string GetWinPlacement(HWND wnd) {
    TWindowPlacement w;
    w.Length = kWindowPlacementLength;
    const TWindowSystem& ws = WindowSystem();
    if (ws.GetWindowPlacement) ws.GetWindowPlacement(wnd, w);
    return WinPlacementToString(w);
}

void SetWinPlacement(HWND wnd, const std::string& text, bool showNormal) {
    if (text.empty()) return;
    TWindowPlacement w;
    StringToWinPlacement(text, w);
    if (showNormal) w.ShowCmd = SW_SHOWNORMAL;
    w.Length = kWindowPlacementLength;
    const TWindowSystem& ws = WindowSystem();
    if (ws.SetWindowPlacement) ws.SetWindowPlacement(wnd, w);
}

namespace {
// The "=" of a "name=value" line, at position 2 or later; npos for a line without a name.
size_t NameEnd(const std::string& line) {
    size_t p = line.find('=');
    return p == 0 ? std::string::npos : p;
}
} // namespace

void TransformParams(rtl::TStrings* lines, std::vector<TParamPair>& params) {
    const int count = lines->Count();
    params.assign(static_cast<size_t>(count), TParamPair());
    size_t bare = 0;
    for (int i = 0; i < count; ++i) {
        std::string line = lines->Strings(i);
        size_t p = NameEnd(line);
        if (p == std::string::npos) {
            ++bare;
            continue;
        }
        params[static_cast<size_t>(i)] = {line.substr(0, p), line.substr(p + 1)};
    }
    // The array loses as many slots at its end as there were lines without a name, whatever
    // those slots hold.
    params.resize(params.size() - bare);
}

void TransformParamsEx(rtl::TStrings* lines, const TParamProc& proc, void* data) {
    if (!proc) return;
    for (int i = 0; i < lines->Count(); ++i) {
        std::string line = lines->Strings(i);
        size_t p = NameEnd(line);
        if (p != std::string::npos) proc(line.substr(0, p), line.substr(p + 1), data);
    }
}

void EncodeData(void* buffer, size_t size, char key) {
    auto* p = static_cast<unsigned char*>(buffer);
    for (size_t i = 0; i < size; ++i)
        p[i] = static_cast<unsigned char>(p[i] + key);
}

void DecodeData(void* buffer, size_t size, char key) {
    auto* p = static_cast<unsigned char*>(buffer);
    for (size_t i = 0; i < size; ++i)
        p[i] = static_cast<unsigned char>(p[i] - key);
}

} // namespace zelvane
