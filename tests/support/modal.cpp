#include "tests/support/modal.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
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
    answer(window);
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
