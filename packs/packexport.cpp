// The project's personas and tags written to a persona pack.

#include "app/mainwindow.h"

void MainWindow::exportPack() {}

bool MainWindow::exportPackToFile(const QString & /*path*/)
{
    return false;
}
