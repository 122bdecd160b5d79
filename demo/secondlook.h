#pragma once

#include <QStringList>
#include <QTextStream>

class MainWindow;
class QDir;
struct Examples;

/// The files that the demo leaves and takes up again: the project, the pack of its panel, the text of a conversation.
namespace DemoFile {
QString project(const QDir &folder);
QString pack(const QDir &folder);
QString conversation(const QDir &folder);
} // namespace DemoFile

/// Saves the window's project and exports its panel into a folder, in place of what an earlier demo left there.
/// Returns what went wrong.
QStringList saveFiles(MainWindow *window, const QDir &folder);

/// Opens the saved project in a window of another process, reads one conversation back from it, and imports the pack
/// into a new project. Returns what is missing.
QStringList takeSecondLook(MainWindow *window, const QDir &folder, const Examples &examples, QTextStream &out);
