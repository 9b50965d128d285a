// SPDX-License-Identifier: MIT
#pragma once

#include "FakeUpnpDevice.h"
#include "Family.h"
#include "Stage.h"

#include <memory>
#include <vector>

/// UPnP renderers on the loopback interface that come, go, hang and say what does not fit together.
class Devices : public Family
{
public:
    explicit Devices(const Stage &stage);
    ~Devices() override;

    QList<Deed> deeds() override;
    void end() override;

private:
    void come(Dice &dice);
    void go(Dice &dice);
    void say(Dice &dice) const;

    const Stage &m_stage;
    std::vector<std::unique_ptr<FakeUpnpDevice>> m_devices;
    int m_number = 0;
};
