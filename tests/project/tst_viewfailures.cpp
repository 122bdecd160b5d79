// The refresh of the views on a project that lacks tables or has odd ones in their place.

#include "tests/project/panel.h"
#include "tests/support/messagelog.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

/// What the driver says of a failing statement on the project.
static QString errorText(Stage &stage, const QString &statement)
{
    QSqlQuery query(stage.project());
    if (query.prepare(statement))
        query.exec();
    return query.lastError().text();
}

class TestViewFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void persona_list_that_cannot_be_read_ends_the_refresh_data()
    {
        QTest::addColumn<QString>("replacement");
        QTest::addRow("the statement can't be prepared") << QString();
        // A number that overflows is found out only when the row is read.
        QTest::addRow("the statement fails on its way")
            << u"CREATE VIEW personas AS SELECT abs(-9223372036854775808) AS uuid, 'x' AS name, 'x' AS attributes, "
               "'x' AS created_at, 'x' AS modified_at"_s;
    }

    void persona_list_that_cannot_be_read_ends_the_refresh()
    {
        QFETCH(QString, replacement);
        Stage stage;
        storePersonas(stage, {{u"one"_s, u"Number One"_s, {u"odd"_s}}});
        stage.call("loadProject");
        stage.exec(u"INSERT INTO questions (order_num, prompt) VALUES (1, 'Why?')"_s);
        stage.exec(u"INSERT INTO tags (name) VALUES ('even')"_s);
        stage.exec(u"UPDATE boilerplate SET preamble = 'Mine.'"_s);
        QVERIFY(stage.exec(u"DROP TABLE personas"_s));
        if (!replacement.isEmpty())
            QVERIFY(stage.exec(replacement));
        const QString error = errorText(stage, u"SELECT p.uuid FROM personas p GROUP BY p.uuid"_s);
        QVERIFY(!error.trimmed().isEmpty());

        const MessageLog log;
        stage.call("loadProject");
        QCOMPARE(log.warnings(), QStringList{error});
        QCOMPARE(personaColumn(stage, 1), QStringList());
        // What comes before the list is refreshed, what comes behind it is not.
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Mine."_s);
        QCOMPARE(items(stage.find<QComboBox>(u"tagFilter"_s)), (QStringList{u"All"_s, u"even"_s, u"odd"_s}));
        QCOMPARE(items(conversationChooser(stage, 0)), QStringList{u"Number One"_s});
        QCOMPARE(stage.find<QTableView>(u"questionView"_s)->model()->rowCount(), 0);
        QCOMPARE(conversationChooser(stage, 1)->count(), 0);
        QVERIFY(stage.asksBeforeClosing());
    }

    void list_fills_without_the_tables_of_tags()
    {
        Stage stage;
        storePersonas(stage, {{u"one"_s, u"Number One"_s, {u"odd"_s}}, {u"two"_s, u"Number Two"_s, {}}});
        stage.call("loadProject");
        auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
        filter->setCurrentText(u"odd"_s);
        stage.exec(u"DROP TABLE tags"_s);
        stage.exec(u"DROP TABLE persona_tags"_s);
        // The filter of before means nothing where there are no tags.
        stage.call("loadProject");
        QCOMPARE(personaColumn(stage, 1), (QStringList{u"one"_s, u"two"_s}));
        QCOMPARE(personaColumn(stage, 2), (QStringList{QString(), QString()}));
        QCOMPARE(items(filter), QStringList{u"All"_s});
        QCOMPARE(conversationChooser(stage, 0)->count(), 2);
    }

    void tags_that_cannot_be_read_leave_All_alone()
    {
        Stage stage;
        storePersonas(stage, {{u"one"_s, u"Number One"_s, {u"odd"_s}}});
        stage.call("loadProject");
        stage.exec(u"DROP TABLE tags"_s);
        stage.exec(u"CREATE TABLE tags (id INTEGER PRIMARY KEY, label TEXT)"_s);
        const QString error = errorText(stage, u"SELECT t.name FROM tags t"_s);

        const MessageLog log;
        stage.call("loadProject");
        QCOMPARE(items(stage.find<QComboBox>(u"tagFilter"_s)), QStringList{u"All"_s});
        // The one warning is that of the persona list, which asks for the same column.
        QCOMPARE(log.warnings(), QStringList{error});
    }

    void missing_links_are_said_of_the_list()
    {
        Stage stage;
        stage.exec(u"DROP TABLE persona_tags"_s);
        const QString error = errorText(stage, u"SELECT * FROM persona_tags"_s);
        const MessageLog log;
        stage.call("loadProject");
        QCOMPARE(log.warnings(), QStringList{error});
    }

    void missing_boilerplate_is_made_anew()
    {
        Stage stage;
        stage.exec(u"DROP TABLE boilerplate"_s);
        stage.find<QPlainTextEdit>(u"preambleEdit"_s)->setPlainText(u"Mine."_s);
        stage.find<QPlainTextEdit>(u"postambleEdit"_s)->setPlainText(u"Mine, too."_s);
        QVERIFY(!stage.project().tables(QSql::Tables).contains(u"boilerplate"_s));
        stage.call("loadProject");
        QCOMPARE(stage.value(u"SELECT sql FROM sqlite_master WHERE name = 'boilerplate'"_s).toString(),
                 u"CREATE TABLE boilerplate (preamble TEXT, postamble TEXT)"_s);
        const QList<QVariantList> row = {{u"Act as the following persona."_s, QString()}};
        QCOMPARE(stage.rows(u"SELECT * FROM boilerplate"_s), row);
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Act as the following persona."_s);
        QCOMPARE(stage.find<QPlainTextEdit>(u"postambleEdit"_s)->toPlainText(), QString());
    }

    void boilerplate_that_cannot_be_made_shows_the_defaults_data()
    {
        QTest::addColumn<QString>("view");
        QTest::addRow("no row") << u"SELECT 'x' AS preamble, 'y' AS postamble WHERE 0"_s;
        QTest::addRow("no such columns") << u"SELECT 'x' AS other"_s;
        QTest::addRow("a row that fails") << u"SELECT abs(-9223372036854775808) AS preamble, 'y' AS postamble"_s;
    }

    /// A view takes the name, but is no table: neither the making nor the storing works.
    void boilerplate_that_cannot_be_made_shows_the_defaults()
    {
        QFETCH(QString, view);
        Stage stage;
        stage.find<QPlainTextEdit>(u"preambleEdit"_s)->setPlainText(u"Mine."_s);
        stage.find<QPlainTextEdit>(u"postambleEdit"_s)->setPlainText(u"Mine, too."_s);
        stage.exec(u"DROP TABLE boilerplate"_s);
        QVERIFY(stage.exec("CREATE VIEW boilerplate AS "_L1 + view));
        stage.call("loadProject");
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Act as the following persona."_s);
        QCOMPARE(stage.find<QPlainTextEdit>(u"postambleEdit"_s)->toPlainText(), QString());
        QVERIFY(!stage.project().tables(QSql::Tables).contains(u"boilerplate"_s));
    }

    void conversation_chooser_stays_empty_where_the_questions_are_gone()
    {
        Stage stage;
        stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
        QCOMPARE(conversationChooser(stage, 1)->count(), 1);
        stage.exec(u"DROP TABLE questions"_s);
        stage.call("loadProject");
        QCOMPARE(conversationChooser(stage, 1)->count(), 0);
        QVERIFY(stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>()->isHidden());
    }
};

QTEST_MAIN(TestViewFailures)
#include "tst_viewfailures.moc"
