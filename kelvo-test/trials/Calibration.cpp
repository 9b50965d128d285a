// SPDX-License-Identifier: MIT
#include "Calibration.h"

#include "Ear.h"
#include "Eye.h"
#include "SenseTrial.h"

#include <QTimer>

#include <algorithm>
#include <cmath>

namespace {
constexpr int leftOut = 5; // lines, until sinks and senses have found their pace
constexpr int wanted = 20; // differences
constexpr int mostLines = 60; // for want of which nothing came out
constexpr int endInterval = 20; // milliseconds
constexpr int mostLooks = 100; // a window may keep its last picture
constexpr int extremes = 2; // of the differences, at either end: a busy machine delays some
} // namespace

Calibration::Calibration(QString sense)
    : m_sense(std::move(sense))
{
}

std::unique_ptr<Calibration> Calibration::ofEar(const Ear *ear, const QString &sink, const QString &file)
{
    std::unique_ptr<Calibration> calibration(new Calibration(QStringLiteral("ear")));
    Calibration *const self = calibration.get();
    self->m_sound.beginListening();
    connect(ear, &Ear::heard, self, [self](const Hearing &hearing) { self->m_sound.take(hearing); });
    self->start({QStringLiteral("sound"), sink, file}, [self] {
        self->m_sound.settle(Ear::now());
        return self->m_sound.sounds() ? self->m_sound.position() : std::nullopt;
    });
    return calibration;
}

std::unique_ptr<Calibration> Calibration::ofEye(const Eye *eye, uint window, const QString &file)
{
    std::unique_ptr<Calibration> calibration(new Calibration(QStringLiteral("eye")));
    Calibration *const self = calibration.get();
    self->m_picture.beginLooking();
    connect(eye, &Eye::seen, self, [self](const Sighting &sighting) { self->m_picture.take(sighting); });
    self->start({QStringLiteral("picture"), QString::number(window), file}, [self] {
        self->m_picture.settle(Eye::now());
        return self->m_picture.goes() ? self->m_picture.position() : std::nullopt;
    });
    return calibration;
}

void Calibration::start(const QStringList &arguments, Position cameOut)
{
    m_cameOut = std::move(cameOut);
    m_pipeline = std::make_unique<SenseProgram>(QStringLiteral("kelvo-bare-player"), "at");
    connect(m_pipeline.get(), &SenseProgram::measured, this, &Calibration::take);
    connect(m_pipeline.get(), &SenseProgram::failed, this, [this](const QString &problem) {
        m_problem = problem;
        end();
    });
    m_pipeline->start(arguments);
}

/// "at TIME POSITION": where it was some moments ago.
void Calibration::take(const QByteArray &line)
{
    const QList<QByteArray> words = line.simplified().split(' ');
    if (m_isEnding || words.size() != 3)
        return;
    ++m_taken;
    const std::optional<Measured> cameOut = m_cameOut();
    const double position = words.at(2).toDouble() + SenseProgram::now() - words.at(1).toDouble();
    if (cameOut && m_taken > leftOut)
        m_differences.append(cameOut->value - position);
    if (m_differences.size() == wanted || m_taken == mostLines)
        end();
}

void Calibration::end()
{
    if (m_isEnding)
        return;
    m_isEnding = true;
    // The pipeline is what calls this.
    const auto leave = [this] {
        m_pipeline.reset();
        lookWhetherItEnded();
    };
    QMetaObject::invokeMethod(this, leave, Qt::QueuedConnection);
}

void Calibration::lookWhetherItEnded()
{
    m_isDone = (!m_sound.sounds() && !m_picture.isThere()) || ++m_looks == mostLooks;
    if (!m_isDone)
        QTimer::singleShot(endInterval, this, &Calibration::lookWhetherItEnded);
}

std::optional<Measured> Calibration::difference() const
{
    if (m_differences.size() < wanted)
        return std::nullopt;
    QList<double> sorted = m_differences;
    std::sort(sorted.begin(), sorted.end());
    const double least = sorted.at(extremes);
    const double most = sorted.at(sorted.size() - 1 - extremes);
    return Measured{(least + most) / 2, (most - least) / 2};
}

SenseRow Calibration::emptyRow(const QString &sense)
{
    SenseRow row;
    row.id = sense + QStringLiteral(".bare");
    row.what
        = QStringLiteral("by how much a bare pipeline is ahead of its position: so well is measured here");
    row.unit = QStringLiteral("s");
    row.said = 0;
    row.limit = SenseTrial::MostMisplaced;
    return row;
}

SenseRow Calibration::notPossible(const QString &sense, const QString &reason)
{
    SenseRow row = emptyRow(sense);
    row.doubt = reason;
    return row;
}

SenseRow Calibration::row() const
{
    SenseRow row = emptyRow(m_sense);
    const std::optional<Measured> found = difference();
    if (!found) {
        row.doubt = m_problem.isEmpty() ? QStringLiteral("what it plays does not come out here") : m_problem;
    } else if (*error() > SenseTrial::MostMisplaced) {
        // Of the measurement: no renderer is to blame.
        row.doubt
            = QStringLiteral("what is played here comes out %1 ms off").arg(found->value * 1000, 0, 'f', 0);
    } else {
        row.cameOut = found->value;
        row.error = found->error;
    }
    return row;
}

std::optional<double> Calibration::error() const
{
    const std::optional<Measured> found = difference();
    return found ? std::optional(std::abs(found->value) + found->error) : std::nullopt;
}
