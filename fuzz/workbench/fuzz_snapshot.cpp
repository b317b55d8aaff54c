// Feeds arbitrary text to the machine snapshot parser. Whatever the text, parsing either gives a
// snapshot or raises the runtime's exception; a snapshot answers for every address of its code
// and memory without reading outside what it holds.
#include "workbench/cpu/Snapshot.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace workbench::cpu;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        TMachineSnapshot snapshot = TMachineSnapshot::Parse(text, "fuzz.snapshot");
        for (const TInstruction& i : snapshot.Code()) {
            const TInstruction* found = snapshot.InstructionAt(i.Address);
            if (!found || found->Address != i.Address) std::abort();
            if (!i.Bytes.empty() && snapshot.InstructionAt(i.End() - 1) != found) std::abort();
        }
        for (const auto& [start, bytes] : snapshot.Memory()) {
            if (bytes.empty() || !snapshot.Byte(start)) std::abort();
            uint32_t last = start + static_cast<uint32_t>(bytes.size() - 1);
            if (snapshot.Byte(last) != bytes.back()) std::abort();
            auto range = snapshot.RangeOf(last);
            if (!range || range->first != start) std::abort();
        }
    } catch (const rtl::Exception&) {
    }
    return 0;
}
