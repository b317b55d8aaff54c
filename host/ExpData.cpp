#include "host/ExpData.h"

#include "host/ExpMng.h"
#include "locale/Locale.h"
#include "locale/LocaleIds.h"
#include "toolsapi/Forms.h"

#include <filesystem>
#include <system_error>

namespace zelvane {

using namespace rtl;

RTL_BEGIN_CLASS(TExpertInfo)
Property("ExpertName", &TExpertInfo::ExpertName);
Property("Active", &TExpertInfo::Active).Default(true);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TActiveExperts)

RTL_BEGIN_CLASS(TExpMenuItemData)
Property("ItemID", &TExpMenuItemData::ItemID);
Property("HaveLineBefore", &TExpMenuItemData::HaveLineBefore).Default(false);
Property("ShortCutText", &TExpMenuItemData::ShortCutText);
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(ExpMenuItemError)
RTL_IMPLEMENT_CLASS(TExpMenuData)
RTL_IMPLEMENT_CLASS(TCustomDataItem)
RTL_IMPLEMENT_CLASS(TCustomData)
// The three collections are stored through DefineProperties; published, unstored, they are the
// branches of the tree that the settings editor shows.
RTL_BEGIN_CLASS(TExpData)
Property("ActiveExperts", &TExpData::ActiveExperts, nullptr).Stored(false);
Property("MenuData", &TExpData::MenuData, nullptr).Stored(false);
Property("CustomData", &TExpData::CustomData, nullptr).Stored(false);
RTL_END_CLASS

RTL_BEGIN_CLASS(TEditorFormData)
Property("AutoSaveSetting", &TEditorFormData::AutoSaveSetting).Default(true);
Property("SaveSettingShortCut", &TEditorFormData::SaveSettingShortCut);
Property("Setting", &TEditorFormData::GetSetting, &TEditorFormData::SetSetting);
RTL_END_CLASS

RTL_BEGIN_CLASS(TExpManagerData)
Property("ExpertVersion", &TExpManagerData::ExpertVersion);
Property("AutoSaveSettings", &TExpManagerData::AutoSaveSettings).Default(true);
Property("MainMenuSearchItem", &TExpManagerData::MainMenuSearchItem);
Property("InsertMenuBeforeItem", &TExpManagerData::InsertMenuBeforeItem).Default(true);
Property("MenuHaveLineBefore", &TExpManagerData::MenuHaveLineBefore).Default(false);
Property("MenuHaveLineAfter", &TExpManagerData::MenuHaveLineAfter).Default(false);
Property("ErrorLogAllowed", &TExpManagerData::GetErrorLogAllowed,
         &TExpManagerData::SetErrorLogAllowed)
    .Default(true);
Property("MaxLogSize", &TExpManagerData::GetMaxLogSize, &TExpManagerData::SetMaxLogSize)
    .Default(50);
Property("EditorFormData", &TExpManagerData::GetEditorFormData,
         &TExpManagerData::SetEditorFormData);
RTL_END_CLASS

TExpData* ExpData = nullptr;

// ---------------------------------------------------------------------------------------------
// Items and collections

void TExpertInfo::Assign(TPersistent* source) {
    auto* s = dynamic_cast<TExpertInfo*>(source);
    if (!s) return TSpcItem::Assign(source);
    ExpertName = s->ExpertName;
    FNodeName = s->FNodeName;
    Active = s->Active;
}

TActiveExperts::TActiveExperts(TPersistent* owner)
    : TFixedCollection(owner, TExpertInfo::StaticClass()) {}

std::string TActiveExperts::GetNodeName() {
    return LocaleStr(SInstalledExperts);
}

TExpertInfo* TActiveExperts::Add(const std::string& expertName) {
    return As<TExpertInfo>(TFixedCollection::Add(expertName));
}

TExpertInfo* TActiveExperts::Find(const std::string& expertName) const {
    for (int i = 0; i < Count(); ++i)
        if (Expert(i)->ExpertName == expertName) return Expert(i);
    return nullptr;
}

void TExpMenuItemData::Assign(TPersistent* source) {
    auto* s = dynamic_cast<TExpMenuItemData*>(source);
    if (!s) return TSpcItem::Assign(source);
    ItemID = s->ItemID;
    Caption = s->Caption;
}

TExpMenuData::TExpMenuData(TPersistent* owner)
    : TFixedCollection(owner, TExpMenuItemData::StaticClass()) {}

std::string TExpMenuData::GetNodeName() {
    return LocaleStr(SExpertsMenu);
}

TExpMenuItemData* TExpMenuData::Add(const std::string& itemID) {
    return As<TExpMenuItemData>(TFixedCollection::Add(itemID));
}

TCustomData::TCustomData(TPersistent* owner)
    : TFreeCollection(owner, TCustomDataItem::StaticClass()) {}

std::string TCustomData::GetNodeName() {
    return LocaleStr(SSpecialSettings);
}

// ---------------------------------------------------------------------------------------------
// The tree

TExpData::TExpData()
    : activeExperts_(std::make_unique<TActiveExperts>(this)),
      menuData_(std::make_unique<TExpMenuData>(this)),
      customData_(std::make_unique<TCustomData>(this)) {}

TExpData::~TExpData() = default;

void TExpData::Assign(TPersistent* source) {
    auto* s = dynamic_cast<TExpData*>(source);
    if (!s) return TSpcObject::Assign(source);
    activeExperts_->Assign(s->activeExperts_.get());
    customData_->Assign(s->customData_.get());
    menuData_->Assign(s->menuData_.get());
}

void TExpData::DefineProperties(TFiler* filer) {
    TSpcObject::DefineProperties(filer);
    filer->DefineProperty(
        "ActiveExperts_",
        [this](TReader* r) { ReadFixedCollection(*r, activeExperts_.get(), false); },
        [this](TWriter* w) { WriteCollectionEx(w, activeExperts_.get()); }, true);
    filer->DefineProperty(
        "MenuData_", [this](TReader* r) { ReadFixedCollection(*r, menuData_.get(), false); },
        [this](TWriter* w) { WriteCollectionEx(w, menuData_.get()); }, true);
    filer->DefineProperty(
        "CustomData_", [this](TReader* r) { ReadFreeCollection(*r, customData_.get(), false); },
        [this](TWriter* w) { WriteCollectionEx(w, customData_.get()); }, true);
}

std::string TExpData::GetNodeName() {
    return LocaleStr(SExpertsSettings);
}

TEditorFormData::TEditorFormData() : setting_(std::make_unique<TMemoStrings>()) {}
TEditorFormData::~TEditorFormData() = default;

void TEditorFormData::SetSetting(TMemoStrings* value) {
    setting_->Assign(value);
}

std::string TEditorFormData::GetNodeName() {
    return LocaleStr(SEditorFormSettings);
}

// ---------------------------------------------------------------------------------------------
// The manager's settings

TExpManagerData::TExpManagerData(TExpManager* manager)
    : manager_(manager), editorFormData_(std::make_unique<TEditorFormData>()) {
    SetErrorLogAllowed(true);
    SetMaxLogSize(50);
}

TExpManagerData::~TExpManagerData() {
    SetErrorLogAllowed(false);
}

void TExpManagerData::SetErrorLogAllowed(bool value) {
    if (value == errorLogAllowed_) return;
    errorLogAllowed_ = value;
    ErrorLogEnabled = value;
    if (!ToolsAPI::Application) return;
    if (value) {
        oldOnException_ = ToolsAPI::Application->GetOnException();
        ToolsAPI::Application->SetOnException(
            ToolsAPI::TExceptionEvent::Of<&TExpManagerData::AppErrorLogData>(this));
    } else {
        ToolsAPI::Application->SetOnException(oldOnException_);
        oldOnException_ = nullptr;
    }
}

void TExpManagerData::SetMaxLogSize(uint32_t value) {
    maxLogSize_ = value;
    MaxLogSizeKB = value;
}

void TExpManagerData::SetEditorFormData(TEditorFormData* value) {
    editorFormData_->Assign(value);
}

void TExpManagerData::AppErrorLogData(TObject* Sender, Exception* E) {
    AddErrorLogRecord(Sender);
    if (oldOnException_)
        oldOnException_(Sender, E);
    else if (ToolsAPI::Application)
        ToolsAPI::Application->ShowException(E);
}

// ---------------------------------------------------------------------------------------------
// The global tree and its file

void AddStoredData(TNestedObject* instance, const std::string& nodeName,
                   const std::string& caption, const std::string& localNames) {
    TWrapperItem* item = ExpData->CustomData()->Add(instance, nodeName);
    item->SetNodeName(caption.empty() ? nodeName : caption);
    if (!localNames.empty()) ExpData->LocalPropNames += "\r\n" + localNames;
}

void RemoveStoredData(TNestedObject* instance) {
    if (!ExpData) return;
    TCustomData* data = ExpData->CustomData();
    for (int i = data->Count() - 1; i >= 0; --i)
        if (data->GetItem(i)->NestedObject == instance) delete data->GetItem(i);
}

std::string LabelTemplate(const std::string& className,
                          std::initializer_list<std::pair<const char*, int>> labels) {
    std::string text = "[" + className + "]";
    for (const auto& [property, id] : labels)
        text += std::string("\r\n") + property + "=" + LocaleStr(id);
    return text;
}

std::string ExpDataFileName() {
    return ModuleDir + "ExpData.spc";
}

bool LoadExpData() {
    std::string fileName = ExpDataFileName();
    std::error_code ec;
    if (!FileExists(fileName) || std::filesystem::file_size(fileName, ec) == 0 || ec)
        return false;
    TObjectSaver saver;
    saver.AutoDetectFormat = true;
    saver.IgnoreErrors = true;
    TPersistent* objects[] = {ExpData};
    return saver.SafeLoadObjects(objects, fileName);
}

namespace {

void SaveExpDataAs(TPersistent* obj, const std::string& fileName, TStreamOriginalFormat format) {
    TObjectSaver saver;
    saver.Format = format;
    TPersistent* objects[] = {obj};
    const std::string names[] = {"ExpertData"};
    saver.SaveObjects(objects, names, fileName);
}

} // namespace

void SaveExpData() {
    SaveExpDataAs(ExpData, ExpDataFileName(), sofBinary);
}

void ExpSaveSpc(TPersistent* obj, const std::string& fileName, TObjectStorageFormat format) {
    TStreamOriginalFormat f = TObjectSaver().Format;
    if (format == osfBin) f = sofBinary;
    if (format == osfText) f = sofText;
    SaveExpDataAs(obj, fileName, f);
}

} // namespace zelvane
