#include "options/profile.h"

#include "fins/fins_command.h"

#include <fmt/format.h>

namespace plc {

namespace {

const Profile PROFILES[] = {
    //                                                       CIO   WR    HR   AR     DM     T     C     EM
    {"cj2",   "CJ2, the default",              16, FINS_FRAME_MAX, {{6144, 512, 1536, 960, 32768, 4096, 4096}, 25}},
    {"cp1l",  "small, with the large areas",    2, 540,            {{6144, 512,  512, 960, 32768, 4096, 4096}, 0}},
    {"small", "small, with little memory",      2, 540,            {{ 290, 100,   50, 754,  2048,  256,  256}, 0}},
};

} // namespace

const Profile *findProfile(const std::string &name)
{
    for (const Profile &profile : PROFILES)
        if (name == profile.name)
            return &profile;
    return nullptr;
}

std::string profileNames()
{
    std::string names;
    for (const Profile &profile : PROFILES)
        names += (names.empty() ? "" : " ") + std::string(profile.name);
    return names;
}

std::string profileHelp()
{
    std::string text = "  name   clients  message    CIO   WR    HR   AR     DM     T     C  EM\n";
    for (const Profile &profile : PROFILES) {
        const auto &words = profile.sizes.words;
        text += fmt::format("  {:<6} {:7}  {:7}  {:5}  {:3}  {:4}  {:3}  {:5}  {:4}  {:4}  {:2}  {}\n", profile.name,
                            profile.clients, profile.messageMax, words[AREA_CIO], words[AREA_WR], words[AREA_HR],
                            words[AREA_AR], words[AREA_DM], words[AREA_T], words[AREA_C], profile.sizes.emBanks,
                            profile.meaning);
    }
    return text + "  Message: bytes of a FINS command or response, header included. A longer command is refused with\n"
                  "  end code 1001, a read whose response would be longer with 110B. Areas: number of words; EM: of banks.\n";
}

} // namespace plc
