// A project read from a file: the views, the order of the steps, and what is left of the project before.

#include "tests/project/driverswap.h"
#include "tests/project/projectfile.h"
#include "tests/support/messagelog.h"

#include <QComboBox>
#include <QGroupBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QPlainTextEdit *conversationView(Stage &stage)
{
    return stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>()->findChild<QPlainTextEdit *>();
}

QList<QComboBox *> conversationChoosers(Stage &stage)
{
    return stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>()->findChildren<QComboBox *>();
}

/// Offers a list of tables, and notes whether the file is attached to the project by then.
class ListingDriver : public ClosedDriver
{
public:
    explicit ListingDriver(QList<bool> *noteAttached)
        : attached(noteAttached)
    {
    }
    bool open(const QString &, const QString &, const QString &, const QString &, int, const QString &) override
    {
        setOpen(true);
        return true;
    }
    QStringList tables(QSql::TableType) const override
    {
        QSqlQuery query(QSqlDatabase::database(u"project"_s));
        query.exec(u"SELECT * FROM pragma_database_list WHERE name = 'disk'"_s);
        attached->append(query.next());
        return {u"personas"_s};
    }

private:
    QList<bool> *attached;
};

} // namespace

class TestOpenedProject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opening_brings_all_views_into_line();
    void opening_leaves_the_conversation_as_it_is();
    void opening_writes_nothing_to_the_file();
    void opening_again_and_again();
    void a_missing_file_becomes_an_empty_one_and_an_empty_project();
    void a_file_without_boilerplate_gets_the_default();
    void tables_are_emptied_and_then_filled_in_their_order();
    void the_file_is_attached_before_its_tables_are_asked_for();
    void the_question_list_goes_before_its_rows();
    void the_path_is_known_when_the_views_are_refreshed();
    void the_filter_of_before_holds_for_the_first_refresh_data();
    void the_filter_of_before_holds_for_the_first_refresh();
    void a_pack_in_the_list_gives_way_to_the_opened_project();
};

void TestOpenedProject::opening_brings_all_views_into_line()
{
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    QVERIFY(enterQuestions(stage, 3));
    const QString path = stage.path(u"other.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    Stage::setTestMode(true);
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"personaTable"_s)).constFirst().first(3),
             (QStringList{u"Number One"_s, u"one"_s, u"odd"_s}));
    QCOMPARE(shownPersonas(stage).size(), 1);
    QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Pre."_s);
    QCOMPARE(stage.find<QPlainTextEdit>(u"postambleEdit"_s)->toPlainText(), u"Post."_s);
    QCOMPARE(stage.find<QComboBox>(u"tagFilter"_s)->itemText(1), u"odd"_s);
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(questionModel(stage)->rowCount(), 1);
    QVERIFY(questionView(stage)->isColumnHidden(0));
    QCOMPARE(conversationChoosers(stage).at(0)->itemData(0).toString(), u"one"_s);
    QCOMPARE(conversationChoosers(stage).at(1)->count(), 1);
    QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)),
             (QList<QStringList>{{u"Number One"_s, u"Hm."_s, QString()}}));
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, path));
}

void TestOpenedProject::opening_leaves_the_conversation_as_it_is()
{
    Stage stage;
    conversationView(stage)->setPlainText(u"Said before."_s);
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QCOMPARE(conversationView(stage)->toPlainText(), u"Said before."_s);
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QCOMPARE(conversationView(stage)->toPlainText(), u"Said before."_s);
}

void TestOpenedProject::opening_writes_nothing_to_the_file()
{
    Stage stage;
    QVERIFY(QDir(stage.path(QString())).mkdir(u"files"_s));
    const QString path = stage.path(u"files/other.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    const QByteArray before = readBytes(path);
    QVERIFY(stage.result("openProjectFromFile", path));
    stage.call("insertPersona", u"Number Two"_s, u"Calm."_s);
    QCOMPARE(readBytes(path), before);
    QCOMPARE(QDir(stage.path(u"files"_s)).entryList(QDir::Files | QDir::Hidden), QStringList{u"other.ormt"_s});
    QVERIFY(onlyProjectIsConnected());
}

void TestOpenedProject::opening_again_and_again()
{
    Stage stage;
    const QString path = stage.path(u"other.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    for (int turn = 0; turn < 5; ++turn) {
        QVERIFY(stage.result("openProjectFromFile", path));
        QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
        QCOMPARE(count(stage, u"responses"_s), 1);
        QVERIFY(stage.rows(u"SELECT * FROM pragma_database_list WHERE name = 'disk'"_s).isEmpty());
    }
}

void TestOpenedProject::a_missing_file_becomes_an_empty_one_and_an_empty_project()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    const QString path = stage.path(u"missing.ormt"_s);
    QVERIFY(stage.result("openProjectFromFile", path));
    QVERIFY(QFile::exists(path));
    QCOMPARE(readBytes(path).size(), 0);
    for (const auto table : {"personas"_L1, "questions"_L1, "responses"_L1, "tags"_L1, "sqlite_sequence"_L1})
        QVERIFY2(count(stage, table) == 0, table.data());
    QVERIFY(shownPersonas(stage).isEmpty());
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
    // The empty file is no hindrance, so this is a path that "Save" works with at once.
    stage.action(u"Save"_s)->trigger();
    QVERIFY(!readBytes(path).isEmpty());
}

void TestOpenedProject::a_file_without_boilerplate_gets_the_default()
{
    Stage stage;
    stage.find<QPlainTextEdit>(u"preambleEdit"_s)->setPlainText(u"Old."_s);
    stage.find<QPlainTextEdit>(u"postambleEdit"_s)->setPlainText(u"Old, too."_s);
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s)));
    Stage::setTestMode(true);
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Act as the following persona."_s);
    QCOMPARE(stage.find<QPlainTextEdit>(u"postambleEdit"_s)->toPlainText(), QString());
    QCOMPARE(stage.rows(u"SELECT preamble, postamble FROM boilerplate"_s),
             (Rows{{u"Act as the following persona."_s, QString()}}));
    QVERIFY(!stage.asksBeforeClosing());
}

void TestOpenedProject::tables_are_emptied_and_then_filled_in_their_order()
{
    Stage stage;
    const QString path = stage.path(u"other.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    QVERIFY(stage.result("openProjectFromFile", path));
    stage.exec(u"CREATE TABLE journal (id INTEGER PRIMARY KEY, act TEXT)"_s);
    const QString trigger = u"CREATE TRIGGER %1_%2 AFTER %1 ON %2 BEGIN "
                            "INSERT INTO journal (act) VALUES ('%1 %2'); END"_s;
    const QStringList filled = {u"metadata"_s,  u"boilerplate"_s,          u"personas"_s,
                                u"questions"_s, u"question_attachments"_s, u"responses"_s,
                                u"tags"_s,      u"persona_tags"_s};
    const QStringList emptied = {u"responses"_s, u"persona_tags"_s, u"tags"_s,        u"question_attachments"_s,
                                 u"questions"_s, u"personas"_s,     u"boilerplate"_s, u"metadata"_s};
    for (const QString &table : filled) {
        QVERIFY(stage.exec(trigger.arg(u"insert"_s, table)));
        QVERIFY(stage.exec(trigger.arg(u"delete"_s, table)));
    }
    QVERIFY(stage.result("openProjectFromFile", path));

    Rows expected;
    for (const QString &table : emptied)
        expected.append(QVariantList{QString("delete "_L1 + table)});
    for (const QString &table : filled)
        expected.append(QVariantList{QString("insert "_L1 + table)});
    // The refresh passes through the two text slots.
    for (int slot = 0; slot < 2; ++slot)
        expected << QVariantList{u"delete boilerplate"_s} << QVariantList{u"insert boilerplate"_s};
    QCOMPARE(stage.rows(u"SELECT act FROM journal ORDER BY id"_s), expected);
}

void TestOpenedProject::the_file_is_attached_before_its_tables_are_asked_for()
{
    Stage stage;
    stage.window();
    const QString path = stage.path(u"other.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    QList<bool> attached;
    {
        const DriverSwap swap([&attached] { return new ListingDriver(&attached); });
        QVERIFY(stage.result("openProjectFromFile", path));
    }
    // Else a file that is locked while its tables are listed, and free again when it is attached, would seem empty.
    QCOMPARE(attached, QList<bool>{true});
    // The list decides what is copied.
    QCOMPARE(count(stage, u"personas"_s), 1);
    QCOMPARE(count(stage, u"questions"_s), 0);
}

void TestOpenedProject::the_question_list_goes_before_its_rows()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 3));
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    const QPointer<QSqlTableModel> before = questionModel(stage);
    int questionsAtItsEnd = -1;
    connect(before, &QObject::destroyed, this, [&] { questionsAtItsEnd = count(stage, u"questions"_s); });
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QVERIFY(before.isNull());
    QCOMPARE(questionsAtItsEnd, 3);
    QVERIFY(questionListIsWhole(stage));
}

void TestOpenedProject::the_path_is_known_when_the_views_are_refreshed()
{
    Stage stage;
    const QString path = stage.path(u"other.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    const MessageLog log;
    Stage::setTestMode(true);
    // Without a path "Save" is silent in test mode; with one it reports that it writes over no file.
    connect(stage.find<QPlainTextEdit>(u"preambleEdit"_s), &QPlainTextEdit::textChanged, this,
            [&stage] { stage.call("saveProject"); });
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY(log.warnings().constFirst().startsWith("vacuum into failed "_L1));
}

void TestOpenedProject::the_filter_of_before_holds_for_the_first_refresh_data()
{
    QTest::addColumn<QString>("known");
    QTest::addColumn<QStringList>("shown");
    QTest::addColumn<QString>("chosen");
    QTest::newRow("a tag of both projects") << u"odd"_s << QStringList{u"Number One"_s} << u"odd"_s;
    QTest::newRow("a tag of the project before alone") << u"even"_s << QStringList() << u"All"_s;
}

void TestOpenedProject::the_filter_of_before_holds_for_the_first_refresh()
{
    QFETCH(const QString, known);
    QFETCH(const QStringList, shown);
    QFETCH(const QString, chosen);
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s, known);
    auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
    filter->setCurrentText(known);
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s),
                            oneOfEach() << u"INSERT INTO personas (uuid, name) VALUES ('two', 'Number Two')"_s));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QCOMPARE(shownPersonas(stage), shown);
    QCOMPARE(filter->currentText(), chosen);
    QCOMPARE(filter->count(), 2);
    QCOMPARE(conversationChoosers(stage).at(0)->count(), 2);
    filter->setCurrentText(u"All"_s);
    stage.call("loadProject");
    QCOMPARE(shownPersonas(stage), (QStringList{u"Number One"_s, u"Number Two"_s}));
}

void TestOpenedProject::a_pack_in_the_list_gives_way_to_the_opened_project()
{
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    QVERIFY(stage.result("exportPackToFile", stage.path(u"pack.ornk"_s)));
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    stage.call("loadPack", stage.path(u"pack.ornk"_s));
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    // Yet the tag filter goes on working on the pack.
    stage.call("applyTagFilter");
    QCOMPARE(shownPersonas(stage), QStringList{u"Number Nine"_s});
}

QTEST_MAIN(TestOpenedProject)
#include "tst_openedproject.moc"
