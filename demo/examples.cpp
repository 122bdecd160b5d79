#include "demo/examples.h"

#include "questions/answertypes.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

using namespace Qt::StringLiterals;

/// The objects of a file that holds an array of them, an empty one on a failure.
static QJsonArray readEntries(const QString &path, QString &failure)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        failure = path % u": "_s % file.errorString();
        return {};
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        failure = u"%1: %2 (at byte %3)"_s.arg(path, error.errorString()).arg(error.offset);
    else if (document.array().isEmpty())
        failure = path % u": a list of entries is expected, and at least one"_s;
    return document.array();
}

static QStringList texts(const QJsonValue &value)
{
    QStringList all;
    const QJsonArray list = value.toArray();
    for (const auto &text : list)
        all << text.toString();
    return all;
}

static ExamplePersona readPersona(const QJsonValue &entry, QString &failure)
{
    const ExamplePersona persona{
        .name = entry["name"_L1].toString(),
        .narrative = entry["narrative"_L1].toString(),
        .tags = texts(entry["tags"_L1]),
    };
    if (persona.name.isEmpty())
        failure = u"\"name\" is missing"_s;
    else if (persona.narrative.isEmpty())
        failure = u"\"narrative\" is missing"_s;
    return persona;
}

static ExampleQuestion readQuestion(const QJsonValue &entry, QString &failure)
{
    const ExampleQuestion question{
        .prompt = entry["prompt"_L1].toString(),
        .type = entry["type"_L1].toString(),
        .reasoning = entry["reasoning"_L1].toBool(),
        .labels = texts(entry["labels"_L1]),
    };
    const bool isOpen = question.type == AnswerType::text || question.type == AnswerType::numeric;
    if (question.prompt.isEmpty())
        failure = u"\"prompt\" is missing"_s;
    else if (!storedAnswerTypes().contains(question.type))
        failure = u"\"type\" is \"%1\" and not one of %2"_s.arg(question.type, storedAnswerTypes().join(", "_L1));
    else if (!isOpen && question.labels.size() < 2)
        failure = u"\"labels\" holds no two choices"_s;
    return question;
}

template<typename Entry>
static QList<Entry> readAll(const QString &path, Entry (*read)(const QJsonValue &, QString &), QString &failure)
{
    QList<Entry> all;
    const QJsonArray entries = readEntries(path, failure);
    for (const auto &entry : entries) {
        all << read(entry, failure);
        if (!failure.isEmpty()) {
            failure = path % u": entry "_s % QString::number(all.size()) % u": "_s % failure;
            break;
        }
    }
    return all;
}

std::optional<Examples> readExamples(const QDir &folder, QString &failure)
{
    failure.clear();
    Examples examples;
    examples.panel = readAll(folder.filePath(u"panel.json"_s), &readPersona, failure);
    if (failure.isEmpty())
        examples.questionnaire = readAll(folder.filePath(u"questionnaire.json"_s), &readQuestion, failure);
    if (!failure.isEmpty())
        return std::nullopt;
    return examples;
}
