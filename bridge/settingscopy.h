#pragma once

#include <QTemporaryDir>

namespace bridge {

/// From here on this process reads and writes settings of its own: those of the user, with a placeholder for the key,
/// without which the program asks nothing.
class SettingsCopy
{
public:
    SettingsCopy();

private:
    QTemporaryDir folder;
};

} // namespace bridge
