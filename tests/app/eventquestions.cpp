// Steps on the Questions tab.

#include "tests/app/eventdriver.h"
#include "tests/app/eventviews.h"
#include "tests/questions/questionform.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSqlTableModel>
#include <QTableView>

using namespace Qt::StringLiterals;

static constexpr int mostQuestions = 4;

static QString typeFor(int number)
{
    static const QStringList all{u"text"_s,   u"numeric"_s, u"single_choice"_s, u"multi_choice"_s,
                                 u"likert"_s, u"ranking"_s, u"essay"_s};
    return all.at(number % all.size());
}

static QString promptFor(int number)
{
    return u"Q%1"_s.arg(number % 50);
}

bool EventDriver::performOnQuestions(const Step &step)
{
    switch (step.act) {
    case Act::AddQuestion:
    case Act::EditQuestion:
        editQuestion(step, step.act == Act::AddQuestion);
        return true;
    case Act::DeleteQuestion:
    case Act::MoveQuestion:
        deleteOrMoveQuestion(step);
        return true;
    case Act::InsertQuestion:
        if (stage.count(u"questions"_s) >= mostQuestions)
            return true;
        quietly([&] {
            stage.call("insertQuestion", promptFor(step.which), typeFor(step.how), step.how % 2 == 0,
                       uR"(["x","y"])"_s);
        });
        break;
    case Act::UpdateQuestion: {
        const QStringList ids = stage.column(u"SELECT question_id FROM questions ORDER BY 1"_s) << u"999"_s;
        const int id = ids.at(step.which % ids.size()).toInt();
        quietly([&] { stage.call("updateQuestion", id, promptFor(step.how), typeFor(step.how), true, QString()); });
        break;
    }
    case Act::EditCell:
        editCell(step);
        return true;
    default:
        return false;
    }
    expected.dirty = true;
    checks.after({.tables = {u"questions"_s}, .refreshed = Refreshed::Questions});
    return true;
}

/// Labels are asked for in a dialog of their own, behind which something may happen too.
void EventDriver::fillQuestionForm(QWidget *dialog, const Step &step)
{
    const QuestionForm form(dialog);
    form.prompt->setPlainText(promptFor(step.how));
    form.type->setCurrentIndex(step.which % form.type->count());
    if (!form.shows(form.section))
        return;
    for (int label = 0; label < step.how % 3; ++label) {
        const Step behind{.act = step.act, .which = step.which + label, .how = step.how, .meanwhile = step.how};
        const Answer name = [label](QWidget *question) {
            question->findChild<QLineEdit *>()->setText(QString(QChar(u'x' + label)));
            pressButton(question, u"OK"_s);
        };
        answering({label == 0 ? after(behind, name) : name}, [&] { form.press(u"Add"_s); });
    }
}

void EventDriver::editQuestion(const Step &step, bool isNew)
{
    showTab(u"Questions"_s);
    QTableView *view = questionView(stage);
    const int rows = view->model() != nullptr ? view->model()->rowCount() : 0;
    const int row = rows > 0 ? step.which % rows : 0;
    const bool adds = isNew || rows == 0;
    const bool full = stage.count(u"questions"_s) >= mostQuestions;
    bool accepted = false;
    const Answer fill = [&](QWidget *dialog) {
        fillQuestionForm(dialog, step);
        const QuestionForm form(dialog);
        accepted = step.how % 4 != 0 && !(adds && full) && form.ok->isEnabled();
        if (accepted)
            form.accept();
    };
    const int came = answering({after(step, fill)}, [&] {
        if (isNew)
            stage.button(u"Add"_s, u"Questions"_s)->click();
        else if (step.how % 2 == 0 && !adds)
            doubleClick(view, view->model()->index(row, 2));
        else
            stage.call("editQuestion", row);
    });
    if (came != 1)
        checks.complain(u"no question dialog came"_s);
    if (accepted)
        expected.dirty = true;
    checks.after(accepted ? Effect{.tables = {u"questions"_s}, .refreshed = Refreshed::Questions} : Effect());
}

void EventDriver::deleteOrMoveQuestion(const Step &step)
{
    static const QStringList moves{u"Up"_s, u"Down"_s};
    const bool deletes = step.act == Act::DeleteQuestion;
    QTableView *view = questionView(stage);
    const int rows = view->model() != nullptr ? view->model()->rowCount() : 0;
    if (rows > 0 && step.how % 6 != 0)
        view->selectRow(step.which % rows);
    const int row = view->currentIndex().row();
    const QString button = deletes ? u"Delete"_s : moves.at(step.how % 2);
    const bool acts = row >= 0 && (deletes || (button == "Up"_L1 ? row > 0 : row < rows - 1));
    quietly([&] { stage.button(button, u"Questions"_s)->click(); });
    if (acts)
        expected.dirty = true;
    if (acts && !deletes && view->currentIndex().row() != row + (button == "Up"_L1 ? -1 : 1))
        checks.complain(u"the moved question is not the current one"_s);
    checks.after(acts ? Effect{.tables = {u"questions"_s}, .refreshed = Refreshed::QuestionList} : Effect());
}

void EventDriver::editCell(const Step &step)
{
    static const QStringList columns{u"order_num"_s, u"prompt"_s,         u"answer_type"_s,
                                     u"labels"_s,    u"judge_question"_s, u"ask_when"_s,
                                     u"prompt"_s,    u"answer_type"_s,    u"judge_question"_s};
    showTab(u"Questions"_s);
    QTableView *view = questionView(stage);
    const auto *model = questionModel(stage);
    if (model == nullptr || model->rowCount() == 0)
        return;
    const QString column = columns.at(step.how % columns.size());
    quietly([&] {
        view->setCurrentIndex(model->index(step.which % model->rowCount(), model->fieldIndex(column)));
        QTest::keyClick(view, Qt::Key_F2);
        auto *editor = view->viewport()->findChild<QLineEdit *>();
        if (editor == nullptr) {
            checks.complain(u"no editor opened in a cell"_s);
            return;
        }
        editor->selectAll();
        QTest::keyClicks(editor, column == "answer_type"_L1 ? typeFor(step.which) : QString::number(step.which % 4));
        QTest::keyClick(editor, step.meanwhile % 3 == 0 ? Qt::Key_Escape : Qt::Key_Return);
        settle();
    });
    if (column == "order_num"_L1)
        expected.sorted = expected.dense = false;
    checks.after({.tables = {u"questions"_s}});
}
