// The application and screen services that the add-in sees: the exception hook, hidden message
// windows with posted messages, the action update, the screen's forms and cursor, and the active
// form by caption.
#include "host/CrtlUtils.h"
#include "tests/workbench_gui/Fixture.h"

#include <QAction>
#include <QMenu>

#include <stdexcept>

using namespace wbtest;

namespace {

// A handler object for the exception hook: "Class: message" for each exception, and its sender.
class TExceptionSink : public rtl::TObject {
public:
    void OnException(rtl::TObject* sender, rtl::Exception* e) {
        senders.push_back(sender);
        seen.push_back(e->ClassName() + ": " + e->Message());
    }
    std::vector<rtl::TObject*> senders;
    std::vector<std::string> seen;
};

using Strings = std::vector<std::string>;

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
    // Runs raise and hands what it throws to the application, as a form's event would.
    template <class F> static void Handle(F raise, rtl::TObject* sender = nullptr) {
        try {
            raise();
        } catch (...) {
            Application->HandleException(sender);
        }
    }
    TExceptionSink sink;
    Strings shown;
};

// ---------------------------------------------------------------------------------------------
// Exceptions

TEST_F(ApplicationTest, HandleExceptionGoesToTheHookWithSenderAndAbortIsSilent) {
    HookSink();
    TExceptionSink sender;
    Handle([] { throw rtl::EConvertError("'x' is not a valid integer value"); }, &sender);
    Handle([] { throw rtl::EAbort(""); });
    Handle([] { throw std::runtime_error("plain C++ failure"); });
    Handle([] { throw 42; });
    Application->HandleException(nullptr); // outside a handler: nothing to handle
    EXPECT_EQ(sink.seen, (Strings{"EConvertError: 'x' is not a valid integer value",
                                  "Exception: plain C++ failure",
                                  "Exception: An exception of an unknown type was raised"}));
    EXPECT_EQ(sink.senders.front(), &sender);
    EXPECT_TRUE(shown.empty()) << "a hook replaces the error box";
}

TEST_F(ApplicationTest, WithoutAHookTheErrorBoxShowsTheMessageWithAFullStop) {
    Handle([] { throw rtl::Exception("Disk full"); });
    Handle([] { throw std::runtime_error("Ends with a stop."); });
    Handle([] { throw 42; });
    EXPECT_EQ(shown, (Strings{"Disk full.", "Ends with a stop.",
                              "An exception of an unknown type was raised."}));
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
    EXPECT_EQ(sink.seen, Strings(2, "EInvalidOperation: raised in an event handler"));
}

// ---------------------------------------------------------------------------------------------
// Hidden windows and posted messages

TEST_F(ApplicationTest, PostedMessagesArriveLaterInOrderWithTheirParameters) {
    HookSink();
    Strings got;
    HWND wnd = AllocateHWnd([&](TMessage& m) {
        got.push_back(std::to_string(m.Msg) + " " + std::to_string(m.WParam) + " " +
                      std::to_string(m.LParam));
        if (m.Msg == 0xC006) throw rtl::Exception("procedure failed");
    });
    ASSERT_NE(wnd, nullptr);
    EXPECT_TRUE(PostMessage(wnd, 0xC003, 0, 0));
    EXPECT_TRUE(PostMessage(wnd, 0xC006, 0, 0));
    EXPECT_TRUE(PostMessage(wnd, 0xC001, 7, -3));
    EXPECT_TRUE(got.empty()) << "a posted message waits for the event loop";
    // A window procedure that raises is reported, and the next message still runs.
    ASSERT_TRUE(WaitFor([&] { return got.size() == 3; }));
    EXPECT_EQ(got, (Strings{"49155 0 0", "49158 0 0", "49153 7 -3"}));
    EXPECT_EQ(sink.seen, Strings{"Exception: procedure failed"});
    // ProcessMessages delivers what was posted before it returns.
    PostMessage(wnd, 0xC020, 0, 0);
    Application->ProcessMessages();
    EXPECT_EQ(got.back(), "49184 0 0");
    DeallocateHWnd(wnd);
}

TEST_F(ApplicationTest, SendMessageRunsAtOnceAndADeallocatedWindowGetsNothingMore) {
    int count = 0;
    HWND wnd = AllocateHWnd([&](TMessage& m) {
        ++count;
        m.Result = static_cast<intptr_t>(m.WParam) * 2;
    });
    EXPECT_EQ(SendMessage(wnd, 0xC01E, 21, 0), 42);
    PostMessage(wnd, 0xC002, 0, 0);
    DeallocateHWnd(wnd);
    EXPECT_EQ(SendMessage(wnd, 0xC01E, 21, 0), 0);
    EXPECT_FALSE(PostMessage(wnd, 0xC002, 0, 0));
    EXPECT_FALSE(PostMessage(nullptr, 0xC002, 0, 0));
    QApplication::processEvents();
    QApplication::sendPostedEvents();
    EXPECT_EQ(count, 1);
}

// ---------------------------------------------------------------------------------------------
// Action update

TEST_F(ApplicationTest, ActionsOfAMenuUpdateBeforeItShows) {
    QWidget owner;
    QMenu menu(&owner);
    QAction* inMenu = menu.addAction(QStringLiteral("In the menu"));
    Application->SetActionUpdate(inMenu, [&](QAction* a) { a->setEnabled(true); });
    inMenu->setEnabled(false);
    menu.popup(QPoint(10, 10));
    EXPECT_TRUE(inMenu->isEnabled()) << "the update ran as the menu was shown, before idle time";
    menu.hide();
    Application->SetActionUpdate(inMenu, nullptr);
}

// ---------------------------------------------------------------------------------------------
// Screen and active form

TEST_F(ApplicationTest, ScreenListsTopLevelFormsButNotMenusAndItsCursorIsTheOverride) {
    QWidget form;
    QMenu popup;
    QList<QWidget*> forms;
    for (int i = 0; i < Screen->GetFormCount(); ++i)
        forms << Screen->GetForm(i);
    EXPECT_TRUE(forms.contains(&form));
    EXPECT_FALSE(forms.contains(&popup));
    EXPECT_EQ(Screen->GetForm(Screen->GetFormCount()), nullptr);
    EXPECT_GT(Screen->GetWidth() * Screen->GetHeight(), 0);

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
}

} // namespace
