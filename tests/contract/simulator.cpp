// SPDX-License-Identifier: MIT
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "RendererSubject.h"

#include <QCoreApplication>
#include <QPointer>

namespace {
/// The simulator with its clock in hand: a test takes as long as its events, not as its media.
class SimulatorSubject : public RendererSubject
{
public:
    QString pluginFile() const override { return QStringLiteral("simulator.so"); }
    KelvoRenderer *findIn(const KelvoRegistry &registry) const override
    {
        return registry.findRendererByUuid(QStringLiteral("KelvoSimulatorA"));
    }
    void prepare(KelvoRenderer &renderer) override
    {
        renderer.setKelvoProperty(QStringLiteral("sim-clock"), QStringLiteral("manual"));
        QObject::connect(
            &renderer, &KelvoRenderer::kelvoPropertyChanged, &renderer, [this](const QString &name) {
                if (name == QLatin1String("sim-advance"))
                    m_arrived = true;
            });
    }

    QList<QUrl> shortItems() const override
    {
        return {QUrl("sim:first?duration=1"), QUrl("sim:second?duration=1"), QUrl("sim:third?duration=2")};
    }
    QUrl longItem() const override { return QUrl("sim:long?title=Long&duration=10"); }
    int longSeconds() const override { return 10; }
    QUrl failingItem() const override { return QUrl("sim:bad?fail=106"); }
    QUrl unseekableItem() const override { return QUrl("sim:stream?seekable=0&duration=10"); }

    void letTimePass(KelvoRenderer *renderer) override
    {
        m_time += Tick;
        m_arrived = false;
        const QPointer<KelvoRenderer> guarded(renderer);
        if (guarded)
            guarded->setKelvoProperty(QStringLiteral("sim-advance"), Tick);
        do {
            QCoreApplication::processEvents();
        } while (guarded && !m_arrived);
    }
    qint64 time() const override { return m_time; }
    bool inRealTime() const override { return false; }
    /// A renderer that takes its time needs more of it.
    int quietTime() const override
    {
        bool ok = false;
        const int time = qEnvironmentVariableIntValue("KELVO_CONTRACT_QUIET_TIME", &ok);
        return ok ? time : 100;
    }

private:
    static constexpr int Tick = 20;
    qint64 m_time = 0;
    bool m_arrived = false;
};
} // namespace

int main(int argc, char **argv)
{
    SimulatorSubject subject;
    return runRendererContract(subject, argc, argv);
}
