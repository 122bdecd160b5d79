// A persona pack shown in the persona list, without importing it. From then on the tag filter works on the pack.

#include "app/mainwindow.h"
#include "personas/personatable.h"
#include "project/temporaryconnection.h"

#include <QDebug>

using namespace Qt::StringLiterals;

void MainWindow::loadPack(const QString &path)
{
    packPath = path;
    clearPersonaTable(personaTable);
    const TemporaryConnection pack(u"pack"_s, path);
    if (!pack.isOpen()) {
        qWarning().noquote() << "failed to open pack" << pack.errorText();
        return;
    }
    const QString filter = refillTagFilter(tagFilter, pack.database(), true);
    fillPersonaTable(personaTable, pack.database(), true, filter);
}
