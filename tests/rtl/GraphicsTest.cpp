// Graphics values: colour names and colour text, fonts with their defaults and stored
// specifiers, pictures and their stored "Data".
#include "rtl/Graphics.h"

#include "TestSupport.h"

#include <memory>

using namespace rtl;
using namespace rtltest;

namespace {

// The n bytes of v, little-endian or big-endian.
std::string LE(uint32_t v, int n) {
    std::string s;
    for (int i = 0; i < n; ++i)
        s += static_cast<char>((v >> (8 * i)) & 0xFF);
    return s;
}
std::string BE(uint32_t v, int n) {
    std::string s = LE(v, n);
    return std::string(s.rbegin(), s.rend());
}

// Bytes from..to-1 of a file, each its own offset times k plus a.
std::string Fill(size_t from, size_t to, int k, int a) {
    std::string s;
    for (size_t i = from; i < to; ++i)
        s += static_cast<char>(i * k + a);
    return s;
}

// A 24-bit Windows bitmap file; a negative height makes it top-down.
std::string MakeBmp(int32_t width, int32_t height) {
    uint32_t size = 54 + ((static_cast<uint32_t>(width) * 3 + 3) & ~3u) * std::abs(height);
    return "BM" + LE(size, 4) + LE(0, 4) + LE(54, 4) + LE(40, 4) + LE(width, 4) + LE(height, 4) +
           LE(1, 2) + LE(24, 2) + std::string(24, '\0') + Fill(54, size, 7, 0);
}

// An icon file with one image entry; 256 is written as 0.
std::string MakeIco(int width, int height) {
    return LE(0, 2) + LE(1, 2) + LE(1, 2) + LE(width, 1) + LE(height, 1) + std::string(6, '\0') +
           LE(40, 4) + LE(22, 4) + Fill(22, 62, 1, 0x80);
}

std::string MakePng(uint32_t width, uint32_t height) {
    return std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16) + BE(width, 4) + BE(height, 4) +
           std::string(9, '\0');
}

std::string MakeGif(uint16_t width, uint16_t height) {
    return "GIF89a" + LE(width, 2) + LE(height, 2) + std::string(3, '\0');
}

// SOI, a JFIF APP0 segment, then a baseline SOF0 frame header.
std::string MakeJpeg(uint16_t width, uint16_t height) {
    return std::string("\xFF\xD8\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00"
                       "\xFF\xC0\x00\x11\x08",
                       25) +
           BE(height, 2) + BE(width, 2) + "\x03" + std::string(9, '\x01') + "\xFF\xD9";
}

std::pair<int32_t, int32_t> SizeOf(const TGraphic& g) {
    return {g.Width(), g.Height()};
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Colours

TEST(Colors, ColorTextIsTheNameOrEightHexDigitsAndReadsBack) {
    EXPECT_EQ(
        V({ColorToString(clRed), ColorToString(clDefault), ColorToString(TColor(0x123456)),
           ColorToString(TColor(0x00ABCDEF)),
           ColorToString(TColor(static_cast<int32_t>(0x80000019u))), ColorToString(TColor(-2))}),
        V({"clRed", "clDefault", "$00123456", "$00ABCDEF", "$80000019", "$FFFFFFFE"}));
    EXPECT_EQ(std::vector<TColor>(
                  {StringToColor("clBlue"), StringToColor("clbtnface"), StringToColor("$00FF00"),
                   StringToColor("$00123456"), StringToColor("255"), StringToColor("-1"),
                   StringToColor("$80000008"), StringToColor("-$10"), StringToColor(" 255")}),
              std::vector<TColor>({clBlue, clBtnFace, clLime, TColor(0x123456), clRed, TColor(-1),
                                   clWindowText, TColor(-16), clRed}));
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
    // A system colour index beyond the table gives black rather than reading past it.
    EXPECT_EQ(std::vector<int32_t>({ColorToRGB(clRed), ColorToRGB(TColor(0x123456)),
                                    ColorToRGB(clWindow), ColorToRGB(clWindowText),
                                    ColorToRGB(TColor(static_cast<int32_t>(0x800000FFu)))}),
              std::vector<int32_t>({0x0000FF, 0x123456, 0xFFFFFF, 0x000000, 0}));
}

// ---------------------------------------------------------------------------------------------
// Fonts

TEST(Fonts, DefaultsAndPublishedPropertiesInThePlatformsOrder) {
    TFont f;
    EXPECT_EQ(GetStrProp(&f, "Name"), "MS Sans Serif");
    V names;
    std::vector<int64_t> values;
    for (PPropInfo p : GetPropInfos(TFont::StaticClass())) {
        names.push_back(p->Name);
        if (p->Name != "Name") values.push_back(GetOrdProp(&f, p));
    }
    EXPECT_EQ(names, V({"Charset", "Color", "Height", "Name", "Pitch", "Size", "Style"}));
    EXPECT_EQ(values, std::vector<int64_t>({DEFAULT_CHARSET, clWindowText, -11, fpDefault, 8, 0}));
    auto type = [](const char* name) { return GetPropInfo(TFont::StaticClass(), name)->PropType; };
    EXPECT_EQ(V({type("Charset")->Name, type("Color")->Name, type("Name")->Name}),
              V({"TFontCharset", "TColor", "TFontName"}));
    EXPECT_EQ(type("Style")->Kind, tkSet);
}

TEST(Fonts, SizeAndHeightConvertAtNinetySixPixelsPerInch) {
    TFont f;
    f.SetSize(10);
    EXPECT_EQ(f.Height, -13);
    // 10.5 points rounds away from zero; a positive height is a cell height, the size negative.
    for (auto [height, size] : {std::pair{-14, 11}, {12, -9}}) {
        f.Height = height;
        EXPECT_EQ(f.Size(), size) << height;
    }
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
}

// ---------------------------------------------------------------------------------------------
// Image sizes from headers

TEST(Graphics, ImageSizeComesFromTheHeader) {
    // A top-down bitmap has a negative height; an icon writes 256 as 0.
    const std::pair<std::string, std::pair<int32_t, int32_t>> cases[] = {
        {MakeBmp(3, 2), {3, 2}},           {MakeBmp(5, -7), {5, 7}},
        {MakeIco(32, 16), {32, 16}},       {MakeIco(256, 256), {256, 256}},
        {MakePng(640, 480), {640, 480}},   {MakeGif(300, 20), {300, 20}},
        {MakeJpeg(1024, 768), {1024, 768}}};
    TGraphic g;
    for (const auto& [bytes, size] : cases) {
        g.SetBytes(bytes);
        EXPECT_EQ(SizeOf(g), size) << bytes.substr(0, 4);
    }
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
    EXPECT_EQ(SizeOf(g), std::pair(0, 0));
}

// ---------------------------------------------------------------------------------------------
// Picture data

TEST(Pictures, DataIsTheClassNameAndTheFileWithItsLengthExceptForIcons) {
    // What follows the data of a graphic with a length stays unread.
    struct Case {
        TClass cls;
        std::string bytes, data;
        std::pair<int32_t, int32_t> size;
    };
    const std::string bmp = MakeBmp(3, 2), ico = MakeIco(48, 32), jpg = MakeJpeg(20, 10);
    const Case cases[] = {
        {TBitmap::StaticClass(), bmp, "\x07TBitmap" + LE(bmp.size(), 4) + bmp, {3, 2}},
        {TIcon::StaticClass(), ico, "\x05TIcon" + ico, {48, 32}},
        {TJPEGImage::StaticClass(), jpg, "\x0ATJPEGImage" + LE(jpg.size(), 4) + jpg, {20, 10}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.cls->Name);
        std::unique_ptr<TObject> graphic(CreateInstance(c.cls));
        static_cast<TGraphic*>(graphic.get())->SetBytes(c.bytes);
        TPicture pic;
        pic.SetGraphic(static_cast<TGraphic*>(graphic.get()));
        EXPECT_EQ(SizeOf(*pic.Graphic()), c.size);
        TStringStream m;
        pic.WriteData(&m);
        EXPECT_EQ(m.DataString(), c.data);
        const bool sized = c.cls != TIcon::StaticClass(); // an icon's data runs to the end
        if (sized) m.WriteValue<uint32_t>(0xDEADBEEF);
        m.SetPosition(0);
        TPicture back;
        back.ReadData(&m);
        ASSERT_NE(back.Graphic(), nullptr);
        EXPECT_EQ(back.Graphic()->ClassType(), c.cls);
        EXPECT_EQ(back.Graphic()->Bytes(), c.bytes);
        EXPECT_EQ(std::pair(back.Width(), back.Height()), c.size);
        if (sized) {
            EXPECT_EQ(m.ReadValue<uint32_t>(), 0xDEADBEEFu);
        }
        EXPECT_EQ(m.GetPosition(), m.GetSize()) << "all of the data is consumed";
    }
}

TEST(Pictures, EmptyDataRoundTripsAndBadDataRaises) {
    // An empty picture is one zero byte, and reading it empties the picture.
    TPicture pic, empty;
    TStringStream m;
    empty.WriteData(&m);
    EXPECT_EQ(m.DataString(), std::string(1, '\0'));
    TBitmap old;
    old.SetBytes(MakeBmp(1, 1));
    pic.SetGraphic(&old);
    m.SetPosition(0);
    pic.ReadData(&m);
    EXPECT_EQ(pic.Width(), 0);
    // An unknown class, a stored length longer than the data, a class name cut short, nothing.
    TStringStream unknown("\x08TUnknown" + std::string(8, 'x'));
    EXPECT_THROW(pic.ReadData(&unknown), EInvalidGraphic);
    TStringStream longer(std::string("\x07TBitmap") + LE(255, 4) + "BM");
    EXPECT_THROW(pic.ReadData(&longer), EInvalidGraphic);
    for (const char* cut : {"\x07TBit", ""}) {
        TStringStream m(cut);
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

class PictureFiles : public TempDirTest {};

TEST_F(PictureFiles, LoadFromFileChoosesTheClassByExtension) {
    WriteFile(Path("picture.BMP"), MakeBmp(6, 5));
    TPicture pic;
    pic.LoadFromFile(Path("picture.BMP"));
    ASSERT_NE(pic.Graphic(), nullptr);
    EXPECT_EQ(pic.Graphic()->ClassType(), TBitmap::StaticClass());
    EXPECT_EQ(SizeOf(*pic.Graphic()), std::pair(6, 5));
    EXPECT_THROW(pic.LoadFromFile(Path("picture.xyz")), EInvalidGraphic);
    EXPECT_THROW(pic.LoadFromFile(Path("no_extension")), EInvalidGraphic);
    EXPECT_EQ(pic.Width(), 6) << "a failed load keeps the picture";
}
