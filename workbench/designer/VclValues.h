// The values of a form file as the widgets show them: colours, fonts, alignments and texts.
//
// A form file stores what the platform's controls publish: colours as names ("clBtnFace") or as
// numbers in the order blue-green-red, fonts as Font.Name, Font.Height (negative: pixels of the
// character, without the leading) and Font.Style, texts as wide strings or in the code page of
// the character set the font names (Font.Charset).
#pragma once

#include "toolsapi/DesignComponent.h"

#include <QColor>
#include <QFont>
#include <QString>

#include <optional>
#include <string>
#include <string_view>

namespace workbench::designer {

// The colour of a colour value: a name of the platform ("clRed", "clBtnFace"), a number
// $00BBGGRR, or a system colour (the high byte set: the index of the system colour). Empty for
// a text that is none of these.
std::optional<QColor> VclColor(const std::string& value);
// The colour of a component's property, or the fallback when it has none that is a colour.
QColor ColorProp(const ToolsAPI::TDesignComponent& c, const char* name, const QColor& fallback);

// The font of a component: its own Font.* properties over the font it inherits from its
// parents (ParentFont, the default of True, takes the parent's font where the component has
// none of its own).
QFont VclFont(const ToolsAPI::TDesignComponent& c, const QFont& base);
QColor FontColor(const ToolsAPI::TDesignComponent& c, const QColor& base);

// A string value of a component as the form stores it: wide strings as they are, narrow ones in
// the code page of the component's font.
QString FormString(const ToolsAPI::TDesignComponent& c, const ToolsAPI::TDesignProperty& p);
// A string property as a widget text; the platform's "&" marks the accelerator in both.
QString TextProp(const ToolsAPI::TDesignComponent& c, const char* name);
// The bytes of a binary property (Glyph.Data, Picture.Data); empty for none.
std::string_view BinaryProp(const ToolsAPI::TDesignComponent& c, const char* name);
// The items of a string list property ("Items.Strings", "Lines.Strings"), in order.
QStringList StringsProp(const ToolsAPI::TDesignComponent& c, const char* name);

// The platform's Alignment (taLeftJustify, taRightJustify, taCenter) and a label's Layout
// (tlTop, tlCenter, tlBottom) as Qt alignment flags.
Qt::Alignment VclAlignment(const ToolsAPI::TDesignComponent& c, Qt::Alignment fallback);

} // namespace workbench::designer
