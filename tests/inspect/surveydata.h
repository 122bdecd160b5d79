#pragma once

#include "tests/support/stage.h"

/// Enters a persona straight into the table, which refreshes no view.
inline bool addPersona(Stage &stage, const QString &uuid, const QString &name)
{
    return stage.exec(QStringLiteral("INSERT INTO personas (uuid,name,attributes) VALUES (?,?,?)"),
                      {uuid, name, QStringLiteral("Speaks as %1.").arg(name)});
}

/// Enters a question straight into the table, which refreshes no view.
inline bool addQuestion(Stage &stage, int id, const QString &prompt, int order)
{
    return stage.exec(QStringLiteral("INSERT INTO questions (question_id,prompt,order_num,answer_type,judge_question) "
                                     "VALUES (?,?,?,'text',0)"),
                      {id, prompt, order});
}

/// Enters the answer columns text, number and JSON of a pair straight into the table, which refreshes no view.
inline bool addAnswer(Stage &stage, const QString &uuid, int question, const QVariantList &columns,
                      const QString &time = QStringLiteral("2026-01-01 00:00:00"))
{
    return stage.exec(QStringLiteral("INSERT INTO responses "
                                     "(persona_uuid,question_id,text_answer,numeric_answer,json_answer,created_at) "
                                     "VALUES (?,?,?,?,?,?)"),
                      QVariantList{uuid, question} + columns + QVariantList{time});
}

inline QTableWidget *resultsTable(Stage &stage)
{
    return stage.find<QTableWidget>(QStringLiteral("resultsTable"));
}

/// Refreshes the grid and gives it.
inline QTableWidget *refreshed(Stage &stage)
{
    return stage.call("loadResults") ? resultsTable(stage) : nullptr;
}

/// Personas A and B, questions One and Two, answers to the first question.
inline bool addSurvey(Stage &stage)
{
    bool done = addQuestion(stage, 1, QStringLiteral("One"), 1) && addQuestion(stage, 2, QStringLiteral("Two"), 2);
    for (const auto &uuid : {QStringLiteral("a"), QStringLiteral("b")}) {
        done = done && addPersona(stage, uuid, QStringLiteral("Persona ") + uuid.toUpper()) &&
               addAnswer(stage, uuid, 1, {QString(uuid + u'1'), QVariant(), QStringLiteral("{\"reasoning\":\"why\"}")});
    }
    return done;
}

inline QList<QStringList> surveyCells()
{
    return {{QStringLiteral("Persona A"), QStringLiteral("a1"), QStringLiteral("why"), QString(), QString()},
            {QStringLiteral("Persona B"), QStringLiteral("b1"), QStringLiteral("why"), QString(), QString()}};
}

inline QStringList titles(const QTableWidget *table, Qt::Orientation orientation = Qt::Horizontal)
{
    const QAbstractItemModel *model = table->model();
    const int count = orientation == Qt::Horizontal ? model->columnCount() : model->rowCount();
    QStringList all;
    for (int section = 0; section < count; ++section)
        all.append(model->headerData(section, orientation).toString());
    return all;
}

inline QStringList surveyTitles()
{
    return {QStringLiteral("Persona"), QStringLiteral("One"), QStringLiteral("Reasoning for One"),
            QStringLiteral("Two"), QStringLiteral("Reasoning for Two")};
}
