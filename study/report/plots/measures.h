#pragma once

#include "study/report/document.h"

namespace study {

// How rows of a drawing are laid out: a label, its mark, and its value.
inline constexpr double rowHeight = 26;
inline constexpr double labelWidth = 210;
inline constexpr double valueWidth = 130;
inline constexpr double markRoom = figureWidth - labelWidth - valueWidth;

} // namespace study
