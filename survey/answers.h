#pragma once

#include <QString>
#include <QVariant>

/// What an answer is made of: the three answer columns of a row of responses, as a reply was interpreted and as the
/// row is read back. A null text or an invalid number stands for NULL.
struct ParsedAnswer
{
    QString textAnswer;
    QVariant numericAnswer;
    /// The reply's whole JSON object in compact form, where the reasoning lives; or the raw reply to a choice question
    /// that is no JSON object.
    QString jsonAnswer;
};

/// The one text by which an answer is shown: its text if not empty, else its number with six significant digits, else
/// its JSON unchanged.
QString displayValue(const ParsedAnswer &answer);

/// The reasoning that came with an answer, empty where there is none.
QString reasoning(const ParsedAnswer &answer);
