#include "foundation/RtlCompat.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>

namespace zelvane::compat {

std::string Format(std::string_view fmt, TVarRecs args) {
    std::string r;
    auto arg = args.begin();
    for (size_t i = 0; i < fmt.size(); ++i) {
        if (fmt[i] != '%') {
            r += fmt[i];
            continue;
        }
        if (++i >= fmt.size()) throw rtl::EConvertError("Format invalid");
        char c = fmt[i];
        if (c == '%') {
            r += '%';
            continue;
        }
        if (arg == args.end()) throw rtl::EConvertError("No argument for format");
        if (c == 's' && !arg->IsInteger()) r += arg->AsString();
        else if (c == 'd' && arg->IsInteger()) r += std::to_string(arg->AsInteger());
        else throw rtl::EConvertError("Format invalid or incompatible with argument");
        ++arg;
    }
    return r;
}

std::string IntToStr(int64_t v) { return std::to_string(v); }

int32_t StrToInt(std::string_view s) {
    std::string_view t = s;
    while (!t.empty() && t.front() == ' ') t.remove_prefix(1);
    bool neg = false;
    if (!t.empty() && (t.front() == '-' || t.front() == '+')) {
        neg = t.front() == '-';
        t.remove_prefix(1);
    }
    int64_t v = 0;
    bool ok = !t.empty();
    for (char c : t) {
        if (c < '0' || c > '9' || v > INT32_MAX + 1LL) {
            ok = false;
            break;
        }
        v = v * 10 + (c - '0');
    }
    if (neg) v = -v;
    if (!ok || v > INT32_MAX || v < INT32_MIN)
        throw rtl::EConvertError("'" + std::string(s) + "' is not a valid integer value");
    return static_cast<int32_t>(v);
}

int CompareText(std::string_view a, std::string_view b) {
    size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        int ca = static_cast<unsigned char>(a[i]), cb = static_cast<unsigned char>(b[i]);
        if (ca >= 'a' && ca <= 'z') ca -= 32;
        if (cb >= 'a' && cb <= 'z') cb -= 32;
        if (ca != cb) return ca - cb;
    }
    return static_cast<int>(a.size()) - static_cast<int>(b.size());
}

std::string Trim(std::string_view s) {
    size_t b = 0, e = s.size();
    while (b < e && static_cast<unsigned char>(s[b]) <= ' ') ++b;
    while (e > b && static_cast<unsigned char>(s[e - 1]) <= ' ') --e;
    return std::string(s.substr(b, e - b));
}

bool IsValidIdent(std::string_view s) {
    if (s.empty()) return false;
    auto alpha = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    if (!alpha(s[0])) return false;
    for (char c : s)
        if (!alpha(c) && !(c >= '0' && c <= '9')) return false;
    return true;
}

std::string Copy(std::string_view s, int64_t index, int64_t count) {
    if (index < 1) index = 1;
    int64_t len = static_cast<int64_t>(s.size());
    if (index > len || count <= 0) return {};
    count = std::min(count, len - index + 1);
    return std::string(s.substr(static_cast<size_t>(index - 1), static_cast<size_t>(count)));
}

void Delete(std::string& s, int64_t index, int64_t count) {
    int64_t len = static_cast<int64_t>(s.size());
    if (index < 1 || index > len || count <= 0) return;
    count = std::min(count, len - index + 1);
    s.erase(static_cast<size_t>(index - 1), static_cast<size_t>(count));
}

int Pos(std::string_view sub, std::string_view s) {
    if (sub.empty()) return 0;
    size_t p = s.find(sub);
    return p == std::string_view::npos ? 0 : static_cast<int>(p) + 1;
}

void RaiseLastOSError(int errorCode) {
    try {
        throw rtl::EOSError("System Error.  Code: " + std::to_string(errorCode) + ".\n" +
                            std::strerror(errorCode));
    } catch (rtl::EOSError& e) {
        e.ErrorCode = errorCode;
        throw;
    }
}

void RaiseInOutError(int errorCode) {
    try {
        throw rtl::EInOutError(std::strerror(errorCode));
    } catch (rtl::EInOutError& e) {
        e.ErrorCode = errorCode;
        throw;
    }
}

} // namespace zelvane::compat
