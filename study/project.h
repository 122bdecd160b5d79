#pragma once

#include "project/boilerplate.h"
#include "survey/answers.h"
#include "survey/surveyentries.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QStringList>

#include <variant>

// A project file as typed rows, read once and in one moment.

namespace study {

enum class Kind { SingleChoice, MultiChoice, Text, Numeric, Likert, Ranking };

struct Persona
{
    /// What the program makes a request of: uuid, name and texts.
    PersonaEntry entry;
    QString notes;
    QString createdAt;
    QString modifiedAt;
    QStringList tags; ///< by name
};

struct Question
{
    /// What the program makes a request of: id, prompt, type and labels as stored.
    QuestionEntry entry;
    int number = 0; ///< its place in the questionnaire, from 1
    /// By the stored type; a word that is no type is asked like a text, and counts as one.
    Kind kind = Kind::Text;
    /// Decoded; empty where there are none, or where what is stored is no JSON array.
    QStringList labels;
    bool labelsParse = true; ///< false where something is stored that is no JSON array of texts
    QString description;
    /// Its answers go into what a persona is sent later on. False for an adjudicated question, and for one whose mark
    /// is no number.
    bool isReplayed = true;
    QString askWhen;              ///< "always" where there is no condition
    qint64 dependsOnQuestion = 0; ///< an id, 0 for none
    QString dependsOnAnswer;
    bool searchEnabled = false;
    QStringList attachments;
    QString createdAt;
    QString modifiedAt;

    bool hasList() const { return kind != Kind::Text && kind != Kind::Numeric && !labels.isEmpty(); }
};

/// A row of responses.
struct Answer
{
    qint64 id = 0;
    QString personaUuid;
    qint64 questionId = 0;
    ParsedAnswer parsed;
    QString createdAt; ///< as stored, in UTC where the program wrote it

    /// The one text by which the grid shows it.
    QString shown() const { return displayValue(parsed); }
    QString reasoning() const { return ::reasoning(parsed); }
};

struct Project
{
    QString path;
    QByteArray sha256;         ///< of the file, in hex
    Boilerplate boilerplate;   ///< the program's own where the file has none, as it takes that when it opens one
    QStringList tags;          ///< all names, sorted
    QList<Persona> personas;   ///< in the order of a run
    QList<Question> questions; ///< in the order of the questionnaire
    /// By time, oldest first. Of those of one second the first that was stored comes last: the grid shows that one.
    QList<Answer> answers;

    /// The place among the personas or questions, -1 for one that is not there any more.
    int personaIndex(const QString &uuid) const { return uuid.isNull() ? -1 : personaPlaces.value(uuid, -1); }
    int questionIndex(qint64 id) const { return questionPlaces.value(id, -1); }

    QHash<QString, int> personaPlaces;
    QHash<qint64, int> questionPlaces;
};

/// The project, or one sentence that says why the file can't be read. The file is opened read-only, and what is read
/// is its state at one moment, also while another program writes to it.
std::variant<Project, QString> readProject(const QString &path);

/// The name of a kind as the window shows it.
QString shownName(Kind kind);

} // namespace study
