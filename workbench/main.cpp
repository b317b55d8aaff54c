// The workbench: the IDE host. Opens a project (or a directory of units), loads the design-time
// packages, and runs the IDE's windows until the main form closes.
//
//   workbench [options] [project]
//     --package FILE        load this package too (repeatable)
//     --no-default-package  don't load libzelvane.so from the program's directory
//     --settings FILE       the settings file with the [Packages] list
//     --open FILE           open this unit after the project (repeatable; the last is on top)
//     --form FILE           show the form of this unit in its designer window
//     --snapshot FILE       the machine-state snapshot the CPU window shows
//     --cpu                 open the CPU window once the windows are up
//     --screenshot FILE     take a picture of the screen once the windows are up, then quit
//     --menu NAME           with --screenshot: open the main menu's menu of this object name
//     --keys KEYS           with --screenshot: first run the command of these keys ("Ctrl+Shift+Q")
//     --click NAME          with --screenshot: then click the button of this object name
//     --command TEXT        with --screenshot: first run the main menu's command of this text;
//                           the keys then all go to the control that has the focus
#include "rtl/SysUtils.h"
#include "workbench/Application.h"
#include "workbench/EditWindow.h"
#include "workbench/MainWindow.h"
#include "workbench/Packages.h"

#include <QCommandLineParser>
#include <QDir>
#include <QAbstractButton>
#include <QAction>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>
#include <QScreen>
#include <QTimer>

#include <iostream>

using namespace workbench;

namespace {

// A key pressed and released in the control that has the focus.
void SendToFocus(QKeyCombination chord) {
    QWidget* focus = QApplication::focusWidget();
    if (!focus) return;
    QKeyEvent press(QEvent::KeyPress, chord.key(), chord.keyboardModifiers());
    QKeyEvent release(QEvent::KeyRelease, chord.key(), chord.keyboardModifiers());
    QApplication::sendEvent(focus, &press);
    QApplication::sendEvent(focus, &release);
}

// The command of these menus or their submenus with the text, or nullptr.
QAction* FindMenuCommand(const QList<QAction*>& actions, const QString& text) {
    for (QAction* a : actions) {
        if (a->menu()) {
            if (QAction* found = FindMenuCommand(a->menu()->actions(), text)) return found;
        } else if (a->text() == text) {
            return a;
        }
    }
    return nullptr;
}

} // namespace

int main(int argc, char** argv) {
    TWorkbenchApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("workbench"));
    app.SetTitle("Zelvane Workbench");

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The Zelvane workbench IDE"));
    parser.addHelpOption();
    QCommandLineOption packageOpt(QStringLiteral("package"), QStringLiteral("Load a package."),
                                  QStringLiteral("file"));
    QCommandLineOption noDefaultOpt(QStringLiteral("no-default-package"),
                                    QStringLiteral("Don't load the add-in beside the program."));
    QCommandLineOption settingsOpt(QStringLiteral("settings"),
                                   QStringLiteral("The settings file with the package list."),
                                   QStringLiteral("file"));
    QCommandLineOption openOpt(QStringLiteral("open"), QStringLiteral("Open a unit."),
                               QStringLiteral("file"));
    QCommandLineOption formOpt(QStringLiteral("form"), QStringLiteral("Show a unit's form."),
                               QStringLiteral("file"));
    QCommandLineOption snapshotOpt(QStringLiteral("snapshot"),
                                   QStringLiteral("The machine-state snapshot of the CPU window."),
                                   QStringLiteral("file"));
    QCommandLineOption cpuOpt(QStringLiteral("cpu"), QStringLiteral("Open the CPU window."));
    QCommandLineOption shotOpt(QStringLiteral("screenshot"),
                               QStringLiteral("Save a picture of the screen and quit."),
                               QStringLiteral("file"));
    QCommandLineOption menuOpt(QStringLiteral("menu"),
                               QStringLiteral("Open the menu of this name for the screenshot."),
                               QStringLiteral("name"));
    QCommandLineOption keysOpt(QStringLiteral("keys"),
                               QStringLiteral("Run the command of these keys before the screenshot."),
                               QStringLiteral("keys"));
    QCommandLineOption clickOpt(QStringLiteral("click"),
                                QStringLiteral("Click this button before the screenshot."),
                                QStringLiteral("name"));
    QCommandLineOption commandOpt(QStringLiteral("command"),
                                  QStringLiteral("Run the menu command of this text first."),
                                  QStringLiteral("text"));
    parser.addOptions({packageOpt, noDefaultOpt, settingsOpt, openOpt, formOpt, snapshotOpt, cpuOpt,
                       shotOpt, menuOpt, keysOpt, clickOpt, commandOpt});
    parser.addPositionalArgument(QStringLiteral("project"),
                                 QStringLiteral("A project, project group or directory."));
    parser.process(app);

    auto model = TIDEModel::Create();
    ToolsAPI::BorlandIDEServices = ToolsAPI::_di_IBorlandIDEServices(model.get());

    int result = 0;
    {
        TMainForm mainForm(model.get());
        QString projectDir;
        if (!parser.positionalArguments().isEmpty()) {
            QString project = parser.positionalArguments().first();
            QFileInfo info(project);
            projectDir = info.isDir() ? info.absoluteFilePath() : info.absolutePath();
            Guarded(nullptr, [&] { mainForm.OpenProject(project.toStdString()); });
        }
        auto resolve = [&](const QString& f) {
            QFileInfo info(f);
            if (info.isRelative() && !projectDir.isEmpty())
                return QDir(projectDir).filePath(f).toStdString();
            return info.absoluteFilePath().toStdString();
        };
        for (const QString& f : parser.values(openOpt))
            Guarded(nullptr, [&] { model->OpenModuleFile(resolve(f), TOpenMode::Show); });
        if (parser.isSet(formOpt))
            Guarded(nullptr, [&] {
                if (auto m = model->OpenModuleFile(resolve(parser.value(formOpt)),
                                                   TOpenMode::Background))
                    if (TFormEditor* f = m->FormEditor()) f->Show();
            });
        if (parser.isSet(snapshotOpt))
            mainForm.SetSnapshotFile(QFileInfo(parser.value(snapshotOpt)).absoluteFilePath().toStdString());
        mainForm.ArrangeWindows();

        // The packages load once the IDE's windows are made and before the main form shows, as
        // design-time packages load at the IDE's start: they see the main form's first show.
        TPackageListOptions options;
        for (const QString& p : parser.values(packageOpt))
            options.Packages.push_back(p.toStdString());
        options.NoDefault = parser.isSet(noDefaultOpt);
        options.SettingsFile = parser.value(settingsOpt).toStdString();
        TPackageLoader loader;
        loader.LoadAll(PackageList(options, QCoreApplication::applicationDirPath().toStdString()));
        QStringList loaded, reports;
        for (const auto& p : loader.Packages())
            loaded << QString::fromStdString(p.FileName);
        for (const auto& r : loader.Reports())
            reports << QString::fromStdString(r);
        mainForm.SetPackageInfo(loaded, reports);
        mainForm.ShowAll();
        if (parser.isSet(cpuOpt)) Guarded(nullptr, [&] { mainForm.ShowCPUWindow(); });

        if (parser.isSet(shotOpt)) {
            QString file = parser.value(shotOpt);
            // The menu opens once the packages have built theirs, and stays open for the picture.
            QString menu = parser.value(menuOpt);
            // Any number of chords, not the four a key sequence holds.
            QList<QKeyCombination> keys;
            for (const QString& chord : parser.value(keysOpt).split(',', Qt::SkipEmptyParts))
                if (QKeySequence k(chord.trimmed()); !k.isEmpty()) keys << k[0];
            QString click = parser.value(clickOpt);
            QString commandText = parser.value(commandOpt);
            QTimer::singleShot(1000, &app, [&mainForm, menu, keys, click, commandText] {
                // A command of the menus, found by its text, runs first; it may open a window
                // modally, so it runs from the event loop.
                if (!commandText.isEmpty()) {
                    QTimer::singleShot(0, [&mainForm, commandText] {
                        if (QAction* a = FindMenuCommand(mainForm.menuBar()->actions(), commandText))
                            a->trigger();
                    });
                    for (int i = 0; i < keys.size(); ++i)
                        QTimer::singleShot(100 * (i + 1), [chord = keys[i]] { SendToFocus(chord); });
                    return;
                }
                // After the keys, a click on a button of a window that is up, as a user's.
                if (!click.isEmpty())
                    QTimer::singleShot(100 * std::max(1, int(keys.size())), [click] {
                        for (QWidget* w : QApplication::topLevelWidgets()) {
                            auto* button = w->findChild<QAbstractButton*>(click);
                            if (button && button->isVisible()) return button->click();
                        }
                    });
                // The keys after the first go to the control that has the focus then, a tenth
                // of a second apart: into the window the command opened.
                for (int i = 1; i < keys.size(); ++i)
                    QTimer::singleShot(100 * i, [chord = keys[i]] { SendToFocus(chord); });
                // The command bound to the first keys runs, as their press would run it.
                QAction* command = nullptr;
                QKeySequence first = keys.isEmpty() ? QKeySequence() : QKeySequence(keys[0]);
                for (QAction* a : mainForm.actions())
                    if (!first.isEmpty() && a->isEnabled() && a->shortcuts().contains(first))
                        command = a;
                if (menu.isEmpty()) {
                    if (command) command->trigger();
                    return;
                }
                for (QAction* a : mainForm.menuBar()->actions())
                    if (a->menu() && a->menu()->objectName() == menu)
                        mainForm.menuBar()->setActiveAction(a);
                if (command) command->trigger();
            });
            // The picture waits for the keys, a tenth of a second each.
            QTimer::singleShot(1500 + 100 * int(keys.size()), &app, [&] {
                if (QScreen* screen = QGuiApplication::primaryScreen()) {
                    QPixmap shot = screen->grabWindow(0);
                    if (shot.save(file))
                        std::cout << "workbench: screenshot saved to " << file.toStdString()
                                  << '\n';
                    else
                        std::cerr << "workbench: could not save the screenshot to "
                                  << file.toStdString() << '\n';
                }
                // Leave without questions: the picture was all that was asked. A window the
                // command opened modally closes first, so that its loop ends.
                if (QWidget* modal = QApplication::activeModalWidget()) modal->close();
                QTimer::singleShot(0, &app, [&] {
                    model->CloseAll();
                    mainForm.close();
                });
            });
            model->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
        }
        result = app.exec();
        // The packages go while the IDE's windows still stand: their wizards take their menu
        // items and hooks away.
        loader.UnloadAll();
    }
    model->CloseAll();
    ToolsAPI::BorlandIDEServices = nullptr;
    return result;
}
