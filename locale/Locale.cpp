#include "locale/Locale.h"

#include "foundation/ResStrings.h"
#include "locale/LanguageModule.h"
#include "rtl/CodePage.h"
#include "rtl/SysUtils.h"

#include <QString>

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <memory>

namespace zelvane {

RTL_IMPLEMENT_CLASS(TfrLocale)

namespace {

constexpr int LoadStringBufferSize = 1024;

// How German writes its letters where they can't be had; other letters lose their marks.
constexpr std::pair<char16_t, const char*> kSpelledOut[] = {
    {u'\u00C4', "Ae"}, {u'\u00D6', "Oe"}, {u'\u00DC', "Ue"},
    {u'\u00E4', "ae"}, {u'\u00F6', "oe"}, {u'\u00FC', "ue"}, {u'\u00DF', "ss"},
};

void AppendHostChar(std::string& out, QChar c) {
    char byte = rtl::WideToCp1251(c.unicode());
    if (byte != '?' || c == QLatin1Char('?')) {
        out += byte;
        return;
    }
    for (const auto& [letter, spelled] : kSpelledOut)
        if (c.unicode() == letter) {
            out += spelled;
            return;
        }
    QString base = c.decomposition();
    out += base.isEmpty() ? '?' : rtl::WideToCp1251(base.front().unicode());
}

bool HostIsDelphi() {
    char path[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
    if (n <= 0) return false;
    return rtl::UpperCase(rtl::ExtractFileName(std::string(path, size_t(n)))) == "DELPHI32.EXE";
}

// The text of the language: the hook's, else the module's; empty when neither has one.
std::string LanguageText(int id) {
    TfrLocale& l = frLocale();
    std::string text;
    if (l.OnGetString) {
        l.OnGetString(id, text);
        if (!text.empty()) return text;
    }
    if (l.Loaded && l.LoadStr(l.Handle, id, text)) return text;
    return {};
}

// The unit: the instance, and the lookup in front of the package's string table while the
// package is loaded.
struct TLocaleUnit {
    TLocaleUnit() : locale(std::make_unique<TfrLocale>()) {
        previous = SetResStrLookup([](int id) { return LanguageText(id); });
    }
    ~TLocaleUnit() {
        SetResStrLookup(previous);
        locale.reset();
    }
    std::unique_ptr<TfrLocale> locale;
    TResStrLookup previous;
};

TLocaleUnit& Unit() {
    static TLocaleUnit unit;
    return unit;
}

// Made when the package loads, whoever asks first.
[[maybe_unused]] const bool unitMade = (Unit(), true);

} // namespace

TfrLocale::TfrLocale() : IsDelphiHost(HostIsDelphi()) {}

TfrLocale::~TfrLocale() {
    Unload();
}

bool TfrLocale::LoadStr(void* module, int id, std::string& text) {
    if (!module) {
        text = PackageResStr(id);
        return true;
    }
    auto load = reinterpret_cast<TLoadStringProc>(dlsym(module, LoadStringProcName));
    if (!load) return false;
    char buffer[LoadStringBufferSize];
    int length = load(id, buffer, LoadStringBufferSize);
    if (length < 1) return false;
    auto codePage = reinterpret_cast<TCodePageProc>(dlsym(module, CodePageProcName));
    text = HostText({buffer, size_t(length)}, codePage ? codePage() : CodePage1251);
    return true;
}

std::string HostText(std::string_view text, int codePage) {
    if (codePage != CodePageUtf8) return std::string(text);
    std::string out;
    for (QChar c : QString::fromUtf8(text.data(), qsizetype(text.size())))
        AppendHostChar(out, c);
    return out;
}

void TfrLocale::Unload() {
    if (Loaded && Handle) dlclose(Handle);
    Handle = nullptr;
    Loaded = false;
}

TfrLocale& frLocale() {
    return *Unit().locale;
}

// The hook's text, else the module's, else the package's: a language module need not hold
// every number.
std::string LocaleStr(int id) {
    std::string text = LanguageText(id);
    if (text.empty()) frLocale().LoadStr(nullptr, id, text);
    return text;
}

std::string DefaultLocaleStr(int id) {
    std::string text = PackageResStr(id);
    return text.empty() ? "Not found" : text;
}

void LoadNewLanguage(const std::string& fileName) {
    TfrLocale& l = frLocale();
    l.Unload();
    if (fileName.empty()) return;
    // A module that can't be loaded leaves a handle with no texts, and still counts as loaded.
    l.Handle = dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL);
    l.Loaded = true;
}

} // namespace zelvane
