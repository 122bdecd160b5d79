#pragma once

#include "tests/support/entries.h"
#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/stage.h"

/// Makes a pack of these entries, and gives its path.
template<typename... Entries>
QString packOf(const QString &path, const Entries &...entries)
{
    SideDatabase pack(writePack(path));
    pack.exec(QStringLiteral("BEGIN"));
    enter(pack, entries...);
    pack.exec(QStringLiteral("COMMIT"));
    return path;
}

/// The first column of a query's rows in a file.
QStringList columnIn(const QString &path, const QString &query);

/// The names of a file's personas, sorted.
QStringList namesIn(const QString &path);

/// A pack of four personas: one with two tags, two with one, and one without.
QString writeCoastalPack(const QString &path);

/// The names of the four, sorted.
QStringList coastalNames();

/// The names and the tags in the persona list, "name: tag,tag", all of it sorted.
QStringList shownTags(Stage &stage);

/// Enters two personas and two tags into the project, and shows them. One of the personas is in the coastal pack too.
bool showProject(Stage &stage);

/// Which of the pages that hold a pack's personas is unreadable.
enum class Damage : quint8 { FirstPage, LastPage };

/// Makes a pack that opens and whose tables are there, but of whose personas one page is overwritten.
QString writeDamagedPack(const QString &path, Damage damage);

/// The uuids of the damaged pack in their order.
QStringList damagedPackUuids();
