// Interfaces as the IDE hands them out: interface ids, a counting smart pointer in the style of
// DelphiInterface<T>, the query helper that implementers answer QueryInterface with, and the two
// base classes TInterfacedObject and TNotifierObject.
//
// Every interface of the seam derives virtually from its parent interface, and at the bottom
// from rtl::IInterface, so that an object that implements several interfaces which share a
// parent (IOTAWizard and IOTANotifier, say) carries each parent once, and its IInterface part
// is the one identity that comparisons use.
#pragma once

#include "rtl/System.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace ToolsAPI {

using rtl::E_NOINTERFACE;
using rtl::HRESULT;
using rtl::S_OK;
using rtl::TGUID;

namespace detail {
constexpr uint32_t HexDigit(char c) {
    if (c >= '0' && c <= '9') return static_cast<uint32_t>(c - '0');
    if (c >= 'A' && c <= 'F') return static_cast<uint32_t>(c - 'A' + 10);
    if (c >= 'a' && c <= 'f') return static_cast<uint32_t>(c - 'a' + 10);
    throw "bad hex digit in an interface id";
}
constexpr uint32_t HexField(const char* s, int digits) {
    uint32_t v = 0;
    for (int i = 0; i < digits; ++i)
        v = v * 16 + HexDigit(s[i]);
    return v;
}
} // namespace detail

// An interface id from its text "{F17A7BCD-E07D-11D1-AB0B-00C04FB16FB3}", at compile time.
template <std::size_t N> constexpr TGUID Guid(const char (&s)[N]) {
    static_assert(N == 39, "an interface id is written {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}");
    TGUID g;
    g.D1 = detail::HexField(s + 1, 8);
    g.D2 = static_cast<uint16_t>(detail::HexField(s + 10, 4));
    g.D3 = static_cast<uint16_t>(detail::HexField(s + 15, 4));
    g.D4[0] = static_cast<uint8_t>(detail::HexField(s + 20, 2));
    g.D4[1] = static_cast<uint8_t>(detail::HexField(s + 22, 2));
    for (int i = 0; i < 6; ++i)
        g.D4[2 + i] = static_cast<uint8_t>(detail::HexField(s + 25 + 2 * i, 2));
    return g;
}

// The id under which every object answers with its identity.
inline constexpr TGUID IID_IInterface = Guid("{00000000-0000-0000-C000-000000000046}");

} // namespace ToolsAPI

// Opens the body of an interface: its id and its parent interface, for the query helper.
#define OTA_INTERFACE(Parent, GuidText)                                                            \
public:                                                                                            \
    using ParentInterface = Parent;                                                                \
    static constexpr ::rtl::TGUID IID = ::ToolsAPI::Guid(GuidText);

namespace ToolsAPI {

// The counting smart pointer: holds one reference, compares by the identity of the object.
template <class T> class DelphiInterface {
public:
    DelphiInterface() noexcept = default;
    DelphiInterface(std::nullptr_t) noexcept {}
    DelphiInterface(T* p) noexcept : p_(p) {
        if (p_) p_->_AddRef();
    }
    DelphiInterface(const DelphiInterface& o) noexcept : DelphiInterface(o.p_) {}
    DelphiInterface(DelphiInterface&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    DelphiInterface(const DelphiInterface<U>& o) noexcept : DelphiInterface(o.get()) {}
    ~DelphiInterface() { reset(); }

    DelphiInterface& operator=(DelphiInterface o) noexcept {
        std::swap(p_, o.p_);
        return *this;
    }
    DelphiInterface& operator=(std::nullptr_t) noexcept {
        reset();
        return *this;
    }

    void reset() noexcept {
        if (T* p = std::exchange(p_, nullptr)) p->_Release();
    }
    T* get() const noexcept { return p_; }
    T* operator->() const noexcept { return p_; }
    T& operator*() const noexcept { return *p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }

    // Takes over a reference that was already counted for us (as QueryInterface gives one).
    static DelphiInterface Attach(T* p) noexcept {
        DelphiInterface r;
        r.p_ = p;
        return r;
    }

private:
    T* p_ = nullptr;
};

// The identity of an interface's object: its IInterface part, or nullptr.
rtl::IInterface* Identity(rtl::IInterface* intf);

template <class A, class B>
bool operator==(const DelphiInterface<A>& a, const DelphiInterface<B>& b) {
    return Identity(a.get()) == Identity(b.get());
}
template <class A> bool operator==(const DelphiInterface<A>& a, std::nullptr_t) {
    return !a;
}

// Asks an interface for another one; an empty source gives false.
template <class I, class T> bool Supports(const DelphiInterface<T>& src, DelphiInterface<I>& out) {
    out = nullptr;
    if (!src) return false;
    void* p = nullptr;
    if (src->QueryInterface(I::IID, &p) != S_OK || !p) return false;
    out = DelphiInterface<I>::Attach(static_cast<I*>(p));
    return true;
}
template <class I, class T> bool Supports(const DelphiInterface<T>& src) {
    DelphiInterface<I> tmp;
    return Supports(src, tmp);
}
// The interface I of src, or empty: the platform's "as" without the raise.
template <class I, class T> DelphiInterface<I> Query(const DelphiInterface<T>& src) {
    DelphiInterface<I> r;
    Supports(src, r);
    return r;
}

// The query helper: answers QueryInterface for the interfaces Is... of self and for each of
// their parent interfaces, and for IID_IInterface with the object's identity.
template <class I, class Self> bool QueryChain(Self* self, const TGUID& iid, void** obj) {
    if (iid == I::IID) {
        I* p = static_cast<I*>(self);
        p->_AddRef();
        *obj = p;
        return true;
    }
    if constexpr (!std::is_same_v<typename I::ParentInterface, rtl::IInterface>)
        return QueryChain<typename I::ParentInterface>(self, iid, obj);
    return false;
}
template <class... Is, class Self>
HRESULT QueryInterfaces(Self* self, const TGUID& iid, void** obj) {
    if (!obj) return E_NOINTERFACE;
    *obj = nullptr;
    if (iid == IID_IInterface) {
        rtl::IInterface* p = static_cast<rtl::IInterface*>(self);
        p->_AddRef();
        *obj = p;
        return S_OK;
    }
    return (QueryChain<Is>(self, iid, obj) || ...) ? S_OK : E_NOINTERFACE;
}

// The base of counted implementers: the object frees itself when the last reference goes, so
// it must be held by a DelphiInterface (MakeInterfaced) before anything queries or compares it.
// A derived class answers its interfaces with
//     HRESULT QueryInterface(const TGUID& iid, void** obj) override {
//         return QueryInterfaces<IOTAFoo, IOTABar>(this, iid, obj);
//     }
class TInterfacedObject : public rtl::TObject, public virtual rtl::IInterface {
    RTL_CLASS(TInterfacedObject, rtl::TObject)
public:
    TInterfacedObject() = default;
    ~TInterfacedObject() override = default;

    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<>(this, iid, obj);
    }
    int32_t _AddRef() override { return ++refCount_; }
    int32_t _Release() override {
        int32_t r = --refCount_;
        if (r == 0) delete this;
        return r;
    }
    int32_t RefCount() const { return refCount_; }

private:
    int32_t refCount_ = 0;
};

// Makes a counted object and hands out its first reference.
template <class T, class... Args> DelphiInterface<T> MakeInterfaced(Args&&... args) {
    return DelphiInterface<T>(new T(std::forward<Args>(args)...));
}

} // namespace ToolsAPI
