#pragma once

#include "study/report/document.h"
#include "study/statistics/numbers.h"

#include <QList>
#include <QStringList>

// The drawings of a report. Each gives the same figure for the same values, writes its values out beside their marks,
// and tells them in its alternative text; nothing is told by colour alone. Where there is more than a page holds, the
// rest is summed up in words.

namespace study {

struct Bar
{
    QString label;
    qsizetype count = 0;
};

/// Horizontal bars, one a label, each a share of all.
Figure barsFigure(const QString &title, const QList<Bar> &bars, qsizetype all);

/// The answers of a group on a scale.
struct ScaleRow
{
    QString name;
    QList<qsizetype> counts; ///< one a label of the scale
    bool faint = false;
};

/// Bars of shares that lie side by side around the middle of the scale, one bar a group. The parts are numbered by
/// their place on the scale.
Figure scaleFigure(const QString &title, const QList<ScaleRow> &rows);

/// Columns side by side.
Figure histogramFigure(const QString &title, const QList<Bin> &bins);

/// Shares of a row in columns, dark where they are large, each with its value.
struct HeatRow
{
    QString label;
    QList<double> shares;
};
Figure heatFigure(const QString &title, const QStringList &columns, const QList<HeatRow> &rows);

/// What became of a pair, in the order in which it strikes the eye.
enum class Mark { Done, Open, OutOfList, NotANumber, Unreadable };

/// Rows of marks; a block of several rows and columns becomes one where there are too many for a page. Such a block
/// shows the most frequent mark other than Done where a tenth of it or more is not done.
struct MapSpec
{
    QString title;
    QString rowsName; ///< what a row is, in the plural, which an s makes
    QString columnsName;
    qsizetype rows = 0;
    qsizetype columns = 0;
    std::function<Mark(qsizetype row, qsizetype column)> at;
};
Figure mapFigure(const MapSpec &spec);

/// Two shares of each label, on a line.
struct Dumbbell
{
    QString label;
    double first = 0;
    double second = 0;
};
Figure dumbbellFigure(const QString &title, const QString &first, const QString &second, const QList<Dumbbell> &rows);

} // namespace study
