#include "rtl/Filer.h"

#include "rtl/CodePage.h"
#include "rtl/Lists.h"
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

template <class T> T LoadLE(const void* p) {
    using U = std::make_unsigned_t<T>;
    const auto* b = static_cast<const uint8_t*>(p);
    U v = 0;
    for (size_t i = 0; i < sizeof(T); ++i)
        v = static_cast<U>(v | U(b[i]) << (8 * i));
    return static_cast<T>(v);
}

template <class T> void StoreLE(void* p, T value) {
    using U = std::make_unsigned_t<T>;
    auto v = static_cast<U>(value);
    auto* b = static_cast<uint8_t*>(p);
    for (size_t i = 0; i < sizeof(T); ++i)
        b[i] = static_cast<uint8_t>(v >> (8 * i));
}

std::string ObjectName(const TPersistent* obj) {
    std::string name = obj->GetNamePath();
    return name.empty() ? obj->ClassName() : name;
}

} // namespace

const char* ValueTypeName(uint8_t valueType) {
    static const char* const names[] = {
        "vaNull",    "vaList",  "vaInt8",       "vaInt16",  "vaInt32",    "vaExtended",
        "vaString",  "vaIdent", "vaFalse",      "vaTrue",   "vaBinary",   "vaSet",
        "vaLString", "vaNil",   "vaCollection", "vaSingle", "vaCurrency", "vaDate",
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
            } else
                mant = static_cast<uint64_t>(std::ldexp(m, 64));
            exp = static_cast<uint16_t>(biased);
        }
        if (neg) exp |= 0x8000;
        StoreLE(bytes, mant);
        StoreLE(bytes + 8, exp);
    }
}

long double BytesToExtended(const uint8_t bytes[10]) {
    uint64_t mant = LoadLE<uint64_t>(bytes);
    uint16_t se = LoadLE<uint16_t>(bytes + 8);
    bool neg = se & 0x8000;
    int exp = se & 0x7FFF;
    // In the canonical encoding the explicit integer bit is set exactly when the exponent is not
    // zero. Other encodings (pseudo-denormals, unnormals) are read for the value they stand for,
    // so that the value prints and reads back as what it is.
    if constexpr (LDBL_MANT_DIG == 64 && std::endian::native == std::endian::little) {
        if ((exp != 0) == bool(mant >> 63)) {
            long double v = 0;
            std::memcpy(&v, bytes, 10);
            return v;
        }
    }
    long double v;
    if (exp == 0x7FFF)
        v = (mant << 1) == 0 ? std::numeric_limits<long double>::infinity()
                             : std::numeric_limits<long double>::quiet_NaN();
    else
        v = std::ldexp(static_cast<long double>(mant), (exp == 0 ? 1 : exp) - 16383 - 63);
    return neg ? -v : v;
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

void TReader::ReadError(const std::string& message) {
    throw EReadError(message);
}

void TReader::PropValueError() {
    ReadError("Invalid property value");
}

TValueType TReader::ReadValue() {
    return static_cast<TValueType>(ReadByte());
}

TValueType TReader::NextValue() {
    TValueType v = ReadValue();
    --FBufPos;
    return v;
}

bool TReader::EndOfList() {
    return NextValue() == vaNull;
}

void TReader::CheckValue(TValueType value) {
    if (ReadValue() != value) {
        --FBufPos;
        PropValueError();
    }
}

void TReader::ReadListBegin() {
    CheckValue(vaList);
}
void TReader::ReadListEnd() {
    CheckValue(vaNull);
}

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
    case vaString:
        ReadChunked(s, ReadByte());
        break;
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
    default:
        --FBufPos;
        PropValueError();
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
        for (uint32_t i = 0; i < count; ++i)
            w[i] = LoadLE<uint16_t>(bytes.data() + 2 * i);
        return w;
    }
    case vaUTF8String: {
        uint32_t len;
        Read(&len, 4);
        std::string s;
        ReadChunked(s, LoadLE<uint32_t>(&len));
        return Utf8ToUtf16(s);
    }
    default:
        --FBufPos;
        return Cp1251ToUtf16(ReadString());
    }
}

int32_t TReader::ReadInteger() {
    switch (ReadValue()) {
    case vaInt8:
        return static_cast<int8_t>(ReadByte());
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
    default:
        --FBufPos;
        PropValueError();
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
    case vaSingle:
        return ReadSingle();
    case vaCurrency:
        return ReadCurrency();
    case vaDate:
        return ReadDate();
    default:
        return static_cast<long double>(ReadInt64());
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
    case vaIdent:
        return ReadStr();
    case vaFalse:
        return "False";
    case vaTrue:
        return "True";
    case vaNil:
        return "nil";
    case vaNull:
        return "Null";
    default:
        --FBufPos;
        PropValueError();
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
    case vaTrue:
        return true;
    case vaFalse:
        return false;
    default:
        --FBufPos;
        PropValueError();
    }
}

Variant TReader::ReadVariant() {
    switch (NextValue()) {
    case vaNil:
        ReadValue();
        return Variant();
    case vaNull:
        ReadValue();
        return Variant::Null();
    case vaInt8:
        return Variant::OfType(varShortInt, int64_t(ReadInteger()));
    case vaInt16:
        return Variant::OfType(varSmallint, int64_t(ReadInteger()));
    case vaInt32:
        return Variant::OfType(varInteger, int64_t(ReadInteger()));
    case vaInt64:
        return Variant::OfType(varInt64, ReadInt64());
    case vaExtended:
        return Variant::OfType(varDouble, ReadFloat());
    case vaSingle:
        return Variant::OfType(varSingle, static_cast<long double>(ReadSingle()));
    case vaCurrency:
        return Variant::OfType(varCurrency, ReadCurrency());
    case vaDate:
        return Variant::OfType(varDate, static_cast<long double>(ReadDate()));
    case vaString:
    case vaLString:
        return Variant(ReadString());
    case vaWString:
    case vaUTF8String:
        return Variant(ReadWideString());
    case vaFalse:
    case vaTrue:
        return Variant(ReadBoolean());
    default:
        ReadError("Unsupported variant value: " + std::string(ValueTypeName(NextValue())));
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
        } else
            bits |= 1u << v;
    }
    if (!unknown.empty()) ReadError("Invalid set element '" + unknown + "'");
    return bits;
}

void TReader::SkipValue() {
    SkipValueAt(0);
}

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
    case vaNil:
        break;
    case vaList:
        while (!EndOfList())
            SkipValueAt(depth + 1);
        ReadListEnd();
        break;
    case vaInt8:
        SkipBytes(1);
        break;
    case vaInt16:
        SkipBytes(2);
        break;
    case vaInt32:
    case vaSingle:
        SkipBytes(4);
        break;
    case vaExtended:
        SkipBytes(10);
        break;
    case vaInt64:
    case vaCurrency:
    case vaDate:
        SkipBytes(8);
        break;
    case vaString:
    case vaIdent:
        SkipBytes(ReadByte());
        break;
    case vaBinary:
    case vaLString:
    case vaUTF8String:
        skipCounted(1);
        break;
    case vaWString:
        skipCounted(2);
        break;
    case vaSet:
        SkipSetBody();
        break;
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

bool TReader::IdentToInteger(PTypeInfo type, const std::string& ident, int64_t& value) {
    TIdentToInt identToInt = FindIdentToInt(type);
    int32_t v = 0;
    if (!identToInt || !identToInt(ident, v)) return false;
    value = v;
    return true;
}

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
            if (p)
                ReadPropValue(instance, p);
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
    while (!EndOfList())
        ReadProperty(instance);
    ReadListEnd();
}

void TReader::ReadPropValue(TPersistent* instance, PPropInfo propInfo) {
    PTypeInfo type = propInfo->PropType;
    TTypeKind kind = type->Kind;
    if (!propInfo->SetProc) {
        // A sub-component or a collection is read into the object the property holds.
        bool intoObject = false;
        if (kind == tkClass && propInfo->GetProc) {
            TObject* value = GetObjectProp(instance, propInfo);
            auto* comp = dynamic_cast<TComponent*>(value);
            intoObject = (comp && comp->ComponentStyle().Contains(csSubComponent)) ||
                         (dynamic_cast<TCollection*>(value) && NextValue() == vaCollection);
        }
        if (!intoObject) ReadError("Property " + propInfo->Name + " is read-only");
    }
    switch (kind) {
    case tkInteger:
        if (NextValue() == vaIdent) {
            std::string ident = ReadIdent();
            int64_t value = 0;
            if (!IdentToInteger(type, ident, value))
                ReadError("Invalid property value '" + ident + "'");
            SetOrdProp(instance, propInfo, value);
        } else
            SetOrdProp(instance, propInfo, ReadInteger());
        break;
    case tkChar:
        SetOrdProp(instance, propInfo, static_cast<unsigned char>(ReadChar()));
        break;
    case tkWChar:
        SetOrdProp(instance, propInfo, ReadWideChar());
        break;
    case tkEnumeration: {
        std::string ident = ReadIdent();
        int32_t value = GetEnumValue(type, ident);
        if (value < 0) ReadError("Invalid enumeration value '" + ident + "'");
        SetOrdProp(instance, propInfo, value);
        break;
    }
    case tkSet:
        SetOrdProp(instance, propInfo, ReadSet(type));
        break;
    case tkFloat:
        SetFloatProp(instance, propInfo, ReadFloat());
        break;
    case tkString:
    case tkLString:
        SetStrProp(instance, propInfo, ReadString());
        break;
    case tkWString:
        SetWideStrProp(instance, propInfo, ReadWideString());
        break;
    case tkVariant:
        SetVariantProp(instance, propInfo, ReadVariant());
        break;
    case tkInt64:
        SetInt64Prop(instance, propInfo, ReadInt64());
        break;
    case tkClass:
        switch (NextValue()) {
        case vaNil:
            ReadValue();
            SetObjectProp(instance, propInfo, nullptr);
            break;
        case vaCollection: {
            auto* collection = dynamic_cast<TCollection*>(GetObjectProp(instance, propInfo));
            if (!collection) PropValueError();
            ReadValue();
            ReadCollection(collection);
            break;
        }
        case vaIdent: {
            std::string name = ReadIdent();
            TPropFixup fixup{instance, propInfo, LookupRoot, name};
            if (FFixups)
                FFixups->push_back(std::move(fixup));
            else {
                // Outside a component tree the reference is resolved at once.
                TComponent* target = LookupRoot ? FindNestedComponent(LookupRoot, name) : nullptr;
                if (!target) ReadError("Unresolved reference to " + name);
                SetObjectProp(instance, propInfo, target);
            }
            break;
        }
        default:
            PropValueError();
        }
        break;
    case tkMethod:
        if (NextValue() == vaNil) {
            ReadValue();
            SetMethodProp(instance, propInfo, TMethod{});
        } else {
            std::string name = ReadIdent();
            void* address = FindMethod(Root, name);
            SetMethodProp(instance, propInfo, TMethod{address, address ? Root : nullptr});
        }
        break;
    default:
        ReadError("Invalid property type: " + type->Name);
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

int64_t TWriter::Position() const {
    return FStream->Seek(0, soCurrent) + FBufPos;
}

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

void TWriter::WriteValue(TValueType value) {
    WriteRaw8(value);
}
void TWriter::WriteSignature() {
    Write(FilerSignature, 4);
}
void TWriter::WriteListBegin() {
    WriteValue(vaList);
}
void TWriter::WriteListEnd() {
    WriteValue(vaNull);
}

void TWriter::WritePrefix(TFilerFlags flags, int32_t childPos, std::string_view className) {
    if (flags != 0 || std::min<size_t>(className.size(), 255) >= 0xF0)
        WriteRaw8(0xF0 | (flags & 0x0F));
    if (flags & ffChildPos) WriteInteger(childPos);
    WriteStr(className);
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
    if (SameText(ident, "False"))
        WriteValue(vaFalse);
    else if (SameText(ident, "True"))
        WriteValue(vaTrue);
    else if (SameText(ident, "nil"))
        WriteValue(vaNil);
    else if (SameText(ident, "Null"))
        WriteValue(vaNull);
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

void TWriter::WriteWideChar(char16_t value) {
    WriteWideString(std::u16string_view(&value, 1));
}

void TWriter::WriteBoolean(bool value) {
    WriteValue(value ? vaTrue : vaFalse);
}

void TWriter::WriteVariant(const Variant& value) {
    switch (value.VarType()) {
    case varEmpty:
        WriteValue(vaNil);
        break;
    case varNull:
        WriteValue(vaNull);
        break;
    case varOleStr:
        WriteWideString(value.AsWideString());
        break;
    case varString:
        WriteString(value.AsString());
        break;
    case varShortInt:
    case varByte:
    case varSmallint:
    case varWord:
    case varInteger:
        WriteInteger(static_cast<int32_t>(value.AsInt64()));
        break;
    case varLongWord:
    case varInt64:
        WriteInteger(value.AsInt64());
        break;
    case varSingle:
        WriteSingle(static_cast<float>(value.AsReal()));
        break;
    case varDouble:
        WriteFloat(value.AsReal());
        break;
    case varCurrency:
        WriteCurrency(value.AsReal());
        break;
    case varDate:
        WriteDate(static_cast<double>(value.AsReal()));
        break;
    case varBoolean:
        WriteBoolean(value.AsBoolean());
        break;
    default:
        throw EWriteError("Unsupported variant type " + std::to_string(value.VarType()));
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

void TWriter::WritePropName(const std::string& name) {
    WriteStr(FPropPath + name);
}

bool TWriter::IntegerToIdent(PTypeInfo type, int64_t value, std::string& ident) {
    TIntToIdent intToIdent = FindIntToIdent(type);
    return intToIdent && intToIdent(static_cast<int32_t>(value), ident);
}

void TWriter::WriteProperties(TPersistent* instance) {
    for (PPropInfo p : GetPropInfos(instance->ClassType())) {
        if (!p) break;
        if (IsStoredProp(instance, p)) WriteProperty(instance, p);
    }
    instance->DefineProperties(this);
}

bool TWriter::HoldsDefault(TPersistent* instance, PPropInfo propInfo, TPersistent* ancestor) {
    switch (propInfo->PropType->Kind) {
    case tkInteger:
    case tkChar:
    case tkWChar:
    case tkEnumeration:
    case tkSet: {
        int64_t value = GetOrdProp(instance, propInfo);
        return ancestor ? value == GetOrdProp(ancestor, propInfo)
                        : (propInfo->Default != NoDefault &&
                           static_cast<int32_t>(value) == propInfo->Default);
    }
    case tkFloat: {
        long double value = GetFloatProp(instance, propInfo);
        return ancestor ? value == GetFloatProp(ancestor, propInfo) : value == 0;
    }
    case tkInt64: {
        int64_t value = GetInt64Prop(instance, propInfo);
        return ancestor ? value == GetInt64Prop(ancestor, propInfo) : value == 0;
    }
    case tkString:
    case tkLString: {
        std::string value = GetStrProp(instance, propInfo);
        return ancestor ? value == GetStrProp(ancestor, propInfo) : value.empty();
    }
    case tkWString: {
        std::u16string value = GetWideStrProp(instance, propInfo);
        return ancestor ? value == GetWideStrProp(ancestor, propInfo) : value.empty();
    }
    case tkVariant: {
        Variant value = GetVariantProp(instance, propInfo);
        return ancestor ? value == GetVariantProp(ancestor, propInfo) : value.IsEmpty();
    }
    default:
        return false;
    }
}

bool TWriter::WritePlainProperty(TPersistent* instance, PPropInfo propInfo) {
    PTypeInfo type = propInfo->PropType;
    const std::string& name = propInfo->Name;
    switch (type->Kind) {
    case tkInteger: {
        int64_t value = GetOrdProp(instance, propInfo);
        WritePropName(name);
        std::string ident;
        if (IntegerToIdent(type, value, ident))
            WriteIdent(ident);
        else
            WriteInteger(static_cast<int32_t>(value));
        return true;
    }
    case tkChar:
        WritePropName(name);
        WriteChar(static_cast<char>(GetOrdProp(instance, propInfo)));
        return true;
    case tkWChar:
        WritePropName(name);
        WriteWideChar(static_cast<char16_t>(GetOrdProp(instance, propInfo)));
        return true;
    case tkEnumeration:
        WritePropName(name);
        WriteIdent(GetEnumName(type, static_cast<int32_t>(GetOrdProp(instance, propInfo))));
        return true;
    case tkSet:
        WritePropName(name);
        WriteSet(static_cast<uint32_t>(GetOrdProp(instance, propInfo)), type);
        return true;
    case tkFloat:
        WritePropName(name);
        WriteFloat(GetFloatProp(instance, propInfo));
        return true;
    case tkInt64:
        WritePropName(name);
        WriteInteger(GetInt64Prop(instance, propInfo));
        return true;
    case tkString:
    case tkLString:
        WritePropName(name);
        WriteString(GetStrProp(instance, propInfo));
        return true;
    case tkWString:
        WritePropName(name);
        WriteWideString(GetWideStrProp(instance, propInfo));
        return true;
    case tkVariant:
        WritePropName(name);
        WriteVariant(GetVariantProp(instance, propInfo));
        return true;
    default:
        return false;
    }
}

void TWriter::WriteProperty(TPersistent* instance, PPropInfo propInfo) {
    // Only what can be read back is written.
    if (!propInfo->GetProc || !propInfo->SetProc) return;
    TPersistent* ancestor =
        Ancestor && Ancestor->ClassType() == instance->ClassType() ? Ancestor : nullptr;
    const std::string& name = propInfo->Name;
    switch (propInfo->PropType->Kind) {
    case tkClass:
        WriteObjectProp(instance, propInfo, ancestor);
        break;
    case tkMethod: {
        // Handlers compare by their code: the ancestor's are bound to another object.
        TMethod value = GetMethodProp(instance, propInfo);
        void* ancestorCode = ancestor ? GetMethodProp(ancestor, propInfo).Code : nullptr;
        if (value.Code == ancestorCode) return;
        WritePropName(name);
        if (!value.Code) {
            WriteValue(vaNil);
            return;
        }
        std::string method = LookupRoot ? LookupRoot->MethodName(value.Code) : std::string();
        if (method.empty() && value.Data) method = value.Data->MethodName(value.Code);
        if (method.empty())
            throw EWriteError("The handler of " + name + " is not a published method");
        WriteIdent(method);
        break;
    }
    default:
        if (!HoldsDefault(instance, propInfo, ancestor)) WritePlainProperty(instance, propInfo);
        break;
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
// Components: reading

void* TReader::FindMethod(TComponent* root, const std::string& methodName) {
    void* address = root ? root->MethodAddress(methodName) : nullptr;
    bool error = address == nullptr;
    if (OnFindMethod) OnFindMethod(this, methodName, address, error);
    if (error) ReadError("Method " + methodName + " not found");
    return address;
}

TClass TReader::FindComponentClass(const std::string& className) {
    TClass cls = nullptr;
    if (OnFindComponentClass) OnFindComponentClass(this, className, cls);
    if (!cls && Root) {
        // The classes of the root's published fields need no registration.
        for (TClass c = Root->ClassType(); c && !cls; c = c->Parent)
            for (const auto& f : c->Fields)
                if (f.FieldClass && SameText(f.FieldClass()->Name, className)) {
                    cls = f.FieldClass();
                    break;
                }
    }
    if (!cls) cls = GetClass(className);
    if (!cls) throw EClassNotFound("Class " + className + " not found");
    if (!cls->InheritsFrom(TComponent::StaticClass()))
        throw EReadError("Class " + className + " is not a component class");
    return cls;
}

TComponent* TReader::FindAncestorComponent(const std::string& name, TClass) {
    TComponent* result = LookupRoot ? LookupRoot->FindComponent(name) : nullptr;
    if (!result) ReadError("Ancestor for '" + name + "' not found");
    return result;
}

void TReader::SetName(TComponent* component, std::string& name) {
    if (OnSetName) OnSetName(this, component, name);
    component->SetName(name);
}

void TReader::FixupReferences() {
    if (!FFixups) return;
    std::vector<TPropFixup> fixups;
    fixups.swap(*FFixups);
    for (const TPropFixup& f : fixups) {
        TComponent* target = f.InstanceRoot ? FindNestedComponent(f.InstanceRoot, f.Name) : nullptr;
        // A name that isn't in this tree refers to a component elsewhere, which the platform
        // leaves unresolved; the property keeps its value.
        if (target) SetObjectProp(f.Instance, f.PropInfo, target);
    }
}

void TReader::SkipComponent(bool skipHeader) {
    if (++FDepth > MaxNestingDepth) {
        --FDepth;
        ReadError("Object stream nested too deeply");
    }
    try {
        if (skipHeader) {
            TFilerFlags flags;
            int32_t childPos;
            ReadPrefix(flags, childPos);
            ReadStr();
            ReadStr();
        }
        while (!EndOfList())
            SkipProperty();
        ReadListEnd();
        while (!EndOfList())
            SkipComponent(true);
        ReadListEnd();
    } catch (...) {
        --FDepth;
        throw;
    }
    --FDepth;
}

void TReader::ReadCollection(TCollection* collection) {
    collection->BeginUpdate();
    try {
        if (!EndOfList()) collection->Clear();
        while (!EndOfList()) {
            TValueType v = NextValue();
            // The order value of an item is accepted and dropped.
            if (v == vaInt8 || v == vaInt16 || v == vaInt32) ReadInteger();
            TCollectionItem* item = collection->Add();
            ReadListBegin();
            while (!EndOfList())
                ReadProperty(item);
            ReadListEnd();
        }
        ReadListEnd();
    } catch (...) {
        collection->EndUpdate();
        throw;
    }
    collection->EndUpdate();
}

void TReader::ReadData(TComponent* instance) {
    if (FFixups) {
        ReadDataInner(instance);
        return;
    }
    std::vector<TPropFixup> fixups;
    TScopedValue fixupsOfThisRead(FFixups, &fixups);
    ReadDataInner(instance);
    FixupReferences();
}

void TReader::ReadDataInner(TComponent* instance) {
    while (!EndOfList())
        ReadProperty(instance);
    ReadListEnd();
    TScopedValue parent(Parent, instance->GetChildParent());
    TComponent* childOwner = instance->GetChildOwner();
    TScopedValue owner(Owner, childOwner ? childOwner : Root);
    while (!EndOfList())
        ReadComponent(nullptr);
    ReadListEnd();
}

TComponent* TReader::ReadComponent(TComponent* component) {
    if (++FDepth > MaxNestingDepth) {
        --FDepth;
        ReadError("Object stream nested too deeply");
    }
    struct DepthGuard {
        int& d;
        ~DepthGuard() { --d; }
    } guard{FDepth};

    TFilerFlags flags = 0;
    int32_t position = 0;
    ReadPrefix(flags, position);
    std::string className = ReadStr();
    std::string name = ReadStr();
    TComponent* oldParent = Parent;
    TComponent* oldLookupRoot = LookupRoot;
    TComponent* result = component;
    bool created = false;

    // A component that can't be made is skipped with its children when Error lets it go.
    auto recover = [&](const Exception& e) {
        if (created) delete result;
        result = nullptr;
        created = false;
        SkipComponent(false);
        return Error(e.Message());
    };

    auto restore = [&] {
        Parent = oldParent;
        LookupRoot = oldLookupRoot;
    };
    try {
        if (!result) {
            if (flags & ffInherited) {
                try {
                    result = FindAncestorComponent(name, nullptr);
                    Parent = result->GetParentComponent();
                    if (!Parent) Parent = Root;
                } catch (const Exception& e) {
                    if (!recover(e)) throw;
                }
            } else {
                try {
                    TClass cls = FindComponentClass(className);
                    result = CreateComponent(cls, Owner);
                    created = true;
                    if (flags & ffInline) result->SetInline(true);
                } catch (const Exception& e) {
                    if (!recover(e)) throw;
                }
            }
        }
        if (result) {
            try {
                result->SetState(csLoading, true);
                if (!(flags & ffInherited)) SetName(result, name);
                if (result->ComponentState().Contains(csInline)) LookupRoot = result;
                result->SetState(csReading, true);
                result->ReadState(this);
                result->SetState(csReading, false);
                if ((flags & ffChildPos) && Parent) Parent->SetChildOrder(result, position);
                if (FLoaded &&
                    std::find(FLoaded->begin(), FLoaded->end(), result) == FLoaded->end())
                    FLoaded->push_back(result);
            } catch (...) {
                if (created) {
                    if (FLoaded) std::erase(*FLoaded, result);
                    delete result;
                }
                throw;
            }
        }
    } catch (...) {
        restore();
        throw;
    }
    restore();
    return result;
}

TComponent* TReader::ReadRootComponent(TComponent* root) {
    ReadSignature();
    TFilerFlags flags;
    int32_t childPos;
    ReadPrefix(flags, childPos);
    TComponent* result = root;
    std::vector<TComponent*> loaded;
    try {
        if (!root) {
            std::string className = ReadStr();
            TClass cls = FindClass(className);
            if (!cls->InheritsFrom(TComponent::StaticClass()))
                ReadError("Class " + className + " is not a component class");
            result = CreateComponent(cls, nullptr);
            std::string name = ReadStr();
            result->SetName(name);
        } else {
            ReadStr(); // the class name of an existing root isn't checked
            std::string name = ReadStr();
            if (!result->ComponentState().Contains(csDesigning)) {
                result->SetState(csLoading, true);
                result->SetState(csReading, true);
                result->SetName(name);
            }
        }
        Root = result;
        LookupRoot = result;
        Owner = result;
        FLoaded = &loaded;
        loaded.push_back(result);
        result->SetState(csLoading, true);
        result->SetState(csReading, true);
        result->ReadState(this);
        result->SetState(csReading, false);
        FLoaded = nullptr;
        for (TComponent* c : loaded)
            c->Loaded();
    } catch (...) {
        FLoaded = nullptr;
        if (!root)
            delete result;
        else {
            result->SetState(csReading, false);
            result->SetState(csLoading, false);
        }
        throw;
    }
    return result;
}

void TReader::ReadComponents(TComponent* owner, TComponent* parent,
                             const TReadComponentsProc& proc) {
    Root = owner;
    Owner = owner;
    Parent = parent;
    LookupRoot = owner;
    std::vector<TPropFixup> fixups;
    std::vector<TComponent*> loaded;
    FFixups = &fixups;
    FLoaded = &loaded;
    try {
        while (!EndOfList()) {
            ReadSignature();
            TComponent* component = ReadComponent(nullptr);
            if (proc) proc(component);
        }
        ReadListEnd();
        FixupReferences();
    } catch (...) {
        FFixups = nullptr;
        FLoaded = nullptr;
        throw;
    }
    FFixups = nullptr;
    FLoaded = nullptr;
    for (TComponent* c : loaded)
        c->Loaded();
}

// ---------------------------------------------------------------------------------------------
// Components: writing

void TWriter::SetPosition(int64_t value) {
    int64_t streamPos = FStream->Seek(0, soCurrent);
    if (value >= streamPos && value <= streamPos + FBufPos) {
        FBufPos = static_cast<int>(value - streamPos);
        return;
    }
    FlushBuffer();
    FStream->SetPosition(value);
}

void TWriter::WriteRootComponent(TComponent* root) {
    WriteDescendent(root, nullptr);
}

void TWriter::WriteDescendent(TComponent* root, TComponent* ancestor) {
    RootAncestor = ancestor;
    Ancestor = ancestor;
    Root = root;
    LookupRoot = root;
    WriteSignature();
    WriteComponent(root);
}

void TWriter::WriteComponent(TComponent* component) {
    TPersistent* oldAncestor = Ancestor;
    TComponent* oldRootAncestor = RootAncestor;
    component->SetState(csWriting, true);
    try {
        if (FAncestorList) {
            Ancestor = nullptr;
            for (TComponent* a : *FAncestorList)
                if (SameText(a->Name(), component->Name())) {
                    Ancestor = a;
                    break;
                }
        }
        component->WriteState(this);
    } catch (...) {
        Ancestor = oldAncestor;
        RootAncestor = oldRootAncestor;
        component->SetState(csWriting, false);
        throw;
    }
    Ancestor = oldAncestor;
    RootAncestor = oldRootAncestor;
    component->SetState(csWriting, false);
}

void TWriter::WriteData(TComponent* instance) {
    // The header of a component that may be dropped again must stay in the buffer.
    if (FBufSize - FBufPos <
        static_cast<int>(instance->ClassName().size() + instance->Name().size()) + 1 + 5 + 2)
        FlushBuffer();
    int64_t previousPosition = Position();
    TFilerFlags flags = 0;
    if (instance->ComponentState().Contains(csInline)) {
        if (Ancestor && instance->ComponentState().Contains(csAncestor) && FAncestorList)
            flags |= ffInherited;
        else
            flags |= ffInline;
    } else if (Ancestor)
        flags |= ffInherited;
    if (FAncestorList && FAncestorPos < FAncestorList->size() &&
        (!Ancestor || (*FAncestorList)[FAncestorPos] != Ancestor))
        flags |= ffChildPos;
    WritePrefix(flags, FChildPos, instance->ClassName());
    WriteStr(instance->Name());
    int64_t propertiesPosition = Position();
    if (FAncestorList && FAncestorPos < FAncestorList->size()) {
        if (Ancestor) ++FAncestorPos;
        ++FChildPos;
    }
    WriteProperties(instance);
    WriteListEnd();

    std::vector<TComponent*>* oldAncestorList = FAncestorList;
    size_t oldAncestorPos = FAncestorPos;
    int32_t oldChildPos = FChildPos;
    TComponent* oldRoot = Root;
    TComponent* oldRootAncestor = RootAncestor;
    std::vector<TComponent*> ancestors;
    auto restore = [&] {
        FAncestorList = oldAncestorList;
        FAncestorPos = oldAncestorPos;
        FChildPos = oldChildPos;
        Root = oldRoot;
        RootAncestor = oldRootAncestor;
    };
    try {
        FAncestorList = nullptr;
        FAncestorPos = 0;
        FChildPos = 0;
        if (!IgnoreChildren) {
            if (auto* ancestor = dynamic_cast<TComponent*>(Ancestor)) {
                if (ancestor->ComponentState().Contains(csInline)) RootAncestor = ancestor;
                ancestor->GetChildren([&](TComponent* c) { ancestors.push_back(c); }, RootAncestor);
                FAncestorList = &ancestors;
            }
            if (instance->ComponentState().Contains(csInline)) Root = instance;
            instance->GetChildren([this](TComponent* c) { WriteComponent(c); }, Root);
        }
    } catch (...) {
        restore();
        throw;
    }
    restore();
    WriteListEnd();
    // An inherited component that has nothing of its own is left out.
    if (instance != Root && flags == ffInherited && Position() == propertiesPosition + 2)
        SetPosition(previousPosition);
}

void TWriter::WriteCollection(TCollection* value) {
    // The items are written whole, against no ancestor.
    TScopedValue noAncestor(Ancestor, nullptr);
    WriteValue(vaCollection);
    if (value)
        for (int i = 0; i < value->Count(); ++i) {
            WriteListBegin();
            WriteProperties(value->GetItem(i));
            WriteListEnd();
        }
    WriteListEnd();
}

namespace {

bool CollectionsEqual(TCollection* a, TCollection* b, TComponent* rootA, TComponent* rootB) {
    if (!a || !b) return a == b;
    if (a->ClassType() != b->ClassType() || a->Count() != b->Count()) return false;
    if (a->Count() == 0) return true;
    auto stream = [](TCollection* c, TComponent* root) {
        TStringStream s;
        {
            TWriter w(&s, 4096);
            w.Root = root;
            w.LookupRoot = root;
            w.WriteCollection(c);
        }
        return s.DataString();
    };
    return stream(a, rootA) == stream(b, rootB);
}

} // namespace

void TWriter::WriteObjectProp(TPersistent* instance, PPropInfo propInfo, TPersistent* ancestor) {
    const std::string& name = propInfo->Name;
    TObject* value = GetObjectProp(instance, propInfo);
    TObject* ancestorValue = ancestor ? GetObjectProp(ancestor, propInfo) : nullptr;
    auto* component = dynamic_cast<TComponent*>(value);
    // A reference to a component of the ancestor's tree equals one to the component of the same
    // name in this tree.
    auto isDefault = [&] {
        auto* ac = dynamic_cast<TComponent*>(ancestorValue);
        if (ancestor && ac && component && ac->Owner() == RootAncestor &&
            component->Owner() == Root && SameText(ac->Name(), component->Name()))
            return true;
        if (ancestor && ac && ac == RootAncestor && component == Root) return true;
        return value == ancestorValue;
    };
    if (!value) {
        if (!isDefault()) {
            WritePropName(name);
            WriteValue(vaNil);
        }
        return;
    }
    auto* persistent = dynamic_cast<TPersistent*>(value);
    if (!persistent) return;
    if (component && !component->ComponentStyle().Contains(csSubComponent)) {
        if (isDefault()) return;
        std::string ref;
        if (component->Owner() == LookupRoot)
            ref = component->Name();
        else if (component == LookupRoot)
            ref = "Owner";
        else if (component->Owner() && !component->Owner()->Name().empty() &&
                 !component->Name().empty())
            ref = component->Owner()->Name() + "." + component->Name();
        else if (!component->Name().empty())
            ref = component->Name() + ".Owner";
        if (!ref.empty()) {
            WritePropName(name);
            WriteIdent(ref);
        }
        return;
    }
    {
        TScopedValue path(FPropPath, FPropPath + name + ".");
        TScopedValue nestedAncestor(Ancestor,
                                    ancestor ? dynamic_cast<TPersistent*>(ancestorValue) : nullptr);
        WriteProperties(persistent);
    }
    if (auto* collection = dynamic_cast<TCollection*>(value)) {
        if (!ancestor || !CollectionsEqual(collection, dynamic_cast<TCollection*>(ancestorValue),
                                           Root, RootAncestor)) {
            WritePropName(name);
            // The items' properties are named from the item, not from the nested object that
            // holds the collection: the reader reads them into each item.
            TScopedValue path(FPropPath, std::string());
            WriteCollection(collection);
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Streams

void WriteComponent(TStream* stream, TComponent* instance) {
    WriteDescendent(stream, instance, nullptr);
}

void WriteDescendent(TStream* stream, TComponent* instance, TComponent* ancestor) {
    TWriter writer(stream, 4096);
    writer.WriteDescendent(instance, ancestor);
    writer.FlushBuffer();
}

TComponent* ReadComponent(TStream* stream, TComponent* instance) {
    TReader reader(stream, 4096);
    TComponent* result = reader.ReadRootComponent(instance);
    reader.FlushBuffer();
    return result;
}

void WriteComponentRes(TStream* stream, const std::string& resName, TComponent* instance) {
    WriteDescendentRes(stream, resName, instance, nullptr);
}

void WriteDescendentRes(TStream* stream, const std::string& resName, TComponent* instance,
                        TComponent* ancestor) {
    int64_t fixup = 0;
    WriteResourceHeader(stream, resName, fixup);
    WriteDescendent(stream, instance, ancestor);
    FixupResourceHeader(stream, fixup);
}

TComponent* ReadComponentRes(TStream* stream, TComponent* instance) {
    ReadResHeader(stream);
    return ReadComponent(stream, instance);
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
