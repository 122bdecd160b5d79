// The grid of the Results tab: a row for each persona, and for each question its answer and the reasoning. A refresh
// leaves what a rebuilding would; where only answers are new, as in a run, they are entered into the grid that is
// there.

#include "app/mainwindow.h"
#include "inspect/gridpatch.h"
#include "inspect/newestanswers.h"
#include "inspect/resultstable.h"

#include <QHeaderView>
#include <QScopeGuard>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

static bool readResultPersonas(const QSqlDatabase &database, QList<ResultPersona> &personas)
{
    QSqlQuery query(database);
    if (!query.exec(u"SELECT uuid,name FROM personas ORDER BY name"_s))
        return false;
    while (query.next())
        personas.append({.uuid = query.value(0).toString(), .name = query.value(1).toString()});
    return true;
}

static bool readResultQuestions(const QSqlDatabase &database, QList<ResultQuestion> &questions)
{
    QSqlQuery query(database);
    if (!query.exec(u"SELECT question_id,prompt,reasoning_required FROM questions ORDER BY order_num"_s))
        return false;
    while (query.next())
        questions.append({.id = query.value(0).toInt(), .prompt = query.value(1).toString()});
    return true;
}

static void fillResultRow(QTableWidget *table, int row, const QString &name, const QList<ResultQuestion> &questions,
                          const NewestAnswers::ByQuestion &answers)
{
    table->setVerticalHeaderItem(row, new QTableWidgetItem(name));
    int column = 0;
    table->setItem(row, column++, new QTableWidgetItem(name));
    for (const ResultQuestion &question : questions) {
        const auto shown = answers.constFind(question.id);
        const bool answered = shown != answers.cend();
        table->setItem(row, column++, new QTableWidgetItem(answered ? shown->answer : QString()));
        table->setItem(row, column++, new QTableWidgetItem(answered ? shown->reasoning : QString()));
    }
}

void MainWindow::loadResults()
{
    if (!db.isOpen() || resultsTable == nullptr)
        return;

    GridPatch &patch = resultsTable->patch();
    if (patch.apply(db, parsedReasonings))
        return;
    const GridPatch::Rebuilding rebuilding(patch);

    // A header that sizes itself would measure every column again at each step of the rebuilding: it does so once,
    // when all is in place.
    QHeaderView *header = resultsTable->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    const auto measureColumns = qScopeGuard([header] { header->setSectionResizeMode(QHeaderView::ResizeToContents); });

    resultsTable->clear();
    resultsTable->setRowCount(0);
    resultsTable->setColumnCount(0);

    QList<ResultPersona> personas;
    QList<ResultQuestion> questions;
    if (!readResultPersonas(db, personas) || !readResultQuestions(db, questions))
        return;

    resultsTable->setRowCount(static_cast<int>(personas.size()));
    resultsTable->setColumnCount(static_cast<int>((2 * questions.size()) + 1));
    QStringList titles{u"Persona"_s};
    for (const ResultQuestion &question : std::as_const(questions))
        titles << question.prompt << tr("Reasoning for %1").arg(question.prompt);
    resultsTable->setHorizontalHeaderLabels(titles);

    QBitArray answered(personas.size() * questions.size());
    {
        NewestAnswers answers(db, parsedReasonings);
        for (int row = 0; row < personas.size(); ++row) {
            const auto own = answers.of(personas.at(row).uuid);
            fillResultRow(resultsTable, row, personas.at(row).name, questions, own);
            for (int question = 0; question < questions.size(); ++question)
                answered.setBit((row * questions.size()) + question, own.contains(questions.at(question).id));
        }
    }
    patch.remember(db, personas, questions, answered);
}
