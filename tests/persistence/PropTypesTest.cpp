// Property value classes: how they are stored in object streams, how the editor's block of
// functions reads and writes them, and how it classifies a value.
#include "persistence/PropTypes.h"
#include "persistence/DataHndl.h"
#include "persistence/Storage.h"

#include "TestModel.h"

#include <gtest/gtest.h>

#include <memory>

using namespace zelvane;
using namespace rtl;

namespace {

class TValues : public TPersistent {
    RTL_CLASS(TValues, TPersistent)
public:
    TValues()
        : colors(std::make_unique<TCheckStrings>()), mode(std::make_unique<TSelectStrings>()),
          notes(std::make_unique<TMemoStrings>()), font(std::make_unique<TFontEx>()) {}
    std::unique_ptr<TCheckStrings> colors;
    std::unique_ptr<TSelectStrings> mode;
    std::unique_ptr<TMemoStrings> notes;
    std::unique_ptr<TFontEx> font;
    TShortCutString Key = "Ctrl+S";
};

RTL_BEGIN_CLASS(TValues)
Property(
    "Colors", [](const TValues& v) { return v.colors.get(); },
    [](TValues& v, TCheckStrings* s) { v.colors->Assign(s); });
Property(
    "Mode", [](const TValues& v) { return v.mode.get(); },
    [](TValues& v, TSelectStrings* s) { v.mode->Assign(s); });
Property(
    "Notes", [](const TValues& v) { return v.notes.get(); },
    [](TValues& v, TMemoStrings* s) { v.notes->Assign(s); });
Property(
    "Font", [](const TValues& v) { return v.font.get(); },
    [](TValues& v, TFontEx* f) { v.font->Assign(f); });
Property("Key", &TValues::Key);
RTL_END_CLASS

const TSpcEditorProFuncs& Funcs() {
    return SpcEditorProFuncs();
}

TEST(PropTypes, ListsStoreTheirLinesAndTheirValueUnderThePropertysPath) {
    TValues values;
    values.colors->SetText("Red\r\nGreen\r\n");
    values.colors->CheckedInds = "1";
    values.mode->SetText("One\r\n");
    values.mode->ItemIndex = -1;
    values.notes->SetText("a\r\n");
    std::string data;
    TObjectSaver saver;
    TPersistent* objects[] = {&values};
    saver.GetObjectProps(objects, data);
    std::string names;
    std::vector<model::Root> roots = model::Roots(data);
    for (const std::string& name : roots.at(0).Props)
        names += name + " ";
    EXPECT_EQ(names, "Colors.CheckedInds Colors.Strings Mode.ItemIndex Mode.Strings Notes.Strings "
                     "Font.Charset Font.Color Font.Height Font.Pitch Font.Style Key ");
    EXPECT_NE(data.find(std::string("\x0E") + "Colors.Strings" + "\x01\x06\x03" + "Red" +
                        "\x06\x05" + "Green" + '\0'),
              std::string::npos);
    // A chosen index of -1 is stored as it is.
    EXPECT_NE(data.find(std::string("\x0E") + "Mode.ItemIndex" + "\x02\xFF"), std::string::npos);
}

TEST(PropTypes, ValueKindsInTheirOrder) {
    const std::pair<std::shared_ptr<TObject>, int> cases[] = {
        {std::make_shared<TCheckStrings>(), 2}, {std::make_shared<TSelectStrings>(), 3},
        {std::make_shared<TMemoStrings>(), 1},  {std::make_shared<TStringList>(), 1},
        {std::make_shared<TFontEx>(), 4},       {std::make_shared<TFont>(), 4},
        {std::make_shared<TPictureEx>(), 5},    {std::make_shared<TPicture>(), 5},
        {std::make_shared<TBitmap>(), 6},       {std::make_shared<TIcon>(), 6},
        {std::make_shared<model::TFoo>(), 0},   {nullptr, 0}};
    for (const auto& [obj, kind] : cases)
        EXPECT_EQ(Funcs().GetValueKind(obj.get()), kind) << (obj ? obj->ClassName() : "nil");
}

TEST(PropTypes, TextAccessors) {
    TCheckStrings check;
    Funcs().SetCheckStrings(&check, "a\r\nb\r\n", "0,5");
    // The indices stay as given, even past the last line.
    EXPECT_EQ(check.CheckedInds, "0,5");
    EXPECT_EQ(check.Count(), 2);
    std::string text, inds;
    Funcs().GetCheckStrings(&check, text, inds);
    EXPECT_EQ(text, "a\r\nb\r\n");
    EXPECT_EQ(inds, "0,5");
    Funcs().SetCheckStrings(&check, "only\r\n", inds);
    EXPECT_EQ(check.CheckedInds, "0,5");

    TSelectStrings select;
    Funcs().SetSelectStrings(&select, "x\r\ny\r\nz\r\n", 2);
    int32_t index = 0;
    Funcs().GetSelectStrings(&select, text, index);
    EXPECT_EQ(text, "x\r\ny\r\nz\r\n");
    EXPECT_EQ(index, 2);

    TMemoStrings memo;
    Funcs().SetStringsText(&memo, "one\r\ntwo");
    EXPECT_EQ(memo.Count(), 2);
    EXPECT_EQ(Funcs().GetStringsText(&memo), "one\r\ntwo\r\n");
}

TEST(PropTypes, CheckedIndexes) {
    EXPECT_EQ(CheckedIndexes("0,2"), (std::vector<int>{0, 2}));
    EXPECT_EQ(CheckedIndexes(""), (std::vector<int>{}));
    EXPECT_EQ(CheckedIndexes("3,-1,1,x,,7"), (std::vector<int>{3, 1, 7}));
    EXPECT_EQ(CheckedIndexes("99999999999999999999"), (std::vector<int>{}));
    EXPECT_EQ(MakeCheckedInds({4, 0, 2, 0}), "0,2,4");
    EXPECT_EQ(MakeCheckedInds({}), "");
}

TEST(PropTypes, FontSnapshotRoundTrip) {
    TFontEx source;
    source.Name = "Courier New";
    source.Height = -16;
    source.Style = {fsUnderline};
    source.Color = clMaroon;
    source.Charset = RUSSIAN_CHARSET;
    std::string snapshot = Funcs().GetFontProps(&source);
    TFont target;
    target.Pitch = fpVariable;
    Funcs().SetFontProps(&target, snapshot);
    EXPECT_TRUE(target == source);
}

TEST(PropTypes, PictureSnapshotRoundTripAndEmptying) {
    TPictureEx source;
    auto icon = std::make_unique<TIcon>();
    icon->SetBytes(std::string("\x00\x00\x01\x00icon-bytes", 14));
    source.SetGraphic(icon.get());
    std::string snapshot = Funcs().GetPictureProps(&source);
    TPicture target;
    Funcs().SetPictureProps(&target, snapshot);
    ASSERT_NE(target.Graphic(), nullptr);
    EXPECT_EQ(target.Graphic()->ClassName(), "TIcon");
    EXPECT_EQ(target.Graphic()->Bytes(), icon->Bytes());

    // An empty picture's snapshot empties the target, which is cleared before it is read.
    TPictureEx empty;
    Funcs().SetPictureProps(&target, Funcs().GetPictureProps(&empty));
    EXPECT_EQ(target.Graphic(), nullptr);
}

} // namespace
