// SPDX-License-Identifier: MIT
// A plug-in that behaves as KELVO_TEST_PLUGIN says; without it, as a good plug-in does.
#include "KelvoPlugin.h"
#include "KelvoRegistry.h"
#include "MinimalObjects.h"

#include <QUuid>

#include <cstdio>
#include <stdexcept>
#include <unistd.h>

#ifndef TEST_PLUGIN_INTERFACE
#define TEST_PLUGIN_INTERFACE KelvoPlugin_iid
#endif
#ifdef TEST_PLUGIN_NEEDS_HELPER
extern "C" int kelvoTestHelper();
#else
static int kelvoTestHelper()
{
    return 0;
}
#endif

namespace {
QByteArray behaviour()
{
    return qgetenv("KELVO_TEST_PLUGIN");
}

#ifdef TEST_PLUGIN_HANGS
// Does not come back from being loaded, as a library that asks a device which does not answer.
const bool hangs = [] {
    std::puts("the library hangs");
    std::fflush(stdout);
    for (;;)
        ::pause();
    return true;
}();
#endif
} // namespace

#ifdef TEST_PLUGIN_PREPARES
extern "C" Q_DECL_EXPORT void kelvoPrepareAhead()
{
    // The test reads whether it was called by it, and whether that was on the GUI thread.
    qputenv("KELVO_TEST_PREPARED", ::gettid() == ::getpid() ? "on the GUI thread" : "on another thread");
}
#endif

class TestPlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TEST_PLUGIN_INTERFACE FILE "metadata.json")
    Q_INTERFACES(KelvoPlugin)
public:
    TestPlugin()
        : m_renderer(QUuid::createUuid().toString(QUuid::WithoutBraces), QStringLiteral("Test"))
    {
        if (behaviour() == "throws when made")
            throw std::runtime_error("made to fail");
    }

    bool start(KelvoRegistry *registry, QString *error) override
    {
        const QByteArray how = behaviour();
        m_registry = registry;
        if (how == "refuses")
            *error = QStringLiteral("no such device");
        if (how == "refuses" || how == "refuses silently" || kelvoTestHelper() != 0)
            return false;
        registry->addRenderer(&m_renderer);
        if (how == "throws and forgets") {
            static MinimalRenderer renderer(QStringLiteral("forgotten"), {});
            static MinimalSource source(QStringLiteral("forgotten"), {});
            static MinimalPlaylist playlist(QStringLiteral("forgotten"), {});
            registry->addRenderer(&renderer);
            registry->addSource(&source);
            registry->addPlaylist(&playlist);
        }
        if (how.startsWith("throws and") || how == "throws")
            throw std::runtime_error("out of paper");
        if (how == "throws a number")
            throw 42;
        if (how == "refuses too late") {
            *error = QStringLiteral("changed its mind");
            return false;
        }
        if (how.startsWith("unloads "))
            registry->unloadPlugin(QString::fromUtf8(how.mid(8)));
        if (how.startsWith("loads "))
            registry->loadPlugin(QString::fromUtf8(how.mid(6)));
        return true;
    }

    void stop() override
    {
        if (behaviour() == "throws in stop")
            throw std::runtime_error("cannot let go");
        m_registry->removeRenderer(&m_renderer);
    }

private:
    KelvoRegistry *m_registry = nullptr;
    MinimalRenderer m_renderer;
};

#include "TestPlugin.moc"
