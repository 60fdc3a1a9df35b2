#include "project/project.h"

#include "common/usage_error.h"
#include "documents/table_reader.h"
#include "link/host_port.h"
#include "project/settings.h"
#include "project/tag_table.h"

namespace {

const DataNode EMPTY_TABLE;

class ProjectReader {
public:
    ProjectReader(const std::string &file, TagBook &tags, Problems &problems)
        : file_(file), tags_(tags), problems_(problems)
    {
        project_.file  = file;
        project_.files = {file};
    }

    Project read(const DataNode &root);

private:
    const DataNode &section(TableReader &reader, const char *key);
    void readConnection(const DataNode &table);
    void readDriver(const DataNode &table);
    void readDefaults(const DataNode &table);
    void readTags(const DataNode *node);
    void readRecipes(const DataNode &table);
    static void readSetting(TableReader &reader, const Setting &setting, std::optional<long> &value);

    const std::string    &file_;
    TagBook              &tags_;
    Problems             &problems_;
    Project               project_;
    std::set<std::string> brokenTags_;
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

void ProjectReader::readConnection(const DataNode &table)
{
    TableReader reader(table, file_, problems_);
    std::optional<long> port;
    const bool isText = reader.text("host", project_.host);
    readSetting(reader, settings::PORT, port);
    readSetting(reader, settings::TIMEOUT, project_.timeoutMs);
    reader.refuseOthers();
    const DataNode *host = table.find("host");
    if (!host || !isText)
        return;
    try {
        std::string name;
        std::string number;
        parseHost(project_.host, name, number);
    } catch (const UsageError &error) {
        reader.report(*host, error.what());
        return;
    }
    const bool isBracketed = project_.host.front() == '[';
    const bool hasPort = project_.host.find(isBracketed ? "]:" : ":") != std::string::npos;
    if (port && hasPort)
        reader.report(*table.find("port"), "the port is given twice; remove it here or from 'host'");
    if (port && !hasPort)
        project_.host += ":" + std::to_string(*port);
}

void ProjectReader::readDriver(const DataNode &table)
{
    TableReader reader(table, file_, problems_);
    readSetting(reader, settings::STATION, project_.station);
    readSetting(reader, settings::RETRIES, project_.retries);
    readSetting(reader, settings::WRITE_WORDS, project_.wordsPerFrame);
    readSetting(reader, settings::INTERVAL, project_.intervalMs);
    reader.yesOrNo("allow_mode_change", project_.allowModeChange);
    reader.refuseOthers();
}

void ProjectReader::readDefaults(const DataNode &table)
{
    TableReader reader(table, file_, problems_);
    std::string words;
    std::string characters;
    if (reader.text("word_order", words) && table.find("word_order") && !parseOrder(words, project_.orders.words))
        reader.report(*table.find("word_order"), "'" + words + "' is not an order; write low or high");
    if (reader.text("char_order", characters) && table.find("char_order")
        && !parseOrder(characters, project_.orders.characters))
        reader.report(*table.find("char_order"), "'" + characters + "' is not an order; write low or high");
    reader.refuseOthers();
    tags_.setDefaults(ValueFormat(), project_.orders);
}

void ProjectReader::readTags(const DataNode *node)
{
    if (!node)
        return;
    if (node->kind == NodeKind::TABLE) {
        brokenTags_ = addTags(*node, file_, tags_, problems_);
        return;
    }
    if (node->kind != NodeKind::TEXT) {
        problems_.add(file_, node->place, "'tags' is neither a table nor a file; write [tags] or tags = \"tags.csv\"");
        return;
    }
    const bool isAbsolute = node->text.compare(0, 1, "/") == 0;
    const std::string folder = isAbsolute ? "" : file_.substr(0, file_.rfind('/') + 1);
    project_.files.push_back(folder + node->text);
    try {
        brokenTags_ = readTagFile(folder + node->text, tags_, problems_);
    } catch (const UsageError &error) {
        problems_.add(file_, node->place, error.what());
    }
}

void ProjectReader::readRecipes(const DataNode &table)
{
    for (std::size_t i = 0; i < table.keys.size(); ++i) {
        if (table.children[i].kind != NodeKind::TABLE) {
            problems_.add(file_, table.keyPlaces[i], "the recipe '" + table.keys[i] + "' is not a table; begin it with "
                                                     "a line [recipes." + tomlKey(table.keys[i]) + "]");
            continue;
        }
        project_.recipes.push_back(readRecipeTable(table.children[i], file_, tags_, brokenTags_, problems_));
        project_.recipes.back().name = table.keys[i];
    }
}

Project ProjectReader::read(const DataNode &root)
{
    TableReader reader(root, file_, problems_);
    readConnection(section(reader, "connection"));
    readDriver(section(reader, "driver"));
    readDefaults(section(reader, "defaults"));
    readTags(reader.take("tags"));
    readRecipes(section(reader, "recipes"));
    section(reader, "screens"); // of a graphical panel, which reads them itself, and its alarms
    section(reader, "alarms");
    reader.refuseOthers();
    return project_;
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

Project readProject(const std::string &file, TagBook &tags, Problems &problems)
{
    tags.setSource(file);
    const DataNode root = parseToml(readFile(file), file, problems);
    if (!problems.any())
        return ProjectReader(file, tags, problems).read(root);
    Project empty;
    empty.file = file;
    return empty;
}

std::set<std::string> readTagFile(const std::string &file, TagBook &tags, Problems &problems)
{
    return addTagRows(parseCsv(readFile(file), file, problems), file, tags, problems);
}
