// Unit DataHndl2: the load and save operations of DataHndl gathered into one configurable class,
// TObjectStorage, with the property access of DataHndl beside it.
//
// The property functions (EnumToStr, SetToStr, FindPropInfo, GetPropAsText, ...), TWrapper,
// TAdvReader, TAdvWriter, TAnalysisFindings, TObjectStorageFormat and EDataHandlingError are
// those of DataHndl, which this header brings along; here they are used without the
// TGetTypeInfoProc argument. What differs:
//
// - TObjectStorage's binary property lists (osfExtBin) carry the signature "TPF2";
// - TestStreamFormat also takes a stream beginning with "s" for text, so that a text stream of a
//   non-component object, which begins with its "stored Instance" line, is read back;
// - the reader's errors are silenced by IgnoreErrors, also in ImportObjectProps.
#pragma once

#include "persistence/DataHndl.h"
#include "rtl/Classes.h"
#include "rtl/Filer.h"
#include "rtl/Lists.h"
#include "rtl/Streams.h"
#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <memory>
#include <span>
#include <string>

namespace zelvane {

RTL_EXCEPTION(EObjectStorageError, Exception)
using rtl::EReadError;
RTL_EXCEPTION(EAdvReaderError, EReadError)

// The four bytes in front of the property lists of osfExtBin.
inline constexpr char ExtFilerSignature[4] = {'T', 'P', 'F', '2'};

class TObjectStorage;

using TStorageReaderEvent = rtl::TEvent<void(TObjectStorage* sender, TAdvReader* reader)>;
using TStorageWriterEvent = rtl::TEvent<void(TObjectStorage* sender, TAdvWriter* writer)>;

// Component variables to load into: a pointer to a nil variable receives a new component of the
// stream's class, a nil pointer reads a component and drops it.
using TComponentRefs = std::span<rtl::TComponent** const>;

// Saves and loads arrays of objects in the four storage forms, with one reader or writer per
// call made by CreateReader or CreateWriter. Objects that aren't components travel in a TWrapper.
class TObjectStorage : public rtl::TObject {
    RTL_CLASS(TObjectStorage, rtl::TObject)
public:
    TObjectStorage() = default;

    // On load, detect the form first (SetFormat).
    bool AutoDetectFormat = false;
    int BufSize = 4096;
    // Passed to the reader: failures in reading a property are passed over in silence.
    bool IgnoreErrors = false;
    // LoadComponents takes components out of their owners for the load.
    bool SafeLoad = false;
    TObjectStorageFormat Format = osfBin;
    TStorageReaderEvent OnCreateReader;
    TStorageWriterEvent OnCreateWriter;

    // The filers of one call.
    virtual std::unique_ptr<TAdvReader> CreateReader(rtl::TStream* stream);
    virtual std::unique_ptr<TAdvWriter> CreateWriter(rtl::TStream* stream);

    // In Format; files are replaced only when all is written.
    void SaveObjects(TObjectArray objects, rtl::TStream* stream);
    void SaveObjects(TObjectArray objects, const std::string& fileName);
    // In Format, detected first with AutoDetectFormat.
    void LoadObjects(TObjectArray objects, rtl::TStream* stream);
    void LoadObjects(TObjectArray objects, const std::string& fileName);
    // osfBin, osfResBin and osfText; osfExtBin loads nothing.
    void LoadComponents(TComponentRefs components, rtl::TStream* stream);
    void LoadComponents(TComponentRefs components, const std::string& fileName);

    // Component streams, each object with its signature; with resFormat each inside a resource
    // header named by its class.
    virtual void SaveObjectBinary(TObjectArray objects, rtl::TStream* stream, bool resFormat);
    // "TPF2", then the properties of each object, each list ended.
    virtual void SaveObjectBinaryEx(TObjectArray objects, rtl::TStream* stream);
    // The text form; an object that isn't a component gets its description line first.
    virtual void SaveObjectText(TObjectArray objects, rtl::TStream* stream);
    // "stored Instance --> " and the object's name path, on a line.
    void WriteObjectDescription(rtl::TObject* obj, rtl::TStream* stream);

    // Into existing objects; a nil entry passes over its object.
    void LoadObjectBinary(TObjectArray objects, rtl::TStream* stream, bool resFormat);
    // "TPF2" (EAdvReaderError otherwise), then the property lists.
    void LoadObjectBinaryEx(TObjectArray objects, rtl::TStream* stream);
    void LoadObjectText(TObjectArray objects, rtl::TStream* stream);
    void LoadComponentBinary(TComponentRefs components, rtl::TStream* stream, bool resFormat);
    void LoadComponentText(TComponentRefs components, rtl::TStream* stream);
    void SkipObjectDescription(rtl::TStream* stream);

    // Format from the stream; EObjectStorageError when it is none of the four.
    void SetFormat(rtl::TStream* stream);

    // The objects as a string in Format, and back.
    void GetObjectProps(TObjectArray objects, std::string& text);
    void SetObjectProps(TObjectArray objects, const std::string& text);
    // Copies the sources' values onto the targets (paired by position) through a string in
    // Format, with IgnoreErrors set meanwhile.
    void ImportObjectProps(TObjectArray targets, TObjectArray sources);
};

// The form of the stream at its position, which is kept; false, leaving format alone, when it
// is none. A first byte 255 is osfResBin, "TPF0" osfBin, "TPF2" osfExtBin, a first byte 9, 11,
// 13, blank, "I", "O", "i", "o" or "s" osfText. A stream shorter than four bytes compares as if
// zero-filled.
bool TestStreamFormat(rtl::TStream* stream, TObjectStorageFormat& format);

// One line per published property of the type, sorted by name: "Name: TypeName [tkKind]".
void GetObjectPropsInfo(rtl::PTypeInfo typeInfo, rtl::TStrings* list);
// The signature of a method type, a line each: its name, kind, method kind, number of
// parameters, each parameter, and for a function its result type. Other types give no lines.
void GetMethodParams(rtl::PTypeInfo typeInfo, rtl::TStrings* list);

// The name of a type kind ("tkInteger"); "tkUnknown" for a value outside the kinds.
std::string TypeKindName(rtl::TTypeKind kind);

} // namespace zelvane
