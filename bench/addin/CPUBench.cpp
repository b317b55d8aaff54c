// The CPU capture in the workbench on Qt's offscreen platform: the workbench's CPU window over a
// generated snapshot whose disassembly holds 10 000 instructions (with labels and source lines
// among them), 80 000 bytes of data and 40 000 bytes of stack, and the add-in's capture window
// set to "All types". Timed is the "Get data" command, from the button to the text in the memo:
// every pane read and its selection put back, for 50 lines (the most the menu offers) and for
// 10 000 lines (the whole disassembly, and as many lines of dump and stack).
#include "bench/addin/BenchWorkbench.h"
#include "tests/workbench/TestFiles.h"
#include "workbench/Application.h"
#include "workbench/MainWindow.h"
#include "workbench/Packages.h"
#include "workbench/model/Model.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QToolButton>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>

using namespace workbench;
using namespace ToolsAPI;

namespace {

constexpr int Instructions = 10000;
constexpr uint32_t CodeStart = 0x00401000, DataStart = 0x00500000, StackTop = 0x0012FFFC;

std::string Hex(uint32_t value, int digits) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%0*X", digits, value);
    return buffer;
}

// Instructions of one to seven bytes, a procedure every 50 with its label, a source line every
// five; data bytes of every value; a stack of return addresses and small numbers.
std::string Snapshot() {
    std::mt19937 rng(4711);
    std::string text = "[code]\n";
    uint32_t address = CodeStart;
    for (int i = 0; i < Instructions; ++i) {
        if (i % 50 == 0)
            text += "label " + Hex(address, 8) + " Unit.Proc" + std::to_string(i) + ":\n";
        if (i % 5 == 0)
            text += "source " + Hex(address, 8) + " Unit.pas." + std::to_string(i / 5 + 10) +
                    ": X := Y;\n";
        int length = 1 + int(rng() % 7);
        std::string bytes;
        for (int b = 0; b < length; ++b)
            bytes += Hex(rng() % 256, 2);
        text += Hex(address, 8) + " " + bytes + " mov eax,$" + Hex(rng(), 8) + "\n";
        address += uint32_t(length);
    }
    text += "[registers]\nEAX = 00000002\nEBX = 7FFDF000\nESP = " + Hex(StackTop, 8) +
            "\nEIP = " + Hex(CodeStart, 8) + "\nEFL = 00000246\nCS = 001B\nDS = 0023\n[memory]\n";
    auto block = [&](uint32_t start, int bytes) {
        for (int at = 0; at < bytes; at += 32) {
            text += Hex(start + uint32_t(at), 8);
            for (int b = 0; b < 32; ++b)
                text += " " + Hex(rng() % 256, 2);
            text += "\n";
        }
    };
    block(DataStart, 8 * Instructions);
    block(StackTop + 4 - 4 * Instructions, 4 * Instructions);
    text += "[views]\nDumpView = " + Hex(DataStart, 8) + "\nStackView = " + Hex(StackTop, 8) + "\n";
    return text;
}

QWidget* CaptureWindow() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QStringLiteral("CPUForm") && w->isVisible()) return w;
    return nullptr;
}

// The line count typed into the capture window's dialog.
void SetCount(QWidget* window, int count) {
    QTimer::singleShot(0, [count] {
        QWidget* dialog = QApplication::activeModalWidget();
        dialog->findChild<QSpinBox*>("SpinEdit")->setValue(count);
        dialog->findChild<QPushButton*>("btnOk")->click();
    });
    window->findChild<QToolButton*>("tbSetStrCount")->click();
}

void BM_CaptureAllPanes(benchmark::State& state) {
    QWidget* window = CaptureWindow();
    SetCount(window, int(state.range(0)));
    auto* getData = window->findChild<QToolButton*>("tbGetData");
    auto* memo = window->findChild<QPlainTextEdit*>("Memo1");
    for (auto _ : state)
        getData->click();
    // Titles and empty lines, registers and flags, and at least the count of each walking pane.
    if (memo->blockCount() < 3 * state.range(0) + 43) state.SkipWithError("the capture is short");
    state.counters["lines"] = double(memo->blockCount());
}

} // namespace

BENCHMARK(BM_CaptureAllPanes)->Arg(50)->Arg(Instructions)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    return benchworkbench::Run(argc, argv, [](TMainForm& form, TIDEModel&, const std::string& package) {
        testfiles::TTempDir dir;
        testfiles::WriteFile(dir.File("Big.snapshot"), Snapshot());
        form.SetSnapshotFile(dir.File("Big.snapshot"));
        form.ShowCPUWindow();
        TPackageLoader loader;
        loader.Load(package);
        while (!benchworkbench::ExpertsMenu(form))
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        // The capture window from the menu, set to all panes.
        Application->UpdateActions();
        for (QAction* a : benchworkbench::ExpertsMenu(form)->actions())
            if (a->text() == QStringLiteral("View CPU data")) a->trigger();
        QCoreApplication::processEvents();
        if (QWidget* window = CaptureWindow()) {
            QList<QAction*> panes = window->findChild<QMenu*>("pmTargetObject")->actions();
            panes.last()->trigger();
            benchmark::RunSpecifiedBenchmarks();
        } else {
            std::fprintf(stderr, "the capture window did not open\n");
        }
        loader.UnloadAll();
    });
}
