// The message of the exception a piece of test code is expected to raise. Shared by the
// persistence and the specification tests.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace scratch {

// Runs f and returns the message of the E it raises; a test failure when it raises none.
template <class E, class F> std::string ErrorOf(F&& f) {
    try {
        f();
    } catch (const E& e) {
        return e.Message();
    }
    ADD_FAILURE() << "no exception was raised";
    return "<no exception>";
}

} // namespace scratch
