// SPDX-License-Identifier: MIT
#include "PlaylistFixture.h"

#include <QTest>

char *toString(const QList<ContentsChange> &changes)
{
    QString text;
    for (const ContentsChange &change : changes)
        text += QStringLiteral("(%1, %2, %3) ").arg(change.from).arg(change.removed).arg(change.added);
    return QTest::toString(text);
}

PlaylistFixture::PlaylistFixture()
    : playlist(std::make_unique<KelvoGeneralSourcePlaylist>("playlist-id", "pl1", "KelvoTrackerSource"))
    , m_tester(playlist->itemModel(), QAbstractItemModelTester::FailureReportingMode::QtTest)
{
    QObject::connect(playlist.get(), &KelvoPlaylist::contentsChanged, &m_tester,
        [this](uint from, uint removed, uint added) { check(from, removed, added); });
}

PlaylistFixture::PlaylistFixture(QAbstractItemModel *model)
    : PlaylistFixture()
{
    playlist->setUnderlyingModel(model);
    m_changes.clear();
}

void PlaylistFixture::check(uint from, uint removed, uint added)
{
    const QStringList now = uuids();
    QCOMPARE(now.size(), m_known.size() - int(removed) + int(added));
    QCOMPARE(now.mid(0, int(from)), m_known.mid(0, int(from)));
    QCOMPARE(now.mid(int(from + added)), m_known.mid(int(from + removed)));
    m_known = now;
    m_changes.append({from, removed, added});
    checkAgreement();
}

void PlaylistFixture::checkAgreement()
{
    QCOMPARE(playlist->itemModel()->rowCount(), playlist->count());
    for (int i = 0; i < playlist->count(); ++i) {
        const KelvoMediaInfo info = playlist->mediaInfoAt(uint(i));
        QCOMPARE(playlist->indexOf(info.uuid()), i);
        QCOMPARE(cell(i, KelvoPlaylist::TitleColumn), info.title());
        QCOMPARE(cell(i, KelvoPlaylist::DurationColumn, Qt::EditRole).toInt(), info.duration());
    }
}

QStringList PlaylistFixture::titles()
{
    QStringList titles;
    for (int i = 0; i < playlist->count(); ++i)
        titles.append(playlist->mediaInfoAt(uint(i)).title());
    return titles;
}

QStringList PlaylistFixture::uuids()
{
    QStringList uuids;
    for (int i = 0; i < playlist->count(); ++i)
        uuids.append(playlist->mediaInfoAt(uint(i)).uuid());
    return uuids;
}

QString PlaylistFixture::cell(int row, int column, int role)
{
    return playlist->itemModel()->index(row, column).data(role).toString();
}

QStringList PlaylistFixture::headers()
{
    QStringList headers;
    for (int column = 0; column < playlist->itemModel()->columnCount(); ++column)
        headers.append(playlist->itemModel()->headerData(column, Qt::Horizontal).toString());
    return headers;
}

void PlaylistFixture::markAll()
{
    m_marks.clear();
    for (int i = 0; i < playlist->count(); ++i) {
        const QModelIndex index = playlist->itemModel()->index(i, KelvoPlaylist::TitleColumn);
        m_marks.insert(playlist->mediaInfoAt(uint(i)).uuid(), index);
    }
}

void PlaylistFixture::checkMarks()
{
    for (auto mark = m_marks.cbegin(); mark != m_marks.cend(); ++mark) {
        const int index = playlist->indexOf(mark.key());
        QCOMPARE(mark->isValid(), index >= 0);
        QCOMPARE(mark->row(), index);
    }
}

std::unique_ptr<QStandardItemModel> songs(const QStringList &titles)
{
    auto model = std::make_unique<QStandardItemModel>();
    model->setHorizontalHeaderLabels({"id", "title", "url", "duration", "artist", "year"});
    for (const QString &title : titles)
        model->appendRow(song(title));
    return model;
}

QList<QStandardItem *> song(const QString &titleAndDuration)
{
    const QString title = titleAndDuration.section(':', 0, 0);
    const QString duration = titleAndDuration.section(':', 1);
    return texts({"id-" + title, title, "file:///" + title + ".ogg", duration, "artist of " + title,
        "year of " + title});
}

QList<QStandardItem *> texts(const QStringList &cells)
{
    QList<QStandardItem *> row;
    for (const QString &cell : cells)
        row.append(new QStandardItem(cell));
    return row;
}
