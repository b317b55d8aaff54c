// The add-in in the workbench on Qt's offscreen platform: from dlopen of libzelvane.so to its
// menu built on the first turn of the event loop; and the block expert's commands on a marked
// block of 1 000 and 10 000 lines, from the action firing to the buffer changed. Beside the
// commands, the same work done by GNU tools on the same lines (sed shifting every line, sort -f
// sorting them), timed from here so that the figures come from the same run.
#include "tests/workbench/TestFiles.h"
#include "workbench/Application.h"
#include "workbench/EditWindow.h"
#include "workbench/MainWindow.h"
#include "workbench/Packages.h"
#include "workbench/SourceEdit.h"
#include "workbench/model/Model.h"

#include <QMenu>
#include <QMenuBar>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

using namespace workbench;
using namespace ToolsAPI;

namespace {

TMainForm* mainForm = nullptr;
testfiles::TTempDir* packageDir = nullptr;

std::string Package() {
    return packageDir->File("libzelvane.so");
}

QMenu* ExpertsMenu() {
    for (QAction* a : mainForm->menuBar()->actions())
        if (a->menu() && a->menu()->objectName() == QStringLiteral("ZelvaneMenu")) return a->menu();
    return nullptr;
}

QAction* Command(const char* caption) {
    for (QAction* a : ExpertsMenu()->actions())
        if (a->text() == QString::fromLatin1(caption)) return a;
    return nullptr;
}

// Runs posted events until the experts' menu stands.
void TurnUntilMenu() {
    while (!ExpertsMenu())
        QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void BM_LoadToMenu(benchmark::State& state) {
    for (auto _ : state) {
        TPackageLoader loader;
        loader.Load(Package());
        TurnUntilMenu();
        state.PauseTiming();
        loader.UnloadAll();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
}

// Lines of a class section: indented declarations with random names.
std::string Lines(int count) {
    std::mt19937 rng(4711);
    std::string text;
    for (int i = 0; i < count; ++i) {
        std::string name;
        for (int k = 0; k < 10; ++k)
            name += char('a' + rng() % 26);
        text += "    " + name + ": Integer;\r\n";
    }
    return text;
}

struct TAddin {
    TAddin() {
        loader.Load(Package());
        TurnUntilMenu();
        view = mainForm->EditWindow()->Editor()->View();
    }
    ~TAddin() { loader.UnloadAll(); }
    // The text with every line marked, the cursor at the block's end.
    void Mark(const std::string& text, int lines) {
        view->Buffer().SetText(text);
        view->GetPosition()->Move(1, 1);
        view->GetBlock()->Extend(lines + 1, 1);
    }
    TPackageLoader loader;
    TEditView* view = nullptr;
};

void RunCommand(benchmark::State& state, const char* caption) {
    TAddin addin;
    int lines = int(state.range(0));
    std::string text = Lines(lines);
    QAction* command = Command(caption);
    for (auto _ : state) {
        state.PauseTiming();
        addin.Mark(text, lines);
        state.ResumeTiming();
        command->trigger();
    }
    if (addin.view->Buffer().Text() == text) state.SkipWithError("the command changed nothing");
    state.SetItemsProcessed(state.iterations() * lines);
}

void BM_MoveRight(benchmark::State& state) {
    RunCommand(state, "Move block right (1 pos)");
}
void BM_MoveLeft(benchmark::State& state) {
    RunCommand(state, "Move block left (1 pos)");
}
void BM_Sort(benchmark::State& state) {
    RunCommand(state, "Sorting");
}

// The same lines through a GNU tool, as one process run from here: sed shifting each line by a
// column, sort -f ordering them.
void RunTool(benchmark::State& state, const char* command) {
    int lines = int(state.range(0));
    std::string file = packageDir->File("lines.txt");
    testfiles::WriteFile(file, Lines(lines));
    std::string line = std::string(command) + " " + file + " >/dev/null";
    for (auto _ : state)
        if (std::system(line.c_str()) != 0) state.SkipWithError(command);
}

void BM_GnuSedShift(benchmark::State& state) {
    RunTool(state, "sed 's/^/ /'");
}
void BM_GnuSortF(benchmark::State& state) {
    RunTool(state, "sort -f");
}

BENCHMARK(BM_LoadToMenu)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MoveRight)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MoveLeft)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sort)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
// The tools run in processes of their own: their time is the wall clock's.
BENCHMARK(BM_GnuSedShift)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_GnuSortF)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    testfiles::TTempDir config;
    setenv("XDG_CONFIG_HOME", config.Path().c_str(), 1);
    TWorkbenchApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);

    testfiles::TTempDir dir;
    packageDir = &dir;
    std::filesystem::copy_file(ZELVANE_ADDIN_FILE, Package());
    testfiles::TExampleCopy example;
    auto model = TIDEModel::Create();
    BorlandIDEServices = _di_IBorlandIDEServices(model.get());
    {
        TMainForm form(model.get());
        mainForm = &form;
        form.OpenProject(example.File("Example.dpr"));
        form.ShowAll();
        QCoreApplication::processEvents();
        benchmark::RunSpecifiedBenchmarks();
        model->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
        model->CloseAll();
    }
    BorlandIDEServices = nullptr;
    benchmark::Shutdown();
    return 0;
}
