#include "options/settings.h"

#include "faults/faults.h"
#include "options/profile.h"
#include "plants/shipped_plants.h"

#include <asio/ip/address.hpp>
#include <charconv>

namespace plc {

namespace {

// Sets a text, or says that it is `wrong`.
std::string setText(bool isGood, const std::string &text, const std::string &wrong, std::string *setting)
{
    if (!isGood)
        return "'" + text + "' is no " + wrong;
    *setting = text;
    return std::string();
}

std::string setAddress(const std::string &text, Options *options)
{
    asio::error_code error;
    asio::ip::make_address(text, error);
    return setText(!error, text, "IP address; use one such as 127.0.0.1", &options->address);
}

std::string setProfile(const std::string &text, Options *options)
{
    return setText(findProfile(text) != nullptr, text, "profile; profiles are " + profileNames(), &options->profile);
}

std::string setMode(const std::string &text, Options *options)
{
    return parseMode(text, &options->mode) ? "" : "'" + text + "' is no mode; use program, monitor or run";
}

std::string setPlant(const std::string &text, Options *options)
{
    return setText(isPlant(text), text, "plant; plants are " + plantNames(), &options->plant);
}

std::string setStepped(const std::string &, Options *options)
{
    options->isStepped = true;
    return std::string();
}

std::string addFault(const std::string &text, Options *options)
{
    if (options->faults.size() >= Faults::RULES_MAX)
        return "there are " + std::to_string(Faults::RULES_MAX) + " faults already; leave one out";
    Faults tried(0);
    std::string wrong = tried.set(text);
    if (wrong.empty())
        options->faults.push_back(text);
    return wrong;
}

std::string setRefusal(const std::string &text, unsigned *refusal)
{
    const bool isCode = text.size() == 4 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!isCode || text == "0000")
        return "'" + text + "' is no end code; use four hexadecimal digits";
    *refusal = static_cast<unsigned>(std::stoul(text, nullptr, 16));
    return std::string();
}

std::string setNumber(const Setting &setting, const std::string &text, Options *options)
{
    std::uint32_t number = 0;
    const char *const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || number < setting.least || number > setting.most)
        return "'" + text + "' is no value of " + setting.key + "; use " + std::to_string(setting.least) + " to " +
               std::to_string(setting.most);
    setting.setNumber(number, options);
    return std::string();
}

} // namespace

const std::array<Setting, SETTING_COUNT> SETTINGS = {{
    {"port", "--port", SettingKind::NUMBER, "TCP port", "0 picks a free one", 0, 65535, nullptr,
     [](std::uint32_t n, Options *o) { o->port = static_cast<std::uint16_t>(n); }, nullptr,
     [](const Options &o) { return std::to_string(o.port); }},
    {"bind", "--bind", SettingKind::TEXT, "IP address to listen on", nullptr, 0, 0, nullptr, nullptr, setAddress,
     [](const Options &o) { return o.address; }},
    {"clients", "--clients", SettingKind::NUMBER, "clients at once", "as the profile has it when left out", 1, 253,
     nullptr, [](std::uint32_t n, Options *o) { o->clients = n; }, nullptr, nullptr},
    {"node", "--node", SettingKind::NUMBER, "own FINS node", nullptr, 1, 254, nullptr,
     [](std::uint32_t n, Options *o) { o->node = n; }, nullptr,
     [](const Options &o) { return std::to_string(o.node); }},
    {"mode", "--mode", SettingKind::TEXT, "operating mode at the start: program, monitor or run", nullptr, 0, 0,
     nullptr, nullptr, setMode, [](const Options &o) { return modeName(o.mode); }},
    {"refuse-writes-in-run", "--refuse-writes-in-run", SettingKind::END_CODE,
     "refuse writes in RUN mode, with end code 2206 or this one", nullptr, 0, 0, "2206", nullptr,
     [](const std::string &text, Options *o) { return setRefusal(text, &o->refusalInRun); }, nullptr},
    {"refuse-writes-in-program", "--refuse-writes-in-program", SettingKind::END_CODE,
     "refuse writes in PROGRAM mode, with end code 2203 or this one", nullptr, 0, 0, "2203", nullptr,
     [](const std::string &text, Options *o) { return setRefusal(text, &o->refusalInProgram); }, nullptr},
    {"profile", "--profile", SettingKind::TEXT, "limits of the CPU unit", "--profiles lists them", 0, 0, nullptr,
     nullptr, setProfile, [](const Options &o) { return o.profile; }},
    {"plant", "--plant", SettingKind::TEXT, "run a plant, by its name or a file of its own such as mixer.toml",
     "without a name the tank; --plants lists them", 0, 0, "tank", nullptr, setPlant, nullptr},
    {"plant-period", "--plant-period", SettingKind::NUMBER, "ms between steps of the plant",
     "as the plant has it when left out", 1, 60000, nullptr,
     [](std::uint32_t n, Options *o) { o->plantPeriodMs = n; }, nullptr, nullptr},
    {"stepped", "--stepped", SettingKind::FLAG, "the plant and the clock move by the command step alone", nullptr, 0, 0,
     "true", nullptr, setStepped, nullptr},
    {"faults", "--fault", SettingKind::LIST, "begin with fault NAME[=VALUE][:AIM][@PROBABILITY][#TIMES]", "repeatable", 0,
     0, nullptr, nullptr, addFault, nullptr},
    {"seed", "--seed", SettingKind::NUMBER, "seed of the faults' probabilities and of plants", nullptr, 0, 4294967295u,
     nullptr, [](std::uint32_t n, Options *o) { o->seed = n; }, nullptr,
     [](const Options &o) { return std::to_string(o.seed); }},
    {"deadline", "--deadline", SettingKind::NUMBER, "ms for the rest of a frame, and for the node address exchange",
     nullptr, 1, 3600000, nullptr, [](std::uint32_t n, Options *o) { o->connection.deadlineMs = n; }, nullptr,
     [](const Options &o) { return std::to_string(o.connection.deadlineMs); }},
}};

std::string settingHelp(const Setting &setting)
{
    std::string text = setting.meaning;
    if (setting.kind == SettingKind::NUMBER)
        text += ", " + std::to_string(setting.least) + " to " + std::to_string(setting.most);
    return setting.note ? text + "; " + setting.note : text;
}

std::string applySetting(const Setting &setting, const std::string &text, Options *options)
{
    return setting.setNumber ? setNumber(setting, text, options) : setting.setText(text, options);
}

} // namespace plc
