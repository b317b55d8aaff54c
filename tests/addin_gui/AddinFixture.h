// The add-in in the running workbench, as a user meets it: the example project open, the add-in
// (a copy of libzelvane.so in a directory of the test's own, so that its settings file and error
// log beside it are the test's) loaded by the workbench's package loader, the event loop turned
// until the menu is built, beeps counted, and the user's configuration (the add-in's registry
// key) in a directory of its own.
#pragma once

#include "foundation/AppUtils.h"
#include "rtl/Menus.h"
#include "rtl/ObjectText.h"
#include "rtl/Registry.h"
#include "rtl/Streams.h"
#include "tests/workbench_gui/Fixture.h"
#include "toolsapi/QtBridge.h"
#include "workbench/Packages.h"

#include <QtWidgets>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>

namespace addintest {

using namespace wbtest;

// The captions of menu items, "-" for a line.
inline QStringList MenuCaptions(const QList<QAction*>& actions) {
    QStringList r;
    for (QAction* a : actions)
        r << (a->isSeparator() ? QStringLiteral("-") : a->text());
    return r;
}
// A command's hot key as the IDE writes it, empty for none.
inline QString ShortCutText(QAction* action) {
    return ToolsAPI::FromBytes(
        rtl::ShortCutToText(ToolsAPI::KeySequenceToShortCut(action->shortcut())));
}
// The entry of a menu with that caption, or nullptr.
inline QAction* Entry(QMenu* menu, const QString& caption) {
    if (menu)
        for (QAction* a : menu->actions())
            if (a->text() == caption) return a;
    return nullptr;
}
// The visible top-level window of that object name, or nullptr.
inline QWidget* TopWindow(const char* name) {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QLatin1String(name) && w->isVisible()) return w;
    return nullptr;
}
using TNames = std::vector<std::string>;

// The texts of a list's rows or a combo box's items, and a click on a row.
inline TNames Texts(QListWidget* list) {
    TNames r;
    for (int i = 0; i < list->count(); ++i)
        r.push_back(list->item(i)->text().toStdString());
    return r;
}
inline QStringList Texts(QComboBox* combo) {
    QStringList r;
    for (int i = 0; i < combo->count(); ++i)
        r << combo->itemText(i);
    return r;
}
inline QPoint At(QListWidget* list, int row) {
    return list->visualItemRect(list->item(row)).center();
}
inline void Click(QListWidget* list, int row, Qt::KeyboardModifiers mods = Qt::NoModifier) {
    QTest::mouseClick(list->viewport(), Qt::LeftButton, mods, At(list, row));
}
// A block marked in a view from `from` to `to`, where the cursor ends.
inline void Mark(TEditView* view, TTextPos from, TTextPos to) {
    view->GetPosition()->Move(from.Row, from.Col);
    view->GetBlock()->Extend(to.Row, to.Col);
}

class AddinFixture : public WorkbenchFixture {
protected:
    void SetUp() override {
        WorkbenchFixture::SetUp();
        if (const char* old = std::getenv("XDG_CONFIG_HOME")) oldConfig_ = old;
        setenv("XDG_CONFIG_HOME", config_.Path().c_str(), 1);
        std::filesystem::copy_file(ZELVANE_ADDIN_FILE, Package());
        zelvane::TWindowSystem ws = zelvane::WindowSystem();
        ws.Beep = [this] { ++beeps; };
        oldWindowSystem_ = zelvane::SetWindowSystem(ws);
    }
    void TearDown() override {
        StopAddin();
        zelvane::SetWindowSystem(oldWindowSystem_);
        if (oldConfig_)
            setenv("XDG_CONFIG_HOME", oldConfig_->c_str(), 1);
        else
            unsetenv("XDG_CONFIG_HOME");
        WorkbenchFixture::TearDown();
    }

    // Loads the add-in and turns the event loop until its menu is there.
    void StartAddin() {
        loader_ = std::make_unique<TPackageLoader>();
        ASSERT_TRUE(loader_->Load(Package()));
        ASSERT_TRUE(WaitFor([this] { return ExpertsMenu() != nullptr; }));
    }
    // Unloads it as the workbench does at exit.
    void StopAddin() {
        if (loader_) loader_->UnloadAll();
        loader_.reset();
        QApplication::processEvents();
    }
    void RestartAddin() {
        StopAddin();
        StartAddin();
    }

    // The settings file as text, as a user would edit it.
    std::string SettingsText() const {
        rtl::TStringStream in(testfiles::ReadFile(PackageFile("ExpData.spc"))), out;
        rtl::ObjectBinaryToText(&in, &out);
        return out.DataString();
    }
    // Changes stored values in the settings file, each "Name = from" to "Name = to", with the
    // add-in stopped, and starts it again; a first start writes the file if there is none.
    struct TStoredChange {
        std::string Name, From, To;
    };
    void SetStoredValues(const std::vector<TStoredChange>& changes) {
        if (!std::filesystem::exists(PackageFile("ExpData.spc"))) StartAddin();
        StopAddin();
        std::string text = SettingsText();
        ChangeStoredValues(text, changes);
        testfiles::WriteFile(PackageFile("ExpData.spc"), text);
        StartAddin();
    }
    // The changes made in the text form of a settings file.
    static void ChangeStoredValues(std::string& text, const std::vector<TStoredChange>& changes) {
        for (const TStoredChange& c : changes) {
            size_t at = text.find(c.Name + " = " + c.From);
            ASSERT_NE(at, std::string::npos) << c.Name << " in\n" << text;
            text.replace(at, c.Name.size() + 3 + c.From.size(), c.Name + " = " + c.To);
        }
    }
    void SetStoredValue(const std::string& name, const std::string& from, const std::string& to) {
        SetStoredValues({{name, from, to}});
    }

    std::string PackageFile(const std::string& name) const { return packageDir_.File(name); }
    std::string Package() const { return PackageFile("libzelvane.so"); }
    std::string Log() const { return testfiles::ReadFile(PackageFile("ExpError.log")); }

    // The experts' menu in the main menu or one of its submenus, or nullptr.
    QMenu* ExpertsMenu() const { return FindExpertsMenu(main->menuBar()->actions()); }
    static QMenu* FindExpertsMenu(const QList<QAction*>& actions) {
        for (QAction* a : actions) {
            if (!a->menu()) continue;
            if (a->menu()->objectName() == QStringLiteral("ZelvaneMenu")) return a->menu();
            if (QMenu* inner = FindExpertsMenu(a->menu()->actions())) return inner;
        }
        return nullptr;
    }
    // The command of the experts' menu with that caption, or nullptr.
    QAction* MenuCommand(const QString& caption) const { return Entry(ExpertsMenu(), caption); }
    // The hot key of the add-in's command of that caption, or a text no key has when there is
    // no such command.
    QString CommandShortCut(const QString& caption) const {
        QAction* command = MenuCommand(caption);
        return command ? ShortCutText(command) : QStringLiteral("(no command ") + caption + ')';
    }
    // A value of the add-in's registry key, the user's configuration.
    static void WriteRegistry(const char* name, const std::string& value) {
        rtl::TRegistry reg;
        ASSERT_TRUE(reg.OpenKey("\\Software\\Zelvane", true));
        reg.WriteString(name, value);
    }
    static std::optional<std::string> ReadRegistry(const char* name) {
        rtl::TRegistry reg;
        if (!reg.OpenKey("\\Software\\Zelvane", false) || !reg.ValueExists(name)) return {};
        return reg.ReadString(name);
    }

    // A key in the editor, after the update the IDE runs when idle between what the user did
    // before and the key.
    void PressInEditor(Qt::Key key, Qt::KeyboardModifiers mods) {
        Application->UpdateActions();
        Editor()->setFocus();
        QTest::keyClick(Editor(), key, mods);
    }

    int beeps = 0;

private:
    testfiles::TTempDir packageDir_;
    testfiles::TTempDir config_;
    std::optional<std::string> oldConfig_;
    zelvane::TWindowSystem oldWindowSystem_;
    std::unique_ptr<TPackageLoader> loader_;
};

} // namespace addintest
