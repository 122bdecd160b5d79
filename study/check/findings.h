#pragma once

#include "study/check/requests.h"
#include "study/check/tokens.h"
#include "study/project.h"

#include <QStringList>

// What is wrong with a project, or may be. What blocks is looked for among the pairs that are open alone: it would cost
// money or leave pairs open.

namespace study {

struct Finding
{
    QString kind = {}; ///< the word for it in JSON
    bool blocks = false;
    QString text = {};                ///< one sentence, without a full stop
    int question = 0;                 ///< its number; 0 where it is about none
    const Persona *persona = nullptr; ///< of the project; null where it is about none
    qint64 count = 0;                 ///< of answers, personas or requests; 0 where nothing is counted
    QStringList details = {};         ///< the texts that it names, whole
};

/// All findings, those that block first, then by kind, question and persona.
/// @p bridged tells that orrinet-bridge is used; then a format that the hosted service refuses is none.
QList<Finding> findings(const Project &project, const PairMap &pairs, bool bridged, const Outgrown &context);

/// The words for all kinds, in the order of findings().
QStringList findingKinds();

/// The sentences for people: those of one kind in one sentence where there are more than three.
QStringList sentences(const QList<Finding> &findings);

// Parts of the above, each in a file of its own.
QList<Finding> questionFindings(const Project &project, const PairMap &pairs, bool bridged);
QList<Finding> personaFindings(const Project &project, const PairMap &pairs);
QList<Finding> answerFindings(const Project &project, const PairMap &pairs);

} // namespace study
