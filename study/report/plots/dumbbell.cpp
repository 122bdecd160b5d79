#include "study/report/canvas.h"
#include "study/report/plots/measures.h"
#include "study/report/plots/plots.h"
#include "study/report/wording.h"

#include <QPainter>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

static constexpr qsizetype mostDumbbells = 30;

static void drawFirst(QPainter &painter, QPointF at)
{
    painter.setPen(QPen(colour(Ink::Bar), 1.5));
    painter.setBrush(colour(Ink::Bar));
    painter.drawEllipse(at, 5, 5);
}

static void drawSecond(QPainter &painter, QPointF at)
{
    painter.setPen(QPen(colour(Ink::Against), 1.5));
    painter.setBrush(colour(Ink::Paper));
    painter.drawRect(QRectF(at.x() - 4.5, at.y() - 4.5, 9, 9));
}

static void paintDumbbells(QPainter &painter, const QString &first, const QString &second, const QList<Dumbbell> &rows)
{
    drawFirst(painter, {labelWidth + 5, 11});
    drawText(painter, {labelWidth + 14, 15}, fitting(first, 180), Ink::Text, 11);
    drawSecond(painter, {labelWidth + 210, 11});
    drawText(painter, {labelWidth + 220, 15}, fitting(second, 180), Ink::Text, 11);
    double top = rowHeight;
    for (const Dumbbell &row : rows) {
        const double middle = top + 12;
        const double a = labelWidth + (markRoom * std::clamp(row.first, 0.0, 1.0));
        const double b = labelWidth + (markRoom * std::clamp(row.second, 0.0, 1.0));
        drawText(painter, {0, top + 16}, fitting(row.label, labelWidth - 14));
        drawLine(painter, {labelWidth, middle}, {labelWidth + markRoom, middle});
        drawLine(painter, {a, middle}, {b, middle}, Ink::Text, 2);
        drawSecond(painter, {b, middle});
        drawFirst(painter, {a, middle});
        drawText(painter, {labelWidth + markRoom + 14, top + 16},
                 u"%1 / %2"_s.arg(percent(row.first), percent(row.second)), Ink::Text, 11);
        top += rowHeight;
    }
    drawText(painter, {labelWidth, top + 14}, u"0 %"_s, Ink::Faint, 11);
    drawTextBefore(painter, {labelWidth + markRoom, top + 14}, u"100 %"_s, Ink::Faint, 11);
}

Figure dumbbellFigure(const QString &title, const QString &first, const QString &second, const QList<Dumbbell> &rows)
{
    const QList<Dumbbell> drawn = rows.first(std::min(mostDumbbells, rows.size()));
    QStringList words;
    for (const Dumbbell &row : drawn)
        words << u"%1: %2 and %3"_s.arg(quoted(row.label, 40), percent(row.first), percent(row.second));
    if (drawn.size() < rows.size())
        words << u"%1 not drawn"_s.arg(rows.size() - drawn.size());
    return {.title = title,
            .alternative =
                u"Shares in %1 and in %2. "_s.arg(quoted(first, 40), quoted(second, 40)) + words.join(u"; "_s),
            .size = {figureWidth, (rowHeight * double(drawn.size() + 1)) + 20},
            .paint = [first, second, drawn](QPainter &painter) { paintDumbbells(painter, first, second, drawn); }};
}

} // namespace study
