#include "rtl/IniFiles.h"

#include "rtl/Lists.h"
#include "rtl/SafeFile.h"
#include "rtl/Streams.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace rtl {

RTL_IMPLEMENT_CLASS(EIniFileException)
RTL_IMPLEMENT_CLASS(TCustomIniFile)
RTL_IMPLEMENT_CLASS(TIniFile)
RTL_IMPLEMENT_CLASS(TMemIniFile)

// ---------------------------------------------------------------------------------------------
// The contents of an ini file: the lines before the first section, then the sections with their
// lines as they stand in the file.

namespace detail {

struct IniSection {
    std::string Name;
    std::vector<std::string> Lines;
};

struct IniData {
    std::vector<std::string> Preamble;
    std::vector<IniSection> Sections;

    void Clear() {
        Preamble.clear();
        Sections.clear();
    }

    void Parse(const std::string& text) {
        Clear();
        ForEachTextLine(text, [this](const std::string& line) { AddLine(line); });
    }

    void AddLine(const std::string& line) {
        std::string t = Trim(line);
        if (t.size() >= 2 && t.front() == '[' && t.back() == ']') {
            Sections.push_back({Trim(std::string_view(t).substr(1, t.size() - 2)), {}});
            return;
        }
        (Sections.empty() ? Preamble : Sections.back().Lines).push_back(line);
    }

    std::string Text() const {
        std::string r;
        for (auto& l : Preamble)
            r += l + "\r\n";
        for (auto& s : Sections) {
            r += "[" + s.Name + "]\r\n";
            for (auto& l : s.Lines)
                r += l + "\r\n";
        }
        return r;
    }

    // A key line: name and value, trimmed. Comments and lines without '=' are not.
    static bool SplitKey(const std::string& line, std::string& name, std::string& value) {
        std::string t = TrimLeft(line);
        if (t.empty() || t[0] == ';') return false;
        size_t p = t.find('=');
        if (p == std::string::npos) return false;
        name = TrimRight(std::string_view(t).substr(0, p));
        value = Trim(std::string_view(t).substr(p + 1));
        return true;
    }

    IniSection* Find(const std::string& section) {
        for (auto& s : Sections)
            if (AnsiSameText(s.Name, section)) return &s;
        return nullptr;
    }

    // The index of the key's line in the section, or -1.
    static int FindKey(const IniSection& s, const std::string& ident) {
        std::string name, value;
        for (size_t i = 0; i < s.Lines.size(); ++i)
            if (SplitKey(s.Lines[i], name, value) && AnsiSameText(name, ident))
                return static_cast<int>(i);
        return -1;
    }

    bool Read(const std::string& section, const std::string& ident, std::string& value) {
        IniSection* s = Find(section);
        if (!s) return false;
        int i = FindKey(*s, ident);
        if (i < 0) return false;
        std::string name;
        SplitKey(s->Lines[static_cast<size_t>(i)], name, value);
        return true;
    }

    // Returns whether anything changed.
    bool Write(const std::string& section, const std::string& ident, const std::string& value) {
        std::string line = ident + "=" + value;
        IniSection* s = Find(section);
        if (!s) {
            // Keep a blank line between sections.
            std::vector<std::string>& last = Sections.empty() ? Preamble : Sections.back().Lines;
            if (!last.empty() && !Trim(last.back()).empty()) last.push_back("");
            Sections.push_back({section, {line}});
            return true;
        }
        int i = FindKey(*s, ident);
        if (i >= 0) {
            std::string name, old;
            SplitKey(s->Lines[static_cast<size_t>(i)], name, old);
            if (old == value) return false;
            s->Lines[static_cast<size_t>(i)] = line;
            return true;
        }
        // After the last non-blank line of the section.
        size_t at = s->Lines.size();
        while (at > 0 && Trim(s->Lines[at - 1]).empty())
            --at;
        s->Lines.insert(s->Lines.begin() + static_cast<std::ptrdiff_t>(at), line);
        return true;
    }

    bool Erase(const std::string& section) {
        size_t before = Sections.size();
        std::erase_if(Sections, [&](const IniSection& s) { return AnsiSameText(s.Name, section); });
        return Sections.size() != before;
    }

    bool DeleteKey(const std::string& section, const std::string& ident) {
        IniSection* s = Find(section);
        if (!s) return false;
        int i = FindKey(*s, ident);
        if (i < 0) return false;
        s->Lines.erase(s->Lines.begin() + i);
        return true;
    }

    void Keys(const std::string& section, TStrings* strings, bool withValues) {
        strings->BeginUpdate();
        try {
            strings->Clear();
            // Every section of that name contributes, as a file may repeat one.
            for (auto& s : Sections) {
                if (!AnsiSameText(s.Name, section)) continue;
                std::string name, value;
                for (auto& l : s.Lines)
                    if (SplitKey(l, name, value))
                        strings->Add(withValues ? name + "=" + value : name);
            }
        } catch (...) {
            strings->EndUpdate();
            throw;
        }
        strings->EndUpdate();
    }

    void SectionNames(TStrings* strings) {
        strings->BeginUpdate();
        try {
            strings->Clear();
            for (size_t i = 0; i < Sections.size(); ++i) {
                bool seen = false;
                for (size_t j = 0; j < i && !seen; ++j)
                    seen = AnsiSameText(Sections[j].Name, Sections[i].Name);
                if (!seen) strings->Add(Sections[i].Name);
            }
        } catch (...) {
            strings->EndUpdate();
            throw;
        }
        strings->EndUpdate();
    }
};

} // namespace detail

namespace {

using detail::IniData;

void CheckWritable(const std::string& section, const std::string& ident, const std::string& value) {
    auto hasBreak = [](const std::string& s) {
        return s.find_first_of("\r\n") != std::string::npos;
    };
    if (hasBreak(section) || section.find(']') != std::string::npos || Trim(section) != section)
        throw EIniFileException(Format("Invalid ini section name '%s'", {section}));
    std::string t = Trim(ident);
    if (t.empty() || t != ident || hasBreak(ident) || ident.find('=') != std::string::npos ||
        ident[0] == ';' || ident[0] == '[')
        throw EIniFileException(Format("Invalid ini key name '%s'", {ident}));
    if (hasBreak(value)) throw EIniFileException(Format("Invalid ini value for key '%s'", {ident}));
}

// Reads the file; a missing file is empty. A file that exists but can't be read raises.
void LoadFile(const std::string& fileName, IniData& data) {
    data.Clear();
    int fd = ::open(fileName.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT || fileName.empty()) return;
        RaiseFileOpenError(false, fileName, errno);
    }
    std::string text;
    char buf[65536];
    for (;;) {
        ssize_t n = ::read(fd, buf, sizeof buf);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            int err = errno;
            ::close(fd);
            RaiseFileOpenError(false, fileName, err);
        }
        if (n == 0) break;
        text.append(buf, static_cast<size_t>(n));
    }
    ::close(fd);
    data.Parse(text);
}

} // namespace

// Written through a TSafeFileStream: a temporary file beside the target, renamed over it once
// it is complete.
void ReplaceFileAtomically(const std::string& fileName, const std::string& text) {
    try {
        WriteFileAtomically(fileName, text);
    } catch (const Exception&) {
        throw EIniFileException(SIniFileWriteError, {fileName});
    }
}

namespace {
void SaveFile(const std::string& fileName, const std::string& text) {
    ReplaceFileAtomically(fileName, text);
}
} // namespace

// ---------------------------------------------------------------------------------------------
// TCustomIniFile

int32_t TCustomIniFile::ReadInteger(const std::string& section, const std::string& ident,
                                    int32_t def) {
    return StrToIntDef(ReadString(section, ident, ""), def);
}

void TCustomIniFile::WriteInteger(const std::string& section, const std::string& ident,
                                  int32_t value) {
    WriteString(section, ident, IntToStr(value));
}

bool TCustomIniFile::ReadBool(const std::string& section, const std::string& ident, bool def) {
    return ReadInteger(section, ident, def ? 1 : 0) != 0;
}

void TCustomIniFile::WriteBool(const std::string& section, const std::string& ident, bool value) {
    WriteString(section, ident, value ? "1" : "0");
}

double TCustomIniFile::ReadFloat(const std::string& section, const std::string& ident, double def) {
    double v;
    return TryStrToFloat(ReadString(section, ident, ""), v) ? v : def;
}

void TCustomIniFile::WriteFloat(const std::string& section, const std::string& ident,
                                double value) {
    WriteString(section, ident, FloatToStr(value));
}

TDateTime TCustomIniFile::ReadDate(const std::string& section, const std::string& ident,
                                   TDateTime def) {
    TDateTime v;
    return TryStrToDate(ReadString(section, ident, ""), v) ? v : def;
}

TDateTime TCustomIniFile::ReadDateTime(const std::string& section, const std::string& ident,
                                       TDateTime def) {
    TDateTime v;
    return TryStrToDateTime(ReadString(section, ident, ""), v) ? v : def;
}

TDateTime TCustomIniFile::ReadTime(const std::string& section, const std::string& ident,
                                   TDateTime def) {
    TDateTime v;
    return TryStrToTime(ReadString(section, ident, ""), v) ? v : def;
}

void TCustomIniFile::WriteDate(const std::string& section, const std::string& ident,
                               TDateTime value) {
    WriteString(section, ident, DateToStr(value));
}

void TCustomIniFile::WriteDateTime(const std::string& section, const std::string& ident,
                                   TDateTime value) {
    WriteString(section, ident, DateTimeToStr(value));
}

void TCustomIniFile::WriteTime(const std::string& section, const std::string& ident,
                               TDateTime value) {
    WriteString(section, ident, TimeToStr(value));
}

bool TCustomIniFile::SectionExists(const std::string& section) {
    TStringList keys;
    ReadSection(section, &keys);
    return keys.Count() > 0;
}

bool TCustomIniFile::ValueExists(const std::string& section, const std::string& ident) {
    TStringList keys;
    ReadSection(section, &keys);
    return keys.IndexOf(ident) >= 0;
}

// ---------------------------------------------------------------------------------------------
// TIniFile

std::string TIniFile::ReadString(const std::string& section, const std::string& ident,
                                 const std::string& def) {
    IniData data;
    LoadFile(fileName_, data);
    std::string value;
    return data.Read(section, ident, value) ? value : def;
}

void TIniFile::WriteString(const std::string& section, const std::string& ident,
                           const std::string& value) {
    CheckWritable(section, ident, value);
    IniData data;
    LoadFile(fileName_, data);
    if (data.Write(section, ident, value) || !FileExists(fileName_))
        SaveFile(fileName_, data.Text());
}

void TIniFile::ReadSection(const std::string& section, TStrings* strings) {
    IniData data;
    LoadFile(fileName_, data);
    data.Keys(section, strings, false);
}

void TIniFile::ReadSections(TStrings* strings) {
    IniData data;
    LoadFile(fileName_, data);
    data.SectionNames(strings);
}

void TIniFile::ReadSectionValues(const std::string& section, TStrings* strings) {
    IniData data;
    LoadFile(fileName_, data);
    data.Keys(section, strings, true);
}

void TIniFile::EraseSection(const std::string& section) {
    IniData data;
    LoadFile(fileName_, data);
    if (data.Erase(section)) SaveFile(fileName_, data.Text());
}

void TIniFile::DeleteKey(const std::string& section, const std::string& ident) {
    IniData data;
    LoadFile(fileName_, data);
    if (data.DeleteKey(section, ident)) SaveFile(fileName_, data.Text());
}

// ---------------------------------------------------------------------------------------------
// TMemIniFile

TMemIniFile::TMemIniFile(std::string fileName)
    : TCustomIniFile(std::move(fileName)), data_(std::make_unique<IniData>()) {
    LoadFile(fileName_, *data_);
}

TMemIniFile::~TMemIniFile() = default;

std::string TMemIniFile::ReadString(const std::string& section, const std::string& ident,
                                    const std::string& def) {
    std::string value;
    return data_->Read(section, ident, value) ? value : def;
}

void TMemIniFile::WriteString(const std::string& section, const std::string& ident,
                              const std::string& value) {
    CheckWritable(section, ident, value);
    data_->Write(section, ident, value);
}

void TMemIniFile::ReadSection(const std::string& section, TStrings* strings) {
    data_->Keys(section, strings, false);
}

void TMemIniFile::ReadSections(TStrings* strings) {
    data_->SectionNames(strings);
}

void TMemIniFile::ReadSectionValues(const std::string& section, TStrings* strings) {
    data_->Keys(section, strings, true);
}

void TMemIniFile::EraseSection(const std::string& section) {
    data_->Erase(section);
}

void TMemIniFile::DeleteKey(const std::string& section, const std::string& ident) {
    data_->DeleteKey(section, ident);
}

void TMemIniFile::UpdateFile() {
    SaveFile(fileName_, data_->Text());
}

void TMemIniFile::Clear() {
    data_->Clear();
}

void TMemIniFile::GetStrings(TStrings* list) {
    list->SetText(data_->Text());
}

void TMemIniFile::SetStrings(TStrings* list) {
    data_->Parse(list->GetText());
}

void TMemIniFile::Rename(const std::string& fileName, bool reload) {
    if (reload) {
        IniData fresh;
        LoadFile(fileName, fresh);
        *data_ = std::move(fresh);
    }
    fileName_ = fileName;
}

} // namespace rtl
