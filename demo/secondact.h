#pragma once

#include <QStringList>
#include <QTextStream>

class QDir;

/// Takes the survey of a saved project through orrinet-bridge, without a window: first at an endpoint as strict as the
/// hosted service is reported to be, with a record, then from that record, without an endpoint.
class SecondAct
{
public:
    /// @p bridge is the program; the files go to @p folder, in place of what an earlier demo left there.
    SecondAct(const QString &bridge, const QDir &folder, QTextStream &out);

    /// Returns what went wrong.
    QStringList play();

private:
    bool run(const QStringList &arguments);
    bool runAtEndpoint();
    bool runFromRecord();
    QString path(const QString &name) const;

    QString program;
    const QDir &files;
    QTextStream &output;
};
