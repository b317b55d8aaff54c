#include "rtl/ObjectText.h"

#include "rtl/CodePage.h"
#include "rtl/Filer.h"
#include "rtl/SysUtils.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <locale.h>
#include <stdlib.h>
#include <type_traits>

namespace rtl {

RTL_IMPLEMENT_CLASS(TParser)

namespace {

constexpr int ParseBufSize = 4096;

constexpr bool IsAlpha(int c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}
constexpr bool IsDigit(int c) {
    return c >= '0' && c <= '9';
}
constexpr bool IsHex(int c) {
    return IsDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}
int HexValue(int c) {
    return IsDigit(c) ? c - '0' : (c | 0x20) - 'a' + 10;
}

// The classes of bytes that runs of a token are made of.
enum : uint8_t { ccAlpha = 1, ccDigit = 2, ccHex = 4 };
constexpr std::array<uint8_t, 256> CharClasses = [] {
    std::array<uint8_t, 256> t{};
    for (int c = 0; c < 256; ++c)
        t[static_cast<size_t>(c)] = static_cast<uint8_t>(
            (IsAlpha(c) ? ccAlpha : 0) | (IsDigit(c) ? ccDigit : 0) | (IsHex(c) ? ccHex : 0));
    return t;
}();

std::string TokenName(char t) {
    switch (t) {
    case toEOF:
        return "end of file";
    case toSymbol:
        return "identifier";
    case toString:
        return "string";
    case toInteger:
        return "integer";
    case toFloat:
        return "float";
    case toWString:
        return "wide string";
    default:
        return std::string("'") + t + "'";
    }
}

// Rewrites the exponent of std::to_chars ("1e+20", "1.5e-07") in the platform's style
// ("1E20", "1.5E-7").
std::string TidyExponent(std::string s) {
    size_t e = s.find('e');
    if (e == std::string::npos) return s;
    std::string mant = s.substr(0, e);
    std::string exp = s.substr(e + 1);
    bool neg = !exp.empty() && exp[0] == '-';
    if (!exp.empty() && (exp[0] == '-' || exp[0] == '+')) exp.erase(0, 1);
    size_t nz = exp.find_first_not_of('0');
    exp = nz == std::string::npos ? "0" : exp.substr(nz);
    return mant + "E" + (neg ? "-" : "") + exp;
}

std::string NonFinite(long double v) {
    if (std::isnan(v)) return "NAN";
    return v < 0 ? "-INF" : "INF";
}

int SignificantDigits(std::string_view s) {
    int n = 0;
    bool leading = true;
    for (char c : s) {
        if (c == 'e' || c == 'E') break;
        if (!IsDigit(c)) continue;
        if (leading && c == '0') continue;
        leading = false;
        ++n;
    }
    return n;
}

} // namespace

namespace {

// The value's exact decimal expansion when it has at most 18 significant digits: its digits
// without trailing zeros (count of them) and the power of ten of the first. Any text of fewer
// digits then lies further from the value than half a unit in its last place, so these digits
// are the fewest that give the value back, and rounding them to 18 or more digits changes
// nothing. False for zero, for values that need more digits, and where long double is not the
// 64-bit-mantissa extended type.
bool ShortExactDecimal(long double value, char (&digits)[40], int& count, int& exponent) {
    if constexpr (std::numeric_limits<long double>::digits != 64) {
        return false;
    } else {
        if (value == 0) return false;
        int e = 0;
        long double m = std::frexp(std::fabs(value), &e); // [0.5, 1)
        auto mant = static_cast<uint64_t>(std::ldexp(m, 64));
        int zeros = std::countr_zero(mant);
        mant >>= zeros;
        int e2 = e - 64 + zeros; // the value is mant * 2^e2
        unsigned __int128 n;
        int scale = 0; // the value is n / 10^scale
        if (e2 >= 0) {
            if (std::bit_width(mant) + e2 > 127) return false;
            n = static_cast<unsigned __int128>(mant) << e2;
        } else {
            // mant / 2^s = mant * 5^s / 10^s; 5^27 keeps the product below 2^127.
            scale = -e2;
            if (scale > 27) return false;
            unsigned __int128 p5 = 1;
            for (int i = 0; i < scale; ++i)
                p5 *= 5;
            n = static_cast<unsigned __int128>(mant) * p5;
        }
        char rev[40];
        int len = 0;
        if (n <= std::numeric_limits<uint64_t>::max()) {
            for (auto u = static_cast<uint64_t>(n); u != 0; u /= 10)
                rev[len++] = static_cast<char>('0' + u % 10);
        } else {
            for (; n != 0; n /= 10)
                rev[len++] = static_cast<char>('0' + static_cast<int>(n % 10));
        }
        int first = 0; // trailing zeros, which stand first in rev
        while (first < len && rev[first] == '0')
            ++first;
        count = len - first;
        if (count > 18) return false;
        for (int i = 0; i < count; ++i)
            digits[i] = rev[len - 1 - i];
        exponent = len - 1 - scale;
        return true;
    }
}

} // namespace

std::string FormatStreamFloat(long double value) {
    if (!std::isfinite(value)) return NonFinite(value);
    char exact[40];
    int count = 0, exp10 = 0;
    if (ShortExactDecimal(value, exact, count, exp10)) {
        // What the general path below gives for these digits: printf's %g layout at the
        // precision it picks, trailing zeros dropped, the exponent in the platform's style.
        int precision = std::max({count, std::min(exp10 + 1, 18), 1});
        std::string s;
        if (std::signbit(value)) s += '-';
        if (exp10 < -4 || exp10 >= precision) {
            s += exact[0];
            if (count > 1) {
                s += '.';
                s.append(exact + 1, static_cast<size_t>(count - 1));
            }
            s += 'E';
            s += std::to_string(exp10);
        } else if (exp10 >= 0) {
            int whole = exp10 + 1;
            if (count <= whole) {
                s.append(exact, static_cast<size_t>(count));
                s.append(static_cast<size_t>(whole - count), '0');
                s += ".0";
            } else {
                s.append(exact, static_cast<size_t>(whole));
                s += '.';
                s.append(exact + whole, static_cast<size_t>(count - whole));
            }
        } else {
            s += "0.";
            s.append(static_cast<size_t>(-exp10 - 1), '0');
            s.append(exact, static_cast<size_t>(count));
        }
        return s;
    }
    // The fewest digits that give the value back, at most 18, laid out as printf's %g does with
    // that precision: the text depends on the value alone, so converting it again gives it again.
    char buf[80];
    auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::scientific);
    std::string_view sci(buf, r.ptr - buf);
    int digits = std::min(SignificantDigits(sci), 18);
    // Whole numbers up to 18 digits are written out rather than with an exponent.
    int exponent = 0;
    if (size_t e = sci.find('e'); e != std::string_view::npos)
        std::from_chars(sci.data() + e + (sci[e + 1] == '+' ? 2 : 1), sci.data() + sci.size(),
                        exponent);
    int precision = std::max({digits, std::min(exponent + 1, 18), 1});
    r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, precision);
    std::string s = TidyExponent(std::string(buf, r.ptr));
    if (s.find_first_of(".E") == std::string::npos) s += ".0";
    return s;
}

namespace {

std::string FormatShortest(double value) {
    if (!std::isfinite(value)) return NonFinite(value);
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general);
    return TidyExponent(std::string(buf, r.ptr));
}

std::string FormatShortest(float value) {
    if (!std::isfinite(value)) return NonFinite(value);
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general);
    return TidyExponent(std::string(buf, r.ptr));
}

} // namespace

// ---------------------------------------------------------------------------------------------
// TParser

TParser::TParser(TStream* stream) : FStream(stream), FBuf(ParseBufSize) {
    if (!stream) throw EParserError("The parser needs a stream");
    FBufOrigin = stream->GetPosition();
    // A UTF-8 byte order mark in front of the text is passed over.
    if (Peek() == 0xEF && FBufEnd - FBufPos >= 3 && FBuf[FBufPos + 1] == char(0xBB) &&
        FBuf[FBufPos + 2] == char(0xBF))
        FBufPos += 3;
    NextToken();
}

TParser::~TParser() {
    try {
        FStream->Seek(FTokenStart, soBeginning);
    } catch (...) {
    }
}

bool TParser::Refill() {
    FBufOrigin += FBufEnd;
    FBufPos = 0;
    int64_t n = FStream->Read(FBuf.data(), ParseBufSize);
    FBufEnd = n > 0 ? static_cast<int>(n) : 0;
    return FBufEnd > 0;
}

void TParser::Error(const std::string& message) {
    throw EParserError(message + " on line " + std::to_string(FSourceLine));
}

void TParser::CheckToken(char t) {
    if (FToken != t) Error(TokenName(t) + " expected but " + TokenName(FToken) + " found");
}

void TParser::CheckTokenSymbol(std::string_view s) {
    CheckToken(toSymbol);
    if (!SameText(Text(), s))
        Error("'" + std::string(s) + "' expected but '" + FTokenStr + "' found");
}

bool TParser::TokenSymbolIs(std::string_view s) const {
    return FToken == toSymbol && SameText(TokenView(), s);
}

inline void TParser::SkipBlanks() {
    for (;;) {
        if (FBufPos == FBufEnd && !Refill()) return;
        const char* buf = FBuf.data();
        int p = FBufPos;
        const int end = FBufEnd;
        bool crAtEnd = false;
        while (p < end) {
            auto c = static_cast<unsigned char>(buf[p]);
            if (c == ' ') {
                ++p;
                continue;
            }
            if (c > ' ' || c == 0) {
                FBufPos = p;
                return;
            }
            ++p;
            if (c == '\r') {
                ++FSourceLine;
                if (p == end) {
                    crAtEnd = true;
                    break;
                }
                if (buf[p] == '\n') ++p;
            } else if (c == '\n')
                ++FSourceLine;
            else
                continue;
            // A line's indentation: spaces, eight at a time.
            uint64_t eight;
            while (end - p >= 8 && (std::memcpy(&eight, buf + p, 8), eight == 0x2020202020202020u))
                p += 8;
        }
        FBufPos = p;
        // A CR that ends the block: its LF, if any, comes with the next.
        if (crAtEnd && Peek() == '\n') ++FBufPos;
    }
}

inline void TParser::AppendRun(uint8_t classes) {
    for (;;) {
        if (FBufPos == FBufEnd && !Refill()) return;
        const char* buf = FBuf.data();
        int p = FBufPos;
        while (p < FBufEnd && (CharClasses[static_cast<unsigned char>(buf[p])] & classes))
            ++p;
        FTokenStr.append(buf + FBufPos, static_cast<size_t>(p - FBufPos));
        bool more = p == FBufEnd;
        FBufPos = p;
        if (!more) return;
    }
}

void TParser::TakeSymbol() const {
    FTokenStr.assign(FSymbol, FSymbolLength);
    FSymbol = nullptr;
}

void TParser::SkipToNextToken() {
    SkipBlanks();
    FTokenStart = Offset();
    FToken = toEOF;
    FSymbol = nullptr;
    FTokenStr.clear();
}

char TParser::NextToken() {
    SkipBlanks();
    FTokenStart = Offset();
    FFloatType = 0;
    FWide = false;
    FSymbol = nullptr;
    FTokenStr.clear();
    int c = Peek();
    if (c < 0) {
        FToken = toEOF;
    } else if (IsAlpha(c)) {
        ReadSymbol();
    } else if (IsDigit(c)) {
        ReadNumber(false);
    } else if (c == '$') {
        ++FBufPos;
        ReadHexNumber(false);
    } else if (c == '-') {
        ++FBufPos;
        int d = Peek();
        if (IsDigit(d))
            ReadNumber(true);
        else if (d == '$') {
            ++FBufPos;
            ReadHexNumber(true);
        } else {
            FToken = '-';
            FTokenStr = "-";
        }
    } else if (c == '\'' || c == '#') {
        ReadStringToken();
    } else if (c == 0 || c >= 0x80) {
        Error("Invalid character " + std::to_string(c) + " in text");
    } else {
        FSymbol = FBuf.data() + FBufPos;
        FSymbolLength = 1;
        ++FBufPos;
        FToken = static_cast<char>(c);
    }
    return FToken;
}

inline void TParser::ReadSymbol() {
    const char* buf = FBuf.data();
    int p = FBufPos + 1; // the first byte is a letter
    while (p < FBufEnd && (CharClasses[static_cast<unsigned char>(buf[p])] & (ccAlpha | ccDigit)))
        ++p;
    if (p < FBufEnd) {
        FSymbol = buf + FBufPos;
        FSymbolLength = static_cast<size_t>(p - FBufPos);
        FBufPos = p;
    } else {
        // A symbol that runs on past the block.
        FTokenStr.assign(buf + FBufPos, static_cast<size_t>(p - FBufPos));
        FBufPos = p;
        AppendRun(ccAlpha | ccDigit);
    }
    FToken = toSymbol;
}

inline void TParser::ReadNumber(bool negative) {
    // A whole number that ends inside the block, its "-" in the block too, stays there as a
    // symbol does.
    if (int start = FBufPos - (negative ? 1 : 0); start >= 0) {
        const char* buf = FBuf.data();
        int p = FBufPos;
        while (p < FBufEnd && IsDigit(buf[p]))
            ++p;
        if (p < FBufEnd) {
            char c = static_cast<char>(buf[p] | 0x20);
            if (c != '.' && c != 'e' && c != 's' && c != 'c' && c != 'd') {
                FSymbol = buf + start;
                FSymbolLength = static_cast<size_t>(p - start);
                FBufPos = p;
                FToken = toInteger;
                return;
            }
        }
    }
    if (negative) FTokenStr.push_back('-');
    AppendRun(ccDigit);
    int c = Peek();
    FToken = toInteger;
    if (c == '.' || c == 'e' || c == 'E') {
        FToken = toFloat;
        bool dotAllowed = true, expAllowed = true;
        for (;;) {
            c = Peek();
            if (c == '.' && dotAllowed) {
                dotAllowed = false;
                FTokenStr.push_back('.');
                ++FBufPos;
            } else if ((c == 'e' || c == 'E') && expAllowed) {
                dotAllowed = expAllowed = false;
                FTokenStr.push_back('e');
                ++FBufPos;
                c = Peek();
                if (c == '+' || c == '-') {
                    FTokenStr.push_back(static_cast<char>(c));
                    ++FBufPos;
                }
                if (!IsDigit(Peek())) Error("Invalid floating point number: " + FTokenStr);
            } else if (IsDigit(c)) {
                FTokenStr.push_back(static_cast<char>(c));
                ++FBufPos;
            } else
                break;
        }
    }
    c = Peek();
    if (c == 's' || c == 'S' || c == 'c' || c == 'C' || c == 'd' || c == 'D') {
        FFloatType = static_cast<char>(c | 0x20);
        FToken = toFloat;
        ++FBufPos;
    }
}

inline void TParser::ReadHexNumber(bool negative) {
    FTokenStr = negative ? "-$" : "$";
    AppendRun(ccHex);
    if (FTokenStr.size() == (negative ? 2u : 1u)) Error("Invalid integer number: " + FTokenStr);
    FToken = toInteger;
}

void TParser::MakeWide() {
    if (FWide) return;
    FWide = true;
    FTokenWide = Cp1251ToUtf16(FTokenStr);
}

inline void TParser::ReadStringToken() {
    FTokenWide.clear();
    for (;;) {
        int c = Peek();
        if (c == '\'') {
            ++FBufPos;
            for (;;) {
                if (!FWide) {
                    // The bytes up to the next apostrophe or line end stand as they are.
                    const char* buf = FBuf.data();
                    int p = FBufPos;
                    while (p < FBufEnd && buf[p] != '\'' && buf[p] != '\r' && buf[p] != '\n')
                        ++p;
                    FTokenStr.append(buf + FBufPos, static_cast<size_t>(p - FBufPos));
                    FBufPos = p;
                }
                c = Peek();
                if (c < 0 || c == '\r' || c == '\n') Error("Unterminated string");
                ++FBufPos;
                if (c == '\'') {
                    if (Peek() != '\'') break;
                    ++FBufPos;
                }
                if (FWide)
                    FTokenWide.push_back(Cp1251ToWide(static_cast<unsigned char>(c)));
                else
                    FTokenStr.push_back(static_cast<char>(c));
            }
        } else if (c == '#') {
            ++FBufPos;
            uint32_t code = 0;
            int digits = 0;
            if (Peek() == '$') {
                ++FBufPos;
                while (IsHex(c = Peek())) {
                    code = code * 16 + HexValue(c);
                    ++FBufPos;
                    if (++digits > 4) Error("Invalid character code");
                }
            } else {
                while (IsDigit(c = Peek())) {
                    code = code * 10 + (c - '0');
                    ++FBufPos;
                    if (code > 0xFFFF) Error("Invalid character code");
                    ++digits;
                }
            }
            if (digits == 0) Error("Invalid character code");
            if (code > 127) MakeWide();
            if (FWide)
                FTokenWide.push_back(static_cast<char16_t>(code));
            else
                FTokenStr.push_back(static_cast<char>(code));
        } else
            break;
    }
    FToken = FWide ? toWString : toString;
}

std::string TParser::TokenComponentIdent() {
    CheckToken(toSymbol);
    Text();
    while (Peek() == '.') {
        ++FBufPos;
        FTokenStr.push_back('.');
        if (!IsAlpha(Peek())) Error("Identifier expected after '.'");
        AppendRun(ccAlpha | ccDigit);
    }
    return FTokenStr;
}

long double TParser::TokenFloat() {
    std::string s = Text();
    if (!s.empty() && s.back() == '.') s.push_back('0');
    long double v = 0;
    auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    if (r.ec != std::errc() || r.ptr != s.data() + s.size())
        Error("Invalid floating point number: " + FTokenStr);
    return v;
}

int64_t TParser::TokenInt() {
    if (FToken != toInteger) Error("Integer expected but " + TokenName(FToken) + " found");
    std::string_view text = TokenView();
    const char* p = text.data();
    const char* end = p + text.size();
    bool neg = *p == '-';
    if (neg) ++p;
    int base = 10;
    if (*p == '$') {
        ++p;
        base = 16;
    }
    uint64_t u = 0;
    auto r = std::from_chars(p, end, u, base);
    if (r.ec != std::errc() || r.ptr != end) Error("Invalid integer number: " + Text());
    // As the platform does, an unsigned 64-bit value is taken with its bits as they are.
    if (neg) {
        if (u > uint64_t(std::numeric_limits<int64_t>::max()) + 1)
            Error("Invalid integer number: " + Text());
        return static_cast<int64_t>(0 - u);
    }
    return static_cast<int64_t>(u);
}

std::string TParser::TokenString() {
    if (FToken == toWString) return Utf16ToCp1251(FTokenWide);
    if (FToken == toFloat && FFloatType) return FTokenStr + FFloatType;
    return Text();
}

std::u16string TParser::TokenWideString() {
    if (FToken == toWString) return FTokenWide;
    return Cp1251ToUtf16(Text());
}

void TParser::HexToBinary(TStream* stream) {
    char out[ParseBufSize];
    int n = 0;
    for (;;) {
        SkipBlanks();
        int c = Peek();
        if (!IsHex(c)) break;
        ++FBufPos;
        int d = Peek();
        if (!IsHex(d)) Error("Wrong number of hexadecimal digits in binary value");
        ++FBufPos;
        out[n++] = static_cast<char>(HexValue(c) * 16 + HexValue(d));
        if (n == ParseBufSize) {
            stream->WriteBuffer(out, n);
            n = 0;
        }
    }
    if (n) stream->WriteBuffer(out, n);
    NextToken();
}

// ---------------------------------------------------------------------------------------------
// Binary to text

namespace {

constexpr int LineLength = 64;

// The "C" locale, whatever locale the program runs in: numbers in streams use ".".
locale_t CLocale() {
    static locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
    return c;
}

// Names in the text form are identifiers, dotted for property paths and references; a stream
// holding anything else has no text form that reads back as the same stream.
std::string CheckedName(std::string name, bool dotted, bool mayBeEmpty) {
    if (!IsStreamName(name, dotted, mayBeEmpty))
        throw EReadError("Invalid name '" + name + "' in stream");
    return name;
}

// A TReader whose byte-sized reads are inline over its buffer. Whatever the buffer can't serve
// goes through TReader::Read, so refills, the errors at the end of the stream and the position
// the stream is left at are the reader's own.
class ByteReader : public TReader {
public:
    using TReader::TReader;

    uint8_t Byte() {
        if (FBufPos != FBufEnd) return static_cast<uint8_t>(FBuffer[FBufPos++]);
        uint8_t b;
        Read(&b, 1);
        return b;
    }
    uint8_t Peek() {
        uint8_t b = Byte();
        --FBufPos;
        return b;
    }
    void Unread() { --FBufPos; }
    void Bytes(void* out, size_t n) {
        if (static_cast<size_t>(FBufEnd - FBufPos) >= n) {
            std::memcpy(out, FBuffer.data() + FBufPos, n);
            FBufPos += static_cast<int>(n);
        } else
            Read(out, static_cast<int64_t>(n));
    }
    // The next n bytes where they lie in the buffer, consumed; nullptr, with nothing consumed,
    // when the buffer doesn't hold them all.
    const char* Span(size_t n) {
        if (static_cast<size_t>(FBufEnd - FBufPos) < n) return nullptr;
        const char* p = FBuffer.data() + FBufPos;
        FBufPos += static_cast<int>(n);
        return p;
    }
    // The end of a list or of a value list: the vaNull tag, or "Invalid property value" with the
    // tag left unread.
    void ListEnd() { Expect(vaNull); }
    void ListBegin() { Expect(vaList); }
    int32_t Integer() {
        switch (Byte()) {
        case vaInt8:
            return static_cast<int8_t>(Byte());
        case vaInt16: {
            uint8_t b[2];
            Bytes(b, 2);
            return static_cast<int16_t>(b[0] | b[1] << 8);
        }
        case vaInt32: {
            uint8_t b[4];
            Bytes(b, 4);
            return static_cast<int32_t>(uint32_t(b[0]) | uint32_t(b[1]) << 8 |
                                        uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24);
        }
        default:
            Unread();
            PropValueError();
        }
    }
    uint64_t Raw64() {
        uint8_t b[8];
        Bytes(b, 8);
        uint64_t v = 0;
        for (int i = 7; i >= 0; --i)
            v = v << 8 | b[i];
        return v;
    }

private:
    void Expect(uint8_t tag) {
        if (Byte() != tag) {
            Unread();
            PropValueError();
        }
    }
};

// The text being made: appends that are inline, into a block that grows as needed.
class TextBuffer {
public:
    TextBuffer() { Grow(0); }
    size_t Size() const { return size_; }
    const char* Data() const { return data_.get(); }
    void Clear() { size_ = 0; }
    // Room for n more bytes, to be filled and then committed.
    char* Room(size_t n) {
        if (capacity_ - size_ < n) Grow(n);
        return data_.get() + size_;
    }
    void Commit(size_t n) { size_ += n; }
    void Put(char c) {
        if (size_ == capacity_) Grow(1);
        data_[size_++] = c;
    }
    void Put(const char* s, size_t n) {
        if (n == 0) return;
        std::memcpy(Room(n), s, n);
        size_ += n;
    }
    void Put(std::string_view s) { Put(s.data(), s.size()); }
    template <size_t N> void Put(const char (&literal)[N]) { Put(literal, N - 1); }
    void Fill(char c, size_t n) {
        std::memset(Room(n), c, n);
        size_ += n;
    }
    template <class Int> void Number(Int v) {
        char* p = Room(24);
        size_ += static_cast<size_t>(std::to_chars(p, p + 24, v).ptr - p);
    }

private:
    void Grow(size_t n) {
        size_t capacity = std::max({capacity_ * 2, size_ + n, size_t(1) << 17});
        std::unique_ptr<char[]> block(new char[capacity]);
        if (size_) std::memcpy(block.get(), data_.get(), size_);
        data_ = std::move(block);
        capacity_ = capacity;
    }
    std::unique_ptr<char[]> data_;
    size_t size_ = 0;
    size_t capacity_ = 0;
};

class BinaryToText {
public:
    BinaryToText(TStream* input, TStream* output) : r_(input), output_(output) {}

    void Run() {
        r_.ReadSignature();
        ConvertObject(0);
        Flush();
    }

private:
    void Flush() {
        if (out_.Size() != 0) output_->WriteBuffer(out_.Data(), static_cast<int64_t>(out_.Size()));
        out_.Clear();
    }
    void Maybeflush() {
        if (out_.Size() >= (1 << 16)) Flush();
    }
    void Indent(int n) { out_.Fill(' ', static_cast<size_t>(n)); }
    void NewLine(int indent) {
        char* p = out_.Room(static_cast<size_t>(indent) + 2);
        p[0] = '\r';
        p[1] = '\n';
        std::memset(p + 2, ' ', static_cast<size_t>(indent));
        out_.Commit(static_cast<size_t>(indent) + 2);
    }
    void Enter(int depth) {
        if (depth > MaxNestingDepth) throw EReadError("Object stream nested too deeply");
    }

    // A short string of the stream (a length byte and the bytes): where the reader's buffer
    // holds it, a view of it there, else a copy in scratch.
    std::string_view Str(std::string& scratch) {
        uint8_t len = r_.Byte();
        if (const char* p = r_.Span(len)) return {p, len};
        scratch.resize(len);
        r_.Bytes(scratch.data(), len);
        return scratch;
    }
    // Appends a name read from the stream, once it is known to have a text form.
    void PutName(bool dotted, bool mayBeEmpty) {
        std::string_view name = Str(scratch_);
        CheckName(name, dotted, mayBeEmpty);
        out_.Put(name);
    }
    static void CheckName(std::string_view name, bool dotted, bool mayBeEmpty) {
        if (!IsStreamName(name, dotted, mayBeEmpty))
            CheckedName(std::string(name), dotted, mayBeEmpty);
    }

    void ConvertObject(int indent) {
        Enter(indent / 2);
        TFilerFlags flags = 0;
        int32_t childPos = 0;
        uint8_t prefix = r_.Peek();
        if ((prefix & 0xF0) == 0xF0) {
            r_.Byte();
            flags = prefix & 0x0F;
            if (flags & ffChildPos) childPos = r_.Integer();
        }
        std::string className(Str(scratch_));
        CheckName(className, false, false);
        std::string_view name = Str(scratch_);
        CheckName(name, false, true);
        Indent(indent);
        if (flags & ffInherited)
            out_.Put("inherited ");
        else if (flags & ffInline)
            out_.Put("inline ");
        else
            out_.Put("object ");
        if (!name.empty()) {
            out_.Put(name);
            out_.Put(": ");
        }
        out_.Put(className);
        if (flags & ffChildPos) {
            out_.Put('[');
            out_.Number(childPos);
            out_.Put(']');
        }
        out_.Put("\r\n");
        while (r_.Peek() != vaNull)
            ConvertProperty(indent + 2);
        r_.ListEnd();
        while (r_.Peek() != vaNull)
            ConvertObject(indent + 2);
        r_.ListEnd();
        Indent(indent);
        out_.Put("end\r\n");
        Maybeflush();
    }

    void ConvertProperty(int indent) {
        Indent(indent);
        PutName(true, false);
        out_.Put(" = ");
        ConvertValue(indent);
        out_.Put("\r\n");
        Maybeflush();
    }

    // Quoted runs of printable units, the others by number as #nn, broken into lines of at most
    // LineLength units joined by " +".
    template <class Unit, class Printable>
    void WriteQuoted(const Unit* s, size_t len, int indent, Printable printable) {
        if (len == 0) {
            out_.Put("''");
            return;
        }
        if (len > LineLength) NewLine(indent + 2);
        size_t i = 0, lineStart = 0;
        while (i < len) {
            if (printable(s[i])) {
                size_t end = std::min(len, lineStart + LineLength);
                if (end <= i) end = i + 1; // a run takes at least one unit
                size_t j = i + 1;
                while (j < end && printable(s[j]))
                    ++j;
                // Each unit takes one byte, an apostrophe two; the run is quoted.
                char* p = out_.Room(2 * (j - i) + 2);
                char* start = p;
                *p++ = '\'';
                for (size_t k = i; k < j; ++k) {
                    char c = static_cast<char>(s[k]);
                    *p++ = c;
                    if (c == '\'') *p++ = '\'';
                }
                *p++ = '\'';
                out_.Commit(static_cast<size_t>(p - start));
                i = j;
            } else {
                out_.Put('#');
                out_.Number(static_cast<uint32_t>(s[i]));
                ++i;
            }
            if (i - lineStart >= LineLength && i < len) {
                out_.Put(" +");
                NewLine(indent + 2);
                lineStart = i;
            }
            Maybeflush();
        }
    }

    // Bytes of the code page stand as they are; control characters, DEL among them, are
    // written by number, as in wide strings, so that a string reads back to the same text
    // whichever form the stream held it in.
    void WriteString(const char* s, size_t len, int indent) {
        WriteQuoted(reinterpret_cast<const unsigned char*>(s), len, indent,
                    [](unsigned char c) { return c >= 32 && c != 127; });
    }

    void WriteWide(const std::u16string& w, int indent) {
        WriteQuoted(w.data(), w.size(), indent, [](char16_t c) { return c >= 32 && c < 127; });
    }

    void ConvertValue(int indent) {
        static const char hex[] = "0123456789ABCDEF";
        switch (r_.Peek()) {
        case vaList: {
            Enter(indent / 2);
            r_.Byte();
            out_.Put('(');
            while (r_.Peek() != vaNull) {
                NewLine(indent + 2);
                ConvertValue(indent + 2);
            }
            r_.ListEnd();
            out_.Put(')');
            break;
        }
        case vaInt8:
        case vaInt16:
        case vaInt32:
            out_.Number(r_.Integer());
            break;
        case vaInt64:
            r_.Byte();
            out_.Number(static_cast<int64_t>(r_.Raw64()));
            break;
        case vaExtended: {
            r_.Byte();
            uint8_t b[10];
            r_.Bytes(b, 10);
            out_.Put(FormatStreamFloat(BytesToExtended(b)));
            break;
        }
        case vaSingle:
            out_.Put(FormatShortest(r_.ReadSingle()));
            out_.Put('s');
            break;
        case vaCurrency:
            r_.Byte();
            out_.Number(static_cast<int64_t>(r_.Raw64()));
            out_.Put('c');
            break;
        case vaDate:
            out_.Put(FormatShortest(r_.ReadDate()));
            out_.Put('d');
            break;
        case vaString: {
            r_.Byte();
            std::string_view s = Str(scratch_);
            WriteString(s.data(), s.size(), indent);
            break;
        }
        case vaLString:
            r_.ReadString().swap(scratch_);
            WriteString(scratch_.data(), scratch_.size(), indent);
            break;
        case vaWString:
        case vaUTF8String:
            WriteWide(r_.ReadWideString(), indent);
            break;
        case vaIdent:
            r_.Byte();
            PutName(true, false);
            break;
        case vaFalse:
            r_.Byte();
            out_.Put("False");
            break;
        case vaTrue:
            r_.Byte();
            out_.Put("True");
            break;
        case vaNil:
            r_.Byte();
            out_.Put("nil");
            break;
        case vaNull:
            r_.Byte();
            out_.Put("Null");
            break;
        case vaBinary: {
            r_.Byte();
            uint8_t b[4];
            r_.Bytes(b, 4);
            uint32_t count =
                uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
            out_.Put('{');
            uint8_t line[32];
            while (count > 0) {
                uint32_t n = std::min<uint32_t>(count, 32);
                r_.Bytes(line, n);
                count -= n;
                NewLine(indent + 2);
                char* p = out_.Room(2 * n);
                for (uint32_t i = 0; i < n; ++i) {
                    p[2 * i] = hex[line[i] >> 4];
                    p[2 * i + 1] = hex[line[i] & 15];
                }
                out_.Commit(2 * n);
                Maybeflush();
            }
            out_.Put('}');
            break;
        }
        case vaSet: {
            r_.Byte();
            out_.Put('[');
            bool first = true;
            for (;;) {
                std::string_view s = Str(scratch_);
                if (s.empty()) break;
                CheckName(s, false, false);
                if (!first) out_.Put(", ");
                first = false;
                out_.Put(s);
            }
            out_.Put(']');
            break;
        }
        case vaCollection: {
            Enter(indent / 2);
            r_.Byte();
            out_.Put('<');
            while (r_.Peek() != vaNull) {
                NewLine(indent + 2);
                out_.Put("item");
                uint8_t v = r_.Peek();
                if (v == vaInt8 || v == vaInt16 || v == vaInt32) {
                    out_.Put('[');
                    out_.Number(r_.Integer());
                    out_.Put(']');
                }
                out_.Put("\r\n");
                r_.ListBegin();
                while (r_.Peek() != vaNull)
                    ConvertProperty(indent + 4);
                r_.ListEnd();
                Indent(indent + 2);
                out_.Put("end");
            }
            r_.ListEnd();
            out_.Put('>');
            break;
        }
        default: {
            uint8_t v = r_.Byte();
            throw EReadError("Unknown value type " + std::to_string(v) + " in stream");
        }
        }
    }

    ByteReader r_;
    TStream* output_;
    TextBuffer out_;
    std::string scratch_;
};

// ---------------------------------------------------------------------------------------------
// Text to binary

// SameText: equal but for the case of ASCII letters.
bool SameAscii(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        auto x = static_cast<unsigned char>(a[i]), y = static_cast<unsigned char>(b[i]);
        if (x >= 'a' && x <= 'z') x = static_cast<unsigned char>(x - 32);
        if (y >= 'a' && y <= 'z') y = static_cast<unsigned char>(y - 32);
        if (x != y) return false;
    }
    return true;
}

// A TWriter whose byte-sized writes are inline over its buffer. Whatever doesn't fit goes
// through TWriter::Write, so the bytes reach the stream as the writer's own would.
class ByteWriter : public TWriter {
public:
    using TWriter::TWriter;

    void Byte(uint8_t b) {
        if (FBufPos == FBufSize) FlushBuffer();
        FBuffer[static_cast<size_t>(FBufPos++)] = static_cast<char>(b);
    }
    void Bytes(const void* data, size_t n) {
        if (n <= static_cast<size_t>(FBufSize - FBufPos)) {
            char* out = FBuffer.data() + FBufPos;
            const auto* in = static_cast<const char*>(data);
            if (n >= 8 && n <= 16) {
                // Names mostly: two overlapping words rather than a call.
                uint64_t a, b;
                std::memcpy(&a, in, 8);
                std::memcpy(&b, in + n - 8, 8);
                std::memcpy(out, &a, 8);
                std::memcpy(out + n - 8, &b, 8);
            } else if (n < 8) {
                for (size_t i = 0; i < n; ++i)
                    out[i] = in[i];
            } else
                std::memcpy(out, in, n);
            FBufPos += static_cast<int>(n);
        } else
            Write(data, static_cast<int64_t>(n));
    }
    // As WriteStr, WriteString, WriteIdent and WriteInteger.
    void Str(std::string_view s) {
        size_t n = std::min<size_t>(s.size(), 255);
        Byte(static_cast<uint8_t>(n));
        Bytes(s.data(), n);
    }
    // A short string of at most 255 bytes, written whole into the buffer so that it can be
    // taken back until the next write.
    void KeptStr(std::string_view s) {
        size_t n = s.size();
        if (static_cast<size_t>(FBufSize - FBufPos) < n + 1) FlushBuffer();
        char* out = FBuffer.data() + FBufPos;
        out[0] = static_cast<char>(n);
        std::memcpy(out + 1, s.data(), n);
        FBufPos += static_cast<int>(n + 1);
        kept_ = n;
    }
    // Takes back the string of KeptStr: its bytes go into s.
    void TakeBack(std::string& s) {
        FBufPos -= static_cast<int>(kept_ + 1);
        s.assign(FBuffer.data() + FBufPos + 1, kept_);
    }
    void String(std::string_view s) {
        if (s.size() <= 255) {
            Byte(vaString);
            Str(s);
        } else
            WriteString(s);
    }
    void Ident(std::string_view ident) {
        if (SameAscii(ident, "False"))
            Byte(vaFalse);
        else if (SameAscii(ident, "True"))
            Byte(vaTrue);
        else if (SameAscii(ident, "nil"))
            Byte(vaNil);
        else if (SameAscii(ident, "Null"))
            Byte(vaNull);
        else {
            Byte(vaIdent);
            Str(ident);
        }
    }
    void Integer(int64_t v) {
        uint8_t b[5];
        if (v >= -128 && v <= 127) {
            b[0] = vaInt8;
            b[1] = static_cast<uint8_t>(v);
            Bytes(b, 2);
        } else if (v >= -32768 && v <= 32767) {
            b[0] = vaInt16;
            b[1] = static_cast<uint8_t>(v);
            b[2] = static_cast<uint8_t>(v >> 8);
            Bytes(b, 3);
        } else if (v >= std::numeric_limits<int32_t>::min() &&
                   v <= std::numeric_limits<int32_t>::max()) {
            b[0] = vaInt32;
            for (int i = 0; i < 4; ++i)
                b[i + 1] = static_cast<uint8_t>(v >> (8 * i));
            Bytes(b, 5);
        } else
            WriteInteger(v);
    }

private:
    size_t kept_ = 0;
};

// Whether the token is the symbol word, in any case (as TParser::TokenSymbolIs).
bool SymbolIs(const TParser& p, std::string_view word) {
    return p.Token() == toSymbol && SameAscii(p.TokenView(), word);
}

class TextToBinary {
public:
    TextToBinary(TStream* input, TStream* output) : p_(input), w_(output) {}

    void Run() {
        w_.WriteSignature();
        ConvertObject(0);
        w_.FlushBuffer();
    }

private:
    void Enter(int depth) {
        if (depth > MaxNestingDepth) p_.Error("Objects nested too deeply");
    }

    bool AtObjectKeyword() const {
        return SymbolIs(p_, "object") || SymbolIs(p_, "inherited") || SymbolIs(p_, "inline");
    }

    void ConvertObject(int depth) {
        Enter(depth);
        TFilerFlags flags = 0;
        if (SymbolIs(p_, "inherited"))
            flags = ffInherited;
        else if (SymbolIs(p_, "inline"))
            flags = ffInline;
        else
            p_.CheckTokenSymbol("object");
        p_.NextToken();
        p_.CheckToken(toSymbol);
        std::string name;
        std::string className(p_.TokenView());
        p_.NextToken();
        if (p_.Token() == ':') {
            p_.NextToken();
            p_.CheckToken(toSymbol);
            name = className;
            className = p_.TokenView();
            p_.NextToken();
        }
        int64_t childPos = 0;
        if (p_.Token() == '[') {
            p_.NextToken();
            childPos = p_.TokenInt();
            if (childPos < std::numeric_limits<int32_t>::min() ||
                childPos > std::numeric_limits<int32_t>::max())
                p_.Error("Child position out of range");
            p_.NextToken();
            p_.CheckToken(']');
            p_.NextToken();
            flags |= ffChildPos;
        }
        w_.WritePrefix(flags, static_cast<int32_t>(childPos), className);
        w_.Str(name);
        while (!SymbolIs(p_, "end") && !AtObjectKeyword())
            ConvertProperty(depth);
        w_.Byte(vaNull);
        while (!SymbolIs(p_, "end"))
            ConvertObject(depth + 1);
        // The root's "end" is the last token of this object: what follows belongs to the next.
        if (depth == 0)
            p_.SkipToNextToken();
        else
            p_.NextToken();
        w_.Byte(vaNull);
    }

    void ConvertProperty(int depth) {
        if (p_.Token() != toSymbol) p_.CheckToken(toSymbol);
        // A name of one symbol is written as it is read; the first part of a dotted name is
        // taken back from the writer and the whole name written after its last part.
        std::string& name = name_;
        std::string_view first = p_.TokenView();
        bool kept = first.size() <= 255;
        if (kept)
            w_.KeptStr(first);
        else
            name.assign(first);
        try {
            p_.NextToken();
        } catch (...) {
            if (kept) w_.TakeBack(name);
            throw;
        }
        if (kept && p_.Token() == '.') {
            w_.TakeBack(name);
            kept = false;
        }
        if (!kept) {
            while (p_.Token() == '.') {
                p_.NextToken();
                p_.CheckToken(toSymbol);
                name += '.';
                name += p_.TokenView();
                p_.NextToken();
            }
            if (name.size() > 255)
                p_.Error("Property name too long: " + name.substr(0, 64) + "...");
            w_.Str(name);
        }
        if (p_.Token() != '=') p_.CheckToken('=');
        p_.NextToken();
        ConvertValue(depth + 1);
    }

    void ConvertStrings() {
        bool wide = p_.Token() == toWString;
        std::string& s = str_;
        std::u16string ws;
        if (wide)
            ws = p_.TokenWideString();
        else
            p_.SwapTokenText(s);
        while (p_.NextToken() == '+') {
            p_.NextToken();
            if (p_.Token() != toString && p_.Token() != toWString) p_.CheckToken(toString);
            if (!wide && p_.Token() == toWString) {
                wide = true;
                ws = Cp1251ToUtf16(s);
            }
            if (wide)
                ws += p_.TokenWideString();
            else
                s += p_.TokenText();
        }
        if (wide)
            w_.WriteWideString(ws);
        else
            w_.String(s);
    }

    // A plain decimal ("-12.25") of at most 19 digits, 27 of them after the point, as a long
    // double: the digits as a whole number and the power of ten are both exact, so the one
    // rounding of their quotient gives what reading the text gives. False for anything else.
    static bool ExactQuotient(std::string_view t, long double& v) {
        if constexpr (std::numeric_limits<long double>::digits != 64) {
            return false;
        } else {
            size_t i = 0;
            bool negative = !t.empty() && t[0] == '-';
            if (negative) ++i;
            uint64_t digits = 0;
            int count = 0, fraction = -1;
            for (; i < t.size(); ++i) {
                char c = t[i];
                if (c == '.' && fraction < 0) {
                    fraction = 0;
                    continue;
                }
                if (c < '0' || c > '9') return false;
                if (digits == 0 && c == '0') {
                    if (fraction >= 0) ++fraction;
                    continue;
                }
                if (++count > 19) return false;
                digits = digits * 10 + static_cast<uint64_t>(c - '0');
                if (fraction >= 0) ++fraction;
            }
            if (fraction > 27) return false;
            long double scale = 1;
            for (int k = 0; k < fraction; ++k)
                scale *= 10;
            v = static_cast<long double>(digits) / scale;
            if (negative) v = -v;
            return true;
        }
    }

    // Parses the number of a float token as T, rounded once from its digits.
    template <class T> T ParseAs() {
        if constexpr (std::is_same_v<T, long double>) {
            long double v;
            if (!p_.FloatType() && ExactQuotient(p_.TokenText(), v)) return v;
        }
        std::string t = p_.TokenString();
        if (p_.FloatType()) t.pop_back();
        if (!t.empty() && t.back() == '.') t.push_back('0');
        T v{};
        auto r = std::from_chars(t.data(), t.data() + t.size(), v);
        if (r.ec == std::errc::result_out_of_range && r.ptr == t.data() + t.size()) {
            // The library refuses an extended value below the smallest normal number too: a
            // subnormal number, which the stream holds and the writer writes, and reads back.
            // What is too large, or too small to be anything but zero, is refused.
            long double x = ::strtold_l(t.c_str(), nullptr, CLocale());
            T v = static_cast<T>(x);
            if (!std::isfinite(v) || v == 0) p_.Error("Float value out of range: " + t);
            return v;
        }
        if (r.ec != std::errc() || r.ptr != t.data() + t.size())
            p_.Error("Invalid floating point number: " + t);
        return v;
    }

    void ConvertFloat() {
        switch (p_.FloatType()) {
        case 's':
            w_.WriteSingle(ParseAs<float>());
            break;
        case 'd':
            w_.WriteDate(ParseAs<double>());
            break;
        case 'c': {
            // The text holds the currency value times 10000, as the stream does.
            long double raw = std::nearbyint(ParseAs<long double>());
            if (!(raw >= -9223372036854775807.0L && raw <= 9223372036854775807.0L))
                p_.Error("Currency value out of range");
            w_.WriteValue(vaCurrency);
            auto u = static_cast<uint64_t>(static_cast<int64_t>(raw));
            uint8_t b[8];
            for (int i = 0; i < 8; ++i)
                b[i] = static_cast<uint8_t>(u >> (8 * i));
            w_.Write(b, 8);
            break;
        }
        default:
            w_.WriteFloat(ParseAs<long double>());
        }
        p_.NextToken();
    }

    void ConvertValue(int depth) {
        Enter(depth);
        switch (p_.Token()) {
        case toInteger:
            w_.Integer(p_.TokenInt());
            p_.NextToken();
            break;
        case toFloat:
            ConvertFloat();
            break;
        case toString:
        case toWString:
            ConvertStrings();
            break;
        case toSymbol:
            w_.Ident(p_.TokenComponentIdent());
            p_.NextToken();
            break;
        case '[':
            p_.NextToken();
            w_.Byte(vaSet);
            if (p_.Token() != ']') {
                for (;;) {
                    p_.CheckToken(toSymbol);
                    w_.Str(p_.TokenView());
                    p_.NextToken();
                    if (p_.Token() == ']') break;
                    p_.CheckToken(',');
                    p_.NextToken();
                }
            }
            w_.Byte(0);
            p_.NextToken();
            break;
        case '(':
            p_.NextToken();
            w_.Byte(vaList);
            while (p_.Token() != ')')
                ConvertValue(depth + 1);
            w_.Byte(vaNull);
            p_.NextToken();
            break;
        case '<':
            p_.NextToken();
            w_.Byte(vaCollection);
            while (p_.Token() != '>') {
                p_.CheckTokenSymbol("item");
                p_.NextToken();
                if (p_.Token() == '[') {
                    p_.NextToken();
                    int64_t order = p_.TokenInt();
                    if (order < std::numeric_limits<int32_t>::min() ||
                        order > std::numeric_limits<int32_t>::max())
                        p_.Error("Item order out of range");
                    w_.Integer(order);
                    p_.NextToken();
                    p_.CheckToken(']');
                    p_.NextToken();
                }
                w_.Byte(vaList);
                while (!SymbolIs(p_, "end"))
                    ConvertProperty(depth + 1);
                p_.NextToken();
                w_.Byte(vaNull);
            }
            w_.Byte(vaNull);
            p_.NextToken();
            break;
        case '{': {
            TMemoryStream data;
            p_.HexToBinary(&data);
            p_.CheckToken('}');
            if (data.GetSize() > std::numeric_limits<int32_t>::max())
                p_.Error("Binary value too large");
            w_.WriteValue(vaBinary);
            uint32_t n = static_cast<uint32_t>(data.GetSize());
            uint8_t b[4] = {uint8_t(n), uint8_t(n >> 8), uint8_t(n >> 16), uint8_t(n >> 24)};
            w_.Write(b, 4);
            w_.Write(data.Memory(), data.GetSize());
            p_.NextToken();
            break;
        }
        default:
            p_.Error("Invalid property value");
        }
    }

    TParser p_;
    ByteWriter w_;
    std::string name_;
    std::string str_;
};

} // namespace

bool IsStreamName(std::string_view s, bool dotted, bool mayBeEmpty) {
    if (s.empty()) return mayBeEmpty;
    bool start = true; // at the start of the name or of a part after a dot
    for (char c : s) {
        uint8_t k = CharClasses[static_cast<unsigned char>(c)];
        if (k & ccAlpha)
            start = false;
        else if (!(k & ccDigit) || start) {
            if (!dotted || c != '.' || start) return false;
            start = true;
        }
    }
    return !start;
}

void ObjectBinaryToText(TStream* input, TStream* output) {
    BinaryToText(input, output).Run();
}

void ObjectTextToBinary(TStream* input, TStream* output) {
    TextToBinary(input, output).Run();
}

void ObjectResourceToText(TStream* input, TStream* output) {
    ReadResHeader(input);
    ObjectBinaryToText(input, output);
}

void ObjectTextToResource(TStream* input, TStream* output) {
    int64_t start = input->GetPosition();
    std::string name;
    {
        TParser parser(input);
        if (!parser.TokenSymbolIs("object") && !parser.TokenSymbolIs("inline"))
            parser.CheckTokenSymbol("inherited");
        parser.NextToken();
        parser.CheckToken(toSymbol);
        name = parser.TokenString();
        parser.NextToken();
        if (parser.Token() == ':') {
            parser.NextToken();
            parser.CheckToken(toSymbol);
            name = parser.TokenString();
        }
    }
    input->SetPosition(start);
    for (char& c : name)
        if (c >= 'a' && c <= 'z') c = char(c - 32);
    int64_t fixup = 0;
    WriteResourceHeader(output, name, fixup);
    ObjectTextToBinary(input, output);
    FixupResourceHeader(output, fixup);
}

TStreamOriginalFormat TestStreamFormat(TStream* stream) {
    int64_t pos = stream->GetPosition();
    unsigned char sig[4] = {0, 0, 0, 0};
    int64_t n = 0;
    try {
        n = stream->Read(sig, 4);
    } catch (...) {
        stream->SetPosition(pos);
        throw;
    }
    stream->SetPosition(pos);
    if (n >= 1 && sig[0] == 0xFF) return sofBinary;
    if (n == 4 && std::memcmp(sig, FilerSignature, 4) == 0) return sofBinary;
    if (n >= 1) {
        switch (sig[0]) {
        case 'o':
        case 'O':
        case 'i':
        case 'I':
        case ' ':
        case 13:
        case 11:
        case 9:
            return sofText;
        default:
            break;
        }
    }
    return sofUnknown;
}

} // namespace rtl
