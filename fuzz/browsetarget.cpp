// A pack is shown in the persona list, and then by one of its tags: the project is not touched by that.

#include "fuzz/filestage.h"
#include "fuzz/promises.h"
#include "fuzz/targets.h"

using namespace Qt::StringLiterals;

void fuzzBrowse(QByteArrayView input)
{
    FileStage &stage = FileStage::get();
    stage.write(FileKind::Pack, input);
    const qint64 changes = stage.value(u"SELECT total_changes()"_s).toLongLong();
    stage.callWithHostile("loadPack");
    stage.checkLeftovers();
    stage.checkPersonaList();
    if (!stage.wasBounded()) {
        stage.chooseTag(input.isEmpty() ? 0 : static_cast<quint8>(input.back()));
        stage.checkLeftovers();
        stage.checkPersonaList();
    }
    promise(stage.value(u"SELECT total_changes()"_s).toLongLong() == changes, "the project is not written to");
}
