#include "persistence/DataHndl.h"

#include "foundation/Dialogs.h"
#include "foundation/ResStrings.h"
#include "persistence/Storage.h"
#include "persistence/StreamObjects.h"
#include "rtl/Graphics.h"
#include "rtl/ObjectText.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace zelvane {

using namespace rtl;

// ---------------------------------------------------------------------------------------------
// Texts of the persistence layer. 0x92 is the typographic apostrophe of Windows-1251; the doubled
// apostrophes are shown as they stand.

namespace {
const TResStringEntry kPersistenceTexts[] = {
    {SPropNotExists, "Property by name ''%s'' does not exist."},
    {SUnsupportedVarType, "Unsupported variable type."},
    {SLoadErrorContinue, "Load error.%s%s.%sContinue loading?"},
    {SPropNotFound, "Property %s not found"},
    {SCollItemExists, "Collection\x92s element ''%s'' already exists."},
    {SObjectExists, "Object ''%s'' already exists."},
    {SLabelNotFound, "Incorrect data format. Required label not found."},
    {SUnacceptableValue, "%s is unacceptable value for type."},
    {SIncorrectSetValue, "%s is incorrect value for set."},
    {SUnacceptableColor, "%s is unacceptable value for TColor."},
    {SNoObjectInStream, "Thread does not contain object."},
};
const TResStringBlock kPersistenceBlock(kPersistenceTexts);
} // namespace

RTL_IMPLEMENT_CLASS(EDataHandlingError)
RTL_BEGIN_CLASS(TWrapper)
    Property("I", &TWrapper::I);
RTL_END_CLASS
RTL_IMPLEMENT_CLASS(TAdvReader)
RTL_IMPLEMENT_CLASS(TAdvWriter)

char SeparatorChar = '-';
bool SuppressErrorInfo = false;
bool SkipComponentName = false;
TSetNameProc SetNameProc = nullptr;

// ---------------------------------------------------------------------------------------------
// Enumerations and sets

std::string EnumToStr(PTypeInfo typeInfo, int32_t value) {
    return GetEnumName(typeInfo, value);
}

int32_t StrToEnum(PTypeInfo typeInfo, const std::string& text) {
    int32_t value = GetEnumValue(typeInfo, text);
    if (value < 0) CreateException<EDataHandlingError>(SUnacceptableValue, {text});
    return value;
}

namespace {
PTypeInfo SetElementType(PTypeInfo setType) {
    PTypeData data = GetTypeData(setType);
    if (!setType || setType->Kind != tkSet || !data->CompType)
        CreateException<EDataHandlingError>(SUnsupportedVarType);
    return data->CompType;
}
} // namespace

std::string SetToStr(PTypeInfo setType, uint32_t value) {
    PTypeInfo compType = SetElementType(setType);
    std::string text = "[";
    for (int bit = 0; bit < 32; ++bit) {
        if (!(value & (1u << bit))) continue;
        if (text.size() != 1) text += ',';
        text += GetEnumName(compType, bit);
    }
    return text + "]";
}

uint32_t StrToSet(PTypeInfo setType, const std::string& text) {
    PTypeInfo compType = SetElementType(setType);
    size_t open = text.find('[');
    if (open == std::string::npos) CreateException<EDataHandlingError>(SIncorrectSetValue, {text});
    uint32_t result = 0;
    size_t start = open + 1;
    for (;;) {
        size_t delim = text.find_first_of(",]", start);
        if (delim == std::string::npos) {
            // The text ends inside a name: what was read stands, the rest is dropped.
            if (result != 0 || text.back() == ']') return result;
            CreateException<EDataHandlingError>(SIncorrectSetValue, {text});
        }
        std::string name = Trim(std::string_view(text).substr(start, delim - start));
        if (!name.empty()) {
            int32_t value = StrToEnum(compType, name);
            if (value >= 0 && value <= 31) result |= 1u << value;
        }
        start = delim + 1;
    }
}

void FillEnumNames(PTypeInfo typeInfo, TStrings* list) {
    list->Clear();
    PTypeData data = GetTypeData(typeInfo);
    if (!data) return;
    for (int32_t v = data->MinValue; v <= data->MaxValue; ++v)
        list->Add(GetEnumName(typeInfo, v));
}

bool ContainsIn(PTypeInfo typeInfo, const std::string& name) {
    return GetEnumValue(typeInfo, name) >= 0;
}

// ---------------------------------------------------------------------------------------------
// Property access

namespace {

PTypeInfo TypeInfoOf(TObject* obj, const TGetTypeInfoProc& getTypeInfo) {
    return getTypeInfo ? getTypeInfo(obj) : obj->ClassInfo();
}

PPropInfo Lookup(TObject* obj, std::string_view name, const TGetTypeInfoProc& getTypeInfo) {
    PTypeInfo typeInfo = TypeInfoOf(obj, getTypeInfo);
    return typeInfo ? GetPropInfo(typeInfo, name) : nullptr;
}

// Calls access with the property that path names from obj and the object that holds it; a path
// that leads to no property raises EDataHandlingError.
template <class Access>
decltype(auto) AtPath(TObject* obj, const std::string& path, const TGetTypeInfoProc& getTypeInfo,
                      Access&& access) {
    TObject* holder = obj;
    PPropInfo p = FindPropInfo(holder, path, getTypeInfo);
    if (!p) CreateException<EDataHandlingError>(SPropNotExists, {path});
    return access(holder, p);
}

[[noreturn]] void Unsupported() {
    CreateException<EDataHandlingError>(SUnsupportedVarType);
}

void CheckArgs(TObject* obj, PPropInfo propInfo) {
    if (!obj || !propInfo) CreateException<EDataHandlingError>(SPropNotExists, {std::string()});
}

bool IsDateType(PTypeInfo type) {
    return IsType(type, "TDateTime") || IsType(type, "TDate");
}

} // namespace

PPropInfo FindPropInfo(TObject*& obj, const std::string& path,
                       const TGetTypeInfoProc& getTypeInfo) {
    if (!obj) return nullptr;
    size_t start = 0;
    for (;;) {
        size_t dot = path.find('.', start);
        std::string_view segment = std::string_view(path).substr(
            start, dot == std::string::npos ? std::string::npos : dot - start);
        PPropInfo p = Lookup(obj, segment, getTypeInfo);
        if (dot == std::string::npos || !p) return p;
        // The walk goes on only through an object that is there; otherwise the property that
        // could be reached is the answer.
        TObject* value = nullptr;
        if (p->PropType->Kind == tkClass && p->GetProc) value = GetObjectProp(obj, p);
        if (!value) return p;
        obj = value;
        start = dot + 1;
    }
}

std::string GetPropAsText(TObject* obj, PPropInfo propInfo) {
    CheckArgs(obj, propInfo);
    PTypeInfo type = propInfo->PropType;
    switch (type->Kind) {
    case tkInteger: {
        int64_t value = GetOrdProp(obj, propInfo);
        if (IsType(type, "TColor")) {
            // A colour without a name gives an empty text.
            std::string ident;
            ColorToIdent(static_cast<int32_t>(value), ident);
            return ident;
        }
        return IntToStr(value);
    }
    case tkChar:
        return std::string(1, static_cast<char>(GetOrdProp(obj, propInfo)));
    case tkEnumeration:
        return EnumToStr(type, static_cast<int32_t>(GetOrdProp(obj, propInfo)));
    case tkFloat: {
        long double value = GetFloatProp(obj, propInfo);
        if (IsDateType(type)) return DateTimeToStr(TDateTime(static_cast<double>(value)));
        if (IsType(type, "TTime")) return TimeToStr(TDateTime(static_cast<double>(value)));
        return FloatToStr(value);
    }
    case tkString:
    case tkLString:
    case tkWString:
        return GetStrProp(obj, propInfo);
    case tkSet:
        return SetToStr(type, static_cast<uint32_t>(GetOrdProp(obj, propInfo)));
    default:
        Unsupported();
    }
}

std::string GetPropAsText(TObject* obj, const std::string& path,
                          const TGetTypeInfoProc& getTypeInfo) {
    return AtPath(obj, path, getTypeInfo,
                  [](TObject* holder, PPropInfo p) { return GetPropAsText(holder, p); });
}

void SetPropByText(TObject* obj, PPropInfo propInfo, const std::string& text) {
    CheckArgs(obj, propInfo);
    PTypeInfo type = propInfo->PropType;
    switch (type->Kind) {
    case tkInteger:
        if (IsType(type, "TColor")) {
            int32_t color = 0;
            if (!IdentToColor(text, color))
                CreateException<EDataHandlingError>(SUnacceptableColor, {text});
            SetOrdProp(obj, propInfo, color);
        } else
            SetOrdProp(obj, propInfo, StrToInt(text));
        break;
    case tkChar:
        SetOrdProp(obj, propInfo, text.empty() ? 0 : static_cast<unsigned char>(text[0]));
        break;
    case tkEnumeration:
        SetOrdProp(obj, propInfo, StrToEnum(type, text));
        break;
    case tkFloat:
        if (IsDateType(type))
            SetFloatProp(obj, propInfo, StrToDateTime(text).Value);
        else if (IsType(type, "TTime"))
            SetFloatProp(obj, propInfo, StrToTime(text).Value);
        else
            SetFloatProp(obj, propInfo, StrToFloat(text));
        break;
    case tkString:
    case tkLString:
    case tkWString:
        SetStrProp(obj, propInfo, text);
        break;
    case tkSet:
        SetOrdProp(obj, propInfo, StrToSet(type, text));
        break;
    default:
        Unsupported();
    }
}

void SetPropByText(TObject* obj, const std::string& path, const std::string& text,
                   const TGetTypeInfoProc& getTypeInfo) {
    AtPath(obj, path, getTypeInfo,
           [&](TObject* holder, PPropInfo p) { SetPropByText(holder, p, text); });
}

void GetPropAsPtr(TObject* obj, PPropInfo propInfo, void*& value) {
    CheckArgs(obj, propInfo);
    switch (propInfo->PropType->Kind) {
    case tkInteger:
    case tkChar:
    case tkEnumeration:
    case tkSet:
        value = reinterpret_cast<void*>(
            static_cast<intptr_t>(static_cast<int32_t>(GetOrdProp(obj, propInfo))));
        break;
    case tkClass:
        value = GetObjectProp(obj, propInfo);
        break;
    case tkFloat:
        if (!value) throw EInvalidPointer(SInvalidPointer);
        *static_cast<long double*>(value) = GetFloatProp(obj, propInfo);
        break;
    case tkString:
    case tkLString:
    case tkWString:
        if (!value) throw EInvalidPointer(SInvalidPointer);
        *static_cast<std::string*>(value) = GetStrProp(obj, propInfo);
        break;
    default:
        Unsupported();
    }
}

void GetPropAsPtr(TObject* obj, const std::string& path, void*& value,
                  const TGetTypeInfoProc& getTypeInfo) {
    AtPath(obj, path, getTypeInfo,
           [&](TObject* holder, PPropInfo p) { GetPropAsPtr(holder, p, value); });
}

void SetPropByPtr(TObject* obj, PPropInfo propInfo, void* value) {
    CheckArgs(obj, propInfo);
    switch (propInfo->PropType->Kind) {
    case tkInteger:
    case tkChar:
    case tkEnumeration:
    case tkSet:
        SetOrdProp(obj, propInfo, static_cast<int32_t>(reinterpret_cast<intptr_t>(value)));
        break;
    case tkClass:
        SetObjectProp(obj, propInfo, static_cast<TObject*>(value));
        break;
    case tkFloat:
        if (!value) throw EInvalidPointer(SInvalidPointer);
        SetFloatProp(obj, propInfo, *static_cast<const long double*>(value));
        break;
    case tkString:
    case tkLString:
    case tkWString:
        if (!value) throw EInvalidPointer(SInvalidPointer);
        SetStrProp(obj, propInfo, *static_cast<const std::string*>(value));
        break;
    default:
        Unsupported();
    }
}

void SetPropByPtr(TObject* obj, const std::string& path, void* value,
                  const TGetTypeInfoProc& getTypeInfo) {
    AtPath(obj, path, getTypeInfo,
           [&](TObject* holder, PPropInfo p) { SetPropByPtr(holder, p, value); });
}

Variant GetPropAsVariant(TObject* obj, PPropInfo propInfo) {
    CheckArgs(obj, propInfo);
    switch (propInfo->PropType->Kind) {
    case tkInteger:
    case tkChar:
    case tkEnumeration:
    case tkSet:
        return Variant(static_cast<int32_t>(GetOrdProp(obj, propInfo)));
    case tkClass:
        return Variant(GetOrdProp(obj, propInfo));
    case tkFloat:
        return Variant(GetFloatProp(obj, propInfo));
    case tkString:
    case tkLString:
    case tkWString:
        return Variant(GetStrProp(obj, propInfo));
    default:
        Unsupported();
    }
}

Variant GetPropAsVariant(TObject* obj, const std::string& path,
                         const TGetTypeInfoProc& getTypeInfo) {
    return AtPath(obj, path, getTypeInfo,
                  [](TObject* holder, PPropInfo p) { return GetPropAsVariant(holder, p); });
}

void SetPropByVariant(TObject* obj, PPropInfo propInfo, const Variant& value) {
    CheckArgs(obj, propInfo);
    switch (propInfo->PropType->Kind) {
    case tkInteger:
    case tkChar:
    case tkEnumeration:
    case tkSet:
    case tkClass:
        SetOrdProp(obj, propInfo, value.AsInt64());
        break;
    case tkFloat:
        SetFloatProp(obj, propInfo, value.AsReal());
        break;
    case tkString:
    case tkLString:
    case tkWString:
        SetStrProp(obj, propInfo, value.AsString());
        break;
    default:
        Unsupported();
    }
}

void SetPropByVariant(TObject* obj, const std::string& path, const Variant& value,
                      const TGetTypeInfoProc& getTypeInfo) {
    AtPath(obj, path, getTypeInfo,
           [&](TObject* holder, PPropInfo p) { SetPropByVariant(holder, p, value); });
}

// ---------------------------------------------------------------------------------------------
// Field classes and component paths

namespace {
// Calls f with the class of every published field of obj's class and its ancestors below
// TPersistent.
template <class F> void ForEachFieldClass(TObject* obj, F&& f) {
    if (!obj) return;
    for (TClass c = obj->ClassType(); c && c != TPersistent::StaticClass(); c = c->Parent)
        for (const TFieldEntry& field : c->Fields)
            if (field.FieldClass)
                if (TClass fc = field.FieldClass()) f(fc);
}
} // namespace

TClass GetFieldClass(TObject* obj, const std::string& className) {
    TClass found = nullptr;
    ForEachFieldClass(obj, [&](TClass fc) {
        if (!found && SameText(fc->Name, className)) found = fc;
    });
    return found ? found : GetClass(className);
}

void RegisterFieldClasses(TObject* obj, std::vector<TClass>& classes) {
    classes.clear();
    ForEachFieldClass(obj, [&](TClass fc) {
        if (GetClass(fc->Name)) return;
        RegisterClass(fc);
        classes.push_back(fc);
    });
}

void UnRegisterFieldClasses(std::span<const TClass> classes) {
    UnRegisterClasses(classes);
}

TComponent* FindComponentEx(TComponent* root, const std::string& path) {
    return root ? FindNestedComponent(root, path) : nullptr;
}

TPersistent* AnalyseNamePath(TComponent* root, const std::string& path, std::string& componentPath,
                             std::string& propertyPath) {
    if (path.empty()) {
        componentPath.clear();
        return nullptr;
    }
    std::string rest = path;
    for (size_t dot; (dot = rest.rfind('.')) != std::string::npos;) {
        rest.resize(dot);
        if (TComponent* c = FindComponentEx(root, rest)) {
            componentPath = rest;
            propertyPath = path.substr(dot + 1);
            return c;
        }
    }
    componentPath.clear();
    propertyPath = path;
    return root;
}

bool AnalyseNamePath(TComponent* root, const std::string& path, TAnalysisFindings& findings) {
    findings.Component = AnalyseNamePath(root, path, findings.ComponentPath, findings.PropertyPath);
    findings.PropInfo = nullptr;
    if (!findings.Component) return false;
    TObject* holder = findings.Component;
    findings.PropInfo = FindPropInfo(holder, findings.PropertyPath);
    findings.Component = dynamic_cast<TPersistent*>(holder);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Reader and writer

bool QueryContinueLoading(const std::string& message) {
    return WarningDialog(ResStr(SLoadErrorContinue), {"\r\n", message, "\r\n"});
}

bool TAdvReader::Error(const std::string& message) {
    if (IgnoreErrors) return true;
    return QueryContinueLoading(message);
}

void TAdvReader::SetName(TComponent* component, std::string& name) {
    TReader::SetName(component, name);
}

// ---------------------------------------------------------------------------------------------
// Data headers and description lines

namespace {

constexpr size_t kLabelSize = 7;
constexpr uint8_t CR = 13;

uint8_t ReadByte(TStream* stream) {
    uint8_t b;
    stream->ReadBuffer(&b, 1);
    return b;
}

// Reads up to and including the next byte 13; returns what stood before it.
std::string ReadUpToCR(TStream* stream) {
    std::string text;
    for (uint8_t b; (b = ReadByte(stream)) != CR;)
        text += static_cast<char>(b);
    return text;
}

void WriteText(TStream* stream, std::string_view text) {
    stream->WriteBuffer(text.data(), static_cast<int64_t>(text.size()));
}

using stream_objects::kReadDenyWrite;
using stream_objects::kReadShared;
using stream_objects::WithFile;
using stream_objects::WithNewFile;

} // namespace

void WriteBinDataHeader(TStream* stream, bool resFormat, const std::string& description) {
    std::string header(BinDataLabel, kLabelSize);
    header += static_cast<char>(resFormat ? 1 : 0);
    size_t n = std::min<size_t>(description.size(), 255);
    header += static_cast<char>(n);
    header.append(description, 0, n);
    WriteText(stream, header);
}

void WriteBinDataHeader(const std::string& fileName, bool resFormat,
                        const std::string& description) {
    WithNewFile(fileName, [&](TStream* s) { WriteBinDataHeader(s, resFormat, description); });
}

void WriteTextDataHeader(TStream* stream, const std::string& description) {
    std::string line(TextDataLabel, kLabelSize);
    if (!description.empty()) {
        // The description must stay on the one line: a line break becomes a blank, and so does
        // a carriage return on its own, which would end the line early on reading.
        std::string text = StringReplace(description, "\r\n", " ", {rfReplaceAll});
        std::replace(text.begin(), text.end(), '\r', ' ');
        line += ' ' + text;
    }
    std::string header = line + "\r\n" + std::string(line.size(), SeparatorChar) + "\r\n";
    WriteText(stream, header);
}

void WriteTextDataHeader(const std::string& fileName, const std::string& description) {
    WithNewFile(fileName, [&](TStream* s) { WriteTextDataHeader(s, description); });
}

void ReadDataHeader(TStream* stream, TObjectStorageFormat& format, bool& resFormat,
                    std::string& description) {
    char label[kLabelSize];
    stream->ReadBuffer(label, kLabelSize);
    if (std::memcmp(label, BinDataLabel, kLabelSize) == 0) {
        format = osfBin;
        uint8_t res = ReadByte(stream);
        if (res > 1) CreateException<EDataHandlingError>(SLabelNotFound);
        resFormat = res == 1;
        uint8_t n = ReadByte(stream);
        description.assign(n, '\0');
        stream->ReadBuffer(description.data(), n);
    } else if (std::memcmp(label, TextDataLabel, kLabelSize) == 0) {
        format = osfText;
        // The description keeps the blank that separates it from the label.
        description = ReadUpToCR(stream);
        ReadByte(stream); // the line feed
        ReadUpToCR(stream);
        ReadByte(stream);
    } else
        CreateException<EDataHandlingError>(SLabelNotFound);
}

void ReadDataHeader(const std::string& fileName, TObjectStorageFormat& format, bool& resFormat,
                    std::string& description) {
    WithFile(fileName, kReadShared,
             [&](TStream* s) { ReadDataHeader(s, format, resFormat, description); });
}

TObjectStorageFormat SkipDataHeader(TStream* stream) {
    TObjectStorageFormat format = osfBin;
    bool resFormat = false;
    std::string description;
    ReadDataHeader(stream, format, resFormat, description);
    return format;
}

TObjectStorageFormat SkipDataHeader(const std::string& fileName) {
    return WithFile(fileName, kReadShared, [&](TStream* s) { return SkipDataHeader(s); });
}

void WriteObjectDescription(TObject* obj, const std::string& description, TStream* stream) {
    std::string line = description;
    if (line.empty()) {
        auto* persistent = dynamic_cast<TPersistent*>(obj);
        std::string namePath = persistent ? persistent->GetNamePath()
                               : obj      ? obj->ClassName()
                                          : std::string("nil");
        line = Format("stored Instance --> %s", {namePath});
    }
    if (line.find('\r') != std::string::npos)
        CreateException<EDataHandlingError>(
            "An object description can't hold a carriage return: the line is skipped by it.");
    WriteText(stream, line + "\r\n");
}

void WriteObjectDescription(TObject* obj, const std::string& description,
                            const std::string& fileName) {
    WithNewFile(fileName, [&](TStream* s) { WriteObjectDescription(obj, description, s); });
}

void SkipObjectDescription(TStream* stream) {
    ReadUpToCR(stream);
    ReadByte(stream);
}

void SkipObjectDescription(const std::string& fileName) {
    WithFile(fileName, kReadShared, [&](TStream* s) { SkipObjectDescription(s); });
}

// ---------------------------------------------------------------------------------------------
// Saving

namespace {

constexpr auto RequirePersistent = &stream_objects::RequirePersistent<EDataHandlingError>;
constexpr auto StreamRoot = &stream_objects::StreamRoot<EDataHandlingError>;

} // namespace

void SaveObjectBinary(TObjectArray objects, TStream* stream, bool resFormat) {
    if (resFormat) {
        for (size_t i = 0; i < objects.size(); ++i) {
            TWrapper wrapper;
            TComponent* root = StreamRoot(objects[i], i, wrapper);
            WriteComponentRes(stream, UpperCase(root->ClassName()), root);
        }
        return;
    }
    TWriter writer(stream, 4096);
    for (size_t i = 0; i < objects.size(); ++i) {
        TWrapper wrapper;
        writer.WriteRootComponent(StreamRoot(objects[i], i, wrapper));
    }
    writer.FlushBuffer();
}

void SaveObjectBinary(TObjectArray objects, const std::string& fileName, bool resFormat) {
    WithNewFile(fileName, [&](TStream* s) { SaveObjectBinary(objects, s, resFormat); });
}

void SaveObjectBinaryEx(TObjectArray objects, TStream* stream) {
    if (objects.empty()) return;
    TAdvWriter writer(stream, 4096);
    writer.WriteSignature();
    stream_objects::WritePropertyLists<EDataHandlingError>(writer, objects);
}

void SaveObjectBinaryEx(TObjectArray objects, const std::string& fileName) {
    WithNewFile(fileName, [&](TStream* s) { SaveObjectBinaryEx(objects, s); });
}

void SaveObjectText(TObjectArray objects, TStream* stream,
                    std::span<const std::string> descriptions) {
    stream_objects::SaveTextThroughBinary(
        objects, stream, [&](TStream* binary) { SaveObjectBinary(objects, binary, false); },
        [&](size_t i) {
            WriteObjectDescription(
                objects[i], i < descriptions.size() ? descriptions[i] : std::string(), stream);
        });
}

void SaveObjectText(TObjectArray objects, const std::string& fileName,
                    std::span<const std::string> descriptions) {
    WithNewFile(fileName, [&](TStream* s) { SaveObjectText(objects, s, descriptions); });
}

void SaveObjectDataBinary(TObjectArray objects, TStream* stream, const std::string& description,
                          bool resFormat) {
    WriteBinDataHeader(stream, resFormat, description);
    SaveObjectBinary(objects, stream, resFormat);
}

void SaveObjectDataBinary(TObjectArray objects, const std::string& fileName,
                          const std::string& description, bool resFormat) {
    WithNewFile(fileName,
                [&](TStream* s) { SaveObjectDataBinary(objects, s, description, resFormat); });
}

void SaveObjectDataText(TObjectArray objects, TStream* stream,
                        std::span<const std::string> descriptions, const std::string& description) {
    WriteTextDataHeader(stream, description);
    SaveObjectText(objects, stream, descriptions);
}

void SaveObjectDataText(TObjectArray objects, const std::string& fileName,
                        std::span<const std::string> descriptions, const std::string& description) {
    WithNewFile(fileName,
                [&](TStream* s) { SaveObjectDataText(objects, s, descriptions, description); });
}

// ---------------------------------------------------------------------------------------------
// Loading

void LoadComponentBinary(std::span<TComponent*> components, TStream* stream, bool resFormat) {
    std::vector<TComponent**> refs;
    refs.reserve(components.size());
    for (TComponent*& component : components)
        refs.push_back(&component);
    TAdvReader reader(stream, 4096);
    stream_objects::ReadComponents(reader, stream, refs, resFormat);
}

void LoadComponentBinary(std::span<TComponent*> components, const std::string& fileName,
                         bool resFormat) {
    WithFile(fileName, kReadShared,
             [&](TStream* s) { LoadComponentBinary(components, s, resFormat); });
}

void LoadObjectBinary(TObjectArray objects, TStream* stream, bool resFormat) {
    TAdvReader reader(stream, 4096);
    stream_objects::ReadObjects<EDataHandlingError>(reader, stream, objects, resFormat);
}

void LoadObjectBinary(TObjectArray objects, const std::string& fileName, bool resFormat) {
    WithFile(fileName, kReadShared, [&](TStream* s) { LoadObjectBinary(objects, s, resFormat); });
}

void LoadObjectBinaryEx(TObjectArray objects, TStream* stream) {
    if (objects.empty()) return;
    TAdvReader reader(stream, 4096);
    reader.ReadSignature();
    stream_objects::ReadPropertyLists<EDataHandlingError>(reader, objects);
}

void LoadObjectBinaryEx(TObjectArray objects, const std::string& fileName) {
    WithFile(fileName, kReadShared, [&](TStream* s) { LoadObjectBinaryEx(objects, s); });
}

void LoadComponentText(std::span<TComponent*> components, TStream* stream) {
    stream_objects::LoadTextAsBinary(components.size(), stream, [&](TStream* binary) {
        LoadComponentBinary(components, binary, false);
    });
}

void LoadComponentText(std::span<TComponent*> components, const std::string& fileName) {
    WithFile(fileName, kReadShared, [&](TStream* s) { LoadComponentText(components, s); });
}

void LoadObjectText(TObjectArray objects, TStream* stream) {
    stream_objects::LoadTextThroughBinary(
        objects, stream, [&](TStream* binary) { LoadObjectBinary(objects, binary, false); });
}

void LoadObjectText(TObjectArray objects, const std::string& fileName) {
    WithFile(fileName, kReadShared, [&](TStream* s) { LoadObjectText(objects, s); });
}

TObjectStorageFormat DetectObjectFormat(TStream* stream) {
    const auto head = stream_objects::PeekHead(stream);
    if (head[0] == 255) return osfResBin;
    if (std::memcmp(head.data(), FilerSignature, 4) == 0) return osfBin;
    if (stream_objects::BeginsObjectText(head[0])) return osfText;
    CreateException<EDataHandlingError>(SNoObjectInStream);
}

void LoadObjects(TObjectArray objects, TStream* stream) {
    if (objects.empty()) return;
    switch (DetectObjectFormat(stream)) {
    case osfResBin:
        LoadObjectBinary(objects, stream, true);
        break;
    case osfBin:
        LoadObjectBinary(objects, stream, false);
        break;
    default:
        LoadObjectText(objects, stream);
        break;
    }
}

void LoadObjects(TObjectArray objects, const std::string& fileName) {
    WithFile(fileName, kReadShared, [&](TStream* s) { LoadObjects(objects, s); });
}

void SafeLoadObjects(TObjectArray objects, TStream* stream, TObjectStorageFormat format,
                     bool resFormat) {
    stream_objects::TOwnerRemoval removal(objects);
    if (format == osfBin)
        LoadObjectBinary(objects, stream, resFormat);
    else
        LoadObjectText(objects, stream);
}

void SafeLoadObjects(TObjectArray objects, const std::string& fileName, TObjectStorageFormat format,
                     bool resFormat) {
    WithFile(fileName, kReadDenyWrite,
             [&](TStream* s) { SafeLoadObjects(objects, s, format, resFormat); });
}

TObjDataDscr LoadObjectData(TObjectArray objects, TStream* stream,
                            const TLoadDataCallback& callback, void* data) {
    TObjDataDscr dscr;
    std::string description;
    ReadDataHeader(stream, dscr.StorageFormat, dscr.ResFormat, description);
    bool skip = false;
    if (callback) callback(dscr, description, skip, data);
    if (!skip) {
        if (dscr.StorageFormat == osfBin)
            LoadObjectBinary(objects, stream, dscr.ResFormat);
        else if (dscr.StorageFormat == osfText)
            LoadObjectText(objects, stream);
    }
    return dscr;
}

TObjDataDscr LoadObjectData(TObjectArray objects, const std::string& fileName,
                            const TLoadDataCallback& callback, void* data) {
    return WithFile(fileName, kReadDenyWrite,
                    [&](TStream* s) { return LoadObjectData(objects, s, callback, data); });
}

// ---------------------------------------------------------------------------------------------
// Objects to and from strings

void GetProps(TObjectArray objects, std::string& text, TObjectStorageFormat format) {
    TStringStream stream;
    if (format == osfBin)
        SaveObjectBinary(objects, &stream, false);
    else if (format == osfText)
        SaveObjectText(objects, &stream);
    text = stream.DataString();
}

void SetProps(TObjectArray objects, const std::string& text, TObjectStorageFormat format) {
    TStringStream stream(text);
    if (format == osfBin)
        LoadObjectBinary(objects, &stream, false);
    else if (format == osfText)
        LoadObjectText(objects, &stream);
}

void SetPropsEx(TObjectArray objects, const std::string& text, TObjectStorageFormat format) {
    // Every form but osfBin is read as text, as SafeLoadObjects reads them.
    TStringStream stream(text);
    SafeLoadObjects(objects, &stream, format, false);
}

namespace {
std::vector<TPersistent*> PersistentArray(TObjectArray objects) {
    std::vector<TPersistent*> result;
    result.reserve(objects.size());
    for (size_t i = 0; i < objects.size(); ++i)
        result.push_back(objects[i] ? RequirePersistent(objects[i], i) : nullptr);
    return result;
}

void SetSaverFormat(TObjectSaver& saver, TObjectStorageFormat format) {
    if (format == osfText)
        saver.Format = sofText;
    else if (format == osfBin)
        saver.Format = sofBinary;
}
} // namespace

void GetProps2(TObjectArray objects, std::string& text, TObjectStorageFormat format) {
    TObjectSaver saver;
    SetSaverFormat(saver, format);
    saver.GetObjectProps(PersistentArray(objects), text);
}

void SetProps2(TObjectArray objects, const std::string& text, TObjectStorageFormat format) {
    TObjectSaver saver;
    SetSaverFormat(saver, format);
    saver.SetObjectProps(PersistentArray(objects), text);
}

void ImportProps(TObjectArray targets, TObjectArray sources) {
    TScopedValue quiet(SuppressErrorInfo, true);
    std::string text;
    GetProps(sources, text, osfBin);
    SetPropsEx(targets, text, osfBin);
}

} // namespace zelvane
