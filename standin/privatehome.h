#pragma once

#include <QString>

/// From here on this process, and what it starts, reads and writes nothing of the user's own: neither settings nor what
/// file dialogs remember. For programs that play the user, before their application object is made.
/// On Linux the settings are kept in the file in which a user has them; elsewhere, where that store could be a
/// registry, in a file below @p home too.
void leaveUsersHome(const QString &home);
