#include "tests/support/modal.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

Modal::Modal(std::function<void(QWidget *)> answerFunction)
    : answer(std::move(answerFunction))
{
    QTimer::singleShot(0, this, &Modal::look);
}

void Modal::look()
{
    QWidget *window = QApplication::activeModalWidget();
    if (window == nullptr) {
        QTimer::singleShot(1, this, &Modal::look);
        return;
    }
    answered = true;
    const QPointer<QWidget> guarded(window);
    answer(window);
    if (!guarded || !guarded->isVisible())
        return;
    if (auto *dialog = qobject_cast<QDialog *>(window))
        dialog->reject();
    else
        window->close();
}

bool asksNothing(const std::function<void()> &act)
{
    const Modal modal([](QWidget *) {});
    act();
    // One that was opened without a wait for its answer is still there.
    return !modal.wasAnswered() && QApplication::activeModalWidget() == nullptr;
}

void answerBox(QWidget *box, QMessageBox::StandardButton button)
{
    qobject_cast<QMessageBox *>(box)->button(button)->click();
}

void enterPath(QWidget *dialog, const QString &path)
{
    dialog->findChild<QLineEdit *>("fileNameEdit"_L1)->setText(path);
    QMetaObject::invokeMethod(dialog, "accept");
}

bool pressButton(QWidget *window, const QString &text)
{
    const auto buttons = window->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (button->text().remove(u'&') == text) {
            button->click();
            return true;
        }
    }
    return false;
}

void typeInto(QLineEdit *field, const QString &text)
{
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
}
