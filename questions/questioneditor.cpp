// The dialog of a new or an existing question.

#include "app/mainwindow.h"

void MainWindow::editQuestion(int /*row*/) {}
