#include "commands/ending.h"
#include "commands/publish.h"
#include "common/file_reader.h"
#include "common/usage_error.h"
#include "link/host_port.h"
#include "terminal/stop_flag.h"

#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>

// `publish`: what was given on the command line becomes what the publisher needs.

namespace {

constexpr std::size_t SECRET_LIMIT = 4096;

// A password that everybody on the machine can read is none.
std::string passwordOf(const std::string &file)
{
    struct stat kind = {};
    if (stat(file.c_str(), &kind) == 0 && (kind.st_mode & S_IROTH) != 0)
        throw UsageError("everybody can read the password file " + file + "; use chmod 600 " + file);
    FileContent content = readWholeFile(file, SECRET_LIMIT);
    if (!content.problem.empty())
        throw UsageError("the password file " + file + ": " + content.problem);
    content.text.erase(content.text.find_last_not_of("\r\n") + 1);
    if (content.text.empty() || content.text.find('\n') != std::string::npos)
        throw UsageError("the password file " + file + " should hold one line, the password");
    return content.text;
}

// libmosquitto would say only that something is wrong.
void requireReadable(const char *option, const std::string &file)
{
    if (file.empty())
        return;
    const FileContent content = readWholeFile(file, 1 << 20);
    if (!content.problem.empty())
        throw UsageError(std::string(option) + " " + file + ": " + content.problem);
}

BrokerOptions brokerOf(const PublishOptions &options)
{
    BrokerOptions broker = options.publisher.broker;
    const bool hasTls = !broker.caFile.empty();
    std::string port;
    const std::size_t bracket = options.broker.find(']'); // of an IPv6 address
    const bool hasPort = options.broker.find(':', bracket == std::string::npos ? 0 : bracket) != std::string::npos;
    parseHost(options.broker + (hasPort ? "" : hasTls ? ":8883" : ":1883"), broker.host, port);
    broker.port = std::stoi(port);
    if (!hasTls && !(broker.certFile.empty() && broker.keyFile.empty()))
        throw UsageError("--tls-cert and --tls-key are for TLS; name the broker's authority with --tls-ca FILE");
    if (broker.certFile.empty() != broker.keyFile.empty())
        throw UsageError("--tls-cert and --tls-key belong together; give both or none");
    requireReadable("--tls-ca", broker.caFile);
    requireReadable("--tls-cert", broker.certFile);
    requireReadable("--tls-key", broker.keyFile);
    if (broker.user.empty() && !options.passwordFile.empty())
        throw UsageError("--password-file needs the user whose password it is; name them with --user");
    if (!options.passwordFile.empty())
        broker.password = passwordOf(options.passwordFile);
    return broker;
}

// Where programs keep what they need again; made where it is missing.
std::string defaultSpool()
{
    const auto variable = [](const char *name) {
        const char *value = std::getenv(name);
        return std::string(value ? value : "");
    };
    std::string folder = variable("STATE_DIRECTORY"); // of a service
    if (folder.empty()) {
        const std::string state = variable("XDG_STATE_HOME");
        const std::string home  = variable("HOME");
        if (state.empty() && home.empty())
            throw UsageError("there is no home for the spool; name a file with --spool FILE");
        folder = (state.empty() ? home + "/.local/state" : state) + "/fins_panel";
    }
    std::error_code problem;
    std::filesystem::create_directories(folder, problem);
    if (problem)
        throw UsageError("the folder " + folder + " cannot be made: " + problem.message()
                         + "; name a file with --spool FILE");
    return folder + "/publish.spool";
}

} // namespace

int runPublish(const std::vector<PlantPlc> &plcs, const PublishOptions &options, bool quiet)
{
    PublisherOptions all = options.publisher;
    all.broker = brokerOf(options);
    if (all.spoolFile.empty())
        all.spoolFile = defaultSpool();
    all.limits.age = std::chrono::seconds(static_cast<std::int64_t>(options.spoolHours * 3600));
    std::signal(SIGXFSZ, SIG_IGN); // a file at its limit is a full disk
    Messages messages;
    if (quiet)
        messages.hush();
    Publisher publisher(plcs, all, messages);
    publisher.run(programStop());
    return EXIT_DONE;
}
