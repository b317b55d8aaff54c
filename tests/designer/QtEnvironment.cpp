// The widgets of these tests need an application; they run on the offscreen platform.
#include "tests/QtEnvironment.h"

namespace {

const auto* const qtEnvironment =
    ::testing::AddGlobalTestEnvironment(new testqt::TQtEnvironment("designer_tests"));

} // namespace
