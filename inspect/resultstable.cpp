#include "inspect/resultstable.h"

#include "inspect/gridpatch.h"

ResultsTable::ResultsTable(QWidget *parent)
    : QTableWidget(parent)
{
    setVerticalHeader(new ResultsHeader(Qt::Vertical, this));
    setHorizontalHeader(new ResultsHeader(Qt::Horizontal, this));
    ownPatch = std::make_unique<GridPatch>(this);
}

ResultsTable::~ResultsTable() = default;

void ResultsTable::forgetSizes()
{
    columnHints.clear();
    for (QHeaderView *header : {horizontalHeader(), verticalHeader()}) {
        if (auto *own = dynamic_cast<ResultsHeader *>(header))
            own->forgetSizes();
    }
}

void ResultsTable::cellFilled(int row, int column)
{
    if (column >= columnHints.size())
        return;
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    const int width = itemDelegate()->sizeHint(option, model()->index(row, column)).width() + (showGrid() ? 1 : 0);
    // Whether the cell is among those that are measured is the table's own matter.
    if (width > columnHints.at(column))
        columnHints[column] = -1;
}

ResultsTable::View ResultsTable::view() const
{
    return {.first = verticalHeader()->visualIndexAt(0),
            .last = verticalHeader()->visualIndexAt(viewport()->height()),
            .visible = isVisible()};
}

int ResultsTable::sizeHintForColumn(int column) const
{
    if (const View now = view(); now != measuredIn || columnHints.size() != columnCount()) {
        measuredIn = now;
        columnHints = QList<int>(columnCount(), -1);
    }
    const int known = columnHints.value(column, -1);
    if (known >= 0)
        return known;
    const int hint = QTableWidget::sizeHintForColumn(column);
    // Measuring may have made the table forget what was known.
    if (column >= 0 && column < columnHints.size())
        columnHints[column] = hint;
    return hint;
}

ResultsHeader::ResultsHeader(Qt::Orientation orientation, QWidget *parent)
    : QHeaderView(orientation, parent)
{
    // As a table sets its own headers up.
    setSectionsClickable(true);
    setHighlightSections(true);
}

QSize ResultsHeader::sectionSizeFromContents(int section) const
{
    const auto known = sizes.constFind(section);
    if (known != sizes.cend())
        return *known;
    const QSize size = QHeaderView::sectionSizeFromContents(section);
    sizes.insert(section, size);
    return size;
}
