// SPDX-License-Identifier: MIT
// Bounds the waits of the toolkit's bridge to assistive technology.
//
// The bridge asks the registry of accessible programs on the GUI thread and waits for the answer: two calls when it is
// switched on, another one when somebody starts to listen, and a key is held back until the registry has seen it. With
// the D-Bus library's own limit of 25 s for each, a registry that hangs would freeze the window. The bridge names no
// limit and offers none to be set, so the library's function that it ends up in is wrapped: what goes to the services
// of accessibility gets a limit of its own. A registry that answers later than that still knows of the program. The one
// question that nobody waits for keeps its time: whoever is told the address too late is not accessible until its end.
#include <cstring>
#include <dlfcn.h>

namespace {
// Two of them in a row are still far below what is felt as a freeze; a healthy registry takes a millisecond.
constexpr int limit = 300;
constexpr char services[] = "org.a11y.";
constexpr char askedInPassing[] = "GetAddress";

using Connection = struct DBusConnection;
using Message = struct DBusMessage;
using PendingCall = struct DBusPendingCall;
using SendWithReply = unsigned (*)(Connection *, Message *, PendingCall **, int);
using GetText = const char *(*)(Message *);

bool goesToAccessibility(Message *message)
{
    static const auto destinationOf
        = reinterpret_cast<GetText>(::dlsym(RTLD_DEFAULT, "dbus_message_get_destination"));
    const char *destination = destinationOf ? destinationOf(message) : nullptr;
    return destination && std::strncmp(destination, services, sizeof services - 1) == 0;
}

bool isWaitedFor(Message *message)
{
    static const auto memberOf = reinterpret_cast<GetText>(::dlsym(RTLD_DEFAULT, "dbus_message_get_member"));
    const char *member = memberOf ? memberOf(message) : nullptr;
    return !member || std::strcmp(member, askedInPassing) != 0;
}
} // namespace

/// In place of the D-Bus library's function of this name, for all libraries of the program. Any thread.
extern "C" __attribute__((visibility("default"))) unsigned dbus_connection_send_with_reply(
    Connection *connection, Message *message, PendingCall **pending, int milliseconds)
{
    static const auto send
        = reinterpret_cast<SendWithReply>(::dlsym(RTLD_NEXT, "dbus_connection_send_with_reply"));
    const bool bounded
        = (milliseconds < 0 || milliseconds > limit) && goesToAccessibility(message) && isWaitedFor(message);
    return send(connection, message, pending, bounded ? limit : milliseconds);
}
