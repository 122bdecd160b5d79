#pragma once

#include "tests/support/modal.h"
#include "tests/support/stage.h"

#include <QAction>
#include <QDialog>
#include <QLineEdit>

#include <functional>

/// Chooses "Preferences" and hands the dialog to a function that has to close it; false where no dialog came.
inline bool inPreferences(Stage &stage, const std::function<void(QDialog *)> &act)
{
    const Modal modal([&act](QWidget *window) { act(qobject_cast<QDialog *>(window)); });
    stage.action(QStringLiteral("Preferences"))->trigger();
    return modal.wasAnswered();
}

inline QLineEdit *field(QDialog *dialog, const char *name)
{
    return dialog->findChild<QLineEdit *>(QLatin1StringView(name));
}

/// The texts of the three fields: key, persona model, adjudicator model.
inline QStringList fields(QDialog *dialog)
{
    return {field(dialog, "apiKeyEdit")->text(), field(dialog, "personaModelEdit")->text(),
            field(dialog, "adjudicatorModelEdit")->text()};
}

inline void enter(QDialog *dialog, const QStringList &texts)
{
    field(dialog, "apiKeyEdit")->setText(texts.at(0));
    field(dialog, "personaModelEdit")->setText(texts.at(1));
    field(dialog, "adjudicatorModelEdit")->setText(texts.at(2));
}

/// Enters three texts and presses OK.
inline bool storePreferences(Stage &stage, const QStringList &texts)
{
    return inPreferences(stage, [&texts](QDialog *dialog) {
        enter(dialog, texts);
        pressButton(dialog, QStringLiteral("OK"));
    });
}
