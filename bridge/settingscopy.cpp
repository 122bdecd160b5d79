#include "bridge/settingscopy.h"

#include "preferences/settings.h"

#include <QSettings>

using namespace Qt::StringLiterals;

namespace bridge {

SettingsCopy::SettingsCopy()
{
    const QString personaModel = Settings::personaModel();
    const QString adjudicatorModel = Settings::adjudicatorModel();
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder.path());
    Settings::store(u"placeholder"_s, personaModel, adjudicatorModel);
}

} // namespace bridge
