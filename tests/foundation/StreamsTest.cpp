// Readers and streams: the look-ahead reader, delimited strings over chunks, the mapped file
// and shared region streams, heap and memory streams, and buffer views.
#include "foundation/Classes.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace zelvane;
namespace fs = std::filesystem;

namespace {

std::string TempName(const std::string& name) {
    return ::testing::TempDir() + "zelv_streams_" + std::to_string(getpid()) + "_" + name;
}

void WriteFile(const std::string& name, const std::string& data) {
    std::ofstream f(name, std::ios::binary | std::ios::trunc);
    f << data;
}

std::string ReadFile(const std::string& name) {
    std::ifstream f(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), {});
}

// Reads every string of the reader.
std::vector<std::string> ReadAll(TStringReader& r) {
    std::vector<std::string> out;
    std::string s = "junk";
    while (r.ReadString(s))
        out.push_back(s);
    EXPECT_EQ(s, "");
    return out;
}

// The message of the EMFStreamError that f raises.
template <class F> std::string MFError(F f) {
    try {
        f();
    } catch (const EMFStreamError& e) {
        return e.Message();
    }
    return "no EMFStreamError";
}

} // namespace

// --- TSimpleReader ---------------------------------------------------------------------------

TEST(SimpleReader, StartsAtTheStreamsPosition) {
    rtl::TStringStream s("0123456789");
    s.SetPosition(3);
    TSimpleReader r(&s, 4);
    EXPECT_EQ(r.Position(), 3);
    char buf[8] = {};
    EXPECT_EQ(r.Read(buf, 2), 2);
    EXPECT_EQ(std::string(buf, 2), "34");
    EXPECT_EQ(r.Position(), 5);
}

TEST(SimpleReader, ReadsAcrossRefillsAndTheEnd) {
    rtl::TStringStream s("abcdefghij");
    TSimpleReader r(&s, 4);
    char buf[8] = {};
    EXPECT_EQ(r.Read(buf, 3), 3); // fills the buffer with "abcd"
    EXPECT_EQ(std::string(buf, 3), "abc");
    EXPECT_EQ(r.Read(buf, 3), 3); // keeps "d", refills with "efg"
    EXPECT_EQ(std::string(buf, 3), "def");
    EXPECT_EQ(r.Read(buf, 3), 3);
    EXPECT_EQ(std::string(buf, 3), "ghi");
    EXPECT_EQ(r.Read(buf, 3), 1); // what there was
    EXPECT_EQ(buf[0], 'j');
    EXPECT_EQ(r.Read(buf, 3), 0);
    EXPECT_EQ(r.Position(), 10);
    EXPECT_EQ(r.Read(buf, 0), 0);
    EXPECT_EQ(r.Read(buf, -1), 0);
}

TEST(SimpleReader, NeverMoreThanABufferAtOnce) {
    rtl::TStringStream s(std::string(100, 'x'));
    TSimpleReader r(&s, 8);
    char buf[100];
    EXPECT_EQ(r.Read(buf, 100), 8);
}

TEST(SimpleReader, ReadBufferKeepsTheTail) {
    rtl::TStringStream s("abcdefgh");
    TSimpleReader r(&s, 4);
    EXPECT_EQ(r.ReadBuffer(0), 4);
    char c;
    r.Read(&c, 1);
    EXPECT_EQ(r.ReadBuffer(2), 4); // "cd" kept in front, "ef" read behind
    char buf[4];
    EXPECT_EQ(r.Read(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 4), "cdef");
}

TEST(SimpleReader, SetPositionWithinTheBufferOrBySeeking) {
    rtl::TStringStream s("0123456789");
    TSimpleReader r(&s, 4);
    char buf[4];
    r.Read(buf, 3); // buffer holds 0..3
    r.SetPosition(1);
    EXPECT_EQ(s.GetPosition(), 4); // the source didn't move
    r.Read(buf, 2);
    EXPECT_EQ(std::string(buf, 2), "12");
    r.SetPosition(8);
    EXPECT_EQ(s.GetPosition(), 8);
    r.Read(buf, 2);
    EXPECT_EQ(std::string(buf, 2), "89");
}

TEST(SimpleReader, FlushBufferPutsTheSourceAtTheLogicalPosition) {
    rtl::TStringStream s("0123456789");
    TSimpleReader r(&s, 8);
    char buf[2];
    r.Read(buf, 2);
    EXPECT_EQ(s.GetPosition(), 8);
    r.FlushBuffer();
    EXPECT_EQ(s.GetPosition(), 2);
    r.Read(buf, 2);
    EXPECT_EQ(std::string(buf, 2), "23");
}

TEST(SimpleReader, BadArgumentsRaise) {
    rtl::TStringStream s("x");
    EXPECT_THROW(TSimpleReader(nullptr, 4), rtl::EStreamError);
    EXPECT_THROW(TSimpleReader(&s, 0), rtl::EStreamError);
}

// --- TStringReader ---------------------------------------------------------------------------

TEST(StringReader, LinesOfAStream) {
    rtl::TStringStream s("one\r\ntwo\r\n\r\nfour");
    TStringReader r(&s);
    EXPECT_EQ(ReadAll(r), (std::vector<std::string>{"one", "two", "", "four"}));
}

TEST(StringReader, EmptySourceGivesFalseAtOnce) {
    rtl::TStringStream s("");
    TStringReader r(&s);
    std::string line = "junk";
    EXPECT_FALSE(r.ReadString(line));
    EXPECT_EQ(line, "");
}

TEST(StringReader, LastLineWithoutDelimiterThenFalse) {
    rtl::TStringStream s("a\r\nlast");
    TStringReader r(&s);
    std::string line;
    EXPECT_TRUE(r.ReadString(line));
    EXPECT_TRUE(r.ReadString(line));
    EXPECT_EQ(line, "last");
    EXPECT_FALSE(r.ReadString(line));
}

TEST(StringReader, DelimiterStraddlingTwoChunksIsFound) {
    for (bool buffered : {true, false}) {
        // With a chunk of 100, CR is byte 100 and LF byte 101.
        std::string first(99, 'x');
        rtl::TStringStream s(first + "\r\nsecond\r\n");
        TStringReader r;
        r.UseBuffer = buffered;
        r.SetTargetStream(&s);
        EXPECT_EQ(ReadAll(r), (std::vector<std::string>{first, "second"})) << buffered;
    }
}

TEST(StringReader, LongLinesOverManyChunks) {
    std::string longLine(1000, 'y');
    for (int chunk : {1, 2, 3, 7, 100}) {
        rtl::TStringStream s(longLine + "\r\n" + "z\r\n" + longLine);
        TStringReader r;
        r.ChunkSize = chunk;
        r.SetTargetStream(&s);
        EXPECT_EQ(ReadAll(r), (std::vector<std::string>{longLine, "z", longLine})) << chunk;
    }
}

TEST(StringReader, OtherDelimiters) {
    rtl::TStringStream s("a;;b;;;;c;");
    TStringReader r(&s);
    r.SetStringDelimiter(";;");
    EXPECT_EQ(r.Delimiter(), ";;");
    EXPECT_EQ(ReadAll(r), (std::vector<std::string>{"a", "b", "", "c;"}));
    EXPECT_THROW(r.SetStringDelimiter(""), rtl::EStreamError);
}

TEST(StringReader, SynchronizeLeavesTheSourceBehindTheLastString) {
    rtl::TStringStream s("first\r\nsecond\r\n");
    TStringReader r(&s);
    std::string line;
    r.ReadString(line);
    EXPECT_NE(s.GetPosition(), 7); // the buffer read ahead
    r.Synchronize();
    EXPECT_EQ(s.GetPosition(), 7);
    EXPECT_EQ(s.ReadString(6), "second");
}

TEST(StringReader, UnbufferedReadingMovesTheSourceBack) {
    rtl::TStringStream s("ab\r\ncd\r\n");
    TStringReader r;
    r.UseBuffer = false;
    r.SetTargetStream(&s);
    std::string line;
    EXPECT_TRUE(r.ReadString(line));
    EXPECT_EQ(s.GetPosition(), 4);
}

TEST(StringReader, ReadsAMappedFile) {
    std::string name = TempName("lines.txt");
    WriteFile(name, "alpha\r\nbeta\r\ngamma");
    TStringReader r(name);
    EXPECT_EQ(r.TargetFile(), name);
    EXPECT_FALSE(r.UseBuffer);
    ASSERT_NE(rtl::Is<TMappedFileStream>(r.Target()), nullptr);
    EXPECT_EQ(ReadAll(r), (std::vector<std::string>{"alpha", "beta", "gamma"}));
    WriteFile(name, "");
    r.SetTargetFile(name);
    std::string line = "junk";
    EXPECT_FALSE(r.ReadString(line));
    fs::remove(name);
    EXPECT_THROW(r.SetTargetFile(name), EMFStreamError); // missing, read-only
}

TEST(StringReader, EverySourceGivesTheSameStrings) {
    // A stream read through the look-ahead buffer or without it, a mapped file and a mapped
    // stream through the buffer: the strings split at each delimiter, left to right, and the
    // source ends behind the last byte.
    auto split = [](const std::string& text, const std::string& delimiter) {
        std::vector<std::string> r;
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
    const std::vector<Case> cases = {
        {"one\r\ntwo\r\n\r\nlast", "\r\n"},
        {"a;;b;;;;c;", ";;"},
        {"aaaaa", "aa"},
        {"xabaabax", "aba"},
        {std::string(250, 'y') + "\r\nz\r\n", "\r\n"},
        {std::string(99, 'x') + "\r\n" + std::string(98, 'w') + "\r", "\r\n"}};
    const std::string name = TempName("every.txt");
    for (const auto& c : cases) {
        const auto expected = split(c.Text, c.Delimiter);
        WriteFile(name, c.Text);
        for (int chunk : {1, 2, 5, 100}) {
            for (int source = 0; source < 4; ++source) {
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
                EXPECT_EQ(ReadAll(r), expected) << c.Text << " " << chunk << " " << source;
                r.Synchronize();
                EXPECT_EQ(r.Target()->GetPosition(), static_cast<int64_t>(c.Text.size()));
            }
        }
    }
    fs::remove(name);
}

TEST(StringReader, WithoutSourceRaises) {
    TStringReader r;
    std::string line;
    EXPECT_THROW(r.ReadString(line), rtl::EStreamError);
}

// --- TMappedFileStream -----------------------------------------------------------------------

TEST(MappedFileStream, ReadsTheFileThroughTheView) {
    std::string name = TempName("read.bin");
    WriteFile(name, "0123456789");
    TMappedFileStream m(name, true, 0, true);
    EXPECT_TRUE(m.Mapped());
    EXPECT_EQ(m.GetSize(), 10);
    char buf[16] = {};
    EXPECT_EQ(m.Read(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 4), "0123");
    EXPECT_EQ(m.Read(buf, 16), 6);
    EXPECT_EQ(m.Read(buf, 1), 0);
    EXPECT_EQ(m.Write("x", 1), 0); // read-only
    fs::remove(name);
}

TEST(MappedFileStream, WritesGoToTheFileAndNeverGrowIt) {
    std::string name = TempName("write.bin");
    WriteFile(name, "abcdef");
    {
        TMappedFileStream m(name, true, 0, false);
        m.Seek(4, rtl::soBeginning);
        EXPECT_EQ(m.Write("XYZW", 4), 2); // only what fits
        EXPECT_EQ(m.GetPosition(), 6);
        EXPECT_EQ(m.Write("Q", 1), 0);
        m.FlushView();
    }
    EXPECT_EQ(ReadFile(name), "abcdXY");
    fs::remove(name);
}

TEST(MappedFileStream, NewSizeGrowsOrCreatesTheFile) {
    std::string name = TempName("grow.bin");
    fs::remove(name);
    {
        TMappedFileStream m(name, true, 16, false);
        EXPECT_EQ(m.GetSize(), 16);
        m.Write("hello", 5);
    }
    EXPECT_EQ(fs::file_size(name), 16u);
    EXPECT_EQ(ReadFile(name).substr(0, 5), "hello");
    {
        TMappedFileStream m(name, true, 32, false);
        EXPECT_EQ(m.GetSize(), 32);
    }
    EXPECT_EQ(fs::file_size(name), 32u);
    fs::remove(name);
}

TEST(MappedFileStream, SeekHasNoBoundsCheck) {
    std::string name = TempName("seek.bin");
    WriteFile(name, "0123456789");
    TMappedFileStream m(name, true, 0, false);
    EXPECT_EQ(m.Seek(-5, rtl::soBeginning), -5);
    char c = 0;
    EXPECT_EQ(m.Read(&c, 1), 0);
    EXPECT_EQ(m.Write(&c, 1), 0);
    EXPECT_EQ(m.Seek(7, rtl::soCurrent), 2);
    EXPECT_EQ(m.Seek(-1, rtl::soEnd), 9);
    EXPECT_EQ(m.Read(&c, 1), 1);
    EXPECT_EQ(c, '9');
    EXPECT_EQ(m.Seek(100, rtl::soEnd), 110);
    EXPECT_EQ(m.Read(&c, 1), 0);
    EXPECT_EQ(m.Read(&c, -1), 0);
    fs::remove(name);
}

TEST(MappedFileStream, UnmappedStreamReadsAndWritesNothing) {
    std::string name = TempName("unmapped.bin");
    WriteFile(name, "data");
    TMappedFileStream m(name, false, 0, false);
    EXPECT_FALSE(m.Mapped());
    char buf[4];
    EXPECT_EQ(m.Read(buf, 4), 0);
    EXPECT_EQ(m.Write(buf, 4), 0);
    m.SetMapped(true);
    EXPECT_EQ(m.Read(buf, 4), 4);
    m.SetMapped(false);
    EXPECT_EQ(m.Memory(), nullptr);
    m.SetPosition(0);
    EXPECT_EQ(m.Read(buf, 4), 0);
    fs::remove(name);
}

TEST(MappedFileStream, SizeErrorsByNumber) {
    std::string name = TempName("errors.bin");
    WriteFile(name, "abc");
    EXPECT_EQ(MFError([&] { TMappedFileStream m(name, true, -1, false); }),
              "New file size should not be less than zero.");
    EXPECT_EQ(MFError([&] { TMappedFileStream m(name, true, 1, true); }),
              "Can\x92t change size of the file in read only mode.");
    fs::remove(name);
    EXPECT_EQ(MFError([&] { TMappedFileStream m(name, true, 0, true); }),
              "Can\x92t change size of the file in read only mode.");
    EXPECT_EQ(MFError([&] { TMappedFileStream m(name, true, 0, false); }),
              "New file size should be higher than zero.");
    EXPECT_FALSE(fs::exists(name));
    EXPECT_EQ(MFError([] { TMappedFileStream::CreateSys("zelv_x", true, 0, false); }),
              "Projected area size must be above zero");
    EXPECT_THROW(TMappedFileStream("/no/such/dir/file", true, 10, false), rtl::EOSError);
}

TEST(MappedFileStream, OverAHandleThatItDoesNotOwn) {
    std::string name = TempName("handle.bin");
    WriteFile(name, "handle data");
    int fd = open(name.c_str(), O_RDWR);
    ASSERT_GE(fd, 0);
    {
        TMappedFileStream m(fd, true, 0, false);
        EXPECT_EQ(m.GetSize(), 11);
        EXPECT_EQ(m.FileHandle(), fd);
        EXPECT_EQ(MFError([&] { TMappedFileStream bad(fd, true, 5, true); }),
                  "Can\x92t change size of the file in read only mode.");
    }
    EXPECT_NE(fcntl(fd, F_GETFD), -1); // still open
    close(fd);
    fs::remove(name);
}

TEST(MappedFileStream, SaveToStreamAndFile) {
    std::string name = TempName("save.bin"), copy = TempName("save.copy");
    WriteFile(name, "saved bytes");
    TMappedFileStream m(name, true, 0, true);
    rtl::TStringStream s;
    m.SaveToStream(&s);
    EXPECT_EQ(s.DataString(), "saved bytes");
    m.SaveToFile(copy);
    EXPECT_EQ(ReadFile(copy), "saved bytes");
    fs::remove(name);
    fs::remove(copy);
}

TEST(MappedFileStream, NamedRegionIsSharedBetweenStreams) {
    std::string region = "zelv_test_region_" + std::to_string(getpid());
    auto a = TMappedFileStream::CreateSys(region, true, 100, false);
    EXPECT_EQ(a->GetSize(), 100);
    EXPECT_EQ(a->MapName(), region);
    a->Write("shared!", 7);
    auto b = TMappedFileStream::CreateSys(region, true, 100, false);
    char buf[7];
    EXPECT_EQ(b->Read(buf, 7), 7);
    EXPECT_EQ(std::string(buf, 7), "shared!");
    auto ro = TMappedFileStream::CreateSys(region, true, 100, true);
    EXPECT_EQ(ro->Read(buf, 7), 7);
    EXPECT_EQ(ro->Write("x", 1), 0);
    // A private region has no name.
    auto p = TMappedFileStream::CreateSys("", true, 10, false);
    EXPECT_EQ(p->Write("0123456789AB", 12), 10);
}

TEST(MappedFileStream, ReadOnlyRegionMustExist) {
    EXPECT_THROW(
        TMappedFileStream::CreateSys("zelv_absent_" + std::to_string(getpid()), true, 10, true),
        rtl::EOSError);
}

// --- THeapStream and TMemStream --------------------------------------------------------------

TEST(HeapStream, CapacityIsAMultipleOf4096) {
    for (bool privateHeap : {false, true}) {
        std::unique_ptr<THeapStream> s = privateHeap ? std::make_unique<THeapStream>(0, 0, false)
                                                     : std::make_unique<THeapStream>();
        EXPECT_EQ(s->SharedHeap(), !privateHeap);
        EXPECT_EQ(s->Flags(), HEAP_GENERATE_EXCEPTIONS);
        s->Write("x", 1);
        EXPECT_EQ(s->Capacity(), 4096);
        std::string big(5000, 'b');
        s->Write(big.data(), 5000);
        EXPECT_EQ(s->Capacity(), 8192);
        s->SetPosition(0);
        char buf[2];
        s->Read(buf, 2);
        EXPECT_EQ(std::string(buf, 2), "xb");
        s->Clear();
        EXPECT_EQ(s->Capacity(), 0);
    }
}

TEST(HeapStream, ZeroMemoryFlag) {
    THeapStream shared(true);
    EXPECT_EQ(shared.Flags(), HEAP_GENERATE_EXCEPTIONS | HEAP_ZERO_MEMORY);
    shared.SetSize(100);
    shared.SetSize(6000);
    const char* p = static_cast<const char*>(shared.Memory());
    for (int i = 0; i < 6000; ++i)
        ASSERT_EQ(p[i], 0) << i;
    THeapStream own(4096, 65536, true);
    own.Write("abc", 3);
    own.SetSize(20000);
    p = static_cast<const char*>(own.Memory());
    EXPECT_EQ(std::string(p, 3), "abc");
    for (int i = 3; i < 20000; ++i)
        ASSERT_EQ(p[i], 0) << i;
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

TEST(HeapStream, ContentsSurviveGrowth) {
    THeapStream s(4096, 0, false);
    std::string data;
    for (int i = 0; i < 50000; ++i)
        data += static_cast<char>('a' + i % 26);
    for (size_t i = 0; i < data.size(); i += 777)
        s.Write(data.data() + i, static_cast<int64_t>(std::min<size_t>(777, data.size() - i)));
    EXPECT_EQ(s.GetSize(), 50000);
    EXPECT_EQ(std::string(static_cast<const char*>(s.Memory()), 50000), data);
}

TEST(HeapStream, CompactOfTheProcessHeapGivesMemoryBack) {
    THeapStream s;
    s.SetSize(1 << 20);
    s.SetSize(0);
    EXPECT_GE(s.Compact(), 0);
}

TEST(MemStream, CapacityIsAMultipleOf4096) {
    TMemStream s;
    s.Write("x", 1);
    EXPECT_EQ(s.Capacity(), 4096);
    s.SetSize(4097);
    EXPECT_EQ(s.Capacity(), 8192);
    s.SetSize(8192);
    EXPECT_EQ(s.Capacity(), 8192);
    s.SetSize(0);
    EXPECT_EQ(s.Capacity(), 0);
}

// --- buffer views ----------------------------------------------------------------------------

TEST(BufInfo, ViewMovesWithoutCopying) {
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
    EXPECT_EQ(b.GetPosition(), 2);
    char buf[4];
    EXPECT_EQ(b.Read(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 4), "cdef");
    // Growing copies into a block of its own; the original stays.
    b.Write("ghij", 4);
    EXPECT_NE(b.Memory(), a.Memory());
    EXPECT_EQ(std::string(static_cast<const char*>(b.Memory()), 10), "abcdefghij");
    EXPECT_EQ(std::string(static_cast<const char*>(a.Memory()), 6), "abcdef");
}

TEST(BufInfo, HeapStreamBorrowsToo) {
    TMemStream a;
    a.Write("1234", 4);
    TBufInfo info;
    MemStreamToBuf(&a, info);
    THeapStream h(0, 0, false);
    BufToMemStream(info, &h);
    EXPECT_EQ(h.Memory(), a.Memory());
    h.SetPosition(4);
    h.Write("5", 1);
    EXPECT_EQ(std::string(static_cast<const char*>(h.Memory()), 5), "12345");
}

TEST(BufInfo, PlainMemoryStreamCannotBorrow) {
    TMemStream a;
    a.Write("x", 1);
    TBufInfo info;
    MemStreamToBuf(&a, info);
    rtl::TMemoryStream plain;
    EXPECT_THROW(BufToMemStream(info, &plain), rtl::EStreamError);
}
