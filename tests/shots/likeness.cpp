#include "tests/shots/likeness.h"

#include <QImage>

#include <cstdlib>

/// One block holds about two letters.
static constexpr int blockSize = 16;
/// Of 255. A letter more or less in a block makes 30 or more; Qt 6.11 instead of 6.8 makes less than 15, and that only
/// where it sets a control one pixel off.
static constexpr int sameShade = 20;

static int meanOf(const QImage &grey, int left, int top)
{
    const int right = qMin(left + blockSize, grey.width());
    const int bottom = qMin(top + blockSize, grey.height());
    int sum = 0;
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x)
            sum += grey.constScanLine(y)[x];
    }
    return sum / ((right - left) * (bottom - top));
}

double shareOfOtherBlocks(const QImage &left, const QImage &right)
{
    const QImage one = left.convertToFormat(QImage::Format_Grayscale8);
    const QImage other = right.convertToFormat(QImage::Format_Grayscale8);
    int blocks = 0;
    int different = 0;
    for (int y = 0; y < one.height(); y += blockSize) {
        for (int x = 0; x < one.width(); x += blockSize) {
            ++blocks;
            different += std::abs(meanOf(one, x, y) - meanOf(other, x, y)) > sameShade ? 1 : 0;
        }
    }
    return double(different) / double(blocks);
}

bool isBlank(const QImage &picture)
{
    const QImage inside =
        picture.copy(picture.rect().adjusted(4, 4, -4, -4)).convertToFormat(QImage::Format_Grayscale8);
    QImage plain(inside.size(), QImage::Format_Grayscale8);
    plain.fill(QColor(inside.pixel(0, 0)));
    return shareOfOtherBlocks(inside, plain) == 0;
}
