#pragma once

#include "tests/packs/packfile.h"

/// A pack of four personas: one with two tags, two with one, and one without.
inline QString writeCoastalPack(const QString &path)
{
    return writePack(path, {persona(QStringLiteral("11111111-aaaa"), QStringLiteral("Number One")),
                            persona(QStringLiteral("22222222-bbbb"), QStringLiteral("Number Two")),
                            persona(QStringLiteral("33333333-cccc"), QStringLiteral("Number Three")),
                            persona(QStringLiteral("4444"), QStringLiteral("Number Four")),
                            tag(1, QStringLiteral("urban")), tag(2, QStringLiteral("coastal")),
                            tag(3, QStringLiteral("remote")), link(QStringLiteral("11111111-aaaa"), 1),
                            link(QStringLiteral("11111111-aaaa"), 2), link(QStringLiteral("22222222-bbbb"), 2),
                            link(QStringLiteral("33333333-cccc"), 1), link(QStringLiteral("elsewhere"), 1)});
}

/// The names of the four, sorted.
inline QStringList coastalNames()
{
    return {QStringLiteral("Number Four"), QStringLiteral("Number One"), QStringLiteral("Number Three"),
            QStringLiteral("Number Two")};
}

/// The Tags cells with their tags sorted, as the text of each persona's name and tags, sorted.
inline QStringList shownTags(Stage &stage)
{
    QStringList rows;
    const auto cells = Stage::cells(personaTable(stage));
    for (const QStringList &row : cells) {
        QStringList tags = row.at(2).split(u',');
        tags.sort();
        rows.append(row.first() + QStringLiteral(": ") + tags.join(u','));
    }
    rows.sort();
    return rows;
}

/// Enters two personas and two tags into the project, and shows them.
inline bool showProject(Stage &stage)
{
    const bool entered = enter(stage, {persona(QStringLiteral("11111111-aaaa"), QStringLiteral("Mine")),
                                       persona(QStringLiteral("99999999-dddd"), QStringLiteral("Mine, too")),
                                       tag(5, QStringLiteral("rural")), tag(6, QStringLiteral("coastal")),
                                       link(QStringLiteral("11111111-aaaa"), 5)});
    refreshQuietly(stage);
    return entered;
}
