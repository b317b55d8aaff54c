// The property access layer: enumerations and sets as text, dotted paths through nested
// objects, values as text, raw slots and variants, field classes and component paths.
#include "persistence/DataHndl.h"

#include "TestModel.h"

#include <gtest/gtest.h>

using namespace zelvane;
using namespace model;

namespace {

PTypeInfo ShapesType() {
    return rtl::TypeInfo<TShapes>();
}
PTypeInfo ShapeType() {
    return rtl::TypeInfo<TShape>();
}

uint32_t Bits(std::initializer_list<TShape> shapes) {
    return TShapes(shapes).Bits();
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Enumerations and sets

TEST(SetText, WrittenInBitOrderWithoutBlanksAndReadBack) {
    for (uint32_t bits = 0; bits < 8; ++bits)
        EXPECT_EQ(StrToSet(ShapesType(), SetToStr(ShapesType(), bits)), bits);
    const std::pair<uint32_t, const char*> cases[] = {
        {0, "[]"}, {Bits({shTriangle, shRectangle}), "[shRectangle,shTriangle]"}};
    for (const auto& [bits, text] : cases)
        EXPECT_EQ(SetToStr(ShapesType(), bits), text);
}

TEST(EnumAndSetText, MalformedTextFails) {
    const std::tuple<PTypeInfo, const char*, const char*> cases[] = {
        {ShapesType(), "shCircle", "shCircle is incorrect value for set."},
        {ShapesType(), "[shCircle", "[shCircle is incorrect value for set."},
        {ShapesType(), "[", "[ is incorrect value for set."},
        {ShapesType(), "[shCircle,shSquare]", "shSquare is unacceptable value for type."},
        {ShapeType(), "[]", "Unsupported variable type."}};
    for (const auto& [type, text, message] : cases)
        EXPECT_EQ(DataError([&] { StrToSet(type, text); }), message) << text;
    EXPECT_EQ(DataError([] { StrToEnum(ShapeType(), "shSquare"); }),
              "shSquare is unacceptable value for type.");
}

// ---------------------------------------------------------------------------------------------
// Paths

TEST(FindPropInfo, WalksNestedObjectsAndStopsWhereThePathCantGoOn) {
    TSample sample, parent, child;
    parent.Child = &child;
    // Names are found without regard to case. A nil object or a property that is no object ends
    // the walk with the property reached.
    const std::tuple<TObject*, const char*, const char*, TObject*> cases[] = {
        {&sample, "Look.Size", "Size", sample.GetLook()},
        {&sample, "look.SIZE", "Size", sample.GetLook()},
        {&sample, "Child.Count", "Child", &sample},
        {&parent, "Child.Count", "Count", &child},
        {&sample, "Count.Whatever.Else", "Count", &sample},
        {&sample, "Nope", nullptr, &sample},
        {&sample, "Nope.Size", nullptr, nullptr},
        {&sample, "Look.Nope", nullptr, nullptr},
        {&sample, "", nullptr, nullptr},
        {nullptr, "Count", nullptr, nullptr}};
    for (const auto& [start, path, name, holder] : cases) {
        SCOPED_TRACE(path);
        TObject* reached = start;
        PPropInfo p = FindPropInfo(reached, path);
        EXPECT_EQ(p ? p->Name : "", name ? name : "");
        if (p) {
            EXPECT_EQ(reached, holder);
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Values as text

TEST(PropText, EachKindByItsTextAndPathsIntoNestedObjects) {
    TSample s, t;
    s.Count = -42;
    s.Letter = 'Z';
    s.Shape = shTriangle;
    s.Shapes = {shRectangle, shCircle};
    s.Text = "hello";
    s.Wide = u"wide";
    s.Flag = true;
    s.Color = clBlack;
    s.Ratio = 0.5;
    s.Stamp = EncodeDate(2024, 3, 5).Value + EncodeTime(14, 7, 9, 0).Value;
    s.Day = EncodeDate(2001, 12, 31).Value;
    s.Clock = EncodeTime(8, 30, 0, 0).Value;
    s.GetLook()->Name = "Arial";
    s.GetLook()->Color = clRed;
    // Floats, dates and times by their type names; colours by name.
    const std::pair<const char*, const char*> cases[] = {
        {"Count", "-42"},        {"Letter", "Z"},
        {"Shape", "shTriangle"}, {"Shapes", "[shRectangle,shCircle]"},
        {"Text", "hello"},       {"Wide", "wide"},
        {"Flag", "True"},        {"Color", "clBlack"},
        {"Ratio", "0.5"},        {"Stamp", "3/5/2024 14:07:09"},
        {"Day", "12/31/2001"},   {"Clock", "08:30:00"},
        {"Look.Name", "Arial"},  {"Look.Color", "clRed"}};
    for (const auto& [name, text] : cases) {
        EXPECT_EQ(GetPropAsText(&s, name), text);
        SetPropByText(&t, name, text);
    }
    EXPECT_NEAR(t.Stamp.Value, s.Stamp.Value, 1e-8);
    EXPECT_NEAR(t.Clock.Value, s.Clock.Value, 1e-8);
    t.Stamp = s.Stamp;
    t.Clock = s.Clock;
    EXPECT_EQ(PropsOf(&t, osfText), PropsOf(&s, osfText));
}

TEST(PropText, ReadingIsLooseAndEmptyTextStoresCharacterZero) {
    const std::pair<const char*, const char*> cases[] = {
        {"Letter", "xyz"}, {"Shape", "shrectangle"}, {"Flag", "false"}, {"Ratio", "2.25"}};
    TSample s;
    for (const auto& [name, text] : cases)
        SetPropByText(&s, name, text);
    EXPECT_EQ(std::make_tuple(s.Letter, s.Shape, s.Flag, s.Ratio),
              std::make_tuple('x', shRectangle, false, 2.25));
    SetPropByText(&s, "Letter", "");
    EXPECT_EQ(s.Letter, '\0');
}

TEST(PropText, ErrorsPassThroughOrNameTheValue) {
    TSample s;
    s.Color = static_cast<TColor>(0x123456);
    EXPECT_THROW(SetPropByText(&s, "Count", "12x"), EConvertError);
    EXPECT_THROW(SetPropByText(&s, "Ratio", "half"), EConvertError);
    // A colour without a name gives an empty text, which doesn't read back. With the nested
    // object missing, the path ends at the object property itself.
    EXPECT_EQ(GetPropAsText(&s, "Color"), "");
    const std::string unsupported = "Unsupported variable type.";
    const std::tuple<const char*, const char*, std::string> sets[] = {
        {"Shape", "shSquare", "shSquare is unacceptable value for type."},
        {"Color", "", " is unacceptable value for TColor."},
        {"Color", "255", "255 is unacceptable value for TColor."},
        {"Look.Nope", "x", "Property by name ''Look.Nope'' does not exist."},
        {"Child", "1", unsupported}};
    for (const auto& [name, text, message] : sets)
        EXPECT_EQ(DataError([&] { SetPropByText(&s, name, text); }), message) << name;
    const std::pair<const char*, std::string> gets[] = {
        {"Nope", "Property by name ''Nope'' does not exist."},
        {"Child.Text", unsupported},
        {"Child", unsupported}};
    for (const auto& [name, message] : gets)
        EXPECT_EQ(DataError([&] { GetPropAsText(&s, name); }), message) << name;
    EXPECT_EQ(s.Color, static_cast<TColor>(0x123456));
}

// ---------------------------------------------------------------------------------------------
// Raw values and variants

TEST(PropPtr, OrdinalsTravelInTheSlot) {
    TSample s;
    s.Shapes = {shTriangle};
    void* slot = nullptr;
    GetPropAsPtr(&s, "Shapes", slot);
    EXPECT_EQ(reinterpret_cast<intptr_t>(slot), 4);
    SetPropByPtr(&s, "Shape", reinterpret_cast<void*>(intptr_t(shTriangle)));
    EXPECT_EQ(s.Shape, shTriangle);

    TSample child;
    SetPropByPtr(&s, "Child", &child);
    EXPECT_EQ(s.Child, &child);
    GetPropAsPtr(&s, "Child", slot);
    EXPECT_EQ(slot, &child);
}

TEST(PropPtr, FloatsAndStringsThroughTheCallersVariable) {
    TSample s;
    s.Ratio = 1.5;
    s.Text = "abc";
    long double f = 0;
    void* slot = &f;
    GetPropAsPtr(&s, "Ratio", slot);
    EXPECT_EQ(f, 1.5L);
    std::string text;
    slot = &text;
    GetPropAsPtr(&s, "Text", slot);
    EXPECT_EQ(text, "abc");

    f = 3.25L;
    SetPropByPtr(&s, "Ratio", &f);
    text = "xyz";
    SetPropByPtr(&s, "Text", &text);
    EXPECT_EQ(s.Ratio, 3.25);
    EXPECT_EQ(s.Text, "xyz");

    slot = nullptr;
    EXPECT_THROW(GetPropAsPtr(&s, "Ratio", slot), EInvalidPointer);
    EXPECT_EQ(DataError([&] { GetPropAsPtr(&s, "Data", slot); }), "Unsupported variable type.");
    EXPECT_EQ(DataError([&] { SetPropByPtr(&s, "Big", nullptr); }), "Unsupported variable type.");
}

TEST(PropVariant, KindsMapToIntegerRealAndString) {
    TSample s;
    s.Count = 9;
    s.Ratio = 0.25;
    s.Text = "t";
    Variant v = GetPropAsVariant(&s, "Count");
    EXPECT_EQ(v.VarType(), varInteger);
    EXPECT_EQ(v.AsInteger(), 9);
    EXPECT_EQ(GetPropAsVariant(&s, "Shape").AsInteger(), shCircle);
    EXPECT_EQ(GetPropAsVariant(&s, "Ratio").VarType(), varDouble);
    EXPECT_EQ(GetPropAsVariant(&s, "Text").VarType(), varString);

    SetPropByVariant(&s, "Count", Variant("12"));
    SetPropByVariant(&s, "Ratio", Variant(int32_t(3)));
    SetPropByVariant(&s, "Text", Variant(int32_t(44)));
    SetPropByVariant(&s, "Look.Size", Variant(int32_t(11)));
    EXPECT_EQ(std::make_tuple(s.Count, s.Ratio, s.Text, s.GetLook()->Size),
              std::make_tuple(12, 3.0, "44", 11));
    EXPECT_EQ(DataError([&] { GetPropAsVariant(&s, "OnChange"); }), "Unsupported variable type.");
    EXPECT_EQ(DataError([&] { SetPropByVariant(&s, "Nope", Variant(1)); }),
              "Property by name ''Nope'' does not exist.");
}

// ---------------------------------------------------------------------------------------------
// Field classes

TEST(FieldClasses, FoundByNameFromTheFieldTableThenTheRegistry) {
    TFieldHolder holder;
    ASSERT_EQ(GetClass("TFoo"), nullptr) << "the test needs TFoo unregistered";
    EXPECT_EQ(GetFieldClass(&holder, "tfoo"), TFoo::StaticClass());
    EXPECT_EQ(GetFieldClass(&holder, "TNothing"), nullptr);
    RegisterClass(TItem::StaticClass());
    EXPECT_EQ(GetFieldClass(&holder, "TItem"), TItem::StaticClass());
    UnRegisterClass(TItem::StaticClass());
}

TEST(FieldClasses, RegisteredForALoadAndRemovedAfterwards) {
    TFieldHolder holder;
    RegisterClass(TLook::StaticClass());
    std::vector<TClass> added{TSample::StaticClass()};
    RegisterFieldClasses(&holder, added);
    // Only what the registry didn't know is registered and returned.
    ASSERT_EQ(added.size(), 1u);
    EXPECT_EQ(added[0], TFoo::StaticClass());
    EXPECT_EQ(GetClass("TFoo"), TFoo::StaticClass());
    UnRegisterFieldClasses(added);
    EXPECT_EQ(GetClass("TFoo"), nullptr);
    EXPECT_EQ(GetClass("TLook"), TLook::StaticClass());
    UnRegisterClass(TLook::StaticClass());
}

// ---------------------------------------------------------------------------------------------
// Component paths

class NamePaths : public ::testing::Test {
protected:
    NamePaths() {
        root.SetName("Form");
        panel = new TWidget(&root);
        panel->SetName("Panel");
        button = new TWidget(panel);
        button->SetName("Button");
    }
    TWidget root;
    TWidget* panel;
    TWidget* button;
};

TEST_F(NamePaths, FindingsHoldTheHolderAndItsProperty) {
    TAnalysisFindings f;
    ASSERT_TRUE(AnalyseNamePath(&root, "Panel.Button.Look.Size", f));
    EXPECT_EQ(f.ComponentPath + "|" + f.PropertyPath, "Panel.Button|Look.Size");
    EXPECT_EQ(f.PropInfo, GetPropInfo(TLook::StaticClass(), "Size"));
    EXPECT_EQ(f.Component, button->GetLook());

    ASSERT_TRUE(AnalyseNamePath(&root, "Panel.Nope", f));
    EXPECT_EQ(f.Component, panel);
    EXPECT_EQ(f.PropInfo, nullptr);

    EXPECT_FALSE(AnalyseNamePath(&root, "", f));
    EXPECT_FALSE(AnalyseNamePath(nullptr, "Caption", f));
}
