#include "option_checks.h"

#include "faults.h"
#include "plant.h"
#include "profile.h"

#include <asio/ip/address.hpp>

namespace plc {

std::string checkEndCode(const std::string &text)
{
    const bool isCode = text.size() == 4 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    return isCode && text != "0000" ? std::string() : "'" + text + "' is no end code; use four hexadecimal digits";
}

std::string checkAddress(const std::string &text)
{
    asio::error_code error;
    asio::ip::make_address(text, error);
    return error ? "'" + text + "' is no IP address; use one such as 127.0.0.1" : std::string();
}

std::string checkPlant(const std::string &text)
{
    return isPlant(text) ? std::string() : "'" + text + "' is no plant; plants are " + plantNames();
}

std::string checkProfile(const std::string &text)
{
    return findProfile(text) ? std::string() : "'" + text + "' is no profile; profiles are " + profileNames();
}

std::string checkFault(const std::string &text)
{
    Faults unused(0);
    return unused.set(text);
}

unsigned endCodeOf(const std::string &text) { return static_cast<unsigned>(std::stoul(text, nullptr, 16)); }

} // namespace plc
