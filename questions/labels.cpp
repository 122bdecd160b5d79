#include "questions/labels.h"

#include <QJsonDocument>

QString encodeLabels(const QStringList &labels)
{
    return QString::fromUtf8(QJsonDocument(QJsonArray::fromStringList(labels)).toJson(QJsonDocument::Compact));
}

QJsonArray labelArray(const QString &encoded)
{
    return QJsonDocument::fromJson(encoded.toUtf8()).array();
}

QStringList decodeLabels(const QString &encoded)
{
    QStringList labels;
    const QJsonArray array = labelArray(encoded);
    for (const QJsonValueConstRef label : array)
        labels.append(label.toString());
    return labels;
}
