// SPDX-License-Identifier: MIT
#include "ScenarioFile.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// Scenario files that no person would write: reading them comes to an end, with a reason.
class ScenarioFileTest : public KelvoTestCase
{
    Q_OBJECT
private:
    QTemporaryDir m_folder;

    /// What is wrong with a scenario of this text; empty: nothing.
    QString errorOf(const QByteArray &text) const
    {
        QFile file(m_folder.filePath(QStringLiteral("scenario.yaml")));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            return file.errorString();
        file.close();
        QString error;
        return ScenarioFile::read(file.fileName(), &error) ? QString() : error;
    }

private Q_SLOTS:
    // The parser finds one more document at such a place each time that it is asked, without end.
    void documentsWithoutEnd_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("comma and directive") << QByteArray(",%S D");
        QTest::newRow("two documents") << QByteArray("---\nsteps: [play]\n---\nsteps: [play]\n");
    }
    void documentsWithoutEnd()
    {
        QFETCH(QByteArray, text);
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("scenario.yaml")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        QString error;
        QVERIFY(!ScenarioFile::read(file.fileName(), &error));
        QCOMPARE(error, file.fileName() + QLatin1String(": holds more than one document, a scenario is one"));
    }

    void whatIsToBeHeardAndSeen_data()
    {
        QTest::addColumn<QByteArray>("step"); // with "|" before what is wrong
        QTest::addColumn<QString>("reason"); // empty: it can be read
        const auto row = [](const char *step, const char *reason) {
            QTest::newRow(step) << QByteArray(step) << QString::fromUtf8(reason);
        };
        row("expect: {heard: {item: $song, position: 3 s ± 20 ms}}", "");
        row("expect: {state: Paused, heard: {position: 3}, silence: {within: 50 ms}}", "");
        row("expect: {gap: {at most: 20 ms}, level: {against: 99, dB: -18 ± 1}, speed: 2.0 ± 1 %}", "");
        row("expect: {heard: |{}}", "heard needs \"item\", \"position\" or both");
        row("expect: {heard: {item: |24}}", "item takes a whole number from 1 to 23, not \"24\"");
        row("expect: {heard: {item: |$tone}}",
            "\"$tone\" has no clock that could be heard: make it sound: timecode");
        row("expect: {heard: {item: |$sing}}", "there is no medium \"$sing\"; did you mean \"$song\"?");
        row("expect: {heard: {position: |soon}}",
            "position takes a time such as \"3 s ± 20 ms\", not \"soon\"");
        row("expect: {silence: |{}}", "silence needs \"within\": a time");
        row("expect: {gap: {at least: |20 ms}}", "gap has no \"at least\"; there are: at most");
        row("expect: {level: |{against: 99}}", "level needs \"dB\": a number such as \"-18 ± 1\"");
        row("expect: {level: {dB: -18, against: |100}}",
            "against takes a whole number from 0 to 99, not \"100\"");
        row("expect: {speed: |fast}", "speed takes a number such as \"2.0 ± 1 %\", not \"fast\"");
        row("expect: {speed: |2 %}", "speed takes a number such as \"2.0 ± 1 %\", not \"2 %\"");
        row("never: |{speed: 2}", "never takes one report");
        row("expect: {seen: {item: $film, frame: 75 ± 1, position: 3 s ± 20 ms}}", "");
        row("expect: {seen: {item: |$song}}",
            "\"$song\" has no clock that could be seen: make it video: timecode");
        row("expect: {sync: ± 40 ms}", "");
        row("expect: {sync: 20 ms +- 40 ms}", "");
        row("expect: {seen: |{}}", "seen needs \"item\", \"frame\", \"position\" or several of them");
        row("expect: {seen: {frame: |many}}",
            "frame takes the number of a picture such as \"75 ± 1\", not \"many\"");
        row("expect: {seen: {speed: |2}}", "seen has no \"speed\"");
        row("expect: {sync: |soon}", "sync takes a time such as \"± 40 ms\", not \"soon\"");
        row("never: |{sync: ± 40 ms}", "never takes one report");
    }
    void whatIsToBeHeardAndSeen()
    {
        QFETCH(QByteArray, step);
        QFETCH(QString, reason);
        const QByteArray head(
            "media: {song: {sound: timecode}, tone: {sound: tone}, film: {video: timecode}}\nsteps:\n  - ");
        const int column = int(QByteArray("  - ").size() + step.indexOf('|')) + 1;
        const QString error = errorOf(head + QByteArray(step).replace('|', QByteArray()) + '\n');
        const QString place
            = QStringLiteral("%1:3:%2: ").arg(m_folder.filePath(QStringLiteral("scenario.yaml"))).arg(column);
        QVERIFY2(reason.isEmpty() ? error.isEmpty() : error.startsWith(place + reason), qPrintable(error));
    }
};

KELVO_TEST(ScenarioFileTest)
#include "ScenarioFileTest.moc"
