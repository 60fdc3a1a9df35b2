#include "common/suggestion.h"

#include <algorithm>
#include <numeric>

// The least number of letters to insert, to remove or to replace, or of neighbours to swap, that turns one into the other.
static std::size_t slips(const std::string &typed, const std::string &word)
{
    std::vector<std::size_t> before(word.size() + 1); // the row before the last one
    std::vector<std::size_t> last(word.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t(0));
    for (std::size_t i = 1; i <= typed.size(); ++i) {
        std::vector<std::size_t> row(word.size() + 1, i);
        for (std::size_t j = 1; j <= word.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (typed[i - 1] == word[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && typed[i - 1] == word[j - 2] && typed[i - 2] == word[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = last;
        last   = row;
    }
    return last.back();
}

std::string nearestWord(const std::string &typed, const std::vector<std::string> &words)
{
    std::string nearest;
    std::size_t fewest = 3;
    for (const std::string &word : words) {
        if (std::max(typed.size(), word.size()) - std::min(typed.size(), word.size()) >= fewest)
            continue;
        const std::size_t number = slips(typed, word);
        const bool isNear = 3 * number <= word.size() + 1; // of a word of four letters one
        if (number < fewest && isNear) {
            fewest  = number;
            nearest = word;
        }
    }
    return nearest;
}

std::string hintAt(const std::string &nearest)
{
    return nearest.empty() ? "" : " (did you mean '" + nearest + "'?)";
}
