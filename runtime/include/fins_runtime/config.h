#ifndef FINS_RUNTIME_CONFIG_H
#define FINS_RUNTIME_CONFIG_H

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#ifndef FINS_RUNTIME_API
#define FINS_RUNTIME_API __attribute__((visibility("default")))
#endif

// What a program tells the library about one PLC: where it is, how it is polled, and the names of its words.

namespace fins {

/// A name for an item of the PLC's memory. An item is TYPE:ADDRESS[:COUNT][/DATA]: TYPE and ADDRESS as the driver has
/// them (DM:100, CIO_bit:0.5), COUNT values (of a string: words), DATA one of u16, s16, u32, s32, u64, s64, f32, f64,
/// bcd16, bcd32, hex, hex32, bits, string; numbers of several words can have -low or -high behind it (f32-high),
/// the word that comes first. Without DATA a word is a u16. DM:100:2/f32 are the four words DM100 to DM103 as two
/// numbers. The notation of the PLC's manuals is taken, too: D100:2/REAL, W3.05, 100.05, where 100.1 is bit 1.
struct TagConfig {
    std::string name;                // letters, digits, _ . and -; the first is a letter or _
    std::string item;
    double      scale    = 1;        // what is shown is raw * scale + offset; not 0
    double      offset   = 0;
    int         decimals = -1;       // digits behind the point, 0 to 9; -1: as many as are needed
    std::string unit = {};           // shown behind the value
    std::optional<double> minimum = {}; // a write outside these limits is invalid; as shown
    std::optional<double> maximum = {};
    bool        readOnly = false;    // every write is invalid
    bool        remoteWrites = false; // a program that passes on what others order may write it: access = "rw" in a project
    std::string comment = {};
    std::string screen = {};         // where a graphical panel shows it
    std::string group = {};          // what it belongs to, such as a machine's part
    double      deadband = 0;        // a logger of changes passes over smaller ones; as shown, 0 or more
};

/// A recipe: items or tags, each with its values as texts, or with none in a recipe that is only read.
struct RecipeConfig {
    struct Variable {
        std::string              item;
        std::vector<std::string> values = {};
    };
    std::string           name;
    std::vector<Variable> variables;
};

/// One PLC. Everything but `host` has a default that fits a PLC on the local network.
struct Config {
    std::string host;                            // HOST, HOST:PORT or [IPV6]:PORT; port 9600 by default
    std::chrono::milliseconds timeout{1000};     // to connect, to send and for a reply; 10 to 60000
    std::chrono::milliseconds interval{10};      // pause between two requests; 0 to 60000
    std::chrono::milliseconds retryRefused{30000}; // until words that the PLC refused are read again; 10 to 86400000
    int         wordsPerFrame = 64;              // the most of one request; 1 to 114
    int         retries = 3;                     // replies missing in a row that drop the link; 1 to 100
    int         station = 1;                     // number of the PLC in the panel; 0 to 255

    /// Consent: a write that the PLC refuses for its operating mode may switch it to MONITOR mode, in which its program
    /// runs and its outputs are live. Needs retries of 2 or more.
    bool        allowModeChange = false;

    std::string library = {};                    // file of the driver; empty: the one installed with this library
    std::string name = {};                       // of one among several PLCs; see plcsOf()
    std::string project = {};                    // file whose tags and recipes come before those below; empty: none
    std::vector<TagConfig>    tags = {};
    std::vector<RecipeConfig> recipes = {};

    bool quiet = false; // no messages of connections made, missed and lost

    /// The most messages and changes of state that wait for dispatch(); of more the oldest is dropped.
    std::size_t queueLimit = 1000;

    /// The clocks of samples, states and deadlines of operations; empty: the system's. They are called on the library's
    /// thread and on those of the application. The deadlines of single frames always follow the system's clock.
    std::function<std::chrono::system_clock::time_point()> utc = {};
    std::function<std::chrono::steady_clock::time_point()> steady = {};

    /// The connection and settings of a project file (TOML), and `project` with its name. Reads the file once; Plc::open
    /// reads it for its tags and recipes. Throws ConfigError.
    FINS_RUNTIME_API static Config ofProject(const std::string &file);

    /// The PLCs of a project file, in its order, with their tags and recipes; the file is not read again. The names of
    /// what belongs to one begin with its own everywhere: press.Level, press.DM:100. Throws ConfigError.
    FINS_RUNTIME_API static std::vector<Config> plcsOf(const std::string &file);
};

/// One thing that is wrong, and how to mend it.
struct Problem {
    std::string file;      // empty: the configuration struct
    int         line = 0;  // from 1; 0: the file as a whole
    int         column = 0; // from 1; 0: the line as a whole
    std::string text;
};

/// A configuration that cannot work. what() is the first problem; all of them are in problems().
class FINS_RUNTIME_API ConfigError : public std::runtime_error {
public:
    explicit ConfigError(std::vector<Problem> problems);
    const std::vector<Problem> &problems() const { return problems_; }

private:
    std::vector<Problem> problems_;
};

/// An item, tag or recipe of a call that does not exist or cannot be used so; what() says how to mend it.
struct FINS_RUNTIME_API NameError : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

} // namespace fins

#endif
