// The package: its load and unload, the expert classes in slot order, and the entry the IDE
// calls. The classes are registered here, in one place, rather than by static objects in the
// experts' files, so that the order of the slots is plain and no linker can drop one.
#include "experts/block/BlockMng.h"
#include "experts/cpu/CPUView.h"
#include "experts/inspector/InspView.h"
#include "experts/units/UnitMng.h"
#include "experts/viewer/FormView.h"
#include "host/ExpMng.h"
#include "locale/LocaleIds.h"
#include "toolsapi/Package.h"

namespace {

using namespace zelvane;

// Made when the package is loaded and freed when it is unloaded, as a unit's initialisation and
// finalisation are.
struct TPackageUnits {
    TPackageUnits() {
        InitExpMngUnit();
        RegisterExpClass(TViewFormMng::StaticClass(), 1, "FormUnitView", SFormUnitView);
        RegisterExpClass(TInspectorViewMng::StaticClass(), 2, "InspectorFormView",
                         SInspectorFormView);
        RegisterExpClass(TCPUFormMng::StaticClass(), 3, "CPUView", SCPUView);
        RegisterExpClass(TBlockMng::StaticClass(), 4, "EditorManager", SUnitEditorExpert);
        RegisterExpClass(TUnitManager::StaticClass(), 5, "UnitManager", SUnitManagerExpert);
    }
    ~TPackageUnits() { DoneExpMngUnit(); }
};

const TPackageUnits packageUnits;

} // namespace

extern "C" __attribute__((visibility("default"))) void Register() {
    RegisterManager();
}
