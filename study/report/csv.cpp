#include "study/report/csv.h"

namespace study {

namespace {

class Reader
{
public:
    QList<QStringList> rows;

    void take(QChar character, bool isDoubled)
    {
        if (isQuoted && (character != u'"' || isDoubled))
            field += character;
        else if (character == u'"')
            isQuoted = !isQuoted;
        else if (character == u',')
            endField();
        else if (character == u'\n')
            endRow();
        else if (character != u'\r')
            field += character;
    }

    void endRow()
    {
        if (row.isEmpty() && field.isEmpty())
            return;
        endField();
        rows << row;
        row.clear();
    }

    bool isQuoted = false;

private:
    void endField()
    {
        row << field;
        field.clear();
    }

    QStringList row;
    QString field;
};

} // namespace

QList<QStringList> readCsv(const QString &text)
{
    Reader reader;
    for (qsizetype at = text.startsWith(QChar::ByteOrderMark) ? 1 : 0; at < text.size(); ++at) {
        const bool isDoubled =
            reader.isQuoted && text.at(at) == u'"' && at + 1 < text.size() && text.at(at + 1) == u'"';
        reader.take(text.at(at), isDoubled);
        if (isDoubled)
            ++at;
    }
    reader.endRow();
    return reader.rows;
}

} // namespace study
