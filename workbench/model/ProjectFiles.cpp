#include "workbench/model/ProjectFiles.h"

#include "workbench/model/Files.h"

#include <cctype>
#include <map>

#include "rtl/TypInfo.h"

namespace workbench {

RTL_IMPLEMENT_CLASS(EProjectFileError)

namespace {

bool IsIdentStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}
bool IsIdentChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// Tokens of Pascal source as far as project files need them.
struct TToken {
    enum Kind { End, Ident, String, Comment, Directive, Symbol } Kind = End;
    std::string Text;
};

class TPascalScanner {
public:
    explicit TPascalScanner(std::string_view text) : s_(text) {}

    TToken Next() {
        SkipBlanks();
        TToken t;
        if (p_ >= s_.size()) return t;
        char c = s_[p_];
        if (c == '{' || (c == '(' && Peek(1) == '*')) {
            bool brace = c == '{';
            size_t start = p_ + (brace ? 1 : 2);
            size_t end = brace ? s_.find('}', start) : s_.find("*)", start);
            if (end == std::string_view::npos) end = s_.size();
            t.Text = std::string(s_.substr(start, end - start));
            t.Kind = !t.Text.empty() && t.Text[0] == '$' ? TToken::Directive : TToken::Comment;
            p_ = std::min(s_.size(), end + (brace ? 1 : 2));
            return t;
        }
        if (c == '/' && Peek(1) == '/') {
            size_t end = s_.find_first_of("\r\n", p_);
            p_ = end == std::string_view::npos ? s_.size() : end;
            return Next();
        }
        if (c == '\'') {
            t.Kind = TToken::String;
            ++p_;
            while (p_ < s_.size()) {
                if (s_[p_] == '\'') {
                    if (Peek(1) == '\'') {
                        t.Text += '\'';
                        p_ += 2;
                        continue;
                    }
                    ++p_;
                    break;
                }
                if (s_[p_] == '\r' || s_[p_] == '\n') break; // an unterminated string ends here
                t.Text += s_[p_++];
            }
            return t;
        }
        if (IsIdentStart(c)) {
            t.Kind = TToken::Ident;
            while (p_ < s_.size() && (IsIdentChar(s_[p_]) || s_[p_] == '.'))
                t.Text += s_[p_++];
            return t;
        }
        t.Kind = TToken::Symbol;
        t.Text = std::string(1, c);
        ++p_;
        return t;
    }

private:
    char Peek(size_t ahead) const { return p_ + ahead < s_.size() ? s_[p_ + ahead] : '\0'; }
    void SkipBlanks() {
        while (p_ < s_.size() && static_cast<unsigned char>(s_[p_]) <= ' ')
            ++p_;
    }
    std::string_view s_;
    size_t p_ = 0;
};

// "Form1" and "TDataModule" from the comment "Form1: TDataModule".
void ParseFormComment(const std::string& comment, TProjectEntry& e) {
    std::string text = comment;
    size_t colon = text.find(':');
    auto trim = [](std::string s) {
        size_t a = s.find_first_not_of(" \t\r\n");
        size_t b = s.find_last_not_of(" \t\r\n");
        return a == std::string::npos ? std::string() : s.substr(a, b - a + 1);
    };
    e.FormName = trim(text.substr(0, colon));
    if (colon != std::string::npos) e.DesignClass = trim(text.substr(colon + 1));
}

// Reads a clause "Name [in 'file' [{Form: Class}]], ... ;" after its keyword.
void ParseClause(TPascalScanner& scanner, const std::string& dir, bool isRequires,
                 std::vector<TProjectEntry>& entries) {
    TProjectEntry entry;
    bool haveEntry = false;
    bool inFile = false;
    auto flush = [&] {
        if (haveEntry && (isRequires || !entry.FileName.empty())) entries.push_back(entry);
        entry = TProjectEntry();
        haveEntry = inFile = false;
    };
    for (TToken t = scanner.Next(); t.Kind != TToken::End; t = scanner.Next()) {
        if (t.Kind == TToken::Symbol && (t.Text == "," || t.Text == ";")) {
            flush();
            if (t.Text == ";") return;
            continue;
        }
        if (t.Kind == TToken::Ident && !haveEntry) {
            entry.UnitName = t.Text;
            haveEntry = true;
            if (isRequires) {
                entry.PackageImport = true;
                entry.FileName = t.Text + ".dcp";
            }
        } else if (t.Kind == TToken::Ident && SameText(t.Text, "in")) {
            inFile = true;
        } else if (t.Kind == TToken::String && inFile) {
            entry.FileName = ResolvePath(dir, t.Text);
            inFile = false;
        } else if (t.Kind == TToken::Comment && haveEntry && !entry.FileName.empty() &&
                   entry.FormName.empty()) {
            ParseFormComment(t.Text, entry);
        }
    }
    flush();
}

std::string ProjectResFile(const std::string& fileName) {
    std::string res = FindCompanionFile(fileName, ".res");
    return res;
}

} // namespace

TProjectDescription ParseDelphiProject(const std::string& fileName, std::string_view text) {
    TProjectDescription d;
    d.FileName = fileName;
    d.SourceFile = fileName;
    std::string dir = ExtractFilePath(fileName);
    TPascalScanner scanner(text);
    bool headerSeen = false;
    for (TToken t = scanner.Next(); t.Kind != TToken::End; t = scanner.Next()) {
        if (t.Kind == TToken::Directive) {
            std::string d2 = LowerCase(t.Text);
            if ((d2.rfind("$r ", 0) == 0 || d2.rfind("$resource ", 0) == 0) &&
                d2.find("*.res") != std::string::npos)
                d.ResFile = ProjectResFile(fileName);
            continue;
        }
        if (t.Kind != TToken::Ident) continue;
        std::string word = LowerCase(t.Text);
        if (word == "program" || word == "library" || word == "package") {
            headerSeen = true;
        } else if (headerSeen && (word == "uses" || word == "contains")) {
            ParseClause(scanner, dir, false, d.Entries);
        } else if (headerSeen && word == "requires") {
            ParseClause(scanner, dir, true, d.Entries);
        } else if (word == "begin" || word == "end") {
            // The clauses stand before the main block; its statements need no scan, but the
            // {$R} directive of a package may follow, so keep going for directives only.
            headerSeen = false;
        }
    }
    if (!d.ResFile.empty())
        d.Entries.push_back(
            TProjectEntry{ExtractFileName(ChangeFileExt(fileName, "")), d.ResFile, "", "", false});
    return d;
}

TProjectDescription ParseBuilderProject(const std::string& fileName, std::string_view text) {
    TProjectDescription d;
    d.FileName = fileName;
    std::string dir = ExtractFilePath(fileName);
    std::string body(text);
    std::string lower = LowerCase(body);
    for (size_t pos = lower.find("<file"); pos != std::string::npos;
         pos = lower.find("<file", pos + 1)) {
        if (pos + 5 >= body.size() || !std::isspace(static_cast<unsigned char>(body[pos + 5])))
            continue; // <FILELIST>
        size_t end = body.find('>', pos);
        if (end == std::string::npos) break;
        std::map<std::string, std::string> attrs;
        // NAME="value" pairs.
        size_t p = pos + 5;
        while (p < end) {
            while (p < end && std::isspace(static_cast<unsigned char>(body[p])))
                ++p;
            size_t nameStart = p;
            while (p < end && IsIdentChar(body[p]))
                ++p;
            std::string name = LowerCase(body.substr(nameStart, p - nameStart));
            while (p < end && std::isspace(static_cast<unsigned char>(body[p])))
                ++p;
            if (name.empty() || p >= end || body[p] != '=') {
                ++p;
                continue;
            }
            ++p;
            while (p < end && std::isspace(static_cast<unsigned char>(body[p])))
                ++p;
            if (p >= end || (body[p] != '"' && body[p] != '\'')) continue;
            char quote = body[p++];
            size_t close = body.find(quote, p);
            if (close == std::string::npos || close > end) break;
            attrs[name] = body.substr(p, close - p);
            p = close + 1;
        }
        if (attrs["filename"].empty()) continue;
        TProjectEntry e;
        e.FileName = ResolvePath(dir, attrs["filename"]);
        e.UnitName = attrs["unitname"];
        e.FormName = attrs["formname"];
        e.DesignClass = attrs["designclass"];
        std::string ext = LowerCase(ExtractFileExt(e.FileName));
        if (ext == ".cpp" && SameText(ChangeFileExt(e.FileName, ""), ChangeFileExt(fileName, ""))) {
            d.SourceFile = e.FileName; // the project's own source
            continue;
        }
        if (ext == ".res" && SameText(ChangeFileExt(e.FileName, ""), ChangeFileExt(fileName, "")))
            d.ResFile = e.FileName;
        if (ext == ".bpi") {
            e.PackageImport = true;
        }
        d.Entries.push_back(e);
    }
    if (d.SourceFile.empty()) {
        std::string cpp = FindCompanionFile(fileName, ".cpp");
        if (!cpp.empty()) d.SourceFile = cpp;
    }
    if (!d.ResFile.empty() && !FileExists(d.ResFile)) d.ResFile.clear();
    return d;
}

std::vector<std::string> ParseProjectGroup(const std::string& fileName, std::string_view text) {
    // Join the lines continued with a backslash, then read "PROJECTS = a.exe b.exe" and the
    // rules "a.exe: Dir\a.dpr".
    std::string joined;
    std::string s(text);
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '\\' && (i + 1 >= s.size() || s[i + 1] == '\r' || s[i + 1] == '\n')) {
            while (i + 1 < s.size() && (s[i + 1] == '\r' || s[i + 1] == '\n'))
                ++i;
            joined += ' ';
            continue;
        }
        joined += s[i] == '\r' ? '\n' : s[i];
    }
    std::vector<std::string> targets;
    std::map<std::string, std::string> rules;
    size_t pos = 0;
    while (pos <= joined.size()) {
        size_t end = joined.find('\n', pos);
        if (end == std::string::npos) end = joined.size();
        std::string line = joined.substr(pos, end - pos);
        pos = end + 1;
        if (line.empty() || line[0] == '#' || line[0] == '!' ||
            std::isspace(static_cast<unsigned char>(line[0])))
            continue;
        size_t eq = line.find('=');
        size_t colon = line.find(':');
        if (eq != std::string::npos && (colon == std::string::npos || eq < colon)) {
            std::string key = line.substr(0, eq);
            key.erase(key.find_last_not_of(" \t") + 1);
            if (SameText(key, "PROJECTS")) {
                std::string rest = line.substr(eq + 1);
                size_t p = 0;
                while (p < rest.size()) {
                    size_t a = rest.find_first_not_of(" \t", p);
                    if (a == std::string::npos) break;
                    size_t b = rest.find_first_of(" \t", a);
                    if (b == std::string::npos) b = rest.size();
                    targets.push_back(rest.substr(a, b - a));
                    p = b;
                }
            }
        } else if (colon != std::string::npos) {
            std::string target = line.substr(0, colon);
            target.erase(target.find_last_not_of(" \t") + 1);
            std::string source = line.substr(colon + 1);
            size_t a = source.find_first_not_of(" \t");
            if (a == std::string::npos) continue;
            size_t b = source.find_first_of(" \t", a);
            rules[LowerCase(target)] = source.substr(a, b == std::string::npos ? b : b - a);
        }
    }
    std::vector<std::string> projects;
    std::string dir = ExtractFilePath(fileName);
    for (const auto& t : targets) {
        auto r = rules.find(LowerCase(t));
        if (r == rules.end() || r->second.find('$') != std::string::npos) continue;
        projects.push_back(ResolvePath(dir, r->second));
    }
    return projects;
}

TProjectDescription LoadProject(const std::string& fileName) {
    std::string ext = LowerCase(ExtractFileExt(fileName));
    std::string text;
    try {
        text = ReadFileBytes(fileName);
    } catch (const rtl::Exception& e) {
        throw EProjectFileError(e.Message());
    }
    if (ext == ".dpr" || ext == ".dpk") return ParseDelphiProject(fileName, text);
    if (ext == ".bpr" || ext == ".bpk") return ParseBuilderProject(fileName, text);
    throw EProjectFileError("\"" + fileName + "\" is not a project file");
}

namespace {
// Identifiers and single-character symbols of C++ source, comments and literals skipped.
std::vector<std::string> CppTokens(std::string_view s) {
    std::vector<std::string> tokens;
    size_t p = 0;
    while (p < s.size()) {
        char c = s[p];
        if (s.compare(p, 2, "//") == 0) {
            p = s.find('\n', p);
            if (p == std::string_view::npos) break;
        } else if (s.compare(p, 2, "/*") == 0) {
            p = s.find("*/", p + 2);
            if (p == std::string_view::npos) break;
            p += 2;
        } else if (c == '"' || c == '\'') {
            for (++p; p < s.size() && s[p] != c && s[p] != '\n'; ++p)
                if (s[p] == '\\') ++p;
            ++p;
        } else if (IsIdentStart(c)) {
            size_t start = p;
            while (p < s.size() && IsIdentChar(s[p]))
                ++p;
            tokens.emplace_back(s.substr(start, p - start));
        } else {
            if (!std::isspace(static_cast<unsigned char>(c))) tokens.emplace_back(1, c);
            ++p;
        }
    }
    return tokens;
}
} // namespace

std::vector<TClassDeclaration> UnitClasses(std::string_view source, bool cpp) {
    std::vector<TClassDeclaration> classes;
    if (cpp) {
        // class [PACKAGE] Name : [public] Parent
        std::vector<std::string> t = CppTokens(source);
        for (size_t i = 0; i + 3 < t.size(); ++i) {
            if (t[i] != "class") continue;
            size_t k = i + 1;
            if (t[k] == "PACKAGE") ++k;
            if (k + 2 >= t.size() || !IsIdentStart(t[k][0]) || t[k + 1] != ":") continue;
            std::string name = t[k];
            k += 2;
            if (t[k] == "public" || t[k] == "private" || t[k] == "protected") ++k;
            if (k < t.size() && IsIdentStart(t[k][0])) classes.push_back({name, t[k]});
        }
        return classes;
    }
    // Name = class(Parent)
    TPascalScanner scanner(source);
    std::vector<TToken> window;
    for (TToken tok = scanner.Next(); tok.Kind != TToken::End; tok = scanner.Next()) {
        if (tok.Kind == TToken::Comment || tok.Kind == TToken::Directive) continue;
        window.push_back(tok);
        if (window.size() > 5) window.erase(window.begin());
        if (window.size() == 5 && window[0].Kind == TToken::Ident && window[1].Text == "=" &&
            SameText(window[2].Text, "class") && window[3].Text == "(" &&
            window[4].Kind == TToken::Ident) {
            std::string parent = window[4].Text;
            size_t dot = parent.rfind('.');
            classes.push_back(
                {window[0].Text, dot == std::string::npos ? parent : parent.substr(dot + 1)});
        }
    }
    return classes;
}

std::string FindParentClass(std::string_view source, std::string_view className, bool cpp) {
    if (className.empty()) return {};
    for (const TClassDeclaration& c : UnitClasses(source, cpp))
        if (SameText(c.Name, className)) return c.Parent;
    return {};
}

std::string LibraryClassParent(std::string_view className) {
    static const std::map<std::string, std::string> parents = [] {
        const char* table[][2] = {
            {"TPersistent", "TObject"},
            {"TComponent", "TPersistent"},
            {"TControl", "TComponent"},
            {"TWinControl", "TControl"},
            {"TGraphicControl", "TControl"},
            {"TCustomControl", "TWinControl"},
            {"TScrollingWinControl", "TWinControl"},
            {"TCustomForm", "TScrollingWinControl"},
            {"TForm", "TCustomForm"},
            {"TCustomFrame", "TScrollingWinControl"},
            {"TFrame", "TCustomFrame"},
            {"TDataModule", "TComponent"},
            {"TCustomPanel", "TCustomControl"},
            {"TPanel", "TCustomPanel"},
            {"TCustomQuickRep", "TCustomPanel"},
            {"TQuickRep", "TCustomQuickRep"},
            {"TButtonControl", "TWinControl"},
            {"TCustomButton", "TButtonControl"},
            {"TButton", "TCustomButton"},
            {"TBitBtn", "TButton"},
            {"TSpeedButton", "TGraphicControl"},
            {"TCustomCheckBox", "TButtonControl"},
            {"TCheckBox", "TCustomCheckBox"},
            {"TRadioButton", "TButtonControl"},
            {"TCustomLabel", "TGraphicControl"},
            {"TLabel", "TCustomLabel"},
            {"TCustomEdit", "TWinControl"},
            {"TEdit", "TCustomEdit"},
            {"TCustomMaskEdit", "TCustomEdit"},
            {"TMaskEdit", "TCustomMaskEdit"},
            {"TCustomMemo", "TCustomEdit"},
            {"TMemo", "TCustomMemo"},
            {"TCustomRichEdit", "TCustomMemo"},
            {"TRichEdit", "TCustomRichEdit"},
            {"TCustomListBox", "TWinControl"},
            {"TListBox", "TCustomListBox"},
            {"TCustomCheckListBox", "TCustomListBox"},
            {"TCheckListBox", "TCustomCheckListBox"},
            {"TCustomComboBox", "TWinControl"},
            {"TComboBox", "TCustomComboBox"},
            {"TCustomGroupBox", "TCustomControl"},
            {"TGroupBox", "TCustomGroupBox"},
            {"TCustomRadioGroup", "TCustomGroupBox"},
            {"TRadioGroup", "TCustomRadioGroup"},
            {"TBevel", "TGraphicControl"},
            {"TShape", "TGraphicControl"},
            {"TImage", "TGraphicControl"},
            {"TSplitter", "TGraphicControl"},
            {"TScrollBox", "TScrollingWinControl"},
            {"TCustomTabControl", "TWinControl"},
            {"TTabControl", "TCustomTabControl"},
            {"TPageControl", "TCustomTabControl"},
            {"TTabSheet", "TWinControl"},
            {"TStatusBar", "TWinControl"},
            {"TToolWindow", "TWinControl"},
            {"TToolBar", "TToolWindow"},
            {"TToolButton", "TGraphicControl"},
            {"TCustomTreeView", "TWinControl"},
            {"TTreeView", "TCustomTreeView"},
            {"TCustomListView", "TWinControl"},
            {"TListView", "TCustomListView"},
            {"TCustomGrid", "TCustomControl"},
            {"TCustomDrawGrid", "TCustomGrid"},
            {"TDrawGrid", "TCustomDrawGrid"},
            {"TStringGrid", "TDrawGrid"},
            {"TCustomDBGrid", "TCustomGrid"},
            {"TDBGrid", "TCustomDBGrid"},
            {"TDBNavigator", "TCustomPanel"},
            {"TCustomUpDown", "TWinControl"},
            {"TUpDown", "TCustomUpDown"},
            {"TProgressBar", "TWinControl"},
            {"TTrackBar", "TWinControl"},
            {"TCustomHotKey", "TWinControl"},
            {"THotKey", "TCustomHotKey"},
            {"TDateTimePicker", "TWinControl"},
            {"TCustomStaticText", "TWinControl"},
            {"TStaticText", "TCustomStaticText"},
            {"TCustomHeaderControl", "TWinControl"},
            {"THeaderControl", "TCustomHeaderControl"},
            {"TTimer", "TComponent"},
            {"TMenu", "TComponent"},
            {"TMainMenu", "TMenu"},
            {"TPopupMenu", "TMenu"},
            {"TMenuItem", "TComponent"},
            {"TCustomActionList", "TComponent"},
            {"TActionList", "TCustomActionList"},
            {"TBasicAction", "TComponent"},
            {"TContainedAction", "TBasicAction"},
            {"TCustomAction", "TContainedAction"},
            {"TAction", "TCustomAction"},
            {"TCustomImageList", "TComponent"},
            {"TDragImageList", "TCustomImageList"},
            {"TImageList", "TDragImageList"},
            {"TCommonDialog", "TComponent"},
            {"TOpenDialog", "TCommonDialog"},
            {"TSaveDialog", "TOpenDialog"},
            {"TFontDialog", "TCommonDialog"},
            {"TColorDialog", "TCommonDialog"},
            {"TDataSource", "TComponent"},
            {"TDataSet", "TComponent"},
            {"TBDEDataSet", "TDataSet"},
            {"TDBDataSet", "TBDEDataSet"},
            {"TTable", "TDBDataSet"},
            {"TQuery", "TDBDataSet"},
            {"TCustomConnection", "TComponent"},
            {"TDatabase", "TCustomConnection"},
            {"TField", "TComponent"},
            {"TStringField", "TField"},
            {"TNumericField", "TField"},
            {"TIntegerField", "TNumericField"},
            {"TFloatField", "TNumericField"},
            {"TDateTimeField", "TField"},
            {"TBooleanField", "TField"},
            {"TClientDataSet", "TDataSet"},
            {"TApplicationEvents", "TComponent"},
        };
        std::map<std::string, std::string> m;
        for (auto& row : table)
            m[LowerCase(row[0])] = row[1];
        return m;
    }();
    auto it = parents.find(LowerCase(className));
    return it == parents.end() ? std::string() : it->second;
}

} // namespace workbench
