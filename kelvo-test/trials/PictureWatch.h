// SPDX-License-Identifier: MIT
#pragma once

#include "SeenPicture.h"
#include "SenseWatch.h"

class Eye;

/// What a renderer says, and what is seen of it.
class PictureWatch : public SenseWatch
{
    Q_OBJECT
public:
    /// Neither is owned. The eye outlives this; the renderer may go meanwhile.
    PictureWatch(KelvoRenderer *renderer, const Eye *eye, QObject *parent = nullptr);

    void begin() override;
    std::optional<First> first() const override;
    bool hasGoneOn() const override;
    /// Nothing moves: one picture stays, or none is there any more.
    bool isAtRest() override { return !m_picture.isThere() || m_picture.rests(); }
    std::optional<Measured> restedAt() override;
    std::optional<Measured> position() override { return picture().position(); }
    std::optional<Measured> wentOnAwayFrom(double place) const override;
    std::optional<Change> changeTo(int item) override;
    QString doubt() override { return picture().doubt(); }

    /// As of now.
    const SeenPicture &picture();

private:
    void take(const Sighting &sighting);
    std::optional<Sighting> find(const std::function<bool(const Sighting &)> &is) const;

    QList<Sighting> m_seen; ///< since the command, times after that
    const double m_clockError; ///< seconds
    SeenPicture m_picture;
};
