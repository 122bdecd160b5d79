#pragma once

#include <QColor>
#include <QString>

#include <array>

// The colours of drawings: on paper and in a light window as they stand, in a dark window each one's counterpart.

namespace study {

enum class Ink { Text, Faint, Line, Paper, Bar, BarFaint, Other, Against, AgainstFaint, Middle };

QColor colour(Ink ink);

/// From 0 (the paper) to 1, in steps that differ in light and dark too.
QColor shade(double share);
/// The text that can be read on that shade.
Ink inkOn(double share);

/// The rules by which a drawing as SVG turns dark with its window.
QString darkRules();

} // namespace study
