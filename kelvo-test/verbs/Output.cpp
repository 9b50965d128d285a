// SPDX-License-Identifier: MIT
#include "Output.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace {
bool isCommanding(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return character != u'\n' && character != u'\t';
    default:
        return false;
    }
}

int columnsOf(std::FILE *stream)
{
    winsize size = {};
    constexpr int usual = 80;
    return ::ioctl(::fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

QString sequenceOf(Output::Tone tone)
{
    switch (tone) {
    case Output::Tone::Good:
        return QStringLiteral("\x1b[32m");
    case Output::Tone::Bad:
        return QStringLiteral("\x1b[31m");
    case Output::Tone::Faint:
        return QStringLiteral("\x1b[2m");
    case Output::Tone::Plain:
        break;
    }
    return {};
}
} // namespace

Output::Output(std::FILE *stream)
    : m_stream(stream)
{
    m_terminal = ::isatty(::fileno(stream)) == 1 && qEnvironmentVariable("TERM") != QLatin1String("dumb");
    m_coloured = m_terminal && qEnvironmentVariableIsEmpty("NO_COLOR");
}

Output::~Output()
{
    clearProgress();
    std::fflush(m_stream);
}

QString Output::printable(const QString &text)
{
    QString safe;
    safe.reserve(text.size());
    for (const QChar character : text) {
        if (isCommanding(character))
            safe += QStringLiteral("\\u%1").arg(int(character.unicode()), 4, 16, QLatin1Char('0'));
        else
            safe += character;
    }
    return safe;
}

void Output::line(const QString &text, Tone tone)
{
    clearProgress();
    const QString sequence = m_coloured ? sequenceOf(tone) : QString();
    write(sequence + printable(text) + (sequence.isEmpty() ? QString() : QStringLiteral("\x1b[0m")) + u'\n');
}

void Output::progress(const QString &text)
{
    if (!m_terminal)
        return;
    clearProgress();
    write(printable(text).section(u'\n', 0, 0).left(columnsOf(m_stream) - 1));
    m_inProgress = true;
}

void Output::complain(const QString &text)
{
    std::fprintf(stderr, "kelvo-test: %s\n", printable(text).toUtf8().constData());
}

void Output::write(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), m_stream);
    // Who reads from a pipe wants to see it now.
    std::fflush(m_stream);
}

void Output::clearProgress()
{
    if (!m_inProgress)
        return;
    m_inProgress = false;
    write(QStringLiteral("\r\x1b[K"));
}
