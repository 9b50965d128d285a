// SPDX-License-Identifier: MIT
#include "KelvoPlugin.h"

#include <QObject>

/// A back end for scenarios: loses a block of memory when it is started.
class Leaking : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "leaking.json")
    Q_INTERFACES(KelvoPlugin)
public:
    bool start(KelvoRegistry *, QString *) override
    {
        lose();
        return true;
    }
    void stop() override { }

private:
    // A function of its own, and the pointer overwritten: none may be left on the stack or in a register.
    [[gnu::noinline]] static void lose()
    {
        char *volatile block = new char[Size];
        block[0] = 'x';
        block = nullptr;
    }
    static constexpr int Size = 4321;
};

#include "Leaking.moc"
