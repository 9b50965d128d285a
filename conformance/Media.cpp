// SPDX-License-Identifier: MIT
#include "Media.h"

#include <QDir>
#include <QSaveFile>
#include <QtEndian>
#include <QtMath>

#include <array>

namespace {
struct Sound
{
    const char *fileName;
    const char *title;
    double seconds;
    double pitch; // hertz
};

constexpr std::array<Sound, 4> sounds{{
    {"first.wav", "First", 0.7, 440},
    {"second.wav", "Second", 0.8, 550},
    {"third.wav", "Third", 0.9, 660},
    {"long.wav", "Long", 10, 330},
}};
constexpr int rate = 22'050; // samples a second, one channel of 16 bits
constexpr double loudness = 3000; // of 32767: heard, and no more than that

void appendNumber(QByteArray &bytes, quint32 number)
{
    std::array<char, 4> little;
    qToLittleEndian(number, little.data());
    bytes.append(little.data(), little.size());
}

void appendChunk(QByteArray &bytes, const char *name, const QByteArray &content)
{
    bytes.append(name);
    appendNumber(bytes, quint32(content.size()));
    bytes.append(content);
    if (content.size() % 2)
        bytes.append('\0');
}

QByteArray formatOf()
{
    QByteArray format;
    appendNumber(format, 1 | (1 << 16)); // PCM, one channel
    appendNumber(format, rate);
    appendNumber(format, rate * 2); // bytes a second
    appendNumber(format, 2 | (16 << 16)); // bytes of a sample, bits
    return format;
}

QByteArray samplesOf(const Sound &sound)
{
    const int count = int(sound.seconds * rate);
    QByteArray samples(count * 2, '\0');
    for (int i = 0; i < count; ++i) {
        const double wave = loudness * qSin(2 * M_PI * sound.pitch * i / rate);
        qToLittleEndian(qint16(wave), samples.data() + 2 * i);
    }
    return samples;
}

/// RIFF WAVE, with the title where players look for it.
QByteArray waveOf(const Sound &sound)
{
    QByteArray facts("INFO");
    appendChunk(facts, "INAM", QByteArray(sound.title) + '\0');
    QByteArray content("WAVE");
    appendChunk(content, "fmt ", formatOf());
    appendChunk(content, "LIST", facts);
    appendChunk(content, "data", samplesOf(sound));
    QByteArray file;
    appendChunk(file, "RIFF", content);
    return file;
}
} // namespace

Media Media::inFolder(const QUrl &folder, const QString &kind)
{
    QUrl base = folder;
    if (!base.path().endsWith(QLatin1Char('/')))
        base.setPath(base.path() + QLatin1Char('/'));
    const auto file = [&base](const char *name) {
        return base.resolved(QUrl(QString::fromLatin1(name)));
    };
    Media media;
    media.kind = kind;
    media.shortItems = {file(sounds[0].fileName), file(sounds[1].fileName), file(sounds[2].fileName)};
    media.longItem = file(sounds[3].fileName);
    media.longSeconds = int(sounds[3].seconds);
    media.failingItem = file("missing.wav");
    return media;
}

Media Media::simulated()
{
    Media media;
    media.kind = QStringLiteral("simulated media");
    media.shortItems = {QUrl(QStringLiteral("sim:first?duration=1")),
        QUrl(QStringLiteral("sim:second?duration=1")), QUrl(QStringLiteral("sim:third?duration=2"))};
    media.longItem = QUrl(QStringLiteral("sim:long?title=Long&duration=10"));
    media.failingItem = QUrl(QStringLiteral("sim:bad?fail=106"));
    media.unseekableItem = QUrl(QStringLiteral("sim:stream?seekable=0&duration=10"));
    return media;
}

bool Media::writeTo(const QString &folder, QString *error)
{
    for (const Sound &sound : sounds) {
        QSaveFile file(QDir(folder).filePath(QString::fromLatin1(sound.fileName)));
        const QByteArray wave = waveOf(sound);
        if (!file.open(QIODevice::WriteOnly) || file.write(wave) != wave.size() || !file.commit()) {
            *error = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
            return false;
        }
    }
    return true;
}
