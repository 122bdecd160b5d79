// The personas and tags of a persona pack copied into the project.

#include "app/mainwindow.h"

void MainWindow::onImport() {}

void MainWindow::importPack(const QString & /*path*/) {}
