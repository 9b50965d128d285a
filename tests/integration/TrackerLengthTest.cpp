// SPDX-License-Identifier: MIT
#include "TrackerIndexCase.h"
#include "index/MediaReader.h"

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <gst/gst.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {
constexpr int tolerance = 50; // milliseconds

// What goes into the files, as arguments of ffmpeg; 6.3 seconds each.
const char *const tone = "-f lavfi -i sine=frequency=440:sample_rate=44100:duration=6.3";
/// First loud, then silent: the bit rate varies where a format lets it.
const char *const varied
    = "-f lavfi -i anoisesrc=duration=3.3:sample_rate=44100:amplitude=0.4 "
      "-f lavfi -i anullsrc=r=44100:cl=mono:d=3 -filter_complex [0:a][1:a]concat=n=2:v=0:a=1";
const char *const film = "-f lavfi -i testsrc2=size=160x120:rate=25:duration=6.3 "
                         "-f lavfi -i sine=frequency=440:sample_rate=44100:duration=6.3";

/// How long a file is for who plays it.
struct Playing
{
    int decoded = 0; ///< milliseconds of what came out
    int announced = 0; ///< what the media engine says when it has played it
};

class Player
{
public:
    ~Player()
    {
        gst_element_set_state(m_pipeline, GST_STATE_NULL);
        gst_object_unref(m_pipeline);
    }

    Playing play(const QString &path)
    {
        GstElement *source = gst_element_factory_make("uridecodebin", nullptr);
        const QByteArray uri = QUrl::fromLocalFile(path).toEncoded();
        g_object_set(source, "uri", uri.constData(), nullptr);
        gst_bin_add(GST_BIN(m_pipeline), source);
        const auto added = +[](GstElement *, GstPad *pad, gpointer self) {
            static_cast<Player *>(self)->follow(pad);
        };
        g_signal_connect(source, "pad-added", G_CALLBACK(added), this);
        gst_element_set_state(m_pipeline, GST_STATE_PLAYING);
        GstBus *bus = gst_element_get_bus(m_pipeline);
        GstMessage *end = gst_bus_timed_pop_filtered(
            bus, 30 * GST_SECOND, GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
        gst_object_unref(bus);
        Playing playing;
        gint64 announced = 0;
        if (end && GST_MESSAGE_TYPE(end) == GST_MESSAGE_EOS) {
            if (gst_element_query_duration(m_pipeline, GST_FORMAT_TIME, &announced))
                playing.announced = int(announced / GST_MSECOND);
            for (const auto &stream : m_streams)
                playing.decoded
                    = std::max(playing.decoded, int((stream->end - stream->first) / qint64(GST_MSECOND)));
        }
        if (end)
            gst_message_unref(end);
        return playing;
    }

private:
    struct Stream
    {
        qint64 first = INT64_MAX;
        qint64 end = 0;
    };

    void follow(GstPad *pad)
    {
        GstElement *sink = gst_element_factory_make("fakesink", nullptr);
        g_object_set(sink, "sync", FALSE, "async", FALSE, nullptr);
        gst_bin_add(GST_BIN(m_pipeline), sink);
        GstPad *input = gst_element_get_static_pad(sink, "sink");
        Stream *stream = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            m_streams.push_back(std::make_unique<Stream>());
            stream = m_streams.back().get();
        }
        const auto passed = +[](GstPad *, GstPadProbeInfo *info, gpointer data) {
            const GstBuffer *buffer = GST_PAD_PROBE_INFO_BUFFER(info);
            auto *part = static_cast<Stream *>(data);
            if (GST_BUFFER_PTS_IS_VALID(buffer)) {
                const auto begin = qint64(GST_BUFFER_PTS(buffer));
                const bool hasLength = GST_BUFFER_DURATION_IS_VALID(buffer);
                part->first = std::min(part->first, begin);
                part->end
                    = std::max(part->end, begin + (hasLength ? qint64(GST_BUFFER_DURATION(buffer)) : 0));
            }
            return GST_PAD_PROBE_OK;
        };
        gst_pad_add_probe(input, GST_PAD_PROBE_TYPE_BUFFER, passed, stream, nullptr);
        gst_pad_link(pad, input);
        gst_object_unref(input);
        gst_element_sync_state_with_parent(sink);
    }

    GstElement *m_pipeline = gst_pipeline_new(nullptr);
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Stream>> m_streams;
};

/// Calls off a reading when a certain one of the engine's elements has found a stream, and holds the thread that found
/// it: time enough for the reader to be on its way out, while that thread has all the locks that it ever has.
class CallOff
{
public:
    /// @param turn  which of the streams found in the reading, from 1 on
    CallOff(MediaReader *reader, int turn)
        : m_reader(reader)
        , m_turn(turn)
        , m_signal(g_signal_lookup("pad-added", GST_TYPE_ELEMENT))
        , m_hook(g_signal_add_emission_hook(m_signal, 0, found, this, nullptr))
    {
    }
    ~CallOff() { g_signal_remove_emission_hook(m_signal, m_hook); }
    Q_DISABLE_COPY_MOVE(CallOff)

    bool hasHappened() const { return m_found >= m_turn; }

private:
    static gboolean found(GSignalInvocationHint *, guint, const GValue *, gpointer data)
    {
        auto *self = static_cast<CallOff *>(data);
        if (++self->m_found == self->m_turn) {
            self->m_reader->interrupt();
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        }
        return TRUE;
    }

    MediaReader *const m_reader;
    const int m_turn;
    std::atomic<int> m_found{0};
    const guint m_signal;
    const gulong m_hook;
};
} // namespace

/// How long files are said to be, against how long they play.
class TrackerLengthTest : public TrackerIndexCase
{
    Q_OBJECT

    static bool make(const QString &path, const QString &arguments)
    {
        QProcess ffmpeg;
        ffmpeg.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        ffmpeg.start("ffmpeg",
            QStringList{"-nostdin", "-v", "error", "-y"} + arguments.split(' ', Qt::SkipEmptyParts)
                + QStringList{path});
        return ffmpeg.waitForFinished() && ffmpeg.exitCode() == 0;
    }

    // As a program that cannot go back to fill in the headers.
    static bool makeThroughPipe(const QString &path, const QString &arguments)
    {
        QProcess cat;
        QProcess ffmpeg;
        ffmpeg.setStandardOutputProcess(&cat);
        cat.setStandardOutputFile(path);
        ffmpeg.start("ffmpeg",
            QStringList{"-nostdin", "-v", "error"} + arguments.split(' ', Qt::SkipEmptyParts)
                + QStringList{"-"});
        cat.start("cat");
        return ffmpeg.waitForFinished() && cat.waitForFinished() && ffmpeg.exitCode() == 0;
    }

    int indexedSeconds(const QString &name)
    {
        const auto songs = result(Type::AllSongs);
        const int row = songs ? rowOf(*songs, "songTitle", name) : -1;
        return row < 0 ? -1 : value(*songs, row, "songLength").toInt();
    }

private Q_SLOTS:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        TrackerIndexCase::initTestCase();
    }

    void isThatOfPlaying_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<bool>("throughPipe");
        QTest::addColumn<bool>("asAnnounced");
        const auto row = [](const char *name, const char *file, const QString &input, const char *arguments) {
            QTest::newRow(name) << file << input + ' ' + arguments << false << false;
        };
        const auto piped
            = [](const char *name, const char *file, const QString &input, const char *arguments) {
                  QTest::newRow(name) << file << input + ' ' + arguments << true << false;
              };
        // Pictures and sound of these end at different times, and nobody knows before playing them.
        const auto announced = [](const char *name, const char *file, const char *arguments) {
            QTest::newRow(name) << file << QString(film) + ' ' + arguments << false << true;
        };
        row("mp3 of one bit rate", "a.mp3", tone, "-b:a 128k");
        row("mp3 of one bit rate without header", "a.mp3", tone, "-b:a 128k -write_xing 0 -id3v2_version 0");
        row("mp3 of varying bit rate", "a.mp3", varied, "-q:a 4");
        row("mp3 of varying bit rate without header", "a.mp3", varied, "-q:a 4 -write_xing 0");
        piped("mp3 through a pipe", "a.mp3", varied, "-q:a 4 -f mp3");
        row("mp2", "a.mp2", varied, "-c:a mp2 -b:a 192k");
        row("vorbis", "a.ogg", varied, "-c:a libvorbis");
        row("vorbis whose last page lies across", "a.ogg",
            "-f lavfi -i sine=frequency=405:duration=6:sample_rate=22050", "-ac 1 -c:a libvorbis -q:a 1");
        row("opus", "a.opus", varied, "-c:a libopus");
        row("speex", "a.spx", tone, "-c:a libspeex -ar 16000");
        row("flac", "a.flac", varied, "");
        row("flac in ogg", "a.oga", tone, "-c:a flac -f ogg");
        piped("flac through a pipe", "a.flac", varied, "-f flac");
        row("aac", "a.m4a", varied, "-c:a aac");
        row("aac in pieces", "a.m4a", tone, "-c:a aac -movflags frag_keyframe+empty_moov");
        row("alac", "a.m4a", tone, "-c:a alac");
        row("adts", "a.aac", varied, "-c:a aac -f adts");
        row("wma", "a.wma", tone, "-c:a wmav2");
        piped("wma through a pipe", "a.wma", tone, "-c:a wmav2 -f asf");
        row("wav", "a.wav", tone, "");
        piped("wav through a pipe", "a.wav", tone, "-f wav");
        row("wavpack", "a.wv", tone, "-c:a wavpack");
        row("tta", "a.tta", tone, "-c:a tta");
        row("sound in matroska", "a.mka", varied, "-c:a mp3");
        piped("sound in matroska through a pipe", "a.mka", tone, "-c:a libvorbis -f matroska");
        row("ac3", "a.ac3", tone, "-c:a ac3");
        row("dts", "a.dts", tone, "-c:a dca -strict -2");
        row("au", "a.au", tone, "");
        const char *const h264 = "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac";
        for (const char *file : {"a.mp4", "a.m4v", "a.mov", "a.mkv"})
            row(file, file, film, h264);
        row("sound in mp4", "a.mp4", tone, "-c:a aac");
        // The threads of this encoder wait for one another by turning around, for seconds.
        row("webm", "a.webm", film, "-c:v libvpx -threads 1 -deadline realtime -c:a libvorbis");
        row("avi", "a.avi", film, "-c:v mpeg4 -c:a mp3");
        row("flv", "a.flv", film, "-c:v flv -c:a mp3 -ar 44100");
        row("ogv", "a.ogv", film, "-c:v libtheora -c:a libvorbis");
        row("wmv", "a.wmv", film, "-c:v wmv2 -c:a wmav2");
        row("pictures in no container", "a.m2v", film, "-map 0:v -c:v mpeg2video");
        announced("mpeg program", "a.mpg", "-c:v mpeg1video -c:a mp2");
        announced("dvd", "a.vob", "-c:v mpeg2video -c:a mp2 -f vob");
        announced("mpeg transport", "a.m2ts", "-c:v mpeg2video -c:a mp2 -f mpegts");
    }

    void isThatOfPlaying()
    {
        QFETCH(QString, file);
        QFETCH(QString, arguments);
        QFETCH(bool, throughPipe);
        QFETCH(bool, asAnnounced);
        const QString path = place(file);
        QVERIFY(throughPipe ? makeThroughPipe(path, arguments) : make(path, arguments));
        const Playing playing = Player().play(path);
        const int played = asAnnounced ? playing.announced : playing.decoded;
        QVERIFY2(
            played > 5900 && played < 6600, QByteArray::number(played)); // the comparison is worth something
        MediaItem item;
        item.kind = file.endsWith("mp4") || asAnnounced ? MediaKind::Video : MediaKind::Song;
        item.path = local(path);
        item.uri = QUrl::fromLocalFile(path).toEncoded();
        QVERIFY(MediaReader().read(&item));
        QVERIFY2(qAbs(item.milliseconds - played) <= tolerance,
            qPrintable(QStringLiteral("%1 read, %2 played").arg(item.milliseconds).arg(played)));
        QCOMPARE(item.seconds, int((item.milliseconds + 500) / 1000));
    }

    void isRoundedToSecondsButNeverToNone()
    {
        MediaItem item;
        for (const auto &[length, seconds] : std::initializer_list<std::pair<qint64, int>>{{-5, 0}, {0, 0},
                 {1, 1}, {499, 1}, {1499, 1}, {1500, 2}, {5079, 5}, {INT64_C(1) << 60, INT_MAX}}) {
            item.setLength(length);
            QCOMPARE(item.seconds, seconds);
        }
    }

    void isInTheStore()
    {
        QVERIFY(make(place("six.ogg"),
            "-f lavfi -i sine=frequency=405:duration=6:sample_rate=22050 -ac 1 -c:a libvorbis -q:a 1"));
        QVERIFY(make(place("varied.mp3"), QString(varied) + " -q:a 4 -write_xing 0 -id3v2_version 0"));
        QVERIFY(index());
        QCOMPARE(indexedSeconds("six.ogg"), 6);
        QCOMPARE(indexedSeconds("varied.mp3"), 6);
    }

    // Who plays a stream without a table tells a guess, and another one later.
    void isNotCorrectedWhereItWasCounted()
    {
        QVERIFY(make(place("varied.mp3"), QString(varied) + " -q:a 4 -write_xing 0 -id3v2_version 0"));
        QVERIFY(make(place("table.mp3"), QString(varied) + " -q:a 4 -id3v2_version 0"));
        QVERIFY(index());
        QSignalSpy corrected(&store(), &KelvoTrackerStore::lengthCorrected);
        store().correctLength(QUrl::fromLocalFile(place("varied.mp3")), 9);
        store().correctLength(QUrl::fromLocalFile(place("table.mp3")), 9);
        QTRY_COMPARE(corrected.count(), 1);
        QCOMPARE(indexedSeconds("varied.mp3"), 6);
        QCOMPARE(indexedSeconds("table.mp3"), 9);
    }

    void ofWhatIsNoSoundIsNotCounted()
    {
        for (const char *broken : {"random.mp3", "empty.mp3", "page.html"}) {
            MediaItem item;
            item.kind = MediaKind::Song;
            item.path = local(addFile(QString("%1.mp3").arg(broken), broken));
            item.uri = QUrl::fromLocalFile(QFile::decodeName(item.path)).toEncoded();
            MediaReader().read(&item);
            QVERIFY2(item.milliseconds < 60'000, broken);
        }
    }

    void isNotCountedAnyMoreWhenCalledOff()
    {
        QVERIFY(make(place("a.aac"), QString(varied) + " -c:a aac -f adts"));
        MediaItem item;
        item.kind = MediaKind::Song;
        item.path = local(place("a.aac"));
        item.uri = QUrl::fromLocalFile(place("a.aac")).toEncoded();
        MediaReader reader;
        reader.interrupt();
        QVERIFY(!reader.read(&item));
        QCOMPARE(item.milliseconds, 0);
    }

    void endsWhereverItIsCalledOff_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("file");
        QTest::newRow("looked into, then counted") << QString(varied) + " -c:a aac -f adts"
                                                   << "a.aac";
        QTest::newRow("looked into, with two streams")
            << QString(film) + " -c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac"
            << "a.mp4";
    }
    void endsWhereverItIsCalledOff()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, file);
        QVERIFY(make(place(file), arguments));
        bool isCalledOff = true;
        int turns = 0;
        while (isCalledOff) {
            MediaItem item;
            item.kind = MediaKind::Video;
            item.path = local(place(file));
            item.uri = QUrl::fromLocalFile(place(file)).toEncoded();
            MediaReader reader;
            const CallOff callOff(&reader, ++turns);
            const auto reading = std::async(std::launch::async, [&] { reader.read(&item); });
            // One that hangs cannot be ended.
            if (reading.wait_for(std::chrono::seconds(60)) != std::future_status::ready)
                qFatal("The reading does not end when called off at stream %d", turns);
            isCalledOff = callOff.hasHappened();
        }
        QVERIFY2(turns > 3, QByteArray::number(turns)); // there was something to call off
    }
};

QTEST_GUILESS_MAIN(TrackerLengthTest)
#include "TrackerLengthTest.moc"
