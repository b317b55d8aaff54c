#include "rtl/SysUtils.h"

#include "rtl/TypInfo.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>
#include <utime.h>
#include <vector>

namespace rtl {

RTL_IMPLEMENT_CLASS(Exception)
RTL_IMPLEMENT_CLASS(EAbort)
RTL_IMPLEMENT_CLASS(EConvertError)
RTL_IMPLEMENT_CLASS(EInvalidCast)
RTL_IMPLEMENT_CLASS(EInvalidPointer)
RTL_IMPLEMENT_CLASS(EOutOfMemory)
RTL_IMPLEMENT_CLASS(EIntError)
RTL_IMPLEMENT_CLASS(ERangeError)
RTL_IMPLEMENT_CLASS(EVariantError)
RTL_IMPLEMENT_CLASS(EPropertyError)
RTL_IMPLEMENT_CLASS(EPropertyConvertError)
RTL_IMPLEMENT_CLASS(EListError)
RTL_IMPLEMENT_CLASS(EStringListError)
RTL_IMPLEMENT_CLASS(EStreamError)
RTL_IMPLEMENT_CLASS(EFCreateError)
RTL_IMPLEMENT_CLASS(EFOpenError)
RTL_IMPLEMENT_CLASS(EFilerError)
RTL_IMPLEMENT_CLASS(EReadError)
RTL_IMPLEMENT_CLASS(EWriteError)
RTL_IMPLEMENT_CLASS(EClassNotFound)
RTL_IMPLEMENT_CLASS(EMethodNotFound)
RTL_IMPLEMENT_CLASS(EInvalidImage)
RTL_IMPLEMENT_CLASS(EResNotFound)
RTL_IMPLEMENT_CLASS(EParserError)
RTL_IMPLEMENT_CLASS(EComponentError)
RTL_IMPLEMENT_CLASS(EInvalidOperation)
RTL_IMPLEMENT_CLASS(EOSError)
RTL_IMPLEMENT_CLASS(EInOutError)

Exception::Exception(std::string_view fmt, TVarRecs args) : message_(Format(fmt, args)) {}

void Abort() {
    throw EAbort(SOperationAborted);
}

namespace {

[[noreturn]] void ConvertError(const char* msg, std::string_view arg) {
    throw EConvertError(msg, {arg});
}

std::string Hex(uint64_t u, int digits);

inline unsigned char U(char c) {
    return static_cast<unsigned char>(c);
}
inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
inline bool IsBlank(char c) {
    return U(c) <= ' ';
}

// ---------------------------------------------------------------------------------------------
// Decimal form of a float: value = 0.Digits * 10^Exponent, as the platform's TFloatRec.

struct FloatRec {
    bool Negative = false;
    bool Special = false; // NaN or infinite: Text holds its name
    std::string Text;
    int Exponent = 0;
    std::string Digits; // no trailing zeros; empty for zero
};

void TrimZeros(FloatRec& r) {
    while (!r.Digits.empty() && r.Digits.back() == '0')
        r.Digits.pop_back();
    if (r.Digits.empty()) r.Exponent = 0;
}

// Rounds to `precision` significant digits (1..18) and to at most `decimals` digits after the
// decimal point.
FloatRec FloatToDecimal(long double value, int precision, int decimals) {
    FloatRec r;
    if (std::isnan(value)) {
        r.Special = true;
        r.Text = "NAN";
        return r;
    }
    if (std::isinf(value)) {
        r.Special = true;
        r.Text = value < 0 ? "-INF" : "INF";
        return r;
    }
    precision = std::clamp(precision, 1, 18);
    long double a = std::fabs(value);
    r.Negative = value < 0;
    if (a == 0) {
        r.Negative = false;
        return r;
    }
    // The value's decimal digits, far enough to tell a tie from a value beside it (an extended
    // value has about 19 significant digits), then rounded half away from zero as the platform
    // rounds, not half to even as the C library does.
    char buf[96];
    std::snprintf(buf, sizeof buf, "%.40Le", a);
    const char* e = std::strchr(buf, 'e');
    std::string all;
    for (const char* p = buf; p < e; ++p)
        if (IsDigit(*p)) all += *p;
    r.Exponent = std::atoi(e + 1) + 1;
    int keep = precision;
    if (decimals < 1000) keep = std::min(keep, r.Exponent + decimals);
    if (keep < 0) {
        r.Digits.clear();
    } else {
        bool up = static_cast<size_t>(keep) < all.size() && all[static_cast<size_t>(keep)] >= '5';
        r.Digits = all.substr(0, static_cast<size_t>(keep));
        if (up) {
            int i = keep - 1;
            while (i >= 0 && r.Digits[static_cast<size_t>(i)] == '9')
                r.Digits[static_cast<size_t>(i--)] = '0';
            if (i >= 0) {
                ++r.Digits[static_cast<size_t>(i)];
            } else {
                r.Digits.insert(r.Digits.begin(), '1');
                ++r.Exponent;
            }
        }
    }
    TrimZeros(r);
    if (r.Digits.empty()) r.Negative = false;
    return r;
}

std::string Zeros(int n) {
    return std::string(static_cast<size_t>(std::max(0, n)), '0');
}

std::string InsertThousands(const std::string& intPart) {
    if (ThousandSeparator == '\0') return intPart;
    std::string out;
    size_t n = intPart.size();
    for (size_t i = 0; i < n; ++i) {
        out += intPart[i];
        size_t left = n - i - 1;
        if (left > 0 && left % 3 == 0) out += ThousandSeparator;
    }
    return out;
}

std::string FormatGeneral(const FloatRec& r, int precision) {
    if (r.Digits.empty()) return "0";
    std::string s = r.Negative ? "-" : "";
    const std::string& d = r.Digits;
    if (r.Exponent > precision || r.Exponent < -3) {
        s += d[0];
        if (d.size() > 1) s += DecimalSeparator + d.substr(1);
        s += 'E';
        int e = r.Exponent - 1;
        if (e < 0) s += '-';
        s += std::to_string(std::abs(e));
        return s;
    }
    if (r.Exponent <= 0) {
        s += '0';
        s += DecimalSeparator;
        s += Zeros(-r.Exponent) + d;
        return s;
    }
    size_t ip = static_cast<size_t>(r.Exponent);
    if (d.size() <= ip) return s + d + Zeros(static_cast<int>(ip - d.size()));
    return s + d.substr(0, ip) + DecimalSeparator + d.substr(ip);
}

// The integer and fraction digits of a rounded value, the fraction padded to `decimals`.
void SplitFixed(const FloatRec& r, int decimals, std::string& intPart, std::string& frac) {
    const std::string& d = r.Digits;
    if (r.Exponent <= 0) {
        intPart = "0";
        frac = Zeros(-r.Exponent) + d;
    } else {
        size_t ip = static_cast<size_t>(r.Exponent);
        if (d.size() <= ip) {
            intPart = d + Zeros(static_cast<int>(ip - d.size()));
            frac.clear();
        } else {
            intPart = d.substr(0, ip);
            frac = d.substr(ip);
        }
    }
    if (static_cast<int>(frac.size()) < decimals)
        frac += Zeros(decimals - static_cast<int>(frac.size()));
    frac.resize(static_cast<size_t>(decimals));
}

std::string CurrencyText(bool negative, const std::string& number) {
    const std::string& c = CurrencyString;
    if (!negative) {
        switch (CurrencyFormat) {
        case 1:
            return number + c;
        case 2:
            return c + " " + number;
        case 3:
            return number + " " + c;
        default:
            return c + number;
        }
    }
    switch (NegCurrFormat) {
    case 1:
        return "-" + c + number;
    case 2:
        return c + "-" + number;
    case 3:
        return c + number + "-";
    case 4:
        return "(" + number + c + ")";
    case 5:
        return "-" + number + c;
    case 6:
        return number + "-" + c;
    case 7:
        return number + c + "-";
    case 8:
        return "-" + number + " " + c;
    case 9:
        return "-" + c + " " + number;
    case 10:
        return number + " " + c + "-";
    case 11:
        return c + " " + number + "-";
    case 12:
        return c + " -" + number;
    case 13:
        return number + "- " + c;
    case 14:
        return "(" + c + " " + number + ")";
    case 15:
        return "(" + number + " " + c + ")";
    default:
        return "(" + c + number + ")";
    }
}

} // namespace

std::string FloatToStrF(long double value, TFloatFormat format, int precision, int digits) {
    precision = std::clamp(precision, 1, 18);
    switch (format) {
    case ffGeneral: {
        FloatRec r = FloatToDecimal(value, precision, 9999);
        if (r.Special) return r.Text;
        return FormatGeneral(r, precision);
    }
    case ffExponent: {
        FloatRec r = FloatToDecimal(value, precision, 9999);
        if (r.Special) return r.Text;
        std::string d = r.Digits + Zeros(precision - static_cast<int>(r.Digits.size()));
        std::string s = r.Negative ? "-" : "";
        s += d[0];
        if (precision > 1) s += DecimalSeparator + d.substr(1);
        int e = r.Digits.empty() ? 0 : r.Exponent - 1;
        s += e < 0 ? "E-" : "E+";
        std::string ed = std::to_string(std::abs(e));
        int minDigits = std::clamp(digits, 0, 4);
        if (static_cast<int>(ed.size()) < minDigits)
            ed = Zeros(minDigits - static_cast<int>(ed.size())) + ed;
        return s + ed;
    }
    case ffFixed:
    case ffNumber:
    case ffCurrency: {
        digits = std::clamp(digits, 0, 18);
        FloatRec r = FloatToDecimal(value, precision, digits);
        if (r.Special) return r.Text;
        if (r.Exponent > precision) return FormatGeneral(r, precision);
        std::string intPart, frac;
        SplitFixed(r, digits, intPart, frac);
        if (format != ffFixed) intPart = InsertThousands(intPart);
        std::string number = intPart;
        if (digits > 0) number += DecimalSeparator + frac;
        if (format == ffCurrency) return CurrencyText(r.Negative, number);
        return r.Negative ? "-" + number : number;
    }
    }
    return {};
}

std::string FloatToStr(long double value) {
    return FloatToStrF(value, ffGeneral, 15, 0);
}

// ---------------------------------------------------------------------------------------------
// FormatFloat

namespace {

struct PictureSection {
    std::string_view text;
    int intPlaces = 0;  // digit placeholders before the decimal point
    int minInt = 0;     // of which from the first '0' on
    int fracPlaces = 0; // digit placeholders after the decimal point
    int minFrac = 0;    // up to the last '0'
    bool thousands = false;
    bool scientific = false;
    int expDigits = 0;
};

// Splits at ';' outside quotes.
std::vector<std::string_view> SplitSections(std::string_view format) {
    std::vector<std::string_view> out;
    size_t start = 0;
    char quote = 0;
    for (size_t i = 0; i < format.size(); ++i) {
        char c = format[i];
        if (quote) {
            if (c == quote) quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == ';') {
            out.push_back(format.substr(start, i - start));
            start = i + 1;
            if (out.size() == 2) break;
        }
    }
    out.push_back(format.substr(std::min(start, format.size())));
    return out;
}

PictureSection ScanSection(std::string_view text) {
    PictureSection p;
    p.text = text;
    bool afterPoint = false;
    bool seenZero = false;
    char quote = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (quote) {
            if (c == quote) quote = 0;
            continue;
        }
        switch (c) {
        case '"':
        case '\'':
            quote = c;
            break;
        case '0':
        case '#':
            if (afterPoint) {
                ++p.fracPlaces;
                if (c == '0') p.minFrac = p.fracPlaces;
            } else {
                ++p.intPlaces;
                if (c == '0') seenZero = true;
                if (seenZero) ++p.minInt;
            }
            break;
        case '.':
            afterPoint = true;
            break;
        case ',':
            p.thousands = true;
            break;
        case 'E':
        case 'e':
            if (i + 1 < text.size() && (text[i + 1] == '+' || text[i + 1] == '-') &&
                !p.scientific) {
                p.scientific = true;
                size_t j = i + 2;
                while (j < text.size() && text[j] == '0')
                    ++j;
                p.expDigits = std::min<int>(static_cast<int>(j - i - 2), 4);
                i = j - 1;
            }
            break;
        default:
            break;
        }
    }
    return p;
}

std::string RenderPicture(const PictureSection& p, long double absValue, bool negative,
                          bool& roundedToZero) {
    std::string intDigits, frac;
    int exponent = 0;
    if (p.scientific) {
        int precision = std::clamp(p.intPlaces + p.fracPlaces, 1, 18);
        FloatRec r = FloatToDecimal(absValue, precision, 9999);
        roundedToZero = r.Digits.empty();
        int shown = std::max(p.intPlaces, 1);
        if (!r.Digits.empty()) exponent = r.Exponent - (p.intPlaces > 0 ? p.intPlaces : 0);
        std::string d = r.Digits + Zeros(precision - static_cast<int>(r.Digits.size()));
        if (p.intPlaces == 0) {
            intDigits.clear();
            frac = d;
        } else {
            intDigits = d.substr(0, std::min<size_t>(d.size(), static_cast<size_t>(shown)));
            frac =
                d.size() > static_cast<size_t>(shown) ? d.substr(static_cast<size_t>(shown)) : "";
        }
        size_t lead = 0;
        while (lead + 1 < intDigits.size() && intDigits[lead] == '0')
            ++lead;
        intDigits = intDigits.substr(lead);
        if (intDigits == "0") intDigits.clear();
    } else {
        FloatRec r = FloatToDecimal(absValue, 18, p.fracPlaces);
        roundedToZero = r.Digits.empty();
        if (r.Exponent > 18) {
            // Beyond the digits a float carries: the picture can't show it.
            return (negative ? "-" : "") + FloatToStr(absValue);
        }
        SplitFixed(r, p.fracPlaces, intDigits, frac);
        if (intDigits == "0") intDigits.clear();
    }
    // Drop optional trailing fraction digits, keep the zeros the picture asks for.
    while (static_cast<int>(frac.size()) > p.minFrac && frac.back() == '0')
        frac.pop_back();
    if (static_cast<int>(intDigits.size()) < p.minInt)
        intDigits = Zeros(p.minInt - static_cast<int>(intDigits.size())) + intDigits;

    std::string out;
    if (negative && !roundedToZero) out += '-';
    const int nInt = static_cast<int>(intDigits.size());
    int intPlace = 0; // placeholders before the point seen so far
    int emitted = 0;  // integer digits emitted so far
    int fracPlace = 0;
    bool afterPoint = false;
    char quote = 0;
    auto emitIntDigit = [&](char d) {
        out += d;
        ++emitted;
        int left = nInt - emitted;
        if (p.thousands && left > 0 && left % 3 == 0 && ThousandSeparator != '\0')
            out += ThousandSeparator;
    };
    auto emitPoint = [&] {
        if (!afterPoint) {
            afterPoint = true;
            // Integer digits with no placeholder to go to stand before the point.
            if (p.intPlaces == 0)
                for (char d : intDigits)
                    emitIntDigit(d);
            if (!frac.empty()) out += DecimalSeparator;
        }
    };
    const std::string_view t = p.text;
    for (size_t i = 0; i < t.size(); ++i) {
        char c = t[i];
        if (quote) {
            if (c == quote)
                quote = 0;
            else
                out += c;
            continue;
        }
        switch (c) {
        case '"':
        case '\'':
            quote = c;
            break;
        case '0':
        case '#':
            if (!afterPoint) {
                // The first placeholder takes the digits the picture has no room for.
                int room = p.intPlaces - intPlace;
                ++intPlace;
                if (intPlace == 1)
                    while (nInt - emitted > room)
                        emitIntDigit(intDigits[static_cast<size_t>(emitted)]);
                if (nInt - emitted == room && emitted < nInt)
                    emitIntDigit(intDigits[static_cast<size_t>(emitted)]);
            } else {
                if (fracPlace < static_cast<int>(frac.size()))
                    out += frac[static_cast<size_t>(fracPlace)];
                ++fracPlace;
            }
            break;
        case '.':
            emitPoint();
            break;
        case ',':
            break;
        case 'E':
        case 'e':
            if (p.scientific && i + 1 < t.size() && (t[i + 1] == '+' || t[i + 1] == '-')) {
                if (!afterPoint && p.intPlaces == 0) emitPoint();
                out += c;
                if (exponent < 0)
                    out += '-';
                else if (t[i + 1] == '+')
                    out += '+';
                std::string ed = std::to_string(std::abs(exponent));
                if (static_cast<int>(ed.size()) < p.expDigits)
                    ed = Zeros(p.expDigits - static_cast<int>(ed.size())) + ed;
                out += ed;
                size_t j = i + 2;
                while (j < t.size() && t[j] == '0')
                    ++j;
                i = j - 1;
                // The fraction is done once the exponent is written.
                afterPoint = true;
                fracPlace = static_cast<int>(frac.size());
            } else {
                out += c;
            }
            break;
        default:
            out += c;
            break;
        }
    }
    return out;
}

} // namespace

std::string FormatFloat(std::string_view format, long double value) {
    if (format.empty()) return FloatToStr(value);
    if (std::isnan(value) || std::isinf(value)) return FloatToStr(value);
    auto sections = SplitSections(format);
    bool negative = value < 0;
    long double a = std::fabs(value);
    size_t idx = 0;
    bool useMinus = negative;
    if (negative && sections.size() > 1 && !sections[1].empty()) {
        idx = 1;
        useMinus = false;
    } else if (a == 0 && sections.size() > 2 && !sections[2].empty()) {
        idx = 2;
    }
    PictureSection p = ScanSection(sections[idx]);
    bool zero = false;
    std::string out = RenderPicture(p, a, useMinus, zero);
    if (zero && a != 0 && sections.size() > 2 && !sections[2].empty()) {
        // Rounds to zero: the zero section applies.
        PictureSection z = ScanSection(sections[2]);
        out = RenderPicture(z, 0, false, zero);
    }
    return out;
}

// ---------------------------------------------------------------------------------------------
// Format

namespace {

class Formatter {
public:
    Formatter(std::string_view fmt, std::span<const TVarRec> args) : fmt_(fmt), args_(args) {}

    std::string Run() {
        std::string out;
        size_t i = 0;
        while (i < fmt_.size()) {
            size_t pct = fmt_.find('%', i);
            if (pct == std::string_view::npos) {
                out.append(fmt_.substr(i));
                break;
            }
            out.append(fmt_.substr(i, pct - i));
            i = pct + 1;
            if (i < fmt_.size() && fmt_[i] == '%') {
                out += '%';
                ++i;
                continue;
            }
            i = Directive(i, out);
        }
        return out;
    }

private:
    [[noreturn]] void Invalid() const { ConvertError(SInvalidFormat, fmt_); }
    [[noreturn]] void Missing() const { ConvertError(SArgumentMissing, fmt_); }

    const TVarRec& NextArg() {
        if (argIndex_ >= args_.size()) Missing();
        return args_[argIndex_++];
    }

    // A number, or "*" taken from the arguments; -1 when there is neither.
    int64_t Number(size_t& i) {
        if (i < fmt_.size() && fmt_[i] == '*') {
            ++i;
            const TVarRec& a = NextArg();
            if (a.Kind() != vtInteger) Invalid();
            return a.AsInteger();
        }
        if (i >= fmt_.size() || !IsDigit(fmt_[i])) return -1;
        int64_t n = 0;
        while (i < fmt_.size() && IsDigit(fmt_[i])) {
            n = n * 10 + (fmt_[i] - '0');
            if (n > kMaxNumber) Invalid();
            ++i;
        }
        return n;
    }

    size_t Directive(size_t i, std::string& out) {
        size_t save = i;
        size_t saveArg = argIndex_;
        int64_t n = Number(i);
        if (n >= 0 && i < fmt_.size() && fmt_[i] == ':') {
            argIndex_ = static_cast<size_t>(n);
            ++i;
        } else {
            i = save;
            argIndex_ = saveArg;
        }
        bool left = false;
        if (i < fmt_.size() && fmt_[i] == '-') {
            left = true;
            ++i;
        }
        int64_t width = Number(i);
        if (width < 0 && width != -1) width = 0;
        int64_t prec = -1;
        if (i < fmt_.size() && fmt_[i] == '.') {
            ++i;
            prec = Number(i);
            if (prec < 0) prec = 0;
        }
        if (width > kMaxNumber || prec > kMaxNumber) Invalid();
        if (i >= fmt_.size()) Invalid();
        char type = static_cast<char>(std::toupper(U(fmt_[i])));
        ++i;
        std::string text = Convert(type, prec);
        if (width > 0 && static_cast<int64_t>(text.size()) < width) {
            std::string pad(static_cast<size_t>(width) - text.size(), ' ');
            text = left ? text + pad : pad + text;
        }
        out += text;
        return i;
    }

    std::string Convert(char type, int64_t prec) {
        switch (type) {
        case 'D':
        case 'U':
        case 'X': {
            const TVarRec& a = NextArg();
            if (a.Kind() != vtInteger) Invalid();
            int64_t v = a.AsInteger();
            std::string digits;
            bool neg = false;
            // A negative value of a 32-bit type shows its 32-bit pattern in %u and %x.
            uint64_t u =
                a.IsNarrow() && v < 0 ? static_cast<uint32_t>(v) : static_cast<uint64_t>(v);
            if (type == 'D' && !a.IsUnsigned64()) {
                neg = v < 0;
                digits =
                    std::to_string(neg ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v));
            } else if (type == 'X') {
                digits = Hex(u, 0);
            } else {
                digits = std::to_string(u);
            }
            if (prec > static_cast<int64_t>(digits.size()))
                digits.insert(0, static_cast<size_t>(prec) - digits.size(), '0');
            return neg ? "-" + digits : digits;
        }
        case 'E':
        case 'F':
        case 'G':
        case 'N':
        case 'M': {
            const TVarRec& a = NextArg();
            if (a.Kind() != vtExtended) Invalid();
            long double v = a.AsExtended();
            switch (type) {
            case 'E':
                return FloatToStrF(v, ffExponent,
                                   prec < 0 ? 15 : static_cast<int>(std::min<int64_t>(prec, 18)),
                                   3);
            case 'F':
                return FloatToStrF(v, ffFixed, 18,
                                   prec < 0 ? 2 : static_cast<int>(std::min<int64_t>(prec, 18)));
            case 'G':
                return FloatToStrF(
                    v, ffGeneral, prec < 0 ? 15 : static_cast<int>(std::min<int64_t>(prec, 18)), 3);
            case 'N':
                return FloatToStrF(v, ffNumber, 18,
                                   prec < 0 ? 2 : static_cast<int>(std::min<int64_t>(prec, 18)));
            default:
                return FloatToStrF(v, ffCurrency, 18,
                                   prec < 0 ? CurrencyDecimals
                                            : static_cast<int>(std::min<int64_t>(prec, 18)));
            }
        }
        case 'P': {
            const TVarRec& a = NextArg();
            if (a.Kind() != vtPointer) Invalid();
            char buf[32];
            std::snprintf(
                buf, sizeof buf, "%0*llX", static_cast<int>(sizeof(void*) * 2),
                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(a.AsPointer())));
            return buf;
        }
        case 'S': {
            const TVarRec& a = NextArg();
            std::string s;
            if (a.Kind() == vtString)
                s = a.AsString();
            else if (a.Kind() == vtChar)
                s = std::string(1, static_cast<char>(a.AsInteger()));
            else
                Invalid();
            if (prec >= 0 && static_cast<int64_t>(s.size()) > prec)
                s.resize(static_cast<size_t>(prec));
            return s;
        }
        default:
            Invalid();
        }
    }

    static constexpr int64_t kMaxNumber = 1 << 20;
    std::string_view fmt_;
    std::span<const TVarRec> args_;
    size_t argIndex_ = 0;
};

} // namespace

std::string Format(std::string_view fmt, std::span<const TVarRec> args) {
    return Formatter(fmt, args).Run();
}

std::string Format(std::string_view fmt, TVarRecs args) {
    return Format(fmt, std::span<const TVarRec>(args.begin(), args.size()));
}

// ---------------------------------------------------------------------------------------------
// Integers

std::string IntToStr(int64_t value) {
    return std::to_string(value);
}

namespace {
std::string Hex(uint64_t u, int digits) {
    static const char* hex = "0123456789ABCDEF";
    std::string s;
    do {
        s.insert(s.begin(), hex[u & 15]);
        u >>= 4;
    } while (u);
    digits = std::min(digits, 32);
    if (static_cast<int>(s.size()) < digits)
        s.insert(0, static_cast<size_t>(digits) - s.size(), '0');
    return s;
}

// Parses an integer: blanks, a sign, then decimal digits or "$"/"0x" and hexadecimal digits.
// Hexadecimal values are bit patterns of `bits` bits.
bool ParseInt(std::string_view s, int64_t& out, int bits) {
    size_t i = 0;
    while (i < s.size() && IsBlank(s[i]))
        ++i;
    bool neg = false;
    if (i < s.size() && (s[i] == '-' || s[i] == '+')) {
        neg = s[i] == '-';
        ++i;
    }
    bool hex = false;
    if (i < s.size() && s[i] == '$') {
        hex = true;
        ++i;
    } else if (i + 1 < s.size() && s[i] == '0' && (s[i + 1] == 'x' || s[i + 1] == 'X')) {
        hex = true;
        i += 2;
    }
    if (i >= s.size()) return false;
    uint64_t v = 0;
    const uint64_t limit = hex ? (bits == 64 ? UINT64_MAX : 0xFFFFFFFFull)
                               : (neg ? (bits == 64 ? 0x8000000000000000ull : 0x80000000ull)
                                      : (bits == 64 ? 0x7FFFFFFFFFFFFFFFull : 0x7FFFFFFFull));
    for (; i < s.size(); ++i) {
        char c = s[i];
        unsigned d;
        if (IsDigit(c))
            d = static_cast<unsigned>(c - '0');
        else if (hex && c >= 'a' && c <= 'f')
            d = static_cast<unsigned>(c - 'a' + 10);
        else if (hex && c >= 'A' && c <= 'F')
            d = static_cast<unsigned>(c - 'A' + 10);
        else
            return false;
        unsigned base = hex ? 16 : 10;
        if (v > (limit - d) / base) return false;
        v = v * base + d;
    }
    if (hex) {
        int64_t r =
            bits == 64 ? static_cast<int64_t>(v) : static_cast<int32_t>(static_cast<uint32_t>(v));
        out = neg ? static_cast<int64_t>(0 - static_cast<uint64_t>(r)) : r;
        if (bits == 32)
            out = static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(out)));
    } else {
        out = neg ? static_cast<int64_t>(0 - v) : static_cast<int64_t>(v);
    }
    return true;
}
} // namespace

std::string IntToHex(int32_t value, int digits) {
    return Hex(static_cast<uint32_t>(value), digits);
}
std::string IntToHex(int64_t value, int digits) {
    return Hex(static_cast<uint64_t>(value), digits);
}

bool TryStrToInt(std::string_view s, int32_t& value) {
    int64_t v;
    if (!ParseInt(s, v, 32)) return false;
    value = static_cast<int32_t>(v);
    return true;
}

int32_t StrToInt(std::string_view s) {
    int32_t v;
    if (!TryStrToInt(s, v)) ConvertError(SInvalidInteger, s);
    return v;
}

int32_t StrToIntDef(std::string_view s, int32_t def) {
    int32_t v;
    return TryStrToInt(s, v) ? v : def;
}

bool TryStrToInt64(std::string_view s, int64_t& value) {
    return ParseInt(s, value, 64);
}

int64_t StrToInt64(std::string_view s) {
    int64_t v;
    if (!ParseInt(s, v, 64)) ConvertError(SInvalidInteger, s);
    return v;
}

int64_t StrToInt64Def(std::string_view s, int64_t def) {
    int64_t v;
    return ParseInt(s, v, 64) ? v : def;
}

// ---------------------------------------------------------------------------------------------
// Float parsing

bool TryStrToFloat(std::string_view s, long double& value) {
    size_t b = 0, e = s.size();
    while (b < e && IsBlank(s[b]))
        ++b;
    while (e > b && IsBlank(s[e - 1]))
        --e;
    // Rewrite into the C locale's form, accepting only: sign, digits, one decimal separator,
    // and an exponent with an optional sign.
    std::string c;
    size_t i = b;
    if (i < e && (s[i] == '+' || s[i] == '-')) c += s[i++];
    bool digits = false;
    while (i < e && IsDigit(s[i])) {
        c += s[i++];
        digits = true;
    }
    if (i < e && s[i] == DecimalSeparator) {
        c += '.';
        ++i;
        while (i < e && IsDigit(s[i])) {
            c += s[i++];
            digits = true;
        }
    }
    if (!digits) return false;
    if (i < e && (s[i] == 'e' || s[i] == 'E')) {
        c += 'e';
        ++i;
        if (i < e && (s[i] == '+' || s[i] == '-')) c += s[i++];
        bool expDigits = false;
        while (i < e && IsDigit(s[i])) {
            c += s[i++];
            expDigits = true;
        }
        if (!expDigits) return false;
    }
    if (i != e) return false;
    errno = 0;
    char* end = nullptr;
    long double v = std::strtold(c.c_str(), &end);
    if (end != c.c_str() + c.size()) return false;
    if (std::isinf(v)) return false;
    value = v;
    return true;
}

bool TryStrToFloat(std::string_view s, double& value) {
    long double v;
    if (!TryStrToFloat(s, v)) return false;
    if (std::fabs(v) > static_cast<long double>(std::numeric_limits<double>::max())) return false;
    value = static_cast<double>(v);
    return true;
}

long double StrToFloat(std::string_view s) {
    long double v;
    if (!TryStrToFloat(s, v)) ConvertError(SInvalidFloat, s);
    return v;
}

long double StrToFloatDef(std::string_view s, long double def) {
    long double v;
    return TryStrToFloat(s, v) ? v : def;
}

// ---------------------------------------------------------------------------------------------
// Dates and times

namespace {
const int kDaysInMonth[2][12] = {{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
                                 {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31}};

// Days since 1970-01-01 to a civil date, valid for every int64 in range.
void CivilFromDays(int64_t z, int64_t& y, unsigned& m, unsigned& d) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    y = static_cast<int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp < 10 ? mp + 3 : mp - 9;
    if (m <= 2) ++y;
}

// Splits into whole days and milliseconds of the day as the platform does: rounded to the
// millisecond, the date truncated towards zero and the time taken from the absolute remainder.
bool SplitDateTime(double dt, int64_t& days, int64_t& msOfDay) {
    if (!std::isfinite(dt) || std::fabs(dt) > 3.0e6) return false;
    int64_t ms = std::llround(dt * MSecsPerDay);
    days = ms / 86400000;
    msOfDay = std::llabs(ms % 86400000);
    return true;
}
} // namespace

bool IsLeapYear(int year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

bool TryEncodeDate(int year, int month, int day, TDateTime& date) {
    if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1) return false;
    if (day > kDaysInMonth[IsLeapYear(year)][month - 1]) return false;
    int64_t d = day;
    for (int i = 0; i < month - 1; ++i)
        d += kDaysInMonth[IsLeapYear(year)][i];
    int64_t y = year - 1;
    d += y * 365 + y / 4 - y / 100 + y / 400;
    // d counts from 0001-01-01 as day 1; 1899-12-30 is day 693594.
    date = TDateTime(static_cast<double>(d - 693594));
    return true;
}

TDateTime EncodeDate(int year, int month, int day) {
    TDateTime d;
    if (!TryEncodeDate(year, month, day, d)) throw EConvertError(SDateEncodeError);
    return d;
}

bool TryEncodeTime(int hour, int min, int sec, int msec, TDateTime& time) {
    if (hour < 0 || hour >= 24 || min < 0 || min >= 60 || sec < 0 || sec >= 60 || msec < 0 ||
        msec >= 1000)
        return false;
    time = TDateTime((hour * 3600000.0 + min * 60000.0 + sec * 1000.0 + msec) / MSecsPerDay);
    return true;
}

TDateTime EncodeTime(int hour, int min, int sec, int msec) {
    TDateTime t;
    if (!TryEncodeTime(hour, min, sec, msec, t)) throw EConvertError(STimeEncodeError);
    return t;
}

void DecodeDate(TDateTime date, uint16_t& year, uint16_t& month, uint16_t& day) {
    int64_t days, ms;
    year = month = day = 0;
    if (!SplitDateTime(date.Value, days, ms)) return;
    int64_t y;
    unsigned m, d;
    CivilFromDays(days - 25569, y, m, d);
    if (y < 1 || y > 9999) return;
    year = static_cast<uint16_t>(y);
    month = static_cast<uint16_t>(m);
    day = static_cast<uint16_t>(d);
}

void DecodeTime(TDateTime time, uint16_t& hour, uint16_t& min, uint16_t& sec, uint16_t& msec) {
    int64_t days, ms;
    hour = min = sec = msec = 0;
    if (!SplitDateTime(time.Value, days, ms)) return;
    hour = static_cast<uint16_t>(ms / 3600000);
    min = static_cast<uint16_t>(ms / 60000 % 60);
    sec = static_cast<uint16_t>(ms / 1000 % 60);
    msec = static_cast<uint16_t>(ms % 1000);
}

int DayOfWeek(TDateTime date) {
    int64_t days, ms;
    if (!SplitDateTime(date.Value, days, ms)) return 0;
    // 1899-12-30 was a Saturday.
    int64_t w = ((days + 6) % 7 + 7) % 7; // 0 = Sunday
    return static_cast<int>(w) + 1;
}

TDateTime Now() {
    timespec ts{};
    clock_gettime(CLOCK_REALTIME, &ts);
    std::tm tm{};
    time_t t = ts.tv_sec;
    localtime_r(&t, &tm);
    return TDateTime(EncodeDate(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday).Value +
                     EncodeTime(tm.tm_hour, tm.tm_min, std::min(tm.tm_sec, 59),
                                static_cast<int>(ts.tv_nsec / 1000000))
                         .Value);
}

TDateTime Date() {
    return TDateTime(std::trunc(Now().Value));
}

TDateTime Time() {
    double n = Now().Value;
    return TDateTime(n - std::trunc(n));
}

namespace {

std::string Pad2(int v) {
    char b[16];
    std::snprintf(b, sizeof b, "%02d", v);
    return b;
}

// A number in a picture of one or two letters: as it stands, or in two digits.
std::string Digits(int value, size_t letters) {
    return letters == 1 ? std::to_string(value) : Pad2(value);
}

// A day or month in a picture of one to four letters: the number as it stands, in two digits,
// the short name or the long name of the index (from 1; no name for 0).
std::string NumberOrName(int number, int index, size_t letters, const std::string* shortNames,
                         const std::string* longNames) {
    if (letters <= 2) return Digits(number, letters);
    if (index == 0) return "";
    return letters == 3 ? shortNames[index - 1] : longNames[index - 1];
}

bool StartsWithText(std::string_view s, size_t i, std::string_view what) {
    if (s.size() - i < what.size()) return false;
    for (size_t k = 0; k < what.size(); ++k)
        if (std::toupper(U(s[i + k])) != std::toupper(U(what[k]))) return false;
    return true;
}

// Whether the picture has a 12-hour mark, which makes h and hh 12-hour.
bool HasAmPm(std::string_view f) {
    char quote = 0;
    for (size_t i = 0; i < f.size(); ++i) {
        if (quote) {
            if (f[i] == quote) quote = 0;
            continue;
        }
        if (f[i] == '"' || f[i] == '\'')
            quote = f[i];
        else if (StartsWithText(f, i, "am/pm") || StartsWithText(f, i, "a/p") ||
                 StartsWithText(f, i, "ampm"))
            return true;
    }
    return false;
}

void FormatDT(std::string& out, std::string_view f, double dt, int depth) {
    if (depth > 2) return; // a picture that names itself
    uint16_t y, mo, d, h, mi, s, ms;
    DecodeDate(TDateTime(dt), y, mo, d);
    DecodeTime(TDateTime(dt), h, mi, s, ms);
    const bool twelve = HasAmPm(f);
    bool lastWasHour = false;
    size_t i = 0;
    while (i < f.size()) {
        char c = f[i];
        char uc = static_cast<char>(std::toupper(U(c)));
        size_t run = 1;
        while (i + run < f.size() && std::toupper(U(f[i + run])) == uc)
            ++run;
        switch (uc) {
        case '"':
        case '\'': {
            size_t end = f.find(c, i + 1);
            if (end == std::string_view::npos) end = f.size();
            out.append(f.substr(i + 1, end - i - 1));
            i = end + 1;
            continue;
        }
        case 'C':
            FormatDT(out, ShortDateFormat, dt, depth + 1);
            if (dt - std::trunc(dt) != 0) {
                out += ' ';
                FormatDT(out, LongTimeFormat, dt, depth + 1);
            }
            i += 1;
            lastWasHour = false;
            continue;
        case 'D': {
            size_t n = std::min<size_t>(run, 6);
            if (n <= 4)
                out += NumberOrName(d, DayOfWeek(TDateTime(dt)), n, ShortDayNames, LongDayNames);
            else
                FormatDT(out, n == 5 ? ShortDateFormat : LongDateFormat, dt, depth + 1);
            i += n;
            lastWasHour = false;
            continue;
        }
        case 'M': {
            size_t n = std::min<size_t>(run, 4);
            // Right after an hour, m and mm are the minutes.
            if (lastWasHour && n <= 2)
                out += Digits(mi, n);
            else
                out += NumberOrName(mo, mo, n, ShortMonthNames, LongMonthNames);
            i += n;
            lastWasHour = false;
            continue;
        }
        case 'Y': {
            if (run <= 2) {
                out += Pad2(y % 100);
            } else {
                char b[16];
                std::snprintf(b, sizeof b, "%04d", y);
                out += b;
            }
            i += run;
            lastWasHour = false;
            continue;
        }
        case 'H':
        case 'N':
        case 'S': {
            // Hours (from 1 to 12 with an am/pm mark in the picture), minutes and seconds.
            int value = uc == 'H' ? h : uc == 'N' ? mi : s;
            if (uc == 'H' && twelve) value = h % 12 == 0 ? 12 : h % 12;
            size_t n = std::min<size_t>(run, 2);
            out += Digits(value, n);
            i += n;
            lastWasHour = uc == 'H';
            continue;
        }
        case 'Z': {
            if (run >= 3) {
                char b[16];
                std::snprintf(b, sizeof b, "%03d", ms);
                out += b;
                i += 3;
            } else {
                out += std::to_string(ms);
                i += 1;
            }
            lastWasHour = false;
            continue;
        }
        case 'T': {
            FormatDT(out, run >= 2 ? LongTimeFormat : ShortTimeFormat, dt, depth + 1);
            i += std::min<size_t>(run, 2);
            lastWasHour = false;
            continue;
        }
        case 'A': {
            if (StartsWithText(f, i, "am/pm")) {
                bool upper = f[i] == 'A';
                out += h < 12 ? (upper ? "AM" : "am") : (upper ? "PM" : "pm");
                i += 5;
            } else if (StartsWithText(f, i, "a/p")) {
                bool upper = f[i] == 'A';
                out += h < 12 ? (upper ? "A" : "a") : (upper ? "P" : "p");
                i += 3;
            } else if (StartsWithText(f, i, "ampm")) {
                out += h < 12 ? TimeAMString : TimePMString;
                i += 4;
            } else {
                out += c;
                i += 1;
            }
            continue;
        }
        case '/':
            if (DateSeparator != '\0') out += DateSeparator;
            i += 1;
            continue;
        case ':':
            if (TimeSeparator != '\0') out += TimeSeparator;
            i += 1;
            continue;
        default:
            out += c;
            i += 1;
            continue;
        }
    }
}

// Reading dates and times.

struct Scanner {
    std::string_view s;
    size_t i = 0;
    void SkipBlanks() {
        while (i < s.size() && s[i] == ' ')
            ++i;
    }
    bool Number(int& value, int& length) {
        SkipBlanks();
        size_t start = i;
        int64_t v = 0;
        while (i < s.size() && IsDigit(s[i]) && i - start < 9)
            v = v * 10 + (s[i++] - '0');
        length = static_cast<int>(i - start);
        if (length == 0 || (i < s.size() && IsDigit(s[i]))) return false;
        value = static_cast<int>(v);
        return true;
    }
    bool Char(char c) {
        SkipBlanks();
        if (i < s.size() && s[i] == c) {
            ++i;
            return true;
        }
        return false;
    }
    bool Text(std::string_view what) {
        SkipBlanks();
        if (!what.empty() && StartsWithText(s, i, what)) {
            i += what.size();
            return true;
        }
        return false;
    }
    bool AtEnd() {
        SkipBlanks();
        return i >= s.size();
    }
};

enum DateOrder { doMDY, doDMY, doYMD };

DateOrder GetDateOrder() {
    for (char c : ShortDateFormat) {
        char u = static_cast<char>(std::toupper(U(c)));
        if (u == 'D') return doDMY;
        if (u == 'Y') return doYMD;
        if (u == 'M') return doMDY;
    }
    return doMDY;
}

int CurrentYear() {
    uint16_t y, m, d;
    DecodeDate(Date(), y, m, d);
    return y;
}

bool ScanDate(Scanner& sc, double& date) {
    int n1, n2, n3, l1, l2, l3;
    int y, m, d, yl = 4;
    DateOrder order = GetDateOrder();
    if (!sc.Number(n1, l1) || !sc.Char(DateSeparator) || !sc.Number(n2, l2)) return false;
    if (sc.Char(DateSeparator)) {
        if (!sc.Number(n3, l3)) return false;
        switch (order) {
        case doMDY:
            m = n1, d = n2, y = n3, yl = l3;
            break;
        case doDMY:
            d = n1, m = n2, y = n3, yl = l3;
            break;
        default:
            y = n1, m = n2, d = n3, yl = l1;
            break;
        }
    } else {
        y = CurrentYear();
        if (order == doDMY)
            d = n1, m = n2;
        else
            m = n1, d = n2;
    }
    if (yl <= 2) {
        int cy = CurrentYear() - TwoDigitYearCenturyWindow;
        y += cy / 100 * 100;
        if (TwoDigitYearCenturyWindow > 0 && y < cy) y += 100;
    }
    TDateTime r;
    if (!TryEncodeDate(y, m, d, r)) return false;
    date = r.Value;
    return true;
}

bool ScanTime(Scanner& sc, double& time) {
    int h, mi = 0, s = 0, ms = 0, l;
    if (!sc.Number(h, l)) return false;
    bool hasMinutes = false;
    if (sc.Char(TimeSeparator)) {
        if (!sc.Number(mi, l)) return false;
        hasMinutes = true;
        if (sc.Char(TimeSeparator)) {
            if (!sc.Number(s, l)) return false;
            if (sc.Char(DecimalSeparator) || sc.Char('.')) {
                if (!sc.Number(ms, l)) return false;
            }
        }
    }
    int base = -1;
    if (sc.Text(TimeAMString) || sc.Text("AM"))
        base = 0;
    else if (sc.Text(TimePMString) || sc.Text("PM"))
        base = 12;
    if (!hasMinutes && base < 0) return false;
    if (base >= 0) {
        if (h < 1 || h > 12) return false;
        h = h % 12 + base;
    }
    TDateTime r;
    if (!TryEncodeTime(h, mi, s, ms, r)) return false;
    time = r.Value;
    return true;
}

} // namespace

std::string FormatDateTime(std::string_view format, TDateTime dateTime) {
    std::string out;
    FormatDT(out, format.empty() ? std::string_view("c") : format, dateTime.Value, 0);
    return out;
}

std::string DateTimeToStr(TDateTime dateTime) {
    return FormatDateTime("c", dateTime);
}
std::string DateToStr(TDateTime date) {
    return FormatDateTime("ddddd", date);
}
std::string TimeToStr(TDateTime time) {
    return FormatDateTime("tt", time);
}

namespace {

// Reads all of s with one scan; value is set only when the scan takes the whole text.
bool TryScanAll(std::string_view s, bool (*scan)(Scanner&, double&), TDateTime& value) {
    Scanner sc{s};
    double v;
    if (!scan(sc, v) || !sc.AtEnd()) return false;
    value = TDateTime(v);
    return true;
}

} // namespace

bool TryStrToDate(std::string_view s, TDateTime& value) {
    return TryScanAll(s, ScanDate, value);
}

bool TryStrToTime(std::string_view s, TDateTime& value) {
    return TryScanAll(s, ScanTime, value);
}

bool TryStrToDateTime(std::string_view s, TDateTime& value) {
    Scanner sc{s};
    double d, t = 0;
    if (ScanDate(sc, d) && (sc.AtEnd() || (ScanTime(sc, t) && sc.AtEnd()))) {
        value = TDateTime(d < 0 ? d - t : d + t);
        return true;
    }
    return TryStrToTime(s, value);
}

namespace {

// The value tryConvert reads from s, or an EConvertError with msg.
TDateTime ConvertDateTime(std::string_view s, bool (*tryConvert)(std::string_view, TDateTime&),
                          const char* msg) {
    TDateTime v;
    if (!tryConvert(s, v)) ConvertError(msg, s);
    return v;
}

} // namespace

TDateTime StrToDate(std::string_view s) {
    return ConvertDateTime(s, TryStrToDate, SInvalidDate);
}

TDateTime StrToTime(std::string_view s) {
    return ConvertDateTime(s, TryStrToTime, SInvalidTime);
}

TDateTime StrToDateTime(std::string_view s) {
    return ConvertDateTime(s, TryStrToDateTime, SInvalidDateTime);
}

// ---------------------------------------------------------------------------------------------
// Text

std::string Trim(std::string_view s) {
    size_t b = 0, e = s.size();
    while (b < e && IsBlank(s[b]))
        ++b;
    while (e > b && IsBlank(s[e - 1]))
        --e;
    return std::string(s.substr(b, e - b));
}

std::string TrimLeft(std::string_view s) {
    size_t b = 0;
    while (b < s.size() && IsBlank(s[b]))
        ++b;
    return std::string(s.substr(b));
}

std::string TrimRight(std::string_view s) {
    size_t e = s.size();
    while (e > 0 && IsBlank(s[e - 1]))
        --e;
    return std::string(s.substr(0, e));
}

std::string UpperCase(std::string_view s) {
    std::string r(s);
    for (char& c : r)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    return r;
}

std::string LowerCase(std::string_view s) {
    std::string r(s);
    for (char& c : r)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    return r;
}

namespace {

// Case pairs and sort keys of Windows-1251.
struct Cp1251Tables {
    unsigned char upper[256];
    unsigned char lower[256];
    uint16_t key[256];

    Cp1251Tables() {
        for (int i = 0; i < 256; ++i) {
            upper[i] = lower[i] = static_cast<unsigned char>(i);
            key[i] = static_cast<uint16_t>(i);
        }
        auto pair = [&](int up, int low) {
            upper[low] = static_cast<unsigned char>(up);
            lower[up] = static_cast<unsigned char>(low);
        };
        for (int c = 'A'; c <= 'Z'; ++c)
            pair(c, c + 32);
        for (int c = 0xC0; c <= 0xDF; ++c)
            pair(c, c + 32);
        const int pairs[][2] = {{0x80, 0x90}, {0x81, 0x83}, {0x8A, 0x9A}, {0x8C, 0x9C},
                                {0x8D, 0x9D}, {0x8E, 0x9E}, {0x8F, 0x9F}, {0xA1, 0xA2},
                                {0xA3, 0xBC}, {0xA5, 0xB4}, {0xA8, 0xB8}, {0xAA, 0xBA},
                                {0xAF, 0xBF}, {0xB2, 0xB3}, {0xBD, 0xBE}};
        for (auto& p : pairs)
            pair(p[0], p[1]);
        uint16_t next = 256;
        for (int c = 'A'; c <= 'Z'; ++c) {
            key[c] = key[c + 32] = next++;
        }
        // Upper-case Cyrillic letters in alphabetical order.
        const int cyrillic[] = {0xC0, 0xC1, 0xC2, 0xC3, 0xA5, 0xC4, 0x80, 0x81, 0xC5, 0xA8,
                                0xAA, 0xC6, 0xC7, 0xBD, 0xC8, 0xB2, 0xAF, 0xC9, 0xA3, 0xCA,
                                0xCB, 0x8A, 0xCC, 0xCD, 0x8C, 0xCE, 0xCF, 0xD0, 0xD1, 0xD2,
                                0x8E, 0x8D, 0xD3, 0xA1, 0xD4, 0xD5, 0xD6, 0xD7, 0x8F, 0xD8,
                                0xD9, 0xDA, 0xDB, 0xDC, 0xDD, 0xDE, 0xDF};
        for (int c : cyrillic) {
            key[c] = key[lower[c]] = next++;
        }
    }
};

const Cp1251Tables& Tables() {
    static const Cp1251Tables t;
    return t;
}

int CollateKeys(std::string_view a, std::string_view b) {
    const auto& t = Tables();
    size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        int ka = t.key[U(a[i])], kb = t.key[U(b[i])];
        if (ka != kb) return ka < kb ? -1 : 1;
    }
    if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
    return 0;
}

} // namespace

char AnsiUpperChar(char c) {
    return static_cast<char>(Tables().upper[U(c)]);
}
char AnsiLowerChar(char c) {
    return static_cast<char>(Tables().lower[U(c)]);
}

std::string AnsiUpperCase(std::string_view s) {
    std::string r(s);
    for (char& c : r)
        c = AnsiUpperChar(c);
    return r;
}

std::string AnsiLowerCase(std::string_view s) {
    std::string r(s);
    for (char& c : r)
        c = AnsiLowerChar(c);
    return r;
}

int CompareStr(std::string_view a, std::string_view b) {
    size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i)
        if (a[i] != b[i]) return U(a[i]) - U(b[i]);
    return static_cast<int>(a.size() > b.size()) - static_cast<int>(a.size() < b.size());
}

int CompareText(std::string_view a, std::string_view b) {
    size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        int ca = U(a[i]), cb = U(b[i]);
        if (ca >= 'a' && ca <= 'z') ca -= 32;
        if (cb >= 'a' && cb <= 'z') cb -= 32;
        if (ca != cb) return ca - cb;
    }
    return static_cast<int>(a.size() > b.size()) - static_cast<int>(a.size() < b.size());
}

bool SameText(std::string_view a, std::string_view b) {
    return a.size() == b.size() && CompareText(a, b) == 0;
}

int AnsiCompareText(std::string_view a, std::string_view b) {
    return CollateKeys(a, b);
}

void AppendAnsiSortKey(std::string_view s, std::string& key) {
    // Each byte's key as its rank among the distinct keys: fewer than 256 of them, since the
    // two cases of a letter share one.
    static const auto rank = [] {
        const auto& t = Tables();
        std::vector<uint16_t> keys(t.key, t.key + 256);
        std::sort(keys.begin(), keys.end());
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
        std::array<unsigned char, 256> r{};
        for (size_t i = 0; i < 256; ++i)
            r[i] = static_cast<unsigned char>(std::lower_bound(keys.begin(), keys.end(), t.key[i]) -
                                              keys.begin());
        return r;
    }();
    size_t at = key.size();
    key.resize(at + s.size());
    for (size_t i = 0; i < s.size(); ++i)
        key[at + i] = static_cast<char>(rank[U(s[i])]);
}

int AnsiCompareStr(std::string_view a, std::string_view b) {
    int r = CollateKeys(a, b);
    if (r != 0) return r;
    // Same letters: the first difference of case decides, lower case first.
    const auto& t = Tables();
    for (size_t i = 0; i < a.size(); ++i) {
        if (a[i] == b[i]) continue;
        bool aLower = t.upper[U(a[i])] != U(a[i]);
        bool bLower = t.upper[U(b[i])] != U(b[i]);
        if (aLower != bLower) return aLower ? -1 : 1;
        return U(a[i]) < U(b[i]) ? -1 : 1;
    }
    return 0;
}

bool AnsiSameText(std::string_view a, std::string_view b) {
    return AnsiCompareText(a, b) == 0;
}
bool AnsiSameStr(std::string_view a, std::string_view b) {
    return a == b;
}

std::string AnsiQuotedStr(std::string_view s, char quote) {
    std::string r(1, quote);
    for (char c : s) {
        r += c;
        if (c == quote) r += quote;
    }
    r += quote;
    return r;
}

std::string QuotedStr(std::string_view s) {
    return AnsiQuotedStr(s, '\'');
}

std::string AnsiDequotedStr(std::string_view s, char quote) {
    if (s.empty() || s[0] != quote) return std::string(s);
    std::string r;
    size_t i = 1;
    while (i < s.size()) {
        if (s[i] == quote) {
            if (i + 1 < s.size() && s[i + 1] == quote) {
                r += quote;
                i += 2;
                continue;
            }
            break;
        }
        r += s[i++];
    }
    if (r.empty()) return std::string(s);
    return r;
}

bool IsValidIdent(std::string_view s) {
    if (s.empty()) return false;
    auto alpha = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    if (!alpha(s[0])) return false;
    for (char c : s.substr(1))
        if (!alpha(c) && !IsDigit(c)) return false;
    return true;
}

int Pos(std::string_view substr, std::string_view s) {
    if (substr.empty()) return 0;
    size_t p = s.find(substr);
    return p == std::string_view::npos ? 0 : static_cast<int>(p) + 1;
}

int AnsiPos(std::string_view substr, std::string_view s) {
    return Pos(substr, s);
}

std::string Copy(std::string_view s, int64_t index, int64_t count) {
    int64_t len = static_cast<int64_t>(s.size());
    if (index < 1) index = 1;
    if (count <= 0 || index > len) return {};
    int64_t start = index - 1;
    count = std::min(count, len - start);
    return std::string(s.substr(static_cast<size_t>(start), static_cast<size_t>(count)));
}

void Delete(std::string& s, int64_t index, int64_t count) {
    int64_t len = static_cast<int64_t>(s.size());
    if (index < 1 || index > len || count <= 0) return;
    int64_t start = index - 1;
    count = std::min(count, len - start);
    s.erase(static_cast<size_t>(start), static_cast<size_t>(count));
}

void Insert(std::string_view source, std::string& s, int64_t index) {
    int64_t len = static_cast<int64_t>(s.size());
    index = std::clamp<int64_t>(index, 1, len + 1);
    s.insert(static_cast<size_t>(index - 1), source);
}

std::string StringOfChar(char c, int64_t count) {
    return count > 0 ? std::string(static_cast<size_t>(count), c) : std::string();
}

std::string StringReplace(std::string_view s, std::string_view oldPattern,
                          std::string_view newPattern, TReplaceFlags flags) {
    if (oldPattern.empty()) return std::string(s);
    bool ignoreCase = flags.Contains(rfIgnoreCase);
    std::string hay = ignoreCase ? AnsiUpperCase(s) : std::string(s);
    std::string pat = ignoreCase ? AnsiUpperCase(oldPattern) : std::string(oldPattern);
    std::string out;
    size_t i = 0;
    while (i <= s.size()) {
        size_t p = hay.find(pat, i);
        if (p == std::string::npos) break;
        out.append(s.substr(i, p - i));
        out.append(newPattern);
        i = p + pat.size();
        if (!flags.Contains(rfReplaceAll)) break;
    }
    out.append(s.substr(std::min(i, s.size())));
    return out;
}

std::string AdjustLineBreaks(std::string_view s) {
    std::string r;
    r.reserve(s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        char c = s[i];
        if (c == '\r') {
            if (i + 1 < s.size() && s[i + 1] == '\n') ++i;
            r += "\r\n";
        } else if (c == '\n') {
            r += "\r\n";
        } else {
            r += c;
        }
    }
    return r;
}

int LastDelimiter(std::string_view delimiters, std::string_view s) {
    size_t p = s.find_last_of(delimiters);
    return p == std::string_view::npos ? 0 : static_cast<int>(p) + 1;
}

bool IsDelimiter(std::string_view delimiters, std::string_view s, int64_t index) {
    if (index < 1 || index > static_cast<int64_t>(s.size())) return false;
    return delimiters.find(s[static_cast<size_t>(index - 1)]) != std::string_view::npos;
}

std::string WrapText(std::string_view line, std::string_view breakStr, std::string_view breakChars,
                     int maxCol) {
    if (maxCol < 1) maxCol = 1;
    std::string out;
    size_t lineStart = 0; // start of the current output line in `line`
    size_t lastBreak = std::string_view::npos;
    char quote = 0;
    size_t i = 0;
    while (i < line.size()) {
        char c = line[i];
        if (quote) {
            if (c == quote) quote = 0;
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == '\r' || c == '\n') {
            // An existing line break starts a new line.
            size_t end = i + 1;
            if (c == '\r' && end < line.size() && line[end] == '\n') ++end;
            out.append(line.substr(lineStart, end - lineStart));
            lineStart = i = end;
            lastBreak = std::string_view::npos;
            continue;
        } else if (breakChars.find(c) != std::string_view::npos) {
            lastBreak = i;
        }
        if (static_cast<int>(i - lineStart) >= maxCol && lastBreak != std::string_view::npos &&
            lastBreak >= lineStart) {
            size_t cut = lastBreak + 1;
            std::string piece(line.substr(lineStart, cut - lineStart));
            // A blank at the break goes away; a hyphen stays.
            while (!piece.empty() && piece.back() == ' ')
                piece.pop_back();
            out += piece;
            out.append(breakStr);
            lineStart = cut;
            while (lineStart < line.size() && line[lineStart] == ' ')
                ++lineStart;
            lastBreak = std::string_view::npos;
            i = std::max(i, lineStart);
            if (i == lineStart) continue;
        }
        ++i;
    }
    out.append(line.substr(std::min(lineStart, line.size())));
    return out;
}

// ---------------------------------------------------------------------------------------------
// Files and paths

std::string ExtractFilePath(std::string_view fileName) {
    size_t p = fileName.rfind(PathDelim);
    return p == std::string_view::npos ? std::string() : std::string(fileName.substr(0, p + 1));
}

std::string ExtractFileDir(std::string_view fileName) {
    size_t p = fileName.rfind(PathDelim);
    if (p == std::string_view::npos) return {};
    if (p == 0) return "/";
    return std::string(fileName.substr(0, p));
}

std::string ExtractFileName(std::string_view fileName) {
    size_t p = fileName.rfind(PathDelim);
    return std::string(p == std::string_view::npos ? fileName : fileName.substr(p + 1));
}

std::string ExtractFileExt(std::string_view fileName) {
    size_t p = fileName.find_last_of("./");
    if (p == std::string_view::npos || fileName[p] != '.') return {};
    return std::string(fileName.substr(p));
}

std::string ChangeFileExt(std::string_view fileName, std::string_view extension) {
    size_t p = fileName.find_last_of("./");
    std::string base(p == std::string_view::npos || fileName[p] != '.' ? fileName
                                                                       : fileName.substr(0, p));
    return base + std::string(extension);
}

std::string IncludeTrailingPathDelimiter(std::string_view s) {
    std::string r(s);
    if (r.empty() || r.back() != PathDelim) r += PathDelim;
    return r;
}

std::string ExcludeTrailingPathDelimiter(std::string_view s) {
    std::string r(s);
    if (!r.empty() && r.back() == PathDelim) r.pop_back();
    return r;
}

bool IsPathDelimiter(std::string_view s, int64_t index) {
    return index >= 1 && index <= static_cast<int64_t>(s.size()) &&
           s[static_cast<size_t>(index - 1)] == PathDelim;
}

std::string ExpandFileName(std::string_view fileName) {
    if (fileName.empty()) return {};
    std::string path(fileName);
    if (path[0] != PathDelim) path = IncludeTrailingPathDelimiter(GetCurrentDir()) + path;
    bool trailing = path.back() == PathDelim;
    std::vector<std::string> parts;
    size_t i = 0;
    while (i <= path.size()) {
        size_t j = path.find(PathDelim, i);
        if (j == std::string::npos) j = path.size();
        std::string part = path.substr(i, j - i);
        if (part == "..") {
            if (!parts.empty()) parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        i = j + 1;
    }
    std::string r;
    for (auto& p : parts)
        r += PathDelim + p;
    if (r.empty()) return "/";
    if (trailing) r += PathDelim;
    return r;
}

bool FileExists(const std::string& fileName) {
    struct stat st {};
    return !fileName.empty() && ::stat(fileName.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

bool DirectoryExists(const std::string& dir) {
    struct stat st {};
    return !dir.empty() && ::stat(dir.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool CreateDir(const std::string& dir) {
    return !dir.empty() && ::mkdir(dir.c_str(), 0777) == 0;
}

bool RemoveDir(const std::string& dir) {
    return !dir.empty() && ::rmdir(dir.c_str()) == 0;
}

bool ForceDirectories(const std::string& dir) {
    std::string d = ExcludeTrailingPathDelimiter(dir);
    if (d.empty()) {
        if (dir == "/") return true;
        throw EInOutError(SCannotCreateDir);
    }
    if (DirectoryExists(d)) return true;
    std::string parent = ExtractFileDir(d);
    if (!parent.empty() && parent != d && !ForceDirectories(parent)) return false;
    return CreateDir(d) || DirectoryExists(d);
}

bool DeleteFile(const std::string& fileName) {
    if (fileName.empty() || DirectoryExists(fileName)) return false;
    return ::unlink(fileName.c_str()) == 0;
}

bool RenameFile(const std::string& oldName, const std::string& newName) {
    return !oldName.empty() && !newName.empty() && ::rename(oldName.c_str(), newName.c_str()) == 0;
}

std::string UserConfigDir() {
    std::string base;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg)
        base = xdg;
    else if (const char* home = std::getenv("HOME"); home && *home)
        base = std::string(home) + "/.config";
    else
        return {};
    return base + "/zelvane";
}

std::string GetCurrentDir() {
    std::vector<char> buf(4096);
    while (!::getcwd(buf.data(), buf.size())) {
        if (errno != ERANGE || buf.size() > (1u << 20)) return {};
        buf.resize(buf.size() * 2);
    }
    return buf.data();
}

bool SetCurrentDir(const std::string& dir) {
    return !dir.empty() && ::chdir(dir.c_str()) == 0;
}

namespace {
int32_t UnixToFileDate(time_t t) {
    std::tm tm{};
    if (!localtime_r(&t, &tm)) return -1;
    int year = tm.tm_year + 1900;
    if (year < 1980 || year > 2107) return -1;
    uint32_t v =
        (static_cast<uint32_t>(year - 1980) << 25) | (static_cast<uint32_t>(tm.tm_mon + 1) << 21) |
        (static_cast<uint32_t>(tm.tm_mday) << 16) | (static_cast<uint32_t>(tm.tm_hour) << 11) |
        (static_cast<uint32_t>(tm.tm_min) << 5) |
        static_cast<uint32_t>(std::min(tm.tm_sec, 59) / 2);
    return static_cast<int32_t>(v);
}
} // namespace

int32_t FileAge(const std::string& fileName) {
    struct stat st {};
    if (fileName.empty() || ::stat(fileName.c_str(), &st) != 0 || S_ISDIR(st.st_mode)) return -1;
    return UnixToFileDate(st.st_mtime);
}

bool FileAge(const std::string& fileName, TDateTime& fileDateTime) {
    struct stat st {};
    if (fileName.empty() || ::stat(fileName.c_str(), &st) != 0 || S_ISDIR(st.st_mode)) return false;
    std::tm tm{};
    time_t t = st.st_mtime;
    if (!localtime_r(&t, &tm)) return false;
    TDateTime d, tt;
    if (!TryEncodeDate(tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, d) ||
        !TryEncodeTime(tm.tm_hour, tm.tm_min, std::min(tm.tm_sec, 59), 0, tt))
        return false;
    fileDateTime = TDateTime(d.Value + tt.Value);
    return true;
}

int32_t FileGetDate(int handle) {
    struct stat st {};
    if (::fstat(handle, &st) != 0) return -1;
    return UnixToFileDate(st.st_mtime);
}

TDateTime FileDateToDateTime(int32_t fileDate) {
    uint32_t v = static_cast<uint32_t>(fileDate);
    int year = static_cast<int>(v >> 25) + 1980;
    int month = (v >> 21) & 15, day = (v >> 16) & 31;
    int hour = (v >> 11) & 31, min = (v >> 5) & 63, sec = static_cast<int>(v & 31) * 2;
    TDateTime d, t;
    if (!TryEncodeDate(year, month, day, d) || !TryEncodeTime(hour, min, sec, 0, t))
        throw EConvertError(SDateEncodeError);
    return TDateTime(d.Value + t.Value);
}

int32_t DateTimeToFileDate(TDateTime dateTime) {
    uint16_t y, mo, d, h, mi, s, ms;
    DecodeDate(dateTime, y, mo, d);
    DecodeTime(dateTime, h, mi, s, ms);
    if (y < 1980 || y > 2107) return 0;
    uint32_t v = (static_cast<uint32_t>(y - 1980) << 25) | (static_cast<uint32_t>(mo) << 21) |
                 (static_cast<uint32_t>(d) << 16) | (static_cast<uint32_t>(h) << 11) |
                 (static_cast<uint32_t>(mi) << 5) | static_cast<uint32_t>(s / 2);
    return static_cast<int32_t>(v);
}

int FileSetDate(const std::string& fileName, int32_t age) {
    TDateTime dt;
    try {
        dt = FileDateToDateTime(age);
    } catch (const EConvertError&) {
        return EINVAL;
    }
    uint16_t y, mo, d, h, mi, s, ms;
    DecodeDate(dt, y, mo, d);
    DecodeTime(dt, h, mi, s, ms);
    std::tm tm{};
    tm.tm_year = y - 1900;
    tm.tm_mon = mo - 1;
    tm.tm_mday = d;
    tm.tm_hour = h;
    tm.tm_min = mi;
    tm.tm_sec = s;
    tm.tm_isdst = -1;
    time_t t = mktime(&tm);
    utimbuf ub{t, t};
    if (::utime(fileName.c_str(), &ub) != 0) return errno;
    return 0;
}

std::string SysErrorMessage(int errorCode) {
    char buf[256];
    // The GNU strerror_r may return a static string instead of filling buf.
    const char* msg = strerror_r(errorCode, buf, sizeof buf);
    return msg ? msg : "";
}

int GetLastError() {
    return errno;
}

void RaiseLastOSError() {
    RaiseLastOSError(errno);
}

void RaiseLastOSError(int errorCode) {
    if (errorCode == 0) throw EOSError(SUnkOSError);
    throw EOSError(Format(SOSError, {errorCode, SysErrorMessage(errorCode)}), errorCode);
}

} // namespace rtl
