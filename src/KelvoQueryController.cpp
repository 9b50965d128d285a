// SPDX-License-Identifier: MIT
#include "KelvoQueryController.h"

#include "KelvoMainWindow.h"
#include "KelvoTrackerModelFactory.h"
#include "QSparqlConnection.h"
#include "QSparqlQueryModel.h"

#include <QDebug>

#include <iterator>

namespace {
constexpr int defaultStreamBlockSize = 2000;
constexpr int defaultFirstBlockSize = 200;

struct BuiltInQuery
{
    KelvoTrackerModel::QueryType type;
    KelvoQueryController::QueryKind kind;
};

/// In the order of the window's list, in which the videos follow.
constexpr BuiltInQuery builtInQueries[] = {
    {KelvoTrackerModel::AllSongs, KelvoQueryController::Songs},
    {KelvoTrackerModel::RecentlyAddedSongs, KelvoQueryController::Songs},
    {KelvoTrackerModel::RecentlyPlayedSongs, KelvoQueryController::Songs},
    {KelvoTrackerModel::MostPlayedSongs, KelvoQueryController::Songs},
    {KelvoTrackerModel::AllAlbums, KelvoQueryController::Albums},
    {KelvoTrackerModel::AllArtists, KelvoQueryController::Artists},
    {KelvoTrackerModel::AllPlaylists, KelvoQueryController::Playlists},
    {KelvoTrackerModel::FavoriteSongs, KelvoQueryController::Songs},
    {KelvoTrackerModel::NeverPlayedSongs, KelvoQueryController::Songs},
    {KelvoTrackerModel::DownloadedSongs, KelvoQueryController::Songs},
};
constexpr int videoQuery = int(std::size(builtInQueries));

const auto videoQueryText = QStringLiteral(
    "SELECT ?video nfo:fileName(?video) nie:url(?video) ?length nfo:fileSize(?video)WHERE {  "
    "  ?video a nmm:Video .    OPTIONAL    {      ?video nfo:duration ?length .    } } ORDER "
    "BY nfo:fileName(?video)");

/// The header texts by which results name their columns. Of these only the first is looked for here.
constexpr QLatin1String columnKeys[] = {
    QLatin1String("songId"),
    QLatin1String("songUri"),
    QLatin1String("songTitle"),
    QLatin1String("songLength"),
    QLatin1String("trackNumber"),
    QLatin1String("artistId"),
    QLatin1String("artistName"),
    QLatin1String("albumId"),
    QLatin1String("albumName"),
    QLatin1String("albumTrackCount"),
    QLatin1String("albumLength"),
    QLatin1String("albumArtistCount"),
    QLatin1String("albumSongs"),
    QLatin1String("numberOfSongs"),
    QLatin1String("numberOfAlbums"),
    QLatin1String("genre"),
    QLatin1String("year"),
    QLatin1String("favorited"),
    QLatin1String("usageCounter"),
    QLatin1String("added"),
    QLatin1String("playlistId"),
    QLatin1String("playlistName"),
    QLatin1String("playlistTrackCount"),
    QLatin1String("playlistLength"),
};
constexpr QLatin1String songIdKey = columnKeys[0];
} // namespace

KelvoQueryController::KelvoQueryController(QObject *parent, KelvoMainWindow *mainWindow)
    : QObject(parent)
    , m_mainWindow(mainWindow)
    , m_streamBlockSize(defaultStreamBlockSize)
    , m_firstBlockSize(defaultFirstBlockSize)
{
    qDebug() << "KelvoQueryController::KelvoQueryController";
    createFactory(
        QStringLiteral("Unknown KTG Album"), QStringLiteral("Unknown KTG Artist"), defaultStreamBlockSize);
    connect(m_mainWindow, &QObject::destroyed, this, &KelvoQueryController::retire);
}

KelvoQueryController::~KelvoQueryController()
{
    m_factory.reset();
    m_sparqlConnection.reset();
    qDebug() << "KelvoQueryController::~KelvoQueryController";
}

void KelvoQueryController::retire()
{
    // The window goes first when the program ends; rows that still come have nobody to be shown to.
    unfollowResult();
}

void KelvoQueryController::unfollowResult()
{
    if (m_model)
        disconnect(m_model, nullptr, this, nullptr);
}

void KelvoQueryController::createFactory(
    const QString &unknownAlbum, const QString &unknownArtist, int streamingBlockSize)
{
    m_factory = std::make_unique<KelvoTrackerModelFactory>(unknownAlbum, unknownArtist, streamingBlockSize);
    m_factory->init();
    m_mainWindow->setQueryButtonsEnabled(false);
    connect(m_factory.get(), SIGNAL(initCompleted(bool)), m_mainWindow, SLOT(setQueryButtonsEnabled(bool)));
    connect(
        m_factory.get(), &KelvoTrackerModelFactory::initCompleted, this, &KelvoQueryController::showOpening);
}

void KelvoQueryController::showOpening(bool opened)
{
    // With the buttons disabled no query will come to tell why.
    const bool failedBefore = std::exchange(m_openingFailed, !opened);
    if (m_mainWindow && (failedBefore || !opened))
        m_mainWindow->updateQueryErrorLabel(opened ? QString() : m_factory->errorText());
}

QAbstractItemModel *KelvoQueryController::query(const QList<KelvoSource *> &sources, int queryIndex)
{
    Q_UNUSED(sources)
    qDebug() << "KelvoQueryController::query" << queryIndex;
    m_queryKind = Songs;
    // The earlier result lives on, but what it still tells is nothing about this query.
    if (queryIndex >= 0 && queryIndex <= videoQuery)
        unfollowResult();
    if (queryIndex >= 0 && queryIndex < videoQuery) {
        const BuiltInQuery &builtIn = builtInQueries[queryIndex];
        m_model = trackerModel(builtIn.type, 0);
        m_queryKind = builtIn.kind;
    } else if (queryIndex == videoQuery) {
        m_queryKind = Videos;
        m_model = videoModel();
    } else {
        m_queryKind = NoKind;
        qDebug() << "Unknown index.";
        return nullptr;
    }
    return startQuery();
}

QAbstractItemModel *KelvoQueryController::extendQuery(const QList<KelvoSource *> &sources, int row)
{
    Q_UNUSED(sources)
    qDebug() << "KelvoQueryController::extendQuery" << row;
    auto type = KelvoTrackerModel::RelatedSongs;
    int kind = Songs;
    int column = 0;
    switch (m_queryKind) {
    case Artists:
        type = KelvoTrackerModel::AlbumsOfArtist;
        kind = Albums;
        break;
    case Albums:
        type = KelvoTrackerModel::SongsOfAlbum;
        break;
    case Playlists:
        type = KelvoTrackerModel::SongsOfPlaylist;
        break;
    case Songs:
        column = songIdColumn();
        break;
    default:
        qDebug() << "Not extendable item!";
        return nullptr;
    }
    const int id = idAt(row, column);
    m_queryKind = kind;
    delete m_model;
    m_model = trackerModel(type, id);
    return startQuery();
}

QAbstractItemModel *KelvoQueryController::search(
    const QList<KelvoSource *> &sources, const QString &term, int item)
{
    Q_UNUSED(sources)
    Q_UNUSED(term)
    Q_UNUSED(item)
    qDebug() << "KelvoQueryController::search";
    return nullptr;
}

void KelvoQueryController::fetchRest()
{
    qDebug() << "void KelvoQueryController::fetchRest()" << m_model.data();
    if (auto *model = qobject_cast<KelvoTrackerModel *>(m_model))
        model->fetchRest();
    else
        qCritical() << "void KelvoQueryController::fetchRest()"
                    << "not valid KelvoTrackerModel";
}

bool KelvoQueryController::latestQueryExtendable() const
{
    qDebug() << "KelvoQueryController::latestQueryExtendable";
    return m_queryKind == Artists || m_queryKind == Albums;
}

QAbstractItemModel *KelvoQueryController::queryModel() const
{
    qDebug() << "KelvoQueryController::queryModel";
    return m_model;
}

void KelvoQueryController::cancelOngoingQuery()
{
    qDebug() << "KelvoQueryController::cancelOngoingQuery";
}

int KelvoQueryController::queryState() const
{
    qDebug() << "KelvoQueryController::queryState" << m_queryState;
    return m_queryState;
}

KelvoTrackerModel *KelvoQueryController::trackerModel(KelvoTrackerModel::QueryType type, int id)
{
    return m_factory->getModel(type, m_firstBlockSize, id);
}

QAbstractItemModel *KelvoQueryController::videoModel()
{
    if (!m_sparqlConnection) {
        m_sparqlConnection
            = std::make_unique<QSparqlConnection>(QStringLiteral("QTRACKER"), QSparqlConnectionOptions());
    }
    auto *model = new QSparqlQueryModel;
    model->setQuery(QSparqlQuery(videoQueryText, QSparqlQuery::SelectStatement), *m_sparqlConnection);
    return model;
}

int KelvoQueryController::idAt(int row, int column) const
{
    return m_model ? m_model->data(m_model->index(row, column), Qt::DisplayRole).toInt() : 0;
}

int KelvoQueryController::songIdColumn() const
{
    const int columns = m_model ? m_model->columnCount() : 0;
    for (int column = 0; column < columns; ++column) {
        if (m_model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString() == songIdKey)
            return column;
    }
    return 0;
}

QAbstractItemModel *KelvoQueryController::startQuery()
{
    m_mainWindow->showQueryCancelButton();
    m_queryState = Running;
    connect(m_model, SIGNAL(rowsInserted(QModelIndex, int, int)), this, SLOT(handleFirstResults()));
    if (qobject_cast<KelvoTrackerModel *>(m_model))
        connect(m_model, SIGNAL(completed()), this, SLOT(modelUpdatedSlot()));
    else
        connect(m_model, SIGNAL(finished()), this, SLOT(modelUpdatedSlot()));
    connect(m_model, SIGNAL(error(QString)), this, SLOT(queryErrorSlot(QString)));
    return m_model;
}

void KelvoQueryController::setNewQueryProperties(int firstBlockSize, int streamingBlockSize)
{
    qDebug() << "void KelvoQueryController::setNewQueryProperties(int, int)" << firstBlockSize
             << streamingBlockSize;
    if (streamingBlockSize != m_streamBlockSize) {
        m_factory.reset();
        // In another language than the first factory's on purpose: testers see from them which one answered.
        createFactory(
            QStringLiteral("Tuntematon Albumi"), QStringLiteral("Tuntematon Artisti"), streamingBlockSize);
    }
    m_streamBlockSize = streamingBlockSize;
    m_firstBlockSize = firstBlockSize;
}

void KelvoQueryController::modelUpdatedSlot()
{
    qDebug() << "KelvoQueryController::modelUpdatedSlot";
    m_mainWindow->showExecuteQueryButton();
    m_queryState = Idle;
}

void KelvoQueryController::rowsUpdated(int row, int count, const QModelIndex &parent)
{
    Q_UNUSED(row)
    Q_UNUSED(count)
    Q_UNUSED(parent)
    qDebug() << "void KelvoQueryController::rowsUpdated(int, int, const QModelIndex&)";
}

void KelvoQueryController::queryErrorSlot(const QString &message)
{
    qDebug() << "KelvoQueryController::queryErrorSlot" << message;
    m_mainWindow->showExecuteQueryButton();
    m_mainWindow->updateQueryErrorLabel(message);
    m_queryState = Idle;
}

// The three slots for changed subjects, the timer and the refresh slot are hooks: nothing is connected to them.
void KelvoQueryController::subjectsAdded(const QStringList &subjects)
{
    subjectsCameOrWent("Subject(s) added:", subjects);
}

void KelvoQueryController::subjectsRemoved(const QStringList &subjects)
{
    subjectsCameOrWent("Subject(s) removed:", subjects);
}

void KelvoQueryController::subjectsCameOrWent(const char *what, const QStringList &subjects)
{
    qDebug().noquote() << what << QLatin1Char('(') + subjects.join(QStringLiteral(", ")) + QLatin1Char(')');
    if (m_queryKind == Songs || m_queryKind == Videos)
        m_refreshTimer.start();
}

void KelvoQueryController::subjectsChanged(const QStringList &subjects)
{
    qWarning().noquote() << "Subject(s) changed:"
                         << QLatin1Char('(') + subjects.join(QStringLiteral(", ")) + QLatin1Char(')');
}

void KelvoQueryController::refreshModelSlot()
{
    qDebug() << "KelvoQueryController::refreshModelSlot";
}

void KelvoQueryController::handleFirstResults()
{
    qDebug() << "KelvoQueryController::handleFirstResults";
    if (m_model) {
        disconnect(m_model, SIGNAL(rowsInserted(QModelIndex, int, int)), this, SLOT(handleFirstResults()));
    }
    m_mainWindow->showFetchRestButton();
    m_queryState = FirstRows;
}
