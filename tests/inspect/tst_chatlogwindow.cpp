#include "inspect/chatlogwindow.h"
#include "tests/support/entries.h"
#include "tests/support/messagelog.h"
#include "tests/support/modal.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPointer>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

using Close = void (*)(QDialog *);

static const QPlainTextEdit *viewOf(const QDialog *window)
{
    return window->findChild<QPlainTextEdit *>();
}

/// Personas A and B and one question, not answered.
static bool addOpenPairs(Stage &stage)
{
    return enter(stage, PersonaEntered{.uuid = u"a"_s, .name = u"A"_s, .attributes = u"Speaks as A."_s},
                 PersonaEntered{.uuid = u"b"_s, .name = u"B"_s, .attributes = u"Speaks as B."_s},
                 QuestionEntered{.prompt = u"How are you?"_s});
}

/// The entry of the messages that put the question to a persona.
static QString messagesEntry(const QString &name)
{
    return u"-> [{\"content\":\"Act as the following persona.\\nSpeaks as %1.\",\"role\":\"system\"},"
           "{\"content\":\"How are you?\",\"role\":\"user\"}]"_s.arg(name);
}

static QString testModeLog()
{
    return messagesEntry(u"A"_s) + u"\n<- test response\n"_s + messagesEntry(u"B"_s) + u"\n<- test response"_s;
}

static QString keylessLog()
{
    const auto failure = u"\n! OPENAI_API_KEY not set"_s;
    return messagesEntry(u"A"_s) + failure + u'\n' + messagesEntry(u"B"_s) + failure;
}

/// Runs the survey without a key, which fails at each of the two pairs.
static bool runWithoutKey(Stage &stage)
{
    const MessageLog messages;
    return stage.call("runSurvey") && messages.warnings() == QStringList(2, u"survey error: OPENAI_API_KEY not set"_s);
}

static void deleteClosed()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

class TestChatLogWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void it_shows_a_view_above_a_close_button()
    {
        const ChatLogWindow window;
        QCOMPARE(window.windowTitle(), u"Chat Log"_s);
        QCOMPARE(window.size(), QSize(500, 400));
        QCOMPARE(window.windowFlags(), QDialog().windowFlags());
        QVERIFY(!window.isModal());
        const auto *layout = qobject_cast<QVBoxLayout *>(window.layout());
        QVERIFY(layout != nullptr);
        QCOMPARE(layout->count(), 2);
        QCOMPARE(layout->itemAt(0)->widget(), viewOf(&window));
        const auto *buttons = qobject_cast<QDialogButtonBox *>(layout->itemAt(1)->widget());
        QVERIFY(buttons != nullptr);
        QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Close);
        QCOMPARE(buttons->buttons().size(), 1);
    }

    void it_adds_nothing_to_the_interface_of_a_dialog()
    {
        const QMetaObject &own = ChatLogWindow::staticMetaObject;
        QCOMPARE(own.superClass(), &QDialog::staticMetaObject);
        QCOMPARE(own.methodCount(), QDialog::staticMetaObject.methodCount());
        QCOMPARE(own.propertyCount(), QDialog::staticMetaObject.propertyCount());
    }

    void entries_are_kept_as_they_are_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QString>("text");
        QTest::newRow("one") << QStringList{u"-> [1]"_s} << u"-> [1]"_s;
        QTest::newRow("each on a line of its own") << QStringList{u"a"_s, u"b"_s, u"c"_s} << u"a\nb\nc"_s;
        QTest::newRow("line feeds") << QStringList{u"<- a\n  b\n\nc"_s, u"d"_s} << u"<- a\n  b\n\nc\nd"_s;
        QTest::newRow("line feed at the end") << QStringList{u"a\n"_s, u"b"_s} << u"a\n\nb"_s;
        QTest::newRow("empty") << QStringList{u"a"_s, u""_s, u"b"_s} << u"a\n\nb"_s;
        QTest::newRow("markup") << QStringList{u"<b>a</b> &amp;"_s} << u"<b>a</b> &amp;"_s;
        QTest::newRow("beyond ASCII") << QStringList{u"<- naïve 😀\tשלום"_s} << u"<- naïve 😀\tשלום"_s;
    }
    void entries_are_kept_as_they_are()
    {
        QFETCH(const QStringList, entries);
        QFETCH(const QString, text);
        ChatLogWindow window;
        for (const QString &entry : entries)
            window.appendLine(entry);
        QCOMPARE(viewOf(&window)->toPlainText(), text);
    }

    void no_entry_is_ever_dropped()
    {
        ChatLogWindow window;
        QStringList entries;
        for (int index = 0; index < 3000; ++index)
            entries.append(u"entry %1"_s.arg(index));
        for (const QString &entry : std::as_const(entries))
            window.appendLine(entry);
        QCOMPARE(viewOf(&window)->toPlainText().split(u'\n'), entries);
    }

    void the_text_can_be_copied_but_not_edited()
    {
        ChatLogWindow window;
        window.appendLine(u"one\ntwo"_s);
        window.show();
        auto *view = window.findChild<QPlainTextEdit *>();
        QVERIFY(view->isReadOnly());
        QTest::keyClicks(view, u"typed"_s);
        QTest::keyClick(view, Qt::Key_Delete);
        QCOMPARE(view->toPlainText(), u"one\ntwo"_s);

        QGuiApplication::clipboard()->clear();
        QTest::keySequence(view, QKeySequence::SelectAll);
        QTest::keySequence(view, QKeySequence::Copy);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"one\ntwo"_s);
        QTest::keySequence(view, QKeySequence::Cut);
        QTest::keySequence(view, QKeySequence::Paste);
        QCOMPARE(view->toPlainText(), u"one\ntwo"_s);
    }

    void a_window_of_its_own_outlives_being_closed()
    {
        const QPointer<ChatLogWindow> window(new ChatLogWindow);
        const QSignalSpy rejected(window, &QDialog::rejected);
        window->show();
        QVERIFY(pressButton(window, u"Close"_s));
        deleteClosed();
        QVERIFY(window);
        QVERIFY(!window->isVisible());
        QCOMPARE(rejected.size(), 1);
        delete window;
    }

    void a_run_shows_the_window_beside_the_main_window()
    {
        Stage stage;
        QVERIFY(logWindow(stage) == nullptr);
        QVERIFY(stage.call("runSurvey"));
        const ChatLogWindow *log = logWindow(stage);
        QVERIFY(log != nullptr);
        QCOMPARE(log->parentWidget(), stage.window());
        QVERIFY(log->isVisible());
        QVERIFY(!log->isModal());
        QVERIFY(log->testAttribute(Qt::WA_DeleteOnClose));
        QCOMPARE(logText(stage), QString());
    }

    void a_run_in_test_mode_logs_the_messages_and_the_answer()
    {
        Stage stage;
        QVERIFY(addOpenPairs(stage));
        Stage::setTestMode(true);
        QVERIFY(stage.call("runSurvey"));
        QCOMPARE(logText(stage), testModeLog());
    }

    void a_second_run_appends_to_the_window_and_shows_it()
    {
        Stage stage;
        QVERIFY(addOpenPairs(stage));
        QVERIFY(runWithoutKey(stage));
        ChatLogWindow *log = logWindow(stage);
        QCOMPARE(logText(stage), keylessLog());
        log->hide();
        Stage::setTestMode(true);
        QVERIFY(stage.call("runSurvey"));
        QCOMPARE(stage.window()->findChildren<ChatLogWindow *>(), QList{log});
        QVERIFY(log->isVisible());
        const QString both = keylessLog() + u'\n' + testModeLog();
        QCOMPARE(logText(stage), both);

        // No pair is left.
        QVERIFY(stage.call("runSurvey"));
        QCOMPARE(logText(stage), both);
    }

    void a_closed_window_is_gone_and_the_next_run_starts_empty_data()
    {
        QTest::addColumn<Close>("close");
        QTest::newRow("by the button") << Close([](QDialog *window) { QVERIFY(pressButton(window, u"Close"_s)); });
        QTest::newRow("by the window manager") << Close([](QDialog *window) { window->close(); });
        QTest::newRow("by Escape") << Close([](QDialog *window) { QTest::keyClick(window, Qt::Key_Escape); });
    }
    void a_closed_window_is_gone_and_the_next_run_starts_empty()
    {
        QFETCH(const Close, close);
        Stage stage;
        QVERIFY(addOpenPairs(stage));
        QVERIFY(runWithoutKey(stage));
        const QPointer<ChatLogWindow> first(logWindow(stage));
        close(first);
        QVERIFY(!first->isVisible());
        deleteClosed();
        QVERIFY(!first);
        QVERIFY(logWindow(stage) == nullptr);

        Stage::setTestMode(true);
        QVERIFY(stage.call("runSurvey"));
        QVERIFY(logWindow(stage)->isVisible());
        QCOMPARE(logText(stage), testModeLog());
    }

    void closing_in_mid_run_is_noted_and_the_run_goes_on()
    {
        SurveyStage stage;
        QVERIFY(addOpenPairs(stage));
        Stage::setSetting(u"openai/api_key"_s, u"secret-key"_s);
        stage.endpoint.queue(standin::Reply::content(u"well"_s).held());
        const MessageLog messages;
        stage.startRun();
        QVERIFY(stage.arrived(1));
        QVERIFY(logText(stage).startsWith(messagesEntry(u"A"_s)));
        QVERIFY(!logText(stage).contains("secret-key"_L1));

        QVERIFY(pressButton(logWindow(stage), u"Close"_s));
        deleteClosed();
        QCOMPARE(messages.infos(), QStringList{u"ChatLogWindow destroyed; logging disabled"_s});

        stage.endpoint.release();
        QVERIFY(stage.runEnded());
        QCOMPARE(cells(resultsTable(stage)),
                 (QList<QStringList>{{u"A"_s, u"well"_s, QString()}, {u"B"_s, u"ok"_s, QString()}}));
        QVERIFY(logWindow(stage) == nullptr);
        QCOMPARE(messages.infos().size(), 1);
        QCOMPARE(messages.warnings(), QStringList());
    }

    void closing_after_the_run_is_not_noted()
    {
        Stage stage;
        QVERIFY(stage.call("runSurvey"));
        deleteClosed();
        const MessageLog messages;
        logWindow(stage)->close();
        deleteClosed();
        QVERIFY(logWindow(stage) == nullptr);
        QCOMPARE(messages.infos(), QStringList());
    }

    void it_goes_with_the_main_window()
    {
        Stage stage;
        QVERIFY(stage.call("runSurvey"));
        deleteClosed();
        const QPointer<ChatLogWindow> log(logWindow(stage));
        const MessageLog messages;
        stage.closeWindow();
        QVERIFY(!log);
        QCOMPARE(messages.infos(), QStringList());
    }
};

ORRINET_TEST(TestChatLogWindow)
#include "tst_chatlogwindow.moc"
