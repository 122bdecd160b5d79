#include "inspect/chatlogwindow.h"

#include <QBoxLayout>
#include <QDialogButtonBox>
#include <QPlainTextEdit>

ChatLogWindow::ChatLogWindow(QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Chat Log"));
    auto *layout = new QVBoxLayout(this);
    view = new QPlainTextEdit(this);
    view->setReadOnly(true);
    // A reader can undo nothing, and the steps would take nearly as much memory as the text.
    view->setUndoRedoEnabled(false);
    layout->addWidget(view);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    resize(500, 400);
}

void ChatLogWindow::appendLine(const QString &line)
{
    view->appendPlainText(line);
}
