#include "screens/alarm_reader.h"
#include "screens/element_reader.h"
#include "screens/grid_check.h"

namespace {

const std::size_t MOST_ELEMENTS = 400;
const long        MOST_CELLS    = 32; // of a column or row

const DataNode EMPTY_TABLE;

// Columns or rows. What is wrong leaves room for every element, so that nothing else is reported for it.
int readCells(TableReader &reader, const char *key, int usual)
{
    long cells = usual;
    return static_cast<int>(reader.whole(key, 1, MOST_CELLS, cells) ? cells : MOST_CELLS);
}

class ScreenReader {
public:
    ScreenReader(const DataNode &table, Names &names)
        : names_(names), reader_(table, names.file(), names.problems())
    {
    }

    Screen read(const std::string &name);

private:
    void readElements();
    void readElement(const DataNode &node);

    Names             &names_;
    TableReader        reader_;
    Screen             screen_;
    std::vector<ScreenElement> placed_; // those whose place in the grid is sound
    std::vector<Place>         places_; // of these, in the file
};

void ScreenReader::readElement(const DataNode &node)
{
    if (node.kind != NodeKind::TABLE) {
        reader_.report(node, "this is not an element; write { type = \"number\", tag = \"Level\", at = [1, 1] }");
        return;
    }
    ElementReader reader(node, screen_.columns, screen_.rows, names_);
    if (!reader.read())
        return;
    screen_.elements.push_back(reader.element());
    if (!reader.gridPlace())
        return;
    placed_.push_back(reader.element());
    places_.push_back(*reader.gridPlace());
}

void ScreenReader::readElements()
{
    const DataNode *elements = reader_.need("elements", "elements = [{ type = \"number\", tag = \"Level\", at = [1, 1] }]");
    if (!elements)
        return;
    if (elements->kind != NodeKind::ARRAY || elements->children.empty()) {
        reader_.report(*elements, "'elements' is not a list of elements; write one such as { type = \"number\", tag = "
                                  "\"Level\", at = [1, 1] }");
        return;
    }
    const std::size_t count = elements->children.size();
    if (count > MOST_ELEMENTS)
        reader_.report(elements->children[MOST_ELEMENTS], "a screen has at most 400 elements, and this one has "
                                                              + std::to_string(count) + "; make several screens of it");
    for (std::size_t i = 0; i < std::min(count, MOST_ELEMENTS); ++i)
        readElement(elements->children[i]);
    checkGrid(placed_, places_, names_.file(), names_.problems());
}

Screen ScreenReader::read(const std::string &name)
{
    screen_.name = name;
    const std::string title = readFilledText(reader_, "title");
    screen_.title   = title.empty() ? name : title;
    screen_.columns = readCells(reader_, "columns", screen_.columns);
    screen_.rows    = readCells(reader_, "rows", screen_.rows);
    readElements();
    reader_.refuseOthers();
    return screen_;
}

// The tables in a table, such as those of [screens]. What is no table was reported already, if it is the outer one.
template <typename Read>
void readTables(const DataNode &root, const std::string &key, const char *what, Names &names, const Read &read)
{
    const DataNode *found = root.find(key);
    const DataNode &tables = found && found->kind == NodeKind::TABLE ? *found : EMPTY_TABLE;
    for (std::size_t i = 0; i < tables.keys.size(); ++i) {
        if (tables.keys[i].empty())
            names.problems().add(names.file(), tables.keyPlaces[i], "the name of the " + std::string(what)
                                                                        + " is empty; write one");
        else if (tables.children[i].kind == NodeKind::TABLE)
            read(tables.keys[i], tables.children[i]);
        else
            names.problems().add(names.file(), tables.keyPlaces[i], "the " + std::string(what) + " '" + tables.keys[i]
                                     + "' is not a table; begin it with a line [" + key + "." + tomlKey(tables.keys[i])
                                     + "]");
    }
}

} // namespace

ScreenBook readScreens(const DataNode &root, const std::string &file, const std::vector<fins::TagConfig> &tags,
                       const std::vector<std::string> &recipes, Problems &problems)
{
    Names names(root, file, tags, recipes, problems);
    ScreenBook book;
    readTables(root, "screens", "screen", names, [&](const std::string &name, const DataNode &table) {
        book.screens.push_back(ScreenReader(table, names).read(name));
    });
    readTables(root, "alarms", "alarm", names, [&](const std::string &name, const DataNode &table) {
        book.alarms.push_back(readAlarm(name, table, names));
    });
    return book;
}
