// Reads or writes a recipe of a project file, which names the PLC too: recipe read|write FILE RECIPE
// Ends with 0 done, 1 refused or different, 2 bad usage, 3 no answer or unconfirmed.

#include <fins_runtime/plc.h>

#include <algorithm>
#include <iostream>
#include <optional>

static int show(const fins::RecipeValues &recipe)
{
    for (const fins::Sample &sample : recipe.values) {
        if (sample.quality == fins::Quality::GOOD)
            std::cout << sample.name << " = " << sample.text << (sample.unit.empty() ? "" : " ") << sample.unit << '\n';
        else
            std::cerr << sample.name << ": " << text(sample.quality) << '\n';
    }
    switch (recipe.end) {
    case fins::RecipeValues::End::DONE:      return 0;
    case fins::RecipeValues::End::REFUSED:   return 1;
    case fins::RecipeValues::End::NO_ANSWER: break;
    }
    return 3;
}

// Prints what became of each value; the highest code counts.
static int report(const fins::Outcomes &outcomes)
{
    int code = 0;
    for (const fins::Outcome &outcome : outcomes) {
        std::cout << outcome.text << '\n';
        switch (outcome.fate) {
        case fins::Fate::ACCEPTED:
        case fins::Fate::VERIFIED:    break;
        case fins::Fate::DIFFERS:
        case fins::Fate::REFUSED:     code = std::max(code, 1); break;
        case fins::Fate::UNCONFIRMED:
        case fins::Fate::NOT_SENT:    code = std::max(code, 3); break;
        case fins::Fate::INVALID:     return 2; // nothing of the call was sent
        }
    }
    return code;
}

int main(int argc, char **argv)
try {
    const std::string order = argc == 4 ? argv[1] : "";
    if (order != "read" && order != "write") {
        std::cerr << "usage: recipe read|write FILE RECIPE   such as: recipe write plant.toml Lemonade\n";
        return 2;
    }
    fins::Plc plc = fins::Plc::open(fins::Config::ofProject(argv[2]));
    const fins::Handle messages = plc.onMessage([](const std::string &line) { std::cerr << line << '\n'; });

    std::optional<int> code;
    const fins::Operation transfer = order == "read"
        ? plc.readRecipe(argv[3], [&](const fins::RecipeValues &recipe) { code = show(recipe); })
        : plc.writeRecipe(argv[3], [&](const fins::Outcomes &outcomes) { code = report(outcomes); });
    while (!code && plc.dispatch(std::chrono::seconds(1))) {}
    return code.value_or(3);
} catch (const std::exception &error) {
    std::cerr << "recipe: " << error.what() << '\n';
    return 2;
}
