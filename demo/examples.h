#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class QDir;

struct ExamplePersona
{
    QString name;
    QString narrative;
    QStringList tags;
};

struct ExampleQuestion
{
    QString prompt;
    QString type;
    bool reasoning = false;
    QStringList labels;
};

struct Examples
{
    QList<ExamplePersona> panel;
    QList<ExampleQuestion> questionnaire;
};

/// Reads panel.json and questionnaire.json of a folder. Where one of them is missing or holds anything unfit, nothing,
/// and the failure says which file and what.
std::optional<Examples> readExamples(const QDir &folder, QString &failure);
