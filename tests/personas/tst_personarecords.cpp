#include "tests/personas/panel.h"

#include <QComboBox>
#include <QDateTime>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

static QStringList offeredTags(Stage &stage)
{
    const auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
    QStringList names;
    for (int index = 0; index < filter->count(); ++index)
        names.append(filter->itemText(index));
    return names;
}

static bool hasForm(const QString &text, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

class TestPersonaRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A zone in which local time and UTC can't be mistaken for each other.
        qputenv("TZ", "XST-5");
        QCOMPARE(QDateTime(QDate(2020, 1, 1), QTime(0, 0)).offsetFromUtc(), 5 * 3600);
    }

    void a_persona_gets_a_random_identity_without_braces()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s));
        const QString first = newestUuid(stage);
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s));
        const QString second = newestUuid(stage);

        const QString form = u"[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}"_s;
        QVERIFY2(hasForm(first, form), qUtf8Printable(first));
        QVERIFY2(hasForm(second, form), qUtf8Printable(second));
        QVERIFY(first != second);
    }

    void name_and_description_are_stored_as_entered_data()
    {
        QTest::addColumn<QString>("text");

        QTest::newRow("empty") << u""_s;
        QTest::newRow("plain") << u"A beekeeper."_s;
        QTest::newRow("blanks at the ends") << u"  a  "_s;
        QTest::newRow("line breaks") << u"one\ntwo\r\n\nthree\n"_s;
        QTest::newRow("quotes") << u"it's a \"quote\"; --"_s;
        QTest::newRow("placeholder") << u"? :name %1"_s;
        QTest::newRow("outside ASCII") << u"\u00DC\u00A0\u2028 \u4E2D \U0001F41D"_s;
    }
    void name_and_description_are_stored_as_entered()
    {
        QFETCH(const QString, text);
        Stage stage;
        QVERIFY(stage.call("insertPersona", text, QString(text + u'.')));
        QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas"_s),
                 Rows({QVariantList{text, QString(text + u'.')}}));

        const QString uuid = newestUuid(stage);
        QVERIFY(stage.call("updatePersona", uuid, QString(text + u'!'), text));
        QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas"_s),
                 Rows({QVariantList{QString(text + u'!'), text}}));
    }

    void a_persona_may_have_nothing_but_empty_texts()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u""_s, u""_s, u""_s));
        QCOMPARE(stage.rows(u"SELECT typeof(name), name, typeof(attributes), attributes FROM personas"_s),
                 Rows({QVariantList{u"text"_s, u""_s, u"text"_s, u""_s}}));
        QCOMPARE(count(stage, u"persona_tags"_s), 0);
        QCOMPARE(count(stage, u"tags"_s), 0);
    }

    void prompt_and_notes_stay_null_on_a_new_persona()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x"_s));
        QCOMPARE(stage.rows(u"SELECT system_prompt IS NULL, notes IS NULL FROM personas"_s),
                 Rows({QVariantList{1, 1}}));
    }

    void creation_is_dated_in_local_time_and_change_in_utc()
    {
        Stage stage;
        const QDateTime before = QDateTime::currentDateTime();
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s));
        const QDateTime after = QDateTime::currentDateTime();

        const QString createdText = stage.value(u"SELECT created_at FROM personas"_s).toString();
        QVERIFY2(hasForm(createdText, u"\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}"_s),
                 qUtf8Printable(createdText));
        const QDateTime created = QDateTime::fromString(createdText, u"yyyy-MM-ddTHH:mm:ss.zzz"_s);
        QVERIFY(before <= created && created <= after);

        const QString modifiedText = stage.value(u"SELECT modified_at FROM personas"_s).toString();
        QVERIFY2(hasForm(modifiedText, u"\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"_s), qUtf8Printable(modifiedText));
        QDateTime modified = QDateTime::fromString(modifiedText, u"yyyy-MM-dd HH:mm:ss"_s);
        modified.setTimeZone(QTimeZone::UTC);
        QVERIFY(before.addMSecs(-before.time().msec()) <= modified && modified <= after);
    }

    void the_list_shows_both_dates_as_they_are_stored()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s));
        const QStringList shown = Stage::cells(personaTable(stage)).constFirst().mid(4);
        QCOMPARE(shown, QStringList({stage.value(u"SELECT created_at FROM personas"_s).toString(),
                                     stage.value(u"SELECT modified_at FROM personas"_s).toString()}));
    }

    void two_personas_may_share_a_name()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"first"_s, u"x"_s));
        const QString first = newestUuid(stage);
        QVERIFY(stage.call("insertPersona", u"A"_s, u"second"_s, u"y"_s));
        const QString second = newestUuid(stage);

        QVERIFY(stage.call("updatePersona", second, u"A"_s, u"changed"_s, u"z"_s));
        QCOMPARE(column(stage, u"SELECT attributes FROM personas ORDER BY rowid"_s),
                 QStringList({u"first"_s, u"changed"_s}));
        QCOMPARE(tagsOf(stage, first), QStringList{u"x"_s});
        QCOMPARE(tagsOf(stage, second), QStringList{u"z"_s});
    }

    void a_new_persona_shows_at_once_and_counts_as_a_change()
    {
        Stage stage;
        stage.window();
        const QuietRefresh quiet(stage);
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x"_s));
        QCOMPARE(personaTable(stage)->rowCount(), 1);
        QCOMPARE(offeredTags(stage), QStringList({u"All"_s, u"x"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_change_shows_at_once_and_counts_as_one()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        const QuietRefresh quiet(stage);
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(stage.call("updatePersona", u"u1"_s, u"B"_s, u"b"_s, u"x"_s));
        QCOMPARE(Stage::cells(personaTable(stage)).constFirst().first(3), QStringList({u"B"_s, u"u1"_s, u"x"_s}));
        QCOMPARE(offeredTags(stage), QStringList({u"All"_s, u"x"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_change_leaves_identity_prompt_notes_and_creation_alone()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterPersona(stage, u"u2"_s, u"B"_s));
        const QDateTime before = QDateTime::currentDateTimeUtc();
        QVERIFY(stage.call("updatePersona", u"u1"_s, u"C"_s, u"c"_s));

        const QString fixed = u"SELECT uuid, name, attributes, system_prompt, notes, created_at FROM personas "
                              "WHERE uuid = ?"_s;
        QCOMPARE(stage.rows(fixed, {u"u1"_s}), Rows({QVariantList{u"u1"_s, u"C"_s, u"c"_s, u"You keep bees."_s,
                                                                  u"by hand"_s, u"2001-02-03T04:05:06.789"_s}}));
        QCOMPARE(stage.rows(fixed, {u"u2"_s}).constFirst().at(2), u"keeps bees"_s);

        const QString dated = u"SELECT modified_at FROM personas WHERE uuid = ?"_s;
        QDateTime modified = QDateTime::fromString(stage.value(dated, {u"u1"_s}).toString(), u"yyyy-MM-dd HH:mm:ss"_s);
        modified.setTimeZone(QTimeZone::UTC);
        QVERIFY(before.addMSecs(-before.time().msec()) <= modified && modified <= QDateTime::currentDateTimeUtc());
        QCOMPARE(stage.value(dated, {u"u2"_s}), u"2001-02-03 04:05:06"_s);
    }

    void a_change_without_tags_takes_all_of_them_away()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x y"_s));
        const QString uuid = newestUuid(stage);
        QCOMPARE(tagsOf(stage, uuid), QStringList({u"x"_s, u"y"_s}));

        QVERIFY(stage.call("updatePersona", uuid, u"A"_s, u"a"_s));
        QCOMPARE(count(stage, u"persona_tags"_s), 0);
        QCOMPARE(knownTags(stage), QStringList({u"x"_s, u"y"_s}));
        QCOMPARE(offeredTags(stage), QStringList({u"All"_s, u"x"_s, u"y"_s}));
        QCOMPARE(personaTable(stage)->item(0, 2)->text(), QString());
    }

    void changing_an_unknown_persona_only_links_its_tags()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        const auto before = stage.rows(u"SELECT * FROM personas"_s);
        const QuietRefresh quiet(stage);
        QVERIFY(!stage.asksBeforeClosing());

        QVERIFY(stage.call("updatePersona", u"nobody"_s, u"B"_s, u"b"_s, u"x y"_s));
        QCOMPARE(stage.rows(u"SELECT * FROM personas"_s), before);
        QCOMPARE(tagsOf(stage, u"nobody"_s), QStringList({u"x"_s, u"y"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void rows_are_written_before_the_refresh_and_the_flag_is_set_after_it_data()
    {
        QTest::addColumn<bool>("inserts");
        QTest::newRow("insert") << true;
        QTest::newRow("update") << false;
    }
    void rows_are_written_before_the_refresh_and_the_flag_is_set_after_it()
    {
        QFETCH(const bool, inserts);
        Stage stage;
        if (!inserts)
            QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        const QuietRefresh quiet(stage);
        QStringList events;
        const QObject context;
        // The refresh empties the persona list first and fills the results grid last.
        connect(personaTable(stage)->model(), &QAbstractItemModel::modelReset, &context, [&] {
            events.append(u"name %1, tags %2, marked %3"_s.arg(stage.value(u"SELECT name FROM personas"_s).toString())
                              .arg(count(stage, u"persona_tags"_s))
                              .arg(stage.asksBeforeClosing()));
        });
        const auto *results = stage.find<QTableWidget>(u"resultsTable"_s);
        connect(results->model(), &QAbstractItemModel::rowsInserted, &context,
                [&] { events.append(u"grid, marked %1"_s.arg(stage.asksBeforeClosing())); });

        if (inserts)
            QVERIFY(stage.call("insertPersona", u"B"_s, u"b"_s, u"x y"_s));
        else
            QVERIFY(stage.call("updatePersona", u"u1"_s, u"B"_s, u"b"_s, u"x y"_s));
        QCOMPARE(events, QStringList({u"name B, tags 2, marked 0"_s, u"grid, marked 0"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestPersonaRecords)
#include "tst_personarecords.moc"
