// The CPU window over the example snapshot: the snapshot format and its errors, every pane's
// properties read by name while the selections move (as a capture reads them).
#include "workbench/cpu/CPUView.h"
#include "tests/workbench/TestFiles.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <memory>

using namespace workbench::cpu;

namespace {

std::string SnapshotFile() {
    return (testfiles::ExamplesDir() / "Hello.snapshot").string();
}

// The five reads of a capture: a property as an integer, written as one, read as a string.
qint64 Ord(QObject* o, const char* name) {
    QVariant v = o->property(name);
    EXPECT_TRUE(v.isValid()) << name;
    return v.toLongLong();
}
void SetOrd(QObject* o, const char* name, qint64 value) {
    EXPECT_TRUE(o->setProperty(name, QVariant::fromValue(quint32(value)))) << name;
}
std::string Str(QObject* o, const char* name) {
    QVariant v = o->property(name);
    EXPECT_TRUE(v.isValid()) << name;
    return v.toString().toStdString();
}
QObject* Obj(QObject* o, const char* name) {
    return o->property(name).value<QObject*>();
}

class CPUViewTest : public ::testing::Test {
protected:
    void SetUp() override { window.reset(TCPUWindow::Load(SnapshotFile())); }
    QObject* Pane(const char* name) { return window->findChild<QObject*>(name); }
    std::unique_ptr<TCPUWindow> window;
};

// The snapshot with one line replaced, for the errors.
std::string Broken(const std::string& section, const std::string& line) {
    return "[registers]\nEAX = 1\n[code]\n00401000 55 push ebp\n00401001 8BEC mov ebp,esp\n[" +
           section + "]\n" + line + "\n";
}

} // namespace

// ---------------------------------------------------------------------------------------------
// The snapshot

TEST(Snapshot, DefaultsFollowTheRegistersAndMemoryJoinsAcrossLines) {
    TMachineSnapshot s = TMachineSnapshot::Parse("[registers]\nEIP = 401001\nESP = 12FF00\n"
                                                 "[code]\n00401000 55 push ebp\n"
                                                 "00401001 8BEC mov ebp,esp\n"
                                                 "[memory]\n00403000 01 02\n00403002 03\n"
                                                 "0012FF00 AA BB CC DD\n");
    EXPECT_EQ(s.DisassemblyStart(), 0x401001u);
    EXPECT_EQ(s.StackStart(), 0x12FF00u);
    EXPECT_EQ(s.DumpStart(), 0x12FF00u); // the first memory that is not code
    EXPECT_EQ(s.RangeOf(0x403001), std::make_optional(std::make_pair(0x403000u, 0x403003u)));
    EXPECT_EQ(s.DWord(0x12FF00), 0xDDCCBBAAu);
    EXPECT_FALSE(s.DWord(0x12FF01).has_value());
    EXPECT_EQ(s.Register("EBX"), 0u);
}

TEST(Snapshot, DamagedSnapshotsRaiseWithTheLine) {
    struct Case {
        std::string text, where;
    } cases[] = {
        {"EAX = 1\n", "(1)"},
        {Broken("stack", "1"), "(6)"},
        {Broken("registers", "EXX = 1"), "(7)"},
        {Broken("registers", "EAX = 2"), "(7)"},
        {Broken("registers", "CS = 10000"), "(7)"},
        {Broken("registers", "EBX = G1"), "(7)"},
        {Broken("registers", "EBX = 123456789"), "(7)"},
        {Broken("code", "00401002 8B mov"), ""},
        {Broken("code", "00401000 90 nop"), "(7)"},
        {Broken("code", "00401010 8BE mov"), "(7)"},
        {Broken("code", "00401010 8BEC"), "(7)"},
        {Broken("code", "00401010 000000000000000000000000000000000000 db"), "(7)"},
        {Broken("code", "label 00401001"), "(7)"},
        {Broken("code", "label 00401002 Middle:"), "no instruction starts at 00401002"},
        {Broken("memory", "00401000 90"), "given twice"},
        {Broken("memory", "00403000"), "(7)"},
        {Broken("memory", "00403000 1 2"), "(7)"},
        {Broken("memory", "FFFFFFFF 00"), "4 GB"},
        {Broken("views", "DumpView 1"), "(7)"},
        {Broken("views", "Elsewhere = 1"), "(7)"},
        {"[code\n", "(1)"},
    };
    for (const Case& c : cases) {
        try {
            TMachineSnapshot::Parse(c.text, "bad.snapshot");
            ADD_FAILURE() << "accepted:\n" << c.text;
        } catch (const ESnapshotError& e) {
            EXPECT_NE(e.Message().find("bad.snapshot"), std::string::npos) << e.Message();
            EXPECT_NE(e.Message().find(c.where), std::string::npos) << e.Message();
        }
    }
    EXPECT_THROW(TMachineSnapshot::Load("/nonexistent/x.snapshot"), rtl::EFOpenError);
}

// ---------------------------------------------------------------------------------------------
// The panes by name

TEST_F(CPUViewTest, TheDisassemblyPaneByNameShowsTheInstructionOfAnyByteInside) {
    EXPECT_EQ(window->objectName(), "DisassemblyView");
    for (const char* name : {"RegisterView", "FlagsView", "DumpView", "StackView"})
        EXPECT_NE(Pane(name), nullptr) << name;
    QObject* pane = Pane("DisassemblerView1");
    ASSERT_NE(pane, nullptr);
    EXPECT_EQ(Ord(pane, "SelectedAddress"), 0x408A72);
    EXPECT_EQ(Str(pane, "SelectedDisassembly"), "00408A72 8BC2             mov eax,edx");
    EXPECT_EQ(Str(pane, "SelectedLabel"), "");
    EXPECT_EQ(Str(pane, "SelectedSource"), "");
    // The second byte of "add edx,eax" selects that instruction with its label and source.
    SetOrd(pane, "SelectedAddress", 0x408A71);
    EXPECT_EQ(Ord(pane, "SelectedAddress"), 0x408A70);
    EXPECT_EQ(Str(pane, "SelectedDisassembly"), "00408A70 03D0             add edx,eax");
    EXPECT_EQ(Str(pane, "SelectedLabel"), "Hello.Sum:");
    EXPECT_EQ(Str(pane, "SelectedSource"), "Hello.dpr.6: Result := A + B;");
    for (quint32 a = 0x408AAB; a < 0x408AB1; ++a) {
        SetOrd(pane, "SelectedAddress", a);
        EXPECT_EQ(Str(pane, "SelectedDisassembly"),
                  "00408AAB 8B15C4BD4000     mov edx,[$0040bdc4]");
    }
    // Past the code: known memory as a byte of data, unknown memory as question marks.
    SetOrd(pane, "SelectedAddress", 0x408AE0);
    EXPECT_EQ(Str(pane, "SelectedDisassembly"), "00408AE0 48               db $48");
    SetOrd(pane, "SelectedAddress", 0x500000);
    EXPECT_EQ(Str(pane, "SelectedDisassembly"), "00500000 ??               ???");
    EXPECT_EQ(Ord(pane, "SelectedAddress"), 0x500000);
}

TEST_F(CPUViewTest, RegistersAndFlagsAreObjectsWithAPropertyForEachRow) {
    QObject* regs = Obj(Pane("RegisterView"), "CurrentRegs");
    ASSERT_NE(regs, nullptr);
    const std::pair<const char*, qint64> expected[] = {
        {"EAX", 0x2},      {"EBX", 0x7FFDF000}, {"ECX", 0x12FFB0}, {"EDX", 0x5},
        {"ESI", 0},        {"EDI", 0},          {"EBP", 0x12FFC0}, {"ESP", 0x12FFAC},
        {"EIP", 0x408A72}, {"EFL", 0x206},      {"CS", 0x1B},      {"DS", 0x23},
        {"SS", 0x23},      {"ES", 0x23},        {"FS", 0x3B},      {"GS", 0}};
    for (auto [name, value] : expected)
        EXPECT_EQ(Ord(regs, name), value) << name;
    QObject* flags = Obj(Pane("FlagsView"), "CurrentFlags");
    ASSERT_NE(flags, nullptr);
    // EFL 206: parity and interrupts enabled, every other flag clear.
    for (const QString& name :
         QStringLiteral("Carry Parity AuxCarry Zero Sign Trap Interrupt Direction Overflow IOPL "
                        "NestedTask Resume V86Mode Alignment VirtualInterruptFlag "
                        "VirtualInterruptPending ID")
             .split(' '))
        EXPECT_EQ(Ord(flags, name.toLatin1()), name == "Parity" || name == "Interrupt")
            << name.toStdString();
    // The registers are read, not written.
    EXPECT_FALSE(regs->setProperty("EAX", 7));
    EXPECT_EQ(Ord(regs, "EAX"), 2);
}

TEST_F(CPUViewTest, TheDumpGivesTheByteAtTheOffsetAsTwoDigits) {
    QObject* dump = Pane("DumpView");
    qint64 start = Ord(dump, "SelectedOffset");
    EXPECT_EQ(start, 0x408AD8);
    EXPECT_EQ(Str(dump, "SelectedData"), "FF");
    SetOrd(dump, "SelectedOffset", 0x408A7B);
    EXPECT_EQ(Str(dump, "SelectedData"), "83"); // code is memory too
    SetOrd(dump, "SelectedOffset", 0x600000);
    EXPECT_EQ(Str(dump, "SelectedData"), "??");
    SetOrd(dump, "SelectedOffset", start);
    EXPECT_EQ(Ord(dump, "SelectedOffset"), start);
}

// ---------------------------------------------------------------------------------------------
// Painting

TEST_F(CPUViewTest, APaneFollowsItsSelectionWhenItPaints) {
    window->show();
    QApplication::processEvents();
    auto* pane = window->Disassembly();
    pane->repaint();
    int top = pane->TopRow();
    int paints = pane->PaintCount();
    ASSERT_GT(paints, 0);
    ASSERT_LT(pane->VisibleRows(), pane->RowCount()) << "the pane must be shorter than the code";
    pane->setProperty("SelectedAddress", 0x408AC0u);
    pane->repaint();
    EXPECT_GT(pane->TopRow(), top);
    EXPECT_GE(pane->SelectedRow(), pane->TopRow());
    EXPECT_LT(pane->SelectedRow(), pane->TopRow() + pane->VisibleRows());
}
