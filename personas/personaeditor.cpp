// The dialog of a new or an existing persona. Nothing of it is checked; the tags are split when they are stored.

#include "app/dialogbuttons.h"
#include "app/mainwindow.h"
#include "app/testmode.h"
#include "personas/personatable.h"
#include "personas/personatags.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSqlQuery>
#include <QTableWidget>

using namespace Qt::StringLiterals;

namespace {

/// What the dialog shows of a persona; all empty for a new one, and for one that is gone.
struct PersonaTexts
{
    QString name;
    QString description;
    QString tags;
};

} // namespace

static PersonaTexts readPersonaTexts(const QSqlDatabase &database, const QString &uuid)
{
    if (uuid.isEmpty())
        return {};
    PersonaTexts texts;
    {
        QSqlQuery query(database);
        query.prepare(u"SELECT name, attributes FROM personas WHERE uuid=?"_s);
        query.addBindValue(uuid);
        if (query.exec() && query.next()) {
            texts.name = query.value(0).toString();
            texts.description = query.value(1).toString();
        }
    }
    texts.tags = personaTagText(database, uuid);
    return texts;
}

void MainWindow::newPersona()
{
    editPersona(-1, -1);
}

void MainWindow::editPersona(int row, int /*column*/)
{
    // An empty uuid stands for a new persona, and so does a row that does not exist.
    const QString uuid = row >= 0 && row < personaTable->rowCount() ? personaUuid(personaTable, row) : QString();
    const PersonaTexts texts = readPersonaTexts(db, uuid);

    QDialog dialog(this);
    auto *form = new QFormLayout(&dialog);
    auto *nameEdit = new QLineEdit(texts.name);
    auto *descriptionEdit = new QPlainTextEdit(texts.description);
    descriptionEdit->setMinimumHeight(200);
    auto *tagsEdit = new QLineEdit(texts.tags);
    form->addRow(tr("Name"), nameEdit);
    form->addRow(tr("Description"), descriptionEdit);
    form->addRow(tr("Tags"), tagsEdit);
    form->addWidget(okAndCancel(&dialog));

    dialog.setAttribute(Qt::WA_DontShowOnScreen, testMode());
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (uuid.isEmpty())
        insertPersona(nameEdit->text(), descriptionEdit->toPlainText(), tagsEdit->text());
    else
        updatePersona(uuid, nameEdit->text(), descriptionEdit->toPlainText(), tagsEdit->text());
}
