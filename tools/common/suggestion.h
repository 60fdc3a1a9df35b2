#ifndef FINS_COMMON_SUGGESTION_H
#define FINS_COMMON_SUGGESTION_H

#include <string>
#include <vector>

/// The word that `typed` was probably meant to be: the one with the fewest slips of the finger, two at most. "" if there
/// is none.
std::string nearestWord(const std::string &typed, const std::vector<std::string> &words);

/// " (did you mean 'WORD'?)", or "" for no word.
std::string hintAt(const std::string &nearest);

#endif
