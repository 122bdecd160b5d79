#include "personas/tagtext.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

QStringList splitTags(const QString &text)
{
    static const QRegularExpression separators(u"[,\\s]+"_s);
    return text.split(separators, Qt::SkipEmptyParts);
}

QString joinTags(const QStringList &names)
{
    return names.join(", "_L1);
}
