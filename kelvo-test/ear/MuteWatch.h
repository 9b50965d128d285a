// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QProcess>
#include <QString>

/// Asks the sound server whether a source is muted, and again whenever a source changes: one that is gives silence, which
/// would be taken for that of what plays. Where nobody can be asked nothing is told. GUI thread.
class MuteWatch : public QObject
{
    Q_OBJECT
public:
    explicit MuteWatch(QObject *parent = nullptr);
    ~MuteWatch() override;

    void watch(const QString &source);

Q_SIGNALS:
    void changed(bool muted);

private:
    void takeNews();
    void ask();
    void takeAnswer();

    QString m_source;
    QProcess m_news; ///< of the sound server
    QProcess m_question;
    bool m_isMuted = false;
    bool m_asksAgain = false; ///< something has changed since the question
};
