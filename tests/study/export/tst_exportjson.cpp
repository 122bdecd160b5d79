// Tables as JSON, read back.

#include "study/export/json.h"
#include "tests/support/testcase.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Losses;
using study::Status;
using study::Table;
using study::Value;

static QByteArray jsonOf(const QList<QList<Value>> &rows, Losses &losses)
{
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    writeJson(out, tableOf(u"wide"_s, {{.name = u"name"_s, .label = {}}, {.name = u"age"_s, .label = {}}}, rows),
              losses);
    return out.data();
}

class TestExportJson : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_row_is_an_object_with_the_columns_in_their_order()
    {
        Losses losses;
        QCOMPARE(jsonOf({{u"Ann"_s, 30.5}, {Value(), Status::Open}}, losses),
                 "[\n{\"name\":\"Ann\",\"age\":30.5},\n{\"name\":null,\"age\":null}\n]"_ba);
        QCOMPARE(jsonOf({}, losses), "[\n]"_ba);
    }

    void a_text_has_no_bare_control_characters()
    {
        QCOMPARE(study::jsonText(u"\"\\\n\t\u0001\u001F\u007F"_s), R"("\"\\\n\u0009\u0001\u001f)"_ba + "\x7F\""_ba);
    }

    void every_text_comes_back_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("quotes") << u"\"a\\b\" </script>"_s;
        QTest::newRow("controls") << u"a\nb\rc\td\u0001\u001F\u007F"_s;
        QTest::newRow("four bytes") << u"😀\u202E\uFFFF"_s;
        QTest::newRow("long") << QString(130'000, u'"');
    }
    void every_text_comes_back()
    {
        QFETCH(const QString, text);
        Losses losses;
        const QJsonDocument read = QJsonDocument::fromJson(jsonOf({{text, 1.0}}, losses));
        QCOMPARE(read[0]["name"_L1].toString(), text);
        QCOMPARE(read[0]["age"_L1].toDouble(), 1);
        QVERIFY(losses.list().isEmpty());
    }

    void what_json_has_not_is_a_text()
    {
        Losses losses;
        const QJsonDocument read = QJsonDocument::fromJson(jsonOf({{QString(QChar(0xDC00)), -qInf()}}, losses));
        QCOMPARE(read[0]["name"_L1].toString(), u"\uFFFD"_s);
        QCOMPARE(read[0]["age"_L1].toString(), u"-inf"_s);
        QCOMPARE(losses.list().size(), 1);
    }
};

ORRINET_TEST(TestExportJson)
#include "tst_exportjson.moc"
