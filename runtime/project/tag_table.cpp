#include "project/tag_table.h"

#include "base/numbers.h"
#include "base/usage_error.h"
#include "project/table_reader.h"

namespace {

class TagReader {
public:
    TagReader(const DataNode &table, const std::string &file, const TagBook &book, Problems &problems)
        : table_(table), reader_(table, file, problems), book_(book)
    {
    }

    TableReader &reader() { return reader_; }

    // Returns false if something is wrong; all of it is then reported.
    bool read(Tag &tag);

private:
    bool readFormat(ValueFormat &format, bool isBit);
    bool readOrders(OrderDefaults &orders);
    bool readNumberForm(Tag &tag);
    bool readLimit(const char *key, std::optional<double> &limit);
    bool readAccess(bool &readOnly);
    bool readItem(const std::string &regType, Tag &tag);
    bool addressText(const DataNode &node, std::string &text);

    const DataNode &table_;
    TableReader     reader_;
    const TagBook  &book_;
};

bool TagReader::read(Tag &tag)
{
    std::string regType;
    const bool hasType = reader_.need("type", "type = \"DM\"") && reader_.text("type", regType);
    const bool isBit   = isBitType(QString::fromStdString(regType));
    bool sound = readFormat(tag.format, isBit);
    sound = readNumberForm(tag) && sound;
    sound = readItem(regType, tag) && sound;
    sound = reader_.text("unit", tag.format.unit) && sound;
    sound = readAccess(tag.readOnly) && sound;
    sound = reader_.text("comment", tag.comment) && sound;
    sound = reader_.text("screen", tag.screen) && sound;
    return hasType && sound;
}

bool TagReader::readOrders(OrderDefaults &orders)
{
    bool sound = true;
    const auto readOrder = [&](const char *key, Order &order) {
        std::string text;
        const bool isText = reader_.text(key, text);
        sound = isText && sound;
        if (!isText || text.empty() || parseOrder(text, order))
            return;
        reader_.report(*table_.find(key), "'" + text + "' is not an order; write low or high");
        sound = false;
    };
    readOrder("word_order", orders.words);
    readOrder("char_order", orders.characters);
    return sound;
}

bool TagReader::readFormat(ValueFormat &format, bool isBit)
{
    OrderDefaults orders = book_.orders();
    std::string data;
    bool sound = reader_.text("data", data);
    sound = readOrders(orders) && sound;
    if (isBit)
        format.type = DataType::BIT;
    if (isBit && !data.empty()) {
        reader_.report(*table_.find("data"), "a bit has no data type; remove 'data'");
        sound = false;
    } else if (!data.empty()) {
        try {
            format = parseFormat(data, orders);
        } catch (const UsageError &error) {
            reader_.report(*table_.find("data"), error.what());
            sound = false;
        }
    }
    return sound;
}

bool TagReader::readLimit(const char *key, std::optional<double> &limit)
{
    double number = 0;
    if (!reader_.number(key, number))
        return false;
    if (reader_.take(key))
        limit = number;
    return true;
}

bool TagReader::readAccess(bool &readOnly)
{
    std::string access = "rw";
    if (!reader_.text("access", access))
        return false;
    readOnly = access == "r";
    if (readOnly || access == "rw")
        return true;
    reader_.report(*table_.find("access"), "'" + access + "' is not an access; write r (read only) or rw");
    return false;
}

// What only numbers have.
bool TagReader::readNumberForm(Tag &tag)
{
    ValueFormat &format = tag.format;
    long decimals = format.decimals;
    bool sound = reader_.number("scale", format.scale);
    if (format.scale == 0) {
        reader_.report(*table_.find("scale"), "'scale' is 0; write the value of one step, such as 0.1");
        sound = false;
    }
    sound = reader_.number("offset", format.offset) && sound;
    sound = reader_.whole("decimals", 0, DECIMALS_LIMIT, decimals) && sound;
    format.decimals = static_cast<int>(decimals);
    sound = readLimit("min", tag.minimum) && sound;
    sound = readLimit("max", tag.maximum) && sound;
    if (tag.minimum && tag.maximum && *tag.minimum > *tag.maximum) {
        reader_.report(*table_.find("max"), "'max' is below 'min'; write the lowest value as min, the highest as max");
        sound = false;
    }
    for (const char *key : {"scale", "offset", "decimals", "min", "max"}) {
        const DataNode *node = reader_.take(key);
        if (!node || isNumeric(format.type))
            continue;
        reader_.report(*node, "only numbers have '" + std::string(key) + "'; remove it, or change the type");
        sound = false;
    }
    return sound;
}

// A point in a TOML number would lose the difference of 10.1 and 10.10.
bool TagReader::addressText(const DataNode &node, std::string &text)
{
    text = node.text;
    if (node.kind == NodeKind::INTEGER || node.kind == NodeKind::TEXT || node.kind == NodeKind::CELL)
        return true;
    reader_.report(node, "'address' is not an address; write a word as a number, and a bit as a text such as \"10.5\"");
    return false;
}

bool TagReader::readItem(const std::string &regType, Tag &tag)
{
    const DataNode *address = reader_.need("address", "address = 100");
    long count = 1;
    const bool hasCount = reader_.whole("count", 1, COUNT_LIMIT, count);
    std::string text;
    if (!address || !addressText(*address, text) || !hasCount || regType.empty())
        return false;
    try {
        const std::string item = regType + ":" + text + (count > 1 ? ":" + std::to_string(count) : "");
        tag.item = parseItem(book_.library(), item, Access::WRITE, wordsPerValue(tag.format.type));
        return true;
    } catch (const UnknownTypeError &error) {
        reader_.report(*table_.find("type"), error.what());
        return false;
    } catch (const UsageError &error) {
        reader_.report(*address, error.what());
        return false;
    }
}

void addTag(const Tag &tag, Place place, const std::string &file, TagBook &book, Problems &problems)
{
    if (!isTagName(tag.name))
        problems.add(file, place, "'" + tag.name + "' is not a name; use letters, digits, _ . and -, a letter first");
    else if (!book.add(tag))
        problems.add(file, place, "there is another tag '" + tag.name + "'; give each a name of its own");
}

} // namespace

std::set<std::string> addTags(const DataNode &table, const std::string &file, TagBook &book, Problems &problems)
{
    std::set<std::string> broken;
    for (std::size_t i = 0; i < table.keys.size(); ++i) {
        const DataNode &entry = table.children[i];
        Tag tag;
        tag.name = table.keys[i];
        if (entry.kind != NodeKind::TABLE) {
            problems.add(file, entry.place, "the tag '" + tag.name + "' is not a table; write " + tomlKey(tag.name)
                                                + " = { type = \"DM\", address = 100 }");
            broken.insert(tag.name);
            continue;
        }
        TagReader reader(entry, file, book, problems);
        if (reader.read(tag))
            addTag(tag, table.keyPlaces[i], file, book, problems);
        else
            broken.insert(tag.name);
        reader.reader().refuseOthers();
    }
    return broken;
}

std::set<std::string> addTagRows(const DataNode &rows, const std::string &file, TagBook &book, Problems &problems)
{
    std::set<std::string> broken;
    bool isFirst = true;
    for (const DataNode &row : rows.children) {
        Tag tag;
        TagReader reader(row, file, book, problems);
        const DataNode *name = reader.reader().need("name", "Level");
        if (name)
            tag.name = name->text;
        if (reader.read(tag) && name)
            addTag(tag, name->place, file, book, problems);
        else
            broken.insert(tag.name);
        // An unknown column is the same in every row.
        if (isFirst)
            reader.reader().refuseOthers();
        isFirst = false;
    }
    return broken;
}

std::string tagLine(const Tag &tag)
{
    const std::string address = addressText(tag.item.regType, tag.item.address);
    const std::string digits  = address.substr(address.find(':') + 1);
    std::string line = tomlKey(tag.name) + " = { type = " + tomlString(tag.item.regType.toStdString()) + ", address = "
                       + (tag.item.isBit ? tomlString(digits) : digits);
    const auto add = [&](const char *key, const std::string &value) {
        line += std::string(", ") + key + " = " + value;
    };
    const auto addText = [&](const char *key, const std::string &value) {
        if (!value.empty())
            add(key, tomlString(value));
    };
    if (tag.valueCount() > 1)
        add("count", std::to_string(tag.valueCount()));
    addText("data", formatText(tag.format));
    if (tag.format.scale != 1)
        add("scale", shortestText(tag.format.scale));
    if (tag.format.offset != 0)
        add("offset", shortestText(tag.format.offset));
    if (tag.format.decimals >= 0)
        add("decimals", std::to_string(tag.format.decimals));
    if (tag.minimum)
        add("min", shortestText(*tag.minimum));
    if (tag.maximum)
        add("max", shortestText(*tag.maximum));
    addText("unit", tag.format.unit);
    addText("access", tag.readOnly ? "r" : "");
    addText("comment", tag.comment);
    addText("screen", tag.screen);
    return line + " }";
}
