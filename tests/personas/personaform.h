#pragma once

#include "tests/support/entries.h"
#include "tests/support/modal.h"
#include "tests/support/shown.h"
#include "tests/support/stage.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

/// The open persona dialog, its fields found by their captions.
class PersonaForm
{
public:
    explicit PersonaForm(QWidget *window)
        : dialog(qobject_cast<QDialog *>(window))
        , layout(qobject_cast<QFormLayout *>(window->layout()))
        , name(qobject_cast<QLineEdit *>(field(QStringLiteral("Name"))))
        , description(qobject_cast<QPlainTextEdit *>(field(QStringLiteral("Description"))))
        , tags(qobject_cast<QLineEdit *>(field(QStringLiteral("Tags"))))
    {
    }

    QDialog *dialog;
    QFormLayout *layout;
    QLineEdit *name;
    QPlainTextEdit *description;
    QLineEdit *tags;

    QStringList texts() const { return {name->text(), description->toPlainText(), tags->text()}; }
    void type(const QString &newName, const QString &newDescription, const QString &newTags) const
    {
        typeInto(name, newName);
        description->selectAll();
        description->insertPlainText(newDescription);
        typeInto(tags, newTags);
    }
    void accept() const { pressButton(dialog, QStringLiteral("OK")); }

private:
    QWidget *field(const QString &caption) const
    {
        for (QLabel *label : dialog->findChildren<QLabel *>()) {
            if (label->text() == caption)
                return label->buddy();
        }
        return nullptr;
    }
};

/// What is done in the persona dialog that comes. What it leaves open is given up.
using PersonaWork = std::function<void(const PersonaForm &)>;

inline std::function<void(QWidget *)> inPersonaForm(const PersonaWork &work)
{
    return [work](QWidget *window) { work(PersonaForm(window)); };
}

/// Opens the dialog of a row and works in it; false if none came.
inline bool editPersona(Stage &stage, int row, const PersonaWork &work)
{
    const Modal modal(inPersonaForm(work));
    return stage.call("editPersona", row, 0) && modal.wasAnswered();
}

/// Enters a persona p with the tags b and a by SQL, and shows it.
inline bool showTagged(Stage &stage)
{
    const bool entered = enterBeekeeper(stage, QStringLiteral("p"), QStringLiteral("Number One"),
                                        {QStringLiteral("b"), QStringLiteral("a")});
    refreshQuietly(stage);
    return entered;
}
