// Steps on the window as such and on what is in front of the project.

#include "tests/app/eventdriver.h"
#include "tests/app/eventviews.h"
#include "tests/support/modal.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QEventLoop>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>

using namespace Qt::StringLiterals;

void EventDriver::performOnWindow(const Step &step)
{
    switch (step.act) {
    case Act::TypePreamble:
    case Act::TypePostamble:
        typeText(step, step.act == Act::TypePreamble);
        return;
    case Act::ShowConversation:
        showConversation(step);
        return;
    case Act::Preferences:
        preferences(step);
        return;
    case Act::About:
        about(step);
        return;
    case Act::AskToClose:
    case Act::CloseWindow:
        closeWindow(step);
        return;
    case Act::ClickCell:
        clickCell(step);
        return;
    case Act::PressKey:
        pressKey(step);
        return;
    case Act::Refresh:
        refresh(step);
        return;
    default:
        break;
    }
    quietly([&] {
        if (step.act == Act::ToggleColumn)
            stage.action(step.which % 2 == 0 ? u"Show Created"_s : u"Show Modified"_s)->trigger();
        else if (step.act == Act::ChangeTab)
            stage.window()->findChild<QTabWidget *>()->setCurrentIndex(step.which % 5);
        else if (step.act == Act::Resize)
            stage.window()->resize(500 + (step.which % 500), 400 + (step.how % 400));
        else if (step.act == Act::Grab)
            stage.window()->grab();
        else if (step.act == Act::Settle)
            settle();
    });
    checks.after({});
}

void EventDriver::typeText(const Step &step, bool preamble)
{
    QPlainTextEdit *edit = preamble ? preambleEdit(stage) : postambleEdit(stage);
    const QVariant stored = stage.value(u"SELECT postamble FROM boilerplate"_s);
    const QSignalSpy changes(edit, &QPlainTextEdit::textChanged);
    showTab(u"Boilerplate"_s);
    quietly([&] {
        if (step.how % 3 == 0)
            edit->selectAll();
        if (step.how % 2 == 0)
            QTest::keyClick(edit, Qt::Key_Backspace);
        else
            QTest::keyClicks(edit, QString(1 + (step.which % 2), u'a'));
    });
    // Also where the same was typed over it.
    if (changes.isEmpty()) {
        checks.after({});
        return;
    }
    expected.dirty = true;
    // Each slot takes its own text from its edit, and the other one from where it is right while a project is opened.
    const QVariantList wanted{preambleEdit(stage)->toPlainText(),
                              preamble ? stored.toString() : postambleEdit(stage)->toPlainText()};
    if (texts(stage.rows(u"SELECT preamble,IFNULL(postamble,'') FROM boilerplate"_s)) != texts({wanted}))
        checks.complain(u"the boilerplate is not one row with what was typed"_s);
    checks.after({.tables = {u"boilerplate"_s}});
}

void EventDriver::showConversation(const Step &step)
{
    const ConversationBox box(stage);
    showTab(u"Boilerplate"_s);
    quietly([&] {
        if (box.persona->count() > 0)
            box.persona->setCurrentIndex(step.which % box.persona->count());
        if (box.question->count() > 0)
            box.question->setCurrentIndex(step.how % box.question->count());
        box.showButton->click();
    });
    if (box.text() != conversationText(stage))
        checks.complain(u"the conversation:\n%1\nand not\n%2"_s.arg(box.text(), conversationText(stage)));
    checks.after({});
}

/// Seldom, and not for long, there is no key.
void EventDriver::preferences(const Step &step)
{
    const QString key = step.which % 10 == 0 ? QString() : u"key %1"_s.arg(step.which);
    const bool accepts = step.how % 3 != 0;
    const QVariant before = QSettings().value(u"openai/api_key"_s);
    const Answer fill = [&](QWidget *dialog) {
        dialog->findChild<QLineEdit *>(u"apiKeyEdit"_s)->setText(key);
        if (accepts)
            pressButton(dialog, u"OK"_s);
    };
    answering({after(step, fill)}, [this] { stage.action(u"Preferences"_s)->trigger(); });
    if (QSettings().value(u"openai/api_key"_s) != (accepts ? QVariant(key) : before))
        checks.complain(u"the key is not the one entered"_s);
    checks.after({});
}

void EventDriver::about(const Step &step)
{
    const Answer close = [](QWidget *box) { answerBox(box, QMessageBox::Ok); };
    if (answering({after(step, close)}, [this] { stage.action(u"About"_s)->trigger(); }) != 1)
        checks.complain(u"no box came"_s);
    checks.after({});
}

/// The question comes if there are changes. Behind a dialog the window stays, as it does where nobody leaves.
void EventDriver::closeWindow(const Step &step)
{
    const bool leaves = step.act == Act::CloseWindow && step.how % 3 == 0;
    const bool asks = expected.dirty;
    const Answer decide = [leaves](QWidget *box) { answerBox(box, leaves ? QMessageBox::Yes : QMessageBox::No); };
    bool closes = false;
    const int came = answering({after(step, decide)}, [&] {
        if (leaves) {
            closes = stage.window()->close();
            return;
        }
        // Only asked whether it would, so that it stays where it has no changes either.
        QCloseEvent event;
        QCoreApplication::sendEvent(stage.window(), &event);
        closes = event.isAccepted();
    });
    if ((came == 1) != asks || closes != (leaves || !asks))
        checks.complain(u"closing asked %1 times, with changes: %2, closed: %3"_s.arg(came).arg(asks).arg(closes));
    if (leaves && checks.complaint().isEmpty())
        replaceWindow();
    else
        checks.after({});
}

/// The program ends, with whatever goes on, and is started again.
void EventDriver::replaceWindow()
{
    watch.forget();
    stage.closeWindow();
    stalled = false;
    settle();
    QEventLoop loop;
    QObject::connect(&stage.endpoint, &standin::ChatEndpoint::connectionClosed, &loop, &QEventLoop::quit,
                     Qt::QueuedConnection);
    while (connectionsClosed < stage.endpoint.connections())
        loop.exec();
    showWindow();
}

QTableView *EventDriver::tableOf(const Step &step)
{
    static const QStringList tabs{u"Digital Twins"_s, u"Questions"_s, u"Results"_s};
    QTableView *const tables[] = {personaTable(stage), questionView(stage), resultsTable(stage)};
    showTab(tabs.at(step.which % 3));
    if (step.which % 3 == 0)
        checks.personasTouched();
    else if (step.which % 3 == 2)
        checks.gridTouched();
    return tables[step.which % 3];
}

void EventDriver::clickCell(const Step &step)
{
    QTableView *table = tableOf(step);
    const QAbstractItemModel *model = table->model();
    if (model == nullptr || model->rowCount() == 0)
        return;
    quietly([&] {
        const QModelIndex cell = model->index(step.how % model->rowCount(), step.meanwhile % model->columnCount());
        table->scrollTo(cell);
        const QPoint place = table->visualRect(cell).center();
        if (!table->isColumnHidden(cell.column()) && table->viewport()->rect().contains(place))
            QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, place);
    });
    checks.after({});
}

void EventDriver::pressKey(const Step &step)
{
    static constexpr Qt::Key keys[] = {Qt::Key_Down, Qt::Key_Up,     Qt::Key_Right,  Qt::Key_Left,
                                       Qt::Key_7,    Qt::Key_7,      Qt::Key_F2,     Qt::Key_Return,
                                       Qt::Key_Tab,  Qt::Key_Escape, Qt::Key_Delete, Qt::Key_PageDown};
    QTableView *table = tableOf(step);
    quietly([&] {
        auto *editor = table->viewport()->findChild<QLineEdit *>();
        const Qt::Key key = keys[size_t(step.how) % std::size(keys)];
        QTest::keyClick(editor != nullptr ? static_cast<QWidget *>(editor) : table, key);
        settle();
    });
    checks.after({});
}

void EventDriver::refresh(const Step &step)
{
    static constexpr std::pair<const char *, Refreshed> slots[] = {
        {"loadProject", Refreshed::Project}, {"loadQuestions", Refreshed::Questions}, {"loadResults", Refreshed::Grid}};
    const auto &[slot, refreshed] = slots[step.which % 3];
    quietly([called = slot, this] { stage.call(called); });
    // The refresh of the edits passes through the slots that note a change.
    if (refreshed == Refreshed::Project)
        expected.dirty = true;
    checks.after({.refreshed = refreshed});
}
