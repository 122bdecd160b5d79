#include "tests/docs/markdown.h"

#include "tests/support/sidedatabase.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// The lines of a document by what they are.
struct Parts
{
    QStringList code;
    QStringList headings;
    QString prose; ///< paragraphs in one line each, as a backtick may have its fellow on the next one
};

Parts partsOf(const QString &text)
{
    Parts parts;
    bool fenced = false;
    bool indented = false;
    bool afterBlank = true;
    for (const auto lines = text.split(u'\n'); const QString &line : lines) {
        const bool blank = line.trimmed().isEmpty();
        indented = line.startsWith("    "_L1) && (indented || afterBlank);
        if (line.trimmed().startsWith("```"_L1))
            fenced = !fenced;
        else if (fenced || indented)
            parts.code << line;
        else if (line.startsWith(u'#'))
            parts.headings << line;
        else
            parts.prose += blank ? u"\n"_s : line.trimmed() + u' ';
        afterBlank = blank;
    }
    return parts;
}

/// The name that code hosts give to a heading.
QString anchorOf(const QString &heading)
{
    static const QRegularExpression dropped(u"[^\\w\\- ]"_s, QRegularExpression::UseUnicodePropertiesOption);
    QString text = heading.section(u' ', 1).trimmed().toLower();
    return text.remove(dropped).replace(u' ', u'-');
}

QStringList allMatches(const QRegularExpression &expression, const QString &text, int group)
{
    QStringList found;
    for (const QRegularExpressionMatch &match : expression.globalMatch(text))
        found << match.captured(group);
    return found;
}

} // namespace

Markdown::Markdown(const QString &where, const QString &text)
    : path(where)
{
    const Parts parts = partsOf(text);
    static const QRegularExpression span(u"(`+)(.+?)\\1"_s);
    spans = allMatches(span, parts.prose, 2);
    lines = parts.code;
    // What stands in a span links to nothing.
    const QString prose = QString(parts.prose).replace(span, u"code"_s);
    static const QRegularExpression picture(u"!\\[[^\\]]*\\]\\(([^)\\s]+)[^)]*\\)|<img[^>]*src=\"([^\"]+)\""_s);
    static const QRegularExpression link(u"\\[[^\\]]*\\]\\(([^)\\s]+)[^)]*\\)"_s);
    static const QRegularExpression reference(u"^\\[[^\\]]+\\]: +(\\S+)"_s, QRegularExpression::MultilineOption);
    pictures = allMatches(picture, prose, 1) + allMatches(picture, prose, 2);
    pictures.removeAll(QString());
    targets = allMatches(link, prose, 1) + allMatches(reference, prose, 1) + pictures;
    targets.removeDuplicates();
    for (const QString &heading : parts.headings) {
        const QString anchor = anchorOf(heading);
        const qsizetype before = anchors.count(anchor);
        anchors << (before == 0 ? anchor : u"%1-%2"_s.arg(anchor).arg(before));
    }
}

Markdown Markdown::read(const QString &path)
{
    const QByteArray bytes = readBytes(path);
    if (bytes.isEmpty())
        QTest::qFail(qUtf8Printable(path + " can't be read"_L1), __FILE__, __LINE__);
    return {path, QString::fromUtf8(bytes)};
}
