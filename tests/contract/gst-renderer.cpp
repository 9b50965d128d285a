// SPDX-License-Identifier: MIT
#include "ContractSuite.h"
#include "Subject.h"

#include <QDir>

namespace {
class GstRendererSubject : public Subject
{
public:
    GstRendererSubject()
        : m_media(QStringLiteral(KELVO_TEST_MEDIA))
    {
        cannotTry(Ability::TellUnseekable, QStringLiteral("no generated file is unseekable"));
    }

    QString pluginFile() const override { return QStringLiteral("gst-renderer.so"); }
    QList<QUrl> shortItems() const override { return {file("blip.wav"), file("blip.ogg"), file("blip.mp3")}; }
    QUrl longItem() const override { return file("long.flac"); }
    int longSeconds() const override { return 10; }
    QUrl failingItem() const override { return file("missing.ogg"); }

private:
    QUrl file(const char *name) const { return QUrl::fromLocalFile(m_media.filePath(QLatin1String(name))); }

    const QDir m_media;
};
} // namespace

int main(int argc, char **argv)
{
    GstRendererSubject subject;
    return runRendererContract(subject, argc, argv);
}
