#include "study/report/textdocument.h"

#include "study/report/document.h"
#include "study/report/palette.h"
#include "study/report/wording.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextCursor>
#include <QTextObjectInterface>
#include <QTextTable>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr int figureObject = QTextFormat::UserObject + 1;
constexpr int figureProperty = QTextFormat::UserProperty + 1;
constexpr int bodySize = 12;

} // namespace

/// Draws a figure where a character stands for it.
class FigureDrawer : public QObject, public QTextObjectInterface
{
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)

public:
    FigureDrawer(QList<Figure> all, QObject *parent)
        : QObject(parent)
        , figures(std::move(all))
    {
    }

    QSizeF intrinsicSize(QTextDocument * /*document*/, int /*place*/, const QTextFormat &format) override
    {
        return figures.at(format.intProperty(figureProperty)).size;
    }

    void drawObject(QPainter *painter, const QRectF &rect, QTextDocument * /*document*/, int /*place*/,
                    const QTextFormat &format) override
    {
        const Figure &figure = figures.at(format.intProperty(figureProperty));
        painter->save();
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / figure.size.width(), rect.height() / figure.size.height());
        figure.paint(*painter);
        painter->restore();
    }

private:
    QList<Figure> figures;
};

namespace {

class Typesetter
{
public:
    explicit Typesetter(QTextDocument &document)
        : cursor(&document)
    {
    }

    void operator()(const Heading &heading)
    {
        QTextBlockFormat block = blockFormat(heading.level == 1 ? 0 : 18, 6);
        if (heading.startsPage)
            block.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        QTextCharFormat letters = charFormat(heading.level == 1 ? 20 : heading.level == 2 ? 16 : 13);
        letters.setFontWeight(QFont::Bold);
        put(heading.text, block, letters);
    }

    void operator()(const Paragraph &paragraph)
    {
        QTextBlockFormat block = blockFormat(4, 4);
        QTextCharFormat letters = charFormat(bodySize, paragraph.tone == Tone::Faint ? Ink::Faint : Ink::Text);
        if (paragraph.tone == Tone::Notice) {
            letters.setFontWeight(QFont::Bold);
            block.setBackground(QColor(0xff, 0xf3, 0xd6));
            block.setTopMargin(10);
            block.setBottomMargin(10);
        }
        put(paragraph.text, block, letters);
    }

    void operator()(const Entries &entries)
    {
        for (const Entries::Entry &entry : entries.entries) {
            QTextBlockFormat block = blockFormat(2, 2);
            block.setLeftMargin(16);
            put(u"\u2022 "_s + entry.text, block, charFormat(bodySize));
        }
    }

    void operator()(const Quotation &quotation)
    {
        QTextBlockFormat block = blockFormat(6, 0);
        block.setLeftMargin(24);
        put(quotation.text, block, charFormat(bodySize));
        block.setTopMargin(0);
        block.setBottomMargin(6);
        put(quotation.source, block, charFormat(11, Ink::Faint));
    }

    void operator()(const Verbatim &verbatim)
    {
        QTextBlockFormat block = blockFormat(6, 6);
        block.setLeftMargin(12);
        QTextCharFormat letters = charFormat(11);
        letters.setFontFamilies(QStringList{u"DejaVu Sans Mono"_s});
        put(verbatim.text, block, letters);
    }

    void operator()(const Figure &figure)
    {
        QTextCharFormat place;
        place.setObjectType(figureObject);
        place.setProperty(figureProperty, int(figures.size()));
        figures << figure;
        put(QString(QChar::ObjectReplacementCharacter), blockFormat(8, 2), place);
        put(figure.title, blockFormat(0, 8), charFormat(10, Ink::Faint));
    }

    void operator()(const TextTable &table)
    {
        if (!table.caption.isEmpty())
            put(table.caption, blockFormat(8, 2), charFormat(10, Ink::Faint));
        QTextTableFormat format;
        format.setHeaderRowCount(1);
        format.setCellPadding(3);
        format.setCellSpacing(0);
        format.setBorder(0.5);
        format.setBorderCollapse(true);
        format.setBorderBrush(colour(Ink::Line));
        format.setBottomMargin(8);
        startBlock(blockFormat(0, 0));
        const QTextTable *grid = cursor.insertTable(int(table.rows.size()) + 1, int(table.header.size()), format);
        fillRow(*grid, 0, table, {table.header, false}, true);
        for (int row = 0; row < table.rows.size(); ++row)
            fillRow(*grid, row + 1, table, table.rows.at(row), false);
        cursor.movePosition(QTextCursor::End);
        isFresh = true;
    }

    QList<Figure> figures;

private:
    static QTextBlockFormat blockFormat(double above, double below)
    {
        QTextBlockFormat format;
        format.setTopMargin(above);
        format.setBottomMargin(below);
        return format;
    }

    static QTextCharFormat charFormat(int size, Ink ink = Ink::Text)
    {
        QTextCharFormat format;
        format.setFontFamilies(QStringList{u"DejaVu Sans"_s});
        format.setProperty(QTextFormat::FontPixelSize, size);
        format.setForeground(colour(ink));
        return format;
    }

    /// A document begins with a block, and a table ends with one.
    void startBlock(const QTextBlockFormat &format)
    {
        if (isFresh)
            cursor.setBlockFormat(format);
        else
            cursor.insertBlock(format);
        isFresh = false;
    }

    void put(const QString &text, const QTextBlockFormat &block, const QTextCharFormat &letters)
    {
        startBlock(block);
        cursor.insertText(fitForPage(text).replace(u'\n', QChar::LineSeparator), letters);
    }

    static void fillRow(const QTextTable &grid, int row, const TextTable &table, const TextTable::Row &filling,
                        bool isHeader)
    {
        QTextCharFormat letters = charFormat(10, filling.faint ? Ink::Faint : Ink::Text);
        if (isHeader)
            letters.setFontWeight(QFont::Bold);
        for (int column = 0; column < std::min(int(filling.cells.size()), grid.columns()); ++column) {
            QTextCursor inside = grid.cellAt(row, column).firstCursorPosition();
            QTextBlockFormat block;
            if (column >= table.texts)
                block.setAlignment(Qt::AlignRight | Qt::AlignAbsolute);
            inside.setBlockFormat(block);
            inside.insertText(fitForPage(filling.cells.at(column)).replace(u'\n', QChar::LineSeparator), letters);
        }
    }

    QTextCursor cursor;
    bool isFresh = true;
};

} // namespace

std::unique_ptr<QTextDocument> laidOut(const Document &document, QSizeF page)
{
    auto laid = std::make_unique<QTextDocument>();
    laid->setUndoRedoEnabled(false);
    laid->setDocumentMargin(0);
    QTextOption wrapping;
    wrapping.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    laid->setDefaultTextOption(wrapping);
    QFont font(u"DejaVu Sans"_s);
    font.setPixelSize(bodySize);
    laid->setDefaultFont(font);
    Typesetter typesetter(*laid);
    for (const Block &block : document.blocks)
        std::visit(typesetter, block);
    laid->documentLayout()->registerHandler(figureObject, new FigureDrawer(typesetter.figures, laid.get()));
    laid->setPageSize(page);
    return laid;
}

} // namespace study

#include "textdocument.moc"
