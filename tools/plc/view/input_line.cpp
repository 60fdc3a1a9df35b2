#include "view/input_line.h"

namespace plc {

namespace {

enum : char { CTRL_U = 0x15, ESCAPE = 0x1B, BACKSPACE = 0x08, DELETE = 0x7F };

const std::string::size_type LINE_MAX_CHARACTERS = 1000;

} // namespace

// ESC [ or ESC O, then parameters, then a final character from @ on.
bool CommandLine::skipEscape(char key)
{
    if (escape == Escape::NONE && key != ESCAPE)
        return false;
    if (key == ESCAPE)
        escape = Escape::BEGUN;
    else if (escape == Escape::BEGUN && (key == '[' || key == 'O'))
        escape = Escape::SEQUENCE;
    else if (escape == Escape::BEGUN || (key >= '@' && key <= '~'))
        escape = Escape::NONE;
    return true;
}

bool CommandLine::take(char key, std::string *line)
{
    if (skipEscape(key))
        return false;
    if (key == '\r' || key == '\n') {
        *line = typed;
        typed.clear();
        return true;
    }
    if (key == CTRL_U)
        typed.clear();
    else if ((key == BACKSPACE || key == DELETE) && !typed.empty())
        typed.pop_back();
    else if (key >= ' ' && key <= '~' && typed.size() < LINE_MAX_CHARACTERS)
        typed += key;
    return false;
}

} // namespace plc
