// Files that open but hold no project, or can't be read: texts, damaged and locked databases.

#include "tests/project/projectfile.h"

using namespace Qt::StringLiterals;

namespace {

/// The first bytes of a project of several pages.
QByteArray cutProject(qsizetype size)
{
    const QTemporaryDir folder;
    QStringList statements;
    for (int number = 0; number < 40; ++number)
        statements << u"INSERT INTO metadata VALUES ('%1', hex(zeroblob(1000)))"_s.arg(number);
    const QByteArray whole = readBytes(writeProject(folder.filePath(u"whole.ormt"_s), statements));
    Q_ASSERT(whole.size() > size);
    return whole.first(size);
}

} // namespace

class TestForeignFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_file_that_cannot_be_read_empties_the_project_data();
    void a_file_that_cannot_be_read_empties_the_project();
    void a_locked_file_can_be_opened_once_it_is_free();
    void a_file_without_a_project_is_an_empty_project_data();
    void a_file_without_a_project_is_an_empty_project();
    void a_table_that_cannot_be_read_stays_empty();
    void a_file_that_another_is_changing_opens_as_it_was();
};

void TestForeignFiles::a_file_that_cannot_be_read_empties_the_project_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("a text") << "A text of some length. "_ba.repeated(100);
    QTest::newRow("zeros") << QByteArray(8192, '\0');
    QTest::newRow("high bytes") << QByteArray(5000, '\xff');
    QTest::newRow("a database cut within its pages") << cutProject(3 * 4096);
    QTest::newRow("a database cut within its first page") << cutProject(1000);
}

void TestForeignFiles::a_file_that_cannot_be_read_empties_the_project()
{
    QFETCH(const QByteArray, content);
    Stage stage;
    openMine(stage);
    const QString path = writeBytes(stage.path(u"odd.ormt"_s), content);
    {
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", path));
        QCOMPARE(log.warnings(), QStringList{readingError(stage, path)});
    }
    QVERIFY(onlyProjectIsConnected());
    QCOMPARE(readBytes(path), content);
    QCOMPARE(tableOfEachRow(stage), QStringList());
    QVERIFY(questionView(stage)->model() == nullptr);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, stage.path(u"mine.ormt"_s)));
}

void TestForeignFiles::a_locked_file_can_be_opened_once_it_is_free()
{
    Stage stage;
    openMine(stage);
    const QString path = writeOther(stage);
    // Else SQLite would wait for some seconds.
    QVERIFY(stage.exec(u"PRAGMA busy_timeout = 0"_s));
    {
        SideDatabase locked(path);
        QVERIFY(locked.exec(u"BEGIN EXCLUSIVE"_s));
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", path));
        QCOMPARE(log.warnings(), QStringList{readingError(stage, path)});
        QVERIFY(log.warnings().constFirst().startsWith("database is locked"_L1));
    }
    QCOMPARE(tableOfEachRow(stage), QStringList());
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(tableOfEachRow(stage), projectTables());
}

void TestForeignFiles::a_file_without_a_project_is_an_empty_project_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::newRow("an empty file") << QStringList();
    QTest::newRow("other tables") << QStringList{u"CREATE TABLE books (title TEXT)"_s,
                                                 u"INSERT INTO books VALUES ('Bees')"_s};
    QTest::newRow("a database without a table")
        << QStringList{u"CREATE TABLE books (title TEXT)"_s, u"DROP TABLE books"_s};
    QTest::newRow("the tables without a row") << schemaStatements();
}

void TestForeignFiles::a_file_without_a_project_is_an_empty_project()
{
    QFETCH(const QStringList, statements);
    Stage stage;
    openMine(stage);
    const QString path = writeDatabase(writeBytes(stage.path(u"odd.ormt"_s), {}), statements);
    const QByteArray before = readBytes(path);
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(tableOfEachRow(stage), QStringList{u"boilerplate"_s});
    QCOMPARE(stage.rows(u"SELECT * FROM boilerplate"_s), (Rows{{u"Act as the following persona."_s, u""_s}}));
    QCOMPARE(preambleEdit(stage)->toPlainText(), u"Act as the following persona."_s);
    QCOMPARE(postambleEdit(stage)->toPlainText(), QString());
    QVERIFY(shownPersonas(stage).isEmpty());
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
    QCOMPARE(readBytes(path), before);
    QVERIFY(savesTo(stage, path));
}

void TestForeignFiles::a_table_that_cannot_be_read_stays_empty()
{
    Stage stage;
    const QString path = writeOther(stage);
    qsizetype page = 0;
    qsizetype begin = 0;
    {
        SideDatabase file(path);
        page = file.value(u"PRAGMA page_size"_s).toInt();
        begin = page * (file.value(u"SELECT rootpage FROM sqlite_master WHERE name = 'responses'"_s).toInt() - 1);
    }
    QByteArray bytes = readBytes(path);
    QVERIFY(page > 0 && begin > 0 && begin + page <= bytes.size());
    writeBytes(path, bytes.replace(begin, page, QByteArray(page, '\xff')));
    QStringList readable = projectTables();
    QVERIFY(readable.removeOne(u"responses"_s));
    // Nothing of the failed reading is in the way of the next one.
    for (int turn = 0; turn < 2; ++turn) {
        QVERIFY(stage.result("openProjectFromFile", path));
        QCOMPARE(tableOfEachRow(stage), readable);
        QVERIFY(onlyProjectIsConnected());
        QVERIFY(!stage.asksBeforeClosing());
    }
}

void TestForeignFiles::a_file_that_another_is_changing_opens_as_it_was()
{
    Stage stage;
    const QString path = writeOther(stage);
    SideDatabase other(path);
    QVERIFY(other.exec({u"BEGIN IMMEDIATE"_s, u"DELETE FROM personas"_s}));
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    // Nothing of the window's holds on to the file.
    QVERIFY(other.exec(u"COMMIT"_s));
    QCOMPARE(other.count(u"personas"_s), 0);
}

ORRINET_TEST(TestForeignFiles)
#include "tst_foreignfiles.moc"
