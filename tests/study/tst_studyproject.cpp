// A project file as typed rows, and the files that are none.

#include "study/project.h"
#include "tests/support/entries.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QCryptographicHash>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Kind;
using study::Project;
using study::readProject;

class TestStudyProject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everything_is_read_with_its_type()
    {
        const QString path = folder.filePath(u"all.ormt"_s);
        SideDatabase file(writeProject(path));
        QVERIFY(setBoilerplate(file, u"Before."_s, u"After."_s));
        QVERIFY(enter(file, PersonaEntered{.uuid = u"z"_s, .name = u"Zed"_s, .notes = u"n"_s, .tags = {u"rural"_s}},
                      PersonaEntered{.uuid = u"a"_s,
                                     .name = u"Ann"_s,
                                     .attributes = u"likes tea"_s,
                                     .systemPrompt = u"I am Ann"_s,
                                     .tags = {u"urban"_s, u"rural"_s}}));
        QVERIFY(enter(
            file, QuestionEntered{.order = 2, .prompt = u"Why?"_s, .type = u"text"_s, .reasoning = 1},
            QuestionEntered{
                .order = 1, .prompt = u"Tea?"_s, .type = u"likert"_s, .labels = uR"(["no","yes"])"_s, .judge = 1}));
        QVERIFY(file.exec(u"INSERT INTO question_attachments (question_id, filename) VALUES (2, 'tea.txt')"_s));
        QVERIFY(file.exec(u"UPDATE questions SET ask_when='if', depends_on_answer='yes', search_enabled=0 "
                          "WHERE question_id=2"_s));
        QVERIFY(enter(file, AnswerEntered{.persona = u"a"_s,
                                          .question = 2,
                                          .number = 7.25,
                                          .json = uR"({"answer":7.25,"reasoning":"so"})"_s}));

        const auto read = readProject(path);
        QVERIFY(std::holds_alternative<Project>(read));
        const Project &project = std::get<Project>(read);
        QCOMPARE(project.boilerplate.preamble, u"Before."_s);
        QCOMPARE(project.boilerplate.postamble, u"After."_s);
        QCOMPARE(project.tags, (QStringList{u"rural"_s, u"urban"_s}));
        QCOMPARE(project.personas.size(), 2);
        const study::Persona &ann = project.personas.at(0);
        QCOMPARE(ann.entry.uuid, u"a"_s);
        QCOMPARE(ann.entry.systemPrompt, u"I am Ann"_s);
        QCOMPARE(ann.entry.attributes, u"likes tea"_s);
        QCOMPARE(ann.tags, (QStringList{u"rural"_s, u"urban"_s}));
        QCOMPARE(project.personas.at(1).notes, u"n"_s);
        QCOMPARE(project.personaIndex(u"z"_s), 1);
        QCOMPARE(project.personaIndex(u"gone"_s), -1);
        QCOMPARE(project.personaIndex(QString()), -1);

        const study::Question &tea = project.questions.at(0);
        QCOMPARE(tea.entry.prompt, u"Tea?"_s);
        QCOMPARE(tea.number, 1);
        QCOMPARE(tea.kind, Kind::Likert);
        QCOMPARE(shownName(tea.kind), u"Likert Scale"_s);
        QCOMPARE(tea.labels, (QStringList{u"no"_s, u"yes"_s}));
        QVERIFY(tea.entry.judge);
        QCOMPARE(tea.askWhen, u"if"_s);
        QCOMPARE(tea.dependsOnAnswer, u"yes"_s);
        QVERIFY(!tea.searchEnabled);
        QCOMPARE(tea.attachments, QStringList{u"tea.txt"_s});
        QVERIFY(project.questions.at(1).entry.reasoningRequired);
        QVERIFY(project.questions.at(1).searchEnabled);
        QCOMPARE(project.questionIndex(2), 0);
        QCOMPARE(project.questionIndex(9), -1);

        QCOMPARE(project.answers.size(), 1);
        QCOMPARE(project.answers.at(0).shown(), u"7.25"_s);
        QCOMPARE(project.answers.at(0).reasoning(), u"so"_s);
        QCOMPARE(project.sha256, QCryptographicHash::hash(readBytes(path), QCryptographicHash::Sha256).toHex());
    }

    void a_project_without_boilerplate_has_the_one_that_a_run_takes()
    {
        const QString path = folder.filePath(u"boilerplate.ormt"_s);
        SideDatabase file(writeProject(path));
        QCOMPARE(std::get<Project>(readProject(path)).boilerplate.preamble, u"Act as the following persona."_s);
        QVERIFY(setBoilerplate(file, QVariant(), u"After."_s));
        QCOMPARE(std::get<Project>(readProject(path)).boilerplate.preamble, QString());
        QCOMPARE(std::get<Project>(readProject(path)).boilerplate.postamble, u"After."_s);
    }

    void answers_are_replayed_as_a_run_replays_them_data()
    {
        QTest::addColumn<QVariant>("judge");
        QTest::addColumn<bool>("isJudge");
        QTest::addColumn<bool>("isReplayed");
        QTest::newRow("ordinary") << QVariant(0) << false << true;
        QTest::newRow("adjudicated") << QVariant(1) << true << false;
        QTest::newRow("null") << QVariant() << false << false;
        QTest::newRow("a word") << QVariant(u"no"_s) << false << false;
    }
    void answers_are_replayed_as_a_run_replays_them()
    {
        QFETCH(const QVariant, judge);
        const QString path = folder.filePath(u"%1.ormt"_s.arg(QString::fromLatin1(QTest::currentDataTag())));
        SideDatabase file(writeProject(path));
        QVERIFY(enter(file, QuestionEntered{.judge = judge}));
        QVERIFY(file.exec(u"UPDATE questions SET depends_on_question_id=7"_s));
        const Project project = std::get<Project>(readProject(path));
        QTEST(project.questions.at(0).entry.judge, "isJudge");
        QTEST(project.questions.at(0).isReplayed, "isReplayed");
        QCOMPARE(project.questions.at(0).dependsOnQuestion, 7);
    }

    void what_is_no_project_is_told_in_one_sentence_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing") << u"missing.ormt"_s << u"is not there"_s;
        QTest::newRow("a folder") << u"."_s << u"is not there"_s;
        QTest::newRow("a text") << u"text.ormt"_s << u"is no project: file is not a database"_s;
        QTest::newRow("empty") << u"empty.ormt"_s << uR"(is no project: it has no table "personas")"_s;
        QTest::newRow("other columns") << u"columns.ormt"_s
                                       << uR"(is no project: its table "responses" has other columns)"_s;
        QTest::newRow("a trigger") << u"trigger.ormt"_s
                                   << u"is no project: it holds a trigger, \"t\", which the program never makes"_s;
    }
    void what_is_no_project_is_told_in_one_sentence()
    {
        writeBytes(folder.filePath(u"text.ormt"_s), QByteArray("No database at all. ").repeated(80));
        writeBytes(folder.filePath(u"empty.ormt"_s), {});
        QFETCH(const QString, name);
        QFETCH(const QString, reason);
        const QString path = folder.filePath(name);
        if (name == "columns.ormt"_L1)
            writeProject(path, {u"ALTER TABLE responses ADD COLUMN more TEXT"_s});
        if (name == "trigger.ormt"_L1)
            writeProject(path, {u"CREATE TRIGGER t AFTER INSERT ON tags BEGIN DELETE FROM tags; END"_s});
        const auto read = readProject(path);
        QVERIFY(std::holds_alternative<QString>(read));
        QCOMPARE(std::get<QString>(read), path + u' ' + reason);
    }

    void a_project_that_another_writes_to_is_read_as_it_was()
    {
        const QString path = folder.filePath(u"busy.ormt"_s);
        SideDatabase writer(writeProject(path));
        QVERIFY(enter(writer, PersonaEntered{.uuid = u"a"_s}));
        QVERIFY(writer.exec(u"BEGIN IMMEDIATE"_s));
        QVERIFY(enter(writer, PersonaEntered{.uuid = u"b"_s}));
        const auto read = readProject(path);
        QVERIFY(std::holds_alternative<Project>(read));
        QCOMPARE(std::get<Project>(read).personas.size(), 1);
        QVERIFY(writer.exec(u"COMMIT"_s));
    }

    void reading_leaves_the_file_and_its_folder_as_they_were()
    {
        const QString path = folder.filePath(u"kept.ormt"_s);
        writeProject(path);
        const QByteArray bytes = readBytes(path);
        const QStringList names = QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden);
        QVERIFY(std::holds_alternative<Project>(readProject(path)));
        QCOMPARE(readBytes(path), bytes);
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden), names);
        QVERIFY(!QSqlDatabase::connectionNames().contains(u"study"_s));
    }

private:
    QTemporaryDir folder;
};

ORRINET_TEST(TestStudyProject)
#include "tst_studyproject.moc"
