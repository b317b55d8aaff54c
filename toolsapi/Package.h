// The entry point of a design-time package: a shared library that exports
//     extern "C" void Register();
// The host loads the library, sets BorlandIDEServices, Application and Screen, and calls
// Register, in which the package hands its wizards to RegisterPackageWizard. At unload the host
// tells each wizard Destroyed, releases it, and then unloads the library.
#pragma once

namespace ToolsAPI {

inline constexpr const char* PackageRegisterProcName = "Register";
using TPackageRegisterProc = void (*)();

} // namespace ToolsAPI
