#include "inspect/conversation.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

using Exchanges = QList<std::pair<QString, QString>>;

class TestConversation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void conversation_is_laid_out_as_one_text_data()
    {
        QTest::addColumn<QString>("systemPrompt");
        QTest::addColumn<Exchanges>("exchanges");
        QTest::addColumn<QString>("pending");
        QTest::addColumn<QString>("text");
        const Exchanges none;
        const Exchanges one{{u"How?"_s, u"Well."_s}};
        const Exchanges two{{u"How?"_s, u"Well."_s}, {u"Why?"_s, u"No idea."_s}};

        QTest::newRow("nothing") << u""_s << none << u""_s << u""_s;
        QTest::newRow("system text alone") << u"You."_s << none << u""_s << u"You."_s;
        QTest::newRow("exchange alone") << u""_s << one << u""_s << u"Q: How?\nA: Well."_s;
        QTest::newRow("pending alone") << u""_s << none << u"Who?"_s << u"Q: Who?\nA: (pending)"_s;
        QTest::newRow("system text and pending") << u"You."_s << none << u"Who?"_s << u"You.\nQ: Who?\nA: (pending)"_s;
        QTest::newRow("all") << u"You."_s << two << u"Who?"_s
                             << u"You.\nQ: How?\nA: Well.\nQ: Why?\nA: No idea.\nQ: Who?\nA: (pending)"_s;
        QTest::newRow("order is kept") << u""_s << Exchanges{two.last(), two.first()} << u""_s
                                       << u"Q: Why?\nA: No idea.\nQ: How?\nA: Well."_s;
        QTest::newRow("same exchange twice")
            << u""_s << Exchanges{one.first(), one.first()} << u""_s << u"Q: How?\nA: Well.\nQ: How?\nA: Well."_s;
        QTest::newRow("white space is trimmed at the ends alone")
            << u" \n You. \n"_s << Exchanges{{u" How? "_s, u" \n "_s}} << u" Who? "_s
            << u"You. \n\nQ:  How? \nA:  \n \nQ:  Who? \nA: (pending)"_s;
        QTest::newRow("blank answer at the end")
            << u"You."_s << Exchanges{{u"How?"_s, u" \n\t"_s}} << u""_s << u"You.\nQ: How?\nA:"_s;
        QTest::newRow("blank system text") << u" \n "_s << one << u""_s << u"Q: How?\nA: Well."_s;
        QTest::newRow("blank pending question") << u""_s << none << u" "_s << u"Q:  \nA: (pending)"_s;
        QTest::newRow("empty prompt and answer")
            << u"You."_s << Exchanges{{u""_s, u""_s}} << u"Who?"_s << u"You.\nQ: \nA: \nQ: Who?\nA: (pending)"_s;
        QTest::newRow("texts of many lines") << u"One\nTwo"_s << Exchanges{{u"How\nmuch?"_s, u"A\n\nlot"_s}} << u""_s
                                             << u"One\nTwo\nQ: How\nmuch?\nA: A\n\nlot"_s;
        QTest::newRow("place markers") << u"%1"_s << Exchanges{{u"%2"_s, u"%1"_s}} << u"%L1"_s
                                       << u"%1\nQ: %2\nA: %1\nQ: %L1\nA: (pending)"_s;
    }
    void conversation_is_laid_out_as_one_text()
    {
        QFETCH(const QString, systemPrompt);
        QFETCH(const Exchanges, exchanges);
        QFETCH(const QString, pending);
        const ConversationLog log{.systemPrompt = systemPrompt, .exchanges = exchanges, .pendingQuestion = pending};
        QTEST(formatConversation(log), "text");
    }
};

ORRINET_TEST(TestConversation)
#include "tst_conversation.moc"
