// Project files, and the guard of unsaved changes.

#include "app/mainwindow.h"

#include <QCloseEvent>
#include <QMessageBox>

void MainWindow::openProject() {}

bool MainWindow::openProjectFromFile(const QString & /*path*/)
{
    return false;
}

void MainWindow::saveProject() {}

void MainWindow::saveProjectAs() {}

bool MainWindow::saveProjectToFile(const QString & /*path*/)
{
    return false;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!dirty) {
        event->accept();
        return;
    }
    const auto answer = QMessageBox::question(this, tr("Unsaved Changes"), tr("You have unsaved changes. Quit anyway?"),
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    event->setAccepted(answer != QMessageBox::No);
}
