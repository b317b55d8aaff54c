// Helpers shared by the runtime library's tests.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace rtltest {

// Runs f and returns the message of the E it raises; a test failure when it raises none.
template <class E, class F> std::string MessageOf(F&& f) {
    try {
        f();
    } catch (const E& e) {
        return e.Message();
    }
    ADD_FAILURE() << "no exception raised";
    return {};
}

} // namespace rtltest
