#include "study/export/json.h"

#include "study/export/format.h"

#include <QIODevice>

#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

QByteArray jsonText(const QString &text)
{
    QByteArray json = "\"";
    for (const char byte : text.toUtf8()) {
        if (byte == '"' || byte == '\\')
            json += '\\';
        if (byte == '\n')
            json += "\\n";
        else if (uchar(byte) < 0x20)
            json += "\\u00" + QByteArray::number(uchar(byte), 16).rightJustified(2, '0');
        else
            json += byte;
    }
    return json + '"';
}

static QByteArray jsonValue(const Value &value, const QString &column, Losses &losses)
{
    if (const auto *number = std::get_if<double>(&value)) {
        const QString text = numberText(*number);
        return std::isfinite(*number) ? text.toLatin1() : jsonText(text);
    }
    if (const auto *text = std::get_if<QString>(&value))
        return jsonText(cleaned(*text, column, losses));
    return "null";
}

void writeJson(QIODevice &out, const Table &table, Losses &losses)
{
    QByteArrayList keys;
    for (const Column &column : table.columns)
        keys << jsonText(column.name) + ':';
    out.write("[");
    for (qsizetype row = 0; row < table.rows; ++row) {
        QByteArrayList members;
        const QList<Value> values = table.row(row);
        for (qsizetype column = 0; column < values.size(); ++column)
            members << keys.at(column) + jsonValue(values.at(column), table.columns.at(column).name, losses);
        out.write((row == 0 ? "\n{" : ",\n{") + members.join(',') + '}');
    }
    out.write("\n]");
}

} // namespace study
