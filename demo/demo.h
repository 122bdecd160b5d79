#pragma once

#include "demo/examples.h"

#include <QObject>
#include <QSqlDatabase>
#include <QTextStream>

class MainWindow;
class QDir;

/// Takes a main window through a survey as a user would, and prints what comes of it. The window is reached through
/// its public slots, its widgets and the connection "project" alone.
class Demo : public QObject
{
    Q_OBJECT

public:
    Demo(MainWindow *mainWindow, Examples shown);

    /// Enters the examples and presses the button; the run goes on in the event loop.
    void start();
    /// Prints a table of the answers' columns. Returns what is missing or out of place, an item for each flaw.
    QStringList checkAnswers();
    /// Writes pictures of the grid and of the log, and the log's text. Returns what cannot be written.
    QStringList writeFiles(const QDir &folder);

Q_SIGNALS:
    void surveyEnded();

private:
    qsizetype wantedAnswers() const;
    void enterExamples();
    void showResults();
    void watchRun();
    void printNewAnswers();

    MainWindow *window;
    Examples examples;
    QSqlDatabase project;
    QTextStream out;
    qsizetype nameWidth = 0;
    qint64 lastAnswer = 0;
    int answerCount = 0;
    bool printing = false; ///< new answers are about to be printed
};
