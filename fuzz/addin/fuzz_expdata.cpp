// Arbitrary bytes as "ExpData.spc": the package is loaded afresh (its settings tree and class
// table made), the manager starts over the file as it does in the IDE (first load, experts made,
// second load, Load), and stops, saving the tree back. Nothing may crash or leak, and what the
// stop saves must load again.
#include "experts/block/BlockMng.h"
#include "fuzz/ScratchDir.h"
#include "host/ExpMng.h"
#include "locale/LocaleIds.h"

#include <QApplication>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <unistd.h>

using namespace zelvane;

namespace {

const std::string& WorkDir() {
    static const std::string dir = [] {
        // Every execution writes the file twice and the registry store once.
        auto d = FuzzScratchDir() / ("zelvane-fuzz-expdata-" + std::to_string(getpid()));
        std::filesystem::create_directories(d);
        // The add-in's registry key goes to a store of the run's own.
        setenv("XDG_CONFIG_HOME", d.c_str(), 1);
        return d.string() + "/";
    }();
    return dir;
}

} // namespace

// The manager makes the settings editor, whose menus need an application: one for the run, on
// Qt's offscreen platform.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    static QApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string& dir = WorkDir();
    {
        std::ofstream f(dir + "ExpData.spc", std::ios::binary | std::ios::trunc);
        f.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    InitExpMngUnit();
    ModuleDir = dir;
    RegisterExpClass(TBlockMng::StaticClass(), 4, "EditorManager", SUnitEditorExpert);
    {
        auto manager = ToolsAPI::MakeInterfaced<TExpManager>();
    }
    // What the stop saved reads back. A damaged file is read as far as it goes, and when that
    // part turns AutoSaveSettings off, the stop leaves the file as it was.
    std::ifstream saved(dir + "ExpData.spc", std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(saved)), std::istreambuf_iterator<char>());
    bool untouched = bytes == std::string_view(reinterpret_cast<const char*>(data), size);
    if (!untouched && !LoadExpData()) abort();
    DoneExpMngUnit();
    return 0;
}
