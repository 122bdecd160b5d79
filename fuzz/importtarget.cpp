// A pack is imported into a project: it can add personas and tags, and do nothing else.

#include "fuzz/filestage.h"
#include "fuzz/promises.h"
#include "fuzz/targets.h"

#include <algorithm>

using namespace Qt::StringLiterals;

static bool isOfPersonas(const QString &table)
{
    return table == "personas"_L1 || table == "tags"_L1 || table == "persona_tags"_L1;
}

/// True where all rows are still there.
static bool holds(const QStringList &now, const QStringList &before)
{
    return std::ranges::all_of(before, [&now](const QString &row) { return now.contains(row); });
}

void fuzzImport(QByteArrayView input)
{
    FileStage &stage = FileStage::get();
    // The last byte says whether the project is a new one.
    const bool fresh = !input.isEmpty() && input.back() == 'N';
    if (fresh)
        stage.newProject();
    const Contents before = fresh ? stage.contents() : stage.earlier();
    stage.write(FileKind::Pack, input);
    stage.callWithHostile("importPack");
    stage.checkLeftovers();
    const Contents after = stage.contents();
    for (auto table = before.cbegin(); table != before.cend(); ++table) {
        const QStringList now = after.value(table.key());
        promise(isOfPersonas(table.key()) ? holds(now, table.value()) : now == table.value(),
                "an import only adds personas and tags", table.key());
    }
    if (!stage.wasBounded())
        stage.checkViews();
    if (fresh)
        stage.checkEarlierProject();
    else
        stage.restoreEarlierPersonas();
}
