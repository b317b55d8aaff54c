// The add-in's forms need an application; they run on the offscreen platform.
#include "tests/QtEnvironment.h"

namespace {

const auto* const qtEnvironment =
    ::testing::AddGlobalTestEnvironment(new testqt::TQtEnvironment("addin_tests"));

} // namespace
