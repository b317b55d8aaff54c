// Object streams exchanged with Free Pascal's Classes unit, the independent implementation of
// the platform's formats: a small converter program (tests/interop/fpconv.pas) is compiled at
// test time, and streams written by one side are read by the other.
#include "rtl/Classes.h"
#include "rtl/Filer.h"
#include "rtl/Lists.h"
#include "rtl/ObjectText.h"
#include "rtl/SysUtils.h"

#include "tests/interop/FpcHarness.h"

#include <gtest/gtest.h>

using namespace rtl;

// The classes of fpconv.pas, declared here with the same published properties, so that
// component streams move between the two sides.
namespace pas {

RTL_ENUM(TTone, tnRed, tnGreen, tnBlue, tnWhite)
RTL_SET(TTones, TTone)

class TPasLook : public TPersistent {
    RTL_CLASS(TPasLook, TPersistent)
public:
    int32_t Size = 8;
    std::string Name;
    TTones Tones;
};

class TPasEntry : public TCollectionItem {
    RTL_CLASS(TPasEntry, TCollectionItem)
public:
    explicit TPasEntry(TCollection* c = nullptr) : TCollectionItem(nullptr) {
        if (c) SetCollection(c);
    }
    std::string Caption;
    int32_t Width = 50;
};

class TPasWidget : public TComponent {
    RTL_CLASS(TPasWidget, TComponent)
public:
    explicit TPasWidget(TComponent* owner = nullptr) : TComponent(owner) {}
    int32_t Small = 0, Middle = 0, Large = 0;
    int64_t Big = 0;
    long double Ratio = 0;
    std::string Text, LongText;
    bool Enabled = true;
    TTone Tone = tnRed;
    TTones Tones;
    char Letter = 0;
    TComponent* Buddy = nullptr;
    Variant Data;
    // The defined properties "Extra" (a list) and "Blob", stored by the root named Main.
    float ExtraSingle = 0;
    long double ExtraCurrency = 0;
    double ExtraDate = 0;
    int64_t ExtraInt = 0;
    std::string ExtraNil;
    std::u16string ExtraWide;
    std::string Blob;

    TPasLook* GetLook() const { return look_.get(); }
    void SetLook(TPasLook* v) {
        look_->Size = v->Size;
        look_->Name = v->Name;
        look_->Tones = v->Tones;
    }
    TStrings* GetLines() const { return lines_.get(); }
    void SetLines(TStrings* v) { lines_->Assign(v); }
    TCollection* GetEntries() const { return entries_.get(); }
    void SetEntries(TCollection* v) { entries_->Assign(v); }

    void GetChildren(const TGetChildProc& proc, TComponent*) override {
        for (int i = 0; i < ComponentCount(); ++i)
            proc(Components(i));
    }
    void DefineProperties(TFiler* filer) override {
        filer->DefineProperty(
            "Extra",
            [this](TReader* r) {
                r->ReadListBegin();
                ExtraSingle = r->ReadSingle();
                ExtraCurrency = r->ReadCurrency();
                ExtraDate = r->ReadDate();
                ExtraInt = r->ReadInt64();
                ExtraNil = r->ReadIdent();
                ExtraWide = r->ReadWideString();
                r->ReadListEnd();
            },
            [this](TWriter* w) {
                w->WriteListBegin();
                w->WriteSingle(ExtraSingle);
                w->WriteCurrency(ExtraCurrency);
                w->WriteDate(ExtraDate);
                w->WriteInteger(ExtraInt);
                w->WriteIdent(ExtraNil);
                w->WriteWideString(ExtraWide);
                w->WriteListEnd();
            },
            Name() == "Main");
        filer->DefineBinaryProperty(
            "Blob",
            [this](TStream* s) {
                Blob.assign(static_cast<size_t>(s->GetSize()), '\0');
                s->ReadBuffer(Blob.data(), s->GetSize());
            },
            [this](TStream* s) { s->WriteBuffer(Blob.data(), static_cast<int64_t>(Blob.size())); },
            Name() == "Main");
    }

private:
    std::unique_ptr<TPasLook> look_ = std::make_unique<TPasLook>();
    std::unique_ptr<TStringList> lines_ = std::make_unique<TStringList>();
    std::unique_ptr<TCollection> entries_ = std::make_unique<TCollection>(TPasEntry::StaticClass());
};

RTL_BEGIN_CLASS(TPasLook)
Property("Size", &TPasLook::Size).Default(8);
Property("Name", &TPasLook::Name);
Property("Tones", &TPasLook::Tones).Default(TTones{});
RTL_END_CLASS

RTL_BEGIN_CLASS(TPasEntry)
Property("Caption", &TPasEntry::Caption);
Property("Width", &TPasEntry::Width).Default(50);
RTL_END_CLASS

RTL_BEGIN_CLASS(TPasWidget)
Property("Small", &TPasWidget::Small).Default(0);
Property("Middle", &TPasWidget::Middle);
Property("Large", &TPasWidget::Large);
Property("Big", &TPasWidget::Big);
Property("Ratio", &TPasWidget::Ratio);
Property("Text", &TPasWidget::Text);
Property("LongText", &TPasWidget::LongText);
Property("Enabled", &TPasWidget::Enabled).Default(true);
Property("Tone", &TPasWidget::Tone).Default(tnRed);
Property("Tones", &TPasWidget::Tones);
Property("Look", &TPasWidget::GetLook, &TPasWidget::SetLook);
Property("Lines", &TPasWidget::GetLines, &TPasWidget::SetLines);
Property("Entries", &TPasWidget::GetEntries, &TPasWidget::SetEntries);
Property("Letter", &TPasWidget::Letter);
Property("Buddy", &TPasWidget::Buddy);
Property("Data", &TPasWidget::Data);
RTL_END_CLASS

} // namespace pas

namespace {

using namespace interop;

class FreePascalInterop : public ::testing::Test {
protected:
    static void SetUpTestSuite() { fpc_.Prepare("interop"); }

    void SetUp() override {
        if (!fpc_.SkipReason.empty()) GTEST_SKIP() << fpc_.SkipReason;
        ASSERT_TRUE(fpc_.CompileError.empty()) << fpc_.CompileError;
    }

    std::string Fpc(const std::string& mode, const std::string& input) {
        return fpc_.Run(mode, input);
    }
    std::string FpcGenerate() { return fpc_.Generate(); }

    static std::string Corpus(const std::string& name) {
        return ReadFile(SourceDir() / "tests" / "interop" / "corpus" / name);
    }

    static inline FpcConverter fpc_;
};

// Text that both converters handle: every value form of Free Pascal's text converter.
const char* const SharedCorpus[] = {"common.txt", "form.txt"};

TEST_F(FreePascalInterop, FreePascalReadsTheValuesWeWrite) {
    for (const char* name : {"common.txt", "form.txt", "platform.txt"}) {
        SCOPED_TRACE(name);
        std::string ours = OurConvert("t2b", Corpus(name));
        EXPECT_EQ(Fpc("dump", ours), OurDump(ours));
    }
}

TEST_F(FreePascalInterop, WeReadTheComponentStreamsFreePascalWrites) {
    std::string theirs = FpcGenerate();
    ASSERT_FALSE(theirs.empty());
    std::string dump = Fpc("dump", theirs);
    EXPECT_EQ(OurDump(theirs), dump);
    // Nested objects, string lists, collections, defined and binary properties and children
    // all came through.
    for (const char* part : {"prop Look.Size", "prop Lines.Strings", "vaCollection", "prop Blob",
                             "vaSingle", "vaCurrency 123456", "vaDate", "vaWString", "vaInt64",
                             "vaNull", "object 0 0 TPasWidget Grand"})
        EXPECT_NE(dump.find(part), std::string::npos) << part;
}

std::unique_ptr<pas::TPasWidget> ReadWidget(const std::string& binary) {
    RegisterClass(pas::TPasWidget::StaticClass());
    TStringStream in(binary);
    std::unique_ptr<TComponent> c(ReadComponent(&in, nullptr));
    EXPECT_EQ(in.GetPosition(), in.GetSize());
    auto* w = dynamic_cast<pas::TPasWidget*>(c.get());
    if (w) c.release();
    return std::unique_ptr<pas::TPasWidget>(w);
}

// Checks the tree fpconv's "gen" builds.
void ExpectGeneratedTree(pas::TPasWidget* main) {
    using namespace pas;
    ASSERT_NE(main, nullptr);
    ASSERT_EQ(main->GetEntries()->Count(), 2);
    auto* e1 = static_cast<TPasEntry*>(main->GetEntries()->GetItem(0));
    auto* e2 = static_cast<TPasEntry*>(main->GetEntries()->GetItem(1));
    auto* child = dynamic_cast<TPasWidget*>(main->FindComponent("Child"));
    auto* grand = dynamic_cast<TPasWidget*>(main->FindComponent("Grand"));
    ASSERT_NE(child, nullptr);
    ASSERT_NE(grand, nullptr);
    EXPECT_EQ(
        std::vector<std::string>({main->Name(), main->Text, main->LongText, main->GetLook()->Name,
                                  main->GetLines()->Text(), e1->Caption, e2->Caption,
                                  main->ExtraNil}),
        std::vector<std::string>({"Main", "It's a \"test\"\r\nline two", std::string(300, 'x'),
                                  "Serif", "first\r\n\r\nthird line\r\n", "one", "two", "nil"}));
    EXPECT_EQ(std::vector<int64_t>({main->Small, main->Middle, main->Large, main->Big,
                                    main->Enabled, main->Tone, main->GetLook()->Size,
                                    main->GetLines()->Count(), e2->Width, main->Letter,
                                    main->ExtraInt, child->Middle, grand->Data.AsInteger()}),
              std::vector<int64_t>({-7, 1000, 100000, 1234567890123, false, tnBlue, 12, 3, 70, 'Q',
                                    -5000000000LL, -300, 42}));
    EXPECT_EQ(main->Ratio, 0.375L);
    EXPECT_EQ(main->Tones, (TTones{tnRed, tnWhite}));
    EXPECT_EQ(main->GetLook()->Tones, (TTones{tnGreen}));
    EXPECT_TRUE(main->Data.IsNull());
    EXPECT_EQ(main->ExtraSingle, 2.5f);
    EXPECT_EQ(main->ExtraCurrency, 12.3456L * 10000 / 10000);
    EXPECT_EQ(main->ExtraDate, 45000.25);
    EXPECT_EQ(main->ExtraWide, u"Wide \u0416\u4E2D");
    std::string blob(100, '\0');
    for (int i = 0; i < 100; ++i)
        blob[i] = static_cast<char>(i * 7);
    EXPECT_EQ(main->Blob, blob);
    EXPECT_EQ(child->Buddy, main);
}

TEST_F(FreePascalInterop, WeReadFreePascalComponentsIntoOurs) {
    auto main = ReadWidget(FpcGenerate());
    ExpectGeneratedTree(main.get());
}

TEST_F(FreePascalInterop, FreePascalReadsOurComponentsIntoItsOwn) {
    // Our writer writes what Free Pascal generated; Free Pascal's reader takes it into its
    // classes and its writer writes it again, exactly as it does with its own stream. (Its
    // reader keeps no children: it does the same with the stream it wrote itself.)
    std::string theirs = FpcGenerate();
    auto main = ReadWidget(theirs);
    ASSERT_NE(main, nullptr);
    TStringStream ours;
    WriteComponent(&ours, main.get());
    std::string again = Fpc("reread", ours.DataString());
    ASSERT_FALSE(again.empty());
    EXPECT_EQ(again, Fpc("reread", theirs));
    auto back = ReadWidget(again);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->Big, 1234567890123);
    EXPECT_EQ(back->GetLook()->Name, "Serif");
    EXPECT_EQ(back->GetLines()->Count(), 3);
    EXPECT_EQ(back->GetEntries()->Count(), 2);
    EXPECT_EQ(back->ExtraWide, u"Wide \u0416\u4E2D");
    EXPECT_TRUE(back->Data.IsNull());
}

TEST_F(FreePascalInterop, FreePascalStreamsRoundTripThroughOurText) {
    std::string theirs = FpcGenerate();
    std::string text = OurConvert("b2t", theirs);
    EXPECT_EQ(OurConvert("t2b", text), theirs);
}

TEST_F(FreePascalInterop, FreePascalParsesOurTextToTheSameBytes) {
    for (const char* name : SharedCorpus) {
        SCOPED_TRACE(name);
        std::string binary = OurConvert("t2b", Corpus(name));
        std::string ourText = OurConvert("b2t", binary);
        EXPECT_EQ(ourText, Corpus(name));
        EXPECT_EQ(Fpc("t2b", ourText), binary);
    }
}

TEST_F(FreePascalInterop, WeParseFreePascalTextAsFreePascalDoes) {
    for (const char* name : SharedCorpus) {
        SCOPED_TRACE(name);
        std::string binary = OurConvert("t2b", Corpus(name));
        std::string theirText = Fpc("b2t", binary);
        ASSERT_FALSE(theirText.empty());
        EXPECT_EQ(OurConvert("t2b", theirText), Fpc("t2b", theirText));
    }
}

TEST_F(FreePascalInterop, TextLayoutMatchesFreePascalWhereTheFormsAgree) {
    // Short strings, integers, identifiers, sets, binary data and nesting come out line for
    // line as Free Pascal writes them (apart from its line ends).
    std::string text = "object Form1: TForm1\r\n"
                       "  Left = 192\r\n"
                       "  Caption = 'It''s'#13#10'x'\r\n"
                       "  Style = [fsBold, fsItalic]\r\n"
                       "  Visible = True\r\n"
                       "  Align = alClient\r\n"
                       "  Wide = 'A'#1046\r\n"
                       "  object Panel1: TPanel\r\n"
                       "    Tag = -3\r\n"
                       "  end\r\n"
                       "  inherited B1: TButton[3]\r\n"
                       "  end\r\n"
                       "end\r\n";
    std::string binary = OurConvert("t2b", text);
    EXPECT_EQ(Lf(OurConvert("b2t", binary)), Fpc("b2t", binary));
}

TEST_F(FreePascalInterop, ResourceFormsAgree) {
    for (const char* name : SharedCorpus) {
        SCOPED_TRACE(name);
        std::string text = Corpus(name);
        std::string ours = OurConvert("t2r", text);
        EXPECT_EQ(ours, Fpc("t2r", text));
        // Free Pascal writes the bytes above 127 of a string as character codes, which both
        // sides then read as a wide string: compare with its own reading of its text.
        std::string theirText = Fpc("r2t", ours);
        EXPECT_EQ(OurConvert("t2b", theirText), Fpc("t2b", theirText));
        EXPECT_EQ(OurDump(OurConvert("t2r", theirText).substr(ours.find("TPF0"))),
                  Fpc("dump", Fpc("t2b", theirText)));
    }
}

TEST_F(FreePascalInterop, SeveralObjectsBackToBack) {
    std::string text = Corpus("form.txt") + Corpus("common.txt") + Corpus("form.txt");
    std::string ours = OurConvert("t2b", text);
    EXPECT_EQ(ours, Fpc("t2b", text));
    EXPECT_EQ(Fpc("dump", ours), OurDump(ours));
    EXPECT_EQ(OurConvert("b2t", ours), text);
}

} // namespace
