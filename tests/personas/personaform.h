#pragma once

#include "tests/personas/panel.h"
#include "tests/support/modal.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

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
    void setTexts(const QString &newName, const QString &newDescription, const QString &newTags) const
    {
        name->setText(newName);
        description->setPlainText(newDescription);
        tags->setText(newTags);
    }
    void accept() const { dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click(); }

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

/// Answers the persona dialog that comes with a function that works in it; what it leaves open is given up.
template<typename Work>
std::function<void(QWidget *)> inPersonaForm(Work work)
{
    return [work](QWidget *window) {
        const PersonaForm form(window);
        work(form);
        if (window->isVisible())
            form.dialog->reject();
    };
}

/// Opens the dialog of a row and works in it; false if none came.
template<typename Work>
bool editPersona(Stage &stage, int row, Work work, int column = 0)
{
    const Modal modal(inPersonaForm(work));
    return stage.call("editPersona", row, column) && modal.wasAnswered();
}

inline void acceptForm(const PersonaForm &form)
{
    form.accept();
}

/// Enters a persona p with the tags b and a behind the program's back, and shows it.
inline bool enterTagged(Stage &stage)
{
    const bool entered = enterPersona(stage, QStringLiteral("p"), QStringLiteral("Number One")) &&
                         enterTag(stage, QStringLiteral("p"), QStringLiteral("b")) &&
                         enterTag(stage, QStringLiteral("p"), QStringLiteral("a"));
    refreshQuietly(stage);
    return entered;
}
