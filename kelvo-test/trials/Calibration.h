// SPDX-License-Identifier: MIT
#pragma once

#include "HeardSound.h"
#include "SeenPicture.h"
#include "SenseProgram.h"
#include "card/SenseRow.h"

#include <QList>
#include <QObject>

#include <functional>
#include <memory>

class Ear;
class Eye;

/// How well a sense measures: a pipeline that does nothing else plays a medium with a clock, and by how much its position
/// and what comes out differ is no fault of a renderer. GUI thread.
class Calibration : public QObject
{
    Q_OBJECT
public:
    /// Plays on a sink of the sound server what the ear hears. It outlives this.
    static std::unique_ptr<Calibration> ofEar(const Ear *ear, const QString &sink, const QString &file);
    /// Shows in a window of the X server what the eye sees. It outlives this.
    static std::unique_ptr<Calibration> ofEye(const Eye *eye, uint window, const QString &file);

    /// The row where that cannot be done.
    static SenseRow notPossible(const QString &sense, const QString &reason);

    /// It has taken a few seconds, or failed; the pipeline has ended, and what came out of it, too: who listens or looks from
    /// now on hears and sees nothing of it.
    bool isDone() const { return m_isDone; }
    /// What came of it: by how much what comes out is ahead of the pipeline's position. Not measured where it failed, or
    /// more is off than the positions of renderers may be.
    SenseRow row() const;
    /// How far off positions are measured at most, in seconds; nothing where that is not known.
    std::optional<double> error() const;

private:
    using Position = std::function<std::optional<Measured>()>;

    explicit Calibration(QString sense);
    void start(const QStringList &arguments, Position cameOut);
    void take(const QByteArray &line);
    void end();
    void lookWhetherItEnded();
    std::optional<Measured> difference() const;
    static SenseRow emptyRow(const QString &sense);

    const QString m_sense;
    std::unique_ptr<SenseProgram> m_pipeline;
    HeardSound m_sound;
    SeenPicture m_picture;
    Position m_cameOut; ///< of what is heard or seen just now
    int m_looks = 0;
    int m_taken = 0;
    QList<double> m_differences;
    QString m_problem;
    bool m_isEnding = false;
    bool m_isDone = false;
};
