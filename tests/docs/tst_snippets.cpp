// The programs that docs/formats.md gives to its readers: what they make of a project is what is exported of it.

#include "questions/answertypes.h"
#include "study/report/csv.h"
#include "tests/docs/page.h"
#include "tests/support/entries.h"
#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

/// A row of CSV by the names of its columns.
using Row = QHash<QString, QString>;

/// The same, but for the last digits of a number.
bool isSame(const QString &found, const QString &wanted)
{
    bool areNumbers[2] = {false, false};
    const double one = found.toDouble(&areNumbers[0]);
    const double other = wanted.toDouble(&areNumbers[1]);
    if (!areNumbers[0] || !areNumbers[1])
        return found == wanted;
    return one == other || std::abs(one - other) < 1e-12 * std::abs(other);
}

QString textOf(const QJsonValue &value)
{
    return value.isDouble() ? QString::number(value.toDouble(), 'g', 17) : value.toString();
}

/// The answer as the grid shows it, but for the rounding of a number.
QString answerIn(const QJsonObject &exported)
{
    const bool isNumber = exported["text_answer"_L1].isNull() && !exported["numeric_answer"_L1].isNull();
    return textOf(exported[isNumber ? "numeric_answer"_L1 : "shown"_L1]);
}

QString shownType(const QString &stored)
{
    const qsizetype place = storedAnswerTypes().indexOf(stored);
    return place < 0 ? u"Text"_s : shownAnswerTypes().at(place);
}

/// Nothing where all is the same, else what is not.
QString difference(const QString &where, const QString &found, const QString &wanted)
{
    return isSame(found, wanted) ? QString() : u"%1: \"%2\" is not \"%3\""_s.arg(where, found, wanted);
}

} // namespace

class TestSnippets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void the_tidy_table_is_what_is_exported_data() { snippets(); }
    void the_tidy_table_is_what_is_exported()
    {
        QFETCH(const QString, tool);
        QFETCH(const QString, content);
        const QString project = madeProject(content);
        const QList<Row> found = made(tool, u"tidy"_s, project);
        QHash<QString, QJsonObject> wanted;
        for (const QJsonObject &answer : answersIn(exported(project)))
            wanted.insert(answer["uuid"_L1].toString() + u' ' + textOf(answer["question_id"_L1]), answer);
        QCOMPARE(found.size(), wanted.size());
        for (const Row &row : found) {
            const QString pair = row[u"uuid"_s] + u' ' + row[u"question_id"_s];
            QVERIFY2(wanted.contains(pair), qPrintable(pair));
            const QJsonObject same = wanted.take(pair);
            for (const QString &name : {u"name"_s, u"tags"_s, u"question"_s, u"prompt"_s, u"reasoning"_s, u"time"_s})
                QCOMPARE(difference(name, row[name], textOf(same[name])), QString());
            QCOMPARE(difference(u"answer"_s, row[u"answer"_s], answerIn(same)), QString());
            QCOMPARE(difference(u"number"_s, row[u"number"_s], textOf(same["numeric_answer"_L1])), QString());
            QCOMPARE(shownType(row[u"type"_s]), same["type"_L1].toString());
        }
    }

    void the_wide_table_is_what_is_exported_data() { snippets(); }
    void the_wide_table_is_what_is_exported()
    {
        QFETCH(const QString, tool);
        QFETCH(const QString, content);
        const QString project = madeProject(content);
        const QJsonDocument document = exported(project);
        QHash<QString, Row> wanted;
        for (const QJsonValue persona : document["wide"_L1].toArray())
            wanted.insert(persona["uuid"_L1].toString(), {{u"name"_s, persona["name"_L1].toString()}});
        for (const QJsonObject &answer : answersIn(document)) {
            Row &row = wanted[answer["uuid"_L1].toString()];
            const QString column = u'q' + textOf(answer["question"_L1]);
            row.insert(column, answerIn(answer));
            row.insert(column + u'r', answer["reasoning"_L1].toString());
        }
        for (const Row &row : made(tool, u"wide"_s, project)) {
            QVERIFY2(wanted.contains(row[u"uuid"_s]), qPrintable(row[u"uuid"_s]));
            const Row known = wanted.take(row[u"uuid"_s]);
            for (auto cell = row.begin(); cell != row.end(); ++cell) {
                if (cell.key() != "uuid"_L1)
                    QCOMPARE(difference(cell.key(), cell.value(), known[cell.key()]), QString());
            }
            for (auto cell = known.begin(); cell != known.end(); ++cell)
                QVERIFY2(row.contains(cell.key()), qPrintable(cell.key()));
        }
        QCOMPARE(wanted.size(), 0);
    }

    void a_project_is_left_alone_data() { snippets(); }
    void a_project_is_left_alone()
    {
        QFETCH(const QString, tool);
        QFETCH(const QString, content);
        const QString project = madeProject(content);
        const QByteArray before = readBytes(project);
        const QStringList files = QDir(folder->path()).entryList(QDir::Files | QDir::Hidden);
        made(tool, u"tidy"_s, project);
        made(tool, u"wide"_s, project);
        QCOMPARE(readBytes(project), before);
        QCOMPARE(QDir(folder->path()).entryList(QDir::Files | QDir::Hidden), files);
    }

private:
    /// Each tool, on three projects of this test's own and on the example in which everything is wrong.
    static void snippets()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QString>("content");
        for (const QString &tool : {u"sqlite3"_s, u"python3"_s}) {
            for (const QString &content : {u"nothing"_s, u"no questions"_s, u"all sorts"_s, u"the example"_s})
                QTest::addRow("%s, %s", qPrintable(tool), qPrintable(content)) << tool << content;
        }
    }

    /// A project of this content, under a name that some would take apart.
    QString madeProject(const QString &content) const
    {
        const QString path = folder->filePath(u"it's #1, 100%25 & all?.ormt"_s);
        if (content == "the example"_L1)
            return writeBytes(path, readBytes(QStringLiteral(ORRINET_SOURCE_FOLDER) + "/examples/flawed.ormt"_L1));
        SideDatabase file(writeProject(path));
        if (content == "no questions"_L1)
            enter(file, PersonaEntered{.uuid = u"a"_s, .name = u"Ann"_s});
        if (content == "all sorts"_L1 && !fill(file))
            QTest::qFail("the project can't be made", __FILE__, __LINE__);
        return path;
    }

    static bool fill(Sql &file)
    {
        const QString later = u"2001-02-03 04:05:07"_s;
        return enter(file, PersonaEntered{.uuid = u"z"_s, .name = u"Same, name"_s, .tags = {u"b; c"_s, u"a"_s}},
                     PersonaEntered{.uuid = u"a"_s, .name = u"Same, name"_s},
                     PersonaEntered{.uuid = u"q"_s, .name = u"Says \"nothing\""_s}, PersonaEntered{.uuid = u"n"_s}) &&
               // Neither number nor order is the place in the questionnaire.
               enter(file, QuestionEntered{.id = 7, .order = 5, .prompt = u"Last?"_s},
                     QuestionEntered{.id = 9, .order = 2, .prompt = u"How\nmany?"_s, .type = u"numeric"_s},
                     QuestionEntered{.id = 8, .order = 2, .type = u"no such type"_s},
                     QuestionEntered{.id = 4, .order = 3, .prompt = u"Which?"_s, .type = u"single_choice"_s}) &&
               enter(file, AnswerEntered{.persona = u"z"_s, .question = 7, .text = u"old"_s},
                     AnswerEntered{.persona = u"z"_s, .question = 7, .text = u"newest"_s, .createdAt = later},
                     AnswerEntered{.persona = u"z"_s, .question = 7, .text = u"too late"_s, .createdAt = later},
                     AnswerEntered{.persona = u"z"_s, .question = 7, .text = u"no time"_s, .createdAt = {}},
                     AnswerEntered{.persona = u"z"_s, .question = 9, .number = 1234567.5, .json = u"{\"answer\":1}"_s},
                     AnswerEntered{.persona = u"z"_s, .question = 8, .text = u""_s},
                     AnswerEntered{.persona = u"z"_s, .question = 4, .text = u""_s, .json = u"[\"reasoning\"]"_s}) &&
               enter(file, AnswerEntered{.persona = u"a"_s, .question = 7, .text = u"0"_s, .number = 2},
                     AnswerEntered{.persona = u"a"_s, .question = 9, .number = 0},
                     AnswerEntered{.persona = u"a"_s, .question = 4, .json = uR"({"answer":["x"],"reasoning":"r"})"_s},
                     AnswerEntered{.persona = u"q"_s, .question = 4, .json = u"no JSON, \"but\"\nwords"_s},
                     AnswerEntered{.persona = u"n"_s, .question = 4, .text = u"t"_s, .json = uR"({"reasoning":5})"_s},
                     AnswerEntered{.persona = u"n"_s, .question = 9, .json = uR"("reasoning")"_s}) &&
               // What deletion leaves.
               enter(file, AnswerEntered{.persona = u"gone"_s, .question = 7, .text = u"x"_s},
                     AnswerEntered{.persona = u"z"_s, .question = 99, .text = u"x"_s},
                     AnswerEntered{.question = 7, .text = u"x"_s}, LinkEntered{.persona = u"gone"_s, .tag = 1},
                     LinkEntered{.persona = u"z"_s, .tag = 99});
    }

    /// The table that a snippet of the page makes of a project.
    QList<Row> made(const QString &tool, const QString &table, const QString &project) const
    {
        const QString file = table + (tool == "sqlite3"_L1 ? ".sql"_L1 : ".py"_L1);
        const QTemporaryDir elsewhere;
        const QString script = writeBytes(elsewhere.filePath(file), Page(u"formats.md"_s).block(file).toUtf8());
        QProcess process;
        process.setWorkingDirectory(elsewhere.path());
        if (tool == "sqlite3"_L1) {
            process.setStandardInputFile(script);
            process.start(tool, {u"-batch"_s, u"-readonly"_s, project});
        } else {
            process.start(tool, {u"-B"_s, script, project});
        }
        process.waitForFinished(-1);
        const QByteArray errors = process.readAllStandardError() + process.errorString().toUtf8();
        if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
            QTest::qFail(errors.constData(), __FILE__, __LINE__);
        const QList<QStringList> lines = study::readCsv(QString::fromUtf8(process.readAllStandardOutput()));
        QList<Row> rows;
        for (const QStringList &line : lines.mid(1)) {
            Row &row = rows.emplaceBack();
            for (qsizetype column = 0; column < line.size(); ++column)
                row.insert(lines.at(0).value(column), line.at(column));
        }
        return rows;
    }

    QJsonDocument exported(const QString &project) const
    {
        const QString path = folder->filePath(u"export.json"_s);
        const ProgramRun run(QStringLiteral(ORRINET_STUDY),
                             {u"export"_s, project, u"--to"_s, u"json"_s, u"--out"_s, path});
        if (run.status != 0)
            QTest::qFail(qUtf8Printable(run.errors.join(u'\n')), __FILE__, __LINE__);
        return QJsonDocument::fromJson(readBytes(path));
    }

    /// The rows of the long table that are the newest answer to a pair.
    static QList<QJsonObject> answersIn(const QJsonDocument &document)
    {
        QList<QJsonObject> answers;
        for (const QJsonValue row : document["long"_L1].toArray()) {
            if (!QStringList{u"open"_s, u"answered twice"_s, u"orphan"_s}.contains(row["status"_L1].toString()))
                answers << row.toObject();
        }
        return answers;
    }

    std::unique_ptr<QTemporaryDir> folder;
};

ORRINET_TEST(TestSnippets)
#include "tst_snippets.moc"
