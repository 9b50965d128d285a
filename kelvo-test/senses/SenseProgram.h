// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QProcess>
#include <QStringList>

/// A program of its own that writes a line for each thing that it measures, so that whoever wants to know need not load
/// what measures. It ends with this object, or with this process. GUI thread.
class SenseProgram : public QObject
{
    Q_OBJECT
public:
    /// @param name  of the program; it is where kelvo-test's others are
    /// @param word  what the first line begins with that says that it measures by now
    SenseProgram(const QString &name, QByteArray word, QObject *parent = nullptr);
    ~SenseProgram() override;

    void start(const QStringList &arguments);
    bool isReady() const { return m_ready; }
    /// Why it does not measure; empty: it does, or will.
    QString problem() const { return m_problem; }

    /// Of the clock that measured times are of: the steady one, which all processes of a machine share. Seconds.
    static double now();

Q_SIGNALS:
    /// @param rest  of the line after the word
    void ready(const QByteArray &rest);
    void failed(const QString &problem);
    void measured(const QByteArray &line);

private:
    void read();
    void fail(const QString &problem);

    const QString m_program;
    const QByteArray m_word;
    QProcess m_process;
    bool m_ready = false;
    QString m_problem;
};
