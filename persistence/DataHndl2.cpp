#include "persistence/DataHndl2.h"

#include "persistence/StreamObjects.h"

#include "rtl/ObjectText.h"

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace zelvane {

using namespace rtl;

RTL_IMPLEMENT_CLASS(EObjectStorageError)
RTL_IMPLEMENT_CLASS(EAdvReaderError)
RTL_IMPLEMENT_CLASS(TObjectStorage)

namespace {

using stream_objects::kReadShared;
using stream_objects::WithFile;
using stream_objects::WithNewFile;

// Runs the path of a storage format: the two binary forms (the flag says resource), the
// extended binary form, or text. Saving and loading dispatch the same way.
template <class Binary, class Extended, class Text>
void ByFormat(TObjectStorageFormat format, Binary binary, Extended extended, Text text) {
    switch (format) {
    case osfBin:
        return binary(false);
    case osfResBin:
        return binary(true);
    case osfExtBin:
        return extended();
    case osfText:
        return text();
    default:
        CreateException<EObjectStorageError>(SInvalidImage);
    }
}

constexpr auto StreamRoot = &stream_objects::StreamRoot<EObjectStorageError>;
using stream_objects::TOwnerRemoval;

} // namespace

// ---------------------------------------------------------------------------------------------
// Filers

std::unique_ptr<TAdvReader> TObjectStorage::CreateReader(TStream* stream) {
    auto reader = std::make_unique<TAdvReader>(stream, BufSize);
    reader->IgnoreErrors = IgnoreErrors;
    if (OnCreateReader) OnCreateReader(this, reader.get());
    return reader;
}

std::unique_ptr<TAdvWriter> TObjectStorage::CreateWriter(TStream* stream) {
    auto writer = std::make_unique<TAdvWriter>(stream, BufSize);
    if (OnCreateWriter) OnCreateWriter(this, writer.get());
    return writer;
}

// ---------------------------------------------------------------------------------------------
// Saving

void TObjectStorage::SaveObjects(TObjectArray objects, TStream* stream) {
    ByFormat(
        Format, [&](bool res) { SaveObjectBinary(objects, stream, res); },
        [&] { SaveObjectBinaryEx(objects, stream); }, [&] { SaveObjectText(objects, stream); });
}

void TObjectStorage::SaveObjects(TObjectArray objects, const std::string& fileName) {
    WithNewFile(fileName, [&](TStream* s) { SaveObjects(objects, s); });
}

void TObjectStorage::SaveObjectBinary(TObjectArray objects, TStream* stream, bool resFormat) {
    std::unique_ptr<TAdvWriter> writer = CreateWriter(stream);
    for (size_t i = 0; i < objects.size(); ++i) {
        TWrapper wrapper;
        TComponent* root = StreamRoot(objects[i], i, wrapper);
        if (!resFormat) {
            writer->WriteRootComponent(root);
            continue;
        }
        // The header goes straight to the stream, so the writer is empty around it; its size is
        // filled in once the object has reached the stream.
        writer->FlushBuffer();
        int64_t fixupInfo = 0;
        WriteResourceHeader(stream, UpperCase(root->ClassName()), fixupInfo);
        writer->WriteRootComponent(root);
        writer->FlushBuffer();
        FixupResourceHeader(stream, fixupInfo);
    }
    writer->FlushBuffer();
}

void TObjectStorage::SaveObjectBinaryEx(TObjectArray objects, TStream* stream) {
    if (objects.empty()) return;
    std::unique_ptr<TAdvWriter> writer = CreateWriter(stream);
    writer->Write(ExtFilerSignature, 4);
    stream_objects::WritePropertyLists<EObjectStorageError>(*writer, objects);
}

void TObjectStorage::SaveObjectText(TObjectArray objects, TStream* stream) {
    stream_objects::SaveTextThroughBinary(
        objects, stream, [&](TStream* binary) { SaveObjectBinary(objects, binary, false); },
        [&](size_t i) { WriteObjectDescription(objects[i], stream); });
}

void TObjectStorage::WriteObjectDescription(TObject* obj, TStream* stream) {
    zelvane::WriteObjectDescription(obj, std::string(), stream);
}

// ---------------------------------------------------------------------------------------------
// Loading

void TObjectStorage::LoadObjects(TObjectArray objects, TStream* stream) {
    if (AutoDetectFormat) SetFormat(stream);
    ByFormat(
        Format, [&](bool res) { LoadObjectBinary(objects, stream, res); },
        [&] { LoadObjectBinaryEx(objects, stream); }, [&] { LoadObjectText(objects, stream); });
}

void TObjectStorage::LoadObjects(TObjectArray objects, const std::string& fileName) {
    WithFile(fileName, kReadShared, [&](TStream* s) { LoadObjects(objects, s); });
}

void TObjectStorage::LoadComponents(TComponentRefs components, TStream* stream) {
    std::vector<TComponent*> present;
    if (SafeLoad)
        for (TComponent** ref : components)
            if (ref && *ref) present.push_back(*ref);
    TOwnerRemoval removal(present);
    if (AutoDetectFormat) SetFormat(stream);
    // Property lists, the extended form, hold no components.
    ByFormat(
        Format, [&](bool res) { LoadComponentBinary(components, stream, res); }, [] {},
        [&] { LoadComponentText(components, stream); });
}

void TObjectStorage::LoadComponents(TComponentRefs components, const std::string& fileName) {
    WithFile(fileName, kReadShared, [&](TStream* s) { LoadComponents(components, s); });
}

void TObjectStorage::LoadObjectBinary(TObjectArray objects, TStream* stream, bool resFormat) {
    std::unique_ptr<TAdvReader> reader = CreateReader(stream);
    stream_objects::ReadObjects<EObjectStorageError>(*reader, stream, objects, resFormat);
}

void TObjectStorage::LoadObjectBinaryEx(TObjectArray objects, TStream* stream) {
    if (objects.empty()) return;
    std::unique_ptr<TAdvReader> reader = CreateReader(stream);
    char signature[4];
    reader->Read(signature, 4);
    if (std::memcmp(signature, ExtFilerSignature, 4) != 0)
        CreateException<EAdvReaderError>(SInvalidImage);
    stream_objects::ReadPropertyLists<EObjectStorageError>(*reader, objects);
}

void TObjectStorage::LoadObjectText(TObjectArray objects, TStream* stream) {
    stream_objects::LoadTextThroughBinary(
        objects, stream, [&](TStream* binary) { LoadObjectBinary(objects, binary, false); });
}

void TObjectStorage::LoadComponentBinary(TComponentRefs components, TStream* stream,
                                         bool resFormat) {
    std::unique_ptr<TAdvReader> reader = CreateReader(stream);
    stream_objects::ReadComponents(*reader, stream, components, resFormat);
}

void TObjectStorage::LoadComponentText(TComponentRefs components, TStream* stream) {
    stream_objects::LoadTextAsBinary(components.size(), stream, [&](TStream* binary) {
        LoadComponentBinary(components, binary, false);
    });
}

void TObjectStorage::SkipObjectDescription(TStream* stream) {
    zelvane::SkipObjectDescription(stream);
}

void TObjectStorage::SetFormat(TStream* stream) {
    if (!TestStreamFormat(stream, Format)) CreateException<EObjectStorageError>(SInvalidImage);
}

// ---------------------------------------------------------------------------------------------
// Strings

void TObjectStorage::GetObjectProps(TObjectArray objects, std::string& text) {
    TStringStream stream;
    SaveObjects(objects, &stream);
    text = stream.DataString();
}

void TObjectStorage::SetObjectProps(TObjectArray objects, const std::string& text) {
    TStringStream stream(text);
    LoadObjects(objects, &stream);
}

void TObjectStorage::ImportObjectProps(TObjectArray targets, TObjectArray sources) {
    TScopedValue quiet(IgnoreErrors, true);
    std::string text;
    GetObjectProps(sources, text);
    SetObjectProps(targets, text);
}

// ---------------------------------------------------------------------------------------------
// Free functions

bool TestStreamFormat(TStream* stream, TObjectStorageFormat& format) {
    const auto head = stream_objects::PeekHead(stream);
    if (head[0] == 255)
        format = osfResBin;
    else if (std::memcmp(head.data(), FilerSignature, 4) == 0)
        format = osfBin;
    else if (std::memcmp(head.data(), ExtFilerSignature, 4) == 0)
        format = osfExtBin;
    // The text form here may also begin with a "stored ..." description line.
    else if (stream_objects::BeginsObjectText(head[0]) || head[0] == 's')
        format = osfText;
    else
        return false;
    return true;
}

std::string TypeKindName(TTypeKind kind) {
    static const char* const names[] = {
        "tkUnknown", "tkInteger", "tkChar",   "tkEnumeration", "tkFloat",   "tkString",
        "tkSet",     "tkClass",   "tkMethod", "tkWChar",       "tkLString", "tkWString",
        "tkVariant", "tkArray",   "tkRecord", "tkInterface",   "tkInt64",   "tkDynArray"};
    return kind <= tkDynArray ? names[kind] : names[tkUnknown];
}

void GetObjectPropsInfo(PTypeInfo typeInfo, TStrings* list) {
    list->Clear();
    if (!typeInfo) return;
    for (PPropInfo p : GetPropList(typeInfo, tkAny, true)) {
        PTypeInfo type = p->PropType;
        list->Add(Format("%s: %s [%s]", {p->Name, type ? type->Name : std::string(),
                                         TypeKindName(type ? type->Kind : tkUnknown)}));
    }
}

namespace {
std::string MethodKindName(TMethodKind kind) {
    static const char* const names[] = {"mkProcedure",     "mkFunction",       "mkConstructor",
                                        "mkDestructor",    "mkClassProcedure", "mkClassFunction",
                                        "mkSafeProcedure", "mkSafeFunction"};
    return kind <= mkSafeFunction ? names[kind] : "?";
}

// The first flag of a parameter that has a word of its own.
std::string ParamFlagWord(uint8_t flags) {
    if (flags & (1u << pfVar)) return "var ";
    if (flags & (1u << pfConst)) return "const ";
    if (flags & (1u << pfOut)) return "out ";
    if (flags & (1u << pfAddress)) return "address ";
    if (flags & (1u << pfReference)) return "reference ";
    return {};
}
} // namespace

void GetMethodParams(PTypeInfo typeInfo, TStrings* list) {
    list->Clear();
    if (!typeInfo || typeInfo->Kind != tkMethod) return;
    PTypeData data = GetTypeData(typeInfo);
    list->Add("Type Name: " + typeInfo->Name);
    list->Add("Type Kind: " + TypeKindName(typeInfo->Kind));
    list->Add("Method Kind: " + MethodKindName(data->MethodKind));
    list->Add("Number of parameters: " + IntToStr(static_cast<int64_t>(data->Params.size())));
    int number = 0;
    for (const TParamInfo& param : data->Params) {
        std::string line = "Param " + IntToStr(++number) + " > " + ParamFlagWord(param.Flags) +
                           param.ParamName + ": ";
        if (param.Flags & (1u << pfArray)) line += " array of ";
        list->Add(line + param.TypeName);
    }
    if (data->MethodKind == mkFunction) list->Add("Returns > " + data->ResultType);
}

} // namespace zelvane
