#include "toolsapi/QtBridge.h"

#include "rtl/CodePage.h"
#include "rtl/Menus.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ToolsAPI {

QColor ToQColor(rtl::TColor color) {
    int32_t rgb = rtl::ColorToRGB(color);
    return QColor(rgb & 0xFF, (rgb >> 8) & 0xFF, (rgb >> 16) & 0xFF);
}

QFont ToQFont(const rtl::TFont& font) {
    QFont f(FromBytes(font.Name));
    f.setPointSize(std::max(1, font.Size()));
    f.setBold(font.Style.Contains(rtl::fsBold));
    f.setItalic(font.Style.Contains(rtl::fsItalic));
    f.setUnderline(font.Style.Contains(rtl::fsUnderline));
    f.setStrikeOut(font.Style.Contains(rtl::fsStrikeOut));
    return f;
}

namespace {

// Virtual key codes beside their Qt keys, for the keys that aren't letters, digits or F keys.
// The numeric pad comes last, so that a Qt key found in both gives the main keyboard's key.
constexpr std::array<std::pair<uint8_t, Qt::Key>, 31> kKeys{{
    {0x08, Qt::Key_Backspace},    {0x09, Qt::Key_Tab},          {0x0D, Qt::Key_Return},
    {0x1B, Qt::Key_Escape},       {0x20, Qt::Key_Space},        {0x21, Qt::Key_PageUp},
    {0x22, Qt::Key_PageDown},     {0x23, Qt::Key_End},          {0x24, Qt::Key_Home},
    {0x25, Qt::Key_Left},         {0x26, Qt::Key_Up},           {0x27, Qt::Key_Right},
    {0x28, Qt::Key_Down},         {0x2D, Qt::Key_Insert},       {0x2E, Qt::Key_Delete},
    {0xBA, Qt::Key_Semicolon},    {0xBB, Qt::Key_Equal},        {0xBC, Qt::Key_Comma},
    {0xBD, Qt::Key_Minus},        {0xBE, Qt::Key_Period},       {0xBF, Qt::Key_Slash},
    {0xC0, Qt::Key_QuoteLeft},    {0xDB, Qt::Key_BracketLeft},  {0xDC, Qt::Key_Backslash},
    {0xDD, Qt::Key_BracketRight}, {0xDE, Qt::Key_Apostrophe},   {0x6A, Qt::Key_Asterisk},
    {0x6B, Qt::Key_Plus},         {0x6D, Qt::Key_Minus},        {0x6E, Qt::Key_Period},
    {0x6F, Qt::Key_Slash},
}};

// What a US keyboard gives for a key with Shift held.
constexpr std::array<std::pair<uint8_t, Qt::Key>, 21> kShifted{{
    {0xBC, Qt::Key_Less},        {0xBE, Qt::Key_Greater},    {0xBA, Qt::Key_Colon},
    {0xBF, Qt::Key_Question},    {0xC0, Qt::Key_AsciiTilde}, {0xDB, Qt::Key_BraceLeft},
    {0xDD, Qt::Key_BraceRight},  {0xDC, Qt::Key_Bar},        {0xDE, Qt::Key_QuoteDbl},
    {0xBD, Qt::Key_Underscore},  {0xBB, Qt::Key_Plus},       {0x31, Qt::Key_Exclam},
    {0x32, Qt::Key_At},          {0x33, Qt::Key_NumberSign}, {0x34, Qt::Key_Dollar},
    {0x35, Qt::Key_Percent},     {0x36, Qt::Key_AsciiCircum}, {0x37, Qt::Key_Ampersand},
    {0x38, Qt::Key_Asterisk},    {0x39, Qt::Key_ParenLeft},  {0x30, Qt::Key_ParenRight},
}};

int QtKey(unsigned key) {
    if ((key >= 0x30 && key <= 0x39) || (key >= 0x41 && key <= 0x5A)) return int(key);
    if (key >= 0x60 && key <= 0x69) return Qt::Key_0 + int(key - 0x60);
    if (key >= 0x70 && key <= 0x87) return Qt::Key_F1 + int(key - 0x70);
    for (const auto& [vk, qt] : kKeys)
        if (vk == key) return qt;
    return 0;
}

// With Shift held, a symbol that Shift makes is taken back to the key it is on.
unsigned VirtualKey(int key, bool shifted) {
    if ((key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z))
        return unsigned(key);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return 0x70 + unsigned(key - Qt::Key_F1);
    if (shifted)
        for (const auto& [vk, qt] : kShifted)
            if (qt == key) return vk;
    for (const auto& [vk, qt] : kKeys)
        if (qt == key) return vk;
    for (const auto& [vk, qt] : kShifted)
        if (qt == key) return vk;
    return 0;
}

Qt::KeyboardModifiers Modifiers(uint16_t shift) {
    Qt::KeyboardModifiers m;
    if (shift & rtl::scShift) m |= Qt::ShiftModifier;
    if (shift & rtl::scCtrl) m |= Qt::ControlModifier;
    if (shift & rtl::scAlt) m |= Qt::AltModifier;
    return m;
}

} // namespace

// Straight between the code page and QString's UTF-16, without UTF-8 in between.
QString FromBytes(std::string_view cp1251) {
    return QString::fromStdU16String(rtl::Cp1251ToUtf16(cp1251));
}

std::string ToBytes(const QString& text) {
    return rtl::Utf16ToCp1251(text.toStdU16String());
}

QKeySequence ShortCutToKeySequence(rtl::TShortCut shortCut) {
    uint16_t key = 0, shift = 0;
    rtl::ShortCutToKey(shortCut, key, shift);
    int qt = QtKey(key);
    if (!qt) return {};
    return QKeySequence(QKeyCombination(Modifiers(shift), Qt::Key(qt)));
}

QList<QKeySequence> ShortCutToKeySequences(rtl::TShortCut shortCut) {
    QList<QKeySequence> list;
    QKeySequence own = ShortCutToKeySequence(shortCut);
    if (own.isEmpty()) return list;
    list << own;
    uint16_t key = 0, shift = 0;
    rtl::ShortCutToKey(shortCut, key, shift);
    if (shift & rtl::scShift)
        for (const auto& [vk, qt] : kShifted)
            if (vk == key) list << QKeySequence(QKeyCombination(Modifiers(shift), qt));
    return list;
}

rtl::TShortCut KeySequenceToShortCut(const QKeySequence& sequence) {
    if (sequence.isEmpty()) return rtl::TShortCut(0);
    QKeyCombination combination = sequence[0];
    Qt::KeyboardModifiers m = combination.keyboardModifiers();
    unsigned key = VirtualKey(combination.key(), m & Qt::ShiftModifier);
    if (!key) return rtl::TShortCut(0);
    uint16_t shift = 0;
    if (m & Qt::ShiftModifier) shift |= rtl::scShift;
    if (m & Qt::ControlModifier) shift |= rtl::scCtrl;
    if (m & Qt::AltModifier) shift |= rtl::scAlt;
    return rtl::ShortCut(uint16_t(key), shift);
}

} // namespace ToolsAPI
