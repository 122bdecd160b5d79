#include "preferences/settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

using namespace Qt::StringLiterals;

static constexpr auto apiKeyEntry = "openai/api_key"_L1;
static constexpr auto personaModelEntry = "models/persona"_L1;
static constexpr auto adjudicatorModelEntry = "models/adjudicator"_L1;
static constexpr auto defaultPersonaModel = "gpt-4.1"_L1;
static constexpr auto defaultAdjudicatorModel = "gpt-4.1-mini"_L1;

QString Settings::apiKey()
{
    return QSettings().value(apiKeyEntry).toString();
}

QString Settings::personaModel()
{
    return QSettings().value(personaModelEntry, defaultPersonaModel).toString();
}

QString Settings::adjudicatorModel()
{
    return QSettings().value(adjudicatorModelEntry, defaultAdjudicatorModel).toString();
}

#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
/// QSettings makes its file readable for others under the usual umask, but keeps the mode of a file that is there.
static void keepToOwner(const QString &fileName)
{
    static constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
    QDir().mkpath(QFileInfo(fileName).absolutePath());
    QFile file(fileName);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append, ownerOnly))
        file.setPermissions(ownerOnly);
}
#else
static void keepToOwner(const QString & /*fileName*/) {}
#endif

void Settings::store(const QString &apiKey, const QString &personaModel, const QString &adjudicatorModel)
{
    QSettings settings;
    keepToOwner(settings.fileName());
    settings.setValue(apiKeyEntry, apiKey);
    settings.setValue(personaModelEntry, personaModel.isEmpty() ? QString(defaultPersonaModel) : personaModel);
    settings.setValue(adjudicatorModelEntry,
                      adjudicatorModel.isEmpty() ? QString(defaultAdjudicatorModel) : adjudicatorModel);
}
