#ifndef PANEL_COMMANDS_PUBLISH_H
#define PANEL_COMMANDS_PUBLISH_H

#include "publish/publisher.h"

#include <string>
#include <vector>

// The command `publish`. The options of the publisher that are not here are taken as they are given.

struct PublishOptions {
    PublisherOptions publisher;
    std::string      broker;       // HOST, HOST:PORT or [IPV6]:PORT
    std::string      passwordFile; // "": no password
    double           spoolHours = 72;
};

/// Publishes until it is told to end. Throws UsageError.
int runPublish(const std::vector<PlantPlc> &plcs, const PublishOptions &options, bool quiet);

#endif
