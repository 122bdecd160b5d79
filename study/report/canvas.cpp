#include "study/report/canvas.h"

#include "study/report/wording.h"

#include <QFont>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

static double widthOf(char32_t character, double size)
{
    const bool isWide = character >= 0x1100 &&
                        (character >= 0x1f000 || (character >= 0x2e80 && character < 0xfb00) || character < 0x1200);
    return size * (isWide ? 1.1 : character < 0x80 && QChar(char16_t(character)).isUpper() ? 0.72 : 0.61);
}

double widthOf(const QString &text, double size)
{
    double width = 0;
    for (const uint character : text.toUcs4())
        width += widthOf(char32_t(character), size);
    return width;
}

QString fitting(const QString &text, double width, double size)
{
    const QString whole = brief(text, 200);
    if (widthOf(whole, size) <= width)
        return whole;
    QString begin;
    double used = size;
    for (const uint character : whole.toUcs4()) {
        used += widthOf(char32_t(character), size);
        if (used > width)
            break;
        begin += QString::fromUcs4(reinterpret_cast<const char32_t *>(&character), 1);
    }
    return begin.trimmed() + u'\u2026';
}

void drawText(QPainter &painter, QPointF at, const QString &text, Ink ink, double size)
{
    QFont font(u"DejaVu Sans"_s);
    font.setPixelSize(int(std::lround(size)));
    font.setHintingPreference(QFont::PreferNoHinting);
    painter.setFont(font);
    painter.setPen(colour(ink));
    painter.drawText(at, text);
}

void drawTextBefore(QPainter &painter, QPointF at, const QString &text, Ink ink, double size)
{
    drawText(painter, at - QPointF(widthOf(text, size), 0), text, ink, size);
}

void drawTextAround(QPainter &painter, QPointF at, const QString &text, Ink ink, double size)
{
    drawText(painter, at - QPointF(widthOf(text, size) / 2, 0), text, ink, size);
}

void drawLine(QPainter &painter, QPointF from, QPointF to, Ink ink, double width)
{
    painter.setPen(QPen(colour(ink), width));
    painter.drawLine(from, to);
}

/// Parallel lines through a rectangle, from the left to the right edge, rising or falling by their length.
static void addLines(QPainterPath &path, const QRectF &place, bool rising)
{
    constexpr double distance = 6;
    for (double at = -place.height() + distance / 2; at < place.width(); at += distance) {
        // Where x - left runs from `at` on, y runs from the bottom (or top) on.
        const double begin = std::max(at, 0.0);
        const double end = std::min(at + place.height(), place.width());
        if (end <= begin)
            continue;
        const auto height = [&](double x) { return rising ? place.bottom() - (x - at) : place.top() + (x - at); };
        path.moveTo(place.left() + begin, height(begin));
        path.lineTo(place.left() + end, height(end));
    }
}

static void addDots(QPainterPath &path, const QRectF &place)
{
    constexpr double distance = 5;
    for (double y = place.top() + distance / 2; y < place.bottom() - 1; y += distance) {
        for (double x = place.left() + distance / 2; x < place.right() - 1; x += distance)
            path.addRect(QRectF(x, y, 1, 1));
    }
}

void drawBar(QPainter &painter, const QRectF &bar, Ink ink, Pattern pattern, Ink lines)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour(ink));
    painter.drawRect(bar);
    QPainterPath path;
    if (pattern == Pattern::Rising || pattern == Pattern::Crossed)
        addLines(path, bar, true);
    if (pattern == Pattern::Falling || pattern == Pattern::Crossed)
        addLines(path, bar, false);
    if (pattern == Pattern::Dotted)
        addDots(path, bar);
    if (path.isEmpty())
        return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour(lines), 1));
    painter.drawPath(path);
}

void drawShade(QPainter &painter, const QRectF &place, double share)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(shade(share));
    painter.drawRect(place);
}

} // namespace study
