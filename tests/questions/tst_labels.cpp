#include "questions/labels.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestLabels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void labels_are_encoded_compactly_and_read_back_data()
    {
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<QString>("encoded");

        QTest::newRow("none") << QStringList() << u"[]"_s;
        QTest::newRow("two") << QStringList({u"Yes"_s, u"No"_s}) << u"[\"Yes\",\"No\"]"_s;
        QTest::newRow("the other order") << QStringList({u"No"_s, u"Yes"_s}) << u"[\"No\",\"Yes\"]"_s;
        QTest::newRow("empty label") << QStringList({u""_s, u"a"_s, u""_s}) << u"[\"\",\"a\",\"\"]"_s;
        QTest::newRow("repeated label") << QStringList({u"a"_s, u"a"_s}) << u"[\"a\",\"a\"]"_s;
        QTest::newRow("white space stays") << QStringList({u"  a b "_s, u" "_s}) << u"[\"  a b \",\" \"]"_s;
        QTest::newRow("comma and bracket") << QStringList({u"a,b"_s, u"[c]"_s}) << u"[\"a,b\",\"[c]\"]"_s;
        QTest::newRow("number as text") << QStringList({u"1"_s, u"2.50"_s}) << u"[\"1\",\"2.50\"]"_s;
        QTest::newRow("quote") << QStringList(u"say \"x\""_s) << u"[\"say \\\"x\\\"\"]"_s;
        QTest::newRow("backslash") << QStringList(u"a\\b"_s) << u"[\"a\\\\b\"]"_s;
        QTest::newRow("slash and apostrophe") << QStringList(u"a/b'c"_s) << u"[\"a/b'c\"]"_s;
        QTest::newRow("line breaks and tab") << QStringList(u"a\nb\r\tc"_s) << u"[\"a\\nb\\r\\tc\"]"_s;
        QTest::newRow("other control character") << QStringList(QString(QChar(1))) << u"[\"\\u0001\"]"_s;
        QTest::newRow("two bytes") << QStringList(u"d\u00E9j\u00E0"_s) << u"[\"d\u00E9j\u00E0\"]"_s;
        QTest::newRow("three bytes") << QStringList(u"\u4E2D\u20AC"_s) << u"[\"\u4E2D\u20AC\"]"_s;
        QTest::newRow("four bytes") << QStringList(u"\U0001F41D"_s) << u"[\"\U0001F41D\"]"_s;
        QTest::newRow("markup") << QStringList(u"<b>&amp;"_s) << u"[\"<b>&amp;\"]"_s;
        QTest::newRow("long label") << QStringList(QString(5000, u'x'))
                                    << QString(u"[\""_s + QString(5000, u'x') + u"\"]"_s);
    }
    void labels_are_encoded_compactly_and_read_back()
    {
        QFETCH(const QStringList, labels);
        QFETCH(const QString, encoded);
        QCOMPARE(encodeLabels(labels), encoded);
        QCOMPARE(decodeLabels(encoded), labels);
        QCOMPARE(labelArray(encoded), QJsonArray::fromStringList(labels));
    }

    void foreign_forms_of_an_array_are_read_data()
    {
        QTest::addColumn<QString>("encoded");
        QTest::addColumn<QStringList>("labels");

        QTest::newRow("white space between tokens") << u" [ \"a\" ,\n\"b\" ]\n"_s << QStringList({u"a"_s, u"b"_s});
        QTest::newRow("escaped letter") << u"[\"\\u00e9\"]"_s << QStringList(u"\u00E9"_s);
        QTest::newRow("escaped surrogates") << u"[\"\\ud83d\\udc1d\"]"_s << QStringList(u"\U0001F41D"_s);
        QTest::newRow("numbers") << u"[1,2]"_s << QStringList({QString(), QString()});
        QTest::newRow("text among other kinds")
            << u"[null,\"a\",true,{\"b\":\"c\"},[\"d\"],\"e\"]"_s
            << QStringList({QString(), u"a"_s, QString(), QString(), QString(), u"e"_s});
    }
    void foreign_forms_of_an_array_are_read()
    {
        QFETCH(const QString, encoded);
        QTEST(decodeLabels(encoded), "labels");
    }

    void elements_keep_their_kind_in_the_array()
    {
        const QJsonArray array = labelArray(u"[1,\"a\",null]"_s);
        QCOMPARE(array, QJsonArray({1, u"a"_s, QJsonValue::Null}));
    }

    void anything_but_an_array_is_an_empty_list_data()
    {
        QTest::addColumn<QString>("encoded");

        QTest::newRow("null") << QString();
        QTest::newRow("empty") << u""_s;
        QTest::newRow("blank") << u" "_s;
        QTest::newRow("plain words") << u"Yes, No"_s;
        QTest::newRow("object") << u"{\"a\":[\"b\"]}"_s;
        QTest::newRow("bare string") << u"\"Yes\""_s;
        QTest::newRow("bare number") << u"7"_s;
        QTest::newRow("bare null") << u"null"_s;
        QTest::newRow("not closed") << u"[\"Yes\""_s;
        QTest::newRow("comma at the end") << u"[\"Yes\",]"_s;
        QTest::newRow("single quotes") << u"['Yes']"_s;
        QTest::newRow("more behind it") << u"[\"Yes\"] [\"No\"]"_s;
    }
    void anything_but_an_array_is_an_empty_list()
    {
        QFETCH(const QString, encoded);
        QCOMPARE(decodeLabels(encoded), QStringList());
        QCOMPARE(labelArray(encoded), QJsonArray());
    }
};

ORRINET_TEST(TestLabels)
#include "tst_labels.moc"
