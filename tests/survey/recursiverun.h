#pragma once

#include "tests/support/sql.h"

/// A run as the plain recursion that it stands for, with one COUNT(*) for each pair. It works on a database of its own,
/// to be compared with what the program does on the same project.
class RecursiveRun
{
public:
    enum class Respondent { TestMode, NoKey };

    RecursiveRun(Sql &copy, Respondent answeredBy);
    void start();

    /// As a RunTrace has them.
    QStringList events;
    QList<std::pair<QString, int>> asked;

private:
    struct Persona
    {
        QString uuid;
        QString text;
    };
    struct Question
    {
        int id;
        QString prompt;
        QString type;
    };

    void takeSnapshot();
    void askNext();
    bool isOpen(const Persona &persona, const Question &question) const;
    QString messages(const Persona &persona, const Question &question) const;
    void handleAnswer(const Persona &persona, const Question &question);
    void handleError();
    void finish();

    Sql &project;
    Respondent respondent;
    QString preamble;
    QString postamble;
    QList<Persona> personas;
    QList<Question> questions;
    int personaIndex = 0;
    int questionIndex = 0;
};
