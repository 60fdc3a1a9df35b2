#ifndef TESTS_PUBLISH_MOSQUITTO_H
#define TESTS_PUBLISH_MOSQUITTO_H

#include "support/held_port.h"
#include "support/process.h"
#include "support/temporary_folder.h"

#include <memory>
#include <string>

// A broker of the test's own: a port that stays its own while the broker is away, its configuration and its files.
class Mosquitto {
public:
    // `lines` are of its configuration. It listens at once.
    explicit Mosquitto(const std::string &lines = "allow_anonymous true\n") { configure(lines); start(); }

    void configure(const std::string &lines)
    {
        folder.put("mosquitto.conf",
                   "user root\nlog_dest stderr\nlog_type error\nlog_type warning\nlog_type information\n"
                   "max_inflight_messages 0\nmax_queued_messages 0\n"
                   "listener " + std::to_string(port.number()) + " 127.0.0.1\n" + lines);
    }

    void start()
    {
        process = std::make_unique<Process>(
            std::vector<std::string>{MOSQUITTO_PATH, "-c", folder.path("mosquitto.conf")});
        process->waitForErrorLine("running");
    }

    void kill() { process.reset(); }

    std::string host() const { return port.host(); }

    const TemporaryFolder    folder;
    const HeldPort           port;
    std::unique_ptr<Process> process;
};

#endif
