#include "study/report/textdocument.h"

#include "study/report/document.h"
#include "study/report/palette.h"
#include "study/report/wording.h"

#include <QAbstractTextDocumentLayout>
#include <QHash>
#include <QPainter>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QTextObjectInterface>
#include <QTextTable>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr int figureObject = QTextFormat::UserObject + 1;
constexpr int figureProperty = QTextFormat::UserProperty + 1;
constexpr int keepsProperty = QTextFormat::UserProperty + 2;
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
    /// The blocks of these numbers begin a page.
    Typesetter(QTextDocument &document, const QSet<int> &breaks)
        : cursor(&document)
        , pageStarts(breaks)
    {
    }

    void operator()(const Heading &heading)
    {
        QTextBlockFormat block = blockFormat(heading.level == 1 ? 0 : 18, 6);
        if (heading.startsPage)
            block.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        QTextCharFormat letters = charFormat(heading.level == 1 ? 20 : heading.level == 2 ? 16 : 13);
        letters.setFontWeight(QFont::Bold);
        put(heading.text, keptWithNext(block), letters);
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
        put(quotation.text, keptWithNext(block), charFormat(bodySize));
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
        put(QString(QChar::ObjectReplacementCharacter), keptWithNext(blockFormat(8, 2)), place);
        put(figure.title, blockFormat(0, 8), charFormat(10, Ink::Faint));
    }

    void operator()(const TextTable &table)
    {
        if (!table.caption.isEmpty())
            put(table.caption, keptWithNext(blockFormat(8, 2)), charFormat(10, Ink::Faint));
        QTextTableFormat format;
        format.setHeaderRowCount(1);
        format.setCellPadding(3);
        format.setCellSpacing(0);
        format.setBorder(0.5);
        format.setBorderCollapse(true);
        format.setBorderBrush(colour(Ink::Line));
        startBlock(keptWithNext(blockFormat(0, 0)));
        const QTextTable *grid = cursor.insertTable(int(table.rows.size()) + 1, int(table.header.size()), format);
        fillRow(*grid, 0, table, {table.header, false}, true);
        for (int row = 0; row < table.rows.size(); ++row)
            fillRow(*grid, row + 1, table, table.rows.at(row), false);
        cursor.movePosition(QTextCursor::End);
        leaveRoom();
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

    static QTextBlockFormat keptWithNext(QTextBlockFormat format)
    {
        format.setProperty(keepsProperty, true);
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

    /// The block that a table ends with holds nothing: where a table fills its page, Qt puts it on the edge.
    void leaveRoom()
    {
        QTextBlockFormat room;
        room.setLineHeight(8, QTextBlockFormat::FixedHeight);
        cursor.setBlockFormat(room);
    }

    /// A document begins with a block.
    void startBlock(const QTextBlockFormat &format)
    {
        if (!isFresh)
            cursor.insertBlock();
        isFresh = false;
        cursor.setBlockFormat(format);
        if (pageStarts.contains(cursor.blockNumber())) {
            QTextBlockFormat start;
            start.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
            cursor.mergeBlockFormat(start);
        }
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
    QSet<int> pageStarts;
    bool isFresh = true;
};

/// What Qt tears apart where it cuts a text document into pages: it knows nothing of what belongs together.
class TornBlocks
{
public:
    TornBlocks(const QTextDocument &document, double height)
        : text(document)
        , pageHeight(height)
    {
    }

    /// The first after each block that begins a page; those behind it will lie elsewhere when it is moved.
    QSet<int> first() const
    {
        QSet<int> torn;
        bool isFound = false;
        for (QTextBlock block = text.begin(); block.isValid(); block = block.next()) {
            if (block.blockFormat().pageBreakPolicy() == QTextFormat::PageBreak_AlwaysBefore)
                isFound = false;
            else if (!isFound && isTorn(block)) {
                torn.insert(block.blockNumber());
                isFound = true;
            }
        }
        return torn;
    }

private:
    int pageOf(double y) const { return int(y / pageHeight); }
    double topOf(const QTextBlock &block) const { return text.documentLayout()->blockBoundingRect(block).top(); }

    bool isTorn(const QTextBlock &block) const
    {
        static constexpr double mostMargins = 20;
        const double top = topOf(block);
        // What begins a page can't begin it better, and within a table it is up to its rows.
        return top - (pageOf(top) * pageHeight) > mostMargins && pageOf(top) != pageOf(endOfWhatIsKept(block)) &&
               QTextCursor(block).currentTable() == nullptr;
    }

    /// The end of the first line of what follows, where a block keeps with it.
    double endOfWhatIsKept(QTextBlock block) const
    {
        while (block.blockFormat().boolProperty(keepsProperty) && block.next().isValid())
            block = block.next();
        const QTextLayout *layout = block.layout();
        const double line = layout->lineCount() > 0 ? layout->lineAt(0).naturalTextRect().bottom() : 0;
        return block.text().isEmpty() ? topOf(block) : topOf(block) + line - 1;
    }

    const QTextDocument &text;
    double pageHeight;
};

std::unique_ptr<QTextDocument> typeset(const Document &document, QSizeF page, const QSet<int> &pageStarts)
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
    Typesetter typesetter(*laid, pageStarts);
    for (const Block &block : document.blocks)
        std::visit(typesetter, block);
    laid->documentLayout()->registerHandler(figureObject, new FigureDrawer(typesetter.figures, laid.get()));
    laid->setPageSize(page);
    return laid;
}

} // namespace

std::unique_ptr<QTextDocument> laidOut(const Document &document, QSizeF page)
{
    QSet<int> pageStarts;
    for (;;) {
        // Anew, since a text document whose formats are changed once it is laid out loses what lies behind.
        auto laid = typeset(document, page, pageStarts);
        const QSet<int> torn = TornBlocks(*laid, page.height()).first() - pageStarts;
        if (torn.isEmpty())
            return laid;
        pageStarts += torn;
    }
}

} // namespace study

#include "textdocument.moc"
