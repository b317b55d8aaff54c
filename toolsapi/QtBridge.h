// Qt text, colours, fonts and keys in one place: Windows-1251 text to QString and back, and the platform's
// 16-bit shortcuts (a virtual key code and Shift, Ctrl, Alt bits) to Qt key sequences and back.
//
// A key with Shift on a punctuation key reaches Qt as the shifted symbol when a real keyboard
// sends it ("Ctrl+Shift+," arrives as Ctrl+Shift+"<" on a US layout), so a shortcut is given to
// an action as a list: its own sequence first, then what the keyboard delivers for it.
#pragma once

#include "rtl/Graphics.h"
#include "rtl/TypInfo.h"

#include <QColor>
#include <QFont>

#include <QKeySequence>
#include <QList>
#include <QString>

#include <string>
#include <string_view>

namespace ToolsAPI {

QString FromBytes(std::string_view cp1251);
std::string ToBytes(const QString& text);

// The colour, with the system's colours resolved.
QColor ToQColor(rtl::TColor color);
// The font's name, point size and style.
QFont ToQFont(const rtl::TFont& font);

// The sequence of the shortcut; empty for 0 or a key Qt has no name for.
QKeySequence ShortCutToKeySequence(rtl::TShortCut shortCut);
// The sequence, then the ones a US keyboard delivers for the same keys with Shift held.
QList<QKeySequence> ShortCutToKeySequences(rtl::TShortCut shortCut);
// The shortcut of the first key of the sequence, with a shifted symbol taken back to its key;
// 0 for an empty sequence or a key the platform has no code for.
rtl::TShortCut KeySequenceToShortCut(const QKeySequence& sequence);

} // namespace ToolsAPI
