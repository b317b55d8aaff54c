// Form files read into design trees: the example forms in text and binary form, values of every
// kind, writing back, and damaged files.
#include "workbench/model/FormFile.h"
#include "tests/workbench/TestFiles.h"

#include "rtl/CodePage.h"
#include "rtl/Filer.h"

#include <gtest/gtest.h>

using namespace workbench;
using ToolsAPI::TDesignComponent;
using ToolsAPI::TDesignValueKind;

namespace {
std::string Example(const std::string& name) {
    return (testfiles::ExamplesDir() / name).string();
}
} // namespace

TEST(FormFiles, AChildPositionIsKeptThroughEitherForm) {
    const std::string text = "inherited ChildForm: TChildForm\r\n"
                             "  Caption = 'Child'\r\n"
                             "  inherited OkButton: TButton[2]\r\n"
                             "    Left = 8\r\n"
                             "  end\r\n"
                             "  inherited CancelButton: TButton\r\n"
                             "  end\r\n"
                             "end\r\n";
    TFormFile f = ReadFormFile(text, "Child.dfm");
    ASSERT_EQ(f.Root->ChildCount(), 2);
    EXPECT_EQ(f.Root->Child(0)->ChildPos, 2);
    EXPECT_EQ(f.Root->Child(1)->ChildPos, -1);
    EXPECT_EQ(f.Root->ChildPos, -1);
    EXPECT_EQ(WriteFormFile(*f.Root, TFormFileFormat::Text), text);
    TFormFile binary = ReadFormFile(WriteFormFile(*f.Root, TFormFileFormat::Binary), "Child.dfm");
    EXPECT_EQ(binary.Root->Child(0)->ChildPos, 2);
    EXPECT_EQ(binary.Root->Child(1)->ChildPos, -1);
    // Written by hand with a space before the bracket, it reads the same.
    std::string spaced = text;
    spaced.replace(spaced.find("[2]"), 0, " ");
    EXPECT_EQ(ReadFormFile(spaced, "Child.dfm").Root->Child(0)->ChildPos, 2);
}

TEST(FormFiles, APropertyParsesFromItsTextForm) {
    auto p = ParseDesignProperty("Caption", "'It''s'#13#10'ok'");
    EXPECT_EQ(p.Kind, TDesignValueKind::String);
    EXPECT_EQ(p.Str, "It's\r\nok");
    EXPECT_EQ(p.Text, "'It''s'#13#10'ok'");
    EXPECT_EQ(ParseDesignProperty("Anchors", "[akLeft, akTop]").Text, "[akLeft, akTop]");
    EXPECT_EQ(ParseDesignProperty("Left", "-12").Int, -12);
    EXPECT_EQ(ParseDesignProperty("Big", "12345678901").Int, 12345678901LL);
    EXPECT_EQ(ParseDesignProperty("Ratio", "1.5").Kind, TDesignValueKind::Float);
    EXPECT_EQ(ParseDesignProperty("Data", "{0A0B}").Str, std::string("\x0A\x0B"));
    EXPECT_THROW(ParseDesignProperty("Left", "'unclosed"), EFormFileError);
    EXPECT_THROW(ParseDesignProperty("Left", "1\r\n  Top = 2"), EFormFileError);
}

// ---------------------------------------------------------------------------------------------
// Strings beyond the host's code page

TEST(FormStrings, WideStringsKeepEveryCharacterThroughEitherForm) {
    std::string text = "object F: TForm\r\n  Caption = 'Configura'#231#245'es '#8801\r\n"
                       "  Hint = 'plain'\r\n  Items.Strings = (\r\n    #20013#25991\r\n"
                       "    'a')\r\nend\r\n";
    TFormFile f = ReadFormFile(text, "F.dfm");
    for (TFormFileFormat format : {TFormFileFormat::Binary, TFormFileFormat::Text}) {
        TFormFile again = ReadFormFile(WriteFormFile(*f.Root, format), "again");
        const auto* caption = again.Root->FindProperty("Caption");
        ASSERT_NE(caption, nullptr);
        EXPECT_TRUE(IsWideDesignString(*caption));
        EXPECT_EQ(DesignString(*caption, 1251), u"Configurações ≡");
        EXPECT_EQ(caption->Text, "'Configura'#231#245'es '#8801");
        // Str has the host's code page, for those that read it so.
        EXPECT_EQ(caption->Str, "Configura??es ?");
        EXPECT_FALSE(IsWideDesignString(*again.Root->FindProperty("Hint")));
        EXPECT_EQ(again.Root->FindProperty("Items.Strings")->Text, "(#20013#25991 'a')");
    }
    // The text form written from the text is the text itself.
    EXPECT_EQ(WriteFormFile(*f.Root, TFormFileFormat::Text), text);
}

TEST(FormStrings, NarrowStringsReadInTheCodePageOfTheirFontsCharacterSet) {
    std::string text = "object F: TForm\r\n  Caption = '\xC5\xEB'\r\n"
                       "  Font.Charset = GREEK_CHARSET\r\n"
                       "  object Inherits: TLabel\r\n    Caption = '\xC5\xEB'\r\n  end\r\n"
                       "  object Own: TLabel\r\n    Caption = '\xF5'\r\n    Font.Charset = 238\r\n"
                       "  end\r\n  object Plain: TLabel\r\n    Caption = '\xC5\xEB'\r\n"
                       "    ParentFont = False\r\n  end\r\nend\r\n";
    TFormFile f = ReadFormFile(text, "F.dfm");
    struct Case {
        const char* name;
        int codePage;
        const char16_t* caption;
    };
    for (Case c : {Case{"F", 1253, u"Ελ"},
                   {"Inherits", 1253, u"Ελ"},
                   {"Own", 1250, u"ő"},
                   {"Plain", rtl::HostCodePage, u"Ел"}}) {
        const TDesignComponent* component =
            std::string(c.name) == "F" ? f.Root.get() : f.Root->FindComponent(c.name);
        EXPECT_EQ(FormCodePage(*component), c.codePage) << c.name;
        EXPECT_EQ(DesignString(*component->FindProperty("Caption"), c.codePage), c.caption);
    }
    // A form that names no character set has the host's code page.
    EXPECT_EQ(FormCodePage(*LoadFormFile(Example("Frame1.dfm")).Root), rtl::HostCodePage);
}

TEST(FormStrings, AStringValueIsNarrowWhereTheCodePageHoldsItElseWide) {
    struct Case {
        const char16_t* text;
        int codePage;
        bool wide;
        const char* value;
    };
    for (Case c : {Case{u"Impressão", 1252, false, "'Impress\xE3o'"},
                   {u"Impressão", 1251, false, "'Impress'#227'o'"},
                   {u"Impressão", 1252, true, "'Impress'#227'o'"},
                   {u"ذخیره", 1256, false, "#1584#1582#1740#1585#1607"},
                   {u"It's", 1252, true, "'It''s'"}}) {
        std::string value = FormStringValue(c.text, c.codePage, c.wide);
        EXPECT_EQ(value, c.value);
        auto p = ParseDesignProperty("Caption", value);
        EXPECT_EQ(DesignString(p, c.codePage), c.text);
    }
}

TEST(FormStrings, AUtf8TextFormReadsItsStringsAsWideStrings) {
    std::string text = "\xEF\xBB\xBFobject F: TForm\r\n  Caption = 'Configura\xC3\xA7\xC3\xB5"
                       "es ''\xE8\xAE\xBE'''\r\n  Hint = '#1'\r\nend\r\n";
    TFormFile f = ReadFormFile(text, "F.dfm");
    EXPECT_EQ(f.Format, TFormFileFormat::Text);
    EXPECT_EQ(DesignString(*f.Root->FindProperty("Caption"), 1251), u"Configurações '设'");
    EXPECT_EQ(f.Root->StrProp("Hint"), "#1");
}

// ---------------------------------------------------------------------------------------------
// Damaged files

namespace {
// What reading bytes as a form file raises: its message, or "<read>" when they read.
std::string ErrorOf(const std::string& bytes, const std::string& name = "Bad.dfm") {
    try {
        ReadFormFile(bytes, name);
    } catch (const EFormFileError& e) {
        return e.Message();
    }
    return "<read>";
}
} // namespace

TEST(DamagedFormFiles, EveryCutOfABinaryFormRaisesAClearError) {
    std::string bytes = testfiles::ReadFile(Example("Settings.dfm"));
    for (size_t cut = 0; cut < bytes.size(); cut += 7)
        EXPECT_NE(ErrorOf(bytes.substr(0, cut), "Settings.dfm").find("Settings.dfm"),
                  std::string::npos)
            << "cut at " << cut;
}

TEST(DamagedFormFiles, BadValuesTextsNestingAndForeignFilesRaiseNamingTheFile) {
    const std::string form1 = "TPF0\x06TForm1\x05"
                              "Form1";
    std::string deep = "TPF0", deepList = "TPF0\x02TA\x01"
                                          "a\x01L" +
                                          std::string(100000, '\x01');
    for (int i = 0; i < 100000; ++i)
        deep += "\x02TA\x01"
                "a\x00";
    // An unknown value tag, binary data longer than the file, text errors, foreign files, and
    // nesting beyond the limit (refused without exhausting the stack).
    for (const std::string& bytes :
         {form1 + "\x04Left\x7F",
          form1 + "\x04"
                  "Data"
                  "\x0A\xFF\xFF\xFF\x7F"
                  "abc",
          std::string("object Form1: TForm1\r\n  Left = \r\nend"),
          std::string("object Form1: TForm1\r\n  Left = 1\r\n"), std::string("unit Main;"),
          std::string(), std::string("TPF0\0\0", 6), deep, deepList})
        EXPECT_NE(ErrorOf(bytes).find("Bad.dfm"), std::string::npos) << ErrorOf(bytes);
    EXPECT_THROW(LoadFormFile(Example("NoSuch.dfm")), rtl::EFOpenError);
}

// A float that is infinite or not a number has no text form that reads back: the binary form
// keeps it, the text form is refused rather than written unreadable.
TEST(DamagedFormFiles, AFloatTextCannotHoldIsRefusedInTextFormOnly) {
    const std::string infinity("\x05\0\0\0\0\0\0\0\x80\xFF\x7F", 11);
    const std::string bytes = "TPF0\x06TForm1\x05"
                              "Form1\x01P" +
                              infinity + std::string(2, '\0');
    TFormFile f = ReadFormFile(bytes, "Inf.dfm");
    EXPECT_EQ(WriteFormFile(*f.Root, TFormFileFormat::Binary), bytes);
    EXPECT_THROW(WriteFormFile(*f.Root, TFormFileFormat::Text), EFormFileError);
}

// Lists nested around the limit, as a property of the root and as a field of a collection item:
// what the reader takes, both forms write and read back; the rest is refused.
TEST(DamagedFormFiles, NestingTheReaderTakesWritesInBothForms) {
    const std::string root = "TPF0\x06TForm1\x05"
                             "Form1";
    for (int n = rtl::MaxNestingDepth - 2; n <= rtl::MaxNestingDepth + 1; ++n) {
        const std::string lists = std::string(n, '\x01') + std::string(n, '\x00');
        for (const std::string& bytes :
             {root + "\x01P" + lists + std::string(2, '\0'), root +
                                                                 "\x01"
                                                                 "C\x0E\x01\x01"
                                                                 "F" +
                                                                 lists + std::string(4, '\0')}) {
            if (ErrorOf(bytes) != "<read>") continue;
            TFormFile f = ReadFormFile(bytes, "Deep.dfm");
            for (TFormFileFormat format : {TFormFileFormat::Binary, TFormFileFormat::Text}) {
                std::string written;
                ASSERT_NO_THROW(written = WriteFormFile(*f.Root, format)) << n;
                EXPECT_EQ(WriteFormFile(*ReadFormFile(written, "Deep.dfm").Root, format), written);
            }
        }
    }
}

TEST(DamagedFormFiles, NamesWithoutATextFormAreRefused) {
    // Such a form could be read but never saved as text, nor its text read back. Dots join the
    // parts of a property path, and an empty component name is allowed.
    const std::string end(2, '\0'); // the ends of the property and component lists
    struct Case {
        std::string body;
        const char* error;
    } cases[] = {{"\x06TForm1\x06"
                  "Form 1",
                  "\"Form 1\""},
                 {"\x06TForm1\x05"
                  "Form1"
                  "\x04Le\x01t\x02\x05",
                  "not an identifier"},
                 {"\x06TForm1\x05"
                  "Form1"
                  "\x05"
                  "Color\x07\x03"
                  "c-l",
                  "not an identifier"},
                 {"\x06TForm1" + std::string(1, '\0') +
                      "\x09"
                      "Font.Size\x02\x05",
                  "<read>"}};
    for (const Case& c : cases)
        EXPECT_NE(ErrorOf("TPF0" + c.body + end).find(c.error), std::string::npos) << c.error;
}
