// The count of what a run will ask, beside the requests themselves.

#include "study/check/requests.h"
#include "survey/history.h"
#include "survey/requestassembly.h"
#include "tests/support/entries.h"
#include "tests/support/seed.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::AnswerSize;
using study::countRun;
using study::forEachRequest;
using study::PairMap;
using study::Project;
using study::Range;
using study::RunCount;
using study::Volume;

namespace {

/// A request and the places of its pair.
struct Asked
{
    int persona = 0;
    int question = 0;
    Volume volume;

    bool operator==(const Asked &) const = default;
};

using Level = double Range::*;

Range at(Level level, double figure)
{
    Range range;
    range.*level = figure;
    return range;
}

/// Counts what a request holds, from its whole messages.
Volume measured(const QJsonArray &messages, const AnswerFormat &format, Level level)
{
    const auto length = [](const auto &json) {
        return json.isEmpty() ? 0.0
                              : double(QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact)).size());
    };
    Volume volume{.requests = 1,
                  .formatCharacters = length(format.tools) + length(format.toolChoice) + length(format.responseFormat)};
    double history = 0;
    for (qsizetype place = 0; place < messages.size(); ++place) {
        const auto characters = double(messages.at(place)["content"_L1].toString().size());
        if (messages.at(place)["role"_L1] == "system"_L1) {
            ++volume.systemMessages;
            volume.systemCharacters += characters;
        } else if (place + 1 < messages.size()) {
            ++volume.historyMessages;
            history += characters;
        } else {
            volume.questionCharacters = characters;
        }
    }
    volume.historyCharacters = at(level, history);
    return volume;
}

/// The requests of a run whose answers have these lengths, each made as the program makes it. The answers are gone
/// after that.
QList<Asked> literalRun(Sql &file, const QList<AnswerSize> &sizes, Level level)
{
    const QSqlDatabase database = file.database();
    const QList<PersonaEntry> personas = readPersonas(database);
    const QList<QuestionEntry> questions = readQuestions(database);
    const Boilerplate texts = readBoilerplate(database).value_or(Boilerplate());
    QList<Asked> asked;
    file.exec(u"BEGIN"_s);
    for (int persona = 0; persona < personas.size(); ++persona) {
        const PersonaEntry &entry = personas.at(persona);
        for (int question = 0; question < questions.size(); ++question) {
            const QuestionEntry &each = questions.at(question);
            if (file.value(u"SELECT COUNT(*) FROM responses WHERE persona_uuid=? AND question_id=?"_s,
                           {entry.uuid, each.id}) != 0)
                continue;
            const QJsonArray messages = chatMessages(systemText(texts.preamble, entry, texts.postamble),
                                                     readHistory(database, entry.uuid), each.prompt);
            Asked request{
                .persona = persona, .question = question, .volume = measured(messages, answerFormat(each), level)};
            request.volume.replyCharacters = at(level, sizes.at(question).replied.*level);
            asked << request;
            const auto length = qsizetype(sizes.at(question).replayed.*level);
            file.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer, created_at) "
                      "VALUES (?,?,?,CURRENT_TIMESTAMP)"_s,
                      {entry.uuid, each.id, length > 0 ? QVariant(QString(length, u'x')) : QVariant()});
        }
    }
    file.exec(u"ROLLBACK"_s);
    return asked;
}

/// The counted requests at one level.
QList<Asked> countedRun(const Project &project, const QList<AnswerSize> &sizes, Level level)
{
    QList<Asked> asked;
    forEachRequest(project, PairMap(project), sizes, [&](int persona, int question, const Volume &volume) {
        Asked request{.persona = persona, .question = question, .volume = volume};
        request.volume.historyCharacters = at(level, volume.historyCharacters.*level);
        request.volume.replyCharacters = at(level, volume.replyCharacters.*level);
        asked << request;
    });
    return asked;
}

class RandomProject
{
public:
    explicit RandomProject(QRandomGenerator &generator)
        : random(generator)
    {
    }

    bool fill(Sql &file)
    {
        for (const auto *table : {u"personas", u"questions", u"responses", u"boilerplate", u"sqlite_sequence"})
            file.exec("DELETE FROM "_L1 + QString(table));
        bool done = random.bounded(4) == 0 || setBoilerplate(file, text(), text());
        personas = random.bounded(4);
        questions = random.bounded(7);
        for (int persona = 0; persona < personas; ++persona)
            done = done && enter(file, PersonaEntered{.uuid = uuid(persona),
                                                      .name = QString::number(persona),
                                                      .attributes = text(),
                                                      .systemPrompt = text()});
        for (int question = 0; question < questions; ++question)
            done = done && enter(file, QuestionEntered{.order = questions - question,
                                                       .prompt = text(),
                                                       .type = any({u"single_choice"_s, u"multi_choice"_s, u"text"_s,
                                                                    u"numeric"_s, u"essay"_s, QVariant()}),
                                                       .labels = any({uR"(["Tea","Caf\u00e9"])"_s, u"[]"_s, u"no"_s,
                                                                      QVariant(), u"[1,null]"_s}),
                                                       .reasoning = random.bounded(2),
                                                       .judge = any({0, 0, 0, 1, QVariant(), u"no"_s})});
        const int answers = random.bounded(1 + (personas * questions));
        for (int answer = 0; answer < answers; ++answer)
            done = done && enter(file, AnswerEntered{.persona = uuid(random.bounded(personas + 1)),
                                                     .question = 1 + random.bounded(questions + 1),
                                                     .text = text(),
                                                     .number = any({QVariant(), 7}),
                                                     .createdAt = any({QVariant(), u"2001-02-03 04:05:06"_s})});
        return done;
    }

    QList<AnswerSize> sizes()
    {
        const auto range = [this] {
            return Range{double(random.bounded(5)), double(random.bounded(9)), double(random.bounded(30))};
        };
        QList<AnswerSize> sizes;
        for (int question = 0; question < questions; ++question)
            sizes.append({.replayed = range(), .replied = range()});
        return sizes;
    }

private:
    /// The first persona may have none.
    QVariant uuid(int persona)
    {
        return persona == 0 && random.bounded(8) == 0 ? QVariant() : QVariant(u"p%1"_s.arg(persona));
    }
    QVariant text()
    {
        return any({QVariant(), u""_s, u" "_s, u"Tea?"_s, u"  two\nlines "_s, u"caf\u00e9 \U0001F375"_s,
                    QString(random.bounded(50), u'y')});
    }
    QVariant any(const QVariantList &values) { return values.at(random.bounded(values.size())); }

    QRandomGenerator &random;
    int personas = 0;
    int questions = 0;
};

} // namespace

class TestCheckRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_count_is_that_of_the_requests_themselves()
    {
        QRandomGenerator random(testSeed());
        RandomProject filler(random);
        SideDatabase file(writeProject(path()));
        for (int round = 0; round < (qEnvironmentVariableIsSet("ORRINET_LONG") ? 2'000 : 40); ++round) {
            QVERIFY(file.exec(u"BEGIN"_s));
            QVERIFY(filler.fill(file));
            QVERIFY(file.exec(u"COMMIT"_s));
            Project project = read();
            // Without one a run takes the program's own, which nobody has stored here.
            project.boilerplate = readBoilerplate(file.database()).value_or(Boilerplate());
            const QList<AnswerSize> sizes = filler.sizes();
            for (const Level level : {&Range::low, &Range::middle, &Range::high})
                QVERIFY(countedRun(project, sizes, level) == literalRun(file, sizes, level));
        }
    }

    void the_sums_are_those_of_the_requests()
    {
        QRandomGenerator random(testSeed());
        RandomProject filler(random);
        SideDatabase file(writeProject(path()));
        for (int round = 0; round < 10; ++round) {
            QVERIFY(file.exec(u"BEGIN"_s));
            QVERIFY(filler.fill(file));
            QVERIFY(file.exec(u"COMMIT"_s));
            const Project project = read();
            const PairMap pairs(project);
            const QList<AnswerSize> sizes = filler.sizes();
            const RunCount count = countRun(project, pairs, sizes);
            Volume all;
            Volume judged;
            QList<Volume> ofPersona(project.personas.size());
            QList<Volume> ofQuestion(project.questions.size());
            forEachRequest(project, pairs, sizes, [&](int persona, int question, const Volume &volume) {
                all += volume;
                ofPersona[persona] += volume;
                ofQuestion[question] += volume;
                if (project.questions.at(question).entry.judge)
                    judged += volume;
            });
            QVERIFY(count.all.volume == all);
            QVERIFY(count.adjudicated.volume == judged);
            QCOMPARE(count.all.open, all.requests);
            QCOMPARE(count.all.answered + count.all.open, project.personas.size() * project.questions.size());
            for (qsizetype persona = 0; persona < ofPersona.size(); ++persona) {
                QVERIFY(count.byPersona.at(persona).volume == ofPersona.at(persona));
                QCOMPARE(count.byPersona.at(persona).open, ofPersona.at(persona).requests);
                QCOMPARE(pairs.hasOpen(int(persona)), ofPersona.at(persona).requests > 0);
            }
            for (qsizetype question = 0; question < ofQuestion.size(); ++question) {
                QVERIFY(count.byQuestion.at(question).volume == ofQuestion.at(question));
                QCOMPARE(pairs.openOf(int(question)), ofQuestion.at(question).requests);
            }
        }
    }

private:
    QString path() { return folder.filePath(QString::fromLatin1(QTest::currentTestFunction()) + ".ormt"_L1); }

    Project read()
    {
        const auto project = study::readProject(path());
        if (const QString *reason = std::get_if<QString>(&project))
            QTest::qFail(qUtf8Printable(*reason), __FILE__, __LINE__);
        return std::get<Project>(project);
    }

    QTemporaryDir folder;
};

ORRINET_TEST(TestCheckRequests)
#include "tst_checkrequests.moc"
