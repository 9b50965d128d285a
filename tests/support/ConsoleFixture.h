// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoGUIMain.h"
#include "KelvoMainWindow.h"

#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <memory>

/// The console as the program makes it: application object, window, controllers, ready for queries. Register fakes with
/// KelvoRegistry::instance() before or after. Ends as the program does: the window first, then the rest.
class ConsoleFixture
{
public:
    ConsoleFixture();
    ~ConsoleFixture();
    Q_DISABLE_COPY_MOVE(ConsoleFixture)

    KelvoGUIMain *application() const { return m_application.get(); }
    KelvoMainWindow *window() const { return m_window; }
    template <typename T> T *find(const char *name) const
    {
        return m_window->findChild<T *>(QLatin1String(name));
    }

private:
    std::unique_ptr<KelvoGUIMain> m_application;
    QPointer<KelvoMainWindow> m_window;
};

/// Answers every modal dialog that opens while it lives: writes down its title and text, and closes it.
class ModalCloser
{
public:
    enum Answer { Accept, Reject };
    explicit ModalCloser(Answer answer = Accept);

    /// Called with each dialog before it is closed.
    std::function<void(QWidget *)> whenOpen;
    /// Message boxes by their text, dialogs by their title, in order.
    QStringList seen() const { return m_seen; }

private:
    void answerOne();

    Answer m_answer;
    QStringList m_seen;
    QTimer m_timer;
};
