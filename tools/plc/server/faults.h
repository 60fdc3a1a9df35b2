#ifndef PLC_SERVER_FAULTS_H
#define PLC_SERVER_FAULTS_H

#include <cstdint>
#include <random>
#include <string>

// Misbehaviour on purpose. Each fault has a name, for most a value, the probability with which it strikes and how often
// it does before it ends. Delay, jitter, bytewise, silence and refuse strike node address exchanges too, tcp-error
// nothing else; all others only FINS frames, so that a link can come up before they are met.

namespace plc {

/// Row numbers of the fault table.
enum FaultKind {
    FAULT_DELAY,     // the reply comes so many ms late
    FAULT_JITTER,    // the reply comes a random time late, at most so many ms
    FAULT_DROP,      // the command is carried out, its reply is lost
    FAULT_WRONG_SID, // the reply carries the next service ID
    FAULT_SHORT,     // the reply lacks its last bytes; its length field agrees
    FAULT_LONG,      // the reply has zero bytes added; its length field agrees
    FAULT_BYTEWISE,  // the reply goes out one byte at a time, so many ms apart
    FAULT_DOUBLE,    // the reply comes twice in one segment
    FAULT_END_CODE,  // the command is refused with this end code; one of END_FLAGS alone comes with a good reply
    FAULT_CLOSE,     // the command is carried out, the connection closed instead of a reply
    FAULT_SILENCE,   // nothing is carried out or answered
    FAULT_REFUSE,    // connections are refused; with a probability below 1 or a number of times, accepted and
                     // closed at once
    FAULT_TCP_ERROR, // node address exchanges are refused with this FINS/TCP error
    FAULT_COUNT
};

class Faults {
public:
    explicit Faults(std::uint32_t seed) : random(seed) {}

    /// Sets the fault in `text`, NAME[=VALUE][@PROBABILITY][#TIMES]. Returns an empty text, or what is wrong; then
    /// nothing has changed.
    std::string set(const std::string &text);

    /// Ends the fault called `name`. Returns an empty text, or what is wrong.
    std::string clear(const std::string &name);
    void clearAll();

    /// Whether the fault strikes this time. With its last time it ends; its value stays.
    bool strikes(FaultKind kind);

    unsigned value(FaultKind kind) const { return settings[kind].value; }
    /// Whether the fault strikes every time, without end.
    bool isCertain(FaultKind kind) const { return settings[kind].probability >= 1.0 && settings[kind].times == 0; }

    /// A random number from 0 to `most`.
    unsigned upTo(unsigned most) { return static_cast<unsigned>(random() % (std::uint64_t(most) + 1)); }

    /// The faults that are set, as set() takes them, separated by spaces; "none" if there is none.
    std::string list() const;

    /// Name, value and meaning of every fault, one a line.
    static std::string help();

private:
    struct Setting {
        double   probability = 0; // 0: off
        unsigned value = 0;
        unsigned times = 0; // that it still strikes; 0: without end
    };

    Setting      settings[FAULT_COUNT];
    std::mt19937 random;
};

} // namespace plc

#endif
