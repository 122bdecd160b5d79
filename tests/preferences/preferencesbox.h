#pragma once

#include "tests/support/modal.h"
#include "tests/support/stage.h"

#include <QAction>
#include <QDialog>
#include <QLineEdit>

/// Chooses "Preferences" and hands the dialog to a function; false where no dialog came.
inline bool inPreferences(Stage &stage, const std::function<void(QDialog *)> &act)
{
    const Modal modal([&act](QWidget *window) { act(qobject_cast<QDialog *>(window)); });
    stage.action(QStringLiteral("Preferences"))->trigger();
    return modal.wasAnswered();
}

/// The three fields: key, persona model, adjudicator model.
inline QList<QLineEdit *> preferenceFields(QDialog *dialog)
{
    QList<QLineEdit *> fields;
    for (const char *name : {"apiKeyEdit", "personaModelEdit", "adjudicatorModelEdit"})
        fields.append(dialog->findChild<QLineEdit *>(QLatin1StringView(name)));
    return fields;
}

inline void typePreferences(QDialog *dialog, const QStringList &texts)
{
    for (int field = 0; field < 3; ++field)
        typeInto(preferenceFields(dialog).at(field), texts.at(field));
}

/// Types three texts and presses OK.
inline bool storePreferences(Stage &stage, const QStringList &texts)
{
    return inPreferences(stage, [&texts](QDialog *dialog) {
        typePreferences(dialog, texts);
        pressButton(dialog, QStringLiteral("OK"));
    });
}
