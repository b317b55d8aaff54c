// Unit ExpShrForm: the bases of experts with a window of their own, and the three globals that
// the experts use to see each other's state.
//
// A TSharedManager owns its TFormSetting (placement, auto-save, hot key), which is stored with
// the expert's settings; its TSharedForm takes them when it is created and gives the placement
// back when it reads it.
#pragma once

#include "host/ExpMng.h"
#include "host/SmartForm.h"
#include "specification/SpcMng.h"
#include "toolsapi/ToolsAPI.h"

#include <memory>
#include <string>
#include <vector>

namespace zelvane {

class TFormSetting : public TSpcObject {
    RTL_CLASS(TFormSetting, TSpcObject)
public:
    TFormSetting() = default;

    bool AutoSavePlacement = false;
    std::string FormPlacement;
    TShortCutString SavePlacementShortCut = "Ctrl+S";

    void Assign(rtl::TPersistent* source) override;
    std::string GetNodeName() override;
};

class TSharedManager : public TCustomExpert {
    RTL_CLASS(TSharedManager, TCustomExpert)
public:
    TSharedManager();
    ~TSharedManager() override;

    TFormSetting* GetFormSetting() const { return formSetting_.get(); }
    void SetFormSetting(TFormSetting* value) { formSetting_->Assign(value); }

private:
    std::unique_ptr<TFormSetting> formSetting_;
};

class TSharedForm : public TSmartForm {
    Q_OBJECT
public:
    // The manager is there before the form is made, so that SetProperties finds it.
    TSharedForm(QWidget* owner, TSharedManager* manager);

    TSharedManager* Manager() const { return manager_; }

    void ReadFormData() override;

protected:
    void SetProperties() override;

private:
    TSharedManager* manager_;
};

// True while the module viewer's window exists.
extern bool ModuleBrowsing;
// The block expert's menu items, which the module viewer offers in its preview.
extern std::vector<TExpMenuItemData*> ExpMenuItems;
// The source editor that the module viewer's preview shows; the block expert works on it
// while it is set. Not counted.
extern ToolsAPI::IOTASourceEditor* OpenEditor;

} // namespace zelvane
