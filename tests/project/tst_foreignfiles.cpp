// Files that open but hold no project, or can't be read: texts, damaged and locked databases.

#include "tests/project/projectfile.h"
#include "tests/support/messagelog.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// A project with rows in every view, in a file of its own, and then changed.
void fillAndSave(Stage &stage)
{
    QVERIFY(makeProjectFile(stage.path(u"mine.ormt"_s), oneOfEach()));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"mine.ormt"_s)));
    stage.window()->markDirty();
    Stage::setTestMode(true);
}

/// A database of several pages that is cut after some bytes.
bool writeCut(const QString &path, qsizetype size)
{
    QStringList statements;
    for (int number = 0; number < 40; ++number)
        statements << u"INSERT INTO metadata VALUES ('%1', hex(zeroblob(1000)))"_s.arg(number);
    return makeProjectFile(path, statements) && writeBytes(path, readBytes(path).first(size));
}

} // namespace

class TestForeignFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_file_that_cannot_be_read_empties_the_project_data();
    void a_file_that_cannot_be_read_empties_the_project();
    void a_file_without_a_project_is_an_empty_project_data();
    void a_file_without_a_project_is_an_empty_project();
    void a_table_that_cannot_be_read_stays_empty();
    void a_locked_file_can_be_opened_once_it_is_free();
    void a_file_that_another_is_changing_opens_as_it_was();
};

void TestForeignFiles::a_file_that_cannot_be_read_empties_the_project_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("cut");
    QTest::newRow("a text") << "A text of some length. "_ba.repeated(100) << 0;
    QTest::newRow("zeros") << QByteArray(8192, '\0') << 0;
    QTest::newRow("high bytes") << QByteArray(5000, '\xff') << 0;
    QTest::newRow("a database cut within its pages") << QByteArray() << 3 * 4096;
    QTest::newRow("a database cut within its first page") << QByteArray() << 1000;
    QTest::newRow("a locked database") << QByteArray() << -1;
}

void TestForeignFiles::a_file_that_cannot_be_read_empties_the_project()
{
    QFETCH(const QByteArray, content);
    QFETCH(const int, cut);
    Stage stage;
    fillAndSave(stage);
    const QString path = stage.path(u"odd.ormt"_s);
    QVERIFY(cut > 0 ? writeCut(path, cut) : cut < 0 ? makeProjectFile(path) : writeBytes(path, content));
    const QByteArray before = readBytes(path);
    {
        SideFile locked(cut < 0 ? path : stage.path(u"unrelated"_s));
        QVERIFY(locked.exec(u"BEGIN EXCLUSIVE"_s));
        // Else SQLite would wait for some seconds.
        QVERIFY(stage.exec(u"PRAGMA busy_timeout = 0"_s));
        const QString reason = refusal(stage, u"ATTACH DATABASE '%1' AS disk"_s.arg(path));
        QVERIFY(!reason.trimmed().isEmpty());
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", path));
        QCOMPARE(log.warnings(), QStringList{reason});
    }
    QVERIFY(onlyProjectIsConnected());
    QCOMPARE(readBytes(path), before);
    QCOMPARE(count(stage, u"personas"_s), 0);
    QVERIFY(questionView(stage)->model() == nullptr);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, stage.path(u"mine.ormt"_s)));
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
    fillAndSave(stage);
    const QString path = stage.path(u"odd.ormt"_s);
    QVERIFY(writeBytes(path, {}));
    QVERIFY(makeFile(path, statements));
    const QByteArray before = readBytes(path);
    QVERIFY(stage.result("openProjectFromFile", path));
    for (const auto table : {"metadata"_L1, "personas"_L1, "questions"_L1, "responses"_L1, "tags"_L1})
        QVERIFY2(count(stage, table) == 0, table.data());
    QVERIFY(shownPersonas(stage).isEmpty());
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
    QCOMPARE(readBytes(path), before);
    QVERIFY(savesTo(stage, path));
}

void TestForeignFiles::a_table_that_cannot_be_read_stays_empty()
{
    Stage stage;
    const QString path = stage.path(u"spoiled.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    qsizetype page = 0;
    qsizetype begin = 0;
    {
        SideFile file(path);
        page = file.value(u"PRAGMA page_size"_s).toInt();
        begin = page * (file.value(u"SELECT rootpage FROM sqlite_master WHERE name = 'responses'"_s).toInt() - 1);
    }
    QByteArray bytes = readBytes(path);
    QVERIFY(page > 0 && begin > 0 && begin + page <= bytes.size());
    QVERIFY(writeBytes(path, bytes.replace(begin, page, QByteArray(page, '\xff'))));
    QVERIFY(stage.result("openProjectFromFile", path));
    for (const auto table : {"metadata"_L1, "personas"_L1, "questions"_L1, "question_attachments"_L1, "responses"_L1,
                             "tags"_L1, "persona_tags"_L1})
        QCOMPARE(count(stage, table), table == "responses"_L1 ? 0 : 1);
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(stage.result("openProjectFromFile", path));
}

void TestForeignFiles::a_locked_file_can_be_opened_once_it_is_free()
{
    Stage stage;
    Stage::setTestMode(true);
    const QString path = stage.path(u"locked.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    QVERIFY(stage.exec(u"PRAGMA busy_timeout = 0"_s));
    {
        SideFile locked(path);
        QVERIFY(locked.exec(u"BEGIN EXCLUSIVE"_s));
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", path));
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().constFirst().startsWith("database is locked"_L1));
    }
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
}

void TestForeignFiles::a_file_that_another_is_changing_opens_as_it_was()
{
    Stage stage;
    const QString path = stage.path(u"busy.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    SideFile other(path);
    QVERIFY(other.exec(u"BEGIN IMMEDIATE"_s));
    QVERIFY(other.exec(u"DELETE FROM personas"_s));
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    // Nothing of the window's holds on to the file.
    QVERIFY(other.exec(u"COMMIT"_s));
    QCOMPARE(other.value(u"SELECT COUNT(*) FROM personas"_s).toInt(), 0);
}

QTEST_MAIN(TestForeignFiles)
#include "tst_foreignfiles.moc"
