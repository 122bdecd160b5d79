// What a persona has said, as one text.

#include "app/mainwindow.h"

void MainWindow::showConversation() {}
