#pragma once

#include "tests/support/sql.h"

// Rows entered by SQL into a project or, as far as it has the table, a pack. No view knows of them before a refresh.
// What is left out of an entry has the value that stands here.

struct PersonaEntered
{
    QVariant uuid = {};
    QVariant name = {};
    QVariant attributes = {};
    QVariant systemPrompt = {};
    QVariant notes = {};
    QStringList tags = {};
    QVariant createdAt = QStringLiteral("2001-02-03T04:05:06.789");
    QVariant modifiedAt = QStringLiteral("2001-02-03 04:05:06");
};

struct QuestionEntered
{
    QVariant id = {};    ///< the next one
    QVariant order = {}; ///< the last one plus 1
    QVariant prompt = {};
    QVariant type = QStringLiteral("text");
    QVariant labels = {};
    QVariant reasoning = 0;
    QVariant judge = 0;
};

struct AnswerEntered
{
    QVariant persona = {}; ///< the uuid
    QVariant question = {};
    QVariant text = {};
    QVariant number = {};
    QVariant json = {};
    QVariant createdAt = QStringLiteral("2001-02-03 04:05:06");
};

/// A tag with an id of its own.
struct TagEntered
{
    QVariant id = {};
    QVariant name = {};
};

/// A tag on a persona, by id; neither need be there.
struct LinkEntered
{
    QVariant persona = {};
    QVariant tag = {};
};

/// Each is false, and the test has failed, where the row can't be entered.
bool enter(Sql &database, const PersonaEntered &persona);
bool enter(Sql &database, const QuestionEntered &question);
bool enter(Sql &database, const AnswerEntered &answer);
bool enter(Sql &database, const TagEntered &tag);
bool enter(Sql &database, const LinkEntered &link);

template<typename First, typename... Others>
    requires(sizeof...(Others) > 0)
bool enter(Sql &database, const First &first, const Others &...others)
{
    return enter(database, first) && (enter(database, others) && ...);
}

/// Puts a tag on a persona by its name, which is entered where it is new.
bool enterTag(Sql &database, const QString &uuid, const QString &tag);

/// Enters this many questions, with the prompts "Question 1", "Question 2" ...
bool enterQuestions(Sql &database, int number);

/// Replaces the boilerplate.
bool setBoilerplate(Sql &database, const QVariant &preamble, const QVariant &postamble);

/// A persona with something in every column, and an answer "honey" of it to question 1.
bool enterBeekeeper(Sql &database, const QString &uuid, const QString &name, const QStringList &tags = {});

/// The uuid of the persona that was entered last.
QString newestUuid(Sql &database);
/// The names of a persona's tags in the order in which they were linked.
QStringList tagsOf(Sql &database, const QString &uuid);
/// The names of all tags in the order of their ids.
QStringList knownTags(Sql &database);
