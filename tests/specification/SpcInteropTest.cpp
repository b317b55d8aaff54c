// Specification files read by Free Pascal's Classes unit: the binary file of SaveSpc is one
// object stream that its reader lists value for value as ours does, and the text file converts
// back to the same bytes on both sides.
#include "SpcModel.h"

#include "specification/SpcConst.h"
#include "specification/SpcMng.h"
#include "tests/interop/FpcHarness.h"

#include <gtest/gtest.h>

using namespace spcmodel;
using namespace interop;

namespace {

class SpcInterop : public ::testing::Test {
protected:
    static void SetUpTestSuite() { fpc_.Prepare("interop-specification"); }

    void SetUp() override {
        if (!fpc_.SkipReason.empty()) GTEST_SKIP() << fpc_.SkipReason;
        ASSERT_TRUE(fpc_.CompileError.empty()) << fpc_.CompileError;
    }

    // The filled tree's file in the given form, as bytes.
    std::string Saved(TObjectStorageFormat format) {
        TProgram p;
        FillNonDefault(p);
        std::string file = dir_.File("settings" + SpcFileExt(format));
        SaveSpc(&p.settings, file, format);
        return ReadAll(file);
    }

    static inline FpcConverter fpc_;
    TempDir dir_;
};

TEST_F(SpcInterop, BinaryFileIsReadByFreePascal) {
    std::string binary = Saved(osfBin);
    std::string listing = fpc_.Run("dump", binary);
    EXPECT_EQ(listing, OurDump(binary));
    EXPECT_EQ(listing.rfind("object 0 0 TSettings \n", 0), 0u) << listing.substr(0, 60);
}

TEST_F(SpcInterop, TextFileConvertsBackToTheBinaryFileOnBothSides) {
    std::string binary = Saved(osfBin), text = Saved(osfText);
    EXPECT_EQ(fpc_.Run("t2b", text), binary);
    EXPECT_EQ(OurConvert("t2b", text), binary);
}

TEST_F(SpcInterop, FreePascalsTextLoadsAsASpecification) {
    // Free Pascal's own text of the file (its strings with characters above 127 come as
    // "#192" codes) is a text specification that loads into the tree.
    std::string fpcText = fpc_.Run("b2t", Saved(osfBin));
    std::string textFile = dir_.File("fpc.stx");
    WriteAll(textFile, fpcText);
    TProgram loaded;
    TPersistent* obj = &loaded.settings;
    EXPECT_EQ(LoadSpc(obj, textFile, false, true), osfText);
    EXPECT_EQ(loaded.settings.GetView()->Depth, -5);
    EXPECT_EQ(loaded.settings.GetView()->GetFont()->Name, "Courier New");
    EXPECT_EQ(loaded.settings.GetView()->GetColumns()->CheckedInds, "0,2");
    EXPECT_EQ(loaded.editor.SaveKey, "Ctrl+Shift+S");
    EXPECT_FALSE(loaded.settings.Active()->Expert(0)->Active);
}

} // namespace
