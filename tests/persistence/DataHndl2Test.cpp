// TObjectStorage: the four storage forms through one configurable object, the wider form
// detection that reads its own text of non-components back, the "TPF2" property lists, and the
// type listings of DataHndl2.
#include "persistence/DataHndl2.h"

#include "TestModel.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

using namespace zelvane;
using namespace rtl;
using namespace model;

namespace {

TObjectStorageFormat Detect(const std::string& data, bool* ok = nullptr) {
    TStringStream stream(data);
    TObjectStorageFormat format = static_cast<TObjectStorageFormat>(77);
    bool result = TestStreamFormat(&stream, format);
    if (ok) *ok = result;
    EXPECT_EQ(stream.GetPosition(), 0);
    return format;
}

TEST(TestStreamFormat, FormsByTheirFirstBytesNoneLeavesTheFormat) {
    // Shorter than four bytes: compared as if zero-filled. A data header of the text form starts
    // with "s" too.
    const int none = 77;
    const std::pair<std::string, int> cases[] = {{"\xFF\x0A\x00", osfResBin},
                                                 {"\xFF", osfResBin},
                                                 {"TPF0xyz", osfBin},
                                                 {"TPF2xyz", osfExtBin},
                                                 {"sys_txt rest", osfText},
                                                 {"TPF1", none},
                                                 {"", none},
                                                 {"TP", none}};
    for (const auto& [data, format] : cases) {
        bool ok = false;
        EXPECT_EQ(static_cast<int>(Detect(data, &ok)), format) << data;
        EXPECT_EQ(ok, format != none);
    }
    for (std::string first : {"\t", "\x0B", "\r", " ", "I", "O", "i", "o", "s"})
        EXPECT_EQ(Detect(first + "bject"), osfText) << int(first[0]);
    TStringStream stream("xxTPF2");
    stream.SetPosition(2);
    TObjectStorageFormat format = osfBin;
    EXPECT_TRUE(TestStreamFormat(&stream, format));
    EXPECT_EQ(format, osfExtBin);
    EXPECT_EQ(stream.GetPosition(), 2);
}

// What a storage in the given form writes for the objects.
std::string PropsOf(TObjectStorageFormat format, std::initializer_list<TObject*> objects) {
    TObjectStorage storage;
    storage.Format = format;
    std::string data;
    storage.GetObjectProps(TObjectArray(objects.begin(), objects.size()), data);
    return data;
}

class AllForms : public ::testing::TestWithParam<TObjectStorageFormat> {};

TEST_P(AllForms, SaveAndLoadRoundTrip) {
    Objects source;
    std::string text = PropsOf(GetParam(), {&source.foo, &source.widget});
    TFoo foo;
    TWidget widget;
    TObject* targets[] = {&foo, &widget};
    TObjectStorage reader;
    reader.AutoDetectFormat = true;
    reader.SetObjectProps(targets, text);
    EXPECT_EQ(reader.Format, GetParam());
    EXPECT_EQ(PropsOf(osfText, {&foo}), PropsOf(osfText, {&source.foo}));
    EXPECT_EQ(widget.Width, 640);
    EXPECT_EQ(widget.Caption, "Main form");
    EXPECT_EQ(widget.GetLines()->GetText(), "first line\r\n\r\n");
}

INSTANTIATE_TEST_SUITE_P(ObjectStorage, AllForms,
                         ::testing::Values(osfBin, osfResBin, osfExtBin, osfText));

TEST(ObjectStorage, ExtendedFormHasItsOwnSignature) {
    Objects source;
    std::string data = PropsOf(osfExtBin, {&source.foo});
    EXPECT_EQ(data.substr(0, 4), "TPF2");
    EXPECT_EQ(data.substr(4, 6), std::string("\x05") + "Width");

    // Binary property lists of the other signature are refused.
    data[3] = '0';
    TFoo foo;
    TObject* targets[] = {&foo};
    TObjectStorage storage;
    storage.Format = osfExtBin;
    EXPECT_THROW(storage.SetObjectProps(targets, data), EAdvReaderError);
    EXPECT_EQ(foo.Width, 100);
}

TEST(ObjectStorage, SetFormatRefusesUnknownStreams) {
    TObjectStorage storage;
    TStringStream stream("garbage");
    EXPECT_EQ(MessageOf<EObjectStorageError>([&] { storage.SetFormat(&stream); }), SInvalidImage);
    EXPECT_EQ(storage.Format, osfBin);
}

TEST(ObjectStorage, ReaderAndWriterHooksAndErrors) {
    struct THooks : TObject {
        int readers = 0, writers = 0;
        bool ignoring = false;
        void Reader(TObjectStorage*, TAdvReader* r) {
            ++readers;
            ignoring = r->IgnoreErrors;
        }
        void Writer(TObjectStorage*, TAdvWriter*) { ++writers; }
    } hooks;
    TObjectStorage storage;
    storage.IgnoreErrors = true;
    storage.OnCreateReader = TStorageReaderEvent::Of<&THooks::Reader>(&hooks);
    storage.OnCreateWriter = TStorageWriterEvent::Of<&THooks::Writer>(&hooks);
    Objects source;
    TObject* objects[] = {&source.foo};
    std::string data;
    storage.GetObjectProps(objects, data);
    storage.SetObjectProps(objects, data);
    EXPECT_EQ(hooks.writers, 1);
    EXPECT_EQ(hooks.readers, 1);
    EXPECT_TRUE(hooks.ignoring);
}

TEST(ObjectStorage, ImportSilencesTheReadersQuestion) {
    // A TSample's properties read into a TFoo: most of them don't exist there.
    TSample sample;
    sample.Count = 4;
    TFoo foo;
    TObject* sources[] = {&sample};
    TObject* targets[] = {&foo};
    DialogRecorder dialogs;
    TObjectStorage storage;
    storage.ImportObjectProps(targets, sources);
    EXPECT_TRUE(dialogs.texts.empty());
    EXPECT_FALSE(storage.IgnoreErrors);

    // Without the import's silence the same load asks.
    std::string data;
    storage.GetObjectProps(sources, data);
    dialogs.answer = IDNO;
    EXPECT_THROW(storage.SetObjectProps(targets, data), EReadError);
    EXPECT_EQ(dialogs.texts.size(), 1u);
}

TEST(ObjectStorage, LoadComponentsIntoVariables) {
    RegisterClass(TWidget::StaticClass());
    Objects source;
    TObjectStorage storage;
    storage.Format = osfText;
    TObject* objects[] = {&source.widget, &source.widget};
    std::string text;
    storage.GetObjectProps(objects, text);

    TComponent* made = nullptr;
    TComponent** refs[] = {nullptr, &made};
    TStringStream stream(text);
    storage.LoadComponents(refs, &stream);
    ASSERT_NE(made, nullptr);
    std::unique_ptr<TComponent> owned(made);
    EXPECT_EQ(PropsOf(osfText, {made}), PropsOf(osfText, {&source.widget}));
}

TEST(ObjectStorage, SafeLoadPutsComponentsBackAlsoOnFailure) {
    TComponent owner;
    owner.SetName("Owner");
    auto* widget = new TWidget(&owner);
    widget->SetName("Main");
    TObjectStorage storage;
    storage.SafeLoad = true;
    TComponent* ref = widget;
    TComponent** refs[] = {&ref};
    TStringStream damaged(std::string("TPF0\x07TWidget\x04Main\x05Width\x02", 24));
    EXPECT_THROW(storage.LoadComponents(refs, &damaged), EReadError);
    EXPECT_EQ(widget->Owner(), &owner);
    EXPECT_EQ(owner.FindComponent("Main"), widget);
}

TEST(TypeListings, PropertiesSortedByName) {
    TStringList list;
    list.Add("stale");
    GetObjectPropsInfo(TypeInfo<TFoo*>(), &list);
    EXPECT_EQ(list.GetText(), "Caption: AnsiString [tkLString]\r\nWidth: Integer [tkInteger]\r\n");
}

TEST(TypeListings, MethodParameters) {
    auto params = [](PTypeInfo type) {
        TStringList list;
        GetMethodParams(type, &list);
        return list.GetText();
    };
    EXPECT_EQ(params(TypeInfo<TChangeEvent>()),
              "Type Name: TChangeEvent\r\nType Kind: tkMethod\r\nMethod Kind: mkProcedure\r\n"
              "Number of parameters: 1\r\nParam 1 > Sender: TObject\r\n");
    // Type information lives as long as the program, as that of declared types does.
    static const PTypeInfo f =
        MakeMethodType("TQueryEvent", mkFunction,
                       {{1u << pfVar, "Key", "Word"},
                        {(1u << pfConst) | (1u << pfArray), "Items", "Integer"},
                        {1u << pfOut, "Res", "string"},
                        {1u << pfAddress, "Addr", "Pointer"},
                        {1u << pfReference, "Ref", "TObject"},
                        {0, "Plain", "Byte"}},
                       "Boolean");
    EXPECT_EQ(params(f), "Type Name: TQueryEvent\r\nType Kind: tkMethod\r\nMethod Kind: "
                         "mkFunction\r\nNumber of parameters: 6\r\nParam 1 > var Key: Word\r\n"
                         "Param 2 > const Items:  array of Integer\r\nParam 3 > out Res: string\r\n"
                         "Param 4 > address Addr: Pointer\r\nParam 5 > reference Ref: TObject\r\n"
                         "Param 6 > Plain: Byte\r\nReturns > Boolean\r\n");
}

TEST(TypeListings, OtherTypesGiveNoParameters) {
    TStringList list;
    list.Add("stale");
    GetMethodParams(TypeInfo<int32_t>(), &list);
    EXPECT_EQ(list.Count(), 0);
    GetMethodParams(nullptr, &list);
    EXPECT_EQ(list.Count(), 0);
}

} // namespace
