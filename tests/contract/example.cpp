// SPDX-License-Identifier: MIT
#include "ContractSuite.h"
#include "KelvoRegistry.h"
#include "Subject.h"

namespace {
/// The example that plug-in authors begin with.
class ExampleSubject : public Subject
{
public:
    ExampleSubject()
    {
        refuses(Ability::FastForward, QStringLiteral("silence has one speed only"));
        refuses(Ability::Rewind, QStringLiteral("silence has one speed only"));
        cannotTry(Ability::TellUnseekable, QStringLiteral("there is no silence that cannot be sought in"));
    }
    QString pluginFile() const override { return QStringLiteral("silence.so"); }
    KelvoRenderer *findIn(const KelvoRegistry &registry) const override
    {
        return registry.findRendererByUuid(QStringLiteral("org.example.Silence"));
    }
    QList<QUrl> shortItems() const override
    {
        return {QUrl("silence:1"), QUrl("silence:2"), QUrl("silence:1#other")};
    }
    QUrl longItem() const override { return QUrl("silence:10"); }
    int longSeconds() const override { return 10; }
    QUrl failingItem() const override { return QUrl("silence:0"); }
};
} // namespace

int main(int argc, char **argv)
{
    ExampleSubject subject;
    // It plays on a timer, which costs little.
    return runRendererContract(subject, argc, argv, 8);
}
