// Unit PropTypes: the property value types by whose class the extended settings editor chooses
// a richer control: a check list, a choice from a list, a memo, a font, a picture.
//
// The classes add nothing but a type, or one published property, so object streams need no
// special case for them: the string lists store their lines as the defined property "Strings"
// (with the property's path in front, "Colors.Strings") and their published property as a flat
// record ("Colors.CheckedInds"); a font stores its published properties, a picture its defined
// binary property "Data".
//
// The editor reaches these classes only through a block of functions published as the user data
// "_@SpcEditorPro" of the global TInitData, which the specification layer fills with this
// unit's block when the program starts.
#pragma once

#include "rtl/Graphics.h"
#include "rtl/Lists.h"
#include "rtl/TypInfo.h"

#include <string>
#include <vector>

namespace zelvane {

// A hot key in its text form ("Ctrl+S"), recognised by the editor by its type name.
using rtl::TShortCutString;

// Lines of which some are checked: CheckedInds holds the zero-based indices of the checked
// lines as decimal numbers joined by "," in ascending order ("0,2"); empty when none is.
class TCheckStrings : public rtl::TStringList {
    RTL_CLASS(TCheckStrings, rtl::TStringList)
public:
    TCheckStrings() = default;
    std::string CheckedInds;
};

// Lines of which one is chosen: ItemIndex is its zero-based index, -1 for none.
class TSelectStrings : public rtl::TStringList {
    RTL_CLASS(TSelectStrings, rtl::TStringList)
public:
    TSelectStrings() = default;
    int32_t ItemIndex = -1;
};

// Lines edited as one text.
class TMemoStrings : public rtl::TStringList {
    RTL_CLASS(TMemoStrings, rtl::TStringList)
public:
    TMemoStrings() = default;
};

class TFontEx : public rtl::TFont {
    RTL_CLASS(TFontEx, rtl::TFont)
public:
    TFontEx() = default;
};

class TPictureEx : public rtl::TPicture {
    RTL_CLASS(TPictureEx, rtl::TPicture)
public:
    TPictureEx() = default;
};

// The checked indices of a CheckedInds text, in the order they stand; negative numbers and
// what isn't a number are passed over.
std::vector<int> CheckedIndexes(const std::string& checkedInds);
// The CheckedInds text of indices: ascending, without duplicates, joined by ",".
std::string MakeCheckedInds(std::vector<int> indexes);

// The kinds of values GetValueKind tells apart.
enum TPropValueKind : int {
    pvkOther = 0,
    pvkStrings = 1,
    pvkCheckStrings = 2,
    pvkSelectStrings = 3,
    pvkFont = 4,
    pvkPicture = 5,
    pvkGraphic = 6,
};

// The block of functions published as "_@SpcEditorPro", in this order.
struct TSpcEditorProFuncs {
    std::string (*GetStringsText)(rtl::TStrings* strings);
    void (*GetCheckStrings)(TCheckStrings* strings, std::string& text, std::string& checkedInds);
    void (*GetSelectStrings)(TSelectStrings* strings, std::string& text, int32_t& itemIndex);
    // The font's properties as a binary snapshot (GetProps with osfBin), which leaves out what
    // equals the defaults.
    std::string (*GetFontProps)(rtl::TFont* font);
    // The same for a picture or a graphic.
    std::string (*GetPictureProps)(rtl::TPersistent* picture);
    void (*SetStringsText)(rtl::TStrings* strings, const std::string& text);
    // The text, then CheckedInds as given.
    void (*SetCheckStrings)(TCheckStrings* strings, const std::string& text,
                            const std::string& checkedInds);
    void (*SetSelectStrings)(TSelectStrings* strings, const std::string& text, int32_t itemIndex);
    // The pitch is reset to its default first, since a snapshot leaves a default pitch out.
    void (*SetFontProps)(rtl::TFont* font, const std::string& props);
    // The picture or graphic is emptied first.
    void (*SetPictureProps)(rtl::TPersistent* picture, const std::string& props);
    // The first of: check strings, select strings, strings, font, picture, graphic.
    int (*GetValueKind)(rtl::TObject* obj);
};

inline constexpr const char* SpcEditorProName = "_@SpcEditorPro";

// The block itself.
const TSpcEditorProFuncs& SpcEditorProFuncs();

} // namespace zelvane
