#include "app/mainwindow.h"

#include <QFile>
#include <QLatin1StringView>
#include <QMessageBox>

using namespace Qt::StringLiterals;

/// When the program was compiled, in the form "Jul 17 2026 11:09:50".
static constexpr QLatin1StringView buildStamp(__DATE__ " " __TIME__);

static QString versionText()
{
    QFile file(u":/VERSION.txt"_s);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return QString::fromUtf8(file.readAll()).trimmed();
}

void MainWindow::showAbout()
{
    const QString text = tr("Orrinet\nVersion %1\nCompiled on %2").arg(versionText(), buildStamp);
    QMessageBox::about(this, tr("About Orrinet"), text);
}
