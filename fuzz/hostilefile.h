#pragma once

#include <QByteArrayView>
#include <QHash>
#include <QString>

class Bytes;

enum class FileKind { Project, Pack };

/// A file made of an input. Its first letter says what it begins as:
///   F  nothing but the bytes that follow
///   P  a project or pack, as the kind is, with some rows; U the same in UTF-16
///   O  the other of the two
///   E  a database without tables; V the same in UTF-16
///   W  as P, with its last changes in a write-ahead log beside it
/// Behind all but F stand letters of what is done to it; fuzz/hostilestatements.cpp tells them.
struct HostileFile
{
    /// The bytes of the file as it was left, and of the log beside it, if any.
    QByteArray content;
    QByteArray log;
    /// Of a project, the rows of those tables that could be counted; empty where the file was damaged afterwards.
    QHash<QString, qint64> rows;
};

/// Writes it to @p path, and the log beside it. It is made in the folder @p workshop.
HostileFile writeHostileFile(const QString &path, const QString &workshop, FileKind kind, Bytes &bytes);
