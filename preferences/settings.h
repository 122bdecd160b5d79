#pragma once

#include <QString>

/// The user's settings, outside any project, in a default QSettings. Each call reads the store anew, so a change counts
/// from the next request on.
namespace Settings {

/// The bearer key of the chat API as it was entered, empty where there is none.
QString apiKey();

/// The model for ordinary questions. Only an absent entry gives the default, an empty one is empty.
QString personaModel();

/// The model for adjudicated questions, in the same way.
QString adjudicatorModel();

/// Stores all three; an empty model name is replaced by its default. The key lies in the clear in the store, which is
/// therefore made readable by its owner alone beforehand.
void store(const QString &apiKey, const QString &personaModel, const QString &adjudicatorModel);

} // namespace Settings
