// The foundation's window system on Qt, for every program that shows the add-in's windows: the
// workbench, and the stand-alone settings editor. A window handle is the QWidget itself. Hidden
// windows are the host's own business and are left empty here.
#pragma once

#include "foundation/AppUtils.h"

namespace ToolsAPI {

zelvane::TWindowSystem QtWindowSystem();

} // namespace ToolsAPI
