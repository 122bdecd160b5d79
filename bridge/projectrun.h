#pragma once

#include "bridge/answerfile.h"

#include <QList>
#include <QObject>

namespace bridge {

class Bridge;
class PersonaRun;

/// A run without a window: takes the personas of a project one after the other, several at a time, and stores each
/// answer in the file before that persona's next request goes out.
class ProjectRun : public QObject
{
    Q_OBJECT

public:
    /// The bridge must hold what it refuses.
    ProjectRun(AnswerFile *file, Bridge *bridge, int jobs, QObject *parent = nullptr);

    void start();
    /// Answers that came and could not be stored.
    qsizetype unstored() const { return lost; }

Q_SIGNALS:
    /// All personas are through, or the bridge has stopped and nothing is under way any more.
    void ended();

private:
    void takeNext();
    void begin(qint64 persona);
    void leave(PersonaRun *run);
    void storeAnswers();
    void endIfIdle();

    AnswerFile *file;
    Bridge *bridge;
    int jobs;
    QList<qint64> personas;
    qsizetype next = 0;
    QList<PersonaRun *> active;
    qsizetype idle = 0; ///< of them: their request was refused, or they are through and their answers can't be stored
    qsizetype lost = 0;
    bool over = false;
};

} // namespace bridge
