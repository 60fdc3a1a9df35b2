#ifndef RUNTIME_LINK_NAME_LOOKUP_H
#define RUNTIME_LINK_NAME_LOOKUP_H

#include "base/stop_signal.h"

#include <netdb.h>

#include <memory>
#include <mutex>
#include <string>

/// What getaddrinfo's error says, "" for none; EAI_SYSTEM means that errno has it.
std::string lookupProblem(int error);

// A host name on its way to addresses. The system's resolver waits for a name server as long as it is configured to, and
// cannot be interrupted; so it runs on a thread of its own, which nobody waits for.

class NameLookup {
public:
    struct FreeAddresses {
        void operator()(addrinfo *list) const { freeaddrinfo(list); }
    };
    using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

    /// The addresses of a host that is given by numbers; null for a name.
    static Addresses ofNumbers(const std::string &host, const std::string &port);

    /// Begins to look the name up. Throws std::runtime_error if the system lacks a thread or a descriptor.
    static std::shared_ptr<NameLookup> begin(const std::string &host, const std::string &port);

    bool isOf(const std::string &host, const std::string &port) const { return host_ == host && port_ == port; }

    /// Readable once the resolver has ended.
    int fd() const { return ended_.fd(); }

    /// The addresses, or null and why there are none. Once, and only after fd() was readable.
    Addresses take(std::string &problem);

private:
    NameLookup(const std::string &host, const std::string &port) : host_(host), port_(port) {}
    void run();

    const std::string host_;
    const std::string port_;
    StopSignal        ended_;
    std::mutex        mutex_;
    Addresses         found_;
    std::string       problem_;
};

#endif
