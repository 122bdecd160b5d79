// How long the answers to come are taken to be.

#include "study/check/answersizes.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using study::Answer;
using study::AnswerSize;
using study::answerSizes;
using study::Basis;
using study::defaultSize;
using study::Kind;
using study::Project;
using study::Question;
using study::Range;
using study::sampleRange;

namespace {

void add(Project &project, Kind kind, bool reasoning = false)
{
    Question question;
    question.entry.id = int(project.questions.size()) + 1;
    question.entry.reasoningRequired = reasoning;
    question.kind = kind;
    project.questionPlaces.insert(question.entry.id, int(project.questions.size()));
    project.questions << question;
}

void answer(Project &project, int question, const ParsedAnswer &parsed)
{
    Answer answer;
    answer.questionId = question;
    answer.parsed = parsed;
    project.answers << answer;
}

ParsedAnswer words(const QString &text, const QString &json = {})
{
    return {.textAnswer = text, .numericAnswer = {}, .jsonAnswer = json};
}

} // namespace

class TestCheckSizes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_sample_has_its_quartiles_and_its_mean_data()
    {
        QTest::addColumn<QList<qsizetype>>("sample");
        QTest::addColumn<Range>("range");
        QTest::newRow("none") << QList<qsizetype>{} << Range{};
        QTest::newRow("one") << QList<qsizetype>{7} << Range{7, 7, 7};
        QTest::newRow("two") << QList<qsizetype>{9, 1} << Range{1, 5, 9};
        QTest::newRow("five") << QList<qsizetype>{5, 1, 4, 2, 3} << Range{2, 3, 4};
        QTest::newRow("one that is far above") << QList<qsizetype>{1, 1, 1, 1, 96} << Range{1, 20, 20};
        QTest::newRow("one that is far below") << QList<qsizetype>{0, 100, 100, 100, 100} << Range{80, 80, 100};
    }
    void a_sample_has_its_quartiles_and_its_mean()
    {
        QFETCH(const QList<qsizetype>, sample);
        QTEST(sampleRange(sample), "range");
    }

    void answers_to_come_are_like_those_there_are()
    {
        Project project;
        add(project, Kind::Text);
        add(project, Kind::Text);
        add(project, Kind::Likert);
        add(project, Kind::Likert, true);
        add(project, Kind::Likert, true);
        answer(project, 1, words(u"1234"_s));
        answer(project, 1, words(u"123456"_s));
        answer(project, 4, words(u"often"_s, uR"({"answer":"often"})"_s));
        answer(project, 99, words(QString(1000, u'x')));

        const QList<AnswerSize> sizes = answerSizes(project);
        QStringList bases;
        for (const AnswerSize &size : sizes)
            bases << shownName(size.basis);
        QCOMPARE(bases,
                 (QStringList{u"same question"_s, u"same type"_s, u"default"_s, u"same question"_s, u"same type"_s}));
        QCOMPARE(sizes.at(0).replayed, (Range{4, 5, 6}));
        QCOMPARE(sizes.at(0).replied, (Range{4, 5, 6}));
        QCOMPARE(sizes.at(1).replayed, (Range{4, 5, 6}));
        QCOMPARE(sizes.at(4).replayed, Range::exactly(5));
        QCOMPARE(sizes.at(4).replied, Range::exactly(18));
    }

    void a_number_is_replied_and_not_replayed()
    {
        Project project;
        add(project, Kind::Numeric);
        answer(project, 1, {.textAnswer = {}, .numericAnswer = 12.5, .jsonAnswer = {}});
        QCOMPARE(answerSizes(project).at(0).replayed, Range());
        QCOMPARE(answerSizes(project).at(0).replied, Range::exactly(4));
    }

    void what_nothing_is_known_of_has_the_length_that_its_type_gives_it_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<bool>("reasoning");
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<Range>("replayed");
        QTest::addColumn<Range>("replied");
        const QStringList none;
        const QStringList drinks{u"Tea"_s, u"Coffee"_s, u"Milk"_s, u"Cocoa"_s}; // 18 characters, with separators 24
        const Range prose{100, 400, 1200};
        QTest::newRow("text") << Kind::Text << false << none << prose << prose;
        QTest::newRow("text, with reasoning") << Kind::Text << true << none << prose << prose;
        QTest::newRow("text, with labels") << Kind::Text << false << drinks << prose << prose;
        QTest::newRow("option") << Kind::SingleChoice << false << drinks << Range{3, 4.5, 6} << Range{16, 17.5, 19};
        QTest::newRow("option, without labels") << Kind::SingleChoice << true << none << prose << prose;
        QTest::newRow("likert") << Kind::Likert << false << drinks << Range{3, 4.5, 6} << Range{16, 17.5, 19};
        QTest::newRow("likert, without labels") << Kind::Likert << false << none << prose << Range{113, 413, 1213};
        QTest::newRow("likert, with reasoning")
            << Kind::Likert << true << drinks << Range{3, 4.5, 6} << Range{111, 232.5, 534};
        QTest::newRow("several") << Kind::MultiChoice << false << drinks << Range{3, 12, 24} << Range{16, 25, 37};
        QTest::newRow("several of one") << Kind::MultiChoice << false << QStringList{u"Tea"_s} << Range{3, 3, 3}
                                        << Range{16, 16, 16};
        QTest::newRow("ranks") << Kind::Ranking << false << drinks << Range{24, 24, 24} << Range{37, 37, 37};
        QTest::newRow("number") << Kind::Numeric << false << none << Range{} << Range{14, 16, 19};
    }
    void what_nothing_is_known_of_has_the_length_that_its_type_gives_it()
    {
        QFETCH(const Kind, kind);
        QFETCH(const bool, reasoning);
        QFETCH(const QStringList, labels);
        Question question;
        question.kind = kind;
        question.labels = labels;
        question.entry.reasoningRequired = reasoning;
        const AnswerSize size = defaultSize(question);
        QTEST(size.replayed, "replayed");
        QTEST(size.replied, "replied");
        QCOMPARE(size.basis, Basis::Default);
    }
};

ORRINET_TEST(TestCheckSizes)
#include "tst_checksizes.moc"
