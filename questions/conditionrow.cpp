#include "questions/conditionrow.h"

#include "app/mainwindow.h"
#include "questions/labels.h"

#include <QComboBox>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

ConditionRow::ConditionRow(const QSqlDatabase &project)
    : db(project)
    , questionChooser(new QComboBox)
    , comparisonChooser(new QComboBox)
    , answerChooser(new QComboBox)
{
    comparisonChooser->addItems({MainWindow::tr("was"), MainWindow::tr("wasn't")});
    for (QComboBox *chooser : {questionChooser, comparisonChooser, answerChooser}) {
        addWidget(chooser);
        chooser->hide();
    }
    fillQuestions();
    connect(questionChooser, &QComboBox::currentIndexChanged, this, &ConditionRow::reloadAnswerChoices);
}

void ConditionRow::fillQuestions()
{
    QSqlQuery query(db);
    query.exec(u"SELECT question_id, order_num FROM questions WHERE answer_type IN ('single_choice','multi_choice') "
               "ORDER BY order_num"_s);
    while (query.next())
        questionChooser->addItem(query.value(1).toString(), query.value(0).toInt());
}

void ConditionRow::setChoosersVisible(bool visible)
{
    for (QComboBox *chooser : {questionChooser, comparisonChooser, answerChooser})
        chooser->setVisible(visible);
    if (visible)
        reloadAnswerChoices();
}

void ConditionRow::reloadAnswerChoices()
{
    answerChooser->clear();
    const int question = questionChooser->currentData(Qt::UserRole).toInt();
    if (question == 0)
        return;
    QSqlQuery query(db);
    query.prepare(u"SELECT labels FROM questions WHERE question_id = ?"_s);
    query.addBindValue(question);
    if (query.exec() && query.next())
        answerChooser->addItems(decodeLabels(query.value(0).toString()));
}
