#include "log/row_form.h"

#include "common/csv_text.h"
#include "common/numbers.h"
#include "watch/json_value.h"

#include <cmath>

namespace {

// With a backslash before each of `special`.
std::string escaped(const std::string &text, const std::string &special)
{
    std::string result;
    for (const char c : text) {
        if (special.find(c) != std::string::npos)
            result += '\\';
        result += c;
    }
    return result;
}

// "fins,plc=press,tag=Level"
std::string influxSeries(const LogColumn &column, const std::string &measurement)
{
    const std::string special = ",= ";
    const std::size_t prefix = column.plc.empty() ? 0 : column.plc.size() + 1;
    return escaped(measurement, ", ") + (column.plc.empty() ? "" : ",plc=" + escaped(column.plc, special)) + ",tag="
           + escaped(column.name.substr(prefix), special);
}

// A field keeps its type, whatever the value; "" for what is no value of it.
std::string influxField(const LogColumn &column, const fins::Sample &sample)
{
    struct Field {
        const LogColumn    &column;
        const fins::Sample &sample;
        std::string operator()(std::monostate) const { return ""; }
        std::string operator()(bool on) const { return on ? "true" : "false"; }
        std::string operator()(std::int64_t number) const
        {
            return std::to_string(number) + (column.isUnsigned ? "u" : "i");
        }
        std::string operator()(std::uint64_t number) const { return std::to_string(number) + "u"; }
        std::string operator()(double number) const { return std::isfinite(number) ? shortestText(number) : ""; }
        // As it is shown: between quotes, with \" and \\, and with nothing in it that ends a line.
        std::string operator()(const std::string &) const { return sample.text; }
    };
    return std::visit(Field{column, sample}, sample.value);
}

std::string jsonField(const fins::Sample &sample)
{
    if (const auto *text = std::get_if<std::string>(&sample.value))
        return jsonText(*text);
    const bool isNumber = sample.value.index() != 0 && Json::accept(sample.text); // which 0x00FF is not
    return isNumber ? sample.text : jsonText(sample.text);
}

bool isGood(const fins::Sample &sample)
{
    return sample.quality == fins::Quality::GOOD;
}

} // namespace

RowForm::RowForm(LogForm form, std::vector<LogColumn> columns, const std::string &measurement)
    : form_(form), columns_(std::move(columns)), heading_(form == LogForm::CSV ? "time" : "")
{
    for (const LogColumn &column : columns_) {
        if (form == LogForm::CSV)
            heading_ += "," + csvText(column.name) + "," + csvText(column.name + ".quality");
        else
            labels_.push_back(form == LogForm::JSON ? jsonText(column.name) : influxSeries(column, measurement));
    }
    if (form == LogForm::CSV)
        heading_ += '\n';
}

std::string RowForm::row(SystemTime time, const fins::Samples &values, const std::vector<std::size_t> &chosen) const
{
    switch (form_) {
    case LogForm::CSV:    return csvRow(time, values);
    case LogForm::JSON:   return jsonRow(time, values, chosen);
    case LogForm::INFLUX: return influxRow(time, values, chosen);
    }
    return "";
}

std::string RowForm::csvRow(SystemTime time, const fins::Samples &values) const
{
    std::string line = timeText(time);
    for (const fins::Sample &sample : values) {
        const bool isText = std::holds_alternative<std::string>(sample.value);
        line += ',';
        if (isGood(sample))
            line += isText ? csvText(sample.text) : csvField(sample.text);
        line += ',';
        line += fins::text(sample.quality);
    }
    return line + "\n";
}

std::string RowForm::jsonRow(SystemTime time, const fins::Samples &values, const std::vector<std::size_t> &chosen) const
{
    std::string line = R"({"time":")" + timeText(time) + R"(","values":{)";
    for (const std::size_t i : chosen) {
        line += (line.back() == '{' ? "" : ",") + labels_[i] + R"(:{"value":)";
        line += isGood(values[i]) ? jsonField(values[i]) : "null";
        line += R"(,"quality":")" + std::string(fins::text(values[i].quality)) + "\"}";
    }
    return line + "}}\n";
}

std::string RowForm::influxRow(SystemTime time, const fins::Samples &values,
                               const std::vector<std::size_t> &chosen) const
{
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
    const std::string end  = "\" " + std::to_string(nanoseconds) + "\n";
    std::string lines;
    for (const std::size_t i : chosen) {
        const std::string field = isGood(values[i]) ? influxField(columns_[i], values[i]) : "";
        lines += labels_[i] + (field.empty() ? " " : " value=" + field + ",") + "quality=\""
                 + fins::text(values[i].quality) + end;
    }
    return lines;
}
