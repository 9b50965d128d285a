// SPDX-License-Identifier: MIT
#include "ClockedMedium.h"
#include "GstHandles.h"
#include "KelvoTestCase.h"
#include "MediaClock.h"
#include "TestGroup.h"
#include "TimeCodeReader.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <numeric>

namespace {
constexpr int patience = 60'000; // milliseconds
constexpr int item = 3;
constexpr double seconds = 4;
constexpr double closeEnough = 0.001; // seconds

/// What is heard of a medium.
struct Heard
{
    std::vector<float> code;
    std::vector<float> tone;
    double begin = 0; ///< the position of the first sample
    QString problem;
};

/// Both channels of samples that take turns.
void append(Heard *heard, const float *samples, size_t count)
{
    for (size_t i = 0; i + 1 < count; i += MediaClock::channels) {
        heard->code.push_back(samples[i + MediaClock::codeChannel]);
        heard->tone.push_back(samples[i + MediaClock::toneChannel]);
    }
}

/// The next of what a pipeline gives out; null at its end.
GstHandles::Sample pull(GstElement *sink)
{
    GstSample *sample = nullptr;
    g_signal_emit_by_name(sink, "pull-sample", &sample);
    return GstHandles::Sample(sample);
}

/// Position and sound of a piece; what does not join what came before is a problem.
void take(Heard *heard, GstSample *sample)
{
    GstBuffer *const buffer = gst_sample_get_buffer(sample);
    const guint64 position
        = gst_segment_to_stream_time(gst_sample_get_segment(sample), GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    const double at = double(position) / double(GST_SECOND);
    if (heard->code.empty())
        heard->begin = at;
    const double due = heard->begin + double(heard->code.size()) / MediaClock::sampleRate;
    if (std::abs(at - due) > closeEnough)
        heard->problem = QStringLiteral("a gap: %1 s follows %2 s").arg(at).arg(due);
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_READ);
    append(heard, reinterpret_cast<const float *>(map.data), map.size / sizeof(float));
    gst_buffer_unmap(buffer, &map);
}

GstHandles::Element parse(const QString &description)
{
    GlibHandles::Error error;
    auto pipeline = GstHandles::adopt(gst_parse_launch(description.toUtf8().constData(), error.out()));
    if (error)
        qWarning("%s", error->message);
    return pipeline;
}

Heard heardByGStreamer(const QString &path)
{
    const auto pipeline
        = parse(QStringLiteral("filesrc location=%1 ! decodebin ! audioconvert ! audioresample"
                               " ! audio/x-raw,format=F32LE,rate=%2,channels=2,layout=interleaved"
                               " ! appsink name=sink sync=false")
                    .arg(path)
                    .arg(MediaClock::sampleRate));
    const GstHandles::Element sink(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    Heard heard;
    while (const GstHandles::Sample sample = pull(sink.get()))
        take(&heard, sample.get());
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return heard;
}

/// By another decoder.
Heard heardByFfmpeg(const QString &path)
{
    QProcess process;
    process.start("ffmpeg",
        {"-nostdin", "-v", "error", "-i", path, "-vn", "-f", "f32le", "-ac", "2", "-ar",
            QString::number(MediaClock::sampleRate), "-"});
    Heard heard;
    if (!process.waitForFinished(patience) || process.exitCode() != 0)
        heard.problem = QString::fromUtf8(process.readAllStandardError());
    const QByteArray bytes = process.readAllStandardOutput();
    append(&heard, reinterpret_cast<const float *>(bytes.constData()), size_t(bytes.size()) / sizeof(float));
    return heard;
}

/// Of a sine, in decibels below one of full scale; its first and last half second are left out.
double levelOf(const std::vector<float> &tone)
{
    constexpr qsizetype margin = MediaClock::sampleRate / 2;
    if (qsizetype(tone.size()) <= 2 * margin)
        return -1000;
    const auto from = tone.begin() + margin;
    const auto to = tone.end() - margin;
    const double sum = std::accumulate(
        from, to, 0.0, [](double all, float one) { return all + double(one) * double(one); });
    return 10 * std::log10(2 * sum / double(to - from));
}

/// The moments that a picture's squares tell, by the position of the picture.
QList<std::pair<double, MediaClock::Moment>> marksIn(const QString &path, int width, int height)
{
    const auto pipeline
        = parse(QStringLiteral("filesrc location=%1 ! decodebin ! videoscale ! videoconvert"
                               " ! video/x-raw,width=%2,height=%3 ! simplevideomarkdetect name=eye"
                               " pattern-width=%4 pattern-height=%5 pattern-count=%6"
                               " pattern-data-count=%7 ! fakesink sync=false")
                    .arg(path)
                    .arg(width)
                    .arg(height)
                    .arg(MediaClock::markSize * width / MediaClock::pictureWidth)
                    .arg(MediaClock::markSize * height / MediaClock::pictureHeight)
                    .arg(MediaClock::markGuards)
                    .arg(MediaClock::markBits));
    const GstHandles::Bus bus(gst_element_get_bus(pipeline.get()));
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    QList<std::pair<double, MediaClock::Moment>> marks;
    const auto wanted = GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR | GST_MESSAGE_ELEMENT);
    for (;;) {
        const GstHandles::Message message(
            gst_bus_timed_pop_filtered(bus.get(), patience * GST_MSECOND, wanted));
        if (!message || GST_MESSAGE_TYPE(message.get()) != GST_MESSAGE_ELEMENT)
            break;
        const GstStructure *const told = gst_message_get_structure(message.get());
        guint64 time = 0;
        guint64 mark = 0;
        if (gst_structure_get(
                told, "stream-time", G_TYPE_UINT64, &time, "data", G_TYPE_UINT64, &mark, nullptr))
            marks.append({double(time) / double(GST_SECOND), MediaClock::momentOfMark(mark)});
    }
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    return marks;
}
} // namespace

/// Media with a clock, each as two decoders play it: at second t is the code of second t.
class ClockedMediaTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { gst_init(nullptr, nullptr); }

    void theCodeIsWhereItBelongs_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<bool>("byFfmpeg");
        for (const QString &format : ClockedMedium::soundFormats() + ClockedMedium::videoFormats()) {
            QTest::addRow("%s, GStreamer", qPrintable(format)) << format << false;
            QTest::addRow("%s, FFmpeg", qPrintable(format)) << format << true;
        }
    }

    void theCodeIsWhereItBelongs()
    {
        QFETCH(QString, format);
        QFETCH(bool, byFfmpeg);
        const QString path = made(format);
        const Heard heard = byFfmpeg ? heardByFfmpeg(path) : heardByGStreamer(path);
        QCOMPARE(heard.problem, QString());
        const double length = double(heard.code.size()) / MediaClock::sampleRate;
        QVERIFY2(std::abs(length - seconds) < 0.06, qPrintable(QString::number(length)));

        TimeCodeReader reader(MediaClock::sampleRate);
        const std::vector<TimeCodeReader::Frame> frames = reader.read(heard.code);
        QVERIFY2(frames.size() >= size_t(seconds) * MediaClock::framesPerSecond - 4,
            qPrintable(QString::number(frames.size())));
        double worst = 0;
        for (const TimeCodeReader::Frame &frame : frames) {
            QCOMPARE(frame.moment.item, item);
            worst = std::max(worst, std::abs(heard.begin + frame.at - frame.moment.seconds()));
        }
        QVERIFY2(worst < closeEnough, qPrintable(QString::number(worst)));
        QVERIFY(std::abs(levelOf(heard.tone) - MediaClock::toneLevel) < 0.2);
        qInfo("%s: %d frames, at most %.3f ms off, tone at %.2f dBFS", qPrintable(format), int(frames.size()),
            1000 * worst, levelOf(heard.tone));
    }

    /// Loudspeakers and microphones make one channel of two.
    void theCodeIsReadInAMixture_data()
    {
        QTest::addColumn<QString>("format");
        for (const QString &format : ClockedMedium::soundFormats())
            QTest::addRow("%s", qPrintable(format)) << format;
    }

    void theCodeIsReadInAMixture()
    {
        QFETCH(QString, format);
        const Heard heard = heardByGStreamer(made(format));
        std::vector<float> mixed(heard.code.size());
        std::transform(heard.code.begin(), heard.code.end(), heard.tone.begin(), mixed.begin(),
            [](float left, float right) { return (left + right) / 2; });
        TimeCodeReader reader(MediaClock::sampleRate);
        const std::vector<TimeCodeReader::Frame> frames = reader.read(mixed);
        QVERIFY2(frames.size() >= size_t(seconds) * MediaClock::framesPerSecond - 4,
            qPrintable(QString::number(frames.size())));
        for (const TimeCodeReader::Frame &frame : frames)
            QVERIFY(std::abs(heard.begin + frame.at - frame.moment.seconds()) < closeEnough);
    }

    void everyPictureTellsWhenItIs_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QSize>("size");
        const QSize own(MediaClock::pictureWidth, MediaClock::pictureHeight);
        for (const QString &format : ClockedMedium::videoFormats()) {
            QTest::addRow("%s", qPrintable(format)) << format << own;
            QTest::addRow("%s, smaller", qPrintable(format)) << format << own * 3 / 4;
        }
    }

    void everyPictureTellsWhenItIs()
    {
        QFETCH(QString, format);
        QFETCH(QSize, size);
        const auto marks = marksIn(made(format), size.width(), size.height());
        QCOMPARE(marks.size(), qsizetype(seconds) * MediaClock::framesPerSecond);
        for (qsizetype i = 0; i < marks.size(); ++i) {
            const MediaClock::Moment moment{item, i};
            QCOMPARE(marks.at(i).second, moment);
            QVERIFY2(std::abs(marks.at(i).first - moment.seconds()) < closeEnough,
                qPrintable(QString::number(marks.at(i).first)));
        }
    }

private:
    QString made(const QString &format)
    {
        QString path = m_folder.filePath(ClockedMedium::fileName(item, format));
        if (QFile::exists(path))
            return path;
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        const ClockedMedium medium{item, format, seconds, format};
        process.start(ClockedMedium::program(), medium.arguments() + QStringList{path});
        const bool isMade = process.waitForFinished(patience) && process.exitCode() == ClockedMedium::Made;
        return isMade ? path : QString();
    }

    QTemporaryDir m_folder;
};

KELVO_TEST(ClockedMediaTest)
#include "ClockedMediaTest.moc"
