#pragma once

class QString;
class QWidget;

/// The texts that a window shows, a line for each widget, cells and titles of tables too: what a reader of its picture
/// is meant to find there, and what tells that the picture is not of today whatever its pixels look like.
QString shownTexts(const QWidget *window);
