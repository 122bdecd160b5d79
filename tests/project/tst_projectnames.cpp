// Names of project files that Linux allows, and a folder of its own that takes no files.

#include "tests/project/projectfile.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

class TestProjectNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_name_of_any_letters_works_both_ways_data();
    void a_name_of_any_letters_works_both_ways();
    void a_folder_that_takes_no_files_leaves_all_as_it_is();
};

void TestProjectNames::a_name_of_any_letters_works_both_ways_data()
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

void TestProjectNames::a_name_of_any_letters_works_both_ways()
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

void TestProjectNames::a_folder_that_takes_no_files_leaves_all_as_it_is()
{
    Stage stage;
    openMine(stage);
    const QString path = u"/proc/orrinet.ormt"_s;
    {
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", path));
        QVERIFY(!stage.result("saveProjectToFile", path));
        QCOMPARE(log.warnings(),
                 (QStringList{"failed to open project "_L1 + openError(path), savingError(stage, path)}));
    }
    QCOMPARE(tableOfEachRow(stage), projectTables());
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, stage.path(u"mine.ormt"_s)));
}

ORRINET_TEST(TestProjectNames)
#include "tst_projectnames.moc"
