#include "table/text_match.h"

#include "terminal/utf8_scope.h"

#include <fnmatch.h>

bool containsLoosely(const std::string &text, const std::string &part)
{
    std::string pattern = "*";
    for (const char c : part) {
        if (c == '[' || c == '\\') // as in the names of an array's values
            pattern += '\\';
        pattern += c;
    }
    const Utf8Scope scope;
    return fnmatch((pattern + "*").c_str(), text.c_str(), FNM_CASEFOLD) == 0;
}
