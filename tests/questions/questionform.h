#pragma once

#include "tests/questions/questionlist.h"
#include "tests/support/modal.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>

/// The open question dialog, its controls found by caption, text and place.
class QuestionForm
{
public:
    explicit QuestionForm(QWidget *window)
        : dialog(qobject_cast<QDialog *>(window))
        , layout(qobject_cast<QFormLayout *>(window->layout()))
        , prompt(qobject_cast<QPlainTextEdit *>(field(QStringLiteral("Prompt"))))
        , type(qobject_cast<QComboBox *>(field(QStringLiteral("Type"))))
        , section(field(QStringLiteral("Labels")))
        , list(section->findChild<QListWidget *>())
        , ask(qobject_cast<QComboBox *>(field(QStringLiteral("Ask"))))
        , ok(dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok))
    {
    }

    QDialog *dialog;
    QFormLayout *layout;
    QPlainTextEdit *prompt;
    QComboBox *type;
    QWidget *section;
    QListWidget *list;
    QComboBox *ask;
    QPushButton *ok;

    QCheckBox *box(const QString &text) const { return withText<QCheckBox>(text); }
    QCheckBox *reasoning() const { return box(QStringLiteral("Provide reasoning")); }
    QLabel *label(const QString &text) const { return withText<QLabel>(text); }
    /// What stands right of a caption, or in the whole width where a row has none.
    QLayoutItem *content(int row) const
    {
        QLayoutItem *item = layout->itemAt(row, QFormLayout::FieldRole);
        return item != nullptr ? item : layout->itemAt(row, QFormLayout::SpanningRole);
    }
    /// One of the three choosers of the condition: question, comparison, answer.
    QComboBox *chooser(int place) const
    {
        return qobject_cast<QComboBox *>(content(7)->layout()->itemAt(place)->widget());
    }
    /// Whether a control is on show in the dialog.
    bool shows(const QWidget *control) const { return control->isVisibleTo(dialog); }

    QStringList labels() const
    {
        QStringList texts;
        for (int row = 0; row < list->count(); ++row)
            texts.append(list->item(row)->text());
        return texts;
    }
    /// Presses "Add" and answers the question for the label; false if none was asked.
    bool addLabel(const QString &text, bool accepted = true) const
    {
        const Modal question([&](QWidget *window) {
            auto *edit = window->findChild<QLineEdit *>();
            edit->insert(text);
            QTest::keyClick(edit, accepted ? Qt::Key_Return : Qt::Key_Escape);
        });
        return press(QStringLiteral("Add")) && question.wasAnswered();
    }
    bool press(const QString &button) const { return pressButton(dialog, button); }
    void accept() const { ok->click(); }

private:
    QWidget *field(const QString &caption) const
    {
        for (int row = 0; row < layout->rowCount(); ++row) {
            const QLayoutItem *item = layout->itemAt(row, QFormLayout::LabelRole);
            const auto *text = item != nullptr ? qobject_cast<QLabel *>(item->widget()) : nullptr;
            if (text != nullptr && text->text() == caption)
                return content(row)->widget();
        }
        return nullptr;
    }
    template<typename Widget>
    Widget *withText(const QString &text) const
    {
        const auto all = dialog->findChildren<Widget *>();
        for (Widget *widget : all) {
            if (widget->text() == text)
                return widget;
        }
        return nullptr;
    }
};

/// What a test does in the dialog.
using FormAct = void (*)(const QuestionForm &form);

/// Answers the question dialog that comes with a function that works in it.
template<typename Work>
std::function<void(QWidget *)> inQuestionForm(Work work)
{
    return [work](QWidget *window) { work(QuestionForm(window)); };
}

/// Opens the dialog of a row of the list and works in it; false if none came.
template<typename Work>
bool editQuestion(Stage &stage, int row, Work work)
{
    const Modal modal(inQuestionForm(work));
    return stage.call("editQuestion", row) && modal.wasAnswered();
}

/// The column labels of the question that was entered last.
inline QVariant storedLabels(Stage &stage)
{
    return stage.value(QStringLiteral("SELECT labels FROM questions ORDER BY question_id DESC"));
}
