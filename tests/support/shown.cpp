#include "tests/support/shown.h"

#include "tests/support/patience.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QGroupBox>
#include <QPlainTextEdit>
#include <QSqlTableModel>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

QTableWidget *personaTable(Stage &stage)
{
    return stage.find<QTableWidget>(u"personaTable"_s);
}

QTableWidget *resultsTable(Stage &stage)
{
    return stage.find<QTableWidget>(u"resultsTable"_s);
}

QTableView *questionView(Stage &stage)
{
    return stage.find<QTableView>(u"questionView"_s);
}

QComboBox *tagFilter(Stage &stage)
{
    return stage.find<QComboBox>(u"tagFilter"_s);
}

QPlainTextEdit *preambleEdit(Stage &stage)
{
    return stage.find<QPlainTextEdit>(u"preambleEdit"_s);
}

QPlainTextEdit *postambleEdit(Stage &stage)
{
    return stage.find<QPlainTextEdit>(u"postambleEdit"_s);
}

QSqlTableModel *questionModel(Stage &stage)
{
    return qobject_cast<QSqlTableModel *>(questionView(stage)->model());
}

ConversationBox::ConversationBox(Stage &stage)
    : group(stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>())
    , persona(group->findChildren<QComboBox *>().at(0))
    , question(group->findChildren<QComboBox *>().at(1))
    , showButton(stage.button(u"Show"_s))
    , view(group->findChild<QPlainTextEdit *>())
{
}

QString ConversationBox::text() const
{
    return view->toPlainText();
}

QString ConversationBox::show() const
{
    showButton->click();
    return text();
}

QString ConversationBox::show(const QString &personaName, const QString &number) const
{
    persona->setCurrentText(personaName);
    question->setCurrentText(number);
    return show();
}

QList<QStringList> cells(const QTableWidget *table)
{
    QList<QStringList> all;
    for (int row = 0; row < table->rowCount(); ++row) {
        QStringList texts;
        for (int column = 0; column < table->columnCount(); ++column) {
            const QTableWidgetItem *item = table->item(row, column);
            texts.append(item != nullptr ? item->text() : QString());
        }
        all.append(texts);
    }
    return all;
}

QStringList columnTexts(const QTableWidget *table, int column)
{
    QStringList texts;
    const auto all = cells(table);
    for (const QStringList &row : all)
        texts.append(row.at(column));
    return texts;
}

QStringList columnTexts(Stage &stage, const QString &field)
{
    QStringList texts;
    const QSqlTableModel *model = questionModel(stage);
    for (int row = 0; row < model->rowCount(); ++row)
        texts.append(model->index(row, model->fieldIndex(field)).data().toString());
    return texts;
}

QStringList titles(const QTableWidget *table, Qt::Orientation orientation)
{
    const QAbstractItemModel *model = table->model();
    const int count = orientation == Qt::Horizontal ? model->columnCount() : model->rowCount();
    QStringList all;
    for (int section = 0; section < count; ++section)
        all.append(model->headerData(section, orientation).toString());
    return all;
}

QStringList items(const QComboBox *chooser)
{
    QStringList texts;
    for (int index = 0; index < chooser->count(); ++index)
        texts.append(chooser->itemText(index));
    return texts;
}

QStringList shownPersonas(Stage &stage)
{
    QStringList names = columnTexts(personaTable(stage), 0);
    names.sort();
    return names;
}

bool makeCurrent(Stage &stage, const QString &uuid)
{
    QTableWidget *table = personaTable(stage);
    for (int row = 0; row < table->rowCount(); ++row) {
        if (table->item(row, 1)->data(Qt::UserRole).toString() == uuid) {
            table->setCurrentCell(row, 0);
            return true;
        }
    }
    return false;
}

QuietRefresh::QuietRefresh(Stage &stage)
    : preamble(preambleEdit(stage))
    , postamble(postambleEdit(stage))
{
}

void refreshQuietly(Stage &stage)
{
    const QuietRefresh quiet(stage);
    stage.call("loadProject");
}

void keepGridRebuilt(Stage &stage)
{
    // A temporary view could stand before a table of the project.
    stage.exec(u"CREATE TEMP VIEW bystander AS SELECT 1"_s);
}

QTableWidget *refreshedGrid(Stage &stage)
{
    stage.call("loadResults");
    return resultsTable(stage);
}

void doubleClick(QAbstractItemView *view, const QModelIndex &index)
{
    view->window()->show();
    QVERIFY(QTest::qWaitForWindowExposed(view->window(), patience));
    view->scrollTo(index);
    const QPoint position = view->visualRect(index).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, position);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, position);
}
