#pragma once

#include <QMessageBox>
#include <QObject>

#include <functional>

class QLineEdit;

/// Waits in the event loop for the next modal window and hands it to a function, once. It is made before the call that
/// opens the window, since that call only returns when the window is closed. What the function leaves open is given up
/// (rejected), so that a failed assertion in it ends the call too.
class Modal : public QObject
{
    Q_OBJECT

public:
    explicit Modal(std::function<void(QWidget *)> answer);

    /// True when a modal window came and was answered.
    bool wasAnswered() const { return answered; }

private:
    void look();

    std::function<void(QWidget *)> answer;
    bool answered = false;
};

/// True if no modal window comes while the function runs. One that comes is given up.
bool asksNothing(const std::function<void()> &act);

/// Answers a message box with one of its standard buttons.
void answerBox(QWidget *box, QMessageBox::StandardButton button);

/// Types a path into a file dialog of Qt's own form and accepts it.
void enterPath(QWidget *dialog, const QString &path);

/// Presses the button of this text, with or without a mnemonic, in a window; false where there is none.
bool pressButton(QWidget *window, const QString &text);

/// Types a text into a field in place of the one that stands there.
void typeInto(QLineEdit *field, const QString &text);
