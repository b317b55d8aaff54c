// The CPU capture expert's place in the settings tree, without an IDE: its stored object with
// the labels of the settings editor, and its defaults.
#include "experts/cpu/CPUView.h"
#include "host/ExpData.h"
#include "host/ExpMng.h"

#include <gtest/gtest.h>

using namespace zelvane;

namespace {

class CPUViewSettings : public ::testing::Test {
protected:
    void SetUp() override { InitExpMngUnit(); }
    void TearDown() override { DoneExpMngUnit(); }
};

TEST_F(CPUViewSettings, TheExpertStoresItsCountAndPaneUnderItsNodeWithTheirLabels) {
    TCPUFormMng expert;
    EXPECT_EQ(expert.ReadLineCount, 10);
    EXPECT_EQ(expert.ViewObject, vtDisasmView);
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
    // The pane is stored by its name, the values 0 to 5 in table order.
    EXPECT_EQ(rtl::GetEnumName(rtl::TypeInfo<TCPUViewType>(), 5), "vtAllViews");
}

} // namespace
