#ifndef PLC_FAULTS_FAULT_KINDS_H
#define PLC_FAULTS_FAULT_KINDS_H

#include <string>

// What kinds of faults there are: their names, values and meanings.

namespace plc {

/// Row numbers of the fault table.
enum FaultKind {
    FAULT_DELAY,      // the reply comes so many ms late
    FAULT_JITTER,     // the reply comes a random time late, at most so many ms
    FAULT_DROP,       // the command is carried out, its reply is lost
    FAULT_WRONG_SID,  // the reply carries the next service ID
    FAULT_SHORT,      // the reply lacks its last bytes; its length field agrees
    FAULT_LONG,       // the reply has zero bytes added; its length field agrees
    FAULT_BYTEWISE,   // the reply goes out one byte at a time, so many ms apart
    FAULT_DOUBLE,     // the reply comes twice in one segment
    FAULT_END_CODE,   // the command is refused with this end code; one of END_FLAGS alone comes with a good reply
    FAULT_CLOSE,      // the command is carried out, the connection closed instead of a reply
    FAULT_SILENCE,    // nothing is carried out or answered
    FAULT_REFUSE,     // connections are refused; with a probability below 1, an aim or a number of times, accepted and
                      // closed at once
    FAULT_TCP_ERROR,  // node address exchanges are refused with this FINS/TCP error
    FAULT_CUT,        // the connection ends after so many bytes of the reply
    FAULT_REORDER,    // the reply comes behind the next one
    FAULT_WRONG_NODE, // the reply goes to the next node address
    FAULT_RST,        // the command is carried out, the connection reset instead of a reply
    FAULT_COUNT
};

/// Where a fault strikes. On the request: before the command is carried out; on the reply: after.
enum class Moment { REQUEST, REPLY };

/// What a kind of fault strikes, and so what it may be aimed at.
enum class Reach {
    CONNECTION, // connections as they come in: IP addresses
    EXCHANGE,   // node address exchanges: clients
    EVERYTHING, // node address exchanges and FINS commands: all
    COMMAND     // FINS commands only: all
};

/// The kind called `name`, or FAULT_COUNT.
FaultKind findFault(const std::string &name);

const char *faultName(FaultKind kind);
Reach reachOf(FaultKind kind);

/// When the kind strikes unless it is told otherwise, and whether it can be told.
Moment usualMoment(FaultKind kind);
bool hasBothMoments(FaultKind kind);

/// The value when none is given.
unsigned presetValue(FaultKind kind);

/// A value that the kind cannot do without, or null.
const char *neededValue(FaultKind kind);

/// Returns an empty text and sets `value`, or what is wrong with `text`.
std::string parseFaultValue(FaultKind kind, const std::string &text, unsigned *value);

/// "=VALUE", or an empty text for a kind without one.
std::string faultValueText(FaultKind kind, unsigned value);

/// "'NAME' is no fault" and the names that are.
std::string unknownFault(const std::string &name);

/// The names of the kinds that can strike on the request as well as on the reply.
std::string namesWithBothMoments();

/// Name, value and meaning of every kind, one a line.
std::string faultKindsHelp();

/// 1 to `digits` hexadecimal digits, or where `mayBeShort` is false, exactly as many.
bool parseHex(const std::string &text, std::size_t digits, bool mayBeShort, unsigned *value);

} // namespace plc

#endif
