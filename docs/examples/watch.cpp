// Shows values of a PLC as they change, until it is interrupted: watch HOST ITEM...

#include <fins_runtime/plc.h>

#include <iostream>

static void show(const fins::Samples &samples)
{
    for (const fins::Sample &sample : samples)
        std::cout << sample.name << " = " << sample.text << " (" << text(sample.quality) << ")\n";
    std::cout.flush();
}

int main(int argc, char **argv)
try {
    if (argc < 3) {
        std::cerr << "usage: watch HOST ITEM...   such as: watch 192.168.250.1 DM:0 DM:100/f32\n";
        return 2;
    }
    fins::Plc plc = fins::Plc::open({argv[1]});
    const fins::Handle messages = plc.onMessage([](const std::string &line) { std::cerr << line << '\n'; });
    const fins::Watch watch = plc.watch({argv + 2, argv + argc}, show);
    while (plc.dispatch(std::chrono::seconds(1))) {}
} catch (const std::exception &error) { // ConfigError, NameError: what() says what is wrong and how to mend it
    std::cerr << "watch: " << error.what() << '\n';
    return 2;
}
