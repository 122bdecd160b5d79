#pragma once

#include <QList>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <functional>
#include <variant>

class QPainter;

// A report as plain values, which know nothing of the form that it is given: HTML or PDF. Texts are as they came;
// whoever writes them out escapes them.

namespace study {

struct Heading
{
    int level = 1; ///< 1 the document's, 2 a section's, 3 within one
    QString text;
    QString anchor;          ///< what a link leads to, empty where none does
    bool startsPage = false; ///< on paper
};

enum class Tone {
    Plain,
    Notice, ///< not to be overlooked
    Faint,  ///< by the way
};

struct Paragraph
{
    QString text;
    Tone tone = Tone::Plain;
};

/// A list; an entry with an anchor leads there.
struct Entries
{
    struct Entry
    {
        QString text;
        QString anchor;
    };
    QList<Entry> entries;
};

struct TextTable
{
    struct Row
    {
        QStringList cells;
        bool faint = false; ///< too few answers to be read much into
    };
    QString caption;
    QStringList header;
    QList<Row> rows;
    int texts = 1; ///< so many columns, from the left, are texts; the others are numbers
};

/// What somebody said, word for word.
struct Quotation
{
    QString text;
    QString source;
};

/// A text that keeps its lines.
struct Verbatim
{
    QString text;
};

/// A drawing of this size, with what it shows in words.
struct Figure
{
    QString title;
    QString alternative;
    QSizeF size;
    std::function<void(QPainter &)> paint;
};

using Block = std::variant<Heading, Paragraph, Entries, TextTable, Quotation, Verbatim, Figure>;
using Blocks = QList<Block>;

struct Document
{
    QString title;
    Blocks blocks;
};

/// The width of all figures, in the unit of their sizes: a hundredth of an inch.
inline constexpr double figureWidth = 640;

} // namespace study
