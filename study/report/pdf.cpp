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

/// Puts a fixed moment behind a mark, of the length that the time has there, so that nothing moves.
static void fixTime(QByteArray &pdf, const QByteArray &mark, const QByteArray &moment, char end)
{
    const qsizetype found = pdf.indexOf(mark);
    const qsizetype from = found + mark.size();
    const qsizetype to = found < 0 ? -1 : pdf.indexOf(end, from);
    for (qsizetype at = from; at < to; ++at) {
        const bool isDigit = pdf.at(at) >= '0' && pdf.at(at) <= '9';
        if (at - from < moment.size())
            pdf[at] = moment.at(at - from);
        else if (isDigit)
            pdf[at] = '0';
        else if (pdf.at(at) == '-')
            pdf[at] = '+';
    }
}

/// The writer stamps the time of the making, and takes no other.
static void takeTimeOut(QByteArray &pdf)
{
    for (const char *mark : {"/CreationDate (D:", "/ModDate (D:"})
        fixTime(pdf, mark, "20000101000000", ')');
    for (const char *mark : {"xmp:CreateDate=\"", "xmp:ModifyDate=\"", "xmp:MetadataDate=\""})
        fixTime(pdf, mark, "2000-01-01T00:00:00", '"');
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
