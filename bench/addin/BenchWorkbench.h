// The workbench as the add-in's benchmarks run it, on Qt's offscreen platform: a configuration
// directory of its own, errors written to stderr instead of shown, the add-in copied into a
// directory of its own (where its settings file goes), and the example project open in a shown
// main form. The benchmark's own setup and run go in between.
#pragma once

#include "tests/workbench/TestFiles.h"
#include "workbench/Application.h"
#include "workbench/MainWindow.h"
#include "workbench/model/Model.h"

#include <QMenu>
#include <QMenuBar>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

namespace benchworkbench {

// The add-in's menu in the main menu, or nullptr before it is built.
inline QMenu* ExpertsMenu(workbench::TMainForm& form) {
    for (QAction* a : form.menuBar()->actions())
        if (a->menu() && a->menu()->objectName() == QStringLiteral("ZelvaneMenu")) return a->menu();
    return nullptr;
}

// Runs body with the workbench up; package is the copy of the add-in to load.
inline int Run(int argc, char** argv,
               const std::function<void(workbench::TMainForm& form, workbench::TIDEModel& model,
                                        const std::string& package)>& body) {
    using namespace workbench;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    testfiles::TTempDir config;
    setenv("XDG_CONFIG_HOME", config.Path().c_str(), 1);
    TWorkbenchApplication app(argc, argv);
    // An error the workbench would show in a box goes to the log; a benchmark waits for no one.
    app.SetErrorBox([](const std::string& caption, const std::string& text) {
        std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
    });
    benchmark::Initialize(&argc, argv);

    testfiles::TTempDir dir;
    const std::string package = dir.File("libzelvane.so");
    std::filesystem::copy_file(ZELVANE_ADDIN_FILE, package);
    testfiles::TExampleCopy example;
    auto model = TIDEModel::Create();
    ToolsAPI::BorlandIDEServices = ToolsAPI::_di_IBorlandIDEServices(model.get());
    {
        TMainForm form(model.get());
        form.OpenProject(example.File("Example.dpr"));
        form.ShowAll();
        QCoreApplication::processEvents();
        body(form, *model, package);
        model->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
        model->CloseAll();
    }
    ToolsAPI::BorlandIDEServices = nullptr;
    benchmark::Shutdown();
    return 0;
}

} // namespace benchworkbench
