#pragma once

#include "tests/support/stage.h"

#include <sys/types.h>

/// While it lives, this process is a user who has to keep to the rights of files, which root does not. The folder of
/// the stage belongs to him.
class Unprivileged
{
public:
    explicit Unprivileged(const Stage &stage);
    ~Unprivileged();
    Q_DISABLE_COPY_MOVE(Unprivileged)

    /// Makes a file or a folder that user's own; nothing but root can.
    static void give(const QString &path);

private:
    uid_t before;
};
