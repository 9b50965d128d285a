// SPDX-License-Identifier: MIT
#include "ContractSuite.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "SimulatedTime.h"
#include "Subject.h"

namespace {
/// The simulator with its clock in hand: a test takes as long as its events, not as its media.
class SimulatorSubject : public Subject
{
public:
    QString pluginFile() const override { return QStringLiteral("simulator.so"); }
    KelvoRenderer *findIn(const KelvoRegistry &registry) const override
    {
        return registry.findRendererByUuid(QStringLiteral("KelvoSimulatorA"));
    }
    void prepare(KelvoRenderer &renderer) override { m_time.takeOver(renderer); }

    QList<QUrl> shortItems() const override
    {
        return {QUrl("sim:first?duration=1"), QUrl("sim:second?duration=1"), QUrl("sim:third?duration=2")};
    }
    QUrl longItem() const override { return QUrl("sim:long?title=Long&duration=10"); }
    int longSeconds() const override { return 10; }
    QUrl failingItem() const override { return QUrl("sim:bad?fail=106"); }
    QUrl unseekableItem() const override { return QUrl("sim:stream?seekable=0&duration=10"); }

    void letTimePass(KelvoRenderer *renderer) override { m_time.pass(renderer); }
    qint64 time() const override { return m_time.now(); }
    bool inRealTime() const override { return false; }
    /// A renderer that takes its time needs more of it.
    int quietTime() const override
    {
        bool ok = false;
        const int time = qEnvironmentVariableIntValue("KELVO_CONTRACT_QUIET_TIME", &ok);
        return ok ? time : 100;
    }

private:
    SimulatedTime m_time;
};
} // namespace

int main(int argc, char **argv)
{
    SimulatorSubject subject;
    return runRendererContract(subject, argc, argv);
}
