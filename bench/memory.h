#pragma once

#include <QByteArrayView>

// What this process holds of the machine, as far as the system tells; 0 where it does not.

/// The bytes that are allocated from the C library.
double allocated();

/// A line of the process's status that tells a size, such as "VmHWM:", in bytes; of another process where one is named.
double statusBytes(QByteArrayView name, qint64 process = 0);

/// The files, sockets and the like that are open.
int openDescriptors();
