// A project file is opened: whatever it holds is copied or left out, and nothing of it acts.

#include "fuzz/filestage.h"
#include "fuzz/hostilestatements.h"
#include "fuzz/promises.h"
#include "fuzz/targets.h"

using namespace Qt::StringLiterals;

/// A table comes over whole or not at all.
static void checkRows(const FileStage &stage, const HostileFile &file)
{
    for (const QString &table : hostileTables()) {
        if (table == "boilerplate"_L1 || table == "sqlite_sequence"_L1 || !file.rows.contains(table))
            continue;
        const qint64 arrived = stage.value(u"SELECT COUNT(*) FROM "_s + table).toLongLong();
        promise(arrived == 0 || arrived == file.rows.value(table), "a table comes over whole or not at all",
                u"%1 %2 of %3"_s.arg(table).arg(arrived).arg(file.rows.value(table)));
    }
}

void fuzzProject(QByteArrayView input)
{
    FileStage &stage = FileStage::get();
    const HostileFile &file = stage.write(FileKind::Project, input);
    const bool opened = stage.openHostile();
    stage.checkLeftovers();
    const bool sound = stage.isSound();
    if (opened && sound && !stage.wasBounded()) {
        stage.checkViews();
        checkRows(stage, file);
    }
    if (sound)
        stage.checkEarlierProjectNowAndThen(input);
    else
        stage.checkEarlierProject();
}
