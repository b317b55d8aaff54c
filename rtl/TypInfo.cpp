#include "rtl/TypInfo.h"

#include "rtl/SysUtils.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace rtl {

namespace {

char UpAscii(char c) { return (c >= 'a' && c <= 'z') ? char(c - 32) : c; }

bool SameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (UpAscii(a[i]) != UpAscii(b[i])) return false;
    return true;
}

int CompareNames(std::string_view a, std::string_view b) {
    size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        unsigned char x = UpAscii(a[i]), y = UpAscii(b[i]);
        if (x != y) return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

std::string UpperName(std::string_view s) {
    std::string r(s);
    for (auto& c : r) c = UpAscii(c);
    return r;
}

std::string_view TrimView(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t' || s.front() == '\n'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\n'))
        s.remove_suffix(1);
    return s;
}

[[noreturn]] void UnknownProperty(std::string_view name) {
    throw EPropertyError("Property " + std::string(name) + " does not exist");
}

[[noreturn]] void InvalidPropertyType(PPropInfo p) {
    throw EPropertyError("Invalid property type: " + p->PropType->Name);
}

template <class C> const TAccessor<C>& Readable(PPropInfo p, const TAccessor<C>& acc) {
    if (!acc.get) {
        if (!acc.set) InvalidPropertyType(p);
        throw EPropertyError("Property " + p->Name + " is write-only");
    }
    return acc;
}

template <class C> const TAccessor<C>& Writable(PPropInfo p, const TAccessor<C>& acc) {
    if (!acc.set) {
        if (!acc.get) InvalidPropertyType(p);
        throw EPropertyError("Property " + p->Name + " is read-only");
    }
    return acc;
}

PPropInfo Required(const TObject* obj, std::string_view name) {
    PPropInfo p = GetPropInfo(obj, name);
    if (!p) UnknownProperty(name);
    return p;
}

} // namespace

PTypeData GetTypeData(PTypeInfo typeInfo) { return typeInfo ? &typeInfo->Data : nullptr; }

bool TClassInfo::InheritsFrom(TClass cls) const {
    for (TClass c = this; c; c = c->Parent)
        if (c == cls) return true;
    return false;
}

// ---------------------------------------------------------------------------------------------
// Type information of C++ types

PTypeInfo MakeOrdinalType(TTypeKind kind, std::string name, TOrdType ot, int32_t min,
                          int32_t max) {
    auto* ti = new TTypeInfo{kind, std::move(name), {}};
    ti->Data.OrdType = ot;
    ti->Data.MinValue = min;
    ti->Data.MaxValue = max;
    return ti;
}

PTypeInfo MakeEnumType(std::string name, std::string_view names) {
    auto* ti = new TTypeInfo{tkEnumeration, std::move(name), {}};
    while (!names.empty()) {
        size_t comma = names.find(',');
        std::string_view item = names.substr(0, comma);
        if (size_t eq = item.find('='); eq != std::string_view::npos) item = item.substr(0, eq);
        ti->Data.NameList.emplace_back(TrimView(item));
        if (comma == std::string_view::npos) break;
        names.remove_prefix(comma + 1);
    }
    ti->Data.OrdType = ti->Data.NameList.size() <= 256 ? otUByte : otUWord;
    ti->Data.MinValue = 0;
    ti->Data.MaxValue = static_cast<int32_t>(ti->Data.NameList.size()) - 1;
    ti->Data.BaseType = ti;
    return ti;
}

PTypeInfo MakeSetType(std::string name, PTypeInfo compType) {
    auto* ti = new TTypeInfo{tkSet, std::move(name), {}};
    ti->Data.OrdType = otULong;
    ti->Data.CompType = compType;
    return ti;
}

PTypeInfo MakeFloatType(std::string name, TFloatType ft) {
    auto* ti = new TTypeInfo{tkFloat, std::move(name), {}};
    ti->Data.FloatType = ft;
    return ti;
}

PTypeInfo MakeMethodType(std::string name, TMethodKind kind, std::vector<TParamInfo> params,
                         std::string resultType) {
    auto* ti = new TTypeInfo{tkMethod, std::move(name), {}};
    ti->Data.MethodKind = kind;
    ti->Data.Params = std::move(params);
    ti->Data.ResultType = std::move(resultType);
    return ti;
}

// Parses "Sender: TObject; var Key: Word; const A, B: string" into parameters.
PTypeInfo MakeEventType(std::string name, std::string_view signature, std::string_view params) {
    std::vector<TParamInfo> list;
    while (!params.empty()) {
        size_t semi = params.find(';');
        std::string_view group = TrimView(params.substr(0, semi));
        params = semi == std::string_view::npos ? std::string_view{} : params.substr(semi + 1);
        if (group.empty()) continue;
        uint8_t flags = 0;
        auto takeWord = [&](std::string_view word, TParamFlag flag) {
            if (group.size() > word.size() && SameName(group.substr(0, word.size()), word) &&
                group[word.size()] == ' ') {
                flags |= uint8_t(1u << flag);
                group = TrimView(group.substr(word.size()));
            }
        };
        takeWord("var", pfVar);
        takeWord("const", pfConst);
        takeWord("out", pfOut);
        size_t colon = group.find(':');
        std::string typeName =
            colon == std::string_view::npos ? "" : std::string(TrimView(group.substr(colon + 1)));
        std::string_view names = group.substr(0, colon);
        while (!names.empty()) {
            size_t comma = names.find(',');
            list.push_back({flags, std::string(TrimView(names.substr(0, comma))), typeName});
            if (comma == std::string_view::npos) break;
            names.remove_prefix(comma + 1);
        }
    }
    bool isProcedure = TrimView(signature).starts_with("void");
    return MakeMethodType(std::move(name), isProcedure ? mkProcedure : mkFunction, std::move(list),
                          "");
}

#define RTL_ORDINAL_TYPE(CType, Kind, Name, Ord, Min, Max)                                         \
    PTypeInfo TypeInfoFor(const CType*) {                                                          \
        static const PTypeInfo ti = MakeOrdinalType(Kind, Name, Ord, Min, Max);                    \
        return ti;                                                                                 \
    }
RTL_ORDINAL_TYPE(int8_t, tkInteger, "ShortInt", otSByte, -128, 127)
RTL_ORDINAL_TYPE(uint8_t, tkInteger, "Byte", otUByte, 0, 255)
RTL_ORDINAL_TYPE(int16_t, tkInteger, "SmallInt", otSWord, -32768, 32767)
RTL_ORDINAL_TYPE(uint16_t, tkInteger, "Word", otUWord, 0, 65535)
RTL_ORDINAL_TYPE(int32_t, tkInteger, "Integer", otSLong, INT32_MIN, INT32_MAX)
RTL_ORDINAL_TYPE(uint32_t, tkInteger, "Cardinal", otULong, 0, -1)
RTL_ORDINAL_TYPE(char, tkChar, "Char", otUByte, 0, 255)
RTL_ORDINAL_TYPE(char16_t, tkWChar, "WideChar", otUWord, 0, 65535)
RTL_ORDINAL_TYPE(TShortCut, tkInteger, "TShortCut", otUWord, 0, 65535)
RTL_ORDINAL_TYPE(TSpinInt, tkInteger, "TSpinInt", otSLong, INT32_MIN, INT32_MAX)
#undef RTL_ORDINAL_TYPE

PTypeInfo TypeInfoFor(const int64_t*) {
    static const PTypeInfo ti = [] {
        auto* t = new TTypeInfo{tkInt64, "Int64", {}};
        t->Data.MinInt64Value = INT64_MIN;
        t->Data.MaxInt64Value = INT64_MAX;
        return t;
    }();
    return ti;
}

PTypeInfo TypeInfoFor(const bool*) {
    static const PTypeInfo ti = MakeEnumType("Boolean", "False, True");
    return ti;
}

#define RTL_FLOAT_TYPE(CType, Name, Ft)                                                            \
    PTypeInfo TypeInfoFor(const CType*) {                                                          \
        static const PTypeInfo ti = MakeFloatType(Name, Ft);                                       \
        return ti;                                                                                 \
    }
RTL_FLOAT_TYPE(float, "Single", ftSingle)
RTL_FLOAT_TYPE(double, "Double", ftDouble)
RTL_FLOAT_TYPE(long double, "Extended", ftExtended)
RTL_FLOAT_TYPE(TDateTime, "TDateTime", ftDouble)
RTL_FLOAT_TYPE(TDate, "TDate", ftDouble)
RTL_FLOAT_TYPE(TTime, "TTime", ftDouble)
#undef RTL_FLOAT_TYPE

PTypeInfo TypeInfoFor(const std::string*) {
    static const PTypeInfo ti = new TTypeInfo{tkLString, "AnsiString", {}};
    return ti;
}
PTypeInfo TypeInfoFor(const TShortCutString*) {
    static const PTypeInfo ti = new TTypeInfo{tkLString, "TShortCutString", {}};
    return ti;
}
PTypeInfo TypeInfoFor(const std::u16string*) {
    static const PTypeInfo ti = new TTypeInfo{tkWString, "WideString", {}};
    return ti;
}
PTypeInfo TypeInfoFor(const Variant*) {
    static const PTypeInfo ti = new TTypeInfo{tkVariant, "Variant", {}};
    return ti;
}

namespace detail {

void RaiseInvalidPropertyCast(TObject* value, TClass expected) {
    throw EInvalidCast("Invalid class typecast: " + value->ClassName() + " is not " +
                       expected->Name);
}

void FinishClassInfo(TClassInfo& info, TClass parent) {
    info.Parent = parent;
    info.TypeInfo.Kind = tkClass;
    info.TypeInfo.Name = info.Name;
    info.TypeInfo.Data.ClassType = &info;
    if (parent) info.AllProps = parent->AllProps;
    for (auto& p : info.OwnProps) {
        // A property published again by a descendant takes the place of the ancestor's.
        auto same = std::find_if(info.AllProps.begin(), info.AllProps.end(),
                                 [&](PPropInfo q) { return SameName(q->Name, p->Name); });
        if (same != info.AllProps.end()) {
            p->NameIndex = (*same)->NameIndex;
            *same = p.get();
        } else {
            p->NameIndex = static_cast<int16_t>(info.AllProps.size());
            info.AllProps.push_back(p.get());
        }
    }
    info.TypeInfo.Data.PropCount = static_cast<int16_t>(info.AllProps.size());
}

} // namespace detail

// ---------------------------------------------------------------------------------------------
// Property lists and lookup

std::span<const PPropInfo> GetPropInfos(TClass cls) {
    return cls ? std::span<const PPropInfo>(cls->AllProps) : std::span<const PPropInfo>{};
}

std::span<const PPropInfo> GetPropInfos(PTypeInfo typeInfo) {
    return typeInfo && typeInfo->Kind == tkClass ? GetPropInfos(typeInfo->Data.ClassType)
                                                 : std::span<const PPropInfo>{};
}

std::vector<PPropInfo> GetPropList(TClass cls, TTypeKinds kinds, bool sortList) {
    std::vector<PPropInfo> list;
    for (PPropInfo p : GetPropInfos(cls))
        if (kinds.Contains(p->PropType->Kind)) list.push_back(p);
    if (sortList)
        std::stable_sort(list.begin(), list.end(), [](PPropInfo a, PPropInfo b) {
            return CompareNames(a->Name, b->Name) < 0;
        });
    return list;
}

std::vector<PPropInfo> GetPropList(PTypeInfo typeInfo, TTypeKinds kinds, bool sortList) {
    return GetPropList(typeInfo && typeInfo->Kind == tkClass ? typeInfo->Data.ClassType : nullptr,
                       kinds, sortList);
}

PPropInfo GetPropInfo(TClass cls, std::string_view name) {
    for (PPropInfo p : GetPropInfos(cls))
        if (SameName(p->Name, name)) return p;
    return nullptr;
}

PPropInfo GetPropInfo(PTypeInfo typeInfo, std::string_view name) {
    return typeInfo && typeInfo->Kind == tkClass ? GetPropInfo(typeInfo->Data.ClassType, name)
                                                 : nullptr;
}

PPropInfo GetPropInfo(const TObject* obj, std::string_view name, TTypeKinds kinds) {
    if (!obj) return nullptr;
    PPropInfo p = GetPropInfo(obj->ClassType(), name);
    return p && kinds.Contains(p->PropType->Kind) ? p : nullptr;
}

bool IsPublishedProp(const TObject* obj, std::string_view name) {
    return GetPropInfo(obj, name) != nullptr;
}
bool IsPublishedProp(TClass cls, std::string_view name) {
    return GetPropInfo(cls, name) != nullptr;
}

bool IsStoredProp(const TObject* obj, PPropInfo prop) {
    if (prop->Stored) return prop->Stored(obj);
    return prop->StoredConst;
}
bool IsStoredProp(const TObject* obj, std::string_view name) {
    return IsStoredProp(obj, Required(obj, name));
}

TTypeKind PropType(const TObject* obj, std::string_view name) {
    return Required(obj, name)->PropType->Kind;
}
TTypeKind PropType(TClass cls, std::string_view name) {
    PPropInfo p = GetPropInfo(cls, name);
    if (!p) UnknownProperty(name);
    return p->PropType->Kind;
}

// ---------------------------------------------------------------------------------------------
// Reading and writing properties

int64_t GetOrdProp(const TObject* obj, PPropInfo prop) {
    if (prop->PropType->Kind == tkClass)
        return static_cast<int64_t>(reinterpret_cast<intptr_t>(GetObjectProp(obj, prop)));
    int64_t v = Readable(prop, prop->Ord).get(obj);
    // Ordinals travel as 32 bits, as the platform's GetOrdProp returns them.
    return prop->PropType->Kind == tkInt64 ? v : static_cast<int32_t>(v);
}

void SetOrdProp(TObject* obj, PPropInfo prop, int64_t value) {
    if (prop->PropType->Kind == tkClass)
        return SetObjectProp(obj, prop, reinterpret_cast<TObject*>(static_cast<intptr_t>(value)));
    Writable(prop, prop->Ord).set(obj, value);
}

int64_t GetOrdProp(const TObject* obj, std::string_view name) {
    return GetOrdProp(obj, Required(obj, name));
}
void SetOrdProp(TObject* obj, std::string_view name, int64_t value) {
    SetOrdProp(obj, Required(obj, name), value);
}

std::string GetStrProp(const TObject* obj, PPropInfo prop) {
    if (prop->PropType->Kind == tkWString) {
        std::u16string w = GetWideStrProp(obj, prop);
        return Variant(w).AsString();
    }
    return Readable(prop, prop->Str).get(obj);
}

void SetStrProp(TObject* obj, PPropInfo prop, const std::string& value) {
    if (prop->PropType->Kind == tkWString)
        return SetWideStrProp(obj, prop, Variant(value).AsWideString());
    Writable(prop, prop->Str).set(obj, value);
}

std::string GetStrProp(const TObject* obj, std::string_view name) {
    return GetStrProp(obj, Required(obj, name));
}
void SetStrProp(TObject* obj, std::string_view name, const std::string& value) {
    SetStrProp(obj, Required(obj, name), value);
}

std::u16string GetWideStrProp(const TObject* obj, PPropInfo prop) {
    if (prop->PropType->Kind != tkWString) return Variant(GetStrProp(obj, prop)).AsWideString();
    return Readable(prop, prop->WideStr).get(obj);
}

void SetWideStrProp(TObject* obj, PPropInfo prop, const std::u16string& value) {
    if (prop->PropType->Kind != tkWString) return SetStrProp(obj, prop, Variant(value).AsString());
    Writable(prop, prop->WideStr).set(obj, value);
}

long double GetFloatProp(const TObject* obj, PPropInfo prop) {
    return Readable(prop, prop->Float).get(obj);
}
void SetFloatProp(TObject* obj, PPropInfo prop, long double value) {
    Writable(prop, prop->Float).set(obj, value);
}
long double GetFloatProp(const TObject* obj, std::string_view name) {
    return GetFloatProp(obj, Required(obj, name));
}
void SetFloatProp(TObject* obj, std::string_view name, long double value) {
    SetFloatProp(obj, Required(obj, name), value);
}

int64_t GetInt64Prop(const TObject* obj, PPropInfo prop) {
    return Readable(prop, prop->Ord).get(obj);
}
void SetInt64Prop(TObject* obj, PPropInfo prop, int64_t value) {
    Writable(prop, prop->Ord).set(obj, value);
}

Variant GetVariantProp(const TObject* obj, PPropInfo prop) {
    return Readable(prop, prop->Var).get(obj);
}
void SetVariantProp(TObject* obj, PPropInfo prop, const Variant& value) {
    Writable(prop, prop->Var).set(obj, value);
}

TMethod GetMethodProp(const TObject* obj, PPropInfo prop) {
    return Readable(prop, prop->Meth).get(obj);
}
void SetMethodProp(TObject* obj, PPropInfo prop, const TMethod& value) {
    Writable(prop, prop->Meth).set(obj, value);
}
TMethod GetMethodProp(const TObject* obj, std::string_view name) {
    return GetMethodProp(obj, Required(obj, name));
}
void SetMethodProp(TObject* obj, std::string_view name, const TMethod& value) {
    SetMethodProp(obj, Required(obj, name), value);
}

TObject* GetObjectProp(const TObject* obj, PPropInfo prop) {
    return Readable(prop, prop->Obj).get(obj);
}
void SetObjectProp(TObject* obj, PPropInfo prop, TObject* value) {
    Writable(prop, prop->Obj).set(obj, value);
}
TObject* GetObjectProp(const TObject* obj, std::string_view name) {
    return GetObjectProp(obj, Required(obj, name));
}
void SetObjectProp(TObject* obj, std::string_view name, TObject* value) {
    SetObjectProp(obj, Required(obj, name), value);
}

TClass GetObjectPropClass(PPropInfo prop) {
    if (prop->PropType->Kind != tkClass) InvalidPropertyType(prop);
    return prop->PropType->Data.ClassType;
}
TClass GetObjectPropClass(const TObject* obj, std::string_view name) {
    return GetObjectPropClass(Required(obj, name));
}

std::string GetEnumName(PTypeInfo typeInfo, int32_t value) {
    if (!typeInfo) return {};
    if (typeInfo->Kind == tkInteger) return std::to_string(value);
    const auto& names = typeInfo->Data.BaseType ? typeInfo->Data.BaseType->Data.NameList
                                                : typeInfo->Data.NameList;
    if (value < 0 || static_cast<size_t>(value) >= names.size()) return {};
    return names[static_cast<size_t>(value)];
}

int32_t GetEnumValue(PTypeInfo typeInfo, std::string_view name) {
    if (!typeInfo) return -1;
    if (typeInfo->Kind == tkInteger) {
        try {
            return static_cast<int32_t>(std::stol(std::string(name)));
        } catch (const std::exception&) {
            return -1;
        }
    }
    const auto& names = typeInfo->Data.BaseType ? typeInfo->Data.BaseType->Data.NameList
                                                : typeInfo->Data.NameList;
    for (size_t i = 0; i < names.size(); ++i)
        if (SameName(names[i], name)) return static_cast<int32_t>(i);
    return -1;
}

bool IsType(PTypeInfo typeInfo, std::string_view name) {
    return typeInfo && SameName(typeInfo->Name, name);
}

// ---------------------------------------------------------------------------------------------
// The class registry

namespace {
struct Registry {
    std::mutex lock;
    std::map<std::string, TClass> byName;
};
Registry& TheRegistry() {
    static Registry r;
    return r;
}
} // namespace

void RegisterClass(TClass cls) {
    auto& r = TheRegistry();
    std::lock_guard g(r.lock);
    // The class and its ancestors up to TPersistent, as the platform registers them.
    for (TClass c = cls; c; c = c->Parent) {
        std::string key = UpperName(c->Name);
        auto it = r.byName.find(key);
        if (it != r.byName.end()) {
            if (it->second == c) break;
            throw EFilerError("A class named " + c->Name + " already exists");
        }
        r.byName.emplace(std::move(key), c);
        if (c->Name == "TPersistent") break;
    }
}

void RegisterClasses(std::initializer_list<TClass> classes) {
    for (TClass c : classes) RegisterClass(c);
}
void RegisterClasses(std::span<const TClass> classes) {
    for (TClass c : classes) RegisterClass(c);
}

void UnRegisterClass(TClass cls) {
    if (!cls) return;
    auto& r = TheRegistry();
    std::lock_guard g(r.lock);
    auto it = r.byName.find(UpperName(cls->Name));
    if (it != r.byName.end() && it->second == cls) r.byName.erase(it);
}

void UnRegisterClasses(std::span<const TClass> classes) {
    for (TClass c : classes) UnRegisterClass(c);
}

TClass GetClass(std::string_view name) {
    auto& r = TheRegistry();
    std::lock_guard g(r.lock);
    auto it = r.byName.find(UpperName(name));
    return it == r.byName.end() ? nullptr : it->second;
}

TClass FindClass(std::string_view name) {
    TClass c = GetClass(name);
    if (!c) throw EClassNotFound("Class " + std::string(name) + " not found");
    return c;
}

namespace {
// A nil class reference, as GetClass returns for an unknown name, is an error, not a crash.
void CheckClassReference(TClass cls) {
    if (!cls) throw EInvalidOperation("Cannot create an instance of a nil class reference");
}
} // namespace

namespace {
// The class descriptions of the loaded libraries. Never freed: a library unloaded at exit takes
// its entries out after every static of this one may have gone.
struct TDescriptions {
    std::mutex lock;
    std::vector<TClass (*)()> entries;
};
TDescriptions& Descriptions() {
    static auto* d = new TDescriptions;
    return *d;
}
} // namespace

detail::TDescribedClass::TDescribedClass(TClass (*staticClass)()) : staticClass_(staticClass) {
    auto& d = Descriptions();
    std::lock_guard g(d.lock);
    d.entries.push_back(staticClass);
}

detail::TDescribedClass::~TDescribedClass() {
    auto& d = Descriptions();
    std::lock_guard g(d.lock);
    auto it = std::find(d.entries.begin(), d.entries.end(), staticClass_);
    if (it != d.entries.end()) d.entries.erase(it);
}

std::vector<TClass> DescribedClasses() {
    std::vector<TClass (*)()> entries;
    {
        auto& d = Descriptions();
        std::lock_guard g(d.lock);
        entries = d.entries;
    }
    // Made outside the lock: making a class makes its ancestors first.
    std::vector<TClass> classes;
    classes.reserve(entries.size());
    for (auto staticClass : entries)
        classes.push_back(staticClass());
    return classes;
}

TObject* CreateInstance(TClass cls) {
    CheckClassReference(cls);
    if (!cls->Create)
        throw EInvalidOperation("Class " + cls->Name + " cannot be created without an argument");
    return cls->Create();
}

TObject* CreateInstance(TClass cls, TObject* arg) {
    CheckClassReference(cls);
    if (cls->CreateWith) return cls->CreateWith(arg);
    return CreateInstance(cls);
}

} // namespace rtl
