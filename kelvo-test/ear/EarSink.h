// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QProcess>
#include <QString>

/// A sink of the sound server that nobody hears, made to be listened to. What begins to sound while it is there is moved to
/// it, and so heard alone. When it goes the sound server gives its streams another sink. GUI thread.
class EarSink : public QObject
{
    Q_OBJECT
public:
    explicit EarSink(QObject *parent = nullptr);
    ~EarSink() override;

    /// Waits for the sound server, some seconds at most. False, with the reason, where that cannot be.
    /// What this process and those that it starts play from now on goes there at once.
    bool make(QString *error);
    /// Streams that have begun elsewhere and were moved here: how late their first sound is, is a matter of both sinks.
    int movedStreams() const { return m_movedStreams; }
    /// What is to be listened to.
    QString monitor() const { return m_name + QStringLiteral(".monitor"); }

private:
    void follow();
    void takeNews();
    void look(const QString &stream);
    void move(const QString &stream);

    const QString m_name;
    QString m_module; ///< of the sound server; empty: there is none
    QString m_number; ///< of the sink
    int m_movedStreams = 0;
    QProcess m_news; ///< of the sound server
};
