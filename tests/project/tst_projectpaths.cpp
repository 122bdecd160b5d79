// Places of project files: relative, empty, taken and impossible ones.

#include "tests/project/projectfile.h"

#include <QDir>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

class TestProjectPaths : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_relative_path_works_both_ways();
    void an_empty_path_is_a_project_of_no_file();
    void an_impossible_place_leaves_all_as_it_is_data();
    void an_impossible_place_leaves_all_as_it_is();
    void a_file_with_content_is_never_written_over_data();
    void a_file_with_content_is_never_written_over();
    void saving_to_nothing_fails();
};

void TestProjectPaths::a_relative_path_works_both_ways()
{
    Stage stage;
    const auto back = qScopeGuard([before = QDir::currentPath()] { QDir::setCurrent(before); });
    QVERIFY(QDir::setCurrent(stage.path(QString())));
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    const QString name = u"it's mine.ormt"_s;
    QVERIFY(stage.result("saveProjectToFile", name));
    QCOMPARE(filesIn(stage), QStringList{name});
    QVERIFY(stage.result("openProjectFromFile", name));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    // The path is kept as it was given.
    QVERIFY(QDir(stage.path(QString())).mkdir(u"elsewhere"_s));
    QVERIFY(QDir::setCurrent(stage.path(u"elsewhere"_s)));
    QVERIFY(savesTo(stage, name));
    QCOMPARE(filesIn(stage, u"elsewhere"_s), QStringList{name});
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

void TestProjectPaths::an_impossible_place_leaves_all_as_it_is_data()
{
    QTest::addColumn<QString>("place");
    QTest::newRow("a folder") << u"folder"_s;
    QTest::newRow("in a folder that is not there") << u"no/where.ormt"_s;
    QTest::newRow("below a file") << u"file/below"_s;
    QTest::newRow("a name too long") << QString(256, u'n');
}

void TestProjectPaths::an_impossible_place_leaves_all_as_it_is()
{
    QFETCH(const QString, place);
    Stage stage;
    openMine(stage);
    QVERIFY(QDir(stage.path(QString())).mkdir(u"folder"_s));
    writeBytes(stage.path(u"file"_s), "no folder"_ba);
    const QString path = stage.path(place);
    const QStringList files = filesIn(stage);
    const QSqlTableModel *model = questionModel(stage);
    {
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", path));
        QVERIFY(!stage.result("saveProjectToFile", path));
        QCOMPARE(log.warnings(),
                 (QStringList{"failed to open project "_L1 + openError(path), savingError(stage, path)}));
        QVERIFY(!openError(path).isEmpty());
    }
    QVERIFY(onlyProjectIsConnected());
    QCOMPARE(filesIn(stage), files);
    QCOMPARE(tableOfEachRow(stage), projectTables());
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QCOMPARE(questionModel(stage), model);
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
    QTest::newRow("the file of the project") << QByteArray();
}

void TestProjectPaths::a_file_with_content_is_never_written_over()
{
    QFETCH(const QByteArray, content);
    Stage stage;
    openMine(stage);
    const QString mine = stage.path(u"mine.ormt"_s);
    const QString path = content.isEmpty() ? mine : writeBytes(stage.path(u"there.ormt"_s), content);
    const QByteArray before = readBytes(path);
    QVERIFY(!before.isEmpty());
    {
        const MessageLog log;
        QVERIFY(!stage.result("saveProjectToFile", path));
        QCOMPARE(log.warnings(), QStringList{savingError(stage, path)});
    }
    QCOMPARE(readBytes(path), before);
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, mine));
}

void TestProjectPaths::saving_to_nothing_fails()
{
    Stage stage;
    openMine(stage);
    const MessageLog log;
    QVERIFY(!stage.result("saveProjectToFile", QString()));
    QCOMPARE(log.warnings(), QStringList{savingError(stage, QString())});
    QVERIFY(stage.asksBeforeClosing());
    // Without a database there is not even a try.
    stage.database().close();
    QVERIFY(!stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY(!QFile::exists(stage.path(u"saved.ormt"_s)));
    QVERIFY(stage.asksBeforeClosing());
}

ORRINET_TEST(TestProjectPaths)
#include "tst_projectpaths.moc"
