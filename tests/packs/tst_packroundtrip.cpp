// Personas that go through a pack into another project and out again.

#include "tests/packs/importbox.h"
#include "tests/packs/packfile.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::StringLiterals;

/// What a text column may hold.
static QVariantList values()
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

/// Enters a persona of which every column but the uuid holds the next value in turn.
static bool enterOneOfEach(Stage &stage)
{
    const QVariantList all = values();
    for (qsizetype first = 0; first < all.size(); ++first) {
        QVariantList row = {u"u%1 of 'all' \u05d0"_s.arg(first, 2, 10, QLatin1Char('0'))};
        for (qsizetype index = 0; index < 6; ++index)
            row.append(all.at((first + index) % all.size()));
        if (!stage.exec(u"INSERT INTO personas VALUES (?, ?, ?, ?, ?, ?, ?)"_s, row))
            return false;
    }
    return true;
}

static bool enterTags(Stage &stage)
{
    const QVariantList all = values();
    for (qsizetype index = 0; index < all.size(); ++index) {
        if (!stage.exec(u"INSERT OR IGNORE INTO tags VALUES (?, ?)"_s, {index * index, all.at(index)}))
            return false;
    }
    return enter(stage,
                 {tag(-7, u"New York"_s),
                  u"INSERT INTO persona_tags SELECT p.uuid, t.id FROM personas p, tags t "
                  "WHERE (p.rowid + t.rowid) % 9 = 0"_s,
                  link(u"gone"_s, -7), link(u"gone, too"_s, 4711), u"INSERT INTO persona_tags VALUES (NULL, NULL)"_s});
}

/// Both statements of a project that has all of it.
static bool enterAll(Stage &stage)
{
    return enterOneOfEach(stage) && enterTags(stage);
}

/// A database as the statements that would make it, with the rows of each table sorted; nothing if it can't be told.
static QStringList dump(const QString &path)
{
    QProcess sqlite;
    sqlite.start(u"sqlite3"_s, {u"-readonly"_s, path, u".dump"_s});
    if (!sqlite.waitForFinished() || sqlite.exitCode() != 0)
        return {};
    // A statement ends where the next one begins, since texts hold line ends.
    QStringList statements = QString::fromUtf8(sqlite.readAllStandardOutput())
                                 .replace("\nINSERT INTO "_L1, "\x1eINSERT INTO "_L1)
                                 .split(u'\x1e');
    statements.sort();
    return statements;
}

class TestPackRoundTrip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void both_packs_hold_the_same()
    {
        if (QStandardPaths::findExecutable(u"sqlite3"_s).isEmpty())
            QSKIP("the program sqlite3 is not here");
        Stage stage;
        QVERIFY(enterAll(stage));
        const QString first = stage.path(u"first.ornk"_s);
        const QString second = stage.path(u"second.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", first));
        QVERIFY(stage.call("newProject"));
        QVERIFY(importUnasked(stage, first));
        QVERIFY(stage.result("exportPackToFile", second));

        const QStringList statements = dump(first);
        // Each row and the tables, of which the first stands before all rows.
        QVERIFY(statements.size() > count(stage, u"persona_tags"_s) + count(stage, u"tags"_s));
        QCOMPARE(dump(second), statements);
    }

    void projects_and_packs_hold_the_same()
    {
        Stage stage;
        QVERIFY(enterAll(stage));
        const QStringList before = packedRows(stage.project());
        QCOMPARE(count(stage, u"personas"_s), values().size());
        const QString path = stage.path(u"pack.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        {
            const FileDatabase pack(path);
            QCOMPARE(packedRows(pack.database()), before);
        }
        QVERIFY(stage.call("newProject"));
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(packedRows(stage.project()), before);
    }

    void replacing_brings_a_project_back_to_its_pack()
    {
        Stage stage;
        QVERIFY(enterAll(stage));
        const QStringList before = packedRows(stage.project());
        const QString path = stage.path(u"pack.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        QVERIFY(enter(stage, {u"UPDATE personas SET name = 'Another' WHERE rowid % 2"_s,
                              u"DELETE FROM persona_tags WHERE tag_id % 2"_s, u"UPDATE tags SET id = id + 1000"_s,
                              persona(u"more"_s, u"More"_s)}));
        QVERIFY(importReplacing(stage, path));
        QCOMPARE(packedRows(stage.project()), before);
    }

    void random_panels_come_through()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
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
        const QStringList before = packedRows(stage.project());
        const QString path = stage.path(u"pack.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        QVERIFY(stage.call("newProject"));
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(packedRows(stage.project()), before);
    }

    void a_panel_made_with_the_program_comes_through()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"Number One"_s, u"Keeps bees.\nNear the \"sea\"."_s, u"rural, calm"_s));
        QVERIFY(stage.call("insertPersona", u"Number Two"_s, u""_s));
        const QStringList before = packedRows(stage.project());
        const auto shown = Stage::cells(personaTable(stage));
        const QString path = stage.path(u"pack.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        QVERIFY(stage.call("newProject"));
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(packedRows(stage.project()), before);
        QCOMPARE(Stage::cells(personaTable(stage)), shown);

        // Shown in place it looks the same.
        QVERIFY(stage.call("newProject"));
        QVERIFY(stage.call("loadPack", path));
        QCOMPARE(Stage::cells(personaTable(stage)), shown);
    }

private:
    /// The rows of the three tables that travel, sorted.
    static QStringList packedRows(const QSqlDatabase &database)
    {
        QStringList all;
        for (const QString &table : {u"personas"_s, u"tags"_s, u"persona_tags"_s}) {
            QStringList rows = literals(database, u"SELECT * FROM "_s + table);
            rows.sort();
            all.append(table);
            all.append(rows);
        }
        return all;
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
};

QTEST_MAIN(TestPackRoundTrip)
#include "tst_packroundtrip.moc"
