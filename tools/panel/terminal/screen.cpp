#include "terminal/screen.h"

#include <algorithm>
#include <cstdlib>
#include <string>

ScreenStyle styleOfEnvironment()
{
    const char *noColour = std::getenv("NO_COLOR");
    std::string charset;
    for (const char *name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char *value = std::getenv(name);
        if (charset.empty() && value)
            charset = value;
    }
    std::transform(charset.begin(), charset.end(), charset.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    const bool utf8 = charset.find("utf-8") != std::string::npos || charset.find("utf8") != std::string::npos;
    return {!noColour || !*noColour, utf8};
}
