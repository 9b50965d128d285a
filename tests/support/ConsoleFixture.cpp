// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QTest>
#include <QToolButton>

namespace {
constexpr int patience = 30'000;

KelvoMainWindow *findWindow()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget *widget : widgets) {
        if (auto *window = qobject_cast<KelvoMainWindow *>(widget))
            return window;
    }
    return nullptr;
}
} // namespace

ConsoleFixture::ConsoleFixture()
    : m_application(std::make_unique<KelvoGUIMain>(nullptr))
    , m_window(findWindow())
{
    // The tracker store is opened meanwhile; what it then does to the window must not meet a test in its middle.
    const auto *execute = find<QToolButton>("m_query_executeButton");
    if (!QTest::qWaitFor([&] { return execute->isEnabled(); }, patience))
        qWarning("The tracker store does not open");
}

ConsoleFixture::~ConsoleFixture()
{
    delete m_window;
}

ModalCloser::ModalCloser(Answer answer)
    : m_answer(answer)
{
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { answerOne(); });
    m_timer.start(1);
}

void ModalCloser::answerOne()
{
    auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    if (!dialog || !dialog->isVisible())
        return;
    const auto *box = qobject_cast<QMessageBox *>(dialog);
    m_seen.append(box ? box->text() : dialog->windowTitle());
    if (whenOpen)
        whenOpen(dialog);
    dialog->done(m_answer == Accept ? QDialog::Accepted : QDialog::Rejected);
}
