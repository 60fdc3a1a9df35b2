#include "project/settings.h"

#include "common/numbers.h"

#include <charconv>

std::string plainNumber(double number)
{
    char text[64];
    const int digits = 15; // as many as every double keeps
    return std::string(text, std::to_chars(text, text + sizeof text, number, std::chars_format::general, digits).ptr);
}

std::string rangeText(const Setting &setting)
{
    const std::string unit = *setting.unit ? std::string(" ") + setting.unit : "";
    return plainNumber(setting.minimum) + " to " + plainNumber(setting.maximum) + unit
           + (setting.refusesZero ? ", not 0" : "");
}

bool isSet(const Setting &setting, double value)
{
    return value >= setting.minimum && value <= setting.maximum && !(setting.refusesZero && value == 0);
}

static bool parseWhole(const Setting &setting, const std::string &text, double &value)
{
    long number = 0;
    if (!parseNumber(text, static_cast<long>(setting.minimum), static_cast<long>(setting.maximum), number))
        return false;
    value = static_cast<double>(number);
    return true;
}

bool parseSetting(const Setting &setting, const std::string &text, double &value)
{
    if (setting.isWhole)
        return parseWhole(setting, text, value);
    double number = 0;
    if (!readNumber(text, number) || !isSet(setting, number)) // never for nan
        return false;
    value = number;
    return true;
}
