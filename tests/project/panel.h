#pragma once

#include "tests/support/stage.h"

#include <QComboBox>
#include <QGroupBox>
#include <QPlainTextEdit>

// Personas put into the project behind the window's back, and what the window then shows of them.

struct Persona
{
    QString uuid;
    QString name;
    QStringList tags;
};

/// Stores personas and their tags by SQL; the views know nothing of it before a refresh.
inline void storePersonas(Stage &stage, const QList<Persona> &personas)
{
    using namespace Qt::StringLiterals;
    for (const Persona &persona : personas) {
        stage.exec(u"INSERT INTO personas (uuid, name, attributes, created_at, modified_at) VALUES (?, ?, ?, ?, ?)"_s,
                   {persona.uuid, persona.name, QVariant(u"Told of "_s + persona.name), u"then"_s, u"now"_s});
        for (const QString &tag : persona.tags) {
            stage.exec(u"INSERT OR IGNORE INTO tags (name) VALUES (?)"_s, {tag});
            stage.exec(u"INSERT INTO persona_tags SELECT ?, id FROM tags WHERE name = ?"_s, {persona.uuid, tag});
        }
    }
}

/// One column of the persona list, from top to bottom.
inline QStringList personaColumn(Stage &stage, int column)
{
    const auto *table = stage.find<QTableWidget>(QStringLiteral("personaTable"));
    QStringList texts;
    for (int row = 0; row < table->rowCount(); ++row)
        texts.append(table->item(row, column)->text());
    return texts;
}

inline QStringList items(const QComboBox *combo)
{
    QStringList texts;
    for (int index = 0; index < combo->count(); ++index)
        texts.append(combo->itemText(index));
    return texts;
}

/// The persona chooser of the conversation box, its question chooser as the second.
inline QComboBox *conversationChooser(Stage &stage, int index)
{
    const auto *group = stage.page(QStringLiteral("Boilerplate"))->findChild<QGroupBox *>();
    return group->findChildren<QComboBox *>().at(index);
}
