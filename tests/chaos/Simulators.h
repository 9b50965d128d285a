// SPDX-License-Identifier: MIT
#pragma once

#include "Family.h"
#include "Stage.h"

class KelvoRenderer;

/// What happens to the renderers of the simulator: troubles, other controllers, vanishing.
class Simulators : public Family
{
public:
    explicit Simulators(const Stage &stage);

    QList<Deed> deeds() override;

private:
    KelvoRenderer *any(Dice &dice) const;
    void trouble(Dice &dice) const;
    void vanish(Dice &dice) const;

    const Stage &m_stage;
};
