#pragma once

#include "app/mainwindow.h"
#include "fuzz/hostilefile.h"

#include <QLatin1StringView>
#include <QSqlDatabase>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

class QTableWidget;

/// Rows as texts that tell the types of their values as well, by the name of the table.
using Contents = QMap<QString, QStringList>;

/// One hidden window in test mode, which opens hostile files one after the other, and between them always the same
/// project, the earlier one. It lies in a folder beside the hostile file.
class FileStage
{
public:
    /// The one of this process, made at the first call.
    static FileStage &get();
    static void close();

    /// Writes a hostile file and gives what is in it.
    const HostileFile &write(FileKind kind, QByteArrayView input);
    QString hostilePath() const { return folder.filePath(QStringLiteral("hostile")); }

    /// Calls a slot with the hostile file under watch, with so much work allowed as any harmless file needs many times.
    void callWithHostile(const char *slot);
    bool openHostile();
    void newProject();
    /// Chooses an entry of the tag filter, under watch.
    void chooseTag(int index);

    /// The work allowed was not enough, so that statements failed that would else have gone on.
    bool wasBounded() const { return bounded; }

    /// What has to hold whatever was opened: nothing of the file is left open, the schema is as it was, and no other
    /// file was touched.
    void checkLeftovers();
    /// The persona list is whole, row by row.
    void checkPersonaList();
    /// The lists and the grid show what the project holds.
    void checkViews();
    /// The earlier project opens as it was.
    void checkEarlierProject();
    /// The same for some inputs, since it takes as long as all the rest.
    void checkEarlierProjectNowAndThen(QByteArrayView input);
    /// Takes back what an import has added to the earlier project.
    void restoreEarlierPersonas();

    QSqlDatabase project() const { return QSqlDatabase::database(QStringLiteral("project"), false); }
    QVariant value(const QString &query) const;
    /// False where a damaged file was opened: SQLite copies an index as it stands, whether it fits its table or not.
    bool isSound() const;
    Contents contents() const;
    const Contents &earlier() const { return earlierContents; }

private:
    FileStage();
    void fillEarlierProject();
    void clearTagFilter();
    QString earlierPath() const { return folder.filePath(QStringLiteral("earlier")); }
    QString schema() const;
    void checkFolder();
    void checkGrid();
    void checkCells(const QTableWidget *grid, int row, const QVariant &uuid, const QList<int> &questions);

    template<typename Call>
    void watched(const Call &call);

    QTemporaryDir folder;
    QTemporaryDir workshop;
    MainWindow window;
    HostileFile hostile;
    Contents earlierContents;
    QByteArray earlierBytes;
    QString earlierSchema;
    bool bounded = false;
};
