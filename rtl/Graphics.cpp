#include "rtl/Graphics.h"

#include <cctype>
#include <cmath>
#include <cstdio>

#include "rtl/Filer.h"

namespace rtl {

// ---------------------------------------------------------------------------------------------
// Colours

namespace {

constexpr TIdentMapEntry kColorNames[] = {
    {clBlack, "clBlack"},
    {clMaroon, "clMaroon"},
    {clGreen, "clGreen"},
    {clOlive, "clOlive"},
    {clNavy, "clNavy"},
    {clPurple, "clPurple"},
    {clTeal, "clTeal"},
    {clGray, "clGray"},
    {clSilver, "clSilver"},
    {clRed, "clRed"},
    {clLime, "clLime"},
    {clYellow, "clYellow"},
    {clBlue, "clBlue"},
    {clFuchsia, "clFuchsia"},
    {clAqua, "clAqua"},
    {clWhite, "clWhite"},
    {clMoneyGreen, "clMoneyGreen"},
    {clSkyBlue, "clSkyBlue"},
    {clCream, "clCream"},
    {clMedGray, "clMedGray"},
    {clScrollBar, "clScrollBar"},
    {clBackground, "clBackground"},
    {clActiveCaption, "clActiveCaption"},
    {clInactiveCaption, "clInactiveCaption"},
    {clMenu, "clMenu"},
    {clWindow, "clWindow"},
    {clWindowFrame, "clWindowFrame"},
    {clMenuText, "clMenuText"},
    {clWindowText, "clWindowText"},
    {clCaptionText, "clCaptionText"},
    {clActiveBorder, "clActiveBorder"},
    {clInactiveBorder, "clInactiveBorder"},
    {clAppWorkSpace, "clAppWorkSpace"},
    {clHighlight, "clHighlight"},
    {clHighlightText, "clHighlightText"},
    {clBtnFace, "clBtnFace"},
    {clBtnShadow, "clBtnShadow"},
    {clGrayText, "clGrayText"},
    {clBtnText, "clBtnText"},
    {clInactiveCaptionText, "clInactiveCaptionText"},
    {clBtnHighlight, "clBtnHighlight"},
    {cl3DDkShadow, "cl3DDkShadow"},
    {cl3DLight, "cl3DLight"},
    {clInfoText, "clInfoText"},
    {clInfoBk, "clInfoBk"},
    {clNone, "clNone"},
    {clDefault, "clDefault"},
};

// The classic Windows colour scheme, by system colour index.
constexpr int32_t kSystemRGB[] = {
    0xC8C8C8, 0x000000, 0xD1B499, 0xDBCDBF, 0xF0F0F0, 0xFFFFFF, 0x646464, 0x000000, 0x000000,
    0xFFFFFF, 0xB4B4B4, 0xFCF7F4, 0xABABAB, 0xFF9933, 0xFFFFFF, 0xC0C0C0, 0x808080, 0x808080,
    0x000000, 0x000000, 0xFFFFFF, 0x404040, 0xE3E3E3, 0x000000, 0xE1FFFF,
};

constexpr TIdentMapEntry kCharsetNames[] = {
    {0, "ANSI_CHARSET"},        {1, "DEFAULT_CHARSET"},    {2, "SYMBOL_CHARSET"},
    {77, "MAC_CHARSET"},        {128, "SHIFTJIS_CHARSET"}, {129, "HANGEUL_CHARSET"},
    {130, "JOHAB_CHARSET"},     {134, "GB2312_CHARSET"},   {136, "CHINESEBIG5_CHARSET"},
    {161, "GREEK_CHARSET"},     {162, "TURKISH_CHARSET"},  {163, "VIETNAMESE_CHARSET"},
    {177, "HEBREW_CHARSET"},    {178, "ARABIC_CHARSET"},   {186, "BALTIC_CHARSET"},
    {204, "RUSSIAN_CHARSET"},   {222, "THAI_CHARSET"},     {238, "EASTEUROPE_CHARSET"},
    {255, "OEM_CHARSET"},
};

} // namespace

bool CharsetToIdent(int32_t value, std::string& ident) {
    return IntToIdent(value, ident, kCharsetNames);
}
bool IdentToCharset(std::string_view ident, int32_t& value) {
    return IdentToInt(ident, value, kCharsetNames);
}

std::span<const TIdentMapEntry> ColorNames() { return kColorNames; }
bool ColorToIdent(int32_t color, std::string& ident) { return IntToIdent(color, ident, kColorNames); }
bool IdentToColor(std::string_view ident, int32_t& color) {
    return IdentToInt(ident, color, kColorNames);
}

PTypeInfo TypeInfoFor(const TColor*) {
    static const PTypeInfo ti = [] {
        PTypeInfo t = MakeOrdinalType(tkInteger, "TColor", otSLong, INT32_MIN, INT32_MAX);
        RegisterIntegerConsts(t, IdentToColor, ColorToIdent);
        return t;
    }();
    return ti;
}

PTypeInfo TypeInfoFor(const TFontCharset*) {
    static const PTypeInfo ti = [] {
        PTypeInfo t = MakeOrdinalType(tkInteger, "TFontCharset", otUByte, 0, 255);
        RegisterIntegerConsts(t, IdentToCharset, CharsetToIdent);
        return t;
    }();
    return ti;
}

PTypeInfo TypeInfoFor(const TFontName*) {
    static const PTypeInfo ti = new TTypeInfo{tkLString, "TFontName", {}};
    return ti;
}

std::string ColorToString(TColor color) {
    std::string ident;
    if (ColorToIdent(color, ident)) return ident;
    char buf[16];
    std::snprintf(buf, sizeof buf, "$%.8X", static_cast<uint32_t>(color));
    return buf;
}

TColor StringToColor(std::string_view text) {
    int32_t value;
    if (IdentToColor(text, value)) return static_cast<TColor>(value);
    std::string s(text);
    size_t start = s.find_first_not_of(' ');
    std::string body = start == std::string::npos ? "" : s.substr(start);
    bool negative = !body.empty() && body[0] == '-';
    if (negative) body.erase(0, 1);
    int base = 10;
    if (!body.empty() && body[0] == '$') base = 16, body.erase(0, 1);
    else if (body.size() > 2 && body[0] == '0' && (body[1] == 'x' || body[1] == 'X'))
        base = 16, body.erase(0, 2);
    // strtoll would take a second sign or blanks after the sign or the '$': only digits here.
    unsigned char first = body.empty() ? 0 : static_cast<unsigned char>(body[0]);
    bool digitFirst = base == 16 ? std::isxdigit(first) != 0 : std::isdigit(first) != 0;
    char* end = nullptr;
    errno = 0;
    long long v = digitFirst ? std::strtoll(body.c_str(), &end, base) : 0;
    if (!digitFirst || *end != 0 || errno == ERANGE || v > UINT32_MAX)
        throw EConvertError("'" + s + "' is not a valid integer value");
    uint32_t bits = static_cast<uint32_t>(negative ? -v : v);
    return static_cast<TColor>(static_cast<int32_t>(bits));
}

int32_t ColorToRGB(TColor color) {
    if (color < 0) {
        int index = color & 0xFF;
        return index < static_cast<int>(std::size(kSystemRGB)) ? kSystemRGB[index] : 0;
    }
    return color;
}

// ---------------------------------------------------------------------------------------------
// Fonts

RTL_BEGIN_CLASS(TFont)
    Property("Charset", &TFont::Charset).Default(DEFAULT_CHARSET);
    Property("Color", &TFont::Color).Default(clWindowText);
    Property("Height", &TFont::Height).Default(TFont::DefaultHeight);
    Property("Name", &TFont::Name).Stored(&TFont::IsNameStored);
    Property("Pitch", &TFont::Pitch).Default(fpDefault);
    Property("Size", &TFont::Size, &TFont::SetSize).Stored(false);
    Property("Style", &TFont::Style).Default(TFontStyles{});
RTL_END_CLASS

int32_t TFont::Size() const {
    return -static_cast<int32_t>(std::lround(Height * 72.0 / kPixelsPerInch));
}

void TFont::SetSize(int32_t points) {
    Height = -static_cast<int32_t>(std::lround(points * double(kPixelsPerInch) / 72.0));
}

void TFont::Assign(TPersistent* source) {
    if (auto* f = dynamic_cast<TFont*>(source)) {
        Charset = f->Charset;
        Color = f->Color;
        Height = f->Height;
        Name = f->Name;
        Pitch = f->Pitch;
        Style = f->Style;
        return;
    }
    TPersistent::Assign(source);
}

bool operator==(const TFont& a, const TFont& b) {
    return a.Charset == b.Charset && a.Color == b.Color && a.Height == b.Height &&
           a.Name == b.Name && a.Pitch == b.Pitch && a.Style == b.Style;
}

// ---------------------------------------------------------------------------------------------
// Graphics

RTL_IMPLEMENT_CLASS(TGraphic)
RTL_IMPLEMENT_CLASS(TBitmap)
RTL_IMPLEMENT_CLASS(TJPEGImage)
RTL_IMPLEMENT_CLASS(TMetafile)
RTL_IMPLEMENT_CLASS(TIcon)
RTL_IMPLEMENT_CLASS(TPicture)
RTL_IMPLEMENT_CLASS(EInvalidGraphic)

namespace {

uint32_t LE(const std::string& d, size_t at, int bytes) {
    uint32_t v = 0;
    for (int i = bytes - 1; i >= 0; --i) v = v << 8 | static_cast<unsigned char>(d[at + i]);
    return v;
}
uint32_t BE(const std::string& d, size_t at, int bytes) {
    uint32_t v = 0;
    for (int i = 0; i < bytes; ++i) v = v << 8 | static_cast<unsigned char>(d[at + i]);
    return v;
}

// Width and height from the header of a BMP, PNG, GIF, JPEG or ICO image.
std::pair<int32_t, int32_t> ImageSize(const std::string& d) {
    if (d.size() >= 26 && d.compare(0, 2, "BM") == 0) {
        auto h = static_cast<int32_t>(LE(d, 22, 4));
        return {static_cast<int32_t>(LE(d, 18, 4)), h < 0 ? -h : h};
    }
    if (d.size() >= 24 && d.compare(1, 3, "PNG") == 0)
        return {static_cast<int32_t>(BE(d, 16, 4)), static_cast<int32_t>(BE(d, 20, 4))};
    if (d.size() >= 10 && d.compare(0, 3, "GIF") == 0)
        return {static_cast<int32_t>(LE(d, 6, 2)), static_cast<int32_t>(LE(d, 8, 2))};
    if (d.size() >= 4 && static_cast<unsigned char>(d[0]) == 0xFF &&
        static_cast<unsigned char>(d[1]) == 0xD8) {
        size_t i = 2;
        while (i + 9 < d.size()) {
            if (static_cast<unsigned char>(d[i]) != 0xFF) return {0, 0};
            unsigned marker = static_cast<unsigned char>(d[i + 1]);
            size_t len = BE(d, i + 2, 2);
            bool sof = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 &&
                       marker != 0xCC;
            if (sof)
                return {static_cast<int32_t>(BE(d, i + 7, 2)), static_cast<int32_t>(BE(d, i + 5, 2))};
            i += 2 + len;
        }
        return {0, 0};
    }
    if (d.size() >= 8 && LE(d, 0, 2) == 0 && LE(d, 2, 2) == 1) {
        int w = static_cast<unsigned char>(d[6]), h = static_cast<unsigned char>(d[7]);
        return {w ? w : 256, h ? h : 256};
    }
    return {0, 0};
}

std::string ReadRest(TStream* stream) {
    int64_t count = stream->GetSize() - stream->GetPosition();
    std::string bytes(static_cast<size_t>(std::max<int64_t>(count, 0)), '\0');
    stream->ReadBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
    return bytes;
}

} // namespace

void TGraphic::SetBytes(std::string bytes) { data_ = std::move(bytes); }
int32_t TGraphic::Width() const { return ImageSize(data_).first; }
int32_t TGraphic::Height() const { return ImageSize(data_).second; }

void TGraphic::LoadFromStream(TStream* stream) { data_ = ReadRest(stream); }
void TGraphic::SaveToStream(TStream* stream) {
    stream->WriteBuffer(data_.data(), static_cast<int64_t>(data_.size()));
}

void TGraphic::LoadFromFile(const std::string& fileName) {
    TMemoryStream m;
    m.LoadFromFile(fileName);
    LoadFromStream(&m);
}

void TGraphic::SaveToFile(const std::string& fileName) {
    TMemoryStream m;
    SaveToStream(&m);
    m.SaveToFile(fileName);
}

void TGraphic::ReadData(TStream* stream) { LoadFromStream(stream); }
void TGraphic::WriteData(TStream* stream) { SaveToStream(stream); }

void TGraphic::Assign(TPersistent* source) {
    if (auto* g = dynamic_cast<TGraphic*>(source)) {
        data_ = g->data_;
        return;
    }
    TPersistent::Assign(source);
}

void TBitmap::ReadData(TStream* stream) {
    auto size = stream->ReadValue<uint32_t>();
    if (size > stream->GetSize() - stream->GetPosition())
        throw EInvalidGraphic("Graphic data is shorter than its stored size");
    data_.assign(size, '\0');
    stream->ReadBuffer(data_.data(), size);
}

void TBitmap::WriteData(TStream* stream) {
    stream->WriteValue(static_cast<uint32_t>(data_.size()));
    SaveToStream(stream);
}

// ---------------------------------------------------------------------------------------------
// Pictures

namespace {
TClass GraphicClassByName(std::string_view name) {
    for (TClass c : {TBitmap::StaticClass(), TJPEGImage::StaticClass(), TMetafile::StaticClass(),
                     TIcon::StaticClass()})
        if (c->Name.size() == name.size() &&
            std::equal(name.begin(), name.end(), c->Name.begin(), [](char a, char b) {
                return std::tolower(static_cast<unsigned char>(a)) ==
                       std::tolower(static_cast<unsigned char>(b));
            }))
            return c;
    TClass c = GetClass(name);
    return c && c->InheritsFrom(TGraphic::StaticClass()) ? c : nullptr;
}

TClass GraphicClassByExtension(const std::string& fileName) {
    size_t dot = fileName.rfind('.');
    std::string ext = dot == std::string::npos ? "" : fileName.substr(dot + 1);
    for (auto& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (ext == "bmp") return TBitmap::StaticClass();
    if (ext == "jpg" || ext == "jpeg") return TJPEGImage::StaticClass();
    if (ext == "ico") return TIcon::StaticClass();
    if (ext == "wmf" || ext == "emf") return TMetafile::StaticClass();
    throw EInvalidGraphic("Unknown picture file extension (." + ext + ")");
}
} // namespace

TPicture::~TPicture() = default;

void TPicture::SetGraphic(TGraphic* value) {
    if (!value) {
        graphic_.reset();
        return;
    }
    std::unique_ptr<TGraphic> copy = CreateInstanceOf<TGraphic>(value->ClassType());
    copy->Assign(value);
    graphic_ = std::move(copy);
}

void TPicture::LoadFromFile(const std::string& fileName) {
    std::unique_ptr<TGraphic> g = CreateInstanceOf<TGraphic>(GraphicClassByExtension(fileName));
    g->LoadFromFile(fileName);
    graphic_ = std::move(g);
}

void TPicture::SaveToFile(const std::string& fileName) {
    if (graphic_) graphic_->SaveToFile(fileName);
}

void TPicture::Assign(TPersistent* source) {
    if (!source) return SetGraphic(nullptr);
    if (auto* p = dynamic_cast<TPicture*>(source)) return SetGraphic(p->Graphic());
    if (auto* g = dynamic_cast<TGraphic*>(source)) return SetGraphic(g);
    TPersistent::Assign(source);
}

void TPicture::ReadData(TStream* stream) {
    auto len = stream->ReadValue<uint8_t>();
    std::string name(len, '\0');
    stream->ReadBuffer(name.data(), len);
    // An empty picture writes an empty class name and nothing after it.
    if (name.empty()) {
        graphic_.reset();
        return;
    }
    TClass cls = GraphicClassByName(name);
    if (!cls) throw EInvalidGraphic("Unknown picture format " + name);
    std::unique_ptr<TGraphic> g = CreateInstanceOf<TGraphic>(cls);
    g->ReadData(stream);
    graphic_ = std::move(g);
}

void TPicture::WriteData(TStream* stream) {
    const std::string& name = graphic_ ? graphic_->ClassName() : std::string();
    stream->WriteValue(static_cast<uint8_t>(name.size()));
    stream->WriteBuffer(name.data(), static_cast<int64_t>(name.size()));
    if (graphic_) graphic_->WriteData(stream);
}

void TPicture::DefineProperties(TFiler* filer) {
    filer->DefineBinaryProperty(
        "Data", [this](TStream* s) { ReadData(s); }, [this](TStream* s) { WriteData(s); },
        graphic_ && !graphic_->Empty());
}

} // namespace rtl
