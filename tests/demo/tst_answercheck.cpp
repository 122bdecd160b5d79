#include "demo/answercheck.h"
#include "tests/support/entries.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// A project in memory with one persona.
class CheckedProject : public SideDatabase
{
public:
    CheckedProject()
        : SideDatabase(u":memory:"_s)
    {
        exec(schemaStatements());
        enter(*this, PersonaEntered{.uuid = u"p"_s, .name = u"P"_s});
    }

    QStringList flaws(qsizetype wanted) { return AnswerCheck(database(), wanted).flaws(); }
};

} // namespace

class TestAnswerCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answer_fills_the_columns_of_its_type_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<AnswerEntered>("answer");
        QTest::addColumn<QString>("flaw");
        const AnswerEntered textAlone{.text = u"yes"_s};
        const AnswerEntered textAndJson{.text = u"yes"_s, .json = u"{}"_s};
        const AnswerEntered numberAndJson{.number = 0, .json = u"{}"_s};
        const AnswerEntered all{.text = u"yes"_s, .number = 1, .json = u"{}"_s};
        const AnswerEntered blank{.text = u""_s, .json = u""_s};
        for (const char *type : {"single_choice", "multi_choice", "likert", "ranking"}) {
            QTest::addRow("%s", type) << QString::fromLatin1(type) << textAndJson << QString();
            QTest::addRow("%s without JSON", type) << QString::fromLatin1(type) << textAlone
                                                   << u"fills text_answer instead of text_answer and json_answer"_s;
        }
        QTest::addRow("text") << u"text"_s << textAlone << QString();
        QTest::addRow("text with JSON") << u"text"_s << textAndJson
                                        << u"fills text_answer and json_answer instead of text_answer"_s;
        QTest::addRow("numeric") << u"numeric"_s << numberAndJson << QString();
        QTest::addRow("number that stayed a text")
            << u"numeric"_s << textAndJson
            << u"fills text_answer and json_answer instead of numeric_answer and json_answer"_s;
        QTest::addRow("number with a text")
            << u"numeric"_s << all
            << u"fills text_answer and numeric_answer and json_answer instead of numeric_answer and json_answer"_s;
        QTest::addRow("empty texts") << u"text"_s << blank << u"fills no column instead of text_answer"_s;
        QTest::addRow("nothing") << u"text"_s << AnswerEntered() << u"fills no column instead of text_answer"_s;
    }

    void answer_fills_the_columns_of_its_type()
    {
        QFETCH(QString, type);
        QFETCH(AnswerEntered, answer);
        QFETCH(QString, flaw);
        CheckedProject project;
        answer.persona = u"p"_s;
        answer.question = 1;
        enter(project, QuestionEntered{.id = 1, .order = 3, .prompt = u"?"_s, .type = type}, answer);
        const QStringList expected =
            flaw.isEmpty() ? QStringList() : QStringList(u"P, question 3 (%1): %2"_s.arg(type, flaw));
        QCOMPARE(project.flaws(1), expected);
    }

    void pair_without_an_answer_is_a_flaw_of_its_own()
    {
        CheckedProject project;
        enter(project, PersonaEntered{.uuid = u"o"_s, .name = u"O"_s}, QuestionEntered{.id = 1, .prompt = u"?"_s},
              QuestionEntered{.id = 2, .prompt = u"?"_s, .type = u"numeric"_s},
              AnswerEntered{.persona = u"p"_s, .question = 1, .text = u"yes"_s});
        QCOMPARE(project.flaws(4),
                 (QStringList{u"O, question 1 (text): no answer"_s, u"O, question 2 (numeric): no answer"_s,
                              u"P, question 2 (numeric): no answer"_s}));
    }

    void project_of_another_size_is_a_flaw()
    {
        CheckedProject project;
        enter(project, QuestionEntered{.id = 1, .prompt = u"?"_s},
              AnswerEntered{.persona = u"p"_s, .question = 1, .text = u"yes"_s});
        QCOMPARE(project.flaws(2), QStringList(u"2 answers are expected, the project has place for 1"_s));
    }

    void project_that_cannot_be_read_is_a_flaw()
    {
        CheckedProject project;
        project.exec(u"DROP TABLE responses"_s);
        const QString reason = project.refusal(u"SELECT * FROM responses"_s);
        const QStringList found = project.flaws(1);
        QCOMPARE(found.size(), 2);
        QCOMPARE(found.first(), reason);
        QCOMPARE(found.last(), u"1 answers are expected, the project has place for 0"_s);
    }

    void table_counts_answers_and_columns_by_type()
    {
        CheckedProject project;
        enter(project, PersonaEntered{.uuid = u"o"_s, .name = u"O"_s},
              QuestionEntered{.id = 1, .prompt = u"?"_s, .type = u"ranking"_s},
              QuestionEntered{.id = 2, .prompt = u"?"_s, .type = u"numeric"_s},
              AnswerEntered{.persona = u"p"_s, .question = 1, .text = u"a, b"_s, .json = u"{}"_s},
              AnswerEntered{.persona = u"o"_s, .question = 1, .text = u"b, a"_s},
              AnswerEntered{.persona = u"o"_s, .question = 2, .number = 7, .json = u"{}"_s});
        QStringList lines = AnswerCheck(project.database(), 4).table();
        for (QString &line : lines)
            line = line.simplified();
        QCOMPARE(lines, (QStringList{u"answer type answers text_answer numeric_answer json_answer"_s,
                                     u"single_choice - - - -"_s, u"multi_choice - - - -"_s, u"text - - - -"_s,
                                     u"numeric 1 - 1 1"_s, u"likert - - - -"_s, u"ranking 2 2 - 1"_s}));
    }
};

ORRINET_TEST(TestAnswerCheck)
#include "tst_answercheck.moc"
