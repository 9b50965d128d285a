// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

/// Base of every test class. A connection or request by signature text that names something missing fails the
/// test it happens in, and so does the use of a selection whose model is gone. Test classes with an init() of their own call KelvoTestCase::init() first.
class KelvoTestCase : public QObject
{
    Q_OBJECT
public:
    KelvoTestCase();

protected Q_SLOTS:
    void init();
};
