#include "watch/json_value.h"

#include "common/numbers.h"

Json jsonValue(const std::string &text, const ValueFormat &format)
{
    if (text.empty())
        return nullptr;
    const bool isNumber = isNumeric(format.type) || format.type == DataType::BIT || format.type == DataType::WORD;
    std::int64_t  whole    = 0;
    std::uint64_t positive = 0;
    double        real     = 0;
    if (isNumber && readNumber(text, whole))
        return whole;
    if (isNumber && readNumber(text, positive))
        return positive;
    if (isNumber && readNumber(text, real) && real - real == 0) // neither infinite nor no number
        return real;
    return text;
}

std::string jsonText(const Json &json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}
