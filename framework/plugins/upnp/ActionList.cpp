// SPDX-License-Identifier: MIT
#include "ActionList.h"

ActionList::ActionList(GUPnPServiceProxy *service, const QByteArray &action, Handler handler)
    : m_question(std::make_shared<Question>(Question{action, std::move(handler)}))
    , m_cancellable(g_cancellable_new())
{
    gupnp_service_info_introspect_async(
        GUPNP_SERVICE_INFO(service), m_cancellable.get(), finished, new std::weak_ptr<Question>(m_question));
}

ActionList::~ActionList()
{
    g_cancellable_cancel(m_cancellable.get());
}

void ActionList::finished(GObject *service, GAsyncResult *result, void *data)
{
    const std::unique_ptr<std::weak_ptr<Question>> weak(static_cast<std::weak_ptr<Question> *>(data));
    GlibHandles::Error error;
    const GlibHandles::Object<GUPnPServiceIntrospection> introspection(
        gupnp_service_info_introspect_finish(GUPNP_SERVICE_INFO(service), result, error.out()));
    const auto question = weak->lock();
    if (!question)
        return;
    question->handler(introspection
        && gupnp_service_introspection_get_action(introspection.get(), question->action.constData()));
}
