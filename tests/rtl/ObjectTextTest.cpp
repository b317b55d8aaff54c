// The text form of object streams: the layout the converter writes, the parser and its errors,
// round trips, objects stored back to back, the resource form and format detection.
#include "rtl/SysUtils.h"

#include "TestSupport.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

using namespace rtl;
using namespace rtltest;

namespace {

// A binary object of class TX named N with the given property records.
std::string Object(const std::function<void(TWriter&)>& props) {
    TStringStream s;
    {
        TWriter w(&s);
        w.WriteSignature();
        w.WriteStr("TX");
        w.WriteStr("N");
        props(w);
        w.WriteListEnd();
        w.WriteListEnd();
    }
    return s.DataString();
}

std::string Wrap(const std::string& lines) {
    return "object N: TX\r\n" + lines + "end\r\n";
}

// The object with a single property "P" holding the value written by f, and its text.
std::string PObject(const std::function<void(TWriter&)>& f) {
    return Object([&](TWriter& w) {
        w.WriteStr("P");
        f(w);
    });
}

std::string ValueText(const std::function<void(TWriter&)>& f) {
    return ToText(PObject(f));
}

std::string ParserError(const std::string& text) {
    return MessageOf<EParserError>([&] { ToBinary(text); });
}

// ---------------------------------------------------------------------------------------------

// The layout a float's text must have, found by trial with printf and strtold: the fewest
// significant digits, at most 18, that read back as the value, then %g at the larger of that
// and the whole digits (at most 18), the exponent without "+" or leading zeros, and ".0" when
// neither a point nor an exponent shows.
std::string StreamFloatByTrial(long double v) {
    char buf[80];
    int digits = 18;
    for (int p = 1; p <= 18; ++p) {
        std::snprintf(buf, sizeof buf, "%.*Le", p - 1, v);
        if (std::strtold(buf, nullptr) == v) {
            digits = p;
            break;
        }
    }
    std::snprintf(buf, sizeof buf, "%.*Le", digits - 1, v);
    int exponent = std::atoi(std::strchr(buf, 'e') + 1);
    int precision = std::max({digits, std::min(exponent + 1, 18), 1});
    std::snprintf(buf, sizeof buf, "%.*Lg", precision, v);
    std::string s = buf;
    if (size_t e = s.find('e'); e != std::string::npos) {
        int x = std::atoi(s.c_str() + e + 1);
        s = s.substr(0, e) + "E" + std::to_string(x);
    }
    if (s.find_first_of(".E") == std::string::npos) s += ".0";
    return s;
}

TEST(ObjectTextLayout, FloatTextIsTheShortestThatReadsBack) {
    std::vector<long double> values({0.0L, -0.0L, 1, -1, 0.5L, 0.25L, 123.25L, 1e17L, 1e18L, 1e19L,
                                     123456789012345678.0L, 1234567890123456789.0L,
                                     99999999999999999.0L, 0.0001220703125L});
    values.insert(values.end(), {0.00006103515625L, 9.5367431640625e-07L, 3.0517578125e-05L, 1e38L,
                                 2e38L, 1e300L, 0.1L, 1.0L / 3, 65536.5L, -7.75e20L, 0.375L, 100,
                                 -2, 1e20L, 1.5e-10L, static_cast<long double>(0.1)});
    // Binary fractions and large whole numbers have short exact decimals; the others come from
    // random bits.
    std::mt19937_64 rng(2024);
    for (int i = 0; i < 3000; ++i) {
        long double m = static_cast<long double>(static_cast<int64_t>(rng() >> (rng() % 64)));
        values.push_back(std::ldexp(m, static_cast<int>(rng() % 200) - 120));
        values.push_back(static_cast<long double>(std::bit_cast<double>(rng())));
        values.push_back(std::ldexp(static_cast<long double>(rng()), static_cast<int>(rng() % 40)));
    }
    for (long double v : values) {
        if (!std::isfinite(v)) continue;
        ASSERT_EQ(FormatStreamFloat(v), StreamFloatByTrial(v)) << std::hexfloat << v;
    }
}

TEST(ObjectTextLayout, SubnormalFloatsReadBackAsTheyWereWritten) {
    // Values below the smallest normal number of their type: the stream holds them, so their
    // text must read back. Those of few digits come back to the same bytes; the others, as any
    // extended value of more than 18 digits, to a value that then stays as it is.
    for (long double v : {std::numeric_limits<long double>::denorm_min(), -2.9784e-4938L}) {
        std::string binary = PObject([v](TWriter& w) { w.WriteFloat(v); });
        EXPECT_EQ(ToBinary(ToText(binary)), binary) << FormatStreamFloat(v);
    }
    std::string once = ToBinary(ToText(
        PObject([](TWriter& w) { w.WriteFloat(std::numeric_limits<long double>::min() / 3); })));
    EXPECT_EQ(ToBinary(ToText(once)), once);
    std::string single =
        PObject([](TWriter& w) { w.WriteSingle(std::numeric_limits<float>::denorm_min()); });
    EXPECT_EQ(ToBinary(ToText(single)), single);
    // Beyond the range of the type, either way, the text is refused.
    for (const char* text :
         {"1E5000", "-1E5000", "1E-5000", "-1E-5000", "1E39s", "1E-50s", "1E400d", "1E-400d"})
        EXPECT_NE(ParserError(Wrap(std::string("  P = ") + text + "\r\n")).find("out of range"),
                  std::string::npos)
            << text;
}

TEST(ObjectTextLayout, StringsEscapeControlCharactersAndDoubleApostrophes) {
    // Beyond what the corpus round trip pins: DEL is a control character in either form of
    // string, and a wide string writes its apostrophes doubled after character codes.
    EXPECT_EQ(ValueText([](TWriter& w) { w.WriteString("a\x7F"); }), Wrap("  P = 'a'#127\r\n"));
    EXPECT_EQ(ValueText([](TWriter& w) { w.WriteWideString(u"a\x7F"); }),
              Wrap("  P = 'a'#127\r\n"));
    EXPECT_EQ(ValueText([](TWriter& w) { w.WriteWideString(u"A\u0416\u00E9'"); }),
              Wrap("  P = 'A'#1046#233''''\r\n"));
}

TEST(ObjectTextLayout, LongStringsAreSplitIntoLinesOfSixtyFourCharacters) {
    // Longer strings are split as the corpus's LongText; exactly 64 characters stay on the
    // property's line, 65 do not.
    const std::string line(64, 'x');
    EXPECT_EQ(ValueText([&](TWriter& w) { w.WriteString(line); }),
              Wrap("  P = '" + line + "'\r\n"));
    EXPECT_EQ(ValueText([&](TWriter& w) { w.WriteString(line + "y"); }),
              Wrap("  P = \r\n    '" + line + "' +\r\n    'y'\r\n"));
}

TEST(ObjectTextParser, TokensAndLineNumbers) {
    TStringStream s("object Form1: TForm1\r\n  Left = -12\n  W = 1.5s $FF 'a'#66 'x'#1046\r\n");
    TParser p(&s);
    EXPECT_TRUE(p.TokenSymbolIs("OBJECT"));
    // Each token as its line, its kind and its value.
    V tokens;
    for (; p.Token() != toEOF; p.NextToken()) {
        std::string t = std::to_string(p.SourceLine()) + ":";
        if (p.Token() == toSymbol)
            t += "symbol " + p.TokenString();
        else if (p.Token() == toString)
            t += "string " + p.TokenString();
        else if (p.Token() == toInteger)
            t += "integer " + std::to_string(p.TokenInt());
        else if (p.Token() == toFloat)
            t += "float " + FormatStreamFloat(p.TokenFloat()) + p.FloatType();
        else if (p.Token() == toWString)
            t += "wide";
        else
            t += p.Token();
        if (p.Token() == toWString) {
            EXPECT_EQ(p.TokenWideString(), u"x\u0416");
        }
        tokens.push_back(t);
    }
    EXPECT_EQ(tokens, (V{"1:symbol object", "1:symbol Form1", "1::", "1:symbol TForm1",
                         "2:symbol Left", "2:=", "2:integer -12", "3:symbol W",
                         "3:=", "3:float 1.5s", "3:integer 255", "3:string aB", "3:wide"}));
}

TEST(ObjectTextParser, TokensReadTheSameWhereverTheBlocksOfTheStreamEnd) {
    // The parser reads its stream in blocks of 4096 bytes. Moving the text across a block's end
    // byte by byte cuts each symbol, number, string, blank run and line break somewhere.
    const std::string tail =
        "Name_With_Digits123.Sub = 'it''s a string'#13'x' + #$41'y'\r\n"
        "\r\n                  $7Fa -42 1.25e3c 7.5s\n\r  [a, b] <item end>\r\n";
    auto tokens = [](const std::string& text, size_t shift) {
        TStringStream s(text);
        TParser p(&s);
        std::vector<std::string> r;
        for (; p.Token() != toEOF; p.NextToken())
            r.push_back(std::to_string(p.Token()) + " " + p.TokenString() + " line " +
                        std::to_string(p.SourceLine()) + " at " +
                        std::to_string(p.SourcePos() - static_cast<int64_t>(shift)));
        return r;
    };
    const auto expected = tokens(tail, 0);
    ASSERT_EQ(expected.size(), 20u);
    const std::string object = Wrap("  " + tail.substr(0, tail.find("\r\n")) + "\r\n" +
                                    "  Q = (\r\n    1.25e3c 7.5s\r\n    -42)\r\n");
    const std::string binary = ToBinary(object);
    for (size_t pad = 4096 - tail.size() - 2; pad <= 4098; ++pad) {
        EXPECT_EQ(tokens(std::string(pad, ' ') + tail, pad), expected) << pad;
        EXPECT_EQ(ToBinary(std::string(pad, ' ') + object), binary) << pad;
    }
}

TEST(ObjectTextParser, SyntaxErrorsNameTheLine) {
    // The text after "object A: T" and a line break.
    const std::pair<std::string, std::string> cases[] = {
        {"  X = 'open\r\nend\r\n", "Unterminated string on line 2"},
        {"  X 1\r\nend\r\n", "'=' expected but integer found on line 2"},
        {"\r\n  X = )\r\nend\r\n", "Invalid property value on line 3"},
        {"  X = {0A1}\r\nend\r\n", "Wrong number of hexadecimal digits in binary value on line 2"},
        {"  X = 'a'#99999\r\nend\r\n", "Invalid character code on line 2"},
        {"  X = 1.5e\r\nend\r\n", "Invalid floating point number: 1.5e on line 2"},
        {"  X = (1 2\r\n", "Invalid property value on line 3"},
        {"  X = 1\r\n", "identifier expected but end of file found on line 3"},
        {std::string("  X = \0\r\nend\r\n", 10), "Invalid character 0 in text on line 2"},
        {"  X = 1e99999s\r\nend\r\n", "Float value out of range: 1e99999 on line 2"},
        {"  X = 99999999999999999999\r\nend\r\n",
         "Invalid integer number: 99999999999999999999 on line 2"}};
    for (const auto& [text, message] : cases)
        EXPECT_EQ(ParserError("object A: T\r\n" + text), message);
    EXPECT_EQ(ParserError("thing A: T\r\nend\r\n"),
              "'object' expected but 'thing' found on line 1");
}

TEST(ObjectTextParser, ReadsThePlatformsOwnSpellings) {
    // Upper-case keywords, hexadecimal integers, item orders with blanks, strings joined
    // across lines, a byte order mark and blank lines.
    std::string text = "\xEF\xBB\xBFOBJECT F: TF\r\n\r\n"
                       "  A = $7F\n"
                       "  B = 'x' +\r\n     'y'\r\n"
                       "  C = < item [3] end >\r\n"
                       "  D = TRUE\r\n"
                       "END\r\n";
    EXPECT_EQ(ToText(ToBinary(text)), "object F: TF\r\n"
                                      "  A = 127\r\n"
                                      "  B = 'xy'\r\n"
                                      "  C = <\r\n"
                                      "    item[3]\r\n"
                                      "    end>\r\n"
                                      "  D = True\r\n"
                                      "end\r\n");
}

TEST(ObjectTextParser, DecimalsReadAsTheNearestExtendedValue) {
    // A float's text becomes the extended value nearest to it, as strtold reads it: decimals of
    // up to 21 digits, up to 30 of them after the point, of either sign, with and without
    // leading and trailing zeros, and with exponents.
    std::vector<std::string> texts({"0.0", "-0.0", "1.5", "300.25", "0.1", "-0.3", "12.", "007.50",
                                    "0.000000000000000000000000001", "9999999999999999999.5",
                                    "18446744073709551615.0", "1234567890.123456789", "1.5e3",
                                    "2E-5"});
    std::mt19937_64 rng(7);
    for (int i = 0; i < 2000; ++i) {
        std::string digits = std::to_string(rng() >> (rng() % 64));
        size_t point = rng() % (digits.size() + 1);
        std::string fraction = std::string(rng() % 12, '0') + std::to_string(rng() % 100000);
        std::string text = (rng() % 2 ? "-" : "") + digits.substr(0, point) +
                           (point == 0 ? "0" : "") + "." + digits.substr(point) + fraction;
        texts.push_back(text);
    }
    for (const std::string& text : texts) {
        std::string b = ToBinary("object A: T\r\n  F = " + text + "\r\nend\r\n");
        uint8_t expected[10];
        ExtendedToBytes(std::strtold(text.c_str(), nullptr), expected);
        ASSERT_EQ(b.substr(10, 11), std::string(1, char(vaExtended)) +
                                        std::string(reinterpret_cast<char*>(expected), 10))
            << text;
    }
}

TEST(ObjectTextLayout, StreamNamesAreIdentifiersDottedWhereAllowed) {
    // Each name as an identifier, as a dotted name, and as a dotted name that may be empty.
    const std::pair<std::string, std::vector<bool>> cases[] = {
        {"", {false, false, true}},       {"a", {true, true, true}},
        {"_9Z", {true, true, true}},      {"9a", {false, false, false}},
        {"a.b_9", {false, true, true}},   {"a..b", {false, false, false}},
        {".a", {false, false, false}},    {"a.", {false, false, false}},
        {"a.9", {false, false, false}},   {"a-b", {false, false, false}},
        {"a\xC0", {false, false, false}}, {"\xC0.a", {false, false, false}}};
    for (const auto& [name, want] : cases)
        EXPECT_EQ(
            std::vector<bool>({IsStreamName(name, false, false), IsStreamName(name, true, false),
                               IsStreamName(name, true, true)}),
            want)
            << name;
}

TEST(ObjectTextParser, OutputStopsWhereTheTextGoesWrong) {
    // What was converted before a syntax error stays in the output: the properties before it,
    // and the name of the property in error once the whole name has been read.
    auto partial = [](const std::string& text) {
        TStringStream in(text), out;
        EXPECT_THROW(ObjectTextToBinary(&in, &out), EParserError) << text;
        return out.DataString();
    };
    const std::string head = "object A: T\r\n  P = 1\r\n";
    std::string before = ToBinary(head + "end\r\n");
    before.resize(before.size() - 2); // without the ends of the property and child lists
    struct Case {
        std::string Tail, Written;
    };
    const std::vector<Case> cases = {{"  Q\x80 = 2\r\n", ""},
                                     {"  Q.\x80 = 2\r\n", ""},
                                     {"  Q.R = @\r\n", "\x03Q.R"},
                                     {"  Q = @\r\n", "\x01Q"},
                                     {"  Q 2\r\n", "\x01Q"}};
    for (const Case& c : cases)
        EXPECT_EQ(partial(head + c.Tail + "end\r\n"), before + c.Written) << c.Tail;
}

TEST(ObjectTextRoundTrip, CorpusTextAndBinaryConvertBothWaysUnchanged) {
    for (const char* name : {"common.txt", "platform.txt", "form.txt"}) {
        SCOPED_TRACE(name);
        std::string text = ReadFile(CorpusDir() / name);
        ASSERT_FALSE(text.empty());
        std::string binary = ToBinary(text);
        EXPECT_EQ(ToText(binary), text);
        EXPECT_EQ(ToBinary(ToText(binary)), binary);
    }
}

TEST(ObjectTextRoundTrip, EveryValueFormSurvives) {
    // The extremes of each form; plain integers, identifiers and sets are pinned by the corpus.
    std::string binary = Object([](TWriter& w) {
        w.WriteStr("A");
        w.WriteListBegin();
        for (long double f : {0.1L, -0.142857142857142857L, 1e300L, 6.02214076e23L, 100.0L})
            w.WriteFloat(f);
        w.WriteSingle(0.1f);
        w.WriteSingle(-3.4028235e38f);
        w.WriteCurrency(922337203685477.5807L);
        w.WriteCurrency(-0.0001L);
        w.WriteDate(45000.123456789);
        w.WriteString(std::string(1000, 'q') + "\x01'\xFF");
        w.WriteWideString(u"\u4E2D\u6587 and more text to go past sixty-four characters \u00E9");
        w.WriteBinary([](TStream* s) {
            for (int i = 0; i < 256; ++i)
                s->WriteValue(static_cast<uint8_t>(i));
        });
        w.WriteListEnd();
    });
    EXPECT_EQ(ToBinary(ToText(binary)), binary);
}

TEST(ObjectTextResources, TextToResourceAndBack) {
    std::string text = "object Form1: TForm1\r\n  Left = 1\r\nend\r\n";
    TStringStream in(text), res;
    ObjectTextToResource(&in, &res);
    std::string r = res.DataString();
    std::string binary = ToBinary(text);
    std::string header = Bytes({0xFF, 0x0A, 0}) + "TFORM1" +
                         Bytes({0, 0x30, 0x10, static_cast<int>(binary.size()), 0, 0, 0});
    EXPECT_EQ(r, header + binary);
    res.SetPosition(0);
    TStringStream out;
    ObjectResourceToText(&res, &out);
    EXPECT_EQ(out.DataString(), text);
    // Without a resource header the conversion refuses.
    TStringStream plain(binary), sink;
    EXPECT_THROW(ObjectResourceToText(&plain, &sink), EInvalidImage);
}

TEST(ObjectTextDetection, TestStreamFormatLooksAtTheFirstBytesAndKeepsThePosition) {
    struct Case {
        std::string data;
        TStreamOriginalFormat format;
    } cases[] = {
        {"TPF0\x01", sofBinary}, {"\xFF\x0A", sofBinary},  {"object A", sofText},
        {"Object", sofText},     {"inherited", sofText},   {"Inline", sofText},
        {" object", sofText},    {"\r\nobject", sofText},  {"\tobject", sofText},
        {"\x0Bobject", sofText}, {"\nobject", sofUnknown}, {"TPF1", sofUnknown},
        {"sys_bin", sofUnknown}, {"", sofUnknown},         {"TP", sofUnknown},
    };
    for (const auto& c : cases) {
        TStringStream s("xx" + c.data);
        s.SetPosition(2);
        EXPECT_EQ(TestStreamFormat(&s), c.format) << c.data;
        EXPECT_EQ(s.GetPosition(), 2);
    }
}

TEST(ObjectTextDamage, EveryTruncationAndCorruptedTagsAndLengthsFailCleanly) {
    std::string binary = ToBinary(ReadFile(CorpusDir() / "common.txt"));
    for (size_t n = 0; n < binary.size(); ++n) {
        TStringStream in(binary.substr(0, n)), out;
        EXPECT_THROW(ObjectBinaryToText(&in, &out), EReadError) << n;
    }
    int failures = 0;
    for (size_t i = 4; i < binary.size(); i += 3) {
        for (uint8_t b : {uint8_t(0x15), uint8_t(0xFF), uint8_t(0x0C), uint8_t(0x01)}) {
            std::string bad = binary;
            bad[i] = static_cast<char>(b);
            TStringStream in(bad), out;
            try {
                ObjectBinaryToText(&in, &out);
            } catch (const EReadError&) {
                ++failures;
            }
        }
    }
    EXPECT_GT(failures, 0);
}

TEST(ObjectTextDamage, DeepNestingAndUnknownTagsAreRefused) {
    std::string text = "object A: T\r\n  X = " + std::string(100000, '(') + "\r\nend\r\n";
    EXPECT_THROW(ToBinary(text), EParserError);
    std::string objects;
    for (int i = 0; i < 5000; ++i)
        objects += "object A: T\r\n";
    EXPECT_THROW(ToBinary(objects), EParserError);
    const std::string head = "TPF0" + Bytes({1, 'T', 1, 'A', 1, 'X'});
    TStringStream deep(head + std::string(100000, '\x01')), unknown(head + Bytes({21, 0, 0})), out;
    EXPECT_THROW(ObjectBinaryToText(&deep, &out), EReadError);
    EXPECT_EQ(MessageOf<EReadError>([&] { ObjectBinaryToText(&unknown, &out); }),
              "Unknown value type 21 in stream");
}

} // namespace
