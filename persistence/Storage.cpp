#include "persistence/Storage.h"

#include "persistence/StreamObjects.h"

#include "rtl/Classes.h"
#include "rtl/SysUtils.h"

#include <algorithm>
#include <utility>

namespace zelvane {

using namespace rtl;

RTL_IMPLEMENT_CLASS(EFitReaderError)
RTL_IMPLEMENT_CLASS(EFitWriterError)
RTL_IMPLEMENT_CLASS(TFitWriter)
RTL_IMPLEMENT_CLASS(TFilteringWriter)
RTL_IMPLEMENT_CLASS(TFitReader)
RTL_IMPLEMENT_CLASS(TObjectSaver)
RTL_IMPLEMENT_CLASS(TPropSaver)

std::string SUpdateObjectPropName = "AObjectID";

namespace {

// The kinds the fit writer considers: every kind but tkUnknown, methods only on request.
constexpr TTypeKinds kStoredKinds = TTypeKinds::Range(tkInteger, tkDynArray) - tkMethods;
constexpr TTypeKinds kStoredKindsWithMethods = TTypeKinds::Range(tkInteger, tkDynArray);

bool StartsWithText(std::string_view s, std::string_view prefix) {
    return s.size() >= prefix.size() && SameText(s.substr(0, prefix.size()), prefix);
}

} // namespace

// ---------------------------------------------------------------------------------------------
// TFitWriter

void TFitWriter::WriteAsComponent(TPersistent* instance, const std::string& name) {
    if (!instance) throw EFitWriterError("Cannot write a nil object");
    FRootObject = instance;
    Root = dynamic_cast<TComponent*>(instance);
    LookupRoot = Root;
    WriteSignature();
    WriteStr(instance->ClassName());
    WriteStr(name);
    WriteProperties(instance);
    WriteListEnd(); // the end of the properties
    WriteListEnd(); // an empty list of children
}

void TFitWriter::WriteProperties(TPersistent* instance) {
    TTypeKinds kinds = StoreMethods ? kStoredKindsWithMethods : kStoredKinds;
    std::vector<PPropInfo> props;
    if (SortProps) {
        props = GetPropList(instance->ClassType(), kinds, true);
    } else {
        // The stream's order is the declaration order.
        for (PPropInfo p : GetPropInfos(instance->ClassType()))
            if (p && kinds.Contains(p->PropType->Kind)) props.push_back(p);
    }
    for (PPropInfo p : props) {
        if (!p) break;
        if (!IgnoreStored && !IsStoredProp(instance, p)) continue;
        if (CanWriteProperty(instance, p)) WriteProperty(instance, p);
    }
    if (WriteDefinedProps) instance->DefineProperties(this);
}

void TFitWriter::WriteProperty(TPersistent* instance, PPropInfo propInfo) {
    // Only what can be read back is written.
    if (!propInfo->GetProc || !propInfo->SetProc) return;
    const std::string& name = propInfo->Name;
    switch (propInfo->PropType->Kind) {
    case tkWChar:
        break; // not written by this writer
    case tkMethod: {
        TMethod method = GetMethodProp(instance, propInfo);
        if (!method.Code) break;
        // The handler by its name in the published methods of the object it is bound to.
        std::string methodName = method.Data ? method.Data->MethodName(method.Code) : "";
        if (methodName.empty())
            throw EFitWriterError("The handler of " + FPropPath + name +
                                  " is not a published method");
        WritePropName(name);
        WriteIdent(methodName);
        break;
    }
    case tkClass: {
        TObject* value = GetObjectProp(instance, propInfo);
        if (!value) {
            WritePropName(name);
            WriteValue(vaNil);
            break;
        }
        auto* nested = dynamic_cast<TPersistent*>(value);
        if (!nested) break;
        // Objects that hold each other would otherwise be written without end.
        if (FDepth >= MaxNestingDepth)
            throw EFitWriterError("Objects nested too deeply at " + FPropPath + name);
        {
            TScopedValue depth(FDepth, FDepth + 1);
            TScopedValue path(FPropPath, FPropPath + name + ".");
            WriteProperties(nested);
        }
        if (auto* collection = dynamic_cast<TCollection*>(value)) {
            // The collection's own properties stand flat ahead of its items.
            WritePropName(name);
            WriteCollectionEx(collection);
        }
        break;
    }
    default:
        // Every value of a plain kind, default or not; nothing for a kind without a value form.
        WritePlainProperty(instance, propInfo);
        break;
    }
}

void TFitWriter::WriteCollectionEx(TCollection* collection) {
    // The items' properties are named from the item.
    TScopedValue path(FPropPath, std::string());
    WriteCollection(collection);
}

bool TFitWriter::CanWriteProperty(TPersistent* instance, PPropInfo propInfo) {
    bool canWrite = true;
    if (OnCanWriteProperty) OnCanWriteProperty(instance, propInfo->Name, propInfo, canWrite);
    return canWrite;
}

// ---------------------------------------------------------------------------------------------
// TFilteringWriter

TFilteringWriter::TFilteringWriter(TStream* stream, int bufSize)
    : TFitWriter(stream, bufSize), objProps_(std::make_unique<TStringList>()),
      storedProps_(std::make_unique<TStringList>()),
      ignoredProps_(std::make_unique<TStringList>()) {}

TFilteringWriter::~TFilteringWriter() = default;

namespace {
// A copy of the given list of property paths, or none when no list is given.
void AssignOrClear(TStrings& target, TStrings* source) {
    if (source) target.Assign(source);
    else target.Clear();
}
} // namespace

void TFilteringWriter::SetIgnoredProps(TStrings* list) {
    AssignOrClear(*ignoredProps_, list);
}

void TFilteringWriter::SetStoredProps(TStrings* list) {
    AssignOrClear(*storedProps_, list);
}

void TFilteringWriter::PrepareObjProps() {
    objProps_->Clear();
    for (int i = 0; i < storedProps_->Count(); ++i) {
        std::string path = storedProps_->Strings(i);
        for (size_t dot = path.find('.'); dot != std::string::npos; dot = path.find('.', dot + 1))
            objProps_->Add(path.substr(0, dot));
    }
}

bool TFilteringWriter::CanWriteProperty(TPersistent* instance, PPropInfo propInfo) {
    if (!TFitWriter::CanWriteProperty(instance, propInfo)) return false;
    std::string path = FPropPath + propInfo->Name;
    bool result = storedProps_->Count() == 0;
    if (objProps_->Count() > 0) result = objProps_->IndexOf(path) >= 0;
    if (!result && !CurrentObjectPath.empty()) {
        // Everything below the stored object being written goes with it.
        result = path.compare(0, CurrentObjectPath.size(), CurrentObjectPath) == 0;
        if (!result) CurrentObjectPath.clear();
    }
    if (!result && storedProps_->Count() > 0) {
        result = storedProps_->IndexOf(path) >= 0;
        if (result && propInfo->PropType->Kind == tkClass) CurrentObjectPath = path;
    }
    if (result && ignoredProps_->Count() > 0) result = ignoredProps_->IndexOf(path) < 0;
    return result;
}

void TFilteringWriter::WriteAsComponent(TPersistent* instance, const std::string& name) {
    CurrentObjectPath.clear();
    RootName = name;
    // With an explicit list of what to store, defined properties don't pass.
    WriteDefinedProps = storedProps_->Count() == 0;
    PrepareObjProps();
    TFitWriter::WriteAsComponent(instance, name);
}

// ---------------------------------------------------------------------------------------------
// TFitReader

void TFitReader::ReadAsComponent(TPersistent* instance, std::string& name) {
    if (!instance) throw EFitReaderError("Cannot read into a nil object");
    // References and handlers resolve against the owner of a component in a named owner.
    TPersistent* root = instance;
    if (auto* component = dynamic_cast<TComponent*>(instance))
        if (component->Owner() && !component->Owner()->Name().empty()) root = component->Owner();
    FRootObject = root;
    Root = dynamic_cast<TComponent*>(root);
    LookupRoot = Root;
    ReadSignature();
    ReadStr(); // the class name, which isn't checked
    name = ReadStr();
    while (!EndOfList())
        ReadProperty(instance);
    ReadListEnd();
    ReadListEnd();
}

void TFitReader::SkipObject(std::string& name) {
    ReadSignature();
    ReadStr();
    name = ReadStr();
    while (!EndOfList())
        SkipProperty();
    ReadListEnd();
    ReadListEnd();
}

bool TFitReader::Error(const std::string& message) {
    if (IgnoreErrors) return true;
    return QueryContinueLoading(message);
}

void* TFitReader::FindMethod(TComponent* root, const std::string& methodName) {
    TObject* owner = FRootObject ? static_cast<TObject*>(FRootObject) : root;
    void* address = owner ? owner->MethodAddress(methodName) : nullptr;
    bool error = address == nullptr;
    if (OnFindMethod) OnFindMethod(this, methodName, address, error);
    if (error) ReadError("Method " + methodName + " not found");
    return address;
}

void TFitReader::ReadPropValue(TPersistent* instance, PPropInfo propInfo) {
    if (propInfo->PropType->Kind != tkMethod) {
        TReader::ReadPropValue(instance, propInfo);
        return;
    }
    if (!propInfo->SetProc) ReadError("Property " + propInfo->Name + " is read-only");
    // The handler is bound to the root object, which needn't be a component.
    if (NextValue() == vaNil) {
        ReadValue();
        SetMethodProp(instance, propInfo, TMethod{});
        return;
    }
    std::string methodName = ReadIdent();
    void* code = FindMethod(Root, methodName);
    TObject* data = FRootObject ? static_cast<TObject*>(FRootObject) : Root;
    SetMethodProp(instance, propInfo, TMethod{code, code ? data : nullptr});
}

// ---------------------------------------------------------------------------------------------
// TObjectSaver

std::unique_ptr<TFitReader> TObjectSaver::CreateReader(TStream* stream) {
    std::unique_ptr<TFitReader> reader;
    DoBeforeCreateReader(stream, reader);
    if (!reader) reader = std::make_unique<TFitReader>(stream, BufSize);
    reader->IgnoreErrors = IgnoreErrors;
    DoAfterCreateReader(reader.get());
    return reader;
}

std::unique_ptr<TFitWriter> TObjectSaver::CreateWriter(TStream* stream) {
    std::unique_ptr<TFitWriter> writer;
    DoBeforeCreateWriter(stream, writer);
    if (!writer) writer = std::make_unique<TFitWriter>(stream, BufSize);
    writer->IgnoreStored = IgnoreStored;
    writer->StoreMethods = StoreMethods;
    writer->SortProps = SortProps;
    DoAfterCreateWriter(writer.get());
    return writer;
}

void TObjectSaver::DoAfterCreateReader(TFitReader* reader) {
    if (OnAfterCreateReader) OnAfterCreateReader(this, reader);
}
void TObjectSaver::DoAfterCreateWriter(TFitWriter* writer) {
    if (OnAfterCreateWriter) OnAfterCreateWriter(this, writer);
}
void TObjectSaver::DoBeforeCreateReader(TStream* stream, std::unique_ptr<TFitReader>& reader) {
    if (OnBeforeCreateReader) OnBeforeCreateReader(this, stream, reader);
}
void TObjectSaver::DoBeforeCreateWriter(TStream* stream, std::unique_ptr<TFitWriter>& writer) {
    if (OnBeforeCreateWriter) OnBeforeCreateWriter(this, stream, writer);
}
void TObjectSaver::DoAfterReadObject(TPersistent* obj, TFitReader* reader,
                                     const std::string& name) {
    if (OnAfterReadObject) OnAfterReadObject(this, obj, reader, name);
}
void TObjectSaver::DoBeforeReadObject(TPersistent* obj, TFitReader* reader, bool& doRead) {
    if (OnBeforeReadObject) OnBeforeReadObject(this, obj, reader, doRead);
}
void TObjectSaver::DoBeforeWriteObject(TPersistent* obj, const std::string& name,
                                       TFitWriter* writer, bool& doWrite) {
    if (OnBeforeWriteObject) OnBeforeWriteObject(this, obj, name, writer, doWrite);
}
void TObjectSaver::DoAfterWriteObject(TPersistent* obj, const std::string& name,
                                      TFitWriter* writer) {
    if (OnAfterWriteObject) OnAfterWriteObject(this, obj, name, writer);
}

void TObjectSaver::SaveObjects(TPersistentArray objects, TNameArray names, TStream* stream) {
    switch (Format) {
    case sofBinary:
        SaveObjectBinary(objects, names, stream);
        break;
    case sofText:
        SaveObjectText(objects, names, stream);
        break;
    default:
        throw EFitWriterError(SWriteError);
    }
}

void TObjectSaver::SaveObjects(TPersistentArray objects, TNameArray names,
                               const std::string& fileName) {
    stream_objects::WithNewFile(fileName, [&](TStream* s) { SaveObjects(objects, names, s); });
}

namespace {
// The name of a component from its owners: each owner that has a name and a named owner of its
// own stands in front, dotted.
std::string OwnerChainName(TComponent* component) {
    std::string prefix;
    for (TComponent* owner = component->Owner();
         owner && !owner->Name().empty() && owner->Owner() && !owner->Owner()->Name().empty();
         owner = owner->Owner())
        prefix = owner->Name() + "." + prefix;
    return prefix + component->Name();
}
} // namespace

void TObjectSaver::SaveObjectBinary(TPersistentArray objects, TNameArray names, TStream* stream) {
    std::unique_ptr<TFitWriter> writer = CreateWriter(stream);
    for (size_t i = 0; i < objects.size(); ++i) {
        TPersistent* obj = objects[i];
        bool doWrite = true;
        std::string name = i < names.size() ? names[i] : std::string();
        if (name.empty())
            if (auto* component = dynamic_cast<TComponent*>(obj)) name = OwnerChainName(component);
        DoBeforeWriteObject(obj, name, writer.get(), doWrite);
        if (!doWrite) continue;
        if (!obj) throw EFitWriterError("Object " + std::to_string(i) + " of the array is nil");
        // A stream name is one identifier: the dots of a path become underscores.
        std::string streamName = name;
        std::replace(streamName.begin(), streamName.end(), '.', '_');
        writer->WriteAsComponent(obj, streamName);
        DoAfterWriteObject(obj, name, writer.get());
    }
    writer->FlushBuffer();
}

void TObjectSaver::SaveObjectText(TPersistentArray objects, TNameArray names, TStream* stream) {
    TMemoryStream binary;
    SaveObjectBinary(objects, names, &binary);
    binary.SetPosition(0);
    for (size_t i = 0; i < objects.size(); ++i)
        ObjectBinaryToText(&binary, stream);
}

void TObjectSaver::LoadObjects(TPersistentArray objects, TStream* stream) {
    if (AutoDetectFormat) Format = TestStreamFormat(stream);
    switch (Format) {
    case sofBinary:
        LoadObjectBinary(objects, stream);
        break;
    case sofText:
        LoadObjectText(objects, stream);
        break;
    default:
        throw EFitReaderError(SReadError);
    }
}

void TObjectSaver::LoadObjects(TPersistentArray objects, const std::string& fileName) {
    stream_objects::WithFile(fileName, stream_objects::kReadShared,
                             [&](TStream* s) { LoadObjects(objects, s); });
}

void TObjectSaver::LoadObjectBinary(TPersistentArray objects, TStream* stream) {
    std::unique_ptr<TFitReader> reader = CreateReader(stream);
    for (TPersistent* obj : objects) {
        bool doRead = obj != nullptr;
        DoBeforeReadObject(obj, reader.get(), doRead);
        std::string name;
        if (doRead && obj)
            reader->ReadAsComponent(obj, name);
        else
            reader->SkipObject(name);
        DoAfterReadObject(obj, reader.get(), name);
    }
}

void TObjectSaver::LoadObjectText(TPersistentArray objects, TStream* stream) {
    stream_objects::LoadTextAsBinary(objects.size(), stream,
                                     [&](TStream* binary) { LoadObjectBinary(objects, binary); });
}

bool TObjectSaver::SafeLoadObjects(TPersistentArray objects, const std::string& fileName) {
    try {
        LoadObjects(objects, fileName);
        return true;
    } catch (...) {
        return false;
    }
}

void TObjectSaver::GetObjectProps(TPersistentArray objects, std::string& text) {
    TStringStream stream;
    SaveObjects(objects, {}, &stream);
    text = stream.DataString();
}

void TObjectSaver::SetObjectProps(TPersistentArray objects, const std::string& text) {
    TStringStream stream(text);
    LoadObjects(objects, &stream);
}

// ---------------------------------------------------------------------------------------------
// TPropSaver

TPropSaver::TPropSaver()
    : storedProps_(std::make_unique<TStringList>()),
      ignoredProps_(std::make_unique<TStringList>()) {}

TPropSaver::~TPropSaver() = default;

void TPropSaver::SetStoredProps(TStrings* list) {
    AssignOrClear(*storedProps_, list);
}

void TPropSaver::SetIgnoredProps(TStrings* list) {
    AssignOrClear(*ignoredProps_, list);
}

void TPropSaver::DoBeforeCreateWriter(TStream* stream, std::unique_ptr<TFitWriter>& writer) {
    TObjectSaver::DoBeforeCreateWriter(stream, writer);
    if (!writer) writer = std::make_unique<TFilteringWriter>(stream, BufSize);
}

void TPropSaver::DoAfterCreateWriter(TFitWriter* writer) {
    TObjectSaver::DoAfterCreateWriter(writer);
    if (auto* filtering = dynamic_cast<TFilteringWriter*>(writer)) {
        filtering->SetIgnoredProps(ignoredProps_.get());
        filtering->SetStoredProps(storedProps_.get());
    }
}

void TPropSaver::DoBeforeWriteObject(TPersistent* obj, const std::string& name, TFitWriter* writer,
                                     bool& doWrite) {
    TObjectSaver::DoBeforeWriteObject(obj, name, writer, doWrite);
    auto* filtering = dynamic_cast<TFilteringWriter*>(writer);
    if (!doWrite || !filtering) return;
    // Each object gets the entries qualified by its own name, without the qualification.
    filtering->IgnoredProps()->Clear();
    filtering->StoredProps()->Clear();
    std::string prefix = name + ".";
    auto take = [&](TStringList* from, TStringList* to) {
        for (int i = 0; i < from->Count(); ++i) {
            std::string entry = from->Strings(i);
            if (StartsWithText(entry, prefix)) to->Add(entry.substr(prefix.size()));
        }
    };
    take(ignoredProps_.get(), filtering->IgnoredProps());
    take(storedProps_.get(), filtering->StoredProps());
}

} // namespace zelvane
