// The rows of the table questions and their numbering 1, 2, 3 ... in order_num. Adding and changing a question refresh
// all that depends on the questions; deleting and moving refresh the list alone.

#include "app/mainwindow.h"

#include <QSqlQuery>
#include <QSqlRecord>
#include <QSqlTableModel>
#include <QTableView>

using namespace Qt::StringLiterals;

static int nextOrderNumber(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    if (query.exec(u"SELECT MAX(order_num) FROM questions"_s) && query.next())
        return query.value(0).toInt() + 1;
    return 1;
}

void MainWindow::insertQuestion(const QString &prompt, const QString &type, bool reasoning, const QString &labels)
{
    if (!db.isOpen())
        return;
    const int number = nextOrderNumber(db);
    {
        QSqlQuery query(db);
        query.prepare(u"INSERT INTO questions (order_num, prompt, answer_type, labels, reasoning_required, "
                      "judge_question, ask_when, serial, created_at, modified_at) "
                      "VALUES (?,?,?,?,?,?, 'always', 1, CURRENT_TIMESTAMP, CURRENT_TIMESTAMP)"_s);
        query.addBindValue(number);
        query.addBindValue(prompt);
        query.addBindValue(type);
        query.addBindValue(labels);
        query.addBindValue(reasoning ? 1 : 0);
        query.addBindValue(0);
        query.exec();
    }
    dirty = true;
    loadQuestions();
}

void MainWindow::updateQuestion(int id, const QString &prompt, const QString &type, bool reasoning,
                                const QString &labels)
{
    if (!db.isOpen())
        return;
    {
        QSqlQuery query(db);
        query.prepare(u"UPDATE questions SET prompt=?, answer_type=?, labels=?, reasoning_required=?, "
                      "modified_at=CURRENT_TIMESTAMP WHERE question_id=?"_s);
        query.addBindValue(prompt);
        query.addBindValue(type);
        query.addBindValue(labels);
        query.addBindValue(reasoning ? 1 : 0);
        query.addBindValue(id);
        query.exec();
    }
    dirty = true;
    loadQuestions();
}

void MainWindow::deleteQuestion()
{
    const QModelIndex current = questionView->currentIndex();
    if (!current.isValid())
        return;
    const QSqlRecord question = questionModel->record(current.row());
    {
        QSqlQuery query(db);
        query.prepare(u"DELETE FROM questions WHERE question_id = ?"_s);
        query.addBindValue(question.value(u"question_id"_s));
        query.exec();
        query.prepare(u"UPDATE questions SET order_num = order_num - 1 WHERE order_num > ?"_s);
        query.addBindValue(question.value(u"order_num"_s));
        query.exec();
    }
    selectQuestions();
    dirty = true;
}

void MainWindow::moveQuestionUp()
{
    const int row = questionView->currentIndex().row();
    if (row > 0)
        swapQuestions(row, row - 1);
}

void MainWindow::moveQuestionDown()
{
    const int row = questionView->currentIndex().row();
    if (row >= 0 && row < questionModel->rowCount() - 1)
        swapQuestions(row, row + 1);
}

/// Gives the questions of the two rows each other's number and keeps the first of them selected.
void MainWindow::swapQuestions(int row, int neighbour)
{
    const QSqlRecord selected = questionModel->record(row);
    const QSqlRecord other = questionModel->record(neighbour);
    const auto renumber = [this](const QSqlRecord &question, const QSqlRecord &numbered) {
        QSqlQuery query(db);
        query.prepare(u"UPDATE questions SET order_num = ? WHERE question_id = ?"_s);
        query.addBindValue(numbered.value(u"order_num"_s));
        query.addBindValue(question.value(u"question_id"_s));
        query.exec();
    };
    renumber(selected, other);
    renumber(other, selected);
    selectQuestions();
    questionView->selectRow(neighbour);
    dirty = true;
}
