#include "app/mainwindow.h"
#include "app/testmode.h"
#include "preferences/preferencesdialog.h"

void MainWindow::showPreferences()
{
    if (testMode())
        return;
    PreferencesDialog dialog(this);
    dialog.exec();
}
