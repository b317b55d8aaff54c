// Unit ExpEditor: the add-in's one settings dialog. TExpertEditor is the extended settings editor
// shown over the whole settings tree (ExpData): it keeps the state of its own form inside that
// tree instead of an ini file, and takes the hot key that stores the form's state from there.
// The manager configures it once (PrepareEditor), gives it its labels (LocalizeEditor), and makes
// the experts anew after the user has saved, so that new values, hot keys and menu items take
// effect at once (EditSettings2).
#pragma once

#include "editor/SpcEdPro.h"

namespace zelvane {

class TExpManager;
class TEditorFormData;

class TExpertEditor : public TSpcEditorPro {
    RTL_CLASS(TExpertEditor, TSpcEditorPro)
public:
    explicit TExpertEditor(rtl::TComponent* owner = nullptr) : TSpcEditorPro(owner) {}

    TExpManager* Manager = nullptr;

protected:
    void MakeForm() override;
    void ReadFormSetting(const std::string& iniFile, const std::string& section,
                         rtl::TStrings* strings) override;
    void WriteFormSetting(const std::string& iniFile, const std::string& section,
                          rtl::TStrings* strings) override;

private:
    TEditorFormData* FormData() const;
};

// What no setting of the dialog shows, and what it shows but does not let change.
inline constexpr const char* ExpEditorInvisibleProps =
    "TExpertInfo.ExpertName\r\nTExpertInfo.ExpertNodeName\r\nTCustomDataItem.AObjectID\r\n"
    "TExpMenuItemData.ItemID\r\nTFormSetting.FormPlacement\r\nTEditorFormData.Setting\r\n"
    "TViewFormMng.DisplayUnitScrollbars";
inline constexpr const char* ExpEditorDisabledProps = "TExpManagerData.ExpertVersion";

} // namespace zelvane
