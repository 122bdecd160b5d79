// The dialog of a new or an existing question.

#include "app/dialogbuttons.h"
#include "app/mainwindow.h"
#include "app/testmode.h"
#include "questions/answertypes.h"
#include "questions/conditionrow.h"
#include "questions/labels.h"
#include "questions/labelsection.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSqlRecord>
#include <QSqlTableModel>

using namespace Qt::StringLiterals;

namespace {

/// What the dialog takes from a question; these values are those of a new one.
struct QuestionTexts
{
    int id = -1;
    QString prompt;
    QString type;
    QString labels;
    bool reasoning = true;
};

/// The controls whose values are stored, and the button that they enable.
struct QuestionForm
{
    QPlainTextEdit *prompt = nullptr;
    QComboBox *type = nullptr;
    LabelSection *labels = nullptr;
    QCheckBox *reasoning = nullptr;
    QPushButton *ok = nullptr;

    QString storedType() const { return storedAnswerTypes().at(type->currentIndex()); }
};

} // namespace

static QuestionTexts readQuestionTexts(const QSqlTableModel *model, int row)
{
    if (model == nullptr || row < 0 || row >= model->rowCount())
        return {};
    const QSqlRecord question = model->record(row);
    return {.id = question.value(u"question_id"_s).toInt(),
            .prompt = question.value(u"prompt"_s).toString(),
            .type = question.value(u"answer_type"_s).toString(),
            .labels = question.value(u"labels"_s).toString(),
            .reasoning = question.value(u"reasoning_required"_s).toInt() != 0};
}

/// A scale has two ends at least; no other type needs labels.
static void refreshOkButton(const QuestionForm &form)
{
    form.ok->setEnabled(form.storedType() != AnswerType::likert || form.labels->count() >= 2);
}

static void refreshTypeControls(const QuestionForm &form)
{
    const QString type = form.storedType();
    // Hidden labels stay what they are, and are stored like visible ones.
    form.labels->setVisible(type != AnswerType::text && type != AnswerType::numeric);
    form.labels->setScaleCaptionsVisible(type == AnswerType::likert);
    form.reasoning->setEnabled(type != AnswerType::text);
    if (type == AnswerType::text)
        form.reasoning->setChecked(false);
    refreshOkButton(form);
}

static QuestionForm addStoredControls(QFormLayout *layout, const QuestionTexts &question)
{
    QuestionForm form;
    form.prompt = new QPlainTextEdit(question.prompt);
    form.prompt->setMinimumHeight(80);
    layout->addRow(MainWindow::tr("Prompt"), form.prompt);
    form.type = new QComboBox;
    form.type->addItems(shownAnswerTypes());
    form.type->setCurrentIndex(answerTypeIndex(question.type));
    layout->addRow(MainWindow::tr("Type"), form.type);
    form.labels = new LabelSection(decodeLabels(question.labels));
    layout->addRow(MainWindow::tr("Labels"), form.labels);
    form.reasoning = new QCheckBox(MainWindow::tr("Provide reasoning"));
    form.reasoning->setChecked(question.reasoning);
    layout->addRow(form.reasoning);
    return form;
}

/// The controls that are shown and work, but are neither filled from a question nor stored.
static void addUnstoredControls(QFormLayout *layout, const QSqlDatabase &project)
{
    layout->addRow(new QCheckBox(MainWindow::tr("Adjudicated Question")));
    auto *searchBox = new QCheckBox(MainWindow::tr("Allow web search first"));
    searchBox->setEnabled(false);
    layout->addRow(searchBox);

    auto *askChooser = new QComboBox;
    askChooser->addItems({MainWindow::tr("always"), MainWindow::tr("when the answer to question")});
    layout->addRow(MainWindow::tr("Ask"), askChooser);
    auto *condition = new ConditionRow(project);
    layout->addRow(condition);
    QObject::connect(askChooser, &QComboBox::currentIndexChanged, condition,
                     [condition](int index) { condition->setChoosersVisible(index == 1); });
}

void MainWindow::editQuestion(int row)
{
    const QuestionTexts question = readQuestionTexts(questionModel, row);
    if (testMode() && question.id < 0) {
        insertQuestion(u"Test question?"_s, AnswerType::text.toString(), false, QString());
        return;
    }

    QDialog dialog(this);
    auto *layout = new QFormLayout(&dialog);
    QuestionForm form = addStoredControls(layout, question);
    addUnstoredControls(layout, db);
    auto *buttons = okAndCancel(&dialog);
    layout->addRow(buttons);
    form.ok = buttons->button(QDialogButtonBox::Ok);
    refreshTypeControls(form);
    connect(form.type, &QComboBox::currentTextChanged, &dialog, [&form] { refreshTypeControls(form); });
    connect(form.labels, &LabelSection::countChanged, &dialog, [&form] { refreshOkButton(form); });

    dialog.setAttribute(Qt::WA_DontShowOnScreen, testMode());
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QString labels = encodeLabels(form.labels->labels());
    const bool reasoning = form.reasoning->isChecked();
    const QString prompt = form.prompt->toPlainText();
    if (question.id >= 0)
        updateQuestion(question.id, prompt, form.storedType(), reasoning, labels);
    else
        insertQuestion(prompt, form.storedType(), reasoning, labels);
}
