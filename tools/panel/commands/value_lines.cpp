#include "commands/value_lines.h"

#include "common/csv_text.h"
#include "plc/value_text.h"
#include "values/tags.h"
#include "watch/json_value.h"

namespace {

using Bytes = std::vector<quint8>;

// Several values are an array. A text is the text itself, without the quotes and escapes that it is shown with.
Json jsonOf(const ValueFormat &format, const std::optional<Bytes> &bytes)
{
    if (!bytes)
        return nullptr;
    if (format.type == DataType::STRING)
        return std::get<std::string>(fins::valueOf(format, *bytes));
    const std::size_t size = format.type == DataType::BIT ? 1 : 2 * static_cast<std::size_t>(wordsPerValue(format.type));
    const std::size_t count = bytes->size() / size;
    if (count == 1)
        return jsonValue(decodeValue(format, *bytes, 0), format);
    Json values = Json::array();
    for (std::size_t i = 0; i < count; ++i)
        values.push_back(jsonValue(decodeValue(format, *bytes, i), format));
    return values;
}

std::string textOf(const ValueFormat &format, const std::optional<Bytes> &bytes)
{
    return bytes ? decodeValues(format, *bytes) : "";
}

std::string cellOf(const ValueFormat &format, const std::optional<Bytes> &bytes)
{
    const std::string text = textOf(format, bytes);
    return format.type == DataType::STRING ? csvText(text) : csvField(text);
}

const char *qualityOf(const ReadValue &value)
{
    return fins::text(value.bytes ? fins::Quality::GOOD : value.missing);
}

// A text without its quotes: what is left can be written as it is.
std::string bareText(const ReadValue &value)
{
    const std::string text = textOf(value.format, value.bytes);
    const bool isQuoted = value.format.type == DataType::STRING && text.size() >= 2;
    return isQuoted ? text.substr(1, text.size() - 2) : text;
}

Json headOf(const ReadValue &value)
{
    Json line;
    line["tag"]  = value.name;
    line["item"] = driverText(value.item);
    return line;
}

std::string jsonLine(const ReadValue &value)
{
    Json line = headOf(value);
    line["value"] = jsonOf(value.format, value.bytes);
    line["text"]  = value.bytes ? Json(textOf(value.format, value.bytes)) : Json(nullptr);
    line["unit"]  = value.format.unit;
    line["quality"] = qualityOf(value);
    return jsonText(line);
}

std::string comparedJson(const ReadValue &value)
{
    Json line = headOf(value);
    line["recipe"] = jsonOf(value.format, value.wanted);
    line["value"]  = jsonOf(value.format, value.bytes);
    line["unit"]   = value.format.unit;
    line["quality"] = qualityOf(value);
    return jsonText(line);
}

std::string csvLine(const ReadValue &value, const std::string &wanted)
{
    return csvText(value.name) + "," + driverText(value.item) + "," + wanted + cellOf(value.format, value.bytes) + ","
           + csvText(value.format.unit) + "," + qualityOf(value);
}

std::string plainLine(const ReadValue &value)
{
    return value.name + " = " + withUnit(textOf(value.format, value.bytes), value.format);
}

} // namespace

std::string valueLines(ValueForm form, const std::vector<ReadValue> &values)
{
    std::string lines = form == ValueForm::CSV ? "tag,item,value,unit,quality\n" : "";
    for (const ReadValue &value : values) {
        switch (form) {
        case ValueForm::PLAIN: lines += value.bytes ? plainLine(value) + "\n" : ""; break;
        case ValueForm::JSON:  lines += jsonLine(value) + "\n"; break;
        case ValueForm::CSV:   lines += csvLine(value, "") + "\n"; break;
        case ValueForm::VALUE: lines += bareText(value) + "\n"; break;
        }
    }
    return lines;
}

std::string comparedLines(ValueForm form, const std::vector<ReadValue> &values)
{
    std::string lines = form == ValueForm::CSV ? "tag,item,recipe,value,unit,quality\n" : "";
    for (const ReadValue &value : values) {
        if (form == ValueForm::JSON)
            lines += comparedJson(value) + "\n";
        else if (form == ValueForm::CSV)
            lines += csvLine(value, cellOf(value.format, value.wanted) + ",") + "\n";
        else
            lines += bareText(value) + "\n";
    }
    return lines;
}
