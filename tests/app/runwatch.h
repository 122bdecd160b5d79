#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class ChatRequester;
class EventChecks;
class SurveyStage;

/// Knows at each moment of a run what it is at, from what the run read at its start and the answers that are there; and
/// holds each answer against that at the very moment at which the program is through with it.
class RunWatch
{
public:
    RunWatch(SurveyStage &surveyStage, EventChecks &eventChecks);

    /// To be called right before a run is started, and right after.
    void starting();
    void started();
    /// The window is gone, and its run with it.
    void forget();

    bool isOn() const { return on; }
    /// Replies that the program is through with.
    int answers = 0;
    int failures = 0;
    /// Called after each of them.
    std::function<void()> whenDealtWith;

private:
    struct Pair
    {
        QString persona;
        int question = 0;
        QString type;
    };

    bool isOpen(const Pair &pair);
    void findNext();
    void watchRequesters();
    void answered(const QString &text);
    void failed();
    void dealtWith();

    SurveyStage &stage;
    EventChecks &checks;
    QObject context;
    bool on = false;
    QList<Pair> pairs; ///< that at which the run is comes first
};
