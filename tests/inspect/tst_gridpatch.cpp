// A grid into which new answers are entered beside one that is rebuilt at each refresh: whatever happens to the
// database and to the grids, nobody can tell them apart.

#include "tests/support/entries.h"
#include "tests/support/gridtwin.h"
#include "tests/support/messagelog.h"
#include "tests/support/seed.h"
#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QHeaderView>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSqlError>
#include <QStyle>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

static constexpr int steps = 200;

static int wantedHistories()
{
    static constexpr int few = 20;
#if defined(__SANITIZE_ADDRESS__)
    static constexpr int usual = few;
#else
    static constexpr int usual = 40;
#endif
    if (qEnvironmentVariableIsSet("ORRINET_LONG"))
        return 5000;
    return qEnvironmentVariableIsSet("ORRINET_SHORT") ? few : usual;
}

/// Handles events until none is left.
static void settle()
{
    // A view complains of an editor that has the focus still when it goes after its cell.
    const MessageLog messages;
    QAbstractEventDispatcher *events = QAbstractEventDispatcher::instance();
    while (events->processEvents(QEventLoop::AllEvents)) {
    }
    // Closed editors go when the program's own loop comes round.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (const QString &warning : messages.warnings()) {
        if (!warning.endsWith("called with an editor that does not belong to this view"_L1))
            QTest::qFail(qUtf8Printable(warning), __FILE__, __LINE__);
    }
}

/// One history of a project and of the two grids that show it.
class History
{
public:
    History(Stage &onStage, quint32 seed)
        : stage(onStage)
        , random(seed)
        , calm(seed % 2 == 0)
        , twin(stage.window())
    {
        for (int persona = random.bounded(6); persona >= 0; --persona)
            addPersona();
        for (int question = random.bounded(4); question >= 0; --question)
            addQuestion();
        stage.window()->resize(760, 620);
        stage.window()->show();
        twin.resize(760, 620);
        twin.show();
        // Painting takes most of the time, and what is painted seldom differs from what is laid out.
        const bool painted = seed % 16 == 0;
        forBoth([painted](QTableWidget *table) {
            tabsOf(table)->setCurrentIndex(4);
            table->window()->setUpdatesEnabled(painted);
        });
        settle();
    }

    /// What was done so far, for the report of a difference.
    QStringList done;
    int patched = 0;
    int refreshes = 0;

    /// One thing happens; an empty text, or how the grids differ.
    QString step()
    {
        const int chance = random.bounded(calm ? 66 : 100);
        if (chance < 34)
            return refresh();
        if (chance < 62)
            addAnswers();
        else if (chance < (calm ? 64 : 80))
            changeDatabase();
        else
            touchGrids();
        return {};
    }

    QString refresh()
    {
        done << u"refresh"_s;
        const QSignalSpy reset(grid()->model(), &QAbstractItemModel::modelReset);
        stage.call("loadResults");
        patched += reset.isEmpty() ? 1 : 0;
        if (reset.isEmpty())
            done.last() = u"refresh, patched"_s;
        twin.refresh(stage.database());
        settle();
        const bool withPicture = ++refreshes % 6 == 0;
        return differenceOf(grid(), twin.table(), withPicture);
    }

private:
    QTableWidget *grid() { return resultsTable(stage); }

    static QTabWidget *tabsOf(QTableWidget *table) { return table->window()->findChild<QTabWidget *>(); }

    void forBoth(const std::function<void(QTableWidget *)> &act)
    {
        // A view complains of a cell that it can't edit.
        const MessageLog messages;
        act(grid());
        act(twin.table());
        messages.warnings();
    }

    QString text()
    {
        static const QStringList texts{u""_s,
                                       u"tea"_s,
                                       u"a rather long answer that widens its column"_s,
                                       u"two\nlines"_s,
                                       u"\u05d0\u05d1\u05d2 \U0001f41d"_s,
                                       u"7"_s};
        return texts.at(random.bounded(texts.size()));
    }

    void addPersona()
    {
        const int number = random.bounded(100'000);
        sql(u"INSERT OR IGNORE INTO personas (uuid, name) VALUES (%1, 'P%2')"_s.arg(
            random.bounded(12) == 0 ? u"NULL"_s : u"'u%1'"_s.arg(number), QString::number(number % 7)));
    }

    void addQuestion()
    {
        sql(u"INSERT INTO questions (order_num, prompt) VALUES (%1, 'Q%2')"_s.arg(random.bounded(5))
                .arg(random.bounded(3)));
    }

    /// The value of a column of one row, as a literal.
    QString oneOf(const QString &column, const QString &table)
    {
        QSqlQuery query(stage.database());
        query.exec(u"SELECT quote(%1) FROM %2"_s.arg(column, table));
        QStringList values;
        while (query.next())
            values << query.value(0).toString();
        return values.isEmpty() ? u"NULL"_s : values.at(random.bounded(values.size()));
    }

    void addAnswers()
    {
        static const QStringList times{u"CURRENT_TIMESTAMP"_s, u"CURRENT_TIMESTAMP"_s, u"'2001-01-01 00:00:00'"_s,
                                       u"'2999-01-01 00:00:00'"_s, u"NULL"_s};
        for (int count = random.bounded(3); count >= 0; --count) {
            const QString json = random.bounded(3) == 0 ? u"no object"_s : uR"({"reasoning":"%1"})"_s.arg(text());
            sql(u"INSERT INTO responses (persona_uuid,question_id,text_answer,numeric_answer,json_answer,created_at) "
                "VALUES (%1,%2,%3,%4,'%5',%6)"_s.arg(
                    random.bounded(15) == 0 ? u"'nobody'"_s : oneOf(u"uuid"_s, u"personas"_s),
                    random.bounded(15) == 0 ? u"'none'"_s : oneOf(u"question_id"_s, u"questions"_s),
                    random.bounded(2) == 0 ? u"NULL"_s : QString(u'\'' + text() + u'\''),
                    random.bounded(3) == 0 ? QString::number(random.bounded(100)) : u"NULL"_s, json,
                    times.at(random.bounded(times.size()))));
        }
    }

    /// What stands in the way of the personas is logged, and the grid is then left alone.
    void refreshAll()
    {
        done << u"loadProject"_s;
        const MessageLog messages;
        stage.call("loadProject");
        if (messages.warnings().isEmpty())
            twin.refresh(stage.database());
    }

    void changeDatabase();
    void touchGrids();
    void replaceTable();

    void sql(const QString &statement)
    {
        done << statement;
        // Some fail, in the state that the history has come to; that is part of it.
        QSqlQuery query(stage.database());
        query.exec(statement);
    }

    Stage &stage;
    QRandomGenerator random;
    bool calm; ///< little happens but answers
    GridTwin twin;
};

/// A table is dropped and comes back: empty, with the same rows, or made by a query with others.
void History::replaceTable()
{
    static const QStringList tables{u"personas"_s, u"questions"_s, u"responses"_s};
    const QString table = tables.at(random.bounded(tables.size()));
    const QString script = schemaStatements().filter(u"CREATE TABLE "_s + table + u' ').value(0);
    switch (random.bounded(4)) {
    case 0:
        sql(u"DROP TABLE "_s + table);
        sql(script);
        break;
    case 1:
        sql(u"CREATE TABLE kept AS SELECT * FROM "_s + table);
        sql(u"DROP TABLE "_s + table);
        sql(script);
        sql(u"INSERT INTO %1 SELECT * FROM kept"_s.arg(table));
        sql(u"DROP TABLE kept"_s);
        break;
    case 2:
        sql(u"CREATE TABLE kept AS SELECT * FROM %1 WHERE (rowid&1)=%2"_s.arg(table).arg(random.bounded(2)));
        sql(u"DROP TABLE "_s + table);
        sql(u"CREATE TABLE %1 AS SELECT * FROM kept"_s.arg(table));
        sql(u"DROP TABLE kept"_s);
        break;
    default:
        sql(u"ALTER TABLE %1 RENAME TO moved"_s.arg(table));
        sql(u"ALTER TABLE moved RENAME TO %1"_s.arg(table));
        break;
    }
}

void History::changeDatabase()
{
    const QStringList statements{
        u"UPDATE responses SET text_answer='%1' WHERE id=%2"_s.arg(text(), oneOf(u"id"_s, u"responses"_s)),
        u"UPDATE responses SET id=id+%1 WHERE id=%2"_s.arg(random.bounded(90)).arg(oneOf(u"id"_s, u"responses"_s)),
        u"UPDATE responses SET created_at=%1"_s.arg(random.bounded(9)),
        u"DELETE FROM responses WHERE id=%1"_s.arg(oneOf(u"id"_s, u"responses"_s)),
        u"DELETE FROM responses"_s,
        u"REPLACE INTO responses (id,persona_uuid,question_id,text_answer) VALUES (%1,%2,%3,'again')"_s.arg(
            oneOf(u"id"_s, u"responses"_s), oneOf(u"uuid"_s, u"personas"_s), oneOf(u"question_id"_s, u"questions"_s)),
        u"REPLACE INTO personas (uuid,name) VALUES (%1,'R')"_s.arg(oneOf(u"uuid"_s, u"personas"_s)),
        u"UPDATE personas SET name='%1' WHERE uuid=%2"_s.arg(text().left(9), oneOf(u"uuid"_s, u"personas"_s)),
        u"UPDATE personas SET uuid=CAST(uuid AS BLOB) WHERE uuid=%1"_s.arg(oneOf(u"uuid"_s, u"personas"_s)),
        u"DELETE FROM personas WHERE uuid=%1"_s.arg(oneOf(u"uuid"_s, u"personas"_s)),
        u"UPDATE questions SET prompt='%1' WHERE question_id=%2"_s.arg(text(), oneOf(u"question_id"_s, u"questions"_s)),
        u"UPDATE questions SET order_num=%1 WHERE question_id=%2"_s.arg(random.bounded(5))
            .arg(oneOf(u"question_id"_s, u"questions"_s)),
        u"DELETE FROM questions WHERE question_id=%1"_s.arg(oneOf(u"question_id"_s, u"questions"_s)),
        u"CREATE TRIGGER echo AFTER INSERT ON responses WHEN NEW.text_answer IS NOT 'echo' BEGIN "
        "INSERT INTO responses (persona_uuid,question_id,text_answer) "
        "SELECT uuid,question_id,'echo' FROM personas,questions ORDER BY 1,2 LIMIT 1; END"_s,
        u"CREATE TRIGGER rename AFTER INSERT ON responses BEGIN UPDATE personas SET name=name||'!' "
        "WHERE length(name)<4; END"_s,
        u"CREATE TRIGGER swallow BEFORE INSERT ON responses WHEN NEW.id%2=0 BEGIN SELECT RAISE(IGNORE); END"_s,
        u"DROP TRIGGER IF EXISTS echo"_s,
        u"DROP TRIGGER IF EXISTS rename"_s,
        u"DROP TRIGGER IF EXISTS swallow"_s,
        u"CREATE INDEX IF NOT EXISTS quick ON responses (created_at DESC)"_s,
        u"DROP INDEX IF EXISTS quick"_s,
        u"CREATE TEMP TABLE IF NOT EXISTS responses AS SELECT * FROM main.responses WHERE id<4"_s,
        u"CREATE TEMP VIEW IF NOT EXISTS personas AS SELECT 'u1' AS uuid, 'shadow' AS name"_s,
        u"DROP TABLE IF EXISTS temp.responses"_s,
        u"DROP VIEW IF EXISTS temp.personas"_s,
        u"BEGIN"_s,
        u"ROLLBACK"_s,
        u"ROLLBACK"_s,
        u"COMMIT"_s,
        u"SAVEPOINT here"_s,
        u"ROLLBACK TO here"_s,
        u"RELEASE here"_s,
        u"UPDATE sqlite_sequence SET seq=%1"_s.arg(random.bounded(50)),
        u"INSERT INTO tags (name) VALUES ('t%1')"_s.arg(random.bounded(9))};
    switch (const int chance = random.bounded(10); chance) {
    case 0:
        replaceTable();
        break;
    case 1:
        addPersona();
        break;
    case 2:
        addQuestion();
        break;
    case 3:
        refreshAll();
        break;
    default:
        sql(statements.at(random.bounded(statements.size())));
        break;
    }
}

void History::touchGrids()
{
    const int row = random.bounded(8);
    const int column = random.bounded(8);
    const int number = random.bounded(60);
    const QList<std::pair<QString, std::function<void(QTableWidget *)>>> acts{
        {u"select a cell"_s, [=](QTableWidget *table) { table->setCurrentCell(row, column); }},
        {u"select a row"_s, [=](QTableWidget *table) { table->selectRow(row); }},
        {u"clear the selection"_s, [](QTableWidget *table) { table->clearSelection(); }},
        {u"press a key"_s, [](QTableWidget *table) { QTest::keyClick(table, Qt::Key_Down); }},
        {u"click"_s,
         [=](QTableWidget *table) {
             QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, {10 + (5 * number), 10 + (30 * row)});
         }},
        {u"scroll down"_s, [=](QTableWidget *table) { table->verticalScrollBar()->setValue(number); }},
        {u"scroll right"_s, [=](QTableWidget *table) { table->horizontalScrollBar()->setValue(number); }},
        {u"open an editor"_s,
         [=](QTableWidget *table) {
             if (table->item(row, column) != nullptr)
                 table->editItem(table->item(row, column));
         }},
        {u"type into a cell"_s,
         [=](QTableWidget *table) {
             if (table->item(row, column) != nullptr)
                 table->item(row, column)->setText(u"typed"_s);
         }},
        {u"colour a cell"_s,
         [=](QTableWidget *table) {
             if (table->item(row, column) != nullptr)
                 table->item(row, column)->setBackground(Qt::yellow);
         }},
        {u"lock a cell"_s,
         [=](QTableWidget *table) {
             if (table->item(row, column) != nullptr)
                 table->item(row, column)->setFlags(Qt::ItemIsEnabled);
         }},
        {u"take a cell"_s, [=](QTableWidget *table) { delete table->takeItem(row, column); }},
        {u"drag a row's height"_s,
         [=](QTableWidget *table) { table->verticalHeader()->resizeSection(row, 15 + number); }},
        {u"set a column's width"_s,
         [=](QTableWidget *table) { table->horizontalHeader()->resizeSection(column, 15 + number); }},
        {u"fix a column"_s,
         [=](QTableWidget *table) {
             if (column < table->columnCount())
                 table->horizontalHeader()->setSectionResizeMode(column, QHeaderView::Fixed);
         }},
        {u"hide a row"_s, [=](QTableWidget *table) { table->hideRow(row); }},
        {u"hide a column"_s, [=](QTableWidget *table) { table->hideColumn(column); }},
        {u"show a column"_s, [=](QTableWidget *table) { table->showColumn(column); }},
        {u"move a column"_s,
         [=](QTableWidget *table) {
             if (column < table->columnCount())
                 table->horizontalHeader()->moveSection(0, column);
         }},
        {u"rename a column"_s,
         [=](QTableWidget *table) {
             if (table->horizontalHeaderItem(column) != nullptr)
                 table->horizontalHeaderItem(column)->setText(u"renamed at length"_s);
         }},
        {u"add a row"_s, [=](QTableWidget *table) { table->insertRow(qMin(row, table->rowCount())); }},
        {u"remove a column"_s, [=](QTableWidget *table) { table->removeColumn(column); }},
        {u"sort"_s, [](QTableWidget *table) { table->sortItems(0, Qt::DescendingOrder); }},
        {u"a widget in a cell"_s,
         [=](QTableWidget *table) {
             if (row < table->rowCount() && column < table->columnCount())
                 table->setCellWidget(row, column, new QPushButton(u"wide button here"_s));
         }},
        {u"focus"_s, [](QTableWidget *table) { table->setFocus(); }},
        {u"resize the window"_s, [=](QTableWidget *table) { table->window()->resize(700 + number, 600 + number); }},
        {u"change the font"_s,
         [=](QTableWidget *table) {
             QFont font = table->font();
             font.setPointSize(7 + (number % 6));
             table->setFont(font);
         }},
        {u"change the tab"_s, [=](QTableWidget *table) { tabsOf(table)->setCurrentIndex(number % 2 == 0 ? 3 : 4); }},
        {u"events"_s, [](QTableWidget *) {}},
    };
    const auto &[what, act] = acts.at(random.bounded(acts.size()));
    done << what;
    forBoth(act);
    // The delayed layout comes now, or only after the next step.
    if (random.bounded(2) == 0)
        settle();
}

class TestGridPatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nobody_can_tell_a_patched_grid_from_a_rebuilt_one()
    {
        const quint32 seed = testSeed();
        const int histories = wantedHistories();
        int patched = 0;
        int refreshes = 0;
        for (int number = 0; number < histories; ++number) {
            Stage stage;
            History history(stage, seed + quint32(number));
            for (int step = 0; step < steps; ++step) {
                const QString difference = history.step();
                if (!difference.isEmpty()) {
                    QFAIL(qPrintable(u"history %1 of seed %2, step %3: %4\n%5"_s.arg(number).arg(seed).arg(step).arg(
                        difference, history.done.last(qMin(history.done.size(), 25)).join(u'\n'))));
                }
            }
            patched += history.patched;
            refreshes += history.refreshes;
        }
        // Both ways must have been gone.
        qInfo("%d of %d refreshes were patched", patched, refreshes);
        QVERIFY(patched > refreshes / 5);
        QVERIFY(patched < refreshes * 4 / 5);
    }

    void widths_follow_the_rows_in_view_where_there_are_more_than_are_measured()
    {
        Stage stage;
        QVERIFY(stage.exec(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 1500) "
                           "INSERT INTO personas (uuid, name) SELECT i, printf('%04d', i) FROM n"_s));
        QVERIFY(enterQuestions(stage, 1));
        GridTwin twin(stage.window());
        for (QMainWindow *window : {static_cast<QMainWindow *>(stage.window()), static_cast<QMainWindow *>(&twin)}) {
            window->resize(760, 620);
            window->show();
            window->findChild<QTabWidget *>()->setCurrentIndex(4);
        }
        QTableWidget *grid = resultsTable(stage);
        const auto compareAfter = [&](const QVariant &persona, const QString &text) {
            QVERIFY(enter(stage, AnswerEntered{.persona = persona, .question = 1, .text = text}));
            const QSignalSpy reset(grid->model(), &QAbstractItemModel::modelReset);
            stage.call("loadResults");
            twin.refresh(stage.database());
            settle();
            QCOMPARE(differenceOf(grid, twin.table(), true), QString());
            patches += reset.isEmpty() ? 1 : 0;
        };
        patches = 0;
        compareAfter(u"1"_s, u"first"_s);
        compareAfter(u"2"_s, u"a longer one, and in view"_s);
        // The widest text of all, where nobody measures it.
        const QString longest = u"the longest of all the answers, far below the rows that are measured"_s;
        compareAfter(u"1500"_s, longest);
        QVERIFY(grid->columnWidth(1) < grid->fontMetrics().horizontalAdvance(longest));
        for (QTableWidget *table : {grid, twin.table()})
            table->verticalScrollBar()->setValue(table->verticalScrollBar()->maximum());
        settle();
        compareAfter(u"3"_s, u"short"_s);
        compareAfter(u"1499"_s, u"in view"_s);
        QCOMPARE(patches, 3);
    }

private:
    int patches = 0;
};

ORRINET_TEST(TestGridPatch)
#include "tst_gridpatch.moc"
