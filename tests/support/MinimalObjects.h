// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlaylist.h"
#include "KelvoRenderer.h"
#include "KelvoSource.h"

/// The smallest objects that can stand in the registry: they have a uuid and a name and do nothing.
class MinimalRenderer : public KelvoRenderer
{
public:
    MinimalRenderer(QString uuid, QString name)
        : m_uuid(std::move(uuid))
        , m_name(std::move(name))
    {
    }
    QString uuid() const override { return m_uuid; }
    QString name() const override { return m_name; }
    void rename(const QString &name) { m_name = name; }
    void play() override { }
    void playUri(const QUrl &) override { }
    void playUriWithType(const QUrl &, const QString &) override { }
    void stop() override { }
    void pause() override { }
    void resume() override { }
    void next() override { }
    void previous() override { }
    void pauseAt(uint) override { }
    void gotoIndex(uint) override { }
    void setPosition(int, int) override { }
    void getStatus(QObject *, const char *) override { }
    void getPosition(QObject *, const char *) override { }
    void assignPlaylist(KelvoPlaylist *) override { }
    void setKelvoProperty(const QString &, const QVariant &) override { }
    void kelvoProperty(const QString &, QObject *, const char *) override { }

private:
    QString m_uuid;
    QString m_name;
};

class MinimalSource : public KelvoSource
{
public:
    MinimalSource(QString uuid, QString name)
        : m_uuid(std::move(uuid))
        , m_name(std::move(name))
    {
    }
    QString uuid() const override { return m_uuid; }
    QString name() const override { return m_name; }
    void rename(const QString &name) { m_name = name; }
    void setKelvoProperty(const QString &, const QVariant &) override { }
    bool kelvoProperty(const QString &, QObject *, const char *) override { return false; }

private:
    QString m_uuid;
    QString m_name;
};

class MinimalPlaylist : public KelvoPlaylist
{
public:
    MinimalPlaylist(QString uuid, QString name)
        : m_uuid(std::move(uuid))
        , m_name(std::move(name))
    {
    }
    QString uuid() const override { return m_uuid; }
    QString name() const override { return m_name; }
    void rename(const QString &name) { m_name = name; }
    QAbstractItemModel *itemModel() override { return nullptr; }
    int count() const override { return 0; }
    KelvoMediaInfo mediaInfoAt(uint) const override { return {}; }
    bool isShuffled() const override { return false; }
    void shuffle() override { }
    void unshuffle() override { }
    int repeatMode() const override { return RepeatOff; }
    void setRepeatMode(int) override { }
    void sort(const QString &, int) override { }
    void removeItem(uint) override { }
    void removeItems(uint, uint) override { }
    void clear() override { }

private:
    QString m_uuid;
    QString m_name;
};
