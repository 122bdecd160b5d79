// The rows of new and of changed personas.

#include "tests/support/entries.h"
#include "tests/support/shown.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QDateTime>
#include <QRegularExpression>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

static bool hasForm(const QString &text, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

/// What SQLite stored as the time of a change, which is in UTC and in whole seconds.
static QDateTime changeTime(Stage &stage, const QString &uuid)
{
    const QString text = stage.value(u"SELECT modified_at FROM personas WHERE uuid = ?"_s, {uuid}).toString();
    if (!hasForm(text, u"\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"_s))
        return {};
    QDateTime time = QDateTime::fromString(text, u"yyyy-MM-dd HH:mm:ss"_s);
    time.setTimeZone(QTimeZone::UTC);
    return time;
}

static QDateTime wholeSecond(const QDateTime &time)
{
    return time.addMSecs(-time.time().msec());
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
        stage.call("insertPersona", u"A"_s, u"a"_s);
        stage.call("insertPersona", u"A"_s, u"a"_s);
        const QStringList uuids = stage.column(u"SELECT uuid FROM personas"_s);
        QCOMPARE(uuids.size(), 2);
        for (const QString &uuid : uuids)
            QVERIFY2(hasForm(uuid, u"[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}"_s),
                     qUtf8Printable(uuid));
        QVERIFY(uuids.first() != uuids.last());
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
        const QString texts = u"SELECT typeof(name), name, typeof(attributes), attributes FROM personas"_s;
        const QString longer = text + u'.';
        stage.call("insertPersona", text, longer);
        QCOMPARE(stage.rows(texts), Rows({{u"text"_s, text, u"text"_s, longer}}));
        stage.call("updatePersona", newestUuid(stage), longer, text);
        QCOMPARE(stage.rows(texts), Rows({{u"text"_s, longer, u"text"_s, text}}));
    }

    void prompt_and_notes_stay_null_on_a_new_persona()
    {
        Stage stage;
        stage.call("insertPersona", u"A"_s, u"a"_s, u"x"_s);
        QCOMPARE(stage.rows(u"SELECT system_prompt IS NULL, notes IS NULL FROM personas"_s), Rows({{1, 1}}));
    }

    void creation_is_dated_in_local_time_and_change_in_utc()
    {
        Stage stage;
        const QDateTime before = QDateTime::currentDateTime();
        stage.call("insertPersona", u"A"_s, u"a"_s);
        const QDateTime after = QDateTime::currentDateTime();

        const QString text = stage.value(u"SELECT created_at FROM personas"_s).toString();
        QVERIFY2(hasForm(text, u"\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}"_s), qUtf8Printable(text));
        const QDateTime created = QDateTime::fromString(text, u"yyyy-MM-ddTHH:mm:ss.zzz"_s);
        QVERIFY(before <= created && created <= after);
        const QDateTime modified = changeTime(stage, newestUuid(stage));
        QVERIFY(wholeSecond(before) <= modified && modified <= after);

        // The list shows both as they are stored.
        QCOMPARE(cells(personaTable(stage)).constFirst().mid(4),
                 QStringList({text, stage.value(u"SELECT modified_at FROM personas"_s).toString()}));
    }

    void a_change_leaves_identity_prompt_notes_and_creation_alone()
    {
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"u1"_s, u"A"_s) && enterBeekeeper(stage, u"u2"_s, u"B"_s));
        const QString other = u"SELECT * FROM personas WHERE uuid = 'u2'"_s;
        const Rows untouched = stage.rows(other);
        const QDateTime before = QDateTime::currentDateTimeUtc();
        stage.call("updatePersona", u"u1"_s, u"C"_s, u"c"_s);

        QCOMPARE(stage.rows(u"SELECT uuid, name, attributes, system_prompt, notes, created_at FROM personas "
                            "WHERE uuid = 'u1'"_s),
                 Rows({{u"u1"_s, u"C"_s, u"c"_s, u"You keep bees."_s, u"by hand"_s, u"2001-02-03T04:05:06.789"_s}}));
        const QDateTime modified = changeTime(stage, u"u1"_s);
        QVERIFY(wholeSecond(before) <= modified && modified <= QDateTime::currentDateTimeUtc());
        QCOMPARE(stage.rows(other), untouched);
    }

    void two_personas_may_share_a_name()
    {
        Stage stage;
        stage.call("insertPersona", u"A"_s, u"first"_s, u"x"_s);
        const QString first = newestUuid(stage);
        stage.call("insertPersona", u"A"_s, u"second"_s, u"y"_s);
        const QString second = newestUuid(stage);

        stage.call("updatePersona", second, u"A"_s, u"changed"_s, u"z"_s);
        QCOMPARE(stage.column(u"SELECT attributes FROM personas ORDER BY rowid"_s),
                 QStringList({u"first"_s, u"changed"_s}));
        QCOMPARE(tagsOf(stage, first), QStringList{u"x"_s});
        QCOMPARE(tagsOf(stage, second), QStringList{u"z"_s});
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
            QVERIFY(enterBeekeeper(stage, u"u1"_s, u"A"_s));
        const QuietRefresh quiet(stage);
        QVERIFY(!stage.asksBeforeClosing());
        QStringList events;
        const QObject context;
        // The refresh empties the persona list first and fills the results grid last.
        connect(personaTable(stage)->model(), &QAbstractItemModel::modelReset, &context, [&] {
            events.append(u"name %1, tags %2, marked %3"_s.arg(stage.value(u"SELECT name FROM personas"_s).toString())
                              .arg(stage.count(u"persona_tags"_s))
                              .arg(stage.asksBeforeClosing()));
        });
        connect(resultsTable(stage)->model(), &QAbstractItemModel::rowsInserted, &context,
                [&] { events.append(u"grid, marked %1"_s.arg(stage.asksBeforeClosing())); });

        if (inserts)
            stage.call("insertPersona", u"B"_s, u"b"_s, u"x y"_s);
        else
            stage.call("updatePersona", u"u1"_s, u"B"_s, u"b"_s, u"x y"_s);
        QCOMPARE(events, QStringList({u"name B, tags 2, marked 0"_s, u"grid, marked 0"_s}));
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(columnTexts(personaTable(stage), 0), QStringList{u"B"_s});
        QCOMPARE(columnTexts(personaTable(stage), 2), QStringList{u"x,y"_s});
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"x"_s, u"y"_s}));
    }
};

ORRINET_TEST(TestPersonaRecords)
#include "tst_personarecords.moc"
