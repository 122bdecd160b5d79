#pragma once

#include <QStringList>

class Stage;

/// What a user is at when the process is killed. The folder that they work in holds the home, "earlier.ormt", a project
/// with answers and open pairs, and "coast.ornk", a pack.
struct KilledUser
{
    enum class Operation : quint8 {
        Save,        ///< to a new file
        SaveOver,    ///< to the file that the project came from, which is refused
        Export,      ///< to a new pack
        ExportOver,  ///< to a pack that is there
        Import,      ///< of coast.ornk
        Open,        ///< of earlier.ormt once more
        Run,         ///< of the open pairs
        RunAndSave,  ///< with a save to a new file in the middle of it
        Preferences, ///< stored with another key
    };
    static constexpr int operations = 9;

    Operation operation = Operation::Save;
    QString folder;
    QString target;     ///< the file that is written, in the folder
    double moment = 0;  ///< how far into the operation it happens, from 0 to 1
    int hundredths = 0; ///< how much of a call that writes is still done
    bool waits = false; ///< for being killed from outside

    /// The program and what makes it play this user.
    static QString program();
    QStringList environment() const;
};

// The user's keys: each time they store the one that is not stored.
inline const QString earlierKey = QStringLiteral("earlier-key");
inline const QString laterKey = QStringLiteral("later-key-").repeated(40);
inline QString otherKey(const QString &key)
{
    return key == laterKey ? earlierKey : laterKey;
}

/// All that the program holds and shows of the project, as a check sum.
QString digest(Stage &stage);
