// SPDX-License-Identifier: MIT
#pragma once

#include "Family.h"
#include "LyingRenderer.h"
#include "Stage.h"

#include <memory>
#include <vector>

/// Renderers that come, lie, hang and go.
class Liars : public Family
{
public:
    explicit Liars(const Stage &stage);
    ~Liars() override;

    QList<Deed> deeds() override;
    void end() override;

private:
    void come(Dice &dice);
    void go(Dice &dice);
    void lie(Dice &dice) const;

    const Stage &m_stage;
    std::vector<std::unique_ptr<LyingRenderer>> m_liars;
    int m_number = 0;
};
