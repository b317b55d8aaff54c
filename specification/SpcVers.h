// Unit SpcVers: the versions that version lines of specification files carry.
//
// The values are of the platform's currency type: 64-bit integers holding the value times
// 10000, so that 1.01 is exactly 10100.
#pragma once

#include <cstdint>

namespace zelvane {

// A fixed-point number with four decimal places, as the platform's Currency.
struct TCurrency {
    int64_t Raw = 0;
    constexpr long double Value() const { return static_cast<long double>(Raw) / 10000; }
    friend constexpr bool operator==(TCurrency, TCurrency) = default;
    friend constexpr auto operator<=>(TCurrency, TCurrency) = default;
};

// The version of the settings editor that writes a file.
inline constexpr TCurrency cEditorVersion{10100}; // 1.01
// The version of the platform whose type information the file rests on.
inline constexpr TCurrency cDelphiVersion{999900}; // 99.99

} // namespace zelvane
