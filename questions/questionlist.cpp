// The list of the Questions tab: a plain table model, edited in place and written through to the table cell by cell.

#include "app/mainwindow.h"

#include <QComboBox>
#include <QGroupBox>
#include <QSqlQuery>
#include <QSqlTableModel>
#include <QTableView>

using namespace Qt::StringLiterals;

void MainWindow::loadQuestions()
{
    if (!db.isOpen())
        return;
    if (questionModel == nullptr)
        createQuestionModel();
    selectQuestions();
    fillConversationQuestions();
    conversationGroup->setVisible(questionModel->rowCount() > 0);
    loadResults();
}

void MainWindow::createQuestionModel()
{
    questionModel = new QSqlTableModel(this, db);
    questionModel->setTable(u"questions"_s);
    questionModel->setEditStrategy(QSqlTableModel::OnFieldChange);
    questionModel->setSort(questionModel->fieldIndex(u"order_num"_s), Qt::AscendingOrder);
    questionView->setModel(questionModel);
    for (const auto name :
         {"question_id"_L1, "description"_L1, "model"_L1, "temperature"_L1, "search_enabled"_L1,
          "depends_on_question_id"_L1, "depends_on_answer"_L1, "serial"_L1, "created_at"_L1, "modified_at"_L1})
        questionView->hideColumn(questionModel->fieldIndex(name));
}

void MainWindow::selectQuestions()
{
    questionModel->select();
    // The model reads 256 rows at first and would keep its statement open for the rest: that blocks the saving of the
    // project, and hides the rows behind from the buttons.
    while (questionModel->canFetchMore())
        questionModel->fetchMore();
}

void MainWindow::fillConversationQuestions()
{
    conversationQuestionCombo->clear();
    QSqlQuery query(db);
    query.exec(u"SELECT question_id, order_num FROM questions ORDER BY order_num"_s);
    while (query.next())
        conversationQuestionCombo->addItem(QString::number(query.value(1).toInt()), query.value(0).toInt());
}
