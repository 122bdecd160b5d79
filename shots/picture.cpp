#include "shots/picture.h"

#include "shots/shown.h"

#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QWidget>

#include <algorithm>

using namespace Qt::StringLiterals;

/// PNG's own word for it.
static constexpr auto descriptionKey = "Description"_L1;

QImage pictureOf(QWidget *widget, const QSize &size)
{
    if (size.expandedTo(widget->size()) != size)
        return {};
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(widget->palette().color(QPalette::Window));
    QPainter(&picture).drawPixmap(0, 0, widget->grab());
    picture.setText(descriptionKey, shownTexts(widget));
    return picture;
}

static QList<QRgb> commonestColours(const QImage &picture)
{
    QHash<QRgb, int> pixels;
    for (int y = 0; y < picture.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x)
            ++pixels[line[x]];
    }
    QList<QRgb> colours = pixels.keys();
    // Those that are as common stand in one order, too.
    std::ranges::sort(colours, [&pixels](QRgb left, QRgb right) {
        return std::pair(-pixels.value(left), left) < std::pair(-pixels.value(right), right);
    });
    return colours.first(std::min<qsizetype>(colours.size(), 256));
}

bool savePicture(const QImage &picture, const QString &path)
{
    static constexpr int smallest = 0;
    QImage indexed = picture.convertToFormat(QImage::Format_Indexed8, commonestColours(picture));
    indexed.setText(descriptionKey, picture.text(descriptionKey));
    return indexed.save(path, "PNG", smallest);
}
