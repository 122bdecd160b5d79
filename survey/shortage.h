#pragma once

#include <QString>

// What a request needs of the system. Qt has no failure for a lack of it: it ends the process, with all answers that
// are not saved yet.

/// Why no request can be made for want of file descriptors, null where there are enough.
QString descriptorShortage();

/// Whether memory can be had for a reply of this many bytes, on its way from the network to the log and the grid.
bool hasRoomForReply(qint64 bytes);
