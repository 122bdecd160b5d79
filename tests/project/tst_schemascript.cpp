// What becomes of a project when the script of its schema is missing or partly wrong.

#include "tests/support/messagelog.h"
#include "tests/support/stage.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QResource>
#include <QScopeGuard>
#include <QSqlError>
#include <QSqlQuery>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

// The resource system's own functions are declared where they are named: that can't be in a nameless namespace.
static void takeTreeAway()
{
    Q_CLEANUP_RESOURCE(orrinet);
}

static void putTreeBack()
{
    Q_INIT_RESOURCE(orrinet);
}

/// What the driver says of a statement on a database of these tables.
static QString errorText(const QStringList &preparation, const QString &statement)
{
    QString text;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"oracle"_s);
        database.setDatabaseName(u":memory:"_s);
        database.open();
        for (const QString &each : preparation)
            QSqlQuery(database).exec(each);
        QSqlQuery query(database);
        query.exec(statement);
        text = query.lastError().text();
    }
    QSqlDatabase::removeDatabase(u"oracle"_s);
    return text;
}

class TestSchemaScript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void missing_script_leaves_a_window_without_tables()
    {
        Stage stage;
        takeTreeAway();
        const auto restore = qScopeGuard(putTreeBack);
        const MessageLog log;
        stage.window();
        // Nothing is said of the script or of the boilerplate; the refresh then trips over the persona list.
        const QStringList expected = {errorText({}, u"SELECT p.uuid FROM personas p"_s)};
        QCOMPARE(log.warnings(), expected);
        QCOMPARE(stage.project().tables(QSql::Tables), QStringList{u"boilerplate"_s});
        const QList<QVariantList> row = {{u"Act as the following persona."_s, QString()}};
        QCOMPARE(stage.rows(u"SELECT * FROM boilerplate"_s), row);
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Act as the following persona."_s);
        QCOMPARE(stage.find<QComboBox>(u"tagFilter"_s)->count(), 1);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void script_is_not_run_again_once_the_project_is_open()
    {
        Stage stage;
        const MessageLog log;
        takeTreeAway();
        stage.window();
        putTreeBack();
        stage.call("newProject");
        QCOMPARE(stage.project().tables(QSql::Tables), QStringList{u"boilerplate"_s});
        QCOMPARE(log.warnings().size(), 2);
    }

    void script_is_cut_at_semicolons_and_survives_faulty_pieces()
    {
        Stage stage;
        takeTreeAway();
        QVERIFY(QResource::registerResource(QStringLiteral(ORRINET_FAULTY_SCRIPT)));
        const auto restore = qScopeGuard([] {
            QResource::unregisterResource(QStringLiteral(ORRINET_FAULTY_SCRIPT));
            putTreeBack();
        });
        const MessageLog log;
        stage.window();
        const QString twice = u"CREATE TABLE personas (uuid TEXT)"_s;
        const QStringList expected = {errorText({twice}, twice), errorText({}, u"no statement at all"_s)};
        QCOMPARE(log.warnings(), expected);
        QStringList tables = stage.project().tables(QSql::Tables);
        tables.sort();
        QCOMPARE(tables, (QStringList{u"boilerplate"_s, u"personas"_s, u"questions"_s, u"responses"_s}));
        QCOMPARE(stage.value(u"SELECT name FROM personas"_s).toString(), u"Gr\u00fc\u00dfe"_s);
        QVERIFY(!stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestSchemaScript)
#include "tst_schemascript.moc"
