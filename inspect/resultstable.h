#pragma once

#include <QHeaderView>
#include <QList>
#include <QTableWidget>

#include <memory>

class GridPatch;

/// The table of the results grid. It is laid out like any other; but what its columns and titles ask for is remembered,
/// so that a grid of which a few cells have changed is not measured whole.
/// Without Q_OBJECT, since outside it is a plain table.
class ResultsTable : public QTableWidget
{
public:
    explicit ResultsTable(QWidget *parent = nullptr);
    ~ResultsTable() override;
    Q_DISABLE_COPY_MOVE(ResultsTable)

    /// What enters new answers. It goes before the table does, whose end would look like somebody's touch.
    GridPatch &patch() { return *ownPatch; }

    /// Forgets what has been measured.
    void forgetSizes();
    /// A cell that was empty has a text now, so that its column may be wider than it was, and not narrower.
    void cellFilled(int row, int column);

    /// No editor is open and nothing is being dragged.
    bool isAtRest() const { return state() == NoState; }

    int sizeHintForColumn(int column) const override;

private:
    /// Which rows are measured depends on those in view where there are more than the header's precision.
    struct View
    {
        int first = -1;
        int last = -1;
        bool visible = false;
        bool operator==(const View &) const = default;
    };
    View view() const;

    std::unique_ptr<GridPatch> ownPatch;
    mutable View measuredIn;
    mutable QList<int> columnHints; ///< -1 where not measured
};

/// A header of that table, which remembers the sizes of its titles.
class ResultsHeader : public QHeaderView
{
public:
    ResultsHeader(Qt::Orientation orientation, QWidget *parent);

    void forgetSizes() { sizes.clear(); }

protected:
    QSize sectionSizeFromContents(int section) const override;

private:
    mutable QHash<int, QSize> sizes;
};
