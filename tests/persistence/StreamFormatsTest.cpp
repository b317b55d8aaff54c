// The layers of an object stream: data headers, description lines and the detection of the
// storage form.
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
// Binary data header

TEST(BinDataHeader, EmptyDescriptionIsNineBytes) {
    TStringStream s;
    WriteBinDataHeader(&s, false, "");
    EXPECT_EQ(s.DataString(), std::string("sys_bin\0\0", 9));
    TStringStream r;
    WriteBinDataHeader(&r, true, "v1");
    EXPECT_EQ(r.DataString(), std::string("sys_bin\1\2v1", 11));
}

TEST(BinDataHeader, ReadsBackWhatWasWritten) {
    TStringStream s;
    WriteBinDataHeader(&s, true, "1.01 99.99");
    s.WriteString("rest");
    s.SetPosition(0);
    Header h = ReadHeader(&s);
    EXPECT_EQ(h.format, osfBin);
    EXPECT_TRUE(h.resFormat);
    EXPECT_EQ(h.description, "1.01 99.99");
    EXPECT_EQ(s.ReadString(4), "rest");
}

TEST(BinDataHeader, LongDescriptionsAreCutTo255Bytes) {
    std::string longText(300, 'x');
    longText[254] = 'y';
    TStringStream s;
    WriteBinDataHeader(&s, false, longText);
    EXPECT_EQ(s.GetSize(), 9 + 255);
    s.SetPosition(0);
    Header h = ReadHeader(&s);
    EXPECT_EQ(h.description, longText.substr(0, 255));
}

TEST(BinDataHeader, ResFormatAboveOneIsRejected) {
    TStringStream s(std::string("sys_bin\2\0", 9));
    EXPECT_EQ(DataError([&] { ReadHeader(&s); }),
              "Incorrect data format. Required label not found.");
}

TEST(BinDataHeader, ATruncatedHeaderIsAReadError) {
    TStringStream s(std::string("sys_bin\0\5ab", 11));
    EXPECT_THROW(ReadHeader(&s), EReadError);
    TStringStream shortLabel("sys");
    EXPECT_THROW(ReadHeader(&shortLabel), EReadError);
}

// ---------------------------------------------------------------------------------------------
// Text data header

TEST(TextDataHeader, EmptyDescriptionIsLabelAndSevenDashes) {
    TStringStream s;
    WriteTextDataHeader(&s, "");
    EXPECT_EQ(s.DataString(), "sys_txt\r\n-------\r\n");
}

TEST(TextDataHeader, TheUnderlineIsAsLongAsTheFirstLine) {
    TStringStream s;
    WriteTextDataHeader(&s, "e_ver: 1.01 d_ver: 99.99");
    EXPECT_EQ(s.DataString(),
              "sys_txt e_ver: 1.01 d_ver: 99.99\r\n" + std::string(32, '-') + "\r\n");
    char saved = SeparatorChar;
    SeparatorChar = '=';
    TStringStream t;
    WriteTextDataHeader(&t, "ab");
    SeparatorChar = saved;
    EXPECT_EQ(t.DataString(), "sys_txt ab\r\n==========\r\n");
}

TEST(TextDataHeader, DescriptionComesBackWithItsLeadingBlank) {
    TStringStream s;
    WriteTextDataHeader(&s, "abc");
    s.WriteString("object X");
    s.SetPosition(0);
    Header h = ReadHeader(&s, true);
    EXPECT_EQ(h.format, osfText);
    EXPECT_TRUE(h.resFormat) << "a text header leaves ResFormat as the caller had it";
    EXPECT_EQ(h.description, " abc");
    EXPECT_EQ(s.ReadString(8), "object X");
}

TEST(TextDataHeader, LineBreaksInTheDescriptionBecomeBlanks) {
    TStringStream s;
    WriteTextDataHeader(&s, "a\r\nb\r\n\r\nc\rd");
    s.WriteString("Z");
    s.SetPosition(0);
    Header h = ReadHeader(&s);
    EXPECT_EQ(h.description, " a b  c d");
    EXPECT_EQ(s.ReadString(1), "Z");
}

TEST(DataHeader, UnknownLabelsAreRejected) {
    TStringStream s("TPF0\x04TFoo");
    EXPECT_EQ(DataError([&] { ReadHeader(&s); }),
              "Incorrect data format. Required label not found.");
    TStringStream upper("SYS_BIN\0\0");
    EXPECT_EQ(DataError([&] { ReadHeader(&upper); }),
              "Incorrect data format. Required label not found.");
}

TEST(DataHeader, SkipDataHeaderLeavesTheStreamAtTheObjects) {
    TStringStream s;
    WriteTextDataHeader(&s, "text");
    WriteBinDataHeader(&s, true, "bin");
    s.SetPosition(0);
    EXPECT_EQ(SkipDataHeader(&s), osfText);
    EXPECT_EQ(SkipDataHeader(&s), osfBin);
    EXPECT_EQ(s.GetPosition(), s.GetSize());
}

// ---------------------------------------------------------------------------------------------
// Description lines

TEST(ObjectDescription, DefaultLineNamesTheObject) {
    TFoo foo;
    TStringStream s;
    WriteObjectDescription(&foo, "", &s);
    WriteObjectDescription(&foo, "my own words", &s);
    EXPECT_EQ(s.DataString(), "stored Instance --> TFoo\r\nmy own words\r\n");
}

TEST(ObjectDescription, ACarriageReturnWouldBreakTheLine) {
    TFoo foo;
    TStringStream s;
    EXPECT_THROW(WriteObjectDescription(&foo, "two\rlines", &s), EDataHandlingError);
    EXPECT_EQ(s.GetSize(), 0);
}

TEST(ObjectDescription, SkippingTakesExactlyOneLine) {
    TStringStream s("anything at all\r\nobject X\r\n");
    SkipObjectDescription(&s);
    EXPECT_EQ(s.ReadString(8), "object X");
    TStringStream unterminated("no line end");
    EXPECT_THROW(SkipObjectDescription(&unterminated), EReadError);
}

// ---------------------------------------------------------------------------------------------
// Detection of the storage form

TEST(FormatDetection, ByTheFirstBytes) {
    struct Case {
        std::string head;
        TObjectStorageFormat format;
    } cases[] = {
        {std::string("\xFF\x0A\x00", 3), osfResBin},
        {"TPF0\x04TFoo", osfBin},
        {"object A: TFoo", osfText},
        {"OBJECT A", osfText},
        {"inherited A: TFoo", osfText},
        {"Inline A", osfText},
        {"  object", osfText},
        {"\tobject", osfText},
        {"\x0Bobject", osfText},
        {"\robject", osfText},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.head);
        TStringStream s("xx" + c.head);
        s.SetPosition(2);
        EXPECT_EQ(DetectObjectFormat(&s), c.format);
        EXPECT_EQ(s.GetPosition(), 2) << "the position is restored";
    }
}

TEST(FormatDetection, HeadersAndDescriptionLinesAreNotObjects) {
    for (std::string head :
         {"sys_bin", "sys_txt", "stored Instance --> TFoo", "TPF", "TPF1", "\nobject", "", "TP"}) {
        SCOPED_TRACE(head);
        TStringStream s(head);
        EXPECT_EQ(DataError([&] { DetectObjectFormat(&s); }), "Thread does not contain object.");
        EXPECT_EQ(s.GetPosition(), 0);
    }
}

TEST(FormatDetection, MessagesComeFromTheStringTable) {
    // A language module's text for the number replaces the package's own.
    TResStrLookup old = SetResStrLookup([](int id) {
        return id == SNoObjectInStream ? std::string("Der Strom enth\xE4lt kein Objekt.")
                                       : std::string();
    });
    TStringStream s("xyz");
    std::string message = DataError([&] { DetectObjectFormat(&s); });
    SetResStrLookup(old);
    EXPECT_EQ(message, "Der Strom enth\xE4lt kein Objekt.");
    EXPECT_EQ(PackageResStr(SLabelNotFound), "Incorrect data format. Required label not found.");
    EXPECT_EQ(PackageResStr(SCollItemExists), "Collection\x92s element ''%s'' already exists.");
}
