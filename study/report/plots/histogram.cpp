#include "study/report/canvas.h"
#include "study/report/plots/plots.h"
#include "study/report/wording.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

static constexpr double histogramHeight = 200;
static constexpr double columnHead = 18;
static constexpr double columnFoot = 24;
static constexpr double columnSide = 36;

static QString inWords(const QList<Bin> &bins)
{
    QStringList parts;
    for (const Bin &bin : bins)
        parts << u"%1 to %2: %3"_s.arg(shownNumber(bin.from), shownNumber(bin.to), QString::number(bin.count));
    return u"Counts by range. "_s + parts.join(u"; "_s);
}

static void paintHistogram(QPainter &painter, const QList<Bin> &bins)
{
    if (bins.isEmpty())
        return;
    int largest = 1;
    for (const Bin &bin : bins)
        largest = std::max(largest, bin.count);
    const double width = (figureWidth - 2 * columnSide) / double(bins.size());
    constexpr double base = histogramHeight - columnFoot;
    constexpr double room = base - columnHead;
    // As many edges get their number as there is room for.
    const auto every = std::max(qsizetype(1), qsizetype(70 / width) + 1);
    for (qsizetype place = 0; place < bins.size(); ++place) {
        const Bin &bin = bins.at(place);
        const double left = columnSide + (width * double(place));
        const double tall = room * double(bin.count) / double(largest);
        if (bin.count > 0) {
            drawBar(painter, {left + 1, base - tall, width - 2, tall}, Ink::Bar);
            drawTextAround(painter, {left + (width / 2), base - tall - 5}, QString::number(bin.count), Ink::Text, 11);
        }
        if (place % every == 0)
            drawTextAround(painter, {left, histogramHeight - 6}, shownNumber(bin.from), Ink::Faint, 11);
    }
    if (bins.size() % every == 0)
        drawTextAround(painter, {figureWidth - columnSide, histogramHeight - 6}, shownNumber(bins.last().to),
                       Ink::Faint, 11);
    drawLine(painter, {columnSide, base}, {figureWidth - columnSide, base}, Ink::Text);
}

Figure histogramFigure(const QString &title, const QList<Bin> &bins)
{
    return {.title = title,
            .alternative = inWords(bins),
            .size = {figureWidth, histogramHeight},
            .paint = [bins](QPainter &painter) { paintHistogram(painter, bins); }};
}

} // namespace study
