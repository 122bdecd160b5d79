#include "tests/docs/page.h"

#include "tests/support/sidedatabase.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString withoutMarks(const QString &heading)
{
    static const QRegularExpression marks(u"^#+ "_s);
    return QString(heading).remove(marks);
}

QStringList cellsOf(const QString &line)
{
    QStringList cells = line.split(u'|').mid(1);
    cells.removeLast();
    for (QString &cell : cells)
        cell = cell.trimmed();
    return cells;
}

} // namespace

Page::Page(const QString &name)
    : lines(QString::fromUtf8(readBytes(QStringLiteral(ORRINET_SOURCE_FOLDER) + "/docs/"_L1 + name)).split(u'\n'))
{
    if (lines.size() < 2)
        QTest::qFail(qUtf8Printable(name), __FILE__, __LINE__);
}

QList<QStringList> Page::table(const QString &heading, const QString &firstColumn) const
{
    QList<QStringList> rows;
    bool isBelow = false;
    bool isInside = false;
    for (const QString &line : lines) {
        if (line.startsWith(u'#'))
            isBelow = withoutMarks(line) == heading;
        if (isInside && !line.startsWith(u'|'))
            break;
        if (isInside)
            rows << cellsOf(line);
        isInside = isInside || (isBelow && line.startsWith("| "_L1 + firstColumn + " |"_L1));
    }
    if (rows.size() < 2)
        QTest::qFail(qUtf8Printable(heading + ": "_L1 + firstColumn), __FILE__, __LINE__);
    // The first is the rule below the head.
    return rows.mid(1);
}

QStringList Page::names(const QString &heading, const QString &firstColumn) const
{
    QStringList all;
    for (const auto rows = table(heading, firstColumn); const QStringList &row : rows)
        all << codeIn(row.value(0));
    return all;
}

QString Page::block(const QString &file) const
{
    static const QRegularExpression comment(u"^(--|#) "_s);
    for (qsizetype fence = 0; fence + 1 < lines.size(); ++fence) {
        if (!lines.at(fence).startsWith("```"_L1) || QString(lines.at(fence + 1)).remove(comment) != file)
            continue;
        const qsizetype end = lines.indexOf(u"```"_s, fence + 1);
        return lines.mid(fence + 1, end - fence - 1).join(u'\n') + u'\n';
    }
    QTest::qFail(qUtf8Printable(file), __FILE__, __LINE__);
    return {};
}

QStringList codeIn(const QString &text)
{
    static const QRegularExpression code(u"`([^`]+)`"_s);
    QStringList found;
    for (const QRegularExpressionMatch &match : code.globalMatch(text))
        found << match.captured(1);
    return found;
}
