// What docs/formats.md tells of the files, held against the files.

#include "bridge/record.h"
#include "study/report/csv.h"
#include "tests/docs/page.h"
#include "tests/preferences/preferencesbox.h"
#include "tests/support/entries.h"
#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// "name declared type" of each column, as a page has them.
QStringList described(const Page &page, const QString &heading, const QString &firstColumn)
{
    QStringList columns;
    for (const QStringList &row : page.table(heading, firstColumn))
        columns << codeIn(row.value(0)).value(0) + u' ' + row.value(1).section(u',', 0, 0);
    return columns;
}

/// The same, as a file has them.
QStringList declared(Sql &file, const QString &table)
{
    return file.column(u"SELECT name || ' ' || type FROM pragma_table_info(?)"_s, {table});
}

QList<QStringList> csvRows(const QString &path)
{
    return study::readCsv(QString::fromUtf8(readBytes(path)));
}

} // namespace

class TestFormats : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { stage = std::make_unique<Stage>(); }

    void each_column_of_a_project_is_described_data()
    {
        QTest::addColumn<QString>("heading");
        QTest::addColumn<QString>("firstColumn");
        for (const QString &table : {u"personas"_s, u"questions"_s, u"responses"_s, u"boilerplate"_s})
            QTest::newRow(qPrintable(table)) << u"`%1`"_s.arg(table) << u"Column"_s;
        for (const QString &table : {u"tags"_s, u"persona_tags"_s})
            QTest::newRow(qPrintable(table)) << u"`tags`, `persona_tags`"_s << u"Column of `%1`"_s.arg(table);
        for (const QString &table : {u"metadata"_s, u"question_attachments"_s})
            QTest::newRow(qPrintable(table))
                << u"`metadata`, `question_attachments`"_s << u"Column of `%1`"_s.arg(table);
    }
    void each_column_of_a_project_is_described()
    {
        QFETCH(const QString, heading);
        QFETCH(const QString, firstColumn);
        SideDatabase file(savedProject());
        QCOMPARE(described(page, heading, firstColumn), declared(file, QString::fromUtf8(QTest::currentDataTag())));
    }

    void a_project_has_the_tables_and_indices_that_are_named()
    {
        SideDatabase file(savedProject());
        QStringList tables{u"sqlite_sequence"_s};
        for (const QString &heading : {u"personas"_s, u"questions"_s, u"responses"_s, u"tags`, `persona_tags"_s,
                                       u"boilerplate"_s, u"metadata`, `question_attachments"_s})
            tables << heading.split(u"`, `"_s);
        tables.sort();
        QCOMPARE(file.column(u"SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY name"_s), tables);
        QCOMPARE(file.column(u"SELECT DISTINCT type FROM sqlite_schema ORDER BY type"_s),
                 (QStringList{u"index"_s, u"table"_s}));
        const QStringList indexed =
            file.column(u"SELECT DISTINCT tbl_name FROM sqlite_schema WHERE type = 'index' ORDER BY rootpage"_s);
        QCOMPARE(indexed, codeIn(property(u"indices"_s)).first(4));
    }

    void a_project_has_the_properties_that_are_named()
    {
        SideDatabase file(savedProject());
        QCOMPARE(property(u"encoding"_s), file.value(u"PRAGMA encoding"_s).toString());
        QCOMPARE(property(u"page size"_s), file.value(u"PRAGMA page_size"_s).toString() + " bytes"_L1);
        QCOMPARE(codeIn(property(u"journal mode"_s)).at(0), file.value(u"PRAGMA journal_mode"_s).toString());
        for (const QString &mark : {u"application_id"_s, u"user_version"_s})
            QCOMPARE(property(u"`application_id`, `user_version`"_s).section(u':', 0, 0),
                     file.value("PRAGMA "_L1 + mark).toString());
    }

    void what_is_always_the_same_is_told_data()
    {
        QTest::addColumn<QString>("table");
        QTest::newRow("questions") << u"questions"_s;
        QTest::newRow("responses") << u"responses"_s;
        QTest::newRow("personas") << u"personas"_s;
    }
    void what_is_always_the_same_is_told()
    {
        QFETCH(const QString, table);
        SideDatabase file(savedProject());
        int told = 0;
        for (const auto all = page.table(u"`%1`"_s.arg(table), u"Column"_s); const QStringList &row : all) {
            const QString column = codeIn(row.at(0)).at(0);
            const QVariant value = file.value(u"SELECT %1 FROM %2"_s.arg(column, table));
            QCOMPARE(row.at(2).startsWith("NULL"_L1) || row.at(2).contains("; NULL in personas made"_L1),
                     value.isNull());
            if (!row.at(2).contains("no effect"_L1) || value.isNull())
                continue;
            QCOMPARE(QString(row.at(2).section(u';', 0, 0).section(u',', 0, 0)).remove(u'`'), value.toString());
            ++told;
        }
        QCOMPARE(told, table == "questions"_L1 ? 3 : 0);
    }

    void each_column_of_a_pack_is_described_data()
    {
        QTest::addColumn<QString>("table");
        for (const QString &table : {u"personas"_s, u"tags"_s, u"persona_tags"_s, u"pack_info"_s, u"change_log"_s})
            QTest::newRow(qPrintable(table)) << table;
    }
    void each_column_of_a_pack_is_described()
    {
        QFETCH(const QString, table);
        const QString path = stage->path(u"all.ornk"_s);
        QVERIFY(stage->result<QString>("exportPackToFile", path));
        SideDatabase file(path);
        QCOMPARE(described(page, u"The pack"_s, u"Column of `%1`"_s.arg(table)), declared(file, table));
        QCOMPARE(file.count(u"sqlite_schema WHERE type = 'table'"_s), 5);
    }

    void each_setting_is_described()
    {
        QVERIFY(storePreferences(*stage, {u"a key"_s, u"large"_s, u"small"_s}));
        QStringList keys = page.names(u"The settings"_s, u"Key"_s);
        keys.sort();
        QCOMPARE(QSettings().allKeys(), keys);
        const QString text = QString::fromUtf8(readBytes(stage->path(u".config/Orrinet/Orrinet.conf"_s)));
        for (const auto all = page.table(u"The settings"_s, u"Key"_s); const QStringList &row : all) {
            const QStringList places = codeIn(row.at(1));
            const qsizetype section = text.indexOf(QString(places.at(1) + u'\n'));
            QVERIFY2(section >= 0, qPrintable(text));
            QVERIFY2(text.indexOf(QString(u'\n' + places.at(0)), section) > section, qPrintable(text));
        }
    }

    void each_member_of_a_record_is_described()
    {
        bridge::Exchange exchange;
        exchange.asked = "{}";
        exchange.failure = u"none"_s;
        exchange.reply = R"({"usage":{},"model":"m","system_fingerprint":"f","choices":[]})";
        const QJsonObject line = QJsonDocument::fromJson(bridge::recordLine(exchange)).object();
        QStringList members = page.names(u"The record"_s, u"Member"_s);
        members.sort();
        QCOMPARE(line.keys(), members);
    }

    void each_column_of_an_export_is_described()
    {
        const QString folder = exported(u"csv"_s);
        QCOMPARE(csvRows(folder + "/long.csv"_L1).at(0), page.names(u"The long table"_s, u"Column"_s));
        QCOMPARE(csvRows(folder + "/codebook.csv"_L1).at(0), page.names(u"The codebook"_s, u"Column"_s));
        // The page tells of question 12 and its third label.
        QStringList wide;
        for (const auto all = page.names(u"The wide table"_s, u"Column"_s); const QString &name : all)
            wide << QString(name).replace("q12"_L1, "q1"_L1).replace("_3"_L1, "_1"_L1);
        const QStringList found = csvRows(folder + "/wide.csv"_L1).at(0);
        for (const QString &name : found)
            QVERIFY2(wide.contains(name), qPrintable(name));
    }

    void each_member_of_an_exported_document_is_described()
    {
        const QJsonObject document =
            QJsonDocument::fromJson(readBytes(exported(u"json"_s) + "/export.json"_L1)).object();
        const QString row = page.table(u"The exports"_s, u"Format"_s).constLast().value(1);
        QStringList members = codeIn(row).mid(1);
        members.sort();
        QCOMPARE(document.keys(), members);
    }

    void each_missing_value_is_described_data()
    {
        QTest::addColumn<QString>("to");
        QTest::addColumn<int>("column");
        QTest::newRow("SPSS") << u"sav"_s << 1;
        QTest::newRow("Stata") << u"dta"_s << 2;
    }
    void each_missing_value_is_described()
    {
        QFETCH(const QString, to);
        QFETCH(const int, column);
        QStringList wanted;
        for (const auto all = page.table(u"The wide table"_s, u"Reason"_s); const QStringList &row : all)
            wanted << QString(row.at(column)).remove(u'`');
        QStringList found;
        for (const auto all = csvRows(exported(to) + "/codebook.csv"_L1); const QStringList &row : all) {
            if (row.at(1) == "q1"_L1 && row.at(6) != "Yes"_L1)
                found << row.at(5);
        }
        QCOMPARE(found, wanted);
    }

private:
    /// What the page tells of project files.
    QString property(const QString &name) const
    {
        for (const auto all = page.table(u"The project"_s, u"Property"_s); const QStringList &row : all) {
            if (row.at(0) == name)
                return row.at(1);
        }
        return {};
    }

    /// A project as the window saves it, with a persona, a question and an answer as it makes them. Outside test mode
    /// the question would come from its dialog.
    QString savedProject()
    {
        Stage::setTestMode(true);
        stage->call("insertPersona", u"Ann"_s, u"likes tea"_s, u"urban"_s);
        stage->call("insertQuestion", u"Which?"_s, u"single_choice"_s, true, uR"(["Yes"])"_s);
        stage->call("runSurvey");
        QVariantList answer{u"Yes"_s, 1.5, uR"({"answer":"Yes","reasoning":"So."})"_s};
        stage->exec(u"UPDATE responses SET text_answer = ?, numeric_answer = ?, json_answer = ?"_s, answer);
        const QString path = stage->path(u"saved.ormt"_s);
        if (!stage->result<QString>("saveProjectToFile", path))
            QTest::qFail("the project can't be saved", __FILE__, __LINE__);
        return path;
    }

    /// The folder that such a project was exported to.
    QString exported(const QString &format)
    {
        const QString path = savedProject();
        const QString folder = stage->path(u"out"_s);
        const ProgramRun run(QStringLiteral(ORRINET_STUDY), {u"export"_s, path, u"--to"_s, format, u"--out"_s, folder});
        if (run.status != 0)
            QTest::qFail(qUtf8Printable(run.errors.join(u'\n')), __FILE__, __LINE__);
        return folder;
    }

    const Page page{u"formats.md"_s};
    std::unique_ptr<Stage> stage;
};

ORRINET_TEST(TestFormats)
#include "tst_formats.moc"
