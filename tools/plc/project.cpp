#include "project.h"

#include "option_checks.h"
#include "plant.h"
#include "profile.h"
#include "project_memory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <tuple>

namespace plc {

namespace {

using TextSetter = std::string (*)(const std::string &text, Options *options);
using NumberSetter = void (*)(std::int64_t number, Options *options);
using FlagSetter = void (*)(bool isOn, Options *options);

// Settings of [plc]. Of the setters one is there, or for a setting that is a text or true, two.
struct Setting {
    const char  *key;
    const char  *meaning;
    std::int64_t least;
    std::int64_t most;
    NumberSetter setNumber;
    TextSetter   setText; // returns what is wrong
    FlagSetter   setFlag;
};

std::string setMode(const std::string &text, Options *options)
{
    return parseMode(text, &options->mode) ? "" : "'" + text + "' is no mode; use program, monitor or run";
}

std::string setRefusal(const std::string &text, unsigned *refusal)
{
    std::string wrong = checkEndCode(text);
    if (wrong.empty())
        *refusal = endCodeOf(text);
    return wrong;
}

std::string setAddress(const std::string &text, Options *options)
{
    std::string wrong = checkAddress(text);
    if (wrong.empty())
        options->address = text;
    return wrong;
}

std::string setPlant(const std::string &text, Options *options)
{
    std::string wrong = checkPlant(text);
    if (wrong.empty())
        options->plant = text;
    return wrong;
}

std::string setProfile(const std::string &text, Options *options)
{
    std::string wrong = checkProfile(text);
    if (wrong.empty())
        options->profile = text;
    return wrong;
}

std::string addFault(const std::string &text, Options *options)
{
    std::string wrong = checkFault(text);
    if (wrong.empty())
        options->faults.push_back(text);
    return wrong;
}

std::string addTcpError(const std::string &text, Options *options) { return addFault("tcp-error=" + text, options); }

const Setting SETTINGS[] = {
    {"port", "TCP port, 0 to 65535", 0, 65535,
     [](std::int64_t n, Options *o) { o->port = static_cast<std::uint16_t>(n); }, nullptr, nullptr},
    {"bind", "IP address to listen on, a text", 0, 0, nullptr, setAddress, nullptr},
    {"profile", "limits of the CPU unit, a text", 0, 0, nullptr, setProfile, nullptr},
    {"clients", "clients at once, 1 to 253", 1, 253,
     [](std::int64_t n, Options *o) { o->clients = static_cast<std::size_t>(n); }, nullptr, nullptr},
    {"node", "own FINS node, 1 to 254", 1, 254,
     [](std::int64_t n, Options *o) { o->node = static_cast<unsigned>(n); }, nullptr, nullptr},
    {"mode", "program, monitor or run", 0, 0, nullptr, setMode, nullptr},
    {"refuse-writes-in-run", "true, or the end code as a text", 0, 0, nullptr,
     [](const std::string &text, Options *o) { return setRefusal(text, &o->refusalInRun); },
     [](bool isOn, Options *o) { o->refusalInRun = isOn ? END_RUN_MODE : END_NORMAL; }},
    {"refuse-writes-in-program", "true, or the end code as a text", 0, 0, nullptr,
     [](const std::string &text, Options *o) { return setRefusal(text, &o->refusalInProgram); },
     [](bool isOn, Options *o) { o->refusalInProgram = isOn ? END_PROGRAM_MODE : END_NORMAL; }},
    {"plant", "name of the plant, a text", 0, 0, nullptr, setPlant, nullptr},
    {"plant-period", "ms between steps of the plant, 1 to 60000", 1, 60000,
     [](std::int64_t n, Options *o) { o->plantPeriodMs = static_cast<unsigned>(n); }, nullptr, nullptr},
    {"faults", "faults at the start, a text or a list of texts", 0, 0, nullptr, addFault, nullptr},
    {"tcp-error", "FINS/TCP error of node address exchanges, a text", 0, 0, nullptr, addTcpError, nullptr},
    {"seed", "seed of faults and plants, 0 to 4294967295", 0, 4294967295LL,
     [](std::int64_t n, Options *o) { o->seed = static_cast<std::uint32_t>(n); }, nullptr, nullptr},
    {"deadline", "ms for the rest of a frame, 1 to 3600000", 1, 3600000,
     [](std::int64_t n, Options *o) { o->connection.deadlineMs = static_cast<unsigned>(n); }, nullptr, nullptr},
};

const Setting *findSetting(const toml::key &key)
{
    for (const Setting &setting : SETTINGS)
        if (key == setting.key)
            return &setting;
    return nullptr;
}

// Returns an empty text, or what is wrong with the value.
std::string applySetting(const Setting &setting, const toml::node &value, Options *options)
{
    if (setting.setText && value.is_string())
        return setting.setText(value.as_string()->get(), options);
    if (setting.setFlag && value.is_boolean()) {
        setting.setFlag(value.as_boolean()->get(), options);
        return std::string();
    }
    const auto *number = value.as_integer();
    if (!setting.setNumber || !number || number->get() < setting.least || number->get() > setting.most)
        return std::string("no value of ") + setting.key + "; it is " + setting.meaning;
    setting.setNumber(number->get(), options);
    return std::string();
}

void readSetting(const Member &member, Problems &problems, Options *options)
{
    const Setting *const setting = findSetting(*member.key);
    if (!setting) {
        problems.add(*member.key, "'" + std::string(member.key->str()) + "' is no setting of [plc]");
        return;
    }
    const toml::array *const list = setting->setText == addFault ? member.value->as_array() : nullptr;
    if (!list) {
        const std::string wrong = applySetting(*setting, *member.value, options);
        if (!wrong.empty())
            problems.add(*member.value, wrong);
        return;
    }
    for (const toml::node &item : *list) {
        const std::string wrong = applySetting(*setting, item, options);
        if (!wrong.empty())
            problems.add(item, wrong);
    }
}

const toml::table *tableOf(const toml::table &root, const char *name, Problems &problems)
{
    const toml::node *const node = root.get(name);
    if (node && !node->is_table())
        problems.add(*node, std::string(name) + " has to be a table, [" + name + "]");
    return node ? node->as_table() : nullptr;
}

} // namespace

void Problems::add(const toml::source_position &place, const std::string &text) { entries.push_back({place, text}); }

std::vector<std::string> Problems::lines() const
{
    std::vector<Entry> sorted = entries;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Entry &a, const Entry &b) { return a.place < b.place; });
    std::vector<std::string> all;
    all.reserve(sorted.size());
    for (const Entry &entry : sorted)
        all.push_back(file + ":" + std::to_string(entry.place.line) + ":" + std::to_string(entry.place.column) + ": " +
                      entry.text);
    return all;
}

std::vector<Member> membersOf(const toml::table &table)
{
    std::vector<Member> members;
    for (auto entry = table.cbegin(); entry != table.cend(); ++entry)
        members.push_back({&entry->first, &entry->second});
    std::sort(members.begin(), members.end(), [](const Member &a, const Member &b) {
        return a.key->source().begin < b.key->source().begin;
    });
    return members;
}

std::vector<std::string> parseProject(const std::string &text, const std::string &file, Options *options)
{
    Problems problems(file);
    toml::table root;
    if (const std::optional<TomlProblem> wrong = parseTomlText(text, &root)) {
        problems.add(toml::source_position{wrong->line, wrong->column}, wrong->text);
        return problems.lines();
    }
    for (const Member &member : membersOf(root))
        if (*member.key != "plc" && *member.key != "memory")
            problems.add(*member.key, "'" + std::string(member.key->str()) + "' is no table of a project; use [plc] "
                                          "and [memory]");
    if (const toml::table *settings = tableOf(root, "plc", problems))
        for (const Member &member : membersOf(*settings))
            readSetting(member, problems, options);
    if (const toml::table *memory = tableOf(root, "memory", problems))
        options->contents = readMemoryTable(*memory, Memory(findProfile(options->profile)->sizes), problems);
    return problems.lines();
}

std::vector<std::string> loadProject(const std::string &file, Options *options)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        return {file + ": cannot be read: " + std::strerror(errno)};
    std::string text;
    char buffer[65536];
    // One piece more than may be parsed is enough to be told so; a device that never ends is not read on.
    while (text.size() <= TOML_MAX_BYTES && (stream.read(buffer, sizeof buffer) || stream.gcount() > 0))
        text.append(buffer, static_cast<std::size_t>(stream.gcount()));
    if (stream.bad())
        return {file + ": cannot be read: " + std::strerror(errno)};
    return parseProject(text, file, options);
}

std::string projectHelp()
{
    std::string text = "  [plc]\n";
    for (const Setting &setting : SETTINGS) {
        const std::string key = std::string("  ") + setting.key + " =";
        text += key + std::string(29 - std::min<std::size_t>(key.size(), 28), ' ') + setting.meaning + "\n";
    }
    return text + "  [memory]\n"
                  "  \"DM:10\" = 5                 a word, 0 to 65535\n"
                  "  \"DM:10\" = [1, 2, 3]         words in a row\n"
                  "  \"DM:10:50\" = 7              50 words with this value\n"
                  "  \"DM:10\" = 21.5              32-bit floating point in two words, low word first\n"
                  "  \"DM:10\" = { s32 = -5 }      a type: u16 s16 bcd16 u32 s32 f32, values and lists\n"
                  "  \"DM:10:8\" = \"PUMP\"          two characters a word, zeros behind the text\n"
                  "  \"DM:10\" = { string = \"PUMP\", low-byte-first = true }\n"
                  "  \"CIO_bit:100.5\" = true      a bit; also [true, false], 0 and 1\n";
}

} // namespace plc
