// The add-in in the workbench on Qt's offscreen platform: from dlopen of libzelvane.so to its
// menu built on the first turn of the event loop; the block expert's commands on a marked block
// of 1 000 and 10 000 lines, from the action firing to the buffer changed; and the unit manager
// over 2 000 open units, from its command to the window shown, and each of its commands to the
// editor's tab row rewritten; and the module viewer over a project of 2 000 units with 1 000
// forms, from its command to the list shown, and its preview moved from one form to the next;
// and the inspector's form bar refilled after a rename with 300 forms open.
// Beside them, the same work done by GNU tools on the same lines (sed
// shifting every line, sort -f sorting them, grep -i filtering them), timed from here so that
// the figures come from the same run.
#include "bench/addin/BenchWorkbench.h"
#include "tests/workbench/TestFiles.h"
#include "workbench/Application.h"
#include "workbench/EditWindow.h"
#include "workbench/MainWindow.h"
#include "workbench/Packages.h"
#include "workbench/SourceEdit.h"
#include "workbench/designer/FormDesigners.h"
#include "workbench/designer/ObjectInspector.h"
#include "workbench/model/Model.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QToolButton>
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
TIDEModel* ideModel = nullptr;

std::string packageFile;

std::string Package() {
    return packageFile;
}

QMenu* ExpertsMenu() {
    return benchworkbench::ExpertsMenu(*mainForm);
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

// The unit manager over this many open units, named by random words.
constexpr int UnitCount = 2000;

std::string UnitName(int i) {
    static const char* const words[] = {"Data", "Main", "Report", "Utils", "Form", "Grid",
                                        "Print", "Setup", "Query", "Login"};
    return words[(i * 7919) % 10] + std::string(words[(i * 104729) % 9]) + std::to_string(i);
}

// Opens the units once, in the background, with the edit window hidden meanwhile.
void OpenUnits() {
    static testfiles::TTempDir dir;
    if (mainForm->EditWindow()->TabControl()->count() >= UnitCount) return;
    mainForm->EditWindow()->hide();
    for (int i = 0; i < UnitCount; ++i) {
        std::string name = UnitName(i);
        std::string file = dir.File(name + ".pas");
        testfiles::WriteFile(file, "unit " + name + ";\r\ninterface\r\nimplementation\r\nend.\r\n");
        ideModel->OpenModuleFile(file, TOpenMode::Background);
    }
    mainForm->EditWindow()->show();
    QCoreApplication::processEvents();
}

QWidget* UnitWindow() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QStringLiteral("UnitForm") && w->isVisible()) return w;
    return nullptr;
}

void CloseUnitWindow() {
    if (QWidget* w = UnitWindow()) w->close();
    QCoreApplication::processEvents();
}

void BM_UnitsOpenWindow(benchmark::State& state) {
    TAddin addin;
    OpenUnits();
    QAction* command = Command("Unit manager");
    for (auto _ : state) {
        command->trigger();
        while (!UnitWindow())
            QCoreApplication::processEvents();
        state.PauseTiming();
        if (UnitWindow()->findChild<QListWidget*>("UnitList")->count() < UnitCount)
            state.SkipWithError("the list is not the tab row");
        CloseUnitWindow();
        state.ResumeTiming();
    }
}

// A command of the open window, run over and over; `between` runs untimed before each.
template <class Run, class Prepare>
void RunUnitCommand(benchmark::State& state, Prepare between, Run run) {
    TAddin addin;
    OpenUnits();
    Command("Unit manager")->trigger();
    QCoreApplication::processEvents();
    QWidget* window = UnitWindow();
    for (auto _ : state) {
        state.PauseTiming();
        between(window);
        state.ResumeTiming();
        run(window);
    }
    CloseUnitWindow();
}

void BM_UnitsSort(benchmark::State& state) {
    RunUnitCommand(
        state, [](QWidget*) {},
        [](QWidget* w) { w->findChild<QAction*>("acSort")->trigger(); });
}

void BM_UnitsMove(benchmark::State& state) {
    bool right = true;
    RunUnitCommand(
        state,
        [](QWidget* w) {
            auto* list = w->findChild<QListWidget*>("UnitList");
            if (list->selectedItems().size() != 1) list->setCurrentRow(UnitCount / 2);
        },
        [&](QWidget* w) {
            w->findChild<QAction*>(right ? "acMoveDown" : "acMoveUp")->trigger();
            right = !right;
        });
}

// Enter in the filter box with one more or one less character than before.
void BM_UnitsFilterKeystroke(benchmark::State& state) {
    bool longer = true;
    RunUnitCommand(
        state,
        [&](QWidget* w) {
            w->findChild<QLineEdit*>()->setText(longer ? QStringLiteral("ta1") : QStringLiteral("ta"));
            longer = !longer;
        },
        [](QWidget* w) {
            QLineEdit* edit = w->findChild<QComboBox*>("FilterCombo")->lineEdit();
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
            QApplication::sendEvent(edit, &press);
        });
}

// A project of 2 000 units, every other one with a form, opened in place of the example.
constexpr int ViewerUnitCount = 2000;

testfiles::TTempDir& ViewerDir() {
    static testfiles::TTempDir dir;
    return dir;
}

void OpenViewerProject() {
    testfiles::TTempDir& dir = ViewerDir();
    static bool made = false;
    std::string dpr = dir.File("Big.dpr");
    if (!made) {
        std::string uses;
        for (int i = 0; i < ViewerUnitCount; ++i) {
            std::string unit = "Unit" + std::to_string(i);
            bool form = i % 2 == 0;
            std::string cls = "TForm" + std::to_string(i);
            uses += std::string(i ? ",\r\n  " : "  ") + unit + " in '" + unit + ".pas'" +
                    (form ? " {Form" + std::to_string(i) + "}" : "");
            testfiles::WriteFile(dir.File(unit + ".pas"),
                                 "unit " + unit + ";\r\ninterface\r\nuses Forms, StdCtrls;\r\n" +
                                     (form ? "type\r\n  " + cls + " = class(TForm)\r\n    Button1: TButton;\r\n  end;\r\n" : "") +
                                     "implementation\r\n" + (form ? "{$R *.dfm}\r\n" : "") + "end.\r\n");
            if (form)
                testfiles::WriteFile(dir.File(unit + ".dfm"),
                                     "object Form" + std::to_string(i) + ": " + cls +
                                         "\r\n  Left = 200\r\n  Top = 100\r\n  Width = 320\r\n  Height = 240\r\n"
                                         "  Caption = 'Form " + std::to_string(i) + "'\r\n"
                                         "  object Button1: TButton\r\n    Left = 16\r\n    Top = 16\r\n"
                                         "    Width = 75\r\n    Height = 25\r\n    Caption = 'OK'\r\n  end\r\nend\r\n");
        }
        testfiles::WriteFile(dpr, "program Big;\r\n\r\nuses\r\n  Forms,\r\n" + uses +
                                      ";\r\n\r\nbegin\r\nend.\r\n");
        made = true;
    }
    if (ideModel->FindOpenModule(dpr)) return;
    ideModel->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
    ideModel->CloseAll();
    mainForm->OpenProject(dpr);
    QCoreApplication::processEvents();
}

QWidget* Viewer() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QStringLiteral("ViewForm") && w->isVisible()) return w;
    return nullptr;
}

// Runs body inside the modal viewer that "View Forms..." opens, then closes it.
void InViewer(const std::function<void(QWidget*)>& body) {
    QTimer::singleShot(0, [body] {
        QWidget* viewer = Viewer();
        if (viewer) body(viewer);
        if ((viewer = Viewer())) viewer->close();
    });
    Command("View Forms...")->trigger();
}

void BM_ViewerOpen(benchmark::State& state) {
    TAddin addin;
    OpenViewerProject();
    for (auto _ : state) {
        auto t0 = std::chrono::steady_clock::now();
        int listed = 0;
        InViewer([&](QWidget* viewer) {
            auto t1 = std::chrono::steady_clock::now();
            state.SetIterationTime(std::chrono::duration<double>(t1 - t0).count());
            listed = viewer->findChild<QListWidget*>("ModuleList")->count();
        });
        if (listed != ViewerUnitCount / 2) state.SkipWithError("the list does not hold the forms");
    }
}

// Two forms open in the workbench; the preview goes from one to the other.
void BM_ViewerPreviewNextForm(benchmark::State& state) {
    TAddin addin;
    OpenViewerProject();
    for (const char* unit : {"Unit0.pas", "Unit2.pas"}) {
        auto module = ideModel->OpenModuleFile(ViewerDir().File(unit), TOpenMode::Background);
        if (TFormEditor* form = module ? module->FormEditor() : nullptr) form->Show();
    }
    QCoreApplication::processEvents();
    auto borrowed = [](const char* name) {
        for (designer::TDesignerWindow* w : mainForm->Designers()->Windows())
            if (w->Root() && w->Root()->Name == name) return !w->isWindow();
        return false;
    };
    InViewer([&](QWidget* viewer) {
        auto* list = viewer->findChild<QListWidget*>("ModuleList");
        viewer->findChild<QToolButton*>("btnMore")->click();
        // "Form0" sorts first, "Form2" after "Form1", "Form10" ... "Form1998".
        int rows[2] = {-1, -1};
        for (int i = 0; i < list->count(); ++i) {
            if (list->item(i)->text() == QStringLiteral("Form0")) rows[0] = i;
            if (list->item(i)->text() == QStringLiteral("Form2")) rows[1] = i;
        }
        const char* names[2] = {"Form0", "Form2"};
        int next = 0;
        for (auto _ : state) {
            auto t0 = std::chrono::steady_clock::now();
            list->setCurrentRow(rows[next]);
            while (!borrowed(names[next]))
                QCoreApplication::processEvents();
            state.SetIterationTime(
                std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
            next = 1 - next;
        }
    });
}

// The inspector's form bar with 300 forms open, each on show in the editor: a form renamed, and
// the bar refilled with the new name, from the rename to the list read back.
void BM_InspectorRenameRefill(benchmark::State& state) {
    TAddin addin;
    OpenViewerProject();
    constexpr int Forms = 300;
    for (int i = 0; i < Forms; ++i)
        ideModel->OpenModuleFile(ViewerDir().File("Unit" + std::to_string(2 * i) + ".pas"),
                                 TOpenMode::Background);
    QCoreApplication::processEvents();
    QComboBox* combo = mainForm->Inspector()->findChild<QComboBox*>("InspectorFormCombo");
    auto waitFor = [&](const QString& name) {
        while (combo->findText(name) < 0)
            QCoreApplication::processEvents();
    };
    waitFor(QStringLiteral("Form0"));
    if (combo->count() < Forms) state.SkipWithError("the bar does not list the open forms");
    TFormEditor* form = ideModel->FindOpenModule(ViewerDir().File("Unit0.pas"))->FormEditor();
    bool renamed = false;
    for (auto _ : state) {
        renamed = !renamed;
        QString name = renamed ? QStringLiteral("Renamed0") : QStringLiteral("Form0");
        form->GetRootComponent()->SetPropByName("Name", name.toStdString());
        waitFor(name);
    }
    ideModel->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
    ideModel->CloseAll();
    QCoreApplication::processEvents();
}

// The same lines through a GNU tool, as one process run from here: sed shifting each line by a
// column, sort -f ordering them, grep -i keeping those that hold a text.
void WriteLines(const std::string& file, int count) {
    if (count == UnitCount) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += UnitName(i) + "\n";
        testfiles::WriteFile(file, text);
    } else {
        testfiles::WriteFile(file, Lines(count));
    }
}

void RunTool(benchmark::State& state, const char* command) {
    int lines = int(state.range(0));
    static testfiles::TTempDir dir;
    std::string file = dir.File("lines.txt");
    WriteLines(file, lines);
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
void BM_GnuGrepI(benchmark::State& state) {
    RunTool(state, "grep -i ta1");
}

BENCHMARK(BM_LoadToMenu)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MoveRight)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MoveLeft)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sort)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
// The tools run in processes of their own: their time is the wall clock's.
BENCHMARK(BM_GnuSedShift)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_GnuSortF)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_UnitsOpenWindow)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UnitsFilterKeystroke)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UnitsSort)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UnitsMove)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GnuSortF)->Arg(UnitCount)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_GnuGrepI)->Arg(UnitCount)->Unit(benchmark::kMillisecond)->UseRealTime();
// The viewer runs its own loop; the time is taken inside it.
BENCHMARK(BM_ViewerOpen)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_ViewerPreviewNextForm)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_InspectorRenameRefill)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    return benchworkbench::Run(argc, argv,
                               [](TMainForm& form, TIDEModel& model, const std::string& package) {
                                   mainForm = &form;
                                   ideModel = &model;
                                   packageFile = package;
                                   benchmark::RunSpecifiedBenchmarks();
                               });
}
