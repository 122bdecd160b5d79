#include "questions/labelsection.h"

#include "app/mainwindow.h"

#include <QBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

using namespace Qt::StringLiterals;

LabelSection::LabelSection(const QStringList &labels, QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(buildListRow());
    layout->addLayout(buildButtonRow());
    for (const QString &label : labels)
        append(label);
}

QBoxLayout *LabelSection::buildListRow()
{
    auto *row = new QHBoxLayout;
    auto *left = new QVBoxLayout;
    farLeft = new QLabel(u"Far left"_s);
    left->addWidget(farLeft);
    left->addStretch();
    row->addLayout(left);

    list = new QListWidget;
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    row->addWidget(list);

    auto *right = new QVBoxLayout;
    right->addStretch();
    farRight = new QLabel(u"Far right"_s);
    right->addWidget(farRight);
    row->addLayout(right);
    return row;
}

QBoxLayout *LabelSection::buildButtonRow()
{
    auto *row = new QHBoxLayout;
    const auto addButton = [this, row](const QString &text, void (LabelSection::*handler)()) {
        auto *button = new QPushButton(text);
        row->addWidget(button);
        connect(button, &QPushButton::clicked, this, handler);
    };
    addButton(u"Add"_s, &LabelSection::addLabel);
    addButton(u"Remove"_s, &LabelSection::removeLabel);
    addButton(u"Up"_s, &LabelSection::moveUp);
    addButton(u"Down"_s, &LabelSection::moveDown);
    return row;
}

QStringList LabelSection::labels() const
{
    QStringList texts;
    for (int row = 0; row < list->count(); ++row)
        texts.append(list->item(row)->text());
    return texts;
}

int LabelSection::count() const
{
    return list->count();
}

void LabelSection::setScaleCaptionsVisible(bool visible)
{
    farLeft->setVisible(visible);
    farRight->setVisible(visible);
}

void LabelSection::append(const QString &label)
{
    auto *item = new QListWidgetItem(label);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    list->addItem(item);
}

void LabelSection::addLabel()
{
    bool accepted = false;
    const QString label = QInputDialog::getText(window(), MainWindow::tr("Add Label"), MainWindow::tr("Label:"),
                                                QLineEdit::Normal, QString(), &accepted);
    if (!accepted || label.isEmpty())
        return;
    append(label);
    list->setCurrentRow(list->count() - 1);
    Q_EMIT countChanged();
}

void LabelSection::removeLabel()
{
    delete list->takeItem(list->currentRow());
    Q_EMIT countChanged();
}

void LabelSection::moveUp()
{
    move(list->currentRow(), list->currentRow() - 1);
}

void LabelSection::moveDown()
{
    move(list->currentRow(), list->currentRow() + 1);
}

void LabelSection::move(int row, int target)
{
    if (row < 0 || target < 0 || target >= list->count())
        return;
    list->insertItem(target, list->takeItem(row));
    list->setCurrentRow(target);
}
