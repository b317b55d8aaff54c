// The text of an edit buffer: lines of bytes in the file's code page, edits by range, and an
// undo list of edit groups.
//
// Rows and columns are 1-based. A column is a byte of the line; a tab is one column. A position
// may stand past the end of its line (the editor's virtual space): text inserted there is
// preceded by the spaces that fill the gap, and a range that starts or ends there is cut at the
// end of the line.
#pragma once

#include "rtl/SysUtils.h"

#include <string>
#include <string_view>
#include <vector>

namespace workbench {

using rtl::Exception;

RTL_EXCEPTION(EEditBufferError, Exception)

struct TTextPos {
    int Row = 1;
    int Col = 1;
    friend auto operator<=>(const TTextPos&, const TTextPos&) = default;
};

class TTextBuffer {
public:
    TTextBuffer() : lines_{std::string()} {}

    // Splits text at CR LF, LF or CR. The line break of the file (CR LF unless the text has
    // another) is kept for Text(). A text that ends in a line break has an empty last line.
    void SetText(std::string_view text);
    std::string Text() const;
    const std::string& LineBreak() const { return lineBreak_; }

    int LineCount() const { return static_cast<int>(lines_.size()); }
    // The line of a row; raises EEditBufferError for a row out of range.
    const std::string& Line(int row) const;
    int LineLength(int row) const { return static_cast<int>(Line(row).size()); }

    // The text between two positions, the end excluded; lines are joined with CR LF.
    std::string GetRange(TTextPos from, TTextPos to) const;
    // Replaces the text between two positions with text (line breaks in any convention) and
    // gives the position right after the inserted text. Positions are clamped to the buffer.
    TTextPos Replace(TTextPos from, TTextPos to, std::string_view text);
    // Deletes whole lines from first to last.
    void DeleteLines(int first, int last);

    TTextPos Clamp(TTextPos pos) const;

    // Undo. Edits between BeginGroup and EndGroup are undone together; an edit outside a group
    // is a group of its own. The group carries a tag of the caller's (the cursor and block
    // before the edit).
    void BeginGroup(int tag);
    void EndGroup();
    bool CanUndo() const { return undoCount_ > 0; }
    // Undoes the last group and gives its tag, or -1 with nothing to undo.
    int Undo();
    bool CanRedo() const { return undoCount_ < static_cast<int>(undo_.size()); }
    int Redo();

    // Whether the text differs from the last MarkSaved, as the undo list sees it.
    bool Modified() const { return modifiedByHand_ || undoCount_ != savedAt_; }
    void MarkSaved() {
        savedAt_ = undoCount_;
        modifiedByHand_ = false;
    }
    void MarkModified() { modifiedByHand_ = true; }

private:
    // One replacement of lines, kept so that applying it again swaps the text back: Count
    // lines stand at First, and Lines is what was there before them.
    struct TLineEdit {
        int First = 0; // 0-based
        std::vector<std::string> Lines;
        int Count = 0;
    };
    struct TGroup {
        int Tag = 0;
        std::vector<TLineEdit> Edits;
    };

    // The one primitive edit: count lines from first replaced by newLines.
    void ReplaceLines(int first, int count, std::vector<std::string> newLines);
    TGroup& CurrentGroup();
    void Apply(TLineEdit& edit);

    std::vector<std::string> lines_;
    std::string lineBreak_ = "\r\n";
    std::vector<TGroup> undo_;
    int undoCount_ = 0; // groups in undo_ that are done; the rest can be redone
    int savedAt_ = 0;
    int groupDepth_ = 0;
    bool groupOpen_ = false;
    bool modifiedByHand_ = false;
};

} // namespace workbench
