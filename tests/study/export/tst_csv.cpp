// Tables as CSV, read back.

#include "study/export/csv.h"
#include "tests/study/export/tableshow.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QBuffer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Column;
using study::Losses;
using study::Status;
using study::Table;
using study::Value;

namespace {

/// The rows of a CSV file, cell by cell, as RFC 4180 has it: empty where it is none.
QList<QStringList> readCsv(const QByteArray &csv)
{
    QList<QStringList> rows;
    QStringList row;
    QByteArray cell;
    bool quoted = false;
    for (qsizetype at = 0; at < csv.size(); ++at) {
        const char byte = csv.at(at);
        if (quoted) {
            if (byte != '"')
                cell += byte;
            else if (csv.mid(at, 2) == "\"\"")
                cell += csv.at(++at);
            else
                quoted = false;
        } else if (byte == '"' && cell.isEmpty()) {
            quoted = true;
        } else if (byte == ',' || csv.mid(at, 2) == "\r\n") {
            row << QString::fromUtf8(cell);
            cell.clear();
            if (byte == '\r') {
                rows << row;
                row.clear();
                ++at;
            }
        } else if (byte == '"' || byte == '\r' || byte == '\n') {
            return {};
        } else {
            cell += byte;
        }
    }
    return row.isEmpty() && cell.isEmpty() && !quoted ? rows : QList<QStringList>();
}

Table csvTable(const QList<Value> &values)
{
    QList<QList<Value>> rows;
    for (const Value &value : values)
        rows << QList<Value>{value, 1.0};
    return tableOf(u"long"_s, {{.name = u"first"_s, .label = {}}, {.name = u"second"_s, .label = {}}}, rows);
}

QByteArray written(const Table &table, bool byteOrderMark = false, Losses *losses = nullptr)
{
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    Losses ignored;
    writeCsv(out, table, byteOrderMark, losses == nullptr ? ignored : *losses);
    return out.data();
}

QStringList hostileTexts()
{
    return {u"plain"_s,
            u"</svg><script>"_s,
            u"a \"quoted\" word"_s,
            u"\""_s,
            u"a, b; c"_s,
            u"one\ntwo"_s,
            u"one\r\ntwo\r"_s,
            u"\u202Eright to left \u05D0\u05D1"_s,
            u"😀 \U0010FFFF"_s,
            u" around "_s,
            u"NULL"_s,
            u"00012"_s,
            QString(130'000, u'x'),
            QString(10'000, u'"')};
}

} // namespace

class TestCsv : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_table_is_lines_of_cells()
    {
        const Table table = csvTable({u"a"_s, Value(), Status::Open, -5.0, 0.1, 1e300, qInf()});
        QCOMPARE(written(table), "first,second\r\na,1\r\n,1\r\n,1\r\n-5,1\r\n0.1,1\r\n1e+300,1\r\ninf,1\r\n"_ba);
    }

    void a_byte_order_mark_comes_first_where_it_is_asked_for()
    {
        QVERIFY(written(csvTable({}), true)
                    .startsWith("\xEF\xBB\xBF"
                                "first,"));
        QVERIFY(written(csvTable({}), false).startsWith("first,"));
    }

    void every_text_comes_back()
    {
        QList<Value> values;
        for (const QString &text : hostileTexts())
            values << text;
        Losses losses;
        const QList<QStringList> rows = readCsv(written(csvTable(values), false, &losses));
        QCOMPARE(rows.size(), values.size() + 1);
        for (qsizetype row = 0; row < values.size(); ++row)
            QCOMPARE(rows.at(row + 1), (QStringList{shownValue(values.at(row)), u"1"_s}));
        QVERIFY(losses.list().isEmpty());
    }

    void sqlite_imports_it()
    {
        const QTemporaryDir folder;
        QList<Value> values;
        for (const QString &text : hostileTexts())
            values << text;
        const QString csv = writeBytes(folder.filePath(u"long.csv"_s), written(csvTable(values)));
        const QString database = folder.filePath(u"imported.db"_s);
        QProcess sqlite;
        sqlite.start(u"sqlite3"_s, {database, u".mode csv"_s, u".import \"%1\" imported"_s.arg(csv)});
        QVERIFY(sqlite.waitForFinished(-1));
        QCOMPARE(sqlite.readAllStandardError(), QByteArray());
        SideDatabase imported(database);
        QCOMPARE(imported.column(u"SELECT first FROM imported"_s), hostileTexts());
    }

    void what_a_spreadsheet_would_calculate_is_marked_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isMarked");
        for (const QString &text : {u"=1+1"_s, u"+1"_s, u"-1"_s, u"@a"_s, u"\ta"_s, u"\ra"_s, u"=\"a\",b"_s})
            QTest::newRow(qPrintable(u"marked "_s + text.toHtmlEscaped())) << text << true;
        for (const QString &text : {u"1"_s, u"a=1"_s, u" =1"_s, u"'=1"_s, u"\n=1"_s})
            QTest::newRow(qPrintable(u"plain "_s + text.toHtmlEscaped())) << text << false;
    }
    void what_a_spreadsheet_would_calculate_is_marked()
    {
        QFETCH(const QString, text);
        QFETCH(const bool, isMarked);
        const QList<QStringList> rows = readCsv(written(csvTable({text})));
        QCOMPARE(rows.size(), 2);
        QCOMPARE(rows.at(1).at(0), isMarked ? u'\'' + text : text);
    }

    void what_is_no_character_is_told()
    {
        Losses losses;
        const QString text = u"a"_s + QChar(u'\0') + QChar(0xD800);
        QCOMPARE(readCsv(written(csvTable({text}), false, &losses)).at(1).at(0), u"a\uFFFD"_s);
        QCOMPARE(losses.list().size(), 1);
        QCOMPARE(losses.list().at(0).column, u"first"_s);
    }
};

ORRINET_TEST(TestCsv)
#include "tst_csv.moc"
