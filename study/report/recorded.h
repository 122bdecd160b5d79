#pragma once

#include "study/report/sections/sections.h"

#include <QString>

#include <variant>

namespace study {

/// What a bridge's record tells of how answers came about, in sentences: which models answered, with which settings,
/// when, and what failed. A record may be of more than one project, and so the sentences speak of the record. Gives one
/// sentence where it can't be read.
std::variant<Recorded, QString> readRecorded(const QString &path);

} // namespace study
