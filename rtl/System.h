// The root of the runtime's object model: TObject, class references, GUIDs and interfaces,
// and method pointers.
//
// A class that takes part in the object model names itself with RTL_CLASS inside its body and
// describes its metadata (published properties, methods, fields, interfaces) once in a .cpp
// file with RTL_BEGIN_CLASS ... RTL_END_CLASS (see rtl/TypInfo.h).
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace rtl {

class TObject;
struct TClassInfo;
struct TTypeInfo;

// A class reference: a pointer to the class's metadata, which names the class and its parent and
// can create instances of it.
using TClass = const TClassInfo*;
using PTypeInfo = const TTypeInfo*;

using HRESULT = int32_t;
constexpr HRESULT S_OK = 0;
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);

// An interface id, as the platform's TGUID.
struct TGUID {
    uint32_t D1 = 0;
    uint16_t D2 = 0;
    uint16_t D3 = 0;
    uint8_t D4[8] = {};

    // Parses "{70E42159-AD26-479D-B0FD-A67ED16897A8}"; the braces are optional.
    static TGUID FromString(std::string_view text);
    std::string ToString() const;
    friend bool operator==(const TGUID&, const TGUID&) = default;
};

// The base interface. Interfaces are abstract C++ classes that carry their id as a static member
// `IID`. Whether _AddRef and _Release count depends on the implementer: objects that live by
// ownership answer -1 and do nothing.
class IInterface {
public:
    virtual HRESULT QueryInterface(const TGUID& iid, void** obj) = 0;
    virtual int32_t _AddRef() = 0;
    virtual int32_t _Release() = 0;

protected:
    ~IInterface() = default;
};

// The platform's method pointer: the code of a method and the object it is called on.
// Two method pointers are equal exactly when both parts are the same.
struct TMethod {
    void* Code = nullptr;
    TObject* Data = nullptr;
    friend bool operator==(const TMethod&, const TMethod&) = default;
    explicit operator bool() const { return Code != nullptr; }
};

class TObject {
public:
    TObject() = default;
    TObject(const TObject&) = delete;
    TObject& operator=(const TObject&) = delete;
    virtual ~TObject() = default;

    static TClass StaticClass();
    virtual TClass ClassType() const { return StaticClass(); }

    const std::string& ClassName() const;
    TClass ClassParent() const;
    bool InheritsFrom(TClass cls) const;
    PTypeInfo ClassInfo() const;

    // The published method table.
    void* MethodAddress(std::string_view name) const;
    std::string MethodName(void* code) const;

    // Looks the interface up in the class's interface table, ancestors included.
    bool GetInterface(const TGUID& iid, void** obj);

    // The class's virtual clean-up before destruction, as the platform's BeforeDestruction.
    virtual void BeforeDestruction() {}
};

// Whether obj offers the interface; on success *intf receives it.
bool Supports(TObject* obj, const TGUID& iid, void** intf = nullptr);
template <class I> I* Supports(TObject* obj) {
    void* p = nullptr;
    return obj && obj->GetInterface(I::IID, &p) ? static_cast<I*>(p) : nullptr;
}

[[noreturn]] void RaiseInvalidCast();

// A checked cast, as the platform's "as": raises EInvalidCast when the object is of another
// class. nil passes.
template <class T> T* As(TObject* obj) {
    if (!obj) return nullptr;
    if (auto* p = dynamic_cast<T*>(obj)) return p;
    RaiseInvalidCast();
}

// dynamic_cast under the platform's name.
template <class T> T* Is(TObject* obj) { return dynamic_cast<T*>(obj); }

// Gives a variable another value until the end of the scope, and then its own back, also when
// the scope is left by an exception.
template <class T> class TScopedValue {
public:
    TScopedValue(T& variable, std::type_identity_t<T> value)
        : variable_(variable), saved_(std::exchange(variable, std::move(value))) {}
    ~TScopedValue() { variable_ = std::move(saved_); }
    TScopedValue(const TScopedValue&) = delete;
    TScopedValue& operator=(const TScopedValue&) = delete;

private:
    T& variable_;
    T saved_;
};

} // namespace rtl

// Names a class of the object model inside its body: gives it a class reference, a virtual
// ClassType and the alias `inherited` for its parent.
#define RTL_CLASS(Self, Parent)                                                                    \
public:                                                                                            \
    using inherited = Parent;                                                                      \
    static ::rtl::TClass StaticClass();                                                            \
    ::rtl::TClass ClassType() const override {                                                     \
        return Self::StaticClass();                                                                \
    }                                                                                              \
                                                                                                   \
private:
