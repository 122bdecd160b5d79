#pragma once

#include "survey/surveyentries.h"

#include <QObject>
#include <QPointer>
#include <QSqlDatabase>

class ChatLogWindow;
class ChatRequester;
class MainWindow;
struct ParsedAnswer;

/// One run of the survey: puts every question to every persona that has not answered it yet, one request at a time,
/// and stores each answer as it comes. The table responses is the only record of progress, so a later run goes on
/// where this one ended; a pair that failed stays open and is not asked again in the same run.
///
/// Personas, questions and boilerplate are those of the moment of start(); answers are read and written live.
class SurveyRunner : public QObject
{
    Q_OBJECT

public:
    /// @p mainWindow is refreshed after each answer and @p logWindow given each message; both may be null, and the
    /// log may go away at any time.
    SurveyRunner(MainWindow *mainWindow, const QSqlDatabase &database, ChatLogWindow *logWindow, QObject *parent);

    /// Starts the run, once. In test mode and without a key of the API all of it happens before this returns.
    void start();

    /// Splits the text of a reply into the columns of an answer. Never fails: what is no JSON object is kept unchanged.
    /// In survey/answers.cpp, beside the functions that read an answer back.
    static ParsedAnswer interpretAnswer(const QString &text, const QString &answerType);

Q_SIGNALS:
    /// No pair is left; emitted once.
    void finished();

private Q_SLOTS:
    void handleAnswer(const QString &text);
    void handleError(const QString &err);

private:
    void askNext();
    bool findOpenPair();
    void ask();
    void makeRequester();
    void storeAnswer(const QString &personaUuid, int questionId, const ParsedAnswer &answer);
    void appendToLog(QLatin1StringView mark, const QString &text);

    QList<PersonaEntry> personas;
    QList<QuestionEntry> questions;
    int personaIndex = 0;
    int questionIndex = 0;
    MainWindow *window;
    QSqlDatabase db;
    QPointer<ChatRequester> requester;
    QPointer<ChatLogWindow> log;
    QString preamble;
    QString postamble;
    /// askNext is at work further up the stack, and whether it is to take a further step.
    bool walking = false;
    bool stepWanted = false;
};
