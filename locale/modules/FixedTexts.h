// The entries of the string table that are names rather than texts: the section of the settings
// editor's own settings, the line break mark of labels, the extensions of specification files and
// the suffix of control names. Every language module holds them as the package does.
#pragma once

#define ZELVANE_FIXED_NAMES                                                                        \
    {65521, "SpcEditor"}, {65522, "%s :"}, {65523, "##"}, {65524, ".sbn"}, {65525, ".sbr"},        \
        {65526, ".sbe"}, {65527, ".stx"}, {65528, "Control"}
