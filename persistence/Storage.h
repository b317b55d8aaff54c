// Unit Storage: the fit writer and reader, and the object savers.
//
// TFitWriter writes any persistent object as the root of a binary component stream, under its
// own class name and without a wrapper, with every property value (no compare with defaults),
// nested persistent objects flattened as "Font.Size" (components too), and switches and a hook
// that decide property by property what goes in. TFilteringWriter adds lists of property paths
// to store and to leave out. TFitReader reads such a stream back into an existing object of any
// class: the class name in the stream isn't checked, and a property the object doesn't have is
// a load error that asks the user whether to go on.
//
// TObjectSaver drives them over arrays of objects, in binary or text form, with hooks before and
// after the filer is made and each object is read or written. TPropSaver gives each object its
// own lists of properties to store or leave out.
//
// TFixedCollection and TFreeCollection are collections whose set of items code decides, not the
// stream: reading one only updates the items that code made or registered (see
// StorageCollections.cpp).
#pragma once

#include "persistence/DataHndl.h"
#include "rtl/Filer.h"
#include "rtl/Lists.h"
#include "rtl/ObjectText.h"
#include "rtl/Streams.h"
#include "rtl/TypInfo.h"
#include "persistence/SpcObjects.h"

#include <memory>
#include <span>
#include <string>

namespace zelvane {

using rtl::EReadError;
using rtl::EWriteError;

RTL_EXCEPTION(EFitReaderError, EReadError)
RTL_EXCEPTION(EFitWriterError, EWriteError)

// The name of the key property of the items of free collections.
extern std::string SUpdateObjectPropName;

class TFitWriter;
class TFitReader;
class TFixedCollection;
class TFreeCollection;

// Decides whether a property is written; canWrite starts true.
using TCanWritePropertyEvent =
    rtl::TEvent<void(rtl::TPersistent* instance, const std::string& propName,
                     rtl::PPropInfo propInfo, bool& canWrite)>;

class TFitWriter : public rtl::TWriter {
    RTL_CLASS(TFitWriter, rtl::TWriter)
public:
    explicit TFitWriter(rtl::TStream* stream, int bufSize = 4096) : TWriter(stream, bufSize) {}

    // Whether the DefineProperties of each object is offered the writer.
    bool WriteDefinedProps = true;
    // Properties by name instead of declaration order.
    bool SortProps = false;
    // Include method properties, by the names of their handlers.
    bool StoreMethods = false;
    // Write also the properties whose stored specifier says no.
    bool IgnoreStored = false;
    TCanWritePropertyEvent OnCanWriteProperty;

    // The dotted path of the nested object being written, ending in ".", or empty at the root.
    const std::string& PropPath() const { return FPropPath; }
    void SetPropPath(std::string path) { FPropPath = std::move(path); }

    // Writes the object as a root component: the signature, its class name, the name, its
    // properties and an empty list of children. No prefix.
    virtual void WriteAsComponent(rtl::TPersistent* instance, const std::string& name);
    // Writes the properties of the object, then (with WriteDefinedProps) its defined ones.
    void WriteProperties(rtl::TPersistent* instance) override;
    // Writes one property, whatever its value; read-only and write-only properties never.
    void WriteProperty(rtl::TPersistent* instance, rtl::PPropInfo propInfo) override;
    // vaCollection, then each item's properties in a list, then the end of the list.
    // WriteCollection is the writer's own: it writes each item through WriteProperties.
    // WriteCollection from a DefineProperties handler, which runs with the path of its object.
    void WriteCollectionEx(rtl::TCollection* collection);
    // vaString for up to 255 bytes, vaLString beyond.
    void WriteString(std::string_view value) { TWriter::WriteString(value); }
    // Whether the property is written: the hook's answer.
    virtual bool CanWriteProperty(rtl::TPersistent* instance, rtl::PPropInfo propInfo);
    // The path of the object being written and the name.
    using TWriter::WritePropName;
    // DefineProperty and DefineBinaryProperty are the writer's: the name with the path, then
    // what the handler writes.

    // The object being written as the root.
    rtl::TPersistent* RootObject() const { return FRootObject; }

protected:
    rtl::TPersistent* FRootObject = nullptr;

private:
    int FDepth = 0;
};

// A fit writer that writes only the paths of StoredProps (when it isn't empty) with everything
// below an object among them, and never the paths of IgnoredProps. Paths are dotted from the
// root object ("Font.Size") and compared without regard to case.
class TFilteringWriter : public TFitWriter {
    RTL_CLASS(TFilteringWriter, TFitWriter)
public:
    explicit TFilteringWriter(rtl::TStream* stream, int bufSize = 4096);
    ~TFilteringWriter() override;

    // The path of the stored object whose subtree is being written.
    std::string CurrentObjectPath;
    std::string RootName;
    // The containers through which the stored paths run: "A" and "A.B" for "A.B.C".
    rtl::TStringList* ObjProps() const { return objProps_.get(); }
    rtl::TStringList* StoredProps() const { return storedProps_.get(); }
    rtl::TStringList* IgnoredProps() const { return ignoredProps_.get(); }

    // Copy the given list.
    void SetIgnoredProps(rtl::TStrings* list);
    void SetStoredProps(rtl::TStrings* list);
    // Fills ObjProps from StoredProps.
    void PrepareObjProps();

    bool CanWriteProperty(rtl::TPersistent* instance, rtl::PPropInfo propInfo) override;
    void WriteAsComponent(rtl::TPersistent* instance, const std::string& name) override;

private:
    std::unique_ptr<rtl::TStringList> objProps_;
    std::unique_ptr<rtl::TStringList> storedProps_;
    std::unique_ptr<rtl::TStringList> ignoredProps_;
};

// A reader of objects written as roots. A failure in reading a property asks the user whether
// to go on (text 50535), unless IgnoreErrors is set, when it is passed over in silence.
class TFitReader : public rtl::TReader {
    RTL_CLASS(TFitReader, rtl::TReader)
public:
    explicit TFitReader(rtl::TStream* stream, int bufSize = 4096) : TReader(stream, bufSize) {}

    bool IgnoreErrors = false;

    // Reads one object written by TFitWriter::WriteAsComponent into instance, whatever class the
    // stream names; name receives the name in the stream.
    void ReadAsComponent(rtl::TPersistent* instance, std::string& name);
    // Passes over one such object; name receives its name.
    void SkipObject(std::string& name);

    bool Error(const std::string& message) override;

    // Read a stored collection (the vaCollection value of a property) into a collection whose
    // items code decides: see ReadFixedCollection and ReadFreeCollection below.
    void ReadFixedCollection(TFixedCollection* collection, bool reorder);
    void ReadFreeCollection(TFreeCollection* collection, bool reorder);

protected:
    // Handlers named in the stream are the published methods of the root object.
    void* FindMethod(rtl::TComponent* root, const std::string& methodName) override;
    void ReadPropValue(rtl::TPersistent* instance, rtl::PPropInfo propInfo) override;

    rtl::TPersistent* FRootObject = nullptr;
};

// ---------------------------------------------------------------------------------------------
// Collections whose items code decides

RTL_EXCEPTION(EFixedCollectionError, Exception)
RTL_EXCEPTION(EFreeCollectionError, Exception)

// A collection whose items are made by code, each with a unique key in a published string
// property of the item class. A stream only updates the items whose key it names: items it
// doesn't mention keep their state, and entries with keys no item has are dropped.
class TFixedCollection : public TSpcCollection {
    RTL_CLASS(TFixedCollection, TSpcCollection)
public:
    TFixedCollection(rtl::TPersistent* owner, rtl::TClass itemClass)
        : TSpcCollection(owner, itemClass) {}

    // The name of the items' published string property that holds the key.
    virtual std::string GetUpdateName() const = 0;

    // A new item with that key; 50537 when an item has it already (compared case-sensitively).
    TSpcItem* Add(const std::string& key);
};

// The declared type of the objects a free collection carries: a class derives from it so that
// its instances can be streamed through a TWrapperItem.
class TNestedObject : public rtl::TPersistent {
    RTL_CLASS(TNestedObject, rtl::TPersistent)
};

// An item of a free collection: the identifier of a live object and a reference to it, which
// the item neither owns nor frees. Its properties stand in a stream as "AObjectID", then the
// object's as "NestedObject.Xxx".
class TWrapperItem : public TSpcItem {
    RTL_CLASS(TWrapperItem, TSpcItem)
public:
    explicit TWrapperItem(rtl::TCollection* collection = nullptr) : TSpcItem(collection) {}

    std::string AObjectID;
    TNestedObject* NestedObject = nullptr;
};

// A collection of live objects that belong to others, registered by code under identifiers.
// A stream updates the properties of the registered objects; it never creates an object, and
// an entry whose identifier nobody registered is passed over.
class TFreeCollection : public TSpcCollection {
    RTL_CLASS(TFreeCollection, TSpcCollection)
public:
    // The item class must derive from TWrapperItem; EFreeCollectionError otherwise.
    TFreeCollection(rtl::TPersistent* owner, rtl::TClass itemClass);

    // Registers obj under the identifier; 50538 when an item has that identifier already
    // (compared case-sensitively).
    TWrapperItem* Add(TNestedObject* obj, const std::string& id);
    // From another free collection: the same objects under the same identifiers and node names
    // (shared, not copied). From anything else as a collection assigns.
    void Assign(rtl::TPersistent* source) override;

    TWrapperItem* GetItem(int index) const;
    void SetItem(int index, TWrapperItem* value);
    TWrapperItem* FindItemID(int32_t id) const;
    TWrapperItem* operator[](int index) const { return GetItem(index); }
    rtl::TClass GetItemClass() const { return ItemClass(); }
    // The item registered under exactly that identifier, or nullptr.
    TWrapperItem* FindObjectID(const std::string& id) const;
};

// Writes a collection from a DefineProperties handler, with whatever writer the handler is
// given: the items' properties are named from the item, without the path of the object being
// written (TFitWriter::WriteCollectionEx for a fit writer).
void WriteCollectionEx(rtl::TWriter* writer, rtl::TCollection* collection);

// Reads a stored collection into a fixed collection: all entries are read into a temporary
// collection of the same kind first, then each entry, in stream order, is copied onto the
// first item whose non-empty key equals the entry's (case-sensitively). With reorder, a matched
// item moves to the entry's position.
void ReadFixedCollection(rtl::TReader& reader, TFixedCollection* collection, bool reorder);
// Reads a stored collection into a free collection: each entry must begin with "AObjectID"
// (50536 otherwise), and its properties go to the item registered under that identifier, or are
// passed over. With reorder, the item found moves to the entry's position.
void ReadFreeCollection(rtl::TReader& reader, TFreeCollection* collection, bool reorder);

class TObjectSaver;

// The hooks of TObjectSaver; the saver comes first.
// A hook before a filer is made may supply one of its own, which the saver then owns.
using TSaverCreateReaderEvent = rtl::TEvent<void(TObjectSaver* sender, rtl::TStream* stream,
                                                 std::unique_ptr<TFitReader>& reader)>;
using TSaverCreateWriterEvent = rtl::TEvent<void(TObjectSaver* sender, rtl::TStream* stream,
                                                 std::unique_ptr<TFitWriter>& writer)>;
using TSaverReaderEvent = rtl::TEvent<void(TObjectSaver* sender, TFitReader* reader)>;
using TSaverWriterEvent = rtl::TEvent<void(TObjectSaver* sender, TFitWriter* writer)>;
using TSaverBeforeReadEvent = rtl::TEvent<void(TObjectSaver* sender, rtl::TPersistent* obj,
                                               TFitReader* reader, bool& doRead)>;
using TSaverAfterReadEvent = rtl::TEvent<void(TObjectSaver* sender, rtl::TPersistent* obj,
                                              TFitReader* reader, const std::string& name)>;
using TSaverBeforeWriteEvent =
    rtl::TEvent<void(TObjectSaver* sender, rtl::TPersistent* obj, const std::string& name,
                     TFitWriter* writer, bool& doWrite)>;
using TSaverAfterWriteEvent = rtl::TEvent<void(TObjectSaver* sender, rtl::TPersistent* obj,
                                               const std::string& name, TFitWriter* writer)>;

using TPersistentArray = std::span<rtl::TPersistent* const>;
using TNameArray = std::span<const std::string>;

// Saves and loads arrays of objects through the fit writer and reader. Each call makes and frees
// its own filer; Format stays as the last detection left it.
class TObjectSaver : public rtl::TObject {
    RTL_CLASS(TObjectSaver, rtl::TObject)
public:
    TObjectSaver() = default;

    bool AutoDetectFormat = false;
    int BufSize = 4096;
    bool IgnoreErrors = false;
    bool StoreMethods = false;
    bool IgnoreStored = false;
    rtl::TStreamOriginalFormat Format = rtl::sofBinary;
    bool SortProps = false;

    TSaverReaderEvent OnAfterCreateReader;
    TSaverWriterEvent OnAfterCreateWriter;
    TSaverCreateReaderEvent OnBeforeCreateReader;
    TSaverCreateWriterEvent OnBeforeCreateWriter;
    TSaverAfterReadEvent OnAfterReadObject;
    TSaverAfterWriteEvent OnAfterWriteObject;
    TSaverBeforeReadEvent OnBeforeReadObject;
    TSaverBeforeWriteEvent OnBeforeWriteObject;

    // Saves in Format. Names pair up with objects by index; a missing or empty name of a
    // component is made from its owners' names. The file is replaced only when all is written.
    void SaveObjects(TPersistentArray objects, TNameArray names, rtl::TStream* stream);
    void SaveObjects(TPersistentArray objects, TNameArray names, const std::string& fileName);
    virtual void SaveObjectBinary(TPersistentArray objects, TNameArray names, rtl::TStream* stream);
    virtual void SaveObjectText(TPersistentArray objects, TNameArray names, rtl::TStream* stream);

    // Loads in Format, detected first with AutoDetectFormat. A nil entry passes over its object.
    void LoadObjects(TPersistentArray objects, rtl::TStream* stream);
    void LoadObjects(TPersistentArray objects, const std::string& fileName);
    void LoadObjectBinary(TPersistentArray objects, rtl::TStream* stream);
    void LoadObjectText(TPersistentArray objects, rtl::TStream* stream);
    // LoadObjects from the file; false, without a message, when anything fails.
    bool SafeLoadObjects(TPersistentArray objects, const std::string& fileName);

    // The objects as a string in Format, and back.
    void GetObjectProps(TPersistentArray objects, std::string& text);
    void SetObjectProps(TPersistentArray objects, const std::string& text);

    // The filers of one call. A hook may supply its own.
    virtual std::unique_ptr<TFitReader> CreateReader(rtl::TStream* stream);
    virtual std::unique_ptr<TFitWriter> CreateWriter(rtl::TStream* stream);

protected:
    virtual void DoAfterCreateReader(TFitReader* reader);
    virtual void DoAfterCreateWriter(TFitWriter* writer);
    virtual void DoBeforeCreateReader(rtl::TStream* stream, std::unique_ptr<TFitReader>& reader);
    virtual void DoBeforeCreateWriter(rtl::TStream* stream, std::unique_ptr<TFitWriter>& writer);
    virtual void DoAfterReadObject(rtl::TPersistent* obj, TFitReader* reader,
                                   const std::string& name);
    virtual void DoBeforeReadObject(rtl::TPersistent* obj, TFitReader* reader, bool& doRead);
    virtual void DoBeforeWriteObject(rtl::TPersistent* obj, const std::string& name,
                                     TFitWriter* writer, bool& doWrite);
    void DoAfterWriteObject(rtl::TPersistent* obj, const std::string& name, TFitWriter* writer);
};

// A saver whose objects are written through a TFilteringWriter with lists of paths qualified by
// the object's name ("Main.Font.Size"): each object gets the entries that start with its name.
class TPropSaver : public TObjectSaver {
    RTL_CLASS(TPropSaver, TObjectSaver)
public:
    TPropSaver();
    ~TPropSaver() override;

    rtl::TStringList* StoredProps() const { return storedProps_.get(); }
    rtl::TStringList* IgnoredProps() const { return ignoredProps_.get(); }
    // Copy the given list.
    void SetStoredProps(rtl::TStrings* list);
    void SetIgnoredProps(rtl::TStrings* list);

protected:
    void DoBeforeCreateWriter(rtl::TStream* stream, std::unique_ptr<TFitWriter>& writer) override;
    void DoAfterCreateWriter(TFitWriter* writer) override;
    void DoBeforeWriteObject(rtl::TPersistent* obj, const std::string& name, TFitWriter* writer,
                             bool& doWrite) override;

private:
    std::unique_ptr<rtl::TStringList> storedProps_;
    std::unique_ptr<rtl::TStringList> ignoredProps_;
};

} // namespace zelvane
