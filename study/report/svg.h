#pragma once

#include <QString>

namespace study {

struct Figure;

/// A figure as an <svg> element that stands within HTML, with its title and its description; the number makes their
/// ids. Colours follow darkRules().
QString toSvg(const Figure &figure, int number);

} // namespace study
