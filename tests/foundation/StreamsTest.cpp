// Readers and streams: the look-ahead reader, delimited strings over chunks, the mapped file
// and shared region streams, heap and memory streams, and buffer views.
#include "foundation/Classes.h"
#include "tests/foundation/TestText.h"
#include "tests/rtl/TestSupport.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

using namespace zelvane;
using namespace foundationtest;
namespace fs = std::filesystem;

namespace {

using Strings = std::vector<std::string>;
using Ints = std::vector<int64_t>;

// What one read of up to n bytes of a reader or stream gives.
template <class TSource> std::string Take(TSource& r, int n) {
    char buf[128];
    return std::string(buf, static_cast<size_t>(r.Read(buf, n)));
}

std::string Bytes(const void* memory, size_t n) {
    return std::string(static_cast<const char*>(memory), n);
}

// Reads every string of the reader.
Strings ReadAll(TStringReader& r) {
    Strings out;
    std::string s = "junk";
    while (r.ReadString(s))
        out.push_back(s);
    EXPECT_EQ(s, "");
    return out;
}

// The message of the EMFStreamError that f raises.
template <class F> std::string MFError(F f) {
    return rtltest::MessageOf<EMFStreamError>(f);
}

const std::string kReadOnlySize = "Can\x92t change size of the file in read only mode.";

// A file of its own for each test, removed after it.
class MappedFile : public ::testing::Test {
protected:
    void TearDown() override { fs::remove(name); }
    std::string name = TempName("mapped.bin");
};

} // namespace

// --- TSimpleReader ---------------------------------------------------------------------------

TEST(SimpleReader, ReadsFromTheStreamsPositionAcrossRefillsAtMostABufferAtOnceOrRaises) {
    rtl::TStringStream s("__abcdefghijklmnopq");
    s.SetPosition(2);
    TSimpleReader r(&s, 4);
    EXPECT_EQ(r.Position(), 2);
    // "d" is kept when "efg" is read behind it; a read never gives more than a buffer.
    Strings got;
    for (int n : {3, 3, 100, 0, -1, 3, 3, 3, 3})
        got.push_back(Take(r, n));
    EXPECT_EQ(got, (Strings{"abc", "def", "ghij", "", "", "klm", "nop", "q", ""}));
    EXPECT_EQ(r.Position(), 19);
    EXPECT_THROW(TSimpleReader(nullptr, 4), rtl::EStreamError);
    EXPECT_THROW(TSimpleReader(&s, 0), rtl::EStreamError);
}

TEST(SimpleReader, SetPositionWithinTheBufferOrBySeekingAndFlushBuffer) {
    rtl::TStringStream s("0123456789");
    TSimpleReader r(&s, 4);
    Take(r, 3); // buffer holds 0..3
    r.SetPosition(1);
    EXPECT_EQ(s.GetPosition(), 4); // the source didn't move
    EXPECT_EQ(Take(r, 2), "12");
    r.SetPosition(8);
    EXPECT_EQ(s.GetPosition(), 8);
    EXPECT_EQ(Take(r, 1), "8");
    EXPECT_EQ(s.GetPosition(), 10);
    // FlushBuffer puts the source at the logical position.
    r.FlushBuffer();
    EXPECT_EQ(s.GetPosition(), 9);
    EXPECT_EQ(Take(r, 2), "9");
}

// --- TStringReader ---------------------------------------------------------------------------

TEST(StringReader, EverySourceGivesTheSameStrings) {
    // A stream read through the look-ahead buffer or without it, a mapped file and a mapped
    // stream through the buffer: the strings split at each delimiter, left to right, a last
    // one without delimiter included, and the source ends behind the last byte.
    auto split = [](const std::string& text, const std::string& delimiter) {
        Strings r;
        size_t pos = 0;
        while (pos < text.size()) {
            size_t p = text.find(delimiter, pos);
            if (p == std::string::npos) p = text.size();
            r.push_back(text.substr(pos, p - pos));
            pos = p == text.size() ? p : p + delimiter.size();
        }
        return r;
    };
    struct Case {
        std::string Text, Delimiter;
    };
    // Chunks of 100 put the CR of the last case at byte 100 and its LF at byte 101.
    const std::vector<Case> cases = {
        {"", "\r\n"},
        {"one\r\ntwo\r\n\r\nlast", "\r\n"},
        {"a;;b;;;;c;", ";;"},
        {"aaaaa", "aa"},
        {"xabaabax", "aba"},
        {std::string(1000, 'y') + "\r\nz\r\n" + std::string(1000, 'y'), "\r\n"},
        {std::string(99, 'x') + "\r\n" + std::string(98, 'w') + "\r", "\r\n"}};
    const std::string name = TempName("every.txt");
    for (const auto& c : cases) {
        const auto expected = split(c.Text, c.Delimiter);
        WriteFile(name, c.Text);
        for (int chunk : {1, 3, 100}) {
            for (int source = 0; source < 4; ++source) {
                SCOPED_TRACE(c.Text.substr(0, 20) + " chunk " + std::to_string(chunk) + " source " +
                             std::to_string(source));
                rtl::TStringStream text(c.Text);
                TMappedFileStream mapped(name, true, 0, true);
                TStringReader r;
                r.ChunkSize = chunk;
                r.UseBuffer = source != 1;
                if (source <= 1)
                    r.SetTargetStream(&text);
                else if (source == 2)
                    r.SetTargetFile(name);
                else
                    r.SetTargetStream(&mapped);
                r.SetStringDelimiter(c.Delimiter);
                EXPECT_EQ(ReadAll(r), expected);
                r.Synchronize();
                EXPECT_EQ(r.Target()->GetPosition(), static_cast<int64_t>(c.Text.size()));
            }
        }
    }
    fs::remove(name);
}

TEST(StringReader, TheSourceIsLeftBehindTheLastStringAndBadSetUpRaises) {
    rtl::TStringStream s("first\r\nsecond\r\n");
    TStringReader r(&s);
    std::string line;
    EXPECT_THROW(TStringReader().ReadString(line), rtl::EStreamError); // no source
    EXPECT_THROW(TStringReader().SetStringDelimiter(""), rtl::EStreamError);
    r.ReadString(line);
    EXPECT_NE(s.GetPosition(), 7); // the buffer read ahead
    r.Synchronize();
    EXPECT_EQ(s.GetPosition(), 7);
    EXPECT_EQ(s.ReadString(6), "second");
    // Read without the buffer, the source moves back behind each string at once.
    rtl::TStringStream t("ab\r\ncd\r\n");
    TStringReader u;
    u.UseBuffer = false;
    u.SetTargetStream(&t);
    EXPECT_TRUE(u.ReadString(line));
    EXPECT_EQ(t.GetPosition(), 4);
    u.ChunkSize = 0;
    EXPECT_THROW(u.ReadString(line), rtl::EStreamError);
}

// --- TMappedFileStream -----------------------------------------------------------------------

TEST_F(MappedFile, ReadsTheFileThroughTheViewWritesNeverGrowItAndSavesIt) {
    WriteFile(name, "0123456789");
    TMappedFileStream r(name, true, 0, true);
    EXPECT_TRUE(r.Mapped());
    EXPECT_EQ(r.GetSize(), 10);
    EXPECT_EQ((Strings{Take(r, 4), Take(r, 16), Take(r, 1)}), (Strings{"0123", "456789", ""}));
    EXPECT_EQ(r.Write("x", 1), 0); // read-only
    {
        TMappedFileStream w(name, true, 0, false);
        w.Seek(8, rtl::soBeginning);
        // Only what fits.
        EXPECT_EQ((Ints{w.Write("XYZW", 4), w.GetPosition(), w.Write("Q", 1)}), (Ints{2, 10, 0}));
        w.FlushView();
    }
    EXPECT_EQ(ReadFile(name), "01234567XY");
    // It saves to a stream and to a file.
    const std::string copy = TempName("save.copy");
    rtl::TStringStream s;
    TMappedFileStream saved(name, true, 0, true);
    saved.SaveToStream(&s);
    saved.SaveToFile(copy);
    EXPECT_EQ((Strings{s.DataString(), ReadFile(copy)}), (Strings{"01234567XY", "01234567XY"}));
    fs::remove(copy);
}

TEST_F(MappedFile, SeekHasNoBoundsCheck) {
    WriteFile(name, "0123456789");
    TMappedFileStream m(name, true, 0, false);
    char c = 0;
    EXPECT_EQ((Ints{m.Seek(-5, rtl::soBeginning), m.Read(&c, 1), m.Write(&c, 1),
                    m.Seek(7, rtl::soCurrent), m.Seek(-1, rtl::soEnd), m.Read(&c, 1), c,
                    m.Seek(100, rtl::soEnd), m.Read(&c, 1), m.Read(&c, -1)}),
              (Ints{-5, 0, 0, 2, 9, 1, '9', 110, 0, 0}));
}

TEST_F(MappedFile, UnmappedStreamReadsAndWritesNothingAndSizeErrorsByNumber) {
    WriteFile(name, "data");
    TMappedFileStream m(name, false, 0, false);
    EXPECT_FALSE(m.Mapped());
    EXPECT_EQ(m.Write("data", 4), 0);
    Strings reads = {Take(m, 4)};
    m.SetMapped(true);
    reads.push_back(Take(m, 4));
    m.SetMapped(false);
    EXPECT_EQ(m.Memory(), nullptr);
    m.SetPosition(0);
    reads.push_back(Take(m, 4));
    EXPECT_EQ(reads, (Strings{"", "data", ""}));
    // Size errors by number.
    WriteFile(name, "abc");
    Strings errors = {MFError([&] { TMappedFileStream m(name, true, -1, false); }),
                      MFError([&] { TMappedFileStream m(name, true, 1, true); })};
    fs::remove(name);
    errors.push_back(MFError([&] { TMappedFileStream m(name, true, 0, true); }));
    errors.push_back(MFError([&] { TMappedFileStream m(name, true, 0, false); }));
    errors.push_back(MFError([] { TMappedFileStream::CreateSys("zelv_x", true, 0, false); }));
    EXPECT_EQ(errors, (Strings{"New file size should not be less than zero.", kReadOnlySize,
                               kReadOnlySize, "New file size should be higher than zero.",
                               "Projected area size must be above zero"}));
    EXPECT_FALSE(fs::exists(name));
    EXPECT_THROW(TMappedFileStream("/no/such/dir/file", true, 10, false), rtl::EOSError);
}

TEST_F(MappedFile, OverAHandleThatItDoesNotOwn) {
    WriteFile(name, "handle data");
    int fd = open(name.c_str(), O_RDWR);
    ASSERT_GE(fd, 0);
    {
        TMappedFileStream m(fd, true, 0, false);
        EXPECT_EQ(m.GetSize(), 11);
        EXPECT_EQ(m.FileHandle(), fd);
        EXPECT_EQ(MFError([&] { TMappedFileStream bad(fd, true, 5, true); }), kReadOnlySize);
    }
    EXPECT_NE(fcntl(fd, F_GETFD), -1); // still open
    close(fd);
}

TEST(MappedFileStream, NamedRegionIsSharedBetweenStreamsAndMustExistToBeReadOnly) {
    std::string region = "zelv_test_region_" + std::to_string(getpid());
    EXPECT_THROW(TMappedFileStream::CreateSys(region, true, 10, true), rtl::EOSError);
    auto a = TMappedFileStream::CreateSys(region, true, 100, false);
    EXPECT_EQ(a->GetSize(), 100);
    EXPECT_EQ(a->MapName(), region);
    a->Write("shared!", 7);
    auto b = TMappedFileStream::CreateSys(region, true, 100, false);
    EXPECT_EQ(Take(*b, 7), "shared!");
    auto ro = TMappedFileStream::CreateSys(region, true, 100, true);
    EXPECT_EQ(Take(*ro, 7), "shared!");
    EXPECT_EQ(ro->Write("x", 1), 0);
    // A private region has no name.
    auto p = TMappedFileStream::CreateSys("", true, 10, false);
    EXPECT_EQ(p->Write("0123456789AB", 12), 10);
}

// --- THeapStream and TMemStream --------------------------------------------------------------

TEST(HeapStream, CapacityIsAMultipleOf4096) {
    std::vector<std::unique_ptr<rtl::TMemoryStream>> streams;
    streams.push_back(std::make_unique<THeapStream>());
    streams.push_back(std::make_unique<THeapStream>(0, 0, false));
    streams.push_back(std::make_unique<TMemStream>());
    for (size_t i = 0; i < streams.size(); ++i) {
        SCOPED_TRACE(i);
        auto& s = *streams[i];
        if (auto* h = rtl::Is<THeapStream>(&s)) {
            EXPECT_EQ(h->SharedHeap(), i == 0);
            EXPECT_EQ(h->Flags(), HEAP_GENERATE_EXCEPTIONS);
        }
        s.Write("x", 1);
        EXPECT_EQ(s.Capacity(), 4096);
        std::string big(5000, 'b');
        s.Write(big.data(), 5000);
        EXPECT_EQ(s.Capacity(), 8192);
        s.SetSize(8192);
        EXPECT_EQ(s.Capacity(), 8192);
        s.SetPosition(0);
        EXPECT_EQ(Take(s, 2), "xb");
        s.SetSize(0);
        EXPECT_EQ(s.Capacity(), 0);
    }
}

TEST(HeapStream, ZeroMemoryFlagAndContentsSurviveGrowth) {
    THeapStream shared(true);
    EXPECT_EQ(shared.Flags(), HEAP_GENERATE_EXCEPTIONS | HEAP_ZERO_MEMORY);
    shared.SetSize(100);
    shared.SetSize(6000);
    EXPECT_EQ(Bytes(shared.Memory(), 6000), std::string(6000, '\0'));
    THeapStream own(4096, 65536, true);
    own.Write("abc", 3);
    own.SetSize(20000);
    EXPECT_EQ(Bytes(own.Memory(), 20000), "abc" + std::string(19997, '\0'));
    // Contents survive growth.
    THeapStream s(4096, 0, false);
    std::string data;
    for (int i = 0; i < 50000; ++i)
        data += static_cast<char>('a' + i % 26);
    for (size_t i = 0; i < data.size(); i += 777)
        s.Write(data.data() + i, static_cast<int64_t>(std::min<size_t>(777, data.size() - i)));
    EXPECT_EQ(Bytes(s.Memory(), 50000), data);
    // The process's heap gives what it freed back.
    shared.SetSize(1 << 20);
    shared.SetSize(0);
    EXPECT_GE(shared.Compact(), 0);
}

TEST(HeapStream, PrivateHeapKeepsItsMaximum) {
    THeapStream s(0, 16384, false);
    s.SetSize(16384);
    EXPECT_THROW(s.SetSize(16385), rtl::EOutOfMemory);
    EXPECT_EQ(s.GetSize(), 16384); // the stream is as it was
    s.SetSize(4096);
    EXPECT_EQ(s.Capacity(), 4096);
    EXPECT_GT(s.Compact(), 0);
    s.SetSize(16384); // the freed part is usable again
    EXPECT_EQ(s.Capacity(), 16384);
}

// --- buffer views ----------------------------------------------------------------------------

TEST(BufInfo, ViewMovesWithoutCopyingToOurStreamsOnly) {
    TMemStream a;
    a.Write("abcdef", 6);
    a.SetPosition(2);
    TBufInfo info;
    MemStreamToBuf(&a, info);
    EXPECT_EQ(info.Memory, a.Memory());
    EXPECT_EQ(info.Size, 6);
    EXPECT_EQ(info.Position, 2);
    TMemStream b;
    b.Write("own", 3);
    BufToMemStream(info, &b);
    EXPECT_EQ(b.Memory(), a.Memory());
    EXPECT_EQ(b.GetSize(), 6);
    EXPECT_EQ(Take(b, 4), "cdef");
    // Growing copies into a block of its own; the original stays.
    b.Write("ghij", 4);
    EXPECT_NE(b.Memory(), a.Memory());
    EXPECT_EQ(Bytes(b.Memory(), 10), "abcdefghij");
    EXPECT_EQ(Bytes(a.Memory(), 6), "abcdef");
    // A heap stream borrows too; a plain memory stream cannot.
    THeapStream h(0, 0, false);
    BufToMemStream(info, &h);
    EXPECT_EQ(h.Memory(), a.Memory());
    h.SetPosition(6);
    h.Write("g", 1);
    EXPECT_EQ(Bytes(h.Memory(), 7), "abcdefg");
    rtl::TMemoryStream plain;
    EXPECT_THROW(BufToMemStream(info, &plain), rtl::EStreamError);
}
