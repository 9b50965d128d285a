// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// The keys of whoever sits at the terminal, one at a time and not shown. Where the standard input is no terminal, or
/// the program is not the one that the terminal listens to, there are none. GUI thread.
class Keyboard : public QObject
{
    Q_OBJECT
public:
    enum Key { Space, Quit, Next, Previous, Forward, Back, Louder, Quieter };
    Q_ENUM(Key)

    explicit Keyboard(QObject *parent = nullptr);
    /// Leaves the terminal as it was.
    ~Keyboard() override;

    bool isThere() const { return m_notifier != nullptr; }
    /// The keys that these bytes of a terminal stand for.
    static QList<Key> keysOf(const QByteArray &bytes);
    /// For people: which key does what.
    static QString usage();

Q_SIGNALS:
    void pressed(Keyboard::Key key);

private:
    void read();

    struct Mode;
    std::unique_ptr<Mode> m_mode; ///< of the terminal, before
    std::unique_ptr<QSocketNotifier> m_notifier;
};
