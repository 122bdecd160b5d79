#pragma once

#include "study/check/findings.h"

#include <optional>

// What a check comes to, and how it is told.

namespace study {

/// What is known besides the project.
struct CheckSettings
{
    TokenRates rates;
    int damagedLines = 0; ///< of the record that the rates are from
    std::optional<Prices> prices = {};
    bool bridged = false; ///< orrinet-bridge is used
    qint64 context = 0;   ///< tokens, 0 where it is not looked at
};

struct CheckResult
{
    CheckSettings settings;
    QList<AnswerSize> sizes = {}; ///< by question
    RunCount count = {};
    Outgrown context = {};
    QList<Finding> findings = {}; ///< they point into the project

    bool isBlocked() const { return !findings.isEmpty() && findings.constFirst().blocks; }
};

CheckResult checkProject(const Project &project, const CheckSettings &settings);

/// A short report for people.
QString checkText(const Project &project, const CheckResult &result);

/// The whole result as a JSON object, whose keys --help tells.
QByteArray checkJson(const Project &project, const CheckResult &result);

} // namespace study
