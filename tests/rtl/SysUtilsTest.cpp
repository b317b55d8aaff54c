// SysUtils: Format and its errors, number and date conversions under the locale globals,
// Windows-1251 case folding and collation, the 1-based string helpers, paths and files.
// Tables compare the list of results with the list of wanted values, case for case.
#include "rtl/SysUtils.h"

#include "TestSupport.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>

using namespace rtl;
using namespace rtltest;

namespace {

// Restores the locale globals a test changes.
class LocaleGuard {
public:
    LocaleGuard()
        : dec_(DecimalSeparator), thou_(ThousandSeparator), date_(DateSeparator),
          time_(TimeSeparator), sdf_(ShortDateFormat), ldf_(LongDateFormat), stf_(ShortTimeFormat),
          ltf_(LongTimeFormat) {}
    ~LocaleGuard() {
        DecimalSeparator = dec_;
        ThousandSeparator = thou_;
        DateSeparator = date_;
        TimeSeparator = time_;
        ShortDateFormat = sdf_;
        LongDateFormat = ldf_;
        ShortTimeFormat = stf_;
        LongTimeFormat = ltf_;
    }

private:
    char dec_, thou_, date_, time_;
    std::string sdf_, ldf_, stf_, ltf_;
};

template <class F> std::string ConvertMessage(F f) {
    return MessageOf<EConvertError>(f);
}

// The signs of comparison results, as -1, 0 and 1.
std::vector<int> Signs(std::initializer_list<int> results) {
    std::vector<int> r;
    for (int c : results)
        r.push_back((c > 0) - (c < 0));
    return r;
}

// Compares two lists of numbers to within four units in the last place, case for case.
void ExpectNear(const std::vector<double>& got, const std::vector<double>& want) {
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < got.size(); ++i)
        EXPECT_DOUBLE_EQ(got[i], want[i]) << "case " << i;
}

// The value of a date and time, as a number, for comparisons of lists.
double At(int y, int m, int d, int h = 0, int n = 0, int s = 0, int ms = 0) {
    return EncodeDate(y, m, d).Value + EncodeTime(h, n, s, ms).Value;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Format

TEST(Format, IntegerAndStringDirectivesWithIndexAndStar) {
    // After an index the following directives go on from the next argument.
    EXPECT_EQ(
        V({Format("%d", {42}), Format("%d", {-42}), Format("%5d|", {42}), Format("%-5d|", {42}),
           Format("%.4d", {-5}), Format("%d", {int64_t(9000000000LL)}), Format("%u", {-1}),
           Format("%u", {7u}), Format("%x", {255}), Format("%.8x", {255}), Format("%x", {-1}),
           Format("%x", {int64_t(-1)}), Format("%X", {0xABCDEF}), Format("%u", {UINT64_MAX}),
           Format("%d", {UINT64_MAX}), Format("%x", {0xFFFFFFFFu}), Format("%d", {INT64_MIN})}),
        V({"42", "-42", "   42|", "42   |", "-0005", "9000000000", "4294967295", "7", "FF",
           "000000FF", "FFFFFFFF", "FFFFFFFFFFFFFFFF", "ABCDEF", "18446744073709551615",
           "18446744073709551615", "FFFFFFFF", "-9223372036854775808"}));
    EXPECT_EQ(V({Format("%s=%d", {"a", 5}), Format("[%-4s]", {"ab"}),
                 Format("[%4s]", {std::string("ab")}), Format("%.2s", {"abcd"}),
                 Format("%s%s", {'x', std::string_view("yz")}), Format("100%%", {}),
                 Format("no directives", {}), Format("%0:s %1:s %0:s", {"a", "b"}),
                 Format("%1:s %s", {"a", "b", "c"}), Format("%*d|", {5, 42}),
                 Format("%-*d|", {4, 7}), Format("%.*f", {1, 2.25})}),
              V({"a=5", "[ab  ]", "[  ab]", "ab", "xyz", "100%", "no directives", "a b a", "b c",
                 "   42|", "7   |", "2.3"}));
}

TEST(Format, FloatDirectives) {
    EXPECT_EQ(V({Format("%f", {1.5}), Format("%.3f", {2.0}), Format("%.0f", {2.5}),
                 Format("%e", {1.5}), Format("%.3e", {12345.678}), Format("%e", {-0.00125}),
                 Format("%g", {1.5}), Format("%g", {1e20}), Format("%n", {1234567.891}),
                 Format("%.0n", {-1234.0}), Format("%m", {1234.5}), Format("%m", {-5.0}),
                 Format("%8.2f|", {3.14159}), Format("%-8.2f|", {3.14159})}),
              V({"1.50", "2.000", "3", "1.50000000000000E+000", "1.23E+004",
                 "-1.25000000000000E-003", "1.5", "1E20", "1,234,567.89", "-1,234", "$1,234.50",
                 "($5.00)", "    3.14|", "3.14    |"}));
}

TEST(Format, BadDirectivesRaiseConvertError) {
    auto invalid = [](const std::string& format) {
        return "Format '" + format + "' invalid or incompatible with argument";
    };
    EXPECT_EQ(
        V({ConvertMessage([] { Format("%d", {"x"}); }), ConvertMessage([] { Format("%s", {5}); }),
           ConvertMessage([] { Format("%f", {5}); }), ConvertMessage([] { Format("%d", {true}); }),
           ConvertMessage([] { Format("%d", {'7'}); }), ConvertMessage([] { Format("%p", {5}); }),
           ConvertMessage([] { Format("value %k", {5}); }),
           ConvertMessage([] { Format("ends with %", {5}); }), ConvertMessage([] {
               Format("%*d", {"x", 5});
           }),
           ConvertMessage([] { Format("%d %d", {1}); }),
           ConvertMessage([] { Format("%5:d", {1}); })}),
        V({invalid("%d"), invalid("%s"), invalid("%f"), invalid("%d"), invalid("%d"), invalid("%p"),
           invalid("value %k"), invalid("ends with %"), invalid("%*d"),
           "No argument for format '%d %d'", "No argument for format '%5:d'"}));
    EXPECT_THROW(Format("%999999999d", {1}), EConvertError);
}

// ---------------------------------------------------------------------------------------------
// Integers

TEST(IntConversions, ToTextAndBack) {
    EXPECT_EQ(
        V({IntToStr(0), IntToStr(-123), IntToStr(INT64_MIN), IntToHex(255, 4), IntToHex(0x1234, 2),
           IntToHex(-1, 2), IntToHex(int64_t(-1), 1)}),
        V({"0", "-123", "-9223372036854775808", "00FF", "1234", "FFFFFFFF", "FFFFFFFFFFFFFFFF"}));
    EXPECT_EQ(
        std::vector<int64_t>({StrToInt("42"), StrToInt("  -42"), StrToInt("+7"), StrToInt("$FF"),
                              StrToInt("0x1a"), StrToInt("$FFFFFFFF"), StrToInt("2147483647"),
                              StrToInt("-2147483648"), StrToInt64("9223372036854775807"),
                              StrToInt64("-9223372036854775808"), StrToInt64("$7FFFFFFFFFFFFFFF")}),
        std::vector<int64_t>(
            {42, -42, 7, 255, 26, -1, INT32_MAX, INT32_MIN, INT64_MAX, INT64_MIN, INT64_MAX}));
}

TEST(IntConversions, BadTextRaisesOrDefaults) {
    EXPECT_EQ(ConvertMessage([] { StrToInt("abc"); }), "'abc' is not a valid integer value");
    for (const char* bad : {"", " ", "12a", "42 ", "2147483648", "-2147483649", "$", "0x",
                            "$100000000", "1.5", "--1"})
        EXPECT_THROW(StrToInt(bad), EConvertError) << bad;
    EXPECT_THROW(StrToInt64("9223372036854775808"), EConvertError);
    EXPECT_EQ(
        std::vector<int64_t>({StrToIntDef("x", 7), StrToIntDef("8", 7), StrToInt64Def("", -1)}),
        std::vector<int64_t>({7, 8, -1}));
    int32_t v = 5, w = 5;
    EXPECT_EQ((std::vector<int64_t>{TryStrToInt("9x", v), v, TryStrToInt("-9", w), w}),
              std::vector<int64_t>({false, 5, true, -9}));
}

// ---------------------------------------------------------------------------------------------
// Floats

TEST(FloatConversions, FloatToStrUsesFifteenDigitsGeneralForm) {
    EXPECT_EQ(
        V({FloatToStr(0), FloatToStr(1.5), FloatToStr(-2.25), FloatToStr(0.1),
           FloatToStr(1.0 / 3.0), FloatToStr(2.0 / 3.0), FloatToStr(100),
           FloatToStr(123456789012345.0), FloatToStr(1e15), FloatToStr(1.23456789012345678e20),
           FloatToStr(0.0001), FloatToStr(0.00001), FloatToStr(-1.5e-10), FloatToStr(NAN),
           FloatToStr(INFINITY), FloatToStr(-INFINITY)}),
        V({"0", "1.5", "-2.25", "0.1", "0.333333333333333", "0.666666666666667", "100",
           "123456789012345", "1E15", "1.23456789012346E20", "0.0001", "1E-5", "-1.5E-10", "NAN",
           "INF", "-INF"}));
}

TEST(FloatConversions, FloatToStrF) {
    // Precision limits the significant digits before the decimals are filled in; more integer
    // digits than the precision give the general form; a value that rounds to zero shows no
    // sign; exact ties round away from zero.
    EXPECT_EQ(V({FloatToStrF(1234.5, ffFixed, 15, 2), FloatToStrF(1234.5, ffNumber, 15, 2),
                 FloatToStrF(-1234567.5, ffNumber, 15, 0), FloatToStrF(1234.5, ffExponent, 4, 2),
                 FloatToStrF(0, ffExponent, 3, 0), FloatToStrF(1234.5, ffGeneral, 3, 0),
                 FloatToStrF(1234.5, ffCurrency, 15, 2), FloatToStrF(1.23456789, ffFixed, 4, 6),
                 FloatToStrF(123456.0, ffFixed, 3, 2), FloatToStrF(-0.001, ffFixed, 15, 2),
                 FloatToStrF(0.999, ffFixed, 15, 2), FloatToStrF(9.996, ffFixed, 15, 2),
                 FloatToStrF(0.125, ffFixed, 15, 2), FloatToStrF(-0.5, ffFixed, 15, 0),
                 FloatToStrF(0.004, ffFixed, 15, 2), FloatToStrF(0.006, ffFixed, 15, 2)}),
              V({"1234.50", "1,234.50", "-1,234,568", "1.235E+03", "0.00E+0", "1.23E3", "$1,234.50",
                 "1.235000", "1.23E5", "0.00", "1.00", "10.00", "0.13", "-1", "0.00", "0.01"}));
}

TEST(FloatConversions, FormatFloatPicturesAndSections) {
    EXPECT_EQ(
        V({FormatFloat("0.00", 3.14159), FormatFloat("0.00", 2.5),
           FormatFloat("#,##0.00", 1234567.891), FormatFloat("#,##0", 999), FormatFloat("#,##0", 0),
           FormatFloat("0.###", 1.5), FormatFloat("0.###", 2), FormatFloat("#.##", 0.5),
           FormatFloat("000", 7), FormatFloat("0", 1234.6), FormatFloat("00", 12345),
           FormatFloat("000-000", 12345), FormatFloat("0.00E+00", 12345),
           FormatFloat("0.00E+00", 0.000125), FormatFloat("0.0e-0", 12345),
           FormatFloat("\"Total: \"0", 5), FormatFloat("'#'0", 5), FormatFloat("0.00", -1.5),
           FormatFloat("", 2.5)}),
        V({"3.14", "2.50", "1,234,567.89", "999", "0", "1.5", "2", ".5", "007", "1235", "12345",
           "012-345", "1.23E+04", "1.25E-04", "1.2e4", "Total: 5", "#5", "-1.50", "2.5"}));
    // A value that rounds to zero takes the zero section; an empty negative section falls back
    // to the first with a minus sign.
    EXPECT_EQ(V({FormatFloat("0;(0);zero", 5), FormatFloat("0;(0);zero", -5),
                 FormatFloat("0;(0);zero", 0), FormatFloat("0.0;(0.0);zero", 0.01),
                 FormatFloat("0.0;;zero", -2), FormatFloat("'a;b'0", 3)}),
              V({"5", "(5)", "zero", "zero", "-2.0", "a;b3"}));
}

TEST(FloatConversions, StrToFloat) {
    ExpectNear({double(StrToFloat("1.5")), double(StrToFloat("  -2.5e3 ")), double(StrToFloat("7")),
                double(StrToFloat(".5")), double(StrToFloat("1E-2"))},
               {1.5, -2500, 7, 0.5, 0.01});
    EXPECT_EQ(ConvertMessage([] { StrToFloat("1.2.3"); }),
              "'1.2.3' is not a valid floating point value");
    for (const char* bad : {"", "abc", "1e", "1,5", "e5", ".", "1 2", "1e99999", "nan"})
        EXPECT_THROW(StrToFloat(bad), EConvertError) << bad;
    EXPECT_DOUBLE_EQ(static_cast<double>(StrToFloatDef("x", 4.5)), 4.5);
    double d = 0;
    EXPECT_TRUE(TryStrToFloat("3.25", d));
    EXPECT_DOUBLE_EQ(d, 3.25);
    EXPECT_FALSE(TryStrToFloat("3.25x", d));
}

TEST(FloatConversions, HonourChangedSeparators) {
    LocaleGuard guard;
    DecimalSeparator = ',';
    ThousandSeparator = '.';
    EXPECT_EQ(V({FloatToStr(1.5), FloatToStr(1.5e-10), Format("%.2f", {1.5}),
                 Format("%n", {1234567.5}), FormatFloat("#,##0.00", 1234.5)}),
              V({"1,5", "1,5E-10", "1,50", "1.234.567,50", "1.234,50"}));
    EXPECT_DOUBLE_EQ(static_cast<double>(StrToFloat("2,25")), 2.25);
    EXPECT_THROW(StrToFloat("2.25"), EConvertError);
}

// ---------------------------------------------------------------------------------------------
// Dates and times

TEST(DateTime, EncodeCountsDaysFrom1899_12_30AndRejectsInvalidArguments) {
    ExpectNear({EncodeDate(1899, 12, 30).Value, EncodeDate(1900, 1, 1).Value,
                EncodeDate(2000, 1, 1).Value, EncodeDate(1, 1, 1).Value,
                EncodeDate(2000, 2, 29).Value, EncodeTime(12, 0, 0, 0).Value,
                EncodeTime(6, 0, 0, 0).Value},
               {0, 2, 36526, -693593, 36585, 0.5, 0.25});
    for (auto [y, m, d] :
         {std::tuple{2001, 2, 29}, {1900, 2, 29}, {2000, 13, 1}, {0, 1, 1}, {10000, 1, 1}})
        EXPECT_THROW(EncodeDate(y, m, d), EConvertError) << y << "-" << m << "-" << d;
    for (auto [h, n, s, ms] : {std::tuple{24, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 0, 1000}})
        EXPECT_THROW(EncodeTime(h, n, s, ms), EConvertError) << h << ":" << n << "." << ms;
    EXPECT_EQ(ConvertMessage([] { EncodeDate(2001, 2, 30); }), "Invalid argument to date encode");
}

TEST(DateTime, DecodeRoundTrips) {
    uint16_t y, m, d, h, n, s, ms;
    for (auto [yy, mm, dd] : {std::tuple{1, 1, 1}, {1900, 3, 1}, {2000, 2, 29}, {9999, 12, 31}}) {
        DecodeDate(EncodeDate(yy, mm, dd), y, m, d);
        EXPECT_EQ(std::tuple(y, m, d), std::tuple(yy, mm, dd));
    }
    DecodeTime(At(2020, 5, 6, 23, 59, 58, 999), h, n, s, ms);
    EXPECT_EQ(std::vector<int>({h, n, s, ms}), std::vector<int>({23, 59, 58, 999}));
    // Before the epoch the date truncates towards zero and the time is the absolute fraction.
    DecodeDate(-1.25, y, m, d);
    DecodeTime(-1.25, h, n, s, ms);
    EXPECT_EQ(d, 29);
    EXPECT_EQ(h, 6);
    EXPECT_EQ(DayOfWeek(EncodeDate(2000, 1, 1)), 7);
    EXPECT_EQ(DayOfWeek(EncodeDate(2024, 3, 3)), 1);
}

TEST(DateTime, FormatDateTimePictures) {
    TDateTime dt = At(2024, 3, 5, 14, 7, 9, 45);
    // m after h is the minute.
    EXPECT_EQ(V({FormatDateTime("yyyy-mm-dd hh:nn:ss.zzz", dt), FormatDateTime("d/m/yy", dt),
                 FormatDateTime("ddd dddd mmm mmmm", dt), FormatDateTime("h:mm", dt),
                 FormatDateTime("h:nn am/pm", dt), FormatDateTime("hh:nn AMPM", dt),
                 FormatDateTime("h a/p", EncodeTime(0, 30, 0, 0)),
                 FormatDateTime("'Day' d \"of\" mmmm", dt), FormatDateTime("c", dt),
                 FormatDateTime("c", EncodeDate(2024, 3, 5)), FormatDateTime("ddddd", dt),
                 FormatDateTime("dddddd", dt), FormatDateTime("t|tt", dt)}),
              V({"2024-03-05 14:07:09.045", "5/3/24", "Tue Tuesday Mar March", "14:07", "2:07 pm",
                 "02:07 PM", "12 a", "Day 5 of March", "3/5/2024 14:07:09", "3/5/2024", "3/5/2024",
                 "Tuesday, March 5, 2024", "14:07|14:07:09"}));
}

TEST(DateTime, ToTextAndBack) {
    TDateTime dt = At(2024, 3, 5, 14, 7, 9);
    EXPECT_EQ(V({DateTimeToStr(dt), DateToStr(dt), TimeToStr(dt)}),
              V({"3/5/2024 14:07:09", "3/5/2024", "14:07:09"}));
    // Without a year, the current one.
    uint16_t y, m, d;
    DecodeDate(Date(), y, m, d);
    ExpectNear({StrToDateTime(DateTimeToStr(dt)).Value, StrToDate("3/5/2024").Value,
                StrToTime("14:07").Value, StrToTime("2:30 PM").Value, StrToTime("12:05 AM").Value,
                StrToTime("1:02:03.5").Value, StrToDateTime("14:07").Value, StrToDate("3/5").Value},
               {dt.Value, At(2024, 3, 5), At(1899, 12, 30, 14, 7), At(1899, 12, 30, 14, 30),
                At(1899, 12, 30, 0, 5), At(1899, 12, 30, 1, 2, 3, 5), At(1899, 12, 30, 14, 7),
                At(y, 3, 5)});
    // Two-digit years fall in the window around the current year.
    DecodeDate(StrToDate("1/2/05"), y, m, d);
    EXPECT_EQ(y, 2005);
}

TEST(DateTime, HonourChangedFormats) {
    LocaleGuard guard;
    ShortDateFormat = "dd.mm.yyyy";
    DateSeparator = '.';
    LongTimeFormat = "hh.nn.ss";
    TimeSeparator = '.';
    TDateTime dt = At(2024, 3, 5, 9, 8, 7);
    EXPECT_EQ(DateTimeToStr(dt), "05.03.2024 09.08.07");
    EXPECT_DOUBLE_EQ(StrToDate("05.03.2024").Value, EncodeDate(2024, 3, 5).Value);
    EXPECT_DOUBLE_EQ(StrToDateTime("05.03.2024 09.08.07").Value, dt.Value);
    ShortDateFormat = "yyyy/mm/dd";
    DateSeparator = '-';
    EXPECT_EQ(DateToStr(dt), "2024-03-05");
    EXPECT_DOUBLE_EQ(StrToDate("2024-03-05").Value, EncodeDate(2024, 3, 5).Value);
}

TEST(DateTime, BadTextRaises) {
    EXPECT_EQ(ConvertMessage([] { StrToDate("32/1/2024"); }), "'32/1/2024' is not a valid date");
    EXPECT_EQ(ConvertMessage([] { StrToTime("25:00"); }), "'25:00' is not a valid time");
    EXPECT_EQ(ConvertMessage([] { StrToDateTime("x"); }), "'x' is not a valid date and time");
    for (const char* bad : {"", "2/30/2024", "1/2/3/4", "1/", "a/b/c", "99999999999/1/1"})
        EXPECT_THROW(StrToDate(bad), EConvertError) << bad;
    for (const char* bad : {"", "12", "12:", "13:00 PM", "1:60", "12:00 XM"})
        EXPECT_THROW(StrToTime(bad), EConvertError) << bad;
}

// ---------------------------------------------------------------------------------------------
// Text

TEST(Text, TrimRemovesControlBytesAndBlanks) {
    // Bytes above 0x7F are text, not blanks.
    EXPECT_EQ(V({Trim("\t a b \x01\r\n"), TrimLeft("  x "), TrimRight("  x \x1f"), Trim("   "),
                 Trim("\xA0x\xA0")}),
              V({"a b", "x ", "  x", "", "\xA0x\xA0"}));
}

TEST(Text, AsciiCaseLeavesCyrillicAlone) {
    EXPECT_EQ(V({UpperCase("abcXyz09"), LowerCase("ABCxYZ"), UpperCase(W("ёж"))}),
              V({"ABCXYZ09", "abcxyz", W("ёж")}));
    EXPECT_TRUE(SameText("Hello", "hELLO"));
    EXPECT_FALSE(SameText(W("Ёж"), W("ёж")));
    EXPECT_EQ(
        Signs({CompareText("abc", "ABD"), CompareText("abc", "ABC"), CompareText("abcd", "ABC"),
               CompareStr("ABC", "abc"), CompareStr("b", "a"), CompareStr("ab", "abc")}),
        std::vector<int>({-1, 0, 1, -1, 1, -1}));
}

TEST(Text, AnsiCaseFoldsCyrillicPairs) {
    // Symbols of the code page have no case.
    EXPECT_EQ(V({AnsiUpperCase(W("абвгдеёжзийклмнопрстуфхцчшщъыьэюя")),
                 AnsiUpperCase(W("ўєїіґђѓљњќћџјѕ")), AnsiLowerCase(W("ЎЄЇІҐЂЃЉЊЌЋЏЈЅЁ")),
                 AnsiUpperCase(W("mixed Ёлка №5")), AnsiUpperCase(W("«»µ§"))}),
              V({W("АБВГДЕЁЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ"), W("ЎЄЇІҐЂЃЉЊЌЋЏЈЅ"), W("ўєїіґђѓљњќћџјѕё"),
                 W("MIXED ЁЛКА №5"), W("«»µ§")}));
}

TEST(Text, AnsiCollationOrdersCyrillicAfterLatin) {
    EXPECT_EQ(AnsiCompareText(W("ёлка"), W("ЁЛКА")), 0);
    EXPECT_TRUE(AnsiSameText(W("Їжак"), W("їЖАК")));
    // Each word before the next: digits and Latin first, case aside, then Е < Ё < Ж, Г < Ґ < Д,
    // И < І < Ї < Й, У < Ў < Ф.
    const V ordered = {"123",     "a",        "abc",    "abcd",   "B",      "zebra",  W("арбуз"),
                       W("ГАЗ"),  W("ґанок"), W("дом"), W("ель"), W("ёж"),  W("жук"), W("из"),
                       W("ізюм"), W("їжак"),  W("йод"), W("уж"),  W("ўсё"), W("фон")};
    for (size_t i = 1; i < ordered.size(); ++i) {
        EXPECT_LT(AnsiCompareText(ordered[i - 1], ordered[i]), 0)
            << ordered[i - 1] << " " << ordered[i];
        EXPECT_GT(AnsiCompareText(ordered[i], ordered[i - 1]), 0)
            << ordered[i] << " " << ordered[i - 1];
    }
}

TEST(Text, AnsiSortKeysOrderAsAnsiCompareText) {
    // Keys compared byte by byte, the shorter first on a common start, against the collation:
    // every pair of single bytes, then pairs of strings that differ in case, length, letters of
    // both alphabets, symbols and control bytes.
    auto keyOrder = [](std::string_view a, std::string_view b) {
        std::string ka, kb;
        AppendAnsiSortKey(a, ka);
        AppendAnsiSortKey(b, kb);
        EXPECT_EQ(ka.size(), a.size());
        int c = std::memcmp(ka.data(), kb.data(), std::min(ka.size(), kb.size()));
        if (c == 0)
            c = static_cast<int>(ka.size() > kb.size()) - static_cast<int>(ka.size() < kb.size());
        return (c > 0) - (c < 0);
    };
    auto collation = [](std::string_view a, std::string_view b) {
        int c = AnsiCompareText(a, b);
        return (c > 0) - (c < 0);
    };
    for (int x = 0; x < 256; ++x)
        for (int y = 0; y < 256; ++y) {
            std::string a(1, static_cast<char>(x)), b(1, static_cast<char>(y));
            ASSERT_EQ(keyOrder(a, b), collation(a, b)) << x << " " << y;
        }
    const V words(
        {"",        "a",       "A",      "ab",    "aB",       "abc",   "b",
         W("ёлка"), W("ЁЛКА"), W("ель"), W("ёж"), W("ґанок"), "zebra", std::string("a\0b", 3),
         "a\x01",   "\x7F",    "_x",     "x_",    "123",      W("№5"), W("«a»")});
    for (const auto& a : words)
        for (const auto& b : words)
            EXPECT_EQ(keyOrder(a, b), collation(a, b)) << a << " | " << b;
    // A key appends to what is there.
    std::string key = "ab";
    AppendAnsiSortKey("c", key);
    EXPECT_EQ(key.size(), 3u);
    EXPECT_EQ(key.substr(0, 2), "ab");
}

TEST(Text, QuotingAndIdentifiers) {
    EXPECT_EQ(V({QuotedStr("it's"), QuotedStr(""), AnsiQuotedStr("say \"hi\"", '"'),
                 AnsiDequotedStr("'it''s' rest", '\''), AnsiDequotedStr("plain", '\''),
                 AnsiDequotedStr("'open", '\''), AnsiDequotedStr("''", '\''),
                 AnsiDequotedStr(AnsiQuotedStr("a\"b", '"'), '"')}),
              V({"'it''s'", "''", "\"say \"\"hi\"\"\"", "it's", "plain", "open", "''", "a\"b"}));
    for (const char* good : {"Form1", "_x"})
        EXPECT_TRUE(IsValidIdent(good)) << good;
    for (const std::string& bad :
         {std::string(), std::string("1x"), std::string("a.b"), std::string("a b"), W("ёж")})
        EXPECT_FALSE(IsValidIdent(bad)) << bad;
}

TEST(Text, OneBasedHelpersClamp) {
    EXPECT_EQ(std::vector<int64_t>(
                  {Pos("lo", "hello"), Pos("x", "hello"), Pos("", "hello"), AnsiPos("h", "hello")}),
              std::vector<int64_t>({4, 0, 0, 1}));
    EXPECT_EQ(
        V({Copy("hello", 2, 3), Copy("hello", 0, 2), Copy("hello", -5, 2), Copy("hello", 4, 100),
           Copy("hello", 6, 1), Copy("hello", 2, -1), Copy("hello", INT64_MAX, INT64_MAX),
           Copy("hello", 1, INT64_MAX), StringOfChar('*', 3), StringOfChar('*', -3)}),
        V({"ell", "he", "he", "lo", "", "", "", "hello", "***", ""}));
    // Each edit of the string in turn, and what it leaves.
    std::string s = "hello";
    V steps;
    for (auto edit : std::initializer_list<std::function<void()>>{
             [&] { Delete(s, 2, 2); }, [&] { Delete(s, 0, 5); }, [&] { Delete(s, 3, 100); },
             [&] { Delete(s, 9, 1); }, [&] { Insert("XY", s, 2); }, [&] { Insert("<", s, -3); },
             [&] { Insert(">", s, 100); }}) {
        edit();
        steps.push_back(s);
    }
    EXPECT_EQ(steps, V({"hlo", "hlo", "hl", "hl", "hXYl", "<hXYl", "<hXYl>"}));
}

TEST(Text, StringReplace) {
    EXPECT_EQ(
        V({StringReplace("a-b-c", "-", "+", {}), StringReplace("a-b-c", "-", "+", {rfReplaceAll}),
           StringReplace("Cat cat CAT", "cat", "dog", {rfReplaceAll}),
           StringReplace("Cat cat CAT", "cat", "dog", {rfReplaceAll, rfIgnoreCase}),
           StringReplace(W("Ёж ёж"), W("ёж"), "x", {rfReplaceAll, rfIgnoreCase}),
           StringReplace("aaa", "a", "aa", {rfReplaceAll}),
           StringReplace("abc", "", "x", {rfReplaceAll})}),
        V({"a+b-c", "a+b+c", "Cat dog CAT", "dog dog dog", "x x", "aaaaaa", "abc"}));
}

TEST(Text, LineBreaksAndDelimiters) {
    EXPECT_EQ(V({AdjustLineBreaks("a\nb\rc\r\nd"), AdjustLineBreaks("\n\n")}),
              V({"a\r\nb\r\nc\r\nd", "\r\n\r\n"}));
    EXPECT_EQ(std::pair(LastDelimiter("/.", "/a/b.txt"), LastDelimiter(";", "abc")),
              std::pair(5, 0));
    EXPECT_EQ(std::vector<bool>({IsDelimiter(",;", "a,b", 2), IsDelimiter(",;", "a,b", 1),
                                 IsDelimiter(",;", "a,b", 0), IsDelimiter(",;", "a,b", 4)}),
              std::vector<bool>({true, false, false, false}));
}

TEST(Text, WrapText) {
    // Quoted text is not broken; a word longer than the line stays whole.
    EXPECT_EQ(V({WrapText("the quick brown fox", "\n", " ", 10), WrapText("short", "\n", " ", 10),
                 WrapText("say 'a b c d e' now", "\n", " ", 6),
                 WrapText("abcdefghijkl x", "\n", " ", 5)}),
              V({"the quick\nbrown fox", "short", "say\n'a b c d e'\nnow", "abcdefghijkl\nx"}));
}

// ---------------------------------------------------------------------------------------------
// Paths and files

TEST(Paths, ExtractPartsAndExpand) {
    EXPECT_EQ(
        V({ExtractFilePath("/a/b/c.txt"), ExtractFilePath("c.txt"), ExtractFileDir("/a/b/c.txt"),
           ExtractFileDir("/c.txt"), ExtractFileName("/a/b/c.txt"), ExtractFileName("/a/b/"),
           ExtractFileExt("/a/b/c.tar.gz"), ExtractFileExt("/a.b/c"),
           ChangeFileExt("/a/b.c.txt", ".ini"), ChangeFileExt("/a.d/b", ".ini"),
           ChangeFileExt("x.txt", ""), IncludeTrailingPathDelimiter("/a"),
           IncludeTrailingPathDelimiter("/a/"), ExcludeTrailingPathDelimiter("/a/"),
           ExcludeTrailingPathDelimiter("/a"), ExpandFileName("/a/./b/../c"),
           ExpandFileName("/../x"), ExpandFileName("/a//b/"), ExpandFileName("rel/f.txt")}),
        V({"/a/b/", "", "/a/b", "/", "c.txt", "", ".gz", "", "/a/b.c.ini", "/a.d/b.ini", "x", "/a/",
           "/a/", "/a", "/a", "/a/c", "/x", "/a/b/",
           IncludeTrailingPathDelimiter(GetCurrentDir()) + "rel/f.txt"}));
    EXPECT_EQ(std::pair(IsPathDelimiter("/a/", 3), IsPathDelimiter("/a/", 9)),
              std::pair(true, false));
    EXPECT_EQ(PathDelim, '/');
}

class Files : public TempDirTest {};

TEST_F(Files, CreateRenameDelete) {
    // Each step's answer in turn: a directory is not a file, DeleteFile is not for directories.
    using B = std::vector<bool>;
    std::string deep = dir + "/x/y/z", f = deep + "/f.txt", g = deep + "/g.txt";
    EXPECT_EQ(B({ForceDirectories(deep), DirectoryExists(deep), FileExists(deep), FileExists(f)}),
              B({true, true, false, false}));
    EXPECT_THROW(ForceDirectories(""), EInOutError);
    EXPECT_EQ(FileAge(f), -1);
    WriteFile(f, "data");
    EXPECT_TRUE(FileExists(f));
    EXPECT_NE(FileAge(f), -1);
    TDateTime age;
    ASSERT_TRUE(FileAge(f, age));
    EXPECT_LT(std::fabs(age.Value - Now().Value), 1.0 / 24);
    // The packed date survives the conversion to and from TDateTime.
    EXPECT_EQ(DateTimeToFileDate(FileDateToDateTime(FileAge(f))), FileAge(f));
    int32_t stamp = DateTimeToFileDate(At(2001, 6, 15, 10, 20, 30));
    EXPECT_EQ(FileSetDate(f, stamp), 0);
    EXPECT_EQ(FileAge(f), stamp);
    EXPECT_EQ(B({RenameFile(f, g), FileExists(f), FileExists(g), RenameFile(f, g), DeleteFile(deep),
                 DeleteFile(g), DeleteFile(g)}),
              B({true, false, true, false, false, true, false}));
    std::string cwd = GetCurrentDir();
    EXPECT_TRUE(SetCurrentDir(deep));
    EXPECT_EQ(ExpandFileName("../q"), dir + "/x/y/q");
    EXPECT_EQ(B({SetCurrentDir(dir + "/missing"), SetCurrentDir(cwd), RemoveDir(deep),
                 RemoveDir(dir + "/x/y"), RemoveDir(dir + "/x"), RemoveDir(dir)}),
              B({false, true, true, true, true, true}));
}

TEST(OSError, CarriesTheCodeAndTheSystemsMessage) {
    auto raised = [](const std::function<void()>& f) {
        try {
            f();
        } catch (const EOSError& e) {
            return std::pair(e.ErrorCode, e.Message());
        }
        return std::pair(0, std::string("no EOSError"));
    };
    EXPECT_EQ(raised([] { RaiseLastOSError(ENOENT); }),
              std::pair(ENOENT, "System Error.  Code: 2.\r\n" + SysErrorMessage(ENOENT)));
    errno = EACCES;
    EXPECT_EQ(raised([] { RaiseLastOSError(); }).first, EACCES);
}
