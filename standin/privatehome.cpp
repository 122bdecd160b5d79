#include "standin/privatehome.h"

#include <QDir>
#include <QFile>
#include <QSettings>

using namespace Qt::StringLiterals;

void leaveUsersHome(const QString &home)
{
    // The display's key lies in the home too unless the environment says otherwise.
    const QString displayKey = QDir::home().filePath(u".Xauthority"_s);
    if (!qEnvironmentVariableIsSet("XAUTHORITY") && QFile::exists(displayKey))
        qputenv("XAUTHORITY", QFile::encodeName(displayKey));
    qputenv("HOME", QFile::encodeName(home));
    const QString settings = QDir(home).filePath(u".config"_s);
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(settings));
    for (const char *folder : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        qunsetenv(folder);
#ifndef Q_OS_LINUX
    QSettings::setDefaultFormat(QSettings::IniFormat);
#endif
    for (const auto format : {QSettings::IniFormat, QSettings::NativeFormat})
        QSettings::setPath(format, QSettings::UserScope, settings);
    // In test mode the window would answer its questions itself.
    qunsetenv("ORRINET_TEST_MODE");
}
