// Steps on project files.

#include "tests/app/eventdriver.h"
#include "tests/app/eventviews.h"
#include "tests/support/modal.h"
#include "tests/support/sidedatabase.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>

using namespace Qt::StringLiterals;

bool EventDriver::performOnFiles(const Step &step)
{
    switch (step.act) {
    case Act::NewProject:
        newProject();
        return true;
    case Act::OpenFile:
        openFile(step);
        return true;
    case Act::OpenByMenu:
        openByMenu(step);
        return true;
    case Act::SaveFile:
        saveFile(step);
        return true;
    case Act::SaveByMenu:
        saveByMenu(step, u"Save"_s);
        return true;
    case Act::SaveAs:
        saveByMenu(step, u"Save As"_s);
        return true;
    default:
        return false;
    }
}

void EventDriver::newProject()
{
    quietly([this] { stage.action(u"New Project"_s)->trigger(); });
    expected.dirty = false;
    expected.dense = true;
    expected.projectPath.clear();
    for (const QString &table : projectTables()) {
        if (stage.count(table) != (table == "boilerplate"_L1 ? 1 : 0))
            checks.complain(u"a new project has rows in "_s + table);
    }
    checks.after({.tables = projectTables(), .refreshed = Refreshed::Project});
}

/// One that was saved here, more often than not; otherwise one that is no project, one that can't be, one not there.
QString EventDriver::pathToOpen(const Step &step)
{
    if (step.how % 5 != 0 && !savedFiles.isEmpty())
        return savedFiles.at(step.which % savedFiles.size()).path;
    switch (step.which % 4) {
    case 0:
        return writeBytes(stage.path(u"junk.ormt"_s), QByteArray(4096, 'j'));
    case 1:
        return stage.path(u"no folder/p.ormt"_s);
    default:
        return stage.path(u"empty%1.ormt"_s.arg(++filesMade));
    }
}

void EventDriver::openFile(const Step &step)
{
    const QString path = pathToOpen(step);
    const bool asks = expected.dirty;
    const bool agrees = step.meanwhile % 4 != 0;
    const int came = answering(
        {after(step, [agrees](QWidget *box) { answerBox(box, agrees ? QMessageBox::Yes : QMessageBox::No); })},
        [&] { stage.call("openProjectFromFile", path); });
    if ((came == 1) != asks)
        checks.complain(u"opening has asked or has not"_s);
    if (asks && !agrees)
        checks.after({});
    else
        opened(path);
}

void EventDriver::openByMenu(const Step &step)
{
    const QString path = savedFiles.isEmpty() ? writeBytes(stage.path(u"junk.ormt"_s), QByteArray(4096, 'j'))
                                              : savedFiles.at(step.which % savedFiles.size()).path;
    const bool chooses = step.how % 5 != 0;
    const bool agrees = step.how % 3 != 0;
    bool dirtyBefore = false;
    const Answer choose = [&](QWidget *dialog) {
        dirtyBefore = expected.dirty;
        if (chooses)
            enterPath(dialog, path);
    };
    const Answer agree = [&](QWidget *box) {
        if (!expected.dirty)
            checks.complain(u"opening has asked about no changes"_s);
        answerBox(box, agrees ? QMessageBox::Yes : QMessageBox::No);
    };
    const int came = answering({after(step, choose), agree}, [this] { stage.action(u"Open Project"_s)->trigger(); });
    if (came == 0 || (came == 1 && chooses && dirtyBefore))
        checks.complain(u"opening has not asked"_s);
    if (!chooses || (came == 2 && !agrees))
        checks.after({});
    else
        opened(path);
}

/// What an attempt on a file has to lead to.
void EventDriver::opened(const QString &path)
{
    if (!QFileInfo(path).dir().exists()) {
        checks.after({.warnings = {u"failed to open project"_s}});
        return;
    }
    expected.dense = true;
    if (path.endsWith("junk.ormt"_L1)) {
        // The former project is given up before the file turns out to be none.
        for (const QString &table : projectTables()) {
            if (stage.count(table) != 0)
                checks.complain(u"rows are left in "_s + table);
        }
        expected.hasQuestions = false;
        checks.after({.tables = projectTables(), .warnings = {u"file is not a database"_s}});
        return;
    }
    ++counts.opened;
    expected.dirty = false;
    expected.projectPath = path;
    expected.dense = isDense(stage);
    for (const SavedFile &file : std::as_const(savedFiles)) {
        if (file.path == path && everyRow(stage.database()) != file.rows)
            checks.complain(u"the opened project is not what was saved"_s);
    }
    checks.after({.tables = projectTables(), .refreshed = Refreshed::Project});
}

/// SQLite writes to a file that is not there, or empty.
bool EventDriver::canBeWritten(const QString &path)
{
    const QFileInfo file(path);
    return file.dir().exists() && file.size() == 0;
}

void EventDriver::saveFile(const Step &step)
{
    const bool again = step.how % 5 == 0 && !savedFiles.isEmpty();
    const QString path =
        again ? savedFiles.at(step.which % savedFiles.size()).path : stage.path(u"project%1.ormt"_s.arg(++filesMade));
    const bool fits = canBeWritten(path);
    bool written = false;
    quietly([&] { written = stage.result("saveProjectToFile", path); });
    if (written != fits)
        checks.complain(u"saving says that it is done or not"_s);
    saved(path, fits);
}

void EventDriver::saveByMenu(const Step &step, const QString &entry)
{
    const bool asks = entry != "Save"_L1 || expected.projectPath.isEmpty();
    const bool over = step.how % 4 == 0 && !savedFiles.isEmpty();
    const bool chooses = step.how % 5 != 1;
    const bool replaces = step.meanwhile % 2 == 0;
    const QString path = !asks  ? expected.projectPath
                         : over ? savedFiles.at(step.which % savedFiles.size()).path
                                : stage.path(u"project%1.ormt"_s.arg(++filesMade));
    const bool fits = canBeWritten(path);
    const Answer choose = [&](QWidget *dialog) {
        if (chooses)
            enterPath(dialog, path);
    };
    const Answer replace = [replaces](QWidget *box) { answerBox(box, replaces ? QMessageBox::Yes : QMessageBox::No); };
    const int came = answering({after(step, choose), replace}, [&] { stage.action(entry)->trigger(); });
    if (came != (asks ? (chooses && over ? 2 : 1) : 0))
        checks.complain(u"%1 dialogs of saving"_s.arg(came));
    if (asks && (!chooses || (over && !replaces)))
        checks.after({});
    else
        saved(path, fits);
}

void EventDriver::saved(const QString &path, bool fits)
{
    if (!fits) {
        checks.after({.warnings = {u"vacuum into failed"_s}});
        return;
    }
    ++counts.saved;
    expected.dirty = false;
    expected.projectPath = path;
    QStringList rows = everyRow(stage.database());
    if (everyRow(SideDatabase(path).database()) != rows)
        checks.complain(u"the file is not what the project is"_s);
    // A file without the row is opened with the one that stands for none.
    if (stage.count(u"boilerplate"_s) == 0)
        rows.insert(rows.indexOf(u"boilerplate"_s) + 1, EventChecks::defaultBoilerplate);
    savedFiles.append({.path = path, .rows = rows});
    // Without a question model the refresh goes further.
    checks.after({.refreshed = expected.hasQuestions ? Refreshed::QuestionList : Refreshed::Questions});
}
