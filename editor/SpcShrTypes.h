// Unit SpcShrTypes: the enumerations and sets that the settings editor, its form and its hosts
// share, with the ordinals fixed as hosts store them.
#pragma once

#include "rtl/TypInfo.h"

namespace zelvane {

// What the editor is doing; a set.
RTL_ENUM(TSpcEdState, esTreeBuilding, esNodeDeleting, esDataSetting, esFormShowing,
         esFormDestroying)
RTL_SET(TSpcEdStates, TSpcEdState)

// The tool buttons a host can hide.
RTL_ENUM(TSpcEdVisibleButton, vbExitEditor, vbLoadSpc, vbSaveSpc, vbSaveSpcAs, vbAddNode,
         vbDeleteNode, vbMoveNodeUp, vbMoveNodeDown, vbExpandNode, vbCollapseNode)
RTL_SET(TSpcEdVisibleButtons, TSpcEdVisibleButton)

RTL_ENUM(TSpcEdOption, eoSaveSpcOnExit, eoSaveSpcOnChange, eoSortProps, eoExpandCompProps)
RTL_SET(TSpcEdOptions, TSpcEdOption)

RTL_ENUM(TSpcFormOption, foAutoSaveParams, foAreasDynamicResize, foModalShowing, foStayOnTop,
         foTreeExpandOnEnter, foEllipsisLabels, foMultiLineCaptions)
RTL_SET(TSpcFormOptions, TSpcFormOption)

// The five texts of the editor, as the index of their one setter.
RTL_ENUM(TSpcEdStringsKind, skDisabledProps, skInvisibleProps, skTranslatingTable,
         skControlParams, skRedefiedParams)

RTL_ENUM(TCollNotification, cnAdding, cnDeleting, cnClearing)
RTL_ENUM(TNodeImageIndex, niiSelectedIndex, niiStateIndex, niiImageIndex, niiOverlayIndex)
// Which characters a numeric edit takes.
RTL_ENUM(TPropFlag, pfInteger, pfFloat)
RTL_ENUM(TAreaKind, akLabel, akControl, akAll)
RTL_ENUM(TNodeMotion, nmUp, nmDown)
// How text and widgets sit in a column.
RTL_ENUM(TAlignment, taLeftJustify, taRightJustify, taCenter)

} // namespace zelvane
