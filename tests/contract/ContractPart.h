// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTestCase.h"
#include "Statement.h"

class Subject;

/// One group of the contract as a test: a row for each statement, named by its id.
class ContractPart : public KelvoTestCase
{
    Q_OBJECT
public:
    ContractPart(Subject &subject, StatementGroup group);

private Q_SLOTS:
    void holds_data();
    void holds();

private:
    Subject &m_subject;
    const StatementGroup m_group;
};
