// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoAnswer.h"
#include "KelvoContent.h"
#include "MinimalObjects.h"

#include <QElapsedTimer>
#include <QTimer>

#include <functional>

/// Says of what it plays what is not so: it is late, elsewhere, and another item.
class WrongRenderer : public MinimalRenderer
{
public:
    static inline const QUrl First{QStringLiteral("test:1")};
    static inline const QUrl Second{QStringLiteral("test:2")};
    static constexpr int Late = 300; ///< milliseconds: more than is let pass
    static constexpr double Misplaced = 1; ///< seconds
    static constexpr int LongGap = 2200; ///< milliseconds

    WrongRenderer()
        : MinimalRenderer(QStringLiteral("wrong"), QStringLiteral("Wrong"))
    {
    }

    void playUri(const QUrl &) override
    {
        // The other one.
        Q_EMIT mediaChanged(-1, KelvoContent{{}, Second, {}});
        Q_EMIT stateChanged(Playing);
        later(Late, [this] { proceed(1, 0); });
    }
    void stop() override
    {
        Q_EMIT stateChanged(Stopped);
        ceaseLater();
    }
    void pause() override
    {
        Q_EMIT stateChanged(Paused);
        ceaseLater();
    }
    void resume() override
    {
        Q_EMIT stateChanged(Playing);
        proceed(m_item, place());
    }
    void pauseAt(uint seconds) override
    {
        later(int((seconds - place()) * 1000), [this] { pause(); });
    }
    void gotoIndex(uint) override
    {
        Q_EMIT mediaChanged(0, KelvoContent{{}, First, {}});
        proceed(1, 0);
    }
    void setPosition(int seconds, int) override { proceed(m_item, seconds + Misplaced); }
    void kelvoProperty(const QString &name, QObject *receiver, const char *slot) override
    {
        const QVariant value = name == PropertyPosition ? QVariant(place() + Misplaced) : QVariant();
        KelvoAnswer(receiver, slot).deliver({name, value});
    }

protected:
    /// Something of an item comes out from now on.
    virtual void begin(int item, double from) = 0;
    /// Nothing does.
    virtual void cease() = 0;

    void proceed(int item, double from)
    {
        ++m_command;
        m_item = item;
        m_from = from;
        m_plays = true;
        begin(item, from);
        m_since.start();
    }
    /// The item has come to its end.
    void goOn()
    {
        Q_EMIT mediaChanged(1, KelvoContent{{}, Second, {}});
        later(LongGap, [this] { proceed(2, 0); });
    }
    int item() const { return m_item; }
    double place() const { return m_plays ? m_from + double(m_since.elapsed()) / 1000 : m_from; }

private:
    /// Unless another command comes before.
    void later(int milliseconds, const std::function<void()> &act)
    {
        QTimer::singleShot(milliseconds, this, [this, act, command = ++m_command] {
            if (command == m_command)
                act();
        });
    }
    void ceaseLater()
    {
        later(Late, [this] {
            m_from = place();
            m_plays = false;
            cease();
        });
    }

    int m_item = 1;
    double m_from = 0; ///< where it began
    bool m_plays = false;
    QElapsedTimer m_since;
    int m_command = 0;
};
