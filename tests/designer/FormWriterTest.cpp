// Writing design trees back with the runtime's filer: the bytes of a form read and written
// unchanged, resource headers, values set in the designer, and trees no stream can hold.
#include "tests/workbench/TestFiles.h"
#include "workbench/model/FormFile.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace workbench;
using ToolsAPI::TDesignComponent;
using ToolsAPI::TDesignProperty;
using ToolsAPI::TDesignValueKind;

namespace {
std::string Example(const std::string& name) {
    return (testfiles::ExamplesDir() / name).string();
}
} // namespace

TEST(FormWriter, ABinaryFormIsWrittenBackByteForByteAndATextOneThroughBinaryIsTheSameText) {
    std::string bytes = testfiles::ReadFile(Example("Settings.dfm"));
    TFormFile f = ReadFormFile(bytes, "Settings.dfm");
    EXPECT_EQ(WriteFormFile(f), bytes);
    EXPECT_EQ(WriteFormFile(*f.Root, TFormFileFormat::Binary), bytes);
    // A text form written as binary and back is the same text.
    std::string text = testfiles::ReadFile(Example("Frame1.dfm"));
    std::string binary =
        WriteFormFile(*ReadFormFile(text, "Frame1.dfm").Root, TFormFileFormat::Binary);
    ASSERT_EQ(binary.substr(0, 4), "TPF0");
    EXPECT_EQ(WriteFormFile(*ReadFormFile(binary, "binary").Root, TFormFileFormat::Text), text);
}

TEST(FormWriter, AFormBehindAResourceHeaderKeepsItsHeader) {
    std::string binary = testfiles::ReadFile(Example("Settings.dfm"));
    std::string header("\xFF\x0A\x00", 3);
    header += "TSETTINGSFORM";
    header += '\0';
    header += "\x30\x10";
    uint32_t size = static_cast<uint32_t>(binary.size());
    header += std::string(reinterpret_cast<const char*>(&size), 4);
    TFormFile f = ReadFormFile(header + binary, "resource");
    EXPECT_EQ(f.ResourceName, "TSETTINGSFORM");
    EXPECT_EQ(WriteFormFile(f), header + binary);
    // A changed value changes the size in the header.
    TDesignComponent* edit = f.Root->FindComponent("RecentEdit");
    edit->SetProperty(ParseDesignProperty("Text", "'1234'"));
    std::string again = WriteFormFile(f);
    uint32_t newSize = 0;
    std::memcpy(&newSize, again.data() + header.size() - 4, 4);
    EXPECT_EQ(newSize, size + 3);
    EXPECT_EQ(ReadFormFile(again, "again").Root->FindComponent("RecentEdit")->StrProp("Text"),
              "1234");
}

TEST(FormWriter, ValuesWithoutStoredBytesAreWrittenFromTheirKind) {
    TDesignComponent root;
    root.ClassName = "TForm1";
    root.Name = "Form1";
    auto add = [&](const char* name, TDesignValueKind kind, int64_t i, std::string s,
                   std::string text) {
        TDesignProperty p;
        p.Name = name;
        p.Kind = kind;
        p.Int = i;
        p.Str = std::move(s);
        p.Text = std::move(text);
        root.Properties.push_back(std::move(p));
    };
    add("Small", TDesignValueKind::Integer, -5, "", "-5");
    add("Wide", TDesignValueKind::Integer, 70000, "", "70000");
    add("Huge", TDesignValueKind::Integer, 5000000000LL, "", "5000000000");
    add("Caption", TDesignValueKind::String, 0, "It's", "'It''s'");
    add("Long", TDesignValueKind::String, 0, std::string(300, 'x'), "");
    add("Color", TDesignValueKind::Ident, 0, "clRed", "clRed");
    add("Visible", TDesignValueKind::Boolean, 0, "", "False");
    add("Ratio", TDesignValueKind::Float, 0, "", "1.5");
    add("Anchors", TDesignValueKind::Set, 0, "", "[akLeft, akTop]");
    add("Lines.Strings", TDesignValueKind::List, 0, "", "('a' 'b')");
    auto child = std::make_unique<TDesignComponent>();
    child->ClassName = "TFrame2";
    child->Name = "Frame";
    child->Inline = true;
    root.AddChild(std::move(child));

    std::string binary = WriteFormFile(root, TFormFileFormat::Binary);
    TFormFile f = ReadFormFile(binary, "written");
    const TDesignComponent& r = *f.Root;
    std::vector<std::string> values;
    for (const TDesignProperty& p : r.Properties)
        values.push_back(p.Name + " = " + p.Text);
    EXPECT_EQ(values,
              (std::vector<std::string>{
                  "Small = -5", "Wide = 70000", "Huge = 5000000000", "Caption = 'It''s'",
                  "Long = '" + std::string(300, 'x') + "'", "Color = clRed", "Visible = False",
                  "Ratio = 1.5", "Anchors = [akLeft, akTop]", "Lines.Strings = ('a' 'b')"}));
    EXPECT_EQ(r.IntProp("Huge"), 5000000000LL);
    EXPECT_EQ(r.StrProp("Caption"), "It's");
    EXPECT_EQ(r.FindProperty("Color")->Kind, TDesignValueKind::Ident);
    EXPECT_EQ(r.FindProperty("Visible")->Kind, TDesignValueKind::Boolean);
    ASSERT_EQ(r.ChildCount(), 1);
    EXPECT_TRUE(r.Child(0)->Inline);
    // The integers take the smallest tag that holds them.
    EXPECT_EQ(uint8_t(r.FindProperty("Small")->Raw[0]), 2); // vaInt8
    EXPECT_EQ(uint8_t(r.FindProperty("Wide")->Raw[0]), 4);  // vaInt32
    EXPECT_EQ(uint8_t(r.FindProperty("Huge")->Raw[0]), 19); // vaInt64
    EXPECT_EQ(uint8_t(r.FindProperty("Long")->Raw[0]), 12); // vaLString
}

TEST(FormWriter, ATreeThatNoStreamCanHoldRaisesAClearError) {
    TDesignComponent root;
    root.ClassName = "TForm1";
    root.Name = std::string(256, 'N');
    EXPECT_THROW(WriteFormFile(root, TFormFileFormat::Binary), EFormFileError);
    root.Name = "Form1";
    TDesignProperty p;
    p.Name = "Left";
    p.Kind = TDesignValueKind::Set;
    p.Text = "[not a set";
    root.Properties.push_back(p);
    EXPECT_THROW(WriteFormFile(root, TFormFileFormat::Text), EFormFileError);
    root.Properties.clear();
    p.Name = "";
    p.Kind = TDesignValueKind::Integer;
    root.Properties.push_back(p);
    EXPECT_THROW(WriteFormFile(root, TFormFileFormat::Binary), EFormFileError);
    TFormFile empty;
    EXPECT_THROW(WriteFormFile(empty), EFormFileError);
}
