// The key the about box's form is scrambled with in the package.
#pragma once

namespace zelvane {

inline constexpr char AboutFormKey = 0x5A;

} // namespace zelvane
