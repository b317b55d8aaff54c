// A design-time package for the tests whose Register raises. The IDE must report the failure
// and stay up.
#include "rtl/SysUtils.h"
#include "toolsapi/Package.h"

extern "C" void Register() {
    throw rtl::EInvalidOperation("The failing test package refuses to register");
}
