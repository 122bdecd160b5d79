#include "study/project.h"

#include "project/projectformat.h"
#include "project/temporaryconnection.h"
#include "questions/answertypes.h"
#include "questions/labels.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace study {

namespace {

/// A project need not have what the reader goes without: a statement that fails gives no rows.
QSqlQuery rowsOf(const QSqlDatabase &file, const QString &statement)
{
    QSqlQuery query(file);
    query.setForwardOnly(true);
    query.exec(statement);
    return query;
}

Kind kindOf(const QString &stored)
{
    // The order in which the types are offered.
    static constexpr std::array kinds{Kind::SingleChoice, Kind::MultiChoice, Kind::Text,
                                      Kind::Numeric,      Kind::Likert,      Kind::Ranking};
    const qsizetype index = storedAnswerTypes().indexOf(stored);
    return index < 0 ? Kind::Text : kinds.at(size_t(index));
}

bool parsesAsLabels(const QString &encoded)
{
    if (encoded.isEmpty())
        return true;
    const QJsonDocument document = QJsonDocument::fromJson(encoded.toUtf8());
    const QJsonArray elements = document.array();
    return document.isArray() &&
           std::all_of(elements.begin(), elements.end(), [](const QJsonValue &element) { return element.isString(); });
}

void readPanel(const QSqlDatabase &file, Project &project)
{
    QHash<QString, QStringList> tags;
    QSqlQuery links = rowsOf(file, u"SELECT l.persona_uuid, t.name FROM persona_tags l JOIN tags t ON t.id = l.tag_id "
                                   "ORDER BY t.name"_s);
    while (links.next())
        tags[links.value(0).toString()] << links.value(1).toString();
    QSqlQuery names = rowsOf(file, u"SELECT name FROM tags ORDER BY name"_s);
    while (names.next())
        project.tags << names.value(0).toString();

    QSqlQuery query = rowsOf(file, u"SELECT uuid, name, system_prompt, attributes, notes, created_at, modified_at "
                                   "FROM personas ORDER BY name"_s);
    while (query.next()) {
        const QString uuid = query.value(0).toString();
        if (!uuid.isNull())
            project.personaPlaces.insert(uuid, int(project.personas.size()));
        project.personas.append({.entry = {.uuid = uuid,
                                           .name = query.value(1).toString(),
                                           .systemPrompt = query.value(2).toString(),
                                           .attributes = query.value(3).toString()},
                                 .notes = query.value(4).toString(),
                                 .createdAt = query.value(5).toString(),
                                 .modifiedAt = query.value(6).toString(),
                                 .tags = tags.value(uuid)});
    }
}

Question questionFrom(const QSqlQuery &query, const QHash<qint64, QStringList> &attachments)
{
    Question question;
    question.entry = {.id = query.value(0).toInt(),
                      .prompt = query.value(1).toString(),
                      .judge = query.value(2).toInt() != 0,
                      .answerType = query.value(3).toString(),
                      .labels = query.value(4).toString(),
                      .reasoningRequired = query.value(5).toInt() != 0};
    question.kind = kindOf(question.entry.answerType);
    question.labels = decodeLabels(question.entry.labels);
    question.labelsParse = parsesAsLabels(question.entry.labels);
    question.description = query.value(6).toString();
    question.askWhen = query.value(7).isNull() ? u"always"_s : query.value(7).toString();
    question.dependsOnAnswer = query.value(8).toString();
    question.searchEnabled = query.value(9).toInt() != 0;
    question.createdAt = query.value(10).toString();
    question.modifiedAt = query.value(11).toString();
    question.isReplayed = query.value(12).toInt() != 0;
    question.dependsOnQuestion = query.value(13).toLongLong();
    question.attachments = attachments.value(question.entry.id);
    return question;
}

void readQuestionnaire(const QSqlDatabase &file, Project &project)
{
    QHash<qint64, QStringList> attachments;
    QSqlQuery files = rowsOf(file, u"SELECT question_id, filename FROM question_attachments ORDER BY id"_s);
    while (files.next())
        attachments[files.value(0).toLongLong()] << files.value(1).toString();

    QSqlQuery query = rowsOf(file, u"SELECT question_id, prompt, judge_question, answer_type, labels, "
                                   "reasoning_required, description, ask_when, depends_on_answer, search_enabled, "
                                   "created_at, modified_at, judge_question=0, depends_on_question_id FROM questions "
                                   "ORDER BY order_num"_s);
    while (query.next()) {
        Question question = questionFrom(query, attachments);
        question.number = int(project.questions.size()) + 1;
        project.questionPlaces.insert(question.entry.id, question.number - 1);
        project.questions.append(std::move(question));
    }
}

void readAnswers(const QSqlDatabase &file, Project &project)
{
    QSqlQuery query = rowsOf(file, u"SELECT id, persona_uuid, question_id, text_answer, numeric_answer, json_answer, "
                                   "created_at FROM responses ORDER BY created_at, id DESC"_s);
    while (query.next()) {
        project.answers.append({.id = query.value(0).toLongLong(),
                                .personaUuid = query.value(1).toString(),
                                .questionId = query.value(2).toLongLong(),
                                .parsed = {.textAnswer = query.value(3).toString(),
                                           .numericAnswer = query.value(4),
                                           .jsonAnswer = query.value(5).toString()},
                                .createdAt = query.value(6).toString()});
    }
}

/// What a run finds in a project that has none.
Boilerplate defaultBoilerplate()
{
    const TemporaryConnection memory(u"study-boilerplate"_s, u":memory:"_s);
    QSqlQuery(memory.database()).exec(u"CREATE TABLE boilerplate (preamble TEXT, postamble TEXT)"_s);
    insertDefaultBoilerplate(memory.database());
    return readBoilerplate(memory.database()).value_or(Boilerplate());
}

QByteArray hashOf(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result().toHex() : QByteArray();
}

} // namespace

std::variant<Project, QString> readProject(const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    if (!QFileInfo(absolute).isFile())
        return u"%1 is not there"_s.arg(path);
    const TemporaryConnection file(u"study-%1"_s.arg(absolute), absolute, u"QSQLITE_OPEN_READONLY"_s);
    // One transaction, so that nothing is written between two statements.
    if (QSqlQuery begin(file.database()); !file.isOpen() || !begin.exec(u"BEGIN"_s))
        return u"%1 can't be read: %2"_s.arg(path, file.errorText());
    if (const QString flaw = projectFlaw(file.database()); !flaw.isEmpty())
        return u"%1 is no project: %2"_s.arg(path, flaw);
    Project project;
    project.path = path;
    const auto boilerplate = readBoilerplate(file.database());
    project.boilerplate = boilerplate ? *boilerplate : defaultBoilerplate();
    readPanel(file.database(), project);
    readQuestionnaire(file.database(), project);
    readAnswers(file.database(), project);
    project.sha256 = hashOf(absolute);
    return project;
}

QString shownName(Kind kind)
{
    static constexpr std::array kinds{Kind::SingleChoice, Kind::MultiChoice, Kind::Text,
                                      Kind::Numeric,      Kind::Likert,      Kind::Ranking};
    const auto *place = std::find(kinds.begin(), kinds.end(), kind);
    return shownAnswerTypes().at(place - kinds.begin());
}

} // namespace study
