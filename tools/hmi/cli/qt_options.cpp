#include "cli/qt_options.h"

#include <algorithm>
#include <string>

static bool isOneOf(const std::string &word, std::initializer_list<const char *> options)
{
    return std::find(options.begin(), options.end(), word) != options.end();
}

std::vector<char *> takeQtOptions(std::vector<char *> &words)
{
    std::vector<char *> taken = {words.front()};
    std::vector<char *> left  = {words.front()};
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string word = words[i];
        const bool hasValue = isOneOf(word, {"-platform", "-platformpluginpath", "-platformtheme", "-plugin", "-style",
                                             "-stylesheet", "-display", "-geometry", "-qwindowgeometry"});
        if (!hasValue && word != "-reverse") {
            left.push_back(words[i]);
            continue;
        }
        taken.push_back(words[i]);
        if (hasValue && i + 1 < words.size())
            taken.push_back(words[++i]);
    }
    words = left;
    return taken;
}
