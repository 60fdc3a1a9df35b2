#include "project/project.h"

#include "common/numbers.h"
#include "common/usage_error.h"
#include "documents/table_reader.h"
#include "link/host_port.h"
#include "project/settings.h"
#include "project/tag_table.h"

#include <algorithm>

namespace {

const DataNode EMPTY_TABLE;

class ProjectReader {
public:
    ProjectReader(const std::string &file, const DriverLibrary &library, Problems &problems)
        : file_(file), library_(library), problems_(problems)
    {
    }

    std::vector<ProjectPlc> read(const DataNode &root);

private:
    const DataNode &section(TableReader &reader, const char *key);
    Project readCommon(TableReader &root, bool isPlant);
    void readConnection(TableReader &reader, const DataNode &table, Project &project);
    void readDriver(TableReader &reader, Project &project);
    void readDefaults(TableReader &reader, const DataNode &table, Project &project);
    void addPlc(const Project &project);
    void readTags(const DataNode *node);
    void readPlcs(const DataNode &table, const Project &common);
    void readRecipes(const DataNode &table);
    ProjectPlc &plcOf(const DataNode &recipe);
    static void readSetting(TableReader &reader, const Setting &setting, std::optional<long> &value);

    const std::string      &file_;
    const DriverLibrary    &library_;
    Problems               &problems_;
    std::vector<ProjectPlc> plcs_; // the tags are read for the last one
    std::set<std::string>   brokenTags_;
};

// The table of that name; an empty one if there is none.
const DataNode &ProjectReader::section(TableReader &reader, const char *key)
{
    const DataNode *node = reader.take(key);
    if (!node)
        return EMPTY_TABLE;
    if (node->kind == NodeKind::TABLE)
        return *node;
    reader.report(*node, "'" + std::string(key) + "' is not a table; begin it with a line [" + key + "]");
    return EMPTY_TABLE;
}

void ProjectReader::readSetting(TableReader &reader, const Setting &setting, std::optional<long> &value)
{
    const long minimum = static_cast<long>(setting.minimum);
    long number = minimum - 1;
    if (reader.whole(setting.key, minimum, static_cast<long>(setting.maximum), number) && number >= minimum)
        value = number;
}

void ProjectReader::readConnection(TableReader &reader, const DataNode &table, Project &project)
{
    const bool isText = reader.text("host", project.host);
    std::optional<long> port;
    readSetting(reader, settings::PORT, port);
    if (port)
        project.port = port;
    readSetting(reader, settings::TIMEOUT, project.timeoutMs);
    const DataNode *host = table.find("host");
    if (!host || !isText)
        return;
    try {
        std::string name;
        std::string number;
        parseHost(project.host, name, number);
    } catch (const UsageError &error) {
        reader.report(*host, error.what());
        return;
    }
    const bool isBracketed = project.host.front() == '[';
    const bool hasPort = project.host.find(isBracketed ? "]:" : ":") != std::string::npos;
    if (port && hasPort)
        reader.report(*table.find("port"), "the port is given twice; remove it here or from 'host'");
    if (project.port && !hasPort)
        project.host += ":" + std::to_string(*project.port);
}

void ProjectReader::readDriver(TableReader &reader, Project &project)
{
    readSetting(reader, settings::STATION, project.station);
    readSetting(reader, settings::RETRIES, project.retries);
    readSetting(reader, settings::WRITE_WORDS, project.wordsPerFrame);
    readSetting(reader, settings::INTERVAL, project.intervalMs);
    reader.yesOrNo("allow_mode_change", project.allowModeChange);
}

void ProjectReader::readDefaults(TableReader &reader, const DataNode &table, Project &project)
{
    const auto readOrder = [&](const char *key, Order &order) {
        std::string text;
        const DataNode *node = table.find(key);
        if (reader.text(key, text) && node && !parseOrder(text, order))
            reader.report(*node, "'" + text + "' is not an order; write low or high");
    };
    readOrder("word_order", project.orders.words);
    readOrder("char_order", project.orders.characters);
}

// What the project says of its only PLC, or of all of them.
Project ProjectReader::readCommon(TableReader &root, bool isPlant)
{
    Project project;
    project.file  = file_;
    project.files = {file_};
    const auto readTable = [&](const char *key, const auto &read) {
        const DataNode &table = section(root, key);
        TableReader reader(table, file_, problems_);
        read(reader, table);
        reader.refuseOthers();
    };
    readTable("connection", [&](TableReader &reader, const DataNode &table) {
        readConnection(reader, table, project);
        if (isPlant && table.find("host"))
            reader.report(*table.find("host"), "the PLCs are under [plc.NAME]; give each its own host there");
    });
    readTable("driver", [&](TableReader &reader, const DataNode &) { readDriver(reader, project); });
    readTable("defaults", [&](TableReader &reader, const DataNode &table) { readDefaults(reader, table, project); });
    return project;
}

void ProjectReader::readTags(const DataNode *node)
{
    if (!node)
        return;
    ProjectPlc &plc = plcs_.back();
    if (node->kind == NodeKind::TABLE) {
        brokenTags_.merge(addTags(*node, file_, plc.tags, problems_));
        return;
    }
    if (node->kind != NodeKind::TEXT) {
        problems_.add(file_, node->place, "'tags' is neither a table nor a file; write [tags] or tags = \"tags.csv\"");
        return;
    }
    const bool isAbsolute = node->text.compare(0, 1, "/") == 0;
    const std::string folder = isAbsolute ? "" : file_.substr(0, file_.rfind('/') + 1);
    plc.project.files.push_back(folder + node->text);
    try {
        brokenTags_.merge(readTagFile(folder + node->text, plc.tags, problems_));
    } catch (const UsageError &error) {
        problems_.add(file_, node->place, error.what());
    }
}

void ProjectReader::addPlc(const Project &project)
{
    TagBook tags(library_);
    tags.setSource(file_);
    tags.setPlc(project.plc);
    tags.setDefaults(ValueFormat(), project.orders);
    plcs_.push_back({project, std::move(tags)});
}

// Each of the table [plc], with what all have in common.
void ProjectReader::readPlcs(const DataNode &table, const Project &common)
{
    for (std::size_t i = 0; i < table.keys.size(); ++i) {
        const std::string &name = table.keys[i];
        const DataNode &child   = table.children[i];
        if (!isTagName(name) || name.find('.') != std::string::npos) {
            problems_.add(file_, table.keyPlaces[i], "'" + name + "' is not a name of a PLC; use letters, digits, _ and -, a letter first");
            continue;
        }
        if (child.kind != NodeKind::TABLE) {
            problems_.add(file_, child.place, "the PLC '" + name + "' is not a table; begin it with a line [plc." + name + "]");
            continue;
        }
        Project project = common;
        project.plc = name;
        TableReader reader(child, file_, problems_);
        reader.need("host", "host = \"192.168.250.1\"");
        readConnection(reader, child, project);
        readDriver(reader, project);
        readDefaults(reader, child, project);
        addPlc(project);
        readTags(reader.take("tags"));
        reader.refuseOthers();
    }
}

// That of the recipe's first variable, by the name before the point; the first one for what belongs to none.
ProjectPlc &ProjectReader::plcOf(const DataNode &recipe)
{
    std::string first;
    const DataNode *variables = recipe.find("variables");
    const DataNode *values    = recipe.find("values");
    if (variables && !variables->children.empty())
        first = variables->children.front().text;
    else if (values && !values->keys.empty())
        first = values->keys.front();
    const std::string name = first.substr(0, first.find('.'));
    const auto found = std::find_if(plcs_.begin(), plcs_.end(), [&](const ProjectPlc &plc) { return plc.project.plc == name; });
    return found == plcs_.end() ? plcs_.front() : *found;
}

void ProjectReader::readRecipes(const DataNode &table)
{
    for (std::size_t i = 0; i < table.keys.size(); ++i) {
        const DataNode &child = table.children[i];
        if (child.kind != NodeKind::TABLE) {
            problems_.add(file_, table.keyPlaces[i], "the recipe '" + table.keys[i] + "' is not a table; begin it with "
                                                     "a line [recipes." + tomlKey(table.keys[i]) + "]");
            continue;
        }
        ProjectPlc &plc = plcOf(child);
        plc.project.recipes.push_back(readRecipeTable(child, file_, plc.tags, brokenTags_, problems_));
        plc.project.recipes.back().name = table.keys[i];
    }
}

std::vector<ProjectPlc> ProjectReader::read(const DataNode &root)
{
    TableReader reader(root, file_, problems_);
    const DataNode *plcs = root.find("plc");
    const Project common = readCommon(reader, plcs != nullptr);
    if (plcs)
        readPlcs(section(reader, "plc"), common);
    const DataNode *tags = reader.take("tags");
    if (plcs && tags)
        reader.report(*tags, "each tag belongs to a PLC; move it to [plc.NAME.tags]");
    if (plcs_.empty())
        addPlc(common);
    if (!plcs)
        readTags(tags);
    readRecipes(section(reader, "recipes"));
    section(reader, "screens"); // of a graphical panel, which reads them itself, and its alarms
    section(reader, "alarms");
    reader.refuseOthers();
    return std::move(plcs_);
}

} // namespace

const Recipe *Project::findRecipe(const std::string &name) const
{
    for (const Recipe &recipe : recipes) {
        if (recipe.name == name)
            return &recipe;
    }
    return nullptr;
}

std::vector<ProjectPlc> readProjectPlcs(const std::string &file, const DriverLibrary &library, Problems &problems)
{
    const DataNode root = parseToml(readFile(file), file, problems);
    if (!problems.any())
        return ProjectReader(file, library, problems).read(root);
    Project empty;
    empty.file = file;
    return {{empty, TagBook(library)}};
}

Project readProject(const std::string &file, TagBook &tags, Problems &problems)
{
    tags.setSource(file); // also where it cannot be read
    std::vector<ProjectPlc> plcs = readProjectPlcs(file, tags.library(), problems);
    if (plcs.size() > 1)
        problems.add(file, {}, "it has " + counted(plcs.size(), "PLC") + ", and one is needed here");
    tags = std::move(plcs.front().tags);
    return std::move(plcs.front().project);
}

std::set<std::string> readTagFile(const std::string &file, TagBook &tags, Problems &problems)
{
    return addTagRows(parseCsv(readFile(file), file, problems), file, tags, problems);
}
