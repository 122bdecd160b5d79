#pragma once

#include <QJsonArray>
#include <QStringList>

/// The text of questions.labels for a list of labels: a JSON array of strings without white space between tokens.
QString encodeLabels(const QStringList &labels);

/// The array that questions.labels holds, its elements as they are. A text that is no JSON array gives an empty one.
QJsonArray labelArray(const QString &encoded);

/// The labels that questions.labels holds. An element that is no string gives an empty label.
QStringList decodeLabels(const QString &encoded);
