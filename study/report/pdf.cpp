#include "study/report/pdf.h"

#include "study/report/canvas.h"
#include "study/report/document.h"
#include "study/report/textdocument.h"

#include <QBuffer>
#include <QHashSeed>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace study {

/// In 96ths of an inch: 18 mm on A4 of 210 by 297 mm.
static constexpr double sheetMargin = 68;
static constexpr QSizeF sheet{793, 1122};

/// Puts one fixed moment where the file says when it was made: the same length, so that nothing moves.
static void takeTimeOut(QByteArray &pdf)
{
    const QByteArray begin = "/CreationDate (D:";
    const qsizetype from = pdf.lastIndexOf(begin);
    const qsizetype to = from < 0 ? -1 : pdf.indexOf(')', from);
    for (qsizetype at = from + begin.size(); at < to; ++at) {
        if (pdf.at(at) >= '0' && pdf.at(at) <= '9')
            pdf[at] = '0';
        else if (pdf.at(at) == '-')
            pdf[at] = '+';
    }
}

static void drawPages(QPdfWriter &writer, const QTextDocument &laid, QSizeF inner)
{
    QPainter painter(&writer);
    const double scale = double(writer.logicalDpiX()) / 96;
    painter.scale(scale, scale);
    for (int page = 0; page < laid.pageCount(); ++page) {
        if (page > 0)
            writer.newPage();
        const double top = double(page) * inner.height();
        painter.save();
        painter.translate(sheetMargin, sheetMargin - top);
        // A text document is drawn through no const interface, and changes nothing.
        const_cast<QTextDocument &>(laid).drawContents(&painter, QRectF(0, top, inner.width(), inner.height()));
        painter.restore();
        drawText(painter, {sheetMargin, sheet.height() - 36}, u"Simulated answers, no evidence of what people think"_s,
                 Ink::Faint, 10);
        drawTextBefore(painter, {sheet.width() - sheetMargin, sheet.height() - 36},
                       u"%1 / %2"_s.arg(page + 1).arg(laid.pageCount()), Ink::Faint, 10);
    }
}

QByteArray toPdf(const Document &document)
{
    QHashSeed::setDeterministicGlobalSeed();
    QBuffer bytes;
    bytes.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&bytes);
        writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF()));
        writer.setResolution(1200);
        writer.setTitle(document.title);
        writer.setCreator(u"orrinet-study"_s);
        writer.setDocumentId(QUuid(u"00000000-0000-0000-0000-000000000000"_s));
        const QSizeF inner = sheet - QSizeF(2 * sheetMargin, 2 * sheetMargin);
        drawPages(writer, *laidOut(document, inner), inner);
    }
    QByteArray pdf = bytes.data();
    takeTimeOut(pdf);
    return pdf;
}

} // namespace study
