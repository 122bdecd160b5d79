// A persona pack shown in the persona list, without importing it.

#include "app/mainwindow.h"

void MainWindow::loadPack(const QString & /*path*/) {}
