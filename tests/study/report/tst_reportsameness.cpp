// What a report says of how much the answers are one, and of the words in them.

#include "study/report/sections/sections.h"
#include "tests/study/report/reportsample.h"
#include "tests/support/entries.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Flag;
using study::samenessSection;
using study::Section;
using study::wordsSection;

class TestReportSameness : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        drinks = std::make_unique<ReadSurvey>(writeDrinks(folder.filePath(u"drinks.ormt"_s)));
        QVERIFY(drinks->survey);
    }

    void each_question_has_its_entropy_and_its_strongest_tag()
    {
        const QStringList said = saidBy(samenessSection(*drinks->survey).blocks);
        // Tea and milk is the answer of all that are rural, milk of all others.
        QVERIFY2(said.filter(u"TextTable: 2. Tea, coffee or milk? | rural | 12 | 50 % | 1 | 1 | "_s).size() == 1,
                 qUtf8Printable(said.join(u'\n')));
        QVERIFY(said.filter(u"TextTable: 3. Why? | - | 12 | 8.3 % | 1 | - | -"_s).size() == 1);
        // 0, 4 and 8 against the others: 9 of 143 squares.
        QVERIFY(said.filter(u"TextTable: 4. How many cups? | young | 12 | 8.3 % | 1 | 0.063 | -"_s).size() == 1);
    }

    void the_same_answers_throughout_are_told_by_name()
    {
        const QString path = folder.filePath(u"same.ormt"_s);
        SideDatabase file(writeProject(path));
        QVERIFY(enter(file, QuestionEntered{.prompt = u"Why?"_s}, QuestionEntered{.type = u"numeric"_s}));
        for (const QString &name : {u"Ann"_s, u"Ben"_s, u"Cas"_s}) {
            QVERIFY(enter(file, PersonaEntered{.uuid = name, .name = name},
                          AnswerEntered{.persona = name, .question = 1, .text = u"Because it is so warm."_s},
                          AnswerEntered{.persona = name, .question = 2, .number = name == u"Cas"_s ? 2 : 1}));
        }
        const ReadSurvey read(path);
        const Section section = samenessSection(*read.survey);
        const QStringList said = saidBy(section.blocks);
        QVERIFY(said.contains(u"TextTable: Ann, Ben | 2"_s));
        QVERIFY(said.contains(u"TextTable: Ann | Ben | 0 | 2"_s));
        QVERIFY(said.contains(u"TextTable: Cas | Ann | 0.5 | 2"_s));
        QVERIFY(said.contains(u"TextTable: Because it is so warm. | Question 1 | 3"_s));
        QStringList flags;
        for (const Flag &flag : section.flags)
            flags << flag.text;
        QCOMPARE(flags, (QStringList{u"2 of 3 personas gave the same answers throughout as another one"_s,
                                     u"1 text came word for word from several personas"_s}));
    }

    void a_question_with_one_answer_is_flagged_where_many_gave_it_data()
    {
        QTest::addColumn<int>("personas");
        QTest::addColumn<int>("flags");
        QTest::newRow("ten") << 10 << 1;
        QTest::newRow("nine") << 9 << 0;
    }
    void a_question_with_one_answer_is_flagged_where_many_gave_it()
    {
        QFETCH(const int, personas);
        const QString path = folder.filePath(u"one %1.ormt"_s.arg(personas));
        SideDatabase file(writeProject(path));
        QVERIFY(enter(file, QuestionEntered{.type = u"likert"_s, .labels = uR"(["no","yes"])"_s}));
        for (int number = 0; number < personas; ++number) {
            const QString uuid = QString::number(number);
            QVERIFY(enter(file, PersonaEntered{.uuid = uuid},
                          AnswerEntered{.persona = uuid, .question = 1, .text = u"yes"_s}));
        }
        const ReadSurvey read(path);
        int flags = 0;
        for (const Flag &flag : samenessSection(*read.survey).flags)
            flags += flag.text == u"90 % or more gave one answer to 1 question: number 1"_s ? 1 : 0;
        QTEST(flags, "flags");
    }

    void refusals_and_contradictions_are_quoted()
    {
        const QString path = folder.filePath(u"words.ormt"_s);
        SideDatabase file(writeProject(path));
        QVERIFY(enter(
            file, PersonaEntered{.uuid = u"a"_s, .name = u"Ann"_s}, PersonaEntered{.uuid = u"b"_s, .name = u"Ben"_s},
            QuestionEntered{.prompt = u"Why?"_s},
            QuestionEntered{.type = u"single_choice"_s, .labels = uR"(["Tea","Milk"])"_s},
            AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"As an AI, I drink nothing."_s},
            AnswerEntered{.persona = u"b"_s, .question = 1, .text = u"It depends on the day."_s},
            AnswerEntered{
                .persona = u"a"_s, .question = 2, .text = u"Tea"_s, .json = uR"({"reasoning":"Only milk will do."})"_s},
            AnswerEntered{.persona = u"b"_s, .question = 2, .text = u"I cannot answer that."_s}));
        const ReadSurvey read(path);
        const Section section = wordsSection(*read.survey);
        const QStringList said = saidBy(section.blocks);
        QVERIFY(said.contains(u"Heading: Refusals: 2"_s));
        QVERIFY(said.contains(u"Quotation: As an AI, I drink nothing. / Ann, Question 1: \u201cas an AI\u201d"_s));
        QVERIFY(said.contains(
            u"Quotation: I cannot answer that. / Ben, Question 2, not usable: \u201cI cannot answer\u201d"_s));
        QVERIFY(said.contains(u"Heading: Hedges: 1"_s));
        QVERIFY(said.contains(u"Quotation: Only milk will do. / Ann, Question 2: answered \u201cTea\u201d, the "
                              "reasoning names \u201cMilk\u201d"_s));
        QCOMPARE(section.flags.size(), 2);
    }

private:
    QTemporaryDir folder;
    std::unique_ptr<ReadSurvey> drinks;
};

ORRINET_TEST(TestReportSameness)
#include "tst_reportsameness.moc"
