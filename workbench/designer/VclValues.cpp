#include "workbench/designer/VclValues.h"

#include "toolsapi/QtBridge.h"
#include "workbench/model/FormFile.h"

#include <QFontDatabase>

#include <cstring>
#include <map>

namespace workbench::designer {

using ToolsAPI::FromBytes;
using ToolsAPI::TDesignComponent;
using ToolsAPI::TDesignProperty;
using ToolsAPI::TDesignValueKind;

namespace {

// The platform's system colours, by index, as a classic desktop scheme paints them.
QColor SystemColor(int index) {
    static const uint32_t rgb[] = {
        0xD4D0C8, // 0 scrollbar
        0x3A6EA5, // 1 background
        0x0A246A, // 2 active caption
        0x808080, // 3 inactive caption
        0xD4D0C8, // 4 menu
        0xFFFFFF, // 5 window
        0x000000, // 6 window frame
        0x000000, // 7 menu text
        0x000000, // 8 window text
        0xFFFFFF, // 9 caption text
        0xD4D0C8, // 10 active border
        0xD4D0C8, // 11 inactive border
        0x808080, // 12 app workspace
        0x0A246A, // 13 highlight
        0xFFFFFF, // 14 highlight text
        0xD4D0C8, // 15 button face
        0x808080, // 16 button shadow
        0x808080, // 17 gray text
        0x000000, // 18 button text
        0xD4D0C8, // 19 inactive caption text
        0xFFFFFF, // 20 button highlight
        0x404040, // 21 3D dark shadow
        0xD4D0C8, // 22 3D light
        0x000000, // 23 info text
        0xFFFFE1, // 24 info background
    };
    if (index < 0 || index >= int(sizeof rgb / sizeof rgb[0])) return QColor(0xD4D0C8);
    return QColor::fromRgb(rgb[index]);
}

const std::map<std::string, int>& ColorNames() {
    // The named colours: the standard ones as $00BBGGRR numbers, the system ones as
    // -1 - index, so that both fit one table.
    static const std::map<std::string, int> names = {
        {"clblack", 0x000000},        {"clmaroon", 0x000080},
        {"clgreen", 0x008000},        {"clolive", 0x008080},
        {"clnavy", 0x800000},         {"clpurple", 0x800080},
        {"clteal", 0x808000},         {"clgray", 0x808080},
        {"clsilver", 0xC0C0C0},       {"clred", 0x0000FF},
        {"cllime", 0x00FF00},         {"clyellow", 0x00FFFF},
        {"clblue", 0xFF0000},         {"clfuchsia", 0xFF00FF},
        {"claqua", 0xFFFF00},         {"clltgray", 0xC0C0C0},
        {"cldkgray", 0x808080},       {"clwhite", 0xFFFFFF},
        {"clmoneygreen", 0xC0DCC0},   {"clskyblue", 0xF0CAA6},
        {"clcream", 0xF0FBFF},        {"clmedgray", 0xA4A0A0},
        {"clscrollbar", -1 - 0},      {"clbackground", -1 - 1},
        {"clactivecaption", -1 - 2},  {"clinactivecaption", -1 - 3},
        {"clmenu", -1 - 4},           {"clwindow", -1 - 5},
        {"clwindowframe", -1 - 6},    {"clmenutext", -1 - 7},
        {"clwindowtext", -1 - 8},     {"clcaptiontext", -1 - 9},
        {"clactiveborder", -1 - 10},  {"clinactiveborder", -1 - 11},
        {"clappworkspace", -1 - 12},  {"clhighlight", -1 - 13},
        {"clhighlighttext", -1 - 14}, {"clbtnface", -1 - 15},
        {"clbtnshadow", -1 - 16},     {"clgraytext", -1 - 17},
        {"clbtntext", -1 - 18},       {"clinactivecaptiontext", -1 - 19},
        {"clbtnhighlight", -1 - 20},  {"cl3ddkshadow", -1 - 21},
        {"cl3dlight", -1 - 22},       {"clinfotext", -1 - 23},
        {"clinfobk", -1 - 24},
    };
    return names;
}

QColor FromBgr(uint32_t bgr) {
    return QColor(int(bgr & 0xFF), int((bgr >> 8) & 0xFF), int((bgr >> 16) & 0xFF));
}

} // namespace

std::optional<QColor> VclColor(const std::string& value) {
    if (value.empty()) return std::nullopt;
    std::string lower;
    for (char c : value)
        lower += (c >= 'A' && c <= 'Z') ? char(c + 32) : c;
    auto it = ColorNames().find(lower);
    if (it != ColorNames().end())
        return it->second < 0 ? SystemColor(-1 - it->second) : FromBgr(uint32_t(it->second));
    // A number, decimal or $hex, as an integer value stores it.
    char* end = nullptr;
    long long n = lower[0] == '$' ? std::strtoll(lower.c_str() + 1, &end, 16)
                                  : std::strtoll(lower.c_str(), &end, 10);
    if (!end || *end != '\0' || end == lower.c_str()) return std::nullopt;
    uint32_t v = uint32_t(n);
    if (v & 0xFF000000u) return SystemColor(int(v & 0xFF));
    return FromBgr(v);
}

QColor ColorProp(const TDesignComponent& c, const char* name, const QColor& fallback) {
    const TDesignProperty* p = c.FindProperty(name);
    if (!p) return fallback;
    std::string text = p->Kind == TDesignValueKind::Integer ? std::to_string(p->Int) : p->Str;
    return VclColor(text).value_or(fallback);
}

namespace {
bool OwnFont(const TDesignComponent& c) {
    return c.FindProperty("Font.Name") || c.FindProperty("Font.Height") ||
           c.FindProperty("Font.Size") || c.FindProperty("Font.Style");
}
} // namespace

QFont VclFont(const TDesignComponent& c, const QFont& base) {
    QFont f = base;
    if (!OwnFont(c)) return f;
    // A font's name is a string of the form too: '宋体' in a Chinese form's code page.
    if (QString family = TextProp(c, "Font.Name"); !family.isEmpty()) {
        // The classic bitmap fonts are not on this system: their metrics match a sans face.
        if (family == "MS Sans Serif" || family == "MS Shell Dlg" || family == "Tahoma")
            family = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
        f.setFamily(family);
    }
    if (const TDesignProperty* h = c.FindProperty("Font.Height");
        h && h->Kind == TDesignValueKind::Integer && h->Int != 0) {
        // Negative: the character height in pixels; positive: the cell height, leading included.
        int px = int(h->Int < 0 ? -h->Int : h->Int * 4 / 5);
        f.setPixelSize(std::max(1, px));
    } else if (const TDesignProperty* s = c.FindProperty("Font.Size");
               s && s->Kind == TDesignValueKind::Integer && s->Int > 0) {
        f.setPointSize(int(s->Int));
    }
    if (const TDesignProperty* st = c.FindProperty("Font.Style")) {
        const std::string& t = st->Text;
        f.setBold(t.find("fsBold") != std::string::npos);
        f.setItalic(t.find("fsItalic") != std::string::npos);
        f.setUnderline(t.find("fsUnderline") != std::string::npos);
        f.setStrikeOut(t.find("fsStrikeOut") != std::string::npos);
    }
    return f;
}

QColor FontColor(const TDesignComponent& c, const QColor& base) {
    return ColorProp(c, "Font.Color", base);
}

QString FormString(const TDesignComponent& c, const TDesignProperty& p) {
    return QString::fromStdU16String(DesignString(p, FormCodePage(c)));
}

QString TextProp(const TDesignComponent& c, const char* name) {
    const TDesignProperty* p = c.FindProperty(name);
    if (!p || p->Kind != TDesignValueKind::String) return {};
    return FormString(c, *p);
}

std::string_view BinaryProp(const TDesignComponent& c, const char* name) {
    const TDesignProperty* p = c.FindProperty(name);
    return p && p->Kind == TDesignValueKind::Binary ? std::string_view(p->Str) : std::string_view();
}

QStringList StringsProp(const TDesignComponent& c, const char* name) {
    QStringList items;
    const TDesignProperty* p = c.FindProperty(name);
    if (!p || p->Kind != TDesignValueKind::List) return items;
    // The list's text is "('a' 'b')": each item is read back through the form file parser.
    std::string text = p->Text.substr(1, p->Text.size() - 2);
    size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && text[i] == ' ')
            ++i;
        size_t start = i;
        // One item: quoted runs and #n codes without a blank between them.
        while (i < text.size() && text[i] != ' ') {
            if (text[i] == '\'') {
                ++i;
                while (i < text.size()) {
                    if (text[i] == '\'' && i + 1 < text.size() && text[i + 1] == '\'')
                        i += 2;
                    else if (text[i] == '\'')
                        break;
                    else
                        ++i;
                }
            }
            ++i;
        }
        if (i > start) {
            try {
                TDesignProperty item = ParseDesignProperty("Item", text.substr(start, i - start));
                items << (item.Kind == TDesignValueKind::String ? FormString(c, item)
                                                                : FromBytes(item.Text));
            } catch (const rtl::Exception&) {
                items << FromBytes(text.substr(start, i - start));
            }
        }
    }
    return items;
}

Qt::Alignment VclAlignment(const TDesignComponent& c, Qt::Alignment fallback) {
    Qt::Alignment h = fallback & Qt::AlignHorizontal_Mask;
    Qt::Alignment v = fallback & Qt::AlignVertical_Mask;
    std::string a = c.StrProp("Alignment");
    if (a == "taRightJustify")
        h = Qt::AlignRight;
    else if (a == "taCenter")
        h = Qt::AlignHCenter;
    else if (a == "taLeftJustify")
        h = Qt::AlignLeft;
    std::string l = c.StrProp("Layout");
    if (l == "tlCenter")
        v = Qt::AlignVCenter;
    else if (l == "tlBottom")
        v = Qt::AlignBottom;
    else if (l == "tlTop")
        v = Qt::AlignTop;
    return h | v;
}

} // namespace workbench::designer
