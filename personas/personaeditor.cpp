// The dialog of a new or an existing persona.

#include "app/mainwindow.h"

void MainWindow::newPersona()
{
    editPersona(-1, -1);
}

void MainWindow::editPersona(int /*row*/, int /*column*/) {}
