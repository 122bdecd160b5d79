// Tables as sheets of a workbook, read back from its XML.

#include "study/export/workbook.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;
using study::Losses;
using study::Status;
using study::Table;
using study::Value;
using study::Workbook;

namespace {

/// A file within a workbook.
QByteArray partOf(const QString &workbook, const QString &name)
{
    QProcess sqlite;
    sqlite.start(u"sqlite3"_s,
                 {u":memory:"_s, u"SELECT data FROM zipfile('%1') WHERE name='%2'"_s.arg(workbook, name)});
    if (!sqlite.waitForFinished(-1) || sqlite.exitCode() != 0)
        QTest::qFail(sqlite.readAllStandardError().constData(), __FILE__, __LINE__);
    return sqlite.readAllStandardOutput();
}

/// A text as a spreadsheet shows it: what XML has no character for stands there as _xHHHH_.
QString decoded(const QString &text)
{
    static const QRegularExpression escape(u"_x([0-9A-Fa-f]{4})_"_s);
    QString result;
    qsizetype from = 0;
    for (auto matches = escape.globalMatch(text); matches.hasNext();) {
        const auto match = matches.next();
        result += text.mid(from, match.capturedStart() - from) + QChar(match.captured(1).toUShort(nullptr, 16));
        from = match.capturedEnd();
    }
    return result + text.mid(from);
}

/// The cells of a sheet by their place: texts in quotes, everything else as it stands.
QMap<QString, QString> cellsOf(const QString &workbook, int sheet = 1)
{
    QMap<QString, QString> cells;
    QXmlStreamReader xml(partOf(workbook, u"xl/worksheets/sheet%1.xml"_s.arg(sheet)));
    QString place;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (xml.name() == "c"_L1)
            place = xml.attributes().value("r"_L1).toString();
        else if (xml.name() == "t"_L1)
            cells[place] = u'"' + decoded(xml.readElementText()) + u'"';
        else if (xml.name() == "v"_L1 || xml.name() == "f"_L1)
            cells[place] += (xml.name() == "f"_L1 ? u"="_s : QString()) + xml.readElementText();
    }
    if (xml.hasError())
        QTest::qFail(qUtf8Printable(xml.errorString()), __FILE__, __LINE__);
    return cells;
}

Table sheetTable(const QList<Value> &values)
{
    QList<QList<Value>> rows;
    for (const Value &value : values)
        rows << QList<Value>{value};
    return tableOf(u"long"_s, {{.name = u"q1t"_s, .label = {}}}, rows);
}

} // namespace

class TestWorkbook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void texts_are_texts_and_numbers_are_numbers()
    {
        Losses losses;
        write({sheetTable({u"=1+1"_s, u"-5"_s, u"http://a.example"_s, -5.0, 0.1, Value(), Status::Open, qInf()})},
              losses);
        const QMap<QString, QString> expected{{u"A1"_s, u"\"q1t\""_s}, {u"A2"_s, u"\"=1+1\""_s},
                                              {u"A3"_s, u"\"-5\""_s},  {u"A4"_s, u"\"http://a.example\""_s},
                                              {u"A5"_s, u"-5"_s},      {u"A6"_s, u"0.1"_s},
                                              {u"A9"_s, u"\"inf\""_s}};
        QCOMPARE(cellsOf(path()), expected);
        QVERIFY(losses.list().isEmpty());
    }

    void each_table_is_a_sheet_of_its_name()
    {
        Table wide = sheetTable({u"b"_s});
        wide.name = u"wide"_s;
        Losses losses;
        write({sheetTable({u"a"_s}), wide}, losses);
        const QByteArray book = partOf(path(), u"xl/workbook.xml"_s);
        QVERIFY(book.indexOf("name=\"long\"") > 0);
        QVERIFY(book.indexOf("name=\"wide\"") > book.indexOf("name=\"long\""));
        QCOMPARE(cellsOf(path(), 2).value(u"A2"_s), u"\"b\""_s);
    }

    void every_text_comes_back_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("markup") << u"</t></svg>&amp;<![CDATA[\"']]>"_s;
        QTest::newRow("white space") << u"  a\tb\n\nc  "_s;
        QTest::newRow("returns") << u"a\r\nb\r"_s;
        QTest::newRow("controls") << u"a\u0001\u0008\u001Fb"_s;
        QTest::newRow("an escape") << u"_x0041_ _x005F_ _x0041_x0042_ _X0041_ _x41_"_s;
        QTest::newRow("right to left") << u"\u202E\u05D0\u05D1"_s;
        QTest::newRow("four bytes") << u"😀\U0010FFFD"_s;
        QTest::newRow("longest") << QString(32767, u'<');
        QTest::newRow("longest, of controls") << QString(32767, u'\u0001');
        QTest::newRow("longest in code points") << u"😀"_s.repeated(16383);
    }
    void every_text_comes_back()
    {
        QFETCH(const QString, text);
        Losses losses;
        write({sheetTable({text})}, losses);
        QCOMPARE(cellsOf(path()).value(u"A2"_s), u'"' + text + u'"');
        QVERIFY(losses.list().isEmpty());
    }

    void what_does_not_fit_is_cut_and_told_data()
    {
        QTest::addColumn<Value>("value");
        QTest::addColumn<QString>("kept");
        QTest::addColumn<QString>("what");
        QTest::newRow("long") << Value(QString(130'000, u'x')) << u'"' + QString(32767, u'x') + u'"'
                              << u"cut at 32767 characters"_s;
        QTest::newRow("long, of escapes")
            << Value(u"_x0041_"_s + QString(32756, u'x') + u"_x0041_"_s) << u"\"_x0041_"_s + QString(32754, u'x') + u'"'
            << u"cut at 32767 characters"_s;
        QTest::newRow("long, all escapes")
            << Value(u"_x0041"_s.repeated(20'000) + u'_') << u'"' + u"_x0041"_s.repeated(2730) + u"_x00\""_s
            << u"cut at 32767 characters"_s;
        QTest::newRow("within a character") << Value(QString(u"😀"_s.repeated(16384)))
                                            << u'"' + u"😀"_s.repeated(16383) + u'"' << u"cut at 32767 characters"_s;
        QTest::newRow("no character") << Value(u"a\uFFFE"_s) << u"\"a\uFFFD\""_s
                                      << u"characters that are none replaced or left out"_s;
        QTest::newRow("half a character")
            << Value(QString(QChar(0xD800))) << u"\"\uFFFD\""_s << u"characters that are none replaced or left out"_s;
        QTest::newRow("digits") << Value(0.1 + 0.2) << u"0.3"_s << u"numbers rounded to 16 digits"_s;
    }
    void what_does_not_fit_is_cut_and_told()
    {
        QFETCH(const Value, value);
        Losses losses;
        write({sheetTable({value})}, losses);
        QTEST(cellsOf(path()).value(u"A2"_s), "kept");
        QCOMPARE(losses.list().size(), 1);
        QCOMPARE(losses.list().at(0).column, u"q1t"_s);
        QTEST(losses.list().at(0).what, "what");
    }

    void the_same_tables_make_the_same_bytes()
    {
        Losses losses;
        write({sheetTable({u"a"_s, 1.0})}, losses);
        const QByteArray once = readBytes(path());
        QVERIFY(partOf(path(), u"docProps/core.xml"_s).contains("2000-01-01T00:00:00Z"));
        QFile::remove(path());
        write({sheetTable({u"a"_s, 1.0})}, losses);
        QCOMPARE(readBytes(path()), once);
    }

    void a_file_that_cannot_be_made_is_told()
    {
        Losses losses;
        Workbook nowhere(folder->filePath(u"nowhere/export.xlsx"_s), folder->path());
        nowhere.add(sheetTable({u"a"_s}), losses);
        QVERIFY(!nowhere.close().isEmpty());
    }

private:
    QString path() const { return folder->filePath(u"export.xlsx"_s); }

    void write(const QList<Table> &tables, Losses &losses)
    {
        Workbook book(path(), folder->path());
        for (const Table &table : tables)
            book.add(table, losses);
        QCOMPARE(book.close(), QString());
    }

    std::unique_ptr<QTemporaryDir> folder;
};

ORRINET_TEST(TestWorkbook)
#include "tst_workbook.moc"
