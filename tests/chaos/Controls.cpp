// SPDX-License-Identifier: MIT
#include "Controls.h"

#include "KelvoRendererController.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QListView>
#include <QSlider>
#include <QTabWidget>

namespace {
constexpr const char *buttons[] = {
    "m_music_stopButton",
    "m_music_prevButton",
    "m_music_nextButton",
    "m_music_nextButton",
    "m_music_seekBackButton",
    "m_music_seekForwButton",
    "m_video_prevButton",
    "m_video_nextButton",
    "m_video_seekBackButton",
    "m_video_seekForwButton",
};
constexpr const char *plainActions[] = {
    "m_action0_sec",
    "m_action1_sec",
    "m_action3_sec",
    "m_action6_sec",
    "m_action10_sec",
    "m_actionMute",
    "m_actionShowPauseFrame",
    "m_actionShowPauseFrame",
    "m_actionAutoAdvance",
    "m_actionForceAspectRatio",
    "m_actionShowAllMetadata",
    "m_actionLaunchBrowser",
};
constexpr const char *sliders[] = {"m_music_durationSlider", "m_video_durationSlider"};
} // namespace

Controls::Controls(const Stage &stage)
    : m_stage(stage)
{
}

QList<Deed> Controls::deeds()
{
    const auto window = Deed::AtTheWindow;
    return {
        {16, window, std::bind_front(&Controls::pressPlay, this)},
        {9, window, std::bind_front(&Controls::press, this)},
        {5, window, std::bind_front(&Controls::moveSlider, this)},
        {2, window, std::bind_front(&Controls::holdSlider, this)},
        {14, window, std::bind_front(&Controls::chooseItem, this)},
        {2, window, std::bind_front(&Controls::playFast, this)},
        {6, window, std::bind_front(&Controls::trigger, this)},
        {6, window, std::bind_front(&Controls::chooseRenderer, this)},
        {6, window, std::bind_front(&Controls::choosePlaylist, this)},
        {2, window, std::bind_front(&Controls::arrangeWindow, this)},
        {2, window, std::bind_front(&Controls::closeErrorLog, this)},
    };
}

void Controls::press(Dice &dice) const
{
    const char *name = dice.oneOf(buttons);
    m_stage.say(QStringLiteral("press %1").arg(QLatin1String(name)));
    m_stage.find<QAbstractButton>(name)->click();
}

void Controls::pressPlay(Dice &dice) const
{
    const char *name = dice.chance(50) ? "m_music_playButton" : "m_video_playButton";
    auto *button = m_stage.find<QAbstractButton>(name);
    m_stage.say(QStringLiteral("press %1 (%2)").arg(QLatin1String(name), button->text()));
    button->click();
}

void Controls::moveSlider(Dice &dice) const
{
    auto *slider = m_stage.find<QSlider>(dice.oneOf(sliders));
    // The ends are more likely than by chance.
    const int share = dice.oneOf(std::initializer_list<int>{0, 10, 30, 50, 70, 90, 98, 100});
    const int value = int(qint64(slider->maximum()) * share / 100);
    m_stage.say(QStringLiteral("move %1 to %2").arg(slider->objectName()).arg(value));
    slider->setSliderDown(true);
    slider->setValue(value);
    slider->setSliderDown(false);
}

void Controls::holdSlider(Dice &dice) const
{
    auto *slider = m_stage.find<QSlider>(dice.oneOf(sliders));
    const bool down = !slider->isSliderDown();
    m_stage.say(QStringLiteral("%1 %2").arg(
        down ? QStringLiteral("hold") : QStringLiteral("let go of"), slider->objectName()));
    slider->setSliderDown(down);
}

void Controls::chooseItem(Dice &dice) const
{
    auto *view = m_stage.find<QListView>("m_music_playlistView");
    const int number = dice.below(1000);
    const bool play = dice.chance(60);
    const int rows = view->model() ? view->model()->rowCount() : 0;
    if (rows == 0)
        return m_stage.say(QStringLiteral("no item to choose"));
    const QModelIndex index = view->model()->index(number % rows, 1);
    m_stage.say(QStringLiteral("%1 item %2")
                    .arg(play ? QStringLiteral("play") : QStringLiteral("choose"))
                    .arg(index.row()));
    view->setCurrentIndex(index);
    if (play)
        Q_EMIT view->doubleClicked(index);
}

void Controls::playFast(Dice &dice) const
{
    constexpr const char *calls[] = {"startFastForward", "startFastRewind", "stopFastPlayback"};
    const char *slot = dice.oneOf(calls);
    m_stage.say(QLatin1String(slot));
    QMetaObject::invokeMethod(m_stage.console.application()->renderers(), slot);
}

void Controls::trigger(Dice &dice) const
{
    const char *name = dice.oneOf(plainActions);
    m_stage.say(QStringLiteral("menu entry %1").arg(QLatin1String(name)));
    m_stage.find<QAction>(name)->trigger();
}

void Controls::chooseIn(Dice &dice, const char *name) const
{
    auto *box = m_stage.find<QComboBox>(name);
    const int number = dice.below(1000);
    if (box->count() == 0)
        return m_stage.say(QStringLiteral("nothing to choose in %1").arg(QLatin1String(name)));
    const int row = number % box->count();
    m_stage.say(QStringLiteral("choose %1 in %2").arg(box->itemText(row), QLatin1String(name)));
    box->setCurrentIndex(row);
}

void Controls::chooseRenderer(Dice &dice) const
{
    // Most of those that come and go do not play: the others are chosen more often.
    constexpr const char *reliable[]
        = {"KelvoSimulatorA", "KelvoSimulatorB", "KelvoSimulatorUnnamed", "kelvo-gst-renderer"};
    const QString uuid = QLatin1String(dice.oneOf(reliable));
    auto *box = m_stage.find<QComboBox>("m_music_rendererCombo");
    const int row = box->findData(uuid);
    if (row < 0 || dice.chance(40))
        return chooseIn(dice, "m_music_rendererCombo");
    m_stage.say(QStringLiteral("choose %1").arg(uuid));
    box->setCurrentIndex(row);
}

void Controls::choosePlaylist(Dice &dice) const
{
    constexpr const char *boxes[]
        = {"m_music_playlistCombo", "m_browse_playlistCombo", "m_query_playlistCombo"};
    chooseIn(dice, dice.oneOf(boxes));
}

void Controls::arrangeWindow(Dice &dice) const
{
    KelvoMainWindow *window = m_stage.console.window();
    switch (dice.below(4)) {
    case 0: {
        auto *tabs = m_stage.find<QTabWidget>("m_tabs");
        tabs->setCurrentIndex(dice.below(tabs->count()));
        return m_stage.say(QStringLiteral("tab %1").arg(tabs->currentIndex()));
    }
    case 1:
        m_stage.say(QStringLiteral("full screen"));
        return window->showFullScreen();
    case 2:
        m_stage.say(QStringLiteral("no full screen"));
        return window->showNormal();
    default:
        m_stage.say(QStringLiteral("another size"));
        window->resize(dice.between(300, 1400), dice.between(200, 1000));
    }
}

void Controls::closeErrorLog(Dice &dice) const
{
    auto *log = m_stage.find<QDialog>("RendererErrorLogDialog");
    const bool clear = dice.chance(50);
    m_stage.say(QStringLiteral("close the error log"));
    if (clear)
        m_stage.find<QAbstractButton>("m_clearButton")->click();
    log->accept();
}
