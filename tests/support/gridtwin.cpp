#include "tests/support/gridtwin.h"

#include <QApplication>
#include <QBoxLayout>
#include <QHeaderView>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenuBar>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollBar>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTabWidget>
#include <QTableWidget>
#include <QVariant>

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

GridTwin::GridTwin(const QMainWindow *original)
    : grid(new QTableWidget)
{
    for (const auto menus = original->menuBar()->actions(); const QAction *menu : menus)
        menuBar()->addMenu(menu->text())->addAction(u"entry"_s);
    auto *tabs = new QTabWidget(this);
    setCentralWidget(tabs);
    const auto *originalTabs = original->findChild<QTabWidget *>();
    for (int index = 0; index < originalTabs->count() - 1; ++index)
        tabs->addTab(new QWidget, originalTabs->tabText(index));
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    grid->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    layout->addWidget(grid);
    layout->addWidget(new QPushButton(u"Run Survey"_s));
    tabs->addTab(page, originalTabs->tabText(originalTabs->count() - 1));
}

/// Answer and reasoning of a pair.
static std::pair<QString, QString> cellsOf(QSqlQuery &query, const QVariant &uuid, const QVariant &question)
{
    query.bindValue(0, uuid);
    query.bindValue(1, question);
    if (!query.exec() || !query.next())
        return {};
    const QString json = query.value(2).toString();
    QString answer = query.value(0).toString();
    if (answer.isEmpty())
        answer = query.isNull(1) ? json : QString::number(query.value(1).toDouble(), 'g', 6);
    return {answer, QJsonDocument::fromJson(json.toUtf8()).object().value("reasoning"_L1).toString()};
}

void GridTwin::refresh(const QSqlDatabase &database)
{
    // As the program has it: the header measures once, when all is in place.
    grid->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    const auto measureColumns =
        qScopeGuard([this] { grid->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents); });
    grid->clear();
    grid->setRowCount(0);
    grid->setColumnCount(0);
    QList<std::pair<QString, QString>> personas;
    QList<std::pair<int, QString>> questions;
    QSqlQuery query(database);
    if (!query.exec(u"SELECT uuid,name FROM personas ORDER BY name"_s))
        return;
    while (query.next())
        personas.append({query.value(0).toString(), query.value(1).toString()});
    if (!query.exec(u"SELECT question_id,prompt,reasoning_required FROM questions ORDER BY order_num"_s))
        return;
    while (query.next())
        questions.append({query.value(0).toInt(), query.value(1).toString()});

    grid->setRowCount(int(personas.size()));
    grid->setColumnCount(int((2 * questions.size()) + 1));
    QStringList titles{u"Persona"_s};
    for (const auto &[id, prompt] : std::as_const(questions))
        titles << prompt << u"Reasoning for %1"_s.arg(prompt);
    grid->setHorizontalHeaderLabels(titles);
    query.prepare(u"SELECT text_answer,numeric_answer,json_answer FROM responses "
                  "WHERE persona_uuid=? AND question_id=? ORDER BY created_at DESC LIMIT 1"_s);
    for (int row = 0; row < personas.size(); ++row) {
        const auto &[uuid, name] = personas.at(row);
        grid->setVerticalHeaderItem(row, new QTableWidgetItem(name));
        grid->setItem(row, 0, new QTableWidgetItem(name));
        for (int question = 0; question < questions.size(); ++question) {
            const auto [answer, reasoning] = cellsOf(query, uuid, questions.at(question).first);
            grid->setItem(row, (2 * question) + 1, new QTableWidgetItem(answer));
            grid->setItem(row, (2 * question) + 2, new QTableWidgetItem(reasoning));
        }
    }
}

static bool same(const QTableWidgetItem *left, const QTableWidgetItem *right)
{
    if (left == nullptr || right == nullptr)
        return left == right;
    if (left->text() != right->text() || left->flags() != right->flags())
        return false;
    static constexpr int roles[] = {Qt::BackgroundRole, Qt::UserRole, Qt::DecorationRole, Qt::FontRole};
    return std::ranges::all_of(roles, [&](int role) { return left->data(role) == right->data(role); });
}

static const QTableWidgetItem *itemAt(const QTableWidget *table, int row, int column)
{
    if (row < 0)
        return table->horizontalHeaderItem(column);
    return column < 0 ? table->verticalHeaderItem(row) : table->item(row, column);
}

/// All that is seen of a section: size, whether it is hidden, its place and its mode.
static auto section(const QHeaderView *header, int index)
{
    return std::tuple(header->sectionSize(index), header->isSectionHidden(index), header->visualIndex(index),
                      header->sectionResizeMode(index));
}

/// Behind another tab a header is placed only when it comes to the front again.
static QRect place(const QHeaderView *header)
{
    return header->isVisible() ? header->geometry() : QRect();
}

static auto position(const QScrollBar *bar)
{
    return std::tuple(bar->value(), bar->minimum(), bar->maximum(), bar->pageStep(), bar->isVisible());
}

static QString differenceOf(const QHeaderView *left, const QHeaderView *right)
{
    if (left->count() != right->count() || left->offset() != right->offset())
        return u"number of sections or offset"_s;
    if (place(left) != place(right))
        return u"place"_s;
    for (int index = 0; index < left->count(); ++index) {
        if (section(left, index) != section(right, index))
            return u"section %1, of size %2 and not %3"_s.arg(index)
                .arg(left->sectionSize(index))
                .arg(right->sectionSize(index));
    }
    return {};
}

QString differentItem(const QTableWidget *left, const QTableWidget *right)
{
    for (int row = -1; row < left->rowCount(); ++row) {
        for (int column = -1; column < left->columnCount(); ++column) {
            if (!same(itemAt(left, row, column), itemAt(right, row, column)))
                return u"item %1,%2"_s.arg(row).arg(column);
        }
    }
    return {};
}

static QModelIndexList selectedIn(const QTableWidget *table)
{
    QModelIndexList selected = table->selectionModel()->selectedIndexes();
    std::ranges::sort(selected);
    return selected;
}

static bool sameCells(const QModelIndexList &left, const QModelIndexList &right)
{
    return std::ranges::equal(left, right, [](const QModelIndex &one, const QModelIndex &other) {
        return one.row() == other.row() && one.column() == other.column();
    });
}

QString differenceOf(QTableWidget *left, QTableWidget *right, bool withPicture)
{
    if (left->rowCount() != right->rowCount() || left->columnCount() != right->columnCount())
        return u"the size of the table"_s;
    if (const QString item = differentItem(left, right); !item.isEmpty())
        return item;
    if (const QString columns = differenceOf(left->horizontalHeader(), right->horizontalHeader()); !columns.isEmpty())
        return u"columns: "_s + columns;
    if (const QString rows = differenceOf(left->verticalHeader(), right->verticalHeader()); !rows.isEmpty())
        return u"rows: "_s + rows;
    if (position(left->horizontalScrollBar()) != position(right->horizontalScrollBar()) ||
        position(left->verticalScrollBar()) != position(right->verticalScrollBar()))
        return u"scroll bars"_s;
    if (!sameCells({left->currentIndex()}, {right->currentIndex()}) || !sameCells(selectedIn(left), selectedIn(right)))
        return u"current cell or selection"_s;
    if (left->geometry() != right->geometry() || left->viewport()->geometry() != right->viewport()->geometry() ||
        left->sizeHint() != right->sizeHint())
        return u"place or size hint of the table"_s;
    if (left->viewport()->findChildren<QWidget *>().size() != right->viewport()->findChildren<QWidget *>().size())
        return u"editors and widgets in cells"_s;
    if (withPicture && left->grab().toImage() != right->grab().toImage())
        return u"the pictures"_s;
    return {};
}
