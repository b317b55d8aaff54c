// Helpers shared by the units that put arrays of objects into component streams (DataHndl,
// DataHndl2). Internal to the persistence layer.
#pragma once

#include "foundation/AppUtils.h"
#include "persistence/DataHndl.h"
#include "rtl/Classes.h"
#include "rtl/ObjectText.h"
#include "rtl/Streams.h"

#include <array>
#include <cstdint>
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
template <class E>
rtl::TComponent* StreamRoot(rtl::TObject* obj, size_t index, TWrapper& wrapper) {
    rtl::TPersistent* persistent = RequirePersistent<E>(obj, index);
    if (auto* component = dynamic_cast<rtl::TComponent*>(persistent)) return component;
    wrapper.I = persistent;
    return &wrapper;
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
        for (auto& [component, owner] : removed_) owner->InsertComponent(component);
    }
    TOwnerRemoval(const TOwnerRemoval&) = delete;
    TOwnerRemoval& operator=(const TOwnerRemoval&) = delete;

private:
    std::vector<std::pair<rtl::TComponent*, rtl::TComponent*>> removed_;
};

// Reads the text form of the objects, one after the other (each object that isn't a component
// after its description line), into one binary stream, and has load read that.
template <class Load> void LoadTextThroughBinary(TObjectArray objects, rtl::TStream* stream,
                                                 Load load) {
    rtl::TMemoryStream binary;
    for (rtl::TObject* obj : objects) {
        if (!IsComponent(obj)) SkipObjectDescription(stream);
        rtl::ObjectTextToBinary(stream, &binary);
    }
    binary.SetPosition(0);
    load(&binary);
}

} // namespace zelvane::stream_objects
