#pragma once

#include <QByteArrayView>
#include <QLatin1StringView>
#include <QList>

/// A part of the program that reads what it has not written, as a function of bytes. It states what has to hold by
/// promise(); what is broken is for the caller to report.
struct FuzzTarget
{
    QLatin1StringView name;
    void (*run)(QByteArrayView input);
};

const QList<FuzzTarget> &fuzzTargets();
/// The target of this name, which must be one.
const FuzzTarget &fuzzTarget(QLatin1StringView name);

// The parsers. The first byte of an input says what kind of text follows.
void fuzzReply(QByteArrayView input);
void fuzzLabels(QByteArrayView input);
void fuzzTags(QByteArrayView input);
void fuzzReasoning(QByteArrayView input);

// The files, each opened by a window of its own through the slot that opens it. Input: fuzz/hostilefile.h.
void fuzzProject(QByteArrayView input);
void fuzzImport(QByteArrayView input);
void fuzzBrowse(QByteArrayView input);
