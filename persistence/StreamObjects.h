// The paths shared by the units that put arrays of objects into component streams (DataHndl,
// DataHndl2, Storage): files opened around an operation, the load and save loops over an array,
// and text read and written through one binary stream. Internal to the persistence layer.
#pragma once

#include "foundation/AppUtils.h"
#include "persistence/DataHndl.h"
#include "rtl/Classes.h"
#include "rtl/FileStreams.h"
#include "rtl/ObjectText.h"
#include "rtl/SafeFile.h"
#include "rtl/Streams.h"

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace zelvane::stream_objects {

// The entry of an object array as a persistent object; a nil or non-persistent entry raises E.
template <class E> rtl::TPersistent* RequirePersistent(rtl::TObject* obj, size_t index) {
    if (!obj) CreateException<E>("Object %d of the array is nil.", {index});
    auto* persistent = dynamic_cast<rtl::TPersistent*>(obj);
    if (!persistent)
        CreateException<E>("Object %d of the array (%s) isn't persistent and can't be stored.",
                           {index, obj->ClassName()});
    return persistent;
}

// The component that stands for an object in a component stream: the object itself, or the
// wrapper around it.
template <class E> rtl::TComponent* StreamRoot(rtl::TObject* obj, size_t index, TWrapper& wrapper) {
    rtl::TPersistent* persistent = RequirePersistent<E>(obj, index);
    if (auto* component = dynamic_cast<rtl::TComponent*>(persistent)) return component;
    wrapper.I = persistent;
    return &wrapper;
}

// Runs f on a new file that replaces the named one only when f has written all of it.
template <class F> void WithNewFile(const std::string& fileName, F&& f) {
    rtl::TSafeFileStream file(fileName);
    f(&file);
    file.Commit();
}

constexpr uint16_t kReadShared = rtl::fmOpenRead | rtl::fmShareDenyNone;
constexpr uint16_t kReadDenyWrite = rtl::fmOpenRead | rtl::fmShareDenyWrite;

// Runs f on the named file opened for reading in the mode, and gives back what f gives.
template <class F> decltype(auto) WithFile(const std::string& fileName, uint16_t mode, F&& f) {
    rtl::TFileStream file(fileName, mode);
    return f(&file);
}

// The first four bytes of a stream (zeros past its end), read without moving it.
inline std::array<uint8_t, 4> PeekHead(rtl::TStream* stream) {
    std::array<uint8_t, 4> head{};
    int64_t start = stream->GetPosition();
    stream->Read(head.data(), 4);
    stream->SetPosition(start);
    return head;
}

// Whether a stream that begins with this byte holds objects in text form: a tab, vertical tab,
// carriage return or space, or the first letter of "object" or "inherited" in either case.
inline bool BeginsObjectText(uint8_t first) {
    switch (first) {
    case 9:
    case 11:
    case 13:
    case ' ':
    case 'I':
    case 'O':
    case 'i':
    case 'o':
        return true;
    default:
        return false;
    }
}

inline bool IsComponent(rtl::TObject* obj) {
    return dynamic_cast<rtl::TComponent*>(obj) != nullptr;
}

// Takes the components of a range out of their owners, so that their names can't clash with
// their siblings' while they are read, and puts them back, in order, when destroyed.
class TOwnerRemoval {
public:
    template <class Range> explicit TOwnerRemoval(const Range& objects) {
        for (auto* obj : objects) {
            auto* component = dynamic_cast<rtl::TComponent*>(obj);
            if (!component || !component->Owner()) continue;
            removed_.emplace_back(component, component->Owner());
            component->Owner()->RemoveComponent(component);
        }
    }
    ~TOwnerRemoval() {
        for (auto& [component, owner] : removed_)
            owner->InsertComponent(component);
    }
    TOwnerRemoval(const TOwnerRemoval&) = delete;
    TOwnerRemoval& operator=(const TOwnerRemoval&) = delete;

private:
    std::vector<std::pair<rtl::TComponent*, rtl::TComponent*>> removed_;
};

// Reads the text form of the objects, one after the other (each object that isn't a component
// after its description line), into one binary stream, and has load read that.
template <class Load>
void LoadTextThroughBinary(TObjectArray objects, rtl::TStream* stream, Load load) {
    rtl::TMemoryStream binary;
    for (rtl::TObject* obj : objects) {
        if (!IsComponent(obj)) SkipObjectDescription(stream);
        rtl::ObjectTextToBinary(stream, &binary);
    }
    binary.SetPosition(0);
    load(&binary);
}

// Component streams, one an object: each read into its object (a component itself, any other
// persistent object through a TWrapper) or, for a nil entry, passed over. With resFormat each
// stands inside a resource header, read from the stream itself behind what the reader has taken.
// A non-persistent entry raises E.
template <class E>
void ReadObjects(TAdvReader& reader, rtl::TStream* stream, TObjectArray objects, bool resFormat) {
    for (size_t i = 0; i < objects.size(); ++i) {
        if (resFormat) {
            reader.FlushBuffer();
            rtl::ReadResHeader(stream);
        }
        if (!objects[i]) {
            reader.ReadSignature();
            reader.SkipComponent(true);
        } else {
            TWrapper wrapper;
            reader.ReadRootComponent(StreamRoot<E>(objects[i], i, wrapper));
        }
        if (resFormat) reader.FlushBuffer();
    }
}

// Component streams into component variables: a variable that holds nil receives a new component
// of the stream's class, a nil variable reads a component and drops it.
void ReadComponents(TAdvReader& reader, rtl::TStream* stream,
                    std::span<rtl::TComponent** const> components, bool resFormat);

// Property lists, one an object, each ended: read into each object, or passed over for a nil
// entry; written from each. The signature in front is the caller's.
template <class E> void ReadPropertyLists(TAdvReader& reader, TObjectArray objects) {
    for (size_t i = 0; i < objects.size(); ++i) {
        if (!objects[i]) {
            while (!reader.EndOfList())
                reader.SkipProperty();
        } else {
            rtl::TPersistent* target = RequirePersistent<E>(objects[i], i);
            while (!reader.EndOfList())
                reader.ReadProperty(target);
        }
        reader.ReadListEnd();
    }
}

template <class E> void WritePropertyLists(TAdvWriter& writer, TObjectArray objects) {
    for (size_t i = 0; i < objects.size(); ++i) {
        writer.WriteProperties(RequirePersistent<E>(objects[i], i));
        writer.WriteListEnd();
    }
    writer.FlushBuffer();
}

// The text form of count objects, each converted into one binary stream, which load reads.
template <class Load> void LoadTextAsBinary(size_t count, rtl::TStream* stream, Load load) {
    rtl::TMemoryStream binary;
    for (size_t i = 0; i < count; ++i)
        rtl::ObjectTextToBinary(stream, &binary);
    binary.SetPosition(0);
    load(&binary);
}

// The objects' text form: save writes them into one binary stream, and each is converted to text
// from there, an object that isn't a component after the line describe(index) writes.
template <class Save, class Describe>
void SaveTextThroughBinary(TObjectArray objects, rtl::TStream* stream, Save save,
                           Describe describe) {
    if (objects.empty()) return;
    rtl::TMemoryStream binary;
    save(&binary);
    binary.SetPosition(0);
    for (size_t i = 0; i < objects.size(); ++i) {
        if (!IsComponent(objects[i])) describe(i);
        rtl::ObjectBinaryToText(&binary, stream);
    }
}

} // namespace zelvane::stream_objects
