// The spine of the add-in without an IDE: the table of expert classes and its refusals, and the
// settings tree the experts register their objects in, with their labels.
#include "host/ExpMng.h"
#include "experts/cpu/CPUView.h"
#include "host/ExpData.h"
#include "rtl/Lists.h"

#include <gtest/gtest.h>

using namespace zelvane;

namespace {

class TFirstExpert : public TCustomExpert {
    RTL_CLASS(TFirstExpert, TCustomExpert)
};
class TSecondExpert : public TCustomExpert {
    RTL_CLASS(TSecondExpert, TCustomExpert)
};
RTL_IMPLEMENT_CLASS(TFirstExpert)
RTL_IMPLEMENT_CLASS(TSecondExpert)

class TSettings : public TNestedObject {
    RTL_CLASS(TSettings, TNestedObject)
};
RTL_IMPLEMENT_CLASS(TSettings)

class ExpMngTest : public ::testing::Test {
protected:
    void SetUp() override { InitExpMngUnit(); }
    void TearDown() override { DoneExpMngUnit(); }
};

std::string Refusal(rtl::TClass cls, int slot, const std::string& name) {
    try {
        RegisterExpClass(cls, slot, name, -1);
    } catch (const EExpMngError& e) {
        return e.Message();
    }
    return "registered";
}

TEST_F(ExpMngTest, TheClassTableRefusesBadSlotsAndTwiceRegisteredExperts) {
    RegisterExpClass(TFirstExpert::StaticClass(), 4, "EditorManager", 51140);
    const rtl::TClass first = TFirstExpert::StaticClass(), second = TSecondExpert::StaticClass();
    struct TCase {
        rtl::TClass Class;
        int Slot;
        const char* Name;
        const char* Message;
    };
    const TCase cases[] = {
        {second, 0, "Other", "List index out of bounds (0)"},
        {second, 101, "Other", "List index out of bounds (101)"},
        // A used slot is named first, whatever the class and the name.
        {first, 4, "EditorManager", "Expert\x92s group 4 is already defined."},
        {first, 5, "Other", "Expert of class TFirstExpert is already defined."},
        {second, 5, "EditorManager", "Expert\x92s name EditorManager is already defined."},
    };
    for (const TCase& c : cases)
        EXPECT_EQ(Refusal(c.Class, c.Slot, c.Name), c.Message) << c.Slot << ' ' << c.Name;
    EXPECT_EQ(Refusal(second, 100, "Other"), "registered");
    const std::vector<TExpClassEntry>& table = ExpClassTable();
    ASSERT_EQ(table.size(), 100u);
    EXPECT_EQ(table[3].ExpClass, first);
    EXPECT_EQ(table[3].NameID, 51140);
    EXPECT_EQ(table[99].ExpName, "Other");
}

TEST_F(ExpMngTest, StoredDataJoinsTheFreePartWithItsCaptionAndTheSharedClassesLabels) {
    TSettings a, b;
    AddStoredData(&a, "AData", "Settings of A", "[TSettings]\r\nX=x");
    AddStoredData(&b, "BData", "", "");
    TCustomData* data = ExpData->CustomData();
    ASSERT_EQ(data->Count(), 2);
    EXPECT_EQ(data->GetItem(0)->GetNodeName(), "Settings of A");
    EXPECT_EQ(data->GetItem(1)->GetNodeName(), "BData");
    EXPECT_EQ(ExpData->LocalPropNames, "\r\n[TSettings]\r\nX=x");
    // One node name is one object in the file.
    EXPECT_THROW(AddStoredData(&b, "AData", "", ""), EFreeCollectionError);
    // An object that goes leaves no reference behind.
    RemoveStoredData(&a);
    ASSERT_EQ(data->Count(), 1);
    EXPECT_EQ(data->GetItem(0)->NestedObject, &b);
    // The editor's labels are the shared classes' sections, then the registered ones, which
    // stay when their object goes.
    rtl::TStringList lines;
    lines.SetText(TExpManager::TranslatingTable());
    std::vector<std::string> got;
    for (int i = 0; i < lines.Count(); ++i)
        got.push_back(lines[i]);
    EXPECT_EQ(
        got,
        (std::vector<std::string>{
            "[TExpertInfo]", "Active=Active", "[TExpMenuItemData]", "Caption=menu item\x92s text",
            "ImageIndex=Picture index for menu item", "HaveLineBefore=Separator before##menu item",
            "ShortCutText=Hotkeys ##for menu item call", "[TFormSetting]",
            "AutoSavePlacement=Autosave##form position", "FormPlacement=Save form##position",
            "SavePlacementShortCut=Hotkey for##form position save", "[TEditorFormData]",
            "AutoSaveSetting=Form properties autosave",
            "SaveSettingShortCut=Hotkey for##form properties save", "Setting=Save form properties",
            "", "[TSettings]", "X=x"}));
}

// An expert's object registers under its node with the labels of its classes.
TEST_F(ExpMngTest, TheCPUExpertStoresItsCountAndPaneUnderItsNodeWithTheirLabels) {
    TCPUFormMng expert;
    TCustomData* data = ExpData->CustomData();
    ASSERT_EQ(data->Count(), 1);
    EXPECT_EQ(data->GetItem(0)->NestedObject, &expert);
    EXPECT_EQ(data->GetItem(0)->GetNodeName(), "CPU window data scan");
    EXPECT_EQ(ExpData->LocalPropNames,
              "\r\n[TCPUFormMng]\r\nReadLineCount=Lines count##grabbed from CPU debug window"
              "\r\nViewObject=Last selected##data type\r\n[TCPUViewType]"
              "\r\nvtDisasmView=Assembler code\r\nvtRegView=Processor registry"
              "\r\nvtFlagsView=Processor flags\r\nvtDumpView=Memory dump"
              "\r\nvtStackView=Program stack\r\nvtAllViews=All types");
}

} // namespace
