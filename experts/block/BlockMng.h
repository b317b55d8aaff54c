// Unit BlockMng: the expert that works on the text marked in the IDE's source editor. It moves
// the marked block left or right by one or two columns and sorts the marked declarations by
// name. Each command reads the block as text, works on it as a list of lines, and writes it back
// in one insertion, so the IDE's undo takes it back in one step. A refused command leaves the
// text as it was, marks the block again and beeps; nothing is ever shown.
//
// The view is that of the module viewer's preview while it shows a source (OpenEditor), else the
// IDE's top view.
#pragma once

#include "host/ExpMng.h"
#include "toolsapi/ToolsAPI.h"

#include <string>

namespace zelvane {

RTL_ENUM(TBlockActionID, aiSort, aiSetup, aiMoveLeftOne, aiMoveLeftTwo, aiMoveRightOne,
         aiMoveRightTwo)

// A marked block, rows and columns 1-based.
struct TBlockSelection {
    int StartRow = 0;
    int StartCol = 0;
    int EndRow = 0;
    int EndCol = 0;
};

class TBlockMng : public TCustomExpert {
    RTL_CLASS(TBlockMng, TCustomExpert)
public:
    TBlockMng();

    // After a move the cursor always goes to the block's first position.
    bool MoveCursorTopLeft = false;
    // A left move that would cut a line short is refused.
    bool SafeStringMoving = true;

    void Init(TAddItemFunc AddItem) override;

    void MoveBlockLeftOne(rtl::TObject* Sender) { DoAction(aiMoveLeftOne); }
    void MoveBlockLeftTwo(rtl::TObject* Sender) { DoAction(aiMoveLeftTwo); }
    void MoveBlockRightOne(rtl::TObject* Sender) { DoAction(aiMoveRightOne); }
    void MoveBlockRightTwo(rtl::TObject* Sender) { DoAction(aiMoveRightTwo); }
    void SortLines(rtl::TObject* Sender) { DoAction(aiSort); }

    // Picks the view, runs the command on it, and keeps the cursor in sight.
    void DoAction(TBlockActionID id);
    void DoMoveBlock(const ToolsAPI::_di_IOTAEditView& view, int shift);
    void DoSortLines(const ToolsAPI::_di_IOTAEditView& view);

    // Whether the IDE's top buffer has a view whose block is marked.
    static bool CheckState();
    // Enables a menu item or action sender by CheckState.
    void UpdateBlockState(rtl::TObject* Sender);
};

} // namespace zelvane
