// The tag filter over the personas of a project.

#include "tests/project/projectfile.h"
#include "tests/support/entries.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace {

/// Enters personas "a", "b" ... with these tags and refreshes the views.
void showTagged(Stage &stage, const QList<QStringList> &tags)
{
    char16_t uuid = u'a';
    for (const QStringList &each : tags)
        QVERIFY(enter(stage, PersonaEntered{.uuid = QString(QChar(uuid++)), .name = u"Number One"_s, .tags = each}));
    stage.call("loadProject");
    QCOMPARE(personaTable(stage)->rowCount(), tags.size());
}

QStringList shownUuids(Stage &stage)
{
    return columnTexts(personaTable(stage), 1);
}

} // namespace

class TestProjectTagFilter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tags_are_offered_behind_All();
    void filter_narrows_rows_and_tags();
    void empty_filter_shows_everyone();
    void filter_is_compared_exactly();
    void tag_named_All_is_listed_and_filters_nothing();
    void chooser_is_silent_while_it_is_refilled();
    void filter_of_before_counts_once_more_where_it_is_gone();
    void opened_project_is_filtered_once_by_the_tag_of_before_data();
    void opened_project_is_filtered_once_by_the_tag_of_before();
    void filter_means_nothing_where_there_are_no_tables_of_tags();
    void tags_that_cannot_be_read_leave_All_alone();
};

void TestProjectTagFilter::tags_are_offered_behind_All()
{
    Stage stage;
    QVERIFY(enter(stage, TagEntered{.name = u"borne by nobody"_s}));
    showTagged(stage, {{u"odd"_s, u"Calm"_s}, {u"even"_s}});
    for (int turn = 0; turn < 2; ++turn) {
        QCOMPARE(items(tagFilter(stage)),
                 (QStringList{u"All"_s, u"Calm"_s, u"borne by nobody"_s, u"even"_s, u"odd"_s}));
        QCOMPARE(tagFilter(stage)->currentText(), u"All"_s);
        stage.call("loadProject");
    }
}

void TestProjectTagFilter::filter_narrows_rows_and_tags()
{
    Stage stage;
    showTagged(stage, {{u"odd"_s, u"calm"_s}, {u"even"_s}, {u"calm"_s, u"odd"_s}});
    tagFilter(stage)->setCurrentText(u"odd"_s);
    QCOMPARE(shownUuids(stage), (QStringList{u"a"_s, u"c"_s}));
    QCOMPARE(columnTexts(personaTable(stage), 2), (QStringList{u"odd"_s, u"odd"_s}));
    QCOMPARE(tagFilter(stage)->currentText(), u"odd"_s);
    // Only the list is narrowed.
    QCOMPARE(ConversationBox(stage).persona->count(), 3);
    QCOMPARE(resultsTable(stage)->rowCount(), 3);

    tagFilter(stage)->setCurrentText(u"All"_s);
    QCOMPARE(shownUuids(stage), (QStringList{u"a"_s, u"b"_s, u"c"_s}));
    QCOMPARE(columnTexts(personaTable(stage), 2).constFirst().split(u',').size(), 2);
}

void TestProjectTagFilter::empty_filter_shows_everyone()
{
    Stage stage;
    showTagged(stage, {{u"odd"_s}, {}});
    tagFilter(stage)->setCurrentText(u"odd"_s);
    QCOMPARE(shownUuids(stage), QStringList{u"a"_s});
    tagFilter(stage)->setCurrentIndex(-1);
    QCOMPARE(shownUuids(stage), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(tagFilter(stage)->currentText(), u"All"_s);
}

void TestProjectTagFilter::filter_is_compared_exactly()
{
    Stage stage;
    showTagged(stage, {{u"all"_s}, {u"ALL"_s}});
    QComboBox *filter = tagFilter(stage);
    filter->setCurrentIndex(filter->findText(u"all"_s, Qt::MatchExactly | Qt::MatchCaseSensitive));
    QCOMPARE(shownUuids(stage), QStringList{u"a"_s});
}

void TestProjectTagFilter::tag_named_All_is_listed_and_filters_nothing()
{
    Stage stage;
    showTagged(stage, {{u"All"_s}, {u"odd"_s}});
    QCOMPARE(items(tagFilter(stage)), (QStringList{u"All"_s, u"All"_s, u"odd"_s}));
    tagFilter(stage)->setCurrentIndex(2);
    QCOMPARE(shownUuids(stage), QStringList{u"b"_s});
    tagFilter(stage)->setCurrentIndex(1);
    QCOMPARE(shownUuids(stage), (QStringList{u"a"_s, u"b"_s}));
}

void TestProjectTagFilter::chooser_is_silent_while_it_is_refilled()
{
    Stage stage;
    const QSignalSpy changes(tagFilter(stage), &QComboBox::currentTextChanged);
    showTagged(stage, {{u"odd"_s}});
    QCOMPARE(changes.size(), 0);
    tagFilter(stage)->setCurrentText(u"odd"_s);
    QCOMPARE(changes.size(), 1);
    QVERIFY(!tagFilter(stage)->signalsBlocked());
}

void TestProjectTagFilter::filter_of_before_counts_once_more_where_it_is_gone()
{
    Stage stage;
    showTagged(stage, {{u"odd"_s}, {}});
    tagFilter(stage)->setCurrentText(u"odd"_s);
    QVERIFY(stage.exec(u"DELETE FROM tags"_s));
    stage.call("loadProject");
    QCOMPARE(shownUuids(stage), QStringList());
    QCOMPARE(tagFilter(stage)->currentText(), u"All"_s);
    stage.call("loadProject");
    QCOMPARE(shownUuids(stage), (QStringList{u"a"_s, u"b"_s}));
}

void TestProjectTagFilter::opened_project_is_filtered_once_by_the_tag_of_before_data()
{
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QStringList>("shown");
    QTest::addColumn<QString>("filter");
    QTest::newRow("a tag that it knows") << u"odd"_s << QStringList{u"one"_s} << u"odd"_s;
    QTest::newRow("a tag that it lacks") << u"even"_s << QStringList() << u"All"_s;
}

void TestProjectTagFilter::opened_project_is_filtered_once_by_the_tag_of_before()
{
    QFETCH(const QString, chosen);
    QFETCH(const QStringList, shown);
    QFETCH(const QString, filter);
    Stage stage;
    Stage::setTestMode(true);
    showTagged(stage, {{chosen}});
    tagFilter(stage)->setCurrentText(chosen);
    const QString path =
        writeProject(stage.path(u"other.ormt"_s), oneOfEach() << u"INSERT INTO personas (uuid) VALUES ('two')"_s);
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(shownUuids(stage), shown);
    QCOMPARE(tagFilter(stage)->currentText(), filter);
    QCOMPARE(items(tagFilter(stage)), (QStringList{u"All"_s, u"odd"_s}));
    QCOMPARE(ConversationBox(stage).persona->count(), 2);
    tagFilter(stage)->setCurrentText(u"All"_s);
    stage.call("loadProject");
    QCOMPARE(shownUuids(stage), (QStringList{u"one"_s, u"two"_s}));
}

void TestProjectTagFilter::filter_means_nothing_where_there_are_no_tables_of_tags()
{
    Stage stage;
    showTagged(stage, {{u"odd"_s}, {}});
    tagFilter(stage)->setCurrentText(u"odd"_s);
    QVERIFY(stage.exec({u"DROP TABLE tags"_s, u"DROP TABLE persona_tags"_s}));
    stage.call("loadProject");
    QCOMPARE(shownUuids(stage), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(columnTexts(personaTable(stage), 2), (QStringList{u""_s, u""_s}));
    QCOMPARE(items(tagFilter(stage)), QStringList{u"All"_s});
    QCOMPARE(ConversationBox(stage).persona->count(), 2);
}

void TestProjectTagFilter::tags_that_cannot_be_read_leave_All_alone()
{
    Stage stage;
    showTagged(stage, {{u"odd"_s}});
    QVERIFY(stage.exec({u"DROP TABLE tags"_s, u"CREATE TABLE tags (id INTEGER PRIMARY KEY, label TEXT)"_s}));
    const MessageLog log;
    stage.call("loadProject");
    QCOMPARE(items(tagFilter(stage)), QStringList{u"All"_s});
    // The one warning is that of the persona list, which asks for the same column.
    QCOMPARE(log.warnings(), QStringList{stage.refusal(u"SELECT t.name FROM tags t"_s)});
}

ORRINET_TEST(TestProjectTagFilter)
#include "tst_projecttagfilter.moc"
