#pragma once

#include "study/report/palette.h"

#include <QRectF>
#include <QString>

class QPainter;
class QPointF;

// What all drawings are made of. Places are reckoned without asking a font how wide it is, so that a drawing is the
// same wherever it is made, and leaves room for a reader's other font.

namespace study {

enum class Pattern { Plain, Rising, Falling, Crossed, Dotted };

inline constexpr double textSize = 12;

/// About how wide a text is.
double widthOf(const QString &text, double size = textSize);

/// As much of a text as fits a width, on one line.
QString fitting(const QString &text, double width, double size = textSize);

/// A text whose base line begins here.
void drawText(QPainter &painter, QPointF at, const QString &text, Ink ink = Ink::Text, double size = textSize);
/// A text that ends about here.
void drawTextBefore(QPainter &painter, QPointF at, const QString &text, Ink ink = Ink::Text, double size = textSize);
/// A text with its middle about here.
void drawTextAround(QPainter &painter, QPointF at, const QString &text, Ink ink = Ink::Text, double size = textSize);

void drawLine(QPainter &painter, QPointF from, QPointF to, Ink ink = Ink::Line, double width = 1);

/// A bar that is told from others by its pattern as well as by its colour.
void drawBar(QPainter &painter, const QRectF &bar, Ink ink, Pattern pattern = Pattern::Plain, Ink lines = Ink::Paper);

/// A rectangle in a shade, see shade().
void drawShade(QPainter &painter, const QRectF &place, double share);

} // namespace study
