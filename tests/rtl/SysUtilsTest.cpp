// SysUtils: Format and its errors, number and date conversions under the locale globals,
// Windows-1251 case folding and collation, the 1-based string helpers, paths and files.
#include "rtl/SysUtils.h"
#include "rtl/CodePage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

using namespace rtl;

namespace {

// Windows-1251 text from UTF-8 source.
std::string W(const char* utf8) {
    return Utf8ToCp1251(utf8);
}

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
    try {
        f();
    } catch (const EConvertError& e) {
        return e.Message();
    }
    return "<no EConvertError>";
}

std::string TempDir() {
    char tmpl[] = "/tmp/rtl_sysutils_XXXXXX";
    const char* d = mkdtemp(tmpl);
    return d ? d : "";
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Format

TEST(Format, IntegerDirectives) {
    EXPECT_EQ(Format("%d", {42}), "42");
    EXPECT_EQ(Format("%d", {-42}), "-42");
    EXPECT_EQ(Format("%5d|", {42}), "   42|");
    EXPECT_EQ(Format("%-5d|", {42}), "42   |");
    EXPECT_EQ(Format("%.4d", {-5}), "-0005");
    EXPECT_EQ(Format("%d", {int64_t(9000000000LL)}), "9000000000");
    EXPECT_EQ(Format("%u", {-1}), "4294967295");
    EXPECT_EQ(Format("%u", {7u}), "7");
    EXPECT_EQ(Format("%x", {255}), "FF");
    EXPECT_EQ(Format("%.8x", {255}), "000000FF");
    EXPECT_EQ(Format("%x", {-1}), "FFFFFFFF");
    EXPECT_EQ(Format("%x", {int64_t(-1)}), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(Format("%X", {0xABCDEF}), "ABCDEF");
    EXPECT_EQ(Format("%u", {UINT64_MAX}), "18446744073709551615");
    EXPECT_EQ(Format("%d", {UINT64_MAX}), "18446744073709551615");
    EXPECT_EQ(Format("%x", {0xFFFFFFFFu}), "FFFFFFFF");
    EXPECT_EQ(Format("%d", {INT64_MIN}), "-9223372036854775808");
}

TEST(Format, StringsAndCharacters) {
    EXPECT_EQ(Format("%s=%d", {"a", 5}), "a=5");
    EXPECT_EQ(Format("[%-4s]", {"ab"}), "[ab  ]");
    EXPECT_EQ(Format("[%4s]", {std::string("ab")}), "[  ab]");
    EXPECT_EQ(Format("%.2s", {"abcd"}), "ab");
    EXPECT_EQ(Format("%s%s", {'x', std::string_view("yz")}), "xyz");
    EXPECT_EQ(Format("100%%", {}), "100%");
    EXPECT_EQ(Format("no directives", {}), "no directives");
}

TEST(Format, IndexAndStarSpecifiers) {
    EXPECT_EQ(Format("%0:s %1:s %0:s", {"a", "b"}), "a b a");
    // After an index the following directives go on from the next argument.
    EXPECT_EQ(Format("%1:s %s", {"a", "b", "c"}), "b c");
    EXPECT_EQ(Format("%*d|", {5, 42}), "   42|");
    EXPECT_EQ(Format("%-*d|", {4, 7}), "7   |");
    EXPECT_EQ(Format("%.*f", {1, 2.25}), "2.3");
}

TEST(Format, FloatDirectives) {
    EXPECT_EQ(Format("%f", {1.5}), "1.50");
    EXPECT_EQ(Format("%.3f", {2.0}), "2.000");
    EXPECT_EQ(Format("%.0f", {2.5}), "3");
    EXPECT_EQ(Format("%e", {1.5}), "1.50000000000000E+000");
    EXPECT_EQ(Format("%.3e", {12345.678}), "1.23E+004");
    EXPECT_EQ(Format("%e", {-0.00125}), "-1.25000000000000E-003");
    EXPECT_EQ(Format("%g", {1.5}), "1.5");
    EXPECT_EQ(Format("%g", {1e20}), "1E20");
    EXPECT_EQ(Format("%n", {1234567.891}), "1,234,567.89");
    EXPECT_EQ(Format("%.0n", {-1234.0}), "-1,234");
    EXPECT_EQ(Format("%m", {1234.5}), "$1,234.50");
    EXPECT_EQ(Format("%m", {-5.0}), "($5.00)");
    EXPECT_EQ(Format("%8.2f|", {3.14159}), "    3.14|");
    EXPECT_EQ(Format("%-8.2f|", {3.14159}), "3.14    |");
}

TEST(Format, Pointer) {
    int x = 0;
    std::string p = Format("%p", {static_cast<const void*>(&x)});
    EXPECT_EQ(p.size(), sizeof(void*) * 2);
    EXPECT_EQ(std::strtoull(p.c_str(), nullptr, 16), reinterpret_cast<uintptr_t>(&x));
    EXPECT_EQ(Format("%p", {nullptr}), std::string(sizeof(void*) * 2, '0'));
}

TEST(Format, BadDirectivesRaiseConvertError) {
    EXPECT_EQ(ConvertMessage([] { Format("%d", {"x"}); }),
              "Format '%d' invalid or incompatible with argument");
    EXPECT_EQ(ConvertMessage([] { Format("%s", {5}); }),
              "Format '%s' invalid or incompatible with argument");
    EXPECT_EQ(ConvertMessage([] { Format("%f", {5}); }),
              "Format '%f' invalid or incompatible with argument");
    EXPECT_EQ(ConvertMessage([] { Format("%d", {true}); }),
              "Format '%d' invalid or incompatible with argument");
    EXPECT_EQ(ConvertMessage([] { Format("%d", {'7'}); }),
              "Format '%d' invalid or incompatible with argument");
    EXPECT_EQ(ConvertMessage([] { Format("%p", {5}); }),
              "Format '%p' invalid or incompatible with argument");
    EXPECT_EQ(ConvertMessage([] { Format("value %k", {5}); }),
              "Format 'value %k' invalid or incompatible with argument");
    EXPECT_EQ(ConvertMessage([] { Format("ends with %", {5}); }),
              "Format 'ends with %' invalid or incompatible with argument");
    EXPECT_EQ(ConvertMessage([] {
                  Format("%*d", {"x", 5});
              }),
              "Format '%*d' invalid or incompatible with argument");
    EXPECT_EQ(ConvertMessage([] { Format("%d %d", {1}); }), "No argument for format '%d %d'");
    EXPECT_EQ(ConvertMessage([] { Format("%5:d", {1}); }), "No argument for format '%5:d'");
    EXPECT_THROW(Format("%999999999d", {1}), EConvertError);
}

TEST(Format, ExceptionsFormatTheirMessage) {
    EListError e(SListIndexError, {7});
    EXPECT_EQ(e.Message(), "List index out of bounds (7)");
    EXPECT_STREQ(e.what(), "List index out of bounds (7)");
}

// ---------------------------------------------------------------------------------------------
// Integers

TEST(IntConversions, ToText) {
    EXPECT_EQ(IntToStr(0), "0");
    EXPECT_EQ(IntToStr(-123), "-123");
    EXPECT_EQ(IntToStr(INT64_MIN), "-9223372036854775808");
    EXPECT_EQ(IntToHex(255, 4), "00FF");
    EXPECT_EQ(IntToHex(0x1234, 2), "1234");
    EXPECT_EQ(IntToHex(-1, 2), "FFFFFFFF");
    EXPECT_EQ(IntToHex(int64_t(-1), 1), "FFFFFFFFFFFFFFFF");
}

TEST(IntConversions, FromText) {
    EXPECT_EQ(StrToInt("42"), 42);
    EXPECT_EQ(StrToInt("  -42"), -42);
    EXPECT_EQ(StrToInt("+7"), 7);
    EXPECT_EQ(StrToInt("$FF"), 255);
    EXPECT_EQ(StrToInt("0x1a"), 26);
    EXPECT_EQ(StrToInt("$FFFFFFFF"), -1);
    EXPECT_EQ(StrToInt("2147483647"), INT32_MAX);
    EXPECT_EQ(StrToInt("-2147483648"), INT32_MIN);
    EXPECT_EQ(StrToInt64("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(StrToInt64("-9223372036854775808"), INT64_MIN);
    EXPECT_EQ(StrToInt64("$7FFFFFFFFFFFFFFF"), INT64_MAX);
}

TEST(IntConversions, BadTextRaisesOrDefaults) {
    EXPECT_EQ(ConvertMessage([] { StrToInt("abc"); }), "'abc' is not a valid integer value");
    for (const char* bad : {"", " ", "12a", "42 ", "2147483648", "-2147483649", "$", "0x",
                            "$100000000", "1.5", "--1"})
        EXPECT_THROW(StrToInt(bad), EConvertError) << bad;
    EXPECT_THROW(StrToInt64("9223372036854775808"), EConvertError);
    EXPECT_EQ(StrToIntDef("x", 7), 7);
    EXPECT_EQ(StrToIntDef("8", 7), 8);
    EXPECT_EQ(StrToInt64Def("", -1), -1);
    int32_t v = 5;
    EXPECT_FALSE(TryStrToInt("9x", v));
    EXPECT_EQ(v, 5);
    EXPECT_TRUE(TryStrToInt("-9", v));
    EXPECT_EQ(v, -9);
}

// ---------------------------------------------------------------------------------------------
// Floats

TEST(FloatConversions, FloatToStrUsesFifteenDigitsGeneralForm) {
    EXPECT_EQ(FloatToStr(0), "0");
    EXPECT_EQ(FloatToStr(1.5), "1.5");
    EXPECT_EQ(FloatToStr(-2.25), "-2.25");
    EXPECT_EQ(FloatToStr(0.1), "0.1");
    EXPECT_EQ(FloatToStr(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(FloatToStr(2.0 / 3.0), "0.666666666666667");
    EXPECT_EQ(FloatToStr(100), "100");
    EXPECT_EQ(FloatToStr(123456789012345.0), "123456789012345");
    EXPECT_EQ(FloatToStr(1e15), "1E15");
    EXPECT_EQ(FloatToStr(1.23456789012345678e20), "1.23456789012346E20");
    EXPECT_EQ(FloatToStr(0.0001), "0.0001");
    EXPECT_EQ(FloatToStr(0.00001), "1E-5");
    EXPECT_EQ(FloatToStr(-1.5e-10), "-1.5E-10");
    EXPECT_EQ(FloatToStr(NAN), "NAN");
    EXPECT_EQ(FloatToStr(INFINITY), "INF");
    EXPECT_EQ(FloatToStr(-INFINITY), "-INF");
}

TEST(FloatConversions, FloatToStrF) {
    EXPECT_EQ(FloatToStrF(1234.5, ffFixed, 15, 2), "1234.50");
    EXPECT_EQ(FloatToStrF(1234.5, ffNumber, 15, 2), "1,234.50");
    EXPECT_EQ(FloatToStrF(-1234567.5, ffNumber, 15, 0), "-1,234,568");
    EXPECT_EQ(FloatToStrF(1234.5, ffExponent, 4, 2), "1.235E+03");
    EXPECT_EQ(FloatToStrF(0, ffExponent, 3, 0), "0.00E+0");
    EXPECT_EQ(FloatToStrF(1234.5, ffGeneral, 3, 0), "1.23E3");
    EXPECT_EQ(FloatToStrF(1234.5, ffCurrency, 15, 2), "$1,234.50");
    // Precision limits the significant digits before the decimals are filled in.
    EXPECT_EQ(FloatToStrF(1.23456789, ffFixed, 4, 6), "1.235000");
    // More integer digits than the precision: general form.
    EXPECT_EQ(FloatToStrF(123456.0, ffFixed, 3, 2), "1.23E5");
    // A value that rounds to zero shows no sign.
    EXPECT_EQ(FloatToStrF(-0.001, ffFixed, 15, 2), "0.00");
    EXPECT_EQ(FloatToStrF(0.999, ffFixed, 15, 2), "1.00");
    EXPECT_EQ(FloatToStrF(9.996, ffFixed, 15, 2), "10.00");
    // Exact ties round away from zero.
    EXPECT_EQ(FloatToStrF(0.125, ffFixed, 15, 2), "0.13");
    EXPECT_EQ(FloatToStrF(-0.5, ffFixed, 15, 0), "-1");
    EXPECT_EQ(FloatToStrF(0.004, ffFixed, 15, 2), "0.00");
    EXPECT_EQ(FloatToStrF(0.006, ffFixed, 15, 2), "0.01");
}

TEST(FloatConversions, FormatFloatPictures) {
    EXPECT_EQ(FormatFloat("0.00", 3.14159), "3.14");
    EXPECT_EQ(FormatFloat("0.00", 2.5), "2.50");
    EXPECT_EQ(FormatFloat("#,##0.00", 1234567.891), "1,234,567.89");
    EXPECT_EQ(FormatFloat("#,##0", 999), "999");
    EXPECT_EQ(FormatFloat("#,##0", 0), "0");
    EXPECT_EQ(FormatFloat("0.###", 1.5), "1.5");
    EXPECT_EQ(FormatFloat("0.###", 2), "2");
    EXPECT_EQ(FormatFloat("#.##", 0.5), ".5");
    EXPECT_EQ(FormatFloat("000", 7), "007");
    EXPECT_EQ(FormatFloat("0", 1234.6), "1235");
    EXPECT_EQ(FormatFloat("00", 12345), "12345");
    EXPECT_EQ(FormatFloat("000-000", 12345), "012-345");
    EXPECT_EQ(FormatFloat("0.00E+00", 12345), "1.23E+04");
    EXPECT_EQ(FormatFloat("0.00E+00", 0.000125), "1.25E-04");
    EXPECT_EQ(FormatFloat("0.0e-0", 12345), "1.2e4");
    EXPECT_EQ(FormatFloat("\"Total: \"0", 5), "Total: 5");
    EXPECT_EQ(FormatFloat("'#'0", 5), "#5");
    EXPECT_EQ(FormatFloat("0.00", -1.5), "-1.50");
    EXPECT_EQ(FormatFloat("", 2.5), "2.5");
}

TEST(FloatConversions, FormatFloatSections) {
    EXPECT_EQ(FormatFloat("0;(0);zero", 5), "5");
    EXPECT_EQ(FormatFloat("0;(0);zero", -5), "(5)");
    EXPECT_EQ(FormatFloat("0;(0);zero", 0), "zero");
    // A value that rounds to zero takes the zero section.
    EXPECT_EQ(FormatFloat("0.0;(0.0);zero", 0.01), "zero");
    // An empty negative section falls back to the first with a minus sign.
    EXPECT_EQ(FormatFloat("0.0;;zero", -2), "-2.0");
    EXPECT_EQ(FormatFloat("'a;b'0", 3), "a;b3");
}

TEST(FloatConversions, StrToFloat) {
    EXPECT_DOUBLE_EQ(static_cast<double>(StrToFloat("1.5")), 1.5);
    EXPECT_DOUBLE_EQ(static_cast<double>(StrToFloat("  -2.5e3 ")), -2500);
    EXPECT_DOUBLE_EQ(static_cast<double>(StrToFloat("7")), 7);
    EXPECT_DOUBLE_EQ(static_cast<double>(StrToFloat(".5")), 0.5);
    EXPECT_DOUBLE_EQ(static_cast<double>(StrToFloat("1E-2")), 0.01);
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
    EXPECT_EQ(FloatToStr(1.5), "1,5");
    EXPECT_EQ(FloatToStr(1.5e-10), "1,5E-10");
    EXPECT_EQ(Format("%.2f", {1.5}), "1,50");
    EXPECT_EQ(Format("%n", {1234567.5}), "1.234.567,50");
    EXPECT_EQ(FormatFloat("#,##0.00", 1234.5), "1.234,50");
    EXPECT_DOUBLE_EQ(static_cast<double>(StrToFloat("2,25")), 2.25);
    EXPECT_THROW(StrToFloat("2.25"), EConvertError);
    DecimalSeparator = '.';
    EXPECT_DOUBLE_EQ(static_cast<double>(StrToFloat(FloatToStr(0.1))), 0.1);
}

// ---------------------------------------------------------------------------------------------
// Dates and times

TEST(DateTime, EncodeCountsDaysFrom1899_12_30) {
    EXPECT_EQ(EncodeDate(1899, 12, 30).Value, 0);
    EXPECT_EQ(EncodeDate(1900, 1, 1).Value, 2);
    EXPECT_EQ(EncodeDate(2000, 1, 1).Value, 36526);
    EXPECT_EQ(EncodeDate(1, 1, 1).Value, -693593);
    EXPECT_EQ(EncodeDate(2000, 2, 29).Value, 36585);
    EXPECT_DOUBLE_EQ(EncodeTime(12, 0, 0, 0).Value, 0.5);
    EXPECT_DOUBLE_EQ(EncodeTime(6, 0, 0, 0).Value, 0.25);
}

TEST(DateTime, EncodeRejectsInvalidArguments) {
    EXPECT_THROW(EncodeDate(2001, 2, 29), EConvertError);
    EXPECT_THROW(EncodeDate(1900, 2, 29), EConvertError);
    EXPECT_THROW(EncodeDate(2000, 13, 1), EConvertError);
    EXPECT_THROW(EncodeDate(0, 1, 1), EConvertError);
    EXPECT_THROW(EncodeDate(10000, 1, 1), EConvertError);
    EXPECT_THROW(EncodeTime(24, 0, 0, 0), EConvertError);
    EXPECT_THROW(EncodeTime(0, 60, 0, 0), EConvertError);
    EXPECT_THROW(EncodeTime(0, 0, 0, 1000), EConvertError);
    EXPECT_EQ(ConvertMessage([] { EncodeDate(2001, 2, 30); }), "Invalid argument to date encode");
}

TEST(DateTime, DecodeRoundTrips) {
    for (auto [y, m, d] : {std::tuple{1, 1, 1},
                           {1899, 12, 30},
                           {1900, 3, 1},
                           {2000, 2, 29},
                           {2024, 12, 31},
                           {9999, 12, 31}}) {
        uint16_t yy, mm, dd;
        DecodeDate(EncodeDate(y, m, d), yy, mm, dd);
        EXPECT_EQ(yy, y);
        EXPECT_EQ(mm, m);
        EXPECT_EQ(dd, d);
    }
    uint16_t h, n, s, ms;
    DecodeTime(EncodeDate(2020, 5, 6).Value + EncodeTime(23, 59, 58, 999).Value, h, n, s, ms);
    EXPECT_EQ(h, 23);
    EXPECT_EQ(n, 59);
    EXPECT_EQ(s, 58);
    EXPECT_EQ(ms, 999);
    // Before the epoch the date truncates towards zero and the time is the absolute fraction.
    uint16_t y, m, d;
    DecodeDate(-1.25, y, m, d);
    DecodeTime(-1.25, h, n, s, ms);
    EXPECT_EQ(d, 29);
    EXPECT_EQ(h, 6);
    EXPECT_EQ(DayOfWeek(EncodeDate(2000, 1, 1)), 7);
    EXPECT_EQ(DayOfWeek(EncodeDate(2024, 3, 3)), 1);
}

TEST(DateTime, NowIsConsistentWithDateAndTime) {
    double before = Date().Value;
    double now = Now().Value;
    EXPECT_GE(now, before);
    EXPECT_LT(now - before, 1.0 + 1e-6);
    EXPECT_GE(Time().Value, 0.0);
    EXPECT_LT(Time().Value, 1.0);
    uint16_t y, m, d;
    DecodeDate(Now(), y, m, d);
    EXPECT_GE(y, 2020);
}

TEST(DateTime, FormatDateTimePictures) {
    TDateTime dt = EncodeDate(2024, 3, 5).Value + EncodeTime(14, 7, 9, 45).Value;
    EXPECT_EQ(FormatDateTime("yyyy-mm-dd hh:nn:ss.zzz", dt), "2024-03-05 14:07:09.045");
    EXPECT_EQ(FormatDateTime("d/m/yy", dt), "5/3/24");
    EXPECT_EQ(FormatDateTime("ddd dddd mmm mmmm", dt), "Tue Tuesday Mar March");
    EXPECT_EQ(FormatDateTime("h:mm", dt), "14:07"); // m after h is the minute
    EXPECT_EQ(FormatDateTime("h:nn am/pm", dt), "2:07 pm");
    EXPECT_EQ(FormatDateTime("hh:nn AMPM", dt), "02:07 PM");
    EXPECT_EQ(FormatDateTime("h a/p", EncodeTime(0, 30, 0, 0)), "12 a");
    EXPECT_EQ(FormatDateTime("'Day' d \"of\" mmmm", dt), "Day 5 of March");
    EXPECT_EQ(FormatDateTime("c", dt), "3/5/2024 14:07:09");
    EXPECT_EQ(FormatDateTime("c", EncodeDate(2024, 3, 5)), "3/5/2024");
    EXPECT_EQ(FormatDateTime("ddddd", dt), "3/5/2024");
    EXPECT_EQ(FormatDateTime("dddddd", dt), "Tuesday, March 5, 2024");
    EXPECT_EQ(FormatDateTime("t|tt", dt), "14:07|14:07:09");
}

TEST(DateTime, ToTextAndBack) {
    TDateTime dt = EncodeDate(2024, 3, 5).Value + EncodeTime(14, 7, 9, 0).Value;
    EXPECT_EQ(DateTimeToStr(dt), "3/5/2024 14:07:09");
    EXPECT_EQ(DateToStr(dt), "3/5/2024");
    EXPECT_EQ(TimeToStr(dt), "14:07:09");
    EXPECT_DOUBLE_EQ(StrToDateTime(DateTimeToStr(dt)).Value, dt.Value);
    EXPECT_DOUBLE_EQ(StrToDate("3/5/2024").Value, EncodeDate(2024, 3, 5).Value);
    EXPECT_DOUBLE_EQ(StrToTime("14:07").Value, EncodeTime(14, 7, 0, 0).Value);
    EXPECT_DOUBLE_EQ(StrToTime("2:30 PM").Value, EncodeTime(14, 30, 0, 0).Value);
    EXPECT_DOUBLE_EQ(StrToTime("12:05 AM").Value, EncodeTime(0, 5, 0, 0).Value);
    EXPECT_DOUBLE_EQ(StrToTime("1:02:03.5").Value, EncodeTime(1, 2, 3, 5).Value);
    EXPECT_DOUBLE_EQ(StrToDateTime("14:07").Value, EncodeTime(14, 7, 0, 0).Value);
    // Without a year, the current one.
    uint16_t cy, cm, cd;
    DecodeDate(Date(), cy, cm, cd);
    EXPECT_DOUBLE_EQ(StrToDate("3/5").Value, EncodeDate(cy, 3, 5).Value);
    // Two-digit years fall in the window around the current year.
    uint16_t y, m, d;
    DecodeDate(StrToDate("1/2/05"), y, m, d);
    EXPECT_EQ(y, 2005);
}

TEST(DateTime, HonourChangedFormats) {
    LocaleGuard guard;
    ShortDateFormat = "dd.mm.yyyy";
    DateSeparator = '.';
    LongTimeFormat = "hh.nn.ss";
    TimeSeparator = '.';
    TDateTime dt = EncodeDate(2024, 3, 5).Value + EncodeTime(9, 8, 7, 0).Value;
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
    EXPECT_EQ(Trim("\t a b \x01\r\n"), "a b");
    EXPECT_EQ(TrimLeft("  x "), "x ");
    EXPECT_EQ(TrimRight("  x \x1f"), "  x");
    EXPECT_EQ(Trim("   "), "");
    // Bytes above 0x7F are text, not blanks.
    EXPECT_EQ(Trim("\xA0x\xA0"), "\xA0x\xA0");
}

TEST(Text, AsciiCaseLeavesCyrillicAlone) {
    EXPECT_EQ(UpperCase("abcXyz09"), "ABCXYZ09");
    EXPECT_EQ(LowerCase("ABCxYZ"), "abcxyz");
    EXPECT_EQ(UpperCase(W("ёж")), W("ёж"));
    EXPECT_TRUE(SameText("Hello", "hELLO"));
    EXPECT_FALSE(SameText(W("Ёж"), W("ёж")));
    EXPECT_LT(CompareText("abc", "ABD"), 0);
    EXPECT_EQ(CompareText("abc", "ABC"), 0);
    EXPECT_GT(CompareText("abcd", "ABC"), 0);
    EXPECT_LT(CompareStr("ABC", "abc"), 0);
    EXPECT_GT(CompareStr("b", "a"), 0);
    EXPECT_LT(CompareStr("ab", "abc"), 0);
}

TEST(Text, AnsiCaseFoldsCyrillicPairs) {
    EXPECT_EQ(AnsiUpperCase(W("абвгдеёжзийклмнопрстуфхцчшщъыьэюя")),
              W("АБВГДЕЁЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ"));
    EXPECT_EQ(AnsiUpperCase(W("ўєїіґђѓљњќћџјѕ")), W("ЎЄЇІҐЂЃЉЊЌЋЏЈЅ"));
    EXPECT_EQ(AnsiLowerCase(W("ЎЄЇІҐЂЃЉЊЌЋЏЈЅЁ")), W("ўєїіґђѓљњќћџјѕё"));
    EXPECT_EQ(AnsiUpperCase(W("mixed Ёлка №5")), W("MIXED ЁЛКА №5"));
    // Symbols of the code page have no case.
    EXPECT_EQ(AnsiUpperCase(W("«»µ§")), W("«»µ§"));
    // Every byte maps to a byte whose lower-case form leads back, for the letters.
    for (int c = 0; c < 256; ++c) {
        char ch = static_cast<char>(c);
        char up = AnsiUpperChar(ch);
        if (up != ch) {
            EXPECT_EQ(AnsiLowerChar(up), ch) << c;
        }
    }
}

TEST(Text, AnsiCollationOrdersCyrillicAfterLatin) {
    EXPECT_EQ(AnsiCompareText(W("ёлка"), W("ЁЛКА")), 0);
    EXPECT_TRUE(AnsiSameText(W("Їжак"), W("їЖАК")));
    EXPECT_LT(AnsiCompareText("zebra", W("арбуз")), 0);
    EXPECT_LT(AnsiCompareText(W("ель"), W("ёж")), 0); // Е < Ё
    EXPECT_LT(AnsiCompareText(W("ёж"), W("жук")), 0); // Ё < Ж
    EXPECT_LT(AnsiCompareText(W("ГАЗ"), W("ґанок")), 0);
    EXPECT_LT(AnsiCompareText(W("ґанок"), W("дом")), 0);
    EXPECT_LT(AnsiCompareText(W("из"), W("ізюм")), 0);
    EXPECT_LT(AnsiCompareText(W("ізюм"), W("їжак")), 0);
    EXPECT_LT(AnsiCompareText(W("їжак"), W("йод")), 0);
    EXPECT_LT(AnsiCompareText(W("уж"), W("ўсё")), 0);
    EXPECT_LT(AnsiCompareText(W("ўсё"), W("фон")), 0);
    EXPECT_LT(AnsiCompareText("123", "abc"), 0);
    EXPECT_LT(AnsiCompareText("abc", "abcd"), 0);
    EXPECT_LT(AnsiCompareText("a", "B"), 0);
    EXPECT_GT(AnsiCompareText("b", "A"), 0);
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
    const std::vector<std::string> words = {
        "",        "a",       "A",      "ab",    "aB",       "abc",   "b",
        W("ёлка"), W("ЁЛКА"), W("ель"), W("ёж"), W("ґанок"), "zebra", std::string("a\0b", 3),
        "a\x01",   "\x7F",    "_x",     "x_",    "123",      W("№5"), W("«a»")};
    for (const auto& a : words)
        for (const auto& b : words)
            EXPECT_EQ(keyOrder(a, b), collation(a, b)) << a << " | " << b;
    // A key appends to what is there.
    std::string key = "ab";
    AppendAnsiSortKey("c", key);
    EXPECT_EQ(key.size(), 3u);
    EXPECT_EQ(key.substr(0, 2), "ab");
}

TEST(Text, AnsiCompareStrBreaksTiesByCase) {
    EXPECT_LT(AnsiCompareStr("a", "A"), 0);
    EXPECT_LT(AnsiCompareStr("A", "b"), 0);
    EXPECT_LT(AnsiCompareStr(W("ё"), W("Ё")), 0);
    EXPECT_LT(AnsiCompareStr(W("Ё"), W("ж")), 0);
    EXPECT_EQ(AnsiCompareStr("abc", "abc"), 0);
    EXPECT_FALSE(AnsiSameStr("abc", "ABC"));
    EXPECT_TRUE(AnsiSameStr("abc", "abc"));
}

TEST(Text, Quoting) {
    EXPECT_EQ(QuotedStr("it's"), "'it''s'");
    EXPECT_EQ(QuotedStr(""), "''");
    EXPECT_EQ(AnsiQuotedStr("say \"hi\"", '"'), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(AnsiDequotedStr("'it''s' rest", '\''), "it's");
    EXPECT_EQ(AnsiDequotedStr("plain", '\''), "plain");
    EXPECT_EQ(AnsiDequotedStr("'open", '\''), "open");
    EXPECT_EQ(AnsiDequotedStr("''", '\''), "''");
    EXPECT_EQ(AnsiDequotedStr(AnsiQuotedStr("a\"b", '"'), '"'), "a\"b");
}

TEST(Text, IsValidIdent) {
    EXPECT_TRUE(IsValidIdent("Form1"));
    EXPECT_TRUE(IsValidIdent("_x"));
    EXPECT_FALSE(IsValidIdent(""));
    EXPECT_FALSE(IsValidIdent("1x"));
    EXPECT_FALSE(IsValidIdent("a.b"));
    EXPECT_FALSE(IsValidIdent("a b"));
    EXPECT_FALSE(IsValidIdent(W("ёж")));
}

TEST(Text, OneBasedHelpersClamp) {
    EXPECT_EQ(Pos("lo", "hello"), 4);
    EXPECT_EQ(Pos("x", "hello"), 0);
    EXPECT_EQ(Pos("", "hello"), 0);
    EXPECT_EQ(AnsiPos("h", "hello"), 1);
    EXPECT_EQ(Copy("hello", 2, 3), "ell");
    EXPECT_EQ(Copy("hello", 0, 2), "he");
    EXPECT_EQ(Copy("hello", -5, 2), "he");
    EXPECT_EQ(Copy("hello", 4, 100), "lo");
    EXPECT_EQ(Copy("hello", 6, 1), "");
    EXPECT_EQ(Copy("hello", 2, -1), "");
    EXPECT_EQ(Copy("hello", INT64_MAX, INT64_MAX), "");
    EXPECT_EQ(Copy("hello", 1, INT64_MAX), "hello");
    std::string s = "hello";
    Delete(s, 2, 2);
    EXPECT_EQ(s, "hlo");
    Delete(s, 0, 5);
    EXPECT_EQ(s, "hlo");
    Delete(s, 3, 100);
    EXPECT_EQ(s, "hl");
    Delete(s, 9, 1);
    EXPECT_EQ(s, "hl");
    Insert("XY", s, 2);
    EXPECT_EQ(s, "hXYl");
    Insert("<", s, -3);
    EXPECT_EQ(s, "<hXYl");
    Insert(">", s, 100);
    EXPECT_EQ(s, "<hXYl>");
    EXPECT_EQ(StringOfChar('*', 3), "***");
    EXPECT_EQ(StringOfChar('*', -3), "");
}

TEST(Text, StringReplace) {
    EXPECT_EQ(StringReplace("a-b-c", "-", "+", {}), "a+b-c");
    EXPECT_EQ(StringReplace("a-b-c", "-", "+", {rfReplaceAll}), "a+b+c");
    EXPECT_EQ(StringReplace("Cat cat CAT", "cat", "dog", {rfReplaceAll}), "Cat dog CAT");
    EXPECT_EQ(StringReplace("Cat cat CAT", "cat", "dog", {rfReplaceAll, rfIgnoreCase}),
              "dog dog dog");
    EXPECT_EQ(StringReplace(W("Ёж ёж"), W("ёж"), "x", {rfReplaceAll, rfIgnoreCase}), "x x");
    EXPECT_EQ(StringReplace("aaa", "a", "aa", {rfReplaceAll}), "aaaaaa");
    EXPECT_EQ(StringReplace("abc", "", "x", {rfReplaceAll}), "abc");
}

TEST(Text, LineBreaksAndDelimiters) {
    EXPECT_EQ(AdjustLineBreaks("a\nb\rc\r\nd"), "a\r\nb\r\nc\r\nd");
    EXPECT_EQ(AdjustLineBreaks("\n\n"), "\r\n\r\n");
    EXPECT_EQ(LastDelimiter("/.", "/a/b.txt"), 5);
    EXPECT_EQ(LastDelimiter(";", "abc"), 0);
    EXPECT_TRUE(IsDelimiter(",;", "a,b", 2));
    EXPECT_FALSE(IsDelimiter(",;", "a,b", 1));
    EXPECT_FALSE(IsDelimiter(",;", "a,b", 0));
    EXPECT_FALSE(IsDelimiter(",;", "a,b", 4));
}

TEST(Text, WrapText) {
    EXPECT_EQ(WrapText("the quick brown fox", "\n", " ", 10), "the quick\nbrown fox");
    EXPECT_EQ(WrapText("short", "\n", " ", 10), "short");
    // Quoted text is not broken.
    EXPECT_EQ(WrapText("say 'a b c d e' now", "\n", " ", 6), "say\n'a b c d e'\nnow");
    // A word longer than the line stays whole.
    EXPECT_EQ(WrapText("abcdefghijkl x", "\n", " ", 5), "abcdefghijkl\nx");
}

// ---------------------------------------------------------------------------------------------
// Paths and files

TEST(Paths, ExtractParts) {
    EXPECT_EQ(ExtractFilePath("/a/b/c.txt"), "/a/b/");
    EXPECT_EQ(ExtractFilePath("c.txt"), "");
    EXPECT_EQ(ExtractFileDir("/a/b/c.txt"), "/a/b");
    EXPECT_EQ(ExtractFileDir("/c.txt"), "/");
    EXPECT_EQ(ExtractFileName("/a/b/c.txt"), "c.txt");
    EXPECT_EQ(ExtractFileName("/a/b/"), "");
    EXPECT_EQ(ExtractFileExt("/a/b/c.tar.gz"), ".gz");
    EXPECT_EQ(ExtractFileExt("/a.b/c"), "");
    EXPECT_EQ(ChangeFileExt("/a/b.c.txt", ".ini"), "/a/b.c.ini");
    EXPECT_EQ(ChangeFileExt("/a.d/b", ".ini"), "/a.d/b.ini");
    EXPECT_EQ(ChangeFileExt("x.txt", ""), "x");
    EXPECT_EQ(IncludeTrailingPathDelimiter("/a"), "/a/");
    EXPECT_EQ(IncludeTrailingPathDelimiter("/a/"), "/a/");
    EXPECT_EQ(ExcludeTrailingPathDelimiter("/a/"), "/a");
    EXPECT_EQ(ExcludeTrailingPathDelimiter("/a"), "/a");
    EXPECT_TRUE(IsPathDelimiter("/a/", 3));
    EXPECT_FALSE(IsPathDelimiter("/a/", 9));
    EXPECT_EQ(PathDelim, '/');
}

TEST(Paths, ExpandFileName) {
    EXPECT_EQ(ExpandFileName("/a/./b/../c"), "/a/c");
    EXPECT_EQ(ExpandFileName("/../x"), "/x");
    EXPECT_EQ(ExpandFileName("/a//b/"), "/a/b/");
    EXPECT_EQ(ExpandFileName("rel/f.txt"),
              IncludeTrailingPathDelimiter(GetCurrentDir()) + "rel/f.txt");
}

TEST(Files, CreateRenameDelete) {
    std::string dir = TempDir();
    ASSERT_FALSE(dir.empty());
    std::string deep = dir + "/x/y/z";
    EXPECT_TRUE(ForceDirectories(deep));
    EXPECT_TRUE(DirectoryExists(deep));
    EXPECT_FALSE(FileExists(deep)); // a directory is not a file
    EXPECT_THROW(ForceDirectories(""), EInOutError);

    std::string f = deep + "/f.txt";
    EXPECT_FALSE(FileExists(f));
    EXPECT_EQ(FileAge(f), -1);
    std::ofstream(f) << "data";
    EXPECT_TRUE(FileExists(f));
    EXPECT_NE(FileAge(f), -1);
    TDateTime age;
    ASSERT_TRUE(FileAge(f, age));
    EXPECT_LT(std::fabs(age.Value - Now().Value), 1.0 / 24);
    // The packed date survives the conversion to and from TDateTime.
    EXPECT_EQ(DateTimeToFileDate(FileDateToDateTime(FileAge(f))), FileAge(f));
    int32_t stamp =
        DateTimeToFileDate(EncodeDate(2001, 6, 15).Value + EncodeTime(10, 20, 30, 0).Value);
    EXPECT_EQ(FileSetDate(f, stamp), 0);
    EXPECT_EQ(FileAge(f), stamp);

    std::string g = deep + "/g.txt";
    EXPECT_TRUE(RenameFile(f, g));
    EXPECT_FALSE(FileExists(f));
    EXPECT_TRUE(FileExists(g));
    EXPECT_FALSE(RenameFile(f, g));
    EXPECT_FALSE(DeleteFile(deep)); // not for directories
    EXPECT_TRUE(DeleteFile(g));
    EXPECT_FALSE(DeleteFile(g));

    std::string cwd = GetCurrentDir();
    EXPECT_TRUE(SetCurrentDir(deep));
    EXPECT_EQ(ExpandFileName("../q"), dir + "/x/y/q");
    EXPECT_FALSE(SetCurrentDir(dir + "/missing"));
    EXPECT_TRUE(SetCurrentDir(cwd));

    EXPECT_TRUE(RemoveDir(deep));
    EXPECT_TRUE(RemoveDir(dir + "/x/y"));
    EXPECT_TRUE(RemoveDir(dir + "/x"));
    EXPECT_TRUE(RemoveDir(dir));
}

TEST(Files, OSErrors) {
    EXPECT_FALSE(SysErrorMessage(ENOENT).empty());
    try {
        RaiseLastOSError(ENOENT);
        FAIL();
    } catch (const EOSError& e) {
        EXPECT_EQ(e.ErrorCode, ENOENT);
        EXPECT_EQ(e.Message(), "System Error.  Code: 2.\r\n" + SysErrorMessage(ENOENT));
    }
    errno = EACCES;
    try {
        RaiseLastOSError();
        FAIL();
    } catch (const EOSError& e) {
        EXPECT_EQ(e.ErrorCode, EACCES);
    }
}
