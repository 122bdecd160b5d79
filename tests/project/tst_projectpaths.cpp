// Odd names and impossible places for project files.

#include "tests/project/projectfile.h"
#include "tests/support/messagelog.h"

#include <QScopeGuard>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// Makes what a row of data names, and gives its path.
QString makePlace(Stage &stage, const QString &place)
{
    QDir folder(stage.path(QString()));
    if (place == "folder"_L1)
        folder.mkdir(place);
    else if (place == "file/below"_L1)
        writeBytes(stage.path(u"file"_s), "no folder");
    // An absolute path stays what it is.
    return folder.filePath(place);
}

/// A project with rows in every view, in a file of its own, and then changed.
void fillAndSave(Stage &stage)
{
    QVERIFY(makeProjectFile(stage.path(u"mine.ormt"_s), oneOfEach()));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"mine.ormt"_s)));
    stage.window()->markDirty();
    Stage::setTestMode(true);
}

} // namespace

class TestProjectPaths : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_name_of_any_letters_works_both_ways_data();
    void a_name_of_any_letters_works_both_ways();
    void a_relative_path_works_both_ways();
    void an_empty_path_is_a_project_of_no_file();
    void a_place_that_cannot_be_opened_leaves_all_as_it_is_data();
    void a_place_that_cannot_be_opened_leaves_all_as_it_is();
    void a_place_that_cannot_be_written_leaves_all_as_it_is_data();
    void a_place_that_cannot_be_written_leaves_all_as_it_is();
    void a_file_with_content_is_never_written_over_data();
    void a_file_with_content_is_never_written_over();
    void saving_twice_to_one_path_fails_the_second_time();
    void saving_after_opening_fails();
    void saving_to_nothing_fails();
};

void TestProjectPaths::a_name_of_any_letters_works_both_ways_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a single quote") << u"it's.ormt"_s;
    QTest::newRow("nothing but quotes") << u"'''"_s;
    QTest::newRow("quotes at both ends") << u"'quoted'"_s;
    QTest::newRow("the end of a statement") << u"x' AS disk; DROP TABLE personas; --"_s;
    QTest::newRow("double quotes") << u"\"so called\".ormt"_s;
    QTest::newRow("blanks") << u"  a  b .ormt "_s;
    QTest::newRow("a line feed") << u"two\nlines.ormt"_s;
    QTest::newRow("a backslash") << u"back\\slash.ormt"_s;
    QTest::newRow("marks of a URI") << u"50%25?mode=ro#end.ormt"_s;
    QTest::newRow("placeholders") << u"%1 ? :name @x $y.ormt"_s;
    QTest::newRow("Latin with marks") << u"Gr\u00fc\u00dfe.ormt"_s;
    QTest::newRow("Cyrillic") << u"\u043e\u043f\u0440\u043e\u0441.ormt"_s;
    QTest::newRow("Hebrew") << u"\u05e1\u05e7\u05e8.ormt"_s;
    QTest::newRow("Chinese") << u"\u8c03\u67e5.ormt"_s;
    QTest::newRow("four bytes a letter") << u"\U0001f9ea.ormt"_s;
    QTest::newRow("a combining mark") << u"e\u0301.ormt"_s;
    QTest::newRow("a folder with a quote") << u"it's here/saved.ormt"_s;
    QTest::newRow("a long name") << QString(240, u'n');
}

void TestProjectPaths::a_name_of_any_letters_works_both_ways()
{
    QFETCH(const QString, name);
    Stage stage;
    QVERIFY(QDir(stage.path(QString())).mkdir(u"it's here"_s));
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    const QString path = stage.path(name);
    QVERIFY(stage.result("saveProjectToFile", path));
    QVERIFY(readBytes(path).startsWith("SQLite format 3"));
    stage.call("newProject");
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(savesTo(stage, path));
    QCOMPARE(QDir(QFileInfo(path).path()).entryList(QDir::Files), QStringList{QFileInfo(path).fileName()});
}

void TestProjectPaths::a_relative_path_works_both_ways()
{
    Stage stage;
    const QString before = QDir::currentPath();
    const auto back = qScopeGuard([before] { QDir::setCurrent(before); });
    QVERIFY(QDir::setCurrent(stage.path(QString())));
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    QVERIFY(stage.result("saveProjectToFile", u"saved.ormt"_s));
    QVERIFY(QFile::exists(stage.path(u"saved.ormt"_s)));
    QVERIFY(stage.result("openProjectFromFile", u"saved.ormt"_s));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    // The path is kept as it was given.
    QVERIFY(QDir(stage.path(QString())).mkdir(u"elsewhere"_s));
    QVERIFY(QDir::setCurrent(stage.path(u"elsewhere"_s)));
    QVERIFY(savesTo(stage, u"saved.ormt"_s));
}

void TestProjectPaths::an_empty_path_is_a_project_of_no_file()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    // SQLite takes the empty name for a database that is gone when it is closed.
    QVERIFY(stage.result("saveProjectToFile", u""_s));
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(belongsToNoFile(stage));
    Stage::setTestMode(true);
    QVERIFY(stage.result("openProjectFromFile", u""_s));
    QVERIFY(shownPersonas(stage).isEmpty());
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(belongsToNoFile(stage));
}

void TestProjectPaths::a_place_that_cannot_be_opened_leaves_all_as_it_is_data()
{
    QTest::addColumn<QString>("place");
    QTest::newRow("a folder") << u"folder"_s;
    QTest::newRow("in a folder that is not there") << u"no/where.ormt"_s;
    QTest::newRow("below a file") << u"file/below"_s;
    QTest::newRow("in a folder that takes no files") << u"/proc/orrinet.ormt"_s;
    QTest::newRow("a name too long") << QString(256, u'n');
}

void TestProjectPaths::a_place_that_cannot_be_opened_leaves_all_as_it_is()
{
    QFETCH(const QString, place);
    Stage stage;
    fillAndSave(stage);
    const QString path = makePlace(stage, place);
    const QStringList files = QDir(stage.path(QString())).entryList(QDir::Files);
    const QSqlTableModel *model = questionModel(stage);
    const QString reason = SideFile(path).errorText();
    QVERIFY(!reason.isEmpty());
    {
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", path));
        QCOMPARE(log.warnings(), QStringList{"failed to open project "_L1 + reason});
    }
    QVERIFY(onlyProjectIsConnected());
    QCOMPARE(QDir(stage.path(QString())).entryList(QDir::Files), files);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    for (const auto table : {"metadata"_L1, "boilerplate"_L1, "personas"_L1, "questions"_L1, "responses"_L1})
        QVERIFY2(count(stage, table) == 1, table.data());
    QCOMPARE(questionModel(stage), model);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, stage.path(u"mine.ormt"_s)));
}

void TestProjectPaths::a_place_that_cannot_be_written_leaves_all_as_it_is_data()
{
    a_place_that_cannot_be_opened_leaves_all_as_it_is_data();
}

void TestProjectPaths::a_place_that_cannot_be_written_leaves_all_as_it_is()
{
    QFETCH(const QString, place);
    Stage stage;
    fillAndSave(stage);
    const QString path = makePlace(stage, place);
    const QString reason = refusal(stage, u"VACUUM INTO ?"_s, {path});
    QVERIFY(!reason.trimmed().isEmpty());
    const QStringList files = QDir(stage.path(QString())).entryList(QDir::Files);
    {
        const MessageLog log;
        QVERIFY(!stage.result("saveProjectToFile", path));
        QCOMPARE(log.warnings(), QStringList{"vacuum into failed "_L1 + reason});
    }
    QCOMPARE(QDir(stage.path(QString())).entryList(QDir::Files), files);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, stage.path(u"mine.ormt"_s)));
}

void TestProjectPaths::a_file_with_content_is_never_written_over_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("a text") << "Dear diary.\n"_ba;
    QTest::newRow("two bytes") << "\n\n"_ba;
    QTest::newRow("the head of a database") << QByteArray("SQLite format 3\0", 16);
}

void TestProjectPaths::a_file_with_content_is_never_written_over()
{
    QFETCH(const QByteArray, content);
    Stage stage;
    fillAndSave(stage);
    const QString path = stage.path(u"there.ormt"_s);
    QVERIFY(writeBytes(path, content));
    const MessageLog log;
    QVERIFY(!stage.result("saveProjectToFile", path));
    QCOMPARE(log.warnings(), QStringList{"vacuum into failed "_L1 + refusal(stage, u"VACUUM INTO ?"_s, {path})});
    QCOMPARE(readBytes(path), content);
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, stage.path(u"mine.ormt"_s)));
}

void TestProjectPaths::saving_twice_to_one_path_fails_the_second_time()
{
    Stage stage;
    const QString path = stage.path(u"saved.ormt"_s);
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    const QByteArray before = readBytes(path);
    const MessageLog log;
    QVERIFY(!stage.result("saveProjectToFile", path));
    QVERIFY(!stage.asksBeforeClosing());
    stage.call("insertPersona", u"Number Two"_s, u"Calm."_s);
    QVERIFY(!stage.result("saveProjectToFile", path));
    QVERIFY(stage.asksBeforeClosing());
    QCOMPARE(log.warnings(), QStringList(2, "vacuum into failed "_L1 + refusal(stage, u"VACUUM INTO ?"_s, {path})));
    QCOMPARE(readBytes(path), before);
}

void TestProjectPaths::saving_after_opening_fails()
{
    Stage stage;
    fillAndSave(stage);
    const QString path = stage.path(u"mine.ormt"_s);
    const QByteArray before = readBytes(path);
    const MessageLog log;
    stage.action(u"Save"_s)->trigger();
    QCOMPARE(log.warnings(), QStringList{"vacuum into failed "_L1 + refusal(stage, u"VACUUM INTO ?"_s, {path})});
    QCOMPARE(readBytes(path), before);
    QVERIFY(stage.asksBeforeClosing());
}

void TestProjectPaths::saving_to_nothing_fails()
{
    Stage stage;
    fillAndSave(stage);
    const MessageLog log;
    QVERIFY(!stage.result("saveProjectToFile", QString()));
    QCOMPARE(log.warnings(), QStringList{"vacuum into failed "_L1 + refusal(stage, u"VACUUM INTO ?"_s, {QString()})});
    QVERIFY(stage.asksBeforeClosing());
    // Without a database there is not even a try.
    stage.project().close();
    QVERIFY(!stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY(!QFile::exists(stage.path(u"saved.ormt"_s)));
    QVERIFY(stage.asksBeforeClosing());
}

QTEST_MAIN(TestProjectPaths)
#include "tst_projectpaths.moc"
