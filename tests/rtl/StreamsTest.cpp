// Streams: memory and string streams (bounds, seek origins, growth, reading past the end, the
// buffer errors, CopyFrom), file streams with their open modes and share flags.
#include "rtl/Streams.h"
#include "rtl/FileStreams.h"
#include "rtl/SysUtils.h"

#include "TestSupport.h"

#include <climits>

using namespace rtl;
using namespace rtltest;

namespace {

std::string ReadAll(TStream& s) {
    s.SetPosition(0);
    std::string r(static_cast<size_t>(s.GetSize()), '\0');
    if (!r.empty()) s.ReadBuffer(r.data(), static_cast<int64_t>(r.size()));
    return r;
}

class FileStream : public TempDirTest {};

} // namespace

// ---------------------------------------------------------------------------------------------
// TMemoryStream

TEST(MemoryStream, ReadingPastTheEnd) {
    TMemoryStream s;
    s.WriteBuffer("abc", 3);
    char buf[8] = {};
    std::vector<int64_t> counts;
    for (int64_t at : {int64_t(1), int64_t(-1), int64_t(100), int64_t(-5)}) {
        if (at != -1) s.SetPosition(at); // -1: on from where the last read ended
        counts.push_back(s.Read(buf, 8));
    }
    EXPECT_EQ(counts, std::vector<int64_t>({2, 0, 0, 0}));
    s.SetPosition(2);
    EXPECT_EQ(MessageOf<EReadError>([&] { s.ReadBuffer(buf, 2); }), "Stream read error");
    s.SetPosition(0);
    EXPECT_THROW(s.ReadValue<int64_t>(), EReadError);
    // Reading nothing is fine anywhere.
    s.SetPosition(50);
    EXPECT_NO_THROW(s.ReadBuffer(buf, 0));
}

TEST(MemoryStream, WritingBeyondTheEndFillsTheGapWithZerosAndAtABadPositionFails) {
    TMemoryStream gap;
    gap.WriteBuffer("ab", 2);
    gap.Seek(3, soEnd);
    gap.WriteBuffer("z", 1);
    EXPECT_EQ(ReadAll(gap), std::string("ab\0\0\0z", 6));
    TMemoryStream s;
    s.SetPosition(-1);
    EXPECT_EQ(s.Write("x", 1), 0);
    EXPECT_EQ(MessageOf<EWriteError>([&] { s.WriteBuffer("x", 1); }), "Stream write error");
    s.Seek(INT64_MAX, soBeginning);
    EXPECT_EQ(s.Write("x", 1), 0);
    EXPECT_EQ(s.GetSize(), 0);
}

TEST(MemoryStream, GrowsInBlocksAndResizes) {
    TMemoryStream s;
    s.WriteBuffer("x", 1);
    EXPECT_EQ(s.Capacity(), 0x2000);
    std::string big(0x2000, 'y');
    s.WriteBuffer(big.data(), static_cast<int64_t>(big.size()));
    EXPECT_EQ(s.GetSize(), 0x2001);
    EXPECT_EQ(s.Capacity(), 0x4000);
    s.SetPosition(0x2001);
    s.SetSize(10); // the position past the new end moves to it
    EXPECT_EQ((std::pair{s.GetSize(), s.GetPosition()}), std::pair(int64_t(10), int64_t(10)));
    EXPECT_EQ(ReadAll(s), "x" + std::string(9, 'y'));
    EXPECT_THROW(s.SetSize(-1), EStreamError);
    EXPECT_THROW(s.SetSize(INT64_MAX), EStreamError);
    EXPECT_EQ(s.GetSize(), 10);
    s.Clear();
    EXPECT_EQ(std::vector<int64_t>({s.GetSize(), s.GetPosition(), s.Capacity()}),
              std::vector<int64_t>(3, 0));
}

TEST(MemoryStream, CopyFrom) {
    TStringStream src("0123456789");
    TMemoryStream dst;
    src.SetPosition(7);
    // Count 0 copies the whole source from its start.
    EXPECT_EQ(dst.CopyFrom(&src, 0), 10);
    EXPECT_EQ(ReadAll(dst), "0123456789");
    dst.Clear();
    src.SetPosition(2);
    EXPECT_EQ(dst.CopyFrom(&src, 3), 3);
    EXPECT_EQ(ReadAll(dst), "234");
    EXPECT_EQ(src.GetPosition(), 5);
    // More than the source has left.
    EXPECT_THROW(dst.CopyFrom(&src, 6), EReadError);
    // A negative count copies nothing.
    EXPECT_EQ(dst.CopyFrom(&src, -4), 0);
    // Larger than one copy buffer.
    std::string big(200000, '\0');
    for (size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>(i * 7);
    TStringStream bigSrc(big);
    TMemoryStream bigDst;
    EXPECT_EQ(bigDst.CopyFrom(&bigSrc, 0), 200000);
    EXPECT_EQ(ReadAll(bigDst), big);
}

TEST_F(FileStream, MemoryStreamsSaveAndLoadStreamsAndFiles) {
    TMemoryStream a, c;
    a.WriteBuffer("file data", 9);
    TStringStream out;
    a.SaveToStream(&out);
    EXPECT_EQ(out.DataString(), "file data");
    out.SetPosition(3);
    c.LoadFromStream(&out); // from the start, whatever the position
    EXPECT_EQ(ReadAll(c), "file data");
    a.SaveToFile(Path("m.bin"));
    EXPECT_EQ(ReadFile(Path("m.bin")), "file data");
    TMemoryStream b;
    b.LoadFromFile(Path("m.bin"));
    EXPECT_EQ(ReadAll(b), "file data");
    EXPECT_EQ(MessageOf<EFOpenError>([&] { b.LoadFromFile(Path("none")); }),
              "Cannot open file \"" + Path("none") + "\". " + SysErrorMessage(ENOENT));
    EXPECT_THROW(a.SaveToFile(Path("no/such/dir")), EFCreateError);
}

// ---------------------------------------------------------------------------------------------
// TStringStream

TEST(StringStream, ReadWriteAndSeek) {
    TStringStream s("hello world");
    EXPECT_EQ(s.ReadString(5), "hello");
    EXPECT_EQ(s.Seek(1, soCurrent), 6);
    EXPECT_EQ(s.ReadString(100), "world");
    EXPECT_EQ(s.ReadString(1), "");
    s.Seek(-5, soEnd);
    s.WriteString("WORLD!");
    EXPECT_EQ(s.DataString(), "hello WORLD!");
    s.Seek(2, soEnd);
    s.WriteString("x");
    EXPECT_EQ(s.DataString(), std::string("hello WORLD!\0\0x", 15));
    s.SetSize(5);
    EXPECT_EQ(s.DataString(), "hello");
    EXPECT_EQ(s.GetPosition(), 5);
    EXPECT_THROW(s.SetSize(-1), EStreamError);
}

TEST(StringStream, BadPositions) {
    TStringStream s("abc");
    s.SetPosition(-2);
    EXPECT_EQ(s.ReadString(4), "");
    char c;
    EXPECT_EQ((std::pair{s.Read(&c, 1), s.Write("x", 1)}), std::pair(int64_t(0), int64_t(0)));
    EXPECT_THROW(s.WriteBuffer("x", 1), EWriteError);
    s.SetPosition(10);
    EXPECT_EQ(s.ReadString(2), "");
    EXPECT_THROW(s.ReadBuffer(&c, 1), EReadError);
    s.Seek(INT64_MAX, soBeginning);
    EXPECT_EQ(s.Write("x", 1), 0);
    EXPECT_EQ(s.DataString(), "abc");
}

// ---------------------------------------------------------------------------------------------
// TFileStream

TEST_F(FileStream, CreateWriteAndReadBack) {
    {
        TFileStream f(Path("a.txt"), fmCreate);
        EXPECT_EQ(f.FileName(), Path("a.txt"));
        f.WriteBuffer("0123456789", 10);
        EXPECT_EQ(f.GetSize(), 10);
        EXPECT_EQ(f.Seek(-3, soEnd), 7);
        EXPECT_EQ(f.Seek(1, soCurrent), 8);
        EXPECT_EQ(f.Seek(2, soBeginning), 2);
        f.WriteBuffer("ab", 2);
    }
    EXPECT_EQ(ReadFile(Path("a.txt")), "01ab456789");
    TFileStream r(Path("a.txt"), fmOpenRead);
    char buf[16] = {};
    r.SetPosition(8);
    EXPECT_EQ(r.Read(buf, 16), 2);
    EXPECT_EQ(r.Read(buf, 16), 0);
    EXPECT_THROW(r.ReadBuffer(buf, 1), EReadError);
    // A read-only stream can't write.
    EXPECT_EQ(r.Write("x", 1), 0);
    EXPECT_THROW(r.WriteBuffer("x", 1), EWriteError);
    EXPECT_EQ(r.Seek(-1, soBeginning), -1);
}

TEST_F(FileStream, SetSizeTruncatesAndExtends) {
    {
        TFileStream f(Path("c.bin"), fmCreate);
        f.WriteBuffer("abcdef", 6);
        f.SetSize(3);
        EXPECT_EQ(f.GetSize(), 3);
        EXPECT_EQ(f.GetPosition(), 3);
        f.SetSize(5);
        EXPECT_EQ(ReadAll(f), std::string("abc\0\0", 5));
        EXPECT_THROW(f.SetSize(-1), EStreamError);
    }
    TFileStream r(Path("c.bin"), fmOpenRead | fmShareDenyNone);
    EXPECT_THROW(r.SetSize(1), EOSError);
}

TEST_F(FileStream, OpenErrorsNameTheFile) {
    EXPECT_EQ(MessageOf<EFOpenError>([&] { TFileStream(Path("missing"), fmOpenRead); }),
              "Cannot open file \"" + Path("missing") + "\". " + SysErrorMessage(ENOENT));
    EXPECT_THROW(TFileStream(Path("missing"), fmOpenWrite), EFOpenError);
    EXPECT_EQ(MessageOf<EFCreateError>([&] { TFileStream(Path("no/dir/x"), fmCreate); }),
              "Cannot create file \"" + Path("no/dir/x") + "\". " + SysErrorMessage(ENOENT));
    EXPECT_THROW(TFileStream(dir, fmOpenRead), EFOpenError);
    EXPECT_THROW(TFileStream(dir, fmCreate), EFCreateError);
    EXPECT_THROW(TFileStream("", fmOpenRead), EFOpenError);
    WriteFile(Path("d.txt"), "x");
    EXPECT_THROW(TFileStream(Path("d.txt"), 3), EFOpenError);      // no such access mode
    EXPECT_THROW(TFileStream(Path("d.txt"), 0x0050), EFOpenError); // no such share flag
}

TEST_F(FileStream, ExclusiveShareKeepsOthersOut) {
    WriteFile(Path("s.txt"), "shared");
    {
        TFileStream a(Path("s.txt"), fmOpenRead | fmShareExclusive);
        EXPECT_THROW(TFileStream(Path("s.txt"), fmOpenRead | fmShareDenyNone), EFOpenError);
        // Creating over a held file fails and leaves its contents alone.
        EXPECT_THROW(TFileStream(Path("s.txt"), fmCreate), EFCreateError);
        EXPECT_EQ(ReadFile(Path("s.txt")), "shared");
    }
    {
        // Released with the stream; and it can't be had while someone else has the file open.
        TFileStream reader(Path("s.txt"), fmOpenRead | fmShareDenyNone);
        EXPECT_THROW(TFileStream(Path("s.txt"), fmOpenRead | fmShareExclusive), EFOpenError);
    }
    // Creating empties the file and holds it as exclusively.
    TFileStream created(Path("s.txt"), fmCreate);
    EXPECT_EQ(created.GetSize(), 0);
    EXPECT_THROW(TFileStream(Path("s.txt"), fmOpenRead), EFOpenError);
}
