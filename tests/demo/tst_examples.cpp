#include "demo/examples.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

static const auto goodPanel = R"([{"name": "Round Pebble", "narrative": "You roll.", "tags": ["grey", "small"]},
                                 {"name": "Square Pebble", "narrative": "You do not."}])"_ba;
static const auto goodQuestionnaire =
    R"([{"prompt": "Why?", "type": "text"},
        {"prompt": "Which?", "type": "ranking", "reasoning": true, "labels": ["this", "that"]}])"_ba;

class TestExamples : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void files_are_read_as_they_stand()
    {
        const QTemporaryDir folder;
        writeBytes(folder.filePath(u"panel.json"_s), goodPanel);
        writeBytes(folder.filePath(u"questionnaire.json"_s), goodQuestionnaire);
        QString failure = u"from before"_s;
        const auto examples = readExamples(QDir(folder.path()), failure);
        QCOMPARE(failure, QString());
        QVERIFY(examples.has_value());
        QCOMPARE(examples->panel.size(), 2);
        QCOMPARE(examples->panel.first().name, u"Round Pebble"_s);
        QCOMPARE(examples->panel.first().narrative, u"You roll."_s);
        QCOMPARE(examples->panel.first().tags, (QStringList{u"grey"_s, u"small"_s}));
        QCOMPARE(examples->panel.last().tags, QStringList());
        QCOMPARE(examples->questionnaire.size(), 2);
        QCOMPARE(examples->questionnaire.first().type, u"text"_s);
        QVERIFY(!examples->questionnaire.first().reasoning);
        QCOMPARE(examples->questionnaire.last().prompt, u"Which?"_s);
        QVERIFY(examples->questionnaire.last().reasoning);
        QCOMPARE(examples->questionnaire.last().labels, (QStringList{u"this"_s, u"that"_s}));
    }

    void file_that_is_missing_or_unfit_is_named_with_its_fault_data();
    void file_that_is_missing_or_unfit_is_named_with_its_fault();
};

void TestExamples::file_that_is_missing_or_unfit_is_named_with_its_fault_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("bytes"); // null for no file
    QTest::addColumn<QString>("fault");
    const QString panel = u"panel.json"_s;
    const QString questionnaire = u"questionnaire.json"_s;
    // Qt's versions differ in what they call it.
    const QByteArray cutOff = "[{\"name\""_ba;
    QJsonParseError error;
    QJsonDocument::fromJson(cutOff, &error);
    for (const QString &file : {panel, questionnaire}) {
        const auto addRow = [&file](const char *what) -> QTestData & {
            return QTest::addRow("%s %s", qPrintable(file), what) << file;
        };
        addRow("missing") << QByteArray() << u"No such file or directory"_s;
        addRow("empty") << ""_ba << u"illegal value (at byte 0)"_s;
        addRow("cut off in a name") << cutOff << u"%1 (at byte 8)"_s.arg(error.errorString());
        addRow("no list") << "{}"_ba << u"a list of entries is expected, and at least one"_s;
        addRow("empty list") << "[]"_ba << u"a list of entries is expected, and at least one"_s;
    }
    QTest::addRow("no name") << panel << R"([{"narrative": "You roll."}])"_ba << u"entry 1: \"name\" is missing"_s;
    QTest::addRow("no object") << panel << "[7]"_ba << u"entry 1: \"name\" is missing"_s;
    QTest::addRow("no narrative in the second entry")
        << panel << R"([{"name": "A", "narrative": "You roll."}, {"name": "B"}, {}])"_ba
        << u"entry 2: \"narrative\" is missing"_s;
    QTest::addRow("no prompt") << questionnaire << R"([{"type": "text"}])"_ba << u"entry 1: \"prompt\" is missing"_s;
    const QString types = u"single_choice, multi_choice, text, numeric, likert, ranking"_s;
    QTest::addRow("unknown type") << questionnaire << R"([{"prompt": "Why?", "type": "essay"}])"_ba
                                  << u"entry 1: \"type\" is \"essay\" and not one of "_s + types;
    QTest::addRow("no type") << questionnaire << R"([{"prompt": "Why?"}])"_ba
                             << u"entry 1: \"type\" is \"\" and not one of "_s + types;
    for (const char *type : {"single_choice", "multi_choice", "likert", "ranking"}) {
        const QByteArray entry = R"([{"prompt": "Why?", "type": ")"_ba + type + R"(", "labels": ["one"]}])"_ba;
        QTest::addRow("one label of %s", type)
            << questionnaire << entry << u"entry 1: \"labels\" holds no two choices"_s;
    }
}

void TestExamples::file_that_is_missing_or_unfit_is_named_with_its_fault()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, fault);
    const QTemporaryDir folder;
    writeBytes(folder.filePath(u"panel.json"_s), goodPanel);
    writeBytes(folder.filePath(u"questionnaire.json"_s), goodQuestionnaire);
    if (bytes.isNull())
        QVERIFY(QFile::remove(folder.filePath(file)));
    else
        writeBytes(folder.filePath(file), bytes);
    QString failure;
    QVERIFY(!readExamples(QDir(folder.path()), failure));
    QCOMPARE(failure, folder.filePath(file) + ": "_L1 + fault);
}

ORRINET_TEST(TestExamples)
#include "tst_examples.moc"
