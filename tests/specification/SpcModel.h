// A settings tree as the add-in builds one: a root settings object with a nested settings
// object holding string list values, a font and a picture; a plain collection; a fixed
// collection of experts made by code; and a free collection of live objects that belong to
// somebody else. Shared by the specification tests.
#pragma once

#include "persistence/PropTypes.h"
#include "persistence/Storage.h"
#include "specification/SpcMng.h"

#include "foundation/AppUtils.h"
#include "foundation/Dialogs.h"
#include "tests/persistence/Scratch.h"

#include <memory>
#include <string>
#include <vector>

namespace spcmodel {

using namespace rtl;
using namespace zelvane;

RTL_ENUM(TLayout, loTree, loList, loTabs)

// The nested settings object: one value of each property value class.
class TViewSettings : public TSpcObject {
    RTL_CLASS(TViewSettings, TSpcObject)
public:
    TViewSettings();
    ~TViewSettings() override;
    void Assign(TPersistent* source) override;

    int32_t Depth = 3;
    TLayout Layout = loTree;
    TCheckStrings* GetColumns() const { return columns_.get(); }
    void SetColumns(TCheckStrings* v) { columns_->Assign(v); }
    TSelectStrings* GetSort() const { return sort_.get(); }
    void SetSort(TSelectStrings* v) { sort_->Assign(v); }
    TMemoStrings* GetNotes() const { return notes_.get(); }
    void SetNotes(TMemoStrings* v) { notes_->Assign(v); }
    TFontEx* GetFont() const { return font_.get(); }
    void SetFont(TFontEx* v) { font_->Assign(v); }
    TPictureEx* GetPicture() const { return picture_.get(); }
    void SetPicture(TPictureEx* v) { picture_->Assign(v); }

    std::string GetNodeName() override { return "View settings"; }

private:
    std::unique_ptr<TCheckStrings> columns_;
    std::unique_ptr<TSelectStrings> sort_;
    std::unique_ptr<TMemoStrings> notes_;
    std::unique_ptr<TFontEx> font_;
    std::unique_ptr<TPictureEx> picture_;
};

// An item of a plain settings collection, which the file rebuilds.
class THistoryItem : public TSpcItem {
    RTL_CLASS(THistoryItem, TSpcItem)
public:
    explicit THistoryItem(TCollection* c = nullptr) : TSpcItem(c) {}
    void Assign(TPersistent* source) override;
    std::string FileName;
    int32_t Line = 0;
};

class THistory : public TSpcCollection {
    RTL_CLASS(THistory, TSpcCollection)
public:
    using TConstructorArg = TPersistent;
    explicit THistory(TPersistent* owner) : TSpcCollection(owner, THistoryItem::StaticClass()) {}
    THistoryItem* AddFile(const std::string& name, int32_t line);
};

// An expert that the program knows: its key, its state and its display name.
class TExpertInfo : public TSpcItem {
    RTL_CLASS(TExpertInfo, TSpcItem)
public:
    explicit TExpertInfo(TCollection* c = nullptr) : TSpcItem(c) {}
    std::string ExpertName;
    bool Active = true;
    std::string GetNodeName() override { return FNodeName; }
    bool NeedsIterate() override { return false; }
    bool NeedsTranslate() override { return false; }
};

class TActiveExperts : public TFixedCollection {
    RTL_CLASS(TActiveExperts, TFixedCollection)
public:
    using TConstructorArg = TPersistent;
    explicit TActiveExperts(TPersistent* owner = nullptr)
        : TFixedCollection(owner, TExpertInfo::StaticClass()) {}
    std::string GetUpdateName() const override { return "ExpertName"; }
    TExpertInfo* Expert(int index) const { return As<TExpertInfo>(GetItem(index)); }
};

class TCustomDataItem : public TWrapperItem {
    RTL_CLASS(TCustomDataItem, TWrapperItem)
public:
    explicit TCustomDataItem(TCollection* c = nullptr) : TWrapperItem(c) {}
    std::string GetNodeName() override { return FNodeName; }
    bool NeedsIterate() override { return false; }
    bool NeedsTranslate() override { return false; }
};

class TCustomData : public TFreeCollection {
    RTL_CLASS(TCustomData, TFreeCollection)
public:
    explicit TCustomData(TPersistent* owner = nullptr)
        : TFreeCollection(owner, TCustomDataItem::StaticClass()) {}
};

// The settings of an expert: a live object that the expert owns and registers in the tree.
class TEditorSettings : public TNestedObject {
    RTL_CLASS(TEditorSettings, TNestedObject)
public:
    TEditorSettings();
    ~TEditorSettings() override;
    bool AutoSave = true;
    TShortCutString SaveKey = "Ctrl+S";
    int32_t TabWidth = 8;
    TMemoStrings* GetState() const { return state_.get(); }
    void SetState(TMemoStrings* v) { state_->Assign(v); }

private:
    std::unique_ptr<TMemoStrings> state_;
};

class TUnitSettings : public TNestedObject {
    RTL_CLASS(TUnitSettings, TNestedObject)
public:
    bool SortByName = false;
    std::string Filter = "*.pas";
};

// The root: published values, the nested settings object and the plain collection; the fixed
// and the free collection are stored through DefineProperties, as "ActiveExperts_" and
// "CustomData_", always present.
class TSettings : public TSpcObject {
    RTL_CLASS(TSettings, TSpcObject)
public:
    TSettings();
    ~TSettings() override;

    std::string Title = "Settings";
    int32_t Version = 1;
    TViewSettings* GetView() const { return view_.get(); }
    void SetView(TViewSettings* v) { view_->Assign(v); }
    THistory* GetHistory() const { return history_.get(); }
    void SetHistory(THistory* v) { history_->Assign(v); }
    TActiveExperts* Active() const { return active_.get(); }
    TCustomData* Custom() const { return custom_.get(); }

    std::string GetNodeName() override { return "Experts settings"; }
    void DefineProperties(TFiler* filer) override;

private:
    std::unique_ptr<TViewSettings> view_;
    std::unique_ptr<THistory> history_;
    std::unique_ptr<TActiveExperts> active_;
    std::unique_ptr<TCustomData> custom_;
};

// A tree as the program makes it at start: the experts it knows and the settings objects
// registered by them (owned here, as the experts would own them).
struct TProgram {
    TProgram();
    TSettings settings;
    TEditorSettings editor;
    TUnitSettings units;
};

// Fills every value of the tree with something other than its default.
void FillNonDefault(TProgram& p);

using namespace scratch;

} // namespace spcmodel
