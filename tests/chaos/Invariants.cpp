// SPDX-License-Identifier: MIT
#include "Invariants.h"

#include "KelvoPlaylist.h"
#include "KelvoPlaylistController.h"
#include "KelvoRendererController.h"
#include "Onlooker.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QListView>
#include <QRegularExpression>
#include <QSlider>
#include <QToolButton>

namespace {
/// Of a list without a duration that is known.
constexpr int rangeOfUnknownDuration = 10;

struct Entry
{
    QString uuid;
    QString name;
    bool operator==(const Entry &) const = default;
};

QString textOf(const QList<Entry> &entries)
{
    QStringList texts;
    for (const Entry &entry : entries)
        texts.append(entry.uuid + u'=' + entry.name);
    return texts.join(u'|');
}

QList<Entry> entriesOf(const QComboBox *box)
{
    QList<Entry> entries;
    for (int row = 0; row < box->count(); ++row)
        entries.append({box->itemData(row).toString(), box->itemText(row)});
    return entries;
}

QString chosenIn(const QComboBox *box)
{
    return box->currentIndex() < 0 ? QString() : box->currentData().toString();
}

void expect(QStringList &faults, bool holds, const QString &otherwise)
{
    if (!holds)
        faults.append(otherwise);
}
} // namespace

Invariants::Invariants(const Stage &stage, const Onlooker &onlooker)
    : m_stage(stage)
    , m_onlooker(onlooker)
{
}

QStringList Invariants::faults() const
{
    return captionFaults() + rendererBoxFaults() + playlistBoxFaults() + playlistFaults() + positionFaults();
}

QStringList Invariants::captionFaults() const
{
    QStringList faults;
    for (const char *name : {"m_music_playButton", "m_video_playButton"}) {
        const QString shown = m_stage.find<QToolButton>(name)->text();
        expect(faults, shown == m_onlooker.caption(),
            QStringLiteral("%1 says \"%2\", what was reported last means \"%3\"")
                .arg(QLatin1String(name), shown, m_onlooker.caption()));
    }
    return faults;
}

QStringList Invariants::rendererBoxFaults() const
{
    QStringList faults;
    const auto *box = m_stage.find<QComboBox>("m_music_rendererCombo");
    const QList<Entry> shown = entriesOf(box);
    QList<Entry> there;
    const QList<KelvoRenderer *> renderers = m_stage.registry()->renderers();
    for (qsizetype i = 0; i < renderers.size(); ++i) {
        QString name = m_onlooker.nameOf(renderers.at(i)->uuid());
        // Unnamed ones have a name that says how many there were then.
        if (name.isEmpty() && i < shown.size() && shown.at(i).name.startsWith(QLatin1String("empty ")))
            name = shown.at(i).name;
        there.append({renderers.at(i)->uuid(), name});
    }
    expect(faults, shown == there,
        QStringLiteral("the box shows the renderers %1, there are %2").arg(textOf(shown), textOf(there)));
    const KelvoRenderer *current = m_stage.console.application()->renderers()->currentRenderer();
    const QString uuid = current ? current->uuid() : QString();
    expect(faults, uuid == chosenIn(box) && uuid == m_onlooker.chosen(),
        QStringLiteral("commands go to the renderer \"%1\", chosen is \"%2\" in the box, \"%3\" by the user")
            .arg(uuid, chosenIn(box), m_onlooker.chosen()));
    return faults;
}

QStringList Invariants::playlistBoxFaults() const
{
    QStringList faults;
    QList<Entry> there;
    for (const KelvoPlaylist *playlist : m_stage.registry()->allPlaylists())
        there.append({playlist->uuid(), playlist->name()});
    const int chosen = m_stage.find<QComboBox>("m_music_playlistCombo")->currentIndex();
    for (const char *name : {"m_music_playlistCombo", "m_browse_playlistCombo", "m_query_playlistCombo"}) {
        const auto *box = m_stage.find<QComboBox>(name);
        const QList<Entry> shown = entriesOf(box);
        expect(faults, shown == there,
            QStringLiteral("%1 shows the playlists %2, there are %3")
                .arg(QLatin1String(name), textOf(shown), textOf(there)));
        expect(faults, box->currentIndex() == chosen,
            QStringLiteral("%1 is at entry %2, the first box at %3")
                .arg(QLatin1String(name), QString::number(box->currentIndex()), QString::number(chosen)));
    }
    return faults;
}

QStringList Invariants::playlistFaults() const
{
    QStringList faults;
    const QString chosen = chosenIn(m_stage.find<QComboBox>("m_music_playlistCombo"));
    KelvoPlaylist *current = m_stage.console.application()->playlists()->currentPlaylist();
    const QString uuid = current ? current->uuid() : QString();
    expect(faults, uuid == chosen,
        QStringLiteral("the playlist in use is \"%1\", chosen is \"%2\"").arg(uuid, chosen));
    if (!current)
        return faults;
    const auto *view = m_stage.find<QListView>("m_music_playlistView");
    expect(faults, view->model() == current->itemModel(), "the view shows another playlist");
    expect(faults, view->model() && view->model()->rowCount() == current->count(),
        QStringLiteral("the view shows %1 items of %2")
            .arg(view->model() ? view->model()->rowCount() : -1)
            .arg(current->count()));
    expect(faults, m_stage.find<QAction>("m_actionShuffle")->isChecked() == current->isShuffled(),
        "the entry \"Shuffle\" does not say whether the playlist is shuffled");
    return faults;
}

/// Where the user moved one, it stays until a position is told.
bool Invariants::isSliderInHand() const
{
    return m_onlooker.isSliderMoved() || m_stage.find<QSlider>("m_music_durationSlider")->isSliderDown()
        || m_stage.find<QSlider>("m_video_durationSlider")->isSliderDown();
}

QStringList Invariants::positionFaults() const
{
    QStringList faults;
    const auto *music = m_stage.find<QSlider>("m_music_durationSlider");
    const auto *video = m_stage.find<QSlider>("m_video_durationSlider");
    expect(faults, music->maximum() == video->maximum(), "the sliders have different ranges");
    expect(faults, isSliderInHand() || music->value() == video->value(),
        QStringLiteral("the sliders are at %1 and %2").arg(music->value()).arg(video->value()));
    const QString text = m_stage.find<QLabel>("m_music_durationLabel")->text();
    const QString other = m_stage.find<QLabel>("m_video_durationLabel")->text();
    if (text.endsWith(QLatin1String("\n..."))) // the search for the entries of a playlist file
        return faults;
    expect(faults, text == other || other.startsWith(QLatin1String("Scan")),
        QStringLiteral("the labels say \"%1\" and \"%2\"").arg(text, other).replace(u'\n', u' '));
    return faults + shownPositionFaults(text);
}

QStringList Invariants::shownPositionFaults(const QString &text) const
{
    QStringList faults;
    static const QRegularExpression form(QStringLiteral("^(\\d+):(\\d\\d) /\\n(\\d+):(\\d\\d)$"));
    const QRegularExpressionMatch match = form.match(text);
    const auto secondsAt = [&match](int minutes) {
        return match.captured(minutes).toInt() * 60 + match.captured(minutes + 1).toInt();
    };
    if (!m_onlooker.isLabelReadable())
        return faults;
    if (!match.hasMatch())
        return {QStringLiteral("the label says \"%1\"").arg(text)};
    const int position = secondsAt(1);
    const int duration = secondsAt(3);
    const auto *slider = m_stage.find<QSlider>("m_music_durationSlider");
    expect(faults, slider->maximum() == (duration > 0 ? duration : rangeOfUnknownDuration),
        QStringLiteral("the slider goes to %1, the label says %2").arg(slider->maximum()).arg(duration));
    expect(faults, isSliderInHand() || slider->value() == qMin(position, slider->maximum()),
        QStringLiteral("the slider is at %1, the label says %2").arg(slider->value()).arg(position));
    expect(faults, m_onlooker.canBeAt(position),
        QStringLiteral("the label says %1 s, which the renderer has not told").arg(position));
    const std::optional<int> told = m_onlooker.duration();
    expect(faults, !m_onlooker.isHonest() || !told || *told <= 0 || position <= *told,
        QStringLiteral("the label says %1 s of an item of %2 s").arg(position).arg(told.value_or(0)));
    return faults;
}
