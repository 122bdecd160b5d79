// What becomes of each pair, and of each stored answer.

#include "study/cells.h"
#include "tests/support/entries.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Cell;
using study::Cells;
using study::Project;
using study::Status;
using Standing = study::Cells::Standing;

class TestCells : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void an_answer_has_the_status_that_its_type_gives_it_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QVariant>("text");
        QTest::addColumn<QVariant>("number");
        QTest::addColumn<QVariant>("json");
        QTest::addColumn<QString>("status");
        const QVariant null;
        QTest::newRow("option") << u"single_choice"_s << QVariant(u"Tea"_s) << null << null << u"answered"_s;
        QTest::newRow("option, two") << u"single_choice"_s << QVariant(u"Tea, Milk"_s) << null << null
                                     << u"out of list"_s;
        QTest::newRow("option, no object")
            << u"single_choice"_s << null << null << QVariant(u"Tea"_s) << u"unreadable"_s;
        QTest::newRow("likert") << u"likert"_s << QVariant(u"milk"_s) << null << null << u"answered"_s;
        QTest::newRow("likert, stranger") << u"likert"_s << QVariant(u"Cola"_s) << null << null << u"out of list"_s;
        QTest::newRow("several") << u"multi_choice"_s << QVariant(u"Tea, Milk"_s) << null << null << u"answered"_s;
        QTest::newRow("several, stranger")
            << u"multi_choice"_s << QVariant(u"Tea, Cola"_s) << null << null << u"out of list"_s;
        QTest::newRow("several, an array")
            << u"multi_choice"_s << null << null << QVariant(uR"({"answer":["Milk"]})"_s) << u"answered"_s;
        QTest::newRow("ranks") << u"ranking"_s << QVariant(u"Milk\nTea"_s) << null << null << u"answered"_s;
        QTest::newRow("ranks, one twice")
            << u"ranking"_s << QVariant(u"Milk\nTea\nMilk"_s) << null << null << u"out of list"_s;
        QTest::newRow("number") << u"numeric"_s << null << QVariant(7.5) << null << u"answered"_s;
        QTest::newRow("number as a text") << u"numeric"_s << QVariant(u" 7.5 "_s) << null << null << u"answered"_s;
        QTest::newRow("words") << u"numeric"_s << QVariant(u"seven"_s) << null << null << u"not a number"_s;
        QTest::newRow("infinite") << u"numeric"_s << null << QVariant(qInf()) << null << u"not a number"_s;
        QTest::newRow("no answer in the object")
            << u"numeric"_s << null << null << QVariant(u"{}"_s) << u"unreadable"_s;
        QTest::newRow("text") << u"text"_s << QVariant(u"Well ..."_s) << null << null << u"answered"_s;
        QTest::newRow("empty text") << u"text"_s << QVariant(u""_s) << null << null << u"unreadable"_s;
        QTest::newRow("no type") << u"essay"_s << QVariant(u"Well ..."_s) << null << null << u"answered"_s;
    }
    void an_answer_has_the_status_that_its_type_gives_it()
    {
        QFETCH(const QString, type);
        QFETCH(const QVariant, text);
        QFETCH(const QVariant, number);
        QFETCH(const QVariant, json);
        SideDatabase file(writeProject(path()));
        QVERIFY(enter(file, PersonaEntered{.uuid = u"a"_s, .name = u"A"_s},
                      QuestionEntered{.type = type, .labels = uR"(["Tea","Milk"])"_s},
                      AnswerEntered{.persona = u"a"_s, .question = 1, .text = text, .number = number, .json = json}));
        const Project project = read();
        QTEST(shownName(Cells(project).at(0, 0).status), "status");
    }

    void choices_without_labels_have_nothing_to_match()
    {
        SideDatabase file(writeProject(path()));
        QVERIFY(enter(file, PersonaEntered{.uuid = u"a"_s},
                      QuestionEntered{.type = u"likert"_s, .labels = u"no array"_s},
                      AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"Rather"_s}));
        const Project project = read();
        QVERIFY(!project.questions.at(0).labelsParse);
        QCOMPARE(Cells(project).at(0, 0).status, Status::Answered);
    }

    void the_answer_that_the_grid_shows_counts()
    {
        SideDatabase file(writeProject(path()));
        QVERIFY(enter(file, PersonaEntered{.uuid = u"a"_s}, PersonaEntered{.uuid = u"b"_s}, QuestionEntered{}));
        const auto answer = [&file](const QString &text, const QVariant &at, const QVariant &persona = u"a"_s,
                                    int question = 1) {
            return enter(file, AnswerEntered{.persona = persona, .question = question, .text = text, .createdAt = at});
        };
        QVERIFY(answer(u"early"_s, u"2001-02-03 04:05:06"_s));
        QVERIFY(answer(u"latest, first"_s, u"2001-02-03 04:05:08"_s));
        QVERIFY(answer(u"latest, second"_s, u"2001-02-03 04:05:08"_s));
        QVERIFY(answer(u"at no time"_s, QVariant()));
        QVERIFY(answer(u"of nobody"_s, u"2001-02-03 04:05:09"_s, u"gone"_s));
        QVERIFY(answer(u"of no name"_s, u"2001-02-03 04:05:09"_s, QVariant()));
        QVERIFY(answer(u"to nothing"_s, u"2001-02-03 04:05:09"_s, u"a"_s, 99));

        const Project project = read();
        const Cells cells(project);
        QCOMPARE(cells.at(0, 0).answer->shown(), u"latest, first"_s);
        QCOMPARE(cells.at(0, 0).repeats, 3);
        QCOMPARE(cells.at(1, 0).status, Status::Open);
        QCOMPARE(cells.at(1, 0).answer, nullptr);
        QStringList standings;
        for (qsizetype place = 0; place < project.answers.size(); ++place) {
            static const QMap<Standing, QString> names{{Standing::Newest, u"newest"_s},
                                                       {Standing::Superseded, u"superseded"_s},
                                                       {Standing::Orphan, u"orphan"_s}};
            standings << project.answers.at(place).shown() + u": "_s + names.value(cells.standing(place));
        }
        standings.sort();
        QCOMPARE(standings, (QStringList{u"at no time: superseded"_s, u"early: superseded"_s,
                                         u"latest, first: newest"_s, u"latest, second: superseded"_s,
                                         u"of no name: orphan"_s, u"of nobody: orphan"_s, u"to nothing: orphan"_s}));
    }

private:
    QString path()
    {
        return folder.filePath(u"%1 %2.ormt"_s.arg(QString::fromLatin1(QTest::currentTestFunction()),
                                                   QString::fromLatin1(QTest::currentDataTag())));
    }

    Project read()
    {
        const auto project = study::readProject(path());
        if (const QString *reason = std::get_if<QString>(&project))
            QTest::qFail(qUtf8Printable(*reason), __FILE__, __LINE__);
        return std::get<Project>(project);
    }

    QTemporaryDir folder;
};

ORRINET_TEST(TestCells)
#include "tst_cells.moc"
