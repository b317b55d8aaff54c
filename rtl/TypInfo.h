// Run-time type information: type kinds, type data, published properties, methods, fields and
// interfaces of classes, and the operations on them under the platform's names.
//
// Declaring a class of the object model takes two steps. In the class body:
//
//     class TFoo : public rtl::TPersistent {
//         RTL_CLASS(TFoo, TPersistent)
//     public:
//         int32_t Width = 100;
//         std::string GetCaption() const;
//         void SetCaption(const std::string&);
//         void Click(rtl::TObject* Sender);
//     };
//
// and once, in a .cpp file, the published part in declaration order:
//
//     RTL_BEGIN_CLASS(TFoo)
//         Property("Width", &TFoo::Width).Default(100);
//         Property("Caption", &TFoo::GetCaption, &TFoo::SetCaption);
//         Property<TColor>("Color", &TFoo::FColor);          // the published type named
//         Property("Count", &TFoo::GetCount, nullptr);       // read-only: no writer
//         Method<&TFoo::Click>("Click");
//         Field("Button1", &TFoo::Button1);
//         Implements<INodeInfo>();
//     RTL_END_CLASS
//
// A property's type information comes from its C++ type: int32_t is "Integer", bool is the
// enumeration "Boolean", std::string is "AnsiString", a pointer to a class of the object model
// is that class, enumerations and sets declared with RTL_ENUM and RTL_SET carry their names, and
// the distinct types TColor, TShortCut, TDateTime, TDate, TTime and friends carry theirs.
#pragma once

#include "rtl/System.h"
#include "rtl/Variants.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace rtl {

class TComponent;

// ---------------------------------------------------------------------------------------------
// Type kinds and type data

enum TTypeKind : uint8_t {
    tkUnknown = 0,
    tkInteger = 1,
    tkChar = 2,
    tkEnumeration = 3,
    tkFloat = 4,
    tkString = 5,
    tkSet = 6,
    tkClass = 7,
    tkMethod = 8,
    tkWChar = 9,
    tkLString = 10,
    tkWString = 11,
    tkVariant = 12,
    tkArray = 13,
    tkRecord = 14,
    tkInterface = 15,
    tkInt64 = 16,
    tkDynArray = 17,
};

// A set of type kinds.
class TTypeKinds {
public:
    constexpr TTypeKinds() = default;
    constexpr TTypeKinds(std::initializer_list<TTypeKind> kinds) {
        for (auto k : kinds) bits_ |= 1u << k;
    }
    static constexpr TTypeKinds Range(TTypeKind from, TTypeKind to) {
        TTypeKinds s;
        for (int k = from; k <= to; ++k) s.bits_ |= 1u << k;
        return s;
    }
    constexpr bool Contains(TTypeKind k) const { return (bits_ >> k) & 1u; }
    constexpr TTypeKinds operator+(TTypeKinds o) const { return FromBits(bits_ | o.bits_); }
    constexpr TTypeKinds operator-(TTypeKinds o) const { return FromBits(bits_ & ~o.bits_); }
    constexpr bool operator==(const TTypeKinds&) const = default;

private:
    static constexpr TTypeKinds FromBits(uint32_t b) {
        TTypeKinds s;
        s.bits_ = b;
        return s;
    }
    uint32_t bits_ = 0;
};

// Every kind but tkUnknown.
inline constexpr TTypeKinds tkAny = TTypeKinds::Range(tkInteger, tkDynArray);
inline constexpr TTypeKinds tkMethods = {tkMethod};
inline constexpr TTypeKinds tkProperties = tkAny - tkMethods - TTypeKinds{tkInterface};

enum TOrdType : uint8_t { otSByte, otUByte, otSWord, otUWord, otSLong, otULong };
enum TFloatType : uint8_t { ftSingle, ftDouble, ftExtended, ftComp, ftCurr };
enum TMethodKind : uint8_t {
    mkProcedure,
    mkFunction,
    mkConstructor,
    mkDestructor,
    mkClassProcedure,
    mkClassFunction,
    mkSafeProcedure,
    mkSafeFunction
};
enum TParamFlag : uint8_t { pfVar, pfConst, pfArray, pfAddress, pfReference, pfOut };

// One parameter of a method type: its flags (bits by TParamFlag), name and type name.
struct TParamInfo {
    uint8_t Flags = 0;
    std::string ParamName;
    std::string TypeName;
};

struct TTypeData {
    // Ordinal types: integers, chars, enumerations, sets.
    TOrdType OrdType = otSLong;
    int32_t MinValue = 0;
    int32_t MaxValue = 0;
    // Enumerations: the type itself (or the one it is a subrange of) and the names, by ordinal.
    PTypeInfo BaseType = nullptr;
    std::vector<std::string> NameList;
    // Sets: the element enumeration.
    PTypeInfo CompType = nullptr;
    // Floats.
    TFloatType FloatType = ftExtended;
    // Classes: the class reference, the number of published properties with those of the
    // ancestors, the unit name.
    TClass ClassType = nullptr;
    int16_t PropCount = 0;
    std::string UnitName;
    // Method types.
    TMethodKind MethodKind = mkProcedure;
    std::vector<TParamInfo> Params;
    std::string ResultType;
    // 64-bit integers.
    int64_t MinInt64Value = 0;
    int64_t MaxInt64Value = 0;
};
using PTypeData = const TTypeData*;

struct TTypeInfo {
    TTypeKind Kind = tkUnknown;
    std::string Name;
    TTypeData Data;
};

PTypeData GetTypeData(PTypeInfo typeInfo);

// A reference to type information that is resolved when it is first used, as the platform's
// PPTypeInfo: class-typed properties may name classes whose metadata is built later.
class TTypeInfoRef {
public:
    using Resolver = PTypeInfo (*)();
    constexpr TTypeInfoRef() = default;
    constexpr TTypeInfoRef(Resolver r) : resolve_(r) {}
    PTypeInfo get() const { return resolve_ ? resolve_() : nullptr; }
    operator PTypeInfo() const { return get(); }
    PTypeInfo operator->() const { return get(); }
    const TTypeInfo& operator*() const { return *get(); }

private:
    Resolver resolve_ = nullptr;
};

// ---------------------------------------------------------------------------------------------
// Method pointers

// A typed event: a method pointer that can be called. Its Code is the address of a thunk made
// for one member function, so two events are equal exactly when they name the same method of the
// same object.
template <class Sig> class TEvent;

namespace detail {
template <auto M> struct MethodThunk;
template <class T, class R, class... A, R (T::*M)(A...)> struct MethodThunk<M> {
    using Class = T;
    static R Call(TObject* self, A... args) { return (static_cast<T*>(self)->*M)(args...); }
};
template <class T, class R, class... A, R (T::*M)(A...) const> struct MethodThunk<M> {
    using Class = T;
    static R Call(TObject* self, A... args) { return (static_cast<const T*>(self)->*M)(args...); }
};
} // namespace detail

// The code pointer of a method, as a published method table and TMethod hold it.
template <auto M> void* MethodCode() {
    return reinterpret_cast<void*>(&detail::MethodThunk<M>::Call);
}

template <class R, class... A> class TEvent<R(A...)> {
public:
    using Thunk = R (*)(TObject*, A...);
    TEvent() = default;
    TEvent(std::nullptr_t) {}
    explicit TEvent(const TMethod& m) : method_(m) {}

    // An event bound to the member function M of obj.
    template <auto M> static TEvent Of(typename detail::MethodThunk<M>::Class* obj) {
        return TEvent(TMethod{MethodCode<M>(), obj});
    }

    R operator()(A... args) const {
        return reinterpret_cast<Thunk>(method_.Code)(method_.Data, std::forward<A>(args)...);
    }
    explicit operator bool() const { return method_.Code != nullptr; }
    const TMethod& Method() const { return method_; }
    friend bool operator==(const TEvent&, const TEvent&) = default;

private:
    TMethod method_;
};

// ---------------------------------------------------------------------------------------------
// Published properties

// How a property's value is carried between the accessors and the callers of the property
// routines: every ordinal as int64_t, every float as long double.
template <class C> struct TAccessor {
    std::function<C(const TObject*)> get;
    std::function<void(TObject*, const C&)> set;
};

struct TPropInfo {
    TTypeInfoRef PropType;
    // Non-nil exactly when the property has a reader, a writer, or a stored specifier that is
    // not a constant.
    const void* GetProc = nullptr;
    const void* SetProc = nullptr;
    const void* StoredProc = nullptr;
    int32_t Index = static_cast<int32_t>(0x80000000u);
    int32_t Default = static_cast<int32_t>(0x80000000u);
    int16_t NameIndex = 0;
    std::string Name;

    // The accessors. Only those of the property's kind are set.
    TAccessor<int64_t> Ord;
    TAccessor<long double> Float;
    TAccessor<std::string> Str;
    TAccessor<std::u16string> WideStr;
    TAccessor<TMethod> Meth;
    TAccessor<Variant> Var;
    TAccessor<TObject*> Obj;
    bool StoredConst = true;
    std::function<bool(const TObject*)> Stored;
};
using PPropInfo = const TPropInfo*;

// The value meaning "no default" in TPropInfo::Default.
inline constexpr int32_t NoDefault = static_cast<int32_t>(0x80000000u);

// ---------------------------------------------------------------------------------------------
// Class metadata

struct TMethodEntry {
    std::string Name;
    void* Code = nullptr;
};

struct TFieldEntry {
    std::string Name;
    TClass (*FieldClass)() = nullptr;
    // Stores an object into the field of an instance; used to link components read from a
    // stream to the published fields of their owner.
    std::function<void(TObject* instance, TObject* value)> Assign;
};

struct TInterfaceEntry {
    TGUID IID;
    void* (*Cast)(TObject*) = nullptr;
};

struct TClassInfo {
    std::string Name;
    TClass Parent = nullptr;
    TTypeInfo TypeInfo; // kind tkClass, named as the class
    std::vector<std::unique_ptr<TPropInfo>> OwnProps;
    std::vector<const TPropInfo*> AllProps; // declaration order, ancestors first
    std::vector<TMethodEntry> Methods;
    std::vector<TFieldEntry> Fields;
    std::vector<TInterfaceEntry> Interfaces;
    // The virtual constructors the class has: without arguments, and with its owner (for
    // components) or its collection (for collection items).
    std::function<TObject*()> Create;
    std::function<TObject*(TObject*)> CreateWith;

    bool InheritsFrom(TClass cls) const;
};

// ---------------------------------------------------------------------------------------------
// Type information of C++ types

PTypeInfo MakeOrdinalType(TTypeKind kind, std::string name, TOrdType ot, int32_t min, int32_t max);
PTypeInfo MakeEnumType(std::string name, std::string_view commaSeparatedNames);
PTypeInfo MakeSetType(std::string name, PTypeInfo compType);
PTypeInfo MakeFloatType(std::string name, TFloatType ft);
PTypeInfo MakeMethodType(std::string name, TMethodKind kind, std::vector<TParamInfo> params,
                         std::string resultType);

// The built-in types. Further overloads of TypeInfoFor, found by argument-dependent lookup,
// come with RTL_ENUM, RTL_SET, RTL_EVENT and the named types below.
PTypeInfo TypeInfoFor(const int8_t*);
PTypeInfo TypeInfoFor(const uint8_t*);
PTypeInfo TypeInfoFor(const int16_t*);
PTypeInfo TypeInfoFor(const uint16_t*);
PTypeInfo TypeInfoFor(const int32_t*);
PTypeInfo TypeInfoFor(const uint32_t*);
PTypeInfo TypeInfoFor(const int64_t*);
PTypeInfo TypeInfoFor(const bool*);
PTypeInfo TypeInfoFor(const char*);
PTypeInfo TypeInfoFor(const char16_t*);
PTypeInfo TypeInfoFor(const float*);
PTypeInfo TypeInfoFor(const double*);
PTypeInfo TypeInfoFor(const long double*);
PTypeInfo TypeInfoFor(const std::string*);
PTypeInfo TypeInfoFor(const std::u16string*);
PTypeInfo TypeInfoFor(const Variant*);
template <class T>
    requires std::derived_from<T, TObject>
PTypeInfo TypeInfoFor(T* const*) {
    return &T::StaticClass()->TypeInfo;
}

template <class T> PTypeInfo TypeInfo() {
    return TypeInfoFor(static_cast<const std::remove_cvref_t<T>*>(nullptr));
}

// A set of up to 32 elements of an enumeration declared with RTL_ENUM.
template <class E> class TSet {
public:
    using Element = E;
    constexpr TSet() = default;
    constexpr TSet(std::initializer_list<E> items) {
        for (E e : items) Include(e);
    }
    static constexpr TSet FromBits(uint32_t bits) {
        TSet s;
        s.bits_ = bits;
        return s;
    }
    constexpr uint32_t Bits() const { return bits_; }
    constexpr bool Contains(E e) const { return (bits_ >> static_cast<unsigned>(e)) & 1u; }
    constexpr TSet& Include(E e) {
        bits_ |= 1u << static_cast<unsigned>(e);
        return *this;
    }
    constexpr TSet& Exclude(E e) {
        bits_ &= ~(1u << static_cast<unsigned>(e));
        return *this;
    }
    constexpr bool Empty() const { return bits_ == 0; }
    constexpr TSet operator+(TSet o) const { return FromBits(bits_ | o.bits_); }
    constexpr TSet operator-(TSet o) const { return FromBits(bits_ & ~o.bits_); }
    constexpr TSet operator*(TSet o) const { return FromBits(bits_ & o.bits_); }
    constexpr bool operator==(const TSet&) const = default;

private:
    uint32_t bits_ = 0;
};

// Distinct named types that code recognises by their type name.
struct TDateTime {
    double Value = 0;
    constexpr TDateTime() = default;
    constexpr TDateTime(double v) : Value(v) {}
    constexpr operator double() const { return Value; }
};
struct TDate : TDateTime {
    using TDateTime::TDateTime;
};
struct TTime : TDateTime {
    using TDateTime::TDateTime;
};
PTypeInfo TypeInfoFor(const TDateTime*);
PTypeInfo TypeInfoFor(const TDate*);
PTypeInfo TypeInfoFor(const TTime*);

// A 16-bit key code with shift state bits, as the platform's TShortCut.
enum TShortCut : uint16_t {};
PTypeInfo TypeInfoFor(const TShortCut*);

// A hot key in its text form ("Ctrl+Shift+."), recognised by its type name.
struct TShortCutString : std::string {
    using std::string::string;
    TShortCutString(const std::string& s) : std::string(s) {}
};
PTypeInfo TypeInfoFor(const TShortCutString*);

// An integer that the settings editor shows with a spin control.
enum TSpinInt : int32_t {};
PTypeInfo TypeInfoFor(const TSpinInt*);

// Character types that the accessors carry as ordinals.
template <class V>
concept OrdinalValue = std::is_integral_v<V> || std::is_enum_v<V>;
template <class V>
concept SetValue = requires(const V& v) {
    typename V::Element;
    { v.Bits() } -> std::convertible_to<uint32_t>;
};
template <class V>
concept EventValue = requires(const V& v) {
    { v.Method() } -> std::convertible_to<TMethod>;
};
template <class V>
concept ObjectPointer = std::is_pointer_v<V> && std::derived_from<std::remove_pointer_t<V>, TObject>;

// ---------------------------------------------------------------------------------------------
// Building class metadata

namespace detail {

// Turns a property value into its carrier and back.
template <class V> struct Carrier;
template <OrdinalValue V> struct Carrier<V> {
    using type = int64_t;
    static int64_t To(const V& v) {
        // The platform's Char is unsigned: bytes 128..255 (Cyrillic letters) read as themselves.
        if constexpr (std::is_same_v<V, char>) return static_cast<unsigned char>(v);
        else return static_cast<int64_t>(v);
    }
    static V From(int64_t c) { return static_cast<V>(c); }
};
template <SetValue V> struct Carrier<V> {
    using type = int64_t;
    static int64_t To(const V& v) { return static_cast<int64_t>(v.Bits()); }
    static V From(int64_t c) { return V::FromBits(static_cast<uint32_t>(c)); }
};
template <std::floating_point V> struct Carrier<V> {
    using type = long double;
    static long double To(const V& v) { return v; }
    static V From(long double c) { return static_cast<V>(c); }
};
template <class V>
    requires std::derived_from<V, TDateTime>
struct Carrier<V> {
    using type = long double;
    static long double To(const V& v) { return v.Value; }
    static V From(long double c) { return V(static_cast<double>(c)); }
};
template <class V>
    requires std::derived_from<V, std::string>
struct Carrier<V> {
    using type = std::string;
    static const std::string& To(const V& v) { return v; }
    static V From(const std::string& c) { return V(c); }
};
template <> struct Carrier<std::u16string> {
    using type = std::u16string;
    static const std::u16string& To(const std::u16string& v) { return v; }
    static std::u16string From(const std::u16string& c) { return c; }
};
template <> struct Carrier<Variant> {
    using type = Variant;
    static const Variant& To(const Variant& v) { return v; }
    static Variant From(const Variant& c) { return c; }
};
template <EventValue V> struct Carrier<V> {
    using type = TMethod;
    static TMethod To(const V& v) { return v.Method(); }
    static V From(const TMethod& c) { return V(c); }
};
[[noreturn]] void RaiseInvalidPropertyCast(TObject* value, TClass expected);

template <ObjectPointer V> struct Carrier<V> {
    using type = TObject*;
    static TObject* To(V v) { return v; }
    static V From(TObject* c) {
        if (!c) return nullptr;
        auto* p = dynamic_cast<V>(c);
        if (!p) RaiseInvalidPropertyCast(c, std::remove_pointer_t<V>::StaticClass());
        return p;
    }
};

// The value type a getter yields or a setter takes.
template <class T, class G> struct GetterValue;
template <class T, class V, class C> struct GetterValue<T, V C::*> {
    using type = V;
};
template <class T, class V, class C> struct GetterValue<T, V (C::*)() const> {
    using type = std::remove_cvref_t<V>;
};
template <class T, class G>
    requires std::invocable<G, const T&>
struct GetterValue<T, G> {
    using type = std::remove_cvref_t<std::invoke_result_t<G, const T&>>;
};

template <class T, class S> struct SetterValue;
template <class T, class V, class C> struct SetterValue<T, V C::*> {
    using type = V;
};
template <class T, class V, class C> struct SetterValue<T, void (C::*)(V)> {
    using type = std::remove_cvref_t<V>;
};
template <class T, class F> struct LambdaArg;
template <class T, class F, class V> struct LambdaArg<T, void (F::*)(T&, V) const> {
    using type = std::remove_cvref_t<V>;
};
template <class T, class S>
    requires requires { &S::operator(); }
struct SetterValue<T, S> {
    using type = typename LambdaArg<T, decltype(&S::operator())>::type;
};

template <class T, class V, class G> auto MakeGetter(G g) {
    using C = Carrier<V>;
    using CT = typename C::type;
    return std::function<CT(const TObject*)>([g](const TObject* o) -> CT {
        const T& obj = *static_cast<const T*>(o);
        if constexpr (std::is_member_object_pointer_v<G>) return C::To(static_cast<V>(obj.*g));
        else if constexpr (std::is_member_function_pointer_v<G>) return C::To((obj.*g)());
        else return C::To(g(obj));
    });
}

template <class T, class V, class S> auto MakeSetter(S s) {
    using C = Carrier<V>;
    using CT = typename C::type;
    return std::function<void(TObject*, const CT&)>([s](TObject* o, const CT& value) {
        T& obj = *static_cast<T*>(o);
        if constexpr (std::is_member_object_pointer_v<S>) {
            using F = std::remove_cvref_t<decltype(obj.*s)>;
            obj.*s = static_cast<F>(C::From(value));
        } else if constexpr (std::is_member_function_pointer_v<S>) (obj.*s)(C::From(value));
        else s(obj, C::From(value));
    });
}

template <class V> TAccessor<typename Carrier<V>::type>& AccessorOf(TPropInfo& p) {
    using CT = typename Carrier<V>::type;
    if constexpr (std::is_same_v<CT, int64_t>) return p.Ord;
    else if constexpr (std::is_same_v<CT, long double>) return p.Float;
    else if constexpr (std::is_same_v<CT, std::string>) return p.Str;
    else if constexpr (std::is_same_v<CT, std::u16string>) return p.WideStr;
    else if constexpr (std::is_same_v<CT, TMethod>) return p.Meth;
    else if constexpr (std::is_same_v<CT, Variant>) return p.Var;
    else return p.Obj;
}

template <class V> PTypeInfo ResolveType() { return TypeInfo<V>(); }

void FinishClassInfo(TClassInfo& info, TClass parent);

} // namespace detail

// Chained settings of one property being declared.
class TPropertyBuilder {
public:
    explicit TPropertyBuilder(TPropInfo& p) : p_(p) {}
    TPropertyBuilder& Default(int64_t value) {
        p_.Default = static_cast<int32_t>(value);
        return *this;
    }
    template <class E>
        requires std::is_enum_v<E>
    TPropertyBuilder& Default(E value) {
        return Default(static_cast<int64_t>(value));
    }
    template <class S>
        requires SetValue<S>
    TPropertyBuilder& Default(S value) {
        return Default(static_cast<int64_t>(value.Bits()));
    }
    TPropertyBuilder& NoDefault() {
        p_.Default = rtl::NoDefault;
        return *this;
    }
    TPropertyBuilder& Index(int32_t index) {
        p_.Index = index;
        return *this;
    }
    TPropertyBuilder& Stored(bool stored) {
        p_.StoredConst = stored;
        p_.Stored = nullptr;
        p_.StoredProc = nullptr;
        return *this;
    }
    // A stored specifier evaluated on the instance: a member function returning bool, or a
    // callable taking the object.
    template <class C> TPropertyBuilder& Stored(bool (C::*f)() const) {
        return Stored(std::function<bool(const TObject*)>(
            [f](const TObject* o) { return (static_cast<const C*>(o)->*f)(); }));
    }
    TPropertyBuilder& Stored(std::function<bool(const TObject*)> f) {
        p_.StoredConst = true;
        p_.Stored = std::move(f);
        p_.StoredProc = &p_.Stored;
        return *this;
    }

private:
    TPropInfo& p_;
};

template <class T> class TClassBuilder {
public:
    using Self = T;

    explicit TClassBuilder(std::string name) : info_(std::make_unique<TClassInfo>()) {
        // RTL_BEGIN_CLASS(ns::TFoo) names the class TFoo: class names go into object streams
        // and the registry as the platform spells them, without the C++ namespace.
        if (size_t colons = name.rfind("::"); colons != std::string::npos)
            name.erase(0, colons + 2);
        info_->Name = std::move(name);
    }

    // A property with a reader and a writer. Each may be a data member, a member function, a
    // callable taking the object, or nullptr for none. With no writer given, a data member is
    // also written directly.
    template <class V = void, class G, class S>
    TPropertyBuilder Property(std::string name, G getter, S setter) {
        using PV = std::conditional_t<std::is_void_v<V>, typename ValueOf<G, S>::type, V>;
        TPropInfo& p = AddProp<PV>(std::move(name));
        auto& acc = detail::AccessorOf<PV>(p);
        if constexpr (!std::is_null_pointer_v<G>) {
            acc.get = detail::MakeGetter<T, PV>(getter);
            p.GetProc = &acc.get;
        }
        if constexpr (!std::is_null_pointer_v<S>) {
            acc.set = detail::MakeSetter<T, PV>(setter);
            p.SetProc = &acc.set;
        }
        return TPropertyBuilder(p);
    }
    template <class V = void, class F> TPropertyBuilder Property(std::string name, F field) {
        static_assert(std::is_member_object_pointer_v<F>,
                      "a property with one accessor must name a data member");
        return Property<V>(std::move(name), field, field);
    }

    // A published method, found by MethodAddress and MethodName.
    template <auto M> void Method(std::string name) {
        info_->Methods.push_back({std::move(name), MethodCode<M>()});
    }

    // A published field of class type.
    template <class F> void Field(std::string name, F* T::*member) {
        info_->Fields.push_back(
            {std::move(name), &F::StaticClass, [member](TObject* inst, TObject* value) {
                 static_cast<T*>(inst)->*member = dynamic_cast<F*>(value);
             }});
    }

    // An interface that the class implements.
    template <class I> void Implements() {
        info_->Interfaces.push_back(
            {I::IID, [](TObject* o) -> void* { return static_cast<I*>(static_cast<T*>(o)); }});
    }

    TClass Build() {
        if constexpr (!std::is_abstract_v<T>) {
            if constexpr (std::is_default_constructible_v<T>)
                info_->Create = [] { return static_cast<TObject*>(new T()); };
            if constexpr (requires { typename T::TConstructorArg; }) {
                using A = typename T::TConstructorArg;
                if constexpr (std::is_constructible_v<T, A*>)
                    info_->CreateWith = [](TObject* arg) {
                        // Only an object of the argument's class (or nil) may pass for one.
                        A* typed = dynamic_cast<A*>(arg);
                        if (arg && !typed) detail::RaiseInvalidPropertyCast(arg, A::StaticClass());
                        return static_cast<TObject*>(new T(typed));
                    };
            }
        }
        TClass parent = nullptr;
        if constexpr (!std::is_same_v<T, TObject>) parent = T::inherited::StaticClass();
        detail::FinishClassInfo(*info_, parent);
        return info_.release();
    }

private:
    template <class G, class S> struct ValueOf {
        using type = typename detail::GetterValue<T, G>::type;
    };
    template <class S> struct ValueOf<std::nullptr_t, S> {
        using type = typename detail::SetterValue<T, S>::type;
    };

    template <class PV> TPropInfo& AddProp(std::string name) {
        auto p = std::make_unique<TPropInfo>();
        p->Name = std::move(name);
        p->PropType = TTypeInfoRef(&detail::ResolveType<PV>);
        info_->OwnProps.push_back(std::move(p));
        return *info_->OwnProps.back();
    }

    std::unique_ptr<TClassInfo> info_;
};

// ---------------------------------------------------------------------------------------------
// The platform's operations on type information

// Properties of kinds in `kinds`, in declaration order or sorted by name.
std::vector<PPropInfo> GetPropList(PTypeInfo typeInfo, TTypeKinds kinds, bool sortList = true);
std::vector<PPropInfo> GetPropList(TClass cls, TTypeKinds kinds = tkAny, bool sortList = true);
// All properties in declaration order, ancestors first.
std::span<const PPropInfo> GetPropInfos(TClass cls);
std::span<const PPropInfo> GetPropInfos(PTypeInfo typeInfo);
PPropInfo GetPropInfo(TClass cls, std::string_view name);
PPropInfo GetPropInfo(PTypeInfo typeInfo, std::string_view name);
PPropInfo GetPropInfo(const TObject* obj, std::string_view name, TTypeKinds kinds = tkAny);
bool IsPublishedProp(const TObject* obj, std::string_view name);
bool IsPublishedProp(TClass cls, std::string_view name);
bool IsStoredProp(const TObject* obj, PPropInfo prop);
bool IsStoredProp(const TObject* obj, std::string_view name);
TTypeKind PropType(const TObject* obj, std::string_view name);
TTypeKind PropType(TClass cls, std::string_view name);

int64_t GetOrdProp(const TObject* obj, PPropInfo prop);
void SetOrdProp(TObject* obj, PPropInfo prop, int64_t value);
int64_t GetOrdProp(const TObject* obj, std::string_view name);
void SetOrdProp(TObject* obj, std::string_view name, int64_t value);
std::string GetStrProp(const TObject* obj, PPropInfo prop);
void SetStrProp(TObject* obj, PPropInfo prop, const std::string& value);
std::string GetStrProp(const TObject* obj, std::string_view name);
void SetStrProp(TObject* obj, std::string_view name, const std::string& value);
std::u16string GetWideStrProp(const TObject* obj, PPropInfo prop);
void SetWideStrProp(TObject* obj, PPropInfo prop, const std::u16string& value);
long double GetFloatProp(const TObject* obj, PPropInfo prop);
void SetFloatProp(TObject* obj, PPropInfo prop, long double value);
long double GetFloatProp(const TObject* obj, std::string_view name);
void SetFloatProp(TObject* obj, std::string_view name, long double value);
int64_t GetInt64Prop(const TObject* obj, PPropInfo prop);
void SetInt64Prop(TObject* obj, PPropInfo prop, int64_t value);
Variant GetVariantProp(const TObject* obj, PPropInfo prop);
void SetVariantProp(TObject* obj, PPropInfo prop, const Variant& value);
TMethod GetMethodProp(const TObject* obj, PPropInfo prop);
void SetMethodProp(TObject* obj, PPropInfo prop, const TMethod& value);
TMethod GetMethodProp(const TObject* obj, std::string_view name);
void SetMethodProp(TObject* obj, std::string_view name, const TMethod& value);
TObject* GetObjectProp(const TObject* obj, PPropInfo prop);
void SetObjectProp(TObject* obj, PPropInfo prop, TObject* value);
TObject* GetObjectProp(const TObject* obj, std::string_view name);
void SetObjectProp(TObject* obj, std::string_view name, TObject* value);
TClass GetObjectPropClass(const TObject* obj, std::string_view name);
TClass GetObjectPropClass(PPropInfo prop);

std::string GetEnumName(PTypeInfo typeInfo, int32_t value);
// The ordinal of a name, case-insensitive; -1 when there is none.
int32_t GetEnumValue(PTypeInfo typeInfo, std::string_view name);

// Whether a type is recognised by its name (TColor, TDateTime, ...), case-insensitive.
bool IsType(PTypeInfo typeInfo, std::string_view name);

// ---------------------------------------------------------------------------------------------
// The class registry, case-insensitive by name.

void RegisterClass(TClass cls);
void RegisterClasses(std::initializer_list<TClass> classes);
void RegisterClasses(std::span<const TClass> classes);
void UnRegisterClass(TClass cls);
void UnRegisterClasses(std::span<const TClass> classes);
TClass GetClass(std::string_view name);
// As GetClass, but raises EClassNotFound for an unknown name.
TClass FindClass(std::string_view name);

// Creates an instance through the class's virtual constructor: with no argument, or with the
// owner (components) or the collection (collection items). Raises when the class has none.
TObject* CreateInstance(TClass cls);
TObject* CreateInstance(TClass cls, TObject* arg);

// The instance CreateInstance(cls) makes, owned by the caller as a T; EInvalidCast, with the
// instance freed, when the class makes something else.
template <class T> std::unique_ptr<T> CreateInstanceOf(TClass cls) {
    std::unique_ptr<TObject> made(CreateInstance(cls));
    if (!dynamic_cast<T*>(made.get())) RaiseInvalidCast();
    return std::unique_ptr<T>(static_cast<T*>(made.release()));
}

// Every class described with RTL_BEGIN_CLASS in the libraries loaded now, registered or not, in
// no set order: a library's classes enter when it is loaded and leave when it is unloaded.
std::vector<TClass> DescribedClasses();

namespace detail {
// Enters a class into DescribedClasses for as long as it lives; one stands beside each class
// description. The class itself is made when first asked for, as StaticClass makes it.
class TDescribedClass {
public:
    explicit TDescribedClass(TClass (*staticClass)());
    ~TDescribedClass();
    TDescribedClass(const TDescribedClass&) = delete;
    TDescribedClass& operator=(const TDescribedClass&) = delete;

private:
    TClass (*staticClass_)();
};
} // namespace detail

} // namespace rtl

// The type information these macros make belongs to the library that declares the type, and goes
// when it is unloaded: a design-time package takes its classes with it.

// Declares an enumeration with the names of its values: RTL_ENUM(TAlign, alNone, alTop).
#define RTL_ENUM(Name, ...)                                                                        \
    enum Name : uint8_t { __VA_ARGS__ };                                                           \
    inline ::rtl::PTypeInfo TypeInfoFor(const Name*) {                                             \
        static const std::unique_ptr<const ::rtl::TTypeInfo> ti{                                   \
            ::rtl::MakeEnumType(#Name, #__VA_ARGS__)};                                             \
        return ti.get();                                                                           \
    }

// Declares a set of an enumeration: RTL_SET(TFontStyles, TFontStyle).
#define RTL_SET(Name, Element)                                                                     \
    struct Name : ::rtl::TSet<Element> {                                                           \
        using TSet::TSet;                                                                          \
        constexpr Name(::rtl::TSet<Element> s) : TSet(s) {}                                        \
        static constexpr Name FromBits(uint32_t b) { return Name(TSet::FromBits(b)); }             \
    };                                                                                             \
    inline ::rtl::PTypeInfo TypeInfoFor(const Name*) {                                             \
        static const std::unique_ptr<const ::rtl::TTypeInfo> ti{                                   \
            ::rtl::MakeSetType(#Name, ::rtl::TypeInfo<Element>())};                                \
        return ti.get();                                                                           \
    }

// Declares an event type: RTL_EVENT(TNotifyEvent, void(TObject* Sender), "Sender: TObject").
// The last argument lists the parameters as the type information shows them.
#define RTL_EVENT(Name, Signature, Params)                                                         \
    struct Name : ::rtl::TEvent<Signature> {                                                       \
        using TEvent::TEvent;                                                                      \
        Name(const ::rtl::TEvent<Signature>& e) : TEvent(e) {}                                     \
    };                                                                                             \
    inline ::rtl::PTypeInfo TypeInfoFor(const Name*) {                                             \
        static const std::unique_ptr<const ::rtl::TTypeInfo> ti{                                   \
            ::rtl::MakeEventType(#Name, #Signature, Params)};                                      \
        return ti.get();                                                                           \
    }

namespace rtl {
// Type information of an event type from its C++ signature text and a Pascal-style parameter
// list ("Sender: TObject; var Key: Word").
PTypeInfo MakeEventType(std::string name, std::string_view signature, std::string_view params);
} // namespace rtl

#define RTL_CONCAT_IMPL(a, b) a##b
#define RTL_CONCAT(a, b) RTL_CONCAT_IMPL(a, b)

// Describes the published part of a class, in a .cpp file.
#define RTL_BEGIN_CLASS(Self)                                                                      \
    static const ::rtl::detail::TDescribedClass RTL_CONCAT(rtlDescribed, __COUNTER__){             \
        &Self::StaticClass};                                                                       \
    ::rtl::TClass Self::StaticClass() {                                                            \
        struct Builder : ::rtl::TClassBuilder<Self> {                                              \
            Builder() : TClassBuilder(#Self) {

#define RTL_END_CLASS                                                                              \
    }                                                                                              \
    }                                                                                              \
    ;                                                                                              \
    static const std::unique_ptr<const ::rtl::TClassInfo> info{Builder().Build()};                 \
    return info.get();                                                                             \
    }

// A class with nothing published.
#define RTL_IMPLEMENT_CLASS(Self) RTL_BEGIN_CLASS(Self) RTL_END_CLASS
