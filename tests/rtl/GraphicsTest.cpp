// Graphics values: colour names and colour text, fonts with their defaults and stored
// specifiers, pictures and their stored "Data".
#include "rtl/Graphics.h"
#include "rtl/Streams.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <set>

using namespace rtl;
using rtltest::MessageOf;

namespace {

void PutLE(std::string& s, size_t at, uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i)
        s[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}
void PutBE(std::string& s, size_t at, uint32_t v, int bytes) {
    for (int i = 0; i < bytes; ++i)
        s[at + i] = static_cast<char>((v >> (8 * (bytes - 1 - i))) & 0xFF);
}

// A 24-bit Windows bitmap file; a negative height makes it top-down.
std::string MakeBmp(int32_t width, int32_t height) {
    int32_t rows = height < 0 ? -height : height;
    uint32_t stride = (static_cast<uint32_t>(width) * 3 + 3) & ~3u;
    std::string s(54 + stride * rows, '\0');
    s[0] = 'B';
    s[1] = 'M';
    PutLE(s, 2, static_cast<uint32_t>(s.size()), 4);
    PutLE(s, 10, 54, 4);
    PutLE(s, 14, 40, 4);
    PutLE(s, 18, static_cast<uint32_t>(width), 4);
    PutLE(s, 22, static_cast<uint32_t>(height), 4);
    PutLE(s, 26, 1, 2);
    PutLE(s, 28, 24, 2);
    for (size_t i = 54; i < s.size(); ++i)
        s[i] = static_cast<char>(i * 7);
    return s;
}

// An icon file with one image entry; 256 is written as 0.
std::string MakeIco(int width, int height) {
    std::string s(22 + 40, '\0');
    PutLE(s, 2, 1, 2);
    PutLE(s, 4, 1, 2);
    s[6] = static_cast<char>(width & 0xFF);
    s[7] = static_cast<char>(height & 0xFF);
    PutLE(s, 14, 40, 4);
    PutLE(s, 18, 22, 4);
    for (size_t i = 22; i < s.size(); ++i)
        s[i] = static_cast<char>(0x80 + i);
    return s;
}

std::string MakePng(uint32_t width, uint32_t height) {
    std::string s("\x89PNG\r\n\x1a\n", 8);
    s += std::string("\0\0\0\x0dIHDR", 8);
    s += std::string(13 + 4, '\0');
    PutBE(s, 16, width, 4);
    PutBE(s, 20, height, 4);
    return s;
}

std::string MakeGif(uint16_t width, uint16_t height) {
    std::string s = "GIF89a";
    s += std::string(7, '\0');
    PutLE(s, 6, width, 2);
    PutLE(s, 8, height, 2);
    return s;
}

// SOI, a JFIF APP0 segment, then a baseline SOF0 frame header.
std::string MakeJpeg(uint16_t width, uint16_t height) {
    std::string s("\xFF\xD8", 2);
    std::string app0("\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18);
    s += app0;
    std::string sof("\xFF\xC0\x00\x11\x08\x00\x00\x00\x00\x03", 10);
    PutBE(sof, 5, height, 2);
    PutBE(sof, 7, width, 2);
    s += sof;
    s += std::string(9, '\x01');
    s += std::string("\xFF\xD9", 2);
    return s;
}

// Writes the picture data of a picture that holds a G made of bytes.
template <class G> void WritePictureOf(const std::string& bytes, TStream* m) {
    G graphic;
    graphic.SetBytes(bytes);
    TPicture pic;
    pic.SetGraphic(&graphic);
    pic.WriteData(m);
}

// Reads picture data from the start of m into back.
void ReadPictureFromStart(TMemoryStream& m, TPicture& back) {
    m.SetPosition(0);
    back.ReadData(&m);
}

std::string StreamBytes(TMemoryStream& m) {
    return std::string(static_cast<const char*>(m.Memory()), static_cast<size_t>(m.GetSize()));
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Colours

TEST(Colors, NamesBothWays) {
    std::string ident;
    ASSERT_TRUE(ColorToIdent(clRed, ident));
    EXPECT_EQ(ident, "clRed");
    ASSERT_TRUE(ColorToIdent(clBtnFace, ident));
    EXPECT_EQ(ident, "clBtnFace");
    ident = "unchanged";
    EXPECT_FALSE(ColorToIdent(0x123456, ident));
    EXPECT_EQ(ident, "unchanged");

    int32_t color = 0;
    ASSERT_TRUE(IdentToColor("clWindowText", color));
    EXPECT_EQ(color, clWindowText);
    ASSERT_TRUE(IdentToColor("CLRED", color));
    EXPECT_EQ(color, 0x0000FF);
    ASSERT_TRUE(IdentToColor("clnone", color));
    EXPECT_EQ(color, 0x1FFFFFFF);
    EXPECT_FALSE(IdentToColor("clPink", color));
    EXPECT_FALSE(IdentToColor("Red", color));
    EXPECT_FALSE(IdentToColor("", color));
}

TEST(Colors, TheTableStartsWithTheSixteenBasicColoursAndRoundTrips) {
    auto names = ColorNames();
    const char* basic[] = {"clBlack", "clMaroon",  "clGreen",  "clOlive", "clNavy", "clPurple",
                           "clTeal",  "clGray",    "clSilver", "clRed",   "clLime", "clYellow",
                           "clBlue",  "clFuchsia", "clAqua",   "clWhite"};
    ASSERT_GE(names.size(), 16u);
    for (size_t i = 0; i < 16; ++i)
        EXPECT_STREQ(names[i].Name, basic[i]);
    std::set<int32_t> values;
    for (const auto& e : names) {
        EXPECT_TRUE(values.insert(e.Value).second) << "two names for one value: " << e.Name;
        std::string ident;
        int32_t value = 0;
        ASSERT_TRUE(ColorToIdent(e.Value, ident));
        EXPECT_EQ(ident, e.Name);
        ASSERT_TRUE(IdentToColor(e.Name, value));
        EXPECT_EQ(value, e.Value);
    }
}

TEST(Colors, ColorToStringGivesTheNameOrEightHexDigits) {
    EXPECT_EQ(ColorToString(clRed), "clRed");
    EXPECT_EQ(ColorToString(clDefault), "clDefault");
    EXPECT_EQ(ColorToString(TColor(0x123456)), "$00123456");
    EXPECT_EQ(ColorToString(TColor(0x00ABCDEF)), "$00ABCDEF");
    EXPECT_EQ(ColorToString(TColor(static_cast<int32_t>(0x80000019u))), "$80000019");
    EXPECT_EQ(ColorToString(TColor(-2)), "$FFFFFFFE");
}

TEST(Colors, StringToColorTakesNamesAndNumbers) {
    EXPECT_EQ(StringToColor("clBlue"), clBlue);
    EXPECT_EQ(StringToColor("clbtnface"), clBtnFace);
    EXPECT_EQ(StringToColor("$00FF00"), clLime);
    EXPECT_EQ(StringToColor("$00123456"), TColor(0x123456));
    EXPECT_EQ(StringToColor("255"), clRed);
    EXPECT_EQ(StringToColor("-1"), TColor(-1));
    EXPECT_EQ(StringToColor("$80000008"), clWindowText);
    EXPECT_EQ(StringToColor("-$10"), TColor(-16));
    EXPECT_EQ(StringToColor(" 255"), clRed);
    // ColorToString and StringToColor are inverse.
    for (int32_t v : {0x000000, 0x123456, 0x7FFFFFFF, int32_t(0x80000005u), int32_t(0x80000030u)})
        EXPECT_EQ(StringToColor(ColorToString(TColor(v))), TColor(v)) << v;
}

TEST(Colors, StringToColorRefusesOtherText) {
    EXPECT_EQ(MessageOf<EConvertError>([] { StringToColor("clPink"); }),
              "'clPink' is not a valid integer value");
    for (const char* bad : {"", "$", "12abc", "$GG", "red", "1.5", "$1FFFFFFFF", "--5", "-+5",
                            "$-5", "$ 5", "- 5", "255 "})
        EXPECT_THROW(StringToColor(bad), EConvertError) << bad;
}

TEST(Colors, RgbOfSystemColours) {
    EXPECT_EQ(ColorToRGB(clRed), 0x0000FF);
    EXPECT_EQ(ColorToRGB(TColor(0x123456)), 0x123456);
    EXPECT_EQ(ColorToRGB(clWindow), 0xFFFFFF);
    EXPECT_EQ(ColorToRGB(clWindowText), 0x000000);
    // A system colour index beyond the table gives black rather than reading past it.
    EXPECT_EQ(ColorToRGB(TColor(static_cast<int32_t>(0x800000FFu))), 0);
}

TEST(Colors, TColorTypeCarriesItsIdentifierConversions) {
    PTypeInfo t = TypeInfo<TColor>();
    EXPECT_EQ(t->Kind, tkInteger);
    EXPECT_EQ(t->Name, "TColor");
    TIdentToInt toInt = FindIdentToInt(t);
    TIntToIdent toIdent = FindIntToIdent(t);
    ASSERT_NE(toInt, nullptr);
    ASSERT_NE(toIdent, nullptr);
    int32_t v = 0;
    EXPECT_TRUE(toInt("clYellow", v));
    EXPECT_EQ(v, clYellow);
    std::string ident;
    EXPECT_TRUE(toIdent(clNavy, ident));
    EXPECT_EQ(ident, "clNavy");
    EXPECT_EQ(FindIdentToInt(TypeInfo<int32_t>()), nullptr);
}

// ---------------------------------------------------------------------------------------------
// Fonts

TEST(Fonts, Defaults) {
    TFont f;
    EXPECT_EQ(f.Charset, DEFAULT_CHARSET);
    EXPECT_EQ(f.Color, clWindowText);
    EXPECT_EQ(f.Height, -11);
    EXPECT_EQ(f.Name, "MS Sans Serif");
    EXPECT_EQ(f.Pitch, fpDefault);
    EXPECT_EQ(f.Size(), 8);
    EXPECT_TRUE(f.Style.Empty());
    // The same through the published properties.
    EXPECT_EQ(GetOrdProp(&f, "Charset"), 1);
    EXPECT_EQ(GetOrdProp(&f, "Color"), clWindowText);
    EXPECT_EQ(GetOrdProp(&f, "Height"), -11);
    EXPECT_EQ(GetStrProp(&f, "Name"), "MS Sans Serif");
    EXPECT_EQ(GetOrdProp(&f, "Pitch"), fpDefault);
    EXPECT_EQ(GetOrdProp(&f, "Size"), 8);
    EXPECT_EQ(GetOrdProp(&f, "Style"), 0);
}

TEST(Fonts, PublishedPropertiesInThePlatformsOrder) {
    std::vector<std::string> names;
    for (PPropInfo p : GetPropInfos(TFont::StaticClass()))
        names.push_back(p->Name);
    EXPECT_EQ(names, (std::vector<std::string>{"Charset", "Color", "Height", "Name", "Pitch",
                                               "Size", "Style"}));
    EXPECT_EQ(GetPropInfo(TFont::StaticClass(), "Charset")->PropType->Name, "TFontCharset");
    EXPECT_EQ(GetPropInfo(TFont::StaticClass(), "Color")->PropType->Name, "TColor");
    EXPECT_EQ(GetPropInfo(TFont::StaticClass(), "Name")->PropType->Name, "TFontName");
    EXPECT_EQ(GetPropInfo(TFont::StaticClass(), "Style")->PropType->Kind, tkSet);
    EXPECT_EQ(GetPropInfo(TFont::StaticClass(), "Pitch")->PropType->Kind, tkEnumeration);
}

TEST(Fonts, SizeAndHeightConvertAtNinetySixPixelsPerInch) {
    TFont f;
    f.SetSize(10);
    EXPECT_EQ(f.Height, -13);
    f.SetSize(12);
    EXPECT_EQ(f.Height, -16);
    f.Height = -15;
    EXPECT_EQ(f.Size(), 11);
    f.Height = -14; // 10.5 points rounds away from zero
    EXPECT_EQ(f.Size(), 11);
    // A positive height is a cell height: the size comes out negative.
    f.Height = 12;
    EXPECT_EQ(f.Size(), -9);
    for (int points = 6; points <= 72; ++points) {
        f.SetSize(points);
        EXPECT_EQ(f.Size(), points) << points;
    }
    SetOrdProp(&f, "Size", 9);
    EXPECT_EQ(f.Height, -12);
}

TEST(Fonts, AFontWithEveryDefaultStoresNoNonDefaultProperty) {
    TFont f;
    for (PPropInfo p : GetPropInfos(f.ClassType())) {
        if (!IsStoredProp(&f, p)) continue;
        TTypeKind kind = p->PropType->Kind;
        ASSERT_TRUE(kind == tkInteger || kind == tkEnumeration || kind == tkSet)
            << p->Name << " is stored without a default to compare with";
        ASSERT_NE(p->Default, NoDefault) << p->Name;
        EXPECT_EQ(GetOrdProp(&f, p), p->Default) << p->Name;
    }
    // Name is stored once it differs; Size never (Height carries it).
    EXPECT_FALSE(IsStoredProp(&f, "Name"));
    EXPECT_FALSE(IsStoredProp(&f, "Size"));
    f.Name = "Arial";
    EXPECT_TRUE(IsStoredProp(&f, "Name"));
    f.SetSize(14);
    EXPECT_FALSE(IsStoredProp(&f, "Size"));
    EXPECT_NE(GetOrdProp(&f, "Height"), GetPropInfo(f.ClassType(), "Height")->Default);
}

TEST(Fonts, CharsetsHaveNames) {
    PTypeInfo t = TypeInfo<TFontCharset>();
    TIntToIdent toIdent = FindIntToIdent(t);
    TIdentToInt toInt = FindIdentToInt(t);
    ASSERT_NE(toIdent, nullptr);
    ASSERT_NE(toInt, nullptr);
    std::string ident;
    EXPECT_TRUE(toIdent(DEFAULT_CHARSET, ident));
    EXPECT_EQ(ident, "DEFAULT_CHARSET");
    EXPECT_TRUE(toIdent(204, ident));
    EXPECT_EQ(ident, "RUSSIAN_CHARSET");
    int32_t v = -1;
    EXPECT_TRUE(toInt("ansi_charset", v));
    EXPECT_EQ(v, 0);
    EXPECT_FALSE(toIdent(3, ident));
}

TEST(Fonts, AssignCopiesEveryPropertyAndRefusesOthers) {
    TFont a, b;
    a.Name = "Courier New";
    a.SetSize(10);
    a.Color = clMaroon;
    a.Style = {fsBold, fsUnderline};
    a.Pitch = fpFixed;
    a.Charset = RUSSIAN_CHARSET;
    EXPECT_FALSE(a == b);
    b.Assign(&a);
    EXPECT_TRUE(a == b);
    EXPECT_EQ(b.Size(), 10);
    EXPECT_TRUE(b.Style.Contains(fsUnderline));
    TPicture pic;
    EXPECT_EQ(MessageOf<EConvertError>([&] { b.Assign(&pic); }),
              "Cannot assign a TPicture to a TFont");
}

// ---------------------------------------------------------------------------------------------
// Image sizes from headers

TEST(Graphics, ImageSizeComesFromTheHeader) {
    TGraphic g;
    g.SetBytes(MakeBmp(3, 2));
    EXPECT_EQ(g.Width(), 3);
    EXPECT_EQ(g.Height(), 2);
    g.SetBytes(MakeBmp(5, -7));
    EXPECT_EQ(g.Height(), 7) << "top-down bitmap";
    g.SetBytes(MakeIco(32, 16));
    EXPECT_EQ(g.Width(), 32);
    EXPECT_EQ(g.Height(), 16);
    g.SetBytes(MakeIco(256, 256));
    EXPECT_EQ(g.Width(), 256);
    g.SetBytes(MakePng(640, 480));
    EXPECT_EQ(g.Width(), 640);
    EXPECT_EQ(g.Height(), 480);
    g.SetBytes(MakeGif(300, 20));
    EXPECT_EQ(g.Width(), 300);
    EXPECT_EQ(g.Height(), 20);
    g.SetBytes(MakeJpeg(1024, 768));
    EXPECT_EQ(g.Width(), 1024);
    EXPECT_EQ(g.Height(), 768);
}

TEST(Graphics, UnknownOrTruncatedImagesHaveNoSize) {
    TGraphic g;
    EXPECT_TRUE(g.Empty());
    EXPECT_EQ(g.Width(), 0);
    // Every prefix of each header: no size or the right one, and never a read past the end.
    for (const std::string& full :
         {MakeBmp(3, 2), MakePng(9, 9), MakeGif(9, 9), MakeJpeg(9, 9), MakeIco(9, 9)}) {
        for (size_t n = 0; n < full.size(); ++n) {
            g.SetBytes(full.substr(0, n));
            int32_t w = g.Width();
            EXPECT_TRUE(w == 0 || w == 3 || w == 9) << n;
        }
    }
    g.SetBytes("not an image at all");
    EXPECT_EQ(g.Width(), 0);
    EXPECT_EQ(g.Height(), 0);
}

// ---------------------------------------------------------------------------------------------
// Picture data

TEST(Pictures, BitmapDataRoundTrip) {
    const std::string bmp = MakeBmp(3, 2);
    TBitmap bitmap;
    bitmap.SetBytes(bmp);
    TPicture pic;
    pic.SetGraphic(&bitmap);
    EXPECT_EQ(pic.Width(), 3);
    TMemoryStream m;
    pic.WriteData(&m);
    // The class name as a short string, the length, then the file's bytes.
    std::string expected = std::string("\x07TBitmap");
    std::string len(4, '\0');
    PutLE(len, 0, static_cast<uint32_t>(bmp.size()), 4);
    expected += len + bmp;
    EXPECT_EQ(StreamBytes(m), expected);

    TPicture back;
    ReadPictureFromStart(m, back);
    ASSERT_NE(back.Graphic(), nullptr);
    EXPECT_EQ(back.Graphic()->ClassName(), "TBitmap");
    EXPECT_EQ(back.Graphic()->Bytes(), bmp);
    EXPECT_EQ(back.Width(), 3);
    EXPECT_EQ(back.Height(), 2);
    EXPECT_EQ(m.GetPosition(), m.GetSize()) << "all of the data is consumed";
}

TEST(Pictures, IconDataRoundTrip) {
    const std::string ico = MakeIco(48, 32);
    TMemoryStream m;
    WritePictureOf<TIcon>(ico, &m);
    // Icons store their bytes as they stand, with no length.
    EXPECT_EQ(StreamBytes(m), std::string("\x05TIcon") + ico);
    TPicture back;
    ReadPictureFromStart(m, back);
    ASSERT_NE(back.Graphic(), nullptr);
    EXPECT_EQ(back.Graphic()->ClassType(), TIcon::StaticClass());
    EXPECT_EQ(back.Graphic()->Bytes(), ico);
    EXPECT_EQ(back.Width(), 48);
    EXPECT_EQ(back.Height(), 32);
}

TEST(Pictures, JpegDataCarriesALengthToo) {
    const std::string jpg = MakeJpeg(20, 10);
    TMemoryStream m;
    WritePictureOf<TJPEGImage>(jpg, &m);
    m.WriteValue<uint32_t>(0xDEADBEEF); // whatever follows in the stream stays unread
    TPicture back;
    ReadPictureFromStart(m, back);
    EXPECT_EQ(back.Graphic()->ClassName(), "TJPEGImage");
    EXPECT_EQ(back.Graphic()->Bytes(), jpg);
    EXPECT_EQ(back.Width(), 20);
    EXPECT_EQ(m.ReadValue<uint32_t>(), 0xDEADBEEFu);
}

TEST(Pictures, EmptyPictureDataRoundTrip) {
    TPicture empty;
    TMemoryStream m;
    empty.WriteData(&m);
    EXPECT_EQ(StreamBytes(m), std::string(1, '\0'));
    TPicture back;
    TBitmap old;
    old.SetBytes(MakeBmp(1, 1));
    back.SetGraphic(&old);
    m.SetPosition(0);
    back.ReadData(&m);
    EXPECT_EQ(back.Graphic(), nullptr);
    EXPECT_EQ(back.Width(), 0);
}

TEST(Pictures, BadDataRaises) {
    TPicture pic;
    {
        TMemoryStream m;
        std::string bytes = "\x08TUnknown" + std::string(8, 'x');
        m.WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
        m.SetPosition(0);
        EXPECT_THROW(pic.ReadData(&m), EInvalidGraphic);
    }
    {
        // A stored length longer than the data.
        TMemoryStream m;
        std::string bytes = std::string("\x07TBitmap") + std::string("\xFF\x00\x00\x00", 4) + "BM";
        m.WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
        m.SetPosition(0);
        EXPECT_THROW(pic.ReadData(&m), EInvalidGraphic);
    }
    {
        // A class name cut short.
        TMemoryStream m;
        std::string bytes = "\x07TBit";
        m.WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
        m.SetPosition(0);
        EXPECT_THROW(pic.ReadData(&m), EReadError);
    }
    {
        TMemoryStream m;
        EXPECT_THROW(pic.ReadData(&m), EReadError);
    }
    EXPECT_EQ(pic.Graphic(), nullptr);
}

TEST(Pictures, SetGraphicTakesACopy) {
    TBitmap bitmap;
    bitmap.SetBytes(MakeBmp(4, 4));
    TPicture pic;
    pic.SetGraphic(&bitmap);
    ASSERT_NE(pic.Graphic(), &bitmap);
    bitmap.SetBytes(MakeBmp(8, 8));
    EXPECT_EQ(pic.Width(), 4);
    TPicture other;
    other.Assign(&pic);
    EXPECT_EQ(other.Graphic()->ClassType(), TBitmap::StaticClass());
    EXPECT_EQ(other.Width(), 4);
    other.Assign(nullptr);
    EXPECT_EQ(other.Graphic(), nullptr);
    other.Assign(&bitmap);
    EXPECT_EQ(other.Width(), 8);
    TFont font;
    EXPECT_THROW(other.Assign(&font), EConvertError);
}

TEST(Pictures, LoadFromFileChoosesTheClassByExtension) {
    const std::string dir = ::testing::TempDir();
    const std::string path = dir + "zelvane_picture_test.BMP";
    {
        std::ofstream out(path, std::ios::binary);
        std::string bmp = MakeBmp(6, 5);
        out.write(bmp.data(), static_cast<std::streamsize>(bmp.size()));
    }
    TPicture pic;
    pic.LoadFromFile(path);
    ASSERT_NE(pic.Graphic(), nullptr);
    EXPECT_EQ(pic.Graphic()->ClassType(), TBitmap::StaticClass());
    EXPECT_EQ(pic.Width(), 6);
    EXPECT_EQ(pic.Height(), 5);
    std::remove(path.c_str());
    EXPECT_THROW(pic.LoadFromFile(dir + "picture.xyz"), EInvalidGraphic);
    EXPECT_THROW(pic.LoadFromFile(dir + "no_extension"), EInvalidGraphic);
    EXPECT_EQ(pic.Width(), 6) << "a failed load keeps the picture";
}
