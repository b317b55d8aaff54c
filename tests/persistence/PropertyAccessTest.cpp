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

// Walks path from start and expects it to end at the property called name of holder.
void ExpectPathEndsAt(TObject* start, const std::string& path, const std::string& name,
                      TObject* holder) {
    TObject* reached = start;
    PPropInfo p = FindPropInfo(reached, path);
    ASSERT_NE(p, nullptr) << path;
    EXPECT_EQ(p->Name, name) << path;
    EXPECT_EQ(reached, holder) << path;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Enumerations and sets

TEST(EnumText, NamesAndValuesBothWays) {
    EXPECT_EQ(EnumToStr(ShapeType(), shTriangle), "shTriangle");
    EXPECT_EQ(StrToEnum(ShapeType(), "SHCIRCLE"), shCircle);
    EXPECT_EQ(DataError([] { StrToEnum(ShapeType(), "shSquare"); }),
              "shSquare is unacceptable value for type.");
    EXPECT_TRUE(ContainsIn(ShapeType(), "shrectangle"));
    EXPECT_FALSE(ContainsIn(ShapeType(), "shSquare"));
}

TEST(EnumText, FillEnumNamesReplacesTheListInOrder) {
    TStringList list;
    list.Add("old");
    FillEnumNames(ShapeType(), &list);
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Text(), "shRectangle\r\nshCircle\r\nshTriangle\r\n");
}

TEST(SetText, WrittenInBitOrderWithoutBlanks) {
    EXPECT_EQ(SetToStr(ShapesType(), 0), "[]");
    EXPECT_EQ(SetToStr(ShapesType(), Bits({shTriangle, shRectangle})), "[shRectangle,shTriangle]");
    EXPECT_EQ(SetToStr(ShapesType(), Bits({shCircle})), "[shCircle]");
}

TEST(SetText, ReadsWhatItWrites) {
    for (uint32_t bits = 0; bits < 8; ++bits)
        EXPECT_EQ(StrToSet(ShapesType(), SetToStr(ShapesType(), bits)), bits);
}

TEST(SetText, ReadingIsLoose) {
    // Text before "[" is ignored, blanks around names and empty names too.
    EXPECT_EQ(StrToSet(ShapesType(), "x[shRectangle , shCircle]"), Bits({shRectangle, shCircle}));
    EXPECT_EQ(StrToSet(ShapesType(), "[ , shCircle,,]"), Bits({shCircle}));
    // Reading doesn't stop at "]": a name behind it still counts, an unterminated one doesn't.
    EXPECT_EQ(StrToSet(ShapesType(), "[shRectangle]shCircle,shTriangle"),
              Bits({shRectangle, shCircle}));
    // An unterminated last name is dropped once something was read.
    EXPECT_EQ(StrToSet(ShapesType(), "[shRectangle,shCircle"), Bits({shRectangle}));
}

TEST(SetText, MalformedTextFails) {
    EXPECT_EQ(DataError([] { StrToSet(ShapesType(), "shCircle"); }),
              "shCircle is incorrect value for set.");
    EXPECT_EQ(DataError([] { StrToSet(ShapesType(), "[shCircle"); }),
              "[shCircle is incorrect value for set.");
    EXPECT_EQ(DataError([] { StrToSet(ShapesType(), "["); }), "[ is incorrect value for set.");
    EXPECT_EQ(DataError([] { StrToSet(ShapesType(), "[shCircle,shSquare]"); }),
              "shSquare is unacceptable value for type.");
    EXPECT_EQ(DataError([] { StrToSet(ShapeType(), "[]"); }), "Unsupported variable type.");
}

// ---------------------------------------------------------------------------------------------
// Paths

TEST(FindPropInfo, WalksIntoNestedObjects) {
    TSample sample;
    ExpectPathEndsAt(&sample, "Look.Size", "Size", sample.GetLook());
    // Names are found without regard to case.
    TObject* holder = &sample;
    ASSERT_NE(FindPropInfo(holder, "look.SIZE"), nullptr);
}

TEST(FindPropInfo, StopsAtANilObjectWithTheReachableProperty) {
    TSample sample;
    ExpectPathEndsAt(&sample, "Child.Count", "Child", &sample);

    // Through an object that is there, the walk goes on.
    TSample child;
    sample.Child = &child;
    ExpectPathEndsAt(&sample, "Child.Count", "Count", &child);
}

TEST(FindPropInfo, StopsAtAPropertyThatIsNoObject) {
    TSample sample;
    ExpectPathEndsAt(&sample, "Count.Whatever.Else", "Count", &sample);
}

TEST(FindPropInfo, UnknownSegmentsGiveNil) {
    TSample sample;
    TObject* holder = &sample;
    EXPECT_EQ(FindPropInfo(holder, "Nope"), nullptr);
    EXPECT_EQ(FindPropInfo(holder, "Nope.Size"), nullptr);
    EXPECT_EQ(FindPropInfo(holder, "Look.Nope"), nullptr);
    EXPECT_EQ(FindPropInfo(holder, ""), nullptr);
    TObject* none = nullptr;
    EXPECT_EQ(FindPropInfo(none, "Count"), nullptr);
}

TEST(FindPropInfo, TheCallbackChoosesTheTypeSeen) {
    TSample sample;
    TObject* holder = &sample;
    auto asFoo = [](TObject*) -> PTypeInfo { return &TFoo::StaticClass()->TypeInfo; };
    EXPECT_EQ(FindPropInfo(holder, "Count", asFoo), nullptr);
    PPropInfo p = FindPropInfo(holder, "Caption", asFoo);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p, GetPropInfo(TFoo::StaticClass(), "Caption"));
}

// ---------------------------------------------------------------------------------------------
// Values as text

TEST(PropText, OrdinalsAndStrings) {
    TSample s;
    s.Count = -42;
    s.Letter = 'Z';
    s.Shape = shTriangle;
    s.Shapes = {shRectangle, shCircle};
    s.Text = "hello";
    s.Wide = u"wide";
    s.Flag = true;
    EXPECT_EQ(GetPropAsText(&s, "Count"), "-42");
    EXPECT_EQ(GetPropAsText(&s, "Letter"), "Z");
    EXPECT_EQ(GetPropAsText(&s, "Shape"), "shTriangle");
    EXPECT_EQ(GetPropAsText(&s, "Shapes"), "[shRectangle,shCircle]");
    EXPECT_EQ(GetPropAsText(&s, "Text"), "hello");
    EXPECT_EQ(GetPropAsText(&s, "Wide"), "wide");
    EXPECT_EQ(GetPropAsText(&s, "Flag"), "True");

    SetPropByText(&s, "Count", "17");
    SetPropByText(&s, "Letter", "xyz");
    SetPropByText(&s, "Shape", "shrectangle");
    SetPropByText(&s, "Shapes", "[shTriangle]");
    SetPropByText(&s, "Text", "bye");
    SetPropByText(&s, "Wide", "ww");
    SetPropByText(&s, "Flag", "false");
    EXPECT_EQ(s.Count, 17);
    EXPECT_EQ(s.Letter, 'x');
    EXPECT_EQ(s.Shape, shRectangle);
    EXPECT_EQ(s.Shapes, TShapes({shTriangle}));
    EXPECT_EQ(s.Text, "bye");
    EXPECT_EQ(s.Wide, u"ww");
    EXPECT_FALSE(s.Flag);
}

TEST(PropText, EmptyTextStoresCharacterZero) {
    TSample s;
    SetPropByText(&s, "Letter", "");
    EXPECT_EQ(s.Letter, '\0');
}

TEST(PropText, ConversionErrorsPassThrough) {
    TSample s;
    EXPECT_THROW(SetPropByText(&s, "Count", "12x"), EConvertError);
    EXPECT_THROW(SetPropByText(&s, "Ratio", "half"), EConvertError);
    EXPECT_EQ(DataError([&] { SetPropByText(&s, "Shape", "shSquare"); }),
              "shSquare is unacceptable value for type.");
}

TEST(PropText, ColoursByNameOnly) {
    TSample s;
    EXPECT_EQ(GetPropAsText(&s, "Color"), "clRed");
    SetPropByText(&s, "Color", "clBlack");
    EXPECT_EQ(s.Color, clBlack);
    // A colour without a name gives an empty text, which doesn't read back.
    s.Color = static_cast<TColor>(0x123456);
    EXPECT_EQ(GetPropAsText(&s, "Color"), "");
    EXPECT_EQ(DataError([&] { SetPropByText(&s, "Color", ""); }),
              " is unacceptable value for TColor.");
    EXPECT_EQ(DataError([&] { SetPropByText(&s, "Color", "255"); }),
              "255 is unacceptable value for TColor.");
    EXPECT_EQ(s.Color, static_cast<TColor>(0x123456));
}

TEST(PropText, FloatsDatesAndTimesByTheirTypeNames) {
    TSample s;
    s.Ratio = 0.5;
    TDateTime stamp = EncodeDate(2024, 3, 5).Value + EncodeTime(14, 7, 9, 0).Value;
    s.Stamp = stamp;
    s.Day = EncodeDate(2001, 12, 31).Value;
    s.Clock = EncodeTime(8, 30, 0, 0).Value;
    EXPECT_EQ(GetPropAsText(&s, "Ratio"), "0.5");
    EXPECT_EQ(GetPropAsText(&s, "Stamp"), "3/5/2024 14:07:09");
    EXPECT_EQ(GetPropAsText(&s, "Day"), "12/31/2001");
    EXPECT_EQ(GetPropAsText(&s, "Clock"), "08:30:00");

    TSample t;
    SetPropByText(&t, "Ratio", "2.25");
    SetPropByText(&t, "Stamp", "3/5/2024 14:07:09");
    SetPropByText(&t, "Day", "12/31/2001");
    SetPropByText(&t, "Clock", "08:30:00");
    EXPECT_DOUBLE_EQ(t.Ratio, 2.25);
    EXPECT_NEAR(t.Stamp.Value, stamp.Value, 1e-8);
    EXPECT_DOUBLE_EQ(t.Day.Value, s.Day.Value);
    EXPECT_NEAR(t.Clock.Value, s.Clock.Value, 1e-8);
}

TEST(PropText, OtherKindsAreUnsupported) {
    TSample s;
    for (const char* name : {"Look", "Child", "OnChange", "Big", "Data"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(DataError([&] { GetPropAsText(&s, name); }), "Unsupported variable type.");
        EXPECT_EQ(DataError([&] { SetPropByText(&s, name, "1"); }), "Unsupported variable type.");
    }
}

TEST(PropText, PathsReachNestedObjectsAndMissingOnesFail) {
    TSample s;
    SetPropByText(&s, "Look.Name", "Arial");
    SetPropByText(&s, "Look.Color", "clRed");
    EXPECT_EQ(s.GetLook()->Name, "Arial");
    EXPECT_EQ(GetPropAsText(&s, "Look.Color"), "clRed");
    EXPECT_EQ(DataError([&] { GetPropAsText(&s, "Nope"); }),
              "Property by name ''Nope'' does not exist.");
    EXPECT_EQ(DataError([&] { SetPropByText(&s, "Look.Nope", "x"); }),
              "Property by name ''Look.Nope'' does not exist.");
    // With the nested object missing, the path ends at the object property itself.
    EXPECT_EQ(DataError([&] { GetPropAsText(&s, "Child.Text"); }), "Unsupported variable type.");
}

// ---------------------------------------------------------------------------------------------
// Raw values and variants

TEST(PropPtr, OrdinalsTravelInTheSlot) {
    TSample s;
    s.Count = -5;
    s.Shapes = {shTriangle};
    void* slot = nullptr;
    GetPropAsPtr(&s, "Count", slot);
    EXPECT_EQ(reinterpret_cast<intptr_t>(slot), -5);
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
    EXPECT_EQ(s.Count, 12);
    EXPECT_EQ(s.Ratio, 3.0);
    EXPECT_EQ(s.Text, "44");
    EXPECT_EQ(s.GetLook()->Size, 11);
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

TEST_F(NamePaths, FindComponentExFollowsOwners) {
    EXPECT_EQ(FindComponentEx(&root, "Panel"), panel);
    EXPECT_EQ(FindComponentEx(&root, "Panel.Button"), button);
    EXPECT_EQ(FindComponentEx(&root, "Panel.Nope"), nullptr);
    EXPECT_EQ(FindComponentEx(nullptr, "Panel"), nullptr);
}

TEST_F(NamePaths, TheLongestComponentPrefixWins) {
    std::string comp = "old", prop = "old";
    EXPECT_EQ(AnalyseNamePath(&root, "Panel.Button.Look.Size", comp, prop), button);
    EXPECT_EQ(comp, "Panel.Button");
    EXPECT_EQ(prop, "Look.Size");
    EXPECT_EQ(AnalyseNamePath(&root, "Panel.Caption", comp, prop), panel);
    EXPECT_EQ(comp, "Panel");
    EXPECT_EQ(prop, "Caption");
}

TEST_F(NamePaths, WithoutAComponentTheRootHoldsTheProperty) {
    std::string comp = "old", prop = "old";
    EXPECT_EQ(AnalyseNamePath(&root, "Caption", comp, prop), &root);
    EXPECT_EQ(comp, "");
    EXPECT_EQ(prop, "Caption");
    EXPECT_EQ(AnalyseNamePath(&root, "Look.Size", comp, prop), &root);
    EXPECT_EQ(prop, "Look.Size");
    // An empty path reaches nothing and leaves the property path alone.
    comp = "old";
    EXPECT_EQ(AnalyseNamePath(&root, "", comp, prop), nullptr);
    EXPECT_EQ(comp, "");
    EXPECT_EQ(prop, "Look.Size");
}

TEST_F(NamePaths, FindingsHoldTheHolderAndItsProperty) {
    TAnalysisFindings f;
    ASSERT_TRUE(AnalyseNamePath(&root, "Panel.Button.Look.Size", f));
    EXPECT_EQ(f.ComponentPath, "Panel.Button");
    EXPECT_EQ(f.PropertyPath, "Look.Size");
    ASSERT_NE(f.PropInfo, nullptr);
    EXPECT_EQ(f.PropInfo->Name, "Size");
    EXPECT_EQ(f.Component, button->GetLook());

    ASSERT_TRUE(AnalyseNamePath(&root, "Panel.Nope", f));
    EXPECT_EQ(f.Component, panel);
    EXPECT_EQ(f.PropInfo, nullptr);

    EXPECT_FALSE(AnalyseNamePath(&root, "", f));
    EXPECT_FALSE(AnalyseNamePath(nullptr, "Caption", f));
}
