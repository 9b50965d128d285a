// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

/// One line of a recording: something that crossed the boundary, and when.
struct RecordedEvent
{
    /// Seconds since the run began, by a clock that only goes forward.
    double time = 0;
    /// Of the renderer, source or playlist that the event is about; empty for the process itself.
    QString uuid;
    /// "command", "report", "answer", "appears", "vanishes", "note", or what a later program writes.
    QString kind;
    /// The boundary's own name of the operation or signal: "playUri", "stateChanged".
    QString name;
    QJsonArray arguments;
    /// All that the line says, also what this program knows nothing of.
    QJsonObject all;
    /// The run that the event belongs to, from 0: a file to which several runs were appended has a header for each.
    int run = 0;
};
