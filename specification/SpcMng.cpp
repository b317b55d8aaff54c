#include "specification/SpcMng.h"

#include "foundation/Dialogs.h"
#include "foundation/ResStrings.h"
#include "persistence/PropTypes.h"
#include "persistence/Storage.h"
#include "rtl/Streams.h"
#include "specification/SpcConst.h"
#include "specification/SpcVers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace zelvane {

using namespace rtl;

// ---------------------------------------------------------------------------------------------
// Texts of the specification layer and the editor's fixed texts, registered here so that
// every program that uses the layer has them. The missing blanks in 51505
// and 51506 are part of the texts.

namespace {
const TResStringEntry kSpecificationTexts[] = {
    {SNeedInitData, "Necessary to initialize structure InitData."},
    {SNoSpcObject, "Specification object not given."},
    {SSpcFileNotFound, "Specification file: %s not found."},
    {SUnknownSpcFormat, "Unknown specification format."},
    {SBadVersionInfo, "Version information has incorrect format: %s."},
    {SLaterEditorVersion,
     "Specification file %s created with later editor versionCurrent editor version: %f in "
     "file version: %f.Loading may be incorrect. Continue load file?"},
    {SLaterDelphiVersion,
     "Downloaded file of the specification %s is created by a later Delphi version. Delphi "
     "editor version: %f file version: %f.Possible incorrect work with specification because "
     "of RTTI structure changes in new version.Continue load file?"},
    {SBadWidthChar, "Incorrect char \"%s\" in width property."},
    {SBadPercent, "Percent value should be in the range of 0-100%."},
    {SBadSectionNumber, "Section number must be more 0."},
    {SSpcLoadError, "Error on load specification file %s.%s%s."},
    {SSpcSaveError, "Error on save specification file %s.%s%s."},
    {SSectionParamsError, "Error of the section parameters transformation."},
    {SNoFileName, "Filename not entered."},
    {SFileExistsReplace, "File with name %s already exists. Replace?"},
    {_SObjFormCaption, "object %s"},
    {_SSectionName, "SpcEditor"},
    {_SLabCaption, "%s :"},
    {_SPseudoNewLine, "##"},
    {_SBinExt, ".sbn"},
    {_SResBinExt, ".sbr"},
    {_SExBinExt, ".sbe"},
    {_STextExt, ".stx"},
    {_SControlIdentPostfix, "Control"},
};
const TResStringBlock kSpecificationBlock(kSpecificationTexts);
} // namespace

std::string SpcFileExt(TObjectStorageFormat format) {
    switch (format) {
    case osfBin:
        return ResStr(_SBinExt);
    case osfResBin:
        return ResStr(_SResBinExt);
    case osfExtBin:
        return ResStr(_SExBinExt);
    case osfText:
        return ResStr(_STextExt);
    }
    return {};
}

RTL_IMPLEMENT_CLASS(ESpcMngError)

RTL_IMPLEMENT_CLASS(TSpcReader)

void TSpcReader::ReadProperty(TPersistent* instance) {
    int64_t start = Position();
    if (!ReadStr().empty()) {
        SetPosition(start);
        TReader::ReadProperty(instance);
        return;
    }
    std::string message = "Error reading " + instance->GetNamePath() +
                          ": a property record without a name does not exist in the class";
    if (!Error(message)) throw EReadError(message);
    SkipValue();
}

TBaseClassIdent ClassBaseClass(TClass cls) {
    if (!cls) return ciUnknown;
    if (cls->InheritsFrom(TSpcObject::StaticClass())) return ciSpcObject;
    if (cls->InheritsFrom(TSpcItem::StaticClass())) return ciSpcItem;
    if (cls->InheritsFrom(TCollectionItem::StaticClass())) return ciItem;
    if (cls->InheritsFrom(TCollection::StaticClass())) return ciCollection;
    if (cls->InheritsFrom(TComponent::StaticClass())) return ciComponent;
    if (cls->InheritsFrom(TPersistent::StaticClass())) return ciObject;
    return ciUnknown;
}

TBaseClassIdent ObjectBaseClass(TObject* obj) {
    return obj ? ClassBaseClass(obj->ClassType()) : ciUnknown;
}

// ---------------------------------------------------------------------------------------------
// Specification files

namespace {
TPersistent* RequireSpc(TPersistent* obj) {
    if (!obj) CreateException<ESpcMngError>(SNoSpcObject);
    return obj;
}
} // namespace

void SaveSpcInner(TPersistent* obj, const std::string& fileName, TObjectStorageFormat format) {
    RequireSpc(obj);
    TObjectSaver saver;
    if (format == osfBin)
        saver.Format = sofBinary;
    else if (format == osfText)
        saver.Format = sofText;
    TPersistent* objects[] = {obj};
    saver.SaveObjects(objects, {}, fileName);
}

TObjectStorageFormat LoadSpcInner(TPersistent*& obj, const std::string& fileName, bool /*reserved*/,
                                  bool showErrors) {
    RequireSpc(obj);
    TObjectSaver saver;
    saver.AutoDetectFormat = true;
    saver.IgnoreErrors = !showErrors;
    if (!FileExists(fileName)) CreateException<ESpcMngError>(SSpcFileNotFound, {fileName});
    TPersistent* objects[] = {obj};
    saver.LoadObjects(objects, fileName);
    switch (saver.Format) {
    case sofBinary:
        return osfBin;
    case sofText:
        return osfText;
    default:
        CreateException<ESpcMngError>(SUnknownSpcFormat);
    }
}

TSaveSpcProc SaveSpcProc = &SaveSpcInner;
TLoadSpcProc LoadSpcProc = &LoadSpcInner;

void SaveSpc(TPersistent* obj, const std::string& fileName, TObjectStorageFormat format) {
    SaveSpcProc(obj, fileName, format);
}

TObjectStorageFormat LoadSpc(TPersistent*& obj, const std::string& fileName, bool reserved,
                             bool showErrors) {
    return LoadSpcProc(obj, fileName, reserved, showErrors);
}

TPersistent* RecreateSpc(TPersistent*& obj) {
    TClass cls = RequireSpc(obj)->ClassType();
    delete obj;
    obj = nullptr;
    obj = CreateInstanceOf<TPersistent>(cls).release(); // the caller's variable owns it
    return obj;
}

// ---------------------------------------------------------------------------------------------
// Versions

namespace {
// Runs f with "." as the decimal separator, and puts the separator back.
template <class F> void WithDotSeparator(F&& f) {
    char saved = DecimalSeparator;
    DecimalSeparator = '.';
    try {
        f();
    } catch (...) {
        DecimalSeparator = saved;
        throw;
    }
    DecimalSeparator = saved;
}

int64_t ParseVersion(const std::string& versionText, const std::string& wholeText) {
    long double value = 0;
    if (!TryStrToFloat(versionText, value) || !std::isfinite(value) || std::fabs(value) > 9e14L)
        CreateException<ESpcMngError>(SBadVersionInfo, {wholeText});
    return std::llround(value * 10000);
}
} // namespace

void MakeVerInfo(TObjectStorageFormat format, std::string& text) {
    WithDotSeparator([&] {
        if (format == osfBin)
            text = Format("%f %f", {cEditorVersion.Value(), cDelphiVersion.Value()});
        else if (format == osfText)
            text = Format("%s %f %s %f",
                          {"e_ver:", cEditorVersion.Value(), "d_ver:", cDelphiVersion.Value()});
    });
}

TSpcVersions ParseVerInfo(TObjectStorageFormat format, const std::string& text) {
    TSpcVersions result;
    if (format == osfBin) {
        size_t blank = text.find(' ');
        if (blank == std::string::npos) CreateException<ESpcMngError>(SBadVersionInfo, {text});
        result.Editor = ParseVersion(text.substr(0, blank + 1), text);
        result.Delphi = ParseVersion(text.substr(blank + 1), text);
    } else if (format == osfText) {
        size_t e = text.find("e_ver:");
        size_t d = text.find("d_ver:");
        if (e == std::string::npos || d == std::string::npos)
            CreateException<ESpcMngError>(SBadVersionInfo, {text});
        // Each number stands seven characters behind the start of its label.
        size_t editorStart = std::min(e + 7, text.size());
        std::string editor = d > editorStart ? text.substr(editorStart, d - editorStart) : "";
        result.Editor = ParseVersion(editor, text);
        result.Delphi = ParseVersion(text.substr(std::min(d + 7, text.size())), text);
    } else {
        CreateException<ESpcMngError>(SBadVersionInfo, {text});
    }
    return result;
}

void CheckVer(TObjDataDscr dscr, const std::string& description, bool& skip, void* data) {
    skip = false;
    TSpcVersions versions = ParseVerInfo(dscr.StorageFormat, description);
    auto* check = static_cast<TVerCheckData*>(data);
    if (!check || !check->CheckEnabled) return;
    if (versions.Editor > cEditorVersion.Raw)
        skip = !WarningDialog(ResStr(SLaterEditorVersion),
                              {check->FileName, cEditorVersion.Value(),
                               static_cast<long double>(versions.Editor) / 10000});
    // Equality with this build's own constant, whatever the message says.
    if (versions.Delphi == cDelphiVersion.Raw)
        skip = !WarningDialog(ResStr(SLaterDelphiVersion),
                              {check->FileName, cDelphiVersion.Value(),
                               static_cast<long double>(versions.Delphi) / 10000});
}

// ---------------------------------------------------------------------------------------------
// One branch of a file

bool LoadSingleNode(TPersistent* target, const std::string& nodeName, const std::string& fileName) {
    auto* collection = dynamic_cast<TSpcCollection*>(target);
    if (!collection && !dynamic_cast<TSpcObject*>(target)) return false;
    TMemoryStream memory;
    memory.LoadFromFile(fileName);
    memory.SetPosition(0);
    if (SkipDataHeader(&memory) != osfBin) return false;

    bool result = false;
    TSpcReader reader(&memory, 4096);
    reader.ReadSignature();
    TFilerFlags flags = 0;
    int32_t childPos = 0;
    reader.ReadPrefix(flags, childPos);
    reader.ReadStr(); // the class name
    reader.ReadStr(); // the object name
    while (!reader.EndOfList()) {
        int64_t start = reader.Position();
        std::string name = reader.ReadStr();
        // The first dotted prefix of the name that is the node: "A", "A.B", "A.B.C".
        size_t matched = std::string::npos;
        for (size_t end = 0; matched == std::string::npos;) {
            end = name.find('.', end);
            size_t len = end == std::string::npos ? name.size() : end;
            if (SameText(std::string_view(name).substr(0, len), nodeName)) matched = len;
            if (end == std::string::npos) break;
            ++end;
        }
        if (matched == std::string::npos) {
            reader.SetPosition(start);
            reader.SkipProperty();
            continue;
        }
        result = true;
        if (collection) {
            if (reader.ReadValue() != vaCollection)
                throw EReadError("The node " + nodeName + " of " + fileName +
                                 " is not a collection");
            reader.ReadCollection(collection);
            break;
        }
        // The record becomes one of the target's own: the rest of the name, written so that
        // it ends where the whole name ended, its length byte over the last byte of the cut.
        std::string rest = matched < name.size() ? name.substr(matched + 1) : std::string();
        int64_t end = start + 1 + static_cast<int64_t>(name.size());
        int64_t restStart = end - 1 - static_cast<int64_t>(rest.size());
        uint8_t length = static_cast<uint8_t>(rest.size());
        memory.SetPosition(restStart);
        memory.WriteBuffer(&length, 1);
        memory.WriteBuffer(rest.data(), static_cast<int64_t>(rest.size()));
        reader.SetPosition(restStart);
        reader.ReadProperty(target);
    }
    return result;
}

// ---------------------------------------------------------------------------------------------
// The table of functions

TUserData TUserData::Make(std::string_view name, void* data) {
    TUserData result;
    size_t n = std::min<size_t>(name.size(), sizeof(result.Name) - 1);
    result.Name[0] = static_cast<char>(n);
    std::memcpy(result.Name + 1, name.data(), n);
    result.Data = data;
    return result;
}

std::string TUserData::GetName() const {
    size_t n = std::min<size_t>(static_cast<uint8_t>(Name[0]), sizeof(Name) - 1);
    return std::string(Name + 1, n);
}

namespace {

// Zero until FillInitData; the user data array is freed at shutdown.
TInitData gInitData{};

struct TInitDataCleanup {
    ~TInitDataCleanup() { ClearUserData(gInitData); }
} gInitDataCleanup;

// The property value classes' block of functions is in the table from the start, before any
// editor can ask for it.
struct TPublishValueFuncs {
    TPublishValueFuncs() {
        AddUserData(gInitData, TUserData::Make(SpcEditorProName,
                                               const_cast<TSpcEditorProFuncs*>(&SpcEditorProFuncs())));
    }
} gPublishValueFuncs;

TObject* CreateSpcEntry(TClass cls) {
    return CreateInstance(cls);
}
TPersistent* RecreateSpcEntry(TPersistent*& obj) {
    return RecreateSpc(obj);
}
void FreeSpcEntry(TPersistent*& obj) {
    delete obj;
    obj = nullptr;
}
TCollectionItem* CollectionAddEntry(TCollection* c) {
    return c->Add();
}
void CollectionDeleteEntry(TCollection* c, int index) {
    c->Delete(index);
}
void CollectionClearEntry(TCollection* c) {
    c->Clear();
}
int32_t CollectionNextIDEntry(TCollection* c) {
    return c->NextID();
}
std::string CollectionPropNameEntry(TCollection* c) {
    std::string name = c->PropName();
    return name.empty() ? c->ClassName() : name;
}
std::string CollectionOwnerNameEntry(TCollection* c) {
    TPersistent* owner = c->GetOwner();
    return owner ? owner->ClassName() : std::string();
}
TCollectionItem* CollectionGetItemEntry(TCollection* c, int index) {
    return c->GetItem(index);
}
void CollectionSetItemEntry(TCollection* c, int index, TCollectionItem* item) {
    c->SetItem(index, item);
}
int32_t CollectionCountEntry(TCollection* c) {
    return c->Count();
}
TCollection* ItemCollectionEntry(TCollectionItem* item) {
    return item->Collection();
}
int ItemGetIndexEntry(TCollectionItem* item) {
    return item->Index();
}
void ItemSetIndexEntry(TCollectionItem* item, int index) {
    item->SetIndex(index);
}
void GetPropsEntry(TObjectArray objects, std::string& text, TObjectStorageFormat format) {
    GetProps2(objects, text, format);
}
void SetPropsEntry(TObjectArray objects, const std::string& text, TObjectStorageFormat format) {
    SetProps2(objects, text, format);
}
PTypeInfo ObjectClassInfoEntry(TObject* obj) {
    return obj->ClassInfo();
}
std::string ObjectClassNameEntry(TObject* obj) {
    return obj->ClassName();
}
std::string ComponentNameEntry(TComponent* component) {
    return component->Name();
}
TClass ObjectClassTypeEntry(TObject* obj) {
    return obj->ClassType();
}
void* ObjectMethodAddressEntry(TObject* obj, const std::string& name) {
    return obj->MethodAddress(std::string_view(name).substr(0, 255));
}
bool ObjectIsClassEntry(TObject* obj, TClass cls) {
    return obj && cls && obj->InheritsFrom(cls);
}
void SetPropByPtrEntry(TObject* obj, PPropInfo propInfo, void* value) {
    SetPropByPtr(obj, propInfo, value);
}
void GetPropAsPtrEntry(TObject* obj, PPropInfo propInfo, void*& value) {
    GetPropAsPtr(obj, propInfo, value);
}
TClass WrapperItemClassEntry() {
    return TWrapperItem::StaticClass();
}

} // namespace

TInitData FillInitData() {
    TInitData& d = gInitData;
    d.LoadSpc = &LoadSpc;
    d.SaveSpc = &SaveSpc;
    d.CreateSpc = &CreateSpcEntry;
    d.RecreateSpc = &RecreateSpcEntry;
    d.FreeSpc = &FreeSpcEntry;
    d.CollectionAdd = &CollectionAddEntry;
    d.CollectionDelete = &CollectionDeleteEntry;
    d.CollectionClear = &CollectionClearEntry;
    d.CollectionNextID = &CollectionNextIDEntry;
    d.CollectionPropName = &CollectionPropNameEntry;
    d.CollectionOwnerName = &CollectionOwnerNameEntry;
    d.CollectionGetItem = &CollectionGetItemEntry;
    d.CollectionSetItem = &CollectionSetItemEntry;
    d.CollectionCount = &CollectionCountEntry;
    d.ItemCollection = &ItemCollectionEntry;
    d.ItemGetIndex = &ItemGetIndexEntry;
    d.ItemSetIndex = &ItemSetIndexEntry;
    d.GetProps = &GetPropsEntry;
    d.SetProps = &SetPropsEntry;
    d.ObjectClassInfo = &ObjectClassInfoEntry;
    d.ObjectClassName = &ObjectClassNameEntry;
    d.ComponentName = &ComponentNameEntry;
    d.ObjectClassType = &ObjectClassTypeEntry;
    d.ObjectMethodAddress = &ObjectMethodAddressEntry;
    d.ObjectIsClass = &ObjectIsClassEntry;
    d.ObjectBaseClass = &ObjectBaseClass;
    d.ClassBaseClass = &ClassBaseClass;
    d.SetPropByPtr = &SetPropByPtrEntry;
    d.GetPropAsPtr = &GetPropAsPtrEntry;
    d.WrapperItemClass = &WrapperItemClassEntry;
    return d;
}

void SetInitData(const TInitData& data) {
    std::memcpy(&gInitData, &data, sizeof(TInitData));
}

TInitData GetInitData() {
    return gInitData;
}

TInitData& GlobalInitData() {
    return gInitData;
}

void AddUserData(TInitData& data, const TUserData& userData) {
    intptr_t count = data.UserDataCount < 0 ? 0 : data.UserDataCount;
    void* grown = std::realloc(data.UserData, static_cast<size_t>(count + 1) * sizeof(TUserData));
    if (!grown) throw EOutOfMemory("Out of memory");
    data.UserData = static_cast<TUserData*>(grown);
    data.UserData[count] = userData;
    data.UserDataCount = count + 1;
}

void* GetUserData(const TInitData& data, std::string_view name) {
    for (intptr_t i = 0; i < data.UserDataCount; ++i)
        if (data.UserData[i].GetName() == name) return data.UserData[i].Data;
    return nullptr;
}

void ClearUserData(TInitData& data) {
    std::free(data.UserData);
    data.UserData = nullptr;
    data.UserDataCount = 0;
}

} // namespace zelvane
