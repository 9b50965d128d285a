// SPDX-License-Identifier: MIT
#include "Keyboard.h"

#include <array>
#include <termios.h>
#include <unistd.h>

namespace {
struct Sequence
{
    const char *bytes;
    Keyboard::Key key;
};
// The arrows in both modes that terminals have for them.
constexpr std::array sequences{
    Sequence{" ", Keyboard::Space},
    Sequence{"q", Keyboard::Quit},
    Sequence{"n", Keyboard::Next},
    Sequence{">", Keyboard::Next},
    Sequence{"p", Keyboard::Previous},
    Sequence{"<", Keyboard::Previous},
    Sequence{"\x1b[C", Keyboard::Forward},
    Sequence{"\x1bOC", Keyboard::Forward},
    Sequence{"\x1b[D", Keyboard::Back},
    Sequence{"\x1bOD", Keyboard::Back},
    Sequence{"\x1b[A", Keyboard::Louder},
    Sequence{"\x1bOA", Keyboard::Louder},
    Sequence{"+", Keyboard::Louder},
    Sequence{"\x1b[B", Keyboard::Quieter},
    Sequence{"\x1bOB", Keyboard::Quieter},
    Sequence{"-", Keyboard::Quieter},
};

bool isOurTerminal()
{
    return ::isatty(STDIN_FILENO) == 1 && ::tcgetpgrp(STDIN_FILENO) == ::getpgrp();
}
} // namespace

struct Keyboard::Mode
{
    termios before = {};
};

Keyboard::Keyboard(QObject *parent)
    : QObject(parent)
{
    auto mode = std::make_unique<Mode>();
    if (!isOurTerminal() || ::tcgetattr(STDIN_FILENO, &mode->before) != 0)
        return;
    m_mode = std::move(mode);
    termios single = m_mode->before;
    single.c_lflag &= ~tcflag_t(ICANON | ECHO);
    single.c_cc[VMIN] = 0;
    single.c_cc[VTIME] = 0;
    ::tcsetattr(STDIN_FILENO, TCSANOW, &single);
    m_notifier = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &Keyboard::read);
}

Keyboard::~Keyboard()
{
    if (m_mode)
        ::tcsetattr(STDIN_FILENO, TCSANOW, &m_mode->before);
}

QList<Keyboard::Key> Keyboard::keysOf(const QByteArray &bytes)
{
    QList<Key> keys;
    for (qsizetype at = 0; at < bytes.size();) {
        qsizetype length = 1;
        for (const Sequence &sequence : sequences) {
            if (bytes.mid(at).startsWith(sequence.bytes)) {
                keys.append(sequence.key);
                length = qsizetype(qstrlen(sequence.bytes));
                break;
            }
        }
        at += length;
    }
    return keys;
}

QString Keyboard::usage()
{
    return QStringLiteral("space: pause and resume, left and right: 10 s, up and down: volume, n and p: next "
                          "and previous, q: quit");
}

void Keyboard::read()
{
    char bytes[64];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (count <= 0) {
        // The terminal is gone.
        m_notifier->setEnabled(false);
        return;
    }
    for (const Key key : keysOf(QByteArray(bytes, qsizetype(count))))
        Q_EMIT pressed(key);
}
