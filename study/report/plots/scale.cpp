#include "study/report/canvas.h"
#include "study/report/plots/measures.h"
#include "study/report/plots/plots.h"
#include "study/report/wording.h"

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr double scaleRoom = figureWidth - labelWidth - 10;

/// How a part of the scale looks: the lower half in one colour, the upper in another, the ends full, with patterns.
struct Look
{
    Ink ink;
    Pattern pattern;
    Ink lines;
    Ink text;
};

Look lookOf(qsizetype place, qsizetype parts)
{
    const qsizetype fromEnd = std::min(place, parts - 1 - place);
    const bool isMiddle = parts % 2 == 1 && place == parts / 2;
    const bool isLow = place < parts / 2;
    if (isMiddle)
        return {Ink::Middle, Pattern::Plain, Ink::Paper, Ink::Text};
    if (fromEnd == 0)
        return {isLow ? Ink::Against : Ink::Bar, Pattern::Plain, Ink::Paper, Ink::Paper};
    const Pattern pattern = fromEnd % 2 == 0 ? Pattern::Dotted : isLow ? Pattern::Falling : Pattern::Rising;
    return {isLow ? Ink::AgainstFaint : Ink::BarFaint, pattern, Ink::Paper, Ink::Text};
}

qsizetype sumOf(const QList<qsizetype> &counts)
{
    return std::accumulate(counts.begin(), counts.end(), qsizetype(0));
}

/// The share that lies before the middle of the scale; half of a middle label does.
double shareBefore(const ScaleRow &row)
{
    const qsizetype all = sumOf(row.counts);
    double before = 0;
    const qsizetype parts = row.counts.size();
    for (qsizetype place = 0; place < parts / 2; ++place)
        before += double(row.counts.at(place));
    if (parts % 2 == 1)
        before += double(row.counts.at(parts / 2)) / 2;
    return all > 0 ? before / double(all) : 0;
}

QString inWords(const QList<ScaleRow> &rows)
{
    QStringList words;
    for (const ScaleRow &row : rows) {
        QStringList parts;
        const qsizetype all = sumOf(row.counts);
        for (qsizetype place = 0; place < row.counts.size(); ++place)
            parts << u"%1: %2"_s.arg(QString::number(place + 1), percentOf(row.counts.at(place), all));
        words << u"%1 (n = %2): %3"_s.arg(quoted(row.name, 40), QString::number(all), parts.join(u", "_s));
    }
    return u"Shares of the places of the scale. "_s + words.join(u"; "_s);
}

void paintRow(QPainter &painter, const ScaleRow &row, double left, double unit, double top)
{
    const qsizetype all = sumOf(row.counts);
    const Ink ink = row.faint ? Ink::Faint : Ink::Text;
    drawText(painter, {0, top + 16}, fitting(u"%1 (%2)"_s.arg(row.name, QString::number(all)), labelWidth - 8), ink);
    if (all == 0)
        return;
    double at = left;
    for (qsizetype place = 0; place < row.counts.size(); ++place) {
        const double width = unit * double(row.counts.at(place)) / double(all);
        if (width <= 0)
            continue;
        const Look look = lookOf(place, row.counts.size());
        const QRectF part(at, top + 3, width, rowHeight - 6);
        drawBar(painter, part, look.ink, look.pattern, look.lines);
        const QString number = QString::number(place + 1);
        if (width > widthOf(number, 11) + 4)
            drawTextAround(painter, {part.center().x(), top + 17}, number, look.text, 11);
        at += width;
    }
}

void paintScale(QPainter &painter, const QList<ScaleRow> &rows)
{
    double before = 0;
    double after = 0;
    for (const ScaleRow &row : rows) {
        if (sumOf(row.counts) == 0)
            continue;
        before = std::max(before, shareBefore(row));
        after = std::max(after, 1 - shareBefore(row));
    }
    const double unit = before + after > 0 ? scaleRoom / (before + after) : 0;
    const double middle = labelWidth + (before * unit);
    drawLine(painter, {middle, 0}, {middle, rowHeight * double(rows.size())}, Ink::Text);
    double top = 0;
    for (const ScaleRow &row : rows) {
        paintRow(painter, row, middle - (shareBefore(row) * unit), unit, top);
        top += rowHeight;
    }
    drawText(painter, {labelWidth, top + 16}, u"each bar: all answers of the row, around the middle of the scale"_s,
             Ink::Faint, 11);
}

} // namespace

Figure scaleFigure(const QString &title, const QList<ScaleRow> &rows)
{
    return {.title = title,
            .alternative = inWords(rows),
            .size = {figureWidth, (rowHeight * double(rows.size())) + 22},
            .paint = [rows](QPainter &painter) { paintScale(painter, rows); }};
}

} // namespace study
