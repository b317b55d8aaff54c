// Application utilities: exceptions by number, error texts, paths, the log file, window
// placement text, scrambling, and the operations behind the window system.
#include "foundation/AppUtils.h"
#include "foundation/Dialogs.h"

#include "rtl/TypInfo.h"
#include "tests/foundation/TestText.h"
#include "tests/rtl/TestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace zelvane;
using namespace foundationtest;
namespace fs = std::filesystem;

namespace apptest {
using rtl::Exception;
RTL_EXCEPTION(ETestError, Exception)
} // namespace apptest
using apptest::ETestError;

namespace {

// Installs a window system for one test and puts the old one back.
struct WindowSystemGuard {
    explicit WindowSystemGuard(TWindowSystem ws) : old(SetWindowSystem(std::move(ws))) {}
    ~WindowSystemGuard() { SetWindowSystem(std::move(old)); }
    TWindowSystem old;
};

} // namespace

RTL_IMPLEMENT_CLASS(apptest::ETestError)

// --- exceptions ------------------------------------------------------------------------------

TEST(EIdentError, EveryConstructorSetsTheIdent) {
    const EIdentError errors[] = {EIdentError("text", 1),
                                  EIdentError("value %d", {7}, 2),
                                  EIdentError(TErrorInfo{3, "info"}),
                                  EIdentError(TErrorInfo{4, "info %s"}, {"x"}),
                                  EIdentError(TResErrorInfo{5, SNoIdentIntf}),
                                  EIdentError(TResErrorInfo{6, SIdentNotAcceptable}, {"1a"})};
    std::vector<std::string> got;
    for (const auto& e : errors)
        got.push_back(std::to_string(e.Ident) + " " + e.Message());
    EXPECT_EQ(got, (std::vector<std::string>{"1 text", "2 value 7", "3 info", "4 info x",
                                             "5 Object should support interface IIdentIntf",
                                             "6 Unacceptable value for identifier [1a]"}));
    EXPECT_TRUE(errors[5].InheritsFrom(rtl::Exception::StaticClass()));
}

// GetExceptionStr and GetFullExceptionStr while an ETestError of the message is handled.
std::pair<std::string, std::string> ExceptionStrs(const std::string& message) {
    try {
        throw ETestError(message);
    } catch (...) {
        return {GetExceptionStr(), GetFullExceptionStr()};
    }
}

TEST(ExceptionStr, HeaderAndMessageByOneLineFeedNoSecondFullStopAndAtMost1024Bytes) {
    EXPECT_EQ(GetExceptionStr(), "");
    auto [s, full] = ExceptionStrs("Broken");
    EXPECT_EQ(s.rfind("Exception at ", 0), 0u) << s;
    EXPECT_EQ(s.substr(s.find('\n') - 11), "ETestError:\nBroken.");
    EXPECT_EQ(full, s.substr(0, s.find('\n')) + "\r\nBroken.");
    std::string stop = ExceptionStrs("Ends with a stop.").first;
    EXPECT_EQ(stop.substr(stop.size() - 5), "stop.");
    EXPECT_EQ(ExceptionStrs(std::string(3000, 'x')).first.size(), 1024u);
}

// --- paths -----------------------------------------------------------------------------------

TEST(Paths, TravelUpDirExtractFileNameExAndChangeFileName) {
    struct Case {
        std::string (*Fn)(std::string_view);
        const char *Path, *Expected;
    };
    auto change = [](std::string_view path) { return ChangeFileName(path, "New"); };
    const Case cases[] = {
        {TravelUpDir, "C:\\a\\b\\", "C:\\a\\"},
        {TravelUpDir, "C:\\a\\b  ", "C:\\a\\"},
        {TravelUpDir, "abc", ""},
        {TravelUpDir, "", ""},
        {TravelUpDir, "/x", "/"},
        {TravelUpDir, "/home/user/src/", "/home/user/"},
        {ExtractFileNameEx, "C:\\dir\\Unit1.pas", "Unit1"},
        {ExtractFileNameEx, "C:Unit1.pas", "Unit1"},
        {ExtractFileNameEx, "C:\\dir\\Makefile", "Makefile"},
        {ExtractFileNameEx, "a.b.c", "a.b"},
        // A "." that stands only in the directory leaves no name.
        {ExtractFileNameEx, "C:\\my.dir\\Makefile", ""},
        {change, "C:\\dir\\Unit1.pas", "C:\\dir\\New.pas"},
        {change, "noext", "New"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(c.Fn(c.Path), c.Expected) << c.Path;
}

TEST(Paths, ReleaseStringCutsAtTheFirstZero) {
    std::string s("abc\0def\0", 8), t = "whole";
    ReleaseString(s);
    ReleaseString(t);
    EXPECT_EQ(s + " " + t, "abc whole");
}

TEST(Paths, AppDirTitleAndIniName) {
    std::string dir = GetAppDir();
    ASSERT_FALSE(dir.empty());
    EXPECT_EQ(dir.back(), '/');
    // The directory ends in a delimiter, so the ini name is the directory and ".ini".
    EXPECT_EQ(GetAppIniFileName(), dir + ".ini");
    // The program's name without its directory, whatever dots that holds, and without its
    // extension; only the first letter keeps its case.
    std::string name = fs::read_symlink("/proc/self/exe").stem().string();
    EXPECT_EQ(GetTitle(), name.substr(0, 1) + rtl::AnsiLowerCase(name.substr(1)));
    EXPECT_EQ(DialogCaption, GetTitle());
}

TEST(Files, TempFilesAreNewAndUniqueAndReadWriteAndSize) {
    std::string a = CreateTempFile("zel"), b = CreateTempFile("zel");
    EXPECT_NE(a, b);
    EXPECT_EQ(a.rfind(CreateTempPath(), 0), 0u);
    EXPECT_EQ(GetFileSizeEx(a), 0);
    fs::remove(a);
    fs::remove(b);
    std::string name = TempName("rw.txt");
    WriteFileEx(std::string("line\r\n\0x", 8), name);
    std::string data = "stale";
    ReadFileEx(name, data);
    EXPECT_EQ(data, std::string("line\r\n\0x", 8));
    EXPECT_EQ(GetFileSizeEx(name), 8);
    WriteFileEx("short", name);
    ReadFileEx(name, data);
    EXPECT_EQ(data, "short");
    ReadFileEx(TempName("missing.txt"), data);
    EXPECT_EQ(data, "");
    // A file that can't be created is passed over.
    EXPECT_NO_THROW(WriteFileEx("x", TempName("no/such/dir/file.txt")));
    EXPECT_THROW(GetFileSizeEx(TempName("missing.txt")), rtl::EOSError);
    EXPECT_THROW(GetFileSizeEx(-1), rtl::EOSError);
    fs::remove(name);
}

// --- the log ---------------------------------------------------------------------------------

TEST(AddLogData, AppendsWithCrLfAndAFileOfTheMaximumStartsAnew) {
    struct Step {
        const char* Text;
        int MaxSize;
        const char* Expected;
    };
    const Step steps[] = {
        {"first", 1000, "first\r\n"},
        {"second", 1000, "first\r\nsecond\r\n"},
        {"1234", 22, "first\r\nsecond\r\n1234\r\n"}, // 21 bytes: below the maximum
        {"next", 21, "next\r\n"},                    // exactly the maximum
        {"more", 7, "next\r\nmore\r\n"},
    };
    std::string name = TempName("append.log");
    for (const Step& s : steps) {
        AddLogData(name, s.Text, s.MaxSize);
        EXPECT_EQ(ReadFile(name), s.Expected) << s.Text;
    }
    // A maximum of zero never restarts.
    for (int i = 0; i < 50; ++i)
        AddLogData(name, "0123456789", 0);
    EXPECT_EQ(fs::file_size(name), 612u);
    EXPECT_THROW(AddLogData(TempName("no/dir/x.log"), "t", 0), rtl::EInOutError);
    fs::remove(name);
}

// --- window placement ------------------------------------------------------------------------

TEST(WinPlacement, TenNumbersInOrderAndBadTextsFail) {
    const TWindowPlacement w{7, 2, 3, {-1, -2}, {-4, -8}, {10, 20, 630, 470}};
    EXPECT_EQ(WinPlacementToString(w), "2,3,-1,-2,-4,-8,10,20,630,470");
    TWindowPlacement r;
    r.Length = 7; // not set by the parse
    StringToWinPlacement("2,3,-1,-2,-4,-8,10,20,630,470", r);
    EXPECT_EQ(r, w);
    for (const char* bad : {"1,2,3,4,5,6,7,8,9", "1,2,3,4,x,6,7,8,9,10", ""})
        EXPECT_THROW(StringToWinPlacement(bad, r), rtl::EConvertError) << bad;
}

// --- hidden windows and keys -----------------------------------------------------------------

TEST(WindowSystem, HiddenWindowsAndKeyStatesGoThroughIt) {
    std::vector<std::string> calls;
    TWndProc made;
    int dummy = 0;
    TWindowSystem ws;
    ws.AllocateWindow = [&](const std::string& cls, TWndProc proc) {
        calls.push_back("alloc " + cls);
        made = std::move(proc);
        return static_cast<HWND>(&dummy);
    };
    ws.DestroyWindow = [&](HWND w) { calls.push_back(w == &dummy ? "destroy" : "destroy ?"); };
    ws.GetKeyState = [](int vk) -> int16_t { return vk == 0x11 ? int16_t(-128) : int16_t(1); };
    WindowSystemGuard guard(ws);
    // A key is down when its state is negative: 0x10 is toggled, not down.
    EXPECT_EQ((std::vector<bool>{ServiceKeyPressed(0x11), ServiceKeyPressed(0x10)}),
              (std::vector<bool>{true, false}));
    HWND wnd = nullptr;
    EXPECT_TRUE(AllocHWnd(wnd, [](HWND, uint32_t msg, uintptr_t, intptr_t) {
        return static_cast<intptr_t>(msg + 1);
    }));
    EXPECT_EQ(wnd, &dummy);
    ASSERT_TRUE(made);
    EXPECT_EQ(made(wnd, 0xC001, 0, 0), 0xC002);
    EXPECT_EQ(SafeAllocHWnd(nullptr), &dummy);
    DeallocHWnd(wnd);
    EXPECT_EQ(calls, (std::vector<std::string>{"alloc TPZelvaneUtilWindow",
                                               "alloc TPZelvaneUtilWindow", "destroy"}));
}

TEST(WindowSystem, WithoutOneNothingIsMadeOrPlacedOrPressed) {
    WindowSystemGuard guard({});
    EXPECT_EQ(GetWinPlacement(nullptr), "0,0,0,0,0,0,0,0,0,0");
    EXPECT_NO_THROW(SetWinPlacement(nullptr, "1,1,0,0,0,0,1,2,3,4", true));
    EXPECT_THROW(SetWinPlacement(nullptr, "1,1", true), rtl::EConvertError);
    EXPECT_FALSE(ServiceKeyPressed(0x11));
    HWND wnd = reinterpret_cast<HWND>(1);
    EXPECT_FALSE(AllocHWnd(wnd, nullptr));
    EXPECT_EQ(wnd, nullptr);
    EXPECT_THROW(SafeAllocHWnd(nullptr), rtl::EOSError);
    EXPECT_NO_THROW(DeallocHWnd(nullptr));
}

// --- objects ---------------------------------------------------------------------------------

namespace {
struct NotAnObject {
    virtual ~NotAnObject() = default;
    int x = 0;
};
} // namespace

TEST(Objects, LooksLikeObjectTellsObjectsFromOtherMemoryAndGetInterfaceNamesTheClass) {
    rtl::TObject obj;
    ETestError err("x");
    NotAnObject other;
    int plain[4] = {1, 2, 3, 4};
    long long word = 0x1234;
    EXPECT_EQ((std::vector<bool>{
                  LooksLikeObject(&obj), LooksLikeObject(static_cast<rtl::TObject*>(&err)),
                  LooksLikeObject(&other), LooksLikeObject(plain), LooksLikeObject(nullptr),
                  LooksLikeObject(reinterpret_cast<void*>(16)), LooksLikeObject(&word)}),
              (std::vector<bool>{true, true, false, false, false, false, false}));
    // Getting an interface the object lacks fails with the class name.
    try {
        ObjGetInterface(&obj, rtl::TGUID::FromString("{00000000-0000-0000-C000-000000000046}"));
        FAIL();
    } catch (const rtl::Exception& e) {
        EXPECT_EQ(e.Message(), "Object[TObject] does not support given interface.");
        EXPECT_EQ(e.ClassType(), rtl::Exception::StaticClass());
    }
}

// --- data ------------------------------------------------------------------------------------

TEST(EncodeData, AddsTheKeyModulo256AndDecodeRestoresForEveryKey) {
    std::string original;
    for (int i = 0; i < 256; ++i)
        original += static_cast<char>(i);
    for (int key = 0; key < 256; ++key) {
        std::string s = original;
        EncodeData(s.data(), s.size(), static_cast<char>(key));
        if (key != 0) {
            EXPECT_NE(s, original);
        }
        DecodeData(s.data(), s.size(), static_cast<char>(key));
        ASSERT_EQ(s, original) << key;
    }
    // The key is added modulo 256.
    unsigned char b[3] = {0x00, 0x7F, 0xFF};
    EncodeData(b, 3, 2);
    EncodeData(b, 0, 5); // nothing to do
    EXPECT_EQ(std::vector<int>(b, b + 3), (std::vector<int>{0x02, 0x81, 0x01}));
}
