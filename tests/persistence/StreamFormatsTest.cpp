// The layers of an object stream: data headers and description lines.
#include "persistence/DataHndl.h"

#include "TestModel.h"

#include <gtest/gtest.h>

using namespace zelvane;
using namespace model;

namespace {

struct Header {
    TObjectStorageFormat format = osfExtBin;
    bool resFormat = false;
    std::string description = "unset";
};

Header ReadHeader(TStream* s, bool resFormatBefore = false) {
    Header h;
    h.resFormat = resFormatBefore;
    ReadDataHeader(s, h.format, h.resFormat, h.description);
    return h;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Data headers

TEST(DataHeader, BinaryHeaderIsLabelResFormatAndADescriptionOfAtMost255Bytes) {
    std::string longText(300, 'x');
    longText[254] = 'y';
    const std::tuple<bool, std::string, std::string> cases[] = {
        {false, "", std::string("sys_bin\0\0", 9)},
        {true, "1.01 99.99", std::string("sys_bin\1\x0A", 9) + "1.01 99.99"},
        {false, longText, std::string("sys_bin\0\xFF", 9) + longText.substr(0, 255)}};
    for (const auto& [res, description, bytes] : cases) {
        TStringStream s;
        WriteBinDataHeader(&s, res, description);
        EXPECT_EQ(s.DataString(), bytes);
        s.WriteString("rest");
        s.SetPosition(0);
        Header h = ReadHeader(&s);
        EXPECT_EQ(std::tie(h.format, h.resFormat, h.description),
                  std::make_tuple(osfBin, res, bytes.substr(9)));
        EXPECT_EQ(s.ReadString(4), "rest");
    }
}

TEST(DataHeader, TextHeaderIsOneLineUnderlinedAsLongAsIt) {
    // The description comes back with its leading blank, line breaks made blanks; a text header
    // leaves ResFormat as the caller had it.
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"", "sys_txt\r\n-------\r\n", ""},
        {"e_ver: 1.01 d_ver: 99.99",
         "sys_txt e_ver: 1.01 d_ver: 99.99\r\n" + std::string(32, '-') + "\r\n",
         " e_ver: 1.01 d_ver: 99.99"},
        {"a\r\nb\r\n\r\nc\rd", "sys_txt a b  c d\r\n----------------\r\n", " a b  c d"}};
    for (const auto& [description, text, read] : cases) {
        TStringStream s;
        WriteTextDataHeader(&s, description);
        EXPECT_EQ(s.DataString(), text);
        s.WriteString("object X");
        s.SetPosition(0);
        Header h = ReadHeader(&s, true);
        EXPECT_EQ(std::tie(h.format, h.resFormat, h.description),
                  std::make_tuple(osfText, true, read));
        EXPECT_EQ(s.ReadString(8), "object X");
    }
    char saved = SeparatorChar;
    SeparatorChar = '=';
    TStringStream t;
    WriteTextDataHeader(&t, "ab");
    SeparatorChar = saved;
    EXPECT_EQ(t.DataString(), "sys_txt ab\r\n==========\r\n");
}

TEST(DataHeader, UnknownLabelsAndBadResFormatsAreRejectedShortOnesAreReadErrors) {
    for (std::string data :
         {std::string("TPF0\x04TFoo"), std::string("SYS_BIN"), std::string("sys_bin\2\0", 9)}) {
        TStringStream s(data);
        EXPECT_EQ(DataError([&] { ReadHeader(&s); }),
                  "Incorrect data format. Required label not found.");
    }
    for (std::string data : {std::string("sys_bin\0\5ab", 11), std::string("sys")}) {
        TStringStream s(data);
        EXPECT_THROW(ReadHeader(&s), EReadError);
    }
}

// ---------------------------------------------------------------------------------------------
// Description lines

TEST(ObjectDescription, DefaultLineNamesTheObjectACarriageReturnWouldBreakTheLine) {
    TFoo foo;
    TStringStream s;
    WriteObjectDescription(&foo, "", &s);
    WriteObjectDescription(&foo, "my own words", &s);
    EXPECT_THROW(WriteObjectDescription(&foo, "two\rlines", &s), EDataHandlingError);
    EXPECT_EQ(s.DataString(), "stored Instance --> TFoo\r\nmy own words\r\n");
}

TEST(ObjectDescription, SkippingTakesExactlyOneLine) {
    TStringStream s("anything at all\r\nobject X\r\n");
    SkipObjectDescription(&s);
    EXPECT_EQ(s.ReadString(8), "object X");
    TStringStream unterminated("no line end");
    EXPECT_THROW(SkipObjectDescription(&unterminated), EReadError);
}
