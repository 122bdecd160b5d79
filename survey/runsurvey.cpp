// The start and the end of a run, as the window sees them.

#include "app/mainwindow.h"
#include "inspect/chatlogwindow.h"
#include "survey/surveyrunner.h"

#include <QAction>
#include <QPushButton>

void MainWindow::runSurvey()
{
    if (!db.isOpen() || surveyRunner != nullptr)
        return;
    setRunControlsEnabled(false);
    showChatLog();
    surveyRunner = new SurveyRunner(this, db, chatLogWindow, this);
    connect(surveyRunner, &SurveyRunner::finished, this, &MainWindow::surveyFinished);
    // The run may be over, and the runner gone from the field, when this returns.
    surveyRunner->start();
}

void MainWindow::showChatLog()
{
    if (!chatLogWindow) {
        chatLogWindow = new ChatLogWindow(this);
        chatLogWindow->setAttribute(Qt::WA_DeleteOnClose);
    }
    chatLogWindow->show();
}

void MainWindow::setRunControlsEnabled(bool enabled)
{
    runSurveyAction->setEnabled(enabled);
    runSurveyButton->setEnabled(enabled);
}

void MainWindow::surveyFinished()
{
    setRunControlsEnabled(true);
    surveyRunner->deleteLater();
    surveyRunner = nullptr;
    loadResults();
}
