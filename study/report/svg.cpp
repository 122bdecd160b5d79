#include "study/report/svg.h"

#include "study/report/document.h"
#include "study/report/wording.h"

#include <QBuffer>
#include <QPainter>
#include <QSvgGenerator>

using namespace Qt::StringLiterals;

namespace study {

/// What the generator draws, without the head that it gives a file.
static QString drawing(const Figure &figure)
{
    QBuffer bytes;
    QSvgGenerator generator;
    generator.setOutputDevice(&bytes);
    generator.setResolution(96);
    generator.setSize(figure.size.toSize());
    generator.setViewBox(QRectF(QPointF(), figure.size));
    {
        QPainter painter(&generator);
        figure.paint(painter);
    }
    const QString file = QString::fromUtf8(bytes.data());
    const qsizetype head = file.indexOf("</defs>"_L1);
    const qsizetype end = file.lastIndexOf("</svg>"_L1);
    return head < 0 || end < head ? QString() : file.sliced(head + 7, end - head - 7).trimmed();
}

QString toSvg(const Figure &figure, int number)
{
    return u"<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" aria-labelledby=\"t%1 d%1\" viewBox=\"0 0 %2 %3\" "
           "fill=\"none\">\n<title id=\"t%1\">%4</title>\n<desc id=\"d%1\">%5</desc>\n%6\n</svg>"_s.arg(
               QString::number(number), QString::number(figure.size.width()), QString::number(figure.size.height()),
               fitForPage(figure.title).toHtmlEscaped(), fitForPage(figure.alternative).toHtmlEscaped(),
               drawing(figure));
}

} // namespace study
