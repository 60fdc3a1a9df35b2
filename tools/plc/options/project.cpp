#include "options/project.h"

#include "common/file_reader.h"
#include "console/cpu_texts.h"
#include "documents/text_check.h"
#include "options/profile.h"
#include "options/project_memory.h"
#include "options/settings.h"
#include "plants/shipped_plants.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fmt/format.h>
#include <tuple>

namespace plc {

namespace {

const Setting *findSetting(const toml::key &key)
{
    for (const Setting &setting : SETTINGS)
        if (key == setting.key)
            return &setting;
    return nullptr;
}

// What a project file gives for a setting, in words.
std::string wantedValue(const Setting &setting)
{
    switch (setting.kind) {
    case SettingKind::NUMBER:   return "a number";
    case SettingKind::TEXT:     return "a text";
    case SettingKind::FLAG:     return "true or false";
    case SettingKind::END_CODE: return "true, false or a text";
    case SettingKind::LIST:     return "a text or a list of texts";
    }
    return "";
}

// Returns an empty text, or what is wrong with the value.
std::string applyValue(const Setting &setting, const toml::node &value, Options *options)
{
    const bool isNumber = setting.kind == SettingKind::NUMBER;
    if (isNumber && value.is_integer())
        return applySetting(setting, std::to_string(value.as_integer()->get()), options);
    const bool isFlag = setting.kind == SettingKind::FLAG;
    if (!isNumber && !isFlag && value.is_string())
        return applySetting(setting, value.as_string()->get(), options);
    if ((isFlag || setting.kind == SettingKind::END_CODE) && value.is_boolean())
        return value.as_boolean()->get() ? applySetting(setting, setting.alone, options) : std::string();
    return std::string(setting.key) + " is " + wantedValue(setting) + ": " + settingHelp(setting);
}

// Reads the value or, where a list may stand, each of its items.
template <typename Read>
void readItems(const toml::node &value, bool isList, const Read &read)
{
    const toml::array *const list = isList ? value.as_array() : nullptr;
    if (!list) {
        read(value);
        return;
    }
    for (const toml::node &item : *list)
        read(item);
}

void readSetting(const TomlMember &member, Problems &problems, Options *options)
{
    const Setting *const setting = findSetting(*member.key);
    if (!setting) {
        problems.add(*member.key, "'" + std::string(member.key->str()) + "' is no setting of [plc]");
        return;
    }
    readItems(*member.value, setting->kind == SettingKind::LIST, [&](const toml::node &value) {
        const std::string wrong = applyValue(*setting, value, options);
        if (!wrong.empty())
            problems.add(value, wrong);
    });
}

// A line of [cpu] is tried on a CPU unit that nobody sees, and kept for the one that is to be.
void readCpuMember(const TomlMember &member, Controller &tried, Problems &problems, std::vector<CpuLine> *lines)
{
    const auto row = std::find_if(CPU_SETTINGS.begin(), CPU_SETTINGS.end(),
                                  [&member](const CpuSetting &setting) { return *member.key == setting.key; });
    if (row == CPU_SETTINGS.end()) {
        problems.add(*member.key, "'" + std::string(member.key->str()) + "' is no setting of [cpu]");
        return;
    }
    readItems(*member.value, row->isList, [&](const toml::node &value) {
        const std::string text = value.is_string() ? value.as_string()->get() : std::string();
        const std::string wrong = value.is_string() ? row->set(text, tried) : row->key + std::string(" is ") +
                                      (row->isList ? "a text or a list of texts: " : "a text: ") + row->meaning;
        if (wrong.empty())
            lines->push_back({&*row, text});
        else
            problems.add(value, wrong);
    });
}

// The lines are kept in the order of the settings: errors are logged with the time that the clock has been set to.
void readCpu(const toml::table &table, Problems &problems, Options *options)
{
    Controller tried;
    std::vector<CpuLine> lines;
    for (const TomlMember &member : membersOf(table))
        readCpuMember(member, tried, problems, &lines);
    std::stable_sort(lines.begin(), lines.end(),
                     [](const CpuLine &a, const CpuLine &b) { return a.setting < b.setting; });
    options->cpuLines = std::make_shared<const std::vector<CpuLine>>(std::move(lines));
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
        all.push_back(fmt::format("{}:{}:{}: {}", file, entry.place.line, entry.place.column,
                                  withoutBadCharacters(entry.text)));
    return all;
}

// The plant of the project itself, or one whose file the project names from where it lies.
static void namePlantFile(const toml::table &root, const std::string &file, Problems &problems, Options *options)
{
    namespace fs = std::filesystem;
    const toml::node *const own = root.get("plant");
    if (own && !options->plant.empty())
        problems.add(*own, "the project has a plant already, '" + options->plant + "' of [plc]; leave one of them out");
    else if (own)
        options->plant = (fs::path(file).has_parent_path() ? fs::path() : fs::path(".")) / file;
    else if (isPlantFile(options->plant))
        options->plant = fs::path(file).parent_path() / options->plant;
}

static std::vector<std::string> plantProblems(const Options &options)
{
    Controller unused;
    std::vector<std::string> problems;
    unused.fit(findProfile(options.profile)->sizes);
    if (!options.plant.empty())
        makePlant(options.plant, unused, options.seed, &problems);
    return problems;
}

// What lies beside the settings of a PLC: the state of its CPU unit and the content of its memory.
static void readState(const toml::table &table, Problems &problems, Options *options)
{
    if (const toml::table *cpu = tableOf(table, "cpu", problems))
        readCpu(*cpu, problems, options);
    if (const toml::table *memory = tableOf(table, "memory", problems))
        options->contents = std::make_shared<const std::vector<Content>>(
            readMemoryTable(*memory, Memory(findProfile(options->profile)->sizes), problems));
}

// A name that is easily typed.
static void readName(const TomlMember &member, Problems &problems, Options *options)
{
    const auto text = member.value->value<std::string>();
    const auto isUsual = [](unsigned char c) { return std::isalnum(c) != 0 || c == '-' || c == '_'; };
    if (!member.value->is_string() || text->empty() || !std::all_of(text->begin(), text->end(), isUsual))
        problems.add(*member.value, "name is a text of letters, digits, - and _");
    else
        options->name = *text;
}

// What two PLCs cannot both have.
static void checkApart(const toml::table &table, const std::vector<Options> &others, const Options &options,
                       Problems &problems)
{
    const auto placeOf = [&table](const char *key) { return (table.get(key) ? *table.get(key) : table).source().begin; };
    for (const Options &other : others) {
        if (other.name == options.name)
            problems.add(placeOf("name"), "'" + options.name + "' is the name of another PLC already");
        if (options.port != 0 && other.port == options.port && other.address == options.address)
            problems.add(placeOf("port"), fmt::format("port {} of {} is that of '{}' already", options.port,
                                                      options.address, other.name));
    }
}

// One of several PLCs: a port that it does not name is a free one.
static void readListed(const toml::table &table, const std::string &file, const Options &start, Problems &problems,
                       std::vector<Options> *plcs)
{
    Options options = start;
    options.port = 0;
    options.name = "plc" + std::to_string(plcs->size() + 1);
    for (const TomlMember &member : membersOf(table)) {
        if (*member.key == "name")
            readName(member, problems, &options);
        else if (*member.key != "memory" && *member.key != "cpu")
            readSetting(member, problems, &options);
    }
    checkApart(table, *plcs, options, problems);
    namePlantFile(toml::table(), file, problems, &options);
    readState(table, problems, &options);
    plcs->push_back(options);
}

static void readList(const toml::table &root, const toml::array &list, const std::string &file, const Options &start,
                     Problems &problems, std::vector<Options> *plcs)
{
    for (const char *name : {"cpu", "memory", "plant"})
        if (const toml::node *const table = root.get(name))
            problems.add(*table, std::string("with [[plc]] each PLC has its own; use [plc.memory], [plc.cpu] and a ")
                                     + "plant = FILE behind its [[plc]] instead of [" + name + "]");
    if (list.empty() || list.size() > PLCS_MAX || !list.is_homogeneous<toml::table>()) {
        problems.add(list, "plc has to be a table, [plc], or 1 to " + std::to_string(PLCS_MAX) + " tables [[plc]]");
        return;
    }
    for (const toml::node &item : list)
        readListed(*item.as_table(), file, start, problems, plcs);
}

std::vector<std::string> readProjectText(const std::string &text, const std::string &file, const Options &start,
                                         std::vector<Options> *plcs)
{
    Problems problems(file);
    toml::table root;
    if (const std::optional<TomlProblem> wrong = parseTomlText(text, &root)) {
        problems.add(toml::source_position{wrong->line, wrong->column}, wrong->text);
        return problems.lines();
    }
    for (const TomlMember &member : membersOf(root))
        if (*member.key != "plc" && *member.key != "cpu" && *member.key != "memory" && *member.key != "plant")
            problems.add(*member.key, "'" + std::string(member.key->str()) + "' is no table of a project; use [plc], "
                                          "[cpu], [memory] and [plant]");
    if (const toml::array *const list = root["plc"].as_array()) {
        readList(root, *list, file, start, problems, plcs);
        return problems.lines();
    }
    plcs->push_back(start);
    Options &options = plcs->back();
    if (const toml::table *settings = tableOf(root, "plc", problems))
        for (const TomlMember &member : membersOf(*settings))
            readSetting(member, problems, &options);
    namePlantFile(root, file, problems, &options);
    readState(root, problems, &options);
    return problems.lines();
}

std::vector<std::string> loadProject(const std::string &file, const Options &start, std::vector<Options> *plcs)
{
    const FileContent content = readWholeFile(file, TOML_MAX_BYTES);
    if (!content.problem.empty())
        return {file + ": " + content.problem};
    std::vector<std::string> wrong = readProjectText(content.text, file, start, plcs);
    for (const Options &options : *plcs)
        for (const std::string &line : plantProblems(options))
            wrong.push_back(line);
    return wrong;
}

std::string projectHelp()
{
    std::string text = "  [plc]\n";
    for (const Setting &setting : SETTINGS)
        text += fmt::format("  {:<27}{}: {}\n", std::string(setting.key) + " =", wantedValue(setting),
                            settingHelp(setting));
    text += "  [cpu]\n";
    for (const CpuSetting &setting : CPU_SETTINGS)
        text += fmt::format("  {:<27}{}: {}\n", std::string(setting.key) + " =",
                            setting.isList ? "a text or a list of texts" : "a text", setting.meaning);
    return text + "  several PLCs: [[plc]] for each, with a name = too, and [plc.cpu] and [plc.memory] behind it\n"
                  "  [memory]\n"
                  "  \"DM:10\" = 5                # a word, 0 to 65535\n"
                  "  \"DM:11\" = [1, 2, 3]        # words in a row\n"
                  "  \"DM:100:50\" = 7            # 50 words with this value\n"
                  "  \"DM:20\" = 21.5             # 32-bit floating point in two words, low word first\n"
                  "  \"DM:22\" = { s32 = -5 }     # a type: u16 s16 bcd16 u32 s32 f32, values and lists\n"
                  "  \"DM:30:8\" = \"PUMP\"         # two characters a word, zeros behind the text\n"
                  "  \"DM:40\" = { string = \"PUMP\", low-byte-first = true }\n"
                  "  \"CIO_bit:100.5\" = true     # a bit; also [true, false], 0 and 1\n"
                  "  [plant]                      a plant of its own, or --plant FILE with one:\n"
                  "  about = \"what it does\"       period = 50, ms between its steps\n"
                  "  [plant.values]               places of memory with names for expressions\n"
                  "  level = { at = \"DM:0\", start = 300, show = \"level\", unit = \"%\", decimals = 1 }\n"
                  "  [plant.signals]              numbers worked out, or read from a file, at each step's beginning\n"
                  "  wave = \"sine(0, 100, 40)\"    or { csv = \"day.csv\", column = \"flow\" }\n"
                  "  [plant.program]              steps = [ STEP, ... ], done in their order in each period\n"
                  "  { set = \"level\", to = \"level + wave / 10\", when = \"level < 1000\", every = 5 }\n"
                  "  { latch = \"CIO_bit:0.3\", on = \"level >= 900\", off = \"level < 850\" }\n";
}

} // namespace plc
