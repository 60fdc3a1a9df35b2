#ifndef PANEL_COMMANDS_CONDITION_H
#define PANEL_COMMANDS_CONDITION_H

#include "values/tags.h"

#include <string>

// What somebody waits for: ITEM=VALUE, !=, >, >=, < or <=. Values are compared as they are shown: numbers as numbers,
// texts as texts, which are equal or not.

enum class Relation { EQUAL, UNEQUAL, GREATER, NOT_LESS, LESS, NOT_GREATER };

struct Condition {
    std::string text; // as it was given
    Tag         tag;  // of one value
    Relation    relation;
    std::string wanted; // in the form in which values of the tag are shown, or a number
};

/// Throws UsageError.
Condition parseCondition(const TagBook &book, const std::string &text);

/// True if it holds for a value that is shown as `shown`. Nothing holds for what is no number where numbers are compared.
bool holds(const Condition &condition, const std::string &shown);

#endif
