#include "workbench/cpu/CPUView.h"

#include "toolsapi/QtBridge.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QSplitter>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace workbench::cpu {

namespace {

QString Hex(quint32 value, int digits) {
    return QString("%1").arg(value, digits, 16, QChar('0')).toUpper();
}

const QColor HighlightBack(0x0A, 0x24, 0x6A);
const QColor HighlightText(Qt::white);
const QColor ChangedText(0xD0, 0x00, 0x00);
const QColor AddressText(0x00, 0x00, 0x80);

// The character a dump shows for a byte: the code page's, or "." below the blank.
QString ByteChar(uint8_t b) {
    if (b < 32) return ".";
    std::string one(1, static_cast<char>(b));
    return ToolsAPI::FromBytes(one);
}

// The green arrow in the left margin of a row: the next instruction to run, the top of the stack.
void DrawArrow(QPainter& p, const QRect& row) {
    p.setPen(QColor(0x00, 0x80, 0x00));
    p.setBrush(QColor(0x00, 0xA0, 0x00));
    int cy = row.center().y();
    QPolygon arrow;
    arrow << QPoint(3, cy - 4) << QPoint(10, cy) << QPoint(3, cy + 4);
    p.drawPolygon(arrow);
    p.setBrush(Qt::NoBrush);
}

} // namespace

// ---------------------------------------------------------------------------------------------

TCPURegisters::TCPURegisters(const TMachineSnapshot& s, QObject* parent) : QObject(parent) {
    setObjectName("CurrentRegs");
    for (int i = 0; i < 16; ++i)
        r_[i] = s.Register(i);
}

TCPUFlags::TCPUFlags(const TMachineSnapshot& s, QObject* parent) : QObject(parent) {
    setObjectName("CurrentFlags");
    for (int i = 0; i < 17; ++i)
        f_[i] = int(s.Flag(i));
}

// ---------------------------------------------------------------------------------------------

TCPUPane::TCPUPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent)
    : QWidget(parent), snapshot_(std::move(snapshot)) {
    QFont f = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    f.setPointSize(9);
    setFont(f);
    setFocusPolicy(Qt::StrongFocus);
    setAutoFillBackground(true);
    QPalette pal = palette();
    pal.setColor(QPalette::Window, Qt::white);
    pal.setColor(QPalette::WindowText, Qt::black);
    setPalette(pal);
    setMinimumSize(60, 40);
}

int TCPUPane::RowHeight() const {
    return fontMetrics().height() + 1;
}

int TCPUPane::VisibleRows() const {
    return std::max(1, height() / RowHeight());
}

void TCPUPane::Selected() {
    update();
}

void TCPUPane::paintEvent(QPaintEvent*) {
    ++paintCount_;
    // The view follows the selection here, so that a pane that does not paint keeps its view.
    int selected = SelectedRow();
    if (selected != lastSelectedRow_ && selected >= 0) {
        int visible = VisibleRows();
        if (selected < top_)
            top_ = selected;
        else if (selected >= top_ + visible)
            top_ = selected - visible + 1;
    }
    lastSelectedRow_ = selected;
    top_ = std::clamp(top_, 0, std::max(0, RowCount() - 1));
    QPainter p(this);
    int h = RowHeight();
    for (int row = top_, y = 0; row < RowCount() && y < height(); ++row, y += h)
        PaintRow(p, row, QRect(0, y, width(), h), row == selected);
}

void TCPUPane::mousePressEvent(QMouseEvent* e) {
    setFocus();
    int row = top_ + int(e->position().y()) / RowHeight();
    if (row >= 0 && row < RowCount()) SelectRow(row);
}

void TCPUPane::keyPressEvent(QKeyEvent* e) {
    int row = SelectedRow();
    int step = e->key() == Qt::Key_Down       ? 1
               : e->key() == Qt::Key_Up       ? -1
               : e->key() == Qt::Key_PageDown ? VisibleRows()
               : e->key() == Qt::Key_PageUp   ? -VisibleRows()
                                              : 0;
    if (step == 0 || RowCount() == 0) {
        QWidget::keyPressEvent(e);
        return;
    }
    SelectRow(std::clamp(row < 0 ? 0 : row + step, 0, RowCount() - 1));
}

void TCPUPane::wheelEvent(QWheelEvent* e) {
    top_ = std::clamp(top_ - e->angleDelta().y() / 40, 0, std::max(0, RowCount() - 1));
    update();
}

// ---------------------------------------------------------------------------------------------

TDisassemblyPane::TDisassemblyPane(std::shared_ptr<const TMachineSnapshot> snapshot,
                                   QWidget* parent)
    : TCPUPane(std::move(snapshot), parent) {
    setObjectName("DisassemblerView1");
    const auto& code = snapshot_->Code();
    for (size_t i = 0; i < code.size(); ++i) {
        const TInstruction& ins = code[i];
        for (const QString& l :
             ToolsAPI::FromBytes(ins.Label).split("\r\n", Qt::SkipEmptyParts))
            rows_.push_back({int(i), TRow::Label, l});
        for (const QString& l : ToolsAPI::FromBytes(ins.Source)
                                    .split("\r\n", Qt::SkipEmptyParts))
            rows_.push_back({int(i), TRow::Source, l});
        rows_.push_back({int(i), TRow::Code, DisassemblyLine(ins.Address)});
    }
    address_ = snapshot_->DisassemblyStart();
    if (const TInstruction* ins = snapshot_->InstructionAt(address_)) address_ = ins->Address;
    // The label and source lines above the first instruction stay in sight.
    int row = SelectedRow();
    while (row > 0 && rows_[size_t(row - 1)].Kind != TRow::Code)
        --row;
    top_ = std::max(0, row - 4);
}

quint32 TDisassemblyPane::SelectedAddress() const {
    return address_;
}

void TDisassemblyPane::SetSelectedAddress(quint32 address) {
    // An address inside an instruction selects the instruction.
    const TInstruction* ins = snapshot_->InstructionAt(address);
    address_ = ins ? ins->Address : address;
    Selected();
}

QString TDisassemblyPane::SelectedLabel() const {
    const TInstruction* ins = snapshot_->InstructionAt(address_);
    return ins ? ToolsAPI::FromBytes(ins->Label) : QString("");
}

QString TDisassemblyPane::SelectedSource() const {
    const TInstruction* ins = snapshot_->InstructionAt(address_);
    return ins ? ToolsAPI::FromBytes(ins->Source) : QString("");
}

QString TDisassemblyPane::SelectedDisassembly() const {
    return DisassemblyLine(address_);
}

QString TDisassemblyPane::DisassemblyLine(quint32 address) const {
    if (const TInstruction* ins = snapshot_->InstructionAt(address)) {
        QString bytes;
        for (uint8_t b : ins->Bytes)
            bytes += Hex(b, 2);
        return Hex(ins->Address, 8) + " " + bytes.leftJustified(16) + " " +
               ToolsAPI::FromBytes(ins->Text);
    }
    // Outside the code each byte is a line of its own.
    if (auto b = snapshot_->Byte(address))
        return Hex(address, 8) + " " + Hex(*b, 2).leftJustified(16) + " db $" + Hex(*b, 2);
    return Hex(address, 8) + " " + QString("??").leftJustified(16) + " ???";
}

int TDisassemblyPane::SelectedRow() const {
    int index = snapshot_->InstructionIndex(address_);
    if (index < 0) return -1;
    for (size_t r = 0; r < rows_.size(); ++r)
        if (rows_[r].Instruction == index && rows_[r].Kind == TRow::Code) return int(r);
    return -1;
}

void TDisassemblyPane::SelectRow(int row) {
    SetSelectedAddress(snapshot_->Code()[size_t(rows_[size_t(row)].Instruction)].Address);
}

void TDisassemblyPane::PaintRow(QPainter& p, int row, const QRect& rect, bool selected) {
    const TRow& r = rows_[size_t(row)];
    const TInstruction& ins = snapshot_->Code()[size_t(r.Instruction)];
    QRect text = rect.adjusted(14, 0, 0, 0);
    QFont f = font();
    if (r.Kind != TRow::Code) {
        f.setBold(true);
        p.setFont(f);
        p.setPen(r.Kind == TRow::Label ? Qt::black : AddressText);
        p.drawText(text, Qt::AlignVCenter | Qt::AlignLeft, r.Text);
        p.setFont(font());
        return;
    }
    if (selected) p.fillRect(rect, HighlightBack);
    // The instruction at EIP is the next to run: an arrow marks it.
    if (ins.Address == snapshot_->Register(8)) DrawArrow(p, rect);
    p.setFont(font());
    p.setPen(selected ? HighlightText : Qt::black);
    p.drawText(text, Qt::AlignVCenter | Qt::AlignLeft, r.Text);
}

// ---------------------------------------------------------------------------------------------

TRegisterPane::TRegisterPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent)
    : TCPUPane(std::move(snapshot), parent) {
    setObjectName("RegisterView");
    regs_ = new TCPURegisters(*snapshot_, this);
}

void TRegisterPane::PaintRow(QPainter& p, int row, const QRect& rect, bool) {
    QString line = QString(RegisterNames[row]).leftJustified(4) +
                   Hex(snapshot_->Register(row), RegisterWidth(row));
    p.setPen(snapshot_->Changed(row) ? ChangedText : Qt::black);
    p.drawText(rect.adjusted(4, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, line);
}

TFlagsPane::TFlagsPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent)
    : TCPUPane(std::move(snapshot), parent) {
    setObjectName("FlagsView");
    flags_ = new TCPUFlags(*snapshot_, this);
}

void TFlagsPane::PaintRow(QPainter& p, int row, const QRect& rect, bool) {
    QString line = QString(FlagBits[row].Short) + " " + QString::number(snapshot_->Flag(row));
    p.setPen(Qt::black);
    p.drawText(rect.adjusted(4, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, line);
}

// ---------------------------------------------------------------------------------------------

TMemoryPane::TMemoryPane(std::shared_ptr<const TMachineSnapshot> snapshot, quint32 rowBytes,
                         QWidget* parent)
    : TCPUPane(std::move(snapshot), parent), rowBytes_(rowBytes) {}

void TMemoryPane::Open(quint32 offset) {
    offset_ = offset;
    Rebase();
    top_ = std::max(0, SelectedRow());
}

// The rows cover the known memory around the selection; where none is known, a stretch around
// the selection.
void TMemoryPane::Rebase() {
    if (SelectedRow() >= 0) return;
    if (auto range = snapshot_->RangeOf(offset_)) {
        PlaceRows(range->first, range->second);
    } else {
        base_ = offset_ >= 64 ? AlignDown(offset_) - 64 : 0;
        rows_ = 32;
    }
    top_ = 0;
    lastSelectedRow_ = -2;
}

void TMemoryPane::SetSelectedOffset(quint32 offset) {
    // The rows move to the new place only when the pane paints.
    offset_ = offset;
    Selected();
}

void TMemoryPane::paintEvent(QPaintEvent* event) {
    Rebase();
    TCPUPane::paintEvent(event);
}

int TMemoryPane::SelectedRow() const {
    if (offset_ < base_) return -1;
    uint64_t row = (uint64_t(offset_) - base_) / rowBytes_;
    return row < uint64_t(rows_) ? int(row) : -1;
}

// ---------------------------------------------------------------------------------------------

TDumpPane::TDumpPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent)
    : TMemoryPane(std::move(snapshot), 8, parent) {
    setObjectName("DumpView");
    Open(snapshot_->DumpStart());
}

// Rows start at multiples of 8, the first at or before the range.
void TDumpPane::PlaceRows(quint32 first, quint32 end) {
    base_ = AlignDown(first);
    rows_ = int((uint64_t(end) - base_ + 7) / 8);
}

QString TDumpPane::SelectedData() const {
    auto b = snapshot_->Byte(offset_);
    return b ? Hex(*b, 2) : QString("??");
}

void TDumpPane::SelectRow(int row) {
    SetSelectedOffset(RowAddress(row) + (offset_ & 7u));
}

void TDumpPane::PaintRow(QPainter& p, int row, const QRect& rect, bool selected) {
    quint32 address = RowAddress(row);
    QFontMetrics fm = fontMetrics();
    int cw = fm.horizontalAdvance('0');
    int x = rect.x() + 4;
    p.setPen(AddressText);
    p.drawText(QRect(x, rect.y(), cw * 9, rect.height()), Qt::AlignVCenter, Hex(address, 8));
    x += cw * 10;
    int charsX = x + cw * (8 * 3 + 1);
    for (quint32 i = 0; i < 8; ++i) {
        quint32 a = address + i;
        auto b = snapshot_->Byte(a);
        bool mark = selected && a == offset_;
        QRect hexBox(x + int(i) * cw * 3, rect.y(), cw * 2, rect.height());
        QRect charBox(charsX + int(i) * cw, rect.y(), cw, rect.height());
        if (mark) {
            p.fillRect(hexBox, HighlightBack);
            p.fillRect(charBox, HighlightBack);
        }
        p.setPen(mark ? HighlightText : Qt::black);
        p.drawText(hexBox, Qt::AlignVCenter, b ? Hex(*b, 2) : QString("??"));
        p.drawText(charBox, Qt::AlignVCenter, b ? ByteChar(*b) : QString("?"));
    }
}

// ---------------------------------------------------------------------------------------------

TStackPane::TStackPane(std::shared_ptr<const TMachineSnapshot> snapshot, QWidget* parent)
    : TMemoryPane(std::move(snapshot), 4, parent) {
    setObjectName("StackView");
    Open(snapshot_->StackStart());
}

// The double words are aligned as ESP is.
quint32 TStackPane::AlignDown(quint32 a) const {
    quint32 align = snapshot_->Register(7) & 3u;
    return a < align ? 0u : ((a - align) & ~3u) + align;
}

// Only whole double words of the range, and the one of the selection whatever it holds.
void TStackPane::PlaceRows(quint32 first, quint32 end) {
    base_ = AlignDown(first);
    if (base_ < first) base_ += 4;
    if (base_ > offset_) base_ = AlignDown(offset_);
    rows_ = std::max(1, int((uint64_t(end) - base_) / 4));
    if (uint64_t(base_) + 4ull * rows_ <= offset_) rows_ = int((offset_ - base_) / 4 + 1);
}

QString TStackPane::SelectedData() const {
    auto w = snapshot_->DWord(offset_);
    return w ? Hex(*w, 8) : QString("????????");
}

void TStackPane::SelectRow(int row) {
    SetSelectedOffset(RowAddress(row));
}

void TStackPane::PaintRow(QPainter& p, int row, const QRect& rect, bool selected) {
    quint32 address = RowAddress(row);
    if (selected) p.fillRect(rect, HighlightBack);
    if (address == snapshot_->Register(7)) DrawArrow(p, rect);
    auto w = snapshot_->DWord(address);
    p.setPen(selected ? HighlightText : AddressText);
    QFontMetrics fm = fontMetrics();
    int cw = fm.horizontalAdvance('0');
    p.drawText(QRect(14, rect.y(), cw * 9, rect.height()), Qt::AlignVCenter, Hex(address, 8));
    p.setPen(selected ? HighlightText : Qt::black);
    p.drawText(QRect(14 + cw * 10, rect.y(), cw * 9, rect.height()), Qt::AlignVCenter,
               w ? Hex(*w, 8) : QString("????????"));
}

// ---------------------------------------------------------------------------------------------

TCPUWindow::TCPUWindow(TMachineSnapshot snapshot, QWidget* parent)
    : QWidget(parent, parent ? Qt::WindowFlags() : Qt::Window),
      snapshot_(std::make_shared<const TMachineSnapshot>(std::move(snapshot))) {
    setObjectName("DisassemblyView");
    setWindowTitle("CPU");
    disassembly_ = new TDisassemblyPane(snapshot_, nullptr);
    registers_ = new TRegisterPane(snapshot_, nullptr);
    flags_ = new TFlagsPane(snapshot_, nullptr);
    dump_ = new TDumpPane(snapshot_, nullptr);
    stack_ = new TStackPane(snapshot_, nullptr);

    // Disassembly, registers and flags above; dump and stack below, as the IDE lays them out.
    auto* top = new QSplitter(Qt::Horizontal);
    top->addWidget(disassembly_);
    top->addWidget(registers_);
    top->addWidget(flags_);
    top->setStretchFactor(0, 1);
    int cw = disassembly_->fontMetrics().horizontalAdvance('0');
    registers_->setMinimumWidth(cw * 14);
    flags_->setMinimumWidth(cw * 6);
    auto* bottom = new QSplitter(Qt::Horizontal);
    bottom->addWidget(dump_);
    bottom->addWidget(stack_);
    bottom->setStretchFactor(0, 1);
    stack_->setMinimumWidth(cw * 22);
    auto* rows = new QSplitter(Qt::Vertical);
    rows->addWidget(top);
    rows->addWidget(bottom);
    rows->setStretchFactor(0, 3);
    rows->setStretchFactor(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(rows);
    resize(720, 480);
    rows->setSizes({330, 150});
    top->setSizes({720 - cw * 22, cw * 15, cw * 7});
    bottom->setSizes({720 - cw * 24, cw * 24});
}

TCPUWindow* TCPUWindow::Load(const std::string& fileName, QWidget* parent) {
    return new TCPUWindow(TMachineSnapshot::Load(fileName), parent);
}

} // namespace workbench::cpu
