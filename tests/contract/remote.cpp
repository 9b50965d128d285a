// SPDX-License-Identifier: MIT
#include "ContractSuite.h"
#include "Subject.h"

namespace {
/// What all renderers of remote players share, over a player that does what it is told.
class RemoteSubject : public Subject
{
public:
    RemoteSubject()
    {
        refuses(
            Ability::VideoProperties, QStringLiteral("a remote player shows video in a window of its own"));
    }

    QString pluginFile() const override { return QStringLiteral("pretended-player.so"); }
    QList<QUrl> shortItems() const override
    {
        return {QUrl("pretended:first?duration=0.5"), QUrl("pretended:second?duration=0.6"),
            QUrl("pretended:third?duration=0.7")};
    }
    QUrl longItem() const override { return QUrl("pretended:long?duration=10"); }
    int longSeconds() const override { return 10; }
    QUrl failingItem() const override { return QUrl("pretended:bad?fails=1"); }
    QUrl unseekableItem() const override { return QUrl("pretended:stream?duration=10&seekable=0"); }
};
} // namespace

int main(int argc, char **argv)
{
    RemoteSubject subject;
    // Nothing is decoded.
    return runRendererContract(subject, argc, argv, 8);
}
