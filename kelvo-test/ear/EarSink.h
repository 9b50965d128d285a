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
    /// What is to be listened to.
    QString monitor() const { return m_name + QStringLiteral(".monitor"); }

private:
    void follow();
    void takeNews();
    void move(const QString &stream);

    const QString m_name;
    QString m_module; ///< of the sound server; empty: there is none
    QProcess m_news; ///< of the sound server
};
