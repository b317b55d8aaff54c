// Unit SpcConst: the fixed texts of the settings editor (the last numbers of the string table)
// and the numbers of the texts of the specification layer.
#pragma once

#include "persistence/DataHndl.h"

#include <string>

namespace zelvane {

// Fixed editor texts.
constexpr int _SObjFormCaption = 65520;      // "object %s"
constexpr int _SSectionName = 65521;         // "SpcEditor"
constexpr int _SLabCaption = 65522;          // "%s :"
constexpr int _SPseudoNewLine = 65523;       // "##"
constexpr int _SBinExt = 65524;              // ".sbn"
constexpr int _SResBinExt = 65525;           // ".sbr"
constexpr int _SExBinExt = 65526;            // ".sbe"
constexpr int _STextExt = 65527;             // ".stx"
constexpr int _SControlIdentPostfix = 65528; // "Control"

// Texts of specifications and the editor.
constexpr int SNeedInitData = 51500;       // "Necessary to initialize structure InitData."
constexpr int SNoSpcObject = 51501;        // "Specification object not given."
constexpr int SSpcFileNotFound = 51502;    // "Specification file: %s not found."
constexpr int SUnknownSpcFormat = 51503;   // "Unknown specification format."
constexpr int SBadVersionInfo = 51504;     // "Version information has incorrect format: %s."
constexpr int SLaterEditorVersion = 51505; // "Specification file %s created with later ..."
constexpr int SLaterDelphiVersion = 51506; // "Downloaded file of the specification %s ..."
constexpr int SBadWidthChar = 51507;       // "Incorrect char "%s" in width property."
constexpr int SBadPercent = 51508;         // "Percent value should be in the range of 0-100%."
constexpr int SBadSectionNumber = 51509;   // "Section number must be more 0."
constexpr int SSpcLoadError = 51510;       // "Error on load specification file %s.%s%s."
constexpr int SSpcSaveError = 51511;       // "Error on save specification file %s.%s%s."
constexpr int SSectionParamsError = 51512; // "Error of the section parameters transformation."
constexpr int SNoFileName = 51513;         // "Filename not entered."
constexpr int SFileExistsReplace = 51514;  // "File with name %s already exists. Replace?"

// The file extension that labels a storage form (the form itself is told from the content).
std::string SpcFileExt(TObjectStorageFormat format);

} // namespace zelvane
