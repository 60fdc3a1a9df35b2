// Writes values, one behind the other, and tells what became of each: write HOST ITEM=VALUE...
// Ends with 0 done, 1 refused or different, 2 bad usage, 3 not sent or unconfirmed.

#include <fins_runtime/plc.h>

#include <algorithm>
#include <iostream>
#include <optional>

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
    std::vector<fins::Assignment> values;
    bool understood = argc > 2;
    for (int n = 2; n < argc; ++n) {
        const std::string word = argv[n];
        const std::size_t sign = word.find('=');
        understood = understood && sign != std::string::npos;
        if (understood)
            values.emplace_back(word.substr(0, sign), word.substr(sign + 1));
    }
    if (!understood) {
        std::cerr << "usage: write HOST ITEM=VALUE...   such as: write 192.168.250.1 DM:3=700 DM:100/f32=2.5\n";
        return 2;
    }
    fins::Plc plc = fins::Plc::open({argv[1]});
    const fins::Handle messages = plc.onMessage([](const std::string &line) { std::cerr << line << '\n'; });

    std::optional<int> code;
    const fins::Operation write = plc.write(values, [&](const fins::Outcomes &outcomes) { code = report(outcomes); });
    while (!code && plc.dispatch(std::chrono::seconds(1))) {}
    return code.value_or(3);
} catch (const std::exception &error) {
    std::cerr << "write: " << error.what() << '\n';
    return 2;
}
