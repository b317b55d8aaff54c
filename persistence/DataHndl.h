// Unit DataHndl: the property access layer and the plain load and save operations.
//
// The first half reaches a published property of any object by a name (a dotted path through
// nested objects), as text, as a raw value or as a variant, and converts enumerations and sets
// to and from text. It rests on the runtime's type information and keeps no state but three
// global switches.
//
// The second half puts arrays of objects into a stream, a file or a string and takes them back,
// in the four storage forms: binary component streams ("TPF0"), the same inside resource
// headers, bare property lists behind one signature, and the text form. Streams may carry a data
// header ("sys_bin" or "sys_txt") with a description, and text streams carry a description line
// before every object that isn't a component. These operations use the platform's TReader and
// TWriter, so what equals its declared default isn't written.
//
// Arrays of objects are spans; an empty span stands for an empty array. Every operation on a
// stream has an overload that takes a file name instead. Saving to a file writes a temporary
// file beside it and renames it over the target only when the save has succeeded.
#pragma once

#include "foundation/AppUtils.h"
#include "rtl/Classes.h"
#include "rtl/Filer.h"
#include "rtl/Lists.h"
#include "rtl/Streams.h"
#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"
#include "rtl/Variants.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zelvane {

using rtl::Exception;

// ---------------------------------------------------------------------------------------------
// Texts of this layer, by number

constexpr int SPropNotExists = 50520;      // "Property by name ''%s'' does not exist."
constexpr int SUnsupportedVarType = 50523; // "Unsupported variable type."
constexpr int SLoadErrorContinue = 50535;  // "Load error.%s%s.%sContinue loading?"
constexpr int SPropNotFound = 50536;       // "Property %s not found"
constexpr int SCollItemExists = 50537;     // "Collection's element ''%s'' already exists."
constexpr int SObjectExists = 50538;       // "Object ''%s'' already exists."
constexpr int SLabelNotFound = 50580;      // "Incorrect data format. Required label not found."
constexpr int SUnacceptableValue = 50582;  // "%s is unacceptable value for type."
constexpr int SIncorrectSetValue = 50583;  // "%s is incorrect value for set."
constexpr int SUnacceptableColor = 50584;  // "%s is unacceptable value for TColor."
constexpr int SNoObjectInStream = 50585;   // "Thread does not contain object."

RTL_EXCEPTION(EDataHandlingError, Exception)

// ---------------------------------------------------------------------------------------------
// Global switches

// The underline character of the text data header.
extern char SeparatorChar;
// Set by ImportProps while it works. Nothing reads it: errors during an import still reach the
// user through the reader's own question.
extern bool SuppressErrorInfo;
// Public switches without a reader.
extern bool SkipComponentName;
using TSetNameProc = void (*)(rtl::TComponent* component, std::string& name);
extern TSetNameProc SetNameProc;

// ---------------------------------------------------------------------------------------------
// Property access

// Makes an object be seen as another type by the name-based operations: returns the type
// information to use for the object. An empty function means the object's own class.
using TGetTypeInfoProc = std::function<rtl::PTypeInfo(rtl::TObject* obj)>;

// The name of an ordinal of an enumeration type, as GetEnumName.
std::string EnumToStr(rtl::PTypeInfo typeInfo, int32_t value);
// The ordinal of a name (case-insensitive); an unknown name raises 50582.
int32_t StrToEnum(rtl::PTypeInfo typeInfo, const std::string& text);
// "[a,b]": the names of the set bits in ascending order, without blanks.
std::string SetToStr(rtl::PTypeInfo setType, uint32_t value);
// Reads a set loosely: text before the first "[" is ignored, and reading goes on past "]" up to
// the end of the text; blanks around names and empty names are passed over; an unterminated last
// name is dropped when something was read already or the text ends in "]". Raises 50583 for a
// text without "[" or an unterminated one with nothing read, 50582 for an unknown name.
uint32_t StrToSet(rtl::PTypeInfo setType, const std::string& text);
// Clears the list and adds the names of the enumeration from its lowest to its highest value.
void FillEnumNames(rtl::PTypeInfo typeInfo, rtl::TStrings* list);
// Whether the enumeration has a value of that name.
bool ContainsIn(rtl::PTypeInfo typeInfo, const std::string& name);

// Walks a dotted path through nested objects. Each segment but the last is looked up on the
// current object; an object-valued one that holds an object moves the walk on to it. A segment
// that isn't found gives nullptr; one that isn't object-valued, or holds nil, ends the walk and
// is returned itself. obj always ends as the holder of the returned property.
rtl::PPropInfo FindPropInfo(rtl::TObject*& obj, const std::string& path,
                            const TGetTypeInfoProc& getTypeInfo = nullptr);

// The value as text: colour names for TColor (empty for a colour without a name), decimal
// integers, the character, enumeration names, dates and times by the locale, floats, strings,
// sets as "[a,b]". Other kinds raise 50523.
std::string GetPropAsText(rtl::TObject* obj, rtl::PPropInfo propInfo);
// The path form raises 50520 when the path leads nowhere.
std::string GetPropAsText(rtl::TObject* obj, const std::string& path,
                          const TGetTypeInfoProc& getTypeInfo = nullptr);
// The reverse of GetPropAsText. A TColor takes a colour name only (50584 otherwise); a character
// takes the first character of the text, or 0 for an empty text.
void SetPropByText(rtl::TObject* obj, rtl::PPropInfo propInfo, const std::string& text);
void SetPropByText(rtl::TObject* obj, const std::string& path, const std::string& text,
                   const TGetTypeInfoProc& getTypeInfo = nullptr);

// Moves a value without conversion through one pointer-sized slot. For integers, characters,
// enumerations, sets and object references the slot holds the value itself. For a float it
// holds the address of the caller's long double, and for a string that of the caller's
// std::string, which is read or written through it. Other kinds raise 50523.
void GetPropAsPtr(rtl::TObject* obj, rtl::PPropInfo propInfo, void*& value);
void GetPropAsPtr(rtl::TObject* obj, const std::string& path, void*& value,
                  const TGetTypeInfoProc& getTypeInfo = nullptr);
void SetPropByPtr(rtl::TObject* obj, rtl::PPropInfo propInfo, void* value);
void SetPropByPtr(rtl::TObject* obj, const std::string& path, void* value,
                  const TGetTypeInfoProc& getTypeInfo = nullptr);

// The value as a variant: an integer for ordinals and object references, a real for floats, a
// string for strings; other kinds raise 50523.
rtl::Variant GetPropAsVariant(rtl::TObject* obj, rtl::PPropInfo propInfo);
rtl::Variant GetPropAsVariant(rtl::TObject* obj, const std::string& path,
                              const TGetTypeInfoProc& getTypeInfo = nullptr);
void SetPropByVariant(rtl::TObject* obj, rtl::PPropInfo propInfo, const rtl::Variant& value);
void SetPropByVariant(rtl::TObject* obj, const std::string& path, const rtl::Variant& value,
                      const TGetTypeInfoProc& getTypeInfo = nullptr);

// The class of that name among the classes of the published fields of the object's class and
// its ancestors below TPersistent (case-insensitive), or else from the class registry.
rtl::TClass GetFieldClass(rtl::TObject* obj, const std::string& className);
// Registers every class of the object's published fields that the registry doesn't know yet,
// and returns them in classes, for UnRegisterFieldClasses after a load.
void RegisterFieldClasses(rtl::TObject* obj, std::vector<rtl::TClass>& classes);
void UnRegisterFieldClasses(std::span<const rtl::TClass> classes);

// The component reached from root by a dotted path of component names.
rtl::TComponent* FindComponentEx(rtl::TComponent* root, const std::string& path);

// What AnalyseNamePath finds for a dotted path below a root.
struct TAnalysisFindings {
    std::string ComponentPath;
    std::string PropertyPath;
    rtl::TPersistent* Component = nullptr;
    rtl::PPropInfo PropInfo = nullptr;
};

// Splits a path into the longest leading part that names a component below root and the
// property path after it. Without such a part the component path is empty, the property path is
// the whole path, and root is returned. An empty path clears the component path, leaves the
// property path alone and returns nullptr.
rtl::TPersistent* AnalyseNamePath(rtl::TComponent* root, const std::string& path,
                                  std::string& componentPath, std::string& propertyPath);
// The same into findings, with the property looked up on the component reached; true when a
// component was reached.
bool AnalyseNamePath(rtl::TComponent* root, const std::string& path, TAnalysisFindings& findings);

// ---------------------------------------------------------------------------------------------
// Stream formats

enum TObjectStorageFormat : uint8_t { osfBin = 0, osfResBin = 1, osfExtBin = 2, osfText = 3 };

// What a data header says about the stream behind it.
struct TObjDataDscr {
    TObjectStorageFormat StorageFormat = osfBin;
    bool ResFormat = false;
};

inline constexpr char BinDataLabel[] = "sys_bin";
inline constexpr char TextDataLabel[] = "sys_txt";

// Objects passed to the load and save operations.
using TObjectArray = std::span<rtl::TObject* const>;

// A component with the one published property I, which carries an object that isn't a component
// through the filer's component streams: its properties stand in the stream as "I.Name". It
// doesn't own the object.
class TWrapper : public rtl::TComponent {
    RTL_CLASS(TWrapper, rtl::TComponent)
public:
    explicit TWrapper(rtl::TComponent* owner = nullptr) : TComponent(owner) {}
    rtl::TPersistent* I = nullptr;
};

// The reader of this unit. A failure in reading a property asks the user whether to go on
// (text 50535 through WarningDialog) unless IgnoreErrors is set.
class TAdvReader : public rtl::TReader {
    RTL_CLASS(TAdvReader, rtl::TReader)
public:
    using TReader::TReader;
    bool Error(const std::string& message) override;
    bool IgnoreErrors = false;

protected:
    void SetName(rtl::TComponent* component, std::string& name) override;
};

// The writer of this unit: the platform's, with WriteProperties at hand.
class TAdvWriter : public rtl::TWriter {
    RTL_CLASS(TAdvWriter, rtl::TWriter)
public:
    using TWriter::TWriter;
};

// Asks through WarningDialog whether loading goes on after the failure: 50535 with the message.
bool QueryContinueLoading(const std::string& message);

// Data headers. A binary header holds the label, the ResFormat byte, and the description cut to
// 255 bytes; a text header is the label and the description (line breaks made blanks) on one
// line, underlined by SeparatorChar.
void WriteBinDataHeader(rtl::TStream* stream, bool resFormat, const std::string& description);
void WriteBinDataHeader(const std::string& fileName, bool resFormat,
                        const std::string& description);
void WriteTextDataHeader(rtl::TStream* stream, const std::string& description);
void WriteTextDataHeader(const std::string& fileName, const std::string& description);
// Reads a data header; a stream without one raises 50580. For a text header resFormat is left as
// it was, and the description keeps the blank in front of it.
void ReadDataHeader(rtl::TStream* stream, TObjectStorageFormat& format, bool& resFormat,
                    std::string& description);
void ReadDataHeader(const std::string& fileName, TObjectStorageFormat& format, bool& resFormat,
                    std::string& description);
TObjectStorageFormat SkipDataHeader(rtl::TStream* stream);
TObjectStorageFormat SkipDataHeader(const std::string& fileName);

// The line before an object that isn't a component in a text stream: the description, or
// "stored Instance --> " and the object's name path. A description holding a carriage return
// would break the stream and raises EDataHandlingError.
void WriteObjectDescription(rtl::TObject* obj, const std::string& description,
                            rtl::TStream* stream);
void WriteObjectDescription(rtl::TObject* obj, const std::string& description,
                            const std::string& fileName);
void SkipObjectDescription(rtl::TStream* stream);
void SkipObjectDescription(const std::string& fileName);

// ---------------------------------------------------------------------------------------------
// Saving. Objects must be persistent; an object that isn't a component goes through a TWrapper.

void SaveObjectBinary(TObjectArray objects, rtl::TStream* stream, bool resFormat);
void SaveObjectBinary(TObjectArray objects, const std::string& fileName, bool resFormat);
void SaveObjectBinaryEx(TObjectArray objects, rtl::TStream* stream);
void SaveObjectBinaryEx(TObjectArray objects, const std::string& fileName);
// Descriptions pair up with objects by index; missing ones give the default line.
void SaveObjectText(TObjectArray objects, rtl::TStream* stream,
                    std::span<const std::string> descriptions = {});
void SaveObjectText(TObjectArray objects, const std::string& fileName,
                    std::span<const std::string> descriptions = {});
void SaveObjectDataBinary(TObjectArray objects, rtl::TStream* stream,
                          const std::string& description, bool resFormat);
void SaveObjectDataBinary(TObjectArray objects, const std::string& fileName,
                          const std::string& description, bool resFormat);
void SaveObjectDataText(TObjectArray objects, rtl::TStream* stream,
                        std::span<const std::string> descriptions, const std::string& description);
void SaveObjectDataText(TObjectArray objects, const std::string& fileName,
                        std::span<const std::string> descriptions, const std::string& description);

// ---------------------------------------------------------------------------------------------
// Loading

// Reads components; a nil entry becomes a new component of the stream's class.
void LoadComponentBinary(std::span<rtl::TComponent*> components, rtl::TStream* stream,
                         bool resFormat);
void LoadComponentBinary(std::span<rtl::TComponent*> components, const std::string& fileName,
                         bool resFormat);
// Reads into existing objects. A nil entry passes over its object in the stream.
void LoadObjectBinary(TObjectArray objects, rtl::TStream* stream, bool resFormat);
void LoadObjectBinary(TObjectArray objects, const std::string& fileName, bool resFormat);
void LoadObjectBinaryEx(TObjectArray objects, rtl::TStream* stream);
void LoadObjectBinaryEx(TObjectArray objects, const std::string& fileName);
void LoadComponentText(std::span<rtl::TComponent*> components, rtl::TStream* stream);
void LoadComponentText(std::span<rtl::TComponent*> components, const std::string& fileName);
void LoadObjectText(TObjectArray objects, rtl::TStream* stream);
void LoadObjectText(TObjectArray objects, const std::string& fileName);

// The form of the stream at its position, which is kept: a first byte 255 is a resource, "TPF0"
// binary, a first byte 9, 11, 13, blank, "I", "O", "i" or "o" text; anything else raises 50585.
TObjectStorageFormat DetectObjectFormat(rtl::TStream* stream);
// Detects the form and loads.
void LoadObjects(TObjectArray objects, rtl::TStream* stream);
void LoadObjects(TObjectArray objects, const std::string& fileName);
// Takes the components out of their owners for the load, so that their names don't clash with
// their siblings', and puts them back afterwards, also when the load fails. osfBin loads binary
// with the given resFormat, any other form loads text.
void SafeLoadObjects(TObjectArray objects, rtl::TStream* stream, TObjectStorageFormat format,
                     bool resFormat);
void SafeLoadObjects(TObjectArray objects, const std::string& fileName, TObjectStorageFormat format,
                     bool resFormat);

// Called by LoadObjectData with what the header says; setting skip leaves the objects unread.
using TLoadDataCallback =
    std::function<void(TObjDataDscr dscr, const std::string& description, bool& skip, void* data)>;
// Reads the data header, asks the callback, and loads the objects in the form the header names.
TObjDataDscr LoadObjectData(TObjectArray objects, rtl::TStream* stream,
                            const TLoadDataCallback& callback = nullptr, void* data = nullptr);
TObjDataDscr LoadObjectData(TObjectArray objects, const std::string& fileName,
                            const TLoadDataCallback& callback = nullptr, void* data = nullptr);

// ---------------------------------------------------------------------------------------------
// Objects to and from strings

// osfBin and osfText; the other forms give an empty text.
void GetProps(TObjectArray objects, std::string& text, TObjectStorageFormat format);
// osfBin and osfText; the other forms do nothing.
void SetProps(TObjectArray objects, const std::string& text, TObjectStorageFormat format);
// As SetProps through SafeLoadObjects.
void SetPropsEx(TObjectArray objects, const std::string& text, TObjectStorageFormat format);
// The same through TObjectSaver: every stored property is written and no wrapper is used, so
// these strings and those of GetProps don't read each other.
void GetProps2(TObjectArray objects, std::string& text, TObjectStorageFormat format);
void SetProps2(TObjectArray objects, const std::string& text, TObjectStorageFormat format);
// Copies the property values of the sources to the targets, which pair up by position; a target
// gets what differs from the defaults of the source's class.
void ImportProps(TObjectArray targets, TObjectArray sources);

} // namespace zelvane
