// The application and screen services that the add-in sees: the exception hook, hidden message
// windows with posted messages, the action update, the screen's forms and cursor, the mouse
// capture, and the form routines of CrtlUtils.
#include "foundation/AppUtils.h"
#include "host/CrtlUtils.h"
#include "tests/workbench_gui/Fixture.h"

#include <QAction>
#include <QMenu>
#include <QPainter>

#include <stdexcept>

using namespace wbtest;

namespace {

// A handler object for the exception hook.
class TExceptionSink : public rtl::TObject {
public:
    void OnException(rtl::TObject* sender, rtl::Exception* e) {
        senders.push_back(sender);
        messages.push_back(e->Message());
        classes.push_back(e->ClassName());
    }
    std::vector<rtl::TObject*> senders;
    std::vector<std::string> messages;
    std::vector<std::string> classes;
};

class ApplicationTest : public ::testing::Test {
protected:
    void SetUp() override {
        App()->SetErrorBox(
            [this](const std::string&, const std::string& text) { shown.push_back(text); });
        App()->SetOnException(nullptr);
    }
    void TearDown() override {
        App()->SetOnException(nullptr);
        App()->SetErrorBox(nullptr);
        Screen->SetOnActiveFormChange(nullptr);
    }
    void HookSink() {
        App()->SetOnException(TExceptionEvent::Of<&TExceptionSink::OnException>(&sink));
    }
    TExceptionSink sink;
    std::vector<std::string> shown;
};

// ---------------------------------------------------------------------------------------------
// Exceptions

TEST_F(ApplicationTest, HandleExceptionGoesToTheHookWithSenderAndException) {
    HookSink();
    TExceptionSink sender;
    try {
        throw rtl::EConvertError("'x' is not a valid integer value");
    } catch (...) {
        Application->HandleException(&sender);
    }
    ASSERT_EQ(sink.messages.size(), 1u);
    EXPECT_EQ(sink.senders[0], &sender);
    EXPECT_EQ(sink.messages[0], "'x' is not a valid integer value");
    EXPECT_EQ(sink.classes[0], "EConvertError");
    EXPECT_TRUE(shown.empty()) << "a hook replaces the error box";
}

TEST_F(ApplicationTest, WithoutAHookTheErrorBoxShowsTheMessageWithAFullStop) {
    try {
        throw rtl::Exception("Disk full");
    } catch (...) {
        Application->HandleException(nullptr);
    }
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0], "Disk full.");
}

TEST_F(ApplicationTest, AbortIsSilentAndOtherThrownObjectsAreReported) {
    HookSink();
    try {
        throw rtl::EAbort("");
    } catch (...) {
        Application->HandleException(nullptr);
    }
    EXPECT_TRUE(sink.messages.empty());
    try {
        throw std::runtime_error("plain C++ failure");
    } catch (...) {
        Application->HandleException(nullptr);
    }
    try {
        throw 42;
    } catch (...) {
        Application->HandleException(nullptr);
    }
    ASSERT_EQ(sink.messages.size(), 2u);
    EXPECT_EQ(sink.messages[0], "plain C++ failure");
    EXPECT_FALSE(sink.messages[1].empty());
}

TEST_F(ApplicationTest, HandleExceptionOutsideAHandlerDoesNothing) {
    HookSink();
    Application->HandleException(nullptr);
    EXPECT_TRUE(sink.messages.empty());
    EXPECT_TRUE(shown.empty());
}

// An object whose event handler raises.
class TRaisingObject : public QObject {
protected:
    bool event(QEvent* e) override {
        if (e->type() == QEvent::User) throw rtl::EInvalidOperation("raised in an event handler");
        return QObject::event(e);
    }
};

TEST_F(ApplicationTest, AnExceptionLeavingAnEventHandlerReachesTheHookAndTheLoopGoesOn) {
    HookSink();
    TRaisingObject object;
    QCoreApplication::postEvent(&object, new QEvent(QEvent::User));
    QCoreApplication::postEvent(&object, new QEvent(QEvent::User));
    QCoreApplication::sendPostedEvents(&object);
    ASSERT_EQ(sink.messages.size(), 2u);
    EXPECT_EQ(sink.messages[0], "raised in an event handler");
    EXPECT_EQ(sink.classes[1], "EInvalidOperation");
}

TEST_F(ApplicationTest, TitleIsTheApplicationsDisplayName) {
    std::string old = Application->GetTitle();
    Application->SetTitle("Workbench under test");
    EXPECT_EQ(Application->GetTitle(), "Workbench under test");
    EXPECT_EQ(QApplication::applicationDisplayName(), QStringLiteral("Workbench under test"));
    Application->SetTitle(old);
}

// ---------------------------------------------------------------------------------------------
// Hidden windows and posted messages

TEST_F(ApplicationTest, PostedMessagesArriveLaterInOrderWithTheirParameters) {
    std::vector<TMessage> got;
    HWND wnd = AllocateHWnd([&](TMessage& m) { got.push_back(m); });
    ASSERT_NE(wnd, nullptr);
    EXPECT_TRUE(PostMessage(wnd, 0xC003, 0, 0));
    EXPECT_TRUE(PostMessage(wnd, 0xC001, 7, -3));
    EXPECT_TRUE(got.empty()) << "a posted message waits for the event loop";
    ASSERT_TRUE(WaitFor([&] { return got.size() == 2; }));
    EXPECT_EQ(got[0].Msg, 0xC003u);
    EXPECT_EQ(got[1].Msg, 0xC001u);
    EXPECT_EQ(got[1].WParam, 7u);
    EXPECT_EQ(got[1].LParam, -3);
    DeallocateHWnd(wnd);
}

TEST_F(ApplicationTest, ProcessMessagesDeliversWhatWasPostedBeforeItReturns) {
    std::vector<uint32_t> got;
    HWND wnd = AllocateHWnd([&](TMessage& m) { got.push_back(m.Msg); });
    PostMessage(wnd, 0xC020, 0, 0);
    Application->ProcessMessages();
    EXPECT_EQ(got, std::vector<uint32_t>({0xC020u}));
    DeallocateHWnd(wnd);
}

TEST_F(ApplicationTest, SendMessageRunsAtOnceAndGivesTheResult) {
    HWND wnd = AllocateHWnd([](TMessage& m) { m.Result = static_cast<intptr_t>(m.WParam) * 2; });
    EXPECT_EQ(SendMessage(wnd, 0xC01E, 21, 0), 42);
    DeallocateHWnd(wnd);
    EXPECT_EQ(SendMessage(wnd, 0xC01E, 21, 0), 0);
}

TEST_F(ApplicationTest, ADeallocatedWindowGetsNothingMore) {
    int count = 0;
    HWND wnd = AllocateHWnd([&](TMessage&) { ++count; });
    PostMessage(wnd, 0xC002, 0, 0);
    DeallocateHWnd(wnd);
    EXPECT_FALSE(PostMessage(wnd, 0xC002, 0, 0));
    EXPECT_FALSE(PostMessage(nullptr, 0xC002, 0, 0));
    QApplication::processEvents();
    QApplication::sendPostedEvents();
    EXPECT_EQ(count, 0);
}

TEST_F(ApplicationTest, AnExceptionInAWindowProcedureIsReportedAndTheNextMessageRuns) {
    HookSink();
    std::vector<uint32_t> got;
    HWND wnd = AllocateHWnd([&](TMessage& m) {
        got.push_back(m.Msg);
        if (m.Msg == 0xC006) throw rtl::Exception("procedure failed");
    });
    PostMessage(wnd, 0xC006, 0, 0);
    PostMessage(wnd, 0xC007, 0, 0);
    ASSERT_TRUE(WaitFor([&] { return got.size() == 2; }));
    EXPECT_EQ(got[1], 0xC007u);
    ASSERT_EQ(sink.messages.size(), 1u);
    EXPECT_EQ(sink.messages[0], "procedure failed");
    DeallocateHWnd(wnd);
}

TEST_F(ApplicationTest, TheFoundationsHiddenWindowsAreTheApplications) {
    const zelvane::TWindowSystem& system = zelvane::WindowSystem();
    ASSERT_TRUE(system.AllocateWindow);
    HWND seen = nullptr;
    uint32_t msg = 0;
    HWND wnd = system.AllocateWindow("TPZelvaneUtilWindow",
                                     [&](HWND h, uint32_t m, uintptr_t, intptr_t) -> intptr_t {
                                         seen = h;
                                         msg = m;
                                         return 5;
                                     });
    ASSERT_NE(wnd, nullptr);
    EXPECT_EQ(SendMessage(wnd, 49128, 0, 0), 5);
    EXPECT_EQ(seen, wnd) << "the procedure gets its own window's handle";
    EXPECT_EQ(msg, 49128u);
    system.DestroyWindow(wnd);
    EXPECT_FALSE(App()->IsHiddenWindow(wnd));
}

// ---------------------------------------------------------------------------------------------
// Action update

TEST_F(ApplicationTest, ActionsUpdateWhenTheEventLoopFallsIdle) {
    QAction action(QStringLiteral("Tested"));
    int updates = 0;
    bool allow = false;
    Application->SetActionUpdate(&action, [&](QAction* a) {
        ++updates;
        a->setEnabled(allow);
    });
    allow = true;
    ASSERT_TRUE(WaitFor([&] { return updates > 0; }));
    EXPECT_TRUE(action.isEnabled());
    allow = false;
    int before = updates;
    ASSERT_TRUE(WaitFor([&] { return updates > before; }));
    EXPECT_FALSE(action.isEnabled());
    Application->SetActionUpdate(&action, nullptr);
    before = updates;
    RunLoop(300);
    EXPECT_EQ(updates, before) << "a removed handler runs no more";
}

TEST_F(ApplicationTest, ActionsOfAMenuUpdateBeforeItShows) {
    QWidget owner;
    QMenu menu(&owner);
    QAction* inMenu = menu.addAction(QStringLiteral("In the menu"));
    QAction other(QStringLiteral("Elsewhere"));
    int menuUpdates = 0;
    bool enabled = false;
    Application->SetActionUpdate(inMenu, [&](QAction* a) {
        ++menuUpdates;
        a->setEnabled(enabled);
    });
    enabled = true;
    inMenu->setEnabled(false);
    menu.popup(QPoint(10, 10));
    // The update ran as the menu was shown, before any idle time.
    EXPECT_GE(menuUpdates, 1);
    EXPECT_TRUE(inMenu->isEnabled());
    menu.hide();
    Application->SetActionUpdate(inMenu, nullptr);
}

TEST_F(ApplicationTest, ADestroyedActionLeavesTheUpdateList) {
    int updates = 0;
    {
        QAction action(QStringLiteral("Short-lived"));
        Application->SetActionUpdate(&action, [&](QAction*) { ++updates; });
    }
    Application->UpdateActions(); // would touch the dead action if it were still listed
    EXPECT_EQ(updates, 0);
}

// ---------------------------------------------------------------------------------------------
// Screen and capture

TEST_F(ApplicationTest, ScreenListsTopLevelFormsButNotMenus) {
    QWidget form;
    form.setObjectName(QStringLiteral("SomeForm"));
    QMenu popup;
    bool found = false;
    for (int i = 0; i < Screen->GetFormCount(); ++i) {
        QWidget* f = Screen->GetForm(i);
        ASSERT_NE(f, nullptr);
        EXPECT_FALSE(qobject_cast<QMenu*>(f));
        if (f == &form) found = true;
    }
    EXPECT_TRUE(found);
    EXPECT_EQ(Screen->GetForm(Screen->GetFormCount()), nullptr);
    EXPECT_GT(Screen->GetWidth(), 0);
    EXPECT_GT(Screen->GetHeight(), 0);
}

TEST_F(ApplicationTest, CursorIsTheApplicationsOverrideCursor) {
    Screen->SetCursor(crHourGlass);
    EXPECT_EQ(Screen->GetCursor(), crHourGlass);
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    Screen->SetCursor(crDefault);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

class TFormChangeSink : public rtl::TObject {
public:
    void Changed(rtl::TObject*) { ++count; }
    int count = 0;
};

TEST_F(ApplicationTest, ActiveFormChangeFiresWhenAnotherFormIsActivated) {
    TFormChangeSink sink;
    QWidget a, b;
    a.setWindowTitle(QStringLiteral("First"));
    b.setWindowTitle(QStringLiteral("Second"));
    a.show();
    b.show();
    a.activateWindow();
    ASSERT_TRUE(WaitFor([&] { return QApplication::activeWindow() == &a; }));
    Screen->SetOnActiveFormChange(rtl::TNotifyEvent::Of<&TFormChangeSink::Changed>(&sink));
    b.activateWindow();
    ASSERT_TRUE(WaitFor([&] { return sink.count > 0; }));
    EXPECT_EQ(Screen->GetActiveForm(), &b);
    EXPECT_EQ(zelvane::GetActiveForm("second"), &b) << "the caption is compared without case";
    EXPECT_EQ(zelvane::GetActiveForm("First"), nullptr);
    Screen->SetOnActiveFormChange(nullptr);
}

TEST_F(ApplicationTest, CaptureIsTheMouseGrabberAndCancelModeReleasesIt) {
    QWidget w;
    w.show();
    EXPECT_EQ(GetCapture(), nullptr);
    w.grabMouse();
    EXPECT_EQ(GetCapture(), &w);
    SendMessage(&w, WM_CANCELMODE, 0, 0);
    EXPECT_EQ(GetCapture(), nullptr);
}

// ---------------------------------------------------------------------------------------------
// CrtlUtils

class TCountingWidget : public QWidget {
public:
    using QWidget::QWidget;
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++paints; }
};

TEST_F(ApplicationTest, RepaintControlPaintsNowOrLaterAndReachesChildrenOnRequest) {
    TCountingWidget parent;
    auto* child = new TCountingWidget(&parent);
    child->setGeometry(0, 0, 20, 20);
    parent.resize(50, 50);
    parent.show();
    QApplication::processEvents();
    parent.paints = child->paints = 0;

    zelvane::RepaintControl(&parent, {zelvane::rfUpdateNow});
    EXPECT_EQ(parent.paints, 1) << "painted before returning";

    parent.paints = child->paints = 0;
    zelvane::RepaintControl(&parent, {});
    EXPECT_EQ(parent.paints, 0) << "painting waits for the event loop";
    ASSERT_TRUE(WaitFor([&] { return parent.paints > 0; }));

    // With rfAllChildren every child paints, wherever it lies.
    child->move(60, 60);
    parent.resize(100, 100);
    QApplication::processEvents();
    auto* other = new TCountingWidget(&parent);
    other->setGeometry(70, 0, 20, 20);
    other->show();
    QApplication::processEvents();
    parent.paints = child->paints = other->paints = 0;
    zelvane::RepaintControl(&parent, {zelvane::rfAllChildren, zelvane::rfUpdateNow});
    EXPECT_GE(child->paints, 1);
    EXPECT_GE(other->paints, 1);
    zelvane::RepaintControl(nullptr, {zelvane::rfUpdateNow}); // nothing to do, no crash
}

TEST_F(ApplicationTest, BeginAndEndUpdateControlSwitchPaintingOffAndOn) {
    QWidget w;
    zelvane::BeginUpdateControl(&w);
    EXPECT_FALSE(w.updatesEnabled());
    zelvane::EndUpdateControl(&w);
    EXPECT_TRUE(w.updatesEnabled());
    SendMessage(&w, WM_SETREDRAW, 0, 0);
    EXPECT_FALSE(w.updatesEnabled()) << "the same through the message";
    SendMessage(&w, WM_SETREDRAW, 1, 0);
    EXPECT_TRUE(w.updatesEnabled());
}

class TFormA : public QWidget {
    Q_OBJECT
};
class TFormB : public TFormA {
    Q_OBJECT
};

TEST_F(ApplicationTest, FindFormByClassWantsTheExactClass) {
    EXPECT_EQ(zelvane::FindFormByClass<TFormA>(), nullptr);
    TFormB b;
    EXPECT_EQ(zelvane::FindFormByClass<TFormA>(), nullptr) << "a subclass is not the class";
    EXPECT_EQ(zelvane::FindFormByClass<TFormB>(), &b);
    TFormA a;
    EXPECT_EQ(zelvane::FindFormByClass<TFormA>(), &a);
}

TEST_F(ApplicationTest, ShowFormByClassShowsAndRestoresTheForm) {
    EXPECT_EQ(zelvane::ShowFormByClass<TFormB>(), nullptr);
    TFormB b;
    EXPECT_FALSE(b.isVisible());
    EXPECT_EQ(zelvane::ShowFormByClass<TFormB>(), &b);
    EXPECT_TRUE(b.isVisible());
    b.showMinimized();
    zelvane::ShowFormByClass<TFormB>();
    EXPECT_FALSE(b.isMinimized());
}

} // namespace

#include "ApplicationTest.moc"
