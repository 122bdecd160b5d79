#include "study/match.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

QString caselessText(const QString &text)
{
    return text.simplified().toCaseFolded();
}

int matchOne(const QString &text, const QStringList &labels)
{
    if (const qsizetype exact = labels.indexOf(text); exact >= 0)
        return int(exact);
    const QString wanted = caselessText(text);
    int found = -1;
    for (int place = 0; place < labels.size(); ++place) {
        if (caselessText(labels.at(place)) != wanted)
            continue;
        if (found >= 0)
            return -1;
        found = place;
    }
    return found;
}

static void take(Matches &matches, int label, const QString &piece)
{
    if (label >= 0 && !matches.labels.contains(label))
        matches.labels << label;
    else
        matches.unmatched << piece;
}

Matches matchPieces(const QStringList &pieces, const QStringList &labels)
{
    Matches matches;
    for (const QString &piece : pieces)
        take(matches, matchOne(piece, labels), piece);
    return matches;
}

/// Cuts at a separator, and puts together again what is one label: the longest that begins at a place counts.
static Matches matchList(const QString &text, QChar separator, const QStringList &labels)
{
    const auto longest =
        std::max_element(labels.begin(), labels.end(), [separator](const QString &a, const QString &b) {
            return a.count(separator) < b.count(separator);
        });
    const qsizetype most = longest == labels.end() ? 1 : longest->count(separator) + 1;
    QStringList pieces;
    for (const auto all = text.split(separator); const QString &piece : all) {
        if (!piece.trimmed().isEmpty())
            pieces << piece;
    }
    Matches matches;
    for (qsizetype at = 0; at < pieces.size();) {
        qsizetype length = std::min(most, pieces.size() - at);
        int label = -1;
        for (;; --length) {
            label = matchOne(pieces.mid(at, length).join(separator), labels);
            if (label >= 0 || length == 1)
                break;
        }
        take(matches, label, pieces.at(at).trimmed());
        at += length;
    }
    return matches;
}

Matches matchSeveral(const QString &text, const QStringList &labels)
{
    if (const int whole = matchOne(text, labels); whole >= 0)
        return {.labels = {whole}, .unmatched = {}};
    if (const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8()); document.isArray()) {
        QStringList pieces;
        for (const QJsonArray elements = document.array(); const QJsonValue &element : elements)
            pieces << element.toVariant().toString();
        return matchPieces(pieces, labels);
    }
    Matches best{.labels = {}, .unmatched = {text.trimmed()}};
    for (const QChar separator : {u'\n', u';', u','}) {
        if (!text.contains(separator))
            continue;
        Matches matches = matchList(text, separator, labels);
        if (matches.labels.size() > best.labels.size())
            best = std::move(matches);
        if (best.unmatched.isEmpty())
            break;
    }
    return best;
}

} // namespace study
