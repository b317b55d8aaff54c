// Unit CPUView: the expert behind "View CPU data". The IDE's CPU window ("DisassemblyView") shows
// disassembly, registers, flags, a memory dump and the stack, and offers no way to copy them;
// this expert's window takes a plain text capture of one pane or of all of them into its memo,
// as many lines as the user asks for.
//
// The IDE has no interface for the CPU window. The capture reads the panes' published
// properties by name (toolsapi/PropAccess.h) and walks a pane by writing its selection and
// reading it back; the pane's painting is stopped meanwhile, and its selection is put back after
// each read, so the user sees nothing move. The names of the window, the panes and their
// properties are the whole contract with the IDE: without the window the capture gives nothing,
// and a pane that is not there gives no lines.
//
// Ownership: the expert owns its window (one at most), which frees itself on closing; the
// expert frees one that is still open when it goes. Exceptions from the panes' properties
// (rtl::EPropertyError) pass to the caller once the selection is back and the lines are closed.
#pragma once

#include "host/ExpShrForm.h"
#include "rtl/Lists.h"

#include <QPointer>

#include <string>

class QAction;
class QMenu;
class QPlainTextEdit;
class QToolBar;

namespace zelvane {

RTL_ENUM(TCPUViewType, vtDisasmView, vtRegView, vtFlagsView, vtDumpView, vtStackView, vtAllViews)

// One row of the pane table: the title of the capture, the name of the pane in the CPU window
// (none for all of them), and whether the pane reads a number of lines (nothing reads it).
struct TCPUViewInfo {
    std::string Title;
    const char* PaneName;
    bool HasLineCount;
};
// The pane table, one row per TCPUViewType; the titles come from the string table when the
// capture window is made.
extern TCPUViewInfo CPUViewInfo[6];

class TCPUForm;

class TCPUFormMng : public TSharedManager {
    RTL_CLASS(TCPUFormMng, TSharedManager)
public:
    TCPUFormMng();
    ~TCPUFormMng() override;

    // The lines to read, and the pane last chosen.
    int32_t ReadLineCount = 10;
    TCPUViewType ViewObject = vtDisasmView;

    void Init(TAddItemFunc AddItem) override;
    void Load(bool Loaded) override;

    // Brings the capture window up, made when there is none.
    void ShowCPU(rtl::TObject* Sender);
    // Enables a menu item or action sender while a CPU window is shown.
    void UpdateMenuState(rtl::TObject* Sender);

    // The IDE's CPU window when it is shown, or nullptr.
    static QWidget* FindCPUWindow();

private:
    QPointer<TCPUForm> form_;
};

// The capture window.
class TCPUForm : public TSharedForm {
    Q_OBJECT
public:
    TCPUForm(QWidget* owner, TCPUFormMng* manager);
    ~TCPUForm() override;

    void FormCreate() override;
    void ReadFormData() override;
    void WriteFormData() override;

    // Adds the capture of a pane, or of all panes, to strings: up to count lines of the
    // disassembly, the dump and the stack, the whole of the registers and the flags. Without a
    // CPU window strings stay as they are.
    static void GetViewText(rtl::TStrings* strings, TCPUViewType viewType, int count);

    QPlainTextEdit* Memo() const { return memo1_; }
    QToolBar* ToolBar() const { return toolBar1_; }
    QMenu* TargetObjectMenu() const { return pmTargetObject_; }
    QMenu* StrCountMenu() const { return pmStrCount_; }
    QAction* acGetData() const { return acGetData_; }
    QAction* asSetStrCount() const { return asSetStrCount_; }

    // The commands: a capture into the memo, and the custom line count asked in a dialog.
    void acGetDataExecute();
    void asSetStrCountExecute();

protected:
    void SetProperties() override;

private:
    void FillObjectMenu();
    void FillStrCountMenu();
    void ProcessNewStrCount();
    void ProcessObjects();
    void ObjMenuClick(QAction* item);
    void StrCountClick(QAction* item);
    void CustomStrCountClick(QAction* sender);

    TCPUFormMng* manager_;
    QToolBar* toolBar1_;
    QPlainTextEdit* memo1_;
    QMenu* pmTargetObject_;
    QMenu* pmStrCount_;
    QAction* acGetData_;
    QAction* asSetStrCount_;
    QAction* FCustomItem = nullptr;
};

} // namespace zelvane
