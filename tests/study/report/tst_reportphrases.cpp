// Refusals, hedges and other labels are found as whole words, and quoted with what stands around them.

#include "study/report/phrases.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using study::findOtherLabel;
using study::findPhrase;
using study::hedges;
using study::refusals;
using study::searchedLength;

class TestReportPhrases : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_phrase_is_found_as_whole_words_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("phrase");
        QTest::newRow("as it stands") << u"As an AI, I drink nothing."_s << u"as an AI"_s;
        QTest::newRow("in capitals") << u"AS AN AI!"_s << u"as an AI"_s;
        QTest::newRow("typographic apostrophe") << u"Well, I\u2019m an AI."_s << u"I'm an AI"_s;
        QTest::newRow("part of a word") << u"It was an airport, as an aid."_s << QString();
        QTest::newRow("another part of one") << u"atlas an AI"_s << QString();
        QTest::newRow("with a comma") << u"I'm sorry, but no."_s << u"I'm sorry, but"_s;
        QTest::newRow("none") << u"I like tea."_s << QString();
        QTest::newRow("nothing") << QString() << QString();
        QTest::newRow("far behind") << QString(searchedLength, u' ') + u"as an AI"_s << QString();
    }
    void a_phrase_is_found_as_whole_words()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, phrase);
        const auto found = findPhrase(text, refusals());
        QCOMPARE(found ? found->phrase : QString(), phrase);
    }

    void what_stands_around_is_quoted()
    {
        const auto found = findPhrase(QString(200, u'a') + u" well, perhaps tea "_s + QString(200, u'b'), hedges());
        QVERIFY(found);
        QVERIFY(found->excerpt.contains(u"well, perhaps tea"_s));
        QVERIFY(found->excerpt.startsWith(u'\u2026'));
        QVERIFY(found->excerpt.endsWith(u'\u2026'));
        QVERIFY(found->excerpt.size() < 210);
    }

    void a_folding_that_changes_lengths_keeps_to_the_text()
    {
        // A sharp s folds to two.
        const auto found = findPhrase(QString(50, u'\u00df') + u" maybe"_s, hedges());
        QVERIFY(found);
        QVERIFY(found->excerpt.contains(u"maybe"_s));
    }

    void another_label_counts_where_the_own_is_not_named_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("chosen");
        QTest::addColumn<QString>("named");
        QTest::newRow("another") << u"Nothing beats coffee."_s << 0 << u"Coffee"_s;
        QTest::newRow("both") << u"Tea, since coffee keeps me awake."_s << 0 << QString();
        QTest::newRow("the own") << u"Tea it is."_s << 0 << QString();
        QTest::newRow("part of a word") << u"I like coffeehouses."_s << 0 << QString();
        QTest::newRow("part of the own") << u"It is iced."_s << 2 << QString();
        QTest::newRow("too short") << u"No, never."_s << 0 << QString();
        QTest::newRow("no reasoning") << QString() << 0 << QString();
    }
    void another_label_counts_where_the_own_is_not_named()
    {
        QFETCH(const QString, text);
        QFETCH(const int, chosen);
        QFETCH(const QString, named);
        const QStringList labels{u"Tea"_s, u"Coffee"_s, u"Coffee, iced"_s, u"iced"_s, u"No"_s};
        const auto found = findOtherLabel(text, labels, chosen);
        QCOMPARE(found ? found->phrase : QString(), named);
    }
};

ORRINET_TEST(TestReportPhrases)
#include "tst_reportphrases.moc"
