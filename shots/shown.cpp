#include "shots/shown.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTableView>

using namespace Qt::StringLiterals;

static QString cellTexts(const QTableView *table)
{
    const QAbstractItemModel *model = table->model();
    QStringList texts;
    for (int row = -1; row < model->rowCount(); ++row) {
        for (int column = 0; column < model->columnCount(); ++column) {
            if (!table->isColumnHidden(column))
                texts << (row < 0 ? model->headerData(column, Qt::Horizontal) : model->index(row, column).data())
                             .toString();
        }
    }
    return texts.join(u'|');
}

static QString entryTexts(const QListWidget *list)
{
    QStringList texts;
    for (int row = 0; row < list->count(); ++row)
        texts << list->item(row)->text();
    return texts.join(u'|');
}

static QString titles(const QMenuBar *bar)
{
    QStringList texts;
    const auto menus = bar->actions();
    for (const QAction *menu : menus)
        texts << menu->text();
    return texts.join(u'|');
}

static QString titles(const QTabBar *bar)
{
    QStringList texts;
    for (int tab = 0; tab < bar->count(); ++tab)
        texts << bar->tabText(tab);
    return texts.join(u'|');
}

static QString textOf(const QWidget *widget)
{
    // Enough of a text to know it by.
    static constexpr int beginning = 200;
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return button->text();
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->text();
    if (const auto *line = qobject_cast<const QLineEdit *>(widget))
        return line->text();
    if (const auto *chooser = qobject_cast<const QComboBox *>(widget))
        return chooser->currentText();
    if (const auto *group = qobject_cast<const QGroupBox *>(widget))
        return group->title();
    if (const auto *edit = qobject_cast<const QPlainTextEdit *>(widget))
        return edit->toPlainText().left(beginning);
    if (const auto *table = qobject_cast<const QTableView *>(widget))
        return cellTexts(table);
    if (const auto *list = qobject_cast<const QListWidget *>(widget))
        return entryTexts(list);
    if (const auto *tabs = qobject_cast<const QTabBar *>(widget))
        return titles(tabs);
    if (const auto *menus = qobject_cast<const QMenuBar *>(widget))
        return titles(menus);
    return {};
}

QString shownTexts(const QWidget *window)
{
    QStringList texts;
    const auto widgets = window->findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        // Mnemonics are the platform's matter.
        const QString text = textOf(widget).remove(u'&').simplified();
        if (widget->isVisibleTo(window) && !text.isEmpty())
            texts << text;
    }
    return texts.join(u'\n');
}
