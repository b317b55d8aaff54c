// Type information: declaring published classes and reaching their properties by name.
#include "rtl/TypInfo.h"
#include "rtl/SysUtils.h"

#include "TestSupport.h"

#include <span>

using namespace rtl;
using namespace rtltest;

namespace tinfo {

RTL_ENUM(TShape, stRectangle, stCircle, stTriangle)
RTL_SET(TShapes, TShape)
RTL_EVENT(TNotify, void(TObject*), "Sender: TObject")
RTL_EVENT(TKeyEvent, void(TObject*, uint16_t&), "Sender: TObject; var Key: Word")

class TBase : public TObject {
    RTL_CLASS(TBase, TObject)
public:
    int32_t Width = 100;
    std::string Caption;
    int32_t ReadOnlyValue() const { return 7; }
    void WriteOnly(int32_t v) { written = v; }
    int32_t written = 0;
};

class TDerived : public TBase {
    RTL_CLASS(TDerived, TBase)
public:
    TShape Shape = stCircle;
    TShapes Shapes;
    bool Visible = true;
    char Letter = 'a';
    double Ratio = 0.5;
    int64_t Big = 0;
    TNotify OnClick;
    TBase* Child = nullptr;
    Variant Data;
    void Clicked(TObject* sender) { last = sender; }
    void Other(TObject* sender) {}
    bool IsShapeStored() const { return Shape != stCircle; }
    TObject* last = nullptr;
};

// The remaining kinds, and the specifiers not used above.
class TLeaf : public TDerived {
    RTL_CLASS(TLeaf, TDerived)
public:
    std::u16string Title;
    TDateTime Stamp;
    uint8_t Level = 0;
    int8_t Offset = 0;
    char16_t Glyph = u'x';
    std::string Hidden;
    TKeyEvent OnKey;
    void KeyPressed(TObject*, uint16_t& key) { key = 0; }
};

} // namespace tinfo

using namespace tinfo;

RTL_BEGIN_CLASS(tinfo::TBase)
Property("Width", &TBase::Width).Default(100);
Property("Caption", &TBase::Caption);
Property("ReadOnly", &TBase::ReadOnlyValue, nullptr);
Property("WriteOnly", nullptr, &TBase::WriteOnly);
RTL_END_CLASS

RTL_BEGIN_CLASS(tinfo::TDerived)
Property("Shape", &TDerived::Shape).Default(stCircle).Stored(&TDerived::IsShapeStored);
Property("Shapes", &TDerived::Shapes);
Property("Visible", &TDerived::Visible).Default(true);
Property("Letter", &TDerived::Letter);
Property("Ratio", &TDerived::Ratio);
Property("Big", &TDerived::Big);
Property("OnClick", &TDerived::OnClick);
Property("Child", &TDerived::Child);
Property("Data", &TDerived::Data);
Method<&TDerived::Clicked>("Clicked");
Method<&TDerived::Other>("Other");
RTL_END_CLASS

RTL_BEGIN_CLASS(tinfo::TLeaf)
Property("Title", &TLeaf::Title);
Property("Stamp", &TLeaf::Stamp);
Property("Level", &TLeaf::Level);
Property("Offset", &TLeaf::Offset);
Property("Glyph", &TLeaf::Glyph);
Property("Hidden", &TLeaf::Hidden).Stored(false);
Property("OnKey", &TLeaf::OnKey);
Method<&TLeaf::KeyPressed>("KeyPressed");
RTL_END_CLASS

namespace {

V Names(std::span<const PPropInfo> list) {
    V names;
    for (PPropInfo p : list)
        names.push_back(p->Name);
    return names;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Declaration and order

TEST(TypInfo, ClassIdentityIsTheUnqualifiedPlatformName) {
    TLeaf leaf;
    // Declared as RTL_BEGIN_CLASS(tinfo::TLeaf): class names are written into object streams and
    // must not carry the C++ namespace.
    PTypeInfo info = leaf.ClassInfo();
    EXPECT_EQ(V({leaf.ClassName(), TBase::StaticClass()->Name, info->Name}),
              V({"TLeaf", "TBase", "TLeaf"}));
    EXPECT_EQ(
        std::vector<TClass>({leaf.ClassType(), leaf.ClassParent(), TBase::StaticClass()->Parent,
                             TObject::StaticClass()->Parent, GetTypeData(info)->ClassType}),
        std::vector<TClass>({TLeaf::StaticClass(), TDerived::StaticClass(), TObject::StaticClass(),
                             nullptr, TLeaf::StaticClass()}));
    EXPECT_EQ(info->Kind, tkClass);
}

// ---------------------------------------------------------------------------------------------
// Kinds and type data

TEST(TypInfo, EachCppTypeGetsThePlatformKindAndName) {
    struct Expect {
        const char* prop;
        TTypeKind kind;
        const char* typeName;
    };
    const Expect table[] = {
        {"Width", tkInteger, "Integer"},       {"Caption", tkLString, "AnsiString"},
        {"Shape", tkEnumeration, "TShape"},    {"Shapes", tkSet, "TShapes"},
        {"Visible", tkEnumeration, "Boolean"}, {"Letter", tkChar, "Char"},
        {"Ratio", tkFloat, "Double"},          {"Big", tkInt64, "Int64"},
        {"OnClick", tkMethod, "TNotify"},      {"Child", tkClass, "TBase"},
        {"Data", tkVariant, "Variant"},        {"Title", tkWString, "WideString"},
        {"Stamp", tkFloat, "TDateTime"},       {"Level", tkInteger, "Byte"},
        {"Offset", tkInteger, "ShortInt"},     {"Glyph", tkWChar, "WideChar"},
        {"OnKey", tkMethod, "TKeyEvent"},
    };
    for (const auto& e : table) {
        PPropInfo p = GetPropInfo(TLeaf::StaticClass(), e.prop);
        ASSERT_NE(p, nullptr) << e.prop;
        EXPECT_EQ(p->PropType->Kind, e.kind) << e.prop;
        EXPECT_EQ(p->PropType->Name, e.typeName) << e.prop;
    }
    TLeaf leaf;
    EXPECT_EQ(PropType(&leaf, "Stamp"), tkFloat);
    EXPECT_EQ(PropType(TLeaf::StaticClass(), "shapes"), tkSet);
    EXPECT_THROW(PropType(&leaf, "Missing"), EPropertyError);
}

TEST(TypInfo, OrdinalTypeDataGivesRanges) {
    PTypeData shape = GetTypeData(TypeInfo<TShape>());
    EXPECT_EQ(shape->MinValue, 0);
    EXPECT_EQ(shape->MaxValue, 2);
    EXPECT_EQ(shape->NameList, (V{"stRectangle", "stCircle", "stTriangle"}));
    EXPECT_EQ(shape->BaseType, TypeInfo<TShape>());

    PTypeData set = GetTypeData(TypeInfo<TShapes>());
    EXPECT_EQ(set->CompType, TypeInfo<TShape>());

    PTypeData byte = GetTypeData(TypeInfo<uint8_t>());
    PTypeData shortInt = GetTypeData(TypeInfo<int8_t>());
    PTypeData int64 = GetTypeData(TypeInfo<int64_t>());
    EXPECT_EQ(
        std::vector<int64_t>({byte->OrdType, byte->MaxValue, shortInt->OrdType, shortInt->MinValue,
                              int64->MinInt64Value, int64->MaxInt64Value}),
        std::vector<int64_t>({otUByte, 255, otSByte, -128, INT64_MIN, INT64_MAX}));
    EXPECT_EQ(GetTypeData(TypeInfo<double>())->FloatType, ftDouble);
    EXPECT_EQ(GetTypeData(TypeInfo<float>())->FloatType, ftSingle);
    EXPECT_EQ(GetTypeData(nullptr), nullptr);
}

TEST(TypInfo, EnumerationNamesBothWaysCaseInsensitiveBooleanAmongThem) {
    // Out of range ordinals have no name (and must not read past the list); an integer type's
    // "names" are its numbers.
    PTypeInfo b = TypeInfo<bool>(), t = TypeInfo<TShape>(), i = TypeInfo<int32_t>();
    EXPECT_EQ(b->Kind, tkEnumeration);
    EXPECT_EQ(b->Name, "Boolean");
    EXPECT_EQ(GetTypeData(b)->MinValue, 0);
    EXPECT_EQ(GetTypeData(b)->MaxValue, 1);
    EXPECT_EQ(
        V({GetEnumName(b, 0), GetEnumName(b, 1), GetEnumName(t, stRectangle),
           GetEnumName(t, stTriangle), GetEnumName(t, 3), GetEnumName(t, -1), GetEnumName(i, -12)}),
        V({"False", "True", "stRectangle", "stTriangle", "", "", "-12"}));
    EXPECT_EQ(std::vector<int>({GetEnumValue(b, "true"), GetEnumValue(b, "FALSE"),
                                GetEnumValue(b, "Yes"), GetEnumValue(t, "stCircle"),
                                GetEnumValue(t, "STCIRCLE"), GetEnumValue(t, "sttriangle"),
                                GetEnumValue(t, "stSquare"), GetEnumValue(t, ""),
                                GetEnumValue(t, "stCircle "), GetEnumValue(i, "42")}),
              std::vector<int>({1, 0, -1, 1, 1, 2, -1, -1, -1, 42}));
}

// ---------------------------------------------------------------------------------------------
// Lookup and lists

TEST(TypInfo, LookupIsCaseInsensitive) {
    TClass cls = TDerived::StaticClass();
    PPropInfo width = GetPropInfo(cls, "Width");
    ASSERT_NE(width, nullptr);
    TDerived d;
    // The object overload filters by kind.
    EXPECT_EQ(
        std::vector<PPropInfo>({GetPropInfo(cls, "WIDTH"), GetPropInfo(cls, "width"),
                                GetPropInfo(&cls->TypeInfo, "wIdTh"), GetPropInfo(cls, "Widt"),
                                GetPropInfo(cls, "Width2"),
                                GetPropInfo(&d, "Width", TTypeKinds{tkInteger}),
                                GetPropInfo(&d, "Width", TTypeKinds{tkLString, tkString}),
                                GetPropInfo(static_cast<const TObject*>(nullptr), "Width")}),
        std::vector<PPropInfo>({width, width, width, nullptr, nullptr, width, nullptr, nullptr}));
    EXPECT_TRUE(IsPublishedProp(&d, "onclick"));
    EXPECT_TRUE(IsPublishedProp(TBase::StaticClass(), "CAPTION"));
    EXPECT_FALSE(IsPublishedProp(TBase::StaticClass(), "Shape"));
    EXPECT_FALSE(IsPublishedProp(&d, "last"));
}

TEST(TypInfo, PropListSortsByName) {
    auto sorted = Names(GetPropList(TDerived::StaticClass(), tkAny, true));
    EXPECT_EQ(sorted, (V{"Big", "Caption", "Child", "Data", "Letter", "OnClick", "Ratio",
                         "ReadOnly", "Shape", "Shapes", "Visible", "Width", "WriteOnly"}));
    // The same list through the class's type information, filtered.
    EXPECT_EQ(Names(GetPropList(&TDerived::StaticClass()->TypeInfo,
                                TTypeKinds{tkInteger, tkEnumeration}, true)),
              (V{"ReadOnly", "Shape", "Visible", "Width", "WriteOnly"}));
}

// ---------------------------------------------------------------------------------------------
// Specifiers

TEST(TypInfo, MissingReaderOrWriter) {
    TBase b;
    PPropInfo ro = GetPropInfo(b.ClassType(), "ReadOnly");
    PPropInfo wo = GetPropInfo(b.ClassType(), "WriteOnly");
    PPropInfo width = GetPropInfo(b.ClassType(), "Width");
    EXPECT_EQ(std::vector<bool>({ro->GetProc != nullptr, ro->SetProc != nullptr,
                                 wo->GetProc != nullptr, wo->SetProc != nullptr,
                                 width->GetProc != nullptr, width->SetProc != nullptr}),
              std::vector<bool>({true, false, false, true, true, true}));

    EXPECT_EQ(GetOrdProp(&b, ro), 7);
    EXPECT_EQ(MessageOf<EPropertyError>([&] { SetOrdProp(&b, ro, 1); }),
              "Property ReadOnly is read-only");
    SetOrdProp(&b, wo, 55);
    EXPECT_EQ(b.written, 55);
    EXPECT_EQ(MessageOf<EPropertyError>([&] { GetOrdProp(&b, wo); }),
              "Property WriteOnly is write-only");
}

// ---------------------------------------------------------------------------------------------
// Reading and writing values of every kind

TEST(TypInfo, OrdinalsIntegersEnumerationsSetsAndChars) {
    // Char is unsigned on the platform: a Windows-1251 letter reads as 0..255.
    TLeaf d;
    d.Shapes = {stRectangle, stTriangle};
    d.Letter = '\xC9';
    d.Offset = -5;
    EXPECT_EQ(std::vector<int64_t>(
                  {GetOrdProp(&d, "Shapes"), GetOrdProp(&d, "Letter"), GetOrdProp(&d, "Offset")}),
              std::vector<int64_t>({0b101, 0xC9, -5}));
    for (auto [name, value] : {std::pair{"width", -3},
                               {"Shape", int(stTriangle)},
                               {"Shapes", 0b010},
                               {"Letter", 0xE9},
                               {"Glyph", 0x0416}})
        SetOrdProp(&d, name, value);
    EXPECT_EQ(std::pair(d.Width, d.Shape), std::pair(-3, stTriangle));
    EXPECT_TRUE(d.Shapes.Contains(stCircle));
    EXPECT_FALSE(d.Shapes.Contains(stRectangle));
    EXPECT_EQ(static_cast<unsigned char>(d.Letter), 0xE9);
    EXPECT_EQ(d.Glyph, u'\x0416');
}

TEST(TypInfo, WrongKindOfAccessRaises) {
    TLeaf d;
    EXPECT_THROW(GetStrProp(&d, "Width"), EPropertyError);
    EXPECT_THROW(GetFloatProp(&d, "Caption"), EPropertyError);
    EXPECT_THROW(GetOrdProp(&d, "Ratio"), EPropertyError);
    EXPECT_THROW(GetMethodProp(&d, "Width"), EPropertyError);
    EXPECT_THROW(GetObjectPropClass(&d, "Width"), EPropertyError);
    EXPECT_EQ(MessageOf<EPropertyError>([&] { GetOrdProp(&d, "Nothing"); }),
              "Property Nothing does not exist");
    EXPECT_THROW(SetStrProp(&d, "Nothing", "x"), EPropertyError);
}

TEST(TypInfo, StringsAndWideStrings) {
    // A wide property is reached with single-byte Windows-1251 text.
    TLeaf d;
    PPropInfo title = GetPropInfo(d.ClassType(), "Title");
    SetStrProp(&d, "Caption", "Hello");
    EXPECT_EQ(d.Caption, "Hello");
    EXPECT_EQ(GetStrProp(&d, "caption"), "Hello");
    EXPECT_EQ(GetWideStrProp(&d, GetPropInfo(d.ClassType(), "Caption")), u"Hello");
    SetStrProp(&d, "Title", "\xCF\xF0\xE8\xE2\xE5\xF2");
    EXPECT_EQ(d.Title, u"Привет");
    EXPECT_EQ(GetStrProp(&d, "Title"), "\xCF\xF0\xE8\xE2\xE5\xF2");
    SetWideStrProp(&d, title, u"Ёж");
    EXPECT_EQ(GetWideStrProp(&d, title), u"Ёж");
    EXPECT_EQ(GetStrProp(&d, title), "\xA8\xE6");
}

TEST(TypInfo, ClassReferences) {
    TLeaf d;
    TBase child;
    TDerived derivedChild;
    EXPECT_EQ(GetObjectPropClass(&d, "Child"), TBase::StaticClass());
    EXPECT_EQ(GetObjectProp(&d, "Child"), nullptr);
    SetObjectProp(&d, "Child", &child);
    EXPECT_EQ(std::vector<TObject*>({d.Child, GetObjectProp(&d, "Child")}),
              std::vector<TObject*>(2, &child));
    // The ordinal of an object property is the reference.
    EXPECT_EQ(GetOrdProp(&d, "Child"), static_cast<int64_t>(reinterpret_cast<intptr_t>(&child)));
    // A descendant of the property's class is accepted, an unrelated class is not.
    SetObjectProp(&d, "Child", &derivedChild);
    EXPECT_EQ(d.Child, &derivedChild);
    TObject unrelated;
    EXPECT_THROW(SetObjectProp(&d, "Child", &unrelated), EInvalidCast);
    EXPECT_EQ(d.Child, &derivedChild);
    SetObjectProp(&d, "Child", nullptr);
    EXPECT_EQ(d.Child, nullptr);
}

// ---------------------------------------------------------------------------------------------
// Method pointers and the published method table

TEST(TypInfo, PublishedMethodTable) {
    TLeaf d;
    void* clicked = d.MethodAddress("Clicked");
    ASSERT_NE(clicked, nullptr);
    EXPECT_EQ(d.MethodAddress("CLICKED"), clicked);
    EXPECT_EQ(clicked, MethodCode<&TDerived::Clicked>());
    EXPECT_NE(d.MethodAddress("Other"), clicked);
    EXPECT_EQ(d.MethodAddress("Missing"), nullptr);
    EXPECT_EQ(V({d.MethodName(clicked), d.MethodName(d.MethodAddress("KeyPressed")),
                 d.MethodName(nullptr), d.MethodName(MethodCode<&TLeaf::ReadOnlyValue>())}),
              V({"Clicked", "KeyPressed", "", ""}));
    // The ancestor doesn't see its descendant's methods.
    TDerived base;
    EXPECT_EQ(base.MethodAddress("KeyPressed"), nullptr);
}
