#include "bridge/projectrun.h"

#include "bridge/bridge.h"
#include "bridge/personarun.h"

using namespace Qt::StringLiterals;

namespace bridge {

ProjectRun::ProjectRun(AnswerFile *target, Bridge *way, int atATime, QObject *parent)
    : QObject(parent)
    , file(target)
    , bridge(way)
    , jobs(atATime)
    , personas(file->personas())
{
    connect(bridge, &Bridge::requestTaken, this, &ProjectRun::storeAnswers);
    connect(bridge, &Bridge::requestRefused, this, [this] {
        ++idle;
        endIfIdle();
    });
    connect(bridge, &Bridge::stopped, this, &ProjectRun::endIfIdle);
}

void ProjectRun::start()
{
    takeNext();
}

/// A persona that has answered everything is through at once, which is why the next one is taken here, in a loop.
void ProjectRun::takeNext()
{
    while (active.size() < jobs && next < personas.size() && bridge->stopReason().isEmpty())
        begin(personas.at(next++));
    endIfIdle();
}

void ProjectRun::begin(qint64 persona)
{
    auto *run = new PersonaRun(this);
    if (!run->fill(*file, persona)) {
        delete run;
        bridge->stop(u"a persona can't be read from the file"_s);
        return;
    }
    active << run;
    connect(run, &PersonaRun::finished, this, [this, run] { leave(run); });
    run->start();
}

void ProjectRun::leave(PersonaRun *run)
{
    storeAnswers();
    if (!run->newAnswers().isEmpty()) {
        // Kept for another try at the end.
        ++idle;
        endIfIdle();
        return;
    }
    active.removeOne(run);
    run->deleteLater();
    QMetaObject::invokeMethod(this, &ProjectRun::takeNext, Qt::QueuedConnection);
}

void ProjectRun::storeAnswers()
{
    QList<StoredAnswer> answers;
    for (PersonaRun *run : std::as_const(active))
        answers += run->newAnswers();
    if (answers.isEmpty())
        return;
    if (!file->store(answers)) {
        lost = answers.size();
        bridge->stop(u"the file can't be written: %1"_s.arg(file->errorText()));
        return;
    }
    lost = 0;
    for (PersonaRun *run : std::as_const(active))
        run->kept();
}

void ProjectRun::endIfIdle()
{
    if (over)
        return;
    const bool stopped = !bridge->stopReason().isEmpty();
    if (stopped ? idle < active.size() : !active.isEmpty() || next < personas.size())
        return;
    over = true;
    storeAnswers();
    Q_EMIT ended();
}

} // namespace bridge
