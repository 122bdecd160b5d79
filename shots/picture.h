#pragma once

#include <QSize>

class QImage;
class QString;
class QWidget;

/// The picture of a widget in its top left corner; what is left of the size has the colour of a window. Null
/// where the widget is larger. It carries the texts that are shown as its description.
QImage pictureOf(QWidget *widget, const QSize &size);

/// Writes a PNG file of the picture's 256 commonest colours, which is about a third of one with all of them; the few
/// pixels of others get the nearest. False where it can't be written.
bool savePicture(const QImage &picture, const QString &path);
