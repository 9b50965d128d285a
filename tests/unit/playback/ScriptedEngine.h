// SPDX-License-Identifier: MIT
#pragma once

#include "Engine.h"

#include <QStringList>

/// An engine that notes what it is told and says what a test lets it say.
class ScriptedEngine : public Engine
{
    Q_OBJECT
public:
    QString name() const override { return QStringLiteral("Scripted"); }
    QString refusal(const QString &, const QVariant &value) const override
    {
        return value == refused ? QStringLiteral("refused in my own words") : QString();
    }
    bool usesWindow() const override { return hasWindow; }
    void load(const Item &item) override
    {
        items.append(item);
        calls.append(QStringLiteral("load ") + item.uri.toString());
    }
    void unload() override { calls.append(QStringLiteral("unload")); }
    void pause() override { calls.append(QStringLiteral("pause")); }
    void resume() override { calls.append(QStringLiteral("resume")); }
    void seek(int seconds, KelvoRenderer::SeekMode mode) override
    {
        calls.append(QStringLiteral("seek %1 %2").arg(seconds).arg(int(mode)));
    }
    void setPauseAt(std::optional<uint> seconds) override { pauseAt = seconds; }
    void answerPosition(PositionAnswer answer) override
    {
        post([answer, this] { answer(position); });
    }
    bool mayBeList(const KelvoMediaInfo &item) const override
    {
        return item.url().fileName().endsWith(QLatin1String(".pls"));
    }
    bool mayBeList(KelvoError::Code failure) const override { return failure == KelvoError::UnsupportedType; }
    void readList(quint64 epoch, const KelvoMediaInfo &item) override
    {
        readEpoch = epoch;
        calls.append(QStringLiteral("read ") + item.url().toString());
    }
    void cancelReading() override { calls.append(QStringLiteral("cancel reading")); }
    bool applyProperty(const QString &name, const QVariant &value) override
    {
        calls.append(name + QLatin1String(" = ") + value.toString());
        return reportsProperties;
    }

    quint64 epoch() const { return items.isEmpty() ? 0 : items.constLast().epoch; }

    QStringList calls;
    QList<Item> items;
    std::optional<uint> pauseAt;
    quint64 readEpoch = 0;
    double position = 0;
    bool hasWindow = true;
    bool reportsProperties = false;
    QVariant refused = QStringLiteral("nothing");
};
