// The text form of object streams: the parser of the text form (TParser) and the conversions
// between the binary, resource and text forms, as the platform's ObjectBinaryToText,
// ObjectTextToBinary, ObjectResourceToText and ObjectTextToResource.
//
// Each conversion reads exactly one object from its input and leaves the input right behind
// it, so that several objects stored back to back convert one call after another.
#pragma once

#include "rtl/Streams.h"
#include "rtl/System.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace rtl {

// Token kinds of TParser; any other token is the character itself ('=', '(', '[' ...).
inline constexpr char toEOF = 0;
inline constexpr char toSymbol = 1;
inline constexpr char toString = 2;
inline constexpr char toInteger = 3;
inline constexpr char toFloat = 4;
inline constexpr char toWString = 5;

// A tokenizer of the text form over a stream. It reads the stream in blocks of 4096 bytes;
// destroying it puts the stream back at the start of the token it stands on. Every syntax
// error raises EParserError with the line number.
class TParser : public TObject {
    RTL_CLASS(TParser, TObject)
public:
    explicit TParser(TStream* stream);
    ~TParser() override;

    void CheckToken(char t);
    void CheckTokenSymbol(std::string_view s);
    [[noreturn]] void Error(const std::string& message);
    // Reads pairs of hexadecimal digits, blanks and line ends allowed between them, from right
    // behind the current token into stream, then moves to the next token.
    void HexToBinary(TStream* stream);
    char NextToken();
    // Skips blanks and line ends and stops before whatever follows, without reading it as a
    // token: the position where the next object would start.
    void SkipToNextToken();
    // The stream offset where the current token starts.
    int64_t SourcePos() const { return FTokenStart; }
    // The current symbol with any ".Name" parts that follow it.
    std::string TokenComponentIdent();
    long double TokenFloat();
    int64_t TokenInt();
    // The token's text: for a string its value, for a float the number with its suffix.
    std::string TokenString();
    std::u16string TokenWideString();
    bool TokenSymbolIs(std::string_view s) const;

    // The token's text as read, without conversion: a symbol's name, a number's digits, a
    // string's bytes when it isn't wide.
    const std::string& TokenText() const { return Text(); }
    // The same text as a view, valid until the parser moves on.
    std::string_view TokenView() const {
        return FSymbol ? std::string_view(FSymbol, FSymbolLength) : std::string_view(FTokenStr);
    }
    // Swaps the token's text (as TokenText) with s, which the parser then uses for the next
    // token: a caller keeps the text without a copy.
    void SwapTokenText(std::string& s) {
        Text();
        FTokenStr.swap(s);
    }
    char Token() const { return FToken; }
    // 's', 'c' or 'd' after a float: single, currency or date; otherwise 0.
    char FloatType() const { return FFloatType; }
    int SourceLine() const { return FSourceLine; }

private:
    int Peek() {
        if (FBufPos < FBufEnd) return static_cast<unsigned char>(FBuf[FBufPos]);
        return Refill() ? static_cast<unsigned char>(FBuf[FBufPos]) : -1;
    }
    // The scanners of the tokens are inline, defined where NextToken is, so that they can be
    // built into it.
    bool Refill();
    int64_t Offset() const { return FBufOrigin + FBufPos; }
    inline void SkipBlanks();
    // Appends the bytes from the current one on whose class (of the parser's character classes)
    // is among classes.
    inline void AppendRun(uint8_t classes);
    inline void ReadNumber(bool negative);
    inline void ReadHexNumber(bool negative);
    inline void ReadStringToken();
    inline void ReadSymbol();
    void MakeWide();
    // The token's text. A symbol or a single character that lies in the block is kept there
    // (FSymbol) until its text is asked for.
    const std::string& Text() const {
        if (FSymbol) TakeSymbol();
        return FTokenStr;
    }
    void TakeSymbol() const;

    TStream* FStream;
    std::vector<char> FBuf;
    int FBufPos = 0;
    int FBufEnd = 0;
    int64_t FBufOrigin = 0;
    int64_t FTokenStart = 0;
    int FSourceLine = 1;
    char FToken = toEOF;
    char FFloatType = 0;
    bool FWide = false;
    mutable std::string FTokenStr;
    mutable const char* FSymbol = nullptr;
    size_t FSymbolLength = 0;
    std::u16string FTokenWide;
};

enum TStreamOriginalFormat : uint8_t { sofUnknown, sofBinary, sofText };

// The form of the stream at its position, which is kept: binary for a first byte 255 (a
// resource header) or the signature "TPF0", text for a first byte "o", "O", "i", "I", blank,
// 13, 11 or 9, unknown otherwise.
TStreamOriginalFormat TestStreamFormat(TStream* stream);

void ObjectBinaryToText(TStream* input, TStream* output);
void ObjectTextToBinary(TStream* input, TStream* output);
void ObjectResourceToText(TStream* input, TStream* output);
void ObjectTextToResource(TStream* input, TStream* output);

// The text of a float as the text form writes it: at most 18 significant digits, "." as the
// separator, always with a "." or an exponent so that it reads back as a float.
std::string FormatStreamFloat(long double value);

// Whether a name read from a binary stream (a class, component or property name, an
// identifier, a set element) has a text form: letters and underscores, digits after the first
// character, and with dotted also dots between such parts. A stream holding any other name has
// no text form that reads back as the same stream.
bool IsStreamName(std::string_view s, bool dotted, bool mayBeEmpty);

} // namespace rtl
