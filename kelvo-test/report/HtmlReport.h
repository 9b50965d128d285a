// SPDX-License-Identifier: MIT
#pragma once

#include "CommandEffects.h"
#include "RecordedRun.h"
#include "TestResult.h"
#include "Timeline.h"

class QIODevice;

/// One run of a recording as a page: one file that needs no network, opens in any browser, can be read without
/// scripts and printed, and takes no text of the recording for anything but text.
///
/// The run is read twice and never held as a whole.
class HtmlReport
{
public:
    /// The table has so many events at most, the last ones: a browser opens that in a moment. The time line shows all.
    static constexpr qint64 MostRows = 100000;

    /// @param results  what came of what was tried in that run, if anything was
    explicit HtmlReport(const RecordedRun &run, QList<TestResult> results = {});

    /// Writes the page. False when the device takes it no more.
    bool write(QIODevice *device) const;

private:
    QByteArray head() const;
    QByteArray facts() const;
    QByteArray notices() const;
    QByteArray results() const;
    QByteArray lanes() const;
    QByteArray lanesOf(const Timeline::Renderer &renderer, qsizetype share) const;
    QByteArray effects() const;
    QByteArray states() const;
    QByteArray errors() const;
    QByteArray nameOf(const QString &uuid) const;
    QByteArray link(qint64 event, const QByteArray &text) const;
    qint64 firstRow() const;

    const RecordedRun &m_run;
    const QList<TestResult> m_results;
    Timeline m_timeline;
    CommandEffects m_effects;
};
