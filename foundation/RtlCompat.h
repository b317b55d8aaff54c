// Stand-ins for runtime routines that the runtime does not offer yet (Format, StrToInt,
// CompareText, ...). They mirror the runtime's names and signatures so that switching over is a
// rename; this file goes away when the runtime has them.
#pragma once

#include "rtl/SysUtils.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

namespace zelvane::compat {

class TVarRec {
public:
    template <class T>
        requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char>)
    TVarRec(T v) : isInt_(true), int_(static_cast<int64_t>(v)) {}
    TVarRec(const char* v) : str_(v ? v : "") {}
    TVarRec(std::string v) : str_(std::move(v)) {}
    TVarRec(std::string_view v) : str_(v) {}
    bool IsInteger() const { return isInt_; }
    int64_t AsInteger() const { return int_; }
    const std::string& AsString() const { return str_; }

private:
    bool isInt_ = false;
    int64_t int_ = 0;
    std::string str_;
};
using TVarRecs = std::initializer_list<TVarRec>;

// %s and %d only, which is all the foundation's texts use.
std::string Format(std::string_view fmt, TVarRecs args);
std::string IntToStr(int64_t v);
int32_t StrToInt(std::string_view s);
int CompareText(std::string_view a, std::string_view b);
std::string Trim(std::string_view s);
bool IsValidIdent(std::string_view s);
std::string Copy(std::string_view s, int64_t index, int64_t count);
void Delete(std::string& s, int64_t index, int64_t count);
int Pos(std::string_view sub, std::string_view s);
// Raises EOSError with the code and its text.
[[noreturn]] void RaiseLastOSError(int errorCode);
// Raises EInOutError with the code and its text.
[[noreturn]] void RaiseInOutError(int errorCode);

} // namespace zelvane::compat
