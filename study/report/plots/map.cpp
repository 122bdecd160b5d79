#include "study/report/canvas.h"
#include "study/report/plots/plots.h"
#include "study/report/wording.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr qsizetype mostMapRows = 60;
constexpr qsizetype mostMapColumns = 50;
constexpr double mapHead = 22;
constexpr double mapLegend = 26;
constexpr size_t markKinds = 5;

struct Grid
{
    qsizetype rows = 0;
    qsizetype columns = 0;
    qsizetype rowsPerCell = 1;
    qsizetype columnsPerCell = 1;
    QList<Mark> marks; ///< row by row
    std::array<qsizetype, markKinds> counts{};

    double width() const { return std::min(28.0, figureWidth / double(std::max(columns, qsizetype(1)))); }
    double height() const { return std::min(14.0, width()); }
};

Mark markOf(const std::array<qsizetype, markKinds> &counts)
{
    qsizetype all = 0;
    for (const qsizetype count : counts)
        all += count;
    const auto other = std::max_element(counts.begin() + 1, counts.end());
    return (all - counts[0]) * 10 >= all && all > counts[0] ? Mark(other - counts.begin()) : Mark::Done;
}

Grid gridOf(const MapSpec &spec)
{
    Grid grid;
    grid.rowsPerCell = std::max(qsizetype(1), (spec.rows + mostMapRows - 1) / mostMapRows);
    grid.columnsPerCell = std::max(qsizetype(1), (spec.columns + mostMapColumns - 1) / mostMapColumns);
    grid.rows = (spec.rows + grid.rowsPerCell - 1) / grid.rowsPerCell;
    grid.columns = (spec.columns + grid.columnsPerCell - 1) / grid.columnsPerCell;
    QList<std::array<qsizetype, markKinds>> cells(grid.rows * grid.columns, std::array<qsizetype, markKinds>{});
    for (qsizetype row = 0; row < spec.rows; ++row) {
        for (qsizetype column = 0; column < spec.columns; ++column) {
            const auto mark = size_t(spec.at(row, column));
            ++cells[(row / grid.rowsPerCell * grid.columns) + (column / grid.columnsPerCell)][mark];
            ++grid.counts[mark];
        }
    }
    for (const auto &cell : std::as_const(cells))
        grid.marks << markOf(cell);
    return grid;
}

QString nameOf(Mark mark)
{
    static const std::array<QString, markKinds> names{u"answered"_s, u"open"_s, u"out of list"_s, u"not a number"_s,
                                                      u"unreadable"_s};
    return names.at(size_t(mark));
}

QString inWords(const MapSpec &spec, const Grid &grid)
{
    QStringList parts;
    for (size_t kind = 0; kind < markKinds; ++kind)
        parts << u"%1: %2"_s.arg(nameOf(Mark(kind)), QString::number(grid.counts.at(kind)));
    QString words = u"Map of %1 %2 (rows) by %3 %4 (columns). %5."_s.arg(QString::number(spec.rows), spec.rowsName,
                                                                         QString::number(spec.columns),
                                                                         spec.columnsName, parts.join(u", "_s));
    if (grid.rowsPerCell * grid.columnsPerCell > 1)
        words += u" Each mark stands for up to %1 and %2."_s.arg(
            counted(grid.rowsPerCell, spec.rowsName.chopped(1), spec.rowsName),
            counted(grid.columnsPerCell, spec.columnsName.chopped(1), spec.columnsName));
    return words;
}

/// The shape of a mark: a small dot where all is well, the more to see the more is wrong.
void addMark(QPainterPath &path, const QRectF &cell, Mark mark)
{
    const double size = std::min(cell.width(), cell.height()) * 0.36;
    const QPointF middle = cell.center();
    const QRectF box(middle.x() - size, middle.y() - size, 2 * size, 2 * size);
    switch (mark) {
    case Mark::Done:
        path.addRect(QRectF(middle.x() - 1, middle.y() - 1, 2, 2));
        break;
    case Mark::Open:
        path.addRect(box);
        break;
    case Mark::OutOfList:
        path.moveTo(box.topLeft());
        path.lineTo(box.bottomRight());
        path.moveTo(box.topRight());
        path.lineTo(box.bottomLeft());
        break;
    case Mark::NotANumber:
        path.moveTo(box.left(), middle.y());
        path.lineTo(box.right(), middle.y());
        path.moveTo(middle.x(), box.top());
        path.lineTo(middle.x(), box.bottom());
        break;
    case Mark::Unreadable:
        path.addPolygon(QPolygonF({{middle.x(), box.top()}, box.bottomRight(), box.bottomLeft()}));
        path.closeSubpath();
        break;
    }
}

void drawMarks(QPainter &painter, const QPainterPath &path, Mark mark)
{
    static constexpr std::array<Ink, markKinds> markInks{Ink::Faint, Ink::Bar, Ink::Against, Ink::Against, Ink::Other};
    painter.setPen(QPen(colour(markInks.at(size_t(mark))), 1.3));
    painter.setBrush(mark == Mark::Unreadable ? QBrush(colour(Ink::Other)) : QBrush(Qt::NoBrush));
    painter.drawPath(path);
}

void drawLegend(QPainter &painter, const Grid &grid, double top)
{
    double at = 0;
    for (size_t kind = 0; kind < markKinds; ++kind) {
        QPainterPath path;
        addMark(path, {at, top + 5, 14, 14}, Mark(kind));
        drawMarks(painter, path, Mark(kind));
        const QString text = u"%1 (%2)"_s.arg(nameOf(Mark(kind)), QString::number(grid.counts.at(kind)));
        drawText(painter, {at + 18, top + 16}, text, Ink::Text, 11);
        at += 18 + widthOf(text, 11) + 10;
    }
}

void paintMap(QPainter &painter, const Grid &grid)
{
    const double width = grid.width();
    const double height = grid.height();
    std::array<QPainterPath, markKinds> paths;
    for (qsizetype place = 0; place < grid.marks.size(); ++place) {
        const QRectF cell(width * double(place % grid.columns), mapHead + (height * double(place / grid.columns)),
                          width, height);
        addMark(paths.at(size_t(grid.marks.at(place))), cell, grid.marks.at(place));
    }
    for (size_t kind = 0; kind < markKinds; ++kind) {
        if (!paths.at(kind).isEmpty())
            drawMarks(painter, paths.at(kind), Mark(kind));
    }
    for (qsizetype column = 0; column < grid.columns; column += 5)
        drawTextAround(painter, {width * (double(column) + 0.5) + 4, 14},
                       QString::number((column * grid.columnsPerCell) + 1), Ink::Faint, 10);
    drawLegend(painter, grid, mapHead + (height * double(grid.rows)));
}

} // namespace

Figure mapFigure(const MapSpec &spec)
{
    const Grid grid = gridOf(spec);
    return {.title = spec.title,
            .alternative = inWords(spec, grid),
            .size = {figureWidth, mapHead + std::ceil(grid.height() * double(grid.rows)) + mapLegend},
            .paint = [grid](QPainter &painter) { paintMap(painter, grid); }};
}

} // namespace study
