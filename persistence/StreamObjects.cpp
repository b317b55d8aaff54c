#include "persistence/StreamObjects.h"

#include <memory>

namespace zelvane::stream_objects {

using namespace rtl;

void ReadComponents(TAdvReader& reader, TStream* stream, std::span<TComponent** const> components,
                    bool resFormat) {
    for (TComponent** ref : components) {
        if (resFormat) {
            reader.FlushBuffer();
            ReadResHeader(stream);
        }
        if (ref) {
            *ref = reader.ReadRootComponent(*ref);
        } else {
            // Read and dropped: the stream is kept in step with the array.
            std::unique_ptr<TComponent> dropped(reader.ReadRootComponent(nullptr));
        }
        if (resFormat) reader.FlushBuffer();
    }
}

} // namespace zelvane::stream_objects
