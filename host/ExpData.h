// Unit ExpData: the settings tree of the add-in and the file it lives in.
//
// All settings are one tree, the global ExpData (a TExpData): which experts are active, the
// experts' menu items, and a free part into which the manager and every expert register their
// own settings objects with AddStoredData. The tree is saved to "ExpData.spc" beside the package
// and read from it twice at start (see ExpMng.h). The tree owns its three collections; the
// objects registered in the free part belong to whoever registered them.
//
// Raises: EFixedCollectionError for an item key added twice, EFreeCollectionError for a node
// name registered twice (both from the persistence layer).
#pragma once

#include "persistence/PropTypes.h"
#include "persistence/Storage.h"
#include "specification/SpcMng.h"
#include "toolsapi/Forms.h"

#include <initializer_list>
#include <memory>
#include <string>

namespace zelvane {

class TExpManager;

// ---------------------------------------------------------------------------------------------
// The installed experts

// One expert the package knows: its internal name (the key) and whether it is created. The
// node name holds the display name.
class TExpertInfo : public TSpcItem {
    RTL_CLASS(TExpertInfo, TSpcItem)
public:
    explicit TExpertInfo(rtl::TCollection* collection = nullptr) : TSpcItem(collection) {}

    std::string ExpertName;
    bool Active = true;

    void Assign(rtl::TPersistent* source) override;
    std::string GetNodeName() override { return FNodeName; }
    bool NeedsIterate() override { return false; }
    bool NeedsTranslate() override { return false; }
};

class TActiveExperts : public TFixedCollection {
    RTL_CLASS(TActiveExperts, TFixedCollection)
public:
    using TConstructorArg = rtl::TPersistent;
    explicit TActiveExperts(rtl::TPersistent* owner = nullptr);

    std::string GetUpdateName() const override { return "ExpertName"; }
    std::string GetNodeName() override;
    bool NeedsTranslate() override { return false; }

    TExpertInfo* Add(const std::string& expertName);
    TExpertInfo* Expert(int index) const { return rtl::As<TExpertInfo>(GetItem(index)); }
    // The expert of that name (exact comparison), or nullptr.
    TExpertInfo* Find(const std::string& expertName) const;
};

// ---------------------------------------------------------------------------------------------
// The menu items

// One item of the experts' menu. The expert sets the caption, the picture and the events in
// code at each start; the separator and the hot key are settings the user may change, and are
// stored with the key.
class TExpMenuItemData : public TSpcItem {
    RTL_CLASS(TExpMenuItemData, TSpcItem)
public:
    explicit TExpMenuItemData(rtl::TCollection* collection = nullptr) : TSpcItem(collection) {}

    std::string ItemID;
    rtl::TNotifyEvent OnExecute;
    rtl::TNotifyEvent OnUpdate;
    std::string Caption;
    int32_t ImageIndex = -1;
    bool HaveLineBefore = false;
    TShortCutString ShortCutText;

    // Copies the key and the caption only: the rest is code's or the file's.
    void Assign(rtl::TPersistent* source) override;
    std::string GetNodeName() override { return Caption; }
    bool NeedsIterate() override { return false; }
    bool NeedsTranslate() override { return false; }
};

// Raised by nothing; kept as the menu unit's exception class.
RTL_EXCEPTION(ExpMenuItemError, Exception)

class TExpMenuData : public TFixedCollection {
    RTL_CLASS(TExpMenuData, TFixedCollection)
public:
    using TConstructorArg = rtl::TPersistent;
    explicit TExpMenuData(rtl::TPersistent* owner = nullptr);

    std::string GetUpdateName() const override { return "ItemID"; }
    std::string GetNodeName() override;
    bool NeedsTranslate() override { return false; }

    TExpMenuItemData* Add(const std::string& itemID);
    TExpMenuItemData* Item(int index) const { return rtl::As<TExpMenuItemData>(GetItem(index)); }
};

// ---------------------------------------------------------------------------------------------
// The settings objects of the manager and the experts

class TCustomDataItem : public TWrapperItem {
    RTL_CLASS(TCustomDataItem, TWrapperItem)
public:
    explicit TCustomDataItem(rtl::TCollection* collection = nullptr) : TWrapperItem(collection) {}

    std::string GetNodeName() override { return FNodeName; }
    bool NeedsIterate() override { return false; }
    bool NeedsTranslate() override { return false; }
};

class TCustomData : public TFreeCollection {
    RTL_CLASS(TCustomData, TFreeCollection)
public:
    using TConstructorArg = rtl::TPersistent;
    explicit TCustomData(rtl::TPersistent* owner = nullptr);

    std::string GetNodeName() override;
    bool NeedsTranslate() override { return false; }
};

// ---------------------------------------------------------------------------------------------
// The tree

// The root of the settings. The three collections are stored through DefineProperties as
// "ActiveExperts_", "MenuData_" and "CustomData_", always present, so that reading updates the
// items code made instead of rebuilding the collections.
class TExpData : public TSpcObject {
    RTL_CLASS(TExpData, TSpcObject)
public:
    TExpData();
    ~TExpData() override;

    TActiveExperts* ActiveExperts() const { return activeExperts_.get(); }
    TExpMenuData* MenuData() const { return menuData_.get(); }
    TCustomData* CustomData() const { return customData_.get(); }
    // The label templates gathered from AddStoredData; not stored.
    std::string LocalPropNames;

    void Assign(rtl::TPersistent* source) override;
    void DefineProperties(rtl::TFiler* filer) override;
    std::string GetNodeName() override;

private:
    std::unique_ptr<TActiveExperts> activeExperts_;
    std::unique_ptr<TExpMenuData> menuData_;
    std::unique_ptr<TCustomData> customData_;
};

// The saved state of the settings editor's form.
class TEditorFormData : public TSpcObject {
    RTL_CLASS(TEditorFormData, TSpcObject)
public:
    TEditorFormData();
    ~TEditorFormData() override;

    bool AutoSaveSetting = true;
    TShortCutString SaveSettingShortCut = "Ctrl+S";
    TMemoStrings* GetSetting() const { return setting_.get(); }
    void SetSetting(TMemoStrings* value);

    std::string GetNodeName() override;

private:
    std::unique_ptr<TMemoStrings> setting_;
};

// The manager's own settings. ErrorLogAllowed hooks the application's exception event with the
// error log while it is on; MaxLogSize is the log's limit in kilobytes.
class TExpManagerData : public TNestedObject {
    RTL_CLASS(TExpManagerData, TNestedObject)
public:
    explicit TExpManagerData(TExpManager* manager = nullptr);
    // Lets go of the application's exception event.
    ~TExpManagerData() override;

    std::string ExpertVersion = "1.0";
    bool AutoSaveSettings = true;
    std::string MainMenuSearchItem = "Tools";
    bool InsertMenuBeforeItem = true;
    bool MenuHaveLineBefore = false;
    bool MenuHaveLineAfter = false;
    bool GetErrorLogAllowed() const { return errorLogAllowed_; }
    void SetErrorLogAllowed(bool value);
    uint32_t GetMaxLogSize() const { return maxLogSize_; }
    void SetMaxLogSize(uint32_t value);
    TEditorFormData* GetEditorFormData() const { return editorFormData_.get(); }
    void SetEditorFormData(TEditorFormData* value);

    TExpManager* Manager() const { return manager_; }

    // The application's exception event while the log is on: a record, then the earlier
    // handler or the application's own report.
    void AppErrorLogData(rtl::TObject* Sender, rtl::Exception* E);

private:
    TExpManager* manager_;
    ToolsAPI::TExceptionEvent oldOnException_;
    bool errorLogAllowed_ = false;
    uint32_t maxLogSize_ = 50;
    std::unique_ptr<TEditorFormData> editorFormData_;
};

// ---------------------------------------------------------------------------------------------
// The global tree and its file

// The one tree; made when the package loads and freed when it unloads.
extern TExpData* ExpData;

// Puts a settings object into the tree's free part under nodeName (its identifier in the file),
// shown with caption (nodeName when empty); localNames, a label template, joins
// ExpData->LocalPropNames.
void AddStoredData(TNestedObject* instance, const std::string& nodeName,
                   const std::string& caption, const std::string& localNames);

// Takes every registration of the object out of the tree's free part; an object that goes away
// before the tree does leaves no reference to itself there.
void RemoveStoredData(TNestedObject* instance);

// A label template of the settings editor: "[className]", then one line "property=label" per
// entry with the label's text by number, lines joined by CR LF with none after the last.
std::string LabelTemplate(const std::string& className,
                          std::initializer_list<std::pair<const char*, int>> labels);

// ModuleDir + "ExpData.spc".
std::string ExpDataFileName();
// Loads the file into ExpData as far as it can; false when it is missing, empty or unreadable.
bool LoadExpData();
// Saves ExpData in binary form; the file is replaced only when all is written.
void SaveExpData();
// The save the settings editor uses: osfBin binary, osfText text, others the saver's default.
void ExpSaveSpc(rtl::TPersistent* obj, const std::string& fileName, TObjectStorageFormat format);

// The registry values of the add-in, under HKEY_CURRENT_USER "\Software\Zelvane".
inline constexpr const char* ExpRegKey = "\\Software\\Zelvane";
inline constexpr const char* ExpVersionValue = "ExpVersion";
inline constexpr const char* ExpLocaleDirValue = "ExpLocaleDir";
inline constexpr const char* ExpLocaleModulesValue = "ExpLocaleModules";
inline constexpr const char* ExpCurrentLocaleValue = "ExpCurrentLocale";
inline constexpr const char* ExpVersion = "1.0";

} // namespace zelvane
