// SPDX-License-Identifier: MIT
#pragma once

#include "ErrorMapping.h"

#include <QObject>

class Playbin;
typedef struct _GstMessage GstMessage;
typedef struct _GstTagList GstTagList;

/// Puts the messages of a pipeline into words: a signal for each that matters to whoever plays an item with it.
/// Engine thread.
class PipelineMessages : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Tells at most one signal, from within. Whoever hears it may do away with the pipeline.
    void read(GstMessage *message, const Playbin &pipeline);

Q_SIGNALS:
    /// The pipeline is where it was told to go: in Playing or not.
    void stateReached(bool playing);
    /// It has prerolled, or a seek is done.
    void asyncDone();
    void endReached();
    /// Without `uri` and `notMedia`, which it does not know.
    void failed(const PipelineFailure &failure);
    /// One of several streams cannot be decoded.
    void codecMissing(const QString &text);
    /// There is no player for a stream of that type, such as "text/plain".
    void typeUnknown(const QByteArray &mediaType);
    void buffered(int percent);
    void tagsFound(const GstTagList *tags);
    void durationChanged();
    /// The audio server takes the output away or gives it back (`playing`).
    void outputRequested(bool playing);
    /// A new clock is chosen on the way from Paused to Playing.
    void clockLost();

private:
    void readStateChange(GstMessage *message);
    void readElementMessage(GstMessage *message);
    void readWarning(GstMessage *message);
};
