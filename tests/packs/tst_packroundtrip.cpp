// Personas that go through a pack into another project and out again.

#include "tests/packs/importing.h"
#include "tests/packs/samplepacks.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// What a text column may hold.
static QVariantList possibleValues()
{
    return {QVariant(),
            u""_s,
            u"plain"_s,
            u"it's \"quoted\"; -- not a comment"_s,
            u"two\nlines\r\nand\ttabs\r"_s,
            u" blanks around "_s,
            u"\u05e9\u05dc\u05d5\u05dd \u0645\u0631\u062d\u0628\u0627 \u202eleft\u202c"_s,
            u"\U0001F41D\U0001F9D1\u200D\U0001F33E e\u0301 \u00A0\u2028"_s,
            QString(130'000, u'x').append(u"end"_s),
            QByteArray("\x00\x01\xfe\xff'\"", 6),
            QByteArray("text in a blob"),
            42,
            -9'007'199'254'740'993LL,
            0.1,
            1e300,
            u"0042"_s,
            u"2001-02-03T04:05:06.789"_s,
            u"2001-02-03 04:05:06"_s};
}

/// Enters personas of which every column but the uuid holds the next value in turn, tags that are named by the values,
/// and links of both and of neither.
static bool enterPossibleValues(Stage &stage)
{
    const QVariantList all = possibleValues();
    bool entered = true;
    for (qsizetype first = 0; first < all.size(); ++first) {
        QVariantList row = {u"u%1 of 'all' \u05d0"_s.arg(first, 2, 10, QLatin1Char('0'))};
        for (qsizetype index = 0; index < 6; ++index)
            row.append(all.at((first + index) % all.size()));
        entered = stage.exec(u"INSERT INTO personas VALUES (?, ?, ?, ?, ?, ?, ?)"_s, row) &&
                  enter(stage, TagEntered{first * first, all.at(first)}) && entered;
    }
    return entered && enter(stage, TagEntered{-7, u"New York"_s}) &&
           stage.exec(u"INSERT INTO persona_tags SELECT p.uuid, t.id FROM personas p, tags t "
                      "WHERE (p.rowid + t.rowid) % 9 = 0"_s) &&
           enter(stage, LinkEntered{u"gone"_s, -7}, LinkEntered{u"gone, too"_s, 4711}, LinkEntered{});
}

/// The rows of the three tables that travel, sorted.
static QStringList packedRows(const QSqlDatabase &database)
{
    QStringList all;
    for (const QString &table : {u"personas"_s, u"tags"_s, u"persona_tags"_s}) {
        QStringList rows = literals(database, u"SELECT * FROM "_s + table);
        rows.sort();
        all << table << rows;
    }
    return all;
}

/// A pack as the statements that would make it, in the eyes of the program sqlite3.
static QStringList dumpPack(const QString &path)
{
    QProcess sqlite;
    sqlite.start(u"sqlite3"_s, {u"-readonly"_s, path, u".dump"_s});
    if (!sqlite.waitForFinished(-1) || sqlite.exitCode() != 0)
        QTest::qFail(qUtf8Printable(sqlite.errorString()), __FILE__, __LINE__);
    // A statement ends where the next one begins, since texts hold line ends.
    QStringList statements = QString::fromUtf8(sqlite.readAllStandardOutput())
                                 .replace("\nINSERT INTO "_L1, "\x1eINSERT INTO "_L1)
                                 .split(u'\x1e');
    statements.sort();
    return statements;
}

/// Exports the project and imports the pack into a new one, and gives the path of the pack.
static QString moveToNewProject(Stage &stage)
{
    const QString path = stage.path(u"pack.ornk"_s);
    if (!stage.result("exportPackToFile", path) || !stage.call("newProject") || !importUnasked(stage, path))
        QTest::qFail("the pack did not go through", __FILE__, __LINE__);
    return path;
}

static QVariant randomText(QRandomGenerator &random)
{
    const QString characters = u"aZ09 ,'\"\n;%_\\\u00e9\u05d0\u4e2d"_s;
    const int length = random.bounded(12) - 1;
    if (length < 0)
        return {};
    QString text;
    for (int index = 0; index < length; ++index)
        text.append(characters.at(random.bounded(characters.size())));
    return text;
}

class TestPackRoundTrip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void projects_and_packs_hold_the_same()
    {
        Stage stage;
        QVERIFY(enterPossibleValues(stage));
        const QStringList before = packedRows(stage.database());
        QCOMPARE(stage.count(u"personas"_s), possibleValues().size());
        const QString first = moveToNewProject(stage);
        QCOMPARE(packedRows(SideDatabase(first).database()), before);
        QCOMPARE(packedRows(stage.database()), before);

        const QString second = stage.path(u"second.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", second));
        const QStringList statements = dumpPack(first);
        // Each row and the tables, of which the first stands before all rows.
        QVERIFY(statements.size() > stage.count(u"persona_tags"_s) + stage.count(u"tags"_s));
        QCOMPARE(dumpPack(second), statements);
    }

    void replacing_brings_a_project_back_to_its_pack()
    {
        Stage stage;
        QVERIFY(enterPossibleValues(stage));
        const QStringList before = packedRows(stage.database());
        const QString path = stage.path(u"pack.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        QVERIFY(stage.exec({u"UPDATE personas SET name = 'Another' WHERE rowid % 2"_s,
                            u"DELETE FROM persona_tags WHERE tag_id % 2"_s, u"UPDATE tags SET id = id + 1000"_s}));
        QVERIFY(enter(stage, PersonaEntered{u"more"_s, u"More"_s}));
        QVERIFY(importReplacing(stage, path));
        QCOMPARE(packedRows(stage.database()), before);
    }

    void random_panels_come_through()
    {
        QRandomGenerator random(testSeed());
        Stage stage;
        for (int index = 0; index < 25; ++index) {
            QVariantList row = {index};
            for (int column = 0; column < 6; ++column)
                row.append(randomText(random));
            QVERIFY(stage.exec(u"INSERT INTO personas VALUES ('u' || ?, ?, ?, ?, ?, ?, ?)"_s, row));
            // Names that are there already are left out, their links are not.
            QVERIFY(stage.exec(u"INSERT OR IGNORE INTO tags VALUES (?, ?)"_s, {index, randomText(random)}));
            QVERIFY(stage.exec(u"INSERT INTO persona_tags VALUES ('u' || ?, ?)"_s, {random.bounded(40), index}));
        }
        const QStringList before = packedRows(stage.database());
        moveToNewProject(stage);
        QCOMPARE(packedRows(stage.database()), before);
    }

    void a_panel_made_with_the_program_comes_through_data()
    {
        QTest::addColumn<bool>("testMode");
        QTest::addRow("as a user") << false;
        QTest::addRow("in test mode") << true;
    }

    void a_panel_made_with_the_program_comes_through()
    {
        QFETCH(bool, testMode);
        Stage stage;
        Stage::setTestMode(testMode);
        stage.call("insertPersona", u"Number One"_s, u"Keeps bees.\nNear the \"sea\"."_s, u"rural, calm"_s);
        stage.call("insertPersona", u"Number Two"_s, u""_s);
        const QStringList before = packedRows(stage.database());
        const auto shown = cells(personaTable(stage));
        const QString path = moveToNewProject(stage);
        QCOMPARE(packedRows(stage.database()), before);
        QCOMPARE(cells(personaTable(stage)), shown);

        // Shown in place it looks the same.
        stage.call("newProject");
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        stage.call("loadPack", path);
        QCOMPARE(cells(personaTable(stage)), shown);
    }
};

ORRINET_TEST(TestPackRoundTrip)
#include "tst_packroundtrip.moc"
