// Ini files: sections of "key=value" lines.
//
//     [Section]
//     ; a comment
//     Key=Value
//
// Section and key names compare case-insensitively (AnsiCompareText); blanks around names and
// values are dropped; lines starting with ';' are comments. Lines that aren't understood, and
// comments, are kept as they stand when the file is rewritten. Files are written with CR LF.
//
// Every write to disk replaces the file atomically: the new contents go to a temporary file in
// the same directory, which is flushed to disk and then renamed over the old one, so a crash
// leaves either the old file or the new one, never a mix. A failed write raises
// EIniFileException "Unable to write to <file>" and leaves the old file as it was.
#pragma once

#include "rtl/SysUtils.h"
#include "rtl/TypInfo.h"

#include <memory>
#include <string>

namespace rtl {

class TStrings;

RTL_EXCEPTION(EIniFileException, Exception)

namespace detail {
struct IniData;
}

// Replaces the file with the contents atomically, as the ini files write theirs (a temporary file
// in the same directory, flushed, renamed over the old one; permissions kept; a symbolic link is
// written through). On failure raises EIniFileException SIniFileWriteError and leaves the old
// file as it was. For descendants of TCustomIniFile that write their own text.
void ReplaceFileAtomically(const std::string& fileName, const std::string& contents);

// The typed reads and writes, built on ReadString and WriteString.
class TCustomIniFile : public TObject {
    RTL_CLASS(TCustomIniFile, TObject)
public:
    explicit TCustomIniFile(std::string fileName) : fileName_(std::move(fileName)) {}

    const std::string& FileName() const { return fileName_; }

    virtual std::string ReadString(const std::string& section, const std::string& ident,
                                   const std::string& def) = 0;
    // Raises EIniFileException for a section or key that can't be written as a line (empty key,
    // line breaks, '=' in a key, ']' in a section) and for a value with a line break.
    virtual void WriteString(const std::string& section, const std::string& ident,
                             const std::string& value) = 0;

    // Decimal or hexadecimal ("0x" or "$"); the default when the value is missing or bad.
    virtual int32_t ReadInteger(const std::string& section, const std::string& ident, int32_t def);
    virtual void WriteInteger(const std::string& section, const std::string& ident, int32_t value);
    // "0" is false, any other integer true; the default when missing or not an integer.
    virtual bool ReadBool(const std::string& section, const std::string& ident, bool def);
    // Writes "1" or "0".
    virtual void WriteBool(const std::string& section, const std::string& ident, bool value);
    // With the current DecimalSeparator, as FloatToStr writes; the default when missing or bad.
    virtual double ReadFloat(const std::string& section, const std::string& ident, double def);
    virtual void WriteFloat(const std::string& section, const std::string& ident, double value);
    // In the current ShortDateFormat / LongTimeFormat; the default when missing or bad.
    virtual TDateTime ReadDate(const std::string& section, const std::string& ident, TDateTime def);
    virtual TDateTime ReadDateTime(const std::string& section, const std::string& ident,
                                   TDateTime def);
    virtual TDateTime ReadTime(const std::string& section, const std::string& ident, TDateTime def);
    virtual void WriteDate(const std::string& section, const std::string& ident, TDateTime value);
    virtual void WriteDateTime(const std::string& section, const std::string& ident,
                               TDateTime value);
    virtual void WriteTime(const std::string& section, const std::string& ident, TDateTime value);

    // The keys of a section.
    virtual void ReadSection(const std::string& section, TStrings* strings) = 0;
    // The names of the sections, in file order.
    virtual void ReadSections(TStrings* strings) = 0;
    // The "key=value" lines of a section.
    virtual void ReadSectionValues(const std::string& section, TStrings* strings) = 0;
    virtual void EraseSection(const std::string& section) = 0;
    virtual void DeleteKey(const std::string& section, const std::string& ident) = 0;
    // Writes buffered changes to the file.
    virtual void UpdateFile() = 0;

    // Whether the section has any key.
    bool SectionExists(const std::string& section);
    virtual bool ValueExists(const std::string& section, const std::string& ident);

protected:
    std::string fileName_;
};

// An ini file on disk: every read reads the file, every write rewrites it at once (atomically).
// A missing file reads as empty and is created by the first write.
class TIniFile : public TCustomIniFile {
    RTL_CLASS(TIniFile, TCustomIniFile)
public:
    explicit TIniFile(std::string fileName) : TCustomIniFile(std::move(fileName)) {}

    std::string ReadString(const std::string& section, const std::string& ident,
                           const std::string& def) override;
    void WriteString(const std::string& section, const std::string& ident,
                     const std::string& value) override;
    void ReadSection(const std::string& section, TStrings* strings) override;
    void ReadSections(TStrings* strings) override;
    void ReadSectionValues(const std::string& section, TStrings* strings) override;
    void EraseSection(const std::string& section) override;
    void DeleteKey(const std::string& section, const std::string& ident) override;
    // Nothing is buffered.
    void UpdateFile() override {}
};

// An ini file held in memory: loaded when created (a missing file is empty), written only by
// UpdateFile.
class TMemIniFile : public TCustomIniFile {
    RTL_CLASS(TMemIniFile, TCustomIniFile)
public:
    explicit TMemIniFile(std::string fileName);
    ~TMemIniFile() override;

    std::string ReadString(const std::string& section, const std::string& ident,
                           const std::string& def) override;
    void WriteString(const std::string& section, const std::string& ident,
                     const std::string& value) override;
    void ReadSection(const std::string& section, TStrings* strings) override;
    void ReadSections(TStrings* strings) override;
    void ReadSectionValues(const std::string& section, TStrings* strings) override;
    void EraseSection(const std::string& section) override;
    void DeleteKey(const std::string& section, const std::string& ident) override;
    void UpdateFile() override;

    void Clear();
    // The whole file as lines, and replacing it from lines.
    void GetStrings(TStrings* list);
    void SetStrings(TStrings* list);
    // Takes another file name, and its contents when reload is true.
    void Rename(const std::string& fileName, bool reload);

private:
    std::unique_ptr<detail::IniData> data_;
};

} // namespace rtl
