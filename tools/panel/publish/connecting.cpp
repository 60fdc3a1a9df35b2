#include "publish/connecting.h"

#include "common/usage_error.h"
#include "link/name_lookup.h"

#include <cerrno>
#include <csignal>
#include <new>
#include <system_error>
#include <thread>

namespace {

void check(int code, const std::string &what)
{
    if (code == MOSQ_ERR_NOMEM)
        throw std::bad_alloc();
    if (code != MOSQ_ERR_SUCCESS)
        throw UsageError(what);
}

// A key with a pass phrase must not make the library ask for one on the terminal.
int noPassPhrase(char *, int, int, void *)
{
    return 0;
}

void setTls(mosquitto *client, const BrokerOptions &options)
{
    const auto orNull = [](const std::string &text) { return text.empty() ? nullptr : text.c_str(); };
    check(mosquitto_tls_set(client, options.caFile.c_str(), nullptr, orNull(options.certFile), orNull(options.keyFile),
                            noPassPhrase),
          "TLS is not possible with these files: --tls-ca, --tls-cert and --tls-key name PEM files that can be read, "
          "the last two together");
}

// A connection that breaks while TLS writes to it must not end the program.
int initialize()
{
    std::signal(SIGPIPE, SIG_IGN);
    return mosquitto_lib_init();
}

} // namespace

Client newClient(const BrokerOptions &options)
{
    static const int initialized = initialize();
    check(initialized, "libmosquitto cannot be used here");
    Client client(mosquitto_new(options.clientId.c_str(), true, nullptr));
    if (!client)
        throw UsageError("the broker's client id '" + options.clientId + "' cannot be; use letters and digits");
    mosquitto_int_option(client.get(), MOSQ_OPT_SEND_MAXIMUM, 65535); // whoever publishes has a bound
    if (!options.user.empty())
        check(mosquitto_username_pw_set(client.get(), options.user.c_str(), options.password.c_str()),
              "the user '" + options.user + "' or the password is no UTF-8");
    check(mosquitto_will_set(client.get(), options.willTopic.c_str(), static_cast<int>(options.will.size()),
                             options.will.data(), 1, true),
          "'" + options.willTopic + "' is no topic; choose another one with --prefix");
    if (!options.caFile.empty())
        setTls(client.get(), options);
    return client;
}

std::shared_ptr<Connecting> Connecting::begin(Client client, const std::string &host, int port, int keepAlive)
{
    auto made = std::make_shared<Connecting>();
    made->client_ = std::move(client);
    std::thread([made, host, port, keepAlive] { made->run(host, port, keepAlive); }).detach();
    return made;
}

void Connecting::run(const std::string &host, int port, int keepAlive)
{
    mosquitto_user_data_set(client_.get(), this);
    mosquitto_log_callback_set(client_.get(), [](mosquitto *, void *self, int level, const char *text) {
        if (level == MOSQ_LOG_ERR)
            static_cast<Connecting *>(self)->logged_ = text;
    });
    const int code  = mosquitto_connect(client_.get(), host.c_str(), port, keepAlive);
    const int error = errno;
    if (code == MOSQ_ERR_EAI)
        problem_ = "there is no address for '" + host + "': " + lookupProblem(error);
    else if (code == MOSQ_ERR_ERRNO)
        problem_ = std::generic_category().message(error);
    else if (code == MOSQ_ERR_TLS && !logged_.empty())
        problem_ = "TLS: " + logged_;
    else if (code != MOSQ_ERR_SUCCESS)
        problem_ = mosquitto_strerror(code);
    ended_.stop();
}

bool Connecting::hasEnded() const
{
    return ended_.isStopped();
}

Client Connecting::take(std::string &problem)
{
    problem = problem_;
    return std::move(client_);
}
