// The in-memory database that holds all of a project: made at the first newProject, emptied for each later one.

#include "app/mainwindow.h"
#include "project/boilerplate.h"
#include "project/schemascript.h"

#include <QDebug>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlTableModel>
#include <QTableView>

using namespace Qt::StringLiterals;

void MainWindow::newProject()
{
    dropQuestionModel();
    if (db.isOpen())
        resetProjectTables();
    else if (!openProjectDatabase("failed to create in-memory project", ScriptLogging::On))
        return;

    insertDefaultBoilerplate(db);
    projectPath.clear();
    loadProject();
    // The refresh passes through the text slots, which set the flag.
    dirty = false;
}

bool MainWindow::openProjectDatabase(const char *failure, ScriptLogging logging)
{
    db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"project"_s);
    db.setDatabaseName(u":memory:"_s);
    if (!db.open()) {
        qWarning().noquote() << failure << db.lastError().text();
        return false;
    }
    const QStringList failures = runSchemaScript(db);
    if (logging == ScriptLogging::On) {
        for (const QString &text : failures)
            qWarning().noquote() << text;
    }
    return true;
}

void MainWindow::resetProjectTables()
{
    if (!db.isOpen())
        return;

    // What was parsed for the grid belongs to the project that goes.
    parsedReasonings.clear();
    // Children before parents, and the numbering last, so that it starts afresh.
    static constexpr QLatin1StringView names[] = {
        "responses"_L1, "persona_tags"_L1, "tags"_L1,     "question_attachments"_L1, "questions"_L1,
        "personas"_L1,  "boilerplate"_L1,  "metadata"_L1, "sqlite_sequence"_L1};
    const QStringList present = db.tables(QSql::Tables);
    for (const QLatin1StringView name : names) {
        if (present.contains(name, Qt::CaseSensitive))
            QSqlQuery(db).exec("DELETE FROM "_L1 + name);
    }
}

void MainWindow::dropQuestionModel()
{
    if (questionModel == nullptr)
        return;
    delete questionModel;
    questionModel = nullptr;
    questionView->setModel(nullptr);
}
