// A project read from a file: the views, the order of the steps, and what becomes of the file.

#include "tests/project/driverswap.h"
#include "tests/project/projectfile.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

/// Offers a list of tables, and notes whether the file is attached to the project by then.
class ListingDriver : public ClosedDriver
{
public:
    ListingDriver(Stage &stage, QList<bool> &noteAttached)
        : project(stage)
        , attached(noteAttached)
    {
    }
    bool open(const QString &, const QString &, const QString &, const QString &, int, const QString &) override
    {
        setOpen(true);
        return true;
    }
    QStringList tables(QSql::TableType) const override
    {
        attached.append(project.count(u"pragma_database_list WHERE name = 'disk'"_s) == 1);
        return {u"personas"_s};
    }

private:
    Stage &project;
    QList<bool> &attached;
};

} // namespace

class TestOpenedProject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opening_brings_all_views_into_line();
    void opening_leaves_the_conversation_as_it_is();
    void opening_writes_nothing_to_the_file();
    void a_missing_file_becomes_an_empty_one_and_an_empty_project();
    void the_file_is_attached_before_its_tables_are_asked_for();
    void the_path_is_known_when_the_views_are_refreshed();
    void the_file_is_closed_when_the_views_are_refreshed();
    void a_pack_in_the_list_gives_way_to_the_opened_project();
};

void TestOpenedProject::the_file_is_closed_when_the_views_are_refreshed()
{
    Stage stage;
    const QString path = writeOther(stage);
    int refreshes = 0;
    bool closed = false;
    const QObject context;
    connect(personaTable(stage)->model(), &QAbstractItemModel::rowsInserted, &context, [&] {
        ++refreshes;
        closed = QSqlDatabase::contains(u"diskproj"_s) && !QSqlDatabase::database(u"diskproj"_s, false).isOpen();
    });
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(refreshes, 1);
    QVERIFY(closed);
    QVERIFY(!QSqlDatabase::contains(u"diskproj"_s));
}

void TestOpenedProject::opening_brings_all_views_into_line()
{
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    showQuestions(stage, 3);
    const QString path = writeOther(stage);
    Stage::setTestMode(true);
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(cells(personaTable(stage)),
             (QList<QStringList>{{u"Number One"_s, u"one"_s, u"odd"_s, QString(), u""_s, u""_s}}));
    QCOMPARE(preambleEdit(stage)->toPlainText(), u"Pre."_s);
    QCOMPARE(postambleEdit(stage)->toPlainText(), u"Post."_s);
    QCOMPARE(items(tagFilter(stage)), (QStringList{u"All"_s, u"odd"_s}));
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(questionModel(stage)->rowCount(), 1);
    QVERIFY(questionView(stage)->isColumnHidden(0));
    const ConversationBox box(stage);
    QCOMPARE(box.persona->count(), 1);
    QCOMPARE(box.persona->itemData(0).toString(), u"one"_s);
    QCOMPARE(items(box.question), QStringList{u"1"_s});
    QCOMPARE(cells(resultsTable(stage)), (QList<QStringList>{{u"Number One"_s, u"Hm."_s, QString()}}));
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, path));
}

void TestOpenedProject::opening_leaves_the_conversation_as_it_is()
{
    Stage stage;
    const ConversationBox box(stage);
    box.view->setPlainText(u"Said before."_s);
    QVERIFY(stage.result("openProjectFromFile", writeOther(stage)));
    QCOMPARE(box.text(), u"Said before."_s);
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QCOMPARE(box.text(), u"Said before."_s);
}

void TestOpenedProject::opening_writes_nothing_to_the_file()
{
    Stage stage;
    Stage::setTestMode(true);
    const QString path = writeOther(stage);
    const QByteArray before = readBytes(path);
    for (int turn = 0; turn < 5; ++turn) {
        QVERIFY(stage.result("openProjectFromFile", path));
        QCOMPARE(tableOfEachRow(stage), projectTables());
        QCOMPARE(stage.count(u"pragma_database_list WHERE name = 'disk'"_s), 0);
        stage.call("insertPersona", u"Number Two"_s, u"Calm."_s);
        QCOMPARE(readBytes(path), before);
    }
    QCOMPARE(filesIn(stage), QStringList{u"other.ormt"_s});
    QVERIFY(onlyProjectIsConnected());
}

void TestOpenedProject::a_missing_file_becomes_an_empty_one_and_an_empty_project()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    Stage::setTestMode(true);
    const QString path = stage.path(u"missing.ormt"_s);
    QVERIFY(stage.result("openProjectFromFile", path));
    QVERIFY(QFile::exists(path));
    QCOMPARE(readBytes(path).size(), 0);
    // The default one.
    QCOMPARE(tableOfEachRow(stage), QStringList{u"boilerplate"_s});
    QCOMPARE(stage.count(u"sqlite_sequence"_s), 0);
    QVERIFY(shownPersonas(stage).isEmpty());
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
    // The empty file is no hindrance, so this is a path that "Save" works with at once.
    stage.action(u"Save"_s)->trigger();
    QVERIFY(!readBytes(path).isEmpty());
}

void TestOpenedProject::the_file_is_attached_before_its_tables_are_asked_for()
{
    Stage stage;
    stage.window();
    const QString path = writeOther(stage);
    QList<bool> attached;
    {
        const DriverSwap swap([&] { return new ListingDriver(stage, attached); });
        QVERIFY(stage.result("openProjectFromFile", path));
    }
    // Else a file that is locked while its tables are listed, and free again when it is attached, would seem empty.
    QCOMPARE(attached, QList<bool>{true});
    // The list decides what is copied; the boilerplate is the default one.
    QCOMPARE(tableOfEachRow(stage), (QStringList{u"boilerplate"_s, u"personas"_s}));
}

void TestOpenedProject::the_path_is_known_when_the_views_are_refreshed()
{
    Stage stage;
    const QString path = writeOther(stage);
    const MessageLog log;
    Stage::setTestMode(true);
    // Without a path "Save" is silent in test mode; with one it reports that it writes over no file.
    connect(preambleEdit(stage), &QPlainTextEdit::textChanged, this, [&stage] { stage.call("saveProject"); });
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(log.warnings(), QStringList{savingError(stage, path)});
}

void TestOpenedProject::a_pack_in_the_list_gives_way_to_the_opened_project()
{
    Stage stage;
    Stage::setTestMode(true);
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    QVERIFY(stage.result("exportPackToFile", stage.path(u"pack.ornk"_s)));
    stage.call("loadPack", stage.path(u"pack.ornk"_s));
    QVERIFY(stage.result("openProjectFromFile", writeOther(stage)));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    // Yet the tag filter goes on working on the pack.
    stage.call("applyTagFilter");
    QCOMPARE(shownPersonas(stage), QStringList{u"Number Nine"_s});
}

ORRINET_TEST(TestOpenedProject)
#include "tst_openedproject.moc"
