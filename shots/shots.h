#pragma once

#include <QImage>
#include <QList>
#include <QString>

class Studio;

/// A picture of the guide, by the name of its file without a suffix.
struct Shot
{
    QString name;
    QImage (*take)(Studio &studio);
};

/// All of them, in the order in which the guide shows them; those that need the answers come last.
const QList<Shot> &allShots();
