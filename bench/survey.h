#pragma once

#include "app/mainwindow.h"

#include <QSqlDatabase>

#include <memory>

class QAction;
class QTableWidget;

/// The real main window with a panel and a questionnaire of a given size, entered by SQL.
class Survey
{
public:
    /// The tab in front: the grid's, the persona list's, or the Marketplace, which has nothing to lay out.
    enum class Tab { Results, Personas, Empty };

    /// @p answers of the pairs are answered, persona by persona.
    Survey(int personaCount, int questionCount, int answers, Tab tab, int narrative = 200);
    ~Survey();
    Q_DISABLE_COPY_MOVE(Survey)

    bool call(const char *slot);
    /// Calls a slot of the window that takes a path.
    void call(const char *slot, const QString &path);
    void refresh() { call("loadResults"); }
    template<typename Widget>
    Widget *find(const QString &name)
    {
        return window->findChild<Widget *>(name);
    }
    QTableWidget *table();
    /// The menu entry "Run", which is disabled while a run goes on.
    QAction *runEntry();
    QSqlDatabase database() const;

    /// Answers the pairs from one number to before another, persona by persona.
    void addAnswers(int from, int to);
    /// From here on each refresh builds the grid anew.
    void keepGridRebuilt();
    /// Gives the first pair a text that no cell had before, as one more answer of a run does.
    void changeOneAnswer();

    /// The reply object for a pair: 5 to 80 characters of answer and about 100 of reasoning, always the same.
    static QString replyObject(int pair);

private:
    void addPersonas(int narrative);
    void addQuestions();

    int personas;
    int questions;
    int changes = 0;
    std::unique_ptr<MainWindow> window;
};

/// Handles events until none is left: the layout that was put off, and painting.
void settle();
