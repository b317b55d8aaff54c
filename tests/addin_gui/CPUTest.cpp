// The CPU capture as a user meets it: the workbench's CPU window open over a snapshot, the
// capture window opened on its hot key, a pane and a line count chosen from its menus and its
// dialog, and the memo read back after "Get data". The expected texts are the capture formats
// written out by hand for the example snapshot (examples/Hello.snapshot) and for a small one.
#include "tests/addin_gui/AddinFixture.h"
#include "workbench/cpu/CPUView.h"

using namespace addintest;
using workbench::cpu::TCPUWindow;

namespace {

using TLines = std::vector<std::string>;

enum TView { Disasm, Regs, Flags, Dump, Stack, All };

class CPUTest : public AddinFixture {
protected:
    void SetUp() override {
        AddinFixture::SetUp();
        StartAddin();
    }

    // The workbench's CPU window over the example's snapshot, or over one of the text given.
    TCPUWindow* OpenCPU(const std::string& snapshot = {}) {
        std::string file = copy.File("Hello.snapshot");
        if (!snapshot.empty()) testfiles::WriteFile(file = copy.File("Test.snapshot"), snapshot);
        main->SetSnapshotFile(file);
        EXPECT_TRUE(main->ShowCPUWindow());
        return CPU();
    }
    TCPUWindow* CPU() const { return main->findChild<TCPUWindow*>("DisassemblyView"); }

    // Ctrl+W pressed in a window once it is active.
    void PressHotKey(QWidget* in) {
        in->activateWindow();
        ASSERT_TRUE(WaitFor([in] { return in->isActiveWindow(); }));
        Application->UpdateActions();
        QWidget* focus = QApplication::focusWidget();
        QTest::keyClick(focus ? focus : in, Qt::Key_W, Qt::ControlModifier);
    }
    static std::vector<QWidget*> CaptureWindows() {
        std::vector<QWidget*> r;
        for (QWidget* w : QApplication::topLevelWidgets())
            if (w->objectName() == QStringLiteral("CPUForm") && w->isVisible()) r.push_back(w);
        return r;
    }
    QWidget* ShowCapture() {
        PressHotKey(CPU()->Disassembly());
        EXPECT_TRUE(WaitFor([] { return CaptureWindows().size() == 1; }));
        return CaptureWindows().empty() ? nullptr : CaptureWindows().front();
    }
    template <class T> static T* Child(const char* name) {
        return CaptureWindows().front()->findChild<T*>(name);
    }

    // A menu's items without its separators.
    static QList<QAction*> Items(const char* menu) {
        QList<QAction*> r;
        for (QAction* a : Child<QMenu>(menu)->actions())
            if (!a->isSeparator()) r << a;
        return r;
    }
    // The "Custom..." dialog with a value typed, closed with OK or Cancel.
    static void CustomCount(int value, const char* button = "btnOk") {
        WhenModal([value, button](QWidget* dialog) {
            dialog->findChild<QSpinBox*>("SpinEdit")->setValue(value);
            dialog->findChild<QPushButton*>(button)->click();
        });
        Child<QToolButton>("tbSetStrCount")->click();
    }
    // "Get data", and the memo's lines in the host's code page.
    static TLines GetData() {
        Child<QToolButton>("tbGetData")->click();
        TLines lines;
        for (const QString& l : Child<QPlainTextEdit>("Memo1")->toPlainText().split('\n'))
            lines.push_back(ToolsAPI::ToBytes(l));
        return lines;
    }
    // A capture of the pane and count chosen in the menus, from a selection the test sets.
    TLines CaptureAt(TView view, int count, const char* selection = nullptr, quint32 at = 0) {
        Items("pmTargetObject")[view]->trigger();
        CustomCount(count);
        const char* pane = view == Disasm ? "DisassemblerView1"
                           : view == Dump ? "DumpView"
                                          : "StackView";
        if (selection) CPU()->findChild<QObject*>(pane)->setProperty(selection, at);
        return GetData();
    }
};

// clang-format off
const TLines HelloRegisters = {
    "EAX 00000002", "EBX 7FFDF000", "ECX 0012FFB0", "EDX 00000005", "ESI 00000000", "EDI 00000000",
    "EBP 0012FFC0", "ESP 0012FFAC", "EIP 00408A72", "EFL 00000206", "CS  001B", "DS  0023",
    "SS  0023", "ES  0023", "FS  003B", "GS  0000"};
const TLines HelloFlags = {
    "CF 0 [Carry Flag]", "PF 1 [Parity Flag]", "AF 0 [Auxiliary Carry Flag]", "ZF 0 [Zero Flag]",
    "SF 0 [Sign Flag]", "TF 0 [Trap Flag]", "IF 1 [Interrupt Enable Flag]", "DF 0 [Direction Flag]",
    "OF 0 [Overflow Flag]", "IO 0 [I/O Privilege Level]", "NF 0 [Nested Task]",
    "RF 0 [Resume Flag]", "VM 0 [Virtual 8086 Mode]", "AC 0 [Alignment Check]",
    "VF 0 [Virtual Interrupt Flag]", "VP 0 [Virtual Interrupt Pending]", "ID 0 [ID Flag]"};
// clang-format on

TLines Join(std::initializer_list<TLines> parts) {
    TLines r;
    for (const TLines& p : parts)
        r.insert(r.end(), p.begin(), p.end());
    return r;
}

TEST_F(CPUTest, TheHotKeyOpensOneCaptureWindowWhileTheCPUWindowIsShown) {
    QAction* item = MenuCommand(QStringLiteral("View CPU data"));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->shortcut(), QKeySequence(QStringLiteral("Ctrl+W")));
    EXPECT_FALSE(item->icon().isNull());
    Application->UpdateActions();
    EXPECT_FALSE(item->isEnabled());

    OpenCPU();
    QWidget* window = ShowCapture();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(item->isEnabled());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("View CPU"));
    EXPECT_TRUE(window->windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_EQ(window->size(), QSize(437, 315));
    EXPECT_EQ(window->minimumSize(), QSize(437, 175));
    EXPECT_EQ(Child<QToolButton>("tbGetData")->toolTip(), "Get data from CPU window");
    // Pressed in the capture window itself, the key brings up the same window.
    PressHotKey(window);
    RunLoop(50);
    EXPECT_EQ(CaptureWindows(), std::vector<QWidget*>{window});
    // Esc closes it; opened again, it reads ten instructions of the code by default.
    QTest::keyClick(Child<QPlainTextEdit>("Memo1"), Qt::Key_Escape);
    ASSERT_TRUE(WaitFor([] { return CaptureWindows().empty(); }));
    ShowCapture();
    TLines lines = GetData();
    EXPECT_EQ(lines.size(), 14u); // four of them under a label or a source line
    EXPECT_EQ(lines.back(), "00408A8D B802000000       mov eax,$00000002");
}

TEST_F(CPUTest, EachPaneIsCapturedFromItsSelectionInItsFormat) {
    TCPUWindow* cpu = OpenCPU();
    ShowCapture();
    const struct {
        const char* Name;
        TView View;
        int Count;
        const char* Selection;
        quint32 At;
        TLines Expected;
    } cases[] = {
        // clang-format off
        {"code, first instruction", Disasm, 3, "SelectedAddress", 0x408A70,
         {"Hello.Sum:", "Hello.dpr.6: Result := A + B;", "00408A70 03D0             add edx,eax",
          "00408A72 8BC2             mov eax,edx", "Hello.dpr.7: end;", "00408A74 C3               ret"}},
        {"code, from inside an instruction", Disasm, 3, "SelectedAddress", 0x408AAD,
         {"00408AAB 8B15C4BD4000     mov edx,[$0040bdc4]", "00408AB1 E8D2A1FFFF       call @Write0Long",
          "00408AB6 E879A2FFFF       call @WriteLn"}},
        {"code, on past its end", Disasm, 4, "SelectedAddress", 0x408ABB,
         {"00408ABB E8589CFFFF       call @_IOTest", "Hello.dpr.14: end.",
          "00408AC0 E877AFFFFF       call @Halt0", "00408AC5 00               db $00",
          "00408AC6 00               db $00"}},
        {"code, unreadable", Disasm, 2, "SelectedAddress", 0x500000,
         {"00500000 ??               ???", "00500001 ??               ???"}},
        {"dump, off the row start", Dump, 2, "SelectedOffset", 0x408ADB,
         {"00408ADB  FF 0E 00 00 00 48 65 6C  \xFF....Hel", "00408AE3  6C 6F 2C 20 77 6F 72 6C  lo, worl"}},
        {"dump, on past its end", Dump, 2, "SelectedOffset", 0x408B28,
         {"00408B28  00 00 00 00 00 00 00 00  ........", "00408B30  ?? ?? ?? ?? ?? ?? ?? ??  ........"}},
        {"stack, lowest words and below", Stack, 3, "SelectedOffset", 0x12FF90,
         {"0012FF90  0012FFB0  ..\xFF\xB0", "0012FF8C  00000000  ....", "0012FF88  ????????  ...."}},
        {"stack, highest words", Stack, 2, "SelectedOffset", 0x12FFFC,
         {"0012FFFC  00000000  ....", "0012FFF8  00408A78  .@\x8Ax"}},
        // clang-format on
    };
    for (const auto& c : cases)
        EXPECT_EQ(CaptureAt(c.View, c.Count, c.Selection, c.At), c.Expected) << c.Name;

    // All panes, each from where it stands, under its title and followed by an empty line; and
    // afterwards each pane has its selection and its view as before.
    struct TPaneState {
        workbench::cpu::TCPUPane* Pane;
        const char* Selection;
        quint32 At;
        int Top = 0;
    } panes[] = {{cpu->Disassembly(), "SelectedAddress", 0x408A72},
                 {cpu->Dump(), "SelectedOffset", 0x408AD8},
                 {cpu->Stack(), "SelectedOffset", 0x12FFAC}};
    for (TPaneState& p : panes) {
        p.Pane->setProperty(p.Selection, p.At);
        p.Pane->repaint();
        p.Top = p.Pane->TopRow();
    }
    EXPECT_EQ(CaptureAt(All, 1),
              Join({{"[Assembler code]", "00408A72 8BC2             mov eax,edx", "",
                     "[Processor\x92s registers]"},
                    HelloRegisters,
                    {"", "[Processor\x92s flags]"},
                    HelloFlags,
                    {"", "[Memory dump]", "00408AD8  FF FF FF FF 0E 00 00 00  \xFF\xFF\xFF\xFF....",
                     "", "[Program stack]", "0012FFAC  00408A97  .@\x8A\x97", ""}}));
    for (const TPaneState& p : panes) {
        p.Pane->repaint();
        EXPECT_EQ(p.Pane->property(p.Selection).toUInt(), p.At) << p.Selection;
        EXPECT_EQ(p.Pane->TopRow(), p.Top) << p.Selection;
        EXPECT_TRUE(p.Pane->updatesEnabled());
    }
    EXPECT_TRUE(errors.empty()) << errors.front();
}

TEST_F(CPUTest, TheCountComesFromTheMenuTheDialogAndTheSettings) {
    OpenCPU();
    ShowCapture();
    auto checked = [] {
        for (QAction* a : Items("pmStrCount"))
            if (a->isChecked()) return a->text().toStdString();
        return std::string("none");
    };
    Items("pmTargetObject")[Dump]->trigger();
    EXPECT_EQ(checked(), "10 strings");
    Items("pmStrCount")[1]->trigger();
    EXPECT_EQ(checked(), "20 strings");
    EXPECT_EQ(GetData().size(), 20u);
    const struct {
        int Typed;
        const char* Button;
        size_t Lines;
        const char* Checked;
    } steps[] = {{7, "btnOk", 7, "Custom..."},        {0, "btnOk", 10, "10 strings"},
                 {-3, "btnOk", 10, "10 strings"},     {30, "btnOk", 30, "30 strings"},
                 {12, "btnCancel", 30, "30 strings"}, {12, "btnOk", 12, "Custom..."}};
    for (const auto& s : steps) {
        CustomCount(s.Typed, s.Button);
        EXPECT_EQ(checked(), s.Checked) << s.Typed;
        EXPECT_EQ(GetData().size(), s.Lines) << s.Typed;
    }

    // Stored with the settings; a count of 0 there reads no lines of the walking panes.
    StopAddin();
    EXPECT_NE(SettingsText().find("ReadLineCount = 12"), std::string::npos);
    SetStoredValues({{"ReadLineCount", "12", "0"}, {"ViewObject", "vtDumpView", "vtAllViews"}});
    ShowCapture();
    EXPECT_EQ(checked(), "none"); // the first item of the count 0 is the separator
    EXPECT_TRUE(Items("pmTargetObject")[All]->isChecked());
    EXPECT_EQ(GetData(), Join({{"[Assembler code]", "", "[Processor\x92s registers]"},
                               HelloRegisters,
                               {"", "[Processor\x92s flags]"},
                               HelloFlags,
                               {"", "[Memory dump]", "", "[Program stack]", ""}}));
}

TEST_F(CPUTest, LongInstructionsOddRegistersAndAStackAtAddressZero) {
    OpenCPU("[code]\n00401000 55 push ebp\n"
            "00401001 C705C4BD400078563412 mov dword ptr [$0040bdc4],$12345678\n"
            "0040100B C784058000000078563412 mov dword ptr [ebp+eax+$80],$12345678\n"
            "00401016 C3 ret\n"
            "[registers]\nEAX = FFFFFFFF\nESP = 00000004\nEFL = 003FFFFF\nGS = FFFF\n"
            "[memory]\n00000000 11 22 33 44 55 66 77 88\n"
            "[views]\nDisassemblerView = 00401000\n");
    ShowCapture();
    // Ten bytes of one instruction are stepped over, eleven end the read.
    EXPECT_EQ(CaptureAt(Disasm, 5),
              TLines({"00401000 55               push ebp",
                      "00401001 C705C4BD400078563412 mov dword ptr [$0040bdc4],$12345678",
                      "0040100B C784058000000078563412 mov dword ptr [ebp+eax+$80],$12345678"}));
    EXPECT_EQ(CPU()->Disassembly()->SelectedAddress(), 0x401000u);
    TLines regs = CaptureAt(Regs, 1), flags = CaptureAt(Flags, 1);
    ASSERT_EQ(regs.size(), 16u);
    ASSERT_EQ(flags.size(), 17u);
    EXPECT_EQ(TLines({regs[0], regs[9], regs[15], flags[9], flags[16]}),
              TLines({"EAX FFFFFFFF", "EFL 003FFFFF", "GS  FFFF", "IO 3 [I/O Privilege Level]",
                      "ID 1 [ID Flag]"}));
    // The walk down the stack goes on below address 0, at the top of the address space.
    EXPECT_EQ(CaptureAt(Stack, 3),
              TLines({"00000004  88776655  \x88wfU", "00000000  44332211  D3\".",
                      "FFFFFFFC  ????????  ...."}));
    EXPECT_TRUE(errors.empty()) << errors.front();
}

// Without the CPU window nothing is read; in a window of its name, a missing pane gives nothing
// and a pane that lacks a property is reported once its selection is back.
TEST_F(CPUTest, WithoutTheCPUWindowOrItsPanesTheCaptureIsEmpty) {
    OpenCPU();
    ShowCapture();
    ASSERT_GT(GetData().size(), 1u);
    CPU()->hide();
    EXPECT_EQ(CaptureAt(All, 10), TLines{""});
    QWidget fake;
    fake.setObjectName("DisassemblyView");
    auto* dump = new QWidget(&fake);
    dump->setObjectName("DumpView");
    dump->setProperty("SelectedOffset", QVariant::fromValue(quint32(0x100)));
    fake.show();
    EXPECT_EQ(CaptureAt(Stack, 10), TLines{""});
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(beeps, 0);
    EXPECT_EQ(CaptureAt(Dump, 10), TLines{""});
    EXPECT_EQ(errors, std::vector<std::string>{"Property SelectedData does not exist."});
    EXPECT_NE(Log().find("Property SelectedData does not exist"), std::string::npos);
    EXPECT_EQ(dump->property("SelectedOffset").toUInt(), 0x100u);
    EXPECT_TRUE(dump->updatesEnabled());
}

} // namespace
