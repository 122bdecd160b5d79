#pragma once

#include "tests/inspect/surveydata.h"

#include <QComboBox>
#include <QGroupBox>
#include <QPlainTextEdit>

/// The conversation box of a window, used as a user does.
class Box
{
public:
    explicit Box(Stage &stage)
        : persona(stage.window()->findChild<QGroupBox *>()->findChildren<QComboBox *>().at(0))
        , question(stage.window()->findChild<QGroupBox *>()->findChildren<QComboBox *>().at(1))
        , showButton(stage.button(QStringLiteral("Show")))
        , view(stage.window()->findChild<QGroupBox *>()->findChild<QPlainTextEdit *>())
    {
    }

    QComboBox *persona;
    QComboBox *question;
    QPushButton *showButton;
    QPlainTextEdit *view;

    QString text() const { return view->toPlainText(); }
    /// Chooses by the texts in the choosers, presses "Show" and gives what is shown then.
    QString show(const QString &personaName, const QString &number) const
    {
        persona->setCurrentText(personaName);
        question->setCurrentText(number);
        return show();
    }
    QString show() const
    {
        showButton->click();
        return text();
    }
};

inline void setBoilerplate(Stage &stage, const QString &preamble, const QString &postamble)
{
    stage.find<QPlainTextEdit>(QStringLiteral("preambleEdit"))->setPlainText(preamble);
    stage.find<QPlainTextEdit>(QStringLiteral("postambleEdit"))->setPlainText(postamble);
}

/// A persona a and the questions One, Two and Three, on show; no boilerplate.
inline bool fill(Stage &stage)
{
    const bool filled = addPersona(stage, QStringLiteral("a"), QStringLiteral("Persona A")) &&
                        addQuestion(stage, 1, QStringLiteral("One"), 1) &&
                        addQuestion(stage, 2, QStringLiteral("Two"), 2) &&
                        addQuestion(stage, 3, QStringLiteral("Three"), 3) && stage.call("loadProject");
    setBoilerplate(stage, QStringLiteral(""), QStringLiteral(""));
    return filled;
}

inline bool answer(Stage &stage, int question, const QString &text)
{
    return addAnswer(stage, QStringLiteral("a"), question, {text, QVariant(), QVariant()});
}
