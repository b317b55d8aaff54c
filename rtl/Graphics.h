// Graphic values of the platform: colours with their standard names, fonts, and pictures that
// keep their image bytes.
#pragma once

#include "rtl/Classes.h"
#include "rtl/SysUtils.h"

#include <cstdint>
#include <memory>
#include <string>

namespace rtl {

// A colour: 0x00BBGGRR, or a system colour (0x80000000 | index), clNone, clDefault.
enum TColor : int32_t {
    clBlack = 0x000000,
    clMaroon = 0x000080,
    clGreen = 0x008000,
    clOlive = 0x008080,
    clNavy = 0x800000,
    clPurple = 0x800080,
    clTeal = 0x808000,
    clGray = 0x808080,
    clSilver = 0xC0C0C0,
    clRed = 0x0000FF,
    clLime = 0x00FF00,
    clYellow = 0x00FFFF,
    clBlue = 0xFF0000,
    clFuchsia = 0xFF00FF,
    clAqua = 0xFFFF00,
    clLtGray = 0xC0C0C0,
    clDkGray = 0x808080,
    clWhite = 0xFFFFFF,
    clMoneyGreen = 0xC0DCC0,
    clSkyBlue = 0xF0CAA6,
    clCream = 0xF0FBFF,
    clMedGray = 0xA4A0A0,
    clScrollBar = INT32_MIN | 0,
    clBackground = INT32_MIN | 1,
    clActiveCaption = INT32_MIN | 2,
    clInactiveCaption = INT32_MIN | 3,
    clMenu = INT32_MIN | 4,
    clWindow = INT32_MIN | 5,
    clWindowFrame = INT32_MIN | 6,
    clMenuText = INT32_MIN | 7,
    clWindowText = INT32_MIN | 8,
    clCaptionText = INT32_MIN | 9,
    clActiveBorder = INT32_MIN | 10,
    clInactiveBorder = INT32_MIN | 11,
    clAppWorkSpace = INT32_MIN | 12,
    clHighlight = INT32_MIN | 13,
    clHighlightText = INT32_MIN | 14,
    clBtnFace = INT32_MIN | 15,
    clBtnShadow = INT32_MIN | 16,
    clGrayText = INT32_MIN | 17,
    clBtnText = INT32_MIN | 18,
    clInactiveCaptionText = INT32_MIN | 19,
    clBtnHighlight = INT32_MIN | 20,
    cl3DDkShadow = INT32_MIN | 21,
    cl3DLight = INT32_MIN | 22,
    clInfoText = INT32_MIN | 23,
    clInfoBk = INT32_MIN | 24,
    clNone = 0x1FFFFFFF,
    clDefault = 0x20000000,
};
PTypeInfo TypeInfoFor(const TColor*);

// The standard colour names, in the platform's order: the sixteen basic colours, then the
// system colours, then clNone and clDefault.
std::span<const TIdentMapEntry> ColorNames();
bool ColorToIdent(int32_t color, std::string& ident);
bool IdentToColor(std::string_view ident, int32_t& color);
// The colour's name, or "$" and eight hexadecimal digits.
std::string ColorToString(TColor color);
// A colour name, or a number in any form StrToInt accepts ("$00FF00", "255"); EConvertError
// otherwise.
TColor StringToColor(std::string_view text);
// The RGB value of a colour; system colours map to the classic Windows scheme.
int32_t ColorToRGB(TColor color);

// Font character sets, written by their names (DEFAULT_CHARSET) in object streams.
enum TFontCharset : uint8_t {};
PTypeInfo TypeInfoFor(const TFontCharset*);
inline constexpr TFontCharset ANSI_CHARSET{0};
inline constexpr TFontCharset DEFAULT_CHARSET{1};
inline constexpr TFontCharset SYMBOL_CHARSET{2};
inline constexpr TFontCharset RUSSIAN_CHARSET{204};
inline constexpr TFontCharset EASTEUROPE_CHARSET{238};
inline constexpr TFontCharset OEM_CHARSET{255};
// A character set's name and back ("GREEK_CHARSET" is 161); false for one that has none.
bool CharsetToIdent(int32_t value, std::string& ident);
bool IdentToCharset(std::string_view ident, int32_t& value);

// A font name.
struct TFontName : std::string {
    using std::string::string;
    TFontName(const std::string& s) : std::string(s) {}
};
PTypeInfo TypeInfoFor(const TFontName*);

RTL_ENUM(TFontPitch, fpDefault, fpVariable, fpFixed)
RTL_ENUM(TFontStyle, fsBold, fsItalic, fsUnderline, fsStrikeOut)
RTL_SET(TFontStyles, TFontStyle)

// How a pen draws its lines.
RTL_ENUM(TPenStyle, psSolid, psDash, psDot, psDashDot, psDashDotDot, psClear, psInsideFrame)

// Screen resolution used to turn point sizes into pixel heights.
inline constexpr int kPixelsPerInch = 96;

// A font with the platform's published properties and defaults. A font with every default
// stores no property at all: Name is stored only when it differs from the default name, and Size
// is never stored (Height carries it).
class TFont : public TPersistent {
    RTL_CLASS(TFont, TPersistent)
public:
    static constexpr const char* DefaultName = "MS Sans Serif";
    static constexpr int32_t DefaultHeight = -11; // 8 points at 96 pixels per inch

    TFont() = default;
    void Assign(TPersistent* source) override;

    TFontCharset Charset = DEFAULT_CHARSET;
    TColor Color = clWindowText;
    int32_t Height = DefaultHeight;
    TFontName Name = DefaultName;
    TFontPitch Pitch = fpDefault;
    TFontStyles Style;

    int32_t Size() const;
    void SetSize(int32_t points);
    bool IsNameStored() const { return Name != DefaultName; }

    friend bool operator==(const TFont& a, const TFont& b);
};

// An image held as the bytes of its file format. Descendants name the format and say how the
// bytes travel inside a picture's "Data" property.
class TGraphic : public TPersistent {
    RTL_CLASS(TGraphic, TPersistent)
public:
    bool Empty() const { return data_.empty(); }
    const std::string& Bytes() const { return data_; }
    void SetBytes(std::string bytes);
    // Width and height from the image header, 0 when the format isn't understood.
    int32_t Width() const;
    int32_t Height() const;

    virtual void LoadFromStream(TStream* stream);
    virtual void SaveToStream(TStream* stream);
    void LoadFromFile(const std::string& fileName);
    void SaveToFile(const std::string& fileName);

    // The graphic's part of a picture's stored data.
    virtual void ReadData(TStream* stream);
    virtual void WriteData(TStream* stream);

    void Assign(TPersistent* source) override;

protected:
    std::string data_;
};

// Bitmaps, JPEG images and metafiles store a 4-byte length before their bytes; icons store their
// bytes as they stand.
class TBitmap : public TGraphic {
    RTL_CLASS(TBitmap, TGraphic)
public:
    void ReadData(TStream* stream) override;
    void WriteData(TStream* stream) override;
};
class TJPEGImage : public TBitmap {
    RTL_CLASS(TJPEGImage, TBitmap)
};
class TMetafile : public TBitmap {
    RTL_CLASS(TMetafile, TBitmap)
};
class TIcon : public TGraphic {
    RTL_CLASS(TIcon, TGraphic)
};

// A picture: an optional graphic of a registered class. Its stored form is the defined binary
// property "Data": the graphic's class name as a short string, then the graphic's data.
class TPicture : public TPersistent {
    RTL_CLASS(TPicture, TPersistent)
public:
    TPicture() = default;
    ~TPicture() override;

    TGraphic* Graphic() const { return graphic_.get(); }
    // Takes a copy of the graphic; nullptr empties the picture.
    void SetGraphic(TGraphic* value);
    int32_t Width() const { return graphic_ ? graphic_->Width() : 0; }
    int32_t Height() const { return graphic_ ? graphic_->Height() : 0; }

    // Loads a file, choosing the graphic class by the extension (.bmp, .jpg/.jpeg, .ico,
    // .wmf/.emf); EInvalidGraphic for an unknown extension.
    void LoadFromFile(const std::string& fileName);
    void SaveToFile(const std::string& fileName);

    void Assign(TPersistent* source) override;
    void DefineProperties(TFiler* filer) override;

    void ReadData(TStream* stream);
    void WriteData(TStream* stream);

private:
    std::unique_ptr<TGraphic> graphic_;
};

RTL_EXCEPTION(EInvalidGraphic, Exception)

} // namespace rtl
