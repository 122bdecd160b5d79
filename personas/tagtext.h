#pragma once

#include <QStringList>

/// Cuts the text of a persona's tags at commas and white space; empty pieces are dropped, repeated ones stay.
QStringList splitTags(const QString &text);

/// The one line in which tags are shown for editing: names joined by a comma and a blank.
QString joinTags(const QStringList &names);
