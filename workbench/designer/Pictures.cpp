#include "workbench/designer/Pictures.h"

#include "workbench/designer/VclValues.h"

#include <QPixmap>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace workbench::designer {

using ToolsAPI::TDesignComponent;
using ToolsAPI::TDesignProperty;
using ToolsAPI::TDesignValueKind;

namespace {

uint32_t Le(std::string_view d, size_t at, int bytes) {
    uint32_t v = 0;
    for (int i = bytes - 1; i >= 0; --i)
        v = v << 8 | static_cast<unsigned char>(d[at + static_cast<size_t>(i)]);
    return v;
}

// One BMP file at the start of data: its image and the bytes it takes. The length is the
// pixels' offset and the rows the header gives, so that what follows it is found even where
// the file header's own size is wrong. A null image for anything that is not a BMP file.
struct TBmp {
    QImage Image;
    size_t Length = 0;
};

TBmp ReadBmp(std::string_view d) {
    TBmp bmp;
    if (d.size() < 14 + 40 || d[0] != 'B' || d[1] != 'M') return bmp;
    uint32_t offset = Le(d, 10, 4), infoSize = Le(d, 14, 4);
    auto width = static_cast<int32_t>(Le(d, 18, 4)), height = static_cast<int32_t>(Le(d, 22, 4));
    uint32_t bits = Le(d, 28, 2), compression = Le(d, 30, 4), sizeImage = Le(d, 34, 4);
    if (infoSize < 40 || width <= 0 || height == 0 || width > 16384 || std::abs(height) > 16384)
        return bmp;
    uint64_t stride = (uint64_t(width) * bits + 31) / 32 * 4;
    uint64_t pixels =
        compression == 0 || compression == 3 ? stride * uint64_t(std::abs(height)) : sizeImage;
    if (offset > d.size() || pixels > d.size() - offset) return bmp;
    bmp.Length = offset + static_cast<size_t>(pixels);
    if (!bmp.Image.loadFromData(reinterpret_cast<const uchar*>(d.data()), int(bmp.Length), "BMP"))
        return {};
    // A 32-bit bitmap may keep an alpha channel in its fourth bytes, which the reader passes
    // over: it is taken where any pixel has one.
    if (bits == 32 && compression == 0) {
        bool alpha = false;
        for (uint64_t i = 3; i < pixels && !alpha; i += 4)
            alpha = d[offset + i] != 0;
        if (alpha) {
            QImage argb = bmp.Image.convertToFormat(QImage::Format_ARGB32);
            for (int y = 0; y < argb.height(); ++y) {
                int row = height > 0 ? argb.height() - 1 - y : y;
                for (int x = 0; x < argb.width(); ++x) {
                    auto a = static_cast<unsigned char>(d[offset + row * stride + x * 4 + 3]);
                    QRgb p = argb.pixel(x, y);
                    argb.setPixel(x, y, qRgba(qRed(p), qGreen(p), qBlue(p), a));
                }
            }
            bmp.Image = argb;
        }
    }
    return bmp;
}

// The image with every pixel of the colour key transparent.
QImage WithTransparent(const QImage& image, QRgb key) {
    QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y)
        for (int x = 0; x < argb.width(); ++x)
            if ((argb.pixel(x, y) & 0xFFFFFF) == (key & 0xFFFFFF)) argb.setPixel(x, y, 0);
    return argb;
}

} // namespace

QImage BitmapData(std::string_view data) {
    if (data.size() >= 4 && Le(data, 0, 4) == data.size() - 4) data.remove_prefix(4);
    return ReadBmp(data).Image;
}

QImage PictureData(std::string_view data) {
    if (data.empty()) return {};
    size_t nameLen = static_cast<unsigned char>(data[0]);
    if (1 + nameLen > data.size()) return {};
    std::string_view rest = data.substr(1 + nameLen);
    if (rest.size() >= 4 && Le(rest, 0, 4) == rest.size() - 4) rest.remove_prefix(4);
    QImage image = ReadBmp(rest).Image;
    if (image.isNull())
        image.loadFromData(reinterpret_cast<const uchar*>(rest.data()), int(rest.size()));
    return image;
}

QIcon ButtonGlyph(const TDesignComponent& button) {
    QImage all = BitmapData(BinaryProp(button, "Glyph.Data"));
    if (all.isNull()) return {};
    int count = static_cast<int>(std::clamp<int64_t>(button.IntProp("NumGlyphs", 1), 1, 4));
    int width = all.width() / count;
    if (width == 0) return {};
    QRgb key = all.pixel(0, all.height() - 1);
    auto glyph = [&](int i) {
        return QPixmap::fromImage(
            WithTransparent(all.copy(i * width, 0, width, all.height()), key));
    };
    QIcon icon(glyph(0));
    if (count > 1) icon.addPixmap(glyph(1), QIcon::Disabled);
    return icon;
}

QList<QImage> ImageListData(std::string_view d) {
    QList<QImage> images;
    constexpr size_t header = 28;
    if (d.size() < header || d[0] != 'I' || d[1] != 'L') return images;
    int count = static_cast<int16_t>(Le(d, 4, 2));
    int cx = static_cast<int16_t>(Le(d, 10, 2)), cy = static_cast<int16_t>(Le(d, 12, 2));
    bool masked = Le(d, 18, 2) & 1;
    if (count <= 0 || cx <= 0 || cy <= 0) return images;
    TBmp image = ReadBmp(d.substr(header));
    if (image.Image.isNull()) return images;
    QImage mask = masked ? ReadBmp(d.substr(header + image.Length)).Image : QImage();
    QImage all = image.Image.convertToFormat(QImage::Format_ARGB32);
    // A list of 32-bit images with an alpha channel needs no mask.
    if (!mask.isNull() && !image.Image.hasAlphaChannel()) {
        for (int y = 0; y < std::min(all.height(), mask.height()); ++y)
            for (int x = 0; x < std::min(all.width(), mask.width()); ++x)
                if (qGray(mask.pixel(x, y)) >= 128) all.setPixel(x, y, 0);
    }
    // The images stand four to a row.
    for (int i = 0; i < count; ++i) {
        QRect r((i % 4) * cx, (i / 4) * cy, cx, cy);
        if (!all.rect().contains(r)) break;
        images << all.copy(r);
    }
    return images;
}

QList<QImage> ImagesOf(const TDesignComponent& c, const char* property) {
    std::string name = c.StrProp(property);
    if (name.empty()) return {};
    const TDesignComponent* root = &c;
    while (root->Parent())
        root = root->Parent();
    const TDesignComponent* list = root->FindComponent(name);
    return list ? ImageListData(BinaryProp(*list, "Bitmap")) : QList<QImage>();
}

} // namespace workbench::designer
