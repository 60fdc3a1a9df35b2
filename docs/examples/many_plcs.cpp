// Shows one item of several PLCs, all in one poll() loop, until it is interrupted: many_plcs ITEM HOST...

#include <fins_runtime/plc.h>

#include <poll.h>

#include <iostream>

static void show(const std::string &host, const fins::Samples &samples)
{
    for (const fins::Sample &sample : samples)
        std::cout << host << ' ' << sample.name << " = " << sample.text << " (" << text(sample.quality) << ")\n";
    std::cout.flush();
}

int main(int argc, char **argv)
try {
    if (argc < 3) {
        std::cerr << "usage: many_plcs ITEM HOST...   such as: many_plcs DM:0 192.168.250.1 192.168.250.2\n";
        return 2;
    }
    std::vector<fins::Plc> plcs;
    std::vector<fins::Handle> handles;
    std::vector<pollfd> ready; // a program adds its own descriptors here
    for (int n = 2; n < argc; ++n) {
        const std::string host = argv[n];
        fins::Plc &plc = plcs.emplace_back(fins::Plc::open({host}));
        handles.push_back(plc.watch({argv[1]}, [host](const fins::Samples &samples) { show(host, samples); }));
        handles.push_back(plc.onState([host](const fins::State &state) {
            std::cerr << host << ' ' << text(state.phase) << ' ' << state.reason << '\n';
        }));
        ready.push_back({plc.readyFd(), POLLIN, 0});
    }
    for (;;) {
        if (poll(ready.data(), ready.size(), -1) <= 0)
            continue; // interrupted by a signal
        for (std::size_t n = 0; n < ready.size(); ++n) {
            if (ready[n].revents != 0)
                plcs[n].dispatch();
        }
    }
} catch (const std::exception &error) {
    std::cerr << "many_plcs: " << error.what() << '\n';
    return 2;
}
