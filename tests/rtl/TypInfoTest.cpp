// Type information: declaring published classes and reaching their properties by name.
#include "rtl/TypInfo.h"
#include "rtl/SysUtils.h"

#include "TestSupport.h"

#include <algorithm>
#include <span>

using namespace rtl;
using namespace rtltest;

namespace tinfo {

RTL_ENUM(TShape, stRectangle, stCircle, stTriangle)
RTL_SET(TShapes, TShape)
RTL_EVENT(TNotify, void(TObject*), "Sender: TObject")
RTL_EVENT(TKeyEvent, void(TObject*, uint16_t&), "Sender: TObject; var Key: Word")
RTL_EVENT(TPairEvent, bool(const std::string&, const std::string&), "const Left, Right: string")

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

// Publishes Caption again, with a reader of its own and a default, and Width as read-only.
class TRepublisher : public TDerived {
    RTL_CLASS(TRepublisher, TDerived)
public:
    std::string UpperCaption() const {
        std::string s = Caption;
        std::transform(s.begin(), s.end(), s.begin(), ::toupper);
        return s;
    }
    std::string Extra;
};

// Accessors of every form: a field published under a named type, callables, a setter method.
class TAccessors : public TObject {
    RTL_CLASS(TAccessors, TObject)
public:
    uint16_t Key = 0;
    int32_t Half = 5;
    std::string Text;
    void SetText(const std::string& value) { Text = "<" + value + ">"; }
    const std::string& GetText() const { return Text; }
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

RTL_BEGIN_CLASS(tinfo::TRepublisher)
Property("Caption", &TRepublisher::UpperCaption, nullptr).Default(3);
Property("Extra", &TRepublisher::Extra);
RTL_END_CLASS

RTL_BEGIN_CLASS(tinfo::TAccessors)
Property<TShortCut>("Key", &TAccessors::Key);
Property(
    "Double", [](const TAccessors& o) { return o.Half * 2; },
    [](TAccessors& o, int32_t v) { o.Half = v / 2; });
Property("Text", &TAccessors::GetText, &TAccessors::SetText);
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

TEST(TypInfo, TypesAreRecognisedByNameCaseInsensitive) {
    EXPECT_EQ(std::vector<bool>(
                  {IsType(TypeInfo<TDateTime>(), "tdatetime"), IsType(TypeInfo<TDate>(), "TDate"),
                   IsType(TypeInfo<TTime>(), "TTIME"), IsType(TypeInfo<TDateTime>(), "TDate"),
                   IsType(TypeInfo<double>(), "TDateTime"), IsType(nullptr, "TDateTime")}),
              std::vector<bool>({true, true, true, false, false, false}));
}

TEST(TypInfo, EventTypesDescribeTheirParameters) {
    // Each parameter as its flags, name and type.
    auto params = [](PTypeInfo event) {
        V r;
        for (const auto& p : GetTypeData(event)->Params)
            r.push_back(std::to_string(p.Flags) + " " + p.ParamName + ": " + p.TypeName);
        return r;
    };
    const std::string var = std::to_string(1 << pfVar), cnst = std::to_string(1 << pfConst);
    EXPECT_EQ(params(TypeInfo<TNotify>()), V{"0 Sender: TObject"});
    EXPECT_EQ(params(TypeInfo<TKeyEvent>()), V({"0 Sender: TObject", var + " Key: Word"}));
    EXPECT_EQ(params(TypeInfo<TPairEvent>()), V({cnst + " Left: string", cnst + " Right: string"}));
    EXPECT_EQ(GetTypeData(TypeInfo<TNotify>())->MethodKind, mkProcedure);
    EXPECT_EQ(GetTypeData(TypeInfo<TPairEvent>())->MethodKind, mkFunction);
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

TEST(TypInfo, PropListFiltersByKind) {
    TClass cls = TLeaf::StaticClass();
    EXPECT_EQ(Names(GetPropList(cls, TTypeKinds{tkInteger}, false)),
              (V{"Width", "ReadOnly", "WriteOnly", "Level", "Offset"}));
    EXPECT_EQ(Names(GetPropList(cls, tkMethods, false)), (V{"OnClick", "OnKey"}));
    EXPECT_EQ(Names(GetPropList(cls, TTypeKinds{tkLString, tkWString}, false)),
              (V{"Caption", "Title", "Hidden"}));
    auto props = GetPropList(cls, tkProperties, false);
    EXPECT_EQ(props.size(), 18u);
    for (PPropInfo p : props)
        EXPECT_NE(p->PropType->Kind, tkMethod) << p->Name;
    EXPECT_EQ(GetPropList(cls, tkAny, false).size(), 20u);
    EXPECT_TRUE(GetPropList(cls, TTypeKinds{tkInterface}).empty());
    EXPECT_TRUE(GetPropList(static_cast<TClass>(nullptr), tkAny).empty());
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

TEST(TypInfo, RepublishedPropertyKeepsItsSlot) {
    auto props = GetPropInfos(TRepublisher::StaticClass());
    ASSERT_EQ(props.size(), 14u);
    EXPECT_EQ(V({props[1]->Name, props[13]->Name}), V({"Caption", "Extra"}));
    // It is the descendant's record: its own default and no writer.
    EXPECT_EQ(std::pair(int(props[1]->NameIndex), int(props[1]->Default)), std::pair(1, 3));
    EXPECT_EQ(props[1]->SetProc, nullptr);
    EXPECT_EQ(GetPropInfo(TRepublisher::StaticClass(), "caption"), props[1]);
    // The ancestor keeps its own record.
    PPropInfo base = GetPropInfo(TDerived::StaticClass(), "Caption");
    EXPECT_NE(base->SetProc, nullptr);
    TRepublisher r;
    r.Caption = "abc";
    EXPECT_EQ(GetStrProp(&r, "Caption"), "ABC");
    EXPECT_EQ(GetStrProp(&r, base), "abc");
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

TEST(TypInfo, FloatsDatesInt64AndVariants) {
    TLeaf d;
    EXPECT_EQ(GetFloatProp(&d, "Ratio"), 0.5L);
    SetFloatProp(&d, "Ratio", 0.25L);
    SetFloatProp(&d, "Stamp", 36526.5L);
    EXPECT_EQ(d.Ratio, 0.25);
    EXPECT_EQ(GetFloatProp(&d, "Stamp"), 36526.5L);
    // An Int64 keeps all its bits.
    PPropInfo big = GetPropInfo(d.ClassType(), "Big");
    SetInt64Prop(&d, big, int64_t(1) << 40);
    EXPECT_EQ(std::vector<int64_t>({d.Big, GetInt64Prop(&d, big), GetOrdProp(&d, big)}),
              std::vector<int64_t>(3, int64_t(1) << 40));
    SetInt64Prop(&d, big, INT64_MIN);
    EXPECT_EQ(GetInt64Prop(&d, big), INT64_MIN);
    PPropInfo data = GetPropInfo(d.ClassType(), "Data");
    EXPECT_TRUE(GetVariantProp(&d, data).IsEmpty());
    SetVariantProp(&d, data, Variant(int32_t(12)));
    EXPECT_EQ(d.Data.VarType(), varInteger);
    EXPECT_EQ(GetVariantProp(&d, data).AsInteger(), 12);
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

TEST(TypInfo, MethodPointersAreEqualExactlyWhenObjectAndMethodAgree) {
    TDerived a, b;
    TMethod aClicked{a.MethodAddress("Clicked"), &a};
    EXPECT_EQ(aClicked, TNotify::Of<&TDerived::Clicked>(&a).Method());
    EXPECT_NE(aClicked, (TMethod{a.MethodAddress("Clicked"), &b}));
    EXPECT_NE(aClicked, (TMethod{a.MethodAddress("Other"), &a}));
    EXPECT_FALSE(TNotify::Of<&TDerived::Clicked>(&a) == TNotify::Of<&TDerived::Clicked>(&b));
    EXPECT_FALSE(TMethod{});
    EXPECT_TRUE(aClicked);
}

TEST(TypInfo, EventStoredInAPropertyIsCalled) {
    TDerived handler, source;
    // Hook the event the way the filer does: by the handler's published method name.
    SetMethodProp(&source, "OnClick", TMethod{handler.MethodAddress("Clicked"), &handler});
    ASSERT_TRUE(source.OnClick);
    source.OnClick(&source);
    EXPECT_EQ(handler.last, &source);
    EXPECT_EQ(source.last, nullptr);
    TMethod read = GetMethodProp(&source, "onclick");
    EXPECT_EQ(read.Data, &handler);
    EXPECT_EQ(handler.MethodName(read.Code), "Clicked");
    // Cleared again.
    SetMethodProp(&source, "OnClick", TMethod{});
    EXPECT_FALSE(source.OnClick);

    // An event with a var parameter writes through it.
    TLeaf leaf;
    leaf.OnKey = TKeyEvent::Of<&TLeaf::KeyPressed>(&leaf);
    uint16_t key = 13;
    leaf.OnKey(&leaf, key);
    EXPECT_EQ(key, 0);
    EXPECT_EQ(GetMethodProp(&leaf, "OnKey").Code, leaf.MethodAddress("KeyPressed"));
}

TEST(TypInfo, AccessorsOfEveryForm) {
    TAccessors a;
    PPropInfo key = GetPropInfo(a.ClassType(), "Key");
    PPropInfo twice = GetPropInfo(a.ClassType(), "Double");
    EXPECT_EQ(V({key->PropType->Name, twice->PropType->Name}), V({"TShortCut", "Integer"}));
    EXPECT_EQ(key->PropType->Kind, tkInteger);
    EXPECT_EQ(GetOrdProp(&a, twice), 10);
    SetOrdProp(&a, key, 0x4044);
    SetOrdProp(&a, twice, 42);
    SetStrProp(&a, "Text", "x");
    EXPECT_EQ(std::vector<int64_t>({a.Key, GetOrdProp(&a, key), a.Half}),
              std::vector<int64_t>({0x4044, 0x4044, 21}));
    EXPECT_EQ(V({a.Text, GetStrProp(&a, "Text")}), V({"<x>", "<x>"}));
}
