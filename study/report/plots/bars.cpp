#include "study/report/canvas.h"
#include "study/report/plots/measures.h"
#include "study/report/plots/plots.h"
#include "study/report/wording.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

static constexpr qsizetype mostBars = 30;

static QString valueOf(const Bar &bar, qsizetype all)
{
    return u"%1 (%2)"_s.arg(QString::number(bar.count), percentOf(bar.count, all));
}

static QString inWords(const QList<Bar> &bars, qsizetype all, qsizetype left)
{
    QStringList parts;
    for (const Bar &bar : bars)
        parts << quoted(bar.label, 40) + u": "_s + valueOf(bar, all);
    QString words = u"Bars of %1: "_s.arg(counted(all, u"answer"_s, u"answers"_s)) + parts.join(u"; "_s);
    return left > 0 ? words + u"; %1 not drawn"_s.arg(left) : words;
}

static void paintBars(QPainter &painter, const QList<Bar> &bars, qsizetype all, qsizetype left)
{
    qsizetype largest = 1;
    for (const Bar &bar : bars)
        largest = std::max(largest, bar.count);
    double top = 0;
    for (const Bar &bar : bars) {
        const double length = markRoom * double(bar.count) / double(largest);
        drawText(painter, {0, top + 17}, fitting(bar.label, labelWidth - 12));
        drawBar(painter, {labelWidth, top + 3, std::max(length, 1.0), rowHeight - 8}, Ink::Bar);
        drawText(painter, {labelWidth + length + 6, top + 17}, valueOf(bar, all));
        top += rowHeight;
    }
    if (left > 0)
        drawText(painter, {0, top + 17}, u"and %1, in the table"_s.arg(counted(left, u"label"_s, u"labels"_s)),
                 Ink::Faint);
}

Figure barsFigure(const QString &title, const QList<Bar> &bars, qsizetype all)
{
    const QList<Bar> drawn = bars.first(std::min(mostBars, bars.size()));
    const qsizetype left = bars.size() - drawn.size();
    return {.title = title,
            .alternative = inWords(drawn, all, left),
            .size = {figureWidth, rowHeight * double(drawn.size() + (left > 0 ? 1 : 0))},
            .paint = [drawn, all, left](QPainter &painter) { paintBars(painter, drawn, all, left); }};
}

} // namespace study
