#include "project/tag_table.h"

#include "common/numbers.h"
#include "common/usage_error.h"
#include "documents/table_reader.h"

#include <cctype>

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
    void readFormat(ValueFormat &format, bool isBit);
    void readOrder(const char *key, Order &order);
    void readNumberForm(Tag &tag);
    void readLimit(const char *key, std::optional<double> &limit);
    void readAccess(Tag &tag);
    std::string readType();
    void readItem(const std::string &regType, Tag &tag);

    const DataNode &table_;
    TableReader     reader_;
    const TagBook  &book_;
};

bool TagReader::read(Tag &tag)
{
    const std::string regType = readType();
    readFormat(tag.format, isBitType(QString::fromStdString(regType)));
    readNumberForm(tag);
    readItem(regType, tag);
    reader_.text("unit", tag.format.unit);
    readAccess(tag);
    reader_.text("comment", tag.comment);
    reader_.text("screen", tag.screen);
    reader_.text("group", tag.group);
    return reader_.isSound() && !regType.empty();
}

bool hasLetter(const DataNode &address)
{
    return !address.text.empty() && std::isalpha(static_cast<unsigned char>(address.text[0]));
}

void TagReader::readOrder(const char *key, Order &order)
{
    std::string text;
    if (reader_.text(key, text) && !text.empty() && !parseOrder(text, order))
        reader_.report(*table_.find(key), "'" + text + "' is not an order; write low or high");
}

void TagReader::readFormat(ValueFormat &format, bool isBit)
{
    OrderDefaults orders = book_.orders();
    std::string data;
    reader_.text("data", data);
    readOrder("word_order", orders.words);
    readOrder("char_order", orders.characters);
    if (isBit)
        format.type = DataType::BIT;
    try {
        if (isBit && data == BIT_TYPE)
            format.typeName = data;
        else if (isBit && !data.empty())
            throw UsageError("a bit has no data type; remove 'data'");
        if (!isBit && !data.empty())
            format = parseFormat(data, orders);
    } catch (const UsageError &error) {
        reader_.report(*table_.find("data"), error.what());
    }
}

void TagReader::readLimit(const char *key, std::optional<double> &limit)
{
    double number = 0;
    if (reader_.number(key, number) && reader_.take(key))
        limit = number;
}

void TagReader::readAccess(Tag &tag)
{
    std::string access;
    const DataNode *given = reader_.take("access");
    if (reader_.text("access", access) && given && access != "r" && access != "rw")
        reader_.report(*given, "'" + access + "' is not an access; write r (read only) or rw");
    tag.readOnly     = access == "r";
    tag.remoteWrites = access == "rw";
}

// What only numbers have.
void TagReader::readNumberForm(Tag &tag)
{
    ValueFormat &format = tag.format;
    long decimals = format.decimals;
    reader_.number("scale", format.scale);
    if (format.scale == 0)
        reader_.report(*table_.find("scale"), "'scale' is 0; write the value of one step, such as 0.1");
    reader_.number("offset", format.offset);
    reader_.whole("decimals", 0, DECIMALS_LIMIT, decimals);
    format.decimals = static_cast<int>(decimals);
    readLimit("min", tag.minimum);
    readLimit("max", tag.maximum);
    reader_.number("deadband", tag.deadband);
    if (tag.deadband < 0)
        reader_.report(*table_.find("deadband"), "'deadband' is below 0; write the smallest change to be logged, such as 0.5");
    if (tag.minimum && tag.maximum && *tag.minimum > *tag.maximum)
        reader_.report(*table_.find("max"), "'max' is below 'min'; write the lowest value as min, the highest as max");
    for (const char *key : {"scale", "offset", "decimals", "min", "max", "deadband"}) {
        const DataNode *node = reader_.take(key);
        if (node && !isNumeric(format.type))
            reader_.report(*node, "only numbers have '" + std::string(key) + "'; remove it, or change the type");
    }
}

// The item of an address that has its area. A cell or a number of digits alone more likely lacks a type.
std::optional<std::string> itemWithArea(const DataNode *address)
{
    const bool isText = address && address->kind == NodeKind::TEXT;
    const bool isCell = address && address->kind == NodeKind::CELL;
    const bool isWritten = isText || (isCell && hasLetter(*address));
    return isWritten ? driverItem(address->text) : std::nullopt;
}

// The register type, which an address with an area tells, too.
std::string TagReader::readType()
{
    const std::optional<std::string> item = itemWithArea(table_.find("address"));
    if (!reader_.take("type") && item)
        return item->substr(0, item->find(':'));
    std::string regType;
    reader_.need("type", "type = \"DM\"");
    reader_.text("type", regType);
    return regType;
}

void TagReader::readItem(const std::string &regType, Tag &tag)
{
    const DataNode *address = reader_.need("address", "address = 100");
    long count = 1;
    const bool hasCount = reader_.whole("count", 1, COUNT_LIMIT, count);
    if (!address)
        return;
    // A point in a TOML number would lose the difference of 10.1 and 10.10.
    if (address->kind != NodeKind::INTEGER && address->kind != NodeKind::TEXT && address->kind != NodeKind::CELL) {
        reader_.report(*address, "'address' is not an address; write a word as a number, and a bit as a text such as "
                                 "\"10.5\"");
        return;
    }
    if (!hasCount || regType.empty())
        return;
    const bool hasType = reader_.take("type") != nullptr;
    if (hasType && hasLetter(*address) && driverItem(address->text)) {
        reader_.report(*address, "'" + address->text + "' names its area itself; remove 'type'");
        return;
    }
    try {
        const std::string item = (hasType ? regType + ":" : "") + address->text
                               + (count > 1 ? ":" + std::to_string(count) : "");
        tag.item = parseItem(book_.library(), item, Access::WRITE, wordsPerValue(tag.format.type));
    } catch (const UnknownTypeError &error) {
        reader_.report(*table_.find("type"), error.what());
    } catch (const UsageError &error) {
        reader_.report(*address, error.what());
    }
}

void addTag(Tag tag, Place place, const std::string &file, TagBook &book, Problems &problems)
{
    if (!isTagName(tag.name)) {
        problems.add(file, place, "'" + tag.name + "' is not a name; use letters, digits, _ . and -, a letter first");
        return;
    }
    tag.plc  = book.plc();
    tag.name = tag.plc + tag.name;
    if (!book.add(tag))
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
            broken.insert(book.plc() + tag.name);
            continue;
        }
        TagReader reader(entry, file, book, problems);
        if (reader.read(tag))
            addTag(tag, table.keyPlaces[i], file, book, problems);
        else
            broken.insert(book.plc() + tag.name);
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
            broken.insert(book.plc() + tag.name);
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
    ValueFormat format = tag.format;
    format.typeName.clear(); // the driver's name
    addText("data", formatText(format));
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
    if (tag.deadband > 0)
        add("deadband", shortestText(tag.deadband));
    addText("unit", tag.format.unit);
    addText("access", tag.readOnly ? "r" : tag.remoteWrites ? "rw" : "");
    addText("comment", tag.comment);
    addText("screen", tag.screen);
    addText("group", tag.group);
    return line + " }";
}
