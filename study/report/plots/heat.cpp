#include "study/report/canvas.h"
#include "study/report/plots/measures.h"
#include "study/report/plots/plots.h"
#include "study/report/wording.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

static constexpr qsizetype mostHeatRows = 20;
static constexpr qsizetype mostHeatColumns = 12;

static QString inWords(const QStringList &columns, const QList<HeatRow> &rows)
{
    QStringList words;
    for (const HeatRow &row : rows) {
        QStringList parts;
        for (qsizetype place = 0; place < row.shares.size(); ++place)
            parts << columns.value(place) + u": "_s + percent(row.shares.at(place));
        words << quoted(row.label, 40) + u" "_s + parts.join(u", "_s);
    }
    return u"Shares by column. "_s + words.join(u"; "_s);
}

static void paintHeat(QPainter &painter, const QStringList &columns, const QList<HeatRow> &rows)
{
    const double width = (figureWidth - labelWidth) / std::max(1.0, double(columns.size()));
    for (qsizetype place = 0; place < columns.size(); ++place)
        drawTextAround(painter, {labelWidth + (width * (double(place) + 0.5)), 16}, fitting(columns.at(place), width),
                       Ink::Faint, 11);
    double top = rowHeight;
    for (const HeatRow &row : rows) {
        drawText(painter, {0, top + 17}, fitting(row.label, labelWidth - 10));
        for (qsizetype place = 0; place < row.shares.size(); ++place) {
            const double left = labelWidth + (width * double(place));
            const double share = row.shares.at(place);
            drawShade(painter, {left + 1, top + 1, width - 2, rowHeight - 2}, share);
            drawTextAround(painter, {left + (width / 2), top + 17}, QString::number(std::lround(share * 100)),
                           inkOn(share), 11);
        }
        top += rowHeight;
    }
    drawText(painter, {labelWidth, top + 16}, u"per cent of the answers"_s, Ink::Faint, 11);
}

Figure heatFigure(const QString &title, const QStringList &columns, const QList<HeatRow> &rows)
{
    const QStringList names = columns.first(std::min(mostHeatColumns, columns.size()));
    QList<HeatRow> drawn = rows.first(std::min(mostHeatRows, rows.size()));
    for (HeatRow &row : drawn)
        row.shares.resize(std::min(names.size(), row.shares.size()));
    QString words = inWords(names, drawn);
    if (drawn.size() < rows.size() || names.size() < columns.size())
        words += u"; %1 rows and %2 columns not drawn"_s.arg(QString::number(rows.size() - drawn.size()),
                                                             QString::number(columns.size() - names.size()));
    return {.title = title,
            .alternative = words,
            .size = {figureWidth, (rowHeight * double(drawn.size() + 1)) + 22},
            .paint = [names, drawn](QPainter &painter) { paintHeat(painter, names, drawn); }};
}

} // namespace study
