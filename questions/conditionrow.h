#pragma once

#include <QHBoxLayout>
#include <QSqlDatabase>

class QComboBox;

/// The row of the question dialog that names a condition: which question, was or wasn't, which answer. It is shown and
/// filled, but nothing reads what is chosen.
class ConditionRow : public QHBoxLayout
{
    Q_OBJECT

public:
    /// Offers the questions of @p project that have choices; the choosers are hidden at first.
    explicit ConditionRow(const QSqlDatabase &project);

    /// Shows or hides the choosers; showing them reads the answers on offer anew.
    void setChoosersVisible(bool visible);

private:
    void fillQuestions();
    void reloadAnswerChoices();

    QSqlDatabase db;
    QComboBox *questionChooser;
    QComboBox *comparisonChooser;
    QComboBox *answerChooser;
};
