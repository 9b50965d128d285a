// SPDX-License-Identifier: MIT
#include "KelvoSourceController.h"

#include "KelvoMainWindow.h"
#include "KelvoRegistry.h"
#include "KelvoSource.h"

#include <QDebug>

void KelvoSourceController::showSourceProperties()
{
    qDebug() << "KelvoSourceController::showSourceProperties";
    m_mainWindow->showSourcePropertiesDialog(this, m_registry->sources());
}

void KelvoSourceController::invokeGetProperties(const QString &source)
{
    qDebug() << "KelvoSourceController::invokeGetProperties";
    m_propertySourceUuid.clear();
    m_propertyIndex = -1;
    const QList<KelvoSource *> sources = m_registry->sources();
    for (const KelvoSource *candidate : sources) {
        if (candidate->name() == source) {
            m_propertySourceUuid = candidate->uuid();
            break;
        }
    }
    getNextSourceProperty();
}

void KelvoSourceController::getNextSourceProperty()
{
    KelvoSource *source = m_registry->findSourceByUuid(m_propertySourceUuid);
    if (!source)
        return;
    // The answer to an accepted request goes on with the next key; refused keys are left out.
    while (++m_propertyIndex < m_propertyKeys.size()) {
        qDebug() << "KelvoSourceController::getNextSourceProperty" << m_propertyIndex;
        if (source->kelvoProperty(
                m_propertyKeys.at(m_propertyIndex), this, "sourcePropertyCallback(QString&,QVariant&)"))
            return;
    }
}

void KelvoSourceController::sourcePropertyCallback(QString &key, QVariant &value)
{
    qDebug() << "KelvoSourceController::sourcePropertyCallback";
    if (!m_mainWindow)
        return;
    m_mainWindow->showSourceProperty(key, value.toString());
    getNextSourceProperty();
}

void KelvoSourceController::invokeSignIn()
{
    qDebug() << "KelvoSourceController::invokeSignIn";
    signIn(true);
}

void KelvoSourceController::invokeSignOut()
{
    qDebug() << "KelvoSourceController::invokeSignOut";
    // There is no key for signing out: it is signing in, taken back.
    signIn(false);
}

void KelvoSourceController::signIn(bool in)
{
    if (KelvoSource *source = m_registry->findSourceByUuid(m_propertySourceUuid))
        source->setKelvoProperty(QStringLiteral("signIn"), QVariant(in));
}
