// SPDX-License-Identifier: MIT
#include "Calls.h"

#include "Didl.h"
#include "UpnpText.h"

#include <algorithm>
#include <utility>

using Upnp::Answer;
using Upnp::Call;

struct Calls::Running
{
    Calls *owner; // null once nobody waits any more
    Call call;
    Upnp::AnswerHandler handler;
    GupnpHandles::Action action;
    GlibHandles::Object<GCancellable> cancellable{g_cancellable_new()};
    GlibHandles::Source timer = {};
};

namespace {
void freeValue(void *value)
{
    g_value_unset(static_cast<GValue *>(value));
    g_free(value);
}

/// The arguments of an action, in the order in which they are to be sent.
class Arguments
{
public:
    Arguments() = default;
    Q_DISABLE_COPY_MOVE(Arguments)
    ~Arguments()
    {
        g_list_free_full(m_names, g_free);
        g_list_free_full(m_values, freeValue);
    }
    void add(const QByteArray &name, const QString &text)
    {
        auto *value = g_new0(GValue, 1);
        g_value_init(value, G_TYPE_STRING);
        g_value_set_string(value, text.toUtf8().constData());
        m_names = g_list_append(m_names, g_strdup(name.constData()));
        m_values = g_list_append(m_values, value);
    }
    GupnpHandles::Action actionFor(const QByteArray &name) const
    {
        return GupnpHandles::Action(
            gupnp_service_proxy_action_new_from_list(name.constData(), m_names, m_values));
    }

private:
    GList *m_names = nullptr;
    GList *m_values = nullptr;
};

GupnpHandles::Action makeAction(const Call &call)
{
    Arguments arguments;
    for (const auto &[name, text] : call.in) {
        arguments.add(name, text);
        if (call.media && name == "CurrentURI")
            arguments.add("CurrentURIMetaData", Didl::write(*call.media, text));
    }
    return arguments.actionFor(call.action);
}

void readFailure(const GError *error, Answer *answer)
{
    answer->message = UpnpText::cleaned(QString::fromUtf8(error->message));
    if (error->domain == GUPNP_CONTROL_ERROR) {
        answer->outcome = Answer::Refused;
        answer->code = error->code;
    } else if (error->domain == GUPNP_SERVER_ERROR || error->domain == GUPNP_XML_ERROR) {
        answer->outcome = Answer::Refused;
    } else {
        const bool isTimeout = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT);
        answer->outcome = isTimeout ? Answer::TimedOut : Answer::Unreachable;
    }
}

void readValues(GUPnPServiceProxyAction *action, const Call &call, Answer *answer)
{
    GList *names = nullptr;
    GList *types = nullptr;
    for (const QByteArray &name : call.out) {
        names = g_list_append(names, const_cast<char *>(name.constData()));
        types = g_list_append(types, GSIZE_TO_POINTER(G_TYPE_STRING));
    }
    GList *values = nullptr;
    GlibHandles::Error error;
    gupnp_service_proxy_action_get_result_list(action, names, types, &values, error.out());
    const GList *value = values;
    for (const QByteArray &name : call.out) {
        if (!value)
            break;
        const auto text = QString::fromUtf8(g_value_get_string(static_cast<const GValue *>(value->data)));
        if (name.endsWith("MetaData"))
            answer->track = Didl::parse(text);
        else
            answer->values.insert(name, UpnpText::cleaned(text));
        value = value->next;
    }
    g_list_free_full(values, freeValue);
    g_list_free(types);
    g_list_free(names);
    if (error)
        readFailure(error.get(), answer);
}
} // namespace

Calls::~Calls()
{
    for (Running *running : m_running) {
        running->owner = nullptr;
        g_cancellable_cancel(running->cancellable.get());
    }
}

void Calls::run(GUPnPServiceProxy *proxy, const Call &call, Upnp::AnswerHandler handler)
{
    auto *running = new Running{this, call, std::move(handler), makeAction(call)};
    m_running.push_back(running);
    running->timer.reset(g_timeout_source_new(guint(call.timeout)));
    g_source_set_callback(running->timer.get(), timedOut, running, nullptr);
    g_source_attach(running->timer.get(), g_main_context_get_thread_default());
    gupnp_service_proxy_call_action_async(
        proxy, running->action.get(), running->cancellable.get(), finished, running);
}

/// Answered here: whoever waits must not depend on the library's word for what it was told to give up.
int Calls::timedOut(void *data)
{
    auto *running = static_cast<Running *>(data);
    Calls *owner = std::exchange(running->owner, nullptr);
    const Upnp::AnswerHandler handler = std::move(running->handler);
    if (owner)
        owner->forget(running);
    // Ends in finished().
    g_cancellable_cancel(running->cancellable.get());
    if (owner) {
        Answer answer;
        answer.outcome = Answer::TimedOut;
        handler(answer);
    }
    return G_SOURCE_REMOVE;
}

void Calls::finished(GObject *proxy, GAsyncResult *result, void *data)
{
    const std::unique_ptr<Running> running(static_cast<Running *>(data));
    g_source_destroy(running->timer.get());
    GlibHandles::Error error;
    gupnp_service_proxy_call_action_finish(GUPNP_SERVICE_PROXY(proxy), result, error.out());
    if (!running->owner)
        return;
    running->owner->forget(running.get());
    Answer answer;
    if (error)
        readFailure(error.get(), &answer);
    else
        readValues(running->action.get(), running->call, &answer);
    running->handler(answer);
}

void Calls::forget(Running *running)
{
    m_running.erase(std::find(m_running.begin(), m_running.end(), running));
}
