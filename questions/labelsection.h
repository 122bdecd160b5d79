#pragma once

#include <QStringList>
#include <QWidget>

class QBoxLayout;
class QLabel;
class QListWidget;

/// The list of a question's labels in the question dialog, with the buttons that change it. Labels are free texts: none
/// is checked, and the empty one is possible. Their order is that of the list, which is the scale of a Likert question.
class LabelSection : public QWidget
{
    Q_OBJECT

public:
    explicit LabelSection(const QStringList &labels, QWidget *parent = nullptr);

    QStringList labels() const;
    int count() const;
    /// The captions "Far left" and "Far right", of which a scale alone has use.
    void setScaleCaptionsVisible(bool visible);

Q_SIGNALS:
    /// "Add" has added a label, or "Remove" was pressed.
    void countChanged();

private:
    QBoxLayout *buildListRow();
    QBoxLayout *buildButtonRow();
    void append(const QString &label);
    void addLabel();
    void removeLabel();
    void moveUp();
    void moveDown();
    void move(int row, int target);

    QListWidget *list = nullptr;
    QLabel *farLeft = nullptr;
    QLabel *farRight = nullptr;
};
