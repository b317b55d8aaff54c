// Version lines and their check, reading one branch of a file, and the table of functions the
// editor works through, with its user data.
#include "SpcModel.h"
#include "tests/rtl/TestSupport.h"

#include "persistence/DataHndl.h"
#include "persistence/PropTypes.h"
#include "specification/SpcConst.h"
#include "specification/SpcMng.h"
#include "specification/SpcVers.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace spcmodel;

namespace {

// ---------------------------------------------------------------------------------------------
// Versions

class Separator {
public:
    explicit Separator(char c) : saved_(DecimalSeparator) { DecimalSeparator = c; }
    ~Separator() { DecimalSeparator = saved_; }

private:
    char saved_;
};

TEST(Versions, MakeVerInfoWritesWithADot) {
    Separator comma(',');
    const std::pair<TObjectStorageFormat, const char*> cases[] = {
        {osfBin, "1.01 99.99"}, {osfText, "e_ver: 1.01 d_ver: 99.99"}, {osfExtBin, "untouched"}};
    for (const auto& [format, expected] : cases) {
        std::string text = "untouched";
        MakeVerInfo(format, text);
        EXPECT_EQ(text, expected);
    }
    EXPECT_EQ(DecimalSeparator, ',');
}

TEST(Versions, ParsedTimesTenThousandWithTheCurrentSeparator) {
    // A text number is read from the seventh character of its label on, whatever stands there.
    const std::tuple<TObjectStorageFormat, const char*, int64_t, int64_t> cases[] = {
        {osfBin, "1.01 99.99", 10100, 999900},
        {osfText, " e_ver: 2.5 d_ver: 6.0001", 25000, 60001},
        {osfText, "e_ver:12.5 d_ver:36.0", 25000, 60000}};
    for (const auto& [format, text, editor, delphi] : cases) {
        TSpcVersions v = ParseVerInfo(format, text);
        EXPECT_EQ(std::make_pair(int64_t(v.Editor), int64_t(v.Delphi)),
                  std::make_pair(editor, delphi))
            << text;
    }
    Separator comma(',');
    EXPECT_THROW(ParseVerInfo(osfBin, "1.01 99.99"), ESpcMngError);
    EXPECT_EQ(ParseVerInfo(osfBin, "1,5 2,25").Delphi, 22500);
}

TEST(Versions, MalformedLinesFail) {
    EXPECT_EQ(rtltest::MessageOf<ESpcMngError>([] { ParseVerInfo(osfBin, "1.01"); }),
              "Version information has incorrect format: 1.01.");
    const std::pair<TObjectStorageFormat, const char*> cases[] = {{osfText, "e_ver: 1.01"},
                                                                  {osfText, "d_ver: 1 e_ver: 2"},
                                                                  {osfBin, "one two"},
                                                                  {osfBin, "1e999 1"}};
    for (const auto& [format, text] : cases)
        EXPECT_THROW(ParseVerInfo(format, text), ESpcMngError) << text;
}

TEST(CheckVer, AsksAboutLaterDelphiAndEditorVersionsOnlyWhenChecking) {
    const std::string delphi =
        "Downloaded file of the specification settings.sbn is created by a later Delphi version. "
        "Delphi editor version: 99.99 file version: 99.99.Possible incorrect work with "
        "specification because of RTTI structure changes in new version.Continue load file?";
    const std::string editor =
        "Specification file settings.sbn created with later editor versionCurrent editor version: "
        "1.01 in file version: 1.02.Loading may be incorrect. Continue load file?";
    const struct {
        bool check;
        TObjectStorageFormat format;
        const char* line;
        int answer;
        bool skip;
        std::string question;
    } cases[] = {{false, osfBin, "9.99 99.99", IDNO, false, ""},
                 {true, osfBin, "1.01 99.99", IDNO, true, delphi},
                 {true, osfText, " e_ver: 1.01 d_ver: 99.99", IDYES, false, delphi},
                 {true, osfBin, "1.00 6.00", IDNO, false, ""},
                 {true, osfBin, "1.02 6.00", IDNO, true, editor}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        DialogRecorder dialogs;
        dialogs.answer = c.answer;
        TVerCheckData data{c.check, "settings.sbn"};
        bool skip = !c.skip;
        CheckVer({c.format, false}, c.line, skip, &data);
        EXPECT_EQ(skip, c.skip);
        EXPECT_EQ(dialogs.texts,
                  c.question.empty() ? std::vector<std::string>{} : std::vector{c.question});
    }
    TVerCheckData data{false, "x.sbn"};
    bool skip = false;
    EXPECT_THROW(CheckVer({osfBin, false}, "9.99", skip, &data), ESpcMngError);
    EXPECT_THROW(CheckVer({osfText, false}, "9.99 1.0", skip, nullptr), ESpcMngError);
}

TEST(CheckVer, TheDelphiAnswerOverridesTheEditorAnswer) {
    TVerCheckData data{true, "settings.sbn"};
    bool skip = false;
    int calls = 0;
    TWindowSystem ws;
    ws.MessageBox = [&](HWND, const std::string&, const std::string&, uint32_t) {
        return ++calls == 1 ? IDNO : IDYES;
    };
    TWindowSystem old = SetWindowSystem(ws);
    CheckVer({osfBin, false}, "2.00 99.99", skip, &data);
    SetWindowSystem(old);
    EXPECT_EQ(calls, 2);
    EXPECT_FALSE(skip);
}

// ---------------------------------------------------------------------------------------------
// One branch of a file

class SingleNode : public ::testing::Test {
protected:
    void SetUp() override {
        FillNonDefault(saved_);
        file_ = dir_.File("data.sbn");
        TObject* objects[] = {&saved_.settings};
        // A wrapped object's records are named "I.Xxx".
        SaveObjectDataBinary(objects, file_, "1.01 99.99", false);
    }
    TempDir dir_;
    TProgram saved_;
    std::string file_;
};

TEST_F(SingleNode, ObjectBranchLandsOnTheTargetsOwnPropertiesWhateverTheCase) {
    for (const char* node : {"I.View", "i.VIEW"}) {
        TViewSettings view;
        EXPECT_TRUE(LoadSingleNode(&view, node, file_));
        TObjectSaver saver;
        std::string loaded, expected;
        TPersistent* objs[] = {&view};
        saver.GetObjectProps(objs, loaded);
        objs[0] = saved_.settings.GetView();
        saver.GetObjectProps(objs, expected);
        EXPECT_EQ(loaded, expected) << node;
    }
}

TEST_F(SingleNode, CollectionBranchIsReadIntoTheCollection) {
    THistory history(nullptr);
    history.AddFile("stale.pas", 1);
    EXPECT_TRUE(LoadSingleNode(&history, "I.History", file_));
    ASSERT_EQ(history.Count(), 2);
    EXPECT_EQ(As<THistoryItem>(history.GetItem(0))->FileName, "Main.pas");
    EXPECT_EQ(As<THistoryItem>(history.GetItem(1))->Line, 200);
}

TEST_F(SingleNode, WrongNodesAndFilesFail) {
    THistory history(nullptr);
    EXPECT_THROW(LoadSingleNode(&history, "I.Title", file_), EReadError) << "no collection";
    // "I.Title" is the whole name of a record: what is left of it names nothing.
    TViewSettings view;
    std::string error =
        rtltest::MessageOf<EReadError>([&] { LoadSingleNode(&view, "I.Title", file_); });
    EXPECT_NE(error.find("without a name"), std::string::npos) << error;
    std::string plain = dir_.File("plain.sbn");
    SaveSpc(&saved_.settings, plain, osfBin);
    EXPECT_THROW(LoadSingleNode(&view, "View", plain), EDataHandlingError) << "no header";
}

TEST_F(SingleNode, NoMatchingRecordOtherTargetsAndFormsGiveFalse) {
    std::string text = dir_.File("data.stx");
    TObject* objects[] = {&saved_.settings};
    SaveObjectDataText(objects, text, {}, "e_ver: 1.01 d_ver: 99.99");
    TViewSettings view;
    TFontEx font;
    EXPECT_FALSE(LoadSingleNode(&view, "I.Nothing", file_));
    EXPECT_FALSE(LoadSingleNode(&view, "View", file_));
    EXPECT_FALSE(LoadSingleNode(&font, "I.View.Font", file_));
    EXPECT_FALSE(LoadSingleNode(&view, "I.View", text));
    EXPECT_EQ(view.Depth, 3);
}

// ---------------------------------------------------------------------------------------------
// The table of functions

TEST(InitData, EntriesWorkOnObjects) {
    TInitData d = FillInitData();
    TProgram p;
    FillNonDefault(p);

    std::unique_ptr<TObject> made(d.CreateSpc(TViewSettings::StaticClass()));
    EXPECT_EQ(made->ClassName(), "TViewSettings");
    TPersistent* spc = new TViewSettings();
    d.FreeSpc(spc);
    EXPECT_EQ(spc, nullptr);

    THistory* history = p.settings.GetHistory();
    d.CollectionSetItem(history, 0, history->GetItem(1));
    EXPECT_EQ(As<THistoryItem>(history->GetItem(0))->FileName, "Utils.pas");

    EXPECT_EQ(d.CollectionOwnerName(history), "TSettings");
    THistory orphan(nullptr);
    EXPECT_EQ(d.CollectionOwnerName(&orphan), "");
    EXPECT_EQ(d.CollectionPropName(&orphan), "THistory");
    EXPECT_EQ(d.CollectionPropName(history), "History");

    EXPECT_TRUE(d.ObjectIsClass(&p.settings, TSpcObject::StaticClass()));
    EXPECT_FALSE(d.ObjectIsClass(&p.settings, TSpcItem::StaticClass()));
    TComponent named;
    named.SetName("Named");
    EXPECT_EQ(d.ComponentName(&named), "Named");
    EXPECT_EQ(d.ObjectMethodAddress(&p.settings, std::string(300, 'x')), nullptr);
}

TEST(InitData, SetCopiesAWholeTable) {
    TInitData original = FillInitData();
    TInitData other{};
    other.UserDataCount = 0;
    other.CollectionCount = [](TCollection*) -> int32_t { return 99; };
    SetInitData(other);
    TInitData now = GetInitData();
    EXPECT_EQ(now.LoadSpc, nullptr);
    EXPECT_EQ(now.UserData, nullptr);
    THistory history(nullptr);
    EXPECT_EQ(now.CollectionCount(&history), 99);
    SetInitData(original);
    EXPECT_EQ(std::memcmp(&original, &GlobalInitData(), sizeof original), 0);
}

TEST(UserData, PropertyValueClassesPublishTheirBlock) {
    TInitData d = GetInitData();
    void* block = GetUserData(d, "_@SpcEditorPro");
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block, &SpcEditorProFuncs());
    EXPECT_EQ(GetUserData(d, "_@spceditorpro"), nullptr);
}

TEST(UserData, NameIsAShortStringOfAtMost31Characters) {
    TUserData u = TUserData::Make(std::string(40, 'n'), nullptr);
    EXPECT_EQ(u.GetName(), std::string(31, 'n'));
    EXPECT_EQ(static_cast<uint8_t>(u.Name[0]), 31);
    EXPECT_EQ(sizeof(u.Name), 32u);
}

} // namespace
