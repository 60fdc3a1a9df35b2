#include "link/name_lookup.h"

#include <cerrno>
#include <system_error>
#include <thread>

// Returns what getaddrinfo does; `found` is null unless that is 0.
static int resolve(const std::string &host, const std::string &port, int flags, NameLookup::Addresses &found)
{
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags    = flags;
    addrinfo *list = nullptr;
    const int error = getaddrinfo(host.c_str(), port.c_str(), &hints, &list);
    found.reset(error == 0 ? list : nullptr);
    return error;
}

NameLookup::Addresses NameLookup::ofNumbers(const std::string &host, const std::string &port)
{
    Addresses found;
    resolve(host, port, AI_NUMERICHOST | AI_NUMERICSERV, found);
    return found;
}

std::shared_ptr<NameLookup> NameLookup::begin(const std::string &host, const std::string &port)
{
    std::shared_ptr<NameLookup> lookup(new NameLookup(host, port));
    std::thread([lookup] { lookup->run(); }).detach();
    return lookup;
}

std::string lookupProblem(int error)
{
    switch (error) {
    case 0:          return "";
    case EAI_NONAME: return "Host not found (authoritative)";
    case EAI_AGAIN:  return "Host not found (non-authoritative), try again later";
    case EAI_SYSTEM: return std::generic_category().message(errno);
    default:         return gai_strerror(error);
    }
}

void NameLookup::run()
{
    Addresses found;
    const std::string problem = lookupProblem(resolve(host_, port_, 0, found));
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        found_   = std::move(found);
        problem_ = problem;
    }
    ended_.stop();
}

NameLookup::Addresses NameLookup::take(std::string &problem)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    problem = problem_;
    return std::move(found_);
}
