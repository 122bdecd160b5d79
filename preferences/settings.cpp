#include "preferences/settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryFile>

#include <cstdio>

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
/// Puts a copy that belongs to this user, and is readable by him alone, in the place of a file that does not. QSettings
/// would give its own copy the rights of the other.
static void replaceByOwn(const QString &fileName)
{
    QFile foreign(fileName);
    QTemporaryFile own(fileName + ".XXXXXX"_L1);
    if (!foreign.open(QIODevice::ReadOnly) || !own.open())
        return;
    const QByteArray content = foreign.readAll();
    // Unlike QFile's, this renaming takes the place of what is there.
    if (own.write(content) == content.size() && own.flush() &&
        std::rename(QFile::encodeName(own.fileName()).constData(), QFile::encodeName(fileName).constData()) == 0)
        own.setAutoRemove(false);
}

/// QSettings makes its file readable for others under the usual umask, but keeps the mode of a file that is there.
static void keepToOwner(const QString &fileName)
{
    static constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
    QDir().mkpath(QFileInfo(fileName).absolutePath());
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append, ownerOnly) || !file.setPermissions(ownerOnly))
        replaceByOwn(fileName);
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
