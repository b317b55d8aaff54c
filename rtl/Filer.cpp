#include "rtl/Filer.h"

#include "rtl/CodePage.h"
#include "rtl/SysUtils.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace rtl {

RTL_IMPLEMENT_CLASS(TFiler)
RTL_IMPLEMENT_CLASS(TReader)
RTL_IMPLEMENT_CLASS(TWriter)

namespace {

bool SameText(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'a' && x <= 'z') x = char(x - 32);
        if (y >= 'a' && y <= 'z') y = char(y - 32);
        if (x != y) return false;
    }
    return true;
}

template <class T> T LoadLE(const void* p) {
    using U = std::make_unsigned_t<T>;
    const auto* b = static_cast<const uint8_t*>(p);
    U v = 0;
    for (size_t i = 0; i < sizeof(T); ++i) v = static_cast<U>(v | U(b[i]) << (8 * i));
    return static_cast<T>(v);
}

template <class T> void StoreLE(void* p, T value) {
    using U = std::make_unsigned_t<T>;
    auto v = static_cast<U>(value);
    auto* b = static_cast<uint8_t*>(p);
    for (size_t i = 0; i < sizeof(T); ++i) b[i] = static_cast<uint8_t>(v >> (8 * i));
}

// UTF-8 to UTF-16; a malformed sequence becomes U+FFFD.
std::u16string Utf8ToUtf16(std::string_view s) {
    std::u16string r;
    r.reserve(s.size());
    size_t i = 0, n = s.size();
    while (i < n) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        uint32_t cp;
        int extra;
        if (c < 0x80) {
            r.push_back(c);
            ++i;
            continue;
        } else if ((c & 0xE0) == 0xC0) cp = c & 0x1F, extra = 1;
        else if ((c & 0xF0) == 0xE0) cp = c & 0x0F, extra = 2;
        else if ((c & 0xF8) == 0xF0) cp = c & 0x07, extra = 3;
        else {
            r.push_back(0xFFFD);
            ++i;
            continue;
        }
        if (i + extra >= n) {
            r.push_back(0xFFFD);
            break;
        }
        bool ok = true;
        for (int k = 1; k <= extra; ++k) {
            unsigned char d = static_cast<unsigned char>(s[i + k]);
            if ((d & 0xC0) != 0x80) {
                ok = false;
                break;
            }
            cp = (cp << 6) | (d & 0x3F);
        }
        if (!ok || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
            r.push_back(0xFFFD);
            ++i;
            continue;
        }
        i += extra + 1;
        if (cp >= 0x10000) {
            cp -= 0x10000;
            r.push_back(char16_t(0xD800 + (cp >> 10)));
            r.push_back(char16_t(0xDC00 + (cp & 0x3FF)));
        } else r.push_back(char16_t(cp));
    }
    return r;
}

std::string ObjectName(const TPersistent* obj) {
    std::string name = obj->GetNamePath();
    return name.empty() ? obj->ClassName() : name;
}

} // namespace

const char* ValueTypeName(uint8_t valueType) {
    static const char* const names[] = {
        "vaNull",   "vaList",   "vaInt8",       "vaInt16",    "vaInt32",   "vaExtended",
        "vaString", "vaIdent",  "vaFalse",      "vaTrue",     "vaBinary",  "vaSet",
        "vaLString", "vaNil",   "vaCollection", "vaSingle",   "vaCurrency", "vaDate",
        "vaWString", "vaInt64", "vaUTF8String"};
    return valueType <= vaLast ? names[valueType] : "?";
}

void ExtendedToBytes(long double value, uint8_t bytes[10]) {
    if constexpr (LDBL_MANT_DIG == 64 && std::endian::native == std::endian::little) {
        std::memcpy(bytes, &value, 10);
    } else {
        uint64_t mant = 0;
        uint16_t exp = 0;
        bool neg = std::signbit(value);
        if (std::isnan(value)) {
            exp = 0x7FFF;
            mant = 0xC000000000000000ull;
        } else if (std::isinf(value)) {
            exp = 0x7FFF;
            mant = 0x8000000000000000ull;
        } else if (value != 0) {
            int e = 0;
            long double m = std::frexp(std::fabs(value), &e); // [0.5, 1)
            int biased = e - 1 + 16383;
            if (biased <= 0) {
                mant = static_cast<uint64_t>(std::ldexp(m, 64 + biased - 1));
                biased = 0;
            } else mant = static_cast<uint64_t>(std::ldexp(m, 64));
            exp = static_cast<uint16_t>(biased);
        }
        if (neg) exp |= 0x8000;
        StoreLE(bytes, mant);
        StoreLE(bytes + 8, exp);
    }
}

long double BytesToExtended(const uint8_t bytes[10]) {
    if constexpr (LDBL_MANT_DIG == 64 && std::endian::native == std::endian::little) {
        long double v = 0;
        std::memcpy(&v, bytes, 10);
        return v;
    } else {
        uint64_t mant = LoadLE<uint64_t>(bytes);
        uint16_t se = LoadLE<uint16_t>(bytes + 8);
        bool neg = se & 0x8000;
        int exp = se & 0x7FFF;
        long double v;
        if (exp == 0x7FFF)
            v = (mant << 1) == 0 ? std::numeric_limits<long double>::infinity()
                                 : std::numeric_limits<long double>::quiet_NaN();
        else v = std::ldexp(static_cast<long double>(mant), (exp == 0 ? 1 : exp) - 16383 - 63);
        return neg ? -v : v;
    }
}

// ---------------------------------------------------------------------------------------------
// TFiler

TFiler::TFiler(TStream* stream, int bufSize)
    : FStream(stream), FBuffer(static_cast<size_t>(std::max(bufSize, 16))),
      FBufSize(std::max(bufSize, 16)) {
    if (!stream) throw EFilerError("The filer needs a stream");
}

TFiler::~TFiler() = default;

// ---------------------------------------------------------------------------------------------
// TReader

TReader::TReader(TStream* stream, int bufSize) : TFiler(stream, bufSize) {}

TReader::~TReader() {
    try {
        FlushBuffer();
    } catch (...) {
        // A stream that can't seek back leaves its position behind the read-ahead.
    }
}

void TReader::FlushBuffer() {
    if (FBufEnd != FBufPos) FStream->Seek(static_cast<int64_t>(FBufPos) - FBufEnd, soCurrent);
    FBufPos = FBufEnd = 0;
}

int64_t TReader::Position() const {
    return FStream->Seek(0, soCurrent) - (FBufEnd - FBufPos);
}

void TReader::SetPosition(int64_t value) {
    FStream->Seek(value, soBeginning);
    FBufPos = FBufEnd = 0;
}

void TReader::ReadBuffer() {
    FBufEnd = static_cast<int>(FStream->Read(FBuffer.data(), FBufSize));
    if (FBufEnd <= 0) {
        FBufEnd = 0;
        throw EReadError("Stream read error");
    }
    FBufPos = 0;
}

uint8_t TReader::ReadByte() {
    if (FBufPos == FBufEnd) ReadBuffer();
    return static_cast<uint8_t>(FBuffer[FBufPos++]);
}

void TReader::Read(void* buffer, int64_t count) {
    if (count <= 0) return;
    char* out = static_cast<char*>(buffer);
    while (count > 0) {
        if (FBufPos == FBufEnd) ReadBuffer();
        int64_t n = std::min<int64_t>(count, FBufEnd - FBufPos);
        std::memcpy(out, FBuffer.data() + FBufPos, static_cast<size_t>(n));
        FBufPos += static_cast<int>(n);
        out += n;
        count -= n;
    }
}

void TReader::ReadChunked(std::string& out, uint64_t count) {
    out.clear();
    constexpr uint64_t chunk = 1 << 16;
    if (count <= chunk) {
        out.resize(static_cast<size_t>(count));
        Read(out.data(), static_cast<int64_t>(count));
        return;
    }
    while (count > 0) {
        size_t n = static_cast<size_t>(std::min(count, chunk));
        size_t old = out.size();
        out.resize(old + n);
        Read(out.data() + old, static_cast<int64_t>(n));
        count -= n;
    }
}

void TReader::SkipBytes(int64_t count) {
    while (count > 0) {
        if (FBufPos == FBufEnd) ReadBuffer();
        int64_t n = std::min<int64_t>(count, FBufEnd - FBufPos);
        FBufPos += static_cast<int>(n);
        count -= n;
    }
}

void TReader::ReadError(const std::string& message) { throw EReadError(message); }

void TReader::PropValueError() { ReadError("Invalid property value"); }

TValueType TReader::ReadValue() { return static_cast<TValueType>(ReadByte()); }

TValueType TReader::NextValue() {
    TValueType v = ReadValue();
    --FBufPos;
    return v;
}

bool TReader::EndOfList() { return NextValue() == vaNull; }

void TReader::CheckValue(TValueType value) {
    if (ReadValue() != value) {
        --FBufPos;
        PropValueError();
    }
}

void TReader::ReadListBegin() { CheckValue(vaList); }
void TReader::ReadListEnd() { CheckValue(vaNull); }

void TReader::ReadSignature() {
    char sig[4];
    Read(sig, 4);
    if (std::memcmp(sig, FilerSignature, 4) != 0) ReadError("Invalid stream format");
}

void TReader::ReadPrefix(TFilerFlags& flags, int32_t& childPos) {
    flags = 0;
    uint8_t b = static_cast<uint8_t>(NextValue());
    if ((b & 0xF0) == 0xF0) {
        ReadByte();
        flags = b & 0x0F;
        if (flags & ffChildPos) childPos = ReadInteger();
    }
}

std::string TReader::ReadStr() {
    uint8_t len = ReadByte();
    std::string s(len, '\0');
    Read(s.data(), len);
    return s;
}

std::string TReader::ReadString() {
    std::string s;
    switch (ReadValue()) {
    case vaString: ReadChunked(s, ReadByte()); break;
    case vaLString: {
        uint32_t len;
        Read(&len, 4);
        ReadChunked(s, LoadLE<uint32_t>(&len));
        break;
    }
    case vaWString:
        --FBufPos;
        return Utf16ToCp1251(ReadWideString());
    case vaUTF8String: {
        uint32_t len;
        Read(&len, 4);
        ReadChunked(s, LoadLE<uint32_t>(&len));
        return Utf8ToCp1251(s);
    }
    default: --FBufPos; PropValueError();
    }
    return s;
}

std::u16string TReader::ReadWideString() {
    switch (ReadValue()) {
    case vaWString: {
        uint32_t count;
        Read(&count, 4);
        count = LoadLE<uint32_t>(&count);
        std::string bytes;
        ReadChunked(bytes, uint64_t(count) * 2);
        std::u16string w(count, u'\0');
        for (uint32_t i = 0; i < count; ++i) w[i] = LoadLE<uint16_t>(bytes.data() + 2 * i);
        return w;
    }
    case vaUTF8String: {
        uint32_t len;
        Read(&len, 4);
        std::string s;
        ReadChunked(s, LoadLE<uint32_t>(&len));
        return Utf8ToUtf16(s);
    }
    default: --FBufPos; return Cp1251ToUtf16(ReadString());
    }
}

int32_t TReader::ReadInteger() {
    switch (ReadValue()) {
    case vaInt8: return static_cast<int8_t>(ReadByte());
    case vaInt16: {
        uint8_t b[2];
        Read(b, 2);
        return LoadLE<int16_t>(b);
    }
    case vaInt32: {
        uint8_t b[4];
        Read(b, 4);
        return LoadLE<int32_t>(b);
    }
    default: --FBufPos; PropValueError();
    }
}

int64_t TReader::ReadInt64() {
    if (NextValue() == vaInt64) {
        ReadValue();
        uint8_t b[8];
        Read(b, 8);
        return LoadLE<int64_t>(b);
    }
    return ReadInteger();
}

long double TReader::ReadFloat() {
    switch (NextValue()) {
    case vaExtended: {
        ReadValue();
        uint8_t b[10];
        Read(b, 10);
        return BytesToExtended(b);
    }
    case vaSingle: return ReadSingle();
    case vaCurrency: return ReadCurrency();
    case vaDate: return ReadDate();
    default: return static_cast<long double>(ReadInt64());
    }
}

float TReader::ReadSingle() {
    if (NextValue() != vaSingle) {
        long double v = ReadFloat();
        if (std::isfinite(v) && std::fabs(v) > FLT_MAX) return v < 0 ? -HUGE_VALF : HUGE_VALF;
        return static_cast<float>(v);
    }
    ReadValue();
    uint8_t b[4];
    Read(b, 4);
    return std::bit_cast<float>(LoadLE<uint32_t>(b));
}

long double TReader::ReadCurrency() {
    if (NextValue() != vaCurrency) return ReadFloat();
    ReadValue();
    uint8_t b[8];
    Read(b, 8);
    return static_cast<long double>(LoadLE<int64_t>(b)) / 10000;
}

double TReader::ReadDate() {
    if (NextValue() != vaDate) {
        long double v = ReadFloat();
        if (std::isfinite(v) && std::fabs(v) > DBL_MAX) return v < 0 ? -HUGE_VAL : HUGE_VAL;
        return static_cast<double>(v);
    }
    ReadValue();
    uint8_t b[8];
    Read(b, 8);
    return std::bit_cast<double>(LoadLE<uint64_t>(b));
}

std::string TReader::ReadIdent() {
    switch (ReadValue()) {
    case vaIdent: return ReadStr();
    case vaFalse: return "False";
    case vaTrue: return "True";
    case vaNil: return "nil";
    case vaNull: return "Null";
    default: --FBufPos; PropValueError();
    }
}

char TReader::ReadChar() {
    if (ReadValue() != vaString) {
        --FBufPos;
        PropValueError();
    }
    if (ReadByte() != 1) PropValueError();
    return static_cast<char>(ReadByte());
}

char16_t TReader::ReadWideChar() {
    TValueType v = NextValue();
    if (v == vaWString || v == vaUTF8String) {
        std::u16string w = ReadWideString();
        if (w.size() != 1) PropValueError();
        return w[0];
    }
    return Cp1251ToWide(static_cast<unsigned char>(ReadChar()));
}

bool TReader::ReadBoolean() {
    switch (ReadValue()) {
    case vaTrue: return true;
    case vaFalse: return false;
    default: --FBufPos; PropValueError();
    }
}

Variant TReader::ReadVariant() {
    switch (NextValue()) {
    case vaNil: ReadValue(); return Variant();
    case vaNull: ReadValue(); return Variant::Null();
    case vaInt8: return Variant::OfType(varShortInt, int64_t(ReadInteger()));
    case vaInt16: return Variant::OfType(varSmallint, int64_t(ReadInteger()));
    case vaInt32: return Variant::OfType(varInteger, int64_t(ReadInteger()));
    case vaInt64: return Variant::OfType(varInt64, ReadInt64());
    case vaExtended: return Variant::OfType(varDouble, ReadFloat());
    case vaSingle: return Variant::OfType(varSingle, static_cast<long double>(ReadSingle()));
    case vaCurrency: return Variant::OfType(varCurrency, ReadCurrency());
    case vaDate: return Variant::OfType(varDate, static_cast<long double>(ReadDate()));
    case vaString:
    case vaLString: return Variant(ReadString());
    case vaWString:
    case vaUTF8String: return Variant(ReadWideString());
    case vaFalse:
    case vaTrue: return Variant(ReadBoolean());
    default: ReadError("Unsupported variant value: " + std::string(ValueTypeName(NextValue())));
    }
}

void TReader::SkipSetBody() {
    while (!ReadStr().empty()) {
    }
}

uint32_t TReader::ReadSet(PTypeInfo setType) {
    if (ReadValue() != vaSet) {
        --FBufPos;
        PropValueError();
    }
    PTypeInfo compType = setType ? GetTypeData(setType)->CompType : nullptr;
    uint32_t bits = 0;
    std::string unknown;
    for (;;) {
        std::string name = ReadStr();
        if (name.empty()) break;
        int32_t v = compType ? GetEnumValue(compType, name) : -1;
        if (v < 0 || v > 31) {
            if (unknown.empty()) unknown = name;
        } else bits |= 1u << v;
    }
    if (!unknown.empty()) ReadError("Invalid set element '" + unknown + "'");
    return bits;
}

void TReader::SkipValue() { SkipValueAt(0); }

void TReader::SkipValueAt(int depth) {
    if (depth > MaxNestingDepth) ReadError("Object stream nested too deeply");
    auto skipCounted = [this](uint64_t unit) {
        uint8_t b[4];
        Read(b, 4);
        SkipBytes(static_cast<int64_t>(LoadLE<uint32_t>(b) * unit));
    };
    TValueType v = ReadValue();
    switch (v) {
    case vaNull:
    case vaFalse:
    case vaTrue:
    case vaNil: break;
    case vaList:
        while (!EndOfList()) SkipValueAt(depth + 1);
        ReadListEnd();
        break;
    case vaInt8: SkipBytes(1); break;
    case vaInt16: SkipBytes(2); break;
    case vaInt32:
    case vaSingle: SkipBytes(4); break;
    case vaExtended: SkipBytes(10); break;
    case vaInt64:
    case vaCurrency:
    case vaDate: SkipBytes(8); break;
    case vaString:
    case vaIdent: SkipBytes(ReadByte()); break;
    case vaBinary:
    case vaLString:
    case vaUTF8String: skipCounted(1); break;
    case vaWString: skipCounted(2); break;
    case vaSet: SkipSetBody(); break;
    case vaCollection:
        while (!EndOfList()) {
            TValueType n = NextValue();
            if (n == vaInt8 || n == vaInt16 || n == vaInt32) ReadInteger();
            ReadListBegin();
            while (!EndOfList()) {
                ReadStr();
                SkipValueAt(depth + 1);
            }
            ReadListEnd();
        }
        ReadListEnd();
        break;
    default:
        --FBufPos;
        ReadError("Unknown value type " + std::to_string(int(v)) + " in stream");
    }
}

void TReader::SkipProperty() {
    ReadStr();
    SkipValue();
}

bool TReader::Error(const std::string& message) {
    bool handled = false;
    if (OnError) OnError(this, message, handled);
    return handled;
}

bool TReader::IdentToInteger(PTypeInfo, const std::string&, int64_t&) { return false; }

void TReader::ReadProperty(TPersistent* aInstance) {
    FCanHandleExcepts = false;
    int64_t valueStart = -1;
    std::string path;
    try {
        path = ReadStr();
        valueStart = Position();
        try {
            FCanHandleExcepts = true;
            TPersistent* instance = aInstance;
            size_t start = 0;
            for (;;) {
                size_t dot = path.find('.', start);
                FPropName = path.substr(start, dot == std::string::npos ? dot : dot - start);
                if (dot == std::string::npos) break;
                PPropInfo p = GetPropInfo(instance->ClassType(), FPropName);
                if (!p) ReadError("Property " + FPropName + " does not exist");
                TObject* value = nullptr;
                if (p->PropType->Kind == tkClass && p->GetProc) value = GetObjectProp(instance, p);
                auto* nested = dynamic_cast<TPersistent*>(value);
                if (!nested) ReadError("Invalid property path");
                instance = nested;
                start = dot + 1;
            }
            PPropInfo p = GetPropInfo(instance->ClassType(), FPropName);
            if (p) ReadPropValue(instance, p);
            else {
                // What a defined property's handler has read can't be told apart from the
                // rest of the stream, so a failure in it isn't recoverable.
                FCanHandleExcepts = false;
                instance->DefineProperties(this);
                FCanHandleExcepts = true;
                if (!FPropName.empty()) ReadError("Property " + FPropName + " does not exist");
            }
        } catch (const Exception& e) {
            throw EReadError("Error reading " + ObjectName(aInstance) + "." + path + ": " +
                             e.Message());
        }
    } catch (const Exception& e) {
        if (!FCanHandleExcepts || valueStart < 0 || !Error(e.Message())) throw;
        SetPosition(valueStart);
        SkipValue();
    }
}

void TReader::ReadProperties(TPersistent* instance) {
    while (!EndOfList()) ReadProperty(instance);
    ReadListEnd();
}

void TReader::ReadPropValue(TPersistent* instance, PPropInfo propInfo) {
    PTypeInfo type = propInfo->PropType;
    TTypeKind kind = type->Kind;
    if (!propInfo->SetProc) ReadError("Property " + propInfo->Name + " is read-only");
    switch (kind) {
    case tkInteger:
        if (NextValue() == vaIdent) {
            std::string ident = ReadIdent();
            int64_t value = 0;
            if (!IdentToInteger(type, ident, value))
                ReadError("Invalid property value '" + ident + "'");
            SetOrdProp(instance, propInfo, value);
        } else SetOrdProp(instance, propInfo, ReadInteger());
        break;
    case tkChar: SetOrdProp(instance, propInfo, static_cast<unsigned char>(ReadChar())); break;
    case tkWChar: SetOrdProp(instance, propInfo, ReadWideChar()); break;
    case tkEnumeration: {
        std::string ident = ReadIdent();
        int32_t value = GetEnumValue(type, ident);
        if (value < 0) ReadError("Invalid enumeration value '" + ident + "'");
        SetOrdProp(instance, propInfo, value);
        break;
    }
    case tkSet: SetOrdProp(instance, propInfo, ReadSet(type)); break;
    case tkFloat: SetFloatProp(instance, propInfo, ReadFloat()); break;
    case tkString:
    case tkLString: SetStrProp(instance, propInfo, ReadString()); break;
    case tkWString: SetWideStrProp(instance, propInfo, ReadWideString()); break;
    case tkVariant: SetVariantProp(instance, propInfo, ReadVariant()); break;
    case tkInt64: SetInt64Prop(instance, propInfo, ReadInt64()); break;
    case tkClass:
        if (NextValue() == vaNil) {
            ReadValue();
            SetObjectProp(instance, propInfo, nullptr);
        } else PropValueError();
        break;
    case tkMethod:
        if (NextValue() == vaNil) {
            ReadValue();
            SetMethodProp(instance, propInfo, TMethod{});
        } else {
            std::string name = ReadIdent();
            void* address = nullptr;
            bool error = true;
            if (OnFindMethod) OnFindMethod(this, name, address, error);
            if (error) ReadError("Method " + name + " not found");
            SetMethodProp(instance, propInfo, TMethod{address, nullptr});
        }
        break;
    default: ReadError("Invalid property type: " + type->Name);
    }
}

void TReader::DefineProperty(const std::string& name, const TReaderProc& readData,
                             const TWriterProc&, bool) {
    if (readData && SameText(name, FPropName)) {
        readData(this);
        FPropName.clear();
    }
}

void TReader::DefineBinaryProperty(const std::string& name, const TStreamProc& readData,
                                   const TStreamProc&, bool) {
    if (!readData || !SameText(name, FPropName)) return;
    if (NextValue() != vaBinary) {
        // Nothing of the value has been taken: the caller can skip it.
        FCanHandleExcepts = true;
        PropValueError();
    }
    ReadValue();
    uint8_t b[4];
    Read(b, 4);
    std::string data;
    ReadChunked(data, LoadLE<uint32_t>(b));
    TMemoryStream stream;
    stream.WriteBuffer(data.data(), static_cast<int64_t>(data.size()));
    stream.SetPosition(0);
    FCanHandleExcepts = true;
    readData(&stream);
    FPropName.clear();
}

// ---------------------------------------------------------------------------------------------
// TWriter

TWriter::TWriter(TStream* stream, int bufSize) : TFiler(stream, bufSize) {}

TWriter::~TWriter() {
    try {
        FlushBuffer();
    } catch (...) {
        // Callers that must know that everything was written call FlushBuffer themselves.
    }
}

void TWriter::FlushBuffer() {
    if (FBufPos > 0) {
        int n = FBufPos;
        FBufPos = 0;
        FStream->WriteBuffer(FBuffer.data(), n);
    }
}

int64_t TWriter::Position() const { return FStream->Seek(0, soCurrent) + FBufPos; }

void TWriter::Write(const void* buffer, int64_t count) {
    if (count <= 0) return;
    const char* in = static_cast<const char*>(buffer);
    if (count <= FBufSize - FBufPos) {
        std::memcpy(FBuffer.data() + FBufPos, in, static_cast<size_t>(count));
        FBufPos += static_cast<int>(count);
        return;
    }
    FlushBuffer();
    if (count >= FBufSize) {
        FStream->WriteBuffer(in, count);
        return;
    }
    std::memcpy(FBuffer.data(), in, static_cast<size_t>(count));
    FBufPos = static_cast<int>(count);
}

void TWriter::WriteRaw8(uint8_t b) {
    if (FBufPos == FBufSize) FlushBuffer();
    FBuffer[FBufPos++] = static_cast<char>(b);
}

void TWriter::WriteValue(TValueType value) { WriteRaw8(value); }
void TWriter::WriteSignature() { Write(FilerSignature, 4); }
void TWriter::WriteListBegin() { WriteValue(vaList); }
void TWriter::WriteListEnd() { WriteValue(vaNull); }

void TWriter::WritePrefix(TFilerFlags flags, int32_t childPos) {
    if (flags == 0) return;
    WriteRaw8(0xF0 | (flags & 0x0F));
    if (flags & ffChildPos) WriteInteger(childPos);
}

void TWriter::WriteStr(std::string_view value) {
    size_t n = std::min<size_t>(value.size(), 255);
    WriteRaw8(static_cast<uint8_t>(n));
    Write(value.data(), static_cast<int64_t>(n));
}

void TWriter::WriteString(std::string_view value) {
    if (value.size() <= 255) {
        WriteValue(vaString);
        WriteStr(value);
    } else {
        WriteValue(vaLString);
        uint8_t b[4];
        StoreLE(b, static_cast<uint32_t>(value.size()));
        Write(b, 4);
        Write(value.data(), static_cast<int64_t>(value.size()));
    }
}

void TWriter::WriteWideString(std::u16string_view value) {
    WriteValue(vaWString);
    uint8_t b[4];
    StoreLE(b, static_cast<uint32_t>(value.size()));
    Write(b, 4);
    if constexpr (std::endian::native == std::endian::little) {
        Write(value.data(), static_cast<int64_t>(value.size() * 2));
    } else {
        for (char16_t c : value) {
            uint8_t w[2];
            StoreLE(w, static_cast<uint16_t>(c));
            Write(w, 2);
        }
    }
}

void TWriter::WriteUTF8String(std::string_view value) {
    WriteValue(vaUTF8String);
    uint8_t b[4];
    StoreLE(b, static_cast<uint32_t>(value.size()));
    Write(b, 4);
    Write(value.data(), static_cast<int64_t>(value.size()));
}

void TWriter::WriteInteger(int32_t value) {
    uint8_t b[4];
    if (value >= -128 && value <= 127) {
        WriteValue(vaInt8);
        WriteRaw8(static_cast<uint8_t>(value));
    } else if (value >= -32768 && value <= 32767) {
        WriteValue(vaInt16);
        StoreLE(b, static_cast<int16_t>(value));
        Write(b, 2);
    } else {
        WriteValue(vaInt32);
        StoreLE(b, value);
        Write(b, 4);
    }
}

void TWriter::WriteInteger(int64_t value) {
    if (value >= std::numeric_limits<int32_t>::min() &&
        value <= std::numeric_limits<int32_t>::max()) {
        WriteInteger(static_cast<int32_t>(value));
        return;
    }
    WriteValue(vaInt64);
    uint8_t b[8];
    StoreLE(b, value);
    Write(b, 8);
}

void TWriter::WriteFloat(long double value) {
    WriteValue(vaExtended);
    uint8_t b[10];
    ExtendedToBytes(value, b);
    Write(b, 10);
}

void TWriter::WriteSingle(float value) {
    WriteValue(vaSingle);
    uint8_t b[4];
    StoreLE(b, std::bit_cast<uint32_t>(value));
    Write(b, 4);
}

void TWriter::WriteCurrency(long double value) {
    long double scaled = std::nearbyint(value * 10000);
    if (!(scaled >= -9223372036854775807.0L && scaled <= 9223372036854775807.0L))
        throw EWriteError("Currency value out of range");
    WriteValue(vaCurrency);
    uint8_t b[8];
    StoreLE(b, static_cast<int64_t>(scaled));
    Write(b, 8);
}

void TWriter::WriteDate(double value) {
    WriteValue(vaDate);
    uint8_t b[8];
    StoreLE(b, std::bit_cast<uint64_t>(value));
    Write(b, 8);
}

void TWriter::WriteIdent(std::string_view ident) {
    if (SameText(ident, "False")) WriteValue(vaFalse);
    else if (SameText(ident, "True")) WriteValue(vaTrue);
    else if (SameText(ident, "nil")) WriteValue(vaNil);
    else if (SameText(ident, "Null")) WriteValue(vaNull);
    else {
        WriteValue(vaIdent);
        WriteStr(ident);
    }
}

void TWriter::WriteChar(char value) {
    WriteValue(vaString);
    WriteRaw8(1);
    WriteRaw8(static_cast<uint8_t>(value));
}

void TWriter::WriteWideChar(char16_t value) { WriteWideString(std::u16string_view(&value, 1)); }

void TWriter::WriteBoolean(bool value) { WriteValue(value ? vaTrue : vaFalse); }

void TWriter::WriteVariant(const Variant& value) {
    switch (value.VarType()) {
    case varEmpty: WriteValue(vaNil); break;
    case varNull: WriteValue(vaNull); break;
    case varOleStr: WriteWideString(value.AsWideString()); break;
    case varString: WriteString(value.AsString()); break;
    case varShortInt:
    case varByte:
    case varSmallint:
    case varWord:
    case varInteger: WriteInteger(static_cast<int32_t>(value.AsInt64())); break;
    case varLongWord:
    case varInt64: WriteInteger(value.AsInt64()); break;
    case varSingle: WriteSingle(static_cast<float>(value.AsReal())); break;
    case varDouble: WriteFloat(value.AsReal()); break;
    case varCurrency: WriteCurrency(value.AsReal()); break;
    case varDate: WriteDate(static_cast<double>(value.AsReal())); break;
    case varBoolean: WriteBoolean(value.AsBoolean()); break;
    default: throw EWriteError("Unsupported variant type " + std::to_string(value.VarType()));
    }
}

void TWriter::WriteBinary(const TStreamProc& writeData) {
    TMemoryStream stream;
    if (writeData) writeData(&stream);
    int64_t size = stream.GetSize();
    if (size > std::numeric_limits<int32_t>::max()) throw EWriteError("Binary value too large");
    WriteValue(vaBinary);
    uint8_t b[4];
    StoreLE(b, static_cast<uint32_t>(size));
    Write(b, 4);
    Write(stream.Memory(), size);
}

void TWriter::WriteSet(uint32_t bits, PTypeInfo setType) {
    PTypeInfo compType = setType ? GetTypeData(setType)->CompType : nullptr;
    WriteValue(vaSet);
    for (int i = 0; i < 32; ++i)
        if (bits & (1u << i)) {
            if (!compType) throw EWriteError("Set type without element names");
            WriteStr(GetEnumName(compType, i));
        }
    WriteStr("");
}

void TWriter::WritePropName(const std::string& name) { WriteStr(FPropPath + name); }

bool TWriter::IntegerToIdent(PTypeInfo, int64_t, std::string&) { return false; }

void TWriter::WriteProperties(TPersistent* instance) {
    for (PPropInfo p : GetPropInfos(instance->ClassType())) {
        if (!p) break;
        if (IsStoredProp(instance, p)) WriteProperty(instance, p);
    }
    instance->DefineProperties(this);
}

void TWriter::WriteProperty(TPersistent* instance, PPropInfo propInfo) {
    // Only what can be read back is written.
    if (!propInfo->GetProc || !propInfo->SetProc) return;
    PTypeInfo type = propInfo->PropType;
    TPersistent* ancestor =
        Ancestor && Ancestor->ClassType() == instance->ClassType() ? Ancestor : nullptr;
    const std::string& name = propInfo->Name;
    switch (type->Kind) {
    case tkInteger:
    case tkChar:
    case tkWChar:
    case tkEnumeration:
    case tkSet: {
        int64_t value = GetOrdProp(instance, propInfo);
        bool isDefault = ancestor ? value == GetOrdProp(ancestor, propInfo)
                                  : (propInfo->Default != NoDefault &&
                                     static_cast<int32_t>(value) == propInfo->Default);
        if (isDefault) return;
        WritePropName(name);
        switch (type->Kind) {
        case tkInteger: {
            std::string ident;
            if (IntegerToIdent(type, value, ident)) WriteIdent(ident);
            else WriteInteger(static_cast<int32_t>(value));
            break;
        }
        case tkChar: WriteChar(static_cast<char>(value)); break;
        case tkWChar: WriteWideChar(static_cast<char16_t>(value)); break;
        case tkEnumeration: WriteIdent(GetEnumName(type, static_cast<int32_t>(value))); break;
        default: WriteSet(static_cast<uint32_t>(value), type); break;
        }
        break;
    }
    case tkFloat: {
        long double value = GetFloatProp(instance, propInfo);
        if (ancestor ? value == GetFloatProp(ancestor, propInfo) : value == 0) return;
        WritePropName(name);
        WriteFloat(value);
        break;
    }
    case tkInt64: {
        int64_t value = GetInt64Prop(instance, propInfo);
        if (ancestor ? value == GetInt64Prop(ancestor, propInfo) : value == 0) return;
        WritePropName(name);
        WriteInteger(value);
        break;
    }
    case tkString:
    case tkLString: {
        std::string value = GetStrProp(instance, propInfo);
        if (ancestor ? value == GetStrProp(ancestor, propInfo) : value.empty()) return;
        WritePropName(name);
        WriteString(value);
        break;
    }
    case tkWString: {
        std::u16string value = GetWideStrProp(instance, propInfo);
        if (ancestor ? value == GetWideStrProp(ancestor, propInfo) : value.empty()) return;
        WritePropName(name);
        WriteWideString(value);
        break;
    }
    case tkVariant: {
        Variant value = GetVariantProp(instance, propInfo);
        if (ancestor ? value == GetVariantProp(ancestor, propInfo) : value.IsEmpty()) return;
        WritePropName(name);
        WriteVariant(value);
        break;
    }
    case tkClass: {
        TObject* value = GetObjectProp(instance, propInfo);
        TObject* ancestorValue = ancestor ? GetObjectProp(ancestor, propInfo) : nullptr;
        if (!value) {
            if (ancestorValue) {
                WritePropName(name);
                WriteValue(vaNil);
            }
            return;
        }
        auto* nested = dynamic_cast<TPersistent*>(value);
        if (!nested) return;
        std::string savedPath = FPropPath;
        TPersistent* savedAncestor = Ancestor;
        try {
            FPropPath += name + ".";
            Ancestor = dynamic_cast<TPersistent*>(ancestorValue);
            WriteProperties(nested);
        } catch (...) {
            FPropPath = savedPath;
            Ancestor = savedAncestor;
            throw;
        }
        FPropPath = savedPath;
        Ancestor = savedAncestor;
        break;
    }
    case tkMethod: {
        TMethod value = GetMethodProp(instance, propInfo);
        if (ancestor ? value == GetMethodProp(ancestor, propInfo) : !value.Code) return;
        WritePropName(name);
        if (!value.Code) {
            WriteValue(vaNil);
            return;
        }
        std::string method = value.Data ? value.Data->MethodName(value.Code) : std::string();
        if (method.empty())
            throw EWriteError("The handler of " + name + " is not a published method");
        WriteIdent(method);
        break;
    }
    default: break;
    }
}

void TWriter::DefineProperty(const std::string& name, const TReaderProc&,
                             const TWriterProc& writeData, bool hasData) {
    if (hasData && writeData) {
        WritePropName(name);
        writeData(this);
    }
}

void TWriter::DefineBinaryProperty(const std::string& name, const TStreamProc&,
                                   const TStreamProc& writeData, bool hasData) {
    if (hasData && writeData) {
        WritePropName(name);
        WriteBinary(writeData);
    }
}

// ---------------------------------------------------------------------------------------------
// Resource headers

void WriteResourceHeader(TStream* stream, const std::string& resName, int64_t& fixupInfo) {
    uint8_t head[3] = {0xFF, 0x0A, 0x00};
    stream->WriteBuffer(head, 3);
    std::string name = resName.substr(0, std::min<size_t>(resName.size(), 63));
    name.erase(std::find(name.begin(), name.end(), '\0'), name.end());
    name.push_back('\0');
    stream->WriteBuffer(name.data(), static_cast<int64_t>(name.size()));
    uint8_t tail[6] = {0x30, 0x10, 0, 0, 0, 0};
    stream->WriteBuffer(tail, 6);
    fixupInfo = stream->GetPosition();
}

void FixupResourceHeader(TStream* stream, int64_t fixupInfo) {
    int64_t end = stream->GetPosition();
    int64_t size = end - fixupInfo;
    if (size < 0 || size > std::numeric_limits<int32_t>::max())
        throw EWriteError("Invalid resource size");
    uint8_t b[4];
    StoreLE(b, static_cast<uint32_t>(size));
    stream->SetPosition(fixupInfo - 4);
    stream->WriteBuffer(b, 4);
    stream->SetPosition(end);
}

void ReadResHeader(TStream* stream) {
    try {
        uint8_t b[4];
        stream->ReadBuffer(b, 3);
        if (b[0] != 0xFF || LoadLE<uint16_t>(b + 1) != 0x000A) throw EInvalidImage("");
        for (;;) {
            stream->ReadBuffer(b, 1);
            if (b[0] == 0) break;
        }
        stream->ReadBuffer(b, 2);
        if (LoadLE<uint16_t>(b) != 0x1030) throw EInvalidImage("");
        stream->ReadBuffer(b, 4);
    } catch (const Exception&) {
        throw EInvalidImage("Invalid stream format: no resource header");
    }
}

} // namespace rtl
