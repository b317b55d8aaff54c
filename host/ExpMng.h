// Unit ExpMng: the spine of the add-in. It holds the table of expert classes, the one
// TExpManager that the IDE keeps as the package's wizard, the base class of every expert, the
// error log, and the posted messages by which work leaves the IDE's call stack.
//
// Start (TExpManager's constructor) runs in named phases: language, settings object, hidden
// window, expert list, present list, first load of the settings (which experts are active),
// creation of the active experts in slot order, their Init, second load and Load, and the post
// of the message that builds the menu on the first turn of the IDE's message loop. Stop runs the
// other way: save, menu, experts last to first, hooks, objects, language. Each step leaves a
// mark in a trace string that the next error log record prints.
//
// Ownership: the IDE owns the manager (a counted wizard); the manager owns the experts (freed
// last to first), its settings object, its menu and its hidden window. The table of classes,
// ExpData and ModuleDir belong to the package and live from its load to its unload.
//
// Raises: EExpMngError from RegisterExpClass only. Everything else that goes wrong while the
// manager starts or stops is written to the error log and reported through the application.
#pragma once

#include "host/ExpData.h"
#include "toolsapi/Forms.h"
#include "toolsapi/ToolsAPI.h"

#include <memory>
#include <string>
#include <vector>

class QAction;
class QMenu;

namespace zelvane {

class TExpertEditor;

RTL_EXCEPTION(EExpMngError, Exception)

class TExpMenuItem;
class TExpAction;
class TExpManager;

// Adds an item with that id to ExpData's menu data and returns it for the expert to fill.
using TAddItemFunc = TExpMenuItemData* (*)(const std::string& itemID);

// What the manager asks of every expert.
class ICustomExpert : public rtl::IInterface {
public:
    // {D4455D5C-0638-401F-9A4D-42DFB2F5252A}
    static constexpr rtl::TGUID IID{
        0xD4455D5C, 0x0638, 0x401F, {0x9A, 0x4D, 0x42, 0xDF, 0xB2, 0xF5, 0x25, 0x2A}};
    // Adds the expert's menu items.
    virtual void Init(TAddItemFunc AddItem) = 0;
    // After the second load of the settings; false when there was no settings file.
    virtual void Load(bool Loaded) = 0;
    // For each menu item as it is made, so that an expert can hang a submenu under it.
    virtual void MenuNotification(TExpMenuItem* Item, TExpMenuItemData* ItemData) = 0;

protected:
    ~ICustomExpert() = default;
};

// The base of every expert. Made through its class's virtual constructor from the table; not
// reference counted: the manager frees experts explicitly. A settings object of the free part of
// the tree, so that an expert can register itself with AddStoredData.
class TCustomExpert : public TNestedObject, public ICustomExpert {
    RTL_CLASS(TCustomExpert, TNestedObject)
public:
    TCustomExpert() = default;

    void Init(TAddItemFunc AddItem) override {}
    void Load(bool Loaded) override {}
    void MenuNotification(TExpMenuItem* Item, TExpMenuItemData* ItemData) override {}

    rtl::HRESULT QueryInterface(const rtl::TGUID& iid, void** obj) override;
    int32_t _AddRef() override { return -1; }
    int32_t _Release() override { return -1; }
};

// ---------------------------------------------------------------------------------------------
// The table of expert classes

// One slot: the class (nullptr when free), its internal name (the key of its TExpertInfo) and
// the text number of its display name (-1: the internal name is shown).
struct TExpClassEntry {
    rtl::TClass ExpClass = nullptr;
    std::string ExpName;
    int32_t NameID = 0;
};

inline constexpr int ExpClassTableLength = 100;

// The table, 100 slots, allocated on first need.
std::vector<TExpClassEntry>& ExpClassTable();
// Fills a slot (1-based). EExpMngError for a slot out of range, a slot in use, a class or a
// name registered already.
void RegisterExpClass(rtl::TClass expClass, int slot, const std::string& name, int32_t nameID);

// ---------------------------------------------------------------------------------------------
// Package state

// The directory of the package, with its trailing delimiter: where the settings file and the
// error log stand. For a package the user may not write beside (one installed in the system's
// library directory) the user's configuration directory stands in its place.
extern std::string ModuleDir;
// The error log's switch and limit, copied from the manager's settings.
extern bool ErrorLogEnabled;
extern uint32_t MaxLogSizeKB;
// Marks of start and stop; the next log record prints them once.
extern std::string ConstructorTrace;
extern std::string CreatedExperts;
extern std::string DestructorTrace;
extern std::string DeletedExperts;

// Runs a procedure outside the menu path; set while a manager lives.
using TPrivateExecProc = void (*)(rtl::TObject* Sender, const rtl::TNotifyEvent& Proc);
extern TPrivateExecProc pPrivateExecProc;

// The package's load and unload: ExpData, ModuleDir, the settings editor's save routine and the
// class table, made and freed.
void InitExpMngUnit();
void DoneExpMngUnit();

// The name of the error log beside the package.
inline constexpr const char* ErrorLogName = "ExpError.log";
// Writes a log record for the exception being handled, when the log is on.
void AddErrorLogRecord(rtl::TObject* Sender);
// From a handler beside Application->HandleException: logs what is being raised when it is not
// an Exception (which HandleException reports through the exception event by itself).
void CheckAddErrorLog(rtl::TObject* Sender);

// ---------------------------------------------------------------------------------------------
// The list of live experts

struct TExpObjectInfo {
    TCustomExpert* Expert = nullptr; // not owned by the record
    std::string ExpName;
};

class TExpObjectList {
public:
    void Add(TCustomExpert* expert, const std::string& name) { items_.push_back({expert, name}); }
    const TExpObjectInfo& Get(int index) const { return items_.at(size_t(index)); }
    void Delete(int index) { items_.erase(items_.begin() + index); }
    void Clear() { items_.clear(); }
    int Count() const { return int(items_.size()); }
    // -1 when nothing matches.
    int IndexOf(const std::string& name) const;
    int IndexOf(const TCustomExpert* expert) const;

private:
    std::vector<TExpObjectInfo> items_;
};

// One record of the command table: the action and the procedure its command runs.
struct TExecProcRec {
    TExpAction* Action = nullptr; // not owned by the record
    rtl::TNotifyEvent Proc;
};
using TExecProcList = std::vector<TExecProcRec>;
// Actions the manager made, in the order it made them; it frees them after the items that show
// them.
using TExpActionList = std::vector<std::unique_ptr<TExpAction>>;

// ---------------------------------------------------------------------------------------------
// The manager

// The private messages of the manager's hidden window.
inline constexpr uint32_t WM_APPLYSETTINGS = 0xC001;
inline constexpr uint32_t WM_RESTORELAYOUT = 0xC002;
inline constexpr uint32_t WM_BUILDMENU = 0xC003;

class TExpManager : public ToolsAPI::TNotifierObject, public virtual ToolsAPI::IOTAWizard {
    RTL_CLASS(TExpManager, ToolsAPI::TNotifierObject)
public:
    TExpManager();
    ~TExpManager() override;

    rtl::HRESULT QueryInterface(const rtl::TGUID& iid, void** obj) override;

    // IOTAWizard: loaded, never run.
    std::string GetIDString() override { return "Zelvane.ServiceDelphiWizards"; }
    std::string GetName() override { return "Zelvane Wizard Pack"; }
    ToolsAPI::TWizardState GetState() override { return ToolsAPI::WizardState(ToolsAPI::wsEnabled); }
    void Execute() override {}
    std::string GetMenuText() { return "Test ..."; }

    // The experts
    void RegisterExpObject(TCustomExpert* expert, const std::string& name);
    void CreateExpObjects();
    void DeleteExpObjects();
    void InitExperts();
    void LoadNotify(bool loaded);
    void MenuNotify(TExpMenuItem* item, TExpMenuItemData* itemData);
    const TExpObjectList& ExpObjects() const { return expObjects_; }
    TExpManagerData* Data() const { return data_.get(); }

    // The manager's own menu items and their notification.
    void Init(TAddItemFunc AddItem);
    void MenuNotification(TExpMenuItem* Item, TExpMenuItemData* ItemData);
    void ShowAbout(rtl::TObject* Sender);

    // The screen's active form change, chained to the earlier handler.
    void HookActiveFormChange();
    void UnHookActiveFormChange();
    void FormChange(rtl::TObject* Sender);

    // The hidden window's procedure.
    void WndProc(ToolsAPI::TMessage& message);
    ToolsAPI::HWND Handle() const { return handle_; }

    // The keyboard layout while shortcuts are built and while the experts' menu is open: on
    // before, and back by the posted message 0xC002, so that it comes back after the work.
    void SetEngLayout();
    void SetActiveLayout();

    // Settings editing (ExpSettings.cpp). RecreateExperts makes the settings tree, the manager's
    // settings and the active experts anew and reads the settings file for them; the menu keeps
    // its items, inert, until ApplySettings rebuilds it on the posted message 0xC001, after the
    // command that asked for it has ended.
    void RecreateExperts();
    void DoRecreateExperts();
    void ApplySettings();
    void DoApplySettings();
    // "Load default": asks, then deletes the settings file and makes the experts anew from their
    // built-in defaults. Answered no, nothing changes.
    void LoadDefaultSettings(rtl::TObject* Sender);
    // The settings editor's translation table: the label sections of the shared settings
    // classes, then the templates the manager and the experts registered.
    static std::string TranslatingTable();
    // The settings dialog (ExpEditor.cpp): configured once at start, given its labels, and shown
    // by "Edit..." over the whole settings tree; a save makes the experts anew.
    TExpertEditor* Editor() const { return editor_.get(); }
    void PrepareEditor();
    void LocalizeEditor();
    void EditSettings2(rtl::TObject* Sender);

    // The submenus (ExpMenu.cpp): an item of a submenu, with its action when it has a command;
    // the settings submenu; a parent's items and their actions freed.
    TExpMenuItem* CreateNewItem(const std::string& caption, const rtl::TNotifyEvent& proc,
                                TExpMenuItem* parent, TExpActionList& list);
    void CreateSettingSubMenu(TExpMenuItem* parent);
    void ClearItems(TExpMenuItem* parent, TExpActionList& list);

    // Language selection (ExpLang.cpp). The language submenu lists the modules of LocaleModules
    // ("name=file" entries) whose file is in the language directory; choosing one loads it and
    // makes the experts anew in that language.
    void CreateLangSubMenu(TExpMenuItem* parent);
    void SetActiveLanguageItem(TExpMenuItem* parent);
    void SelectLanguage(rtl::TObject* Sender);
    void SelectDefaultLanguage(rtl::TObject* Sender);
    void EditLangModules(rtl::TObject* Sender);
    // A language's name as the current language writes it (text 50514), and back.
    static std::string TranslateLangName(const std::string& name);
    static std::string RetranslateLangName(const std::string& display);
    // Where the language modules are: LocaleDir, or the package's own directory.
    std::string LanguageDir() const;
    TExpMenuItem* LangItem() const { return langItem_; }

    // The menu (ExpMenu.cpp).
    void CreateExpertMenu();
    void DeleteExpertMenu();
    void ExpMenuClick(QMenu* menu);
    bool FindExecProc(const TExpAction* action, rtl::TNotifyEvent& proc) const;
    void CommonExpertExecProc(rtl::TObject* Sender);
    static void PrivateExpertExecProc(rtl::TObject* Sender, const rtl::TNotifyEvent& Proc);
    TExpMenuItem* TopItem() const { return topItem_.get(); }
    const TExecProcList& ExecProcs() const { return execProcs_; }

private:
    // Start and stop, phase by phase.
    void StartLanguage();
    void StartObjects();
    void StartExperts();
    void StartSettings();
    void StartMenu();
    void LoadSettings();
    void StopSettings();
    void StopExperts();
    void StopObjects();
    void FillPresentList();
    static std::string GetLocalPropNames();
    void ProcessLocalization();
    void SaveLocalization();
    static void Mark(std::string& trace, const char* mark);

    // The menu's steps (ExpMenu.cpp).
    void AddTopMMenuItem();
    void AddMMenuItems();
    TExpAction* NewAction(const std::string& caption, TExpActionList& list);

    TExpActionList expActions_;
    TExpActionList langActions_;
    TExpActionList settingActions_;
    std::unique_ptr<TExpMenuItem> topItem_;
    std::unique_ptr<TExpMenuItem> lineBefore_;
    std::unique_ptr<TExpMenuItem> lineAfter_;
    ToolsAPI::HWND handle_ = nullptr;
    bool layoutSwitched_ = false;
    rtl::TNotifyEvent oldOnActiveFormChange_;
    bool formChangeHooked_ = false;
    std::vector<std::unique_ptr<TCustomExpert>> experts_;
    TExpObjectList expObjects_;
    std::unique_ptr<TExpManagerData> data_;
    std::unique_ptr<TExpertEditor> editor_;
    TExecProcList execProcs_;
    std::string localeDir_;
    std::string localeModules_;
    std::string currentLocale_;
    TExpMenuItem* langItem_ = nullptr; // a child of the settings item
    int itemCounter_ = 0;

    friend class TExpManagerData;
};

// The AddItem that the manager hands to the experts' Init.
TExpMenuItemData* AddItem(const std::string& itemID);

// The package's entry: makes the manager and hands it to the IDE.
void RegisterManager();

// The directory of the package's own file, with its trailing delimiter.
std::string PackageDir();
// Frees ExpData and makes a new, empty one.
void RecreateExpData();

} // namespace zelvane
