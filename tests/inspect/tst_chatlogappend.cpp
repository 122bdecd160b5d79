#include "inspect/chatlogwindow.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QBoxLayout>
#include <QDialogButtonBox>
#include <QMenu>
#include <QPlainTextEdit>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>

#include <memory>

using namespace Qt::StringLiterals;

/// What a reader sees of the log is what a plain view with the same entries shows.
class TestChatLogAppend : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void random_entries_look_as_in_a_plain_view();
    void entries_of_runs_look_as_in_a_plain_view();
    void the_menu_is_that_of_a_plain_view();
    void no_steps_to_undo_are_kept();
};

namespace {

/// The log and a window like it, which are used alike.
class Windows
{
public:
    Windows();

    QPlainTextEdit *log() const { return views[0]; }
    QPlainTextEdit *plain() const { return views[1]; }
    void append(const QString &entry);
    /// Calls a function for either view.
    template<typename Function>
    void use(const Function &function)
    {
        for (QPlainTextEdit *view : views)
            function(view);
    }
    void show();
    /// Scrolls, selects, resizes or hides, by chance.
    void useAtRandom(QRandomGenerator &random);
    /// What a reader would see differ, empty if nothing.
    QString difference();

private:
    QString differentBlock();

    ChatLogWindow window;
    QDialog like;
    QPlainTextEdit *views[2];
    QTextBlock compared[2];
};

} // namespace

Windows::Windows()
    : views{window.findChild<QPlainTextEdit *>(), new QPlainTextEdit}
{
    plain()->setReadOnly(true);
    auto *column = new QVBoxLayout(&like);
    column->addWidget(plain());
    column->addWidget(new QDialogButtonBox(QDialogButtonBox::Close));
    like.resize(window.size());
    // Only one of them can have the focus, which a view shows and which makes it lay out the block of its cursor.
    use([](QPlainTextEdit *view) { view->setFocusPolicy(Qt::NoFocus); });
}

void Windows::append(const QString &entry)
{
    window.appendLine(entry);
    plain()->appendPlainText(entry);
}

void Windows::show()
{
    use([](QPlainTextEdit *view) { view->window()->show(); });
    QCoreApplication::processEvents();
}

void Windows::useAtRandom(QRandomGenerator &random)
{
    static const QKeySequence keys[] = {
        Qt::Key_PageUp,       Qt::Key_PageDown,      Qt::Key_Home,  Qt::Key_End,
        Qt::Key_Up,           Qt::Key_Down,          Qt::Key_Space, Qt::SHIFT | Qt::Key_Space,
        Qt::CTRL | Qt::Key_A, Qt::CTRL | Qt::Key_End};
    const auto value = random.generate();
    const auto at = [&](const QWidget *widget) {
        return QPoint(int(value % 97) * widget->width() / 97, int(value % 89) * widget->height() / 89);
    };
    switch (random.bounded(12)) {
    case 0:
        return use([&](QPlainTextEdit *view) {
            QScrollBar *bar = view->verticalScrollBar();
            bar->setValue(int(value % uint(bar->maximum() + 1)));
        });
    case 1:
        return use([&](QPlainTextEdit *view) {
            QScrollBar *bar = view->verticalScrollBar();
            bar->setValue(bar->maximum() - int(value % 30));
        });
    case 2:
    case 3:
        return use([](QPlainTextEdit *view) { view->verticalScrollBar()->triggerAction(QScrollBar::SliderToMaximum); });
    case 4:
        return use([&](QPlainTextEdit *view) {
            QTest::mousePress(view->viewport(), Qt::LeftButton, Qt::NoModifier, at(view->viewport()));
            QTest::mouseRelease(view->viewport(), Qt::LeftButton, Qt::ShiftModifier,
                                QPoint(50, view->viewport()->height() / 2));
        });
    case 5:
        return use([&](QPlainTextEdit *view) {
            QTextCursor cursor = view->textCursor();
            cursor.setPosition(int(value % uint(view->document()->characterCount())));
            cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor, int(value % 4));
            view->setTextCursor(cursor);
        });
    case 6:
        return use([](QPlainTextEdit *view) { view->moveCursor(QTextCursor::End); });
    case 7:
        if (value % 4 == 0)
            use([&](QPlainTextEdit *view) { view->window()->resize(300 + int(value % 400), 200 + int(value % 300)); });
        return;
    case 8:
        return use([](QPlainTextEdit *view) { view->window()->hide(); });
    default:
        return use([&](QPlainTextEdit *view) { QTest::keySequence(view, keys[value % std::size(keys)]); });
    }
}

/// Compares the blocks since the last one that was compared.
QString Windows::differentBlock()
{
    for (int index = 0; index < 2; ++index)
        compared[index] = compared[index].isValid() ? compared[index] : views[index]->document()->begin();
    for (;;) {
        const QTextBlock &own = compared[0];
        const QTextBlock &other = compared[1];
        if (own.text() != other.text() || own.blockFormat() != other.blockFormat() ||
            own.charFormat() != other.charFormat() || own.layout()->formats() != other.layout()->formats())
            return u"block %1"_s.arg(own.blockNumber());
        if (!own.next().isValid() || !other.next().isValid())
            return own.next().isValid() == other.next().isValid() ? QString() : u"last block"_s;
        compared[0] = own.next();
        compared[1] = other.next();
    }
}

static QList<int> stateOf(const QScrollBar *bar)
{
    return {bar->value(), bar->minimum(), bar->maximum(), bar->pageStep(), bar->singleStep(), int(bar->isVisible())};
}

static QString listed(const QList<int> &numbers)
{
    QStringList texts;
    for (const int number : numbers)
        texts.append(QString::number(number));
    return texts.join(u' ');
}

QString Windows::difference()
{
    if (log()->toPlainText() != plain()->toPlainText())
        return u"text"_s;
    if (log()->blockCount() != plain()->blockCount())
        return u"number of blocks"_s;
    if (stateOf(log()->verticalScrollBar()) != stateOf(plain()->verticalScrollBar()))
        return u"vertical scroll bar: "_s + listed(stateOf(log()->verticalScrollBar())) + u" for "_s +
               listed(stateOf(plain()->verticalScrollBar()));
    if (stateOf(log()->horizontalScrollBar()) != stateOf(plain()->horizontalScrollBar()))
        return u"horizontal scroll bar"_s;
    const QTextCursor own = log()->textCursor();
    const QTextCursor other = plain()->textCursor();
    if (own.position() != other.position() || own.anchor() != other.anchor())
        return u"selection"_s;
    if (log()->grab().toImage() != plain()->grab().toImage())
        return u"picture"_s;
    return differentBlock();
}

static QString randomLine(QRandomGenerator &random, int most)
{
    static const QString pieces[] = {u"word "_s, u"a"_s,  u"{\"content\":"_s, u"\t"_s,    u"שלום "_s,
                                     u"مرحبا"_s, u"😀"_s, u"naïve"_s,         u"     "_s, u"\u2028"_s,
                                     u"日本"_s,  u"--"_s, QString(QChar())};
    QString line;
    while (line.size() < most)
        line += pieces[random.bounded(4) > 0 ? random.bounded(3) : random.bounded(int(std::size(pieces)))];
    return line;
}

static QString randomEntry(QRandomGenerator &random)
{
    static const QString breaks[] = {u"\n"_s, u"\u2029"_s, u"\r\n"_s, u"\r"_s, u"\n\n"_s};
    const int kind = random.bounded(90);
    if (kind == 0)
        return randomLine(random, random.bounded(5000));
    if (kind < 4)
        return {};
    if (kind < 22 || kind >= 40)
        return randomLine(random, random.bounded(80));
    QString entry;
    for (int lines = kind < 24 ? random.bounded(80) : random.bounded(6); lines >= 0; --lines)
        entry += QString(random.bounded(8), u' ') + randomLine(random, random.bounded(50)) +
                 breaks[random.bounded(3) > 0 ? 0 : random.bounded(int(std::size(breaks)))];
    return random.bounded(2) == 0 ? entry : entry.chopped(1);
}

void TestChatLogAppend::random_entries_look_as_in_a_plain_view()
{
    const int steps = qEnvironmentVariableIsSet("ORRINET_LONG") ? 20'000 : 2'000;
    const quint32 seed = testSeed();
    QRandomGenerator random(seed);
    Windows windows;
    windows.show();
    for (int step = 0; step < steps; ++step) {
        windows.append(randomEntry(random));
        if (step < 200 || step % 50 == 0 || step == steps - 1) {
            QString different = windows.difference();
            if (different.isEmpty()) {
                windows.useAtRandom(random);
                different = windows.difference();
            }
            QVERIFY2(different.isEmpty(), qPrintable(u"seed %1, step %2: %3"_s.arg(seed).arg(step).arg(different)));
        }
        if (random.bounded(16) == 0)
            windows.show();
    }
}

/// What a run logs of one answer: a very long line, an indented object, and two replies.
static QStringList entriesOfAnswer(QRandomGenerator &random)
{
    QString request = u"-> {\n"_s;
    for (int line = 0; line < 70; ++line)
        request += u"    \"field\": \""_s + QString(random.bounded(90), u'x') + u"\",\n"_s;
    return {u"-> ["_s + u"{\"content\":\"How are you?\",\"role\":\"user\"},"_s.repeated(60), request + u"}\n"_s,
            u"<- {\"choices\":[]}"_s.repeated(10), u"<- very well"_s};
}

void TestChatLogAppend::entries_of_runs_look_as_in_a_plain_view()
{
    const quint32 seed = testSeed();
    QRandomGenerator random(seed);
    Windows windows;
    windows.show();
    for (int answer = 0; answer < 40; ++answer) {
        const QStringList entries = entriesOfAnswer(random);
        for (const QString &entry : entries) {
            windows.append(entry);
            const QString different = windows.difference();
            QVERIFY2(different.isEmpty(), qPrintable(u"seed %1, answer %2: %3"_s.arg(seed).arg(answer).arg(different)));
        }
        QCoreApplication::processEvents();
        const QScrollBar *bar = windows.log()->verticalScrollBar();
        QCOMPARE(bar->value(), bar->maximum());
    }
}

void TestChatLogAppend::the_menu_is_that_of_a_plain_view()
{
    const auto menuOf = [](QPlainTextEdit *view) {
        const std::unique_ptr<QMenu> menu(view->createStandardContextMenu());
        QStringList entries;
        for (const QAction *action : menu->actions())
            entries.append(action->text() + (action->isEnabled() ? u" on"_s : u" off"_s));
        return entries;
    };
    Windows windows;
    windows.append(u"one"_s);
    QVERIFY(!menuOf(windows.log()).isEmpty());
    QCOMPARE(menuOf(windows.log()), menuOf(windows.plain()));
    windows.use([](QPlainTextEdit *view) { view->selectAll(); });
    QCOMPARE(menuOf(windows.log()), menuOf(windows.plain()));
}

void TestChatLogAppend::no_steps_to_undo_are_kept()
{
    Windows windows;
    windows.append(u"one\ntwo"_s);
    windows.append(u"three"_s);
    QCOMPARE(windows.log()->document()->availableUndoSteps(), 0);
}

ORRINET_TEST(TestChatLogAppend)
#include "tst_chatlogappend.moc"
