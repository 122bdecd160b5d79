// Steps on persona packs.

#include "tests/app/eventdriver.h"
#include "tests/app/eventviews.h"
#include "tests/support/modal.h"
#include "tests/support/sidedatabase.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>

using namespace Qt::StringLiterals;

namespace {

enum Choice { Replace, Append, AppendToo, Cancel };

} // namespace

bool EventDriver::performOnPacks(const Step &step)
{
    switch (step.act) {
    case Act::ImportPack:
    case Act::ImportByMenu:
        importPack(step, step.act == Act::ImportByMenu);
        return true;
    case Act::ExportPack:
    case Act::ExportByMenu:
        exportPack(step, step.act == Act::ExportByMenu);
        return true;
    case Act::ShowPack:
        showPack(step);
        return true;
    default:
        return false;
    }
}

/// A pack, more often than not.
QString EventDriver::pathToImport(const Step &step)
{
    if (step.how % 7 == 0)
        return stage.path(u"no folder/p.ornk"_s);
    return packs.at(step.which % packs.size());
}

void EventDriver::importPack(const Step &step, bool byMenu)
{
    const QString path = byMenu ? packs.at(step.which % packs.size()) : pathToImport(step);
    const int choice = step.how % 4;
    bool asksFor = stage.count(u"personas"_s) > 0;
    bool asked = false;
    const Answer choosePath = [&](QWidget *dialog) {
        asksFor = stage.count(u"personas"_s) > 0;
        enterPath(dialog, path);
    };
    const Answer chooseMode = [&](QWidget *box) {
        asked = true;
        pressButton(box, choice == Replace ? u"Replace"_s : choice == Cancel ? u"Cancel"_s : u"Append"_s);
    };
    if (byMenu)
        answering({after(step, choosePath), chooseMode}, [this] { stage.action(u"Import Pack"_s)->trigger(); });
    else
        answering({after(step, chooseMode)}, [&] { stage.call("importPack", path); });
    if (asked != asksFor)
        checks.complain(u"the import has asked or has not"_s);
    if (asked && choice == Cancel)
        checks.after({});
    else
        checks.after(imported(path, asked, choice));
}

/// What an attempt on a pack has to lead to.
Effect EventDriver::imported(const QString &path, bool asked, int choice)
{
    Effect effect{.tables = {u"personas"_s, u"tags"_s, u"persona_tags"_s}};
    if (asked && choice == Replace) {
        effect.tables << u"responses"_s;
        if (stage.count(u"responses"_s) > 0)
            checks.complain(u"answers are left of replaced personas"_s);
    }
    effect.warnings = packWarnings(path);
    if (!effect.warnings.isEmpty())
        return effect;
    SideDatabase pack(path);
    const QStringList there = stage.column(u"SELECT uuid FROM personas"_s);
    for (const QStringList uuids = pack.column(u"SELECT uuid FROM personas"_s); const QString &uuid : uuids) {
        if (!there.contains(uuid))
            checks.complain(u"a persona of the pack is not there"_s);
    }
    expected.dirty = true;
    effect.refreshed = Refreshed::Project;
    return effect;
}

void EventDriver::exportPack(const Step &step, bool byMenu)
{
    const bool over = step.how % 3 == 0;
    // The first two are needed as they are.
    const bool hasOwn = packs.size() > 2;
    const QString path = over && hasOwn ? packs.at(2 + (step.which % (packs.size() - 2)))
                                        : stage.path(u"exported%1.ornk"_s.arg(++filesMade));
    const Answer choosePath = [&](QWidget *dialog) { enterPath(dialog, path); };
    const Answer replace = [](QWidget *box) { answerBox(box, QMessageBox::Yes); };
    bool exported = true;
    if (byMenu)
        answering({after(step, choosePath), replace}, [this] { stage.action(u"Export Pack"_s)->trigger(); });
    else
        quietly([&] { exported = stage.result("exportPackToFile", path); });
    if (!packs.contains(path) && packs.size() < 5)
        packs.append(path);
    {
        SideDatabase pack(path);
        const QStringList packed = pack.column(u"SELECT uuid FROM personas"_s);
        for (const QStringList uuids = stage.column(u"SELECT uuid FROM personas"_s); const QString &uuid : uuids)
            exported = exported && packed.contains(uuid);
    }
    if (!exported)
        checks.complain(u"the export is not complete"_s);
    checks.after({});
}

void EventDriver::showPack(const Step &step)
{
    const QString path = pathToImport(step);
    expected.packPath = path;
    quietly([&] { stage.call("loadPack", path); });
    checks.after({.refreshed = Refreshed::Pack, .warnings = packWarnings(path)});
}

/// What is logged of a pack, none where it can be opened.
QStringList EventDriver::packWarnings(const QString &path)
{
    return QFileInfo(path).dir().exists() ? QStringList() : QStringList{u"failed to open pack"_s};
}
