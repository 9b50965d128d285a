// SPDX-License-Identifier: MIT
// startup-benchmark REFERENCE PROGRAM [ROUNDS]
// Time from starting a process until the X server maps its window, in turn for both programs. The display must
// be private: any window that appears counts.
#include "Measurement.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace {
using Clock = std::chrono::steady_clock;

class Display
{
public:
    Display()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(m_connection))
            throw std::runtime_error("no display");
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, root, XCB_CW_EVENT_MASK, &events);
        xcb_flush(m_connection);
    }
    ~Display() { xcb_disconnect(m_connection); }
    Display(const Display &) = delete;
    Display &operator=(const Display &) = delete;

    void waitForMap()
    {
        const auto limit = Clock::now() + std::chrono::seconds(30);
        while (Clock::now() < limit) {
            while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
                const bool mapped = (event->response_type & 0x7f) == XCB_MAP_NOTIFY;
                std::free(event);
                if (mapped)
                    return;
            }
            pollfd descriptor{xcb_get_file_descriptor(m_connection), POLLIN, 0};
            poll(&descriptor, 1, 100);
        }
        throw std::runtime_error("no window appeared");
    }

    void dropEvents()
    {
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
        while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection))
            std::free(event);
    }

private:
    xcb_connection_t *m_connection;
};

double millisecondsToWindow(Display &display, char *program)
{
    display.dropEvents();
    char *arguments[] = {program, nullptr};
    pid_t process = 0;
    const auto start = Clock::now();
    if (posix_spawn(&process, program, nullptr, nullptr, arguments, environ) != 0)
        throw std::runtime_error(std::string("cannot start ") + program);
    display.waitForMap();
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
    kill(process, SIGTERM);
    waitpid(process, nullptr, 0);
    return elapsed.count();
}
} // namespace

int main(int argc, char *argv[])
try {
    if (argc < 3)
        throw std::runtime_error("usage: startup-benchmark REFERENCE PROGRAM [ROUNDS]");
    const int rounds = argc > 3 ? std::atoi(argv[3]) : 15;
    Display display;
    std::vector<double> reference;
    std::vector<double> program;
    millisecondsToWindow(display, argv[1]); // warm both
    millisecondsToWindow(display, argv[2]);
    for (int round = 0; round < rounds; ++round) {
        reference.push_back(millisecondsToWindow(display, argv[1]));
        program.push_back(millisecondsToWindow(display, argv[2]));
    }
    Measurement::row("start to window shown, median", Measurement::median(program), "ms", "empty Qt window",
        Measurement::median(reference), "at most 1.5");
    return 0;
} catch (const std::exception &exception) {
    std::fprintf(stderr, "startup-benchmark: %s\n", exception.what());
    return 1;
}
