// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cstdio>

/// The standard output of the program: lines in UTF-8, and, for people at a terminal, colours and one line of progress
/// that is written over. The environment variable NO_COLOR takes the colours away. GUI thread only.
class Output
{
public:
    enum class Tone { Plain, Good, Bad, Faint };

    explicit Output(std::FILE *stream = stdout);
    ~Output();
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    bool isTerminal() const { return m_terminal; }

    /// Names and titles come from devices and files: characters that would command the terminal, or turn the direction
    /// of the text around, are written as what they are ("\u001b").
    static QString printable(const QString &text);

    /// Writes a line of printable text, above the progress.
    void line(const QString &text, Tone tone = Tone::Plain);
    /// What is going on now; nothing where nobody watches.
    void progress(const QString &text);
    /// To the standard error, with the program's name.
    static void complain(const QString &text);

private:
    void write(const QString &text);
    void clearProgress();

    std::FILE *const m_stream;
    bool m_terminal = false;
    bool m_coloured = false;
    bool m_inProgress = false;
};
