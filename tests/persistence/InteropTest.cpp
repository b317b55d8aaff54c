// Streams of the persistence layer read by Free Pascal's Classes unit: what SaveObjectBinary and
// the savers write is read value for value as we read it, and their text converts back to the
// same bytes on both sides.
#include "persistence/DataHndl.h"
#include "persistence/Storage.h"

#include "TestModel.h"
#include "tests/interop/FpcHarness.h"

#include <gtest/gtest.h>

using namespace zelvane;
using namespace model;
using namespace interop;

namespace {

class PersistenceInterop : public ::testing::Test {
protected:
    static void SetUpTestSuite() { fpc_.Prepare("interop-persistence"); }

    void SetUp() override {
        if (!fpc_.SkipReason.empty()) GTEST_SKIP() << fpc_.SkipReason;
        ASSERT_TRUE(fpc_.CompileError.empty()) << fpc_.CompileError;
    }

    std::string Fpc(const std::string& mode, const std::string& input) {
        return fpc_.Run(mode, input);
    }

    // Free Pascal reads every value as we do, converts the stream to text, and our text of it
    // back to the same bytes. (Its own text doesn't always come back byte for byte: it writes
    // characters above 127 as "#198", which it reads back as a wide string.)
    void ExpectReadByFreePascal(const std::string& binary) {
        ASSERT_FALSE(binary.empty());
        EXPECT_EQ(Fpc("dump", binary), OurDump(binary));
        EXPECT_FALSE(Fpc("b2t", binary).empty());
        std::string ourText = OurConvert("b2t", binary);
        EXPECT_EQ(Fpc("t2b", ourText), binary);
        EXPECT_EQ(OurConvert("t2b", ourText), binary);
    }

    static inline FpcConverter fpc_;
};

} // namespace

TEST_F(PersistenceInterop, SaveObjectBinaryOfComponentsAndWrappedObjects) {
    Objects o;
    TObject* objs[] = {&o.widget, &o.sample, &o.foo};
    TStringStream s;
    SaveObjectBinary(objs, &s, false);
    ExpectReadByFreePascal(s.DataString());
}

TEST_F(PersistenceInterop, SaveObjectTextConvertsBackToTheSameBytes) {
    Objects o;
    TObject* objs[] = {&o.widget, &o.sample, &o.foo};
    TStringStream binary, text;
    SaveObjectBinary(objs, &binary, false);
    SaveObjectText(objs, &text);
    // Free Pascal's converter knows no description lines: they go before it reads the text.
    std::string objectsOnly;
    std::istringstream lines(text.DataString());
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("stored Instance --> ", 0) != 0) objectsOnly += line + "\n";
    EXPECT_EQ(Fpc("t2b", objectsOnly), binary.DataString());
}

TEST_F(PersistenceInterop, ResourceFormReadsAsTheSameObjects) {
    Objects o;
    TObject* objs[] = {&o.widget, &o.foo};
    TStringStream res, binary;
    SaveObjectBinary(objs, &res, true);
    SaveObjectBinary(objs, &binary, false);
    std::string theirText = Fpc("r2t", res.DataString());
    EXPECT_EQ(Fpc("t2b", theirText), binary.DataString());
}

TEST_F(PersistenceInterop, ObjectSaverStreamsInBothForms) {
    Objects o;
    TPersistent* objs[] = {&o.sample, &o.widget, &o.foo};
    std::string names[] = {"Sample", "Form.Main", ""};
    TObjectSaver saver;
    std::string binary, text;
    saver.GetObjectProps(objs, binary);
    ExpectReadByFreePascal(binary);
    saver.Format = sofText;
    saver.GetObjectProps(objs, text);
    EXPECT_EQ(Fpc("t2b", text), binary);
    EXPECT_EQ(OurConvert("t2b", text), binary);

    // With names, methods and the stored-false property too.
    TObjectSaver full;
    full.StoreMethods = true;
    full.IgnoreStored = true;
    o.sample.OnChange = TChangeEvent::Of<&TSample::Changed>(&o.sample);
    o.sample.Hidden = "hidden";
    TStringStream named;
    full.SaveObjects(objs, names, &named);
    ExpectReadByFreePascal(named.DataString());
}

TEST_F(PersistenceInterop, PropSaverStreams) {
    Objects o;
    TPersistent* objs[] = {&o.sample, &o.widget};
    std::string names[] = {"Sample", "Main"};
    TPropSaver saver;
    saver.StoredProps()->Add("Sample.Look");
    saver.IgnoredProps()->Add("Main.Items");
    TStringStream s;
    saver.SaveObjects(objs, names, &s);
    ExpectReadByFreePascal(s.DataString());
}

TEST_F(PersistenceInterop, FloatsFromTextAgreeOnBothSides) {
    // A third has more digits than the text form keeps: the value read back from text differs
    // from the one written, and both converters read the same value.
    TSample s;
    s.Ratio = 1.0 / 3;
    TPersistent* objs[] = {&s};
    TObjectSaver saver;
    saver.Format = sofText;
    std::string text;
    saver.GetObjectProps(objs, text);
    EXPECT_NE(text.find("Ratio = 0.333333333333333315\r\n"), std::string::npos);
    EXPECT_EQ(Fpc("t2b", text), OurConvert("t2b", text));
    TSample copy;
    TPersistent* dst[] = {&copy};
    saver.SetObjectProps(dst, text);
    EXPECT_NEAR(copy.Ratio, 1.0 / 3, 1e-17);
}
