#include "tests/app/dialoganswers.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QPointer>
#include <QTimer>

using namespace Qt::StringLiterals;

/// The one that is to answer.
static DialogAnswers *innermost = nullptr;

DialogAnswers::DialogAnswers(const QList<Answer> &inTurn)
    : left(inTurn)
    , outer(innermost)
{
    innermost = this;
    qApp->installEventFilter(this);
}

DialogAnswers::~DialogAnswers()
{
    qApp->removeEventFilter(this);
    innermost = outer;
}

bool DialogAnswers::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show && innermost == this) {
        auto *dialog = qobject_cast<QDialog *>(watched);
        // Its loop is about to begin, and the answer is given in there.
        if (dialog != nullptr && dialog->isModal())
            QTimer::singleShot(0, this, [this, guarded = QPointer(dialog)] { answer(guarded); });
    }
    return QObject::eventFilter(watched, event);
}

void DialogAnswers::answer(QWidget *dialog)
{
    const QPointer guarded(qobject_cast<QDialog *>(dialog));
    if (!guarded)
        return;
    if (left.isEmpty()) {
        surprise = QString::fromLatin1(dialog->metaObject()->className()) + u" \""_s + dialog->windowTitle() + u'"';
    } else {
        ++answered;
        left.takeFirst()(dialog);
    }
    if (guarded && guarded->isVisible())
        guarded->reject();
}
