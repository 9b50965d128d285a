// SPDX-License-Identifier: MIT
#include "Announcer.h"
#include "ConsoleFixture.h"
#include "KelvoRendererErrorLogDialog.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QSlider>
#include <QTabWidget>
#include <QTest>

namespace {
struct Heard
{
    bool active = false; ///< somebody listens
    QStringList announcements;
    int others = 0; ///< events of notifications, but not of their beginning to show
};
Heard heard;

/// What screen readers look for: the labels inside of a notification.
QString wordsOf(QAccessibleInterface *notification)
{
    QStringList words;
    for (int i = 0; i < notification->childCount(); ++i) {
        QAccessibleInterface *child = notification->child(i);
        if (child->role() == QAccessible::StaticText && !child->state().invisible)
            words.append(child->text(QAccessible::Name));
    }
    return words.join(QLatin1Char('|'));
}

void note(QAccessibleEvent *event)
{
    QAccessibleInterface *source = event->accessibleInterface();
    if (!source || source->role() != QAccessible::Notification)
        return;
    if (event->type() == QAccessible::ObjectShow)
        heard.announcements.append(wordsOf(source));
    else
        ++heard.others;
}
} // namespace

// Without a screen the toolkit has no bridge to assistive technology that could be switched on: these stand in for it
// in what the console calls.
bool isSomebodyThere() __asm__("__wrap__ZN11QAccessible8isActiveEv");
void tell(QAccessibleEvent *) __asm__("__wrap__ZN11QAccessible19updateAccessibilityEP16QAccessibleEvent");
bool isSomebodyThere()
{
    return heard.active;
}
void tell(QAccessibleEvent *event)
{
    note(event);
}

/// What is said to people who do not see the screen.
class AnnouncerTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_window = new KelvoMainWindow(nullptr, nullptr);
        heard = {true, {}, 0};
    }

    void cleanup()
    {
        heard = {};
        delete m_window;
    }

    void notificationHoldsItsWordsInALabel()
    {
        const qsizetype before = m_window->children().size();
        Announcer::say(m_window->centralWidget(), "something");
        QCOMPARE(heard.announcements, QStringList("something"));
        QCOMPARE(heard.others, 0);
        QCOMPARE(m_window->children().size(), before + 1);
        QAccessibleInterface *notification
            = QAccessible::queryAccessibleInterface(m_window->children().constLast());
        QVERIFY(notification->isValid());
        QCOMPARE(notification->role(), QAccessible::Notification);
        // The readers leave out a label that says what its notification's name says.
        QCOMPARE(notification->text(QAccessible::Name), QString());
        QCOMPARE(notification->parent(), QAccessible::queryAccessibleInterface(m_window));
        QVERIFY(!notification->state().invisible);
        QAccessibleInterface *label = notification->child(0);
        QCOMPARE(label->parent(), notification);
        QCOMPARE(notification->indexOfChild(label), 0);
        QCOMPARE(notification->child(1), nullptr);
        QCOMPARE(label->childCount(), 0);
        QCOMPARE(label->relations().size(), 0);
        QCOMPARE(label->rect(), notification->rect());
    }

    void eachTextHasANotificationOfItsOwn()
    {
        Announcer::say(m_window, "one");
        Announcer::say(m_window, "two");
        Announcer::say(m_window, "two");
        QCOMPARE(heard.announcements, QStringList({"one", "two", "two"}));
    }

    void floodLeavesTheNewest()
    {
        const qsizetype before = m_window->children().size();
        for (int i = 0; i < 100; ++i)
            Announcer::say(m_window, QString::number(i));
        QCOMPARE(heard.announcements.size(), 100);
        QCOMPARE(m_window->children().size(), before + 20);
        const QObject *newest = m_window->children().constLast();
        QCOMPARE(
            QAccessible::queryAccessibleInterface(newest->children().constFirst())->text(QAccessible::Name),
            QStringLiteral("99"));
    }

    void nothingIsDoneForNobody()
    {
        heard.active = false;
        const qsizetype before = m_window->children().size();
        Announcer::say(m_window, "something");
        m_window->showPauseButton();
        m_window->updateQueryErrorLabel("store is gone");
        QCOMPARE(m_window->children().size(), before);
        QCOMPARE(heard.announcements, QStringList());
    }

    void emptyTextIsNotSaid()
    {
        Announcer::say(m_window, {});
        m_window->updateQueryErrorLabel({});
        QCOMPARE(heard.announcements, QStringList());
    }

    void errorsAreSaid()
    {
        m_window->updateQueryErrorLabel("store is gone");
        m_window->updateBrowseErrorLabel("nothing to browse");
        QCOMPARE(heard.announcements, QStringList({"store is gone", "nothing to browse"}));
        heard.announcements.clear();
        m_window->showRendererErrorLog(305, "nothing to play");
        m_window->showRendererErrorLog(7, "lost");
        QCOMPARE(heard.announcements, QStringList({"Code 305, nothing to play", "Code 7, lost"}));
    }

    void statesAreSaidWhenTheyChange()
    {
        m_window->showPlayButton(); // is stopped already
        m_window->showPauseButton();
        m_window->showPauseButton(); // the next item
        m_window->showResumeButton();
        m_window->showPauseButton();
        m_window->showPlayButton();
        m_window->showPlayButton();
        QCOMPARE(heard.announcements, QStringList({"Playing", "Paused", "Playing", "Stopped"}));
    }

    void bufferingIsSaidWhenItBegins()
    {
        for (int percent = 0; percent <= 100; percent += 10)
            m_window->showBufferingInfo({}, float(percent) / 100);
        m_window->showPosition(0);
        m_window->showBufferingInfo("Scanning", 0.5F);
        m_window->showBufferingInfo("Scanning", 0.6F);
        QCOMPARE(heard.announcements, QStringList({"Buffering", "Scanning"}));
    }

    void policyOverrideIsSaidAndDescribed()
    {
        auto *button = m_window->findChild<QWidget *>("m_video_stopButton");
        m_window->showPolicyOverride(false);
        m_window->showPolicyOverride(true);
        m_window->showPolicyOverride(true);
        QCOMPARE(QAccessible::queryAccessibleInterface(button)->text(QAccessible::Description),
            QStringLiteral("Playback functions are overridden by a policy"));
        m_window->showPolicyOverride(false);
        QCOMPARE(button->accessibleDescription(), QString());
        QCOMPARE(heard.announcements,
            QStringList({"Playback functions are overridden by a policy",
                "Playback functions are no longer overridden"}));
    }

    void endOfPlaybackIsSaid()
    {
        const ModalCloser closer;
        QMetaObject::invokeMethod(m_window, "showPlaybackCompletedDialog");
        QCOMPARE(heard.announcements, QStringList("Playback completed!"));
    }

    void resultsOfAQueryAreSaidAtItsEnd()
    {
        m_window->showExecuteQueryButton(); // none was running
        m_window->showQueryCancelButton();
        QCOMPARE(heard.announcements, QStringList());
        m_window->showExecuteQueryButton();
        m_window->showQueryCancelButton();
        m_window->showFetchRestButton();
        QCOMPARE(heard.announcements, QStringList({"%n results", "%n results"}));
    }

    void choiceInAComboBoxIsSaidWhereTheFocusIs()
    {
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        m_window->findChild<QTabWidget *>("m_tabs")->setCurrentIndex(4);
        auto *box = m_window->findChild<QComboBox *>("m_query_queryCombo");
        m_window->findChild<QWidget *>("m_query_addButton")->setFocus();
        box->setCurrentIndex(3);
        QCOMPARE(heard.announcements, QStringList());
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Down);
        QCOMPARE(heard.announcements, QStringList("All albums"));
    }

    void positionTicksAreNotSaid()
    {
        m_window->showDuration(236);
        const auto *slider = m_window->findChild<QSlider *>("m_music_durationSlider");
        QStringList toldOf;
        connect(slider, &QSlider::valueChanged, this, [&](int value) {
            const QAccessible::UpdateHandler now = QAccessible::installUpdateHandler(note);
            QAccessible::installUpdateHandler(now);
            if (now == note)
                toldOf.append(QString::number(value));
        });
        const QAccessible::UpdateHandler before = QAccessible::installUpdateHandler(note);
        for (uint second = 1; second < 30; ++second)
            m_window->showPosition(second);
        QCOMPARE(slider->value(), 29);
        QCOMPARE(toldOf, QStringList());
        QCOMPARE(heard.announcements, QStringList());
        // What the user does is.
        QAccessible::queryAccessibleInterface(const_cast<QSlider *>(slider))
            ->valueInterface()
            ->setCurrentValue(40);
        QAccessible::installUpdateHandler(before);
        QCOMPARE(toldOf, QStringList("40"));
    }

    void focusStaysWhereItIs()
    {
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        auto *button = m_window->findChild<QWidget *>("m_music_nextButton");
        button->setFocus();
        m_window->updateQueryErrorLabel("store is gone");
        m_window->showPauseButton();
        QCOMPARE(QApplication::focusWidget(), button);
    }

private:
    KelvoMainWindow *m_window = nullptr;
};

KELVO_WIDGET_TEST(AnnouncerTest)
#include "AnnouncerTest.moc"
