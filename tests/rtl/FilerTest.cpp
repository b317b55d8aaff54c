// The component filer: the bytes of every value, reading them back, buffering, damaged
// streams, property records with defaults and ancestors, the Error contract, and components.
#include "rtl/Classes.h"
#include "rtl/Graphics.h"
#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include "TestSupport.h"

#include <limits>
#include <memory>

using namespace rtl;
using namespace rtltest;

namespace ftest {

RTL_ENUM(TTone, tnRed, tnGreen, tnBlue, tnWhite)
RTL_SET(TTones, TTone)
RTL_EVENT(TClickEvent, void(TObject*), "Sender: TObject")

class TLook : public TPersistent {
    RTL_CLASS(TLook, TPersistent)
public:
    int32_t Size = 8;
    std::string Name;
    TTones Tones;
};

class TEntry : public TCollectionItem {
    RTL_CLASS(TEntry, TCollectionItem)
public:
    // Joins the collection once it is a TEntry: TCollection checks the item's class, which
    // isn't known yet while TCollectionItem's constructor runs.
    explicit TEntry(TCollection* collection = nullptr) : TCollectionItem(nullptr) {
        if (collection) SetCollection(collection);
    }
    std::string Caption;
    int32_t Width = 50;
    TComponent* Target = nullptr;
};

class TWidget : public TComponent {
    RTL_CLASS(TWidget, TComponent)
public:
    explicit TWidget(TComponent* owner = nullptr) : TComponent(owner) {}

    int32_t Count = 0;
    int64_t Big = 0;
    double Ratio = 0;
    std::string Text;
    std::u16string Wide;
    bool Enabled = true;
    TTone Tone = tnRed;
    TTones Tones;
    char Letter = 0;
    Variant Data;
    TColor Color = clBlack;
    TWidget* Buddy = nullptr;
    TClickEvent OnClick;
    std::vector<std::string> Lines;
    std::string Blob;
    int loadedCalls = 0;

    TLook* GetLook() const { return look_.get(); }
    void SetLook(TLook* v) {
        look_->Size = v->Size;
        look_->Name = v->Name;
        look_->Tones = v->Tones;
    }
    TStrings* GetItems() const { return items_.get(); }
    void SetItems(TStrings* v) { items_->Assign(v); }
    TCollection* GetEntries() const { return entries_.get(); }
    void SetEntries(TCollection* v) { entries_->Assign(v); }
    void Click(TObject*) {}

    // Children read from a stream belong to the widget that holds them.
    TComponent* GetChildOwner() override { return this; }
    void GetChildren(const TGetChildProc& proc, TComponent*) override {
        for (int i = 0; i < ComponentCount(); ++i)
            proc(Components(i));
    }
    void Loaded() override {
        TComponent::Loaded();
        ++loadedCalls;
    }

    void DefineProperties(TFiler* filer) override {
        // As the platform's string list does, nothing is written that equals the ancestor's.
        auto* ancestor = dynamic_cast<TWidget*>(filer->Ancestor);
        bool linesDiffer = ancestor ? ancestor->Lines != Lines : !Lines.empty();
        bool blobDiffers = ancestor ? ancestor->Blob != Blob : !Blob.empty();
        // Stored as the platform stores a string list: a list of strings.
        filer->DefineProperty(
            "Lines",
            [this](TReader* r) {
                Lines.clear();
                r->ReadListBegin();
                while (!r->EndOfList())
                    Lines.push_back(r->ReadString());
                r->ReadListEnd();
            },
            [this](TWriter* w) {
                w->WriteListBegin();
                for (const auto& l : Lines)
                    w->WriteString(l);
                w->WriteListEnd();
            },
            linesDiffer);
        filer->DefineBinaryProperty(
            "Blob",
            [this](TStream* s) {
                Blob.assign(static_cast<size_t>(s->GetSize()), '\0');
                s->ReadBuffer(Blob.data(), s->GetSize());
            },
            [this](TStream* s) { s->WriteBuffer(Blob.data(), static_cast<int64_t>(Blob.size())); },
            blobDiffers);
    }

private:
    std::unique_ptr<TLook> look_ = std::make_unique<TLook>();
    std::unique_ptr<TStringList> items_ = std::make_unique<TStringList>();
    std::unique_ptr<TCollection> entries_ = std::make_unique<TCollection>(TEntry::StaticClass());
};

// A component class that no stream reader can find.
class TUnregistered : public TComponent {
    RTL_CLASS(TUnregistered, TComponent)
public:
    using TComponent::TComponent;
};

RTL_BEGIN_CLASS(TLook)
Property("Size", &TLook::Size).Default(8);
Property("Name", &TLook::Name);
Property("Tones", &TLook::Tones).Default(TTones{});
RTL_END_CLASS

RTL_BEGIN_CLASS(TEntry)
Property("Caption", &TEntry::Caption);
Property("Width", &TEntry::Width).Default(50);
Property("Target", &TEntry::Target);
RTL_END_CLASS

RTL_BEGIN_CLASS(TWidget)
Property("Count", &TWidget::Count).Default(0);
Property("Big", &TWidget::Big);
Property("Ratio", &TWidget::Ratio);
Property("Text", &TWidget::Text);
Property("Wide", &TWidget::Wide);
Property("Enabled", &TWidget::Enabled).Default(true);
Property("Tone", &TWidget::Tone).Default(tnRed);
Property("Tones", &TWidget::Tones).Default(TTones{});
Property("Letter", &TWidget::Letter).Default(0);
Property("Data", &TWidget::Data);
Property<TColor>("Color", &TWidget::Color).Default(clBlack);
Property("Look", &TWidget::GetLook, &TWidget::SetLook);
Property("Entries", &TWidget::GetEntries, &TWidget::SetEntries);
Property("Items", &TWidget::GetItems, &TWidget::SetItems);
Property("Buddy", &TWidget::Buddy);
Property("OnClick", &TWidget::OnClick);
Method<&TWidget::Click>("Click");
RTL_END_CLASS

RTL_IMPLEMENT_CLASS(TUnregistered)

} // namespace ftest

using namespace ftest;

namespace {

// The stream of bytes a reader below reads, made first.
struct TBytes {
    explicit TBytes(const std::string& bytes) : source(bytes) {}
    TStringStream source;
};

// A reader over bytes of its own.
struct TBytesReader : TBytes, TReader {
    explicit TBytesReader(const std::string& bytes) : TBytes(bytes), TReader(&source) {}
};

struct RegisterWidget {
    RegisterWidget() { RegisterClass(TWidget::StaticClass()); }
} registerWidget;

// ---------------------------------------------------------------------------------------------

TEST(FilerValues, ObjectWithTwoPropertiesHasTheDocumentedBytes) {
    std::string s = Written([](TWriter& w) {
        w.WriteSignature();
        w.WriteStr("TFoo");
        w.WriteStr("B");
        w.WriteStr("Width");
        w.WriteInteger(100);
        w.WriteStr("Caption");
        w.WriteString("ab");
        w.WriteListEnd();
        w.WriteListEnd();
    });
    EXPECT_EQ(s, Bytes({0x54, 0x50, 0x46, 0x30, 0x04, 0x54, 0x46, 0x6F, 0x6F, 0x01, 0x42,
                        0x05, 0x57, 0x69, 0x64, 0x74, 0x68, 0x02, 0x64, 0x07, 0x43, 0x61,
                        0x70, 0x74, 0x69, 0x6F, 0x6E, 0x06, 0x02, 0x61, 0x62, 0x00, 0x00}));
}

TEST(FilerValues, IntegersTakeTheSmallestForm) {
    struct Case {
        int64_t value;
        std::string bytes;
    } cases[] = {
        {0, Bytes({2, 0})},
        {-128, Bytes({2, 0x80})},
        {127, Bytes({2, 0x7F})},
        {128, Bytes({3, 0x80, 0})},
        {-129, Bytes({3, 0x7F, 0xFF})},
        {32767, Bytes({3, 0xFF, 0x7F})},
        {32768, Bytes({4, 0, 0x80, 0, 0})},
        {-32769, Bytes({4, 0xFF, 0x7F, 0xFF, 0xFF})},
        {2147483647, Bytes({4, 0xFF, 0xFF, 0xFF, 0x7F})},
        {2147483648LL, Bytes({19, 0, 0, 0, 0x80, 0, 0, 0, 0})},
        {-2147483649LL, Bytes({19, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF})},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        EXPECT_EQ(Written([&](TWriter& w) { w.WriteInteger(c.value); }), c.bytes);
        TBytesReader r(c.bytes);
        EXPECT_EQ(r.ReadInt64(), c.value);
    }
}

TEST(FilerValues, IdentifiersFalseTrueNilNullHaveTagsOfTheirOwn) {
    for (auto [ident, bytes] : {std::pair{"False", Bytes({vaFalse})},
                                {"TRUE", Bytes({vaTrue})},
                                {"nil", Bytes({vaNil})},
                                {"null", Bytes({vaNull})},
                                {"alTop", Bytes({vaIdent, 5, 'a', 'l', 'T', 'o', 'p'})}})
        EXPECT_EQ(Written([&](TWriter& w) { w.WriteIdent(ident); }), bytes) << ident;
    EXPECT_EQ(Written([](TWriter& w) { w.WriteBoolean(true); }), Bytes({vaTrue}));
}

TEST(FilerValues, StringsCharsAndWideStrings) {
    std::string s255(255, 'a'), s256(256, 'b');
    std::string w255 = Written([&](TWriter& w) { w.WriteString(s255); });
    EXPECT_EQ(w255.substr(0, 2), Bytes({vaString, 255}));
    EXPECT_EQ(w255.size(), 257u);
    std::string w256 = Written([&](TWriter& w) { w.WriteString(s256); });
    EXPECT_EQ(w256.substr(0, 5), Bytes({vaLString, 0, 1, 0, 0}));
    EXPECT_EQ(w256.size(), 261u);
    // A short string is cut at 255 bytes.
    EXPECT_EQ(Written([&](TWriter& w) { w.WriteStr(s256); }).size(), 256u);
    EXPECT_EQ(Written([](TWriter& w) { w.WriteChar('x'); }), Bytes({vaString, 1, 'x'}));
    EXPECT_EQ(Written([](TWriter& w) { w.WriteWideString(u"A\u0416"); }),
              Bytes({vaWString, 2, 0, 0, 0, 'A', 0, 0x16, 0x04}));
    EXPECT_EQ(Written([](TWriter& w) { w.WriteUTF8String("\xC3\xA9"); }),
              Bytes({vaUTF8String, 2, 0, 0, 0, 0xC3, 0xA9}));
}

TEST(FilerValues, NonCanonicalExtendedEncodingsReadAsTheValueTheyStandFor) {
    // The smallest normal number, 2^-16382, in its own encoding and as a pseudo-denormal (the
    // integer bit set under a zero exponent), which stands for the same value.
    // An unnormal, 1.0 written with the integer bit clear one exponent up: 0.5 * 2. Canonical
    // values are as they are, signs included.
    const long double least = std::numeric_limits<long double>::min();
    const struct Case {
        uint8_t bytes[10];
        long double value;
    } cases[] = {{{0, 0, 0, 0, 0, 0, 0, 0x80, 0x01, 0x00}, least},
                 {{0, 0, 0, 0, 0, 0, 0, 0x80, 0x00, 0x00}, least},
                 {{0, 0, 0, 0, 0, 0, 0, 0x40, 0x00, 0x40}, 1.0L},
                 {{0, 0, 0, 0, 0, 0, 0, 0xC0, 0xFF, 0xBF}, -1.5L},
                 {{1, 0, 0, 0, 0, 0, 0, 0, 0, 0}, std::numeric_limits<long double>::denorm_min()}};
    for (const Case& c : cases)
        EXPECT_EQ(BytesToExtended(c.bytes), c.value) << FormatStreamFloat(c.value);
    // And the pseudo-denormal prints as the number it is, which reads back.
    EXPECT_EQ(FormatStreamFloat(BytesToExtended(cases[1].bytes)), FormatStreamFloat(least));
}

// One value of every form, in a list, then a sentinel string.
void WriteEveryForm(TWriter& w) {
    w.WriteListBegin();
    w.WriteInteger(-5);
    w.WriteInteger(int64_t(1) << 40);
    w.WriteFloat(0.1L);
    w.WriteSingle(0.25f);
    w.WriteCurrency(-7.5L);
    w.WriteDate(45000.5);
    w.WriteString("text");
    w.WriteString(std::string(300, 'z'));
    w.WriteWideString(u"\u4E2D\u6587");
    w.WriteUTF8String("\xD0\x96");
    w.WriteIdent("clRed");
    w.WriteChar('c');
    w.WriteWideChar(u'\u0416');
    w.WriteBoolean(false);
    w.WriteIdent("nil");
    w.WriteBinary([](TStream* s) { s->WriteBuffer("\x01\x02\x03", 3); });
    w.WriteSet(3, TypeInfo<TTones>());
    w.WriteListBegin();
    w.WriteListEnd();
    w.WriteValue(vaCollection);
    w.WriteInteger(7); // an item's order value
    w.WriteListBegin();
    w.WriteStr("P");
    w.WriteInteger(1);
    w.WriteListEnd();
    w.WriteListEnd();
    w.WriteListEnd();
    w.WriteString("sentinel");
}

TEST(FilerValues, EveryValueReadsBackOrIsSkipped) {
    TBytesReader r(Written(WriteEveryForm));
    r.ReadListBegin();
    EXPECT_EQ(r.ReadInteger(), -5);
    EXPECT_EQ(r.ReadInt64(), int64_t(1) << 40);
    EXPECT_EQ(r.ReadFloat(), 0.1L);
    EXPECT_EQ(r.ReadSingle(), 0.25f);
    EXPECT_EQ(r.ReadCurrency(), -7.5L);
    EXPECT_EQ(r.ReadDate(), 45000.5);
    EXPECT_EQ(r.ReadString(), "text");
    EXPECT_EQ(r.ReadString(), std::string(300, 'z'));
    EXPECT_EQ(r.ReadWideString(), u"\u4E2D\u6587");
    EXPECT_EQ(r.ReadWideString(), u"\u0416");
    EXPECT_EQ(r.ReadIdent(), "clRed");
    EXPECT_EQ(r.ReadChar(), 'c');
    EXPECT_EQ(r.ReadWideChar(), u'\u0416');
    EXPECT_FALSE(r.ReadBoolean());
    EXPECT_EQ(r.ReadIdent(), "nil");
    for (int i = 0; i < 4; ++i) // binary, set, list, collection
        r.SkipValue();
    r.ReadListEnd();
    EXPECT_EQ(r.ReadString(), "sentinel");
    // SkipValue passes over the whole list at once.
    TBytesReader skipping(Written(WriteEveryForm));
    skipping.SkipValue();
    EXPECT_EQ(skipping.ReadString(), "sentinel");
}

TEST(FilerValues, ReadersConvertBetweenRelatedForms) {
    std::string data = Written([](TWriter& w) {
        w.WriteInteger(42);            // read as a float
        w.WriteWideString(u"\u0416x"); // read as a single-byte string (Windows-1251)
        w.WriteString("\xC6");         // read as a wide string
        w.WriteUTF8String("\xD0\x96"); // read as a single-byte string
        w.WriteIdent("nil");
    });
    TBytesReader r(data);
    EXPECT_EQ(r.ReadFloat(), 42.0L);
    EXPECT_EQ(r.ReadString(), "\xC6x");
    EXPECT_EQ(r.ReadWideString(), u"\u0416");
    EXPECT_EQ(r.ReadString(), "\xC6");
    EXPECT_EQ(r.ReadIdent(), "nil");
}

TEST(FilerValues, VariantsKeepTheirType) {
    std::vector<Variant> values = {Variant(),
                                   Variant::Null(),
                                   Variant::OfType(varShortInt, int64_t(-3)),
                                   Variant::OfType(varSmallint, int64_t(1000)),
                                   Variant(int32_t(100000)),
                                   Variant(int64_t(1) << 40),
                                   Variant(2.5),
                                   Variant::OfType(varSingle, 0.5L),
                                   Variant::OfType(varCurrency, 1.25L),
                                   Variant::OfType(varDate, 3.0L),
                                   Variant("abc"),
                                   Variant(std::u16string(u"\u0416")),
                                   Variant(true)};
    std::string data = Written([&](TWriter& w) {
        for (const auto& v : values)
            w.WriteVariant(v);
    });
    TBytesReader r(data);
    for (const auto& v : values) {
        Variant back = r.ReadVariant();
        EXPECT_EQ(back.VarType(), v.VarType());
        EXPECT_TRUE(back == v) << v.VarType();
    }
}

TEST(FilerValues, PrefixCarriesFlagsAndChildPosition) {
    // A class name whose length byte would read as flags gets an empty flag byte before it.
    const std::string longName(240, 'T');
    std::string data = Written([&](TWriter& w) {
        w.WritePrefix(ffInherited | ffChildPos, 300, "A");
        w.WritePrefix(0, 5, "X");
        w.WritePrefix(0, 5, longName);
    });
    EXPECT_EQ(data.substr(0, 8), Bytes({0xF3, vaInt16, 0x2C, 0x01, 1, 'A', 1, 'X'}));
    EXPECT_EQ(data.substr(8, 2), Bytes({0xF0, 240}));
    TBytesReader r(data);
    TFilerFlags flags = 0;
    int32_t pos = 0;
    const std::pair<TFilerFlags, std::string> expected[] = {
        {ffInherited | ffChildPos, "A"}, {0, "X"}, {0, longName}};
    for (const auto& [wantFlags, wantName] : expected) {
        r.ReadPrefix(flags, pos);
        EXPECT_EQ(flags, wantFlags);
        EXPECT_EQ(r.ReadStr(), wantName);
    }
    EXPECT_EQ(pos, 300);
}

TEST(FilerBuffering, WriterHoldsDataUntilFlushed) {
    TStringStream out;
    TWriter w(&out, 4096);
    w.WriteString("held");
    EXPECT_EQ(out.GetSize(), 0);
    EXPECT_EQ(w.Position(), 6);
    w.FlushBuffer();
    EXPECT_EQ(out.DataString(), Bytes({vaString, 4, 'h', 'e', 'l', 'd'}));
    // Blocks larger than the buffer reach the stream whole and in order.
    std::string big(10000, 'x');
    w.WriteString(big);
    w.FlushBuffer();
    EXPECT_EQ(out.GetSize(), 6 + 5 + 10000);
    EXPECT_EQ(out.DataString().substr(6, 5), Bytes({vaLString, 0x10, 0x27, 0, 0}));
}

TEST(FilerDamage, TruncatedStreamsRaiseReadErrors) {
    std::string full = Written(WriteEveryForm);
    for (size_t n = 0; n + 10 < full.size(); ++n) { // the list, not the sentinel after it
        EXPECT_THROW(TBytesReader(full.substr(0, n)).SkipValue(), EReadError) << n;
    }
}

TEST(FilerDamage, WrongTagsOversizedLengthsUnknownTagsAndDeepNestingRaise) {
    TBytesReader r(Written([](TWriter& w) { w.WriteString("text"); }));
    EXPECT_EQ(MessageOf<EReadError>([&] { r.ReadInteger(); }), "Invalid property value");
    // Nothing was taken: the value still reads as what it is.
    EXPECT_EQ(r.ReadString(), "text");
    EXPECT_THROW(r.ReadBoolean(), EReadError);
    // Lengths of nearly 4 GiB in streams of a few bytes fail without taking the memory; a
    // million nested lists end in an error, not in a stack overflow.
    EXPECT_THROW(TBytesReader(Bytes({vaLString, 0xF0, 0xFF, 0xFF, 0xFF, 'a', 'b'})).ReadString(),
                 EReadError);
    EXPECT_THROW(TBytesReader(Bytes({vaWString, 0xFF, 0xFF, 0xFF, 0x7F, 'a', 0})).ReadWideString(),
                 EReadError);
    for (const std::string& bad : {Bytes({vaBinary, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3}),
                                   Bytes({21, 0, 0}), std::string(1000000, char(vaList))})
        EXPECT_THROW(TBytesReader(bad).SkipValue(), EReadError);
    EXPECT_THROW(TBytesReader("TPF1").ReadSignature(), EReadError);
}

TEST(FilerResourceHeader, WrapsAStreamAndReadsBack) {
    TMemoryStream s;
    int64_t fixup = 0;
    WriteResourceHeader(&s, "TFORM1", fixup);
    s.WriteBuffer("0123456789", 10);
    FixupResourceHeader(&s, fixup);
    // The header's bytes are pinned whole by ObjectTextResources.TextToResourceAndBack.
    EXPECT_EQ(s.GetPosition(), s.GetSize());
    s.SetPosition(0);
    ReadResHeader(&s);
    EXPECT_EQ(s.GetPosition(), 16);
    TStringStream bad(Bytes({0xFF, 0x0B, 0x00, 'X', 0, 0x30, 0x10, 0, 0, 0, 0}));
    EXPECT_THROW(ReadResHeader(&bad), EInvalidImage);
    TStringStream cut(Bytes({0xFF, 0x0A, 0x00, 'X'}));
    EXPECT_THROW(ReadResHeader(&cut), EInvalidImage);
}

// ---------------------------------------------------------------------------------------------
// Property records

std::string PropertiesOf(TPersistent* obj) {
    return Written([&](TWriter& w) { w.WriteProperties(obj); });
}

// The text of an object of class TWidget with obj's properties.
std::string ObjectText(TPersistent* obj, TPersistent* ancestor = nullptr) {
    return ToText(Written([&](TWriter& wr) {
        wr.WriteSignature();
        wr.WriteStr("TWidget");
        wr.WriteStr("");
        wr.Ancestor = ancestor;
        wr.WriteProperties(obj);
        wr.WriteListEnd();
        wr.WriteListEnd();
    }));
}

TEST(FilerProperties, ValuesEqualToTheirDefaultsAreLeftOut) {
    TWidget w;
    // Only the collection is there: without an ancestor it is always written.
    EXPECT_EQ(PropertiesOf(&w), Bytes({7, 'E', 'n', 't', 'r', 'i', 'e', 's', vaCollection, 0}));
    w.Count = 5;
    w.Enabled = false;
    w.Tone = tnBlue;
    w.Tones = {tnRed, tnWhite};
    w.Letter = 'L';
    w.GetLook()->Name = "Serif";
    EXPECT_EQ(ObjectText(&w), "object TWidget\r\n"
                              "  Count = 5\r\n"
                              "  Enabled = False\r\n"
                              "  Tone = tnBlue\r\n"
                              "  Tones = [tnRed, tnWhite]\r\n"
                              "  Letter = 'L'\r\n"
                              "  Look.Name = 'Serif'\r\n"
                              "  Entries = <>\r\n"
                              "end\r\n");
}

TEST(FilerProperties, ValuesEqualToTheAncestorsAreLeftOut) {
    TWidget w, ancestor;
    w.Count = ancestor.Count = 3;
    w.Text = ancestor.Text = "same";
    w.GetLook()->Size = ancestor.GetLook()->Size = 20;
    w.Tone = tnGreen;
    ancestor.Enabled = false; // w keeps the default, which differs from the ancestor
    EXPECT_EQ(ObjectText(&w, &ancestor), "object TWidget\r\n"
                                         "  Enabled = True\r\n"
                                         "  Tone = tnGreen\r\n"
                                         "end\r\n");
}

struct ErrorLog {
    std::vector<std::string> messages;
    bool answer = true;
    TReaderError Handler() {
        return [this](TReader*, const std::string& m, bool& handled) {
            messages.push_back(m);
            handled = answer;
        };
    }
};

std::string Record(const std::string& name, const std::function<void(TWriter&)>& value) {
    return Written([&](TWriter& w) {
        w.WriteStr(name);
        value(w);
    });
}

// Reads records into w with errors going to log; the answer, when none, is that EReadError.
std::string ReadLogged(const std::string& data, TWidget& w, ErrorLog& log) {
    TBytesReader r(data + std::string(1, '\0'));
    r.OnError = log.Handler();
    try {
        r.ReadProperties(&w);
    } catch (const EReadError& e) {
        return e.Message();
    }
    return {};
}

TEST(FilerErrorContract, FailuresInAPropertyGoToErrorAndReadingGoesOn) {
    std::string data = Record("Missing", [](TWriter& w) { w.WriteString("skipped"); }) +
                       Record("Count", [](TWriter& w) { w.WriteString("not a number"); }) +
                       Record("Tone", [](TWriter& w) { w.WriteIdent("tnPurple"); }) +
                       Record("Tones",
                              [](TWriter& w) {
                                  w.WriteValue(vaSet);
                                  w.WriteStr("tnRed");
                                  w.WriteStr("tnNone");
                                  w.WriteStr("");
                              }) +
                       Record("Look.Missing", [](TWriter& w) { w.WriteInteger(1); }) +
                       Record("Text", [](TWriter& w) { w.WriteString("kept"); });
    TWidget w;
    w.SetName("Main");
    ErrorLog log;
    EXPECT_EQ(ReadLogged(data, w, log), "");
    EXPECT_EQ(log.messages,
              (V{"Error reading Main.Missing: Property Missing does not exist",
                 "Error reading Main.Count: Invalid property value",
                 "Error reading Main.Tone: Invalid enumeration value 'tnPurple'",
                 "Error reading Main.Tones: Invalid set element 'tnNone'",
                 "Error reading Main.Look.Missing: Property Missing does not exist"}));
    EXPECT_EQ(w.Text, "kept");
    EXPECT_EQ(w.Count, 0);
    EXPECT_EQ(w.Tone, tnRed);
}

TEST(FilerErrorContract, ARefusedErrorOrAFailureInsideADefinedPropertyStopsTheRead) {
    const std::string text = Record("Text", [](TWriter& w) { w.WriteString("x"); });
    TWidget w;
    ErrorLog refusing;
    refusing.answer = false;
    EXPECT_NE(
        ReadLogged(Record("Missing", [](TWriter& w) { w.WriteInteger(1); }) + text, w, refusing),
        "");
    EXPECT_EQ(refusing.messages.size(), 1u);
    EXPECT_EQ(w.Text, "");
    // Without a handler nothing is forgiven.
    TStringStream again(Record("Missing", [](TWriter& w) { w.WriteInteger(1); }) + '\0');
    EXPECT_THROW(TReader(&again).ReadProperties(&w), EReadError);
    // "Lines" holds an integer where its handler expects a list: not for Error to forgive.
    ErrorLog log;
    EXPECT_NE(ReadLogged(Record("Lines", [](TWriter& w) { w.WriteInteger(3); }) + text, w, log),
              "");
    EXPECT_TRUE(log.messages.empty());
    // A binary property with a value of another kind can be skipped, though.
    EXPECT_EQ(ReadLogged(Record("Blob", [](TWriter& w) { w.WriteInteger(3); }) + text, w, log), "");
    EXPECT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(w.Text, "x");
}

// ---------------------------------------------------------------------------------------------
// Components

std::unique_ptr<TWidget> MakeTree() {
    auto main = std::make_unique<TWidget>();
    main->SetName("Main");
    main->Count = 1;
    main->Lines = {"a", "b"};
    main->Blob = "blob";
    main->OnClick = TClickEvent::Of<&TWidget::Click>(main.get());
    auto* e1 = static_cast<TEntry*>(main->GetEntries()->Add());
    e1->Caption = "first";
    auto* e2 = static_cast<TEntry*>(main->GetEntries()->Add());
    e2->Width = 70;
    auto* child = new TWidget(main.get());
    child->SetName("Child");
    child->Text = "child";
    auto* grand = new TWidget(child);
    grand->SetName("Grand");
    grand->Count = -2;
    auto* sibling = new TWidget(main.get());
    sibling->SetName("Sibling");
    child->Buddy = sibling;
    sibling->Buddy = main.get();
    e2->Target = sibling;
    return main;
}

// The tree in its binary form.
std::string TreeStream() {
    TStringStream s;
    WriteComponent(&s, MakeTree().get());
    return s.DataString();
}

TEST(FilerComponents, AComponentTreeIsWrittenAsThePlatformWritesIt) {
    EXPECT_EQ(ToText(TreeStream()), "object Main: TWidget\r\n"
                                    "  Count = 1\r\n"
                                    "  Entries = <\r\n"
                                    "    item\r\n"
                                    "      Caption = 'first'\r\n"
                                    "    end\r\n"
                                    "    item\r\n"
                                    "      Width = 70\r\n"
                                    "      Target = Sibling\r\n"
                                    "    end>\r\n"
                                    "  OnClick = Click\r\n"
                                    "  Lines = (\r\n"
                                    "    'a'\r\n"
                                    "    'b')\r\n"
                                    "  Blob = {\r\n"
                                    "    626C6F62}\r\n"
                                    "  object Child: TWidget\r\n"
                                    "    Text = 'child'\r\n"
                                    "    Entries = <>\r\n"
                                    "    Buddy = Sibling\r\n"
                                    "    object Grand: TWidget\r\n"
                                    "      Count = -2\r\n"
                                    "      Entries = <>\r\n"
                                    "    end\r\n"
                                    "  end\r\n"
                                    "  object Sibling: TWidget\r\n"
                                    "    Entries = <>\r\n"
                                    "    Buddy = Owner\r\n"
                                    "  end\r\n"
                                    "end\r\n");
}

TEST(FilerComponents, ResourceFormWrapsTheStream) {
    TMemoryStream s;
    WriteComponentRes(&s, "TWIDGET", MakeTree().get());
    EXPECT_EQ(std::string(static_cast<const char*>(s.Memory()), 10),
              Bytes({0xFF, 0x0A, 0}) + "TWIDGET");
    s.SetPosition(0);
    std::unique_ptr<TComponent> back(ReadComponentRes(&s, nullptr));
    EXPECT_EQ(back->Name(), "Main");
}

TEST(FilerComponents, DescendentsWriteOnlyWhatDiffersFromTheAncestor) {
    auto ancestor = MakeTree();
    auto descendent = MakeTree();
    descendent->Count = 2;
    static_cast<TWidget*>(descendent->FindComponent("Sibling"))->Text = "changed";
    TStringStream s;
    WriteDescendent(&s, descendent.get(), ancestor.get());
    EXPECT_EQ(ToText(s.DataString()), "inherited Main: TWidget\r\n"
                                      "  Count = 2\r\n"
                                      "  inherited Sibling: TWidget\r\n"
                                      "    Text = 'changed'\r\n"
                                      "  end\r\n"
                                      "end\r\n");
}

TEST(FilerComponents, AnUnknownChildClassGoesToErrorAndIsSkipped) {
    TWidget main;
    main.SetName("Main");
    auto* stranger = new TUnregistered(&main);
    stranger->SetName("Stranger");
    auto* after = new TWidget(&main);
    after->SetName("After");
    TStringStream s;
    WriteComponent(&s, &main);
    // The writer's GetChildren isn't involved for TUnregistered's own children; it has none.
    s.SetPosition(0);
    TWidget target;
    ErrorLog log;
    TReader r(&s);
    r.OnError = log.Handler();
    r.ReadRootComponent(&target);
    EXPECT_EQ(log.messages, V{"Class TUnregistered not found"});
    EXPECT_EQ(target.ComponentCount(), 1);
    EXPECT_NE(target.FindComponent("After"), nullptr);
    // Refused, the read fails with the class error.
    s.SetPosition(0);
    TWidget again;
    EXPECT_THROW(ReadComponent(&s, &again), EClassNotFound);
}

TEST(FilerComponents, ReadComponentsTakesSeveralComponentsIntoAnOwner) {
    // As a clipboard holds them: each component with its signature, then a list end.
    TWidget source;
    source.SetName("Source");
    auto* a = new TWidget(&source);
    a->SetName("A");
    a->Count = 1;
    auto* b = new TWidget(&source);
    b->SetName("B");
    b->Buddy = a;
    TStringStream s;
    {
        TWriter w(&s);
        w.Root = &source;
        w.LookupRoot = &source;
        for (TWidget* c : {a, b}) {
            w.WriteSignature();
            w.WriteComponent(c);
        }
        w.WriteListEnd();
    }
    s.SetPosition(0);
    TWidget target;
    target.SetName("Target");
    std::vector<std::string> seen;
    TReader r(&s);
    r.ReadComponents(&target, &target, [&](TComponent* c) { seen.push_back(c->Name()); });
    EXPECT_EQ(seen, (std::vector<std::string>{"A", "B"}));
    auto* ra = dynamic_cast<TWidget*>(target.FindComponent("A"));
    auto* rb = dynamic_cast<TWidget*>(target.FindComponent("B"));
    ASSERT_NE(ra, nullptr);
    ASSERT_NE(rb, nullptr);
    EXPECT_EQ(ra->Count, 1);
    EXPECT_EQ(rb->Buddy, ra);
    EXPECT_EQ(ra->loadedCalls, 1);
}

TEST(FilerComponents, DamagedComponentStreamsFailCleanly) {
    std::string full = TreeStream();
    for (size_t n = 0; n < full.size(); n += 7) {
        TStringStream cut(full.substr(0, n));
        EXPECT_THROW(delete ReadComponent(&cut, nullptr), Exception) << n;
    }
}

} // namespace
