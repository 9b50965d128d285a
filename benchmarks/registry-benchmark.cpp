// SPDX-License-Identifier: MIT
// registry-benchmark [COUNT]
// Renderers come and go by the thousand while the window is shown. Each arrival and departure is an event of its
// own, as from a back end; what is measured is the longest time that one of them keeps the event loop, and the
// memory before and after.
#include "KelvoGUIMain.h"
#include "KelvoRegistry.h"
#include "Measurement.h"

#include "../tests/support/MinimalObjects.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <malloc.h>
#include <unistd.h>

namespace {
void discardMessage(QtMsgType, const QMessageLogContext &, const QString &)
{
    // The debug log is not what is measured here.
}

double residentKilobytes()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1024;
}

class Run : public QObject
{
public:
    explicit Run(int count)
        : m_count(count)
    {
        m_step.setInterval(0);
        connect(&m_step, &QTimer::timeout, this, &Run::step);
    }

    void start() { m_step.start(); }
    bool isDone() const { return m_round == 2; }
    double longestStall() const { return Measurement::maximum(m_adding.empty() ? m_removing : all()); }
    double medianAdding() const { return Measurement::median(m_adding); }
    double medianRemoving() const { return Measurement::median(m_removing); }
    double memoryAfterFirstRound() const { return m_memoryAfterFirst; }

private:
    std::vector<double> all() const
    {
        std::vector<double> values = m_adding;
        values.insert(values.end(), m_removing.begin(), m_removing.end());
        return values;
    }

    void step()
    {
        if (m_coming)
            add();
        else
            remove();
    }

    void add()
    {
        const QString number = QString::number(m_renderers.size());
        m_renderers.push_back(std::make_unique<MinimalRenderer>("uuid-" + number, "Renderer " + number));
        m_timer.start();
        KelvoRegistry::instance()->addRenderer(m_renderers.back().get());
        m_adding.push_back(double(m_timer.nsecsElapsed()) / 1e6);
        m_coming = int(m_renderers.size()) < m_count;
    }

    void remove()
    {
        m_timer.start();
        KelvoRegistry::instance()->removeRenderer(m_renderers.back().get());
        m_removing.push_back(double(m_timer.nsecsElapsed()) / 1e6);
        m_renderers.pop_back();
        if (!m_renderers.empty())
            return;
        m_coming = true;
        if (++m_round == 1)
            m_memoryAfterFirst = residentKilobytes();
        if (isDone())
            QCoreApplication::quit();
    }

    QTimer m_step;
    QElapsedTimer m_timer;
    std::vector<std::unique_ptr<MinimalRenderer>> m_renderers;
    std::vector<double> m_adding;
    std::vector<double> m_removing;
    double m_memoryAfterFirst = 0;
    int m_count;
    int m_round = 0;
    bool m_coming = true;
};
} // namespace

int main(int argc, char *argv[])
{
    qputenv("KELVO_PLUGINS", "");
    qInstallMessageHandler(discardMessage);
    QApplication application(argc, argv);
    auto *guiMain = new KelvoGUIMain(&application);
    Q_UNUSED(guiMain)
    Run run(argc > 1 ? QByteArray(argv[1]).toInt() : 10'000);
    QTimer::singleShot(500, &run, &Run::start); // the window has been painted
    QApplication::exec();
    using Measurement::row;
    row("10,000 renderers come and go: longest event", run.longestStall(), "ms", "", 0, "at most 16 ms");
    row("- one comes, median", run.medianAdding(), "ms");
    row("- one goes, median", run.medianRemoving(), "ms");
    row("- memory after the second round", residentKilobytes(), "kB", "after the first",
        run.memoryAfterFirstRound(), "1");
    return 0;
}
