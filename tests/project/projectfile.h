#pragma once

// Projects and their files: what to fill them with, what to do to them, and how they are told apart.

#include "tests/support/messagelog.h"
#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QComboBox>
#include <QPlainTextEdit>
#include <QSqlTableModel>
#include <QTableView>
#include <QTableWidget>

#include <functional>

/// What a row of data does to the window.
using Act = std::function<void(Stage &)>;
/// What it does to a window that waits for an answer.
using Answer = std::function<void(QWidget *)>;

/// Calls a slot, with a path in the private folder where a name is given.
Act calling(const char *slot);
Act calling(const char *slot, const QString &name);
/// Presses a button of a page.
Act pressing(const QString &button, const QString &tab);
/// Selects a question and presses a button of its page.
Act pressingFor(int question, const QString &button);
/// The act, which has to write one warning.
Act warningOnce(const Act &act);

/// Triggers a menu entry and answers the windows that come, each by the answer that is its turn. Gives the number of
/// windows; those that come behind the answers are given up.
int answerInTurn(Stage &stage, const QString &entry, const QList<Answer> &answers);

/// The tables of the schema.
QStringList projectTables();
/// Statements that put one row into each of them.
QStringList oneOfEach();
/// The tables of the schema, each named once for every row that it has.
QStringList tableOfEachRow(Sql &database);

/// Makes a project file "other.ormt" of one row in each table, and gives its path.
QString writeOther(Stage &stage);
/// The same as "mine.ormt", which is opened, and the project then marked as changed. Test mode is on.
void openMine(Stage &stage);
/// Makes a file "text.ormt" that can be opened but not read, and gives its path.
QString writeText(Stage &stage);

/// Enters questions and refreshes their list.
void showQuestions(Stage &stage, int number);
/// True when the question list shows all questions of the project, in their order.
bool questionListIsWhole(Stage &stage);

/// What the program says of a path that it can't save to.
QString savingError(Stage &stage, const QString &path);
/// What it says of a file that it can't read.
QString readingError(Stage &stage, const QString &path);

/// True when "Save" writes to this path. The file is taken away first, since none is ever written over.
bool savesTo(Stage &stage, const QString &path);
/// True when the project has no file: "Save" would ask for one, and so does nothing in test mode.
bool belongsToNoFile(Stage &stage);
/// True when no connection but that of the project is left over.
bool onlyProjectIsConnected();
/// The files of the private folder, or of one in it.
QStringList filesIn(Stage &stage, const QString &folder = {});

/// Has the project note what is inserted into its tables and deleted from them: "insert tags", "delete tags" ...
void keepJournal(Stage &stage);
QStringList journal(Stage &stage);
