// The pictures a form file stores, as images for the designer's widgets.
//
// A bitmap property (a speed button's or bit button's Glyph.Data) holds the bitmap's size in
// four bytes, then a Windows BMP file. A picture (Picture.Data) holds the graphic's class name
// as a short string in front of the graphic's data. An image list's Bitmap holds the list as the
// platform's common controls write it: a 28-byte header ("IL", version, count, image size,
// background colour, flags), then one BMP with the images four to a row, then, for a masked
// list, a monochrome BMP of the same layout whose set bits mark the transparent pixels.
// Damaged or truncated data gives no image, never a failure.
#pragma once

// The meta-object compiler needs none of the runtime, whose C++20 headers it cannot read.
#ifndef Q_MOC_RUN
#include "toolsapi/DesignComponent.h"
#endif

#include <QIcon>
#include <QImage>
#include <QList>

#include <string_view>

namespace workbench::designer {

// The bitmap of a bitmap property's data; a null image for data that holds none.
QImage BitmapData(std::string_view data);
// The image of a picture property's data (a bitmap, or a graphic Qt reads, such as a JPEG).
QImage PictureData(std::string_view data);

// The glyph a button shows, from the NumGlyphs pictures side by side in its Glyph.Data: the
// first for the button as it stands, the second, where there is one, for a disabled button;
// every pixel of the colour of the bitmap's lower-left pixel is transparent. A null icon for a
// button without a glyph.
QIcon ButtonGlyph(const ToolsAPI::TDesignComponent& button);

// The images of an image list's Bitmap data, in order, with their masks applied; empty for
// data that is not an image list.
QList<QImage> ImageListData(std::string_view data);
// The images of the image list that a property of c names ("Images = ImageList1"), found on
// c's form; empty when it names none there.
QList<QImage> ImagesOf(const ToolsAPI::TDesignComponent& c, const char* property);

} // namespace workbench::designer
