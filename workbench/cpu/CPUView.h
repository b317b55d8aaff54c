// The CPU window: the form "DisassemblyView" with its five panes over a machine-state snapshot.
//
// Each pane is a widget found by its name, and tells what it shows through Qt properties of the
// names the CPU window's panes publish:
//
//   "DisassemblerView1"  SelectedAddress (read and written), SelectedLabel, SelectedSource,
//                        SelectedDisassembly. The selection is an instruction: an address inside
//                        one selects it whole, and reads back as its first byte.
//   "RegisterView"       CurrentRegs: an object with one property per register (EAX ... GS).
//   "FlagsView"          CurrentFlags: an object with one property per flag (Carry ... ID).
//   "DumpView"           SelectedOffset (read and written), SelectedData: the byte there as two
//                        hexadecimal digits.
//   "StackView"          SelectedOffset (read and written), SelectedData: the double word there
//                        as eight hexadecimal digits.
//
// Memory that the snapshot does not hold reads as "??" (and "????????" on the stack). A pane
// follows its selection with its view when it paints, so a pane whose painting is stopped
// (setUpdatesEnabled(false)) keeps its view while its selection moves, and shows no move at all
// when the selection is back where it was before painting resumes.
#pragma once

// The meta-object compiler needs none of the runtime, whose C++20 headers it cannot read.
#ifndef Q_MOC_RUN
#include "workbench/cpu/Snapshot.h"
#endif

#include <QWidget>

#include <memory>

namespace workbench::cpu {

// The registers of the snapshot as properties.
class TCPURegisters : public QObject {
    Q_OBJECT
    Q_PROPERTY(quint32 EAX READ EAX CONSTANT)
    Q_PROPERTY(quint32 EBX READ EBX CONSTANT)
    Q_PROPERTY(quint32 ECX READ ECX CONSTANT)
    Q_PROPERTY(quint32 EDX READ EDX CONSTANT)
    Q_PROPERTY(quint32 ESI READ ESI CONSTANT)
    Q_PROPERTY(quint32 EDI READ EDI CONSTANT)
    Q_PROPERTY(quint32 EBP READ EBP CONSTANT)
    Q_PROPERTY(quint32 ESP READ ESP CONSTANT)
    Q_PROPERTY(quint32 EIP READ EIP CONSTANT)
    Q_PROPERTY(quint32 EFL READ EFL CONSTANT)
    Q_PROPERTY(quint32 CS READ CS CONSTANT)
    Q_PROPERTY(quint32 DS READ DS CONSTANT)
    Q_PROPERTY(quint32 SS READ SS CONSTANT)
    Q_PROPERTY(quint32 ES READ ES CONSTANT)
    Q_PROPERTY(quint32 FS READ FS CONSTANT)
    Q_PROPERTY(quint32 GS READ GS CONSTANT)
public:
    TCPURegisters(const TMachineSnapshot& s, QObject* parent);
    quint32 EAX() const { return r_[0]; }
    quint32 EBX() const { return r_[1]; }
    quint32 ECX() const { return r_[2]; }
    quint32 EDX() const { return r_[3]; }
    quint32 ESI() const { return r_[4]; }
    quint32 EDI() const { return r_[5]; }
    quint32 EBP() const { return r_[6]; }
    quint32 ESP() const { return r_[7]; }
    quint32 EIP() const { return r_[8]; }
    quint32 EFL() const { return r_[9]; }
    quint32 CS() const { return r_[10]; }
    quint32 DS() const { return r_[11]; }
    quint32 SS() const { return r_[12]; }
    quint32 ES() const { return r_[13]; }
    quint32 FS() const { return r_[14]; }
    quint32 GS() const { return r_[15]; }

private:
    quint32 r_[16];
};

// The flags of EFL as properties; IOPL is the two-bit privilege level, the others 0 or 1.
class TCPUFlags : public QObject {
    Q_OBJECT
    Q_PROPERTY(int Carry READ Carry CONSTANT)
    Q_PROPERTY(int Parity READ Parity CONSTANT)
    Q_PROPERTY(int AuxCarry READ AuxCarry CONSTANT)
    Q_PROPERTY(int Zero READ Zero CONSTANT)
    Q_PROPERTY(int Sign READ Sign CONSTANT)
    Q_PROPERTY(int Trap READ Trap CONSTANT)
    Q_PROPERTY(int Interrupt READ Interrupt CONSTANT)
    Q_PROPERTY(int Direction READ Direction CONSTANT)
    Q_PROPERTY(int Overflow READ Overflow CONSTANT)
    Q_PROPERTY(int IOPL READ IOPL CONSTANT)
    Q_PROPERTY(int NestedTask READ NestedTask CONSTANT)
    Q_PROPERTY(int Resume READ Resume CONSTANT)
    Q_PROPERTY(int V86Mode READ V86Mode CONSTANT)
    Q_PROPERTY(int Alignment READ Alignment CONSTANT)
    Q_PROPERTY(int VirtualInterruptFlag READ VirtualInterruptFlag CONSTANT)
    Q_PROPERTY(int VirtualInterruptPending READ VirtualInterruptPending CONSTANT)
    Q_PROPERTY(int ID READ ID CONSTANT)
public:
    TCPUFlags(const TMachineSnapshot& s, QObject* parent);
    int Carry() const { return f_[0]; }
    int Parity() const { return f_[1]; }
    int AuxCarry() const { return f_[2]; }
    int Zero() const { return f_[3]; }
    int Sign() const { return f_[4]; }
    int Trap() const { return f_[5]; }
    int Interrupt() const { return f_[6]; }
    int Direction() const { return f_[7]; }
    int Overflow() const { return f_[8]; }
    int IOPL() const { return f_[9]; }
    int NestedTask() const { return f_[10]; }
    int Resume() const { return f_[11]; }
    int V86Mode() const { return f_[12]; }
    int Alignment() const { return f_[13]; }
    int VirtualInterruptFlag() const { return f_[14]; }
    int VirtualInterruptPending() const { return f_[15]; }
    int ID() const { return f_[16]; }

private:
    int f_[17];
};

// The common part of the panes: rows of fixed-pitch text, a view that starts at a top row, and
// a selected row that the view follows when it paints.
class TCPUPane : public QWidget {
    Q_OBJECT
public:
    TCPUPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent);
    int TopRow() const { return top_; }
    int PaintCount() const { return paintCount_; }
    int VisibleRows() const;
    virtual int RowCount() const = 0;
    // The row of the selection, or -1 when it is on no row.
    virtual int SelectedRow() const = 0;

protected:
    virtual void PaintRow(QPainter& p, int row, const QRect& rect, bool selected) = 0;
    // A click or a key chose this row.
    virtual void SelectRow(int row) = 0;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    int RowHeight() const;
    void Selected(); // the selection moved: paint again, when painting is on

    std::shared_ptr<const TMachineSnapshot> snapshot_;
    int top_ = 0;
    int paintCount_ = 0;
    int lastSelectedRow_ = -2;
};

class TDisassemblyPane : public TCPUPane {
    Q_OBJECT
    Q_PROPERTY(quint32 SelectedAddress READ SelectedAddress WRITE SetSelectedAddress)
    Q_PROPERTY(QString SelectedLabel READ SelectedLabel)
    Q_PROPERTY(QString SelectedSource READ SelectedSource)
    Q_PROPERTY(QString SelectedDisassembly READ SelectedDisassembly)
public:
    TDisassemblyPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent);
    quint32 SelectedAddress() const;
    void SetSelectedAddress(quint32 address);
    QString SelectedLabel() const;
    QString SelectedSource() const;
    QString SelectedDisassembly() const;
    // The line of an instruction or of a byte outside the code, as the pane shows it.
    QString DisassemblyLine(quint32 address) const;
    int RowCount() const override { return int(rows_.size()); }
    int SelectedRow() const override;

protected:
    void PaintRow(QPainter& p, int row, const QRect& rect, bool selected) override;
    void SelectRow(int row) override;

private:
    struct TRow {
        int Instruction;
        enum { Label, Source, Code } Kind;
        QString Text;
    };
    std::vector<TRow> rows_;
    quint32 address_ = 0;
};

class TRegisterPane : public TCPUPane {
    Q_OBJECT
    Q_PROPERTY(QObject* CurrentRegs READ CurrentRegs)
public:
    TRegisterPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent);
    QObject* CurrentRegs() const { return regs_; }
    int RowCount() const override { return 16; }
    int SelectedRow() const override { return -1; }

protected:
    void PaintRow(QPainter& p, int row, const QRect& rect, bool selected) override;
    void SelectRow(int) override {}

private:
    TCPURegisters* regs_;
};

class TFlagsPane : public TCPUPane {
    Q_OBJECT
    Q_PROPERTY(QObject* CurrentFlags READ CurrentFlags)
public:
    TFlagsPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent);
    QObject* CurrentFlags() const { return flags_; }
    int RowCount() const override { return 17; }
    int SelectedRow() const override { return -1; }

protected:
    void PaintRow(QPainter& p, int row, const QRect& rect, bool selected) override;
    void SelectRow(int) override {}

private:
    TCPUFlags* flags_;
};

// The common part of the dump and the stack: rows of memory of a fixed number of bytes from a
// base address, and a selected offset. The rows move to hold the selection when the pane paints.
class TMemoryPane : public TCPUPane {
    Q_OBJECT
    Q_PROPERTY(quint32 SelectedOffset READ SelectedOffset WRITE SetSelectedOffset)
    Q_PROPERTY(QString SelectedData READ SelectedData)
public:
    quint32 SelectedOffset() const { return offset_; }
    void SetSelectedOffset(quint32 offset);
    // The memory at the selection, as the pane shows it.
    virtual QString SelectedData() const = 0;
    quint32 RowAddress(int row) const { return base_ + quint32(row) * rowBytes_; }
    int RowCount() const override { return rows_; }
    int SelectedRow() const override;

protected:
    TMemoryPane(std::shared_ptr<const TMachineSnapshot> snapshot, quint32 rowBytes,
                QWidget* parent);
    void paintEvent(QPaintEvent* event) override;
    // Selects offset and brings its row into view, as the pane opens.
    void Open(quint32 offset);
    // Places the rows around the selection unless they hold it already.
    void Rebase();
    // The address of the row start at or below a.
    virtual quint32 AlignDown(quint32 a) const = 0;
    // Places base_ and rows_ over the known memory [first, end), which holds the selection.
    virtual void PlaceRows(quint32 first, quint32 end) = 0;

    const quint32 rowBytes_;
    quint32 offset_ = 0;
    quint32 base_ = 0;
    int rows_ = 0;
};

// The memory dump: eight bytes a row, as hexadecimal and as characters.
class TDumpPane : public TMemoryPane {
    Q_OBJECT
public:
    TDumpPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent);
    QString SelectedData() const override;

protected:
    void PaintRow(QPainter& p, int row, const QRect& rect, bool selected) override;
    void SelectRow(int row) override;
    quint32 AlignDown(quint32 a) const override { return a & ~7u; }
    void PlaceRows(quint32 first, quint32 end) override;
};

// The stack: a double word a row, by rising address; the walk of a capture goes down.
class TStackPane : public TMemoryPane {
    Q_OBJECT
public:
    TStackPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent);
    QString SelectedData() const override;

protected:
    void PaintRow(QPainter& p, int row, const QRect& rect, bool selected) override;
    void SelectRow(int row) override;
    quint32 AlignDown(quint32 a) const override;
    void PlaceRows(quint32 first, quint32 end) override;
};

// The CPU window.
class TCPUWindow : public QWidget {
    Q_OBJECT
public:
    explicit TCPUWindow(TMachineSnapshot snapshot, QWidget* parent = nullptr);
    static TCPUWindow* Load(const std::string& fileName, QWidget* parent = nullptr);

    TDisassemblyPane* Disassembly() const { return disassembly_; }
    TRegisterPane* Registers() const { return registers_; }
    TFlagsPane* Flags() const { return flags_; }
    TDumpPane* Dump() const { return dump_; }
    TStackPane* Stack() const { return stack_; }
    const TMachineSnapshot& Snapshot() const { return *snapshot_; }

private:
    std::shared_ptr<const TMachineSnapshot> snapshot_;
    TDisassemblyPane* disassembly_;
    TRegisterPane* registers_;
    TFlagsPane* flags_;
    TDumpPane* dump_;
    TStackPane* stack_;
};

} // namespace workbench::cpu
