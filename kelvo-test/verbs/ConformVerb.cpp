// SPDX-License-Identifier: MIT
#include "ConformVerb.h"

#include "ConformanceRun.h"
#include "DiscoveredSubject.h"
#include "JUnitReport.h"
#include "KelvoBuild.h"
#include "ListeningPost.h"
#include "LookingPost.h"
#include "Output.h"
#include "ResultFile.h"
#include "Session.h"
#include "VerbOptions.h"
#include "card/Card.h"
#include "card/HtmlCard.h"
#include "card/JsonCard.h"
#include "card/MarkdownCard.h"
#include "card/SenseText.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>

namespace {
struct Format
{
    const char *option;
    const char *description;
    QByteArray (*write)(const Card &);
};

TestResult testResultOf(const CardHead &head, const Result &result)
{
    TestResult test;
    test.group = head.renderer + u'.' + result.group();
    test.name = result.id;
    test.seconds = double(result.milliseconds) / 1000;
    switch (result.verdict) {
    case Verdict::Holds:
        break;
    case Verdict::DoesNotHold:
    case Verdict::Overclaimed:
        test.outcome = TestResult::Failed;
        test.message = result.sentence;
        test.details = textOf(result.verdict) + u'\n' + textOf(result.evidence);
        break;
    case Verdict::Refused:
    case Verdict::NotTried:
        test.outcome = TestResult::Skipped;
        test.message = textOf(result.verdict) + QLatin1String(": ") + result.reason;
        break;
    }
    return test;
}

TestResult testResultOf(const CardHead &head, const SenseRow &row)
{
    TestResult result;
    result.outcome = !row.difference() ? TestResult::Skipped
        : row.isOff()                  ? TestResult::Failed
                                       : TestResult::Held;
    result.group = head.renderer;
    result.name = row.id;
    result.message = QStringLiteral("%1: said %2, came out %3")
                         .arg(row.what, SenseText::said(row), SenseText::cameOut(row));
    return result;
}

QByteArray toJUnit(const Card &card)
{
    QList<TestResult> results;
    for (const Result &result : card.results())
        results.append(testResultOf(card.head(), result));
    for (const SenseRow &row : card.senseRows())
        results.append(testResultOf(card.head(), row));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    JUnitReport::write(
        buffer, QLatin1String("conformance of ") + card.head().renderer, card.head().when, results);
    return buffer.data();
}

constexpr Format formats[] = {
    {"html", "Writes the card as a page for people.", toHtml},
    {"json", "Writes the card for programs.", toJson},
    {"markdown", "Writes the card for a repository.", toMarkdown},
    {"junit", "Writes the results as JUnit XML, which CI systems read.", toJUnit},
};

VerbOptions conformOptions()
{
    VerbOptions options(QStringLiteral("conform"), QString(),
        QStringLiteral(
            "Holds a renderer to the contract, one statement after the other, and says of each whether "
            "it holds.\n"
            "What the renderer refuses to do is no fault; what it neither refuses nor does is one. "
            "Ends with 0 when\n"
            "no fault was found, with 1 otherwise, with 77 when there was nothing to try."));
    options.add(QStringLiteral("on"), QStringLiteral("renderer"),
        QStringLiteral("Its name, its uuid, or a glob that fits it alone."));
    options.add(QStringLiteral("wait"), QStringLiteral("time"),
        QStringLiteral("How long to wait for the renderer; 5s when not given."), QStringLiteral("5s"));
    options.add(QStringLiteral("only"), QStringLiteral("glob"),
        QStringLiteral("Tries the statements whose ids fit, such as \"seek.*\"."));
    options.add(QStringLiteral("media"), QStringLiteral("folder"),
        QStringLiteral(
            "Folder, or its URL, with first.wav, second.wav, third.wav and long.wav; made when not given."));
    options.add(QStringLiteral("ear"), QStringLiteral("device"),
        QStringLiteral(
            "Listens there first, and sets what comes out beside what the renderer says: a source of "
            "the sound\nserver, or \"auto\" (see run). With --only ear it does nothing else."));
    options.add(QStringLiteral("eye"), QStringLiteral("place"),
        QStringLiteral(
            "Looks there first, the same way: an X window, a part of the screen, or \"auto\" (see run); "
            "with --ear\nalso whether picture and sound are together. With --only eye it does nothing "
            "else."));
    options.add(
        QStringLiteral("statements"), QString(), QStringLiteral("Lists the statements, as Markdown."));
    for (const Format &format : formats)
        options.add(QString::fromLatin1(format.option), QStringLiteral("file"),
            QString::fromLatin1(format.description));
    options.addExample(QStringLiteral("kelvo-test conform --on KelvoGstRenderer --html card.html"),
        QStringLiteral("everything, with a page to show"));
    options.addExample(
        QStringLiteral("kelvo-test conform --on \"mpris:*\" --only \"pause-at.*\" --junit results.xml"),
        QStringLiteral("one group, for CI"));
    return options;
}

int cannotConform(const QString &problem)
{
    Output::complain(problem);
    return Verb::CouldNotRun;
}

// Of --only: a sense and no statement.
const auto ear = QStringLiteral("ear");
const auto eye = QStringLiteral("eye");

QList<Statement> statementsThatFit(const QString &glob)
{
    QList<Statement> all = contractStatements();
    if (glob.isEmpty())
        return all;
    const auto form = QRegularExpression::fromWildcard(glob);
    QList<Statement> fitting;
    std::copy_if(all.cbegin(), all.cend(), std::back_inserter(fitting),
        [&form](const Statement &statement) { return form.match(statement.id).hasMatch(); });
    return fitting;
}

/// The media that a renderer may like: made for the purpose, or those of a folder.
class MediaOffer
{
public:
    /// False, with the reason, when there are none.
    bool prepare(const QString &folder, QString *error);
    QList<Media> media;

private:
    QTemporaryDir m_folder;
};

bool MediaOffer::prepare(const QString &folder, QString *error)
{
    if (!folder.isEmpty()) {
        const QUrl url = QUrl::fromUserInput(folder, QDir::currentPath(), QUrl::AssumeLocalFile);
        media = {Media::inFolder(
            url, url.isLocalFile() ? QStringLiteral("files") : QStringLiteral("media of a server"))};
        return true;
    }
    if (!m_folder.isValid()) {
        *error = m_folder.errorString();
        return false;
    }
    if (!Media::writeTo(m_folder.path(), error))
        return false;
    media = {Media::inFolder(QUrl::fromLocalFile(m_folder.path()), QStringLiteral("files"))};
    return true;
}

/// Where the tester wants what comes out to be heard and seen, and that is possible.
class Senses
{
public:
    explicit Senses(const VerbOptions &options)
        : m_device(options.value(ear))
        , m_place(options.value(eye))
        , m_only(options.value(QStringLiteral("only")))
    {
    }

    bool has(const QString &sense) const
    {
        return (sense == ear && !m_device.isEmpty()) || (sense == eye && !m_place.isEmpty());
    }
    /// Before the session.
    bool prepare(QString *error) { return !has(ear) || m_listeningPost.prepare(m_device, error); }
    bool begin(Session &session, QString *error)
    {
        return (!has(ear) || m_listeningPost.listen(session, error))
            && (!has(eye) || m_lookingPost.look(m_place, session, error));
    }
    QList<SenseRow> compare(Session &session, const QString &uuid)
    {
        QList<SenseRow> rows;
        if (has(ear) && m_only != eye)
            rows += m_listeningPost.compare(session, uuid);
        if (has(eye) && m_only != ear)
            rows += m_lookingPost.compare(session, uuid, has(ear) ? &m_listeningPost.ear() : nullptr);
        return rows;
    }

private:
    const QString m_device;
    const QString m_place;
    const QString m_only;
    ListeningPost m_listeningPost;
    LookingPost m_lookingPost; // ends after the back ends, which draw into its window
};

void showResult(Output &output, const Result &result)
{
    if (result.verdict == Verdict::DoesNotHold) {
        output.line(QStringLiteral("%1: %2").arg(result.id, result.sentence), Output::Tone::Bad);
        for (const QString &line : textOf(result.evidence).split(QLatin1Char('\n')))
            output.line(QLatin1String("    ") + line, Output::Tone::Faint);
    } else if (result.verdict != Verdict::Holds) {
        output.line(QStringLiteral("%1: %2: %3").arg(result.id, textOf(result.verdict), result.reason),
            Output::Tone::Faint);
    }
}

void showCounts(Output &output, const Card &card)
{
    QStringList counts;
    for (Verdict verdict : allVerdicts()) {
        if (card.count(verdict) > 0)
            counts.append(QStringLiteral("%1 %2").arg(card.count(verdict)).arg(textOf(verdict)));
    }
    output.line(QStringLiteral("%1: %2").arg(card.head().renderer, counts.join(QLatin1String(", "))),
        card.isClean() ? Output::Tone::Good : Output::Tone::Bad);
}

bool writeCard(const Card &card, const VerbOptions &options)
{
    return std::all_of(std::begin(formats), std::end(formats), [&](const Format &format) {
        const QString option = QString::fromLatin1(format.option);
        const auto write = [text = format.write(card)](QIODevice *device) {
            return device->write(text) == text.size();
        };
        return !options.isSet(option) || ResultFile::save(options.value(option), write);
    });
}

CardHead headOf(const DiscoveredSubject &subject)
{
    return {subject.name(), subject.uuid(), subject.pluginFile(),
        QStringLiteral("%1 %2 (%3)")
            .arg(QCoreApplication::applicationName(), QCoreApplication::applicationVersion(),
                QLatin1String(KelvoBuild::revision())),
        subject.media().kind, QDateTime::currentDateTimeUtc(), subject.roundTrip()};
}

void showSenseRows(Output &output, const QList<SenseRow> &rows)
{
    for (const SenseRow &row : rows) {
        const Output::Tone tone = !row.difference() ? Output::Tone::Faint
            : row.isOff()                           ? Output::Tone::Bad
                                                    : Output::Tone::Good;
        const QStringList cells{SenseText::said(row), SenseText::cameOut(row), SenseText::difference(row)};
        output.line(QStringLiteral("%1: %2: said %3, came out %4%5: %6")
                        .arg(row.id, row.what, cells[0].isEmpty() ? QStringLiteral("nothing") : cells[0],
                            cells[1], cells[2].isEmpty() ? QString() : QStringLiteral(" (%1)").arg(cells[2]),
                            SenseText::verdict(row)),
            tone);
    }
}

int conform(Session &session, DiscoveredSubject &subject, const QList<Statement> &statements,
    const QList<SenseRow> &rows, const VerbOptions &options)
{
    Output output;
    showSenseRows(output, rows);
    ConformanceRun run(subject, statements);
    QObject::connect(
        &session, &Session::interrupted, &run, [&run] { run.stop(QStringLiteral("interrupted")); });
    QObject::connect(&run, &ConformanceRun::began, &run, [&](qsizetype number, const Statement &statement) {
        output.progress(QStringLiteral("%1/%2 %3").arg(number + 1).arg(statements.size()).arg(statement.id));
    });
    QObject::connect(
        &run, &ConformanceRun::ended, &run, [&](const Result &result) { showResult(output, result); });
    if (session.isInterrupted())
        run.stop(QStringLiteral("interrupted"));
    const QList<Result> results = run.run();
    Card card(headOf(subject), results);
    card.setSenseRows(rows);
    showCounts(output, card);
    if (!writeCard(card, options))
        return Verb::CouldNotRun;
    if (!card.isClean())
        return Verb::Failed;
    return session.isInterrupted() ? Verb::CouldNotRun : Verb::Held;
}
} // namespace

QString ConformVerb::name() const
{
    return QStringLiteral("conform");
}

QString ConformVerb::summary() const
{
    return QStringLiteral("holds a renderer to the contract");
}

QString ConformVerb::help() const
{
    return conformOptions().help();
}

int ConformVerb::run(const QStringList &arguments)
{
    VerbOptions options = conformOptions();
    if (!options.parse(arguments))
        return cannotConform(options.problem());
    if (options.isSet(QStringLiteral("statements"))) {
        std::fputs(contractAsMarkdown().constData(), stdout);
        return Held;
    }
    const auto wait = options.time(QStringLiteral("wait"));
    if (!wait)
        return cannotConform(options.problem());
    if (!options.isSet(QStringLiteral("on")))
        return cannotConform(
            QStringLiteral("conform needs a renderer: --on NAME (\"kelvo-test list\" shows them)"));
    const QString only = options.value(QStringLiteral("only"));
    const QList<Statement> statements = statementsThatFit(only);
    Senses senses(options);
    if (statements.isEmpty() && !senses.has(only)) {
        Output::complain(QStringLiteral("No statement fits; \"kelvo-test conform --statements\" lists them"));
        return NothingToRun;
    }
    QString problem;
    if (!senses.prepare(&problem))
        return cannotConform(problem);
    Session session;
    if (!senses.begin(session, &problem))
        return cannotConform(problem);
    const RendererChoice choice = session.chooseOne(options.value(QStringLiteral("on")), *wait);
    if (!choice.problem.isEmpty())
        return cannotConform(choice.problem);
    MediaOffer offer;
    if (!offer.prepare(options.value(QStringLiteral("media")), &problem))
        return cannotConform(problem);
    const QString uuid = choice.renderers.constFirst()->uuid();
    const QList<SenseRow> rows = senses.compare(session, uuid); // while which it may go
    // Unloads the back ends: each trial loads the renderer anew.
    const QString backEnd = DiscoveredSubject::originsOf(*session.registry()).value(uuid);
    DiscoveredSubject subject(backEnd, uuid, offer.media);
    QObject::connect(&session, &Session::interrupted, &session, [&subject] { subject.interrupt(); });
    if (!subject.meet())
        return cannotConform(
            QStringLiteral("%1 cannot be held to the contract: %2").arg(uuid, subject.problem()));
    return conform(session, subject, statements, rows, options);
}
