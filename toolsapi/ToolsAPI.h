// The IDE's plug-in interface as the add-in sees it: services, projects, modules, editors,
// views, blocks, form editors, designers, notifiers and key bindings.
//
// Interfaces that the IDE hands out are reference counted and held in _di_ smart pointers.
// Text is single-byte, in the code page of the file (Windows-1251 by default). Rows and columns
// of an edit view are 1-based; indexes of lists are 0-based.
//
// Where the IDE hands out widgets (the main menu, the action list, tool bars, the edit window's
// form), the interfaces give Qt types. A host without windows answers nullptr there.
#pragma once

#include "toolsapi/DesignComponent.h"
#include "toolsapi/Interface.h"

#include <functional>
#include <string>
#include <vector>

class QIcon;
class QMenuBar;
class QToolBar;
class QWidget;

namespace ToolsAPI {

// ---------------------------------------------------------------------------------------------
// Types

using TShortCut = uint16_t;
// A component's handle: the address of its TDesignComponent in its form editor's tree, whose
// ClassName and Ancestors tell its class. GetComponentHandle and ComponentRenamed give the same.
using TOTAHandle = const void*;

// The style of a marked block. The ordinals are the IDE's.
enum TOTABlockType : uint8_t { btInclusive, btLine, btColumn, btNonInclusive, btUnknown };

// What a file notification tells.
enum TOTAFileNotification : uint8_t {
    ofnFileOpening,
    ofnFileOpened,
    ofnFileClosing,
    ofnDefaultDesktopLoad,
    ofnDefaultDesktopSave,
    ofnProjectDesktopLoad,
    ofnProjectDesktopSave,
    ofnPackageInstalled,
    ofnPackageUninstalled
};

// The kind of a project's module.
enum TOTAModuleType : uint8_t {
    omtForm,
    omtDataModule,
    omtProjUnit,
    omtUnit,
    omtRc,
    omtAsm,
    omtDef,
    omtObj,
    omtRes,
    omtLib,
    omtTypeLib,
    omtPackageImport,
    omtFormResource,
    omtCustom,
    omtIDL
};

enum TWizardStateItem : uint8_t { wsEnabled, wsChecked };
// A set of TWizardStateItem, one bit per item.
using TWizardState = uint8_t;
constexpr TWizardState WizardState(TWizardStateItem item) {
    return TWizardState(1u << item);
}

enum TBindingType : uint8_t { btComplete, btPartial };
enum TKeyBindingResult : uint8_t { krUnhandled, krHandled, krNextProc };

// ---------------------------------------------------------------------------------------------
// Interfaces, declared first so that each can name the others.

class IBorlandIDEServices;
class IOTANotifier;
class IOTAWizard;
class IOTAMenuWizard;
class IOTAIDENotifier;
class IOTAFormNotifier;
class IOTAEditor;
class IOTASourceEditor;
class IOTAEditBuffer;
class IOTABufferOptions;
class IOTAEditView;
class IOTAEditBlock;
class IOTAEditPosition;
class IOTAEditActions;
class INTAEditWindow;
class IOTAFormEditor;
class INTAFormEditor;
class IDesigner;
class IOTAComponent;
class IOTAModule;
class IOTAModuleInfo;
class IOTAProject;
class IOTAProjectGroup;
class IOTAProjectResource;
class IOTAModuleServices;
class IOTAEditorServices;
class IOTAServices;
class IOTAActionServices;
class INTAServices;
class IOTAKeyboardServices;
class IOTAKeyboardBinding;
class IOTAKeyBindingServices;
class IOTAKeyContext;

using _di_IInterface = DelphiInterface<rtl::IInterface>;
using _di_IBorlandIDEServices = DelphiInterface<IBorlandIDEServices>;
using _di_IOTANotifier = DelphiInterface<IOTANotifier>;
using _di_IOTAWizard = DelphiInterface<IOTAWizard>;
using _di_IOTAMenuWizard = DelphiInterface<IOTAMenuWizard>;
using _di_IOTAIDENotifier = DelphiInterface<IOTAIDENotifier>;
using _di_IOTAFormNotifier = DelphiInterface<IOTAFormNotifier>;
using _di_IOTAEditor = DelphiInterface<IOTAEditor>;
using _di_IOTASourceEditor = DelphiInterface<IOTASourceEditor>;
using _di_IOTAEditBuffer = DelphiInterface<IOTAEditBuffer>;
using _di_IOTABufferOptions = DelphiInterface<IOTABufferOptions>;
using _di_IOTAEditView = DelphiInterface<IOTAEditView>;
using _di_IOTAEditBlock = DelphiInterface<IOTAEditBlock>;
using _di_IOTAEditPosition = DelphiInterface<IOTAEditPosition>;
using _di_IOTAEditActions = DelphiInterface<IOTAEditActions>;
using _di_INTAEditWindow = DelphiInterface<INTAEditWindow>;
using _di_IOTAFormEditor = DelphiInterface<IOTAFormEditor>;
using _di_INTAFormEditor = DelphiInterface<INTAFormEditor>;
using _di_IDesigner = DelphiInterface<IDesigner>;
using _di_IOTAComponent = DelphiInterface<IOTAComponent>;
using _di_IOTAModule = DelphiInterface<IOTAModule>;
using _di_IOTAModuleInfo = DelphiInterface<IOTAModuleInfo>;
using _di_IOTAProject = DelphiInterface<IOTAProject>;
using _di_IOTAProjectGroup = DelphiInterface<IOTAProjectGroup>;
using _di_IOTAProjectResource = DelphiInterface<IOTAProjectResource>;
using _di_IOTAModuleServices = DelphiInterface<IOTAModuleServices>;
using _di_IOTAEditorServices = DelphiInterface<IOTAEditorServices>;
using _di_IOTAServices = DelphiInterface<IOTAServices>;
using _di_IOTAActionServices = DelphiInterface<IOTAActionServices>;
using _di_INTAServices = DelphiInterface<INTAServices>;
using _di_IOTAKeyboardServices = DelphiInterface<IOTAKeyboardServices>;
using _di_IOTAKeyboardBinding = DelphiInterface<IOTAKeyboardBinding>;
using _di_IOTAKeyBindingServices = DelphiInterface<IOTAKeyBindingServices>;
using _di_IOTAKeyContext = DelphiInterface<IOTAKeyContext>;

// A key handler bound through IOTAKeyBindingServices.AddKeyBinding.
using TKeyBindingProc = std::function<void(const _di_IOTAKeyContext& context, TShortCut keyCode,
                                           TKeyBindingResult& bindingResult)>;

// ---------------------------------------------------------------------------------------------
// The global services object: every service below is a query of it.

class IBorlandIDEServices : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{0105DAF8-3522-4EF7-8AB4-ACBA66705CAD}")
};

// ---------------------------------------------------------------------------------------------
// Notifiers and wizards

class IOTANotifier : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{D2639DB0-0AE0-4C48-957E-F1FF232264FD}")
    virtual void AfterSave() = 0;
    virtual void BeforeSave() = 0;
    virtual void Destroyed() = 0;
    virtual void Modified() = 0;
};

class IOTAWizard : public virtual IOTANotifier {
    OTA_INTERFACE(IOTANotifier, "{5DBF9297-2696-40B3-8ECE-394BC7380002}")
    virtual std::string GetIDString() = 0;
    virtual std::string GetName() = 0;
    virtual TWizardState GetState() = 0;
    virtual void Execute() = 0;
};

// A wizard with an item in the IDE's Help menu.
class IOTAMenuWizard : public virtual IOTAWizard {
    OTA_INTERFACE(IOTAWizard, "{1F2F89C8-4F0A-4B7E-AB69-A8C3CAD75616}")
    virtual std::string GetMenuText() = 0;
};

class IOTAIDENotifier : public virtual IOTANotifier {
    OTA_INTERFACE(IOTANotifier, "{6526B093-3D46-4DD9-96A8-DAFDB3576E07}")
    virtual void FileNotification(TOTAFileNotification notifyCode, const std::string& fileName,
                                  bool& cancel) = 0;
    virtual void BeforeCompile(const _di_IOTAProject& project, bool& cancel) = 0;
    virtual void AfterCompile(bool succeeded) = 0;
};

// Registered with IOTAFormEditor.AddNotifier.
class IOTAFormNotifier : public virtual IOTANotifier {
    OTA_INTERFACE(IOTANotifier, "{01063C18-D583-4B81-A23F-9576FB24DE01}")
    virtual void FormActivated() = 0;
    virtual void FormSaving() = 0;
    virtual void ComponentRenamed(TOTAHandle componentHandle, const std::string& oldName,
                                  const std::string& newName) = 0;
};

// ---------------------------------------------------------------------------------------------
// Editors

// One file of a module: the source, the form, the project resource.
class IOTAEditor : public virtual IOTANotifier {
    OTA_INTERFACE(IOTANotifier, "{BE3BB9CE-E1EE-455F-B4E9-8CBF6FE52E93}")
    // Registers a notifier; a form editor fires those that answer IOTAFormNotifier. The result
    // is the index for RemoveNotifier.
    virtual int AddNotifier(const _di_IOTANotifier& notifier) = 0;
    virtual void RemoveNotifier(int index) = 0;
    virtual std::string GetFileName() = 0;
    virtual bool GetModified() = 0;
    virtual void MarkModified() = 0;
    // Brings the editor up: its page in the edit window, or its form in the designer.
    virtual void Show() = 0;
    // The module the editor belongs to; empty once the module has been closed.
    virtual _di_IOTAModule GetModule() = 0;
};

class IOTASourceEditor : public virtual IOTAEditor {
    OTA_INTERFACE(IOTAEditor, "{F17A7BD1-E07D-11D1-AB0B-00C04FB16FB3}")
    virtual int GetEditViewCount() = 0;
    virtual _di_IOTAEditView GetEditView(int index) = 0;
    virtual int GetLinesInBuffer() = 0;
};

// The text of a source editor with its views, cursor and block.
class IOTAEditBuffer : public virtual IOTASourceEditor {
    OTA_INTERFACE(IOTASourceEditor, "{73E34697-A3FA-46B8-B1F6-32BE6F94BAAB}")
    virtual _di_IOTABufferOptions GetBufferOptions() = 0;
    virtual _di_IOTAEditBlock GetEditBlock() = 0;       // the block of the top view
    virtual _di_IOTAEditPosition GetEditPosition() = 0; // the cursor of the top view
    virtual _di_IOTAEditView GetTopView() = 0;
    virtual bool IsReadOnly() = 0;
    virtual void SetIsReadOnly(bool value) = 0;
};

class IOTABufferOptions : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{77897A8A-0FE0-479A-AAE6-DD1F24297CBB}")
    virtual bool GetAutoIndent() = 0;
    virtual void SetAutoIndent(bool value) = 0;
    virtual bool GetInsertMode() = 0;
    virtual void SetInsertMode(bool value) = 0;
};

class IOTAEditView : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{7BD5ECC6-5A11-4740-8834-900C44656DE0}")
    virtual _di_IOTAEditBlock GetBlock() = 0;
    virtual _di_IOTAEditPosition GetPosition() = 0;
    virtual _di_IOTAEditBuffer GetBuffer() = 0;
    virtual int GetTopRow() = 0;
    virtual int GetBottomRow() = 0;
    virtual int GetLeftColumn() = 0;
    // The rows shown: BottomRow - TopRow + 1.
    virtual int GetViewHeight() = 0;
    virtual void SetTopLeft(int topRow, int leftColumn) = 0;
    virtual void Scroll(int deltaRow, int deltaCol) = 0;
    // Scrolls so that the cursor is in sight.
    virtual void MoveViewToCursor() = 0;
    virtual void Paint() = 0;
    virtual _di_INTAEditWindow GetEditWindow() = 0;
};

// The marked block of a view. After InsertText the block is gone (IsValid false).
class IOTAEditBlock : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{80B14EEB-EF1A-41F7-B36F-8EECAC70B680}")
    virtual bool GetIsValid() = 0;
    virtual TOTABlockType GetStyle() = 0;
    virtual void SetStyle(TOTABlockType value) = 0;
    virtual int GetStartingRow() = 0;
    virtual int GetStartingColumn() = 0;
    virtual int GetEndingRow() = 0;
    virtual int GetEndingColumn() = 0;
    virtual int GetSize() = 0; // the length of Text
    // The marked text; lines are separated by CR LF.
    virtual std::string GetText() = 0;
    virtual bool GetVisible() = 0;
    virtual void SetVisible(bool value) = 0;
    // Marks the start or the end at the cursor.
    virtual void BeginBlock() = 0;
    virtual void EndBlock() = 0;
    // Marks from the anchor to (row, col) and moves the cursor there. The anchor is the far end
    // of the block when the cursor stands at one of its ends, else the cursor.
    virtual bool Extend(int newRow, int newCol) = 0;
    virtual bool ExtendRelative(int deltaRow, int deltaCol) = 0;
    virtual void Reset() = 0; // unmarks
    virtual void Delete() = 0;
};

// The cursor of a view.
class IOTAEditPosition : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{A085E7EB-7AE7-429A-99E0-2C0D8AC47AFE}")
    virtual int GetRow() = 0;
    virtual int GetColumn() = 0;
    // The character at the cursor; 0 past the end of the line.
    virtual char GetCharacter() = 0;
    virtual int GetLastRow() = 0;
    virtual bool Move(int row, int col) = 0;
    virtual bool MoveRelative(int deltaRow, int deltaCol) = 0;
    virtual void MoveBOL() = 0;
    virtual void MoveEOL() = 0;
    virtual bool IsWhiteSpace() = 0;
    // Inserts at the cursor, replacing the marked block if there is one, as one step of undo;
    // the cursor ends after the text. With AutoIndent on, each new line starts at the
    // indentation of the line before it. Raises on a read-only buffer.
    virtual void InsertText(const std::string& text) = 0;
    virtual void InsertCharacter(char c) = 0;
    virtual void Delete(int count) = 0;
    virtual void BackspaceDelete(int count) = 0;
    virtual std::string Read(int count) = 0;
};

class IOTAEditActions : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{ACBD5BB3-E7FA-4168-A94B-4A47BC582F2B}")
    // Closes the page of the edit window that shows this view, as File|Close would: a modified
    // module asks first.
    virtual void ClosePage() = 0;
};

class INTAEditWindow : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{BB26D064-0B49-4BE3-895C-8248ABD7A5B7}")
    virtual QWidget* GetForm() = 0;
};

// ---------------------------------------------------------------------------------------------
// Form editors and designers

class IOTAFormEditor : public virtual IOTAEditor {
    OTA_INTERFACE(IOTAEditor, "{F17A7BD2-E07D-11D1-AB0B-00C04FB16FB3}")
    virtual _di_IOTAComponent GetRootComponent() = 0;
    virtual _di_IOTAComponent FindComponent(const std::string& name) = 0;
    virtual _di_IOTAComponent GetComponentFromHandle(TOTAHandle handle) = 0;
    virtual int GetSelCount() = 0;
    virtual _di_IOTAComponent GetSelComponent(int index) = 0;
};

// The native side of a form editor: its designer.
class INTAFormEditor : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{56931EB9-329A-D411-87C6-9B2730412200}")
    virtual _di_IDesigner GetFormDesigner() = 0;
};

class IDesigner : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{41F878DD-5902-46E6-87E0-186498BA39AA}")
    // The designed root: the form, data module or frame.
    virtual TDesignComponent* GetRoot() = 0;
    // Tells the designer that the root changed; the module becomes modified.
    virtual void Modified() = 0;
};

// One component on a form editor. The handle identifies the component for as long as it exists.
class IOTAComponent : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{849BC0A2-78E5-4E70-898C-30874E758F48}")
    virtual std::string GetComponentType() = 0; // the class name
    virtual TOTAHandle GetComponentHandle() = 0;
    virtual _di_IOTAComponent GetParent() = 0;
    virtual bool IsTControl() = 0;
    // The properties the component stores and the other published properties of its class.
    virtual int GetPropCount() = 0;
    virtual std::string GetPropName(int index) = 0;
    // The value as a form file writes it; for a published property the component does not
    // store, its default. False when the component has no such property.
    virtual bool GetPropValueByName(const std::string& name, std::string& value) = 0;
    virtual bool SetPropByName(const std::string& name, const std::string& value) = 0;
    virtual int GetControlCount() = 0;
    virtual _di_IOTAComponent GetControl(int index) = 0;
    virtual int GetComponentCount() = 0;
    virtual _di_IOTAComponent GetComponent(int index) = 0;
    // Selects the component in the designer, adding to the selection or replacing it.
    virtual bool Select(bool addToSelection) = 0;
    // Selects it and brings its form up.
    virtual bool Focus(bool addToSelection) = 0;
};

// ---------------------------------------------------------------------------------------------
// Modules and projects

class IOTAModule : public virtual IOTANotifier {
    OTA_INTERFACE(IOTANotifier, "{4D188646-3A82-4F79-8496-5E0B1127DD9E}")
    virtual std::string GetFileName() = 0;
    virtual int GetModuleFileCount() = 0;
    virtual _di_IOTAEditor GetModuleFileEditor(int index) = 0;
    // The projects that hold this module.
    virtual int GetOwnerCount() = 0;
    virtual _di_IOTAProject GetOwner(int index) = 0;
    virtual _di_IOTAEditor GetCurrentEditor() = 0;
    // Closes the module; a modified one asks first, and false means the user kept it open.
    virtual bool Close() = 0;
    // Closes the module; with forceClosed nothing is asked and changes are dropped.
    virtual bool CloseModule(bool forceClosed) = 0;
    // Saves the module's files; with forceSave also files that are not modified.
    virtual bool Save(bool childrenOnly, bool forceSave) = 0;
    virtual void Show() = 0;
};

class IOTAModuleInfo : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{DE958FCF-B542-458F-A1AB-6C7F90B5CDB7}")
    virtual TOTAModuleType GetModuleType() = 0;
    virtual std::string GetName() = 0;        // the unit name
    virtual std::string GetFileName() = 0;    // the source file, with its path
    virtual std::string GetFormName() = 0;    // the form's component name, empty without a form
    virtual std::string GetDesignClass() = 0; // the form's base class for custom modules
    // Opens the module, or gives it if it is open.
    virtual _di_IOTAModule OpenModule() = 0;
};

class IOTAProject : public virtual IOTAModule {
    OTA_INTERFACE(IOTAModule, "{06C88136-F367-4D47-B8B4-CCACB3D7439A}")
    virtual int GetModuleCount() = 0;
    virtual _di_IOTAModuleInfo GetModule(int index) = 0;
    virtual _di_IOTAModuleInfo FindModuleInfo(const std::string& fileName) = 0;
    virtual _di_IOTAProjectGroup GetProjectGroup() = 0;
};

class IOTAProjectGroup : public virtual IOTAModule {
    OTA_INTERFACE(IOTAModule, "{F17A7BCB-E07D-11D1-AB0B-00C04FB16FB3}")
    virtual _di_IOTAProject GetActiveProject() = 0;
    virtual void SetActiveProject(const _di_IOTAProject& project) = 0;
    virtual int GetProjectCount() = 0;
    virtual _di_IOTAProject GetProject(int index) = 0;
};

// The project's resource file, one of the project module's editors.
class IOTAProjectResource : public virtual IOTAEditor {
    OTA_INTERFACE(IOTAEditor, "{26EB0E52-F97B-11D1-AB27-00C04FB16FB3}")
    virtual int GetEntryCount() = 0;
    // The entry's type and name as "TYPE/NAME"; numbered ones as "#n".
    virtual std::string GetEntryName(int index) = 0;
};

// ---------------------------------------------------------------------------------------------
// Services

class IOTAModuleServices : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{F17A7BCD-E07D-11D1-AB0B-00C04FB16FB3}")
    virtual int GetModuleCount() = 0;
    virtual _di_IOTAModule GetModule(int index) = 0;
    virtual _di_IOTAModule CurrentModule() = 0;
    virtual _di_IOTAModule FindModule(const std::string& fileName) = 0;
    virtual bool CloseAll() = 0;
    virtual bool SaveAll() = 0;
};

class IOTAEditorServices : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{C2812BA7-C48D-11D2-9AE8-00A02457621F}")
    virtual _di_IOTAEditBuffer GetTopBuffer() = 0;
    virtual _di_IOTAEditView GetTopView() = 0;
};

class IOTAServices : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{577ECE00-59EE-4F21-8190-9FD8A45FE550}")
    virtual int AddNotifier(const _di_IOTAIDENotifier& notifier) = 0;
    virtual void RemoveNotifier(int index) = 0;
    // "dfm" for the platform's forms, "xfm" for cross-platform ones; empty with no designer.
    virtual std::string GetActiveDesignerType() = 0;
    virtual std::string GetBaseRegistryKey() = 0;
};

class IOTAActionServices : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{F17A7BC9-E07D-11D1-AB0B-00C04FB16FB3}")
    virtual bool OpenFile(const std::string& fileName) = 0;
    virtual bool OpenProject(const std::string& projName, bool newProjGroup) = 0;
    virtual bool CloseFile(const std::string& fileName) = 0;
    virtual bool SaveFile(const std::string& fileName) = 0;
};

// The IDE's own widgets.
class INTAServices : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{C17B3DF1-DFE5-11D2-A8C7-00C04FA32F53}")
    virtual QMenuBar* GetMainMenu() = 0;
    // The widget that carries the IDE's actions: its actions() are the action list, and an
    // action added to it is live with its shortcut.
    virtual QWidget* GetActionList() = 0;
    virtual QToolBar* GetToolBar(const std::string& toolBarName) = 0;
    // The image list of the main menu: the pictures its items show by index. A null icon for an
    // index out of range.
    virtual int GetImageCount() = 0;
    virtual QIcon GetImage(int index) = 0;
};

class IOTAKeyboardServices : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{F8CAF8D5-D263-11D2-ABD8-00C04FB16FB3}")
    // Lets the binding bind its keys; the result is the binding's index, -1 on failure.
    virtual int AddKeyboardBinding(const _di_IOTAKeyboardBinding& binding) = 0;
    virtual void RemoveKeyboardBinding(int index) = 0;
};

class IOTAKeyboardBinding : public virtual IOTANotifier {
    OTA_INTERFACE(IOTANotifier, "{9FBA8CE4-DDF7-48B0-AF3A-532C03CEC888}")
    virtual TBindingType GetBindingType() = 0;
    virtual std::string GetDisplayName() = 0;
    virtual std::string GetName() = 0;
    virtual void BindKeyboard(const _di_IOTAKeyBindingServices& bindingServices) = 0;
};

class IOTAKeyBindingServices : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{588C93F7-8AA4-4D33-BA59-302CB3C06187}")
    // Binds the key sequence to proc. False when a key of it is zero or proc is empty.
    virtual bool AddKeyBinding(const std::vector<TShortCut>& keys, TKeyBindingProc proc,
                               void* context, int flags, const std::string& keyboard,
                               const std::string& menuItemName) = 0;
};

class IOTAKeyContext : public virtual rtl::IInterface {
    OTA_INTERFACE(rtl::IInterface, "{45E79CA1-636C-4BF7-B395-B39D0B293058}")
    virtual void* GetContext() = 0;
    virtual _di_IOTAEditBuffer GetEditBuffer() = 0;
    virtual _di_IOTAKeyboardServices GetKeyboardServices() = 0;
};

// ---------------------------------------------------------------------------------------------
// Base class of notifiers: counted, with the four notifications of IOTANotifier doing nothing.

class TNotifierObject : public TInterfacedObject, public virtual IOTANotifier {
    RTL_CLASS(TNotifierObject, TInterfacedObject)
public:
    HRESULT QueryInterface(const TGUID& iid, void** obj) override {
        return QueryInterfaces<IOTANotifier>(this, iid, obj);
    }
    void AfterSave() override {}
    void BeforeSave() override {}
    void Destroyed() override {}
    void Modified() override {}
};

// ---------------------------------------------------------------------------------------------
// What the host provides

// The IDE's services, set by the host before it loads the add-in and cleared when it unloads it.
extern _di_IBorlandIDEServices BorlandIDEServices;

// The service I of BorlandIDEServices, or empty.
template <class I> DelphiInterface<I> IDEService() {
    return Query<I>(BorlandIDEServices);
}

// Hands the add-in's wizard to the host, which keeps it until it unloads the add-in. False when
// no host takes wizards.
bool RegisterPackageWizard(const _di_IOTAWizard& wizard);

// The host's side of RegisterPackageWizard.
using TRegisterWizardProc = std::function<bool(const _di_IOTAWizard& wizard)>;
void SetRegisterWizardProc(TRegisterWizardProc proc);

} // namespace ToolsAPI
