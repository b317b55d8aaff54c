// The component filer: TFiler, TReader and TWriter, which read and write the binary object
// stream ("TPF0") value by value and property by property, and the resource header that wraps
// a stream in a 16-bit resource.
//
// A value in the stream is a one-byte tag (TValueType) and its payload, little-endian. Readers
// and writers keep a buffer of their own in front of the stream: the reader reads ahead, so
// FlushBuffer (or destroying the reader) puts the stream back where the reader logically stands.
//
// Readers and writers for special purposes derive from these classes and replace parts of
// them: WriteProperties, WriteProperty, DefineProperty, DefineBinaryProperty, ReadProperty and
// Error are virtual, and the state they need is protected.
#pragma once

#include "rtl/Classes.h"
#include "rtl/Persistent.h"
#include "rtl/Streams.h"
#include "rtl/TypInfo.h"
#include "rtl/Variants.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace rtl {

class TComponent;
class TReader;
class TWriter;

// The tag in front of every value of an object stream.
enum TValueType : uint8_t {
    vaNull = 0,
    vaList = 1,
    vaInt8 = 2,
    vaInt16 = 3,
    vaInt32 = 4,
    vaExtended = 5,
    vaString = 6,
    vaIdent = 7,
    vaFalse = 8,
    vaTrue = 9,
    vaBinary = 10,
    vaSet = 11,
    vaLString = 12,
    vaNil = 13,
    vaCollection = 14,
    vaSingle = 15,
    vaCurrency = 16,
    vaDate = 17,
    vaWString = 18,
    vaInt64 = 19,
    vaUTF8String = 20,
};
inline constexpr uint8_t vaLast = vaUTF8String;

// The tag's name ("vaInt8"), or "?" for a byte that is no tag.
const char* ValueTypeName(uint8_t valueType);

// The prefix byte in front of a component's class name: its high nibble is 15, its low bits
// are these flags. With ffChildPos an integer value follows the prefix byte.
enum TFilerFlag : uint8_t { ffInherited = 1, ffChildPos = 2, ffInline = 4 };
using TFilerFlags = uint8_t;

// The four bytes at the start of every binary object stream.
inline constexpr char FilerSignature[4] = {'T', 'P', 'F', '0'};

// The deepest nesting of lists, collections and child objects that readers and converters
// accept. Streams of real forms stay far below it; it keeps damaged or hostile input from
// exhausting the stack.
inline constexpr int MaxNestingDepth = 256;

// The 10-byte x87 extended form of the stream and a long double.
void ExtendedToBytes(long double value, uint8_t bytes[10]);
long double BytesToExtended(const uint8_t bytes[10]);

using TReaderProc = std::function<void(TReader*)>;
using TWriterProc = std::function<void(TWriter*)>;
using TStreamProc = std::function<void(TStream*)>;

// The part common to readers and writers: the stream, the buffer in front of it and the
// component being read or written.
class TFiler : public TObject {
    RTL_CLASS(TFiler, TObject)
public:
    TFiler(TStream* stream, int bufSize);
    ~TFiler() override;

    // Stored properties that are not published: an object's DefineProperties names each with
    // a handler for reading and one for writing; hasData says whether there is anything to write.
    virtual void DefineProperty(const std::string& name, const TReaderProc& readData,
                                const TWriterProc& writeData, bool hasData) = 0;
    virtual void DefineBinaryProperty(const std::string& name, const TStreamProc& readData,
                                      const TStreamProc& writeData, bool hasData) = 0;
    // Brings the stream's position in line with the filer's logical position.
    virtual void FlushBuffer() = 0;

    TStream* Stream() const { return FStream; }

    TComponent* Root = nullptr;
    TComponent* LookupRoot = nullptr;
    // The object whose values a writer compares against, so that what equals them is left out;
    // on reading, the ancestor a defined property compares against.
    TPersistent* Ancestor = nullptr;
    bool IgnoreChildren = false;

protected:
    TStream* FStream;
    std::vector<char> FBuffer;
    int FBufSize;
    int FBufPos = 0;
    int FBufEnd = 0;
};

// Called for every failure in reading a property that the reader can recover from; setting
// handled skips the value and goes on with the next property.
using TReaderError =
    std::function<void(TReader* reader, const std::string& message, bool& handled)>;
// Called to find the code of a method named in the stream; setting error to false accepts
// the address (which may stay nil).
using TFindMethodEvent = std::function<void(TReader* reader, const std::string& methodName,
                                            void*& address, bool& error)>;
// Called before a component read from the stream gets its name; may change the name.
using TSetNameEvent =
    std::function<void(TReader* reader, TComponent* component, std::string& name)>;
// Called to find the class of a component in the stream before the registry is asked.
using TFindComponentClassEvent =
    std::function<void(TReader* reader, const std::string& className, TClass& componentClass)>;
// Called with each component read by ReadComponents.
using TReadComponentsProc = std::function<void(TComponent* component)>;

class TReader : public TFiler {
    RTL_CLASS(TReader, TFiler)
public:
    explicit TReader(TStream* stream, int bufSize = 4096);
    // Puts the stream back where the reader logically stands.
    ~TReader() override;

    // Reads exactly count bytes, or raises EReadError.
    void Read(void* buffer, int64_t count);

    TValueType ReadValue();
    TValueType NextValue();
    bool EndOfList();
    void CheckValue(TValueType value);
    void ReadListBegin();
    void ReadListEnd();
    void ReadSignature();
    // Reads the optional prefix byte of a component; without one flags is 0 and nothing is read.
    void ReadPrefix(TFilerFlags& flags, int32_t& childPos);

    std::string ReadStr();
    std::string ReadString();
    std::u16string ReadWideString();
    int32_t ReadInteger();
    int64_t ReadInt64();
    long double ReadFloat();
    float ReadSingle();
    // A currency value as a number; the stream holds it times 10000 as a 64-bit integer.
    long double ReadCurrency();
    double ReadDate();
    std::string ReadIdent();
    char ReadChar();
    char16_t ReadWideChar();
    bool ReadBoolean();
    Variant ReadVariant();
    // Reads a vaSet value of the set type and returns its bits; an unknown element name is an
    // error after the whole set has been read.
    uint32_t ReadSet(PTypeInfo setType);

    void SkipValue();
    void SkipProperty();
    void SkipBytes(int64_t count);

    // Reads one property record into instance. The name may be a dotted path through nested
    // persistent objects; a name no published property has is offered to the object's
    // DefineProperties. Every failure but one in a defined property goes to Error with a
    // sentence naming the object and the property; when Error returns true the value is
    // skipped and reading goes on.
    virtual void ReadProperty(TPersistent* instance);
    // Reads property records into instance up to the end of the list, and the list end.
    void ReadProperties(TPersistent* instance);

    // Reads a whole stream (signature first) into root, or, with root nil, into a new component
    // of the stream's class. Owned components are created from the stream, references between
    // components are resolved at the end, and every component read gets Loaded.
    TComponent* ReadRootComponent(TComponent* root);
    // Reads one component: the prefix, class and name, then its state through ReadState. With
    // component nil it is created (owned by Owner) or, when inherited, found in the lookup root.
    TComponent* ReadComponent(TComponent* component);
    // Reads components, each with its signature, up to the end of the list, owned by owner and
    // parented by parent; proc is called with each.
    void ReadComponents(TComponent* owner, TComponent* parent, const TReadComponentsProc& proc);
    // Reads the property records and the child components of instance: TComponent::ReadState
    // calls this.
    void ReadData(TComponent* instance);
    // Reads the items of a vaCollection value (the tag already read) into collection.
    void ReadCollection(TCollection* collection);
    // Passes over a component; with skipHeader also over its prefix, class and name.
    void SkipComponent(bool skipHeader);

    // Decides about a failure in reading a property: true skips it. The default asks OnError.
    virtual bool Error(const std::string& message);

    void DefineProperty(const std::string& name, const TReaderProc& readData,
                        const TWriterProc& writeData, bool hasData) override;
    void DefineBinaryProperty(const std::string& name, const TStreamProc& readData,
                              const TStreamProc& writeData, bool hasData) override;
    void FlushBuffer() override;

    // The logical position in the stream.
    int64_t Position() const;
    void SetPosition(int64_t value);

    TComponent* Owner = nullptr;
    TComponent* Parent = nullptr;
    TReaderError OnError;
    TFindMethodEvent OnFindMethod;
    TSetNameEvent OnSetName;
    TFindComponentClassEvent OnFindComponentClass;

    // The name of the property being read; a defined property clears it when it has read it.
    const std::string& PropName() const { return FPropName; }

protected:
    // Reads the value of one published property.
    virtual void ReadPropValue(TPersistent* instance, PPropInfo propInfo);
    // The integer that an identifier stands for in an integer property of the type, as the
    // platform's integer-identifier tables give it (colour names for TColor); false when the
    // type has no table or the table doesn't know the identifier.
    virtual bool IdentToInteger(PTypeInfo type, const std::string& ident, int64_t& value);
    [[noreturn]] void PropValueError();
    [[noreturn]] void ReadError(const std::string& message);
    // The address of a published method of root, asking OnFindMethod; raises when neither knows it.
    virtual void* FindMethod(TComponent* root, const std::string& methodName);
    // The class of a component named in the stream: OnFindComponentClass, the classes of the
    // root's published fields, then the class registry. Raises EClassNotFound.
    virtual TClass FindComponentClass(const std::string& className);
    // The component of that name that an inherited component in the stream stands for.
    virtual TComponent* FindAncestorComponent(const std::string& name, TClass componentClass);
    virtual void SetName(TComponent* component, std::string& name);
    // Resolves the component references read since the outermost ReadData began.
    void FixupReferences();
    // Reads a block of count bytes into a string without trusting count: a count larger than
    // what the stream holds fails with EReadError before much memory is taken.
    void ReadChunked(std::string& out, uint64_t count);

    std::string FPropName;
    bool FCanHandleExcepts = false;
    int FDepth = 0;

    // A component reference read from the stream, resolved when the whole tree is there.
    struct TPropFixup {
        TPersistent* Instance;
        PPropInfo PropInfo;
        TComponent* InstanceRoot;
        std::string Name;
    };
    std::vector<TPropFixup>* FFixups = nullptr;
    std::vector<TComponent*>* FLoaded = nullptr;

private:
    void ReadDataInner(TComponent* instance);
    void ReadBuffer();
    uint8_t ReadByte();
    void SkipSetBody();
    void SkipValueAt(int depth);
};

class TWriter : public TFiler {
    RTL_CLASS(TWriter, TFiler)
public:
    explicit TWriter(TStream* stream, int bufSize = 4096);
    // Writes what is still buffered.
    ~TWriter() override;

    void Write(const void* buffer, int64_t count);
    void WriteValue(TValueType value);
    void WriteSignature();
    // The head of an object: its flags (with the child position) and its class name. A class
    // name of 240 bytes or more has a length byte that a reader takes for flags, so it gets a
    // flag byte of its own even when there are no flags.
    void WritePrefix(TFilerFlags flags, int32_t childPos, std::string_view className);
    void WriteListBegin();
    void WriteListEnd();

    // A short string: one length byte and at most 255 bytes.
    void WriteStr(std::string_view value);
    // vaString for up to 255 bytes, vaLString beyond.
    void WriteString(std::string_view value);
    void WriteWideString(std::u16string_view value);
    void WriteUTF8String(std::string_view value);
    // The smallest of vaInt8, vaInt16, vaInt32.
    void WriteInteger(int32_t value);
    // As above when the value fits 32 bits, vaInt64 otherwise.
    void WriteInteger(int64_t value);
    void WriteFloat(long double value);
    void WriteSingle(float value);
    void WriteCurrency(long double value);
    void WriteDate(double value);
    // "False", "True", "nil" and "Null" (in any case) as their own tags, anything else vaIdent.
    void WriteIdent(std::string_view ident);
    void WriteChar(char value);
    void WriteWideChar(char16_t value);
    void WriteBoolean(bool value);
    void WriteVariant(const Variant& value);
    // vaBinary: the handler writes the data into a memory stream, whose size goes first.
    void WriteBinary(const TStreamProc& writeData);
    // vaSet with the names of the set bits of a set type, ended by an empty name.
    void WriteSet(uint32_t bits, PTypeInfo setType);

    // Writes root as a whole stream: the signature, then root with its children.
    void WriteRootComponent(TComponent* root);
    // As WriteRootComponent, leaving out what equals the ancestor (an object of the same class
    // whose children have the same names): inherited components are marked as such, and an
    // inherited component without changes is left out.
    void WriteDescendent(TComponent* root, TComponent* ancestor);
    // Writes one component through its WriteState.
    void WriteComponent(TComponent* component);
    // Writes the prefix, class, name, properties and children of instance: TComponent::WriteState
    // calls this.
    void WriteData(TComponent* instance);
    // vaCollection with the items' properties, each in a list; the ancestor is cleared meanwhile.
    void WriteCollection(TCollection* value);

    // Writes the stored published properties of instance that differ from their declared
    // default or from the ancestor's value, then its defined properties. A nested persistent
    // object is written flat, its properties named "Font.Size".
    virtual void WriteProperties(TPersistent* instance);
    virtual void WriteProperty(TPersistent* instance, PPropInfo propInfo);

    void DefineProperty(const std::string& name, const TReaderProc& readData,
                        const TWriterProc& writeData, bool hasData) override;
    void DefineBinaryProperty(const std::string& name, const TStreamProc& readData,
                              const TStreamProc& writeData, bool hasData) override;
    void FlushBuffer() override;

    int64_t Position() const;
    // Moves back within what is written; used to drop an inherited component without changes.
    void SetPosition(int64_t value);

    TComponent* RootAncestor = nullptr;

protected:
    // Writes the property name with the path of the nested object being written in front.
    void WritePropName(const std::string& name);
    void WriteRaw8(uint8_t b);
    // The identifier that stands for the value of an integer property of the type, from the
    // platform's integer-identifier tables; false when there is none.
    virtual bool IntegerToIdent(PTypeInfo type, int64_t value, std::string& ident);
    // Writes the name and the value of a property of a plain kind (ordinals, floats, strings,
    // variants), whatever the value; false, with nothing written, for the other kinds.
    bool WritePlainProperty(TPersistent* instance, PPropInfo propInfo);
    // Whether the property of a plain kind holds its default: the ancestor's value when there is
    // an ancestor, else the declared default (ordinals) or zero and empty (the others).
    static bool HoldsDefault(TPersistent* instance, PPropInfo propInfo, TPersistent* ancestor);

    // "Font." while the properties of the object in the Font property are written.
    std::string FPropPath;
    // The children of the ancestor, while the children of a component are written.
    std::vector<TComponent*>* FAncestorList = nullptr;
    size_t FAncestorPos = 0;
    int32_t FChildPos = 0;

private:
    void WriteObjectProp(TPersistent* instance, PPropInfo propInfo, TPersistent* ancestor);
};


// The platform's streaming of components on a TStream.
void WriteComponent(TStream* stream, TComponent* instance);
void WriteDescendent(TStream* stream, TComponent* instance, TComponent* ancestor);
// Reads a component stream into instance, or into a new component with instance nil.
TComponent* ReadComponent(TStream* stream, TComponent* instance);
// The same inside a resource header named resName (as the platform names a form's resource: its
// class name in upper case).
void WriteComponentRes(TStream* stream, const std::string& resName, TComponent* instance);
void WriteDescendentRes(TStream* stream, const std::string& resName, TComponent* instance,
                        TComponent* ancestor);
TComponent* ReadComponentRes(TStream* stream, TComponent* instance);

// The 16-bit resource header around a binary object stream: byte 255, the type 10, the
// resource name ended by a zero byte, the flags 4144 and the size of what follows.
// WriteResourceHeader writes it with a size of 0 and returns in fixupInfo the position that
// FixupResourceHeader needs, after the object, to fill the size in.
void WriteResourceHeader(TStream* stream, const std::string& resName, int64_t& fixupInfo);
void FixupResourceHeader(TStream* stream, int64_t fixupInfo);
// Reads a resource header and checks it; a stream that holds none raises EInvalidImage.
void ReadResHeader(TStream* stream);

} // namespace rtl
