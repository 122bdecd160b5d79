// The example in which everything is wrong at least once: each flaw that it is made for is in it.

#include "study/cells.h"
#include "study/statistics/likeness.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QFileInfo>
#include <QSet>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using study::AlikeTexts;
using study::alikeTexts;
using study::Cell;
using study::Cells;
using study::Kind;
using study::Persona;
using study::Project;
using study::Question;
using study::Status;
using Standing = study::Cells::Standing;

class TestFlawed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString path = QStringLiteral(ORRINET_SOURCE_FOLDER "/examples/flawed.ormt");
        QVERIFY(QFileInfo(path).size() < 1'500'000);
        auto read = study::readProject(path);
        QVERIFY(std::holds_alternative<Project>(read));
        project = std::move(std::get<Project>(read));
        cells.emplace(project);
    }

    void it_has_every_type_of_question()
    {
        QCOMPARE(project.personas.size(), 200);
        QCOMPARE(project.questions.size(), 12);
        QSet<Kind> kinds;
        for (const Question &question : std::as_const(project.questions))
            kinds.insert(question.kind);
        QCOMPARE(kinds.size(), 6);
    }

    void it_has_every_status_to_more_than_one_question()
    {
        for (const Status status : {Status::Answered, Status::Open, Status::OutOfList, Status::Unreadable})
            QVERIFY2(questionsWith(status).size() > 1, qUtf8Printable(shownName(status)));
        QCOMPARE(questionsWith(Status::NotANumber), QSet<int>{4});
        for (const Standing standing : {Standing::Superseded, Standing::Orphan}) {
            int count = 0;
            for (qsizetype place = 0; place < project.answers.size(); ++place)
                count += int(cells->standing(place) == standing);
            QVERIFY(count > 1);
        }
    }

    void of_answers_of_one_second_the_first_counts()
    {
        QCOMPARE(cells->at(member(2), 4).answer->shown(), u"Disagree strongly"_s);
        QCOMPARE(cells->at(member(2), 4).repeats, 2);
    }

    void what_the_model_is_told_is_wrong()
    {
        QVERIFY(question(8).entry.prompt.isEmpty());
        QVERIFY(!question(7).labelsParse);
        QVERIFY(question(3).kind == Kind::Text && question(3).entry.reasoningRequired);
        QCOMPARE(question(4).entry.prompt, question(9).entry.prompt);
        QCOMPARE(question(10).labels.count(u"Sometimes"_s), 2);
        QVERIFY(question(12).entry.judge);
        // A choice that the wording does not name: one of several, and all.
        QVERIFY(question(2).labels.contains(u"Biscuits"_s) && !question(2).entry.prompt.contains(u"Biscuits"_s));
        for (const QString &label : question(5).labels)
            QVERIFY(!question(5).entry.prompt.contains(label));
        // Reasoning that nothing but the tick asks for.
        QVERIFY(question(11).entry.reasoningRequired && !question(11).entry.prompt.contains(u"why"_s));
    }

    void what_is_stored_and_has_no_effect()
    {
        QCOMPARE(question(11).askWhen, u"if"_s);
        QCOMPARE(question(11).dependsOnAnswer, u"Coffee"_s);
        QCOMPARE(question(11).attachments, QStringList{u"prices.pdf"_s});
        QVERIFY(question(1).searchEnabled && !question(10).searchEnabled);
        QVERIFY(project.tags.contains(u"spare"_s));
        QVERIFY(std::none_of(project.personas.begin(), project.personas.end(),
                             [](const Persona &persona) { return persona.tags.contains(u"spare"_s); }));
    }

    void what_changed_after_the_answers()
    {
        const QString answered = cells->at(member(70), 4).answer->createdAt;
        QVERIFY(question(5).modifiedAt > answered);
        QVERIFY(project.personas.at(member(70)).modifiedAt > answered);
        QVERIFY(question(4).modifiedAt < answered);
    }

    void personas_without_a_text_and_with_that_of_another()
    {
        QStringList names;
        QStringList texts;
        int without = 0;
        for (const Persona &persona : std::as_const(project.personas)) {
            names << persona.entry.name;
            texts << persona.entry.attributes;
            without += int(persona.entry.attributes.isEmpty() && persona.entry.systemPrompt.isEmpty());
        }
        QCOMPARE(without, 2);
        QCOMPARE(names.removeDuplicates(), 1);
        const QList<AlikeTexts> alike = alikeTexts(texts);
        QCOMPARE(alike.size(), 2);
        QCOMPARE(alike.at(0).places.size(), 10);
        QVERIFY(!alike.at(0).same);
        QVERIFY(alike.at(1).same);
        QVERIFY(std::max_element(texts.begin(), texts.end(),
                                 [](const QString &a, const QString &b) { return a.size() < b.size(); })
                    ->toUtf8()
                    .size() > 130'000);
    }

    void tags_overlap_and_some_groups_are_small()
    {
        int several = 0;
        int without = 0;
        for (const Persona &persona : std::as_const(project.personas)) {
            several += int(persona.tags.size() > 2);
            without += int(persona.tags.isEmpty());
        }
        QVERIFY(several > 50);
        QCOMPARE(without, 5);
    }

    void five_personas_say_the_same_throughout()
    {
        for (int number = 101; number < 105; ++number) {
            for (int place = 0; place < project.questions.size(); ++place) {
                const Cell &one = cells->at(member(100), place);
                const Cell &other = cells->at(member(number), place);
                QCOMPARE(other.status, one.status);
                if (one.answer != nullptr)
                    QCOMPARE(other.answer->shown(), one.answer->shown());
            }
        }
    }

    void texts_try_to_get_out_of_where_they_are()
    {
        const QList<int> members{14, 15, 16, 17, 18};
        const QStringList traces{u"</svg>"_s, u"\u202E"_s, u"\U0001F375"_s, u"=HYPERLINK"_s, u"\r\n"_s};
        for (qsizetype place = 0; place < members.size(); ++place)
            QVERIFY(cells->at(member(members.at(place)), 2).answer->shown().contains(traces.at(place)));
    }

    void answers_refuse_and_hedge_and_contradict_themselves()
    {
        QVERIFY(cells->at(member(20), 2).answer->shown().contains(u"I can't answer"_s));
        QVERIFY(cells->at(member(21), 2).answer->shown().contains(u"It depends"_s));
        int contradicting = 0;
        for (int persona = 0; persona < project.personas.size(); ++persona) {
            const Cell &cell = cells->at(persona, 0);
            if (cell.status != Status::Answered)
                continue;
            const QString reasoning = cell.answer->reasoning();
            const QString own = question(1).labels.at(cell.matches.labels.first());
            for (const QString &label : question(1).labels)
                contradicting += int(label != own && reasoning.contains(label) && !reasoning.contains(own));
        }
        QVERIFY(contradicting >= 3);
    }

    void a_history_grows_long_and_has_empty_turns()
    {
        QVERIFY(cells->at(member(19), 2).answer->shown().size() > 20'000);
        QVERIFY(cells->at(member(60), 3).answer->parsed.textAnswer.isEmpty());
        QVERIFY(cells->at(member(60), 1).answer->parsed.textAnswer.isEmpty());
    }

private:
    const Question &question(int number) const { return project.questions.at(number - 1); }

    int member(int number) const
    {
        return project.personaIndex(u"00000000-0000-4000-8000-%1"_s.arg(number, 12, 10, QChar(u'0')));
    }

    /// The numbers of those to which some answer has a status.
    QSet<int> questionsWith(Status status) const
    {
        QSet<int> numbers;
        for (int persona = 0; persona < project.personas.size(); ++persona) {
            for (int place = 0; place < project.questions.size(); ++place) {
                if (cells->at(persona, place).status == status)
                    numbers.insert(place + 1);
            }
        }
        return numbers;
    }

    Project project;
    std::optional<Cells> cells;
};

ORRINET_TEST(TestFlawed)
#include "tst_flawed.moc"
