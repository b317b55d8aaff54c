// The platform's SysUtils: exceptions, formatting, conversions, text and file routines.
// Text is single-byte Windows-1251.
//
// Locale settings are the settable globals below; their defaults are an English locale with
// 24-hour times:
//   DecimalSeparator '.', ThousandSeparator ',', DateSeparator '/', TimeSeparator ':',
//   ShortDateFormat "M/d/yyyy", LongDateFormat "dddd, MMMM d, yyyy",
//   ShortTimeFormat "hh:nn", LongTimeFormat "hh:nn:ss", TimeAMString "AM", TimePMString "PM",
//   CurrencyString "$", CurrencyFormat 0 ("$1"), NegCurrFormat 0 ("($1)"), CurrencyDecimals 2.
// The globals are process-wide and not synchronised, as on the platform: set them at start-up.
#pragma once

#include "rtl/System.h"
#include "rtl/TypInfo.h"

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace rtl {

// ---------------------------------------------------------------------------------------------
// Arguments of Format: a value that remembers its kind, built implicitly from the C++ types a
// caller passes, so that Format("%s=%d", {"a", 5}) works. It owns a copy of string arguments.

enum TVarRecKind : uint8_t { vtInteger, vtExtended, vtString, vtChar, vtPointer, vtBoolean };

class TVarRec {
public:
    TVarRec(bool v) : kind_(vtBoolean), int_(v ? 1 : 0) {}
    TVarRec(char v) : kind_(vtChar), int_(static_cast<unsigned char>(v)) {}
    template <class T>
        requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char>)
    TVarRec(T v) : kind_(vtInteger), int_(static_cast<int64_t>(v)) {
        // A 64-bit unsigned value above the signed range is kept as its bit pattern; %u shows
        // it unsigned.
        if constexpr (std::is_unsigned_v<T> && sizeof(T) >= sizeof(int64_t)) unsigned64_ = true;
        if constexpr (sizeof(T) <= sizeof(int32_t)) narrow_ = true;
    }
    template <class T>
        requires std::is_enum_v<T>
    TVarRec(T v) : TVarRec(static_cast<std::underlying_type_t<T>>(v)) {}
    TVarRec(double v) : kind_(vtExtended), float_(v) {}
    TVarRec(long double v) : kind_(vtExtended), float_(v) {}
    TVarRec(float v) : kind_(vtExtended), float_(v) {}
    TVarRec(TDateTime v) : kind_(vtExtended), float_(v.Value) {}
    TVarRec(const char* v) : kind_(vtString), str_(v ? v : "") {}
    TVarRec(std::string v) : kind_(vtString), str_(std::move(v)) {}
    TVarRec(std::string_view v) : kind_(vtString), str_(v) {}
    TVarRec(const void* v) : kind_(vtPointer), ptr_(v) {}
    TVarRec(std::nullptr_t) : kind_(vtPointer) {}

    TVarRecKind Kind() const { return kind_; }
    int64_t AsInteger() const { return int_; }
    long double AsExtended() const { return float_; }
    const std::string& AsString() const { return str_; }
    const void* AsPointer() const { return ptr_; }
    bool IsUnsigned64() const { return unsigned64_; }
    // Whether the integer came from a type of at most 32 bits (it then shows as 32 bits in
    // %x and %u when negative, as the platform's Integer does).
    bool IsNarrow() const { return narrow_; }

private:
    TVarRecKind kind_;
    bool unsigned64_ = false;
    bool narrow_ = false;
    int64_t int_ = 0;
    long double float_ = 0;
    std::string str_;
    const void* ptr_ = nullptr;
};

using TVarRecs = std::initializer_list<TVarRec>;

// ---------------------------------------------------------------------------------------------
// Exceptions

// The base of every exception the runtime and the system raise. It is an object of the object
// model, so that its class name can be logged and its class passed as a reference.
class Exception : public TObject, public std::exception {
    RTL_CLASS(Exception, TObject)
public:
    explicit Exception(std::string message = {}) : message_(std::move(message)) {}
    // The platform's CreateFmt: the message is Format(fmt, args).
    Exception(std::string_view fmt, TVarRecs args);
    const std::string& Message() const { return message_; }
    void SetMessage(std::string message) { message_ = std::move(message); }
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

// Declares an exception class that adds nothing but its name.
#define RTL_EXCEPTION(Name, Parent)                                                                \
    class Name : public Parent {                                                                   \
        RTL_CLASS(Name, Parent)                                                                    \
    public:                                                                                        \
        using Parent::Parent;                                                                      \
    };

RTL_EXCEPTION(EAbort, Exception)
RTL_EXCEPTION(EConvertError, Exception)
RTL_EXCEPTION(EInvalidCast, Exception)
RTL_EXCEPTION(EInvalidPointer, Exception)
RTL_EXCEPTION(EOutOfMemory, Exception)
RTL_EXCEPTION(EIntError, Exception)
RTL_EXCEPTION(ERangeError, EIntError)
RTL_EXCEPTION(EVariantError, Exception)
RTL_EXCEPTION(EPropertyError, Exception)
RTL_EXCEPTION(EPropertyConvertError, Exception)
RTL_EXCEPTION(EListError, Exception)
RTL_EXCEPTION(EStringListError, Exception)
RTL_EXCEPTION(EStreamError, Exception)
RTL_EXCEPTION(EFCreateError, EStreamError)
RTL_EXCEPTION(EFOpenError, EStreamError)
RTL_EXCEPTION(EFilerError, EStreamError)
RTL_EXCEPTION(EReadError, EFilerError)
RTL_EXCEPTION(EWriteError, EFilerError)
RTL_EXCEPTION(EClassNotFound, EFilerError)
RTL_EXCEPTION(EMethodNotFound, EFilerError)
RTL_EXCEPTION(EInvalidImage, EFilerError)
RTL_EXCEPTION(EResNotFound, Exception)
RTL_EXCEPTION(EParserError, Exception)
RTL_EXCEPTION(EComponentError, Exception)
RTL_EXCEPTION(EInvalidOperation, Exception)

// An operating-system error with its code (errno on this platform).
class EOSError : public Exception {
    RTL_CLASS(EOSError, Exception)
public:
    using Exception::Exception;
    EOSError(std::string message, int errorCode)
        : Exception(std::move(message)), ErrorCode(errorCode) {}
    int ErrorCode = 0;
};

class EInOutError : public Exception {
    RTL_CLASS(EInOutError, Exception)
public:
    using Exception::Exception;
    EInOutError(std::string message, int errorCode)
        : Exception(std::move(message)), ErrorCode(errorCode) {}
    int ErrorCode = 0;
};

// The platform's message texts, for the exceptions above. Those with directives are Format
// strings.
inline constexpr const char* SOperationAborted = "Operation aborted";
inline constexpr const char* SInvalidFormat = "Format '%s' invalid or incompatible with argument";
inline constexpr const char* SArgumentMissing = "No argument for format '%s'";
inline constexpr const char* SInvalidInteger = "'%s' is not a valid integer value";
inline constexpr const char* SInvalidFloat = "'%s' is not a valid floating point value";
inline constexpr const char* SInvalidDate = "'%s' is not a valid date";
inline constexpr const char* SInvalidTime = "'%s' is not a valid time";
inline constexpr const char* SInvalidDateTime = "'%s' is not a valid date and time";
inline constexpr const char* SDateEncodeError = "Invalid argument to date encode";
inline constexpr const char* STimeEncodeError = "Invalid argument to time encode";
inline constexpr const char* SInvalidCast = "Invalid class typecast";
inline constexpr const char* SInvalidPointer = "Invalid pointer operation";
inline constexpr const char* SOutOfMemory = "Out of memory";
inline constexpr const char* SIntOverflow = "Integer overflow";
inline constexpr const char* SDivByZero = "Division by zero";
inline constexpr const char* SRangeError = "Range check error";
inline constexpr const char* SInvalidVarCast = "Invalid variant type conversion";
inline constexpr const char* SUnknownProperty = "Property %s does not exist";
inline constexpr const char* SInvalidPropertyValue = "Invalid property value";
inline constexpr const char* SAssignError = "Cannot assign a %s to a %s";
inline constexpr const char* SListIndexError = "List index out of bounds (%d)";
inline constexpr const char* SListCapacityError = "List capacity out of bounds (%d)";
inline constexpr const char* SListCountError = "List count out of bounds (%d)";
inline constexpr const char* SSortedListError = "Operation not allowed on sorted string list";
inline constexpr const char* SDuplicateString = "String list does not allow duplicates";
inline constexpr const char* SReadError = "Stream read error";
inline constexpr const char* SWriteError = "Stream write error";
inline constexpr const char* SMemoryStreamError = "Out of memory while expanding memory stream";
inline constexpr const char* SFCreateError = "Cannot create file %s";
inline constexpr const char* SFOpenError = "Cannot open file %s";
inline constexpr const char* SFCreateErrorEx = "Cannot create file \"%s\". %s";
inline constexpr const char* SFOpenErrorEx = "Cannot open file \"%s\". %s";
inline constexpr const char* SInvalidImage = "Invalid stream format";
inline constexpr const char* SClassNotFound = "Class %s not found";
inline constexpr const char* SMethodNotFound = "Method %s not found";
inline constexpr const char* SResNotFound = "Resource %s not found";
inline constexpr const char* SParseError = "%s on line %d";
inline constexpr const char* SDuplicateName = "A component named %s already exists";
inline constexpr const char* SInvalidOperation = "Invalid operation";
inline constexpr const char* SOSError = "System Error.  Code: %d.\r\n%s";
inline constexpr const char* SUnkOSError = "A call to an OS function failed";
inline constexpr const char* SInOutError = "I/O error %d";
inline constexpr const char* SCannotCreateDir = "Unable to create directory";
inline constexpr const char* SIniFileWriteError = "Unable to write to %s";

// Raises EAbort, the silent exception.
[[noreturn]] void Abort();

// ---------------------------------------------------------------------------------------------
// Locale settings

inline char DecimalSeparator = '.';
inline char ThousandSeparator = ',';
inline char DateSeparator = '/';
inline char TimeSeparator = ':';
inline std::string ShortDateFormat = "M/d/yyyy";
inline std::string LongDateFormat = "dddd, MMMM d, yyyy";
inline std::string ShortTimeFormat = "hh:nn";
inline std::string LongTimeFormat = "hh:nn:ss";
inline std::string TimeAMString = "AM";
inline std::string TimePMString = "PM";
inline std::string CurrencyString = "$";
// 0 "$1", 1 "1$", 2 "$ 1", 3 "1 $".
inline uint8_t CurrencyFormat = 0;
// 0 "($1)", 1 "-$1", 2 "$-1", 3 "$1-", 4 "(1$)", 5 "-1$", 6 "1-$", 7 "1$-", 8 "-1 $",
// 9 "-$ 1", 10 "1 $-", 11 "$ 1-", 12 "$ -1", 13 "1- $", 14 "($ 1)", 15 "(1 $)".
inline uint8_t NegCurrFormat = 0;
inline uint8_t CurrencyDecimals = 2;
inline std::string ShortMonthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
inline std::string LongMonthNames[12] = {"January",   "February", "March",    "April",
                                         "May",       "June",     "July",     "August",
                                         "September", "October",  "November", "December"};
inline std::string ShortDayNames[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
inline std::string LongDayNames[7] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                      "Thursday", "Friday", "Saturday"};
// A two-digit year is taken within this many years before now and the rest of the century
// after it, as the platform's TwoDigitYearCenturyWindow (0 takes the current century).
inline int TwoDigitYearCenturyWindow = 50;

// ---------------------------------------------------------------------------------------------
// Format

// The platform's Format. A directive is
//     "%" [index ":"] ["-"] [width] ["." precision] type
// where index and width may be "*" (taken from the next argument, an integer), and type is one
// of (case-insensitive):
//   d  a signed integer; the precision is the minimum number of digits
//   u  an unsigned integer (a negative 32-bit value shows as its 32-bit pattern)
//   x  hexadecimal in upper case; the precision is the minimum number of digits
//   e  scientific "-d.ddd...E+ddd", precision significant digits (default 15)
//   f  fixed, precision decimals (default 2)
//   g  the shortest of fixed and scientific, precision significant digits (default 15)
//   n  as f with thousand separators
//   m  money, with the currency settings; the precision overrides CurrencyDecimals
//   p  a pointer as hexadecimal digits (16 here, the width of a pointer)
//   s  a string or a character; the precision is the maximum number of characters
// "%%" is a percent sign. A bad directive or an argument of the wrong kind raises EConvertError
// SInvalidFormat; a missing argument raises EConvertError SArgumentMissing.
std::string Format(std::string_view fmt, TVarRecs args);
std::string Format(std::string_view fmt, std::span<const TVarRec> args);

// ---------------------------------------------------------------------------------------------
// Integers

std::string IntToStr(int64_t value);
// Hexadecimal, upper case, at least `digits` digits. A negative 32-bit value shows its 32-bit
// two's complement, a negative 64-bit value its 64-bit one.
std::string IntToHex(int32_t value, int digits);
std::string IntToHex(int64_t value, int digits);
// Decimal, or hexadecimal after "$" or "0x"; leading blanks and a sign are allowed. A bad text
// raises EConvertError SInvalidInteger. StrToInt takes hexadecimal up to FFFFFFFF as a 32-bit
// pattern.
int32_t StrToInt(std::string_view s);
int32_t StrToIntDef(std::string_view s, int32_t def);
bool TryStrToInt(std::string_view s, int32_t& value);
int64_t StrToInt64(std::string_view s);
int64_t StrToInt64Def(std::string_view s, int64_t def);
bool TryStrToInt64(std::string_view s, int64_t& value);

// ---------------------------------------------------------------------------------------------
// Floats

enum TFloatFormat : uint8_t { ffGeneral, ffExponent, ffFixed, ffNumber, ffCurrency };

// ffGeneral with 15 significant digits: "1.5", "0.0001", "1E-5", "1.23456789012346E20".
std::string FloatToStr(long double value);
// The platform's FloatToStrF. Precision is the number of significant digits (at most 18);
// Digits is the exponent's minimum digits (ffExponent, 0..4) or the number of decimals (ffFixed,
// ffNumber, ffCurrency). A fixed value with more integer digits than Precision shows in
// ffGeneral. NaN and infinities show as "NAN", "INF", "-INF".
std::string FloatToStrF(long double value, TFloatFormat format, int precision, int digits);
// The platform's format pictures: "0" a digit or zero, "#" a digit or nothing, "." the decimal
// separator, "," thousand separators, "E+" "E-" "e+" "e-" scientific notation, quoted text and
// other characters as they stand, and up to three sections "positive;negative;zero". An empty
// format gives FloatToStr.
std::string FormatFloat(std::string_view format, long double value);
// Reads a float with DecimalSeparator, an optional exponent, and blanks around it. A bad text
// raises EConvertError SInvalidFloat.
long double StrToFloat(std::string_view s);
long double StrToFloatDef(std::string_view s, long double def);
bool TryStrToFloat(std::string_view s, long double& value);
bool TryStrToFloat(std::string_view s, double& value);

// ---------------------------------------------------------------------------------------------
// Dates and times: TDateTime counts days since 1899-12-30; the fraction is the time of day.

constexpr double MSecsPerDay = 86400000.0;
constexpr double DateDelta = 693594; // days from 0001-01-01 to 1899-12-31

bool IsLeapYear(int year);
// Raises EConvertError SDateEncodeError / STimeEncodeError on an invalid argument.
TDateTime EncodeDate(int year, int month, int day);
TDateTime EncodeTime(int hour, int min, int sec, int msec);
bool TryEncodeDate(int year, int month, int day, TDateTime& date);
bool TryEncodeTime(int hour, int min, int sec, int msec, TDateTime& time);
void DecodeDate(TDateTime date, uint16_t& year, uint16_t& month, uint16_t& day);
void DecodeTime(TDateTime time, uint16_t& hour, uint16_t& min, uint16_t& sec, uint16_t& msec);
// 1 = Sunday .. 7 = Saturday.
int DayOfWeek(TDateTime date);
TDateTime Now();
TDateTime Date();
TDateTime Time();

// The platform's date and time pictures (case-insensitive):
//   c        ShortDateFormat and LongTimeFormat (the time only when not midnight)
//   d dd     day; ddd dddd short and long day name; ddddd ShortDateFormat; dddddd LongDateFormat
//   m mm     month; mmm mmmm short and long month name (minutes after h or hh)
//   yy yyyy  year
//   h hh     hour (12-hour with an AM/PM specifier); n nn minute; s ss second; z zzz msec
//   t tt     ShortTimeFormat, LongTimeFormat
//   am/pm a/p ampm   the 12-hour marks (ampm uses TimeAMString and TimePMString)
//   /  :     DateSeparator, TimeSeparator
//   'x' "x"  literal text
std::string FormatDateTime(std::string_view format, TDateTime dateTime);
std::string DateTimeToStr(TDateTime dateTime);
std::string DateToStr(TDateTime date);
std::string TimeToStr(TDateTime time);
// Read dates in ShortDateFormat's order of day, month and year, with DateSeparator (the year may
// be left out, or given in two digits); times as h:n[:s[.z]] with TimeSeparator and an optional
// AM/PM mark. Bad text raises EConvertError.
TDateTime StrToDate(std::string_view s);
TDateTime StrToTime(std::string_view s);
TDateTime StrToDateTime(std::string_view s);
bool TryStrToDate(std::string_view s, TDateTime& value);
bool TryStrToTime(std::string_view s, TDateTime& value);
bool TryStrToDateTime(std::string_view s, TDateTime& value);

// ---------------------------------------------------------------------------------------------
// Text

// Remove bytes <= ' ' at the ends.
std::string Trim(std::string_view s);
std::string TrimLeft(std::string_view s);
std::string TrimRight(std::string_view s);
// ASCII letters only.
std::string UpperCase(std::string_view s);
std::string LowerCase(std::string_view s);
// Windows-1251: Latin and Cyrillic letters, with the code page's pairs (Ё/ё, Ў/ў, Є/є, Ї/ї,
// І/і, Ґ/ґ, Ђ/ђ, Ѓ/ѓ, Љ/љ, Њ/њ, Ќ/ќ, Ћ/ћ, Џ/џ, Ј/ј, Ѕ/ѕ).
std::string AnsiUpperCase(std::string_view s);
std::string AnsiLowerCase(std::string_view s);
char AnsiUpperChar(char c);
char AnsiLowerChar(char c);

// Byte-wise comparisons: the difference of the first differing bytes (ASCII case folded for
// CompareText), else of the lengths.
int CompareStr(std::string_view a, std::string_view b);
int CompareText(std::string_view a, std::string_view b);
bool SameText(std::string_view a, std::string_view b);

// Windows-1251 collation. Every byte has a sort key:
//   - bytes that are not letters keep their code (controls, blanks, punctuation, digits, and
//     the code page's symbols), so they sort before every letter;
//   - the Latin letters follow, A..Z;
//   - then the Cyrillic letters in alphabetical order, the letters of the other Cyrillic
//     alphabets in their usual places: А Б В Г Ґ Д Ђ Ѓ Е Ё Є Ж З Ѕ И І Ї Й Ј К Л Љ М Н Њ О П Р
//     С Т Ћ Ќ У Ў Ф Х Ц Ч Џ Ш Щ Ъ Ы Ь Э Ю Я.
// A letter's key is the same in both cases. AnsiCompareText compares the keys, a shorter string
// sorting before its extensions. AnsiCompareStr does the same, and strings with equal keys are
// then ordered by the case of the first letter whose case differs, lower case first ("a" <
// "A" < "b"), as the platform's locale compare does. Results are < 0, 0 or > 0.
int AnsiCompareText(std::string_view a, std::string_view b);
int AnsiCompareStr(std::string_view a, std::string_view b);
// Appends the sort key of s for AnsiCompareText: one byte for each byte of s, its rank among
// the sort keys. Two keys compared byte by byte as unsigned, a key that is the start of the
// other first, order their strings as AnsiCompareText does; equal keys mean equal texts.
void AppendAnsiSortKey(std::string_view s, std::string& key);
bool AnsiSameText(std::string_view a, std::string_view b);
bool AnsiSameStr(std::string_view a, std::string_view b);

// 'text' with inner quotes doubled.
std::string QuotedStr(std::string_view s);
std::string AnsiQuotedStr(std::string_view s, char quote);
// Reads a quoted string from the start of `s` (doubled quotes stand for one; an unclosed string
// runs to the end). As on the platform, text that doesn't start with the quote, or whose quoted
// part is empty, is returned unchanged.
std::string AnsiDequotedStr(std::string_view s, char quote);
// A letter or '_' followed by letters, digits and '_'.
bool IsValidIdent(std::string_view s);

// 1-based positions with the platform's semantics: out-of-range indexes clamp, never throw.
// Pos answers 0 when the substring (or an empty one) isn't found.
int Pos(std::string_view substr, std::string_view s);
int AnsiPos(std::string_view substr, std::string_view s);
std::string Copy(std::string_view s, int64_t index, int64_t count);
void Delete(std::string& s, int64_t index, int64_t count);
void Insert(std::string_view source, std::string& s, int64_t index);
std::string StringOfChar(char c, int64_t count);

enum TReplaceFlag : uint8_t { rfReplaceAll, rfIgnoreCase };
using TReplaceFlags = TSet<TReplaceFlag>;
// Replaces the first occurrence (or all with rfReplaceAll); rfIgnoreCase matches with
// AnsiUpperCase.
std::string StringReplace(std::string_view s, std::string_view oldPattern,
                          std::string_view newPattern, TReplaceFlags flags);
// Makes every line break (CR, LF or CR LF) CR LF.
std::string AdjustLineBreaks(std::string_view s);
// 1-based index of the last byte of s that is in delimiters; 0 when none is.
int LastDelimiter(std::string_view delimiters, std::string_view s);
// Whether s[index] (1-based) is one of delimiters; false out of range.
bool IsDelimiter(std::string_view delimiters, std::string_view s, int64_t index);
inline constexpr const char* sLineBreak = "\r\n";
// Breaks a line into lines of at most maxCol bytes at the break characters (blank, '-', tab by
// default), outside quotes; a word longer than maxCol stays whole.
std::string WrapText(std::string_view line, std::string_view breakStr = "\r\n",
                     std::string_view breakChars = " -\t", int maxCol = 45);

// ---------------------------------------------------------------------------------------------
// Files and paths (the Linux path delimiter)

inline constexpr char PathDelim = '/';
inline constexpr char DriveDelim = '\0';
inline constexpr char PathSep = ':';

std::string ExtractFilePath(std::string_view fileName);
std::string ExtractFileDir(std::string_view fileName);
std::string ExtractFileName(std::string_view fileName);
std::string ExtractFileExt(std::string_view fileName);
std::string ChangeFileExt(std::string_view fileName, std::string_view extension);
std::string IncludeTrailingPathDelimiter(std::string_view s);
std::string ExcludeTrailingPathDelimiter(std::string_view s);
bool IsPathDelimiter(std::string_view s, int64_t index);
// An absolute path with "." and ".." resolved by name, relative to the current directory.
std::string ExpandFileName(std::string_view fileName);

// FileExists answers false for directories.
bool FileExists(const std::string& fileName);
bool DirectoryExists(const std::string& dir);
// Creates the directory and its missing parents; an empty name raises EInOutError
// SCannotCreateDir.
bool ForceDirectories(const std::string& dir);
bool CreateDir(const std::string& dir);
bool RemoveDir(const std::string& dir);
bool DeleteFile(const std::string& fileName);
bool RenameFile(const std::string& oldName, const std::string& newName);
std::string GetCurrentDir();
bool SetCurrentDir(const std::string& dir);
// The directory of Zelvane's settings for this user: "zelvane" in $XDG_CONFIG_HOME, else in
// ~/.config; empty when neither is known. Without a trailing delimiter.
std::string UserConfigDir();

// File dates in the platform's packed DOS form (local time, two-second resolution):
// bits 25..31 year-1980, 21..24 month, 16..20 day, 11..15 hour, 5..10 minute, 0..4 second/2.
// FileAge answers -1 for a missing file.
int32_t FileAge(const std::string& fileName);
bool FileAge(const std::string& fileName, TDateTime& fileDateTime);
// The date of an open file descriptor, or -1.
int32_t FileGetDate(int handle);
// Sets the modification time; returns 0 or the errno value.
int FileSetDate(const std::string& fileName, int32_t age);
TDateTime FileDateToDateTime(int32_t fileDate);
int32_t DateTimeToFileDate(TDateTime dateTime);

std::string SysErrorMessage(int errorCode);
int GetLastError();
// Raises EOSError SOSError with the code and its text (errno when no code is given).
[[noreturn]] void RaiseLastOSError();
[[noreturn]] void RaiseLastOSError(int errorCode);

} // namespace rtl
