#include "common/csv_text.h"

// True for a text that is a formula but for apostrophes before it: with one more or less it is one again.
static bool isFormula(const std::string &text)
{
    const std::size_t first = text.find_first_not_of('\'');
    return first != std::string::npos && std::string("=+-@\t\r").find(text[first]) != std::string::npos;
}

std::string csvField(const std::string &text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + '"';
}

std::string csvText(const std::string &text)
{
    return csvField(isFormula(text) ? "'" + text : text);
}

std::string textOfCell(const std::string &cell)
{
    return cell.compare(0, 1, "'") == 0 && isFormula(cell) ? cell.substr(1) : cell;
}
