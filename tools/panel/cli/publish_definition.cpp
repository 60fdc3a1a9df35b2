#include "cli/publish_definition.h"

#include "cli/options.h"
#include "cli/plant_arguments.h"

namespace {

constexpr std::int64_t LEAST_SPOOL = 1 << 20;

constexpr Setting IN_FLIGHT = {"--in-flight", nullptr, true, 1, 10000, "messages",
                               "handed to the broker and not acknowledged yet, at the most"};
constexpr Setting REPLAY_RATE = {"--replay-rate", nullptr, false, 1, 1e6, "messages a second",
                                 "the most of what has waited for the broker, besides what is new"};
constexpr Setting KEEP_ALIVE = {"--keep-alive", nullptr, true, 5, 3600, "seconds",
                                "silence after which the broker is asked whether it is there"};
constexpr Setting SPOOL_HOURS = {"--spool-hours", nullptr, false, 0.01, 87600, "hours",
                                 "age from which on messages that wait are dropped"};

void addBrokerOptions(CLI::App &command, PublishOptions &publish)
{
    BrokerOptions &broker = publish.publisher.broker;
    command.add_option("--broker", publish.broker,
                       "MQTT broker: HOST, HOST:PORT or [IPV6]:PORT; port 1883 by default, 8883 with --tls-ca")
        ->required()->type_name("HOST");
    command.add_option("--user", broker.user, "user at the broker")->type_name("NAME");
    command.add_option("--password-file", publish.passwordFile,
                       "file with the user's password in one line, which not everybody can read")->type_name("FILE");
    command.add_option("--tls-ca", broker.caFile, "use TLS; certificates of the authorities that the broker's has to "
                                                  "come from (PEM)")->type_name("FILE");
    command.add_option("--tls-cert", broker.certFile, "this client's certificate (PEM)")->type_name("FILE");
    command.add_option("--tls-key", broker.keyFile, "its key (PEM), without a pass phrase")->type_name("FILE");
    command.add_option("--client-id", broker.clientId, "name of this client at the broker; one of the spool by default")
        ->type_name("NAME");
    addSetting(command, KEEP_ALIVE, broker.keepAlive);
}

void addTopicOptions(CLI::App &command, PublisherOptions &publisher)
{
    command.add_option("--prefix", publisher.prefix, "beginning of all topics, PREFIX/PLC/TAG; fins by default")
        ->type_name("PREFIX");
    command.add_option("--name", publisher.name, "name in topics of a PLC that has none; its host by default")
        ->type_name("NAME");
    command.add_flag("--allow-writes", publisher.allowWrites,
                     "write what is published on PREFIX/PLC/TAG/set, of tags with access = \"rw\"");
    command.add_option("--home-assistant", publisher.discovery,
                       "announce the tags to Home Assistant, under homeassistant or this prefix")
        ->expected(0, 1)->default_str("homeassistant")->type_name("PREFIX");
}

void addSpoolOptions(CLI::App &command, PublishOptions &publish)
{
    PublisherOptions &publisher = publish.publisher;
    command.add_option("--spool", publisher.spoolFile,
                       "file for what waits for the broker; publish.spool in ~/.local/state/fins_panel by default")
        ->type_name("FILE");
    addSetting(command, SPOOL_HOURS, publish.spoolHours);
    command.add_option("--spool-bytes", publisher.limits.bytes,
                       "size of that file from which on the oldest messages are dropped, such as 500M; 1M or more, "
                       "default 1G")
        ->transform(CLI::AsSizeValue(false))->check(CLI::Range(LEAST_SPOOL, INT64_MAX))->option_text("SIZE");
    addSetting(command, IN_FLIGHT, publisher.outbox.inFlight);
    addSetting(command, REPLAY_RATE, publisher.outbox.replayRate);
}

} // namespace

void addPublish(CLI::App &app, Arguments &arguments)
{
    CLI::App *command = app.add_subcommand("publish", "Publish values to an MQTT broker; what it has not acknowledged "
                                                      "is kept on disk");
    addPlantOptions(*command, arguments,
                    "items to publish, names of tags or patterns such as 'press.*' for them; all tags of the project "
                    "by default");
    addBrokerOptions(*command, arguments.publish);
    addTopicOptions(*command, arguments.publish.publisher);
    addSpoolOptions(*command, arguments.publish);
    command->callback([&arguments] {
        arguments.action = [&arguments](const DriverLibrary &) {
            return runPublish(arguments.plcs, arguments.publish, arguments.link.quiet);
        };
    });
}
