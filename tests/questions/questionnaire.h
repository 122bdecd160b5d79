#pragma once

#include "tests/support/stage.h"

#include <QComboBox>
#include <QGroupBox>
#include <QSqlTableModel>
#include <QTableView>

/// What a query gives.
using Rows = QList<QVariantList>;

inline QTableView *questionView(Stage &stage)
{
    return stage.find<QTableView>(QStringLiteral("questionView"));
}

inline QSqlTableModel *questionModel(Stage &stage)
{
    return qobject_cast<QSqlTableModel *>(questionView(stage)->model());
}

/// A cell of the question list by the name of its column.
inline QModelIndex questionCell(Stage &stage, int row, const QString &column)
{
    const QSqlTableModel *model = questionModel(stage);
    return model->index(row, model->fieldIndex(column));
}

/// The texts of a column of the question list from top to bottom.
inline QStringList shownColumn(Stage &stage, const QString &column)
{
    QStringList texts;
    for (int row = 0; row < questionModel(stage)->rowCount(); ++row)
        texts.append(questionCell(stage, row, column).data().toString());
    return texts;
}

/// Enters questions with the prompts A, B, C ... behind the program's back, numbered from 1, and refreshes the views.
inline bool enterQuestions(Stage &stage, int count)
{
    const bool entered = stage.exec(
        QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
                       "INSERT INTO questions (order_num, prompt, answer_type, serial, created_at, modified_at) "
                       "SELECT i, char(64 + i), 'text', 1, '2001-02-03 04:05:06', '2001-02-03 04:05:06' FROM n"),
        {count});
    return entered && stage.call("loadQuestions");
}

/// Presses one of the buttons under the question list.
inline void press(Stage &stage, const QString &button)
{
    stage.button(button, QStringLiteral("Questions"))->click();
}

/// The box that is shown once there are questions.
inline QGroupBox *conversationGroup(Stage &stage)
{
    return stage.window()->findChild<QGroupBox *>();
}

/// The chooser of a question in that box, the second of its choosers.
inline QComboBox *questionChooser(Stage &stage)
{
    const auto choosers = conversationGroup(stage)->findChildren<QComboBox *>();
    return choosers.value(1);
}

/// What the chooser offers: the numbers and the identities behind them.
inline Rows offeredQuestions(Stage &stage)
{
    Rows offered;
    const QComboBox *chooser = questionChooser(stage);
    for (int index = 0; index < chooser->count(); ++index)
        offered.append(QVariantList{chooser->itemText(index), chooser->itemData(index)});
    return offered;
}

/// The column titles of the results grid.
inline QStringList gridTitles(Stage &stage)
{
    const auto *grid = stage.find<QTableWidget>(QStringLiteral("resultsTable"));
    QStringList titles;
    for (int column = 0; column < grid->columnCount(); ++column)
        titles.append(grid->horizontalHeaderItem(column)->text());
    return titles;
}

/// The numbers and prompts of the questions in the database, "1A 2B", in the order of their identities.
inline QString numbering(Stage &stage)
{
    return stage
        .value(QStringLiteral("SELECT group_concat(order_num || prompt, ' ') "
                              "FROM (SELECT * FROM questions ORDER BY question_id)"))
        .toString();
}

/// Lets statements of one kind ("UPDATE ON questions") fail from now on where the condition holds.
inline bool forbid(Stage &stage, const QString &statements, const QString &condition = QStringLiteral("1"))
{
    return stage.exec(
        QStringLiteral("CREATE TRIGGER forbidden BEFORE %1 WHEN %2 BEGIN SELECT RAISE(ABORT, 'forbidden'); END")
            .arg(statements, condition));
}
