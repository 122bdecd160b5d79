#pragma once

#include <QString>

// How the pictures look: the same on each machine, whatever its desktop, scale, language and fonts' settings are.

/// From here on the environment asks for no look of its own, and for no display. Before the application object is made.
void leaveUsersLook();

/// Gives the application one style, palette and font. Where the font is missing, says so.
QString takeLook();
