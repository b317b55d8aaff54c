// Unit SpcMng: the base classes of settings objects, how they present themselves as tree nodes,
// specification files, and the table of functions through which the settings editor works on
// objects.
//
// A settings tree is built of TSpcObject, TSpcItem and TSpcCollection descendants that publish
// what they store. The editor knows none of their classes: it reads their properties by type
// information and asks INodeInfo for the captions of their tree nodes.
//
// A specification file is one object stream without a header: the root object as TFitWriter
// writes it, in binary or text form. SaveSpc and LoadSpc go through the replaceable procedures
// SaveSpcProc and LoadSpcProc. The editor reaches persistence only through TInitData, a table
// of 32 machine words that a host can replace as a whole.
#pragma once

#include "persistence/DataHndl.h"
#include "persistence/SpcObjects.h"
#include "rtl/Classes.h"
#include "rtl/Filer.h"
#include "rtl/Persistent.h"
#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zelvane {

RTL_EXCEPTION(ESpcMngError, Exception)

// The platform's reader, with its protected operations at hand for LoadSingleNode. A property
// record with an empty name, which the platform's reader would take for a defined property it
// has read, is reported through Error like any property the object doesn't have.
class TSpcReader : public rtl::TReader {
    RTL_CLASS(TSpcReader, rtl::TReader)
public:
    using TReader::FindMethod;
    using TReader::ReadPropValue;
    using TReader::SetName;
    using TReader::TReader;

    void ReadProperty(rtl::TPersistent* instance) override;
};

// What a class is for the editor; the ordinals are fixed.
RTL_ENUM(TBaseClassIdent, ciUnknown, ciSpcObject, ciObject, ciSpcItem, ciItem, ciCollection,
         ciComponent)

// The first of: settings object, settings item, collection item, collection, component,
// persistent object; ciUnknown for anything else and for nil.
TBaseClassIdent ClassBaseClass(rtl::TClass cls);
TBaseClassIdent ObjectBaseClass(rtl::TObject* obj);

// ---------------------------------------------------------------------------------------------
// Specification files

// Saves obj to the file in the form (osfResBin and osfExtBin give binary).
using TSaveSpcProc = void (*)(rtl::TPersistent* obj, const std::string& fileName,
                              TObjectStorageFormat format);
// Loads the file into obj, detecting its form, and returns the form found (osfBin or osfText).
// The first flag is accepted and not consulted; without showErrors a damaged file loads as far
// as it can in silence, with it every failing property asks whether to go on.
using TLoadSpcProc = TObjectStorageFormat (*)(rtl::TPersistent*& obj, const std::string& fileName,
                                              bool reserved, bool showErrors);

void SaveSpcInner(rtl::TPersistent* obj, const std::string& fileName, TObjectStorageFormat format);
// 51502 when the file doesn't exist, and obj is untouched.
TObjectStorageFormat LoadSpcInner(rtl::TPersistent*& obj, const std::string& fileName,
                                  bool reserved, bool showErrors);

// The procedures SaveSpc and LoadSpc call; SaveSpcInner and LoadSpcInner until a host replaces
// them.
extern TSaveSpcProc SaveSpcProc;
extern TLoadSpcProc LoadSpcProc;

void SaveSpc(rtl::TPersistent* obj, const std::string& fileName, TObjectStorageFormat format);
TObjectStorageFormat LoadSpc(rtl::TPersistent*& obj, const std::string& fileName,
                             bool reserved = false, bool showErrors = true);

// Frees obj and makes a new object of its class through the virtual constructor; obj receives
// it (nil in between) and it is returned.
rtl::TPersistent* RecreateSpc(rtl::TPersistent*& obj);

// The version line for a data header: "1.01 99.99" for osfBin, "e_ver: 1.01 d_ver: 99.99" for
// osfText, written with the decimal separator "."; other forms leave the text as it is.
void MakeVerInfo(TObjectStorageFormat format, std::string& text);

// The data LoadObjectData hands to CheckVer.
struct TVerCheckData {
    bool CheckEnabled = false;
    std::string FileName;
};

// Both versions of a version line, times 10000. 51504 for a line that isn't one; the numbers
// are read with the current decimal separator.
struct TSpcVersions {
    int64_t Editor = 0;
    int64_t Delphi = 0;
};
TSpcVersions ParseVerInfo(TObjectStorageFormat format, const std::string& text);

// A callback of LoadObjectData, with a TVerCheckData as its data: parses the version line of the
// header, and with CheckEnabled asks whether to load a file of a later editor (51505) or one
// whose Delphi version is 99.99 (51506); skip is set when the answer is No.
void CheckVer(TObjDataDscr dscr, const std::string& description, bool& skip, void* data);

// Reads one branch of a binary file with a data header (SaveObjectDataBinary) into target, a
// TSpcCollection or TSpcObject: the first property record whose name, or a dotted prefix of it,
// is nodeName (case-insensitive) and, for an object, every later one. For an object the prefix
// is cut from the name, so the record lands on a property of target itself. True when a record
// matched; false for another kind of target or a text file. A file without a data header raises
// 50580.
bool LoadSingleNode(rtl::TPersistent* target, const std::string& nodeName,
                    const std::string& fileName);

// ---------------------------------------------------------------------------------------------
// The table of functions

// A named pointer that a unit extending the editor publishes: the name is a short string of
// at most 31 characters (length byte first).
struct TUserData {
    char Name[32] = {};
    void* Data = nullptr;

    static TUserData Make(std::string_view name, void* data);
    std::string GetName() const;
};

using TCreateSpcFunc = rtl::TObject* (*)(rtl::TClass cls);
using TRecreateSpcFunc = rtl::TPersistent* (*)(rtl::TPersistent*& obj);
using TFreeSpcFunc = void (*)(rtl::TPersistent*& obj);
using TCollectionAddFunc = rtl::TCollectionItem* (*)(rtl::TCollection* collection);
using TCollectionDeleteFunc = void (*)(rtl::TCollection* collection, int index);
using TCollectionProc = void (*)(rtl::TCollection* collection);
using TCollectionIntFunc = int32_t (*)(rtl::TCollection* collection);
using TCollectionStrFunc = std::string (*)(rtl::TCollection* collection);
using TCollectionGetItemFunc = rtl::TCollectionItem* (*)(rtl::TCollection* collection, int index);
using TCollectionSetItemFunc = void (*)(rtl::TCollection* collection, int index,
                                        rtl::TCollectionItem* item);
using TItemCollectionFunc = rtl::TCollection* (*)(rtl::TCollectionItem* item);
using TItemGetIndexFunc = int (*)(rtl::TCollectionItem* item);
using TItemSetIndexFunc = void (*)(rtl::TCollectionItem* item, int index);
using TGetPropsFunc = void (*)(TObjectArray objects, std::string& text,
                               TObjectStorageFormat format);
using TSetPropsFunc = void (*)(TObjectArray objects, const std::string& text,
                               TObjectStorageFormat format);
using TObjectClassInfoFunc = rtl::PTypeInfo (*)(rtl::TObject* obj);
using TObjectClassNameFunc = std::string (*)(rtl::TObject* obj);
using TComponentNameFunc = std::string (*)(rtl::TComponent* component);
using TObjectClassTypeFunc = rtl::TClass (*)(rtl::TObject* obj);
using TObjectMethodAddressFunc = void* (*)(rtl::TObject* obj, const std::string& name);
using TObjectIsClassFunc = bool (*)(rtl::TObject* obj, rtl::TClass cls);
using TObjectBaseClassFunc = TBaseClassIdent (*)(rtl::TObject* obj);
using TClassBaseClassFunc = TBaseClassIdent (*)(rtl::TClass cls);
using TSetPropByPtrFunc = void (*)(rtl::TObject* obj, rtl::PPropInfo propInfo, void* value);
using TGetPropAsPtrFunc = void (*)(rtl::TObject* obj, rtl::PPropInfo propInfo, void*& value);
using TWrapperItemClassFunc = rtl::TClass (*)();

// Everything the editor does to objects, in this order. A host may hand in a table of its own;
// whoever takes one keeps to the order of the fields.
struct TInitData {
    TUserData* UserData;
    intptr_t UserDataCount;
    TLoadSpcProc LoadSpc;
    TSaveSpcProc SaveSpc;
    TCreateSpcFunc CreateSpc;
    TRecreateSpcFunc RecreateSpc;
    TFreeSpcFunc FreeSpc;
    TCollectionAddFunc CollectionAdd;
    TCollectionDeleteFunc CollectionDelete;
    TCollectionProc CollectionClear;
    // The number the next item made will bear.
    TCollectionIntFunc CollectionNextID;
    // The collection's property name in its owner, or its class name.
    TCollectionStrFunc CollectionPropName;
    // The class name of the collection's owner, empty without one.
    TCollectionStrFunc CollectionOwnerName;
    TCollectionGetItemFunc CollectionGetItem;
    TCollectionSetItemFunc CollectionSetItem;
    TCollectionIntFunc CollectionCount;
    TItemCollectionFunc ItemCollection;
    TItemGetIndexFunc ItemGetIndex;
    TItemSetIndexFunc ItemSetIndex;
    TGetPropsFunc GetProps;
    TSetPropsFunc SetProps;
    TObjectClassInfoFunc ObjectClassInfo;
    TObjectClassNameFunc ObjectClassName;
    TComponentNameFunc ComponentName;
    TObjectClassTypeFunc ObjectClassType;
    // A published method by name; the name is cut to 255 characters.
    TObjectMethodAddressFunc ObjectMethodAddress;
    TObjectIsClassFunc ObjectIsClass;
    TObjectBaseClassFunc ObjectBaseClass;
    TClassBaseClassFunc ClassBaseClass;
    TSetPropByPtrFunc SetPropByPtr;
    TGetPropAsPtrFunc GetPropAsPtr;
    TWrapperItemClassFunc WrapperItemClass;
};
static_assert(sizeof(TInitData) == 32 * sizeof(void*), "TInitData is a table of 32 words");

// Fills the function entries of the global table (its user data stays) and returns it.
TInitData FillInitData();
// Copies a table over the global one, all 32 words.
void SetInitData(const TInitData& data);
// The global table.
TInitData GetInitData();
// The global table itself, for the units that add user data to it.
TInitData& GlobalInitData();

// Appends a copy of the record to the table's user data, growing the array by one element.
void AddUserData(TInitData& data, const TUserData& userData);
// The data of the first entry of that name (case-sensitive), or nullptr.
void* GetUserData(const TInitData& data, std::string_view name);
// Frees the table's user data array and empties it. The global table's array is freed at
// shutdown.
void ClearUserData(TInitData& data);

} // namespace zelvane
