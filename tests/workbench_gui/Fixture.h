// The workbench on the example project, as the GUI tests start it: the model, the main form with
// its windows shown, error boxes recorded instead of shown, and helpers that wait for the event
// loop and answer modal dialogs.
#pragma once

#include "tests/workbench/TestFiles.h"
#include "toolsapi/Forms.h"
#include "workbench/Application.h"
#include "workbench/EditWindow.h"
#include "workbench/MainWindow.h"
#include "workbench/model/Model.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace wbtest {

using namespace workbench;
using namespace ToolsAPI;

inline TWorkbenchApplication* App() {
    return TWorkbenchApplication::Instance();
}

// Runs the event loop for a while, as the application's own loop runs: it waits for events
// when it has none, which is when the idle work runs.
inline void RunLoop(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

// Runs the event loop until pred holds or the time is up; whether it held.
inline bool WaitFor(const std::function<bool()>& pred, int ms = 3000) {
    QElapsedTimer t;
    t.start();
    while (!pred()) {
        if (t.elapsed() > ms) return false;
        RunLoop(20);
    }
    return true;
}

// Calls answer with the first modal widget that shows up, once, from inside the modal loop. The
// timer that watches is returned; deleting it gives up the wait.
inline std::vector<QPointer<QTimer>>& ModalWatches() {
    static std::vector<QPointer<QTimer>> watches;
    return watches;
}
inline QTimer* WhenModal(std::function<void(QWidget*)> answer) {
    auto* timer = new QTimer(qApp);
    ModalWatches().push_back(timer);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, answer] {
        if (QWidget* w = QApplication::activeModalWidget()) {
            timer->stop();
            timer->deleteLater();
            answer(w);
        }
    });
    timer->start(20);
    return timer;
}

// The texts of actions without their accelerator marks.
inline QStringList ActionTexts(const QList<QAction*>& actions) {
    QStringList r;
    for (QAction* a : actions)
        r << a->text().remove(QLatin1Char('&'));
    return r;
}

// Answers the next question, which must be a "Confirm" message box, with one of its buttons.
inline QTimer* AnswerConfirm(QMessageBox::StandardButton button) {
    return WhenModal([button](QWidget* box) {
        auto* mb = qobject_cast<QMessageBox*>(box);
        ASSERT_NE(mb, nullptr);
        EXPECT_EQ(mb->windowTitle(), QStringLiteral("Confirm"));
        mb->button(button)->click();
    });
}

class WorkbenchFixture : public ::testing::Test {
protected:
    void SetUp() override {
        App()->SetErrorBox([this](const std::string& caption, const std::string& text) {
            errors.push_back(text);
        });
        App()->SetOnException(nullptr);
        model = TIDEModel::Create();
        BorlandIDEServices = _di_IBorlandIDEServices(model.get());
        main = new TMainForm(model.get());
        main->OpenProject(copy.File("Example.dpr"));
        main->ArrangeWindows();
        main->ShowAll();
        QApplication::processEvents();
    }
    void TearDown() override {
        // A watch whose dialog never came must not outlive the test's variables.
        for (auto& w : ModalWatches())
            delete w.data();
        ModalWatches().clear();
        model->SetQuestion([](const std::string&, const std::string&) { return int(mrNo); });
        model->CloseAll();
        delete main;
        main = nullptr;
        BorlandIDEServices = nullptr;
        model = nullptr;
        App()->SetErrorBox(nullptr);
        App()->SetOnException(nullptr);
        QApplication::processEvents();
    }

    std::string File(const std::string& name) const { return copy.File(name); }
    TEditWindowForm* EditWindow() const { return main->EditWindow(); }
    TEditTabControl* Tabs() const { return main->EditWindow()->TabControl(); }
    TSourceEdit* Editor() const { return main->EditWindow()->Editor(); }
    TEditView* View() const { return Editor()->View(); }
    std::string Line(int row) const { return View()->Buffer().Buffer().Line(row); }
    // The name of the file on the edit window's current page.
    std::string ShownFile() const { return rtl::ExtractFileName(View()->Buffer().GetFileName()); }
    // Opens a unit of the example as the user would, through the model.
    TEditView* Open(const std::string& name) {
        model->OpenModuleFile(File(name), TOpenMode::Show);
        QApplication::processEvents();
        return View();
    }
    // Runs an IDE command as the user would: the actions update first, as before a menu shows,
    // and a disabled command does not run.
    void Command(const char* name) {
        QAction* action = main->Action(name);
        ASSERT_NE(action, nullptr) << name;
        Application->UpdateActions();
        action->trigger();
    }
    std::vector<std::string> TabTexts() const {
        std::vector<std::string> r;
        for (int i = 0; i < Tabs()->GetTabCount(); ++i)
            r.push_back(Tabs()->GetTabText(i));
        return r;
    }

    testfiles::TExampleCopy copy;
    DelphiInterface<TIDEModel> model;
    TMainForm* main = nullptr;
    std::vector<std::string> errors;
};

} // namespace wbtest
