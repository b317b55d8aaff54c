#include "experts/cpu/CPUView.h"

#include "experts/cpu/ExpStrCount.h"
#include "host/CrtlUtils.h"
#include "host/ExpMenu.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "rtl/SysUtils.h"
#include "toolsapi/Forms.h"
#include "toolsapi/PropAccess.h"
#include "toolsapi/QtBridge.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

namespace zelvane {

using namespace rtl;
using ToolsAPI::FromBytes;

RTL_BEGIN_CLASS(TCPUFormMng)
Property("ReadLineCount", &TCPUFormMng::ReadLineCount);
Property("ViewObject", &TCPUFormMng::ViewObject);
Method<&TCPUFormMng::ShowCPU>("ShowCPU");
Method<&TCPUFormMng::UpdateMenuState>("UpdateMenuState");
RTL_END_CLASS

TCPUViewInfo CPUViewInfo[6] = {
    {"", "DisassemblerView1", true}, {"", "RegisterView", false}, {"", "FlagsView", false},
    {"", "DumpView", true},          {"", "StackView", true},     {"", nullptr, true},
};

namespace {

// The CPU window's form, and the properties of its panes that a capture reads and writes.
const QString CPUWindowName = QStringLiteral("DisassemblyView");
constexpr const char* SelectedAddress = "SelectedAddress";
constexpr const char* SelectedOffset = "SelectedOffset";
constexpr const char* SelectedData = "SelectedData";

// The register pane's rows: the property, also the label of the line, and its hexadecimal width.
struct TRegisterInfo {
    const char* Name;
    int Width;
};
constexpr TRegisterInfo RegisterInfo[16] = {
    {"EAX", 8}, {"EBX", 8}, {"ECX", 8}, {"EDX", 8}, {"ESI", 8}, {"EDI", 8}, {"EBP", 8}, {"ESP", 8},
    {"EIP", 8}, {"EFL", 8}, {"CS", 4},  {"DS", 4},  {"SS", 4},  {"ES", 4},  {"FS", 4},  {"GS", 4},
};

// The flag pane's rows: the property, the short name and the description of the line.
struct TFlagInfo {
    const char* Name;
    const char* ShortName;
    const char* Description;
};
constexpr TFlagInfo FlagInfo[17] = {
    {"Carry", "CF", "Carry Flag"},
    {"Parity", "PF", "Parity Flag"},
    {"AuxCarry", "AF", "Auxiliary Carry Flag"},
    {"Zero", "ZF", "Zero Flag"},
    {"Sign", "SF", "Sign Flag"},
    {"Trap", "TF", "Trap Flag"},
    {"Interrupt", "IF", "Interrupt Enable Flag"},
    {"Direction", "DF", "Direction Flag"},
    {"Overflow", "OF", "Overflow Flag"},
    {"IOPL", "IO", "I/O Privilege Level"},
    {"NestedTask", "NF", "Nested Task"},
    {"Resume", "RF", "Resume Flag"},
    {"V86Mode", "VM", "Virtual 8086 Mode"},
    {"Alignment", "AC", "Alignment Check"},
    {"VirtualInterruptFlag", "VF", "Virtual Interrupt Flag"},
    {"VirtualInterruptPending", "VP", "Virtual Interrupt Pending"},
    {"ID", "ID", "ID Flag"},
};

// Runs read, then puts the pane's selection back as it was, however read ends.
template <class F> void KeepingSelection(QObject* pane, const char* selection, F&& read) {
    const int64_t kept = ToolsAPI::GetOrdProp(pane, selection);
    try {
        read();
    } catch (...) {
        ToolsAPI::SetOrdProp(pane, selection, kept);
        throw;
    }
    ToolsAPI::SetOrdProp(pane, selection, kept);
}

// The character that a dump shows for data in hexadecimal: the byte itself from the blank up,
// "." below it and for data that is no number (memory the debugger cannot read).
char CharOf(std::string_view data) {
    if (data.empty() || data.size() > 8) return '.';
    uint32_t value = 0;
    for (char c : data) {
        int digit = c >= '0' && c <= '9'   ? c - '0'
                    : c >= 'A' && c <= 'F' ? c - 'A' + 10
                    : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                           : -1;
        if (digit < 0) return '.';
        value = value * 16 + uint32_t(digit);
    }
    value &= 0xFF;
    return value >= 32 ? char(value) : '.';
}

// The selected instruction with its label and source line above it, each ended by a line break.
std::string ComposeLine(const QObject* pane) {
    std::string line = ToolsAPI::GetStrProp(pane, "SelectedLabel");
    if (!line.empty()) line += "\r\n";
    std::string source = ToolsAPI::GetStrProp(pane, "SelectedSource");
    if (!source.empty()) line += source + "\r\n";
    return line + ToolsAPI::GetStrProp(pane, "SelectedDisassembly");
}

// The pane has no line index and instructions differ in length: the next instruction is where
// the text changes as the address steps a byte at a time. Ten bytes without a change end the
// read; an instruction whose text repeats the one before is taken for the same one.
void ReadDisassembly(QObject* pane, TStrings* strings, int count) {
    KeepingSelection(pane, SelectedAddress, [&] {
        std::string previous;
        for (int i = 0; i < count; ++i) {
            int64_t address = ToolsAPI::GetOrdProp(pane, SelectedAddress);
            std::string line = ComposeLine(pane);
            for (int tries = 0; line == previous;) {
                ++address;
                if (++tries > 10) return;
                ToolsAPI::SetOrdProp(pane, SelectedAddress, address);
                line = ComposeLine(pane);
            }
            strings->Add(line);
            previous = std::move(line);
        }
    });
}

void ReadRegisters(QObject* pane, TStrings* strings) {
    QObject* regs = ToolsAPI::GetObjectProp(pane, "CurrentRegs");
    if (!regs) return;
    for (const TRegisterInfo& r : RegisterInfo)
        strings->Add(Format("%-4s", {r.Name}) +
                     IntToHex(int32_t(ToolsAPI::GetOrdProp(regs, r.Name)), r.Width));
}

void ReadFlags(QObject* pane, TStrings* strings) {
    QObject* flags = ToolsAPI::GetObjectProp(pane, "CurrentFlags");
    if (!flags) return;
    for (const TFlagInfo& f : FlagInfo)
        strings->Add(
            Format("%s %d [%s]",
                   {f.ShortName, int32_t(ToolsAPI::GetOrdProp(flags, f.Name)), f.Description}));
}

// Eight bytes a line, each read by moving the selection on by one.
void ReadDump(QObject* pane, TStrings* strings, int count) {
    KeepingSelection(pane, SelectedOffset, [&] {
        for (int i = 0; i < count; ++i) {
            std::string line = IntToHex(int32_t(ToolsAPI::GetOrdProp(pane, SelectedOffset)), 8);
            std::string hex, text;
            for (int b = 0; b < 8; ++b) {
                const int64_t offset = ToolsAPI::GetOrdProp(pane, SelectedOffset);
                const std::string data = ToolsAPI::GetStrProp(pane, SelectedData);
                hex += data;
                hex += ' ';
                text += CharOf(data);
                ToolsAPI::SetOrdProp(pane, SelectedOffset, offset + 1);
            }
            strings->Add(line + "  " + hex + ' ' + text);
        }
    });
}

// A double word a line, walking towards lower addresses.
void ReadStack(QObject* pane, TStrings* strings, int count) {
    KeepingSelection(pane, SelectedOffset, [&] {
        for (int i = 0; i < count; ++i) {
            const int64_t offset = ToolsAPI::GetOrdProp(pane, SelectedOffset);
            const std::string data = ToolsAPI::GetStrProp(pane, SelectedData);
            std::string text;
            for (size_t pair = 0; pair < 8; pair += 2)
                text += CharOf(std::string_view(data).substr(std::min(pair, data.size()), 2));
            strings->Add(IntToHex(int32_t(offset), 8) + "  " + data + "  " + text);
            ToolsAPI::SetOrdProp(pane, SelectedOffset, offset - 4);
        }
    });
}

void ReadView(QObject* pane, TStrings* strings, TCPUViewType viewType, int count) {
    switch (viewType) {
    case vtDisasmView:
        return ReadDisassembly(pane, strings, count);
    case vtRegView:
        return ReadRegisters(pane, strings);
    case vtFlagsView:
        return ReadFlags(pane, strings);
    case vtDumpView:
        return ReadDump(pane, strings, count);
    case vtStackView:
        return ReadStack(pane, strings, count);
    case vtAllViews:
        for (int type = vtDisasmView; type < vtAllViews; ++type) {
            strings->Add("[" + CPUViewInfo[type].Title + "]");
            TCPUForm::GetViewText(strings, TCPUViewType(type), count);
            strings->Add("");
        }
        return;
    }
}

// The lines in the memo, each line break inside a line a break of the memo's.
void ShowLines(QPlainTextEdit* memo, const TStringList& lines) {
    std::string text;
    for (int i = 0; i < lines.Count(); ++i) {
        if (i > 0) text += '\n';
        const std::string line = lines[i];
        for (size_t at = 0; at < line.size(); ++at)
            if (line[at] != '\r' || at + 1 >= line.size() || line[at + 1] != '\n') text += line[at];
    }
    memo->setPlainText(FromBytes(text));
}

QAction* MakeAction(QWidget* form, const char* name, QStyle::StandardPixmap icon) {
    auto* action = new QAction(form->style()->standardIcon(icon), QString(), form);
    action->setObjectName(QString::fromLatin1(name));
    action->setProperty("Category", QStringLiteral("CPUForm"));
    action->setShortcutContext(Qt::WindowShortcut);
    form->addAction(action);
    return action;
}

// A command of the window as the IDE's actions run: what it raises goes to the application.
template <class F> void Guarded(TCPUFormMng* manager, F&& command) {
    try {
        command();
    } catch (...) {
        if (ToolsAPI::Application) ToolsAPI::Application->HandleException(manager);
    }
}

} // namespace

// ---------------------------------------------------------------------------------------------
// The expert

TCPUFormMng::TCPUFormMng() {
    std::string labels = LabelTemplate("TCPUFormMng", {{"ReadLineCount", SLabelReadLineCount},
                                                       {"ViewObject", SLabelViewObject}}) +
                         "\r\n" +
                         LabelTemplate("TCPUViewType", {{"vtDisasmView", SLabelDisasmView},
                                                        {"vtRegView", SLabelRegView},
                                                        {"vtFlagsView", SLabelFlagsView},
                                                        {"vtDumpView", SLabelDumpView},
                                                        {"vtStackView", SLabelStackView},
                                                        {"vtAllViews", SLabelAllViews}});
    AddStoredData(this, "CPUViewData", LocaleStr(SCPUView), labels);
}

TCPUFormMng::~TCPUFormMng() {
    // An open window runs this package's code; it goes before the package does.
    delete form_.data();
}

void TCPUFormMng::Init(TAddItemFunc AddItem) {
    TExpMenuItemData* data = AddItem("ViewCPUItem");
    data->Caption = LocaleStr(SViewCPUItem);
    data->ShortCutText = "Ctrl+W";
    data->HaveLineBefore = true;
    data->ImageIndex = 67;
    data->OnExecute = TNotifyEvent::Of<&TCPUFormMng::ShowCPU>(this);
    data->OnUpdate = TNotifyEvent::Of<&TCPUFormMng::UpdateMenuState>(this);
}

void TCPUFormMng::Load(bool) {
    if (auto* form = FindFormByClass<TCPUForm>()) form->WriteFormData();
}

void TCPUFormMng::ShowCPU(TObject*) {
    QWidget* form = ShowFormByClass<TCPUForm>();
    if (!form) {
        // A window of the application's: it goes when the IDE's main form closes.
        QWidget* owner = ToolsAPI::Application ? ToolsAPI::Application->GetMainForm() : nullptr;
        form_ = MakeForm<TCPUForm>(owner, this).release();
        form_->show();
        form = form_;
    }
    form->raise();
    form->activateWindow();
}

void TCPUFormMng::UpdateMenuState(TObject* Sender) {
    SetSenderEnabled(Sender, FindCPUWindow() != nullptr);
}

QWidget* TCPUFormMng::FindCPUWindow() {
    if (!ToolsAPI::Screen) return nullptr;
    for (int i = 0; i < ToolsAPI::Screen->GetFormCount(); ++i) {
        QWidget* form = ToolsAPI::Screen->GetForm(i);
        if (form && form->isVisible() && form->objectName() == CPUWindowName) return form;
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------------
// The capture

void TCPUForm::GetViewText(TStrings* strings, TCPUViewType viewType, int count) {
    if (!strings || viewType > vtAllViews) return;
    QWidget* window = TCPUFormMng::FindCPUWindow();
    if (!window) return;
    QObject* pane = nullptr;
    QWidget* paneWidget = nullptr;
    if (viewType != vtAllViews) {
        // A pane the window lacks gives no lines.
        pane = ToolsAPI::FindComponent(window, CPUViewInfo[viewType].PaneName);
        if (!pane) return;
        // Its selection moves with every byte read: it does not paint meanwhile.
        paneWidget = qobject_cast<QWidget*>(pane);
        BeginUpdateControl(paneWidget);
    }
    strings->BeginUpdate();
    auto close = [&] {
        if (paneWidget) {
            EndUpdateControl(paneWidget);
            RepaintControl(paneWidget, {rfUpdateNow});
        }
        strings->EndUpdate();
    };
    try {
        ReadView(pane, strings, viewType, count);
    } catch (...) {
        close();
        throw;
    }
    close();
}

// ---------------------------------------------------------------------------------------------
// The window

TCPUForm::TCPUForm(QWidget* owner, TCPUFormMng* manager)
    : TSharedForm(owner, manager), manager_(manager) {
    setObjectName(QStringLiteral("CPUForm"));
    setWindowFlags(Qt::Window | Qt::WindowStaysOnTopHint);
    setAttribute(Qt::WA_DeleteOnClose);
    resize(437, 315);
    setMinimumSize(437, 175);

    acGetData_ = MakeAction(this, "acGetData", QStyle::SP_ArrowDown);
    asSetStrCount_ = MakeAction(this, "asSetStrCount", QStyle::SP_FileDialogListView);
    scExit()->setIcon(style()->standardIcon(QStyle::SP_DialogCloseButton));
    pmTargetObject_ = new QMenu(this);
    pmTargetObject_->setObjectName(QStringLiteral("pmTargetObject"));
    pmStrCount_ = new QMenu(this);
    pmStrCount_->setObjectName(QStringLiteral("pmStrCount"));

    toolBar1_ = new QToolBar(this);
    toolBar1_->setObjectName(QStringLiteral("ToolBar1"));
    toolBar1_->setIconSize(QSize(16, 16));
    toolBar1_->addAction(scExit());
    toolBar1_->addSeparator();
    toolBar1_->addAction(acGetData_);
    toolBar1_->addAction(asSetStrCount_);
    const struct {
        QAction* Action;
        const char* Name;
        QMenu* Menu;
    } buttons[] = {{scExit(), "tbExit", nullptr},
                   {acGetData_, "tbGetData", pmTargetObject_},
                   {asSetStrCount_, "tbSetStrCount", pmStrCount_}};
    for (const auto& b : buttons) {
        auto* button = qobject_cast<QToolButton*>(toolBar1_->widgetForAction(b.Action));
        if (!button) continue;
        button->setObjectName(QString::fromLatin1(b.Name));
        // A click runs the command; the arrow beside it drops the menu down.
        if (b.Menu) {
            button->setMenu(b.Menu);
            button->setPopupMode(QToolButton::MenuButtonPopup);
        }
    }

    memo1_ = new QPlainTextEdit(this);
    memo1_->setObjectName(QStringLiteral("Memo1"));
    QFont font(QStringLiteral("Courier New"));
    font.setStyleHint(QFont::TypeWriter);
    font.setPixelSize(12);
    memo1_->setFont(font);
    memo1_->setLineWrapMode(QPlainTextEdit::NoWrap);
    memo1_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    memo1_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(toolBar1_);
    layout->addWidget(memo1_, 1);

    connect(acGetData_, &QAction::triggered, this,
            [this] { Guarded(manager_, [this] { acGetDataExecute(); }); });
    connect(asSetStrCount_, &QAction::triggered, this,
            [this] { Guarded(manager_, [this] { asSetStrCountExecute(); }); });
}

TCPUForm::~TCPUForm() = default;

void TCPUForm::FormCreate() {
    const int titles[6] = {SDisasmViewTitle, SRegViewTitle,   SFlagsViewTitle,
                           SDumpViewTitle,   SStackViewTitle, SAllViewsTitle};
    for (int type = vtDisasmView; type <= vtAllViews; ++type)
        CPUViewInfo[type].Title = LocaleStr(titles[type]);
    FillObjectMenu();
    FillStrCountMenu();
    TSharedForm::FormCreate();
}

void TCPUForm::SetProperties() {
    TSharedForm::SetProperties();
    setWindowTitle(FromBytes(LocaleStr(SViewCPUCaption)));
    const std::pair<QAction*, int> hints[] = {
        {scExit(), SExitHint}, {acGetData_, SGetDataHint}, {asSetStrCount_, SSetStrCountHint}};
    for (const auto& [action, id] : hints) {
        action->setText(FromBytes(LocaleStr(id)));
        action->setToolTip(action->text());
    }
}

void TCPUForm::WriteFormData() {
    if (FCustomItem) {
        FCustomItem->setData(manager_->ReadLineCount);
        ProcessNewStrCount();
    }
    ProcessObjects();
    TSharedForm::WriteFormData();
}

void TCPUForm::ReadFormData() {
    TSharedForm::ReadFormData();
}

void TCPUForm::acGetDataExecute() {
    memo1_->clear();
    TStringList lines;
    // What was read before a pane failed is shown all the same.
    try {
        GetViewText(&lines, manager_->ViewObject, manager_->ReadLineCount);
    } catch (...) {
        ShowLines(memo1_, lines);
        throw;
    }
    ShowLines(memo1_, lines);
}

void TCPUForm::asSetStrCountExecute() {
    CustomStrCountClick(FCustomItem);
}

// ---------------------------------------------------------------------------------------------
// The menus

void TCPUForm::FillObjectMenu() {
    auto* group = new QActionGroup(pmTargetObject_);
    QAction* item = nullptr;
    for (int type = vtDisasmView; type <= vtAllViews; ++type) {
        item = pmTargetObject_->addAction(FromBytes(CPUViewInfo[type].Title));
        item->setCheckable(true);
        item->setData(type);
        group->addAction(item);
        connect(item, &QAction::triggered, this,
                [this, item] { Guarded(manager_, [this, item] { ObjMenuClick(item); }); });
    }
    // "All types" stands apart from the panes.
    pmTargetObject_->insertSeparator(item)->setData(-1);
}

void TCPUForm::ObjMenuClick(QAction* item) {
    item->setChecked(true);
    manager_->ViewObject = TCPUViewType(item->data().toInt());
}

void TCPUForm::ProcessObjects() {
    for (QAction* item : pmTargetObject_->actions())
        if (item->data().toInt() == int(manager_->ViewObject)) item->setChecked(true);
}

void TCPUForm::FillStrCountMenu() {
    auto* group = new QActionGroup(pmStrCount_);
    for (int count = 10; count <= 50; count += 10) {
        QAction* item =
            pmStrCount_->addAction(FromBytes(Format(LocaleStr(SStringsCount), {count})));
        item->setCheckable(true);
        item->setData(count);
        group->addAction(item);
        connect(item, &QAction::triggered, this,
                [this, item] { Guarded(manager_, [this, item] { StrCountClick(item); }); });
    }
    pmStrCount_->addSeparator();
    FCustomItem = pmStrCount_->addAction(FromBytes(LocaleStr(SCustomStrCount)));
    FCustomItem->setCheckable(true);
    FCustomItem->setData(manager_->ReadLineCount);
    group->addAction(FCustomItem);
    connect(FCustomItem, &QAction::triggered, this,
            [this] { Guarded(manager_, [this] { CustomStrCountClick(FCustomItem); }); });
}

// Checks the first item of the count, going down the menu; the custom one when none has it.
void TCPUForm::ProcessNewStrCount() {
    for (QAction* item : pmStrCount_->actions())
        if (item->data().toInt() == manager_->ReadLineCount) {
            item->setChecked(true);
            return;
        }
    FCustomItem->setChecked(true);
}

void TCPUForm::StrCountClick(QAction* item) {
    manager_->ReadLineCount = item->data().toInt();
    ProcessNewStrCount();
}

void TCPUForm::CustomStrCountClick(QAction* sender) {
    auto form = std::make_unique<TStrCountForm>(this);
    form->SpinEdit()->setValue(manager_->ReadLineCount);
    if (form->exec() == mrOk) {
        const int value = form->SpinEdit()->value();
        manager_->ReadLineCount = value >= 1 ? value : 10;
    }
    // Whatever was chosen, the checks follow the count: a click checked the item already.
    sender->setData(manager_->ReadLineCount);
    ProcessNewStrCount();
}

} // namespace zelvane
