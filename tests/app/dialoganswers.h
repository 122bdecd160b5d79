#pragma once

#include <QObject>

#include <functional>

/// Answers the dialogs that are opened while it lives, one after the other; also from within an answer, where an answer
/// may have others of its own. A dialog that an answer leaves open is given up, and so is one that nobody expected.
class DialogAnswers : public QObject
{
public:
    using Answer = std::function<void(QWidget *)>;

    explicit DialogAnswers(const QList<Answer> &inTurn);
    ~DialogAnswers() override;
    Q_DISABLE_COPY_MOVE(DialogAnswers)

    int given() const { return answered; }
    /// Of a dialog for which there was no answer.
    QString unexpected() const { return surprise; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void answer(QWidget *dialog);

    QList<Answer> left;
    int answered = 0;
    QString surprise;
    DialogAnswers *outer;
};
