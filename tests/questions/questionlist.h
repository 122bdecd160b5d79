#pragma once

#include "tests/support/entries.h"
#include "tests/support/patience.h"
#include "tests/support/shown.h"

#include <QComboBox>
#include <QGroupBox>
#include <QSqlTableModel>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>

// The question list of a window, and what depends on it.

/// A cell of the list by the name of its column.
inline QModelIndex questionCell(Stage &stage, int row, const QString &column)
{
    const QSqlTableModel *model = questionModel(stage);
    return model->index(row, model->fieldIndex(column));
}

/// Enters a question and refreshes the views.
inline bool listQuestion(Stage &stage, const QuestionEntered &question)
{
    return enter(stage, question) && stage.call("loadQuestions");
}

/// Enters questions with the prompts A, B, C ... and refreshes the views.
inline bool listQuestions(Stage &stage, int count)
{
    bool entered = true;
    for (int index = 0; index < count; ++index)
        entered = entered && enter(stage, QuestionEntered{.prompt = QString(QChar(u'A' + index))});
    return entered && stage.call("loadQuestions");
}

/// Presses one of the buttons under the list.
inline void press(Stage &stage, const QString &button)
{
    stage.button(button, QStringLiteral("Questions"))->click();
}

/// Brings the list to the front of a window that takes keys.
inline bool showQuestions(Stage &stage)
{
    stage.find<QTabWidget>({})->setCurrentWidget(stage.page(QStringLiteral("Questions")));
    stage.window()->show();
    stage.window()->activateWindow();
    questionView(stage)->setFocus();
    return QTest::qWaitForWindowActive(stage.window(), patience);
}

/// What the chooser of the conversation box offers: the numbers and the identities behind them.
inline Rows offeredQuestions(Stage &stage)
{
    Rows offered;
    const QComboBox *chooser = ConversationBox(stage).question;
    for (int index = 0; index < chooser->count(); ++index)
        offered.append(QVariantList{chooser->itemText(index), chooser->itemData(index)});
    return offered;
}

/// The numbers and prompts of the questions in the database, "1A 2B", in the order of their identities.
inline QString numbering(Stage &stage)
{
    return stage.column(QStringLiteral("SELECT order_num || prompt FROM questions ORDER BY question_id"))
        .join(QChar::Space);
}

/// Lets statements of one kind ("UPDATE ON questions") fail from now on where the condition holds.
inline bool forbid(Stage &stage, const QString &statements, const QString &condition = QStringLiteral("1"))
{
    return stage.exec(
        QStringLiteral("CREATE TRIGGER forbidden BEFORE %1 WHEN %2 BEGIN SELECT RAISE(ABORT, 'forbidden'); END")
            .arg(statements, condition));
}
