#include "demo/examples.h"
#include "demo/secondlook.h"
#include "tests/support/entries.h"
#include "tests/support/messagelog.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/stage.h"
#include "tests/support/testcase.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

/// A folder with what a demo of one persona and two questions leaves, and a window that takes it up.
class Remains
{
public:
    Remains()
        : folder(stage.path(QString()))
    {
        SideDatabase project(writeProject(DemoFile::project(folder)));
        enter(project, PersonaEntered{.uuid = u"p"_s, .name = u"P"_s, .tags = {u"grey"_s}},
              QuestionEntered{.id = 1, .prompt = u"Why?"_s}, QuestionEntered{.id = 2, .prompt = u"When?"_s},
              AnswerEntered{.persona = u"p"_s, .question = 1, .text = u"So."_s},
              AnswerEntered{.persona = u"p"_s, .question = 2, .text = u"Now."_s});
        SideDatabase pack(writePack(DemoFile::pack(folder)));
        enter(pack, PersonaEntered{.uuid = u"p"_s, .name = u"P"_s, .tags = {u"grey"_s}});
    }

    /// Takes the second look and gives the flaws, with the folder's path left out.
    QStringList look()
    {
        const Examples examples{
            .panel = {ExamplePersona{.name = u"P"_s, .narrative = u"You roll."_s, .tags = {u"grey"_s}}},
            .questionnaire = {ExampleQuestion{.prompt = u"Why?"_s, .type = u"text"_s, .labels = {}},
                              ExampleQuestion{.prompt = u"When?"_s, .type = u"text"_s, .labels = {}}}};
        QTextStream out(&output);
        QStringList flaws = takeSecondLook(stage.window(), folder, examples, out);
        return flaws.replaceInStrings(folder.path() + u'/', QString());
    }

    Stage stage;
    QDir folder;
    QString output;
};

using Change = std::function<void(const QDir &)>;

/// The change that runs one statement on one of the files.
Change runOn(QString (*file)(const QDir &), const QString &statement)
{
    return [file, statement](const QDir &folder) { SideDatabase(file(folder)).exec(statement); };
}

} // namespace

class TestSecondLook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whole_remains_have_no_flaw()
    {
        Remains remains;
        QCOMPARE(remains.look(), QStringList());
        QCOMPARE(remains.output, u"opened again in a second process: demo.ormt, 2 answers\n"
                                 "imported into a new project: panel.ornk, 1 personas with 1 tags\n"_s);
        const QByteArray conversation = readBytes(DemoFile::conversation(remains.folder));
        QVERIFY2(conversation.contains("\nA: So.\n"), conversation.constData());
        QVERIFY2(conversation.endsWith("\nA: Now.\n"), conversation.constData());
    }

    void project_that_cannot_be_opened_ends_it_at_once()
    {
        Remains remains;
        writeBytes(DemoFile::project(remains.folder), "no database"_ba);
        const MessageLog log;
        QCOMPARE(remains.look(), QStringList(u"demo.ormt: the project cannot be opened"_s));
        QCOMPARE(log.warnings().size(), 1);
        QCOMPARE(remains.output, QString());
        QVERIFY(!QFile::exists(DemoFile::conversation(remains.folder)));
    }

    void file_that_is_missing_or_differs_is_named_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<QStringList>("flaws");
        const QString unanswered = u"the conversation does not have an answer to each question"_s;
        QTest::addRow("the project is missing")
            << Change([](const QDir &folder) { QVERIFY(QFile::remove(DemoFile::project(folder))); })
            << QStringList{u"2 answers are expected, the project has place for 0"_s, unanswered};
        QTest::addRow("an answer is missing")
            << runOn(DemoFile::project, u"DELETE FROM responses WHERE question_id=1"_s)
            << QStringList{u"P, question 1 (text): no answer"_s, unanswered};
        QTest::addRow("an answer stands in another column")
            << runOn(DemoFile::project,
                     u"UPDATE responses SET text_answer=NULL, json_answer='{}' WHERE question_id=2"_s)
            << QStringList(u"P, question 2 (text): fills json_answer instead of text_answer"_s);
        QTest::addRow("a question is missing")
            << runOn(DemoFile::project, u"DELETE FROM questions WHERE question_id=2"_s)
            << QStringList{u"2 answers are expected, the project has place for 1"_s, unanswered};
        QTest::addRow("the conversation has no place")
            << Change([](const QDir &folder) { QVERIFY(folder.mkpath(u"conversation.txt"_s)); })
            << QStringList(u"conversation.txt: the conversation cannot be written"_s);
        const QStringList other(u"panel.ornk: the pack does not hold the panel"_s);
        QTest::addRow("the pack is missing")
            << Change([](const QDir &folder) { QVERIFY(QFile::remove(DemoFile::pack(folder))); }) << other;
        QTest::addRow("the pack lacks a persona") << runOn(DemoFile::pack, u"DELETE FROM personas"_s) << other;
        QTest::addRow("the pack has no tags") << runOn(DemoFile::pack, u"DELETE FROM tags"_s) << other;
    }

    void file_that_is_missing_or_differs_is_named()
    {
        QFETCH(Change, change);
        Remains remains;
        change(remains.folder);
        QTEST(remains.look(), "flaws");
    }
};

ORRINET_TEST(TestSecondLook)
#include "tst_secondlook.moc"
