// spcedit: the settings editor on a specification file, without the IDE.
//
//   spcedit [--screenshot PNG] FILE
//
// With --screenshot the editor shows its tree unfolded, is saved as a picture and closes.
//
// The file's root class must be one the program knows: the add-in's settings tree ("ExpData.spc"
// as the add-in writes it) or any class registered with the runtime. The editor works on a copy
// and writes the file only when the user saves.
#include "editor/SpcEditor.h"
#include "foundation/Dialogs.h"
#include "host/ExpData.h"
#include "rtl/Streams.h"
#include "rtl/SysUtils.h"
#include "specification/SpcMng.h"
#include "toolsapi/QtWindowSystem.h"

#include <QApplication>
#include <QTreeWidget>
#include "editor/SpcForm.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace {

using namespace zelvane;

// The class name of the root object of a binary ("TPF0") or text ("object Name: TClass")
// object stream; empty when the file is neither.
std::string RootClassName(const std::string& fileName) {
    std::ifstream in(fileName, std::ios::binary);
    std::string head(4096, '\0');
    in.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<size_t>(in.gcount()));
    if (head.starts_with("TPF0")) {
        size_t pos = 4;
        if (pos < head.size() && (static_cast<unsigned char>(head[pos]) & 0xF0) == 0xF0) ++pos;
        if (pos >= head.size()) return {};
        size_t length = static_cast<unsigned char>(head[pos]);
        return head.substr(pos + 1, length);
    }
    size_t start = head.find_first_not_of(" \t\r\n");
    if (start == std::string::npos) return {};
    std::string line = head.substr(start, head.find_first_of("\r\n", start) - start);
    for (const char* word : {"object ", "inherited ", "inline "})
        if (line.starts_with(word)) {
            line = line.substr(std::string(word).size());
            size_t colon = line.find(':');
            std::string cls = colon == std::string::npos ? line : line.substr(colon + 1);
            return rtl::Trim(cls.substr(0, cls.find_first_of(" [")));
        }
    return {};
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    SetWindowSystem(ToolsAPI::QtWindowSystem());
    std::string screenshot;
    if (argc == 4 && std::string(argv[1]) == "--screenshot") {
        screenshot = argv[2];
        argv[1] = argv[3];
        argc = 2;
    }
    if (argc != 2) {
        std::fprintf(stderr, "usage: spcedit [--screenshot PNG] FILE\n");
        return 2;
    }
    std::string fileName = argv[1];
    rtl::RegisterClass(TExpData::StaticClass());
    std::string className = RootClassName(fileName);
    rtl::TClass cls = className.empty() ? nullptr : rtl::GetClass(className);
    if (!cls) {
        ShowError(className.empty() ? fileName + " is no specification file."
                                    : "Unknown settings class " + className + ".");
        return 1;
    }
    TInitData& table = GlobalInitData();
    FillInitData();
    TSpcObjectOps ops(&table);
    rtl::TPersistent* root = ops.CreateSpc(cls);
    TSpcEditor editor;
    editor.Init(&table, nullptr);
    editor.SetShowStatusBar(true);
    int result = 0;
    if (!editor.LoadFromFile(&root, fileName, true)) {
        result = 1;
    } else if (screenshot.empty()) {
        editor.ShowTree();
    } else {
        editor.FormOptions.Exclude(foModalShowing);
        editor.ShowTree();
        QTreeWidget* tree = editor.TreeView();
        while (!tree->currentItem()) QApplication::processEvents();
        tree->expandAll();
        // The first item of the second branch, to show a row of each kind of control.
        QTreeWidgetItem* top = tree->topLevelItem(0);
        if (top->childCount() > 1 && top->child(1)->childCount() > 0)
            tree->setCurrentItem(top->child(1)->child(0));
        editor.Form()->resize(760, 480);
        for (int i = 0; i < 20; ++i) QApplication::processEvents();
        editor.Form()->grab().save(QString::fromStdString(screenshot));
        editor.Form()->close();
    }
    ops.FreeSpc(root);
    return result;
}
