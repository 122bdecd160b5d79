#pragma once

#include "tests/support/sql.h"

#include <QHash>
#include <QString>

#include <memory>

class GridTwin;
class MessageLog;
class SurveyStage;

// What has to hold at all times, whatever has happened to the window.

/// How far down the chain of refreshes a step has gone; each includes those before it, but for a pack, which fills the
/// persona list alone.
enum class Refreshed { Nothing, Pack, QuestionList, Grid, Questions, Project };

/// What a step has done, besides the answers that came meanwhile.
struct Effect
{
    /// The tables that it may have changed.
    QStringList tables = {};
    Refreshed refreshed = Refreshed::Nothing;
    /// The start of each warning of the program.
    QStringList warnings = {};
};

/// What can't be read from the window but is known of it.
struct Expected
{
    bool dirty = false;
    bool running = false;
    bool dense = true;        ///< the questions are numbered 1, 2, 3 ...
    bool sorted = true;       ///< the question list was sorted after the last edit of a number
    bool hasQuestions = true; ///< the question list has a model
    QString projectPath = {};
    QString packPath = {};
    int surveyErrors = 0; ///< that were not logged yet when last looked at
};

class EventChecks
{
public:
    EventChecks(SurveyStage &surveyStage, MessageLog &messageLog);
    ~EventChecks();
    Q_DISABLE_COPY_MOVE(EventChecks)

    /// The row of a project that has no other, in the form of literals().
    static constexpr auto defaultBoilerplate = QLatin1StringView("QString Act as the following persona.|QString ");

    Expected expected;

    /// A new window stands there, with a new project.
    void windowMade();
    /// Looks at everything after a step, or in the middle of it.
    void after(const Effect &effect);
    /// The run has stored an answer of these values, and nothing has happened since.
    void answerStored(const QVariantList &values);
    /// The grid has just been refreshed.
    void gridRefreshed();
    /// Somebody has edited cells of a table, which stays so until its next refresh.
    void gridTouched() { gridAsBuilt = false; }
    void personasTouched() { personasAsBuilt = false; }

    /// A tag was chosen, with the refresh yet to be told of.
    void chooseFilter(const QString &tag) { filter = tag; }

    void complain(const QString &what);
    /// The first complaint.
    const QString &complaint() const { return firstComplaint; }

private:
    void checkTables(const Effect &effect);
    void checkDatabase();
    void checkWarnings(const QStringList &wanted);
    void readViews(Refreshed refreshed);
    void readPersonas(Sql &source);
    void readPack();
    void checkPersonas();
    void checkQuestions();
    void checkConversation();
    void checkGrid();
    void checkControls();
    void compare(const QString &what, const QStringList &found, const QStringList &wanted);

    SurveyStage &stage;
    MessageLog &messages;
    qsizetype warningsSeen = 0;
    QString firstComplaint;
    QHash<QString, QStringList> known; ///< the rows of each table
    bool cellEditorOpen = false;
    // What the views have shown since their last refresh.
    std::unique_ptr<GridTwin> twin;
    bool gridAsBuilt = true;
    bool personasAsBuilt = true;
    QStringList personas;
    QStringList tags;
    QString filter;
    QStringList personaChooser;
    QStringList questionChooser;
    bool conversationShown = false;
};
