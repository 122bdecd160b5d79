#include "preferences/preferencesdialog.h"

#include "app/dialogbuttons.h"
#include "preferences/settings.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>

using namespace Qt::StringLiterals;

static QLineEdit *namedEdit(QLatin1StringView name, const QString &text, QWidget *parent)
{
    auto *edit = new QLineEdit(text, parent);
    edit->setObjectName(name);
    return edit;
}

PreferencesDialog::PreferencesDialog(QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Preferences"));
    auto *layout = new QFormLayout(this);

    apiKeyEdit = namedEdit("apiKeyEdit"_L1, Settings::apiKey(), this);
    personaModelEdit = namedEdit("personaModelEdit"_L1, Settings::personaModel(), this);
    adjudicatorModelEdit = namedEdit("adjudicatorModelEdit"_L1, Settings::adjudicatorModel(), this);
    layout->addRow(tr("OpenAI API Key"), apiKeyEdit);
    layout->addRow(tr("Persona Model"), personaModelEdit);
    layout->addRow(tr("Adjudicator Model"), adjudicatorModelEdit);

    layout->addWidget(okAndCancel(this));
}

void PreferencesDialog::accept()
{
    Settings::store(apiKeyEdit->text(), personaModelEdit->text(), adjudicatorModelEdit->text());
    QDialog::accept();
}
