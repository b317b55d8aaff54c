// The workbench's GUI tests run in one application object, the workbench's own, on Qt's offscreen
// platform.
#include "workbench/Application.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    workbench::TWorkbenchApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
