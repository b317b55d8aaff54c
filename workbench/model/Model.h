// The host's project model: the IDE's services over real files, without windows.
//
// TIDEModel is the global services object. It opens projects (.dpr, .dpk, .bpr, .bpk), project
// groups (.bpg) and directories, and the modules of their units: each with a source editor and,
// where a form file lies beside the unit, a form editor. Source editors are edit buffers with
// views, cursor, blocks and undo; form editors hold the component tree read from the form file.
// The workbench window shows this model; the tests drive it headless.
//
// Ownership: the model holds its open modules, a module its editors, a buffer its views. What
// they hand out is counted, and a closed module's editors stay usable as objects: they only
// lose their module.
#pragma once

#include "toolsapi/ToolsAPI.h"
#include "workbench/model/FormFile.h"
#include "workbench/model/ProjectFiles.h"
#include "workbench/model/TextBuffer.h"

#include <QIcon>
#include <QList>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace workbench {

using rtl::Exception;

using namespace ToolsAPI;

RTL_EXCEPTION(EModelError, Exception)
RTL_EXCEPTION(EReadOnlyBuffer, EModelError)

// Answers of a host question, with the platform's numbers.
enum TModalResult : int {
    mrNone = 0,
    mrOk = 1,
    mrCancel = 2,
    mrAbort = 3,
    mrRetry = 4,
    mrIgnore = 5,
    mrYes = 6,
    mrNo = 7
};
// Asks the user a question with the buttons Yes, No and Cancel; the answer is a TModalResult.
using TQuestionProc = std::function<int(const std::string& caption, const std::string& text)>;

class TIDEModel;
class TModelModule;
class TSourceEditor;
class TEditView;
class TEditWindow;
class TFormEditor;
class TProjectModule;
class TGroupModule;
class TModuleInfo;

// What the workbench window listens to. Every member may be empty.
struct TModelEvents {
    std::function<void()> ModulesChanged;               // a module opened or closed
    std::function<void()> PageClosed;                   // a page closed, its module still open
    std::function<void(TSourceEditor*)> BufferChanged;  // its text or its block changed
    std::function<void(IOTAEditor*)> EditorShown;       // Show on an editor
    std::function<void(TEditView*)> ViewPainted;        // Paint on a view
    std::function<void(TFormEditor*)> SelectionChanged; // a designer's selection changed
};

// How a module is opened: brought to the front, given a page behind the others, or opened with
// no page at all.
enum class TOpenMode { Show, Background, Hidden };

// ---------------------------------------------------------------------------------------------

class TEditWindow : public TInterfacedObject, public virtual INTAEditWindow {
public:
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<INTAEditWindow>(this, iid, obj);
    }
    QWidget* GetForm() override { return form_; }
    void SetForm(QWidget* form) { form_ = form; }

private:
    QWidget* form_ = nullptr;
};

class TBufferOptions : public TInterfacedObject, public virtual IOTABufferOptions {
public:
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTABufferOptions>(this, iid, obj);
    }
    bool GetAutoIndent() override { return autoIndent_; }
    void SetAutoIndent(bool value) override { autoIndent_ = value; }
    bool GetInsertMode() override { return insertMode_; }
    void SetInsertMode(bool value) override { insertMode_ = value; }

private:
    bool autoIndent_ = true;
    bool insertMode_ = true;
};

// The marked block of a buffer, as marked: Start is where marking began.
struct TBlockState {
    bool Visible = false;
    TOTABlockType Style = btNonInclusive;
    TTextPos Start;
    TTextPos End;
};

// A source editor and its edit buffer.
class TSourceEditor : public TNotifierObject, public virtual IOTAEditBuffer {
public:
    TSourceEditor(TIDEModel* model, TModelModule* module, std::string fileName);
    ~TSourceEditor() override;
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAEditBuffer>(this, iid, obj);
    }

    // IOTAEditor
    int AddNotifier(const _di_IOTANotifier& notifier) override;
    void RemoveNotifier(int index) override;
    std::string GetFileName() override { return fileName_; }
    bool GetModified() override { return text_.Modified(); }
    void MarkModified() override;
    void Show() override;
    _di_IOTAModule GetModule() override;
    // IOTASourceEditor
    int GetEditViewCount() override { return static_cast<int>(views_.size()); }
    _di_IOTAEditView GetEditView(int index) override;
    int GetLinesInBuffer() override { return text_.LineCount(); }
    // IOTAEditBuffer
    _di_IOTABufferOptions GetBufferOptions() override;
    _di_IOTAEditBlock GetEditBlock() override;
    _di_IOTAEditPosition GetEditPosition() override;
    _di_IOTAEditView GetTopView() override;
    bool IsReadOnly() override { return readOnly_; }
    void SetIsReadOnly(bool value) override { readOnly_ = value; }

    // The model's side.
    void LoadFromFile();
    void SaveToFile();
    std::string Text() const { return text_.Text(); }
    // Replaces the whole text as one step of undo.
    void SetText(std::string_view text);
    const TTextBuffer& Buffer() const { return text_; }
    bool Undo();
    bool Redo();
    TEditView* AddView(TEditWindow* window);
    void RemoveView(TEditView* view);
    TEditView* View(int index) const;
    TModelModule* Module() const { return module_; }
    void Detach(); // the module has closed

    // Block and edits, for views, blocks and positions.
    TBlockState& Block() { return block_; }
    bool BlockValid() const;
    TTextPos BlockStart() const;
    TTextPos BlockEnd() const;
    std::string BlockText() const;
    // Deletes the block's text inside the open undo group and gives where it stood.
    TTextPos DeleteBlockText();
    void InsertText(TEditView* view, const std::string& text);
    void DeleteBlock(TEditView* view);
    void DeleteChars(TEditView* view, int count, bool backwards);
    void CheckWritable() const;
    void Changed();

private:
    void BeginEdit(TEditView* view);
    void EndEdit();

    struct TUndoState {
        TEditView* View = nullptr;
        TTextPos Cursor;
        TBlockState Block;
    };

    TIDEModel* model_;
    TModelModule* module_;
    std::string fileName_;
    TTextBuffer text_;
    bool readOnly_ = false;
    DelphiInterface<TBufferOptions> options_;
    std::vector<DelphiInterface<TEditView>> views_;
    TBlockState block_;
    std::vector<TUndoState> undoStates_;
    std::map<int, _di_IOTANotifier> notifiers_;
    int nextNotifier_ = 0;
};

class TEditView : public TInterfacedObject,
                  public virtual IOTAEditView,
                  public virtual IOTAEditActions {
public:
    TEditView(TSourceEditor* buffer, TEditWindow* window);
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAEditView, IOTAEditActions>(this, iid, obj);
    }

    _di_IOTAEditBlock GetBlock() override;
    _di_IOTAEditPosition GetPosition() override;
    _di_IOTAEditBuffer GetBuffer() override;
    int GetTopRow() override { return top_; }
    int GetBottomRow() override { return top_ + height_ - 1; }
    int GetLeftColumn() override { return left_; }
    int GetViewHeight() override { return height_; }
    void SetTopLeft(int topRow, int leftColumn) override;
    void Scroll(int deltaRow, int deltaCol) override;
    void MoveViewToCursor() override;
    void Paint() override;
    _di_INTAEditWindow GetEditWindow() override;
    void ClosePage() override;

    // The buffer; raises EModelError once the buffer has closed.
    TSourceEditor& Buffer() const;
    bool Attached() const { return buffer_ != nullptr; }
    void Detach() { buffer_ = nullptr; }
    TEditWindow* Window() const { return window_.get(); }

    TTextPos Cursor() const { return cursor_; }
    // Moves the cursor; the block's anchor moves with it.
    void SetCursor(TTextPos pos);
    // Moves the cursor and leaves the anchor, as marking does.
    void SetCursorKeepAnchor(TTextPos pos) { cursor_ = pos; }
    TTextPos Anchor() const { return anchor_; }
    void SetViewHeight(int rows) { height_ = rows < 1 ? 1 : rows; }
    int PaintCount() const { return paintCount_; }

private:
    TSourceEditor* buffer_;
    DelphiInterface<TEditWindow> window_;
    TTextPos cursor_;
    TTextPos anchor_;
    int top_ = 1;
    int left_ = 1;
    int height_ = 25;
    int paintCount_ = 0;
};

class TEditBlock : public TInterfacedObject, public virtual IOTAEditBlock {
public:
    explicit TEditBlock(TEditView* view) : view_(view) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAEditBlock>(this, iid, obj);
    }
    bool GetIsValid() override;
    TOTABlockType GetStyle() override;
    void SetStyle(TOTABlockType value) override;
    int GetStartingRow() override;
    int GetStartingColumn() override;
    int GetEndingRow() override;
    int GetEndingColumn() override;
    int GetSize() override { return static_cast<int>(GetText().size()); }
    std::string GetText() override;
    bool GetVisible() override;
    void SetVisible(bool value) override;
    void BeginBlock() override;
    void EndBlock() override;
    bool Extend(int newRow, int newCol) override;
    bool ExtendRelative(int deltaRow, int deltaCol) override;
    void Reset() override;
    void Delete() override;

private:
    DelphiInterface<TEditView> view_;
};

class TEditPosition : public TInterfacedObject, public virtual IOTAEditPosition {
public:
    explicit TEditPosition(TEditView* view) : view_(view) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAEditPosition>(this, iid, obj);
    }
    int GetRow() override;
    int GetColumn() override;
    char GetCharacter() override;
    int GetLastRow() override;
    bool Move(int row, int col) override;
    bool MoveRelative(int deltaRow, int deltaCol) override;
    void MoveBOL() override;
    void MoveEOL() override;
    bool IsWhiteSpace() override;
    void InsertText(const std::string& text) override;
    void InsertCharacter(char c) override;
    void Delete(int count) override;
    void BackspaceDelete(int count) override;
    std::string Read(int count) override;

private:
    DelphiInterface<TEditView> view_;
};

// ---------------------------------------------------------------------------------------------

class TFormEditor : public TNotifierObject,
                    public virtual IOTAFormEditor,
                    public virtual INTAFormEditor {
public:
    TFormEditor(TIDEModel* model, TModelModule* module, std::string fileName);
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAFormEditor, INTAFormEditor>(this, iid, obj);
    }

    // IOTAEditor
    int AddNotifier(const _di_IOTANotifier& notifier) override;
    void RemoveNotifier(int index) override;
    std::string GetFileName() override { return fileName_; }
    bool GetModified() override { return modified_; }
    void MarkModified() override;
    void Show() override;
    _di_IOTAModule GetModule() override;
    // IOTAFormEditor
    _di_IOTAComponent GetRootComponent() override;
    _di_IOTAComponent FindComponent(const std::string& name) override;
    _di_IOTAComponent GetComponentFromHandle(TOTAHandle handle) override;
    int GetSelCount() override { return static_cast<int>(selection_.size()); }
    _di_IOTAComponent GetSelComponent(int index) override;
    // INTAFormEditor
    _di_IDesigner GetFormDesigner() override;

    // The model's side. Loading raises EFormFileError for a damaged file.
    void LoadFromFile();
    void SaveToFile();
    TDesignComponent* Root() const { return form_.Root.get(); }
    TFormFileFormat Format() const { return form_.Format; }
    bool Contains(const TDesignComponent* component) const;
    _di_IOTAComponent Wrap(TDesignComponent* component);
    void Select(TDesignComponent* component, bool addToSelection);
    const std::vector<TDesignComponent*>& Selection() const { return selection_; }
    // Renames a component and tells the form notifiers; raises EModelError for a name that is
    // not an identifier or is taken.
    void RenameComponent(TDesignComponent* component, const std::string& newName);
    // The designer brings the form to the front: the module becomes the current one, with this
    // editor in front, and the form notifiers hear FormActivated.
    void Activate();
    // Listeners of the selection, as the designer windows and the object inspector follow it;
    // each is called after every change of the selection. The result is the index for
    // RemoveSelectionListener.
    int AddSelectionListener(std::function<void()> listener);
    void RemoveSelectionListener(int index);
    TModelModule* Module() const { return module_; }
    // The module has closed: the notifiers are told Destroyed, and the editor keeps its tree.
    void Detach();

private:
    template <class F> void ForEachFormNotifier(F f);
    std::string ClassParent(const std::string& className);
    void CompleteAncestry(TDesignComponent* component);

    TIDEModel* model_;
    TModelModule* module_;
    std::string fileName_;
    TFormFile form_;
    std::unique_ptr<TDesignComponent> designWindow_;
    bool modified_ = false;
    std::vector<TDesignComponent*> selection_;
    std::map<int, _di_IOTANotifier> notifiers_;
    int nextNotifier_ = 0;
    std::map<int, std::function<void()>> selectionListeners_;
    int nextSelectionListener_ = 0;
};

class TDesigner : public TInterfacedObject, public virtual IDesigner {
public:
    explicit TDesigner(TFormEditor* editor) : editor_(editor) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IDesigner>(this, iid, obj);
    }
    TDesignComponent* GetRoot() override { return editor_->Root(); }
    void Modified() override { editor_->MarkModified(); }

private:
    DelphiInterface<TFormEditor> editor_;
};

class TComponentRef : public TInterfacedObject, public virtual IOTAComponent {
public:
    TComponentRef(TFormEditor* editor, TDesignComponent* component)
        : editor_(editor), component_(component) {}
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAComponent>(this, iid, obj);
    }
    std::string GetComponentType() override { return component_->ClassName; }
    TOTAHandle GetComponentHandle() override { return component_; }
    _di_IOTAComponent GetParent() override;
    bool IsTControl() override { return component_->IsControl(); }
    // The properties are the stored ones, in the form file's order, then the other published
    // properties of the component's class (LibraryClasses.h), which read as their defaults.
    int GetPropCount() override { return static_cast<int>(PropNames().size()); }
    std::string GetPropName(int index) override;
    bool GetPropValueByName(const std::string& name, std::string& value) override;
    bool SetPropByName(const std::string& name, const std::string& value) override;
    int GetControlCount() override;
    _di_IOTAComponent GetControl(int index) override;
    int GetComponentCount() override;
    _di_IOTAComponent GetComponent(int index) override;
    bool Select(bool addToSelection) override;
    bool Focus(bool addToSelection) override;

private:
    std::vector<TDesignComponent*> Controls() const;
    std::vector<std::string> PropNames() const;
    DelphiInterface<TFormEditor> editor_;
    TDesignComponent* component_;
};

// The project's resource file: the entries of a 32-bit resource file.
class TProjectResource : public TNotifierObject, public virtual IOTAProjectResource {
public:
    TProjectResource(TIDEModel* model, TModelModule* module, std::string fileName);
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAProjectResource>(this, iid, obj);
    }
    int AddNotifier(const _di_IOTANotifier& notifier) override { return -1; }
    void RemoveNotifier(int index) override {}
    std::string GetFileName() override { return fileName_; }
    bool GetModified() override { return false; }
    void MarkModified() override {}
    void Show() override;
    _di_IOTAModule GetModule() override;
    int GetEntryCount() override { return static_cast<int>(entries_.size()); }
    std::string GetEntryName(int index) override;
    void Detach() {
        module_ = nullptr;
        model_ = nullptr;
    }

private:
    TIDEModel* model_;
    TModelModule* module_;
    std::string fileName_;
    std::vector<std::string> entries_;
};

// Reads the entries of a 32-bit resource file as "TYPE/NAME"; raises EModelError for a file that
// is not one.
std::vector<std::string> ReadResourceEntries(std::string_view bytes, const std::string& fileName);

// ---------------------------------------------------------------------------------------------

class TModelModule : public TNotifierObject, public virtual IOTAModule {
public:
    TModelModule(TIDEModel* model, std::string fileName);
    ~TModelModule() override;
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAModule>(this, iid, obj);
    }

    std::string GetFileName() override { return fileName_; }
    int GetModuleFileCount() override { return static_cast<int>(editors_.size()); }
    _di_IOTAEditor GetModuleFileEditor(int index) override;
    int GetOwnerCount() override;
    _di_IOTAProject GetOwner(int index) override;
    _di_IOTAEditor GetCurrentEditor() override;
    bool Close() override;
    bool CloseModule(bool forceClosed) override;
    bool Save(bool childrenOnly, bool forceSave) override;
    void Show() override;

    // The model's side.
    bool IsOpen() const { return model_ != nullptr; }
    bool AnyModified();
    TSourceEditor* SourceEditor() const;
    TFormEditor* FormEditor() const;
    void AddEditor(const _di_IOTAEditor& editor) { editors_.push_back(editor); }
    void SetCurrentEditor(IOTAEditor* editor) { current_ = editor; }
    TIDEModel* Model() const { return model_; }
    // Called by the model when the module closes: editors lose their module.
    virtual void Detach();

protected:
    TIDEModel* model_;
    std::string fileName_;
    std::vector<_di_IOTAEditor> editors_;
    IOTAEditor* current_ = nullptr;
};

class TModuleInfo : public TInterfacedObject, public virtual IOTAModuleInfo {
public:
    TModuleInfo(TIDEModel* model, TProjectModule* project, TProjectEntry entry);
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAModuleInfo>(this, iid, obj);
    }
    TOTAModuleType GetModuleType() override;
    std::string GetName() override { return entry_.UnitName; }
    std::string GetFileName() override { return entry_.FileName; }
    std::string GetFormName() override;
    std::string GetDesignClass() override;
    _di_IOTAModule OpenModule() override;

    void Detach() {
        model_ = nullptr;
        project_ = nullptr;
    }
    // The form file beside the unit, empty if none.
    std::string FormFile() const;

private:
    void Resolve();
    TIDEModel* model_;
    TProjectModule* project_;
    TProjectEntry entry_;
    bool resolved_ = false;
    std::string formClass_;
};

class TProjectModule : public TModelModule, public virtual IOTAProject {
public:
    TProjectModule(TIDEModel* model, TProjectDescription description);
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAProject>(this, iid, obj);
    }
    int GetModuleCount() override { return static_cast<int>(infos_.size()); }
    _di_IOTAModuleInfo GetModule(int index) override;
    _di_IOTAModuleInfo FindModuleInfo(const std::string& fileName) override;
    _di_IOTAProjectGroup GetProjectGroup() override;

    const TProjectDescription& Description() const { return description_; }
    bool HoldsFile(const std::string& fileName) const;
    void SetGroup(TGroupModule* group) { group_ = group; }
    TGroupModule* Group() const { return group_; }
    void Detach() override;
    // The class declarations of the project's units, to complete the ancestry of a form class.
    std::string FindUnitClassParent(const std::string& className);

private:
    TProjectDescription description_;
    std::vector<DelphiInterface<TModuleInfo>> infos_;
    TGroupModule* group_ = nullptr;
};

class TGroupModule : public TModelModule, public virtual IOTAProjectGroup {
public:
    TGroupModule(TIDEModel* model, std::string fileName);
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTAProjectGroup>(this, iid, obj);
    }
    _di_IOTAProject GetActiveProject() override;
    void SetActiveProject(const _di_IOTAProject& project) override;
    int GetProjectCount() override { return static_cast<int>(projects_.size()); }
    _di_IOTAProject GetProject(int index) override;

    void AddProject(TProjectModule* project);
    void RemoveProject(TProjectModule* project);
    void Detach() override;

private:
    std::vector<DelphiInterface<TProjectModule>> projects_;
    TProjectModule* active_ = nullptr;
};

// ---------------------------------------------------------------------------------------------

class TIDEModel : public TInterfacedObject,
                  public virtual IBorlandIDEServices,
                  public virtual IOTAModuleServices,
                  public virtual IOTAEditorServices,
                  public virtual IOTAServices,
                  public virtual IOTAActionServices,
                  public virtual INTAServices,
                  public virtual IOTAKeyboardServices {
public:
    TIDEModel();
    ~TIDEModel() override;
    static DelphiInterface<TIDEModel> Create() { return MakeInterfaced<TIDEModel>(); }
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IBorlandIDEServices, IOTAModuleServices, IOTAEditorServices,
                               IOTAServices, IOTAActionServices, INTAServices,
                               IOTAKeyboardServices>(this, iid, obj);
    }

    // IOTAModuleServices
    int GetModuleCount() override { return static_cast<int>(modules_.size()); }
    _di_IOTAModule GetModule(int index) override;
    _di_IOTAModule CurrentModule() override;
    _di_IOTAModule FindModule(const std::string& fileName) override;
    bool CloseAll() override;
    bool SaveAll() override;
    // IOTAEditorServices
    _di_IOTAEditBuffer GetTopBuffer() override;
    _di_IOTAEditView GetTopView() override;
    // IOTAServices
    int AddNotifier(const _di_IOTAIDENotifier& notifier) override;
    void RemoveNotifier(int index) override;
    std::string GetActiveDesignerType() override;
    std::string GetBaseRegistryKey() override { return "Software/Zelvane/Workbench"; }
    // IOTAActionServices: false where the file can't be opened, closed or saved.
    bool OpenFile(const std::string& fileName) override;
    bool OpenProject(const std::string& projName, bool newProjGroup) override;
    bool CloseFile(const std::string& fileName) override;
    bool SaveFile(const std::string& fileName) override;
    // INTAServices
    QMenuBar* GetMainMenu() override { return mainMenu_; }
    QWidget* GetActionList() override { return actionList_; }
    QToolBar* GetToolBar(const std::string& toolBarName) override;
    int GetImageCount() override { return int(images_.size()); }
    QIcon GetImage(int index) override;
    // IOTAKeyboardServices
    int AddKeyboardBinding(const _di_IOTAKeyboardBinding& binding) override;
    void RemoveKeyboardBinding(int index) override;

    // --- The model's own operations -----------------------------------------------------

    // Opens a project file, a project group, or a directory: the group in it, else each project
    // file in it as a loose project, else its units as one project named after it. Raises
    // EProjectFileError or EFOpenError for what can't be read.
    _di_IOTAModule OpenProjectFile(const std::string& path);
    // Opens the module of a file, or gives the open one. A form file opens its unit. Raises for
    // a file that does not exist and EFormFileError for a damaged form file; nothing is left
    // open then. Empty when an IDE notifier cancelled the opening.
    DelphiInterface<TModelModule> OpenModuleFile(const std::string& fileName, TOpenMode mode);
    // Closes a module; with ask, a modified one asks the "Confirm" question first. False when
    // the user or a notifier kept it open.
    bool CloseModule(TModelModule* module, bool ask);
    // The open module whose file, or one of whose editors' files, is fileName.
    TModelModule* FindOpenModule(const std::string& fileName) const;

    // The question the model asks the user; tests answer it. Without one every question is
    // answered Cancel.
    void SetQuestion(TQuestionProc proc) { question_ = std::move(proc); }
    int Ask(const std::string& caption, const std::string& text);

    // Edit windows. The model starts with one.
    TEditWindow* MainEditWindow() const { return windows_.front().get(); }
    TEditWindow* NewEditWindow();
    // A further view of the buffer in the window, brought to the front.
    TEditView* OpenView(TSourceEditor* buffer, TEditWindow* window);

    // The IDE's widgets, set by a host that has them.
    void SetMainMenu(QMenuBar* menu) { mainMenu_ = menu; }
    // The main menu's image list, as the main form makes it.
    void SetImages(QList<QIcon> images) { images_ = std::move(images); }
    void SetActionList(QWidget* holder) { actionList_ = holder; }
    void SetToolBar(const std::string& name, QToolBar* toolBar) { toolBars_[name] = toolBar; }

    // Runs the key bindings for one key, the last registered first; gives what the handler
    // answered, krUnhandled when none is bound to the key.
    TKeyBindingResult DispatchKey(TShortCut key);
    // Whether a binding takes the key (0 is no key and is never bound).
    bool IsBoundKey(TShortCut key) const;
    int KeyBindingCount() const { return static_cast<int>(bindings_.size()); }

    TModelEvents Events;

    // Called by modules and editors.
    void ShowSourceEditor(TSourceEditor* editor);
    void ShowFormEditor(TFormEditor* editor);
    void ShowEditor(TModelModule* module, IOTAEditor* editor);
    // The module becomes the current one, with the editor in front, without showing anything.
    void MakeCurrent(TModelModule* module, IOTAEditor* editor);
    void ViewRemoved(TEditView* view);
    void BringToFront(TEditView* view);
    bool FireFileNotification(TOTAFileNotification code, const std::string& fileName);
    std::vector<TProjectModule*> Projects() const;
    TProjectModule* ProjectOf(const std::string& fileName) const;

private:
    struct TKeyBinding {
        std::vector<TShortCut> Keys;
        TKeyBindingProc Proc;
        void* Context = nullptr;
    };
    struct TBindingRecord {
        _di_IOTAKeyboardBinding Binding;
        std::string Name;
        std::vector<TKeyBinding> Keys;
    };
    friend class TKeyBindingCollector;

    DelphiInterface<TModelModule> CreateUnitModule(const std::string& fileName);
    DelphiInterface<TProjectModule> OpenProjectModule(const std::string& fileName);
    void Register(const DelphiInterface<TModelModule>& module);

    std::vector<DelphiInterface<TModelModule>> modules_;
    std::vector<DelphiInterface<TEditWindow>> windows_;
    std::vector<TEditView*> viewOrder_; // the views of all windows, the top one last
    TModelModule* current_ = nullptr;
    std::map<int, _di_IOTAIDENotifier> ideNotifiers_;
    int nextNotifier_ = 0;
    std::map<int, TBindingRecord> bindings_;
    int nextBinding_ = 0;
    TQuestionProc question_;
    QMenuBar* mainMenu_ = nullptr;
    QList<QIcon> images_;
    QWidget* actionList_ = nullptr;
    std::map<std::string, QToolBar*> toolBars_;
};

} // namespace workbench
