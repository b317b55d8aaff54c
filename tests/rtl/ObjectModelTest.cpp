// The object model's root: GUIDs, interfaces and queries, checked casts, TPersistent.Assign,
// and the class registry with its virtual constructors.
#include "rtl/Classes.h"
#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include "TestSupport.h"

using namespace rtl;
using namespace rtltest;

namespace objmodel {

class IGreeter : public IInterface {
public:
    static inline const TGUID IID = TGUID::FromString("{3F2504E0-4F89-11D3-9A0C-0305E82C3301}");
    virtual std::string Greet() = 0;

protected:
    ~IGreeter() = default;
};

class IUnoffered : public IInterface {
public:
    static inline const TGUID IID = TGUID::FromString("{00000001-0002-0003-0405-060708090A0B}");

protected:
    ~IUnoffered() = default;
};

// A component that offers IGreeter. IGreeter brings its own IInterface base, so the component
// answers its three methods by TComponent's.
class TGreeter : public TComponent, public IGreeter {
    RTL_CLASS(TGreeter, TComponent)
public:
    using TComponent::TComponent;
    std::string Greet() override { return "hello from " + Name(); }
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return TComponent::QueryInterface(iid, obj);
    }
    int32_t _AddRef() override { return TComponent::_AddRef(); }
    int32_t _Release() override { return TComponent::_Release(); }
};

// Declares nothing of its own: IGreeter comes from the ancestor's table.
class TLoudGreeter : public TGreeter {
    RTL_CLASS(TLoudGreeter, TGreeter)
public:
    using TGreeter::TGreeter;
    std::string Greet() override { return "HELLO"; }
};

// Assign support in both directions: a TNote accepts a TNote; a TMemo can AssignTo a TNote.
class TNote : public TPersistent {
    RTL_CLASS(TNote, TPersistent)
public:
    std::string Text;
    void Assign(TPersistent* source) override {
        if (auto* n = dynamic_cast<TNote*>(source)) {
            Text = n->Text;
            return;
        }
        TPersistent::Assign(source);
    }
};

class TMemo : public TPersistent {
    RTL_CLASS(TMemo, TPersistent)
public:
    std::string Lines;

protected:
    void AssignTo(TPersistent* dest) override {
        if (auto* n = dynamic_cast<TNote*>(dest)) {
            n->Text = Lines;
            return;
        }
        TPersistent::AssignTo(dest);
    }
};

// Classes for the registry.
class TRegShape : public TPersistent {
    RTL_CLASS(TRegShape, TPersistent)
public:
    TRegShape() { Sides = 0; }
    int Sides;
};

class TRegSquare : public TRegShape {
    RTL_CLASS(TRegSquare, TRegShape)
public:
    TRegSquare() { Sides = 4; }
};

// A component whose constructor leaves its mark, to see that the virtual constructor runs.
class TRegWidget : public TComponent {
    RTL_CLASS(TRegWidget, TComponent)
public:
    explicit TRegWidget(TComponent* owner = nullptr) : TComponent(owner) { Tag = 42; }
};

class TRegAbstract : public TPersistent {
    RTL_CLASS(TRegAbstract, TPersistent)
public:
    virtual void Draw() = 0;
};

RTL_BEGIN_CLASS(TGreeter)
Implements<IGreeter>();
RTL_END_CLASS
RTL_IMPLEMENT_CLASS(TLoudGreeter)
RTL_IMPLEMENT_CLASS(TNote)
RTL_IMPLEMENT_CLASS(TMemo)
RTL_IMPLEMENT_CLASS(TRegShape)
RTL_IMPLEMENT_CLASS(TRegSquare)
RTL_IMPLEMENT_CLASS(TRegWidget)
RTL_IMPLEMENT_CLASS(TRegAbstract)

} // namespace objmodel

// A second class called TRegSquare, unrelated to the first.
namespace objmodel_other {
class TRegSquare : public TPersistent {
    RTL_CLASS(TRegSquare, TPersistent)
};
RTL_IMPLEMENT_CLASS(TRegSquare)
} // namespace objmodel_other

using namespace objmodel;

// ---------------------------------------------------------------------------------------------
// GUIDs

TEST(ObjectModel, GuidTextRoundTrips) {
    const std::string text = "{70E42159-AD26-479D-B0FD-A67ED16897A8}";
    TGUID g = TGUID::FromString(text);
    EXPECT_EQ(std::vector<uint32_t>({g.D1, g.D2, g.D3, g.D4[0], g.D4[7]}),
              std::vector<uint32_t>({0x70E42159u, 0xAD26, 0x479D, 0xB0, 0xA8}));
    EXPECT_EQ(g.ToString(), text);
    // Braces optional, hexadecimal digits of either case.
    EXPECT_EQ(TGUID::FromString("70e42159-ad26-479d-b0fd-a67ed16897a8"), g);
    EXPECT_NE(TGUID::FromString("{70E42159-AD26-479D-B0FD-A67ED16897A9}"), g);
    EXPECT_EQ(TGUID{}.ToString(), "{00000000-0000-0000-0000-000000000000}");
}

TEST(ObjectModel, MalformedGuidsRaiseConvertError) {
    for (const char* bad :
         {"", "{}", "{70E42159-AD26-479D-B0FD-A67ED16897A}",
          "{70E42159-AD26-479D-B0FD-A67ED16897A8", "70E42159AD26479DB0FDA67ED16897A8",
          "{70E42159-AD26-479D-B0FDA-67ED16897A8}", "{70E4215G-AD26-479D-B0FD-A67ED16897A8}",
          "{70E42159-AD26-479D-B0FD-A67ED16897A8}x"})
        EXPECT_THROW(TGUID::FromString(bad), EConvertError) << bad;
}

// ---------------------------------------------------------------------------------------------
// Interfaces

TEST(ObjectModel, QueryFindsOfferedInterfaceAndRefusesOthers) {
    TGreeter g;
    g.SetName("Greeter1");
    void* p = reinterpret_cast<void*>(1);
    ASSERT_EQ(g.QueryInterface(IGreeter::IID, &p), S_OK);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(static_cast<IGreeter*>(p)->Greet(), "hello from Greeter1");

    p = reinterpret_cast<void*>(1);
    EXPECT_EQ(g.QueryInterface(IUnoffered::IID, &p), E_NOINTERFACE);
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(static_cast<uint32_t>(E_NOINTERFACE), 0x80004002u);

    EXPECT_EQ(std::vector<bool>({Supports(&g, IGreeter::IID), Supports(&g, IUnoffered::IID),
                                 Supports(nullptr, IGreeter::IID)}),
              std::vector<bool>({true, false, false}));
    EXPECT_EQ(Supports<IUnoffered>(&g), nullptr);
    EXPECT_EQ(Supports<IGreeter>(nullptr), nullptr);
    ASSERT_NE(Supports<IGreeter>(&g), nullptr);
    EXPECT_EQ(Supports<IGreeter>(&g)->Greet(), "hello from Greeter1");
}

// ---------------------------------------------------------------------------------------------
// Checked casts

TEST(ObjectModel, CheckedCastRaisesInvalidCast) {
    TLoudGreeter g;
    TObject* obj = &g;
    // nil passes.
    EXPECT_EQ(std::vector<TObject*>({As<TGreeter>(obj), As<TComponent>(obj), As<TNote>(nullptr),
                                     Is<TNote>(obj), Is<TGreeter>(obj)}),
              std::vector<TObject*>({&g, &g, nullptr, nullptr, &g}));
    EXPECT_THROW(As<TNote>(obj), EInvalidCast);
}

// ---------------------------------------------------------------------------------------------
// TPersistent.Assign

TEST(ObjectModel, AssignUsesTheDestinationOrElseTheSourceOrNamesBothClasses) {
    // A TMemo knows how to become a TNote, but not the other way round.
    TNote note, other;
    TRegShape shape;
    TMemo memo;
    other.Text = "first";
    note.Assign(&other);
    EXPECT_EQ(note.Text, "first");
    memo.Lines = "from memo";
    note.Assign(&memo); // TNote doesn't know TMemo: the memo's AssignTo does it
    EXPECT_EQ(note.Text, "from memo");
    EXPECT_EQ(V({MessageOf<EConvertError>([&] { note.Assign(&shape); }),
                 MessageOf<EConvertError>([&] { shape.Assign(&note); }),
                 MessageOf<EConvertError>([&] { note.Assign(nullptr); }),
                 MessageOf<EConvertError>([&] { memo.Assign(&note); })}),
              V({"Cannot assign a TRegShape to a TNote", "Cannot assign a TNote to a TRegShape",
                 "Cannot assign a nil to a TNote", "Cannot assign a TNote to a TMemo"}));
    // Unowned, a persistent's name path is its class name.
    EXPECT_EQ(note.GetNamePath(), "TNote");
    EXPECT_EQ(note.GetOwner(), nullptr);
}

// ---------------------------------------------------------------------------------------------
// The class registry

class Registry : public ::testing::Test {
protected:
    void TearDown() override {
        const TClass mine[] = {TRegSquare::StaticClass(), TRegShape::StaticClass(),
                               objmodel_other::TRegSquare::StaticClass(),
                               TRegWidget::StaticClass()};
        UnRegisterClasses(mine);
    }
};

TEST_F(Registry, AnotherClassOfTheSameNameIsRefused) {
    RegisterClass(TRegSquare::StaticClass());
    // The same class again is fine.
    EXPECT_NO_THROW(RegisterClass(TRegSquare::StaticClass()));
    TClass other = objmodel_other::TRegSquare::StaticClass();
    ASSERT_EQ(other->Name, "TRegSquare");
    EXPECT_EQ(MessageOf<EFilerError>([&] { RegisterClass(other); }),
              "A class named TRegSquare already exists");
    EXPECT_EQ(GetClass("TRegSquare"), TRegSquare::StaticClass());
    // Unregistering the stranger leaves the registered class alone.
    UnRegisterClass(other);
    EXPECT_EQ(GetClass("TRegSquare"), TRegSquare::StaticClass());
}

TEST_F(Registry, UnregisteringRemovesOnlyThatClass) {
    RegisterClasses({TRegSquare::StaticClass(), TRegWidget::StaticClass()});
    UnRegisterClass(TRegSquare::StaticClass());
    EXPECT_EQ(std::vector<TClass>({GetClass("TRegSquare"), GetClass("TRegShape"),
                                   GetClass("TRegWidget"), GetClass("TComponent")}),
              std::vector<TClass>({nullptr, TRegShape::StaticClass(), TRegWidget::StaticClass(),
                                   TComponent::StaticClass()}));
    const TClass both[] = {TRegShape::StaticClass(), TRegWidget::StaticClass()};
    UnRegisterClasses(both);
    EXPECT_EQ(GetClass("TRegShape"), nullptr);
    EXPECT_EQ(GetClass("TRegWidget"), nullptr);
    // Now the other class of that name can come in.
    EXPECT_NO_THROW(RegisterClass(objmodel_other::TRegSquare::StaticClass()));
    EXPECT_EQ(GetClass("TRegSquare"), objmodel_other::TRegSquare::StaticClass());
}

TEST_F(Registry, CreateInstanceOfAComponentTakesItsOwner) {
    RegisterClass(TRegWidget::StaticClass());
    TComponent owner;
    TObject* obj = CreateInstance(FindClass("tregwidget"), &owner);
    auto* widget = dynamic_cast<TRegWidget*>(obj);
    ASSERT_NE(widget, nullptr);
    EXPECT_EQ(widget->Tag, 42);
    EXPECT_EQ(widget->Owner(), &owner);
    EXPECT_EQ(owner.Components(0), widget);
    // CreateComponent does the same through the component type.
    TComponent* second = CreateComponent(TRegWidget::StaticClass(), &owner);
    EXPECT_EQ(second->ClassType(), TRegWidget::StaticClass());
    EXPECT_EQ(owner.ComponentCount(), 2);
    EXPECT_THROW(CreateComponent(TRegShape::StaticClass(), &owner), EInvalidCast);
    EXPECT_EQ(owner.ComponentCount(), 2);
}

TEST_F(Registry, AnArgumentOfTheWrongClassIsRefused) {
    // A component's constructor takes an owner: anything else must not pass for one.
    TNote note;
    EXPECT_THROW(CreateInstance(TRegWidget::StaticClass(), &note), EInvalidCast);
    TCollection items(TCollectionItem::StaticClass());
    EXPECT_THROW(CreateInstance(TRegWidget::StaticClass(), &items), EInvalidCast);
    EXPECT_EQ(items.Count(), 0);
    // And a collection item's takes a collection.
    TComponent owner;
    EXPECT_THROW(CreateInstance(TCollectionItem::StaticClass(), &owner), EInvalidCast);
    EXPECT_EQ(owner.ComponentCount(), 0);
    // A collection whose item class is a component can't make its items.
    TCollection wrong(TRegWidget::StaticClass());
    EXPECT_THROW(wrong.Add(), EInvalidCast);
    EXPECT_EQ(wrong.Count(), 0);
}

TEST_F(Registry, AnUnknownNilOrAbstractClassIsAnErrorNotACrash) {
    EXPECT_EQ(MessageOf<EClassNotFound>([] { FindClass("TNoSuchClass"); }),
              "Class TNoSuchClass not found");
    // EClassNotFound is a filer error, as the platform has it.
    EXPECT_THROW(FindClass("TNoSuchClass"), EFilerError);
    // As in CreateInstance(GetClass(name)) with a name that isn't registered.
    EXPECT_THROW(CreateInstance(GetClass("TNotRegisteredAnywhere")), Exception);
    EXPECT_THROW(CreateInstance(nullptr, nullptr), Exception);
    EXPECT_NO_THROW(RegisterClass(nullptr));
    EXPECT_NO_THROW(UnRegisterClass(nullptr));
    EXPECT_THROW(CreateInstance(TRegAbstract::StaticClass()), Exception);
    EXPECT_THROW(CreateInstance(TRegAbstract::StaticClass(), nullptr), Exception);
}
