#include "host/ExpMng.h"

#include "about/About.h"
#include "foundation/AppUtils.h"
#include "foundation/Dialogs.h"
#include "host/ExpEditor.h"
#include "host/ExpMenu.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "rtl/Registry.h"
#include "rtl/SysUtils.h"

#include <dlfcn.h>
#include <unistd.h>

#include <memory>

namespace zelvane {

using namespace rtl;
using ToolsAPI::Application;
using ToolsAPI::Screen;

RTL_IMPLEMENT_CLASS(EExpMngError)

RTL_BEGIN_CLASS(TCustomExpert)
Implements<ICustomExpert>();
RTL_END_CLASS

RTL_BEGIN_CLASS(TExpManager)
Method<&TExpManager::FormChange>("FormChange");
Method<&TExpManager::ShowAbout>("ShowAbout");
Method<&TExpManager::CommonExpertExecProc>("CommonExpertExecProc");
Method<&TExpManager::LoadDefaultSettings>("LoadDefaultSettings");
Method<&TExpManager::SelectLanguage>("SelectLanguage");
Method<&TExpManager::SelectDefaultLanguage>("SelectDefaultLanguage");
Method<&TExpManager::EditLangModules>("EditLangModules");
RTL_END_CLASS

std::string ModuleDir;
bool ErrorLogEnabled = true;
uint32_t MaxLogSizeKB = 50;
std::string ConstructorTrace;
std::string CreatedExperts;
std::string DestructorTrace;
std::string DeletedExperts;
TPrivateExecProc pPrivateExecProc = nullptr;

namespace {

// The table lives from the package's load to its unload.
std::unique_ptr<std::vector<TExpClassEntry>> classTable;
std::unique_ptr<TExpData> expDataOwner;

// The languages the add-in knows by default, as "name=file" entries.
constexpr const char* DefaultLocaleModules =
    "Russian=zelv_rus.dll,English=zelv_eng.dll,German=zelv_ger.dll";

} // namespace

// The directory of the file this function's code was loaded from: the package.
std::string PackageDir() {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void*>(&PackageDir), &info) || !info.dli_fname) return {};
    return ExtractFilePath(info.dli_fname);
}

namespace {

// Where the settings file and the error log go: beside the package, or, where the package is
// installed in a directory the user may not write (a system's library directory), the user's
// own configuration directory.
std::string SettingsDir() {
    std::string dir = PackageDir();
    if (dir.empty() || access(dir.c_str(), W_OK) == 0) return dir;
    std::string user = UserConfigDir();
    if (user.empty() || !ForceDirectories(user)) return dir;
    return IncludeTrailingPathDelimiter(user);
}

std::unique_ptr<TRegistry> GetRegKey(bool canCreate) {
    auto reg = std::make_unique<TRegistry>(0x2001F);
    reg->RootKey = HKEY_CURRENT_USER;
    if (!reg->OpenKey(ExpRegKey, canCreate)) return nullptr;
    return reg;
}

// The source of a log record: the component's name and class, or the class.
std::string SourceText(TObject* sender) {
    if (!sender) return "Unknown";
    if (auto* c = dynamic_cast<TComponent*>(sender); c && !c->Name().empty())
        return c->Name() + ": " + c->ClassName();
    return sender->ClassName();
}

void AppendTrace(std::string& text, const char* start, std::string& trace, std::string& experts,
                 const char* finish) {
    if (trace.empty()) return;
    text += std::string("\r\n") + start + "\r\n" + trace + "\r\n" + experts + "\r\n" + finish;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// The table of expert classes

std::vector<TExpClassEntry>& ExpClassTable() {
    if (!classTable)
        classTable = std::make_unique<std::vector<TExpClassEntry>>(ExpClassTableLength);
    return *classTable;
}

void RegisterExpClass(TClass expClass, int slot, const std::string& name, int32_t nameID) {
    std::vector<TExpClassEntry>& table = ExpClassTable();
    if (slot < 1 || slot > int(table.size()))
        CreateException<EExpMngError>(SListIndexError, {slot});
    TExpClassEntry& entry = table[size_t(slot - 1)];
    if (entry.ExpClass)
        CreateException<EExpMngError>("Expert\x92s group %d is already defined.", {slot});
    for (const TExpClassEntry& e : table) {
        if (!e.ExpClass) continue;
        if (e.ExpClass == expClass)
            CreateException<EExpMngError>("Expert of class %s is already defined.",
                                          {expClass->Name});
        if (e.ExpName == name)
            CreateException<EExpMngError>("Expert\x92s name %s is already defined.", {name});
    }
    entry = {expClass, name, nameID};
}

// ---------------------------------------------------------------------------------------------
// The package

void InitExpMngUnit() {
    if (!expDataOwner) expDataOwner = std::make_unique<TExpData>();
    ExpData = expDataOwner.get();
    ModuleDir = SettingsDir();
    SaveSpcProc = &ExpSaveSpc;
    ExpClassTable();
}

void RecreateExpData() {
    ExpData = nullptr;
    expDataOwner = std::make_unique<TExpData>();
    ExpData = expDataOwner.get();
}

void DoneExpMngUnit() {
    classTable.reset();
    ExpData = nullptr;
    expDataOwner.reset();
    SaveSpcProc = &SaveSpcInner;
    for (std::string* s : {&ConstructorTrace, &CreatedExperts, &DestructorTrace, &DeletedExperts})
        s->clear();
}

// ---------------------------------------------------------------------------------------------
// The error log

void AddErrorLogRecord(TObject* Sender) {
    if (!ErrorLogEnabled) return;
    std::string text = "\r\n[ " + DateTimeToStr(Now()) + " ]\r\n" + GetFullExceptionStr() +
                       "\r\nSource object: " + SourceText(Sender);
    AppendTrace(text, "< Start constructor >", ConstructorTrace, CreatedExperts,
                "< Finish constructor >");
    AppendTrace(text, "< Start destructor >", DestructorTrace, DeletedExperts,
                "< Finish destructor >");
    for (std::string* s : {&ConstructorTrace, &CreatedExperts, &DestructorTrace, &DeletedExperts})
        s->clear();
    try {
        AddLogData(ModuleDir + ErrorLogName, text, int64_t(MaxLogSizeKB) * 1024);
    } catch (...) {
        // A log that can't be written must not turn one failure into two.
    }
}

void CheckAddErrorLog(TObject* Sender) {
    try {
        throw;
    } catch (const Exception&) {
        return; // the application's exception event writes it
    } catch (...) {
    }
    if (QWidget* captured = ToolsAPI::GetCapture())
        ToolsAPI::SendMessage(captured, ToolsAPI::WM_CANCELMODE, 0, 0);
    AddErrorLogRecord(Sender);
}

// ---------------------------------------------------------------------------------------------
// Experts

HRESULT TCustomExpert::QueryInterface(const TGUID& iid, void** obj) {
    return GetInterface(iid, obj) ? S_OK : E_NOINTERFACE;
}

int TExpObjectList::IndexOf(const std::string& name) const {
    for (size_t i = 0; i < items_.size(); ++i)
        if (items_[i].ExpName == name) return int(i);
    return -1;
}

int TExpObjectList::IndexOf(const TCustomExpert* expert) const {
    for (size_t i = 0; i < items_.size(); ++i)
        if (items_[i].Expert == expert) return int(i);
    return -1;
}

// ---------------------------------------------------------------------------------------------
// The manager: start

void TExpManager::Mark(std::string& trace, const char* mark) {
    trace += mark;
}

TExpManager::TExpManager() {
    try {
        ConstructorTrace = "0";
        StartLanguage();
        StartObjects();
        StartExperts();
        StartSettings();
        StartMenu();
        Mark(ConstructorTrace, " 18");
    } catch (...) {
        CheckAddErrorLog(this);
        if (Application) Application->HandleException(this);
    }
}

// Language first, so that every caption made below is already translated.
void TExpManager::StartLanguage() {
    CreatedExperts.clear();
    DestructorTrace.clear();
    DeletedExperts.clear();
    localeDir_.clear();
    currentLocale_.clear();
    localeModules_ = DefaultLocaleModules;
    ProcessLocalization();
}

// The settings object, the hidden window, the list of experts.
void TExpManager::StartObjects() {
    Mark(ConstructorTrace, " 1");
    data_ = std::make_unique<TExpManagerData>(this);
    Mark(ConstructorTrace, " 3");
    handle_ = ToolsAPI::AllocateHWnd([this](ToolsAPI::TMessage& m) { WndProc(m); });
    Mark(ConstructorTrace, " 4");
    expObjects_.Clear();
    Mark(ConstructorTrace, " 5");
    editor_ = std::make_unique<TExpertEditor>();
}

// Which experts exist and are active, then the active ones, made and asked for their items.
void TExpManager::StartExperts() {
    Mark(ConstructorTrace, " 6");
    FillPresentList();
    Mark(ConstructorTrace, " 7");
    AddStoredData(data_.get(), "ExpManagerData", LocaleStr(SExpertsManager),
                  GetLocalPropNames());
    Mark(ConstructorTrace, " 8");
    LoadExpData();
    Mark(ConstructorTrace, " 9");
    CreateExpObjects();
    Mark(ConstructorTrace, " 10");
    if (auto reg = GetRegKey(true); reg && !reg->ValueExists(ExpVersionValue))
        reg->WriteString(ExpVersionValue, ExpVersion);
    Mark(ConstructorTrace, " 11");
    InitExperts();
    Mark(ConstructorTrace, " 12");
    LocalizeEditor();
    Mark(ConstructorTrace, " 13");
    PrepareEditor();
}

void TExpManager::StartSettings() {
    Mark(ConstructorTrace, " 14");
    LoadSettings();
}

// The second load gives the experts their stored values. A failure here is reported, and the
// experts start from their defaults.
void TExpManager::LoadSettings() {
    try {
        LoadNotify(LoadExpData());
        data_->ExpertVersion = ExpVersion;
    } catch (...) {
        CheckAddErrorLog(this);
        if (Application) Application->HandleException(this);
        LoadNotify(false);
    }
}

// The menu waits for the first turn of the IDE's message loop.
void TExpManager::StartMenu() {
    Mark(ConstructorTrace, " 15");
    ToolsAPI::PostMessage(handle_, WM_BUILDMENU, 0, 0);
    HookActiveFormChange();
    Mark(ConstructorTrace, " 16");
    Mark(ConstructorTrace, " 17");
    if (Application) {
        OwnerWnd = Application->GetHandle();
        DialogCaption = Application->GetTitle();
    }
    pPrivateExecProc = &TExpManager::PrivateExpertExecProc;
}

// The labels of the manager's own settings in the settings editor.
std::string TExpManager::GetLocalPropNames() {
    return LabelTemplate("TExpManagerData", {{"ExpertVersion", SLabelExpertVersion},
                                             {"AutoSaveSettings", SLabelAutoSaveSettings},
                                             {"MainMenuSearchItem", SLabelMainMenuSearchItem},
                                             {"InsertMenuBeforeItem", SLabelInsertMenuBefore},
                                             {"MenuHaveLineBefore", SLabelMenuLineBefore},
                                             {"MenuHaveLineAfter", SLabelMenuLineAfter},
                                             {"ErrorLogAllowed", SLabelErrorLogAllowed},
                                             {"MaxLogSize", SLabelMaxLogSize}});
}

void TExpManager::FillPresentList() {
    TActiveExperts* active = ExpData->ActiveExperts();
    active->Clear();
    for (const TExpClassEntry& e : ExpClassTable()) {
        if (!e.ExpClass) continue;
        TExpertInfo* info = active->Add(e.ExpName);
        info->Active = true;
        info->SetNodeName(e.NameID == -1 ? e.ExpName : LocaleStr(e.NameID));
    }
}

void TExpManager::RegisterExpObject(TCustomExpert* expert, const std::string& name) {
    if (expObjects_.IndexOf(expert) < 0) expObjects_.Add(expert, name);
}

void TExpManager::CreateExpObjects() {
    CreatedExperts.clear();
    expObjects_.Clear();
    for (const TExpClassEntry& e : ExpClassTable()) {
        if (!e.ExpClass) continue;
        TExpertInfo* info = ExpData->ActiveExperts()->Find(e.ExpName);
        if (!info || !info->Active) continue;
        std::unique_ptr<TCustomExpert> expert = CreateInstanceOf<TCustomExpert>(e.ExpClass);
        RegisterExpObject(expert.get(), e.ExpName);
        experts_.push_back(std::move(expert));
        CreatedExperts += (CreatedExperts.empty() ? "" : "\r\n") + e.ExpName;
    }
}

void TExpManager::InitExperts() {
    for (int i = 0; i < expObjects_.Count(); ++i)
        if (auto* e = Supports<ICustomExpert>(expObjects_.Get(i).Expert)) e->Init(&AddItem);
    Init(&AddItem);
}

void TExpManager::LoadNotify(bool loaded) {
    for (int i = 0; i < expObjects_.Count(); ++i)
        if (auto* e = Supports<ICustomExpert>(expObjects_.Get(i).Expert)) e->Load(loaded);
}

void TExpManager::MenuNotify(TExpMenuItem* item, TExpMenuItemData* itemData) {
    for (int i = 0; i < expObjects_.Count(); ++i)
        if (auto* e = Supports<ICustomExpert>(expObjects_.Get(i).Expert))
            e->MenuNotification(item, itemData);
    MenuNotification(item, itemData);
}

// The manager's own items come after every expert's: the settings, whose submenu is made as the
// item is, and the about box.
void TExpManager::Init(TAddItemFunc AddItem) {
    TExpMenuItemData* settings = AddItem("SettingItem");
    settings->HaveLineBefore = true;
    settings->Caption = "Settings";
    TExpMenuItemData* about = AddItem("AboutFormItem");
    about->Caption = "About...";
    about->ImageIndex = 50;
    about->OnExecute = TNotifyEvent::Of<&TExpManager::ShowAbout>(this);
}

void TExpManager::MenuNotification(TExpMenuItem* Item, TExpMenuItemData* ItemData) {
    if (ItemData->ItemID == "SettingItem") CreateSettingSubMenu(Item);
}

void TExpManager::ShowAbout(TObject* Sender) {
    zelvane::ShowAbout();
}

// ---------------------------------------------------------------------------------------------
// The manager: messages and hooks

void TExpManager::WndProc(ToolsAPI::TMessage& message) {
    switch (message.Msg) {
    case WM_APPLYSETTINGS:
        ApplySettings();
        break;
    case WM_RESTORELAYOUT:
        // The saved layout would come back here; see SetEngLayout.
        break;
    case WM_BUILDMENU:
        SetEngLayout();
        CreateExpertMenu();
        SetActiveLayout();
        break;
    default:
        message.Result = 0;
    }
}

void TExpManager::HookActiveFormChange() {
    if (!Screen || formChangeHooked_) return;
    oldOnActiveFormChange_ = Screen->GetOnActiveFormChange();
    Screen->SetOnActiveFormChange(TNotifyEvent::Of<&TExpManager::FormChange>(this));
    formChangeHooked_ = true;
}

void TExpManager::UnHookActiveFormChange() {
    if (!Screen || !formChangeHooked_) return;
    Screen->SetOnActiveFormChange(oldOnActiveFormChange_);
    formChangeHooked_ = false;
}

void TExpManager::FormChange(TObject* Sender) {
    if (oldOnActiveFormChange_) oldOnActiveFormChange_(Sender);
    if (!layoutSwitched_) return;
    SetActiveLayout();
    layoutSwitched_ = false;
}

// This platform names keys by their codes whatever the keyboard layout, and gives a program no
// layout to switch: the switch to English is empty. Its way back keeps its posted message, so
// that the work that runs between the two, and the order of the messages, stay as they are.
void TExpManager::SetEngLayout() {}

void TExpManager::SetActiveLayout() {
    ToolsAPI::PostMessage(handle_, WM_RESTORELAYOUT, 0, 0);
}

// ---------------------------------------------------------------------------------------------
// The manager: stop

TExpManager::~TExpManager() {
    try {
        DestructorTrace = "0";
        pPrivateExecProc = nullptr;
        Mark(DestructorTrace, " 1");
        StopSettings();
        StopExperts();
        StopObjects();
    } catch (...) {
        CheckAddErrorLog(this);
        if (Application) Application->HandleException(this);
    }
}

// Settings are saved while the experts live, so that their live objects are what is written.
void TExpManager::StopSettings() {
    ToolsAPI::DeallocateHWnd(handle_);
    handle_ = nullptr;
    Mark(DestructorTrace, " 3");
    if (data_ && data_->AutoSaveSettings) SaveExpData();
    Mark(DestructorTrace, " 4");
}

void TExpManager::StopExperts() {
    DeleteExpertMenu();
    Mark(DestructorTrace, " 5");
    DeleteExpObjects();
    Mark(DestructorTrace, " 6");
    UnHookActiveFormChange();
    Mark(DestructorTrace, " 7");
}

void TExpManager::StopObjects() {
    expObjects_.Clear();
    Mark(DestructorTrace, " 8");
    // The manager's settings leave the tree before they go.
    RemoveStoredData(data_.get());
    data_.reset();
    Mark(DestructorTrace, " 9");
    editor_.reset();
    Mark(DestructorTrace, " 10");
    SaveLocalization();
    Mark(DestructorTrace, " 11");
}

void TExpManager::DeleteExpObjects() {
    DeletedExperts.clear();
    for (int i = expObjects_.Count() - 1; i >= 0; --i) {
        const TExpObjectInfo& info = expObjects_.Get(i);
        if (static_cast<TObject*>(info.Expert) == static_cast<TObject*>(this)) continue;
        std::string name = info.ExpName;
        auto it = std::find_if(experts_.begin(), experts_.end(),
                               [&](const auto& e) { return e.get() == info.Expert; });
        RemoveStoredData(info.Expert);
        if (it != experts_.end()) experts_.erase(it);
        DeletedExperts += (DeletedExperts.empty() ? "" : "\r\n") + name;
    }
    expObjects_.Clear();
}

// ---------------------------------------------------------------------------------------------
// The language state in the registry

void TExpManager::ProcessLocalization() {
    auto reg = GetRegKey(true);
    if (!reg) return;
    auto readOrWrite = [&](const char* name, std::string& value) {
        if (reg->ValueExists(name))
            value = reg->ReadString(name);
        else
            reg->WriteString(name, value);
    };
    readOrWrite(ExpLocaleDirValue, localeDir_);
    readOrWrite(ExpLocaleModulesValue, localeModules_);
    readOrWrite(ExpCurrentLocaleValue, currentLocale_);
    if (currentLocale_.empty()) return;
    if (FileExists(currentLocale_))
        LoadNewLanguage(currentLocale_);
    else
        currentLocale_.clear();
}

void TExpManager::SaveLocalization() {
    auto reg = GetRegKey(true);
    if (!reg) return;
    reg->WriteString(ExpLocaleDirValue, localeDir_);
    reg->WriteString(ExpLocaleModulesValue, localeModules_);
    reg->WriteString(ExpCurrentLocaleValue, currentLocale_);
}

HRESULT TExpManager::QueryInterface(const TGUID& iid, void** obj) {
    return ToolsAPI::QueryInterfaces<ToolsAPI::IOTAWizard>(this, iid, obj);
}

// ---------------------------------------------------------------------------------------------
// The entry

TExpMenuItemData* AddItem(const std::string& itemID) {
    return ExpData->MenuData()->Add(itemID);
}

void RegisterManager() {
    auto manager = ToolsAPI::MakeInterfaced<TExpManager>();
    ToolsAPI::RegisterPackageWizard(ToolsAPI::_di_IOTAWizard(manager.get()));
}

} // namespace zelvane
